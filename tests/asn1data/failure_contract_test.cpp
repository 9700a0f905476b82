// What a failure leaves behind: statuses that are recorded, exceptions for memory, records that are half
// filled.

#include <gtest/gtest.h>

#include <new>
#include <type_traits>

#include "asn1data/codecs.h"
#include "tests/asn1data/record_codec.h"
#include "tests/support/codec_heap.h"
#include "tests/support/der.h"

using namespace asn1data;

namespace Quillmark::test {
namespace {

/// A context that decodes `ber`, with the decoder about to read the first octet.
class Decoding {
  public:
    explicit Decoding(const Octets& ber) : ber_(ber), buffer_(ber_.data(), static_cast<int>(ber_.size())) {
        buffer_.init();
    }
    ASN1CTXT* context() { return buffer_.getCtxtPtr(); }

  private:
    Octets ber_;
    ASN1BERDecodeBuffer buffer_;
};

/// Decodes with the next allocation of the context failing.
template <typename Record>
int decode_without_memory(CodecHeap& heap, Decoding& in, Record& record,
                          int (*decode)(ASN1CTXT*, Record*, ASN1TagType, int)) {
    heap.fail_after(0);
    const int status = decode(in.context(), &record, ASN1EXPL, 0);
    EXPECT_TRUE(heap.failed());
    return status;
}

TEST(MemoryFailure, OfAnArrayIsReturnedAndNotRecorded) {
    // Intended: the array is the one place that returns the status without a record of it.
    CodecHeap heap;
    Decoding in(from_hex("30 03 0c 01 61"));
    ASN1T_PKIFreeText record;
    EXPECT_EQ(decode_without_memory(heap, in, record, asn1D_PKIFreeText), RT_E_NOMEM);
    EXPECT_EQ(in.context()->errInfo.status, RT_OK);
    EXPECT_EQ(record.n, 0u);
    EXPECT_EQ(record.elem, nullptr);
}

TEST(MemoryFailure, OfAListIsRecorded) {
    CodecHeap heap;
    Decoding in(from_hex("30 03 82 01 61"));
    ASN1T_GeneralNames record;
    EXPECT_EQ(decode_without_memory(heap, in, record, asn1D_GeneralNames), RT_E_NOMEM);
    EXPECT_EQ(in.context()->errInfo.status, RT_E_NOMEM);
    EXPECT_EQ(record.count, 0u);
}

TEST(MemoryFailure, OfAnAlternativeIsRecorded) {
    CodecHeap heap;
    Decoding in(from_hex("30 00"));
    ASN1T_Name record;
    EXPECT_EQ(decode_without_memory(heap, in, record, asn1D_Name), RT_E_NOMEM);
    EXPECT_EQ(in.context()->errInfo.status, RT_E_NOMEM);
    EXPECT_EQ(record.t, 0u);
}

TEST(MemoryFailure, OfACopyIsThrown) {
    CodecHeap heap;
    Decoded<ASN1T_GeneralNames, ASN1C_GeneralNames> decoded(from_hex("30 03 82 01 61"));
    ASSERT_EQ(decoded.status(), RT_OK);
    ASN1BEREncodeBuffer other;
    for (std::size_t n = 0; n < 3; ++n) {  // node, record, text
        ASN1T_GeneralNames copy;
        heap.fail_after(n);
        EXPECT_THROW(asn1Copy_GeneralNames(other.getCtxtPtr(), &decoded.record(), &copy), std::bad_alloc)
            << n;
    }
}

TEST(MemoryFailure, OfASortIsThrown) {
    CodecHeap heap;
    Decoded<ASN1T_AttributeRaw_valuesRaw, ASN1C_AttributeRaw_valuesRaw> decoded(from_hex("31 03 02 01 05"));
    ASSERT_EQ(decoded.status(), RT_OK);
    ASN1BEREncodeBuffer buffer;
    heap.fail_after(0);
    EXPECT_THROW(asn1E_AttributeRaw_valuesRaw(buffer.getCtxtPtr(), &decoded.record(), ASN1EXPL),
                 std::bad_alloc);
}

TEST(SetOf, WithoutOneOfItsElementsIsNotWritten) {
    ASN1BEREncodeBuffer buffer;
    ASN1T_SignedAttributes record;
    rtDListAppend(buffer.getCtxtPtr(), &record, nullptr);
    EXPECT_EQ(ASN1C_SignedAttributes(buffer, record).Encode(), RT_E_BADVALUE);
}

TEST(MemoryFailure, OfARecordForGetCopyIsThrown) {
    CodecHeap heap;
    Decoded<ASN1T_Accuracy, ASN1C_Accuracy> decoded(from_hex("30 03 02 01 05"));
    ASN1C_Accuracy control(decoded.record());
    heap.fail_after(0);
    EXPECT_THROW(control.getCopy(nullptr), std::bad_alloc);
}

TEST(MemoryFailure, OfANewCopyIsThrownAndLeavesNoRecord) {
    CodecHeap heap;
    Decoded<ASN1T_GeneralNames, ASN1C_GeneralNames> decoded(from_hex("30 03 82 01 61"));
    ASN1C_GeneralNames control(decoded.record());
    const size_t before = heap.live_blocks();
    heap.fail_after(0);
    EXPECT_THROW(control.newCopy(), std::bad_alloc);
    EXPECT_EQ(heap.live_blocks(), before);
}

TEST(GetCopy, WithoutATargetLiesOnTheContextAndRefersToIt) {
    const Octets der = from_hex("30 03 82 01 61");
    ASN1BERDecodeBuffer buffer(der.data(), static_cast<int>(der.size()));
    ASN1T_GeneralNames record;
    ASN1C_GeneralNames control(buffer, record);
    ASSERT_EQ(control.Decode(), RT_OK);
    ASN1T_GeneralNames* copy = control.getCopy();
    EXPECT_EQ(static_cast<ASN1CTXT*>(copy->mpContext), buffer.getCtxtPtr());
    EXPECT_EQ(to_hex(encode<ASN1C_GeneralNames>(*copy).octets), to_hex(der));
    copy->~ASN1T_GeneralNames();  // gives the reference back; the block goes with the context
}

// A required element with another tag, an optional one with another tag

TEST(FirstStatus, IsThatOfTheInnermostElement) {
    Decoded<ASN1T_MessageImprint, ASN1C_MessageImprint> decoded(from_hex("30 07 30 03 02 01 05 04 00"));
    EXPECT_EQ(decoded.status(), RT_E_IDNOTFOUND);
    EXPECT_EQ(decoded.first_status(), RT_E_IDNOTFOUND);
}

TEST(FirstStatus, IsClearedWhenAnOptionalElementIsAbsent) {
    // version, messageImprint and certReq, with policy and nonce tried in between
    Decoded<ASN1T_TimeStampReq, ASN1C_TimeStampReq> decoded(
        sequence({from_hex("02 01 01 30 07 30 03 06 01 2a 04 00 01 01 ff")}));
    EXPECT_EQ(decoded.status(), RT_OK);
    EXPECT_EQ(decoded.first_status(), RT_OK);
}

// Records

TEST(Free, LeavesPresenceAndSelector) {
    Decoded<ASN1T_PKIStatusInfo, ASN1C_PKIStatusInfo> status(from_hex("30 08 02 01 00 30 03 0c 01 61"));
    ASSERT_EQ(status.status(), RT_OK);
    asn1Free_PKIStatusInfo(status.context(), &status.record());
    EXPECT_TRUE(status.record().m.statusStringPresent);
    EXPECT_EQ(status.record().statusString.elem, nullptr);

    Decoded<ASN1T_GeneralName, ASN1C_GeneralName> name(from_hex("82 01 61"));
    ASSERT_EQ(name.status(), RT_OK);
    asn1Free_GeneralName(name.context(), &name.record());
    EXPECT_EQ(name.record().t, T_GeneralName_dNSName);
    EXPECT_EQ(name.record().u.dNSName, nullptr);
}

TEST(Free, OfARequestLeavesVersionAndNonceToTheContext) {  // Intended
    Decoded<ASN1T_TimeStampReq, ASN1C_TimeStampReq> decoded(
        sequence({from_hex("02 01 01 30 07 30 03 06 01 2a 04 00 02 01 05")}));
    ASSERT_EQ(decoded.status(), RT_OK);
    asn1Free_TimeStampReq(decoded.context(), &decoded.record());
    EXPECT_STREQ(decoded.record().version, "0x01");
    EXPECT_STREQ(decoded.record().nonce, "0x05");
}

TEST(Free, OfTstInfoTakesVersionAndNonce) {
    Decoded<ASN1T_TSTInfo, ASN1C_TSTInfo> decoded(
        sequence({from_hex("02 01 01 06 02 2a 03 30 07 30 03 06 01 2a 04 00 02 01 09"),
                  text_element(0x18, "20240102030405Z"), from_hex("02 01 05")}));
    ASSERT_EQ(decoded.status(), RT_OK);
    asn1Free_TSTInfo(decoded.context(), &decoded.record());
    EXPECT_EQ(decoded.record().version, nullptr);
    EXPECT_EQ(decoded.record().nonce, nullptr);
}

template <typename Record>
constexpr bool kIsNotCopied = !std::is_copy_constructible_v<Record> && std::is_copy_assignable_v<Record>;

// Two records that hold the same pointers would both free them.
static_assert(kIsNotCopied<ASN1T_TSTInfo> && kIsNotCopied<ASN1T_TimeStampReq> &&
              kIsNotCopied<ASN1T_ContentInfo> && kIsNotCopied<ASN1T_GeneralName> &&
              kIsNotCopied<ASN1T_GeneralNames> && kIsNotCopied<ASN1T_PKIFreeText>);

/// A fresh record says that each of its parts is there, and has none of them.
template <typename Record>
void copy_and_free(Record& record, void (*copy)(ASN1CTXT*, Record*, Record*),
                   void (*release)(ASN1CTXT*, Record*)) {
    ASN1BEREncodeBuffer buffer;
    Record target;
    copy(buffer.getCtxtPtr(), &record, &target);
    release(buffer.getCtxtPtr(), &target);
    release(buffer.getCtxtPtr(), &record);
}

TEST(RecordWithoutItsParts, IsCopiedAndFreed) {
    ASN1T_TSTInfo info;
    info.m.accuracyPresent = 1;
    info.m.noncePresent = 1;
    info.m.tsaPresent = 1;
    info.m.extensionsPresent = 1;
    copy_and_free(info, asn1Copy_TSTInfo, asn1Free_TSTInfo);

    ASN1T_TimeStampResp response;
    response.m.timeStampTokenPresent = 1;
    response.status.m.statusStringPresent = 1;
    copy_and_free(response, asn1Copy_TimeStampResp, asn1Free_TimeStampResp);

    ASN1T_SignedData data;
    data.m.certificatesPresent = 1;
    data.m.crlsPresent = 1;
    data.encapContentInfo.m.eContentPresent = 1;
    copy_and_free(data, asn1Copy_SignedData, asn1Free_SignedData);

    ASN1T_ORAddress address;
    address.m.built_in_domain_defined_attributesPresent = 1;
    address.m.extension_attributesPresent = 1;
    address.built_in_standard_attributes.m.country_namePresent = 1;
    address.built_in_standard_attributes.m.personal_namePresent = 1;
    address.built_in_standard_attributes.m.network_addressPresent = 1;
    copy_and_free(address, asn1Copy_ORAddress, asn1Free_ORAddress);
}

TEST(RecordWithoutItsParts, OfAKnownTypeIsCopiedAndFreed) {
    static constexpr unsigned kSignedData[] = {1, 2, 840, 113549, 1, 7, 2};
    ASN1T_ContentInfo content;
    content.contentType = ASN1TObjId(7, kSignedData);
    copy_and_free(content, asn1Copy_ContentInfo, asn1Free_ContentInfo);

    static constexpr unsigned kRsa[] = {1, 2, 840, 113549, 1, 1, 1};
    ASN1T_AlgorithmIdentifier algorithm;
    algorithm.algorithm = ASN1TObjId(7, kRsa);
    algorithm.m.parametersPresent = 1;
    copy_and_free(algorithm, asn1Copy_AlgorithmIdentifier, asn1Free_AlgorithmIdentifier);
    EXPECT_EQ(encode<ASN1C_AlgorithmIdentifier>(algorithm).result, RT_E_BADVALUE);
}

TEST(Copy, ClampsABitStringToItsRoom) {
    ASN1T_PKIFailureInfo source;
    std::fill(std::begin(source.data), std::end(source.data), std::uint8_t{0xFF});
    source.numbits = 4000;
    ASN1T_PKIFailureInfo target;
    ASN1BEREncodeBuffer buffer;
    asn1Copy_PKIFailureInfo(buffer.getCtxtPtr(), &source, &target);
    EXPECT_EQ(target.numbits, 32u);
}

}  // namespace
}  // namespace Quillmark::test
