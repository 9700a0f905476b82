#include "runtime/list.h"

#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "runtime/value_types.h"
#include "tests/runtime/codec_context.h"
#include "tests/support/codec_heap.h"

namespace Quillmark::test {
namespace {

// A list of pointers into an array of numbers, read back as numbers.
class RtDList : public testing::Test {
  protected:
    RtDList() { rtDListInit(&list_); }

    void fill(int count) {
        for (int i = 0; i < count; ++i) {
            ASSERT_NE(nullptr, rtDListAppend(context_, &list_, &numbers_[i]));
        }
    }

    // Head to tail; the links back must tell the same.
    std::vector<int> contents() const {
        std::vector<int> forward;
        for (const _Asn1RTDListNode* node = list_.head; node != nullptr; node = node->next) {
            forward.push_back(*static_cast<const int*>(node->data));
        }
        std::vector<int> backward;
        for (const _Asn1RTDListNode* node = list_.tail; node != nullptr; node = node->prev) {
            backward.insert(backward.begin(), *static_cast<const int*>(node->data));
        }
        EXPECT_EQ(forward, backward);
        EXPECT_EQ(forward.size(), list_.count);
        return forward;
    }

    int* new_number(int value) {
        auto* number = static_cast<int*>(rtMemHeapAlloc(&context_->typeHeap, sizeof(int)));
        *number = value;
        return number;
    }

    using Numbers = std::vector<int>;

    CodecHeap heap_;
    CodecContext context_;
    ASN1TSeqOfList list_;
    int numbers_[10] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9};
};

TEST_F(RtDList, StartsEmpty) {
    EXPECT_EQ(0u, list_.count);
    EXPECT_EQ(nullptr, list_.head);
    EXPECT_EQ(nullptr, list_.tail);
}

TEST_F(RtDList, AppendsInOrder) {
    fill(3);
    EXPECT_EQ(Numbers({0, 1, 2}), contents());
    EXPECT_EQ(&numbers_[2], list_.tail->data);
}

TEST_F(RtDList, LinksANodeThatIsOneBlockWithItsPayload) {
    auto* block = static_cast<_Asn1RTDListNode*>(
        rtMemHeapAllocZ(&context_->typeHeap, sizeof(_Asn1RTDListNode) + sizeof(int)));
    const size_t allocations = heap_.allocations();
    int* payload = reinterpret_cast<int*>(block + 1);
    *payload = 42;
    EXPECT_EQ(block, rtDListAppendNode(context_, &list_, payload));
    EXPECT_EQ(payload, list_.head->data);
    EXPECT_EQ(Numbers({42}), contents());
    EXPECT_EQ(allocations, heap_.allocations());
}

TEST_F(RtDList, InsertsAtAnIndex) {
    fill(3);
    EXPECT_NE(nullptr, rtDListInsert(context_, &list_, 1, &numbers_[7]));
    EXPECT_EQ(Numbers({0, 7, 1, 2}), contents());
    EXPECT_NE(nullptr, rtDListInsert(context_, &list_, 0, &numbers_[8]));
    EXPECT_EQ(Numbers({8, 0, 7, 1, 2}), contents());
    EXPECT_NE(nullptr, rtDListInsert(context_, &list_, 5, &numbers_[9]));
    EXPECT_EQ(Numbers({8, 0, 7, 1, 2, 9}), contents());
}

TEST_F(RtDList, InsertsIntoAnEmptyList) {
    EXPECT_NE(nullptr, rtDListInsert(context_, &list_, 0, &numbers_[1]));
    EXPECT_EQ(Numbers({1}), contents());
}

TEST_F(RtDList, RefusesAnIndexAboveTheCountWithoutTakingMemory) {
    fill(2);
    const size_t allocations = heap_.allocations();
    EXPECT_EQ(nullptr, rtDListInsert(context_, &list_, 3, &numbers_[7]));
    EXPECT_EQ(allocations, heap_.allocations());
    EXPECT_EQ(Numbers({0, 1}), contents());
}

TEST_F(RtDList, InsertsBeforeAndAfterANode) {
    fill(2);
    EXPECT_NE(nullptr, rtDListInsertBefore(context_, &list_, list_.head, &numbers_[5]));
    EXPECT_NE(nullptr, rtDListInsertAfter(context_, &list_, list_.tail, &numbers_[6]));
    EXPECT_NE(nullptr, rtDListInsertAfter(context_, &list_, list_.head, &numbers_[7]));
    EXPECT_NE(nullptr, rtDListInsertBefore(context_, &list_, list_.tail, &numbers_[8]));
    EXPECT_EQ(Numbers({5, 7, 0, 1, 8, 6}), contents());
}

TEST_F(RtDList, FindsByIndex) {
    fill(5);
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(&numbers_[i], rtDListFindByIndex(&list_, i)->data) << i;
    }
    EXPECT_EQ(nullptr, rtDListFindByIndex(&list_, 5));
    EXPECT_EQ(list_.head, rtDListFindByIndex(&list_, -1));  // Intended: below 1 is the head
}

TEST_F(RtDList, FindsNothingInAnEmptyList) {
    EXPECT_EQ(nullptr, rtDListFindByIndex(&list_, 0));
    EXPECT_EQ(nullptr, rtDListFindByIndex(&list_, -1));
    EXPECT_EQ(nullptr, rtDListFindByData(&list_, &numbers_[0]));
    EXPECT_EQ(-1, rtDListFindIndexByData(&list_, &numbers_[0]));
}

TEST_F(RtDList, FindsByThePointer) {
    fill(3);
    EXPECT_EQ(list_.tail, rtDListFindByData(&list_, &numbers_[2]));
    EXPECT_EQ(2, rtDListFindIndexByData(&list_, &numbers_[2]));
    const int same_value = 2;
    EXPECT_EQ(nullptr, rtDListFindByData(&list_, &same_value));
    EXPECT_EQ(-1, rtDListFindIndexByData(&list_, &same_value));
}

TEST_F(RtDList, RemovesWithoutFreeing) {
    fill(4);
    const size_t live = heap_.live_blocks();
    rtDListRemove(&list_, list_.head->next);
    EXPECT_EQ(Numbers({0, 2, 3}), contents());
    rtDListRemove(&list_, list_.head);
    EXPECT_EQ(Numbers({2, 3}), contents());
    rtDListRemove(&list_, list_.tail);
    EXPECT_EQ(Numbers({2}), contents());
    rtDListRemove(&list_, list_.tail);
    EXPECT_EQ(Numbers(), contents());
    EXPECT_EQ(live, heap_.live_blocks());
    rtDListRemove(&list_, nullptr);
    EXPECT_EQ(Numbers(), contents());
}

TEST_F(RtDList, FreesNodesAndLeavesData) {
    const size_t before = heap_.live_blocks();
    int* number = new_number(3);
    ASSERT_NE(nullptr, rtDListAppend(context_, &list_, number));
    rtDListFreeNodes(context_, &list_);
    EXPECT_EQ(Numbers(), contents());
    EXPECT_EQ(before + 1, heap_.live_blocks());
    EXPECT_EQ(3, *number);
}

TEST_F(RtDList, FreesNodesAndData) {
    const size_t before = heap_.live_blocks();
    ASSERT_NE(nullptr, rtDListAppend(context_, &list_, new_number(1)));
    ASSERT_NE(nullptr, rtDListAppend(context_, &list_, nullptr));
    auto* block = static_cast<_Asn1RTDListNode*>(
        rtMemHeapAllocZ(&context_->typeHeap, sizeof(_Asn1RTDListNode) + sizeof(int)));
    rtDListAppendNode(context_, &list_, block + 1);
    rtDListFreeAll(context_, &list_);
    EXPECT_EQ(0u, list_.count);
    EXPECT_EQ(nullptr, list_.head);
    EXPECT_EQ(before, heap_.live_blocks());
}

TEST_F(RtDList, FreesTheOctetsOfOpenTypes) {
    const size_t before = heap_.live_blocks();
    for (const uint32_t count : {0u, 3u}) {
        auto* element =
            static_cast<ASN1OpenType*>(rtMemHeapAllocZ(&context_->typeHeap, sizeof(ASN1OpenType)));
        element->numocts = count;
        element->data =
            count == 0 ? nullptr : static_cast<uint8_t*>(rtMemHeapAlloc(&context_->typeHeap, count));
        ASSERT_NE(nullptr, rtDListAppend(context_, &list_, element));
    }
    rtMemFreeOpenSeqExt(context_, &list_);
    EXPECT_EQ(0u, list_.count);
    EXPECT_EQ(before, heap_.live_blocks());
}

TEST_F(RtDList, FreesOpenTypesThatPointIntoTheMessage) {
    context_.read("05 00");
    context_->flags |= RT_F_FASTCOPY;
    ASSERT_EQ(RT_OK, xd_OpenTypeAppend(context_, &list_));
    rtMemFreeOpenSeqExt(context_, &list_);
    EXPECT_EQ(0u, list_.count);
}

TEST_F(RtDList, AppendsAnArrayInPlace) {
    fill(1);
    ASSERT_EQ(RT_OK, rtDListAppendArray(context_, &list_, &numbers_[4], 3, sizeof(int)));
    EXPECT_EQ(Numbers({0, 4, 5, 6}), contents());
    EXPECT_EQ(&numbers_[4], list_.head->next->data);
}

TEST_F(RtDList, AppendsCopiesOfAnArray) {
    ASSERT_EQ(RT_OK, rtDListAppendArrayCopy(context_, &list_, &numbers_[4], 3, sizeof(int)));
    numbers_[4] = 99;
    EXPECT_EQ(Numbers({4, 5, 6}), contents());
    rtDListFreeAll(context_, &list_);
}

TEST_F(RtDList, CopiesToANewArray) {
    fill(3);
    void* array = nullptr;
    uint32_t count = 0;
    EXPECT_EQ(3, rtDListToArray(context_, &list_, &array, &count, sizeof(int)));
    EXPECT_EQ(3u, count);
    ASSERT_NE(nullptr, array);
    EXPECT_EQ(0, std::memcmp(array, numbers_, 3 * sizeof(int)));
}

TEST_F(RtDList, CopiesToTheCallersArray) {
    fill(3);
    int target[3] = {9, 9, 9};
    void* array = target;
    EXPECT_EQ(3, rtDListToArray(context_, &list_, &array, nullptr, sizeof(int)));
    EXPECT_EQ(target, array);
    EXPECT_EQ(0, std::memcmp(target, numbers_, sizeof target));
}

TEST_F(RtDList, CopiesAnElementThatIsNotThereAsZeros) {
    fill(1);
    ASSERT_NE(nullptr, rtDListAppend(context_, &list_, nullptr));
    int target[2] = {9, 9};
    void* array = target;
    EXPECT_EQ(2, rtDListToArray(context_, &list_, &array, nullptr, sizeof(int)));
    EXPECT_EQ(Numbers({0, 0}), Numbers(target, target + 2));
}

TEST_F(RtDList, RefusesAnArrayTooLargeForTheHeap) {
    fill(4);
    void* array = nullptr;
    EXPECT_EQ(RT_E_NOMEM, rtDListToArray(context_, &list_, &array, nullptr, SIZE_MAX / 2));
    EXPECT_EQ(RT_E_NOMEM, rtDListToArray(context_, &list_, &array, nullptr, 0x40000000));
    EXPECT_EQ(RT_E_NOMEM,
              rtDListToArray(context_, &list_, &array, nullptr, SIZE_MAX / 4 + 5));  // wraps to 16
    EXPECT_EQ(nullptr, array);
}

TEST_F(RtDList, GivesNullWithoutMemory) {
    fill(1);
    heap_.fail_after(0);
    EXPECT_EQ(nullptr, rtDListAppend(context_, &list_, &numbers_[1]));
    heap_.fail_after(0);
    EXPECT_EQ(nullptr, rtDListInsert(context_, &list_, 0, &numbers_[1]));
    heap_.fail_after(0);
    EXPECT_EQ(nullptr, rtDListInsertAfter(context_, &list_, list_.head, &numbers_[1]));
    EXPECT_EQ(nullptr, rtDListAppendNode(context_, &list_, nullptr)) << "a block that could not be made";
    EXPECT_EQ(Numbers({0}), contents());
    heap_.fail_after(1);
    EXPECT_EQ(RT_E_NOMEM, rtDListAppendArray(context_, &list_, numbers_ + 1, 2, sizeof(int)));
    EXPECT_EQ(Numbers({0, 1}), contents());
}

TEST_F(RtDList, LeavesNoBlockBehindAFailedCopy) {
    const size_t before = heap_.live_blocks();
    for (size_t n = 0; n < 4; ++n) {
        heap_.fail_after(n);
        EXPECT_EQ(RT_E_NOMEM, rtDListAppendArrayCopy(context_, &list_, numbers_, 2, sizeof(int))) << n;
        heap_.fail_after(SIZE_MAX);
        rtDListFreeAll(context_, &list_);
        EXPECT_EQ(before, heap_.live_blocks()) << n;
    }
}

TEST(RtSList, AppendsInOrderAndFreesItsNodes) {
    CodecHeap heap;
    CodecContext context;
    rtSList list;
    rtSListInitEx(context, &list);
    EXPECT_EQ(static_cast<ASN1CTXT*>(context), list.owner);
    const size_t before = heap.live_blocks();
    int numbers[] = {1, 2, 3};
    for (int& number : numbers) {
        ASSERT_NE(nullptr, rtSListAppend(&list, &number));
    }
    EXPECT_EQ(3u, list.count);
    EXPECT_EQ(&numbers[0], list.head->data);
    EXPECT_EQ(&numbers[1], list.head->next->data);
    EXPECT_EQ(&numbers[2], list.tail->data);
    EXPECT_EQ(nullptr, list.tail->next);
    EXPECT_EQ(before + 3, heap.live_blocks());
    rtSListFree(&list);
    EXPECT_EQ(before, heap.live_blocks());
    EXPECT_EQ(0u, list.count);
    EXPECT_EQ(nullptr, list.head);
    EXPECT_EQ(nullptr, list.tail);
    EXPECT_EQ(nullptr, list.owner);
}

TEST(RtSList, TakesPlainMemoryWithoutAnOwner) {
    CodecHeap heap;
    rtSList list;
    rtSListInitEx(nullptr, &list);
    int number = 1;
    ASSERT_NE(nullptr, rtSListAppend(&list, &number));
    EXPECT_EQ(0u, heap.allocations());
    rtSListFree(&list);
}

TEST(RtSList, GivesNullWithoutMemory) {
    CodecHeap heap;
    CodecContext context;
    rtSList list;
    rtSListInitEx(context, &list);
    heap.fail_after(0);
    EXPECT_EQ(nullptr, rtSListAppend(&list, nullptr));
    EXPECT_EQ(0u, list.count);
    rtSListFree(&list);
}

}  // namespace
}  // namespace Quillmark::test
