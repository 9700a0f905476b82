#include <gtest/gtest.h>

#include <cstring>

#include "runtime/context.h"
#include "tests/support/codec_heap.h"

namespace Quillmark::test {
namespace {

// A heap that must be empty and gone at the end of its test.
class Heap : public testing::Test {
  protected:
    void SetUp() override { ASSERT_EQ(rtMemHeapCreate(&heap_, nullptr), RT_OK); }
    void TearDown() override {
        rtMemHeapRelease(&heap_);
        EXPECT_EQ(heap_, nullptr);
        EXPECT_EQ(hooks_.live_blocks(), 0u);
    }

    CodecHeap hooks_;
    rtMemHeap* heap_ = nullptr;
};

TEST_F(Heap, StartsWithOneReferenceAndItsOwnRecord) {
    EXPECT_EQ(heap_->refCount, 1u);
    EXPECT_EQ(heap_->blockSize, 4096u);
    EXPECT_EQ(heap_->heapFlags, 0x10000000u);
    EXPECT_EQ(heap_->head, nullptr);
}

TEST_F(Heap, TakesOneAllocationForEachBlock) {
    const std::size_t before = hooks_.allocations();
    rtMemHeapAlloc(&heap_, 10);
    rtMemHeapAlloc(&heap_, 100000);
    EXPECT_EQ(hooks_.allocations(), before + 2);
}

TEST_F(Heap, ClearsOnDemand) {
    auto* octets = static_cast<uint8_t*>(rtMemHeapAllocZ(&heap_, 64));
    ASSERT_NE(octets, nullptr);
    for (int i = 0; i < 64; ++i) {
        EXPECT_EQ(octets[i], 0);
    }
}

TEST_F(Heap, GivesABlockForNoOctets) {
    EXPECT_NE(rtMemHeapAlloc(&heap_, 0), nullptr);
}

TEST_F(Heap, RefusesSizesFrom2147483600) {
    hooks_.fail_after(0);  // the size below the limit reaches the hook, which has nothing to give either
    EXPECT_EQ(rtMemHeapAlloc(&heap_, 2147483599), nullptr);
    EXPECT_TRUE(hooks_.failed());
    hooks_.fail_after(0);
    EXPECT_EQ(rtMemHeapAlloc(&heap_, 2147483600), nullptr);
    EXPECT_EQ(rtMemHeapAllocZ(&heap_, static_cast<std::size_t>(-1)), nullptr);
    EXPECT_EQ(rtMemHeapAlloc(&heap_, std::size_t{1} << 32), nullptr);
    EXPECT_FALSE(hooks_.failed());
}

TEST_F(Heap, ReportsExhaustedMemoryByNull) {
    hooks_.fail_after(0);
    EXPECT_EQ(rtMemHeapAlloc(&heap_, 1), nullptr);
    hooks_.fail_after(0);
    EXPECT_EQ(rtMemHeapAllocZ(&heap_, 1), nullptr);
}

TEST_F(Heap, FreesBlocksInAnyOrder) {
    void* a = rtMemHeapAlloc(&heap_, 1);
    void* b = rtMemHeapAlloc(&heap_, 2);
    void* c = rtMemHeapAlloc(&heap_, 3);
    const std::size_t all = hooks_.live_blocks();
    rtMemHeapFreePtr(&heap_, b);
    rtMemHeapFreePtr(&heap_, c);
    rtMemHeapFreePtr(&heap_, a);
    EXPECT_EQ(hooks_.live_blocks(), all - 3);
    EXPECT_EQ(heap_->head, nullptr);
}

TEST_F(Heap, UnlinksABlockThatIsFreedThroughAnotherHeap) {
    rtMemHeap* other = nullptr;
    ASSERT_EQ(rtMemHeapCreate(&other, nullptr), RT_OK);
    rtMemHeapAlloc(&other, 8);
    void* newest = rtMemHeapAlloc(&heap_, 8);
    rtMemHeapFreePtr(&other, newest);
    EXPECT_EQ(heap_->head, nullptr);
    EXPECT_NE(other->head, nullptr);
    rtMemHeapRelease(&other);
}

TEST_F(Heap, FreeIgnoresNull) {
    rtMemHeapFreePtr(nullptr, &hooks_);
    rtMemHeap* empty = nullptr;
    rtMemHeapFreePtr(&empty, &hooks_);
    rtMemHeapFreePtr(&heap_, nullptr);
    rtMemHeapRelease(nullptr);
    rtMemHeapRelease(&empty);
}

TEST_F(Heap, ReallocKeepsThePointerWhenItShrinks) {
    void* block = rtMemHeapAlloc(&heap_, 100);
    EXPECT_EQ(rtMemHeapRealloc(&heap_, block, 10), block);
    EXPECT_EQ(rtMemHeapRealloc(&heap_, block, 10), block);
}

TEST_F(Heap, ReallocMovesABlockThatGrowsBackToItsOldSize) {
    void* block = rtMemHeapAlloc(&heap_, 100);
    std::memset(block, 0x5A, 100);
    rtMemHeapRealloc(&heap_, block, 10);
    const std::size_t before = hooks_.allocations();
    const auto* moved = static_cast<uint8_t*>(rtMemHeapRealloc(&heap_, block, 100));  // Intended.
    EXPECT_EQ(hooks_.allocations(), before + 1);
    EXPECT_EQ(moved[9], 0x5A);
}

TEST_F(Heap, ReallocCopiesWhatWasThere) {
    auto* block = static_cast<char*>(rtMemHeapAlloc(&heap_, 4));
    std::memcpy(block, "abc", 4);
    EXPECT_STREQ(static_cast<char*>(rtMemHeapRealloc(&heap_, block, 4000)), "abc");
}

TEST_F(Heap, ReallocOfNullAllocates) {
    EXPECT_NE(rtMemHeapRealloc(&heap_, nullptr, 10), nullptr);
}

TEST_F(Heap, ReallocLeavesTheBlockWhenItFails) {
    auto* block = static_cast<char*>(rtMemHeapAlloc(&heap_, 4));
    std::memcpy(block, "abc", 4);
    hooks_.fail_after(0);
    EXPECT_EQ(rtMemHeapRealloc(&heap_, block, 5), nullptr);
    EXPECT_EQ(rtMemHeapRealloc(&heap_, block, 2147483600), nullptr);
    EXPECT_STREQ(block, "abc");
}

TEST_F(Heap, StaysWhileReferencesRemain) {
    rtMemHeap* second = heap_;
    rtMemHeapAddRef(&second);
    rtMemHeapAlloc(&heap_, 10);
    rtMemHeapRelease(&second);
    EXPECT_EQ(second, heap_);
    EXPECT_EQ(heap_->refCount, 1u);
    EXPECT_NE(heap_->head, nullptr);
}

TEST(HeapCell, IsFilledByTheFirstAllocation) {
    rtMemHeap* heap = nullptr;
    EXPECT_NE(rtMemHeapAlloc(&heap, 1), nullptr);
    ASSERT_NE(heap, nullptr);
    EXPECT_EQ(heap->memContext, nullptr);
    rtMemHeapRelease(&heap);
}

TEST(HeapCell, IsNotFilledByRealloc) {
    rtMemHeap* heap = nullptr;
    EXPECT_EQ(rtMemHeapRealloc(&heap, nullptr, 1), nullptr);  // Intended.
    EXPECT_EQ(heap, nullptr);
}

TEST(HeapCell, StaysEmptyWithoutMemory) {
    CodecHeap hooks;
    hooks.fail_after(0);
    rtMemHeap* heap = nullptr;
    EXPECT_EQ(rtMemHeapAlloc(&heap, 1), nullptr);
    EXPECT_EQ(heap, nullptr);
}

TEST(HeapCell, MustNotBeNull) {
    EXPECT_EQ(rtMemHeapCreate(nullptr, nullptr), RT_E_INVPARAM);
    EXPECT_EQ(rtMemHeapAlloc(nullptr, 1), nullptr);
    EXPECT_EQ(rtMemHeapRealloc(nullptr, nullptr, 1), nullptr);
}

TEST(HeapCell, OwnershipTestAnswersYesToEverything) {
    EXPECT_EQ(rtMemHeapCheckPtr(nullptr, nullptr), 1);  // Intended.
    rtMemHeapMarkSaved();
}

// Hooks that note the pointer they are called with.
void* seen = nullptr;

void* noting_malloc(void* memContext, std::size_t size) {
    seen = memContext;
    return rtDefaultMalloc(nullptr, size);
}

void noting_free(void* memContext, void* block) {
    seen = memContext;
    rtDefaultFree(nullptr, block);
}

TEST(HeapHooks, GetTheMemoryContext) {
    int context = 0;
    rtMemHeap* heap = nullptr;
    g_malloc_func = noting_malloc;
    g_free_func = noting_free;
    rtMemHeapCreate(&heap, &context);
    EXPECT_EQ(seen, &context);
    seen = nullptr;
    void* block = rtMemHeapAlloc(&heap, 1);
    EXPECT_EQ(seen, &context);
    seen = nullptr;
    rtMemHeapFreePtr(&heap, block);
    EXPECT_EQ(seen, &context);
    rtMemHeapRelease(&heap);
    g_malloc_func = rtDefaultMalloc;
    g_free_func = rtDefaultFree;
}

TEST(HeapHooks, DefaultToTheCAllocator) {
    void* block = rtDefaultMalloc(nullptr, 4);
    ASSERT_NE(block, nullptr);
    block = rtDefaultRealloc(nullptr, block, 400);
    ASSERT_NE(block, nullptr);
    rtDefaultFree(nullptr, block);
    auto* octets = static_cast<uint8_t*>(QM_calloc(4, 4));
    ASSERT_NE(octets, nullptr);
    EXPECT_EQ(octets[15], 0);
    octets = static_cast<uint8_t*>(QM_realloc(octets, 100));
    QM_free(octets);
    QM_free(QM_malloc(1));
}

}  // namespace
}  // namespace Quillmark::test
