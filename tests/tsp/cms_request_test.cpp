// CMSRequest: requests of the Authenticode exchange.

#include "tsp/cms_request.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <new>
#include <vector>

#include "runtime/message_buffer.h"
#include "tests/support/blob.h"
#include "tests/support/case_name.h"
#include "tests/support/codec_heap.h"
#include "tests/support/codes_without_memory.h"
#include "tests/support/result_code.h"

namespace Quillmark::PKI::TSP {
namespace {

using namespace ASN1;
using test::blob;
using test::codes_without_memory;
using test::hex;

constexpr char kAlgorithm[] = "1.3.6.1.4.1.311.3.2.1";
constexpr char kData[] = "1.2.840.113549.1.7.1";

// The algorithm of the exchange, and the data AA BB (RFC 5652 4).
constexpr char kSmallest[] =
    "30 1f 06 0a 2b 06 01 04 01 82 37 03 02 01"
    "30 11 06 09 2a 86 48 86 f7 0d 01 07 01 a0 04 04 02 aa bb";
// Algorithm 1.2.3, content 05 00 of the type 1.2.4, which no table knows.
constexpr char kShort[] = "30 0e 06 02 2a 03 30 08 06 02 2a 04 a0 02 05 00";
// The same with the attributes 1.2.5 of value 1, 1.2.9 of value NULL, and 1.2.6 of the values 1 and 2. In a
// DER set the shorter encoding comes first here, because its length octet is smaller (X.690 11.6).
constexpr char kFull[] =
    "30 33 06 02 2a 03"
    "31 23 30 08 06 02 2a 09 31 02 05 00"
    "30 09 06 02 2a 05 31 03 02 01 01"
    "30 0c 06 02 2a 06 31 06 02 01 01 02 01 02"
    "30 08 06 02 2a 04 a0 02 05 00";

CMSRequest smallest_request() {
    return CMSRequest(kAlgorithm, CContentInfo(kData, blob("04 02 aa bb")));
}

CMSRequest short_request() {
    return CMSRequest("1.2.3", CContentInfo("1.2.4", blob("05 00")));
}

CAttribute attribute(const char* oid, std::initializer_list<const char*> values) {
    CAttribute result(oid);
    for (const char* value : values) {
        result.add(blob(value));
    }
    return result;
}

CAttribute one() {
    return attribute("1.2.5", {"02 01 01"});
}

CAttribute two() {
    return attribute("1.2.6", {"02 01 02", "02 01 01"});
}

CAttribute null() {
    return attribute("1.2.9", {"05 00"});
}

CMSRequest full_request(std::initializer_list<CAttribute> list = {two(), one(), null()}) {
    CMSRequest request = short_request();
    const CAttributes attributes(list);
    request.put_attributes(&attributes);
    return request;
}

CMSRequest decoded(const char* hex) {
    CMSRequest request;
    request.decode(blob(hex));
    return request;
}

void expect_initial_values(const CMSRequest& request) {
    EXPECT_STREQ(request.get_timeStampAlgorithm(), "");
    EXPECT_STREQ(request.get_contentInfo().get_contentType(), "");
    EXPECT_EQ(request.get_contentInfo().get_content().cbData(), 0u);
    EXPECT_EQ(request.get_attributes(), nullptr);
}

TEST(CMSRequest, StartsEmpty) {
    expect_initial_values(CMSRequest());
}

TEST(CMSRequest, ConstructorTakesAlgorithmAndContent) {
    const CMSRequest request = smallest_request();
    EXPECT_STREQ(request.get_timeStampAlgorithm(), kAlgorithm);
    EXPECT_STREQ(request.get_contentInfo().get_contentType(), kData);
    EXPECT_EQ(hex(request.get_contentInfo().get_content()), "04 02 aa bb");
    EXPECT_EQ(request.get_attributes(), nullptr);
}

TEST(CMSRequest, TakesANullTextForAnEmptyOne) {
    CMSRequest request(nullptr, CContentInfo(kData, blob("04 00")));
    EXPECT_STREQ(request.get_timeStampAlgorithm(), "");
    request.put_timeStampAlgorithm(kAlgorithm);
    request.put_timeStampAlgorithm(nullptr);
    EXPECT_STREQ(request.get_timeStampAlgorithm(), "");
}

// Encoding

TEST(CMSRequest, EncodesTheSmallestRequest) {
    EXPECT_EQ(hex(smallest_request().encode()), hex(blob(kSmallest)));
}

TEST(CMSRequest, EncodesContentThatNoTableKnows) {
    EXPECT_EQ(hex(short_request().encode()), hex(blob(kShort)));
}

TEST(CMSRequest, EncodesAttributesInTheOrderOfADerSet) {
    std::vector<CAttribute> list = {one(), two(), null()};
    const auto by_oid = [](const CAttribute& left, const CAttribute& right) {
        return std::string(left.get_oid()) < right.get_oid();
    };
    std::sort(list.begin(), list.end(), by_oid);
    do {
        EXPECT_EQ(hex(full_request({list[0], list[1], list[2]}).encode()), hex(blob(kFull)))
            << list[0].get_oid() << ' ' << list[1].get_oid() << ' ' << list[2].get_oid();
    } while (std::next_permutation(list.begin(), list.end(), by_oid));
}

TEST(CMSRequest, EncodingLeavesTheOrderOfItsOwnList) {
    const CMSRequest request = full_request();
    (void)request.encode();
    EXPECT_STREQ(request.get_attributes()->front().get_oid(), "1.2.6");
}

TEST(CMSRequest, DecodingGivesAttributesInTheOrderOfTheMessage) {
    const CMSRequest request = decoded(hex(full_request().encode()).c_str());
    ASSERT_NE(request.get_attributes(), nullptr);
    ASSERT_EQ(request.get_attributes()->size(), 3u);
    auto next = request.get_attributes()->begin();
    EXPECT_STREQ(next++->get_oid(), "1.2.9");
    EXPECT_STREQ(next++->get_oid(), "1.2.5");
    EXPECT_STREQ(next->get_oid(), "1.2.6");
    EXPECT_EQ(hex(next->begin()->get_value()), "02 01 01");
}

TEST(CMSRequest, WritesAttributesOfTheSameTypeSideBySide) {
    const CMSRequest request = full_request({attribute("1.2.5", {"02 01 02"}), one()});
    EXPECT_EQ(hex(request.encode()),
              hex(blob("30 26 06 02 2a 03 31 16 30 09 06 02 2a 05 31 03 02 01 01"
                       "30 09 06 02 2a 05 31 03 02 01 02 30 08 06 02 2a 04 a0 02 05 00")));
}

// Intended: a SET of attributes has at least one on the wire, so an empty list is left out.
TEST(CMSRequest, LeavesAnEmptyListOut) {
    CMSRequest request = full_request({});
    EXPECT_EQ(hex(request.encode()), hex(blob(kShort)));
    ASSERT_NE(request.get_attributes(), nullptr) << "encoding does not touch the list";
    EXPECT_TRUE(request.get_attributes()->empty());
    request.decode(request.encode());
    EXPECT_EQ(request.get_attributes(), nullptr);
}

TEST(CMSRequest, GoesBothWaysWithAnAttributeWithoutValues) {
    const CMSRequest request = full_request({attribute("1.2.5", {})});
    EXPECT_EQ(hex(request.encode()),
              hex(blob("30 18 06 02 2a 03 31 08 30 06 06 02 2a 05 31 00 30 08 06 02 2a 04 a0 02 05 00")));
    CMSRequest received;
    received.decode(request.encode());
    ASSERT_NE(received.get_attributes(), nullptr);
    EXPECT_EQ(received.get_attributes()->front().size(), 0u);
}

TEST(CMSRequest, EncodesTheSameEachTime) {
    const CMSRequest request = full_request();
    EXPECT_EQ(request.encode(), request.encode());
}

TEST(CMSRequest, EncodesAnAlgorithmOfTheLargestArcs) {
    const CMSRequest request("2.4294967215.4294967294", CContentInfo("1.2.4", blob("05 00")));
    EXPECT_EQ(hex(request.encode()),
              hex(blob("30 16 06 0a 8f ff ff ff 7f 8f ff ff ff 7e 30 08 06 02 2a 04 a0 02 05 00")));
}

// A length of three octets, in the content and in each element around it.
TEST(CMSRequest, GoesBothWaysWithALongContent) {
    const std::size_t size = 70'000;
    const CBlob content = toOctetString(CBlob(size));
    const CMSRequest request(kAlgorithm, CContentInfo(kData, content));
    const CBlob bytes = request.encode();
    EXPECT_EQ(bytes.cbData(), size + 5 + 5 + 11 + 5 + 12 + 5);
    CMSRequest received;
    received.decode(bytes);
    EXPECT_TRUE(received.get_contentInfo().get_content() == content);
}

struct UnfitCase {
    const char* name;
    CMSRequest request;
    HRESULT code;
};

class UnfitRequest : public testing::TestWithParam<UnfitCase> {};

TEST_P(UnfitRequest, IsNotEncoded) {
    test::CodecHeap heap;
    EXPECT_CODE(GetParam().code, GetParam().request.encode());
    EXPECT_EQ(heap.live_blocks(), 0u);
}

const UnfitCase kUnfit[] = {
    {.name = "Empty", .request = CMSRequest(), .code = E_INVALIDARG},
    {.name = "AlgorithmNoOid",
     .request = CMSRequest("sha", CContentInfo("1.2.4", blob("05 00"))),
     .code = E_INVALIDARG},
    // Intended: the largest arc is refused where it is the last.
    {.name = "AlgorithmOfLargestLastArc",
     .request = CMSRequest("1.2.4294967295", CContentInfo("1.2.4", blob("05 00"))),
     .code = E_INVALIDARG},
    {.name = "AlgorithmOfFirstArc3",
     .request = CMSRequest("3.1", CContentInfo("1.2.4", blob("05 00"))),
     .code = CRYPT_E_ASN1_INTERNAL},
    {.name = "ContentTypeNoOid",
     .request = CMSRequest("1.2.3", CContentInfo("data", blob("05 00"))),
     .code = E_INVALIDARG},
    // A type that the tables know must have its content.
    {.name = "DataThatIsNoOctetString",
     .request = CMSRequest("1.2.3", CContentInfo(kData, blob("05 00"))),
     .code = CRYPT_E_ASN1_INTERNAL},
    {.name = "DataWithoutContent",
     .request = CMSRequest("1.2.3", CContentInfo(kData, CBlob())),
     .code = CRYPT_E_ASN1_INTERNAL},
    {.name = "AttributeNoOid", .request = full_request({attribute("x", {"05 00"})}), .code = E_INVALIDARG},
    {.name = "SigningTimeThatIsNoTime",
     .request = full_request({attribute("1.2.840.113549.1.9.5", {"05 00"})}),
     .code = CRYPT_E_ASN1_INTERNAL},
};

INSTANTIATE_TEST_SUITE_P(Fields, UnfitRequest, testing::ValuesIn(kUnfit), test::case_name);

// Decoding

TEST(CMSRequest, DecodesEveryElement) {
    const CMSRequest request = decoded(kFull);
    EXPECT_STREQ(request.get_timeStampAlgorithm(), "1.2.3");
    EXPECT_STREQ(request.get_contentInfo().get_contentType(), "1.2.4");
    EXPECT_EQ(hex(request.get_contentInfo().get_content()), "05 00");
    ASSERT_NE(request.get_attributes(), nullptr);
    EXPECT_TRUE(*request.get_attributes() ==
                (CAttributes{null(), one(), attribute("1.2.6", {"02 01 01", "02 01 02"})}));
}

TEST(CMSRequest, DecodingWithoutAttributesClearsTheOldOnes) {
    CMSRequest request = full_request();
    request.decode(blob(kSmallest));
    EXPECT_EQ(request.get_attributes(), nullptr);
    EXPECT_STREQ(request.get_timeStampAlgorithm(), kAlgorithm);
    EXPECT_STREQ(request.get_contentInfo().get_contentType(), kData);
    EXPECT_EQ(hex(request.get_contentInfo().get_content()), "04 02 aa bb");
}

TEST(CMSRequest, DecodingReplacesOldAttributes) {
    CMSRequest request = full_request({null(), null(), null(), null()});
    request.decode(blob(kFull));
    EXPECT_EQ(request.get_attributes()->size(), 3u);
}

struct AcceptedCase {
    const char* name;
    const char* ber;
    const char* der;  ///< what encoding it again gives
};

class AcceptedCMSRequest : public testing::TestWithParam<AcceptedCase> {};

TEST_P(AcceptedCMSRequest, ComesBackInDer) {
    EXPECT_EQ(hex(decoded(GetParam().ber).encode()), hex(blob(GetParam().der)));
}

const AcceptedCase kAccepted[] = {
    {.name = "Smallest", .ber = kSmallest, .der = kSmallest},
    {.name = "Short", .ber = kShort, .der = kShort},
    {.name = "Full", .ber = kFull, .der = kFull},
    {.name = "IndefiniteLength",
     .ber = "30 80 06 02 2a 03 30 08 06 02 2a 04 a0 02 05 00 00 00",
     .der = kShort},
    {.name = "LongFormLength", .ber = "30 82 00 0e 06 02 2a 03 30 08 06 02 2a 04 a0 02 05 00", .der = kShort},
    // Intended: the request need not fill the blob.
    {.name = "TrailingOctets",
     .ber = "30 0e 06 02 2a 03 30 08 06 02 2a 04 a0 02 05 00 30 03 02",
     .der = kShort},
    // Intended: a decoder does not insist on the order of a DER set, an encoder makes it.
    {.name = "UnsortedAttributes",
     .ber = "30 33 06 02 2a 03 31 23 30 0c 06 02 2a 06 31 06 02 01 02 02 01 01"
            "30 09 06 02 2a 05 31 03 02 01 01 30 08 06 02 2a 09 31 02 05 00 30 08 06 02 2a 04 a0 02 05 00",
     .der = kFull},
};

INSTANTIATE_TEST_SUITE_P(Ber, AcceptedCMSRequest, testing::ValuesIn(kAccepted), test::case_name);

struct RefusedCase {
    const char* name;
    const char* ber;
};

class RefusedCMSRequest : public testing::TestWithParam<RefusedCase> {};

// Intended: the fields are read into the object as it stands, and none is before the whole is decoded.
TEST_P(RefusedCMSRequest, ThrowsAndChangesNothing) {
    CMSRequest request = full_request();
    const CAttributes* attributes = request.get_attributes();
    test::CodecHeap heap;
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, request.decode(blob(GetParam().ber)));
    EXPECT_EQ(heap.live_blocks(), 0u);
    EXPECT_EQ(request.get_attributes(), attributes);
    EXPECT_EQ(hex(request.encode()), hex(blob(kFull)));
}

const RefusedCase kRefused[] = {
    // Intended: no test of its own for an empty blob, it fails in the decoder; other classes have other
    // codes.
    {.name = "Nothing", .ber = ""},
    {.name = "OneOctet", .ber = "30"},
    {.name = "NoSequence", .ber = "31 0e 06 02 2a 03 30 08 06 02 2a 04 a0 02 05 00"},
    {.name = "EmptySequence", .ber = "30 00"},
    {.name = "EmptyIndefiniteSequence", .ber = "30 80 00 00"},
    {.name = "OnlyTheAlgorithm", .ber = "30 04 06 02 2a 03"},
    {.name = "OnlyTheContent", .ber = "30 0a 30 08 06 02 2a 04 a0 02 05 00"},
    {.name = "WithoutContent", .ber = "30 10 06 02 2a 03 31 0a 30 08 06 02 2a 09 31 02 05 00"},
    {.name = "ContentTypeAlone", .ber = "30 0a 06 02 2a 03 30 04 06 02 2a 04"},
    {.name = "EmptyAttributes", .ber = "30 10 06 02 2a 03 31 00 30 08 06 02 2a 04 a0 02 05 00"},
    {.name = "AttributesTwice",
     .ber = "30 26 06 02 2a 03 31 0a 30 08 06 02 2a 09 31 02 05 00 31 0a 30 08 06 02 2a 09 31 02 05 00"
            "30 08 06 02 2a 04 a0 02 05 00"},
    {.name = "AttributesBehindTheContent",
     .ber = "30 1a 06 02 2a 03 30 08 06 02 2a 04 a0 02 05 00 31 0a 30 08 06 02 2a 09 31 02 05 00"},
    {.name = "AttributesUnderAnotherTag",
     .ber = "30 1a 06 02 2a 03 a1 0a 30 08 06 02 2a 09 31 02 05 00 30 08 06 02 2a 04 a0 02 05 00"},
    {.name = "ContentTwice",
     .ber = "30 18 06 02 2a 03 30 08 06 02 2a 04 a0 02 05 00 30 08 06 02 2a 04 a0 02 05 00"},
    {.name = "FourthElement",
     .ber = "30 1c 06 02 2a 03 31 0a 30 08 06 02 2a 09 31 02 05 00 30 08 06 02 2a 04 a0 02 05 00 05 00"},
    {.name = "AlgorithmOfNoOctets", .ber = "30 0c 06 00 30 08 06 02 2a 04 a0 02 05 00"},
    {.name = "LastOctetCutOff", .ber = "30 0e 06 02 2a 03 30 08 06 02 2a 04 a0 02 05"},
    {.name = "LengthBeyondTheBlob", .ber = "30 7f"},
    {.name = "IndefiniteCutOff", .ber = "30 80 06 02 2a 03 30 08 06 02 2a 04 a0"},
    // Intended: a structure leaves its end-of-contents octets unread, and they end what is around it as well.
    {.name = "IndefiniteSetOfAttributes",
     .ber = "30 1c 06 02 2a 03 31 80 30 08 06 02 2a 09 31 02 05 00 00 00 30 08 06 02 2a 04 a0 02 05 00"},
    // SigningTime of an INTEGER
    {.name = "KnownAttributeOfAnotherType",
     .ber = "30 22 06 02 2a 03 31 12 30 10 06 09 2a 86 48 86 f7 0d 01 09 05 31 03 02 01 01"
            "30 08 06 02 2a 04 a0 02 05 00"},
};

INSTANTIATE_TEST_SUITE_P(Ber, RefusedCMSRequest, testing::ValuesIn(kRefused), test::case_name);

TEST(CMSRequest, RefusesABlobWithoutOctetsAsAnEmptyOne) {
    CMSRequest request;
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, request.decode(CBlob(0ul)));
}

// The run-time counts in signed 32 bits.
TEST(CMSRequest, RefusesABlobOfTwoGigabytes) {
    CBlob huge;
    huge.resize_to(0x80000000ul);
    huge.pbData()[0] = 0x30;
    CMSRequest request = full_request();
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, request.decode(huge));
    EXPECT_EQ(hex(request.encode()), hex(blob(kFull)));
}

TEST(CMSRequest, DecodesBytesThatLieInItself) {
    CMSRequest request("1.2.3", CContentInfo("1.2.4", blob(kFull)));
    request.decode(request.get_contentInfo().get_content());
    EXPECT_EQ(hex(request.encode()), hex(blob(kFull)));
    const CAttributes attributes = {attribute("1.2.5", {kSmallest})};
    request.put_attributes(&attributes);
    request.decode(request.get_attributes()->front().begin()->get_value());
    EXPECT_EQ(hex(request.encode()), hex(blob(kSmallest)));
}

// Put, copy, clear

TEST(CMSRequest, PutReplacesEachField) {
    CMSRequest request = smallest_request();
    request.put_timeStampAlgorithm("1.2.3");
    request.put_contentInfo(CContentInfo("1.2.4", blob("05 00")));
    EXPECT_EQ(hex(request.encode()), hex(blob(kShort)));
}

TEST(CMSRequest, PutNullClearsAttributes) {
    CMSRequest request = full_request();
    request.put_attributes(nullptr);
    EXPECT_EQ(request.get_attributes(), nullptr);
    request.put_attributes(nullptr);
    EXPECT_EQ(hex(request.encode()), hex(blob(kShort)));
}

TEST(CMSRequest, PutTakesItsOwnValue) {
    CMSRequest request = full_request();
    request.put_timeStampAlgorithm(request.get_timeStampAlgorithm());
    request.put_contentInfo(request.get_contentInfo());
    request.put_attributes(request.get_attributes());
    EXPECT_EQ(hex(request.encode()), hex(blob(kFull)));
    // A part of the text that it has.
    request.put_timeStampAlgorithm(request.get_timeStampAlgorithm() + 2);
    EXPECT_STREQ(request.get_timeStampAlgorithm(), "2.3");
}

TEST(CMSRequest, PutCopiesWhatItIsGiven) {
    CMSRequest request = short_request();
    CAttributes attributes = {one()};
    CContentInfo content("1.2.4", blob("05 00"));
    request.put_attributes(&attributes);
    request.put_contentInfo(content);
    attributes.front() = two();
    content.put_content(blob("02 01 01"));
    EXPECT_STREQ(request.get_attributes()->front().get_oid(), "1.2.5");
    EXPECT_EQ(hex(request.get_contentInfo().get_content()), "05 00");
}

TEST(CMSRequest, CopyIsIndependent) {
    auto original = std::make_unique<CMSRequest>(full_request());
    CMSRequest copy(*original);
    CMSRequest other(*original);
    other.put_attributes(nullptr);
    other.put_timeStampAlgorithm("1.9");
    EXPECT_EQ(hex(original->encode()), hex(blob(kFull)));
    original.reset();
    EXPECT_EQ(hex(copy.encode()), hex(blob(kFull)));
}

TEST(CMSRequest, CopyKeepsAnEmptyListApartFromNone) {
    ASSERT_NE(CMSRequest(full_request({})).get_attributes(), nullptr);
    EXPECT_EQ(CMSRequest(short_request()).get_attributes(), nullptr);
}

TEST(CMSRequest, AssignmentReplacesEverything) {
    CMSRequest request = smallest_request();
    CMSRequest& result = request = full_request();
    EXPECT_EQ(&result, &request);
    EXPECT_EQ(hex(request.encode()), hex(blob(kFull)));
    request = CMSRequest();
    expect_initial_values(request);
}

TEST(CMSRequest, SelfAssignmentChangesNothing) {
    CMSRequest request = full_request();
    const CMSRequest& self = request;
    const CAttributes* attributes = request.get_attributes();
    request = self;
    EXPECT_EQ(request.get_attributes(), attributes);
}

// Intended: unlike requests of RFC 3161 the object may be destroyed afterwards, though nothing else.
TEST(CMSRequest, ClearLeavesANullPointerToDestroy) {
    alignas(CMSRequest) unsigned char storage[sizeof(CMSRequest)];
    auto* request = new (storage) CMSRequest(full_request());
    request->clear();
    EXPECT_EQ(*reinterpret_cast<void**>(storage), nullptr);
    request->clear();
    request->~CMSRequest();
    EXPECT_EQ(*reinterpret_cast<void**>(storage), nullptr);
}

// Memory

TEST(CMSRequest, EncodeFailsCleanlyWhereverMemoryEnds) {
    const CMSRequest request = full_request();
    EXPECT_FALSE(codes_without_memory([&] { (void)request.encode(); }).empty());
    EXPECT_EQ(hex(request.encode()), hex(blob(kFull)));
}

TEST(CMSRequest, DecodeFailsCleanlyWhereverMemoryEnds) {
    CMSRequest request;
    EXPECT_FALSE(codes_without_memory([&] { request.decode(blob(kFull)); }).empty());
    EXPECT_EQ(hex(request.encode()), hex(blob(kFull)));
}

}  // namespace
}  // namespace Quillmark::PKI::TSP
