// Which code tells which failure of the object layer, and what null texts stand for.

#include <gtest/gtest.h>

#include "asn1/algorithm_identifier.h"
#include "asn1/attribute.h"
#include "asn1/big_integer.h"
#include "asn1/codec.h"
#include "asn1/distribution_point_name.h"
#include "asn1/extension.h"
#include "asn1/extension_value.h"
#include "asn1/info_type_and_value.h"
#include "asn1/name.h"
#include "asn1/pki_status.h"
#include "asn1/signing_certificate.h"
#include "asn1data/records.h"
#include "runtime/message_buffer.h"
#include "tests/support/blob.h"
#include "tests/support/codec_heap.h"
#include "tests/support/result_code.h"

namespace Quillmark::ASN1 {
namespace {

using test::blob;
using test::CodecHeap;
using test::hex;

/// Expects `code` of `statement` with the next allocation of a context refused.
#define EXPECT_CODE_WITHOUT_MEMORY(code, statement) \
    do {                                            \
        heap.fail_after(0);                         \
        EXPECT_CODE(code, statement);               \
        EXPECT_TRUE(heap.failed());                 \
    } while (false)

TEST(MemoryOfAContext, IsReportedByTheTraits) {
    CodecHeap heap;
    ASN1BERDecodeBuffer buffer;
    ASN1CTXT* ctxt = buffer.getCtxtPtr();
    const CBlob octets = blob("01 02");
    const char* text = nullptr;
    ASN1TDynOctStr string;
    ASN1TDynBitStr bits;
    ASN1TOpenType open;
    Asn1TObject object;
    EXPECT_CODE_WITHOUT_MEMORY(CRYPT_E_ASN1_MEMORY, ASN1TDynOctStr_traits::set(ctxt, string, octets));
    EXPECT_CODE_WITHOUT_MEMORY(CRYPT_E_ASN1_MEMORY, ASN1TDynBitStr_traits::set(ctxt, bits, octets));
    EXPECT_CODE_WITHOUT_MEMORY(CRYPT_E_ASN1_MEMORY, ASN1TOpenType_traits::set(ctxt, open, octets));
    EXPECT_CODE_WITHOUT_MEMORY(CRYPT_E_ASN1_MEMORY, Asn1TObject_traits::set(ctxt, object, octets));
    EXPECT_CODE_WITHOUT_MEMORY(CRYPT_E_ASN1_MEMORY, ASN1IA5String_traits::set(ctxt, text, "a"));
    EXPECT_CODE_WITHOUT_MEMORY(CRYPT_E_ASN1_MEMORY, ASN1UTF8String_traits::set(ctxt, text, L"a"));
    EXPECT_CODE_WITHOUT_MEMORY(CRYPT_E_ASN1_MEMORY,
                               ASN1GeneralizedTime_traits::set(ctxt, text, CDateTime(0L, 0)));
    EXPECT_CODE_WITHOUT_MEMORY(CRYPT_E_ASN1_MEMORY, BigIntegerToASN1String(ctxt, CBigInteger(1UL)));
    EXPECT_CODE_WITHOUT_MEMORY(CRYPT_E_ASN1_MEMORY, ASN1T_AlgorithmIdentifier_set(ctxt, "1.2.3", nullptr));
}

TEST(MemoryOfAContext, IsReportedByFreeText) {
    CodecHeap heap;
    ASN1BERDecodeBuffer buffer;
    asn1data::ASN1T_PKIFreeText record;
    const CPKIFreeText text(L"a", CLanguageTagEnUs());
    EXPECT_CODE_WITHOUT_MEMORY(CRYPT_E_ASN1_MEMORY, CPKIFreeText_Encode(buffer.getCtxtPtr(), record, text));
}

TEST(MemoryOfAContext, IsReportedByTheListOfInfoTypeAndValue) {
    CodecHeap heap;
    ASN1BERDecodeBuffer buffer;
    ASN1TSeqOfList records{};
    const CInfoTypeAndValueList infos{CInfoTypeAndValue("1.2.3")};
    EXPECT_CODE_WITHOUT_MEMORY(CRYPT_E_ASN1_MEMORY, ASN1TavList_Encode(infos, records, buffer));
}

TEST(MemoryOfAContext, IsReportedByTraitsOfStructures) {
    CodecHeap heap;
    ASN1BERDecodeBuffer buffer;
    ASN1CTXT* ctxt = buffer.getCtxtPtr();
    const CBlob octets = blob("01 02");
    const CDateTime date(0L, 0);
    CGeneralName name;
    name.put_dNSName(L"a");
    asn1data::ASN1T_GeneralName name_record;
    asn1data::ASN1T_DistributionPointName point_name;
    asn1data::ASN1T_OtherHash hash;
    asn1data::ASN1T_ESSCertID cert;
    asn1data::ASN1T_PrivateKeyUsagePeriod period;
    const COtherHashAlgAndValue with_algorithm(octets, CAlgorithmIdentifier("1.2.3"));
    EXPECT_CODE_WITHOUT_MEMORY(CRYPT_E_ASN1_MEMORY, ASN1T_GeneralName_traits::set(ctxt, name_record, name));
    EXPECT_CODE_WITHOUT_MEMORY(CRYPT_E_ASN1_MEMORY, ASN1T_DistributionPointName_traits::set(
                                                        ctxt, point_name, CDistributionPointName({name})));
    EXPECT_CODE_WITHOUT_MEMORY(CRYPT_E_ASN1_MEMORY,
                               ASN1T_OtherHash_traits::set(ctxt, hash, COtherHash(octets)));
    EXPECT_CODE_WITHOUT_MEMORY(CRYPT_E_ASN1_MEMORY,
                               ASN1T_OtherHash_traits::set(ctxt, hash, COtherHash(with_algorithm)));
    EXPECT_CODE_WITHOUT_MEMORY(CRYPT_E_ASN1_MEMORY,
                               ASN1T_ESSCertID_traits::set(ctxt, cert, CESSCertID(octets)));
    const CExtPrivateKeyUsagePeriod usage_period(&date, nullptr);
    EXPECT_CODE_WITHOUT_MEMORY(CRYPT_E_ASN1_MEMORY,
                               ASN1T_PrivateKeyUsagePeriod_traits::set(ctxt, period, usage_period));
}

TEST(MemoryOfAContext, HasACodeOfItsOwnForASmallNumber) {
    CodecHeap heap;
    ASN1BERDecodeBuffer buffer;
    EXPECT_CODE_WITHOUT_MEMORY(E_OUTOFMEMORY, DWORDToASN1BigInteger(buffer.getCtxtPtr(), 1));
}

TEST(MemoryOfAContext, IsReportedByCopies) {
    CodecHeap heap;
    ASN1BERDecodeBuffer buffer;
    ASN1CTXT* ctxt = buffer.getCtxtPtr();
    const CBlob octets = blob("01 02");
    ASN1TDynOctStr string{};
    ASN1TDynOctStr string_copy{};
    ASN1TDynOctStr_traits::set(ctxt, string, octets);
    EXPECT_CODE_WITHOUT_MEMORY(CRYPT_E_ASN1_MEMORY, ASN1TDynOctStr_traits::copy(ctxt, string, string_copy));
    ASN1TOpenType open;
    ASN1TOpenType open_copy;
    ASN1TOpenType_traits::set(ctxt, open, octets);
    EXPECT_CODE_WITHOUT_MEMORY(CRYPT_E_ASN1_MEMORY, ASN1TOpenType_traits::copy(ctxt, open, open_copy));
    Asn1TObject object;
    Asn1TObject object_copy;
    Asn1TObject_traits::set(ctxt, object, octets);
    EXPECT_CODE_WITHOUT_MEMORY(CRYPT_E_ASN1_MEMORY, Asn1TObject_traits::copy(ctxt, object, object_copy));
}

TEST(MemoryOfAContext, IsReportedByConversions) {
    CodecHeap heap;
    EXPECT_CODE_WITHOUT_MEMORY(CRYPT_E_ASN1_MEMORY, decodeCharString(blob("0c 01 61")));
    EXPECT_CODE_WITHOUT_MEMORY(CRYPT_E_ASN1_MEMORY, encodeCharString(L"a", StringTypeUTF8));
    EXPECT_CODE_WITHOUT_MEMORY(CRYPT_E_ASN1_MEMORY, toOctetString(blob("01")));
    EXPECT_CODE_WITHOUT_MEMORY(CRYPT_E_ASN1_MEMORY, fromOctetString(blob("04 01 01")));
}

TEST(BigIntegerDword, AboveThirtyOneBitsIsNegative) {
    // Intended: always eight digits, so the first of them is the sign.
    ASN1BERDecodeBuffer buffer;
    CBigInteger value;
    StringToBigInteger(DWORDToASN1BigInteger(buffer.getCtxtPtr(), 0xFFFFFFFF), value);
    EXPECT_EQ(hex(value.encode()), "02 01 ff");
    StringToBigInteger(DWORDToASN1BigInteger(buffer.getCtxtPtr(), 0x80000000), value);
    EXPECT_EQ(hex(value.encode()), "02 04 80 00 00 00");
    StringToBigInteger(DWORDToASN1BigInteger(buffer.getCtxtPtr(), 0x7FFFFFFF), value);
    EXPECT_EQ(hex(value.encode()), "02 04 7f ff ff ff");
}

TEST(BigIntegerDword, RefusesASignOctetInFrontOfFour) {
    EXPECT_CODE(E_INVALIDARG, ASN1BigIntegerToDWORD("0x0080000000"));
}

TEST(CodecOfAValue, IsNotAskedWhetherOctetsFollow) {
    CExtension extension;
    extension.decode(blob("30 06 06 02 2a 03 04 00 ff ff"));
    EXPECT_STREQ(extension.get_extnID(), "1.2.3");
    CBigInteger number;
    number.decode(blob("02 01 05 00"));
    EXPECT_EQ(hex(number), "05");
}

TEST(CodecOfAValue, RefusesAnEmptyBlob) {
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, CExtension().decode(CBlob()));
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, CExtensions().decode(CBlob()));
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, CAlgorithmIdentifier().decode(CBlob()));
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, CPKIStatusInfo().decode(CBlob()));
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, CPKIFailureInfo().decode(CBlob()));
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, CAttribute().decode(CBlob()));
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, CAttributes().decode(CBlob()));
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, CName().decode(CBlob()));
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, CBigInteger().decode(CBlob()));
}

// A null text is the empty one.

TEST(NullText, FindsNothing) {
    CExtensions extensions;
    extensions.insert(CExtension(CExtValue("1.2.3"), false));
    EXPECT_EQ(extensions.find(nullptr), extensions.end());
    extensions.erase(static_cast<const char*>(nullptr));
    EXPECT_EQ(extensions.size(), 1u);
    CAttributes attributes;
    attributes.push_back(CAttribute("1.2.3"));
    EXPECT_EQ(attributes.find(nullptr), attributes.end());
    attributes.erase(static_cast<const char*>(nullptr));
    EXPECT_EQ(attributes.size(), 1u);
    EXPECT_EQ(CATAVRegister::find(static_cast<const char*>(nullptr)), CATAVRegister::registered().end());
    EXPECT_EQ(CATAVRegister::find(static_cast<const wchar_t*>(nullptr)), CATAVRegister::registered().end());
}

TEST(NullText, FindsWhatHasAnEmptyIdentifier) {
    CAttributes attributes;
    attributes.push_back(CAttribute());
    EXPECT_EQ(attributes.find(nullptr), attributes.begin());
}

TEST(NullText, IsWrittenAsTheEmptyText) {
    EXPECT_EQ(hex(encodeCharString(nullptr, StringTypeUTF8)), "0c 00");
    EXPECT_EQ(hex(encodeCharString(nullptr, StringTypeBMP)), "1e 00");
    EXPECT_EQ(hex(CATAVRegister::valueFromStr("2.5.4.3", nullptr, StringTypeDefault)), "0c 00");
    ASN1BERDecodeBuffer buffer;
    const char* text = nullptr;
    ASN1IA5String_traits::set(buffer.getCtxtPtr(), text, nullptr);
    EXPECT_STREQ(text, "");
    ASN1UTF8String_traits::set(buffer.getCtxtPtr(), text, nullptr);
    EXPECT_STREQ(text, "");
}

TEST(NullText, IsNoName) {
    EXPECT_CODE(E_INVALIDARG, CName(static_cast<const wchar_t*>(nullptr)));
    EXPECT_CODE(E_INVALIDARG, CRelativeDistinguishedName(static_cast<const wchar_t*>(nullptr)));
    EXPECT_CODE(E_INVALIDARG,
                CAttributeTypeAndValue(static_cast<const wchar_t*>(nullptr), StringTypeDefault));
    EXPECT_EQ(CATAVRegister::typeToStr(nullptr), L"");
    EXPECT_EQ(CATAVRegister::typeFromStr(nullptr), "");
    EXPECT_THROW(CATAVRegister::valueFromStr(nullptr, nullptr, StringTypeDefault), std::out_of_range);
}

TEST(NullText, IsNoIdentifier) {
    EXPECT_STREQ(CAlgorithmIdentifier(nullptr).get_algorithm(), "");
    EXPECT_STREQ(CAttribute(nullptr).get_oid(), "");
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, CAlgorithmIdentifier(nullptr).encode());
    EXPECT_CODE(E_INVALIDARG, CAttribute(nullptr).encode());
    EXPECT_CODE(E_INVALIDARG, CAttrContentType(static_cast<const char*>(nullptr)));
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, ASN1BigIntegerToDWORD(nullptr));
}

}  // namespace
}  // namespace Quillmark::ASN1
