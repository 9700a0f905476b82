#pragma once

// Checking the signature of one signer of a SignedData (RFC 5652 5.4, 5.6). Neither validity, key usage nor
// chain of the certificate is looked at.

#include "platform/detail/signed_data.h"

namespace Quillmark::platform {

/// Succeeds when the first signer that the certificate names has signed the message with the certificate's
/// key. Throws `Failure` with the code of the step that failed.
void verify_signature(const SignedData& data, const CERT_INFO& certificate);

/// The digest of the content by the algorithm of a signer.
Bytes computed_hash(const SignedData& data, const SignerInfo& signer);

}  // namespace Quillmark::platform
