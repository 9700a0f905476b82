// CRequest at the edges of what is checked: versions, hashes and elements that come twice.

#include <gtest/gtest.h>

#include "tests/support/blob.h"
#include "tests/support/case_name.h"
#include "tests/support/result_code.h"
#include "tsp/request.h"

namespace Quillmark::PKI::TSP {
namespace {

using namespace ASN1;
using test::blob;
using test::hex;

CRequest decoded(const std::string& ber) {
    CRequest request;
    request.decode(blob(ber));
    return request;
}

constexpr char kImprint[] = " 30 09 30 04 06 02 2a 03 04 01 aa";

struct VersionCase {
    const char* name;
    const char* request;
    std::uint32_t version;
    const char* encoded;  ///< the version when the request is encoded again
};

class VersionOnTheWire : public testing::TestWithParam<VersionCase> {};

TEST_P(VersionOnTheWire, FoldsItsOctets) {
    const CRequest request = decoded(std::string(GetParam().request) + kImprint);
    EXPECT_EQ(request.get_version(), GetParam().version);
    EXPECT_EQ(hex(request.encode()).substr(6), std::string(GetParam().encoded) + kImprint);
}

// Intended: every octet is added to eleven times those before it, without a sign.
const VersionCase kVersions[] = {
    {.name = "Zero", .request = "30 0e 02 01 00", .version = 0, .encoded = "02 01 00"},
    {.name = "MostOfOneOctet", .request = "30 0e 02 01 7f", .version = 127, .encoded = "02 01 7f"},
    {.name = "MinusOne", .request = "30 0e 02 01 ff", .version = 255, .encoded = "02 02 00 ff"},
    {.name = "TwoOctets", .request = "30 0f 02 02 01 00", .version = 11, .encoded = "02 01 0b"},
    {.name = "SignOctet", .request = "30 0f 02 02 00 ff", .version = 255, .encoded = "02 02 00 ff"},
    {.name = "FourOctets",  // ((1 * 11 + 2) * 11 + 3) * 11 + 4
     .request = "30 11 02 04 01 02 03 04",
     .version = 1610,
     .encoded = "02 02 06 4a"},
};

INSTANTIATE_TEST_SUITE_P(Integers, VersionOnTheWire, testing::ValuesIn(kVersions), test::case_name);

TEST(RequestHash, NeedsNoLengthThatFitsItsAlgorithm) {
    constexpr char kShortSha256[] = "30 15 02 01 01 30 10 30 0b 06 09 60 86 48 01 65 03 04 02 01 04 01 aa";
    const CRequest request = decoded(kShortSha256);
    EXPECT_EQ(hex(request.get_hashedMessage()), "aa");
    EXPECT_EQ(hex(request.encode()), kShortSha256);
}

TEST(RequestHash, MayBeEmptyOnTheWire) {
    const CRequest request = decoded("30 0d 02 01 01 30 08 30 04 06 02 2a 03 04 00");
    EXPECT_EQ(request.get_hashedMessage().cbData(), 0u);
    EXPECT_EQ(request.get_hashedMessage().pbData(), nullptr);
}

TEST(RequestHash, KeepsParametersOfItsAlgorithm) {
    constexpr char kWithNull[] = "30 10 02 01 01 30 0b 30 06 06 02 2a 03 05 00 04 01 aa";
    const CRequest request = decoded(kWithNull);
    EXPECT_EQ(hex(request.get_hashAlgorithm().get_parameters()), "05 00");
    EXPECT_EQ(hex(request.encode()), kWithNull);
}

struct TwiceCase {
    const char* name;
    const char* header;
    const char* optional;
};

class ElementOfARequest : public testing::TestWithParam<TwiceCase> {};

TEST_P(ElementOfARequest, DoesNotComeTwice) {
    CRequest request;
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL,
                request.decode(blob(std::string(GetParam().header) + kImprint + GetParam().optional)));
}

const TwiceCase kTwice[] = {
    {.name = "Version", .header = "30 11 02 01 01 02 01 01", .optional = ""},
    {.name = "Policy", .header = "30 16 02 01 01", .optional = " 06 02 2a 04 06 02 2a 04"},
    {.name = "Nonce", .header = "30 14 02 01 01", .optional = " 02 01 2a 02 01 2a"},
    {.name = "CertReq", .header = "30 14 02 01 01", .optional = " 01 01 ff 01 01 ff"},
};

INSTANTIATE_TEST_SUITE_P(Elements, ElementOfARequest, testing::ValuesIn(kTwice), test::case_name);

TEST(RequestFlag, IsTrueForAnyOctetButZero) {
    const CRequest request = decoded(std::string("30 11 02 01 01") + kImprint + " 01 01 01");
    EXPECT_TRUE(request.get_certReq());
    // DER writes TRUE as FF (X.690 11.1).
    EXPECT_EQ(hex(request.encode()).substr(48), "01 01 ff");
}

// The version is read first, so nothing behind it was.
TEST(RequestFailure, BehindTheDecoderLeavesFieldsThatWereNotReachedAsInANewRequest) {
    CRequest request(CAlgorithmIdentifierEx("1.2.3"), blob("aa"), true);
    EXPECT_CODE(E_INVALIDARG,
                request.decode(blob(std::string("30 15 02 05 01 00 00 00 00") + kImprint + " 01 01 ff")));
    EXPECT_EQ(request.get_version(), 1u);
    EXPECT_EQ(request.get_hashedMessage().cbData(), 0u);
    EXPECT_FALSE(request.get_certReq());
}

}  // namespace
}  // namespace Quillmark::PKI::TSP
