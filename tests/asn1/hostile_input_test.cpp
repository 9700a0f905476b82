#include <gtest/gtest.h>

#include <functional>
#include <new>
#include <ostream>
#include <string>

#include "asn1/access_description.h"
#include "asn1/algorithm_identifier.h"
#include "asn1/attribute.h"
#include "asn1/big_integer.h"
#include "asn1/certificate.h"
#include "asn1/content_info.h"
#include "asn1/distribution_point.h"
#include "asn1/distribution_point_name.h"
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
#include "tests/support/blob.h"
#include "tests/support/case_name.h"

namespace Quillmark::ASN1 {
namespace {

using test::blob;
using test::blob_of;
using test::octets;

struct InputCase {
    const char* name;
    void (*decode)(const CBlob&);
    const char* der;
};

void PrintTo(const InputCase& row, std::ostream* out) {
    *out << row.name;
}

template <class Value>
void decode(const CBlob& der) {
    Value value;
    value.decode(der);
}

/// What can be read can be written and read again, if it can be written at all.
template <class Value>
void decode_and_encode(const CBlob& der) {
    Value value;
    value.decode(der);
    value.decode(value.encode());
}

void decode_text(const CBlob& der) {
    decodeCharString(der);
}

/// For values that hold their own octets.
template <class Value>
void construct_and_encode(const CBlob& der) {
    Value value(der);
    value.encode();
    value.decode();
}

constexpr InputCase kCases[] = {
    {"Algorithm", decode_and_encode<CAlgorithmIdentifier>,
     "30 1c 06 06 2a 85 03 02 02 13 30 12 06 07 2a 85 03 02 02 23 01 06 07 2a 85 03 02 02 1e 01"},
    {"Extensions", decode_and_encode<CExtensions>,
     "30 23 30 1a 06 03 55 1d 11 04 13 30 11 a4 0c 30 0a 31 08 30 06 06 01 2a 0c 01 41 82 01 61 "
     "30 05 06 01 2a 04 00"},
    {"Status", decode_and_encode<CPKIStatusInfo>,
     "30 1b 02 01 02 30 12 0c 10 e0 b8 81 e0 b9 a5 e0 b9 ae e0 b9 be d0 96 6f 6b 03 02 05 20"},
    {"FailureInfo", decode_and_encode<CPKIFailureInfo>, "03 05 06 00 00 00 40"},
    {"Attributes", decode_and_encode<CAttributes>,
     "31 26 30 1c 06 09 2a 86 48 86 f7 0d 01 09 05 31 0f 17 0d 32 34 30 31 30 31 30 30 30 30 30 30 5a "
     "30 06 06 01 2a 31 01 05"},
    {"ContentInfo", decode_and_encode<CContentInfo>, "30 09 06 02 2a 03 a0 03 04 01 aa"},
    {"GeneralNames", decode_and_encode<CGeneralNames>,
     "30 1d a4 0e 30 0c 31 0a 30 08 06 03 55 04 03 0c 01 41 82 01 61 87 04 7f 00 00 01 88 02 2a 03"},
    {"Name", decode_and_encode<CName>,
     "30 18 31 16 30 08 06 03 55 04 03 0c 01 41 30 0a 06 03 55 04 04 0c 03 42 42 42"},
    {"Time", decode_and_encode<CTimeChoice>, "18 0f 32 30 32 34 30 31 30 31 30 30 30 30 30 30 5a"},
    {"BigInteger", decode_and_encode<CBigInteger>, "02 09 00 ff ff ff ff ff ff ff ff"},
    {"Signer", decode<CSignerInfo>,
     "30 1f 02 01 01 30 0d 30 08 31 06 30 04 06 00 05 00 02 01 05 30 03 06 01 2a 30 03 06 01 2a 04 01 ab"},
    {"CertificateIdentifier", decode_and_encode<CESSCertIDv2>,
     "30 17 30 06 06 02 2a 03 05 00 04 01 aa 30 0a 30 05 82 03 61 2e 62 02 01 05"},
    {"CertificateIdentifierOfSha1", decode_and_encode<CESSCertID>,
     "30 0f 04 01 aa 30 0a 30 05 82 03 61 2e 62 02 01 05"},
    {"CertificateIdentifierOfOtherHash", decode_and_encode<COtherCertID>,
     "30 1c 30 0b 30 06 06 02 2a 03 05 00 04 01 aa 30 0d 30 08 82 03 61 2e 62 87 01 7f 02 01 05"},
    {"IssuerSerial", decode_and_encode<CIssuerSerial>, "30 0a 30 05 82 03 61 2e 62 02 01 05"},
    {"HashAlgorithmAndValue", decode_and_encode<COtherHashAlgAndValue>,
     "30 0b 30 06 06 02 2a 03 05 00 04 01 aa"},
    {"HashWithAlgorithm", decode_and_encode<COtherHash>,
     "30 1e 30 19 06 06 2a 85 03 02 02 13 30 0f 06 07 2a 85 03 02 02 23 01 06 04 2a 85 03 02 04 01 aa"},
    {"HashWithoutAlgorithm", decode_and_encode<COtherHash>, "04 03 aa bb cc"},
    {"FullNameOfDistributionPoint", decode_and_encode<CDistributionPointName>,
     "a0 13 a4 0e 30 0c 31 0a 30 08 06 03 55 04 03 0c 01 41 82 01 61"},
    {"RelativeNameOfDistributionPoint", decode<CDistributionPointName>,
     "a1 0a 30 08 06 03 55 04 03 0c 01 41"},
    {"CRLReason", construct_and_encode<CExtCRLReason>, "0a 01 0a"},
    {"HoldInstructionCode", construct_and_encode<CExtHoldInstructionCode>, "06 07 2a 86 48 ce 38 02 01"},
    {"InvalidityDate", construct_and_encode<CExtInvalidityDate>,
     "18 0f 32 30 32 34 30 31 30 31 31 32 33 30 34 35 5a"},
    {"CertificateIssuer", construct_and_encode<CExtCertificateIssuer>, "30 03 82 01 61"},
    {"PrivateKeyUsagePeriod", construct_and_encode<CExtPrivateKeyUsagePeriod>,
     "30 22 80 0f 32 30 32 34 30 31 30 31 31 32 33 30 34 35 5a "
     "81 0f 32 30 33 30 30 31 30 31 31 32 33 30 34 35 5a"},
    {"Policy", decode_and_encode<CPolicyInformation>,
     "30 15 06 02 2a 03 30 0f 30 0d 06 08 2b 06 01 05 05 07 02 01 16 01 61"},
    {"UTF8Text", decode_text, "0c 07 61 d0 96 f0 9f 98 80"},
    {"BMPText", decode_text, "1e 04 00 41 04 16"},
    {"UniversalText", decode_text, "1c 08 00 00 00 41 00 00 04 16"},
    {"ReasonFlags", decode_and_encode<CReasonFlags>, "03 03 07 60 80"},
    {"InfoTypeAndValue", decode_and_encode<CInfoTypeAndValue>,
     "30 10 06 08 2b 06 01 05 05 07 04 04 30 04 06 02 2a 03"},
    {"CertId", decode_and_encode<CCertId>, "30 07 82 01 61 02 02 00 ff"},
    {"RevocationAnnouncement", decode_and_encode<CRevAnnContent>,
     "30 3b 02 01 04 30 07 82 01 61 02 02 00 ff 18 0f 32 30 32 36 30 37 30 38 30 39 31 30 31 31 5a "
     "18 0d 32 30 35 35 30 31 30 32 30 33 30 34 5a 30 0d 30 0b 06 02 2a 03 01 01 ff 04 02 05 00"},
    {"Policies", decode_and_encode<CPolicyInformationList>,
     "30 1d 30 04 06 02 2a 05 30 15 06 02 2a 03 30 0f 30 0d 06 08 2b 06 01 05 05 07 02 01 16 01 61"},
    {"AuthorityInfoAccess", decode_and_encode<CAuthorityInfoAccessSyntax>,
     "30 18 30 0d 06 08 2b 06 01 05 05 07 30 01 86 01 78 30 07 06 02 2a 03 82 01 61"},
    {"DistributionPoints", decode_and_encode<CCRLDistPointsSyntax>,
     "30 2a 30 10 a0 05 a0 03 82 01 61 81 02 06 40 a2 03 82 01 62 "
     "30 16 a0 05 a0 03 87 01 00 a2 0d a4 0b 30 09 31 07 30 05 06 01 2a 05 00"},
};

// Cut off behind the second header these read as a value without certificates: when a header reaches beyond
// the input, reading goes on with its contents, which here begin like the value itself.
constexpr InputCase kNestedSequences[] = {
    {"SigningCertificate", construct_and_encode<CAttrSigningCertificate>,
     "30 0f 30 05 30 03 04 01 aa 30 06 30 04 06 02 2a 03"},
    {"SigningCertificateV2", construct_and_encode<CAttrSigningCertificateV2>,
     "30 0f 30 05 30 03 04 01 aa 30 06 30 04 06 02 2a 03"},
    {"OtherSigningCertificate", construct_and_encode<CAttrOtherSigningCertificate>,
     "30 1b 30 11 30 0f 04 03 01 02 03 30 08 30 03 82 01 61 02 01 05 30 06 30 04 06 02 2a 03"},
    {"InfoTypeAndValueList", decode_and_encode<CInfoTypeAndValueList>,
     "30 18 30 10 06 08 2b 06 01 05 05 07 04 04 30 04 06 02 2a 03 30 04 06 02 2a 03"},
    {"CertificateValues", decode_and_encode<CCertificateValues>,
     "30 40 30 3e 30 33 02 01 05 30 03 06 01 2a 30 00 30 1a 17 0b 32 34 30 31 30 31 30 30 30 30 5a "
     "17 0b 32 34 30 31 30 31 30 30 30 30 5a 30 00 30 09 30 03 06 01 2a 03 02 00 aa 30 03 06 01 2a 03 02 00 "
     "bb"},
};

class HostileInput : public testing::TestWithParam<InputCase> {};

/// Runs the decoder; failures must be of the kinds that callers know.
void expect_clean(const InputCase& row, const CBlob& input) {
    try {
        row.decode(input);
    } catch (const CAtlException&) {
    } catch (const std::bad_alloc&) {
    }
}

TEST_P(HostileInput, IsReadWhenWhole) {
    EXPECT_NO_THROW(GetParam().decode(blob(GetParam().der)));
}

class CutOffInput : public testing::TestWithParam<InputCase> {};

TEST_P(CutOffInput, IsRefused) {
    const auto whole = octets(blob(GetParam().der));
    for (std::size_t size = 0; size < whole.size(); ++size) {
        const CBlob part(whole.data(), size);
        EXPECT_THROW(GetParam().decode(part), CAtlException) << size << " octets";
    }
}

TEST_P(HostileInput, FailsCleanlyWhenCutOff) {
    const auto whole = octets(blob(GetParam().der));
    for (std::size_t size = 0; size < whole.size(); ++size) {
        EXPECT_NO_THROW(expect_clean(GetParam(), CBlob(whole.data(), size))) << size << " octets";
    }
}

TEST_P(HostileInput, FailsCleanlyWithAnyOctetChanged) {
    const auto whole = octets(blob(GetParam().der));
    for (std::size_t position = 0; position < whole.size(); ++position) {
        auto changed = whole;
        for (int value = 0; value <= 0xFF; ++value) {
            changed[position] = static_cast<std::uint8_t>(value);
            EXPECT_NO_THROW(expect_clean(GetParam(), blob_of(changed))) << position << " becomes " << value;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(ObjectLayer, HostileInput, testing::ValuesIn(kCases), test::case_name);
INSTANTIATE_TEST_SUITE_P(NestedSequences, HostileInput, testing::ValuesIn(kNestedSequences), test::case_name);
INSTANTIATE_TEST_SUITE_P(ObjectLayer, CutOffInput, testing::ValuesIn(kCases), test::case_name);

}  // namespace
}  // namespace Quillmark::ASN1
