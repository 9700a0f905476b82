#include "asn1/access_description.h"

#include <gtest/gtest.h>

#include "asn1data/records.h"
#include "runtime/message_buffer.h"
#include "tests/support/blob.h"
#include "tests/support/result_code.h"

namespace Quillmark::ASN1 {
namespace {

using test::blob;
using test::hex;

// id-ad-ocsp (RFC 5280 4.2.2.1)
constexpr const char* kOcsp = "1.3.6.1.5.5.7.48.1";
constexpr const char* kOcspAtX = "30 0d 06 08 2b 06 01 05 05 07 30 01 86 01 78";

CGeneralName uri(const wchar_t* text) {
    CGeneralName name;
    name.put_uniformResourceIdentifier(text);
    return name;
}

TEST(AccessDescription, StartsEmpty) {
    const CAccessDescription access;
    EXPECT_STREQ(access.get_accessMethod(), "");
    EXPECT_EQ(access.get_accessLocation().get_type(), 0u);
}

TEST(AccessDescription, GoesBothWays) {
    CAccessDescription access(kOcsp, uri(L"x"));
    EXPECT_EQ(hex(access.encode()), kOcspAtX);
    access.put_accessMethod("1.2.3");
    access.put_accessLocation(uri(L"y"));
    EXPECT_EQ(hex(access.encode()), "30 07 06 02 2a 03 86 01 79");
    access.decode(blob(kOcspAtX));
    EXPECT_STREQ(access.get_accessMethod(), kOcsp);
    EXPECT_STREQ(access.get_accessLocation().get_uniformResourceIdentifier(), L"x");
}

TEST(AccessDescription, ComparesMethodAndLocation) {
    const CAccessDescription access(kOcsp, uri(L"x"));
    EXPECT_EQ(access, CAccessDescription(kOcsp, uri(L"x")));
    EXPECT_NE(access, CAccessDescription("1.2.3", uri(L"x")));
    EXPECT_NE(access, CAccessDescription(kOcsp, uri(L"y")));
    // Intended: names compare by their first character.
    EXPECT_EQ(access, CAccessDescription(kOcsp, uri(L"xy")));
}

TEST(AccessDescription, IsCopiedDeeply) {
    CAccessDescription access(kOcsp, uri(L"x"));
    const CAccessDescription copy(access);
    access.put_accessLocation(uri(L"y"));
    EXPECT_STREQ(copy.get_accessLocation().get_uniformResourceIdentifier(), L"x");
    access = copy;
    EXPECT_EQ(access, copy);
}

TEST(AccessDescription, ReportsWhatCannotBeWritten) {
    EXPECT_CODE(E_INVALIDARG, CAccessDescription("1.", uri(L"x")).encode());
    EXPECT_CODE(E_INVALIDARG, CAccessDescription("", uri(L"x")).encode());
    EXPECT_CODE(E_INVALIDARG, CAccessDescription(kOcsp, CGeneralName()).encode());
}

TEST(AccessDescription, KeepsValueWhenDecodingFails) {
    CAccessDescription access(kOcsp, uri(L"x"));
    for (const char* bad : {"", "30 00", "30 04 06 02 2a 03", "30 07 06 02 2a 03 89 01 79", "31 00"}) {
        EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, access.decode(blob(bad))) << bad;
    }
    // An otherName is read, but no value can hold it.
    EXPECT_CODE(E_INVALIDARG, access.decode(blob("30 0d 06 02 2a 04 a0 07 06 01 2a a0 02 05 00")));
    EXPECT_EQ(access, CAccessDescription(kOcsp, uri(L"x")));
}

TEST(AuthorityInfoAccess, KeepsTheOrder) {
    const CAuthorityInfoAccessSyntax access{CAccessDescription("1.2.4", uri(L"y")),
                                            CAccessDescription("1.2.3", uri(L"x"))};
    const char* der = "30 12 30 07 06 02 2a 04 86 01 79 30 07 06 02 2a 03 86 01 78";
    EXPECT_EQ(hex(access.encode()), der);
    CAuthorityInfoAccessSyntax read{CAccessDescription("1.2.9", uri(L"z"))};
    read.decode(blob(der));
    EXPECT_EQ(read, access);
}

TEST(AuthorityInfoAccess, HasAtLeastOneDescription) {
    CAuthorityInfoAccessSyntax access;
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, access.encode());
    access.emplace_back("1.2.3", uri(L"x"));
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, access.decode(blob("30 00")));
    EXPECT_EQ(access.size(), 1u);
}

TEST(AuthorityInfoAccess, EndsInTheElementThatCannotBeRead) {
    CAuthorityInfoAccessSyntax access;
    EXPECT_CODE(
        E_INVALIDARG,
        access.decode(blob("30 18 30 07 06 02 2a 03 86 01 78 30 0d 06 02 2a 04 a0 07 06 01 2a a0 02 05 00")));
    EXPECT_EQ(access.size(), 1u);
}

TEST(AuthorityInfoAccessRecord, IsCopiedDeeply) {
    const CAuthorityInfoAccessSyntax access{CAccessDescription(kOcsp, uri(L"x"))};
    ASN1BERDecodeBuffer target_buffer;
    ASN1TSeqOfList target{};
    {
        ASN1BERDecodeBuffer buffer;
        ASN1TSeqOfList source{};
        ASN1T_AuthorityInfoAccessSyntax_traits::set(buffer.getCtxtPtr(), source, access);
        ASN1T_AuthorityInfoAccessSyntax_traits::copy(target_buffer.getCtxtPtr(), source, target);
    }
    CAuthorityInfoAccessSyntax read;
    ASN1T_AuthorityInfoAccessSyntax_traits::get(target, read);
    EXPECT_EQ(read, access);
}

}  // namespace
}  // namespace Quillmark::ASN1
