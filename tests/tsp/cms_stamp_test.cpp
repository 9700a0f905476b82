// CMSStamp: stamps of the Authenticode exchange, signed with real keys.

#include "tsp/cms_stamp.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <new>
#include <string>
#include <vector>

#include "asn1/attribute.h"
#include "tests/support/blob.h"
#include "tests/support/case_name.h"
#include "tests/support/der.h"
#include "tests/support/message_service.h"
#include "tests/support/result_code.h"
#include "tests/support/test_keys.h"

namespace Quillmark::PKI::TSP {
namespace {

using namespace ASN1;
using test::blob;
using test::certificate;
using test::element;
using test::hex;
using test::join;
using test::MessageService;
using test::Octets;
using test::sequence;
using test::TestKey;

constexpr char kSha256Oid[] = "2.16.840.1.101.3.4.2.1";
constexpr char kSha512Oid[] = "2.16.840.1.101.3.4.2.3";

const CDateTime kTime(2024u, 1u, 2u, 3u, 4u, 5u, 0u, 0u);

/// AA BB, as the stamp takes it.
CBlob content() {
    return blob("04 02 aa bb");
}

CMSStamp unsigned_stamp() {
    return CMSStamp(content(), kTime);
}

void sign(CMSStamp& stamp, const std::string& name = "tsa_p256", const char* digest = kSha256Oid) {
    const TestKey key(name);
    stamp.sign(key.provider(), AT_SIGNATURE, certificate(name), CAlgorithmIdentifierEx(digest));
}

CMSStamp signed_stamp(const std::string& name = "tsa_p256") {
    CMSStamp stamp = unsigned_stamp();
    sign(stamp, name);
    return stamp;
}

CMSStamp decoded(const CBlob& bytes) {
    CMSStamp stamp;
    stamp.decode(bytes);
    return stamp;
}

CBlobList list_of(std::initializer_list<CBlob> certificates) {
    return CBlobList(certificates);
}

void expect_initial_values(const CMSStamp& stamp) {
    EXPECT_EQ(stamp.get_content().cbData(), 0u);
    EXPECT_TRUE(stamp.get_signingTime() == CDateTime(0L, 0));
    EXPECT_EQ(stamp.get_certificates(), nullptr);
    EXPECT_CODE(E_FAIL, stamp.encode());
    EXPECT_CODE(CRYPT_E_ASN1_EOD, stamp.get_signerInfo());
    EXPECT_CODE(CRYPT_E_ASN1_EOD, stamp.verify(certificate("tsa_p256")));
}

TEST(CMSStamp, StartsEmptyAndUnsigned) {
    expect_initial_values(CMSStamp());
}

TEST(CMSStamp, ConstructorTakesContentAndTimeAndSignsNothing) {
    MessageService service;
    const CMSStamp stamp = unsigned_stamp();
    EXPECT_EQ(hex(stamp.get_content()), "04 02 aa bb");
    EXPECT_TRUE(stamp.get_signingTime() == kTime);
    EXPECT_EQ(stamp.get_certificates(), nullptr);
    EXPECT_TRUE(service.calls().empty());
    EXPECT_CODE(E_FAIL, stamp.encode());
}

// A round trip for each kind of key

class SignedStamp : public testing::TestWithParam<const char*> {};

TEST_P(SignedStamp, VerifiesAsSigned) {
    EXPECT_TRUE(signed_stamp(GetParam()).verify(certificate(GetParam())));
}

TEST_P(SignedStamp, ComesBackAsItWasSent) {
    CMSStamp original = unsigned_stamp();
    const CBlobList certificates = list_of({certificate(GetParam()), certificate("ca")});
    original.put_certificates(&certificates);
    sign(original, GetParam());

    const CMSStamp stamp = decoded(original.encode());
    EXPECT_TRUE(stamp.verify(certificate(GetParam())));
    EXPECT_EQ(hex(stamp.get_content()), "04 02 aa bb");
    EXPECT_TRUE(stamp.get_signingTime() == kTime);
    EXPECT_TRUE(stamp.get_signerInfo() == original.get_signerInfo());
    ASSERT_NE(stamp.get_certificates(), nullptr);
    EXPECT_EQ(stamp.get_certificates()->size(), 2u);
}

TEST_P(SignedStamp, DoesNotVerifyWithAnotherCertificate) {
    EXPECT_FALSE(signed_stamp(GetParam()).verify(certificate("other_tsa")));
}

INSTANTIATE_TEST_SUITE_P(Keys, SignedStamp, testing::Values("tsa_rsa2048", "tsa_p256", "tsa_p384", "tsa_pss"),
                         [](const auto& row) { return std::string(row.param); });

TEST(CMSStampSign, SignsWithEd25519AndSha512) {
    CMSStamp stamp = unsigned_stamp();
    sign(stamp, "tsa_ed25519", kSha512Oid);
    EXPECT_TRUE(decoded(stamp.encode()).verify(certificate("tsa_ed25519")));
}

// The message

struct Signer {
    Octets issuer_and_serial;
    Octets signature;
};

Signer signer_of(const CMSStamp& stamp) {
    const CSignerInfo info = stamp.get_signerInfo();
    return {sequence({test::octets(info.get_issuer()), element(0x02, test::octets(info.get_serialNumber()))}),
            test::octets(info.get_signature())};
}

// RFC 5652 5.1: data inside, one signer with the three attributes and nothing unsigned.
TEST(CMSStampMessage, IsASignedDataOfData) {
    const Octets sha256 = sequence({element(0x06, "60 86 48 01 65 03 04 02 01")});
    const Octets data = element(0x06, "2a 86 48 86 f7 0d 01 07 01");
    const auto attribute = [](std::string_view last_arc, const Octets& value) {
        return sequence(
            {element(0x06, "2a 86 48 86 f7 0d 01 09 " + std::string(last_arc)), element(0x31, value)});
    };
    // The digest of AA BB, by sha256sum
    const Octets digest = element(0x04,
                                  "d7 98 d1 fa c6 bd 4b b1 c1 1f 50 31 27 60 35 10 13 37 9a 0a b6 f0 a8 c0 "
                                  "af 8a 50 6b 96 b2 52 5a");
    CMSStamp stamp = unsigned_stamp();
    const CBlobList certificates = list_of({certificate("tsa_rsa2048")});
    stamp.put_certificates(&certificates);
    sign(stamp, "tsa_rsa2048");

    const Signer signer = signer_of(stamp);
    const Octets attributes =
        join({attribute("03", data), attribute("05", test::text_element(0x17, "240102030405Z")),
              attribute("04", digest)});
    const Octets rsa_encryption = sequence({element(0x06, "2a 86 48 86 f7 0d 01 01 01"), element(0x05, "")});
    const Octets signer_info =
        sequence({element(0x02, "01"), signer.issuer_and_serial, sha256, element(0xa0, attributes),
                  rsa_encryption, element(0x04, signer.signature)});
    const Octets signed_data = sequence(
        {element(0x02, "01"), element(0x31, sha256), sequence({data, element(0xa0, element(0x04, "aa bb"))}),
         element(0xa0, test::octets(certificate("tsa_rsa2048"))), element(0x31, signer_info)});
    const Octets message =
        sequence({element(0x06, "2a 86 48 86 f7 0d 01 07 02"), element(0xa0, signed_data)});
    EXPECT_EQ(hex(stamp.encode()), test::to_hex(message));
    EXPECT_EQ(signer.signature.size(), 256u);
}

TEST(CMSStampMessage, DescribesItsSigner) {
    const CSignerInfo signer = signed_stamp().get_signerInfo();
    EXPECT_EQ(signer.get_version(), 1u);
    EXPECT_EQ(hex(signer.get_serialNumber()), "00 f1 23 45 67 89 ab cd ef");
    EXPECT_STREQ(signer.get_digestAlgorithm().get_algorithm(), kSha256Oid);
    EXPECT_NE(signer.get_signature().cbData(), 0u);
}

TEST(CMSStampMessage, IsWithoutCertificatesWhenNoneWerePut) {
    EXPECT_EQ(decoded(signed_stamp().encode()).get_certificates(), nullptr);
}

TEST(CMSStampMessage, TakesEmptyContent) {
    CMSStamp stamp(blob("04 00"), kTime);
    sign(stamp);
    EXPECT_TRUE(stamp.verify(certificate("tsa_p256")));
    EXPECT_EQ(hex(decoded(stamp.encode()).get_content()), "04 00");
}

// A length of three octets, in the content and in each element around it.
TEST(CMSStampMessage, TakesLongContent) {
    const CBlob long_content = toOctetString(CBlob(70'000ul));
    CMSStamp stamp(long_content, kTime);
    sign(stamp);
    const CMSStamp received = decoded(stamp.encode());
    EXPECT_TRUE(received.get_content() == long_content);
    EXPECT_TRUE(received.verify(certificate("tsa_p256")));
}

// What is signed is the value, so the form that it was put in does not come back.
TEST(CMSStampMessage, HasTheValueOfContentInAnotherForm) {
    CMSStamp stamp(blob("24 06 04 01 aa 04 01 bb"), kTime);
    sign(stamp);
    EXPECT_EQ(hex(stamp.get_content()), "24 06 04 01 aa 04 01 bb");
    const CMSStamp received = decoded(stamp.encode());
    EXPECT_EQ(hex(received.get_content()), "04 02 aa bb");
    EXPECT_TRUE(received.verify(certificate("tsa_p256")));
}

struct TimeCase {
    const char* name;
    CDateTime time;
    CDateTime received;
};

class StampTime : public testing::TestWithParam<TimeCase> {};

TEST_P(StampTime, ComesBack) {
    CMSStamp stamp(content(), GetParam().time);
    sign(stamp);
    EXPECT_TRUE(stamp.get_signingTime() == GetParam().time);
    EXPECT_TRUE(decoded(stamp.encode()).get_signingTime() == GetParam().received);
}

CDateTime at(unsigned int year, unsigned int month, unsigned int day, unsigned int second = 0,
             unsigned int millisecond = 0) {
    return CDateTime(year, month, day, 0u, 0u, second, millisecond, 0u);
}

const TimeCase kTimes[] = {
    {.name = "FirstOfUTCTime", .time = at(1950, 1, 1), .received = at(1950, 1, 1)},
    {.name = "Epoch", .time = CDateTime(0L, 0), .received = CDateTime(0L, 0)},
    {.name = "LastOfUTCTime", .time = at(2049, 12, 31, 59), .received = at(2049, 12, 31, 59)},
    {.name = "FirstOfGeneralizedTime", .time = at(2050, 1, 1), .received = at(2050, 1, 1)},
    {.name = "LastOfFourDigits", .time = at(9999, 12, 31), .received = at(9999, 12, 31)},
    // UTCTime has whole seconds; what is finer is cut off.
    {.name = "Fraction", .time = at(2024, 1, 2, 5, 999), .received = at(2024, 1, 2, 5)},
    // Intended: years before 1950 are not told apart from later ones (RFC 5652 11.3 has GeneralizedTime).
    {.name = "BeforeUTCTime", .time = at(1949, 12, 31), .received = at(2049, 12, 31)},
};

INSTANTIATE_TEST_SUITE_P(Times, StampTime, testing::ValuesIn(kTimes), test::case_name);

// Signing anew

// Intended: from `sign` on each `put_` signs at once, so that a series of them signs as many times.
TEST(CMSStampPut, SignsAnewEachTime) {
    CMSStamp stamp = signed_stamp();
    const CBlobList certificates = list_of({certificate("tsa_p256")});
    int signatures = 0;
    MessageService service;
    service.on_open_to_encode = [&](DWORD, const CMSG_SIGNED_ENCODE_INFO&, const char*) { ++signatures; };
    const auto expect_a_new_signature = [&](auto&& put) {
        const CBlob before = stamp.encode();
        const int count = signatures;
        put();
        EXPECT_EQ(signatures, count + 1);
        EXPECT_NE(stamp.encode(), before);
        EXPECT_TRUE(stamp.verify(certificate("tsa_p256")));
        EXPECT_TRUE(decoded(stamp.encode()).verify(certificate("tsa_p256")));
    };
    expect_a_new_signature([&] { stamp.put_content(blob("04 01 cc")); });
    EXPECT_EQ(hex(decoded(stamp.encode()).get_content()), "04 01 cc");
    expect_a_new_signature([&] { stamp.put_signingTime(at(2030, 1, 1)); });
    EXPECT_TRUE(decoded(stamp.encode()).get_signingTime() == at(2030, 1, 1));
    expect_a_new_signature([&] { stamp.put_certificates(&certificates); });
    EXPECT_TRUE(*decoded(stamp.encode()).get_certificates() == certificates);
    expect_a_new_signature([&] { stamp.put_certificates(nullptr); });
    EXPECT_EQ(decoded(stamp.encode()).get_certificates(), nullptr);
    EXPECT_EQ(service.open_messages(), 0);
    EXPECT_EQ(service.open_certificates(), 0);
}

TEST(CMSStampPut, SignsAnewForTheSameValue) {
    CMSStamp stamp = signed_stamp();
    const CBlob before = stamp.encode();
    stamp.put_content(stamp.get_content());
    EXPECT_NE(stamp.encode(), before) << "an ECDSA signature is not the same twice";
    EXPECT_TRUE(stamp.verify(certificate("tsa_p256")));
}

// Intended: the fields are behind a pointer, and the signature is the one that was published.
TEST(CMSStampPut, TakesContentThroughAConstantObject) {
    const CMSStamp stamp = signed_stamp();
    stamp.put_content(blob("04 01 cc"));
    EXPECT_EQ(hex(stamp.get_content()), "04 01 cc");
    EXPECT_EQ(hex(decoded(stamp.encode()).get_content()), "04 01 cc");
}

// Intended: nothing before `sign` makes a message.
TEST(CMSStampPut, BeforeSigningMakesNoMessage) {
    CMSStamp stamp;
    const CBlobList certificates = list_of({blob("00")});
    MessageService service;
    stamp.put_content(blob("ff"));
    stamp.put_signingTime(kTime);
    stamp.put_certificates(&certificates);
    EXPECT_TRUE(service.calls().empty());
    EXPECT_EQ(hex(stamp.get_content()), "ff");
    EXPECT_TRUE(stamp.get_signingTime() == kTime);
    EXPECT_TRUE(*stamp.get_certificates() == certificates);
    EXPECT_CODE(E_FAIL, stamp.encode());
}

TEST(CMSStampPut, AfterDecodingAloneLeavesTheMessage) {
    CMSStamp stamp = decoded(signed_stamp().encode());
    stamp.put_content(blob("04 01 cc"));
    stamp.put_signingTime(at(2030, 1, 1));
    EXPECT_EQ(hex(stamp.get_content()), "04 01 cc");
    EXPECT_TRUE(stamp.verify(certificate("tsa_p256"))) << "of the content that was decoded";
}

TEST(CMSStampPut, TakesItsOwnValue) {
    CMSStamp stamp = unsigned_stamp();
    const CBlobList certificates = list_of({certificate("tsa_p256")});
    stamp.put_certificates(&certificates);
    sign(stamp);
    stamp.put_content(stamp.get_content());
    stamp.put_signingTime(stamp.get_signingTime());
    stamp.put_certificates(stamp.get_certificates());
    const CMSStamp received = decoded(stamp.encode());
    EXPECT_EQ(hex(received.get_content()), "04 02 aa bb");
    EXPECT_TRUE(received.get_signingTime() == kTime);
    EXPECT_TRUE(*received.get_certificates() == certificates);
}

TEST(CMSStampSign, TakesACertificateThatLiesInTheStamp) {
    CMSStamp stamp = unsigned_stamp();
    const CBlobList certificates = list_of({certificate("tsa_p256")});
    stamp.put_certificates(&certificates);
    const TestKey key("tsa_p256");
    stamp.sign(key.provider(), AT_SIGNATURE, stamp.get_certificates()->front(),
               CAlgorithmIdentifierEx(kSha256Oid));
    EXPECT_TRUE(stamp.verify(stamp.get_certificates()->front()));
}

TEST(CMSStampSign, ReplacesTheSigner) {
    CMSStamp stamp = signed_stamp("tsa_rsa2048");
    sign(stamp, "tsa_p384", kSha512Oid);
    EXPECT_FALSE(stamp.verify(certificate("tsa_rsa2048")));
    EXPECT_TRUE(stamp.verify(certificate("tsa_p384")));
    EXPECT_STREQ(stamp.get_signerInfo().get_digestAlgorithm().get_algorithm(), kSha512Oid);
    stamp.put_content(blob("04 01 cc"));
    EXPECT_TRUE(stamp.verify(certificate("tsa_p384")));
}

// Encoding and decoding

TEST(CMSStamp, EncodesTheSameMessageEachTime) {
    const CMSStamp stamp = signed_stamp();
    MessageService service;
    EXPECT_EQ(stamp.encode(), stamp.encode());
    EXPECT_TRUE(service.calls().empty());
}

// Intended: a stamp that was decoded and never signed does not encode, though it has the bytes.
TEST(CMSStamp, DoesNotEncodeAfterDecodingAlone) {
    const CMSStamp stamp = decoded(signed_stamp().encode());
    EXPECT_CODE(E_FAIL, stamp.encode());
    EXPECT_CODE(E_FAIL, CMSStamp(stamp).encode());
}

// Intended: once signed, a stamp stays so, whatever it decodes.
TEST(CMSStamp, EncodesWhatItDecodedAfterItWasSignedOnce) {
    const CBlob other = signed_stamp("tsa_rsa2048").encode();
    CMSStamp stamp(blob("04 01 cc"), at(2030, 1, 1));
    sign(stamp);
    stamp.decode(other);
    EXPECT_EQ(stamp.encode(), other);
    EXPECT_TRUE(stamp.verify(certificate("tsa_rsa2048")));
    stamp.put_signingTime(at(2031, 1, 1));
    EXPECT_TRUE(stamp.verify(certificate("tsa_p256"))) << "the signer is the one that was set up";
    EXPECT_EQ(hex(decoded(stamp.encode()).get_content()), "04 02 aa bb");
}

TEST(CMSStamp, CanBeSignedAfterDecoding) {
    CMSStamp stamp = decoded(signed_stamp("tsa_rsa2048").encode());
    sign(stamp);
    EXPECT_TRUE(stamp.verify(certificate("tsa_p256")));
    EXPECT_FALSE(stamp.verify(certificate("tsa_rsa2048")));
    EXPECT_TRUE(decoded(stamp.encode()).get_signingTime() == kTime);
}

// Copying and clearing

TEST(CMSStamp, CopyHasEverything) {
    CMSStamp original = unsigned_stamp();
    const CBlobList certificates = list_of({certificate("tsa_p256")});
    original.put_certificates(&certificates);
    sign(original);
    const CMSStamp copy(original);
    EXPECT_EQ(hex(copy.get_content()), "04 02 aa bb");
    EXPECT_TRUE(copy.get_signingTime() == kTime);
    EXPECT_NE(copy.get_certificates(), original.get_certificates());
    EXPECT_TRUE(*copy.get_certificates() == certificates);
    EXPECT_EQ(copy.encode(), original.encode());
    EXPECT_TRUE(copy.verify(certificate("tsa_p256")));
}

TEST(CMSStamp, CopyIsIndependent) {
    CMSStamp original = signed_stamp();
    const CBlob before = original.encode();
    const CMSStamp copy(original);
    copy.put_content(blob("04 01 cc"));
    EXPECT_EQ(hex(original.get_content()), "04 02 aa bb");
    EXPECT_EQ(original.encode(), before);
    EXPECT_NE(copy.encode(), before);
}

TEST(CMSStamp, CopyOfADecodedStampVerifies) {
    const CMSStamp copy(decoded(signed_stamp().encode()));
    EXPECT_TRUE(copy.verify(certificate("tsa_p256")));
}

TEST(CMSStamp, AssignmentReplacesEverything) {
    CMSStamp stamp(blob("04 01 cc"), at(2030, 1, 1));
    const CBlobList certificates = list_of({certificate("tsa_p256")});
    stamp.put_certificates(&certificates);
    sign(stamp, "tsa_rsa2048");
    const CMSStamp other = signed_stamp();
    CMSStamp& result = stamp = other;
    EXPECT_EQ(&result, &stamp);
    EXPECT_EQ(stamp.encode(), other.encode());
    EXPECT_EQ(hex(stamp.get_content()), "04 02 aa bb");
    EXPECT_EQ(stamp.get_certificates(), nullptr);
    stamp.put_signingTime(at(2031, 1, 1));
    EXPECT_TRUE(stamp.verify(certificate("tsa_p256"))) << "with the other's signer";
    stamp = CMSStamp();
    expect_initial_values(stamp);
}

TEST(CMSStamp, SelfAssignmentChangesNothing) {
    CMSStamp stamp = unsigned_stamp();
    const CBlobList certificates = list_of({certificate("tsa_p256")});
    stamp.put_certificates(&certificates);
    const CMSStamp& self = stamp;
    const CBlobList* list = stamp.get_certificates();
    stamp = self;
    EXPECT_EQ(stamp.get_certificates(), list);
}

// Intended: the object may be destroyed afterwards, though nothing else.
TEST(CMSStamp, ClearLeavesANullPointerToDestroy) {
    alignas(CMSStamp) unsigned char storage[sizeof(CMSStamp)];
    auto* stamp = new (storage) CMSStamp(signed_stamp());
    stamp->clear();
    EXPECT_EQ(*reinterpret_cast<void**>(storage), nullptr);
    stamp->clear();
    stamp->~CMSStamp();
    EXPECT_EQ(*reinterpret_cast<void**>(storage), nullptr);
}

}  // namespace
}  // namespace Quillmark::PKI::TSP
