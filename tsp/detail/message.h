#pragma once

// Messages and certificates of the platform service, for signing and reading tokens.

#include <memory>

#include "asn1/signer_info.h"
#include "platform/cryptoapi.h"
#include "values/blob.h"

namespace Quillmark::detail {

inline constexpr DWORD kEncodingTypes = X509_ASN_ENCODING | PKCS_7_ASN_ENCODING;
inline constexpr char kTSTInfoType[] = "1.2.840.113549.1.9.16.1.4";  // id-ct-TSTInfo, RFC 3161 2.4.2

/// Asks one message for its parameters. Failures throw the last error.
class MessageReader {
  public:
    explicit MessageReader(HCRYPTMSG message) : message_(message) {}

    /// A parameter of any size.
    CBlob read(DWORD parameter, DWORD index = 0);
    /// An attributes parameter; empty when the service says that there are none
    /// (`CRYPT_E_ATTRIBUTES_MISSING`).
    CBlob read_attributes(DWORD parameter);
    DWORD read_count(DWORD parameter);
    /// DER of each certificate, in the message's order; null when there is none.
    std::unique_ptr<CBlobList> read_certificates();
    /// The message's first SignerInfo, decoded into `signer`.
    void read_signer(ASN1::CSignerInfo& signer);

  private:
    HCRYPTMSG message_;
    DWORD size_ =
        0;  // carried from query to query: a service may report missing attributes and leave it alone
};

/// A message that waits for its octets, never null. Throws the last error.
HCRYPTMSG open_to_decode();

/// A context over the DER of a certificate, never null. Throws the last error when the service refuses it.
PCCERT_CONTEXT open_certificate(const CBlob& certificate);

/// Throws the last error after a null handle; one that is not set is `E_FAIL`, as there is nothing to go on
/// with.
[[noreturn]] void throw_null_handle();

}  // namespace Quillmark::detail
