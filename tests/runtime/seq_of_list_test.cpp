#include "runtime/seq_of_list.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "tests/support/codec_heap.h"

namespace Quillmark::test {
namespace {

class SeqOfList : public testing::Test {
  protected:
    using Numbers = std::vector<int>;

    SeqOfList() : list_(*context_) {}

    void fill(int count) {
        for (int i = 0; i < count; ++i) {
            ASSERT_EQ(RT_OK, list_.append(&numbers_[i]));
        }
    }

    static Numbers contents(const ASN1CSeqOfList& list) {
        Numbers numbers;
        for (int i = 0; i < list.size(); ++i) {
            numbers.push_back(*static_cast<const int*>(list.get(i)));
        }
        return numbers;
    }
    Numbers contents() const { return contents(list_); }
    static int number(const void* element) {
        return element == nullptr ? -1 : *static_cast<const int*>(element);
    }

    CodecHeap heap_;
    ASN1CtxtPtr context_{new ASN1Context};
    ASN1CSeqOfList list_;
    int numbers_[10] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9};
};

class ASN1CSeqOfListTest : public SeqOfList {};

TEST_F(ASN1CSeqOfListTest, StartsEmpty) {
    EXPECT_TRUE(list_.isEmpty());
    EXPECT_EQ(0, list_.size());
    EXPECT_EQ(nullptr, list_.get(0));
    EXPECT_EQ(nullptr, list_.getFirst());
    EXPECT_EQ(nullptr, list_.getLast());
}

TEST_F(ASN1CSeqOfListTest, AppendsAndInserts) {
    fill(2);
    EXPECT_EQ(RT_OK, list_.insert(0, &numbers_[5]));
    EXPECT_EQ(RT_OK, list_.insert(3, &numbers_[6]));
    EXPECT_EQ(Numbers({5, 0, 1, 6}), contents());
    EXPECT_NE(RT_OK, list_.insert(5, &numbers_[7]));
    EXPECT_EQ(Numbers({5, 0, 1, 6}), contents());
    EXPECT_EQ(&numbers_[5], list_.getFirst());
    EXPECT_EQ(&numbers_[6], list_.getLast());
}

TEST_F(ASN1CSeqOfListTest, InsertsBesideANode) {
    ASN1TPDUSeqOfList record;
    ASN1CSeqOfList list(*context_, record);
    ASSERT_EQ(RT_OK, list.append(&numbers_[5]));
    EXPECT_EQ(RT_OK, list.insertBefore(record.head, &numbers_[4]));
    EXPECT_EQ(RT_OK, list.insertAfter(record.tail, &numbers_[7]));
    EXPECT_EQ(RT_OK, list.insertAfter(record.head->next, &numbers_[6]));
    EXPECT_EQ(Numbers({4, 5, 6, 7}), contents(list));
    EXPECT_EQ(RT_E_INVPARAM, list.insertBefore(nullptr, &numbers_[0]));
    EXPECT_EQ(RT_E_INVPARAM, list.insertAfter(nullptr, &numbers_[0]));
    EXPECT_EQ(4, list.size());
}

TEST_F(ASN1CSeqOfListTest, FindsByPointer) {
    fill(3);
    EXPECT_EQ(1, list_.indexOf(&numbers_[1]));
    EXPECT_EQ(-1, list_.indexOf(&numbers_[7]));
}

TEST_F(ASN1CSeqOfListTest, RemovesByIndexAndByPointer) {
    fill(4);
    EXPECT_EQ(RT_OK, list_.remove(1));
    EXPECT_EQ(Numbers({0, 2, 3}), contents());
    EXPECT_EQ(RT_OK, list_.remove(static_cast<void*>(&numbers_[3])));
    EXPECT_EQ(Numbers({0, 2}), contents());
    EXPECT_NE(RT_OK, list_.remove(2));
    EXPECT_NE(RT_OK, list_.remove(static_cast<void*>(&numbers_[9])));
    EXPECT_EQ(Numbers({0, 2}), contents());
}

TEST_F(ASN1CSeqOfListTest, ReplacesAnElement) {
    fill(2);
    EXPECT_EQ(RT_OK, list_.set(1, &numbers_[9]));
    EXPECT_EQ(Numbers({0, 9}), contents());
    EXPECT_NE(RT_OK, list_.set(2, &numbers_[9]));
}

TEST_F(ASN1CSeqOfListTest, AppendsArrays) {
    EXPECT_EQ(RT_OK, list_.appendArray(numbers_, 2, sizeof(int)));
    EXPECT_EQ(RT_OK, list_.appendArrayCopy(numbers_ + 2, 2, sizeof(int)));
    numbers_[0] = 90;
    numbers_[2] = 92;
    EXPECT_EQ(Numbers({90, 1, 2, 3}), contents());  // the first two stayed in place
}

TEST_F(ASN1CSeqOfListTest, RefusesArraysOfNegativeSize) {
    EXPECT_EQ(RT_E_INVPARAM, list_.appendArray(numbers_, -1, sizeof(int)));
    EXPECT_EQ(RT_E_INVPARAM, list_.appendArray(numbers_, 1, -1));
    EXPECT_EQ(RT_E_INVPARAM, list_.appendArrayCopy(numbers_, -1, sizeof(int)));
    EXPECT_EQ(RT_E_INVPARAM, list_.appendArrayCopy(numbers_, 1, -1));
    EXPECT_TRUE(list_.isEmpty());
}

TEST_F(ASN1CSeqOfListTest, ClearKeepsTheElementsAndFreeAllFreesThem) {
    fill(3);
    list_.clear();
    EXPECT_TRUE(list_.isEmpty());
    const size_t before = heap_.live_blocks();
    ASSERT_EQ(RT_OK, list_.appendArrayCopy(numbers_, 3, sizeof(int)));
    list_.freeAll();
    EXPECT_TRUE(list_.isEmpty());
    EXPECT_EQ(before, heap_.live_blocks());
}

TEST_F(ASN1CSeqOfListTest, CopiesToArrays) {
    fill(3);
    const auto* array = static_cast<const int*>(list_.toArray(sizeof(int)));
    ASSERT_NE(nullptr, array);
    EXPECT_EQ(Numbers({0, 1, 2}), Numbers(array, array + 3));
    int target[3];
    EXPECT_EQ(target, list_.toArray(target, sizeof(int), 3));
    EXPECT_EQ(Numbers({0, 1, 2}), Numbers(target, target + 3));
    EXPECT_EQ(nullptr, list_.toArray(target, sizeof(int), 2));
}

TEST_F(ASN1CSeqOfListTest, WorksOnTheCallersList) {
    ASN1TPDUSeqOfList record;
    {
        ASN1CSeqOfList wrapper(*context_, record, 1);
        ASSERT_EQ(RT_OK, wrapper.append(&numbers_[4]));
    }
    ASSERT_EQ(1u, record.count);  // the nodes stay with their owner
    EXPECT_EQ(&numbers_[4], record.head->data);
    ASN1CSeqOfList again(*context_, record);
    EXPECT_EQ(Numbers({4}), contents(again));
}

TEST_F(ASN1CSeqOfListTest, InitialisesTheCallersListOnDemand) {
    _Asn1RTDList record = {.count = 77, .head = nullptr, .tail = nullptr};
    const ASN1CSeqOfList wrapper(*context_, record, 1);
    EXPECT_EQ(0u, record.count);
}

TEST_F(ASN1CSeqOfListTest, FreesItsOwnListAndNodes) {
    const size_t before = heap_.live_blocks();
    {
        ASN1CSeqOfList own(*context_);
        ASSERT_EQ(RT_OK, own.append(&numbers_[0]));
        EXPECT_LT(before, heap_.live_blocks());
    }
    EXPECT_EQ(before, heap_.live_blocks());
}

TEST_F(ASN1CSeqOfListTest, SharesTheContextOfABuffer) {
    ASN1BEREncodeBuffer buffer;
    ASN1CSeqOfList list(buffer);
    EXPECT_EQ(buffer.getCtxtPtr(), list.getCtxtPtr());
    EXPECT_EQ(RT_OK, list.append(&numbers_[0]));
}

TEST_F(ASN1CSeqOfListTest, WorksOnTheCallersListInTheContextOfABuffer) {
    ASN1BEREncodeBuffer buffer;
    ASN1TPDUSeqOfList record;
    ASN1CSeqOfList first(buffer, record);
    EXPECT_EQ(buffer.getCtxtPtr(), first.getCtxtPtr());
    ASSERT_EQ(RT_OK, first.append(&numbers_[4]));
    EXPECT_EQ(&numbers_[4], record.head->data);
    _Asn1RTDList& plain_record = record;
    EXPECT_EQ(Numbers({4}), contents(ASN1CSeqOfList(buffer, plain_record)));
    EXPECT_TRUE(ASN1CSeqOfList(buffer, plain_record, 1).isEmpty());
    EXPECT_EQ(0u, record.count);
}

TEST_F(ASN1CSeqOfListTest, StaysUsableWithoutMemory) {
    heap_.fail_after(0);
    ASN1CSeqOfList list(*context_);
    EXPECT_TRUE(list.isEmpty());
    EXPECT_EQ(RT_E_NOMEM, list.append(&numbers_[0]));
    EXPECT_EQ(RT_E_NOMEM, list.appendArray(numbers_, 1, sizeof(int)));
    EXPECT_EQ(RT_E_NOMEM, list.appendArrayCopy(numbers_, 1, sizeof(int)));
    EXPECT_EQ(RT_E_NOMEM, list.insert(0, &numbers_[0]));
    EXPECT_EQ(RT_E_INVPARAM, list.remove(0));
    EXPECT_EQ(RT_E_INVPARAM, list.set(0, &numbers_[0]));
    EXPECT_EQ(-1, list.indexOf(&numbers_[0]));
    EXPECT_EQ(nullptr, list.get(0));
    EXPECT_EQ(nullptr, list.toArray(sizeof(int)));
    list.clear();
    list.freeAll();
    EXPECT_EQ(nullptr, list.iterator().next());
    EXPECT_EQ(nullptr, list.iteratorFromLast().prev());
    EXPECT_EQ(nullptr, list.iteratorFrom(&numbers_[0]).next());
}

TEST_F(ASN1CSeqOfListTest, GivesNoArrayWithoutMemory) {
    fill(2);
    heap_.fail_after(0);
    EXPECT_EQ(nullptr, list_.toArray(sizeof(int)));
    EXPECT_EQ(RT_E_NOMEM, context_->errInfo.status);
}

class ASN1CSeqOfListIteratorTest : public SeqOfList {};

TEST_F(ASN1CSeqOfListIteratorTest, WalksForward) {
    fill(3);
    ASN1CSeqOfListIterator position = list_.iterator();
    EXPECT_EQ(0, number(position.next()));
    EXPECT_EQ(1, number(position.next()));
    EXPECT_EQ(2, number(position.next()));
    EXPECT_EQ(RT_OK, position.getStat());
    EXPECT_EQ(nullptr, position.next());
    EXPECT_EQ(-8, position.getStat());
}

TEST_F(ASN1CSeqOfListIteratorTest, WalksBackwardFromTheLast) {
    fill(3);
    ASN1CSeqOfListIterator position = list_.iteratorFromLast();
    // Intended: without a `next` before it does not step first.
    EXPECT_EQ(2, number(position.prev()));
    EXPECT_EQ(1, number(position.prev()));
    EXPECT_EQ(0, number(position.prev()));
    EXPECT_EQ(nullptr, position.prev());
    EXPECT_EQ(-8, position.getStat());
}

TEST_F(ASN1CSeqOfListIteratorTest, StepsBeforeItReturns) {
    fill(3);
    ASN1CSeqOfListIterator position = list_.iterator();
    position.next();
    position.next();
    EXPECT_EQ(0, number(position.prev()));
}

TEST_F(ASN1CSeqOfListIteratorTest, StartsAtAnElement) {
    fill(3);
    ASN1CSeqOfListIterator position = list_.iteratorFrom(&numbers_[1]);
    EXPECT_EQ(1, number(position.next()));
    EXPECT_EQ(2, number(position.next()));
}

TEST_F(ASN1CSeqOfListIteratorTest, FailsAfterAChangeBehindIt) {
    fill(2);
    ASN1CSeqOfListIterator position = list_.iterator();
    position.next();
    ASSERT_EQ(RT_OK, list_.append(&numbers_[5]));
    EXPECT_EQ(nullptr, position.next());
    EXPECT_EQ(-27, position.getStat());
    EXPECT_EQ(nullptr, position.prev());
    EXPECT_EQ(-27, position.remove());
    EXPECT_EQ(-27, position.set(&numbers_[6]));
    EXPECT_EQ(-27, position.insert(&numbers_[6]));
    EXPECT_EQ(Numbers({0, 1, 5}), contents());
}

TEST_F(ASN1CSeqOfListIteratorTest, NoticesEveryKindOfChange) {
    fill(6);
    const auto stale_after = [this](auto change) {
        ASN1CSeqOfListIterator position = list_.iterator();
        change();
        return position.next() == nullptr && position.getStat() == -27;
    };
    EXPECT_TRUE(stale_after([this] { list_.insert(0, &numbers_[9]); }));
    EXPECT_TRUE(stale_after([this] { list_.remove(0); }));
    EXPECT_TRUE(stale_after([this] { list_.set(0, &numbers_[9]); }));
    EXPECT_TRUE(stale_after([this] { list_.appendArray(numbers_, 1, sizeof(int)); }));
    EXPECT_TRUE(stale_after([this] { list_.clear(); }));
}

TEST_F(ASN1CSeqOfListIteratorTest, RemovesWhatItReturnedLast) {
    fill(3);
    ASN1CSeqOfListIterator position = list_.iterator();
    EXPECT_EQ(-28, position.remove());
    position.next();
    position.next();
    EXPECT_EQ(RT_OK, position.remove());
    EXPECT_EQ(Numbers({0, 2}), contents());
    EXPECT_EQ(-28, position.remove());
    EXPECT_EQ(2, number(position.next()));  // it knows of its own change
}

TEST_F(ASN1CSeqOfListIteratorTest, ReplacesWhatItReturnedLast) {
    fill(2);
    ASN1CSeqOfListIterator position = list_.iterator();
    EXPECT_EQ(-28, position.set(&numbers_[9]));
    position.next();
    EXPECT_EQ(RT_OK, position.set(&numbers_[9]));
    EXPECT_EQ(Numbers({9, 1}), contents());
}

TEST_F(ASN1CSeqOfListIteratorTest, InsertsAndGoesOn) {
    fill(2);
    ASN1CSeqOfListIterator position = list_.iterator();
    position.next();
    EXPECT_EQ(RT_OK, position.insert(&numbers_[9]));
    EXPECT_EQ(Numbers({0, 9, 1}), contents());
    EXPECT_EQ(1, number(position.next()));
}

TEST_F(ASN1CSeqOfListIteratorTest, GoesBackToWhatItInserted) {
    fill(2);
    ASN1CSeqOfListIterator position = list_.iterator();
    position.next();
    ASSERT_EQ(RT_OK, position.insert(&numbers_[8]));
    EXPECT_EQ(8, number(position.prev()));
    position.next();
    position.next();
    ASSERT_EQ(RT_OK, position.insert(&numbers_[9]));
    EXPECT_EQ(Numbers({0, 8, 1, 9}), contents());
    EXPECT_EQ(9, number(position.prev()));
}

TEST_F(ASN1CSeqOfListIteratorTest, StaysWhereItIsWithoutMemory) {
    fill(2);
    ASN1CSeqOfListIterator position = list_.iterator();
    position.next();
    heap_.fail_after(0);
    EXPECT_EQ(RT_E_NOMEM, position.insert(&numbers_[9]));
    EXPECT_EQ(RT_E_NOMEM, position.getStat());
    EXPECT_EQ(1, number(position.next()));
    EXPECT_EQ(Numbers({0, 1}), contents());
}

}  // namespace
}  // namespace Quillmark::test
