#include "platform/detail/signed_data_encode.h"

#include <algorithm>
#include <array>
#include <span>

#include "platform/detail/object_id.h"
#include "platform/detail/public_key.h"
#include "platform/detail/signed_data.h"

namespace Quillmark::platform {

namespace {

constexpr std::size_t kHeaderRoom = 64;  // identifier and length octets of the containers around a piece

[[noreturn]] void refuse_argument() {
    throw Failure{E_INVALIDARG};
}

void require_argument(bool condition) {
    if (!condition) {
        refuse_argument();
    }
}

template <typename Record>
std::span<const Record> records(const Record* first, DWORD count) {
    require_argument(first != nullptr || count == 0);
    return {first, count};
}

Octets octets_of(const CRYPT_DATA_BLOB& blob) {
    return records(blob.pbData, blob.cbData);
}

Bytes copy(Octets octets) {
    return {octets.begin(), octets.end()};
}

std::vector<Octets> views(const std::vector<Bytes>& pieces) {
    return {pieces.begin(), pieces.end()};
}

Octets one_element(const CRYPT_DATA_BLOB& blob) {
    const Octets octets = octets_of(blob);
    require_argument(is_one_element(octets));
    return octets;
}

Octets one_sequence(const CRYPT_DATA_BLOB& blob) {
    const Octets octets = one_element(blob);
    require_argument(octets[0] == kSequence);
    return octets;
}

std::vector<Bytes> copy_sequences(const CRYPT_DATA_BLOB* blobs, DWORD count) {
    std::vector<Bytes> copies;
    for (const CRYPT_DATA_BLOB& blob : records(blobs, count)) {
        copies.push_back(copy(one_sequence(blob)));
    }
    return copies;
}

// The record may be a longer form whose further fields are not known here; they must be zero.
template <typename Record>
void check_record_size(const Record& record) {
    require_argument(record.cbSize >= sizeof(Record));
    const Octets whole(reinterpret_cast<const std::uint8_t*>(&record), record.cbSize);
    require_argument(
        std::ranges::all_of(whole.subspan(sizeof(Record)), [](std::uint8_t octet) { return octet == 0; }));
}

Bytes encode_attribute(Octets oid, std::vector<Octets> values) {
    std::size_t room = kHeaderRoom + oid.size();
    for (const Octets value : values) {
        room += value.size();
    }
    DerWriter writer(room);
    writer.set_of(kSet, std::move(values));
    writer.element(kObjectId, oid);
    writer.wrap(kSequence, 0);
    return writer.copy();
}

Bytes encode_attribute(const CRYPT_ATTRIBUTE& attribute) {
    std::vector<Octets> values;
    for (const CRYPT_ATTR_BLOB& value : records(attribute.rgValue, attribute.cValue)) {
        values.push_back(one_element(value));
    }
    return encode_attribute(object_id_from_text(attribute.pszObjId), std::move(values));
}

Bytes encode_element(std::uint8_t tag, Octets content) {
    DerWriter writer(kHeaderRoom + content.size());
    writer.element(tag, content);
    return writer.copy();
}

// content-type and message-digest are made here: those of the caller could only be stale, as when the
// attributes of a decoded message are signed anew.
bool is_made_here(Octets oid) {
    return equal(oid, kContentType) || equal(oid, kMessageDigest);
}

std::vector<Bytes> encode_signed_attributes(const CMSG_SIGNER_ENCODE_INFO& info, Octets inner_type) {
    std::vector<Bytes> attributes;
    const Bytes content_type = encode_element(kObjectId, inner_type);
    attributes.push_back(encode_attribute(kContentType, {content_type}));
    for (const CRYPT_ATTRIBUTE& attribute : records(info.rgAuthAttr, info.cAuthAttr)) {
        Bytes encoded = encode_attribute(attribute);
        if (!is_made_here(object_id_from_text(attribute.pszObjId))) {
            attributes.push_back(std::move(encoded));
        }
    }
    return attributes;
}

Bytes encode_unsigned_attributes(const CMSG_SIGNER_ENCODE_INFO& info) {
    std::vector<Bytes> attributes;
    for (const CRYPT_ATTRIBUTE& attribute : records(info.rgUnauthAttr, info.cUnauthAttr)) {
        attributes.push_back(encode_attribute(attribute));
    }
    if (attributes.empty()) {
        return {};
    }
    DerWriter writer(256);
    writer.set_of(constructed_context(1), views(attributes));
    return writer.copy();
}

// IssuerAndSerialNumber ::= SEQUENCE { issuer Name, serialNumber CertificateSerialNumber }
Bytes encode_identifier(const CERT_INFO& certificate) {
    const Octets issuer = one_sequence(certificate.Issuer);
    const Octets serial = octets_of(certificate.SerialNumber);
    require_argument(!serial.empty());
    const Bytes big_endian(serial.rbegin(), serial.rend());
    DerWriter writer(kHeaderRoom + issuer.size() + serial.size());
    writer.element(kInteger, big_endian);
    writer.octets(issuer);
    writer.wrap(kSequence, 0);
    return writer.copy();
}

// The parameters as the caller has them, absent when there are none.
Bytes encode_algorithm(Octets oid, const CRYPT_OBJID_BLOB& parameters) {
    DerWriter writer(kHeaderRoom + oid.size() + parameters.cbData);
    if (parameters.cbData != 0) {
        writer.octets(one_element(parameters));
    }
    writer.element(kObjectId, oid);
    writer.wrap(kSequence, 0);
    return writer.copy();
}

Digest digest_for_signing(Octets oid) {
    std::optional<Digest> digest = find_digest(oid);
    if (!digest || (digest->row() != nullptr && !digest->row()->is_for_signing)) {
        throw Failure{CRYPT_E_UNKNOWN_ALGO};
    }
    return *std::move(digest);
}

std::shared_ptr<KeyContainer> container_of(HCRYPTPROV handle) {
    const auto container = key_containers.pin(handle);
    if (!container) {
        throw Failure{ERROR_INVALID_HANDLE};
    }
    return container.shared();
}

// The certificate must be that of the private key. One key may have two forms, such as a compressed point, so
// octets that differ do not yet decide.
void check_public_key(const PrivateKey& key, const CERT_PUBLIC_KEY_INFO& public_key) {
    if (!key.has_public_bits(
            octets_of({.cbData = public_key.PublicKey.cbData, .pbData = public_key.PublicKey.pbData})) &&
        !key.is_pair_of(find_public_key(public_key).get())) {
        throw Failure{NTE_BAD_PUBLIC_KEY};
    }
}

PreparedSigner prepare_signer(const CMSG_SIGNER_ENCODE_INFO& info, const InnerContent& inner) {
    check_record_size(info);
    require_argument(info.pCertInfo != nullptr);
    const Bytes digest_oid = object_id_from_text(info.HashAlgorithm.pszObjId);
    const CERT_PUBLIC_KEY_INFO& public_key = info.pCertInfo->SubjectPublicKeyInfo;
    const Bytes key_oid = object_id_from_text(public_key.Algorithm.pszObjId);
    const AlgorithmIdentifier key_algorithm{.oid = key_oid,
                                            .parameters = octets_of(public_key.Algorithm.Parameters)};

    Digest digest = digest_for_signing(digest_oid);
    SignatureScheme scheme = scheme_for_signing(key_algorithm, digest);
    PreparedSigner signer{
        .identifier = encode_identifier(*info.pCertInfo),
        .digest_algorithm = encode_algorithm(digest_oid, info.HashAlgorithm.Parameters),
        .signature_algorithm = signature_algorithm_for(key_algorithm, digest, digest_oid),
        .has_signed_attributes = inner.has_attributes || info.cAuthAttr > 0,
        .signed_attributes = encode_signed_attributes(info, inner.type),
        .unsigned_attributes = encode_unsigned_attributes(info),
        .digest = std::move(digest),
        .scheme = std::move(scheme),
        .container = container_of(info.hCryptProv),
        .key = {},
    };
    signer.key = signer.container->key(info.dwKeySpec);
    check_public_key(*signer.key, public_key);
    signer.key->prepare(signer.scheme);
    return signer;
}

InnerContent inner_content(DWORD flags, const char* type_text) {
    InnerContent inner;
    inner.type = type_text == nullptr ? copy(kData) : object_id_from_text(type_text);
    const bool is_data = equal(inner.type, kData);
    const bool is_cms = (flags & CMSG_CMS_ENCAPSULATED_CONTENT_FLAG) != 0;
    inner.is_octet_string = is_data || is_cms;
    inner.version = !is_data && is_cms ? 3 : 1;  // RFC 5652 5.1
    inner.has_attributes = !is_data || (flags & CMSG_AUTHENTICATED_ATTRIBUTES_FLAG) != 0;
    return inner;
}

// The older form embeds the content as it stands and digests its value octets (RFC 2315 9.3).
Octets value_octets(Octets content) {
    DerWalker walker(content);
    const Element element = walker.next();
    walker.expect_end();
    return element.content;
}

void write_version(DerWriter& writer, std::uint8_t version) {
    const std::array<std::uint8_t, 1> content{version};
    writer.element(kInteger, content);
}

std::vector<Octets> distinct_digest_algorithms(const std::vector<PreparedSigner>& signers) {
    std::vector<Octets> algorithms;
    algorithms.reserve(signers.size());
    for (const PreparedSigner& signer : signers) {
        algorithms.push_back(signer.digest_algorithm);
    }
    sort_set(algorithms);
    const auto repeated = std::unique(algorithms.begin(), algorithms.end(), equal);
    algorithms.erase(repeated, algorithms.end());
    return algorithms;
}

void write_optional_set(DerWriter& writer, std::uint8_t tag, const std::vector<Bytes>& elements) {
    if (!elements.empty()) {
        writer.set_of(tag, views(elements));
    }
}

std::size_t total_size(const std::vector<Bytes>& pieces) {
    std::size_t size = 0;
    for (const Bytes& piece : pieces) {
        size += piece.size();
    }
    return size;
}

// DER of the attributes as SET OF, the form in which they are signed (RFC 5652 5.4).
DerWriter signed_attributes(const PreparedSigner& signer, Octets digested) {
    const Bytes digest = encode_element(kOctetString, signer.digest.of(digested));
    const Bytes message_digest = encode_attribute(kMessageDigest, {digest});
    std::vector<Octets> attributes = views(signer.signed_attributes);
    attributes.emplace_back(message_digest);
    DerWriter writer(kHeaderRoom + total_size(signer.signed_attributes) + message_digest.size());
    writer.set_of(kSet, std::move(attributes));
    return writer;
}

}  // namespace

const CMSG_SIGNER_ENCODE_INFO* next_record(const CMSG_SIGNER_ENCODE_INFO* record) {
    const auto address = reinterpret_cast<std::uintptr_t>(record) + record->cbSize;
    return reinterpret_cast<const CMSG_SIGNER_ENCODE_INFO*>(address);
}

SignedDataEncoder::SignedDataEncoder(DWORD flags, const CMSG_SIGNED_ENCODE_INFO& info,
                                     const char* inner_type) {
    check_record_size(info);
    inner_ = inner_content(flags, inner_type);
    require_argument(info.rgSigners != nullptr || info.cSigners == 0);
    const auto* signer = info.rgSigners;
    for (DWORD i = 0; i < info.cSigners; ++i) {
        signers_.push_back(prepare_signer(*signer, inner_));
        signer = next_record(signer);
    }
    certificates_ = copy_sequences(info.rgCertEncoded, info.cCertEncoded);
    crls_ = copy_sequences(info.rgCrlEncoded, info.cCrlEncoded);
}

Bytes SignedDataEncoder::signer_info(const PreparedSigner& signer, Octets digested) const {
    std::optional<DerWriter> attributes;
    if (signer.has_signed_attributes) {
        attributes = signed_attributes(signer, digested);
    }
    const Octets to_sign = attributes ? attributes->written() : digested;
    const Bytes signature = signer.key->sign(signer.scheme, to_sign);

    DerWriter writer(2 * kHeaderRoom + signer.unsigned_attributes.size() + signature.size() +
                     signer.signature_algorithm.size() + (attributes ? attributes->size() : 0) +
                     signer.digest_algorithm.size() + signer.identifier.size());
    writer.octets(signer.unsigned_attributes);
    writer.element(kOctetString, signature);
    writer.octets(signer.signature_algorithm);
    if (attributes) {
        // In the message the same octets are tagged [0] IMPLICIT.
        const std::array<std::uint8_t, 1> tag{constructed_context(0)};
        writer.octets(to_sign.subspan(1));
        writer.octets(tag);
    }
    writer.octets(signer.digest_algorithm);
    writer.octets(signer.identifier);
    write_version(writer, 1);
    writer.wrap(kSequence, 0);
    return writer.copy();
}

std::size_t SignedDataEncoder::expected_size(Octets content, const std::vector<Bytes>& signer_infos) const {
    std::size_t size = 2 * kHeaderRoom + inner_.type.size() + content.size() + total_size(certificates_) +
                       total_size(crls_) + total_size(signer_infos);
    for (const PreparedSigner& signer : signers_) {
        size += signer.digest_algorithm.size();
    }
    return size;
}

DerWriter SignedDataEncoder::build(Octets content) const {
    const Octets digested = inner_.is_octet_string ? content : value_octets(content);
    std::vector<Bytes> signer_infos;
    for (const PreparedSigner& signer : signers_) {
        signer_infos.push_back(signer_info(signer, digested));
    }
    DerWriter writer(expected_size(content, signer_infos));
    writer.set_of(kSet, views(signer_infos));
    write_optional_set(writer, constructed_context(1), crls_);
    write_optional_set(writer, constructed_context(0), certificates_);

    const std::size_t encapsulated = writer.size();
    writer.octets(content);
    if (inner_.is_octet_string) {
        writer.wrap(kOctetString, encapsulated);
    }
    writer.wrap(constructed_context(0), encapsulated);
    writer.element(kObjectId, inner_.type);
    writer.wrap(kSequence, encapsulated);

    writer.set_of(kSet, distinct_digest_algorithms(signers_));
    write_version(writer, inner_.version);
    writer.wrap(kSequence, 0);
    writer.wrap(constructed_context(0), 0);
    writer.element(kObjectId, kSignedData);
    writer.wrap(kSequence, 0);
    return writer;
}

}  // namespace Quillmark::platform
