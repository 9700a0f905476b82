#include "runtime/copy.h"

#include <gtest/gtest.h>

#include <cstring>

#include "tests/runtime/codec_context.h"
#include "tests/support/codec_heap.h"

namespace Quillmark::test {
namespace {

constexpr uint8_t kOctets[] = {1, 2, 3, 4};

TEST(Copy, FixedOctetString) {
    CodecContext ctxt;
    uint8_t copy[4] = {};
    uint32_t count = 9;
    EXPECT_EQ(rtCopyOctStr(ctxt, 3, kOctets, &count, copy), 1);
    EXPECT_EQ(count, 3u);
    EXPECT_EQ(to_hex(copy, 4), "01 02 03 00");
    EXPECT_EQ(rtCopyOctStr(ctxt, 0, kOctets, &count, copy), 0);
    EXPECT_EQ(rtCopyOctStr(ctxt, 3, nullptr, &count, copy), 0);
    EXPECT_EQ(rtCopyOctStr(ctxt, 3, kOctets, nullptr, copy), 0);
    EXPECT_EQ(rtCopyOctStr(ctxt, 3, kOctets, &count, nullptr), 0);
}

TEST(Copy, FixedBitString) {
    CodecContext ctxt;
    uint8_t copy[4] = {};
    uint32_t count = 0;
    EXPECT_EQ(rtCopyBitStr(ctxt, 9, kOctets, &count, copy), 1);
    EXPECT_EQ(count, 9u);
    EXPECT_EQ(to_hex(copy, 4), "01 02 00 00");
    EXPECT_EQ(rtCopyBitStr(ctxt, 0, kOctets, &count, copy), 0);
    EXPECT_EQ(rtCopyBitStr(ctxt, 9, nullptr, &count, copy), 0);
    EXPECT_EQ(rtCopyBitStr(ctxt, 9, kOctets, nullptr, copy), 0);
}

TEST(Copy, DynamicOctetString) {
    CodecContext ctxt;
    const ASN1TDynOctStr source = {.numocts = 4, .data = kOctets};
    ASN1TDynOctStr copy{};
    EXPECT_EQ(rtCopyDynOctStr(ctxt, &source, &copy), 1);
    EXPECT_EQ(to_hex(copy.data, copy.numocts), "01 02 03 04");
    EXPECT_NE(copy.data, source.data);
    const ASN1TDynOctStr empty = {.numocts = 0, .data = kOctets};
    EXPECT_EQ(rtCopyDynOctStr(ctxt, &empty, &copy), 1);
    EXPECT_EQ(copy.numocts, 0u);
    EXPECT_EQ(copy.data, nullptr);
    EXPECT_EQ(rtCopyDynOctStr(ctxt, nullptr, &copy), 0);
    EXPECT_EQ(rtCopyDynOctStr(ctxt, &source, nullptr), 0);
    EXPECT_EQ(rtCopyDynOctStr(nullptr, &source, &copy), 0);
}

TEST(Copy, DynamicBitString) {
    CodecContext ctxt;
    const ASN1TDynBitStr source = {.numbits = 17, .data = kOctets};
    ASN1TDynBitStr copy{};
    EXPECT_EQ(rtCopyDynBitStr(ctxt, &source, &copy), 1);
    EXPECT_EQ(copy.numbits, 17u);
    EXPECT_EQ(to_hex(copy.data, 3), "01 02 03");
    const ASN1TDynBitStr empty = {.numbits = 0, .data = nullptr};
    EXPECT_EQ(rtCopyDynBitStr(ctxt, &empty, &copy), 1);
    EXPECT_EQ(copy.data, nullptr);
    EXPECT_EQ(rtCopyDynBitStr(ctxt, nullptr, &copy), 0);
}

TEST(Copy, CharacterString) {
    CodecContext ctxt;
    const char* copy = nullptr;
    const char* const source = "text";
    EXPECT_EQ(rtCopyCharStr(ctxt, source, &copy), 1);
    EXPECT_STREQ(copy, "text");
    EXPECT_NE(copy, source);
    EXPECT_EQ(rtCopyCharStr(ctxt, "", &copy), 1);
    EXPECT_STREQ(copy, "");
    EXPECT_EQ(rtCopyCharStr(ctxt, nullptr, &copy), 0);
    EXPECT_EQ(rtCopyCharStr(ctxt, source, nullptr), 0);
}

TEST(Copy, WideStrings) {
    CodecContext ctxt;
    uint16_t narrow_data[] = {0x41, 0x20AC};
    uint32_t wide_data[] = {0x41, 0x1F600};
    const ASN1_16BITCHARSTRING narrow = {.nchars = 2, .data = narrow_data};
    const ASN1_32BITCHARSTRING wide = {.nchars = 2, .data = wide_data};
    ASN1_16BITCHARSTRING narrow_copy{};
    ASN1_32BITCHARSTRING wide_copy{};
    EXPECT_EQ(rtCopy16BitCharStr(ctxt, &narrow, &narrow_copy), 1);
    EXPECT_EQ(rtCopy32BitCharStr(ctxt, &wide, &wide_copy), 1);
    EXPECT_EQ(narrow_copy.nchars, 2u);
    EXPECT_EQ(narrow_copy.data[1], 0x20AC);
    EXPECT_EQ(wide_copy.nchars, 2u);
    EXPECT_EQ(wide_copy.data[1], 0x1F600u);
    EXPECT_EQ(rtCopy16BitCharStr(ctxt, nullptr, &narrow_copy), 0);
    EXPECT_EQ(rtCopy32BitCharStr(ctxt, &wide, nullptr), 0);
}

TEST(Copy, ObjectIdentifierUpTo128Arcs) {
    CodecContext ctxt;
    ASN1OBJID source{};
    source.numids = 3;
    source.subid[2] = 840;
    ASN1OBJID copy{};
    EXPECT_EQ(rtCopyOID(ctxt, &source, &copy), 1);
    EXPECT_EQ(copy.numids, 3u);
    EXPECT_EQ(copy.subid[2], 840u);
    source.numids = 5000;
    EXPECT_EQ(rtCopyOID(ctxt, &source, &copy), 1);
    EXPECT_EQ(copy.numids, 128u);
    EXPECT_EQ(rtCopyOID(ctxt, nullptr, &copy), 0);
    EXPECT_EQ(rtCopyOID(ctxt, &source, nullptr), 0);
}

TEST(Copy, OpenType) {
    CodecContext ctxt;
    const ASN1OpenType source = {.numocts = 4, .data = kOctets};
    ASN1OpenType copy{};
    EXPECT_EQ(rtCopyOpenType(ctxt, &source, &copy), 1);
    EXPECT_EQ(to_hex(copy.data, copy.numocts), "01 02 03 04");
    EXPECT_EQ(rtCopyOpenType(ctxt, nullptr, &copy), 0);
}

TEST(Copy, ExtensionListSkipsNullRecords) {
    CodecContext ctxt;
    ASN1OpenType first = {.numocts = 4, .data = kOctets};
    ASN1OpenType second = {.numocts = 1, .data = kOctets};
    _Asn1RTDList source;
    rtDListInit(&source);
    rtDListAppend(ctxt, &source, &first);
    rtDListAppend(ctxt, &source, nullptr);
    rtDListAppend(ctxt, &source, &second);
    _Asn1RTDList copy{};
    EXPECT_EQ(rtCopyOpenTypeExt(ctxt, &source, &copy), 1);
    ASSERT_EQ(copy.count, 2u);
    const auto* last = static_cast<const ASN1OpenType*>(copy.tail->data);
    EXPECT_NE(last, &second);
    EXPECT_NE(last->data, kOctets);
    EXPECT_EQ(to_hex(last->data, last->numocts), "01");
    EXPECT_EQ(rtCopyOpenTypeExt(ctxt, nullptr, &copy), 0);
}

TEST(Copy, GoesToTheHeapOfItsOwnContext) {
    CodecHeap heap;
    ASN1TDynOctStr copy{};
    CodecContext target;
    {
        CodecContext source_context;
        auto* octets = static_cast<uint8_t*>(rtMemHeapAlloc(&source_context->typeHeap, 4));
        std::memcpy(octets, kOctets, 4);
        const ASN1TDynOctStr source = {.numocts = 4, .data = octets};
        ASSERT_EQ(rtCopyDynOctStr(target, &source, &copy), 1);
    }
    EXPECT_EQ(to_hex(copy.data, copy.numocts), "01 02 03 04");
}

TEST(Copy, FailsWithAnEmptyResultWhenMemoryIsExhausted) {
    CodecHeap heap;
    CodecContext ctxt;
    const ASN1TDynOctStr octets = {.numocts = 4, .data = kOctets};
    const ASN1TDynBitStr bits = {.numbits = 9, .data = kOctets};
    const ASN1OpenType open = {.numocts = 4, .data = kOctets};
    ASN1TDynOctStr octets_copy = octets;
    ASN1TDynBitStr bits_copy = bits;
    ASN1OpenType open_copy = open;
    const char* text = "old";
    heap.fail_after(0);
    EXPECT_EQ(rtCopyDynOctStr(ctxt, &octets, &octets_copy), 0);
    EXPECT_EQ(octets_copy.data, nullptr);
    EXPECT_EQ(octets_copy.numocts, 0u);
    heap.fail_after(0);
    EXPECT_EQ(rtCopyDynBitStr(ctxt, &bits, &bits_copy), 0);
    EXPECT_EQ(bits_copy.data, nullptr);
    heap.fail_after(0);
    EXPECT_EQ(rtCopyOpenType(ctxt, &open, &open_copy), 0);
    EXPECT_EQ(open_copy.data, nullptr);
    heap.fail_after(0);
    EXPECT_EQ(rtCopyCharStr(ctxt, "text", &text), 0);
    EXPECT_EQ(text, nullptr);
}

TEST(Copy, ExtensionListFailsAtEachAllocation) {
    CodecHeap heap;
    CodecContext ctxt;
    ASN1OpenType element = {.numocts = 4, .data = kOctets};
    _Asn1RTDList source;
    rtDListInit(&source);
    rtDListAppend(ctxt, &source, &element);
    rtDListAppend(ctxt, &source, &element);
    for (std::size_t n = 0; n < 4; ++n) {
        _Asn1RTDList copy{};
        heap.fail_after(n);
        EXPECT_EQ(rtCopyOpenTypeExt(ctxt, &source, &copy), 0) << n;
        rtMemFreeOpenSeqExt(ctxt, &copy);  // what is there can be freed
    }
}

}  // namespace
}  // namespace Quillmark::test
