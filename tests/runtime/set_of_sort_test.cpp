#include <gtest/gtest.h>

#include <algorithm>
#include <initializer_list>
#include <random>
#include <string>

#include "runtime/der_encode.h"
#include "runtime/detail/element_encoder.h"
#include "tests/runtime/codec_context.h"
#include "tests/support/codec_heap.h"

namespace Quillmark::test {
namespace {

using Octets = std::vector<uint8_t>;

// Writes elements from the last to the first, as encoders do, and notes where they lie.
void write_elements(CodecContext& ctxt, rtSList& list, const std::vector<Octets>& elements) {
    ctxt.encode();
    rtSListInitEx(ctxt, &list);
    for (auto element = elements.rbegin(); element != elements.rend(); ++element) {
        const int length = xe_memcpy(ctxt, element->data(), element->size());
        void* block = rtMemHeapAlloc(&ctxt->typeHeap, sizeof(ASN1BufLocDescr));
        auto* location = static_cast<ASN1BufLocDescr*>(block);
        xe_getBufLocDescr(ctxt, static_cast<uint32_t>(length), location);
        rtSListAppend(&list, location);
    }
}

std::string sorted(std::initializer_list<const char*> elements) {
    std::vector<Octets> octets;
    for (const char* element : elements) {
        octets.push_back(from_hex(element));
    }
    CodecContext ctxt;
    rtSList list;
    write_elements(ctxt, list, octets);
    const int total = xe_derCanonicalSort(ctxt, &list);
    const std::string written = ctxt.written();
    EXPECT_EQ(total, static_cast<int>(from_hex(written).size()));
    EXPECT_EQ(list.head, nullptr);
    return written;
}

TEST(XeGetBufLocDescr, CountsBackFromTheLastOctet) {
    CodecContext ctxt;
    uint8_t buffer[10];
    xe_setp(ctxt, buffer, sizeof buffer);
    const uint8_t octets[] = {1, 2, 3};
    xe_memcpy(ctxt, octets, 3);
    ASN1BufLocDescr location;
    xe_getBufLocDescr(ctxt, 3, &location);
    EXPECT_EQ(location.length, 3u);
    EXPECT_EQ(location.offset, 3u);
    EXPECT_EQ(buffer + sizeof buffer - 1 - location.offset, xe_getp(ctxt));
}

// X.690 11.6.
TEST(SetOf, IsPutIntoAscendingOrder) {
    EXPECT_EQ(sorted({"02 01 05", "02 01 03"}), "02 01 03 02 01 05");
    EXPECT_EQ(sorted({"30 00", "04 01 ff", "04 01 7f", "02 01 80"}), "02 01 80 04 01 7f 04 01 ff 30 00");
}

TEST(SetOf, StaysWhenItIsInOrder) {
    EXPECT_EQ(sorted({"02 01 03", "02 01 05"}), "02 01 03 02 01 05");
    EXPECT_EQ(sorted({"02 01 03"}), "02 01 03");
    EXPECT_EQ(sorted({"02 01 03", "02 01 03"}), "02 01 03 02 01 03");
}

TEST(SetOf, PutsAPrefixFirst) {
    EXPECT_EQ(sorted({"04 02 01 02", "04 02 01"}), "04 02 01 04 02 01 02");
}

TEST(SetOf, ComparesOctetsUnsigned) {
    EXPECT_EQ(sorted({"80 00", "7f 00"}), "7f 00 80 00");
}

TEST(SetOf, IsNothingWithoutElements) {
    CodecContext ctxt;
    rtSList list;
    rtSListInitEx(ctxt.encode(), &list);
    EXPECT_EQ(xe_derCanonicalSort(ctxt, &list), 0);
}

TEST(SetOf, LeavesWhatStandsBehindIt) {
    CodecContext ctxt;
    ctxt.encode();
    const uint8_t trailer = 0xEE;
    xe_memcpy(ctxt, &trailer, 1);
    rtSList list;
    rtSListInitEx(ctxt, &list);
    for (const char* hex : {"02 01 03", "02 01 05"}) {
        const Octets octets = from_hex(hex);
        void* block = rtMemHeapAlloc(&ctxt->typeHeap, sizeof(ASN1BufLocDescr));
        xe_memcpy(ctxt, octets.data(), octets.size());
        xe_getBufLocDescr(ctxt, 3, static_cast<ASN1BufLocDescr*>(block));
        rtSListAppend(&list, block);
    }
    EXPECT_EQ(xe_derCanonicalSort(ctxt, &list), 6);
    EXPECT_EQ(ctxt.written(), "02 01 03 02 01 05 ee");
}

TEST(SetOf, SortsManyElementsInTime) {
    std::mt19937 random(1);
    std::vector<Octets> elements;
    for (int i = 0; i < 50'000; ++i) {
        const auto value = static_cast<uint16_t>(random());
        elements.push_back({4, 2, static_cast<uint8_t>(value >> 8), static_cast<uint8_t>(value)});
    }
    CodecContext ctxt;
    rtSList list;
    write_elements(ctxt, list, elements);
    ASSERT_EQ(xe_derCanonicalSort(ctxt, &list), 200'000);
    std::sort(elements.begin(), elements.end());
    const uint8_t* written = xe_getp(ctxt);
    for (const Octets& element : elements) {
        ASSERT_EQ(Octets(written, written + 4), element);
        written += 4;
    }
}

TEST(SetOf, OfTheGeneratedEncodersIsSortedBeyondOneBlock) {
    std::vector<Octets> elements;
    for (uint8_t value = 0; value < 19; ++value) {
        elements.push_back({2, 1, static_cast<uint8_t>(value * 7 % 19)});
    }
    CodecHeap heap;
    CodecContext ctxt;
    ctxt.encode();
    const std::size_t before = heap.live_blocks();
    {
        detail::SetOfEncoder out(ctxt);
        for (const Octets& element : elements) {
            out.add(xe_memcpy(ctxt, element.data(), element.size()));
        }
        EXPECT_EQ(out.finish(detail::kSet, ASN1EXPL), 2 + 19 * 3);
    }
    EXPECT_EQ(heap.live_blocks(), before);
    std::sort(elements.begin(), elements.end());
    const uint8_t* written = xe_getp(ctxt) + 2;
    for (const Octets& element : elements) {
        EXPECT_EQ(Octets(written, written + 3), element);
        written += 3;
    }
}

TEST(SetOf, ReportsExhaustedMemoryAndFreesItsRecords) {
    CodecHeap heap;
    CodecContext ctxt;
    ctxt.encode();
    const std::size_t before = heap.live_blocks();
    rtSList list;
    write_elements(ctxt, list, {{2, 1, 5}, {2, 1, 3}});
    heap.fail_after(0);
    EXPECT_EQ(xe_derCanonicalSort(ctxt, &list), RT_E_NOMEM);
    EXPECT_LE(heap.live_blocks(), before + 1);  // the second message's buffer
}

TEST(SetOf, LeavesNoRecordsBehind) {
    CodecHeap heap;
    CodecContext ctxt;
    rtSList list;
    write_elements(ctxt, list, {{2, 1, 5}, {2, 1, 3}});
    const std::size_t with_records = heap.live_blocks();
    EXPECT_EQ(xe_derCanonicalSort(ctxt, &list), 6);
    EXPECT_EQ(heap.live_blocks(), with_records - 4);
}

}  // namespace
}  // namespace Quillmark::test
