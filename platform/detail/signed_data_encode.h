#pragma once

// Making a SignedData (RFC 5652 section 5). Everything that does not depend on the content is checked and
// encoded when the message is opened, so that the records of the caller may go; `build` digests, signs and
// puts it together.

#include <memory>
#include <string>

#include "platform/detail/der_writer.h"
#include "platform/detail/digest.h"
#include "platform/detail/key_container.h"

namespace Quillmark::platform {

/// The record behind this one in the array of the caller: records of a longer form lie at their own distance.
const CMSG_SIGNER_ENCODE_INFO* next_record(const CMSG_SIGNER_ENCODE_INFO* record);

/// How the content lies in the message.
struct InnerContent {
    Bytes type;                   // content octets of eContentType
    bool is_octet_string = true;  // else the content is one element that is embedded as it stands (PKCS #7)
    std::uint8_t version = 1;     // of the SignedData
    bool has_attributes = false;  // signed attributes are there whether or not the caller has any
};

/// One signer, ready to sign.
struct PreparedSigner {
    Bytes identifier;           // IssuerAndSerialNumber
    Bytes digest_algorithm;     // AlgorithmIdentifier
    Bytes signature_algorithm;  // AlgorithmIdentifier
    bool has_signed_attributes = false;
    std::vector<Bytes> signed_attributes;  // all but message-digest
    Bytes unsigned_attributes;             // under [1], empty when absent
    Digest digest;
    SignatureScheme scheme;
    std::shared_ptr<KeyContainer> container;  // lives on until the message is signed
    std::shared_ptr<const PrivateKey> key;
};

class SignedDataEncoder {
  public:
    /// Checks and copies. Throws `Failure` with the code of what is wrong.
    SignedDataEncoder(DWORD flags, const CMSG_SIGNED_ENCODE_INFO& info, const char* inner_type);

    /// The ContentInfo. Throws `Failure` when a key does not sign or the content does not fit the inner type.
    DerWriter build(Octets content) const;

  private:
    Bytes signer_info(const PreparedSigner& signer, Octets digested) const;
    std::size_t expected_size(Octets content, const std::vector<Bytes>& signer_infos) const;

    InnerContent inner_;
    std::vector<PreparedSigner> signers_;
    std::vector<Bytes> certificates_;
    std::vector<Bytes> crls_;
};

}  // namespace Quillmark::platform
