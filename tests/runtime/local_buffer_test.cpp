#include "runtime/detail/local_buffer.h"

#include <gtest/gtest.h>

#include <vector>

#include "tests/support/codec_heap.h"
#include "tests/support/hex.h"

namespace Quillmark::detail {
namespace {

using test::CodecHeap;
using test::from_hex;

constexpr std::size_t kRoom = 4095;  // the last octet of a buffer is never written

std::vector<std::uint8_t> written(LocalEncodeBuffer& buffer) {
    const ASN1BUFFER& room = buffer.getCtxtPtr()->buffer;
    return {buffer.getMsgPtr(), room.data + room.size - 1};
}

TEST(LocalEncodeBuffer, TakesNoMemoryForAShortMessage) {
    CodecHeap heap;
    LocalEncodeBuffer buffer;
    const std::size_t before = heap.allocations();
    const std::vector<std::uint8_t> octets(kRoom, 0x5A);
    EXPECT_EQ(xe_memcpy(buffer.getCtxtPtr(), octets.data(), octets.size()), static_cast<int>(kRoom));
    EXPECT_EQ(written(buffer), octets);
    EXPECT_EQ(heap.allocations(), before);
}

TEST(LocalEncodeBuffer, GrowsOntoTheHeap) {
    CodecHeap heap;
    {
        LocalEncodeBuffer buffer;
        const std::size_t before = heap.live_blocks();
        std::vector<std::uint8_t> octets(kRoom, 0x5A);
        xe_memcpy(buffer.getCtxtPtr(), octets.data(), octets.size());
        const std::uint8_t first = 0xA5;
        EXPECT_EQ(xe_memcpy(buffer.getCtxtPtr(), &first, 1), 1);
        octets.insert(octets.begin(), first);
        EXPECT_EQ(written(buffer), octets);
        EXPECT_EQ(heap.live_blocks(), before + 1);

        octets.assign(50'000, 0x11);
        buffer.init();
        EXPECT_EQ(xe_memcpy(buffer.getCtxtPtr(), octets.data(), octets.size()), 50'000);
        EXPECT_EQ(written(buffer), octets);
        EXPECT_EQ(heap.live_blocks(), before + 1);  // the block before is given back
    }
    EXPECT_EQ(heap.live_blocks(), 0u);
}

TEST(LocalEncodeBuffer, KeepsItsMessageWhenGrowingFails) {
    CodecHeap heap;
    LocalEncodeBuffer buffer;
    const std::vector<std::uint8_t> octets(kRoom, 0x5A);
    xe_memcpy(buffer.getCtxtPtr(), octets.data(), octets.size());
    heap.fail_after(0);
    EXPECT_EQ(xe_memcpy(buffer.getCtxtPtr(), octets.data(), 1), RT_E_NOMEM);
    EXPECT_EQ(written(buffer), octets);
}

TEST(LocalEncodeBuffer, CanBeFreedAtOnce) {
    LocalEncodeBuffer buffer;
    xe_free(buffer.getCtxtPtr());
    const std::uint8_t octet = 0x5A;
    EXPECT_EQ(xe_memcpy(buffer.getCtxtPtr(), &octet, 1), 1);
}

TEST(LocalBuffer, IsNotMadeWithoutMemory) {
    CodecHeap heap;
    heap.fail_after(0);
    EXPECT_THROW(LocalEncodeBuffer(), ASN1MessageBuffer::RTLError);
    heap.fail_after(0);
    EXPECT_THROW(LocalDecodeBuffer(nullptr, 0), ASN1MessageBuffer::RTLError);
}

TEST(LocalBuffer, KeepsItsContextWhenAnotherReferenceGoes) {
    LocalEncodeBuffer buffer;
    { const ASN1CtxtPtr reference = buffer.getContext(); }
    EXPECT_EQ(buffer.getCtxtPtr()->magic, RT_MAGIC);
    EXPECT_TRUE(buffer.isA(ASN1MessageBufferIF::BEREncode));
}

TEST(LocalDecodeBuffer, StartsOnItsMessage) {
    const std::vector<std::uint8_t> message = from_hex("02 01 05");
    LocalDecodeBuffer buffer(message.data(), static_cast<int>(message.size()));
    buffer.init();
    std::int32_t value = 0;
    EXPECT_EQ(xd_integer(buffer.getCtxtPtr(), &value, ASN1EXPL, 0), RT_OK);
    EXPECT_EQ(value, 5);
    EXPECT_TRUE(buffer.isA(ASN1MessageBufferIF::BERDecode));
}

TEST(LocalDecodeBuffer, LeavesABadMessageToTheDecoder) {
    const std::vector<std::uint8_t> message = from_hex("02 05 05");
    LocalDecodeBuffer buffer(message.data(), static_cast<int>(message.size()));
    buffer.init();
    std::int32_t value = 0;
    EXPECT_NE(xd_integer(buffer.getCtxtPtr(), &value, ASN1EXPL, 0), RT_OK);

    LocalDecodeBuffer empty(nullptr, 0);
    empty.init();
    EXPECT_NE(xd_integer(empty.getCtxtPtr(), &value, ASN1EXPL, 0), RT_OK);
}

}  // namespace
}  // namespace Quillmark::detail
