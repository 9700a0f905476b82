#include "asn1/pki_status.h"

#include <gtest/gtest.h>

#include "asn1data/records.h"
#include "runtime/message_buffer.h"
#include "tests/support/blob.h"
#include "tests/support/der.h"
#include "tests/support/result_code.h"

namespace Quillmark::ASN1 {
namespace {

using test::blob;
using test::blob_of;
using test::element;
using test::from_hex;
using test::hex;
using test::sequence;

const CLanguageTagDefaultRead kUntagged;
const CLanguageTagEnUs kEnUs;
const CLanguageTagRuRu kRuRu;

CPKIStatusInfo status_with(const CPKIFreeText& text) {
    CPKIStatusInfo status(PKIStatus_granted);
    status.put_statusString(text);
    return status;
}

/// PKIStatusInfo of status 0 with one UTF8String.
CBlob status_der(std::string_view utf8) {
    return blob_of(sequence({from_hex("02 01 00"), sequence({element(0x0C, utf8)})}));
}

TEST(FailureInfo, HasBitsByNumber) {
    CPKIFailureInfo info;
    info.put_bit(2, true);
    EXPECT_EQ(info.get_value(), 4u);
    EXPECT_TRUE(info.get_bit(2));
    EXPECT_FALSE(info.get_bit(1));
    info.put_bit(2, false);
    EXPECT_EQ(info, CPKIFailureInfo(0));
    EXPECT_NE(info, CPKIFailureInfo(1));
}

TEST(FailureInfo, EndsWithBit31) {
    CPKIFailureInfo info;
    info.put_bit(31, true);
    EXPECT_EQ(info.get_value(), 0x80000000u);
    EXPECT_TRUE(info.get_bit(31));
    EXPECT_CODE(E_INVALIDARG, info.put_bit(32, true));
    EXPECT_CODE(E_INVALIDARG, info.get_bit(32));
    EXPECT_EQ(info.get_value(), 0x80000000u);
}

TEST(FailureInfo, IsCutAfterTheLastBitSet) {
    EXPECT_EQ(hex(CPKIFailureInfo(4).encode()), "03 02 05 20");
    EXPECT_EQ(hex(CPKIFailureInfo(1).encode()), "03 02 07 80");
    EXPECT_EQ(hex(CPKIFailureInfo(0x80).encode()), "03 02 00 01");
    EXPECT_EQ(hex(CPKIFailureInfo(0x101).encode()), "03 03 07 80 80");
    EXPECT_EQ(hex(CPKIFailureInfo(1u << 25).encode()), "03 05 06 00 00 00 40");
    EXPECT_EQ(hex(CPKIFailureInfo(0x80000000).encode()), "03 05 00 00 00 00 01");
    EXPECT_EQ(hex(CPKIFailureInfo(0).encode()), "03 01 00");
}

TEST(FailureInfo, AddsDecodedBitsToThoseItHas) {
    // Intended: decoding does not clear the word first.
    CPKIFailureInfo info(1);
    info.decode(blob("03 02 05 20"));
    EXPECT_EQ(info.get_value(), 5u);
}

TEST(FailureInfo, RefusesMoreThan32Bits) {
    CPKIFailureInfo info(1);
    info.decode(blob("03 05 00 00 00 00 01"));
    EXPECT_EQ(info.get_value(), 0x80000001u);
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, info.decode(blob("03 06 00 00 00 00 00 80")));
}

TEST(FailureInfoRecord, RefusesMoreThan32Bits) {
    asn1data::ASN1T_PKIFailureInfo record;
    record.numbits = 33;
    CPKIFailureInfo info;
    EXPECT_CODE(E_INVALIDARG, ASN1T_PKIFailureInfo_traits::get(record, info));
}

TEST(LanguageTag, IsLowerCase) {
    EXPECT_EQ(CLanguageTag("EN-US"), kEnUs);
    EXPECT_EQ(CLanguageTag(L"Ru-RU"), kRuRu);
    EXPECT_STREQ(CLanguageTag("De-AT").tostring().c_str(), "de-at");
    EXPECT_EQ(CLanguageTag::normalize("X-\xC4"), "x-\xC4");
}

TEST(LanguageTag, ComparesExactly) {
    EXPECT_NE(kEnUs, kRuRu);
    EXPECT_NE(CLanguageTag("en"), kEnUs);
    EXPECT_EQ(CLanguageTag(), CLanguageTag(""));
    CLanguageTag tag;
    tag.assign(kEnUs);
    EXPECT_EQ(tag, kEnUs);
}

TEST(LanguageTag, TakesNullForTheEmptyText) {
    EXPECT_EQ(CLanguageTag(static_cast<const char*>(nullptr)), CLanguageTag());
    EXPECT_EQ(CLanguageTag(static_cast<const wchar_t*>(nullptr)), CLanguageTag());
}

TEST(LanguageTag, HasNamedTexts) {
    EXPECT_STREQ(kUntagged.tostring().c_str(), "*");
    EXPECT_STREQ(kEnUs.tostring().c_str(), "en-us");
    EXPECT_STREQ(kRuRu.tostring().c_str(), "ru-ru");
    EXPECT_STREQ(CLanguageTag().tostring().c_str(), "");
}

TEST(FreeTextString, TakesNullForTheEmptyText) {
    EXPECT_STREQ(CPKIFreeTextString(static_cast<const char*>(nullptr), kEnUs).get_value(), L"");
    CPKIFreeTextString text(static_cast<const wchar_t*>(nullptr), kEnUs);
    EXPECT_STREQ(text.get_value(), L"");
    text.set_value(nullptr);
    EXPECT_STREQ(text.get_value(), L"");
}

TEST(FreeTextString, ComparesLanguageAndValue) {
    CPKIFreeTextString text(L"a", kEnUs);
    EXPECT_EQ(text, CPKIFreeTextString("a", kEnUs));
    EXPECT_NE(text, CPKIFreeTextString(L"a", kRuRu));
    EXPECT_NE(text, CPKIFreeTextString(L"b", kEnUs));
    text.set_value(L"b");
    EXPECT_EQ(text, CPKIFreeTextString(L"b", kEnUs));
    text.assign(CPKIFreeTextString(kRuRu));
    EXPECT_EQ(text, CPKIFreeTextString(L"", kRuRu));
}

TEST(FreeText, DoesNotFindTextByItsLanguage) {
    // Intended: an element is found by its language only when it holds no text.
    const CPKIFreeText text(L"a", kEnUs);
    EXPECT_EQ(text.find(kEnUs), text.end());
    const CPKIFreeText empty(L"", kEnUs);
    EXPECT_EQ(empty.find(kEnUs), empty.begin());
}

TEST(FreeText, FindsTheFirstOfAnyLanguageForTheDefault) {
    CPKIFreeText text(L"a", kEnUs);
    EXPECT_EQ(text.find(kUntagged), text.begin());
    const CPKIFreeText none;
    EXPECT_EQ(none.find(kUntagged), none.end());
}

TEST(FreeText, AppendsEveryTextInTheDefaultLanguage) {
    CPKIFreeText text;
    text.insert(CPKIFreeTextString(L"a", kUntagged));
    text.insert(CPKIFreeTextString(L"b", kUntagged));
    ASSERT_EQ(text.size(), 2u);
    EXPECT_STREQ(text.back().get_value(), L"b");
}

TEST(FreeText, AppendsSecondTextOfALanguage) {
    CPKIFreeText text(L"a", kEnUs);
    text.insert(CPKIFreeTextString(L"b", kEnUs));
    EXPECT_EQ(text.size(), 2u);
}

TEST(FreeText, OverwritesEmptyElementOfTheLanguage) {
    CPKIFreeText text(L"", kEnUs);
    text.insert(CPKIFreeTextString(L"b", kRuRu));
    text.insert(CPKIFreeTextString(L"c", kEnUs));
    ASSERT_EQ(text.size(), 2u);
    EXPECT_STREQ(text.front().get_value(), L"c");
}

TEST(FreeText, RemovesOnlyEmptyElementsOfALanguage) {
    CPKIFreeText text(L"a", kEnUs);
    text.push_back(CPKIFreeTextString(kEnUs));
    text.push_back(CPKIFreeTextString(kEnUs));
    text.remove(text.front().get_language());
    ASSERT_EQ(text.size(), 1u);
    EXPECT_STREQ(text.front().get_value(), L"a");
}

TEST(FreeText, RemovesAllForTheDefaultLanguage) {
    CPKIFreeText text(L"a", kEnUs);
    text.insert(CPKIFreeTextString(L"b", kUntagged));
    text.remove(kUntagged);
    EXPECT_TRUE(text.empty());
}

TEST(FreeText, IsMadeOfOneText) {
    const CPKIFreeTextString text(L"granted", CLanguageTag("en"));
    const CPKIFreeText texts(text);
    ASSERT_EQ(texts.size(), 1u);
    EXPECT_EQ(texts.front(), text);
}

TEST(FreeText, ConvertsToItsFirstElement) {
    CPKIFreeText text(L"a", kEnUs);
    text.insert(CPKIFreeTextString(L"b", kUntagged));
    const CPKIFreeTextString& lent = text;
    EXPECT_EQ(&lent, &text.front());
    const CPKIFreeTextString copy = text;
    EXPECT_STREQ(copy.get_value(), L"a");
}

TEST(FreeText, ConvertsToEmptyTextWhenEmpty) {
    const CPKIFreeTextString& lent = CPKIFreeText();
    EXPECT_EQ(lent, CPKIFreeTextString(kUntagged));
}

TEST(StatusInfo, IsItsStatusAloneWithoutFailureAndText) {
    EXPECT_EQ(hex(CPKIStatusInfo(PKIStatus_granted).encode()), "30 03 02 01 00");
    EXPECT_EQ(hex(CPKIStatusInfo(PKIStatus_rejection).encode()), "30 03 02 01 02");
}

TEST(StatusInfo, WritesFailureBits) {
    CPKIStatusInfo status(PKIStatus_rejection);
    status.put_failureInfo(CPKIFailureInfo(4));
    EXPECT_EQ(hex(status.encode()), "30 07 02 01 02 03 02 05 20");
}

TEST(StatusInfo, WritesDefaultLanguageAsPlainText) {
    EXPECT_EQ(status_with(CPKIFreeText(L"\u0416", kUntagged)).encode(), status_der("d0 96"));
}

TEST(StatusInfo, WritesLanguageInFrontOfTheText) {
    // U+0E01, then "en-us" as U+0E65 0E6E 0E2D 0E75 0E73, then U+0E7E.
    EXPECT_EQ(status_with(CPKIFreeText(L"ok", kEnUs)).encode(),
              status_der("e0 b8 81 e0 b9 a5 e0 b9 ae e0 b8 ad e0 b9 b5 e0 b9 b3 e0 b9 be 6f 6b"));
}

TEST(StatusInfo, RefusesLanguageBeyondAscii) {
    // Intended: the sign of the octet is extended, and UTF-8 has no such character.
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, status_with(CPKIFreeText(L"ok", CLanguageTag("\xD0"))).encode());
}

TEST(StatusInfo, WritesTextsInOrder) {
    CPKIFreeText text(L"b", kUntagged);
    text.insert(CPKIFreeTextString(L"a", kUntagged));
    EXPECT_EQ(hex(status_with(text).encode()), "30 0b 02 01 00 30 06 0c 01 62 0c 01 61");
}

TEST(StatusInfo, ReadsPlainTextInTheDefaultLanguage) {
    CPKIStatusInfo status(PKIStatus_waiting);
    status.decode(blob("30 0c 02 01 02 30 03 0c 01 61 03 02 05 20"));
    EXPECT_EQ(status.get_pkiStatus(), PKIStatus_rejection);
    EXPECT_EQ(status.get_failureInfo().get_value(), 4u);
    ASSERT_EQ(status.get_statusString().size(), 1u);
    EXPECT_EQ(status.get_statusString().front(), CPKIFreeTextString(L"a", kUntagged));
}

TEST(StatusInfo, ReplacesEverything) {
    CPKIStatusInfo status = status_with(CPKIFreeText(L"old", kEnUs));
    status.put_failureInfo(CPKIFailureInfo(1));
    status.decode(blob("30 03 02 01 05"));
    EXPECT_EQ(status.get_pkiStatus(), PKIStatus_revocationNotification);
    EXPECT_EQ(status.get_failureInfo().get_value(), 0u);
    EXPECT_TRUE(status.get_statusString().empty());
}

TEST(StatusInfo, KeepsTheTagInTheValue) {
    // Intended: the tag stays, and encoding writes it a second time.
    CPKIStatusInfo status;
    status.decode(status_with(CPKIFreeText(L"ok", kEnUs)).encode());
    const CPKIFreeTextString& text = status.get_statusString().front();
    EXPECT_EQ(text.get_language(), kEnUs);
    EXPECT_STREQ(text.get_value(), L"\u0E01\u0E65\u0E6E\u0E2D\u0E75\u0E73\u0E7Eok");
    status.decode(status.encode());
    EXPECT_STREQ(status.get_statusString().front().get_value(),
                 L"\u0E01\u0E65\u0E6E\u0E2D\u0E75\u0E73\u0E7E\u0E01\u0E65\u0E6E\u0E2D\u0E75\u0E73\u0E7Eok");
}

TEST(StatusInfo, NormalizesReceivedTag) {
    CPKIStatusInfo status;
    // U+0E01, "EN" as U+0E45 0E4E, U+0E7E.
    status.decode(status_der("e0 b8 81 e0 b9 85 e0 b9 8e e0 b9 be"));
    EXPECT_EQ(status.get_statusString().front().get_language(), CLanguageTag("en"));
}

TEST(StatusInfo, WritesTheEmptyTagWithBothItsEnds) {
    // Not the default language: U+0E01, U+0E7E.
    EXPECT_EQ(status_with(CPKIFreeText(L"ok", CLanguageTag())).encode(),
              status_der("e0 b8 81 e0 b9 be 6f 6b"));
    CPKIStatusInfo status;
    status.decode(status_der("e0 b8 81 e0 b9 be 6f 6b"));
    EXPECT_EQ(status.get_statusString().front().get_language(), CLanguageTag());
}

TEST(StatusInfo, ReadsTagByItsLowOctets) {
    // Intended: of a tag character bits 8 to 15 are tested and bits 0 to 7 taken, so U+10E65 is an "e".
    CPKIStatusInfo status;
    status.decode(status_der("e0 b8 81 f0 90 b9 a5 e0 b9 be"));
    EXPECT_EQ(status.get_statusString().front().get_language(), CLanguageTag("e"));
}

TEST(StatusInfo, LooksForTagAtTheFrontOnly) {
    CPKIStatusInfo status;
    status.decode(status_der("61 e0 b8 81"));
    EXPECT_EQ(status.get_statusString().front().get_language(), kUntagged);
    EXPECT_STREQ(status.get_statusString().front().get_value(), L"a\u0E01");
    status.decode(status_der(""));
    EXPECT_EQ(status.get_statusString().front(), CPKIFreeTextString(kUntagged));
}

TEST(StatusInfo, RefusesTagWithoutItsEnd) {
    CPKIStatusInfo status(PKIStatus_waiting);
    EXPECT_CODE(E_INVALIDARG, status.decode(status_der("e0 b8 81")));
    EXPECT_CODE(E_INVALIDARG, status.decode(status_der("e0 b8 81 e0 b9 a5 e0 b9 ae")));
    EXPECT_CODE(E_INVALIDARG, status.decode(status_der("e0 b8 81 e0 b9 a5 61 e0 b9 be")));
}

TEST(StatusInfo, RefusesBadUTF8) {
    CPKIStatusInfo status;
    EXPECT_CODE(CRYPT_E_ASN1_UTF8, status.decode(status_der("80")));
    EXPECT_CODE(CRYPT_E_ASN1_UTF8, status.decode(status_der("d0 20")));
}

TEST(StatusInfo, SurvivesLeadOctetAtTheEnd) {
    CPKIStatusInfo status;
    EXPECT_NO_THROW(status.decode(status_der("fc")));
    EXPECT_EQ(status.get_statusString().size(), 1u);
}

TEST(StatusInfo, KeepsValueWhenTheDecoderFails) {
    CPKIStatusInfo status = status_with(CPKIFreeText(L"old", kEnUs));
    for (const char* bad : {"", "30 00", "30 05 02 01 00 30 00", "30 04 02 01 00 01", "02 01 00"}) {
        EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, status.decode(blob(bad)));
    }
    EXPECT_STREQ(status.get_statusString().front().get_value(), L"old");
}

TEST(StatusInfo, PassesAnyNumber) {
    CPKIStatusInfo status;
    status.decode(blob("30 03 02 01 64"));
    EXPECT_EQ(static_cast<unsigned int>(status.get_pkiStatus()), 100u);
    EXPECT_EQ(hex(status.encode()), "30 03 02 01 64");
}

TEST(StatusInfoRecord, CopiesDeeply) {
    ASN1BERDecodeBuffer target_buffer;
    asn1data::ASN1T_PKIStatusInfo target;
    {
        ASN1BERDecodeBuffer buffer;
        asn1data::ASN1T_PKIStatusInfo source;
        ASN1T_PKIStatusInfo_traits::set(buffer.getCtxtPtr(), source,
                                        status_with(CPKIFreeText(L"a", kUntagged)));
        ASN1T_PKIStatusInfo_traits::copy(target_buffer.getCtxtPtr(), source, target);
    }
    CPKIStatusInfo status(PKIStatus_waiting);
    ASN1T_PKIStatusInfo_traits::get(target, status);
    EXPECT_EQ(status.get_pkiStatus(), PKIStatus_granted);
    EXPECT_STREQ(status.get_statusString().front().get_value(), L"a");
}

}  // namespace
}  // namespace Quillmark::ASN1
