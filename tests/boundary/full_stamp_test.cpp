// A stamp with everything in it at once, made by an authority and read by a client, through the library as an
// application has it. Texts are compared whole: the comparison of general names itself looks at one
// character.

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "asn1/extension_value.h"
#include "asn1/general_name.h"
#include "asn1/name.h"
#include "asn1/pki_status.h"
#include "asn1/signing_certificate.h"
#include "tests/support/blob.h"
#include "tests/support/test_keys.h"
#include "tsp/request.h"
#include "tsp/response.h"
#include "tsp/token.h"

namespace {

using namespace Quillmark;
using namespace Quillmark::ASN1;
using namespace Quillmark::PKI::TSP;
using test::blob;
using test::Octets;

constexpr char kSha256[] = "2.16.840.1.101.3.4.2.1";
constexpr char kSha512[] = "2.16.840.1.101.3.4.2.3";
constexpr char kPolicy[] = "2.999.1.18446744";
constexpr char kSigningTime[] = "1.2.840.113549.1.9.5";
constexpr char kSigningCertificate[] = "1.2.840.113549.1.9.16.2.12";
constexpr char kSigningCertificateV2[] = "1.2.840.113549.1.9.16.2.47";
constexpr char kOtherSigningCertificate[] = "1.2.840.113549.1.9.16.2.19";
constexpr char kSignatureTimeStamp[] = "1.2.840.113549.1.9.16.2.14";
constexpr char kCommonName[] = "2.5.4.3";
constexpr char kPrivate[] = "2.999.7.1";
constexpr char kPrivateToo[] = "2.999.7.2";

CBigInteger number(std::string_view hex) {
    const CBlob octets = blob(hex);
    return CBigInteger(octets.pbData(), octets.cbData());
}

CGeneralName directory_name() {
    CGeneralName name;
    name.put_directoryName(CName(L"CN=Authority,OU=Stamps,O=Example,C=XX").encode());
    return name;
}

CGeneralNames several_names() {
    CGeneralNames names(3);
    CGeneralNames::iterator name = names.begin();
    name->put_dNSName(L"tsa.example");
    *++name = directory_name();
    (++name)->put_registeredID(L"2.999.3");
    return names;
}

CIssuerSerial issuer_serial() {
    CGeneralNames issuer;
    issuer.push_back(directory_name());
    return CIssuerSerial(issuer, number("00f123456789abcdef"));
}

CPolicyInformationList policies() {
    CPolicyInformationList list;
    list.push_back(CPolicyInformation("2.999.5.1"));
    list.push_back(CPolicyInformation("2.999.5.2"));
    return list;
}

/// A known type, two unknown ones, one of them critical.
CExtensions extensions() {
    CExtensions list;
    list.insert(CExtension(CExtCertificateIssuer(several_names())));
    list.insert(CExtension(CExtValue(kPrivate, blob("0403010203")), true));
    list.insert(CExtension(CExtValue(kPrivateToo, blob("30060201010101ff")), false));
    return list;
}

CAttrSigningCertificate signing_certificate() {
    CESSCertIDList certs;
    certs.push_back(CESSCertID(blob("000102030405060708090a0b0c0d0e0f10111213")));
    certs.push_back(CESSCertID(blob("ff0102030405060708090a0b0c0d0e0f10111213")));
    const CIssuerSerial issuer = issuer_serial();
    certs.back().put_issuerSerial(&issuer);
    CAttrSigningCertificate value(certs);
    const CPolicyInformationList list = policies();
    value.put_policies(&list);
    value.encode();
    return value;
}

CAttrSigningCertificateV2 signing_certificate_v2() {
    CESSCertIDv2List certs;
    certs.push_back(CESSCertIDv2(blob("000102030405060708090a0b0c0d0e0f101112131415161718191a1b1c1d1e1f")));
    certs.push_back(CESSCertIDv2(blob("0a0b0c0d"), CAlgorithmIdentifier(kSha512)));
    const CIssuerSerial issuer = issuer_serial();
    certs.back().put_issuerSerial(&issuer);
    CAttrSigningCertificateV2 value(certs);
    const CPolicyInformationList list = policies();
    value.put_policies(&list);
    value.encode();
    return value;
}

CAttrOtherSigningCertificate other_signing_certificate() {
    COtherCertIDList certs;
    certs.push_back(COtherCertID(blob("000102030405060708090a0b0c0d0e0f10111213")));
    certs.push_back(COtherCertID(blob("0102"), CAlgorithmIdentifier(kSha512)));
    const CIssuerSerial issuer = issuer_serial();
    certs.back().put_issuerSerial(&issuer);
    CAttrOtherSigningCertificate value(certs);
    const CPolicyInformationList list = policies();
    value.put_policies(&list);
    return value;
}

template <class Value>
void add(CAttributes& attributes, const char* oid, const Value& value) {
    CAttributes::iterator place = attributes.find(oid);
    if (place == attributes.end())
        place = attributes.insert(attributes.end(), CAttribute(oid));
    place->add(value);
}

CAttributes signed_attributes() {
    CAttributes attributes;
    add(attributes, kSigningTime, CAttrSigningTime(CDateTime("20240229235959.5Z")));
    add(attributes, kSigningCertificate, signing_certificate());
    add(attributes, kSigningCertificateV2, signing_certificate_v2());
    add(attributes, kOtherSigningCertificate, other_signing_certificate());
    add(attributes, kCommonName, CAttrCommonName("Authority"));
    add(attributes, kCommonName, CAttrCommonName("Stamps of the house"));
    add(attributes, kPrivate, blob("020101"));
    add(attributes, kPrivate, blob("0c0161"));
    add(attributes, kPrivate, blob("3000"));
    return attributes;
}

CToken make_token(const CRequest& request);

CAttributes unsigned_attributes(const CRequest& request) {
    CAttributes attributes;
    const CRequest plain(request.get_hashAlgorithm(), request.get_hashedMessage(), false);
    add(attributes, kSignatureTimeStamp, make_token(plain).encode());
    add(attributes, kSignatureTimeStamp, make_token(plain).encode());
    add(attributes, kPrivateToo, blob("0500"));
    add(attributes, kPrivateToo, blob("0101ff"));
    return attributes;
}

CBlobList certificates() {
    CBlobList list;
    list.push_back(test::certificate("tsa_p256"));
    list.push_back(test::certificate("ca"));
    list.push_back(test::certificate("other_ca"));
    return list;
}

CRequest make_request() {
    CRequest request(CAlgorithmIdentifierEx(kSha512), blob(std::string(128, '5')), true);
    request.put_reqPolicy(kPolicy);
    const CBigInteger nonce = number("00ffeeddccbbaa99887766554433221100");
    request.put_nonce(&nonce);
    const CExtensions list = extensions();
    request.put_extensions(&list);
    return request;
}

void sign(CToken& token) {
    const test::TestKey key("tsa_p256");
    token.sign(key.provider(), AT_SIGNATURE, test::certificate("tsa_p256"), CAlgorithmIdentifierEx(kSha512));
}

/// Only what is always there.
CToken make_token(const CRequest& request) {
    CToken token(kPolicy, request.get_hashAlgorithm(), request.get_hashedMessage(),
                 number("7f000102030405060708090a0b0c0d0e0f101112"), CDateTime("20240229235959.123Z"), false);
    sign(token);
    return token;
}

/// Everything that a token can hold.
CToken make_full_token(const CRequest& request, const CGeneralName& tsa) {
    CToken token(request.get_reqPolicy(), request.get_hashAlgorithm(), request.get_hashedMessage(),
                 number("7f000102030405060708090a0b0c0d0e0f101112"), CDateTime("20240229235959.123Z"), true);
    const CAccuracy accuracy{1, 999, 1};
    token.put_accuracy(&accuracy);
    token.put_nonce(request.get_nonce());
    token.put_tsa(&tsa);
    const CExtensions list = extensions();
    token.put_extensions(&list);
    const CAttributes with_signature = signed_attributes();
    token.put_signedAttributes(&with_signature);
    const CAttributes beside = unsigned_attributes(request);
    token.put_unsignedAttributes(&beside);
    const CBlobList chain = certificates();
    token.put_certificates(&chain);
    sign(token);
    return token;
}

CPKIStatusInfo full_status() {
    CPKIStatusInfo status(PKIStatus_grantedWithMods);
    CPKIFailureInfo bits;
    bits.put_bit(2, true);
    bits.put_bit(25, true);
    status.put_failureInfo(bits);
    CPKIFreeText texts;
    texts.insert(CPKIFreeTextString(L"as you asked, nearly", CLanguageTagDefaultRead()));
    texts.insert(CPKIFreeTextString(L"\u0433\u043e\u0442\u043e\u0432\u043e", CLanguageTagRuRu()));
    status.put_statusString(texts);
    return status;
}

std::vector<Octets> sorted_octets(const CBlobList& blobs) {
    std::vector<Octets> all;
    for (const CBlob& each : blobs)
        all.push_back(test::octets(each));
    std::sort(all.begin(), all.end());
    return all;
}

std::vector<Octets> sorted_values(const CAttribute& attribute) {
    CBlobList values;
    for (const CAttrValue& value : attribute)
        values.push_back(value.get_value());
    return sorted_octets(values);
}

/// Order aside: a SET OF is sorted by its encoder (X.690 11.6).
void expect_same(const CAttributes& actual, const CAttributes& expected) {
    for (const CAttribute& attribute : expected) {
        const CAttributes::const_iterator found = actual.find(attribute.get_oid());
        ASSERT_TRUE(found != actual.end()) << attribute.get_oid();
        EXPECT_EQ(sorted_values(*found), sorted_values(attribute)) << attribute.get_oid();
    }
}

void expect_same(const CExtensions* actual, const CExtensions& expected) {
    ASSERT_NE(actual, nullptr);
    ASSERT_EQ(actual->size(), expected.size());
    CExtensions::const_iterator other = actual->begin();
    for (const CExtension& extension : expected) {
        EXPECT_STREQ(other->get_extnID(), extension.get_extnID());
        EXPECT_EQ(other->get_critical(), extension.get_critical());
        EXPECT_TRUE(other->get_extnValue() == extension.get_extnValue()) << extension.get_extnID();
        ++other;
    }
}

void expect_same(const CIssuerSerial* actual) {
    ASSERT_NE(actual, nullptr);
    EXPECT_TRUE(*actual == issuer_serial());
    EXPECT_TRUE(actual->encode() == issuer_serial().encode());
}

void expect_the_policies(const CPolicyInformationList* actual) {
    ASSERT_NE(actual, nullptr);
    ASSERT_EQ(actual->size(), 2u);
    EXPECT_STREQ(actual->front().get_policyIdentifier(), "2.999.5.1");
    EXPECT_STREQ(actual->back().get_policyIdentifier(), "2.999.5.2");
}

const CBlob& only_value(const CAttributes& attributes, const char* oid) {
    return attributes.find(oid)->begin()->get_value();
}

void expect_the_certificate_identifiers(const CAttributes& attributes) {
    const CAttrSigningCertificate v1(only_value(attributes, kSigningCertificate));
    EXPECT_TRUE(v1.get_certs() == signing_certificate().get_certs());
    EXPECT_EQ(v1.get_certs().front().get_issuerSerial(), nullptr);
    expect_same(v1.get_certs().back().get_issuerSerial());
    expect_the_policies(v1.get_policies());

    const CAttrSigningCertificateV2 v2(only_value(attributes, kSigningCertificateV2));
    EXPECT_TRUE(v2.get_certs() == signing_certificate_v2().get_certs());
    EXPECT_STREQ(v2.get_certs().back().get_hashAlgorithm().get_algorithm(), kSha512);
    expect_same(v2.get_certs().back().get_issuerSerial());
    expect_the_policies(v2.get_policies());

    const CAttrOtherSigningCertificate other(only_value(attributes, kOtherSigningCertificate));
    EXPECT_TRUE(other.get_certs() == other_signing_certificate().get_certs());
    EXPECT_NE(other.get_certs().front().get_otherCertHash().get_sha1Hash(), nullptr);
    EXPECT_NE(other.get_certs().back().get_otherCertHash().get_otherHash(), nullptr);
    expect_same(other.get_certs().back().get_issuerSerial());
    expect_the_policies(other.get_policies());
}

void expect_the_request(const CRequest& request) {
    EXPECT_EQ(request.get_version(), 1u);
    EXPECT_STREQ(request.get_hashAlgorithm().get_algorithm(), kSha512);
    EXPECT_TRUE(request.get_hashedMessage() == make_request().get_hashedMessage());
    EXPECT_STREQ(request.get_reqPolicy(), kPolicy);
    EXPECT_TRUE(*request.get_nonce() == *make_request().get_nonce());
    EXPECT_TRUE(request.get_certReq());
    expect_same(request.get_extensions(), extensions());
}

void expect_the_status(const CPKIStatusInfo& status) {
    EXPECT_EQ(status.get_pkiStatus(), PKIStatus_grantedWithMods);
    EXPECT_EQ(status.get_failureInfo().get_value(), 1u << 2 | 1u << 25);
    ASSERT_EQ(status.get_statusString().size(), 2u);
    const CPKIFreeTextString& first = status.get_statusString().front();
    EXPECT_STREQ(first.get_value(), L"as you asked, nearly");
    EXPECT_TRUE(first.get_language() == CLanguageTagDefaultRead());
    const CPKIFreeTextString& last = status.get_statusString().back();
    EXPECT_TRUE(last.get_language() == CLanguageTagRuRu());
    // Intended: what was read keeps the tag in front of its text.
    EXPECT_STREQ(last.get_value(),
                 L"\u0e01\u0e72\u0e75\u0e2d\u0e72\u0e75\u0e7e\u0433\u043e\u0442\u043e\u0432\u043e");
}

void expect_the_fields(const CToken& token, const CRequest& request) {
    EXPECT_EQ(token.get_version(), 1u);
    EXPECT_STREQ(token.get_policy(), kPolicy);
    EXPECT_STREQ(token.get_hashAlgorithm().get_algorithm(), kSha512);
    EXPECT_TRUE(token.get_hashedMessage() == request.get_hashedMessage());
    EXPECT_TRUE(token.get_serialNumber() == number("7f000102030405060708090a0b0c0d0e0f101112"));
    EXPECT_STREQ(token.get_genTimeZ(), "20240229235959.123Z");
    EXPECT_TRUE(token.get_genTime() == CDateTime("20240229235959.123Z"));
    EXPECT_TRUE(token.get_ordering());
    ASSERT_NE(token.get_accuracy(), nullptr);
    EXPECT_TRUE(*token.get_accuracy() == (CAccuracy{1, 999, 1}));
    ASSERT_NE(token.get_nonce(), nullptr);
    EXPECT_TRUE(*token.get_nonce() == *request.get_nonce());
    expect_same(token.get_extensions(), extensions());
}

struct NameCase {
    const char* label;
    void (*fill)(CGeneralName&);
    unsigned int type;
};

void PrintTo(const NameCase& name, std::ostream* out) {
    *out << name.label;
}

const NameCase kNames[] = {
    {"rfc822Name", [](CGeneralName& name) { name.put_rfc822Name(L"stamps@tsa.example"); }, 2},
    {"dNSName", [](CGeneralName& name) { name.put_dNSName(L"tsa.example"); }, 3},
    {"directoryName", [](CGeneralName& name) { name = directory_name(); }, 5},
    {"uniformResourceIdentifier",
     [](CGeneralName& name) { name.put_uniformResourceIdentifier(L"https://tsa.example/\u00fc"); }, 7},
    {"iPAddress", [](CGeneralName& name) { name.put_iPAddress(blob("c0000201")); }, 8},
    {"registeredID", [](CGeneralName& name) { name.put_registeredID(L"2.999.4.1"); }, 9},
};

class FullStamp : public testing::TestWithParam<NameCase> {
  protected:
    static CGeneralName tsa() {
        CGeneralName name;
        GetParam().fill(name);
        return name;
    }

    /// The text of a name whatever its form; empty for the two forms that are octets.
    static std::wstring text_of(const CGeneralName& name) {
        for (const wchar_t* text : {name.get_rfc822Name(), name.get_dNSName(),
                                    name.get_uniformResourceIdentifier(), name.get_registeredID()}) {
            if (text)
                return text;
        }
        return L"";
    }

    static void expect_the_name(const CGeneralName* actual) {
        ASSERT_NE(actual, nullptr);
        EXPECT_EQ(actual->get_type(), GetParam().type);
        EXPECT_EQ(text_of(*actual), text_of(tsa()));
        EXPECT_TRUE(actual->encode() == tsa().encode());
    }
};

TEST_P(FullStamp, EveryFieldArrivesAsItWasSent) {
    CRequest request;
    request.decode(make_request().encode());
    expect_the_request(request);

    const CToken token = make_full_token(request, tsa());
    CResponse answer;
    answer.put_status(full_status());
    answer.put_timeStampToken(&token);

    CResponse response;
    response.decode(answer.encode());
    expect_the_status(response.get_status());
    const CToken* stamp = response.get_timeStampToken();
    ASSERT_NE(stamp, nullptr);
    EXPECT_EQ(stamp->encode(), token.encode());
    EXPECT_TRUE(stamp->verify(test::certificate("tsa_p256")));
    expect_the_fields(*stamp, request);
    expect_the_name(stamp->get_tsa());

    // Beside the caller's stand content-type and message-digest (RFC 5652 5.3).
    ASSERT_NE(stamp->get_signedAttributes(), nullptr);
    EXPECT_EQ(stamp->get_signedAttributes()->size(), signed_attributes().size() + 2);
    expect_same(*stamp->get_signedAttributes(), signed_attributes());
    expect_the_certificate_identifiers(*stamp->get_signedAttributes());
    ASSERT_NE(stamp->get_unsignedAttributes(), nullptr);
    EXPECT_EQ(stamp->get_unsignedAttributes()->size(), 2u);
    expect_same(*stamp->get_unsignedAttributes(), *token.get_unsignedAttributes());
    ASSERT_NE(stamp->get_certificates(), nullptr);
    EXPECT_EQ(sorted_octets(*stamp->get_certificates()), sorted_octets(certificates()));
}

INSTANTIATE_TEST_SUITE_P(EachKindOfName, FullStamp, testing::ValuesIn(kNames),
                         [](const auto& row) { return std::string(row.param.label); });

}  // namespace
