#include "platform/detail/object_id.h"
#include "platform/detail/signed_data.h"

namespace Quillmark::platform {

namespace {

// SET OF Attribute under [0] or [1]. Some writers leave attributes empty of values; that is no failure.
void check_attributes(const Element& attributes) {
    for (DerWalker walker(attributes); !walker.at_end();) {
        const Attribute attribute = read_attribute(walker);
        for (DerWalker values(attribute.values); !values.at_end();) {
            values.next();
        }
    }
}

std::optional<Element> read_attributes(DerWalker& fields, std::uint8_t tag) {
    std::optional<Element> attributes = fields.next_if(tag);
    if (attributes) {
        check_attributes(*attributes);
    }
    return attributes;
}

// SignerIdentifier ::= CHOICE {
//     issuerAndSerialNumber IssuerAndSerialNumber,
//     subjectKeyIdentifier [0] SubjectKeyIdentifier }
void read_signer_identifier(DerWalker& fields, SignerInfo& signer) {
    if (const auto key_identifier = fields.next_if(context(0))) {
        signer.key_identifier = key_identifier->content;
        return;
    }
    DerWalker identifier(fields.next(kSequence));
    signer.issuer = identifier.next(kSequence).whole;
    signer.serial_number = identifier.next(kInteger).content;
    identifier.expect_end();
}

// SignerInfo ::= SEQUENCE {                                     -- RFC 5652 5.3
//     version CMSVersion, sid SignerIdentifier, digestAlgorithm DigestAlgorithmIdentifier,
//     signedAttrs [0] IMPLICIT SignedAttributes OPTIONAL, signatureAlgorithm SignatureAlgorithmIdentifier,
//     signature SignatureValue, unsignedAttrs [1] IMPLICIT UnsignedAttributes OPTIONAL }
SignerInfo read_signer(const Element& element) {
    DerWalker fields(element);
    SignerInfo signer;
    signer.whole = element.whole;
    fields.next(kInteger);
    read_signer_identifier(fields, signer);
    signer.digest_algorithm = read_algorithm(fields);
    signer.signed_attributes = read_attributes(fields, constructed_context(0));
    signer.signature_algorithm = read_algorithm(fields);
    signer.signature = fields.next(kOctetString).content;
    signer.unsigned_attributes = read_attributes(fields, constructed_context(1));
    fields.expect_end();
    return signer;
}

bool is_octet_string(const Element& element) {
    return element.tag == kOctetString || element.tag == kConstructedOctetString;
}

// The value of an OCTET STRING in one piece; segments are joined in `joined`.
Octets octet_string_value(const Element& string, Bytes& joined) {
    if (string.tag == kOctetString) {
        return string.content;
    }
    append_octet_string(string, joined);
    return joined;
}

Element read_explicit(const Element& tagged) {
    DerWalker inner(tagged);
    const Element element = inner.next();
    inner.expect_end();
    return element;
}

// EncapsulatedContentInfo ::= SEQUENCE {                        -- RFC 5652 5.2
//     eContentType ContentType, eContent [0] EXPLICIT OCTET STRING OPTIONAL }
// PKCS #7 (RFC 2315 section 7) has any type in place of the OCTET STRING.
void read_encapsulated_content(const Element& element, SignedData& data) {
    DerWalker fields(element);
    data.inner_type = next_object_id(fields);
    if (const auto tagged = fields.next_if(constructed_context(0))) {
        const Element content = read_explicit(*tagged);
        data.has_content = true;
        data.digested =
            is_octet_string(content) ? octet_string_value(content, data.joined_content) : content.content;
        data.content = is_octet_string(content) ? data.digested : content.whole;
    }
    fields.expect_end();
}

// Of the choices of a certificate and of revocation information only the SEQUENCE is one that the interface
// can name: an X.509 certificate, an X.509 CRL.
std::vector<Octets> read_sequences(DerWalker& fields, std::uint8_t tag) {
    std::vector<Octets> sequences;
    if (const auto set = fields.next_if(tag)) {
        for (DerWalker walker(*set); !walker.at_end();) {
            const Element element = walker.next();
            if (element.tag == kSequence) {
                sequences.push_back(element.whole);
            }
        }
    }
    return sequences;
}

// SignedData ::= SEQUENCE {                                     -- RFC 5652 5.1
//     version CMSVersion, digestAlgorithms DigestAlgorithmIdentifiers,
//     encapContentInfo EncapsulatedContentInfo, certificates [0] IMPLICIT CertificateSet OPTIONAL,
//     crls [1] IMPLICIT RevocationInfoChoices OPTIONAL, signerInfos SignerInfos }
SignedData read_signed_data(const Element& element) {
    DerWalker fields(element);
    SignedData data;
    data.whole = element.whole;
    fields.next(kInteger);
    fields.next(kSet);
    read_encapsulated_content(fields.next(kSequence), data);
    data.certificates = read_sequences(fields, constructed_context(0));
    data.crls = read_sequences(fields, constructed_context(1));
    for (DerWalker signers(fields.next(kSet)); !signers.at_end();) {
        data.signers.push_back(read_signer(signers.next(kSequence)));
    }
    fields.expect_end();
    return data;
}

PlainData read_plain_data(DerWalker& fields) {
    PlainData data;
    if (const auto tagged = fields.next_if(constructed_context(0))) {
        const Element content = read_explicit(*tagged);
        data.content = octet_string_value(content, data.joined_content);
    }
    return data;
}

}  // namespace

Attribute read_attribute(DerWalker& walker) {
    DerWalker fields(walker.next(kSequence));
    Attribute attribute;
    attribute.oid = next_object_id(fields);
    attribute.values = fields.next(kSet);
    fields.expect_end();
    return attribute;
}

// ContentInfo ::= SEQUENCE { contentType ContentType, content [0] EXPLICIT ANY DEFINED BY contentType }
ReadMessage read_message(Octets input) {
    DerWalker outer(input);
    DerWalker fields(outer.next(kSequence));
    const Octets type = next_object_id(fields);
    ReadMessage message;
    if (equal(type, kSignedData)) {
        const Element content = read_explicit(fields.next(constructed_context(0)));
        if (content.tag != kSequence) {
            throw Failure{CRYPT_E_ASN1_BADTAG};
        }
        message.signed_data = read_signed_data(content);
    } else if (equal(type, kData)) {
        message.plain_data = read_plain_data(fields);
    } else {
        throw Failure{CRYPT_E_INVALID_MSG_TYPE};
    }
    fields.expect_end();
    return message;
}

}  // namespace Quillmark::platform
