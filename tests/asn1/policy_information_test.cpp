#include "asn1/policy_information.h"

#include <gtest/gtest.h>

#include "runtime/message_buffer.h"
#include "tests/support/blob.h"
#include "tests/support/result_code.h"

namespace Quillmark::ASN1 {
namespace {

using test::blob;
using test::hex;

TEST(PolicyInformation, GoesBothWays) {
    CPolicyInformation policy("1.2.3");
    EXPECT_EQ(hex(policy.encode()), "30 04 06 02 2a 03");
    policy.put_policyIdentifier("1.2.9");
    policy.decode(blob("30 04 06 02 2a 03"));
    EXPECT_STREQ(policy.get_policyIdentifier(), "1.2.3");
}

TEST(PolicyInformation, DropsQualifiers) {
    // Intended: the value has no place for them. One qualifier id-qt-cps with an IA5String.
    CPolicyInformation policy;
    policy.decode(blob("30 15 06 02 2a 03 30 0f 30 0d 06 08 2b 06 01 05 05 07 02 01 16 01 61"));
    EXPECT_STREQ(policy.get_policyIdentifier(), "1.2.3");
    EXPECT_EQ(hex(policy.encode()), "30 04 06 02 2a 03");
}

TEST(PolicyInformation, ReportsBadInput) {
    EXPECT_CODE(E_INVALIDARG, CPolicyInformation("1.").encode());
    CPolicyInformation policy("1.2.3");
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, policy.decode(blob("30 00")));
    EXPECT_STREQ(policy.get_policyIdentifier(), "1.2.3");
}

TEST(PolicyInformation, RefusesEmptyOid) {
    EXPECT_STREQ(CPolicyInformation().get_policyIdentifier(), "");
    EXPECT_CODE(E_INVALIDARG, CPolicyInformation().encode());
}

TEST(PolicyInformationList, KeepsTheOrder) {
    CPolicyInformationList list{CPolicyInformation("1.2.4"), CPolicyInformation("1.2.3")};
    EXPECT_EQ(hex(list.encode()), "30 0c 30 04 06 02 2a 04 30 04 06 02 2a 03");
    // The second one with a qualifier, which gets lost.
    list.decode(
        blob("30 1d 30 04 06 02 2a 05 30 15 06 02 2a 03 30 0f 30 0d 06 08 2b 06 01 05 05 07 02 01 16 01 61"));
    EXPECT_EQ(hex(list.encode()), "30 0c 30 04 06 02 2a 05 30 04 06 02 2a 03");
}

TEST(PolicyInformationList, HasAtLeastOne) {
    CPolicyInformationList list;
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, list.encode());
    list.emplace_back("1.2.3");
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, list.decode(blob("30 00")));
    EXPECT_EQ(list.size(), 1u);
}

TEST(PolicyInformationRecord, IsCopiedDeeply) {
    const CPolicyInformationList list{CPolicyInformation("1.2.3")};
    ASN1BERDecodeBuffer target_buffer;
    ASN1TSeqOfList target{};
    {
        ASN1BERDecodeBuffer buffer;
        ASN1TSeqOfList source{};
        ASN1T_CertificatePoliciesSyntax_traits::set(buffer.getCtxtPtr(), source, list);
        ASN1T_CertificatePoliciesSyntax_traits::copy(target_buffer.getCtxtPtr(), source, target);
    }
    CPolicyInformationList read;
    ASN1T_CertificatePoliciesSyntax_traits::get(target, read);
    EXPECT_EQ(read.encode(), list.encode());
}

}  // namespace
}  // namespace Quillmark::ASN1
