#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "runtime/der_encode.h"
#include "tests/runtime/codec_context.h"
#include "tests/support/codec_heap.h"

namespace Quillmark::test {
namespace {

TEST(EncodeBuffer, FixedBufferOf5OctetsHolds4) {
    CodecContext ctxt;
    uint8_t octets[5] = {};
    ASSERT_EQ(xe_setp(ctxt, octets, sizeof octets), RT_OK);
    const uint8_t message[5] = {1, 2, 3, 4, 5};
    EXPECT_EQ(xe_memcpy(ctxt, message, 5), RT_E_BUFOVFL);
    EXPECT_EQ(xe_memcpy(ctxt, message, 4), 4);
    EXPECT_EQ(xe_getp(ctxt), octets);
    EXPECT_EQ(to_hex(octets, 5), "01 02 03 04 00");
    EXPECT_EQ(xe_memcpy(ctxt, message, 1), RT_E_BUFOVFL);
    EXPECT_EQ(ctxt.recorded(), RT_OK);  // encoders never record
}

TEST(EncodeBuffer, RefusesACallersBufferWithoutRoom) {
    CodecContext ctxt;
    uint8_t octet = 0;
    EXPECT_EQ(xe_setp(ctxt, &octet, 0), RT_E_INVPARAM);
    EXPECT_EQ(xe_setp(ctxt, &octet, -1), RT_E_INVPARAM);
    EXPECT_EQ(xe_setp(ctxt, nullptr, -1), RT_E_INVPARAM);
    ASSERT_EQ(xe_setp(ctxt, &octet, 1), RT_OK);
    EXPECT_EQ(xe_memcpy(ctxt, &octet, 1), RT_E_BUFOVFL);
}

TEST(EncodeBuffer, NeedsALiveContext) {
    ASN1CTXT ctxt{};
    EXPECT_EQ(xe_setp(&ctxt, nullptr, 0), RT_E_NOTINIT);
}

TEST(EncodeBuffer, DefaultSizeHolds16383OctetsAndGrowsBy16384) {
    CodecContext ctxt;
    ctxt.encode();
    EXPECT_EQ(ctxt->buffer.size, 16384u);
    EXPECT_EQ(ctxt->buffer.byteIndex, 16383u);
    const std::vector<uint8_t> octets(16383, 0x5A);
    EXPECT_EQ(xe_memcpy(ctxt, octets.data(), octets.size()), 16383);
    EXPECT_EQ(ctxt->buffer.size, 16384u);
    const uint8_t one_more = 1;
    EXPECT_EQ(xe_memcpy(ctxt, &one_more, 1), 1);
    EXPECT_EQ(ctxt->buffer.size, 32768u);
    EXPECT_EQ(ctxt->buffer.size - 1 - ctxt->buffer.byteIndex, 16384u);
    EXPECT_EQ(xe_getp(ctxt)[0], 1);
    EXPECT_EQ(std::memcmp(xe_getp(ctxt) + 1, octets.data(), octets.size()), 0);
}

TEST(EncodeBuffer, GrowsByWhatIsNeededWhenThatIsMore) {
    CodecContext ctxt;
    ctxt.encode();
    const std::vector<uint8_t> octets(100'000, 0x5A);
    EXPECT_EQ(xe_memcpy(ctxt, octets.data(), octets.size()), 100'000);
    EXPECT_EQ(ctxt->buffer.size, 116'384u);
    EXPECT_EQ(std::memcmp(xe_getp(ctxt), octets.data(), octets.size()), 0);
}

TEST(EncodeBuffer, WritesInFrontInTheGivenOrder) {
    CodecContext ctxt;
    ctxt.encode();
    const uint8_t tail[] = {3, 4};
    const uint8_t head[] = {1, 2};
    xe_memcpy(ctxt, tail, 2);
    xe_memcpy(ctxt, head, 2);
    EXPECT_EQ(ctxt.written(), "01 02 03 04");
}

TEST(EncodeBuffer, RefusesNull) {
    CodecContext ctxt;
    ctxt.encode();
    EXPECT_EQ(xe_memcpy(ctxt, nullptr, 1), RT_E_BADVALUE);
}

TEST(EncodeBuffer, ExpandsOnDemand) {
    CodecContext ctxt;
    ctxt.encode();
    EXPECT_EQ(xe_expandBuffer(ctxt, 1), RT_OK);
    EXPECT_EQ(ctxt->buffer.size, 32768u);
    EXPECT_EQ(ctxt->buffer.byteIndex, 32767u);
    uint8_t fixed[4];
    xe_setp(ctxt, fixed, 4);
    EXPECT_EQ(xe_expandBuffer(ctxt, 1), RT_E_BUFOVFL);
}

TEST(EncodeBuffer, DoesNotGrowPast31Bits) {
    CodecContext ctxt;
    ctxt.encode();
    EXPECT_EQ(xe_expandBuffer(ctxt, 0x7FFFFFFF), RT_E_NOMEM);
    EXPECT_EQ(xe_expandBuffer(ctxt, static_cast<size_t>(-1)), RT_E_NOMEM);
    EXPECT_EQ(ctxt->buffer.size, 16384u);
}

TEST(EncodeBuffer, ReportsExhaustedMemoryAndKeepsTheMessage) {
    CodecHeap heap;
    CodecContext ctxt;
    ctxt.encode();
    const uint8_t octet = 0x5A;
    xe_memcpy(ctxt, &octet, 1);
    const std::vector<uint8_t> octets(20'000);
    heap.fail_after(0);
    EXPECT_EQ(xe_memcpy(ctxt, octets.data(), octets.size()), RT_E_NOMEM);
    EXPECT_EQ(ctxt.written(), "5a");
    heap.fail_after(0);
    EXPECT_EQ(xe_setp(ctxt, nullptr, 0), RT_E_NOMEM);
}

TEST(EncodeBuffer, IsGivenBack) {
    CodecHeap heap;
    CodecContext ctxt;
    const std::size_t before = heap.live_blocks();
    ctxt.encode();
    xe_free(ctxt);
    EXPECT_EQ(heap.live_blocks(), before);
    EXPECT_EQ(ctxt->buffer.data, nullptr);
    EXPECT_EQ(ctxt->buffer.dynamic, 0);
    xe_free(ctxt);
}

TEST(EncodeBuffer, CallersBufferIsNotFreed) {
    CodecContext ctxt;
    uint8_t fixed[4];
    xe_setp(ctxt, fixed, 4);
    xe_free(ctxt);
    EXPECT_EQ(ctxt->buffer.data, fixed);
}

}  // namespace
}  // namespace Quillmark::test
