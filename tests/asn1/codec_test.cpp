#include "asn1/codec.h"

#include <gtest/gtest.h>

#include "runtime/message_buffer.h"
#include "tests/support/blob.h"
#include "tests/support/der.h"
#include "tests/support/result_code.h"

namespace Quillmark::ASN1 {
namespace {

using test::blob;
using test::blob_of;
using test::hex;
using test::text_element;

TEST(CopyToAutoPtr, CopiesAndClears) {
    auto_ptr<CBlob> target;
    const CBlob source = blob("01 02");
    copy_to_auto_ptr(target, &source);
    EXPECT_EQ(*target, source);
    EXPECT_NE(target.get(), &source);
    copy_to_auto_ptr<CBlob>(target, nullptr);
    EXPECT_EQ(target, nullptr);
}

TEST(CopyToAutoPtr, TakesWhatItOwns) {
    auto_ptr<CBlob> target = std::make_unique<CBlob>(blob("01 02"));
    copy_to_auto_ptr(target, static_cast<const CBlob*>(target.get()));
    EXPECT_EQ(hex(*target), "01 02");
}

TEST(CtxtHandle, ReleasesTwice) {
    ctxt_handle handle;
    ASSERT_TRUE(handle.init());
    EXPECT_NE(rtMemHeapAlloc(&handle.get()->typeHeap, 100), nullptr);
    handle.release();
    handle.release();
}

TEST(OctetString, IsWrapped) {
    EXPECT_EQ(hex(toOctetString(blob("01 02 03"))), "04 03 01 02 03");
    EXPECT_EQ(hex(toOctetString(CBlob())), "04 00");
}

TEST(OctetString, IsUnwrapped) {
    EXPECT_EQ(hex(fromOctetString(blob("04 03 01 02 03"))), "01 02 03");
    EXPECT_EQ(hex(fromOctetString(blob("04 00"))), "");
    EXPECT_EQ(hex(fromOctetString(blob("24 06 04 01 01 04 01 02"))), "01 02");
}

TEST(OctetString, RefusesWhatIsNone) {
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, fromOctetString(CBlob()));
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, fromOctetString(blob("02 01 05")));
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, fromOctetString(blob("04")));
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, fromOctetString(blob("04 05 01")));
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, fromOctetString(blob("04 82 01 00 01")));
}

TEST(OctetString, RefusesIndefiniteForm) {
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, fromOctetString(blob("24 80 04 01 01 00 00")));
}

TEST(OctetStringTraits, GoBothWays) {
    ASN1BERDecodeBuffer buffer;
    ASN1TDynOctStr record{};
    ASN1TDynOctStr copy{};
    CBlob value = blob("ff");
    ASN1TDynOctStr_traits::set(buffer.getCtxtPtr(), record, blob("01 02"));
    ASN1TDynOctStr_traits::copy(buffer.getCtxtPtr(), record, copy);
    ASN1TDynOctStr_traits::get(copy, value);
    EXPECT_EQ(hex(value), "01 02");
    EXPECT_NE(copy.data, record.data);
}

TEST(OpenTypeTraits, GoBothWays) {
    ASN1BERDecodeBuffer buffer;
    ASN1TOpenType record;
    ASN1TOpenType copy;
    CBlob value;
    ASN1TOpenType_traits::set(buffer.getCtxtPtr(), record, blob("05 00"));
    ASN1TOpenType_traits::copy(buffer.getCtxtPtr(), record, copy);
    ASN1TOpenType_traits::get(copy, value);
    EXPECT_EQ(hex(value), "05 00");
}

TEST(OpenTypeTraits, CarryNoDecodedValueOver) {
    ASN1BERDecodeBuffer buffer;
    Asn1TObject record;
    Asn1TObject copy;
    CBlob value;
    Asn1TObject_traits::set(buffer.getCtxtPtr(), record, blob("05 00"));
    record.decoded = &record;
    copy.decoded = &record;
    Asn1TObject_traits::copy(buffer.getCtxtPtr(), record, copy);
    Asn1TObject_traits::get(copy, value);
    EXPECT_EQ(hex(value), "05 00");
    EXPECT_EQ(copy.decoded, nullptr);
}

TEST(BitStringTraits, CountEightBitsForEachOctet) {
    ASN1BERDecodeBuffer buffer;
    ASN1TDynBitStr record{};
    ASN1TDynBitStr copy{};
    CBlob value;
    ASN1TDynBitStr_traits::set(buffer.getCtxtPtr(), record, blob("f0 01"));
    EXPECT_EQ(record.numbits, 16u);
    ASN1TDynBitStr_traits::copy(buffer.getCtxtPtr(), record, copy);
    ASN1TDynBitStr_traits::get(copy, value);
    EXPECT_EQ(hex(value), "f0 01");
}

TEST(BitStringTraits, RoundBitsUp) {
    const std::uint8_t octets[] = {0xF0, 0x80};
    const ASN1TDynBitStr record{9, octets};
    CBlob value;
    ASN1TDynBitStr_traits::get(record, value);
    EXPECT_EQ(hex(value), "f0 80");
}

TEST(IA5StringTraits, ShareTheTextOfTheSource) {
    ASN1BERDecodeBuffer buffer;
    const char* record = nullptr;
    const char* copy = nullptr;
    CStringProxy value("");
    ASN1IA5String_traits::set(buffer.getCtxtPtr(), record, "text");
    ASN1IA5String_traits::copy(buffer.getCtxtPtr(), record, copy);
    EXPECT_EQ(copy, record);  // Intended: the copy lives as long as the source's context
    ASN1IA5String_traits::get(copy, value);
    EXPECT_STREQ(value.c_str(), "text");
}

TEST(ListTraits, ReplaceWhatTheContainerHeld) {
    using List = ASN1TSeqOfList_traits<Asn1TObject, Asn1TObject_traits, CBlob, CBlobList>;
    ASN1BERDecodeBuffer buffer;
    ASN1TSeqOfList record{};
    ASN1TSeqOfList copy{};
    List::set(buffer.getCtxtPtr(), record, CBlobList{blob("05 00"), blob("02 01 05")});
    List::copy(buffer.getCtxtPtr(), record, copy);
    CBlobList values{blob("ff"), blob("ff"), blob("ff")};
    List::get(copy, values);
    EXPECT_EQ(values, (CBlobList{blob("05 00"), blob("02 01 05")}));
    EXPECT_EQ(copy.count, 2u);
}

TEST(ListTraits, MakeAnEmptyListOfAnEmptyContainer) {
    using List = ASN1TSeqOfList_traits<Asn1TObject, Asn1TObject_traits, CBlob, CBlobList>;
    ASN1BERDecodeBuffer buffer;
    ASN1TSeqOfList record{3, nullptr, nullptr};
    List::set(buffer.getCtxtPtr(), record, CBlobList());
    EXPECT_EQ(record.count, 0u);
    EXPECT_EQ(record.head, nullptr);
    CBlobList values{blob("ff")};
    List::get(record, values);
    EXPECT_TRUE(values.empty());
}

TEST(GeneralizedTimeCodec, CutsTheFraction) {
    // Intended: half a second and more does not round up.
    const CDateTime date(2024, 2, 29, 23, 59, 59, 999, 999);
    EXPECT_EQ((asn1Encode<ASN1GeneralizedTime_traits>(date)), blob_of(text_element(0x18, "20240229235959Z")));
}

TEST(GeneralizedTimeCodec, KeepsTheFractionWhenAsked) {
    ASN1BERDecodeBuffer buffer;
    const CDateTime date(2024, 2, 29, 12, 0, 1, 500, 0);
    EXPECT_STREQ(DateToASN1GeneralizedTime(buffer.getCtxtPtr(), date, false), "20240229120001.5Z");
    EXPECT_STREQ(DateToASN1GeneralizedTime(buffer.getCtxtPtr(), date, true), "20240229120001Z");
}

TEST(GeneralizedTimeCodec, Reads) {
    CDateTime date(0L, 0);
    asn1Decode<ASN1GeneralizedTime_traits>(blob_of(text_element(0x18, "20240229120001Z")), date);
    EXPECT_EQ(date, CDateTime(2024, 2, 29, 12, 0, 1, 0, 0));
}

TEST(GeneralizedTimeCodec, KeepsValueWhenDecodingFails) {
    CDateTime date(1000L, 0);
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, asn1Decode<ASN1GeneralizedTime_traits>(blob("17 01 30"), date));
    EXPECT_EQ(date, CDateTime(1000L, 0));
}

TEST(GeneralizedTimeTraits, CopyThroughADate) {
    ASN1BERDecodeBuffer buffer;
    const char* copy = nullptr;
    ASN1GeneralizedTime_traits::copy(buffer.getCtxtPtr(), "20240229120001.25Z", copy);
    EXPECT_STREQ(copy, "20240229120001Z");
}

}  // namespace
}  // namespace Quillmark::ASN1
