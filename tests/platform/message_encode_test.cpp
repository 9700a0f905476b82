// What is written for a SignedData (RFC 5652 section 5), and what opening and updating refuse.

#include <algorithm>
#include <array>
#include <cstring>

#include "tests/platform/der_tree.h"
#include "tests/platform/service.h"

namespace Quillmark::test {
namespace {

const Octets kContent = from_hex("30 03 02 01 05");

// The signed attributes with the tag under which they are signed.
Octets signed_attributes(const Octets& message) {
    Octets attributes = signer_fields(message).at(3);
    attributes.at(0) = 0x31;
    return attributes;
}

// Values of the attribute of this type, or nothing when it is not there.
std::vector<Octets> values_of(const Octets& attributes, const std::string& oid) {
    for (const Octets& attribute : children(attributes)) {
        if (children(attribute).at(0) == object_id(oid)) {
            return children(children(attribute).at(1));
        }
    }
    return {};
}

TEST(EncodedMessage, OfCertificatesAloneIsExactlyThis) {
    const Octets first = from_hex("30 01 00");
    const Octets second = from_hex("30 00");
    const Octets message = sign({.signers = {},
                                 .inner_type = std::nullopt,
                                 .flags = 0,
                                 .certificates = {first, second},
                                 .crls = {from_hex("30 02 05 00")}},
                                from_hex("aa"));
    // Sorted as X.690 11.6 orders the elements of a SET OF.
    EXPECT_EQ(
        to_hex(message),
        to_hex(sequence(
            {object_id("1.2.840.113549.1.7.2"),
             element(0xA0, sequence({element(0x02, "01"), element(0x31, ""),
                                     sequence({object_id(kDataOid), element(0xA0, element(0x04, "aa"))}),
                                     element(0xA0, {second, first}), element(0xA1, from_hex("30 02 05 00")),
                                     element(0x31, "")}))})));
}

TEST(EncodedMessage, OmitsCertificatesAndCrlsThatAreNotGiven) {
    EXPECT_EQ(signed_data_fields(sign({}, kContent)).size(), 4u);
}

TEST(EncodedMessage, HasVersion3ForOtherContentInCmsForm) {
    EXPECT_EQ(to_hex(signed_data_fields(sign({}, kContent)).at(0)), "02 01 03");
}

TEST(EncodedMessage, HasVersion1ForData) {
    EXPECT_EQ(to_hex(signed_data_fields(sign({.inner_type = std::nullopt}, kContent)).at(0)), "02 01 01");
    EXPECT_EQ(to_hex(signed_data_fields(sign({.inner_type = kDataOid}, kContent)).at(0)), "02 01 01");
}

TEST(EncodedMessage, WrapsContentInAnOctetString) {
    const std::vector<Octets> content = children(signed_data_fields(sign({}, kContent)).at(2));
    EXPECT_EQ(content.at(0), object_id(kTstInfoOid));
    EXPECT_EQ(content.at(1), element(0xA0, element(0x04, kContent)));
}

TEST(EncodedMessage, EmbedsContentOfTheOlderFormAsItStands) {
    const Octets message = sign({.flags = 0}, kContent);
    EXPECT_EQ(to_hex(signed_data_fields(message).at(0)), "02 01 01");
    EXPECT_EQ(children(signed_data_fields(message).at(2)).at(1), element(0xA0, kContent));
}

TEST(EncodedMessage, DigestsValueOctetsInTheOlderForm) {
    const Message message(open_to_encode({.flags = 0}));
    ASSERT_TRUE(message.update(kContent));
    const Message in_cms_form(open_to_encode({}));
    ASSERT_TRUE(in_cms_form.update(from_hex("02 01 05")));
    EXPECT_EQ(message.param(CMSG_COMPUTED_HASH_PARAM), in_cms_form.param(CMSG_COMPUTED_HASH_PARAM));
}

TEST(EncodedMessage, SignsEmptyContent) {
    const Message message(open_to_encode({}));
    EXPECT_TRUE(CryptMsgUpdate(message.handle(), nullptr, 0, 1)) << std::hex << GetLastError();
    EXPECT_EQ(children(signed_data_fields(message.param(CMSG_CONTENT_PARAM)).at(2)).at(1),
              element(0xA0, element(0x04, "")));
    // SHA-256 of nothing (FIPS 180-4 examples).
    EXPECT_EQ(
        to_hex(message.param(CMSG_COMPUTED_HASH_PARAM)),
        "e3 b0 c4 42 98 fc 1c 14 9a fb f4 c8 99 6f b9 24 27 ae 41 e4 64 9b 93 4c a4 95 99 1b 78 52 b8 55");
}

TEST(SignerInfo, NamesTheCertificate) {
    const std::vector<Octets> fields = signer_fields(sign({}, kContent));
    const Certificate certificate("tsa_p256.der");
    const CRYPT_DATA_BLOB& issuer = certificate.info()->Issuer;
    EXPECT_EQ(to_hex(fields.at(0)), "02 01 01");
    EXPECT_EQ(fields.at(1), sequence({Octets(issuer.pbData, issuer.pbData + issuer.cbData),
                                      element(0x02, "00 f1 23 45 67 89 ab cd ef")}));
}

TEST(SignerInfo, HasDigestParametersAsGiven) {
    const Octets null = element(0x05, "");
    EXPECT_EQ(signer_fields(sign({.signers = {{.digest_parameters = null}}}, kContent)).at(2),
              sequence({object_id(kSha256Oid), null}));
    EXPECT_EQ(signer_fields(sign({}, kContent)).at(2), sequence({object_id(kSha256Oid)}));
}

TEST(SignerInfo, HasContentTypeAndMessageDigestFirstMadeHere) {
    const Octets attributes = signed_attributes(sign({}, from_hex("61 62 63")));
    EXPECT_EQ(children(attributes).size(), 2u);
    EXPECT_EQ(values_of(attributes, "1.2.840.113549.1.9.3"), std::vector<Octets>{object_id(kTstInfoOid)});
    // SHA-256 of "abc" (FIPS 180-4 examples).
    EXPECT_EQ(
        values_of(attributes, "1.2.840.113549.1.9.4"),
        std::vector<Octets>{element(0x04,
                                    "ba 78 16 bf 8f 01 cf ea 41 41 40 de 5d ae 22 23 b0 03 61 a3 96 17 7a 9c "
                                    "b4 10 ff 61 f2 00 15 ad")});
}

TEST(SignerInfo, LeavesOutStaleContentTypeAndMessageDigest) {
    const Octets fresh = sign({}, kContent);
    const Octets stale =
        sign({.signers = {{.signed_attributes = {{"1.2.840.113549.1.9.3", {object_id(kDataOid)}},
                                                 {"1.2.840.113549.1.9.4", {element(0x04, "00")}}}}}},
             kContent);
    EXPECT_EQ(signed_attributes(stale), signed_attributes(fresh));
}

TEST(SignerInfo, SortsAttributesAndTheirValues) {
    const Octets message =
        sign({.signers = {{.signed_attributes = {{"1.2.5", {from_hex("02 01 02"), from_hex("02 01 01")}},
                                                 {"1.2.4", {from_hex("05 00")}},
                                                 {"1.2.6", {}}}}}},
             kContent);
    const Octets attributes = signed_attributes(message);
    const std::vector<Octets> list = children(attributes);
    EXPECT_EQ(list.size(), 5u);
    EXPECT_TRUE(std::is_sorted(list.begin(), list.end()));
    EXPECT_EQ(values_of(attributes, "1.2.5"),
              (std::vector<Octets>{from_hex("02 01 01"), from_hex("02 01 02")}));
    EXPECT_NE(std::find(list.begin(), list.end(), sequence({object_id("1.2.6"), element(0x31, "")})),
              list.end());
}

TEST(SignerInfo, HasUnsignedAttributesBehindTheSignature) {
    const Octets message =
        sign({.signers = {{.unsigned_attributes = {{"1.2.4", {from_hex("05 00")}}}}}}, kContent);
    const std::vector<Octets> fields = signer_fields(message);
    ASSERT_EQ(fields.size(), 7u);
    EXPECT_EQ(fields.at(6), element(0xA1, sequence({object_id("1.2.4"), element(0x31, "05 00")})));
    EXPECT_EQ(signer_fields(sign({}, kContent)).size(), 6u);
}

TEST(SignerInfo, HasNoSignedAttributesForBareData) {
    // RSA with PKCS #1 v1.5 gives the same signature each time, here over the content itself.
    const Octets message =
        sign({.signers = {{.name = "tsa_rsa2048"}}, .inner_type = std::nullopt, .flags = 0}, kContent);
    const std::vector<Octets> fields = signer_fields(message);
    ASSERT_EQ(fields.size(), 5u);
    EXPECT_EQ(fields.at(3), sequence({object_id("1.2.840.113549.1.1.1"), element(0x05, "")}));
    const TemporaryDirectory directory;
    write_file(directory.path("signature"), contents_of(fields.at(4)));
    write_file(directory.path("content"), kContent);
    EXPECT_TRUE(directory.run(
        "openssl x509 -pubkey -noout -in " + pki_path("tsa_rsa2048.pem") +
        " > public.pem && openssl dgst -sha256 -verify public.pem -signature signature content"));
}

TEST(SignerInfo, HasSignedAttributesForDataOnDemand) {
    const SignRequest with_flag{.inner_type = std::nullopt, .flags = CMSG_AUTHENTICATED_ATTRIBUTES_FLAG};
    EXPECT_EQ(children(signed_attributes(sign(with_flag, kContent))).size(), 2u);
    const SignRequest with_attribute{.signers = {{.signed_attributes = {{"1.2.4", {from_hex("05 00")}}}}},
                                     .inner_type = std::nullopt,
                                     .flags = 0};
    EXPECT_EQ(children(signed_attributes(sign(with_attribute, kContent))).size(), 3u);
}

TEST(SignatureAlgorithm, FollowsFromKeyAndDigest) {
    const auto written = [](const char* signer, const std::string& digest) {
        return signer_fields(sign({.signers = {{.name = signer, .digest = digest}}}, kContent)).at(4);
    };
    const Octets null = element(0x05, "");
    EXPECT_EQ(written("tsa_rsa2048", kSha512Oid), sequence({object_id("1.2.840.113549.1.1.1"), null}));
    EXPECT_EQ(written("tsa_p256", kSha1Oid), sequence({object_id("1.2.840.10045.4.1")}));
    EXPECT_EQ(written("tsa_p256", kSha256Oid), sequence({object_id("1.2.840.10045.4.3.2")}));
    EXPECT_EQ(written("tsa_p384", kSha384Oid), sequence({object_id("1.2.840.10045.4.3.3")}));
    EXPECT_EQ(written("tsa_p384", "2.16.840.1.101.3.4.2.8"),
              sequence({object_id("2.16.840.1.101.3.4.3.10")}));
    EXPECT_EQ(written("tsa_ed25519", kSha512Oid), sequence({object_id("1.3.101.112")}));
    const Octets hash = sequence({object_id(kSha256Oid), null});
    EXPECT_EQ(written("tsa_pss", kSha256Oid),
              sequence({object_id("1.2.840.113549.1.1.10"),
                        sequence({element(0xA0, hash),
                                  element(0xA1, sequence({object_id("1.2.840.113549.1.1.8"), hash})),
                                  element(0xA2, element(0x02, "20"))})}));
    // All values are the defaults of RFC 4055, and DER leaves those out.
    EXPECT_EQ(written("tsa_pss", kSha1Oid),
              sequence({object_id("1.2.840.113549.1.1.10"), element(0x30, "")}));
}

TEST(EncodedMessage, MergesDigestAlgorithmsAndSortsSigners) {
    const Octets message = sign({.signers = {{.name = "tsa_p384", .digest = kSha384Oid},
                                             {.name = "tsa_p256"},
                                             {.name = "tsa_rsa2048"}}},
                                kContent);
    const std::vector<Octets> fields = signed_data_fields(message);
    EXPECT_EQ(children(fields.at(1)),
              (std::vector<Octets>{sequence({object_id(kSha256Oid)}), sequence({object_id(kSha384Oid)})}));
    const std::vector<Octets> signers = children(fields.back());
    EXPECT_EQ(signers.size(), 3u);
    EXPECT_TRUE(std::is_sorted(signers.begin(), signers.end()));
}

TEST(EncodedMessage, LetsTheCallersRecordsGoOnceItIsOpen) {
    const SignRequest request{.signers = {{.signed_attributes = {{"1.2.4", {from_hex("05 00")}}}}},
                              .certificates = {read_pki("tsa_p256.der")}};
    HCRYPTMSG handle = nullptr;
    {
        EncodeRecords records(request);
        handle = records.open(request);
        std::memset(records.signers.data(), 0xEE, records.signers.size() * sizeof(CMSG_SIGNER_ENCODE_INFO));
        std::memset(&records.info, 0xEE, sizeof(records.info));
    }
    const Message message(handle);
    EXPECT_TRUE(message.update(kContent));
}

TEST(EncodedMessage, AnswersItsParameters) {
    const Message message(open_to_encode({}));
    ASSERT_TRUE(message.update(kContent));
    const Octets whole = message.param(CMSG_CONTENT_PARAM);
    EXPECT_EQ(message.param(CMSG_BARE_CONTENT_PARAM), children(children(whole).at(1)).at(0));
    EXPECT_EQ(message.param(CMSG_ENCODED_SIGNER), children(signed_data_fields(whole).back()).at(0));
    EXPECT_EQ(message.count(CMSG_SIGNER_COUNT_PARAM), 1u);
    EXPECT_EQ(message.param_error(CMSG_ENCODED_SIGNER, 1), CRYPT_E_INVALID_INDEX);
    EXPECT_EQ(message.param_error(CMSG_COMPUTED_HASH_PARAM, 1), CRYPT_E_INVALID_INDEX);
}

TEST(EncodedMessage, HasNoOtherParameters) {
    const Message message(open_to_encode({}));
    ASSERT_TRUE(message.update(kContent));
    for (const DWORD parameter :
         {0u, 1u, 4u, 6u, 7u, 8u, 9u, 10u, 11u, 12u, 13u, 14u, 15u, 21u, 23u, 27u, 29u, ~0u}) {
        EXPECT_EQ(message.param_error(parameter), CRYPT_E_INVALID_MSG_TYPE) << parameter;
    }
}

TEST(EncodedMessage, VerifiesWithoutARoundThroughItsEncoding) {
    const Message message(open_to_encode({}));
    const Certificate certificate("tsa_p256.der");
    EXPECT_TRUE(fails_with(CRYPT_E_MSG_ERROR, message.verify(certificate.info())));
    ASSERT_TRUE(message.update(kContent));
    EXPECT_TRUE(message.verify(certificate.info()));
    const Certificate other("other_tsa.der");
    EXPECT_TRUE(fails_with(CRYPT_E_SIGNER_NOT_FOUND, message.verify(other.info())));
}

TEST(CryptMsgUpdate, OnEncodingIsTakenOnce) {
    const Message message(open_to_encode({}));
    EXPECT_EQ(message.param_error(CMSG_CONTENT_PARAM), CRYPT_E_MSG_ERROR);
    EXPECT_EQ(message.param_error(99), CRYPT_E_MSG_ERROR);
    EXPECT_TRUE(fails_with(CRYPT_E_MSG_ERROR, CryptMsgUpdate(message.handle(), kContent.data(), 5, 0)));
    EXPECT_TRUE(fails_with(E_INVALIDARG, CryptMsgUpdate(message.handle(), nullptr, 5, 1)));
    EXPECT_TRUE(message.update(kContent));
    EXPECT_TRUE(fails_with(CRYPT_E_MSG_ERROR, message.update(kContent)));
    EXPECT_EQ(message.count(CMSG_SIGNER_COUNT_PARAM), 1u);
}

TEST(CryptMsgUpdate, RefusesContentThatIsNotOneElementInTheOlderForm) {
    for (const char* content : {"", "30 05 00", "30 00 00", "04 80"}) {
        const Message message(open_to_encode({.flags = 0}));
        EXPECT_FALSE(message.update(from_hex(content))) << content;
        EXPECT_EQ(GetLastError() & 0xFFFFFF00u, 0x80093100u) << content;
        EXPECT_EQ(message.param_error(CMSG_CONTENT_PARAM), CRYPT_E_MSG_ERROR);
    }
}

// Changes the records of a good request and expects the message not to open.
template <typename Change>
testing::AssertionResult refuses(DWORD code, Change&& change, const SignRequest& request = {}) {
    EncodeRecords records(request);
    change(records);
    const HCRYPTMSG handle = records.open(request);
    CryptMsgClose(handle);
    return fails_with(code, handle != nullptr);
}

TEST(CryptMsgOpenToEncode, RefusesBadArguments) {
    EncodeRecords records({});
    const auto open = [&](DWORD encoding, DWORD flags, DWORD type, const void* info,
                          PCMSG_STREAM_INFO stream) {
        return CryptMsgOpenToEncode(encoding, flags, type, info, nullptr, stream) != nullptr;
    };
    int stream = 0;
    EXPECT_TRUE(fails_with(E_INVALIDARG, open(X509_ASN_ENCODING, 0, CMSG_SIGNED, &records.info, nullptr)));
    EXPECT_TRUE(fails_with(CRYPT_E_INVALID_MSG_TYPE,
                           open(PKCS_7_ASN_ENCODING, 0, CMSG_DATA, &records.info, nullptr)));
    EXPECT_TRUE(
        fails_with(CRYPT_E_INVALID_MSG_TYPE, open(PKCS_7_ASN_ENCODING, 0, 3, &records.info, nullptr)));
    EXPECT_TRUE(fails_with(
        E_NOTIMPL, open(PKCS_7_ASN_ENCODING, CMSG_DETACHED_FLAG, CMSG_SIGNED, &records.info, nullptr)));
    EXPECT_TRUE(fails_with(E_INVALIDARG, open(PKCS_7_ASN_ENCODING, 0, CMSG_SIGNED, nullptr, nullptr)));
    EXPECT_TRUE(fails_with(E_INVALIDARG, open(PKCS_7_ASN_ENCODING, 0, CMSG_SIGNED, &records.info,
                                              reinterpret_cast<PCMSG_STREAM_INFO>(&stream))));
}

TEST(CryptMsgOpenToEncode, IgnoresUnknownFlags) {
    const Message message(open_to_encode({.flags = CMSG_CMS_ENCAPSULATED_CONTENT_FLAG | 0x200 | 0x40000000}));
    EXPECT_NE(message.handle(), nullptr);
}

TEST(CryptMsgOpenToEncode, RefusesSmallRecords) {
    EXPECT_TRUE(refuses(E_INVALIDARG, [](EncodeRecords& records) { records.info.cbSize = 47; }));
    EXPECT_TRUE(refuses(E_INVALIDARG, [](EncodeRecords& records) { records.signers[0].cbSize = 95; }));
}

// The long forms of the published records, with fields that are not known here.
template <typename Record, std::size_t size>
struct LongForm {
    Record record;
    std::array<BYTE, size - sizeof(Record)> more{};
};

TEST(CryptMsgOpenToEncode, TakesLongRecordsWhoseFurtherFieldsAreZero) {
    EncodeRecords records({.signers = {{.name = "tsa_p256"}, {.name = "tsa_rsa2048"}}});
    std::array<LongForm<CMSG_SIGNER_ENCODE_INFO, 168>, 2> signers{
        {{records.signers[0]}, {records.signers[1]}}};
    LongForm<CMSG_SIGNED_ENCODE_INFO, 64> info{records.info};
    info.record.cbSize = 64;
    info.record.rgSigners = &signers[0].record;
    signers[0].record.cbSize = 168;
    signers[1].record.cbSize = 168;
    const auto open = [&] {
        return CryptMsgOpenToEncode(PKCS_7_ASN_ENCODING, 0, CMSG_SIGNED, &info, nullptr, nullptr);
    };
    const Message message(open());
    ASSERT_NE(message.handle(), nullptr) << std::hex << GetLastError();
    EXPECT_TRUE(message.update(kContent));
    EXPECT_EQ(message.count(CMSG_SIGNER_COUNT_PARAM), 2u);

    info.more[15] = 1;
    EXPECT_TRUE(fails_with(E_INVALIDARG, open() != nullptr));
    info.more[15] = 0;
    signers[1].more[0] = 1;
    EXPECT_TRUE(fails_with(E_INVALIDARG, open() != nullptr));
}

TEST(CryptMsgOpenToEncode, RefusesIncompleteSigners) {
    EXPECT_TRUE(refuses(E_INVALIDARG, [](EncodeRecords& records) { records.info.rgSigners = nullptr; }));
    EXPECT_TRUE(
        refuses(E_INVALIDARG, [](EncodeRecords& records) { records.signers[0].pCertInfo = nullptr; }));
    EXPECT_TRUE(refuses(E_INVALIDARG,
                        [](EncodeRecords& records) { records.signers[0].pCertInfo->Issuer.cbData = 0; }));
    EXPECT_TRUE(refuses(
        E_INVALIDARG, [](EncodeRecords& records) { records.signers[0].pCertInfo->SerialNumber.cbData = 0; }));
    EXPECT_TRUE(refuses(E_INVALIDARG,
                        [](EncodeRecords& records) { records.signers[0].HashAlgorithm.pszObjId = nullptr; }));
    EXPECT_TRUE(refuses(E_INVALIDARG, [](EncodeRecords& records) { records.signers[0].cAuthAttr = 1; }));
    EXPECT_TRUE(refuses(E_INVALIDARG, [](EncodeRecords& records) { records.info.cCertEncoded = 1; }));
    EXPECT_TRUE(
        refuses(ERROR_INVALID_HANDLE, [](EncodeRecords& records) { records.signers[0].hCryptProv = 0; }));
}

SignRequest with_value(const char* value) {
    return {.signers = {{.signed_attributes = {{"1.2.4", {from_hex(value)}}}}}};
}

TEST(CryptMsgOpenToEncode, RefusesAttributeValuesThatAreNotOneElement) {
    const auto unchanged = [](EncodeRecords&) {};
    for (const char* value : {"", "05", "05 00 00", "05 00 05 00", "30 80 00", "00 00"}) {
        EXPECT_TRUE(refuses(E_INVALIDARG, unchanged, with_value(value))) << value;
    }
    EXPECT_TRUE(refuses(E_INVALIDARG, unchanged,
                        {.signers = {{.unsigned_attributes = {{"1.2.4", {from_hex("05")}}}}}}));
}

TEST(CryptMsgOpenToEncode, RefusesCertificatesThatAreNotOneSequence) {
    const auto unchanged = [](EncodeRecords&) {};
    for (const char* certificate : {"", "30 01", "30 00 00", "31 00", "04 00"}) {
        EXPECT_TRUE(refuses(E_INVALIDARG, unchanged, {.certificates = {from_hex(certificate)}}))
            << certificate;
        EXPECT_TRUE(refuses(E_INVALIDARG, unchanged, {.crls = {from_hex(certificate)}})) << certificate;
    }
}

TEST(CryptMsgOpenToEncode, RefusesTextsThatAreNoIdentifiers) {
    const auto unchanged = [](EncodeRecords&) {};
    EXPECT_TRUE(refuses(CRYPT_E_OID_FORMAT, unchanged, {.inner_type = "1.2.x"}));
    EXPECT_TRUE(refuses(CRYPT_E_OID_FORMAT, unchanged, {.signers = {{.digest = "SHA256"}}}));
    EXPECT_TRUE(refuses(CRYPT_E_OID_FORMAT, unchanged,
                        {.signers = {{.signed_attributes = {{"", {from_hex("05 00")}}}}}}));
}

TEST(CryptMsgOpenToEncode, RefusesUnknownAlgorithms) {
    const auto unchanged = [](EncodeRecords&) {};
    EXPECT_TRUE(refuses(CRYPT_E_UNKNOWN_ALGO, unchanged, {.signers = {{.digest = "1.2.3.4.5"}}}));
    EXPECT_TRUE(refuses(CRYPT_E_UNKNOWN_ALGO, unchanged, {.signers = {{.digest = "1.2.840.113549.2.5"}}}))
        << "MD5";
    std::string key_oid = "1.2.3.4.5";
    EXPECT_TRUE(refuses(CRYPT_E_UNKNOWN_ALGO, [&](EncodeRecords& records) {
        records.signers[0].pCertInfo->SubjectPublicKeyInfo.Algorithm.pszObjId = key_oid.data();
    }));
}

TEST(CryptMsgOpenToEncode, RefusesAlgorithmsThatDoNotGoTogether) {
    const auto unchanged = [](EncodeRecords&) {};
    EXPECT_TRUE(
        refuses(NTE_BAD_ALGID, unchanged, {.signers = {{.name = "tsa_ed25519", .digest = kSha256Oid}}}));
    // SHA-512/256 has no identifier for ECDSA.
    EXPECT_TRUE(refuses(NTE_BAD_ALGID, unchanged,
                        {.signers = {{.name = "tsa_p256", .digest = "2.16.840.1.101.3.4.2.6"}}}));
}

TEST(CryptMsgOpenToEncode, RefusesACertificateOfAnotherKey) {
    const Certificate other("other_tsa.der");
    EXPECT_TRUE(refuses(NTE_BAD_PUBLIC_KEY,
                        [&](EncodeRecords& records) { records.signers[0].pCertInfo = other.info(); }));
    const Certificate rsa("tsa_rsa2048.der");
    EXPECT_TRUE(refuses(NTE_BAD_PUBLIC_KEY,
                        [&](EncodeRecords& records) { records.signers[0].pCertInfo = rsa.info(); }));
}

TEST(CryptMsgOpenToEncode, KnowsThePublicKeyInItsCompressedForm) {
    EncodeRecords records({});
    CRYPT_BIT_BLOB& key = records.signers[0].pCertInfo->SubjectPublicKeyInfo.PublicKey;
    Octets point(key.pbData, key.pbData + 33);
    point[0] = static_cast<BYTE>(2 + (key.pbData[64] & 1));  // SEC 1, 2.3.3
    key = {.cbData = 33, .pbData = point.data(), .cUnusedBits = 0};
    const Message message(records.open({}));
    EXPECT_NE(message.handle(), nullptr) << std::hex << GetLastError();
}

TEST(CryptMsgOpenToEncode, KeepsToTheParametersOfAPssCertificate) {
    // The certificate allows SHA-256 with a salt of 32 octets or more.
    const Octets null = element(0x05, "");
    const Octets hash = sequence({object_id(kSha256Oid), null});
    Octets parameters =
        sequence({element(0xA0, hash), element(0xA1, sequence({object_id("1.2.840.113549.1.1.8"), hash})),
                  element(0xA2, element(0x02, "20"))});
    const auto restrict = [&](EncodeRecords& records) {
        records.signers[0].pCertInfo->SubjectPublicKeyInfo.Algorithm.Parameters = {
            .cbData = static_cast<DWORD>(parameters.size()), .pbData = parameters.data()};
    };
    const SignRequest allowed{.signers = {{.name = "tsa_pss", .digest = kSha256Oid}}};
    EncodeRecords records(allowed);
    restrict(records);
    const Message message(records.open(allowed));
    EXPECT_NE(message.handle(), nullptr) << std::hex << GetLastError();
    EXPECT_TRUE(refuses(NTE_BAD_ALGID, restrict, {.signers = {{.name = "tsa_pss", .digest = kSha384Oid}}}));
    parameters =
        sequence({element(0xA0, hash), element(0xA1, sequence({object_id("1.2.840.113549.1.1.8"), hash})),
                  element(0xA2, element(0x02, "21"))});
    EXPECT_TRUE(refuses(NTE_BAD_ALGID, restrict, allowed)) << "salt longer than the digest";
    parameters = element(0x04, "");
    EXPECT_TRUE(refuses(NTE_BAD_ALGID, restrict, allowed)) << "no parameters of RFC 4055";
}

}  // namespace
}  // namespace Quillmark::test
