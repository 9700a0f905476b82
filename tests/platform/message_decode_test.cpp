// What is read of received messages, in DER and BER, and what every query answers.

#include <algorithm>

#include "tests/platform/der_tree.h"
#include "tests/platform/service.h"

namespace Quillmark::test {
namespace {

const Octets kTstInfo = from_hex("30 03 02 01 05");

// A SignedData put together by hand; its signature holds nothing.
struct Parts {
    Octets inner_type = object_id(kTstInfoOid);
    Octets content = element(0xA0, element(0x04, kTstInfo));
    Octets certificates = {};
    Octets crls = {};
    Octets signed_attributes = {};
    Octets unsigned_attributes = {};
    Octets digest = sequence({object_id(kSha256Oid)});
    Octets signature = element(0x04, "aa");
    Octets behind_signer = {};
    int signers = 1;
};

Octets signer_of(const Parts& parts) {
    return sequence({element(0x02, "01"), sequence({element(0x30, ""), element(0x02, "05")}), parts.digest,
                     parts.signed_attributes, sequence({object_id("1.2.840.10045.4.3.2")}), parts.signature,
                     parts.unsigned_attributes, parts.behind_signer});
}

Octets content_info(const std::string& type, const Octets& content) {
    return sequence({object_id(type), element(0xA0, content)});
}

Octets message_of(const Parts& parts) {
    Octets signers;
    for (int i = 0; i < parts.signers; ++i) {
        signers = join({signers, signer_of(parts)});
    }
    return content_info("1.2.840.113549.1.7.2",
                        sequence({element(0x02, "03"), element(0x31, parts.digest),
                                  sequence({parts.inner_type, parts.content}), parts.certificates, parts.crls,
                                  element(0x31, signers)}));
}

class Decoded : public Message {
  public:
    explicit Decoded(const Octets& octets) : Message(open_to_decode()), updated(update(octets)) {}
    const BOOL updated;
};

TEST(DecodedMessage, AnswersItsParameters) {
    const Octets certificate = sequence({element(0x05, "")});
    const Octets crl = sequence({element(0x02, "01")});
    const Parts parts{.certificates = element(0xA0, {certificate, element(0xA3, ""), element(0x30, "")}),
                      .crls = element(0xA1, crl)};
    const Decoded message(message_of(parts));
    ASSERT_TRUE(message.updated) << std::hex << GetLastError();
    EXPECT_EQ(message.count(CMSG_TYPE_PARAM), CMSG_SIGNED);
    EXPECT_EQ(message.param(CMSG_CONTENT_PARAM), kTstInfo);
    const Octets type = message.param(CMSG_INNER_CONTENT_TYPE_PARAM);
    EXPECT_EQ(type.size(), 26u);
    EXPECT_STREQ(reinterpret_cast<const char*>(type.data()), kTstInfoOid);
    EXPECT_EQ(message.count(CMSG_SIGNER_COUNT_PARAM), 1u);
    EXPECT_EQ(message.count(CMSG_CERT_COUNT_PARAM), 2u) << "only the X.509 choice counts";
    EXPECT_EQ(message.param(CMSG_CERT_PARAM, 0), certificate);
    EXPECT_EQ(message.param(CMSG_CERT_PARAM, 1), element(0x30, ""));
    EXPECT_EQ(message.count(CMSG_CRL_COUNT_PARAM), 1u);
    EXPECT_EQ(message.param(CMSG_CRL_PARAM), crl);
    EXPECT_EQ(message.param(CMSG_ENCODED_SIGNER), signer_of(parts));
}

TEST(DecodedMessage, RefusesIndexesThatAreNotBelowTheCount) {
    const Decoded message(message_of({.certificates = element(0xA0, element(0x30, ""))}));
    EXPECT_EQ(message.param_error(CMSG_CERT_PARAM, 1), CRYPT_E_INVALID_INDEX);
    EXPECT_EQ(message.param_error(CMSG_CRL_PARAM, 0), CRYPT_E_INVALID_INDEX);
    for (const DWORD parameter : {CMSG_SIGNER_AUTH_ATTR_PARAM, CMSG_SIGNER_UNAUTH_ATTR_PARAM,
                                  CMSG_ENCODED_SIGNER, CMSG_COMPUTED_HASH_PARAM}) {
        EXPECT_EQ(message.param_error(parameter, 1), CRYPT_E_INVALID_INDEX) << parameter;
        EXPECT_EQ(message.param_error(parameter, ~0u), CRYPT_E_INVALID_INDEX) << parameter;
    }
}

TEST(DecodedMessage, WithoutSignersAnswersQueriesOfTheFirstByItsIndex) {
    const Decoded message(message_of({.signers = 0}));
    ASSERT_TRUE(message.updated);
    EXPECT_EQ(message.count(CMSG_SIGNER_COUNT_PARAM), 0u);
    for (const DWORD parameter :
         {CMSG_ENCODED_SIGNER, CMSG_SIGNER_AUTH_ATTR_PARAM, CMSG_SIGNER_UNAUTH_ATTR_PARAM}) {
        EXPECT_EQ(message.param_error(parameter), CRYPT_E_INVALID_INDEX);
    }
    const CERT_INFO certificate{};
    EXPECT_TRUE(fails_with(CRYPT_E_SIGNER_NOT_FOUND, message.verify(&certificate)));
}

TEST(DecodedMessage, HasNoOtherParameters) {
    const Decoded message(message_of({}));
    for (const DWORD parameter : {0u, 3u, 6u, 7u, 8u, 15u, 21u, 23u, 27u, 29u, ~0u}) {
        EXPECT_EQ(message.param_error(parameter), CRYPT_E_INVALID_MSG_TYPE) << parameter;
    }
}

TEST(DecodedMessage, ComputesTheHashOfItsContent) {
    const Decoded message(message_of({.content = element(0xA0, element(0x04, "61 62 63"))}));
    EXPECT_EQ(
        to_hex(message.param(CMSG_COMPUTED_HASH_PARAM)),
        "ba 78 16 bf 8f 01 cf ea 41 41 40 de 5d ae 22 23 b0 03 61 a3 96 17 7a 9c b4 10 ff 61 f2 00 15 ad");
}

TEST(DecodedMessage, MayBeWithoutContent) {
    const Decoded message(message_of({.content = {}}));
    ASSERT_TRUE(message.updated);
    EXPECT_TRUE(message.param(CMSG_CONTENT_PARAM).empty());
    EXPECT_EQ(message.param_error(CMSG_COMPUTED_HASH_PARAM), CRYPT_E_MSG_ERROR);
}

TEST(DecodedMessage, GivesContentOfTheOlderFormAsItStands) {
    const Decoded message(message_of({.content = element(0xA0, kTstInfo)}));
    ASSERT_TRUE(message.updated);
    EXPECT_EQ(message.param(CMSG_CONTENT_PARAM), kTstInfo);
}

TEST(DecodedMessage, JoinsContentThatComesInSegments) {
    for (const char* content :
         {"24 09 04 02 30 03 04 03 02 01 05", "24 80 04 02 30 03 24 80 04 03 02 01 05 00 00 00 00"}) {
        const Decoded message(message_of({.content = element(0xA0, from_hex(content))}));
        ASSERT_TRUE(message.updated) << content;
        EXPECT_EQ(message.param(CMSG_CONTENT_PARAM), kTstInfo) << content;
    }
}

// The same message with indefinite lengths all over.
Octets indefinite(std::uint8_t tag, const Octets& contents) {
    return join({{tag, 0x80}, contents, {0, 0}});
}

TEST(DecodedMessage, IsReadInIndefiniteForm) {
    const Octets attributes =
        indefinite(0xA0, indefinite(0x30, join({object_id("1.2.4"), indefinite(0x31, from_hex("05 00"))})));
    const Octets certificate = indefinite(0x30, element(0x05, ""));
    const Octets signer = indefinite(
        0x30, join({element(0x02, "01"), indefinite(0x30, join({indefinite(0x30, {}), element(0x02, "05")})),
                    indefinite(0x30, object_id(kSha256Oid)), attributes,
                    sequence({object_id("1.2.840.10045.4.3.2")}), element(0x04, "aa")}));
    const Octets data = indefinite(
        0x30, join({element(0x02, "03"), indefinite(0x31, {}),
                    indefinite(0x30, join({object_id(kTstInfoOid),
                                           indefinite(0xA0, indefinite(0x24, element(0x04, kTstInfo)))})),
                    indefinite(0xA0, certificate), indefinite(0x31, signer)}));
    const Octets whole = indefinite(0x30, join({object_id("1.2.840.113549.1.7.2"), indefinite(0xA0, data)}));
    const Decoded message(whole);
    ASSERT_TRUE(message.updated) << std::hex << GetLastError();
    EXPECT_EQ(message.param(CMSG_CONTENT_PARAM), kTstInfo);
    EXPECT_EQ(message.param(CMSG_CERT_PARAM), certificate);
    EXPECT_EQ(message.param(CMSG_ENCODED_SIGNER), signer);
    const Octets block = message.param(CMSG_SIGNER_AUTH_ATTR_PARAM);
    EXPECT_EQ(reinterpret_cast<const CRYPT_ATTRIBUTES*>(block.data())->cAttr, 1u);
}

TEST(DecodedMessage, IgnoresOctetsBehindIt) {
    const Decoded message(join({message_of({}), from_hex("de ad be ef")}));
    ASSERT_TRUE(message.updated);
    EXPECT_EQ(message.param(CMSG_CONTENT_PARAM), kTstInfo);
}

TEST(DecodedMessage, OfPlainDataHasTypeAndContent) {
    const Decoded message(content_info(kDataOid, from_hex("24 80 04 01 aa 04 01 bb 00 00")));
    ASSERT_TRUE(message.updated) << std::hex << GetLastError();
    EXPECT_EQ(message.count(CMSG_TYPE_PARAM), CMSG_DATA);
    EXPECT_EQ(to_hex(message.param(CMSG_CONTENT_PARAM)), "aa bb");
    for (const DWORD parameter :
         {CMSG_INNER_CONTENT_TYPE_PARAM, CMSG_SIGNER_COUNT_PARAM, CMSG_CERT_COUNT_PARAM}) {
        EXPECT_EQ(message.param_error(parameter), CRYPT_E_INVALID_MSG_TYPE);
    }
    const CERT_INFO certificate{};
    EXPECT_TRUE(fails_with(CRYPT_E_INVALID_MSG_TYPE, message.verify(&certificate)));
}

TEST(DecodedMessage, WithUnknownDigestCanBeRead) {
    const Decoded message(message_of({.digest = sequence({object_id("1.2.3.4.5")})}));
    EXPECT_FALSE(message.updated);
    EXPECT_EQ(message.param(CMSG_CONTENT_PARAM), kTstInfo);
    EXPECT_EQ(message.count(CMSG_SIGNER_COUNT_PARAM), 1u);
    EXPECT_EQ(message.param_error(CMSG_COMPUTED_HASH_PARAM), CRYPT_E_UNKNOWN_ALGO);
    Octets issuer = element(0x30, "");
    Octets serial = {5};
    CERT_INFO certificate{};
    certificate.Issuer = {2, issuer.data()};
    certificate.SerialNumber = {1, serial.data()};
    EXPECT_TRUE(fails_with(CRYPT_E_UNKNOWN_ALGO, message.verify(&certificate)));
}

TEST(CryptMsgUpdate, OfUnknownDigestLeavesItsCode) {
    const Octets octets = message_of({.digest = sequence({object_id("1.2.3.4.5")})});
    const Message message(open_to_decode());
    EXPECT_TRUE(fails_with(CRYPT_E_UNKNOWN_ALGO, message.update(octets)));
}

struct BadCase {
    const char* name;
    Octets input;
    DWORD code;
};

void PrintTo(const BadCase& row, std::ostream* out) {
    *out << row.name;
}

class BadMessage : public testing::TestWithParam<BadCase> {};

TEST_P(BadMessage, IsRefusedAndAnswersNothing) {
    const Message message(open_to_decode());
    EXPECT_TRUE(fails_with(GetParam().code, message.update(GetParam().input)));
    EXPECT_EQ(message.param_error(CMSG_CONTENT_PARAM), CRYPT_E_MSG_ERROR);
    EXPECT_EQ(message.param_error(CMSG_TYPE_PARAM), CRYPT_E_MSG_ERROR);
    const CERT_INFO certificate{};
    EXPECT_TRUE(fails_with(CRYPT_E_MSG_ERROR, message.verify(&certificate)));
    EXPECT_TRUE(fails_with(CRYPT_E_MSG_ERROR, message.update(GetParam().input))) << "a second update";
}

const Octets kAttribute = sequence({object_id("1.2.4"), element(0x31, "05 00")});

const BadCase kBad[] = {
    {"NoSequence", from_hex("31 00"), CRYPT_E_ASN1_BADTAG},
    {"NoType", from_hex("30 00"), CRYPT_E_ASN1_CORRUPT},
    {"LongLength", from_hex("30 85 01 00 00 00 00"), CRYPT_E_ASN1_LARGE},
    {"InnerLengthPassesContainer", from_hex("30 02 06 05 2a 03 04 05 06"), CRYPT_E_ASN1_CORRUPT},
    {"MalformedType", from_hex("30 04 06 02 2a 86"), CRYPT_E_ASN1_CORRUPT},
    {"OtherContentType", content_info("1.2.840.113549.1.7.3", element(0x30, "")), CRYPT_E_INVALID_MSG_TYPE},
    {"SignedDataWithoutContent", sequence({object_id("1.2.840.113549.1.7.2")}), CRYPT_E_ASN1_CORRUPT},
    {"SignedDataNoSequence", content_info("1.2.840.113549.1.7.2", element(0x31, "")), CRYPT_E_ASN1_BADTAG},
    {"PlainDataNoOctetString", content_info(kDataOid, element(0x30, "")), CRYPT_E_ASN1_BADTAG},
    {"TwoContents", message_of({.content = element(0xA0, from_hex("04 00 04 00"))}), CRYPT_E_ASN1_CORRUPT},
    {"SegmentOfOtherType", message_of({.content = element(0xA0, from_hex("24 02 05 00"))}),
     CRYPT_E_ASN1_BADTAG},
    {"AttributesWithPrimitiveTag", message_of({.signed_attributes = element(0x80, kAttribute)}),
     CRYPT_E_ASN1_BADTAG},
    {"AttributeWithoutValues",
     message_of({.signed_attributes = element(0xA0, sequence({object_id("1.2.4")}))}), CRYPT_E_ASN1_CORRUPT},
    {"AttributeWithValueCut",
     message_of(
         {.unsigned_attributes = element(0xA1, sequence({object_id("1.2.4"), element(0x31, "05 01")}))}),
     CRYPT_E_ASN1_CORRUPT},
    {"SignatureNoOctetString", message_of({.signature = element(0x03, "aa")}), CRYPT_E_ASN1_BADTAG},
    {"FieldBehindSigner", message_of({.behind_signer = element(0xA2, "")}), CRYPT_E_ASN1_CORRUPT},
    {"OtherCertificateTag", message_of({.certificates = element(0xA2, "")}), CRYPT_E_ASN1_BADTAG},
};

INSTANTIATE_TEST_SUITE_P(Shapes, BadMessage, testing::ValuesIn(kBad),
                         [](const auto& row) { return row.param.name; });

TEST(CryptMsgUpdate, OnDecodingRefusesEmptyData) {
    const Message message(open_to_decode());
    EXPECT_TRUE(fails_with(CRYPT_E_ASN1_EOD, CryptMsgUpdate(message.handle(), nullptr, 0, 1)));
    EXPECT_EQ(message.param_error(CMSG_CONTENT_PARAM), CRYPT_E_MSG_ERROR);
}

TEST(CryptMsgUpdate, OnDecodingIsTakenOnce) {
    const Octets octets = message_of({});
    const Message message(open_to_decode());
    const auto size = static_cast<DWORD>(octets.size());
    EXPECT_EQ(message.param_error(CMSG_TYPE_PARAM), CRYPT_E_MSG_ERROR);
    EXPECT_TRUE(fails_with(CRYPT_E_MSG_ERROR, CryptMsgUpdate(message.handle(), octets.data(), size, 0)));
    EXPECT_TRUE(fails_with(E_INVALIDARG, CryptMsgUpdate(message.handle(), nullptr, 1, 1)));
    EXPECT_TRUE(message.update(octets));
    EXPECT_TRUE(fails_with(CRYPT_E_MSG_ERROR, message.update(octets)));
    EXPECT_EQ(message.param(CMSG_CONTENT_PARAM), kTstInfo) << "the first one stands";
}

TEST(CryptMsgUpdate, CopiesItsInput) {
    Octets octets = message_of({});
    const Message message(open_to_decode());
    ASSERT_TRUE(message.update(octets));
    std::fill(octets.begin(), octets.end(), 0);
    EXPECT_EQ(message.param(CMSG_CONTENT_PARAM), kTstInfo);
}

TEST(CryptMsgOpenToDecode, RefusesBadArguments) {
    const auto open = [](DWORD encoding, DWORD flags, DWORD type, PCERT_INFO recipient,
                         PCMSG_STREAM_INFO stream) {
        const HCRYPTMSG handle = CryptMsgOpenToDecode(encoding, flags, type, 0, recipient, stream);
        CryptMsgClose(handle);
        return handle != nullptr;
    };
    CERT_INFO recipient{};
    auto* const stream = reinterpret_cast<PCMSG_STREAM_INFO>(&recipient);
    EXPECT_TRUE(fails_with(E_INVALIDARG, open(X509_ASN_ENCODING, 0, 0, nullptr, nullptr)));
    EXPECT_TRUE(fails_with(E_NOTIMPL, open(PKCS_7_ASN_ENCODING, CMSG_DETACHED_FLAG, 0, nullptr, nullptr)));
    EXPECT_TRUE(fails_with(NTE_BAD_FLAGS, open(PKCS_7_ASN_ENCODING, 1, 0, nullptr, nullptr)));
    EXPECT_TRUE(fails_with(CRYPT_E_INVALID_MSG_TYPE, open(PKCS_7_ASN_ENCODING, 0, 3, nullptr, nullptr)));
    EXPECT_TRUE(fails_with(E_INVALIDARG, open(PKCS_7_ASN_ENCODING, 0, 0, &recipient, nullptr)));
    EXPECT_TRUE(fails_with(E_INVALIDARG, open(PKCS_7_ASN_ENCODING, 0, 0, nullptr, stream)));
    for (const DWORD type : {0u, 1u, 2u}) {
        EXPECT_TRUE(open(PKCS_7_ASN_ENCODING, 0, type, nullptr, nullptr)) << type;
    }
}

TEST(CryptMsgGetParam, TellsTheSizeOfBuffersThatAreTooSmall) {
    const Decoded message(message_of({}));
    BYTE buffer[8] = {};
    DWORD size = 4;
    EXPECT_TRUE(fails_with(ERROR_MORE_DATA,
                           CryptMsgGetParam(message.handle(), CMSG_CONTENT_PARAM, 0, buffer, &size)));
    EXPECT_EQ(size, 5u);
    EXPECT_EQ(buffer[0], 0) << "nothing is written";
    EXPECT_TRUE(CryptMsgGetParam(message.handle(), CMSG_CONTENT_PARAM, 0, buffer, &size));
    size = 8;
    EXPECT_TRUE(CryptMsgGetParam(message.handle(), CMSG_CONTENT_PARAM, 0, buffer, &size));
    EXPECT_EQ(size, 5u);
    EXPECT_EQ(buffer[0], 0x30);
    size = 3;
    EXPECT_TRUE(fails_with(ERROR_MORE_DATA,
                           CryptMsgGetParam(message.handle(), CMSG_SIGNER_COUNT_PARAM, 0, buffer, &size)));
    EXPECT_EQ(size, 4u);
    EXPECT_TRUE(
        fails_with(E_INVALIDARG, CryptMsgGetParam(message.handle(), CMSG_CONTENT_PARAM, 0, buffer, nullptr)));
}

TEST(CryptMsgControl, RefusesOtherControlsAndNull) {
    const Decoded message(message_of({}));
    const CERT_INFO certificate{};
    EXPECT_TRUE(fails_with(CRYPT_E_CONTROL_TYPE, CryptMsgControl(message.handle(), 0, 2, &certificate)));
    EXPECT_TRUE(fails_with(E_INVALIDARG, message.verify(nullptr)));
}

TEST(AttributeBlock, IsMissingWithSizeZero) {
    const Decoded message(message_of({}));
    for (const DWORD parameter : {CMSG_SIGNER_AUTH_ATTR_PARAM, CMSG_SIGNER_UNAUTH_ATTR_PARAM}) {
        DWORD size = 77;
        EXPECT_TRUE(fails_with(CRYPT_E_ATTRIBUTES_MISSING,
                               CryptMsgGetParam(message.handle(), parameter, 0, nullptr, &size)));
        EXPECT_EQ(size, 0u);
    }
}

TEST(AttributeBlock, LiesWhollyInTheBufferOfTheCaller) {
    const Octets attributes =
        join({sequence({object_id("1.2.840.113549.1.9.4"), element(0x31, "04 01 aa 04 02 bb cc")}),
              sequence({object_id("1.2.4"), element(0x31, "")}), kAttribute});
    const Decoded message(message_of({.signed_attributes = element(0xA0, attributes)}));
    ASSERT_TRUE(message.updated);
    alignas(8) BYTE buffer[512];
    DWORD size = 0;
    ASSERT_TRUE(CryptMsgGetParam(message.handle(), CMSG_SIGNER_AUTH_ATTR_PARAM, 0, nullptr, &size));
    // Header, three records, three blobs, values of 3, 4 and 2 octets, texts of 21, 6 and 6 with terminators.
    EXPECT_EQ(size, 16u + 3 * 24 + 3 * 16 + 3 + 4 + 2 + 21 + 6 + 6);
    ASSERT_TRUE(CryptMsgGetParam(message.handle(), CMSG_SIGNER_AUTH_ATTR_PARAM, 0, buffer, &size));

    const auto* block = reinterpret_cast<const CRYPT_ATTRIBUTES*>(buffer);
    ASSERT_EQ(block->cAttr, 3u);
    EXPECT_EQ(reinterpret_cast<const BYTE*>(block->rgAttr), buffer + 16);
    EXPECT_STREQ(block->rgAttr[0].pszObjId, "1.2.840.113549.1.9.4");
    ASSERT_EQ(block->rgAttr[0].cValue, 2u);
    EXPECT_EQ(reinterpret_cast<const BYTE*>(block->rgAttr[0].rgValue), buffer + 16 + 72);
    const CRYPT_ATTR_BLOB& second = block->rgAttr[0].rgValue[1];
    EXPECT_EQ(to_hex(second.pbData, second.cbData), "04 02 bb cc");
    EXPECT_STREQ(block->rgAttr[1].pszObjId, "1.2.4");
    EXPECT_EQ(block->rgAttr[1].cValue, 0u);
    EXPECT_EQ(block->rgAttr[1].rgValue, nullptr);
    const CRYPT_ATTR_BLOB& last = block->rgAttr[2].rgValue[0];
    EXPECT_EQ(to_hex(last.pbData, last.cbData), "05 00");
    for (const BYTE* pointer :
         {second.pbData, last.pbData, reinterpret_cast<BYTE*>(block->rgAttr[2].pszObjId)}) {
        EXPECT_GE(pointer, buffer);
        EXPECT_LT(pointer, buffer + size);
    }
}

TEST(AttributeBlock, OfAnEmptySetHasNoRecords) {
    const Decoded message(message_of({.unsigned_attributes = element(0xA1, "")}));
    ASSERT_TRUE(message.updated);
    EXPECT_EQ(message.param(CMSG_SIGNER_UNAUTH_ATTR_PARAM).size(), sizeof(CRYPT_ATTRIBUTES));
}

TEST(AttributeBlock, GivesAttributesAndCertificatesThatWereEncodedHere) {
    const Octets octets =
        sign({.signers = {{.signed_attributes = {{"1.2.5", {from_hex("02 01 02"), from_hex("02 01 01")}}},
                           .unsigned_attributes = {{"1.2.6", {from_hex("05 00")}}}}},
              .certificates = {read_pki("tsa_p256.der"), read_pki("ca.der")}},
             kTstInfo);
    const Decoded message(octets);
    ASSERT_TRUE(message.updated);
    const Octets block = message.param(CMSG_SIGNER_UNAUTH_ATTR_PARAM);
    EXPECT_EQ(reinterpret_cast<const CRYPT_ATTRIBUTES*>(block.data())->cAttr, 1u);
    EXPECT_EQ(message.count(CMSG_CERT_COUNT_PARAM), 2u);
    const Octets a = message.param(CMSG_CERT_PARAM, 0);
    const Octets b = message.param(CMSG_CERT_PARAM, 1);
    EXPECT_LT(a, b) << "a SET OF comes back in the order of DER";
    EXPECT_TRUE((a == read_pki("tsa_p256.der") && b == read_pki("ca.der")) ||
                (b == read_pki("tsa_p256.der") && a == read_pki("ca.der")));
}

}  // namespace
}  // namespace Quillmark::test
