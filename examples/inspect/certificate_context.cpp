#include "inspect/certificate_context.h"

#include "support/failure.h"
#include "values/result.h"

namespace inspect {

using Quillmark::CBlob;

namespace {

CBlob copy(const CRYPT_DATA_BLOB& blob) {
    return CBlob(blob.pbData, blob.cbData);
}

}  // namespace

CertificateContext::CertificateContext(const CBlob& der)
    : context_(
          CertCreateCertificateContext(X509_ASN_ENCODING, der.pbData(), static_cast<DWORD>(der.cbData()))) {
    if (context_ == nullptr) {
        throw CAtlException(example::last_error());
    }
}

CertificateContext::~CertificateContext() {
    CertFreeCertificateContext(context_);
}

CBlob CertificateContext::subject() const {
    return copy(info().Subject);
}

CBlob CertificateContext::issuer() const {
    return copy(info().Issuer);
}

CBlob CertificateContext::serial_number() const {
    CBlob number = copy(info().SerialNumber);
    number.reverse();
    return number;
}

}  // namespace inspect
