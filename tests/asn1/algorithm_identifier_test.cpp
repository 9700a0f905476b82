#include "asn1/algorithm_identifier.h"

#include <gtest/gtest.h>

#include "asn1data/records.h"
#include "runtime/message_buffer.h"
#include "tests/support/blob.h"
#include "tests/support/result_code.h"

namespace Quillmark::ASN1 {
namespace {

using test::blob;
using test::hex;

constexpr const char* kSha256 = "2.16.840.1.101.3.4.2.1";
// A known algorithm whose parameters have a type (RFC 4491 2.3.2).
constexpr const char* kGost2001 = "1.2.643.2.2.19";

CAlgorithmIdentifier algorithm(const char* oid, const CBlob& parameters) {
    CAlgorithmIdentifier value(oid);
    value.put_parameters(parameters);
    return value;
}

TEST(AlgorithmIdentifier, LeavesEmptyParametersOut) {
    EXPECT_EQ(hex(CAlgorithmIdentifier(kSha256).encode()), "30 0b 06 09 60 86 48 01 65 03 04 02 01");
}

TEST(AlgorithmIdentifier, WritesNullParameters) {
    EXPECT_EQ(hex(algorithm(kSha256, blob("05 00")).encode()),
              "30 0d 06 09 60 86 48 01 65 03 04 02 01 05 00");
}

TEST(AlgorithmIdentifier, ReadsBothForms) {
    CAlgorithmIdentifier value = algorithm("1.2.3", blob("05 00"));
    value.decode(blob("30 0b 06 09 60 86 48 01 65 03 04 02 01"));
    EXPECT_STREQ(value.get_algorithm(), kSha256);
    EXPECT_EQ(value.get_parameters().cbData(), 0u);
    value.decode(blob("30 0d 06 09 60 86 48 01 65 03 04 02 01 05 00"));
    EXPECT_EQ(hex(value.get_parameters()), "05 00");
}

TEST(AlgorithmIdentifier, WritesUnknownParametersAsTheyAre) {
    EXPECT_EQ(hex(algorithm("1.2.3", blob("30 03 02 01 05")).encode()), "30 09 06 02 2a 03 30 03 02 01 05");
}

TEST(AlgorithmIdentifier, DropsWhatFollowsTheParameters) {
    EXPECT_EQ(hex(algorithm("1.2.3", blob("05 00 05 00")).encode()), "30 06 06 02 2a 03 05 00");
}

TEST(AlgorithmIdentifier, RefusesKnownAlgorithmWithWrongParameters) {
    // Intended: found when encoding, not by the receiver.
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, algorithm(kGost2001, blob("02 01 05")).encode());
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, algorithm(kGost2001, blob("30")).encode());
}

TEST(AlgorithmIdentifier, KeepsKnownParameters) {
    // GostR3410-2001-PublicKeyParameters: two parameter sets (RFC 4491 2.3.2).
    const CBlob parameters = blob("30 12 06 07 2a 85 03 02 02 23 01 06 07 2a 85 03 02 02 1e 01");
    const CBlob der = algorithm(kGost2001, parameters).encode();
    EXPECT_EQ(hex(der), "30 1c 06 06 2a 85 03 02 02 13 " + hex(parameters));
    CAlgorithmIdentifier value;
    value.decode(der);
    EXPECT_EQ(value, algorithm(kGost2001, parameters));
}

TEST(AlgorithmIdentifier, ReportsBadOid) {
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, CAlgorithmIdentifier("1.2.").encode());
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, CAlgorithmIdentifier().encode());
}

TEST(AlgorithmIdentifier, IsNotChangedByFailures) {
    CAlgorithmIdentifier value = algorithm(kGost2001, blob("02 01 05"));
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, value.encode());
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, value.decode(blob("30 03 02 01 05")));
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, value.decode(CBlob()));
    EXPECT_EQ(value, algorithm(kGost2001, blob("02 01 05")));
}

TEST(AlgorithmIdentifier, IgnoresOctetsBehindTheValue) {
    CAlgorithmIdentifier value;
    value.decode(blob("30 04 06 02 2a 03 ff ff"));
    EXPECT_STREQ(value.get_algorithm(), "1.2.3");
}

TEST(AlgorithmIdentifier, ComparesTextAndOctets) {
    EXPECT_EQ(algorithm("1.2.3", blob("05 00")), algorithm("1.2.3", blob("05 00")));
    EXPECT_NE(algorithm("1.2.3", blob("05 00")), algorithm("1.2.3", CBlob()));
    EXPECT_NE(algorithm("1.2.3", CBlob()), algorithm("1.2.4", CBlob()));
    EXPECT_NE(algorithm("1.2.3", CBlob()), algorithm(" 1.2.3", CBlob()));
}

TEST(AlgorithmIdentifier, SwapsAndAssigns) {
    CAlgorithmIdentifier left = algorithm("1.2.3", blob("05 00"));
    CAlgorithmIdentifier right = algorithm("1.2.4", CBlob());
    left.swap(right);
    EXPECT_STREQ(left.get_algorithm(), "1.2.4");
    EXPECT_EQ(hex(right.get_parameters()), "05 00");
    left.assign(right);
    EXPECT_EQ(left, right);
    left.assign(left);
    EXPECT_EQ(left, right);
}

TEST(AlgorithmIdentifierEx, KeepsNumberWithTheSameOid) {
    CAlgorithmIdentifierEx value("1.2.3");
    value.put_algExtra(7);
    value.put_algorithm("1.2.3");
    EXPECT_EQ(value.get_algExtra(), 7u);
    value.put_algorithm(value.get_algorithm());
    EXPECT_EQ(value.get_algExtra(), 7u);
}

TEST(AlgorithmIdentifierEx, ClearsNumberWithAnotherOid) {
    CAlgorithmIdentifierEx value("1.2.3");
    value.put_algExtra(7);
    value.put_algorithm("1.2.4");
    EXPECT_EQ(value.get_algExtra(), 0u);
    EXPECT_STREQ(value.get_algorithm(), "1.2.4");
}

TEST(AlgorithmIdentifierEx, CarriesNumberWhenCopied) {
    CAlgorithmIdentifierEx value("1.2.3");
    value.put_algExtra(7);
    const CAlgorithmIdentifierEx copy(value);
    EXPECT_EQ(copy.get_algExtra(), 7u);
    CAlgorithmIdentifierEx assigned;
    assigned = value;
    EXPECT_EQ(assigned.get_algExtra(), 7u);
    EXPECT_EQ(CAlgorithmIdentifierEx(static_cast<const CAlgorithmIdentifier&>(value)).get_algExtra(), 0u);
}

TEST(AlgorithmIdentifierEx, ClearsNumberWhenAnotherAlgorithmIsDecoded) {
    CAlgorithmIdentifierEx value("1.2.3");
    value.put_algExtra(7);
    value.decode(blob("30 04 06 02 2a 03"));
    EXPECT_EQ(value.get_algExtra(), 7u);
    value.decode(blob("30 04 06 02 2a 04"));
    EXPECT_EQ(value.get_algExtra(), 0u);
}

TEST(AlgorithmIdentifierRecord, LiesOnTheContext) {
    ASN1BERDecodeBuffer buffer;
    const CBlob parameters = blob("05 00");
    asn1data::ASN1T_AlgorithmIdentifier* record =
        ASN1T_AlgorithmIdentifier_set(buffer.getCtxtPtr(), "1.2.3", &parameters);
    EXPECT_EQ(record->m.parametersPresent, 1u);
    CAlgorithmIdentifier value;
    ASN1T_AlgorithmIdentifier_get(value, *record);
    EXPECT_EQ(value, algorithm("1.2.3", parameters));
}

TEST(AlgorithmIdentifierRecord, HasNoParametersOfNullOrEmpty) {
    ASN1BERDecodeBuffer buffer;
    const CBlob empty;
    EXPECT_EQ(ASN1T_AlgorithmIdentifier_set(buffer.getCtxtPtr(), "1.2.3", nullptr)->m.parametersPresent, 0u);
    EXPECT_EQ(ASN1T_AlgorithmIdentifier_set(buffer.getCtxtPtr(), "1.2.3", &empty)->m.parametersPresent, 0u);
}

TEST(AlgorithmIdentifierRecord, ReportsBadOidAsCodecFailure) {
    ASN1BERDecodeBuffer buffer;
    // Intended: E_INVALIDARG elsewhere.
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, ASN1T_AlgorithmIdentifier_set(buffer.getCtxtPtr(), "x", nullptr));
}

TEST(AlgorithmIdentifierRecord, CopiesDeeply) {
    CBlob der;
    ASN1BEREncodeBuffer target_buffer;
    asn1data::ASN1T_AlgorithmIdentifier target;
    {
        ASN1BERDecodeBuffer buffer;
        asn1data::ASN1T_AlgorithmIdentifier source;
        ASN1T_AlgorithmIdentifier_traits::set(buffer.getCtxtPtr(), source, algorithm("1.2.3", blob("05 00")));
        ASN1T_AlgorithmIdentifier_traits::copy(target_buffer.getCtxtPtr(), source, target);
    }
    CAlgorithmIdentifier value;
    ASN1T_AlgorithmIdentifier_traits::get(target, value);
    EXPECT_EQ(value, algorithm("1.2.3", blob("05 00")));
}

}  // namespace
}  // namespace Quillmark::ASN1
