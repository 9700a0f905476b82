#pragma once

// A SignedData (RFC 5652 5.1) of any content, as the platform's message service reads it.

#include <string>

#include "asn1/attribute.h"
#include "asn1/signer_info.h"
#include "platform/cryptoapi.h"
#include "values/blob.h"

namespace inspect {

/// Failures of the service are thrown as `CAtlException` with its code.
class Message {
  public:
    explicit Message(const Quillmark::CBlob& encoded);
    ~Message();
    Message(const Message&) = delete;
    Message& operator=(const Message&) = delete;

    /// The OID of the content's type.
    std::string content_type() const;
    /// Empty when the message has none.
    Quillmark::CBlob content() const;
    unsigned int signers() const;
    unsigned int certificates() const;
    unsigned int revocation_lists() const;
    Quillmark::CBlob certificate(unsigned int index) const;
    /// Throws also when the signer is named by subject key identifier.
    Quillmark::ASN1::CSignerInfo signer(unsigned int index) const;
    Quillmark::ASN1::CAttributes signed_attributes(unsigned int index) const;
    Quillmark::ASN1::CAttributes unsigned_attributes(unsigned int index) const;

  private:
    Quillmark::CBlob query(DWORD parameter, DWORD index = 0) const;
    unsigned int count(DWORD parameter) const;
    Quillmark::ASN1::CAttributes attributes(DWORD parameter, DWORD index) const;

    HCRYPTMSG handle_;
};

}  // namespace inspect
