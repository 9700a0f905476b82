#include "runtime/message_buffer.h"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>

#include "runtime/ber_decode.h"
#include "runtime/der_encode.h"
#include "runtime/memory_buffer.h"
#include "tests/support/codec_heap.h"
#include "tests/support/hex.h"

namespace Quillmark::test {
namespace {

// What a generated control class does, for one INTEGER.
class Number : public ASN1CType {
  public:
    Number(ASN1MessageBufferIF& buffer, int32_t& value) : ASN1CType(buffer), value_(value) {}

    int EncodeTo(ASN1MessageBufferIF& buffer) override {
        setMsgBuf(buffer);
        buffer.init();
        return xe_integer(buffer.getCtxtPtr(), &value_, ASN1EXPL);
    }
    int DecodeFrom(ASN1MessageBufferIF& buffer) override {
        setMsgBuf(buffer);
        buffer.init();
        return xd_integer(buffer.getCtxtPtr(), &value_, ASN1EXPL, 0);
    }
    ASN1MessageBufferIF* buffer() { return mpMsgBuf; }

  private:
    int32_t& value_;
};

class Plain : public ASN1CType {
  public:
    using ASN1CType::ASN1CType;
    Plain() = default;
    explicit Plain(ASN1Context& context) : ASN1CType(context) {}
};

TEST(EncodeBufferClass, EncodesAgainAndAgain) {
    ASN1BEREncodeBuffer buffer;
    int32_t value = 5;
    Number number(buffer, value);
    EXPECT_EQ(number.Encode(), 3);
    EXPECT_EQ(to_hex(buffer.getMsgPtr(), 3), "02 01 05");
    value = 128;
    EXPECT_EQ(number.Encode(), 4);
    EXPECT_EQ(to_hex(buffer.getMsgPtr(), 4), "02 02 00 80");
    EXPECT_EQ(buffer.getMsgPtr() + 4, buffer.getCtxtPtr()->buffer.data + 16383);
}

TEST(EncodeBufferClass, CopiesOneOctetMoreThanTheMessage) {
    ASN1BEREncodeBuffer buffer;
    int32_t value = 5;
    Number number(buffer, value);
    ASSERT_EQ(number.Encode(), 3);
    const std::unique_ptr<uint8_t[]> copy(buffer.getMsgCopy());
    EXPECT_EQ(to_hex(copy.get(), 4), "02 01 05 00");  // Intended: the spare last octet, which is 0.
}

/// Memory of contexts that is not cleared, as memory that was used before is not.
class UsedMemory {
  public:
    UsedMemory() {
        g_malloc_func = [](void*, size_t size) {
            void* const block = QM_malloc(size);
            return block == nullptr ? nullptr : std::memset(block, 0xA5, size);
        };
    }
    ~UsedMemory() { g_malloc_func = rtDefaultMalloc; }
    UsedMemory(const UsedMemory&) = delete;
    UsedMemory& operator=(const UsedMemory&) = delete;
};

TEST(EncodeBufferClass, CopiesNothingOfWhatItsMemoryHeldBefore) {
    const UsedMemory memory;
    ASN1BEREncodeBuffer buffer;
    int32_t value = 5;
    ASSERT_EQ(Number(buffer, value).Encode(), 3);
    const std::unique_ptr<uint8_t[]> copy(buffer.getMsgCopy());
    EXPECT_EQ(to_hex(copy.get(), 4), "02 01 05 00");
}

TEST(EncodeBufferClass, HasNoCopyWithoutABuffer) {
    ASN1BEREncodeBuffer buffer;
    xe_free(buffer.getCtxtPtr());
    EXPECT_EQ(buffer.getMsgCopy(), nullptr);
    buffer.init();
    EXPECT_EQ(buffer.setBuffer(nullptr, 0), RT_OK);
    int32_t value = 5;
    EXPECT_EQ(Number(buffer, value).Encode(), 3);
}

TEST(EncodeBufferClass, UsesACallersBufferOfFixedSize) {
    uint8_t octets[4];
    ASN1BEREncodeBuffer buffer(octets, sizeof octets);
    int32_t value = 5;
    Number number(buffer, value);
    EXPECT_EQ(number.Encode(), 3);
    EXPECT_EQ(buffer.getMsgPtr(), octets);
    value = 128;
    EXPECT_EQ(number.Encode(), RT_E_BUFOVFL);
    uint8_t larger[10];
    EXPECT_EQ(buffer.setBuffer(larger, sizeof larger), RT_OK);
    EXPECT_EQ(number.Encode(), 4);
}

TEST(EncodeBufferClass, RefusesACallersBufferWithoutRoom) {
    uint8_t octet;
    for (const int size : {0, -1}) {
        try {
            ASN1BEREncodeBuffer buffer(&octet, size);
            FAIL() << size;
        } catch (const ASN1MessageBuffer::RTLError& error) {
            EXPECT_EQ(error.getStatus(), RT_E_INVPARAM);
        }
    }
}

TEST(EncodeBufferClass, ThrowsForEachAllocationThatFails) {
    CodecHeap heap;
    for (std::size_t n = 0; n < 2; ++n) {
        heap.fail_after(n);
        EXPECT_THROW(ASN1BEREncodeBuffer(), ASN1MessageBuffer::RTLError) << n;
        EXPECT_EQ(heap.live_blocks(), 0u);
    }
    heap.fail_after(2);
    const ASN1BEREncodeBuffer buffer;
    EXPECT_FALSE(heap.failed());
}

TEST(EncodeBufferClass, OperatorThrowsOnSuccessToo) {
    ASN1BEREncodeBuffer buffer;
    int32_t value = 5;
    Number number(buffer, value);
    try {
        buffer << number;  // Intended: whatever is not 0 is thrown.
        FAIL() << "nothing was thrown";
    } catch (const ASN1RTLException& exception) {
        EXPECT_EQ(exception.getStatus(), 3);
    }
    Plain nothing(buffer);
    EXPECT_NO_THROW(buffer << nothing);
}

TEST(MessageBuffers, KnowTheirKind) {
    ASN1BEREncodeBuffer encode;
    ASN1BERDecodeBuffer decode;
    EXPECT_TRUE(encode.isA(ASN1MessageBufferIF::BEREncode));
    EXPECT_FALSE(encode.isA(ASN1MessageBufferIF::BERDecode));
    EXPECT_TRUE(decode.isA(ASN1MessageBufferIF::BERDecode));
    EXPECT_FALSE(decode.isA(ASN1MessageBufferIF::BEREncode));
    static_assert(ASN1MessageBufferIF::BEREncode == 0 && ASN1MessageBufferIF::BERDecode == 1);
}

TEST(MessageBuffers, HaveNothingWhereTheyAreNotOfBer) {
    class Other : public ASN1MessageBufferIF {
      public:
        bool isA(Type) override { return false; }
    } buffer;
    buffer.init();
    EXPECT_EQ(buffer.getCtxtPtr(), nullptr);
    EXPECT_TRUE(buffer.getContext().isNull());
    EXPECT_EQ(buffer.getMsgPtr(), nullptr);
    EXPECT_EQ(buffer.getMsgCopy(), nullptr);
    char text[] = "02";
    unsigned short wide[] = {0};
    ASN1MemBuf contents{};
    EXPECT_EQ(buffer.initBuffer(text), RT_E_NOTSUPP);
    EXPECT_EQ(buffer.initBuffer(wide), RT_E_NOTSUPP);
    EXPECT_EQ(buffer.initBuffer(contents), RT_E_NOTSUPP);
}

TEST(MessageBuffers, HandOutTheirContext) {
    ASN1BEREncodeBuffer buffer;
    EXPECT_EQ(buffer.getCtxtPtr()->getRefCount(), 1u);
    const ASN1CtxtPtr context = buffer.getContext();
    EXPECT_EQ(context->getRefCount(), 2u);
}

TEST(MessageBuffers, TakeTheContentsOfAMemoryBuffer) {
    ASN1BERDecodeBuffer buffer;
    ASN1MemBuf contents;
    rtMemBufInit(buffer.getCtxtPtr(), &contents, 16);
    EXPECT_EQ(buffer.initBuffer(contents), RT_E_INVPARAM);
    const std::vector<uint8_t> octets = from_hex("02 01 05");
    ASSERT_EQ(rtMemBufAppend(&contents, octets.data(), 3), RT_OK);
    ASSERT_EQ(buffer.initBuffer(contents), RT_OK);
    EXPECT_EQ(buffer.getMsgPtr(), contents.buffer);
    EXPECT_EQ(buffer.getCtxtPtr()->buffer.size, 3u);
    int32_t value = 0;
    EXPECT_EQ(Number(buffer, value).Decode(), RT_OK);
    EXPECT_EQ(value, 5);
}

TEST(MessageBuffers, TakeNoText) {
    ASN1BEREncodeBuffer buffer;
    char text[] = "02";
    unsigned short wide[] = {0};
    EXPECT_EQ(buffer.initBuffer(text), RT_E_NOTSUPP);
    EXPECT_EQ(buffer.initBuffer(wide), RT_E_NOTSUPP);
}

TEST(DecodeBufferClass, GoesOnWhereTheFirstDecodeStopped) {
    // SEQUENCE of two numbers, of which each `Decode` reads one.
    const std::vector<uint8_t> octets = from_hex("30 06 02 01 05 02 01 06");
    ASN1BERDecodeBuffer buffer(octets.data(), static_cast<int>(octets.size()));
    buffer.init();
    int length;
    ASSERT_EQ(xd_match1(buffer.getCtxtPtr(), 0x30, &length), RT_OK);
    int32_t value = 0;
    Number number(buffer, value);
    EXPECT_EQ(number.Decode(), RT_OK);
    EXPECT_EQ(value, 5);
    EXPECT_EQ(number.Decode(), RT_OK);
    EXPECT_EQ(value, 6);
    EXPECT_EQ(number.Decode(), RT_E_ENDOFBUF);
}

TEST(DecodeBufferClass, LeavesABrokenMessageToTheDecoder) {
    const std::vector<uint8_t> octets = from_hex("30 7f 02 01 05");
    ASN1BERDecodeBuffer buffer(octets.data(), static_cast<int>(octets.size()));
    buffer.init();  // Intended: its outcome is not looked at.
    EXPECT_EQ(buffer.getCtxtPtr()->buffer.byteIndex, 2u);
    EXPECT_EQ(buffer.getCtxtPtr()->buffer.size, octets.size());
}

TEST(DecodeBufferClass, FindsNothingInAnEmptyMessage) {
    const uint8_t octet = 0x02;
    int32_t value = 0;
    ASN1BERDecodeBuffer none;
    EXPECT_EQ(Number(none, value).Decode(), RT_E_ENDOFBUF);
    ASN1BERDecodeBuffer empty(&octet, 0);
    EXPECT_EQ(Number(empty, value).Decode(), RT_E_ENDOFBUF);
    ASN1BERDecodeBuffer negative(&octet, -1);
    EXPECT_EQ(Number(negative, value).Decode(), RT_E_ENDOFBUF);
    ASN1BERDecodeBuffer one(&octet, 1);
    EXPECT_EQ(Number(one, value).Decode(), RT_E_ENDOFBUF);
}

TEST(DecodeBufferClass, StartsOnAnotherMessage) {
    const std::vector<uint8_t> first = from_hex("02 01 05");
    const std::vector<uint8_t> second = from_hex("02 01 06");
    int32_t value = 0;
    ASN1BERDecodeBuffer buffer(first.data(), 3);
    Number number(buffer, value);
    EXPECT_EQ(number.Decode(), RT_OK);
    buffer.setBuffer(second.data(), 3, 0);
    EXPECT_EQ(number.Decode(), RT_OK);
    EXPECT_EQ(value, 6);
    buffer.setBuffer(second.data(), 3, 1);  // the one in hand: goes on
    EXPECT_EQ(number.Decode(), RT_E_ENDOFBUF);
    buffer.setBuffer(first.data(), 3, 1);  // another one
    EXPECT_EQ(number.Decode(), RT_OK);
    EXPECT_EQ(value, 5);
    buffer.setBuffer(nullptr, 0, 0);
    EXPECT_EQ(number.Decode(), RT_E_ENDOFBUF);
}

TEST(DecodeBufferClass, FindsElementsByTag) {
    const std::vector<uint8_t> octets = from_hex("30 07 02 01 05 a0 02 04 00");
    ASN1BERDecodeBuffer buffer(octets.data(), static_cast<int>(octets.size()));
    int length = 0;
    EXPECT_EQ(buffer.findElement(2, length, 1), octets.data() + 2);
    EXPECT_EQ(length, 1);
    EXPECT_EQ(buffer.findElement(4, length, 1), octets.data() + 7);
    EXPECT_EQ(length, 0);
    EXPECT_EQ(buffer.findElement(5, length, 1), nullptr);
    ASN1BERDecodeBuffer none;
    EXPECT_EQ(none.findElement(2, length, 1), nullptr);
    EXPECT_EQ(none.findElement(2, length, 0), nullptr);
}

TEST(DecodeBufferClass, FindsTheNextElementBehindTheOneFound) {
    const std::vector<uint8_t> octets = from_hex("30 06 02 01 05 02 01 06");
    ASN1BERDecodeBuffer buffer(octets.data(), static_cast<int>(octets.size()));
    int length = 0;
    EXPECT_EQ(buffer.findElement(2, length, 1), octets.data() + 2);
    EXPECT_EQ(buffer.findElement(2, length, 0), octets.data() + 5);
    EXPECT_EQ(buffer.findElement(2, length, 0), nullptr);
}

TEST(DecodeBufferClass, FindsNothingInABrokenMessage) {
    const std::vector<uint8_t> octets = from_hex("30 7f 02 01 05");
    ASN1BERDecodeBuffer buffer(octets.data(), static_cast<int>(octets.size()));
    int length = 0;
    EXPECT_EQ(buffer.findElement(2, length, 1), nullptr);
}

TEST(DecodeBufferClass, OperatorThrowsAFailure) {
    const std::vector<uint8_t> octets = from_hex("02 01 05");
    ASN1BERDecodeBuffer buffer(octets.data(), 3);
    int32_t value = 0;
    Number number(buffer, value);
    EXPECT_NO_THROW(buffer >> number);
    EXPECT_EQ(value, 5);
    try {
        buffer >> number;
        FAIL() << "nothing was thrown";
    } catch (const ASN1RTLException& exception) {
        EXPECT_EQ(exception.getStatus(), RT_E_ENDOFBUF);
    }
}

TEST(ControlClass, DoesNothingByItself) {
    ASN1BEREncodeBuffer buffer;
    Plain plain(buffer);
    EXPECT_EQ(plain.Encode(), RT_OK);
    EXPECT_EQ(plain.Decode(), RT_OK);
    EXPECT_EQ(plain.EncodeTo(buffer), RT_OK);
    EXPECT_EQ(plain.DecodeFrom(buffer), RT_OK);
}

TEST(ControlClass, HoldsTheContextOfItsBuffer) {
    ASN1BEREncodeBuffer buffer;
    {
        const Plain plain(buffer);
        EXPECT_EQ(plain.getCtxtPtr(), buffer.getCtxtPtr());
        EXPECT_EQ(buffer.getCtxtPtr()->getRefCount(), 2u);
    }
    EXPECT_EQ(buffer.getCtxtPtr()->getRefCount(), 1u);
}

TEST(ControlClass, SharesTheValueHeapOfTheBufferItIsGiven) {
    CodecHeap heap;
    {
        ASN1BEREncodeBuffer first;
        ASN1BEREncodeBuffer second;
        int32_t value = 5;
        Number number(first, value);
        EXPECT_EQ(number.EncodeTo(second), 3);
        EXPECT_EQ(number.buffer(), &second);
        EXPECT_EQ(number.getCtxtPtr(), first.getCtxtPtr());
        EXPECT_EQ(number.getCtxtPtr()->typeHeap, second.getCtxtPtr()->typeHeap);
    }
    EXPECT_EQ(heap.live_blocks(), 0u);
}

TEST(ControlClass, HasAContextOfItsOwnWithoutABuffer) {
    const Plain plain;
    EXPECT_NE(plain.getCtxtPtr(), nullptr);
    ASN1CtxtPtr context = new ASN1Context;
    const Plain on_context(*context);
    EXPECT_EQ(on_context.getCtxtPtr(), context);
    EXPECT_EQ(context->getRefCount(), 2u);
}

}  // namespace
}  // namespace Quillmark::test
