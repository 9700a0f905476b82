// CRequest: TimeStampReq of RFC 3161 2.4.1.

#include "tsp/request.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <new>

#include "asn1data/records.h"
#include "runtime/message_buffer.h"
#include "tests/support/blob.h"
#include "tests/support/case_name.h"
#include "tests/support/codes_without_memory.h"
#include "tests/support/result_code.h"
#include "tsp/detail/request_impl.h"

namespace Quillmark::PKI::TSP {
namespace {

using namespace ASN1;
using test::blob;
using test::codes_without_memory;
using test::hex;

// Algorithm 1.2.3, a hash of one octet, nothing optional.
constexpr char kSmallest[] = "30 0e 02 01 01 30 09 30 04 06 02 2a 03 04 01 aa";
// The same with policy 1.2.4, nonce 42, certReq and one extension (1.2.5, critical, NULL).
constexpr char kFull[] =
    "30 27 02 01 01 30 09 30 04 06 02 2a 03 04 01 aa 06 02 2a 04 02 01 2a 01 01 ff"
    "a0 0d 30 0b 06 02 2a 05 01 01 ff 04 02 05 00";

CRequest small_request(bool certReq = false) {
    return CRequest(CAlgorithmIdentifierEx("1.2.3"), blob("aa"), certReq);
}

CRequest decoded(const char* hex) {
    CRequest request;
    request.decode(blob(hex));
    return request;
}

CExtensions one_extension() {
    CExtensions extensions;
    extensions.insert(CExtension(CExtValue("1.2.5", blob("05 00")), true));
    return extensions;
}

CBigInteger number(const char* hex) {
    const CBlob octets = blob(hex);
    return CBigInteger(octets.pbData(), octets.cbData());
}

CRequest full_request() {
    CRequest request = small_request(true);
    request.put_reqPolicy("1.2.4");
    const CBigInteger nonce = number("2a");
    request.put_nonce(&nonce);
    const CExtensions extensions = one_extension();
    request.put_extensions(&extensions);
    return request;
}

void expect_initial_values(const CRequest& request) {
    EXPECT_EQ(request.get_version(), 1u);
    EXPECT_STREQ(request.get_hashAlgorithm().get_algorithm(), "");
    EXPECT_EQ(request.get_hashAlgorithm().get_algExtra(), 0u);
    EXPECT_EQ(request.get_hashedMessage().cbData(), 0u);
    EXPECT_FALSE(request.get_certReq());
    EXPECT_EQ(request.get_reqPolicy(), nullptr);
    EXPECT_EQ(request.get_nonce(), nullptr);
    EXPECT_EQ(request.get_extensions(), nullptr);
}

TEST(CRequest, StartsWithVersion1AndNothingElse) {
    expect_initial_values(CRequest());
}

TEST(CRequest, ConstructorTakesAlgorithmHashAndCertReq) {
    CAlgorithmIdentifierEx algorithm("1.2.3");
    algorithm.put_algExtra(7);
    const CRequest request(algorithm, blob("aa bb"), true);
    EXPECT_EQ(request.get_version(), 1u);
    EXPECT_STREQ(request.get_hashAlgorithm().get_algorithm(), "1.2.3");
    EXPECT_EQ(request.get_hashAlgorithm().get_algExtra(), 7u);
    EXPECT_EQ(hex(request.get_hashedMessage()), "aa bb");
    EXPECT_TRUE(request.get_certReq());
}

// Encoding

TEST(CRequest, EncodesTheSmallestRequest) {
    EXPECT_EQ(hex(small_request().encode()), hex(blob(kSmallest)));
}

TEST(CRequest, EncodesEveryElement) {
    EXPECT_EQ(hex(full_request().encode()), hex(blob(kFull)));
}

TEST(CRequest, WritesCertReqOnlyWhenTrue) {
    EXPECT_EQ(hex(small_request(true).encode()), "30 11 02 01 01 30 09 30 04 06 02 2a 03 04 01 aa 01 01 ff");
}

TEST(CRequest, EncodesAnEmptyHash) {
    const CRequest request(CAlgorithmIdentifierEx("1.2.3"), CBlob(), false);
    EXPECT_EQ(hex(request.encode()), "30 0d 02 01 01 30 08 30 04 06 02 2a 03 04 00");
    CRequest back;
    back.decode(request.encode());
    EXPECT_EQ(back.get_hashedMessage().cbData(), 0u);
}

// Intended: an empty list is never written, as it has at least one element on the wire.
TEST(CRequest, LeavesAnEmptyExtensionListOut) {
    CRequest request = small_request();
    const CExtensions none;
    request.put_extensions(&none);
    ASSERT_NE(request.get_extensions(), nullptr);
    EXPECT_EQ(hex(request.encode()), hex(blob(kSmallest)));
    CRequest back;
    back.decode(request.encode());
    EXPECT_EQ(back.get_extensions(), nullptr);
}

TEST(CRequest, WritesTheNonceInMinimalForm) {
    CRequest request = small_request();
    const CBigInteger nonce = number("00 00 80");
    request.put_nonce(&nonce);
    EXPECT_EQ(hex(request.encode()), "30 12 02 01 01 30 09 30 04 06 02 2a 03 04 01 aa 02 02 00 80");
}

TEST(CRequest, WritesANonceWithoutOctetsAsZero) {
    CRequest request = small_request();
    const CBigInteger nonce;
    request.put_nonce(&nonce);
    EXPECT_EQ(hex(request.encode()), "30 11 02 01 01 30 09 30 04 06 02 2a 03 04 01 aa 02 01 00");
}

TEST(CRequest, EncodesTheSameEachTime) {
    const CRequest request = full_request();
    EXPECT_EQ(request.encode(), request.encode());
}

TEST(CRequest, RefusesAPolicyThatIsNoOid) {
    CRequest request = small_request();
    request.put_reqPolicy("policy");
    EXPECT_CODE(E_INVALIDARG, request.encode());
}

TEST(CRequest, RefusesAnAlgorithmThatIsNoOid) {
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, CRequest(CAlgorithmIdentifierEx("sha"), blob("aa"), false).encode());
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, CRequest().encode());
}

TEST(CRequest, RefusesAnOidThatCannotBeEncoded) {
    CRequest request = small_request();
    request.put_reqPolicy("3.1");
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, request.encode());
}

// Decoding

TEST(CRequest, DecodesEveryElement) {
    const CRequest request = decoded(kFull);
    EXPECT_EQ(request.get_version(), 1u);
    EXPECT_STREQ(request.get_hashAlgorithm().get_algorithm(), "1.2.3");
    EXPECT_EQ(hex(request.get_hashedMessage()), "aa");
    EXPECT_STREQ(request.get_reqPolicy(), "1.2.4");
    ASSERT_NE(request.get_nonce(), nullptr);
    EXPECT_EQ(hex(*request.get_nonce()), "2a");
    EXPECT_TRUE(request.get_certReq());
    ASSERT_NE(request.get_extensions(), nullptr);
    ASSERT_EQ(request.get_extensions()->size(), 1u);
    EXPECT_STREQ(request.get_extensions()->front().get_extnID(), "1.2.5");
    EXPECT_TRUE(request.get_extensions()->front().get_critical());
    EXPECT_EQ(hex(request.get_extensions()->front().get_extnValue()), "05 00");
}

TEST(CRequest, DecodingReplacesWhatWasThere) {
    CRequest request = full_request();
    request.decode(blob(kSmallest));
    EXPECT_EQ(request.get_reqPolicy(), nullptr);
    EXPECT_EQ(request.get_nonce(), nullptr);
    EXPECT_FALSE(request.get_certReq());
    EXPECT_EQ(request.get_extensions(), nullptr);
}

struct AcceptedCase {
    const char* name;
    const char* ber;
    const char* der;  ///< what encoding it again gives
};

class AcceptedRequest : public testing::TestWithParam<AcceptedCase> {};

TEST_P(AcceptedRequest, ComesBackInDer) {
    EXPECT_EQ(hex(decoded(GetParam().ber).encode()), hex(blob(GetParam().der)));
}

const AcceptedCase kAccepted[] = {
    {.name = "Smallest", .ber = kSmallest, .der = kSmallest},
    {.name = "Full", .ber = kFull, .der = kFull},
    {.name = "IndefiniteLength",
     .ber = "30 80 02 01 01 30 09 30 04 06 02 2a 03 04 01 aa 00 00",
     .der = kSmallest},
    {.name = "LongFormLength",
     .ber = "30 82 00 0e 02 01 01 30 09 30 04 06 02 2a 03 04 01 aa",
     .der = kSmallest},
    // Intended: the request need not fill the blob.
    {.name = "TrailingOctets",
     .ber = "30 0e 02 01 01 30 09 30 04 06 02 2a 03 04 01 aa 30 03 02",
     .der = kSmallest},
    // DER leaves a default value out (X.690 11.5).
    {.name = "ExplicitFalse",
     .ber = "30 11 02 01 01 30 09 30 04 06 02 2a 03 04 01 aa 01 01 00",
     .der = kSmallest},
    // Intended: the form bit of the tag is not looked at.
    {.name = "PrimitiveExtensionsTag",
     .ber = "30 1d 02 01 01 30 09 30 04 06 02 2a 03 04 01 aa 80 0d 30 0b 06 02 2a 05 01 01 ff 04 02 05 00",
     .der = "30 1d 02 01 01 30 09 30 04 06 02 2a 03 04 01 aa a0 0d 30 0b 06 02 2a 05 01 01 ff 04 02 05 00"},
    // Intended: the octets of a version fold with the factor 11.
    {.name = "VersionOfTwoOctets",
     .ber = "30 0f 02 02 01 00 30 09 30 04 06 02 2a 03 04 01 aa",
     .der = "30 0e 02 01 0b 30 09 30 04 06 02 2a 03 04 01 aa"},
    // Intended: the inner end of contents ends the parent too, what follows is not read.
    {.name = "NestedIndefiniteEndsItsParent",
     .ber = "30 80 02 01 01 30 80 30 03 06 01 2a 04 01 aa 00 00 01 01 ff 00 00",
     .der = "30 0d 02 01 01 30 08 30 03 06 01 2a 04 01 aa"},
};

INSTANTIATE_TEST_SUITE_P(Ber, AcceptedRequest, testing::ValuesIn(kAccepted), test::case_name);

TEST(CRequest, FoldsAVersionOfTwoOctetsWithTheFactor11) {  // Intended: see the row above
    EXPECT_EQ(decoded("30 0f 02 02 01 00 30 09 30 04 06 02 2a 03 04 01 aa").get_version(), 11u);
}

TEST(CRequest, TakesAnyVersionOfOneOctet) {
    EXPECT_EQ(decoded("30 0e 02 01 07 30 09 30 04 06 02 2a 03 04 01 aa").get_version(), 7u);
}

struct RefusedCase {
    const char* name;
    const char* ber;
    HRESULT code = CRYPT_E_ASN1_INTERNAL;
};

class RefusedRequest : public testing::TestWithParam<RefusedCase> {};

TEST_P(RefusedRequest, ThrowsItsCodeAndLosesTheOldContent) {
    CRequest request = full_request();
    EXPECT_CODE(GetParam().code, request.decode(blob(GetParam().ber)));
    EXPECT_EQ(request.get_nonce(), nullptr);
    EXPECT_EQ(request.get_reqPolicy(), nullptr);
    EXPECT_FALSE(request.get_certReq());
}

const RefusedCase kRefused[] = {
    {.name = "OneOctet", .ber = "30"},
    {.name = "OnlyTheVersion", .ber = "30 03 02 01 01"},
    {.name = "EmptySequence", .ber = "30 00"},
    {.name = "SeventhElement",
     .ber = "30 2a 02 01 01 30 09 30 04 06 02 2a 03 04 01 aa 06 02 2a 04 02 01 2a 01 01 ff"
            "a0 0d 30 0b 06 02 2a 05 01 01 ff 04 02 05 00 02 01 01"},
    {.name = "OptionalElementsOutOfOrder",
     .ber = "30 15 02 01 01 30 09 30 04 06 02 2a 03 04 01 aa 01 01 ff 06 02 2a 04"},
    {.name = "CertReqCutOff", .ber = "30 11 02 01 01 30 09 30 04 06 02 2a 03 04 01 aa"},
    {.name = "LastOctetCutOff", .ber = "30 0e 02 01 01 30 09 30 04 06 02 2a 03 04 01"},
    {.name = "LengthBeyondTheBlob", .ber = "30 7f"},
    {.name = "NestedIndefiniteInDefinite", .ber = "30 0f 02 01 01 30 80 30 03 06 01 2a 04 01 aa 00 00"},
    {.name = "EmptyExtensions", .ber = "30 10 02 01 01 30 09 30 04 06 02 2a 03 04 01 aa a0 00"},
    {.name = "VersionOfFiveOctets",
     .ber = "30 12 02 05 01 00 00 00 00 30 09 30 04 06 02 2a 03 04 01 aa",
     .code = E_INVALIDARG},
    // Intended: a sign octet before four others counts.
    {.name = "VersionWithSignOctetBeforeFour",
     .ber = "30 12 02 05 00 80 00 00 00 30 09 30 04 06 02 2a 03 04 01 aa",
     .code = E_INVALIDARG},
};

INSTANTIATE_TEST_SUITE_P(Ber, RefusedRequest, testing::ValuesIn(kRefused), test::case_name);

TEST(CRequest, FailedDecodeLeavesInitialValues) {
    CRequest request = full_request();
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, request.decode(blob("30 03 02 01 01")));
    expect_initial_values(request);
}

// Intended: this code is the request's own, other classes have others.
TEST(CRequest, RefusesAnEmptyBlobAndChangesNothing) {
    CRequest request = full_request();
    EXPECT_CODE(CRYPT_E_ASN1_EOD, request.decode(CBlob()));
    EXPECT_CODE(CRYPT_E_ASN1_EOD, request.decode(CBlob(0ul)));
    EXPECT_EQ(hex(request.encode()), hex(blob(kFull)));
}

// The run-time counts in signed 32 bits.
TEST(CRequest, RefusesABlobOfTwoGigabytes) {
    CBlob huge;
    huge.resize_to(0x80000000ul);
    huge.pbData()[0] = 0x30;
    CRequest request;
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, request.decode(huge));
}

TEST(CRequest, DecodesBytesThatLieInItself) {
    CRequest request(CAlgorithmIdentifierEx("1.2.3"), blob(kFull), false);
    request.decode(request.get_hashedMessage());
    EXPECT_EQ(hex(request.encode()), hex(blob(kFull)));
}

// Put, copy, clear

TEST(CRequest, PutNullClears) {
    CRequest request = full_request();
    request.put_reqPolicy(nullptr);
    request.put_nonce(nullptr);
    request.put_extensions(nullptr);
    EXPECT_EQ(request.get_reqPolicy(), nullptr);
    EXPECT_EQ(request.get_nonce(), nullptr);
    EXPECT_EQ(request.get_extensions(), nullptr);
}

TEST(CRequest, PutNullOnAbsentFieldsDoesNothing) {
    CRequest request;
    request.put_reqPolicy(nullptr);
    request.put_nonce(nullptr);
    request.put_extensions(nullptr);
    expect_initial_values(request);
}

TEST(CRequest, PutTakesItsOwnValue) {
    CRequest request = full_request();
    request.put_reqPolicy(request.get_reqPolicy());
    request.put_nonce(request.get_nonce());
    request.put_extensions(request.get_extensions());
    EXPECT_EQ(hex(request.encode()), hex(blob(kFull)));
}

TEST(CRequest, PutCopiesWhatItIsGiven) {
    CRequest request = small_request();
    CBigInteger nonce = number("2a");
    request.put_nonce(&nonce);
    ++nonce;
    nonce.pbData()[0] = 0x11;
    EXPECT_EQ(hex(*request.get_nonce()), "2a");
}

TEST(CRequest, CopyIsIndependent) {
    const CRequest original = full_request();
    CRequest copy(original);
    copy.put_nonce(nullptr);
    copy.put_reqPolicy("1.9");
    EXPECT_EQ(hex(original.encode()), hex(blob(kFull)));
}

TEST(CRequest, AssignmentReplacesEverything) {
    CRequest request = small_request();
    CRequest& result = request = full_request();
    EXPECT_EQ(&result, &request);
    EXPECT_EQ(hex(request.encode()), hex(blob(kFull)));
    request = CRequest();
    expect_initial_values(request);
}

TEST(CRequest, SelfAssignmentChangesNothing) {
    CRequest request = full_request();
    const CRequest& self = request;
    const CBigInteger* nonce = request.get_nonce();
    request = self;
    EXPECT_EQ(request.get_nonce(), nonce);
}

// Intended: the object may not even be destroyed afterwards, so it lives in raw storage here.
TEST(CRequest, ClearDestroysTheContentForGood) {
    alignas(CRequest) unsigned char storage[sizeof(CRequest)];
    CRequest* request = new (storage) CRequest(full_request());
    const auto pointer_before = *reinterpret_cast<void**>(storage);
    request->clear();
    EXPECT_EQ(*reinterpret_cast<void**>(storage), pointer_before);
}

// Intended: nothing but copies touches this field.
TEST(CRequest, CopiesCarryTheUnusedText) {
    CRequest::Impl original;
    original.comment = L"text";
    EXPECT_EQ(CRequest::Impl(original).comment, L"text");
}

// The record

TEST(CRequest, ReadingARecordLeavesAbsentFieldsAsTheyAre) {
    CRequest::Impl with_nonce;
    with_nonce.hashAlgorithm = CAlgorithmIdentifierEx("1.2.3");
    with_nonce.nonce = std::make_unique<CBigInteger>(number("2a"));
    CRequest::Impl without;
    without.hashAlgorithm = CAlgorithmIdentifierEx("1.2.3");

    ASN1BEREncodeBuffer buffer;
    asn1data::ASN1T_TimeStampReq record;
    without.fillRequest(record, buffer.getCtxtPtr());
    with_nonce.readRequest(record);
    ASSERT_NE(with_nonce.nonce, nullptr);
    EXPECT_EQ(hex(*with_nonce.nonce), "2a");
}

TEST(CRequest, FillingARecordClearsAllOfIt) {
    CRequest::Impl fields;
    fields.hashAlgorithm = CAlgorithmIdentifierEx("1.2.3");
    ASN1BEREncodeBuffer buffer;
    asn1data::ASN1T_TimeStampReq record;
    record.m.noncePresent = 1;
    record.certReq = 1;
    fields.fillRequest(record, buffer.getCtxtPtr());
    EXPECT_FALSE(record.m.noncePresent);
    EXPECT_EQ(record.certReq, 0);
    EXPECT_TRUE(record.mpContext.isNull());
}

// Memory

TEST(CRequest, EncodeFailsCleanlyWhereverMemoryEnds) {
    const CRequest request = full_request();
    const auto codes = codes_without_memory([&] { (void)request.encode(); });
    EXPECT_NE(std::find(codes.begin(), codes.end(), E_OUTOFMEMORY), codes.end()) << "for the version";
    EXPECT_NE(std::find(codes.begin(), codes.end(), CRYPT_E_ASN1_MEMORY), codes.end()) << "for the hash";
    EXPECT_EQ(hex(request.encode()), hex(blob(kFull)));
}

TEST(CRequest, DecodeFailsCleanlyWhereverMemoryEnds) {
    CRequest request;
    codes_without_memory([&] { request.decode(blob(kFull)); });
    EXPECT_EQ(hex(request.encode()), hex(blob(kFull)));
}

}  // namespace
}  // namespace Quillmark::PKI::TSP
