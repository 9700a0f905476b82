#include "runtime/stream.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "tests/runtime/codec_context.h"
#include "tests/support/codec_heap.h"

namespace Quillmark::test {
namespace {

// Where the streams of these tests write to.
struct Sink {
    std::string octets;
    uint32_t at_once = 1000;
    int failure = 0;
    int flushes = 0;
};

int write_to_sink(rtStream* stream, const uint8_t* data, uint32_t count) {
    Sink& sink = *static_cast<Sink*>(stream->extra);
    if (sink.failure != 0) {
        return sink.failure;
    }
    const uint32_t taken = std::min(count, sink.at_once);
    sink.octets.append(reinterpret_cast<const char*>(data), taken);
    return static_cast<int>(taken);
}

int flush_sink(rtStream* stream) {
    ++static_cast<Sink*>(stream->extra)->flushes;
    return RT_OK;
}

constexpr uint16_t kOutput = RT_STREAM_OUTPUT | RT_STREAM_BUFFERED_OUTPUT;

class RtStream : public testing::Test {
  protected:
    // A context with a fixed buffer of eight octets and, unless told otherwise, a stream for output.
    void SetUp() override { ASSERT_EQ(RT_OK, rtInitContextBuffer(context_, buffer_, sizeof buffer_)); }

    rtStream* attach(uint16_t mode = kOutput) {
        auto* stream = static_cast<rtStream*>(rtMemHeapAllocZ(&context_->msgHeap, sizeof(rtStream)));
        stream->write = write_to_sink;
        stream->flush = flush_sink;
        stream->mode = mode;
        stream->extra = &sink_;
        context_->stream = stream;
        return stream;
    }

    static const uint8_t* octets(const char* text) { return reinterpret_cast<const uint8_t*>(text); }
    std::string buffered() {
        return {reinterpret_cast<const char*>(context_->buffer.data), context_->buffer.byteIndex};
    }

    CodecHeap heap_;
    CodecContext context_;
    Sink sink_;
    uint8_t buffer_[8] = {};
};

TEST_F(RtStream, ChecksForRoomInAFixedBuffer) {
    EXPECT_EQ(RT_OK, rtCheckBuffer(context_, 8));
    EXPECT_EQ(RT_E_BUFOVFL, rtCheckBuffer(context_, 9));
    EXPECT_EQ(RT_E_BUFOVFL, rtCheckBuffer(context_, 0xFFFFFFFF));
}

TEST_F(RtStream, LetsADynamicBufferGrow) {
    ASSERT_EQ(RT_OK, rtInitContextBuffer(context_, nullptr, 8));
    ASSERT_EQ(RT_OK, rtWriteBytes(context_, octets("abcdefgh"), 8));
    EXPECT_EQ(RT_OK, rtCheckBuffer(context_, 1));
    EXPECT_EQ(8u + 16384u, context_->buffer.size);
    EXPECT_EQ("abcdefgh", buffered());
    EXPECT_EQ(RT_OK, rtCheckBuffer(context_, 20000));
    EXPECT_EQ(8u + 16384u + 20000u, context_->buffer.size);
}

TEST_F(RtStream, ReportsExhaustedMemory) {
    ASSERT_EQ(RT_OK, rtInitContextBuffer(context_, nullptr, 8));
    heap_.fail_after(0);
    EXPECT_EQ(RT_E_NOMEM, rtCheckBuffer(context_, 9));
    EXPECT_EQ(8u, context_->buffer.size);
    EXPECT_EQ(RT_E_NOMEM, rtCheckBuffer(context_, 0x7FFFFFFF));
}

TEST_F(RtStream, WritesIntoTheBufferWithoutAStream) {
    EXPECT_EQ(RT_OK, rtWriteBytes(context_, nullptr, 0));
    EXPECT_EQ(RT_OK, rtWriteBytes(context_, octets("abc"), 3));
    EXPECT_EQ(RT_OK, rtWriteBytes(context_, octets("defgh"), 5));
    EXPECT_EQ("abcdefgh", buffered());
    EXPECT_EQ(RT_E_BUFOVFL, rtWriteBytes(context_, octets("i"), 1));
    EXPECT_EQ("abcdefgh", buffered());
}

TEST_F(RtStream, CollectsInTheBufferAndSendsItWhenItIsFull) {
    attach();
    ASSERT_EQ(RT_OK, rtWriteBytes(context_, octets("abcde"), 5));
    EXPECT_EQ("", sink_.octets);
    ASSERT_EQ(RT_OK, rtWriteBytes(context_, octets("fghi"), 4));
    EXPECT_EQ("abcde", sink_.octets);
    EXPECT_EQ("fghi", buffered());
}

TEST_F(RtStream, SendsLongDataDirectly) {
    attach();
    ASSERT_EQ(RT_OK, rtStreamBufWrite(context_, octets("ab"), 2));
    ASSERT_EQ(RT_OK, rtStreamBufWrite(context_, octets("0123456789"), 10));
    EXPECT_EQ("ab0123456789", sink_.octets);
    EXPECT_EQ("", buffered());
}

TEST_F(RtStream, FlushesForRoom) {
    attach();
    ASSERT_EQ(RT_OK, rtStreamBufWrite(context_, octets("abcde"), 5));
    EXPECT_EQ(RT_OK, rtCheckBuffer(context_, 8));
    EXPECT_EQ("abcde", sink_.octets);
    EXPECT_EQ(RT_E_BUFOVFL, rtCheckBuffer(context_, 9));
}

TEST_F(RtStream, CountsWhatWasWritten) {
    rtStream* stream = attach();
    EXPECT_EQ(RT_OK, rtStreamWrite(context_, octets("abc"), 3));
    EXPECT_EQ(RT_OK, rtStreamWrite(context_, octets("de"), 2));
    EXPECT_EQ(5u, stream->byteCount);
    EXPECT_EQ("abcde", sink_.octets);
}

TEST_F(RtStream, GoesOnAfterAPartialWrite) {
    rtStream* stream = attach();
    sink_.at_once = 2;
    EXPECT_EQ(RT_OK, rtStreamWrite(context_, octets("abcde"), 5));
    EXPECT_EQ("abcde", sink_.octets);
    EXPECT_EQ(5u, stream->byteCount);
}

TEST_F(RtStream, DoesNotWaitForAStreamThatTakesNothing) {
    attach();
    sink_.at_once = 0;
    EXPECT_GT(0, rtStreamWrite(context_, octets("abcde"), 5));
}

TEST_F(RtStream, PassesOnTheFailureOfAWrite) {
    attach();
    sink_.failure = -77;
    EXPECT_EQ(-77, rtStreamWrite(context_, octets("abc"), 3));
    ASSERT_EQ(RT_OK, rtStreamBufWrite(context_, octets("abc"), 3));
    EXPECT_EQ(-77, rtStreamBufFlush(context_));
    EXPECT_EQ("abc", buffered());
    EXPECT_EQ(-77, rtCheckBuffer(context_, 8)) << "no room without a flush";
    EXPECT_EQ(-77, rtStreamBufWrite(context_, octets("defghi"), 6)) << "no room without a write";
    EXPECT_EQ("abc", buffered());
}

TEST_F(RtStream, NeedsAStreamOpenForOutput) {
    EXPECT_EQ(RT_E_NOTINIT, rtStreamWrite(context_, octets("a"), 1));
    EXPECT_EQ(RT_E_NOTINIT, rtStreamFlush(context_));
    EXPECT_EQ(RT_E_NOTINIT, rtStreamBufFlush(context_));
    EXPECT_EQ(RT_OK, rtStreamBufWrite(context_, octets(""), 0));
    rtStream* stream = attach(0x0001);
    EXPECT_EQ(RT_E_NOTINIT, rtStreamWrite(context_, octets("a"), 1));
    EXPECT_EQ(RT_E_INVPARAM, rtStreamFlush(context_));
    EXPECT_EQ(RT_E_INVPARAM, rtStreamBufFlush(context_));
    stream->mode = kOutput;
    stream->write = nullptr;
    EXPECT_EQ(RT_E_NOTINIT, rtStreamWrite(context_, octets("a"), 1));
    EXPECT_EQ(RT_E_NOTINIT, rtStreamBufFlush(context_));
    EXPECT_EQ("", sink_.octets);
}

TEST_F(RtStream, FlushesTheBufferThenTheStream) {
    attach();
    ASSERT_EQ(RT_OK, rtStreamBufWrite(context_, octets("abc"), 3));
    EXPECT_EQ(RT_OK, rtStreamBufFlush(context_));
    EXPECT_EQ("abc", sink_.octets);
    EXPECT_EQ("", buffered());
    EXPECT_EQ(1, sink_.flushes);
}

TEST_F(RtStream, DoesWithoutAFlushOperation) {
    rtStream* stream = attach();
    stream->flush = nullptr;
    EXPECT_EQ(RT_OK, rtStreamFlush(context_));
    EXPECT_EQ(RT_OK, rtStreamBufFlush(context_));
}

TEST_F(RtStream, IsReleasedOnDemandAndOnce) {
    const size_t before = heap_.live_blocks();
    attach();
    EXPECT_EQ(before + 1, heap_.live_blocks());
    rtStreamRelease(context_);
    EXPECT_EQ(nullptr, context_->stream);
    EXPECT_EQ(before, heap_.live_blocks());
    rtStreamRelease(context_);
    EXPECT_EQ(before, heap_.live_blocks());
}

}  // namespace
}  // namespace Quillmark::test
