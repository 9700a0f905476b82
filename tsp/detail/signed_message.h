#pragma once

// A SignedData (RFC 5652 5.1) that the platform service is to build: what it is told about the signer, and
// the message opened for its content.

#include <vector>

#include "asn1/algorithm_identifier.h"
#include "asn1/attribute.h"
#include "platform/cryptoapi.h"
#include "values/blob.h"

namespace Quillmark::PKI::TSP {

/// The signer's description, with all that it points to but for the arguments of the constructor.
class SignerDescription {
  public:
    SignerDescription(PCERT_INFO certificate, HCRYPTPROV provider, DWORD key_spec,
                      const ASN1::CAlgorithmIdentifierEx& hash_algorithm);
    SignerDescription(const SignerDescription&) = delete;
    SignerDescription& operator=(const SignerDescription&) = delete;

    /// Copies the attributes; null for none.
    void set_attributes(const ASN1::CAttributes* signed_attributes,
                        const ASN1::CAttributes* unsigned_attributes);

    CMSG_SIGNER_ENCODE_INFO* record() { return &record_; }

  private:
    std::vector<CBlob> oid_store_;
    std::vector<CRYPT_ATTR_BLOB> blobs_;
    std::vector<CBlob> value_store_;
    std::vector<CRYPT_ATTRIBUTE> signed_;
    std::vector<CRYPT_ATTRIBUTE> unsigned_;
    CMSG_SIGNER_ENCODE_INFO record_{};
};

/// The inner content of a message: its type as an OID, null for data, and the flags that go with it.
struct InnerContent {
    DWORD flags;
    const char* type;
};

/// A message open for encoding, with these certificates, null for none. Throws the last error, also when that
/// is 0.
HCRYPTMSG open_to_encode(SignerDescription& signer, const CBlobList* certificates, InnerContent content);

}  // namespace Quillmark::PKI::TSP
