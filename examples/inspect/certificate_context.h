#pragma once

// The fields of a certificate, as the platform service reads them.

#include "platform/cryptoapi.h"
#include "values/blob.h"

namespace inspect {

class CertificateContext {
  public:
    /// Throws the service's code as `CAtlException`.
    explicit CertificateContext(const Quillmark::CBlob& der);
    ~CertificateContext();
    CertificateContext(const CertificateContext&) = delete;
    CertificateContext& operator=(const CertificateContext&) = delete;

    const CERT_INFO& info() const { return *context_->pCertInfo; }
    /// The DER of the Names.
    Quillmark::CBlob subject() const;
    Quillmark::CBlob issuer() const;
    /// Most significant octet first, as on the wire.
    Quillmark::CBlob serial_number() const;

  private:
    PCCERT_CONTEXT context_;
};

}  // namespace inspect
