#include "platform/detail/verify.h"

#include <algorithm>

#include "platform/detail/der_writer.h"
#include "platform/detail/object_id.h"
#include "platform/detail/public_key.h"

namespace Quillmark::platform {

namespace {

constexpr KnownObjectId kSubjectKeyIdentifier{"2.5.29.14"};
constexpr KnownObjectId kSha1{"1.3.14.3.2.26"};

Octets octets_of(const CRYPT_DATA_BLOB& blob) {
    if (blob.pbData == nullptr && blob.cbData != 0) {
        throw Failure{E_INVALIDARG};
    }
    return {blob.pbData, blob.cbData};
}

// The serial number of a certificate record has its least significant octet first. Octets that only carry the
// sign are set aside.
bool is_same_serial(Octets big_endian, Octets little_endian) {
    while (!big_endian.empty() && big_endian.front() == 0) {
        big_endian = big_endian.subspan(1);
    }
    while (!little_endian.empty() && little_endian.back() == 0) {
        little_endian = little_endian.first(little_endian.size() - 1);
    }
    return std::equal(big_endian.begin(), big_endian.end(), little_endian.rbegin(), little_endian.rend());
}

// SubjectKeyIdentifier ::= OCTET STRING (RFC 5280 4.2.1.2), in the value of the extension. A value that is
// malformed identifies nothing.
std::optional<Bytes> key_identifier_in(const CERT_EXTENSION& extension) {
    const Octets value = octets_of(extension.Value);
    try {
        DerWalker walker(value);
        const Octets identifier = walker.next(kOctetString).content;
        walker.expect_end();
        return Bytes(identifier.begin(), identifier.end());
    } catch (const Failure&) {
        return std::nullopt;
    }
}

// That of the extension if there is one, else the SHA-1 of the public key's bits, its usual value.
std::optional<Bytes> key_identifier_of(const CERT_INFO& certificate) {
    if (certificate.rgExtension == nullptr && certificate.cExtension != 0) {
        throw Failure{E_INVALIDARG};
    }
    for (DWORD i = 0; i < certificate.cExtension; ++i) {
        const CERT_EXTENSION& extension = certificate.rgExtension[i];
        if (equal(object_id_from_text(extension.pszObjId), kSubjectKeyIdentifier)) {
            return key_identifier_in(extension);
        }
    }
    const CRYPT_BIT_BLOB& bits = certificate.SubjectPublicKeyInfo.PublicKey;
    const std::optional<Digest> sha1 = find_digest(kSha1);
    if (!sha1) {
        return std::nullopt;
    }
    return sha1->of(octets_of({.cbData = bits.cbData, .pbData = bits.pbData}));
}

const SignerInfo& find_signer(const SignedData& data, const CERT_INFO& certificate) {
    const Octets issuer = octets_of(certificate.Issuer);
    const Octets serial = octets_of(certificate.SerialNumber);
    bool has_asked_for_key_identifier = false;  // it is made when a signer is named by one
    std::optional<Bytes> key_identifier;
    for (const SignerInfo& signer : data.signers) {
        if (!signer.key_identifier) {
            if (equal(signer.issuer, issuer) && is_same_serial(signer.serial_number, serial)) {
                return signer;
            }
            continue;
        }
        if (!has_asked_for_key_identifier) {
            key_identifier = key_identifier_of(certificate);
            has_asked_for_key_identifier = true;
        }
        if (key_identifier && equal(*signer.key_identifier, *key_identifier)) {
            return signer;
        }
    }
    throw Failure{CRYPT_E_SIGNER_NOT_FOUND};
}

Digest digest_of(const SignerInfo& signer) {
    std::optional<Digest> digest = find_digest(signer.digest_algorithm.oid);
    if (!digest) {
        throw Failure{CRYPT_E_UNKNOWN_ALGO};
    }
    return *std::move(digest);
}

// RFC 5652 11.1, 11.2: the attribute is there once and has one value, of this type.
Octets only_value(const Element& attributes, Octets oid, std::uint8_t tag) {
    std::optional<Element> values;
    for (DerWalker walker(attributes); !walker.at_end();) {
        const Attribute attribute = read_attribute(walker);
        if (!equal(attribute.oid, oid)) {
            continue;
        }
        if (values) {
            throw Failure{CRYPT_E_AUTH_ATTR_MISSING};
        }
        values = attribute.values;
    }
    if (!values || values->content.empty() || values->content[0] != tag) {
        throw Failure{CRYPT_E_AUTH_ATTR_MISSING};
    }
    DerWalker walker(*values);
    const Octets value = walker.next().content;
    if (!walker.at_end()) {
        throw Failure{CRYPT_E_AUTH_ATTR_MISSING};
    }
    return value;
}

// RFC 5652 5.6: the attributes bind the content and its type.
void check_attributes(const SignedData& data, const SignerInfo& signer, const Digest& digest) {
    if (!signer.signed_attributes) {
        if (!equal(data.inner_type, kData)) {
            throw Failure{CRYPT_E_AUTH_ATTR_MISSING};
        }
        return;
    }
    if (!equal(only_value(*signer.signed_attributes, kMessageDigest, kOctetString),
               digest.of(data.digested))) {
        throw Failure{CRYPT_E_HASH_VALUE};
    }
    if (!equal(only_value(*signer.signed_attributes, kContentType, kObjectId), data.inner_type)) {
        throw Failure{CRYPT_E_AUTH_ATTR_MISSING};
    }
}

class SignatureCheck {
  public:
    SignatureCheck(const SignatureScheme& scheme, KeyPointer key, Octets signature)
        : scheme_(scheme), key_(std::move(key)), signature_(signature) {}

    bool holds(Octets octets) const {
        // The engine looks only at the first octets of a signature that is too long.
        if (scheme_.signature_octets != 0 && signature_.size() != scheme_.signature_octets) {
            return false;
        }
        const MdContextPointer context = make_md_context();
        if (!scheme_.start_verifying(context.get(), key_.get())) {
            throw Failure{NTE_BAD_ALGID};
        }
        EVP_MD_CTX_set_flags(context.get(), EVP_MD_CTX_FLAG_FINALISE);
        return EVP_DigestVerify(context.get(), signature_.data(), signature_.size(), octets.data(),
                                octets.size()) == 1;
    }

    // The attributes are signed as SET OF in DER (RFC 5652 5.4). Some writers sign the DER and send them in
    // another order.
    bool holds_for_attributes(const Element& attributes) const {
        DerWriter as_received(attributes.content.size() + 16);
        as_received.element(kSet, attributes.content);
        if (holds(as_received.written())) {
            return true;
        }
        std::vector<Octets> elements;
        for (DerWalker walker(attributes); !walker.at_end();) {
            elements.push_back(walker.next().whole);
        }
        if (is_sorted_set(elements)) {
            return false;
        }
        DerWriter sorted(attributes.content.size() + 16);
        sorted.set_of(kSet, std::move(elements));
        return holds(sorted.written());
    }

  private:
    const SignatureScheme& scheme_;
    KeyPointer key_;
    Octets signature_;
};

}  // namespace

Bytes computed_hash(const SignedData& data, const SignerInfo& signer) {
    if (!data.has_content) {
        throw Failure{CRYPT_E_MSG_ERROR};
    }
    const LibcryptoScope scope;
    return digest_of(signer).of(data.digested);
}

void verify_signature(const SignedData& data, const CERT_INFO& certificate) {
    const LibcryptoScope scope;
    const SignerInfo& signer = find_signer(data, certificate);
    if (!data.has_content) {
        throw Failure{CRYPT_E_MSG_ERROR};
    }
    const Digest digest = digest_of(signer);
    check_attributes(data, signer, digest);

    KeyPointer key = find_public_key(certificate.SubjectPublicKeyInfo);
    const Bytes key_oid = object_id_from_text(certificate.SubjectPublicKeyInfo.Algorithm.pszObjId);
    const AlgorithmIdentifier key_algorithm{
        .oid = key_oid, .parameters = octets_of(certificate.SubjectPublicKeyInfo.Algorithm.Parameters)};
    const SignatureScheme scheme = scheme_for_verifying(key_algorithm, signer.signature_algorithm, digest);
    const SignatureCheck check(scheme, std::move(key), signer.signature);
    if (!(signer.signed_attributes ? check.holds_for_attributes(*signer.signed_attributes)
                                   : check.holds(data.digested))) {
        throw Failure{NTE_BAD_SIGNATURE};
    }
}

}  // namespace Quillmark::platform
