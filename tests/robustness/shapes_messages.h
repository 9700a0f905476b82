#pragma once

// Requests, tokens and responses in which one element has an unusual shape.

#include "tests/robustness/shapes_octets.h"
#include "tests/support/sample_token.h"

namespace Quillmark::test {

/// TimeStampReq (RFC 3161 2.4.1) up to the message imprint, whose hash is the element `hash`; then `rest`.
Octets request_with(const Octets& rest, const Octets& hash = element(0x04, "aa bb"));

/// TSTInfo (RFC 3161 2.4.2) with `rest` behind genTime.
Octets tst_info_with(const Octets& rest, const Octets& gen_time = text_element(0x18, "20240102030405Z"));

/// A token (RFC 5652 3, 5.1) around the eContent `content`, with the certificates, revocation lists and
/// signers given by the contents of their sets.
struct Token {
    Octets content = element(0x04, tst_info_with({}));
    Octets certificates = {};
    Octets revocation_lists = {};
    Octets signers = sample_signer();
    Octets type = kTSTInfoType;
};
Octets token_of(const Token& parts);

/// One attribute (RFC 5652 5.3) of type 1.2.4, or of another.
Octets attribute_of(const Octets& values, const Octets& type = element(0x06, "2a 04"));

/// A signer with contents for its signed or its unsigned attributes.
Octets signer_with(const Octets& signed_attributes, const Octets& unsigned_attributes = {});

/// TimeStampResp that grants, or with another PKIStatusInfo.
Octets response_of(const Octets& token, const Octets& status = element(0x30, "02 01 00"));

/// A Name with one attribute, of a type whose values are tokens (RFC 3161 appendix A).
Octets name_around(const Octets& token);

/// A token whose TSTInfo names its authority by an attribute that is a token, and so on.
Octets tokens_in_names(std::size_t levels, Octets token = token_of({}));

/// A certificate (RFC 5280 4.1) with these elements in their places.
struct CertificateParts {
    Octets serial = element(0x02, "09");
    Octets issuer = element(0x30, "");
    Octets key = element(0x03, "00 aa");
    Octets extensions = {};  ///< contents of the list; absent when empty
};
Octets certificate_of(const CertificateParts& parts);

}  // namespace Quillmark::test
