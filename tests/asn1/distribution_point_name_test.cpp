#include "asn1/distribution_point_name.h"

#include <gtest/gtest.h>

#include "asn1data/records.h"
#include "runtime/message_buffer.h"
#include "tests/support/blob.h"
#include "tests/support/result_code.h"

namespace Quillmark::ASN1 {
namespace {

using test::blob;
using test::hex;

CGeneralNames names(std::initializer_list<const wchar_t*> dns_names) {
    CGeneralNames made;
    for (const wchar_t* name : dns_names) {
        made.emplace_back().put_dNSName(name);
    }
    return made;
}

TEST(DistributionPointName, StartsWithoutAForm) {
    const CDistributionPointName name;
    EXPECT_EQ(name.get_type(), 0u);
    EXPECT_EQ(name.get_fullName(), nullptr);
}

TEST(DistributionPointName, TakesAFullName) {
    const CDistributionPointName name(names({L"a", L"b"}));
    EXPECT_EQ(name.get_type(), 1u);
    EXPECT_EQ(*name.get_fullName(), names({L"a", L"b"}));
    CDistributionPointName other;
    other.put_fullName(*name.get_fullName());
    EXPECT_EQ(other, name);
    other.put_fullName(*other.get_fullName());
    EXPECT_EQ(other, name);
}

TEST(DistributionPointName, GoesBothWays) {
    const CDistributionPointName name(names({L"a", L"b"}));
    EXPECT_EQ(hex(name.encode()), "a0 06 82 01 61 82 01 62");
    CDistributionPointName read(names({L"c"}));
    read.decode(name.encode());
    EXPECT_EQ(read, name);
}

TEST(DistributionPointName, OfNoFormIsRefusedByTheEncoder) {
    ASN1BERDecodeBuffer buffer;
    asn1data::ASN1T_DistributionPointName record;
    record.t = 1;
    EXPECT_NO_THROW(
        ASN1T_DistributionPointName_traits::set(buffer.getCtxtPtr(), record, CDistributionPointName()));
    EXPECT_EQ(record.t, 0u);
    EXPECT_EQ(record.u.fullName, nullptr);
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, CDistributionPointName().encode());
}

TEST(DistributionPointName, NeedsOneName) {
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, CDistributionPointName(CGeneralNames()).encode());
    CDistributionPointName name;
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, name.decode(blob("a0 00")));
}

TEST(DistributionPointName, LosesANameRelativeToTheIssuer) {
    // Intended: without a failure.
    CDistributionPointName name(names({L"a"}));
    name.decode(blob("a1 0a 30 08 06 03 55 04 03 0c 01 41"));
    EXPECT_EQ(name.get_type(), 0u);
    EXPECT_EQ(name.get_fullName(), nullptr);
}

TEST(DistributionPointName, KeepsValueWhenDecodingFails) {
    CDistributionPointName name(names({L"a"}));
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, name.decode(CBlob()));
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, name.decode(blob("a2 03 82 01 61")));
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, name.decode(blob("a0 03 82 02 61")));
    // An otherName inside.
    EXPECT_CODE(E_INVALIDARG, name.decode(blob("a0 0a a0 08 06 02 2a 03 a0 02 05 00")));
    EXPECT_EQ(name, CDistributionPointName(names({L"a"})));
}

TEST(DistributionPointName, ComparesFormAndNames) {
    EXPECT_EQ(CDistributionPointName(), CDistributionPointName());
    EXPECT_NE(CDistributionPointName(), CDistributionPointName(CGeneralNames()));
    EXPECT_NE(CDistributionPointName(names({L"a"})), CDistributionPointName());
    EXPECT_NE(CDistributionPointName(names({L"a"})), CDistributionPointName(names({L"b"})));
    EXPECT_NE(CDistributionPointName(names({L"a"})), CDistributionPointName(names({L"a", L"b"})));
    // Intended: texts compare by their first characters.
    EXPECT_EQ(CDistributionPointName(names({L"ax"})), CDistributionPointName(names({L"ay"})));
}

TEST(DistributionPointName, IsCopiedDeeply) {
    CDistributionPointName name(names({L"a"}));
    CDistributionPointName copy(name);
    EXPECT_NE(copy.get_fullName(), name.get_fullName());
    name.put_fullName(names({L"b"}));
    EXPECT_EQ(copy, CDistributionPointName(names({L"a"})));
    copy = name;
    EXPECT_EQ(copy, name);
    copy = *&copy;
    EXPECT_EQ(copy, name);
}

TEST(DistributionPointName, OfNoFormIsCopied) {
    const CDistributionPointName none;
    CDistributionPointName copy(none);
    EXPECT_EQ(copy.get_type(), 0u);
    copy.put_fullName(names({L"a"}));
    copy = none;
    EXPECT_EQ(copy.get_type(), 0u);
}

TEST(DistributionPointName, IsAssignedToAfterClear) {
    CDistributionPointName name(names({L"a"}));
    name.clear();
    name = CDistributionPointName(names({L"b"}));
    EXPECT_EQ(name.get_type(), 1u);
    name.clear();
}

TEST(DistributionPointNameRecord, CopiesDeeply) {
    ASN1BERDecodeBuffer target_buffer;
    asn1data::ASN1T_DistributionPointName target;
    const CDistributionPointName name(names({L"a", L"b"}));
    {
        ASN1BERDecodeBuffer buffer;
        asn1data::ASN1T_DistributionPointName source;
        ASN1T_DistributionPointName_traits::set(buffer.getCtxtPtr(), source, name);
        ASN1T_DistributionPointName_traits::copy(target_buffer.getCtxtPtr(), source, target);
    }
    CDistributionPointName read;
    ASN1T_DistributionPointName_traits::get(target, read);
    EXPECT_EQ(read, name);
}

}  // namespace
}  // namespace Quillmark::ASN1
