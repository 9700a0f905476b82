#include "asn1/extension.h"

#include <gtest/gtest.h>

#include "tests/support/blob.h"
#include "tests/support/result_code.h"

namespace Quillmark::ASN1 {
namespace {

using test::blob;
using test::hex;

constexpr const char* kSubjectAltName = "2.5.29.17";

CExtension extension(const char* oid, const char* value, bool critical = false) {
    return CExtension(CExtValue(oid, blob(value)), critical);
}

TEST(ExtValue, HoldsOidAndDer) {
    CExtValue value("1.2.3", blob("05 00"));
    EXPECT_STREQ(value.get_oid(), "1.2.3");
    value.value() = blob("01 01 ff");
    EXPECT_EQ(hex(value.get_value()), "01 01 ff");
    EXPECT_STREQ(CExtValue().get_oid(), "");
}

TEST(Extension, LeavesFalseCriticalOut) {
    EXPECT_EQ(hex(extension("1.2.3", "05 00").encode()), "30 08 06 02 2a 03 04 02 05 00");
}

TEST(Extension, WritesCritical) {
    EXPECT_EQ(hex(extension("1.2.3", "05 00", true).encode()), "30 0b 06 02 2a 03 01 01 ff 04 02 05 00");
}

TEST(Extension, WritesAnyOctetsUnderUnknownOid) {
    EXPECT_EQ(hex(extension("1.2.3", "ff").encode()), "30 07 06 02 2a 03 04 01 ff");
    EXPECT_EQ(hex(extension("1.2.3", "").encode()), "30 06 06 02 2a 03 04 00");
}

TEST(Extension, Reads) {
    CExtension value = extension("1.2.4", "ff");
    value.decode(blob("30 0b 06 02 2a 03 01 01 01 04 02 05 00"));
    EXPECT_STREQ(value.get_extnID(), "1.2.3");
    EXPECT_EQ(hex(value.get_extnValue()), "05 00");
    EXPECT_TRUE(value.get_critical());
    value.decode(blob("30 08 06 02 2a 03 04 02 05 00"));
    EXPECT_FALSE(value.get_critical());
}

TEST(Extension, WritesKnownValue) {
    // GeneralNames with one dNSName "a".
    EXPECT_EQ(hex(extension(kSubjectAltName, "30 03 82 01 61").encode()),
              "30 0c 06 03 55 1d 11 04 05 30 03 82 01 61");
}

TEST(Extension, RefusesKnownOidWithWrongValue) {
    // Intended: found when encoding, not by the receiver.
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, extension(kSubjectAltName, "02 01 05").encode());
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, extension(kSubjectAltName, "30 03 82 05 61").encode());
}

TEST(Extension, ReportsBadOid) {
    EXPECT_CODE(E_INVALIDARG, extension("1.2.", "05 00").encode());
    EXPECT_CODE(E_INVALIDARG, CExtension().encode());
}

TEST(Extension, KeepsValueWhenDecodingFails) {
    CExtension value = extension("1.2.3", "05 00", true);
    for (const char* bad : {"", "30", "02 01 05", "30 04 06 02 2a 03", "30 08 06 02 2a 03 02 02 05 00"}) {
        EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, value.decode(blob(bad)));
    }
    EXPECT_STREQ(value.get_extnID(), "1.2.3");
    EXPECT_TRUE(value.get_critical());
}

TEST(Extensions, OverwriteOneOidInItsPlace) {
    CExtensions list;
    list.insert(extension("1.2.3", "01 01 00"));
    list.insert(extension("1.2.4", "05 00"));
    list.insert(extension("1.2.3", "01 01 ff", true));
    ASSERT_EQ(list.size(), 2u);
    EXPECT_STREQ(list.front().get_extnID(), "1.2.3");
    EXPECT_EQ(hex(list.front().get_extnValue()), "01 01 ff");
    EXPECT_TRUE(list.front().get_critical());
}

TEST(Extensions, FindByText) {
    CExtensions list;
    list.insert(extension("1.2.3", "05 00"));
    const CExtensions& lent = list;
    EXPECT_EQ(list.find("1.2.3"), list.begin());
    EXPECT_EQ(lent.find("1.2.3"), lent.begin());
    EXPECT_EQ(list.find("1.2"), list.end());
    EXPECT_EQ(lent.find(" 1.2.3"), lent.end());
}

TEST(Extensions, EraseTheFirstMatch) {
    CExtensions list;
    list.push_back(extension("1.2.3", "01 01 00"));
    list.push_back(extension("1.2.3", "01 01 ff"));
    list.erase("1.2.4");
    EXPECT_EQ(list.size(), 2u);
    list.erase("1.2.3");
    ASSERT_EQ(list.size(), 1u);
    EXPECT_EQ(hex(list.front().get_extnValue()), "01 01 ff");
}

TEST(Extensions, AreWrittenInOrder) {
    CExtensions list;
    list.insert(extension("1.2.4", "05 00"));
    list.insert(extension("1.2.3", "01 01 ff", true));
    EXPECT_EQ(hex(list.encode()),
              "30 18 30 08 06 02 2a 04 04 02 05 00 30 0c 06 02 2a 03 01 01 ff 04 03 01 01 ff");
}

TEST(Extensions, ReplaceWhatTheListHeld) {
    CExtensions list;
    list.insert(extension("1.2.5", "05 00"));
    list.decode(blob("30 0a 30 08 06 02 2a 04 04 02 05 00"));
    ASSERT_EQ(list.size(), 1u);
    EXPECT_STREQ(list.front().get_extnID(), "1.2.4");
}

TEST(Extensions, NeedOne) {
    // RFC 5280 4.1: SIZE (1..MAX).
    CExtensions list;
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, list.encode());
    list.insert(extension("1.2.3", "05 00"));
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, list.decode(blob("30 00")));
    EXPECT_EQ(list.size(), 1u);
}

}  // namespace
}  // namespace Quillmark::ASN1
