// Values of the object layer of hostile shapes.

#include <gtest/gtest.h>

#include "asn1/access_description.h"
#include "asn1/algorithm_identifier.h"
#include "asn1/attribute.h"
#include "asn1/big_integer.h"
#include "asn1/certificate.h"
#include "asn1/content_info.h"
#include "asn1/distribution_point.h"
#include "asn1/extension.h"
#include "asn1/extension_value.h"
#include "asn1/general_name.h"
#include "asn1/info_type_and_value.h"
#include "asn1/name.h"
#include "asn1/pki_status.h"
#include "asn1/policy_information.h"
#include "asn1/reason_flags.h"
#include "asn1/revocation_announcement.h"
#include "asn1/signer_info.h"
#include "asn1/signing_certificate.h"
#include "tests/robustness/shapes_messages.h"
#include "tests/robustness/shapes_ways.h"
#include "tests/support/case_name.h"

namespace Quillmark::test {
namespace {

using namespace ASN1;

constexpr std::size_t kHundredThousand = 100'000;
constexpr std::size_t kMillion = 1'000'000;
constexpr std::size_t kHundredMillion = 100'000'000;

constexpr Outcome kInternal = CRYPT_E_ASN1_INTERNAL;

Outcome decode_text(const CBlob& input) {
    return outcome_of([&] { (void)decodeCharString(input); });
}

Outcome decode_octets(const CBlob& input) {
    return outcome_of([&] { (void)fromOctetString(input); });
}

/// The text that people are shown of a name.
Outcome write_name(const CBlob& input) {
    return outcome_of([&] {
        CName name;
        name.decode(input);
        (void)name.toString();
    });
}

Outcome copy_attributes(const CBlob& input) {
    return outcome_of([&] {
        CAttributes attributes;
        attributes.decode(input);
        const CAttributes copy(attributes);
        (void)copy.encode();
    });
}

/// Numbers of three octets that go down, so that sorting has all its work.
Octets descending(std::size_t count, const Octets& front, const Octets& back = {}) {
    Octets all;
    all.reserve(count * (front.size() + back.size() + 5));
    for (std::size_t i = count; i-- != 0;) {
        const Octets number = {0x04, 0x03, static_cast<std::uint8_t>(i >> 16),
                               static_cast<std::uint8_t>(i >> 8), static_cast<std::uint8_t>(i)};
        all.insert(all.end(), front.begin(), front.end());
        all.insert(all.end(), number.begin(), number.end());
        all.insert(all.end(), back.begin(), back.end());
    }
    return all;
}

Octets sequence_of(std::string_view hex, std::size_t count) {
    return wrap(0x30, repeated(hex, count));
}

class ObjectLayerShape : public testing::TestWithParam<Shape> {};

TEST_P(ObjectLayerShape, GrowsInProportion) {
    expect_growth(GetParam());
}

const Shape kLists[] = {
    {"Extensions", decode_and_encode<CExtensions>,
     [](std::size_t n) { return sequence_of("30 06 06 02 2a 05 04 00", n); }, kHundredThousand, kTaken, 180},
    {"GeneralNames", decode_and_encode<CGeneralNames>, [](std::size_t n) { return sequence_of("82 00", n); },
     kMillion, kTaken, 200},
    {"GeneralNamesThatAreIdentifiers", decode_and_encode<CGeneralNames>,
     [](std::size_t n) { return sequence_of("88 01 2a", n); }, kHundredThousand, kTaken, 300},
    {"NameOfManyParts", decode_and_encode<CName>,
     [](std::size_t n) { return sequence_of("31 09 30 07 06 03 55 04 03 0c 00", n); }, kHundredThousand,
     kTaken, 160},
    {"NameOfEmptyParts", decode_and_encode<CName>, [](std::size_t n) { return sequence_of("31 00", n); },
     kMillion, kInternal, 120},
    {"NameOfOneWidePart", decode_and_encode<CName>,
     [](std::size_t n) { return wrap(0x30, wrap(0x31, descending(n, from_hex("30 0a 06 03 2a 03 04")))); },
     kHundredThousand, kTaken, 160},
    {"NameAsText", write_name,
     [](std::size_t n) { return sequence_of("31 0a 30 08 06 03 55 04 03 0c 01 41", n); }, kHundredThousand,
     kTaken, 160},
    {"Attributes", decode_and_encode<CAttributes>,
     [](std::size_t n) {
         Octets all;
         for (std::size_t i = n; i-- != 0;) {
             const Octets one = {0x30,
                                 0x0a,
                                 0x06,
                                 0x04,
                                 0x2a,
                                 static_cast<std::uint8_t>(0x80 | (i >> 14 & 0x7f) | 1),
                                 static_cast<std::uint8_t>(0x80 | (i >> 7 & 0x7f)),
                                 static_cast<std::uint8_t>(i & 0x7f),
                                 0x31,
                                 0x02,
                                 0x05,
                                 0x00};
             all.insert(all.end(), one.begin(), one.end());
         }
         return wrap(0x31, all);
     },
     kHundredThousand, kTaken, 160},
    {"AttributesCopied", copy_attributes,
     [](std::size_t n) { return wrap(0x31, attribute_of(repeated("05 00", n), long_object_id(128, 4))); },
     kHundredThousand, kTaken, 200},
    {"ValuesOfOneAttribute", decode_and_encode<CAttribute>,
     [](std::size_t n) { return attribute_of(descending(n, {})); }, kMillion, kTaken, 80},
    {"InfoTypesAndValues", decode_and_encode<CInfoTypeAndValueList>,
     [](std::size_t n) { return sequence_of("30 04 06 02 2a 03", n); }, kHundredThousand, kTaken, 220},
    {"Policies", decode_and_encode<CPolicyInformationList>,
     [](std::size_t n) { return sequence_of("30 03 06 01 2a", n); }, kHundredThousand, kTaken, 300},
    {"PolicyOfManyQualifiers", decode_and_encode<CPolicyInformation>,
     [](std::size_t n) {
         return wrap(0x30, join({element(0x06, "2a 03"), wrap(0x30, repeated("30 05 06 01 2a 05 00", n))}));
     },
     kHundredThousand, kTaken, 120},
    {"AccessDescriptions", decode_and_encode<CAuthorityInfoAccessSyntax>,
     [](std::size_t n) { return sequence_of("30 05 06 01 2a 82 00", n); }, kHundredThousand, kTaken, 220},
    {"DistributionPoints", decode_and_encode<CCRLDistPointsSyntax>,
     [](std::size_t n) { return sequence_of("30 00", n); }, kHundredThousand, kTaken, 300},
    {"Certificates", decode_and_encode<CCertificateValues>,
     [](std::size_t n) { return wrap(0x30, repeated(certificate_of({}), n)); }, kHundredThousand, kTaken, 60},
    {"SigningCertificate", construct_value<CAttrSigningCertificate>,
     [](std::size_t n) { return wrap(0x30, sequence_of("30 02 04 00", n)); }, kHundredThousand, kTaken, 200},
    {"SigningCertificateV2", construct_value<CAttrSigningCertificateV2>,
     [](std::size_t n) { return wrap(0x30, sequence_of("30 02 04 00", n)); }, kHundredThousand, kTaken, 450},
    {"OtherSigningCertificate", construct_value<CAttrOtherSigningCertificate>,
     [](std::size_t n) { return wrap(0x30, sequence_of("30 02 04 00", n)); }, kHundredThousand, kTaken, 300},
    {"CertificateIssuer", construct_value<CExtCertificateIssuer>,
     [](std::size_t n) { return sequence_of("82 00", n); }, kMillion, kTaken, 120},
    {"IssuerOfManyNames", decode_and_encode<CIssuerSerial>,
     [](std::size_t n) {
         return sequence({sequence_of("82 00", n), element(0x02, "05")});
     },
     kMillion, kTaken, 200},
    {"StatusOfManyTexts", decode_and_encode<CPKIStatusInfo>,
     [](std::size_t n) {
         return wrap(0x30, join({element(0x02, "02"), sequence_of("0c 00", n)}));
     },
     kMillion, kTaken, 120},
    {"SignerOfManyAttributes", decode_value<CSignerInfo>,
     [](std::size_t n) { return signer_with(repeated("30 08 06 02 2a 04 31 02 05 00", n)); },
     kHundredThousand, kTaken, 120},
};

const Shape kStrings[] = {
    {"OctetsOfManySegments", decode_octets, [](std::size_t n) { return wrap(0x24, repeated("04 01 aa", n)); },
     kMillion, kTaken, 4},
    {"OctetsOfManyConstructedSegments", decode_octets,
     [](std::size_t n) { return wrap(0x24, repeated("24 00", n)); }, kMillion, kTaken, 4},
    {"Octets", decode_octets, [](std::size_t n) { return filled(0x04, n); }, kHundredMillion, kTaken, 4},
    {"UTF8Text", decode_text, [](std::size_t n) { return filled(0x0c, n); }, kHundredMillion, kTaken, 12},
    {"PrintableText", decode_text, [](std::size_t n) { return filled(0x13, n); }, kHundredMillion, kTaken,
     12},
    {"BMPText", decode_text, [](std::size_t n) { return filled(0x1e, n); }, kHundredMillion, kTaken, 12},
    {"UniversalText", decode_text, [](std::size_t n) { return filled(0x1c, n); }, kHundredMillion, kTaken,
     12},
    {"BigNumber", decode_and_encode<CBigInteger>, [](std::size_t n) { return filled(0x02, n); },
     kHundredMillion, kTaken, 8},
    {"ReasonsOfManyBits", decode_value<CReasonFlags>, [](std::size_t n) { return filled(0x03, n); },
     kHundredMillion, kInternal, 4},
    {"AlgorithmWithManyOctets", decode_and_encode<CAlgorithmIdentifier>,
     [](std::size_t n) {
         return wrap(0x30, join({element(0x06, "2a 03"), filled(0x04, n)}));
     },
     kHundredMillion, kTaken, 8},
    {"ContentInfo", decode_and_encode<CContentInfo>,
     [](std::size_t n) {
         return wrap(0x30, join({kDataType, wrap(0xa0, filled(0x04, n))}));
     },
     kHundredMillion, kTaken, 8},
    {"TimeOfManyDigits", decode_value<CTimeChoice>, [](std::size_t n) { return wrap(0x18, Octets(n, '1')); },
     kMillion, E_INVALIDARG, 8},
};

INSTANTIATE_TEST_SUITE_P(Lists, ObjectLayerShape, testing::ValuesIn(kLists), case_name);
INSTANTIATE_TEST_SUITE_P(Strings, ObjectLayerShape, testing::ValuesIn(kStrings), case_name);

}  // namespace
}  // namespace Quillmark::test
