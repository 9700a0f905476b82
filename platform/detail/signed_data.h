#pragma once

// A ContentInfo with SignedData (RFC 5652 sections 3 and 5), read in place: everything here points into the
// bytes that were read.

#include <optional>

#include "platform/detail/der_fields.h"

namespace Quillmark::platform {

/// Attribute ::= SEQUENCE { attrType OBJECT IDENTIFIER, attrValues SET OF AttributeValue }
struct Attribute {
    Octets oid;
    Element values;
};

Attribute read_attribute(DerWalker& walker);

struct SignerInfo {
    Octets whole;
    Octets issuer;                         // the Name, empty when the signer is named by its key identifier
    Octets serial_number;                  // content octets of the INTEGER
    std::optional<Octets> key_identifier;  // content octets
    AlgorithmIdentifier digest_algorithm;
    std::optional<Element> signed_attributes;
    AlgorithmIdentifier signature_algorithm;
    Octets signature;
    std::optional<Element> unsigned_attributes;
};

struct SignedData {
    SignedData() = default;
    SignedData(SignedData&&) = default;  // moved and never copied: `content` may point into `joined_content`
    SignedData& operator=(SignedData&&) = default;

    Octets whole;       // the SEQUENCE without the ContentInfo around it
    Octets inner_type;  // content octets of eContentType
    bool has_content = false;
    Octets content;   // what a query for the content gives: the value of an OCTET STRING, else the element
    Octets digested;  // what the digest is computed over: the value octets of either
    Bytes joined_content;  // owns `content` when it came in segments
    std::vector<Octets> certificates;
    std::vector<Octets> crls;
    std::vector<SignerInfo> signers;
};

/// ContentInfo of type data: the content alone.
struct PlainData {
    PlainData() = default;
    PlainData(PlainData&&) = default;
    PlainData& operator=(PlainData&&) = default;

    Octets content;
    Bytes joined_content;
};

/// The message in a ContentInfo: one of the two.
struct ReadMessage {
    std::optional<SignedData> signed_data;
    std::optional<PlainData> plain_data;
};

/// Reads the ContentInfo that `input` begins with; octets behind it are not looked at. Attributes are walked
/// too, so that later queries meet well-formed ones. Throws `Failure` with an ASN.1 code, or
/// `CRYPT_E_INVALID_MSG_TYPE` for another content type.
ReadMessage read_message(Octets input);

}  // namespace Quillmark::platform
