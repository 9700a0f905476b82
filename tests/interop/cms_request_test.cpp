// Requests of the Authenticode exchange that `openssl asn1parse -genconf` encodes, in CMSRequest, and ours
// in `openssl asn1parse`.

#include "tsp/cms_request.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/interop/authority.h"
#include "tests/support/blob.h"

namespace Quillmark::PKI::TSP {
namespace {

using namespace ASN1;
using test::blob;
using test::hex;
using test::OpenSSLAuthority;

// The request that signing tools send: algorithm and ContentInfo of data, no attributes.
constexpr char kPlain[] =
    "asn1=SEQUENCE:request\n"
    "[request]\n"
    "algorithm=OID:1.3.6.1.4.1.311.3.2.1\n"
    "content=SEQUENCE:content\n"
    "[content]\n"
    "type=OID:1.2.840.113549.1.7.1\n"
    "data=EXPLICIT:0,FORMAT:HEX,OCTETSTRING:00112233445566778899AABBCCDDEEFF\n";

constexpr char kWithAttributes[] =
    "asn1=SEQUENCE:request\n"
    "[request]\n"
    "algorithm=OID:1.3.6.1.4.1.311.3.2.1\n"
    "attributes=SET:attributes\n"
    "content=SEQUENCE:content\n"
    "[attributes]\n"
    "one=SEQUENCE:attribute_one\n"
    "two=SEQUENCE:attribute_two\n"
    "[attribute_one]\n"
    "type=OID:1.2.840.113549.1.9.5\n"
    "values=SET:time\n"
    "[time]\n"
    "time=UTC:240229235958Z\n"
    "[attribute_two]\n"
    "type=OID:1.2.3.4\n"
    "values=SET:numbers\n"
    "[numbers]\n"
    "first=INTEGER:70000\n"
    "second=INTEGER:5\n"
    "[content]\n"
    "type=OID:1.2.840.113549.1.7.1\n"
    "data=EXPLICIT:0,FORMAT:HEX,OCTETSTRING:AABB\n";

CBlob generated(const OpenSSLAuthority& openssl, const std::string& configuration) {
    openssl.directory().write(
        "request.cnf",
        CBlob(reinterpret_cast<const unsigned char*>(configuration.data()), configuration.size()));
    openssl.run("openssl asn1parse -genconf request.cnf -noout -out request.der");
    return openssl.directory().read("request.der");
}

TEST(GeneratedCMSRequest, ComesBackByteForByte) {
    const OpenSSLAuthority openssl;
    const CBlob bytes = generated(openssl, kPlain);
    CMSRequest request;
    request.decode(bytes);
    EXPECT_STREQ(request.get_timeStampAlgorithm(), "1.3.6.1.4.1.311.3.2.1");
    EXPECT_STREQ(request.get_contentInfo().get_contentType(), "1.2.840.113549.1.7.1");
    EXPECT_EQ(hex(fromOctetString(request.get_contentInfo().get_content())),
              "00 11 22 33 44 55 66 77 88 99 aa bb cc dd ee ff");
    EXPECT_EQ(request.get_attributes(), nullptr);
    EXPECT_EQ(hex(request.encode()), hex(bytes));
}

TEST(GeneratedCMSRequest, HasItsAttributesInTheOrderOfADerSet) {
    const OpenSSLAuthority openssl;
    const CBlob bytes = generated(openssl, kWithAttributes);
    CMSRequest request;
    request.decode(bytes);
    ASSERT_NE(request.get_attributes(), nullptr);
    ASSERT_EQ(request.get_attributes()->size(), 2u);
    const CAttribute& numbers = request.get_attributes()->front();
    EXPECT_STREQ(numbers.get_oid(), "1.2.3.4");
    EXPECT_EQ(hex(numbers.begin()->get_value()), "02 01 05");
    const CAttribute& time = request.get_attributes()->back();
    EXPECT_TRUE(CAttrSigningTime(time.begin()->get_value()).get_time() ==
                CDateTime(2024u, 2u, 29u, 23u, 59u, 58u, 0u, 0u));
    EXPECT_EQ(hex(request.encode()), hex(bytes));
}

TEST(OurCMSRequest, IsReadByAsn1parse) {
    const OpenSSLAuthority openssl;
    CMSRequest request("1.3.6.1.4.1.311.3.2.1",
                       CContentInfo("1.2.840.113549.1.7.1", toOctetString(blob("aabb"))));
    CAttributes attributes;
    attributes.push_back(CAttribute("1.2.840.113549.1.9.5"));
    attributes.back().add(CAttrSigningTime(CDateTime(2024u, 2u, 29u, 23u, 59u, 58u, 0u, 0u)));
    attributes.push_back(CAttribute("1.2.3.4"));
    attributes.back().add(blob("020105"));
    attributes.back().add(blob("0203011170"));
    request.put_attributes(&attributes);
    EXPECT_EQ(hex(request.encode()), hex(generated(openssl, kWithAttributes)));
    openssl.directory().write("ours.der", request.encode());
    const std::string text = openssl.run("openssl asn1parse -inform DER -in ours.der");
    for (const char* part : {":1.3.6.1.4.1.311.3.2.1", ":1.2.3.4", ":signingTime", ":240229235958Z",
                             ":pkcs7-data", "[HEX DUMP]:AABB"}) {
        EXPECT_NE(text.find(part), std::string::npos) << part << " in\n" << text;
    }
}

}  // namespace
}  // namespace Quillmark::PKI::TSP
