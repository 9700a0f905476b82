#include "runtime/context.h"

#include <gtest/gtest.h>

#include <cstring>

#include "runtime/list.h"
#include "runtime/message_buffer.h"
#include "runtime/stream.h"
#include "tests/support/codec_heap.h"

namespace Quillmark::test {
namespace {

TEST(Context, StartsWithOneHeapForMessageAndValues) {
    int tag = 0;
    ASN1CTXT ctxt;
    std::memset(static_cast<void*>(&ctxt), 0xAA, sizeof ctxt);
    ASSERT_EQ(rtInitContext(&ctxt, &tag), RT_OK);
    EXPECT_EQ(ctxt.magic, RT_MAGIC);
    EXPECT_EQ(ctxt.msgHeap, ctxt.typeHeap);
    EXPECT_EQ(ctxt.typeHeap->refCount, 2u);
    EXPECT_EQ(ctxt.typeHeap->memContext, &tag);
    EXPECT_EQ(ctxt.typeHeap->blockSize, g_defBlkSize);
    EXPECT_EQ(ctxt.memContext, &tag);
    EXPECT_EQ(ctxt.buffer.data, nullptr);
    EXPECT_EQ(ctxt.stream, nullptr);
    EXPECT_EQ(ctxt.flags, 0);
    EXPECT_EQ(ctxt.errInfo.status, RT_OK);
    EXPECT_EQ(ctxt.listA.owner, &ctxt);
    EXPECT_EQ(ctxt.listB.owner, &ctxt);
    EXPECT_EQ(ctxt.listA.count, 0u);
    rtFreeContext(&ctxt);
    EXPECT_EQ(ctxt.magic, 0u);
    EXPECT_EQ(ctxt.listA.owner, nullptr);
    EXPECT_EQ(ctxt.listB.owner, nullptr);
}

TEST(Context, ReportsAHeapThatCannotBeMade) {
    CodecHeap heap;
    heap.fail_after(0);
    ASN1CTXT ctxt;
    EXPECT_EQ(rtInitContext(&ctxt, nullptr), RT_E_NOMEM);
    rtFreeContext(&ctxt);
    EXPECT_EQ(heap.live_blocks(), 0u);
    EXPECT_EQ(rtInitContext(nullptr, nullptr), RT_E_INVPARAM);
}

TEST(Context, FreeDoesNothingWithoutItsMagic) {
    ASN1CTXT ctxt{};
    rtFreeContext(&ctxt);
    ASSERT_EQ(rtInitContext(&ctxt, nullptr), RT_OK);
    rtFreeContext(&ctxt);
    rtFreeContext(&ctxt);  // a second time
    EXPECT_EQ(ctxt.magic, 0u);
}

TEST(Context, FreesEverythingThatLiesOnIt) {
    CodecHeap heap;
    ASN1CTXT ctxt;
    ASSERT_EQ(rtInitContext(&ctxt, nullptr), RT_OK);
    rtInitContextBuffer(&ctxt, nullptr, 0);
    rtMemHeapAlloc(&ctxt.typeHeap, 100);
    rtSListAppend(&ctxt.listA, &heap);
    rtSListAppend(&ctxt.listB, &heap);
    ctxt.stream = static_cast<rtStream*>(rtMemHeapAllocZ(&ctxt.msgHeap, sizeof(rtStream)));
    EXPECT_GT(heap.live_blocks(), 4u);
    rtFreeContext(&ctxt);
    EXPECT_EQ(heap.live_blocks(), 0u);
    EXPECT_EQ(ctxt.stream, nullptr);
}

TEST(ContextBuffer, NeedsALiveContext) {
    ASN1CTXT ctxt{};
    EXPECT_EQ(rtInitContextBuffer(&ctxt, nullptr, 0), RT_E_NOTINIT);
}

TEST(ContextBuffer, IsTakenFromTheHeapWithoutACallersOne) {
    ASN1CTXT ctxt;
    ASSERT_EQ(rtInitContext(&ctxt, nullptr), RT_OK);
    ASSERT_EQ(rtInitContextBuffer(&ctxt, nullptr, 0), RT_OK);
    EXPECT_EQ(ctxt.buffer.size, 16384u);
    EXPECT_EQ(ctxt.buffer.dynamic, 1);
    EXPECT_EQ(ctxt.buffer.byteIndex, 0u);
    EXPECT_EQ(ctxt.buffer.bitOffset, 8);
    ASSERT_EQ(rtInitContextBuffer(&ctxt, nullptr, 100), RT_OK);
    EXPECT_EQ(ctxt.buffer.size, 100u);
    rtFreeContext(&ctxt);
}

TEST(ContextBuffer, TakesACallersOneAsItIs) {
    ASN1CTXT ctxt;
    ASSERT_EQ(rtInitContext(&ctxt, nullptr), RT_OK);
    uint8_t octets[7];
    ASSERT_EQ(rtInitContextBuffer(&ctxt, octets, sizeof octets), RT_OK);
    EXPECT_EQ(ctxt.buffer.data, octets);
    EXPECT_EQ(ctxt.buffer.size, 7u);
    EXPECT_EQ(ctxt.buffer.dynamic, 0);
    EXPECT_EQ(ctxt.buffer.bitOffset, 8);
    rtFreeContext(&ctxt);
}

TEST(ContextBuffer, ReportsExhaustedMemory) {
    CodecHeap heap;
    ASN1CTXT ctxt;
    ASSERT_EQ(rtInitContext(&ctxt, nullptr), RT_OK);
    heap.fail_after(0);
    EXPECT_EQ(rtInitContextBuffer(&ctxt, nullptr, 0), RT_E_NOMEM);
    rtFreeContext(&ctxt);
    EXPECT_EQ(heap.live_blocks(), 0u);
}

TEST(Context, SavedBufferOutlivesItWhileTheHeapIsHeld) {
    CodecHeap heap;
    ASN1CTXT ctxt;
    ASSERT_EQ(rtInitContext(&ctxt, nullptr), RT_OK);
    ASSERT_EQ(rtInitContextBuffer(&ctxt, nullptr, 10), RT_OK);
    rtCtxtSetFlag(&ctxt, RT_F_SAVEBUF);
    uint8_t* saved = ctxt.buffer.data;
    std::memset(saved, 0x5A, 10);
    rtMemHeap* held = ctxt.msgHeap;
    rtMemHeapAddRef(&held);
    rtFreeContext(&ctxt);
    EXPECT_EQ(saved[9], 0x5A);
    rtMemHeapRelease(&held);
    EXPECT_EQ(heap.live_blocks(), 0u);
}

TEST(Context, FlagsAreAdded) {
    ASN1CTXT ctxt;
    ASSERT_EQ(rtInitContext(&ctxt, nullptr), RT_OK);
    rtCtxtSetFlag(&ctxt, RT_F_FASTCOPY);
    rtCtxtSetFlag(&ctxt, RT_F_NOLENCHECK);
    EXPECT_EQ(ctxt.flags, RT_F_FASTCOPY | RT_F_NOLENCHECK);
    rtFreeContext(&ctxt);
}

TEST(Context, CopyTakesBufferAndFlagsAlone) {
    ASN1CTXT source;
    ASN1CTXT target;
    ASSERT_EQ(rtInitContext(&source, nullptr), RT_OK);
    ASSERT_EQ(rtInitContext(&target, nullptr), RT_OK);
    const rtMemHeap* heap = target.typeHeap;
    uint8_t octets[3];
    rtInitContextBuffer(&source, octets, sizeof octets);
    source.buffer.byteIndex = 2;
    rtCtxtSetFlag(&source, RT_F_FASTCOPY);
    rtErrSetData(&source.errInfo, RT_E_INVLEN);
    rtCopyContext(&target, &source);
    EXPECT_EQ(target.buffer.data, octets);
    EXPECT_EQ(target.buffer.byteIndex, 2u);
    EXPECT_EQ(target.flags, RT_F_FASTCOPY);
    EXPECT_EQ(target.typeHeap, heap);
    EXPECT_EQ(target.errInfo.status, RT_OK);
    rtFreeContext(&source);
    rtFreeContext(&target);
}

TEST(Context, SharesTheHeapOfAnother) {
    CodecHeap heap;
    ASN1CTXT source;
    ASN1CTXT target;
    ASSERT_EQ(rtInitContext(&source, nullptr), RT_OK);
    ASSERT_EQ(rtInitContext(&target, nullptr), RT_OK);
    rtCtxtSetMemHeap(&target, &source);
    EXPECT_EQ(target.typeHeap, source.typeHeap);
    EXPECT_NE(target.msgHeap, source.msgHeap);
    EXPECT_EQ(source.typeHeap->refCount, 3u);
    rtCtxtSetMemHeap(&target, &source);  // the same again changes nothing
    EXPECT_EQ(source.typeHeap->refCount, 3u);
    rtCtxtSetMsgMemHeap(&target, &source);
    EXPECT_EQ(target.msgHeap, source.msgHeap);
    rtCtxtSetMemHeap(nullptr, &source);
    rtCtxtSetMemHeap(&target, nullptr);
    rtFreeContext(&source);
    rtFreeContext(&target);
    EXPECT_EQ(heap.live_blocks(), 0u);
}

TEST(CountedContext, IsDeletedOnceAtTheLastRelease) {
    CodecHeap heap;
    auto* context = new ASN1Context;
    EXPECT_EQ(context->getRefCount(), 0u);
    context->_ref();
    context->_ref();
    EXPECT_EQ(context->getRefCount(), 2u);
    context->_unref();
    EXPECT_EQ(context->getRefCount(), 1u);
    EXPECT_EQ(context->magic, RT_MAGIC);
    context->_unref();
    EXPECT_EQ(heap.live_blocks(), 0u);
}

TEST(CountedContext, ThrowsWhenItCannotBeMade) {
    CodecHeap heap;
    heap.fail_after(0);
    try {
        ASN1Context context;
        FAIL() << "nothing was thrown";
    } catch (const ASN1MessageBuffer::RTLError& error) {
        EXPECT_EQ(error.getStatus(), RT_E_NOMEM);
    }
    EXPECT_EQ(heap.live_blocks(), 0u);
}

TEST(ContextPointer, CountsItsCopies) {
    ASN1CtxtPtr first = new ASN1Context;
    EXPECT_EQ(first->getRefCount(), 1u);
    {
        const ASN1CtxtPtr second = first;
        EXPECT_EQ(first->getRefCount(), 2u);
    }
    EXPECT_EQ(first->getRefCount(), 1u);
    ASN1CtxtPtr other = new ASN1Context;
    other = first;
    EXPECT_EQ(first->getRefCount(), 2u);
    other = static_cast<ASN1Context*>(nullptr);
    EXPECT_TRUE(other.isNull());
    EXPECT_EQ(first->getRefCount(), 1u);
}

TEST(ContextPointer, SurvivesAssignmentToItself) {
    ASN1CtxtPtr pointer = new ASN1Context;
    ASN1CtxtPtr& same = pointer;
    pointer = same;
    pointer = static_cast<ASN1Context*>(pointer);
    EXPECT_EQ(pointer->getRefCount(), 1u);
    EXPECT_EQ(pointer->magic, RT_MAGIC);
}

TEST(RecordBase, HoldsItsContext) {
    ASN1CtxtPtr context = new ASN1Context;
    {
        ASN1TPDU record;
        EXPECT_TRUE(record.mpContext.isNull());
        record.setContext(context);
        EXPECT_EQ(context->getRefCount(), 2u);
    }
    EXPECT_EQ(context->getRefCount(), 1u);
}

}  // namespace
}  // namespace Quillmark::test
