#include "runtime/memory_buffer.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/runtime/codec_context.h"
#include "tests/support/codec_heap.h"

namespace Quillmark::test {
namespace {

class RtMemBuf : public testing::Test {
  protected:
    int append(const std::string& text) {
        return rtMemBufAppend(&buf_, reinterpret_cast<const uint8_t*>(text.data()),
                              static_cast<uint32_t>(text.size()));
    }
    std::string contents() const {
        uint32_t length;
        const uint8_t* data = rtMemBufGetData(&buf_, &length);
        return {reinterpret_cast<const char*>(data), length};
    }

    CodecHeap heap_;
    CodecContext context_;
    ASN1MemBuf buf_;
};

TEST_F(RtMemBuf, StartsEmpty) {
    rtMemBufInit(context_, &buf_, 1024);
    EXPECT_EQ(0u, buf_.usedCount);
    EXPECT_EQ(0u, buf_.bufferSize);
    EXPECT_EQ(0, buf_.isDynamic);
    uint32_t length = 7;
    EXPECT_EQ(nullptr, rtMemBufGetData(&buf_, &length));
    EXPECT_EQ(0u, length);
}

TEST_F(RtMemBuf, GrowsInWholeSegments) {
    rtMemBufInit(context_, &buf_, 1024);
    ASSERT_EQ(RT_OK, append(std::string(1025, 'x')));
    EXPECT_EQ(2048u, buf_.bufferSize);
    EXPECT_EQ(1025u, buf_.usedCount);
    ASSERT_EQ(RT_OK, append(std::string(1023, 'y')));
    EXPECT_EQ(2048u, buf_.bufferSize);
    ASSERT_EQ(RT_OK, append("z"));
    EXPECT_EQ(3072u, buf_.bufferSize);
    EXPECT_EQ(std::string(1025, 'x') + std::string(1023, 'y') + "z", contents());
}

TEST_F(RtMemBuf, TakesOneSegmentForAnExactFit) {
    rtMemBufInit(context_, &buf_, 16);
    ASSERT_EQ(RT_OK, append(std::string(16, 'x')));
    EXPECT_EQ(16u, buf_.bufferSize);
}

TEST_F(RtMemBuf, DoesNothingForACountOfZero) {
    rtMemBufInit(context_, &buf_, 16);
    EXPECT_EQ(RT_OK, append(""));
    EXPECT_EQ(RT_OK, rtMemBufPreAllocate(&buf_, 0));
    EXPECT_EQ(RT_OK, rtMemBufSet(&buf_, 'x', 0));
    EXPECT_EQ(0u, buf_.bufferSize);
}

TEST_F(RtMemBuf, ReservesForNullData) {
    rtMemBufInit(context_, &buf_, 16);
    ASSERT_EQ(RT_OK, rtMemBufAppend(&buf_, nullptr, 17));
    EXPECT_EQ(32u, buf_.bufferSize);
    EXPECT_EQ(0u, buf_.usedCount);
}

TEST_F(RtMemBuf, PreAllocatesWithoutUsing) {
    rtMemBufInit(context_, &buf_, 16);
    ASSERT_EQ(RT_OK, append("abc"));
    ASSERT_EQ(RT_OK, rtMemBufPreAllocate(&buf_, 14));
    EXPECT_EQ(32u, buf_.bufferSize);
    EXPECT_EQ("abc", contents());
}

TEST_F(RtMemBuf, AppendsOneOctetManyTimes) {
    rtMemBufInit(context_, &buf_, 16);
    ASSERT_EQ(RT_OK, append("ab"));
    ASSERT_EQ(RT_OK, rtMemBufSet(&buf_, 'x', 3));
    EXPECT_EQ("abxxx", contents());
}

TEST_F(RtMemBuf, HandsOutWhatLiesBehindTheStartIndex) {
    rtMemBufInit(context_, &buf_, 16);
    ASSERT_EQ(RT_OK, append("abcdef"));
    buf_.startIndex = 2;
    EXPECT_EQ("cdef", contents());
    EXPECT_EQ('c', *rtMemBufGetData(&buf_, nullptr));
}

TEST_F(RtMemBuf, ResetForgetsTheContentsAndKeepsTheRoom) {
    rtMemBufInit(context_, &buf_, 16);
    ASSERT_EQ(RT_OK, append("abcdef"));
    buf_.startIndex = 2;
    buf_.bitOffset = 3;
    rtMemBufReset(&buf_);
    EXPECT_EQ(0u, buf_.startIndex);
    EXPECT_EQ(0u, buf_.usedCount);
    EXPECT_EQ(0, buf_.bitOffset);
    EXPECT_EQ(16u, buf_.bufferSize);
    ASSERT_EQ(RT_OK, append("x"));
    EXPECT_EQ("x", contents());
}

TEST_F(RtMemBuf, ForgetsStaticContentsOnGrowth) {
    uint8_t storage[4];
    rtMemBufInit(context_, &buf_, 16);
    buf_.buffer = storage;
    buf_.bufferSize = sizeof storage;
    ASSERT_EQ(RT_OK, append("abcd"));
    EXPECT_EQ(storage, rtMemBufGetData(&buf_, nullptr));
    EXPECT_EQ(0, buf_.isDynamic);
    ASSERT_EQ(RT_OK, append("e"));
    EXPECT_NE(storage, rtMemBufGetData(&buf_, nullptr));
    EXPECT_EQ(1, buf_.isDynamic);
    EXPECT_EQ(5u, buf_.usedCount);
    EXPECT_EQ('e', contents()[4]);  // Intended: the four octets before are not those of the old place
    EXPECT_NE("abcd", contents().substr(0, 4));
}

TEST_F(RtMemBuf, FreesItsBlock) {
    const size_t before = heap_.live_blocks();
    rtMemBufInit(context_, &buf_, 16);
    ASSERT_EQ(RT_OK, append("abc"));
    EXPECT_EQ(before + 1, heap_.live_blocks());
    rtMemBufFree(&buf_);
    EXPECT_EQ(before, heap_.live_blocks());
    EXPECT_EQ(3u, buf_.usedCount);
    EXPECT_EQ(16u, buf_.bufferSize);
}

TEST_F(RtMemBuf, LeavesACallersStorageAlone) {
    uint8_t storage[4];
    rtMemBufInit(context_, &buf_, 16);
    buf_.buffer = storage;
    rtMemBufFree(&buf_);
    EXPECT_EQ(storage, buf_.buffer);
}

TEST_F(RtMemBuf, StaysAsItWasWithoutMemory) {
    rtMemBufInit(context_, &buf_, 16);
    ASSERT_EQ(RT_OK, append("abc"));
    heap_.fail_after(0);
    EXPECT_EQ(RT_E_NOMEM, append(std::string(20, 'x')));
    heap_.fail_after(0);
    EXPECT_EQ(RT_E_NOMEM, rtMemBufSet(&buf_, 'x', 20));
    EXPECT_EQ("abc", contents());
    EXPECT_EQ(16u, buf_.bufferSize);
}

TEST_F(RtMemBuf, RefusesSizesThatDoNotFit32Bits) {
    rtMemBufInit(context_, &buf_, 1024);
    ASSERT_EQ(RT_OK, append("abc"));
    EXPECT_EQ(RT_E_NOMEM, rtMemBufPreAllocate(&buf_, 0xFFFFFFFF));
    EXPECT_EQ(RT_E_NOMEM, rtMemBufPreAllocate(&buf_, 0xFFFFFFFC));
    EXPECT_EQ("abc", contents());
}

}  // namespace
}  // namespace Quillmark::test
