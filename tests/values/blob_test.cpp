#include "values/blob.h"

#include <gtest/gtest.h>

#include <climits>
#include <initializer_list>
#include <limits>
#include <utility>
#include <vector>

#include "tests/support/failing_new.h"

namespace {

using Quillmark::CBlob;
using Quillmark::CBlobList;
using Quillmark::test::for_each_failing_new;

CBlob blob_of(std::initializer_list<unsigned char> bytes) {
    return CBlob(bytes.begin(), bytes.size());
}

std::vector<int> bytes_of(const CBlob& blob) {
    return {blob.pbData(), blob.pbData() + blob.cbData()};
}

TEST(CBlob, IsEmptyWithNullStorageByDefault) {
    const CBlob blob;
    EXPECT_EQ(blob.cbData(), 0u);
    EXPECT_EQ(blob.pbData(), nullptr);
}

TEST(CBlob, OfNullAndZeroIsEmptyWithNullStorage) {
    const CBlob blob(nullptr, 0);
    EXPECT_EQ(blob.cbData(), 0u);
    EXPECT_EQ(blob.pbData(), nullptr);
}

TEST(CBlob, OfASizeReadsAsZeroBytes) {
    EXPECT_EQ(bytes_of(CBlob(5)), (std::vector<int>{0, 0, 0, 0, 0}));
}

// Intended: an empty blob made by its size has storage, one made from bytes has none.
TEST(CBlob, OfSizeZeroHasStorage) {
    const CBlob blob(0ul);
    EXPECT_EQ(blob.cbData(), 0u);
    EXPECT_NE(blob.pbData(), nullptr);
}

TEST(CBlob, CopyOfAnEmptyBlobHasNullStorage) {
    const CBlob empty(0ul);
    const CBlob copy(empty);
    EXPECT_EQ(copy.pbData(), nullptr);
}

TEST(CBlob, CopiesDeeply) {
    CBlob source = blob_of({1, 2, 3});
    const CBlob copy(source);
    source.pbData()[0] = 9;
    EXPECT_EQ(bytes_of(copy), (std::vector<int>{1, 2, 3}));
}

TEST(CBlob, MovesItsStorage) {
    CBlob source = blob_of({1, 2, 3});
    const unsigned char* storage = source.pbData();
    CBlob taken(std::move(source));
    EXPECT_EQ(taken.pbData(), storage);
    EXPECT_EQ(bytes_of(taken), (std::vector<int>{1, 2, 3}));
    EXPECT_EQ(source.cbData(), 0u);
    EXPECT_EQ(source.pbData(), nullptr);

    CBlob target = blob_of({9});
    target = std::move(taken);
    EXPECT_EQ(target.pbData(), storage);
    EXPECT_EQ(taken.cbData(), 0u);
}

TEST(CBlob, MovedFromAnEmptyBlobHasNullStorage) {
    CBlob source(0ul);
    EXPECT_EQ(CBlob(std::move(source)).pbData(), nullptr);
    CBlob target = blob_of({1});
    target = CBlob(0ul);
    EXPECT_EQ(target.cbData(), 0u);
    EXPECT_EQ(target.pbData(), nullptr);
}

TEST(CBlob, AssignsFromInsideItself) {
    CBlob blob = blob_of({1, 2, 3, 4});
    blob.assign(blob.pbData() + 1, 2);
    EXPECT_EQ(bytes_of(blob), (std::vector<int>{2, 3}));
}

TEST(CBlob, AssigningNothingFreesTheStorage) {
    CBlob blob = blob_of({1});
    blob.assign(blob.pbData(), 0);
    EXPECT_EQ(blob.cbData(), 0u);
    EXPECT_EQ(blob.pbData(), nullptr);
}

TEST(CBlob, SurvivesSelfAssignment) {
    CBlob blob = blob_of({1, 2});
    const CBlob& same = blob;
    blob = same;
    EXPECT_EQ(bytes_of(blob), (std::vector<int>{1, 2}));
}

TEST(CBlob, ClearKeepsTheStorage) {
    CBlob blob = blob_of({1, 2});
    const unsigned char* storage = blob.pbData();
    blob.clear();
    EXPECT_EQ(blob.cbData(), 0u);
    EXPECT_EQ(blob.pbData(), storage);
    EXPECT_TRUE(blob == CBlob());
}

TEST(CBlob, ShrinkingKeepsTheStorage) {
    CBlob blob = blob_of({1, 2, 3});
    const unsigned char* storage = blob.pbData();
    blob.resize_to(2);
    EXPECT_EQ(blob.pbData(), storage);
    EXPECT_EQ(bytes_of(blob), (std::vector<int>{1, 2}));
}

TEST(CBlob, ResizingToItsSizeKeepsTheStorage) {
    CBlob blob = blob_of({1, 2, 3});
    const unsigned char* storage = blob.pbData();
    blob.resize_to(3);
    EXPECT_EQ(blob.pbData(), storage);
}

// Intended: there is no capacity on record, so room left by a shrink is not found again.
TEST(CBlob, GrowingAfterAShrinkReallocates) {
    CBlob blob = blob_of({1, 2, 3});
    const unsigned char* storage = blob.pbData();
    blob.resize_to(1);
    blob.resize_to(2);
    EXPECT_NE(blob.pbData(), storage);
    EXPECT_EQ(blob.cbData(), 2u);
    EXPECT_EQ(blob.pbData()[0], 1);
}

TEST(CBlob, GrowingAnEmptyBlobGivesThatManyBytes) {
    CBlob blob;
    blob.resize_to(5);
    EXPECT_EQ(blob.cbData(), 5u);
    EXPECT_NE(blob.pbData(), nullptr);
}

TEST(CBlob, SwapsSizesAndStorage) {
    CBlob left = blob_of({1});
    CBlob right = blob_of({2, 3});
    const unsigned char* storage = left.pbData();
    left.swap(right);
    EXPECT_EQ(bytes_of(left), (std::vector<int>{2, 3}));
    EXPECT_EQ(bytes_of(right), (std::vector<int>{1}));
    EXPECT_EQ(right.pbData(), storage);
}

TEST(CBlob, ReversesInPlace) {
    CBlob blob = blob_of({1, 2, 3});
    blob.reverse();
    EXPECT_EQ(bytes_of(blob), (std::vector<int>{3, 2, 1}));
}

TEST(CBlob, ReversingFewerThanTwoBytesDoesNothing) {
    CBlob empty;
    empty.reverse();
    EXPECT_EQ(empty.cbData(), 0u);
    CBlob one = blob_of({7});
    one.reverse();
    EXPECT_EQ(bytes_of(one), (std::vector<int>{7}));
}

TEST(CBlob, Appends) {
    CBlob blob = blob_of({1, 2});
    blob += blob_of({3});
    EXPECT_EQ(bytes_of(blob), (std::vector<int>{1, 2, 3}));
}

TEST(CBlob, AppendsNothing) {
    CBlob blob = blob_of({1, 2});
    const unsigned char* storage = blob.pbData();
    blob += CBlob();
    EXPECT_EQ(bytes_of(blob), (std::vector<int>{1, 2}));
    EXPECT_EQ(blob.pbData(), storage);
}

// Intended: what the second half holds is not defined.
TEST(CBlob, AppendedToItselfDoublesItsSize) {
    CBlob blob = blob_of({1, 2, 3});
    blob += blob;
    ASSERT_EQ(blob.cbData(), 6u);
    EXPECT_EQ(blob.pbData()[0], 1);
    EXPECT_EQ(blob.pbData()[2], 3);
}

struct OrderCase {
    const char* name;
    std::vector<unsigned char> smaller;
    std::vector<unsigned char> greater;
};

class CBlobOrder : public testing::TestWithParam<OrderCase> {};

TEST_P(CBlobOrder, HoldsInAllSixOperators) {
    const CBlob smaller(GetParam().smaller.data(), GetParam().smaller.size());
    const CBlob greater(GetParam().greater.data(), GetParam().greater.size());
    EXPECT_TRUE(smaller < greater);
    EXPECT_TRUE(smaller <= greater);
    EXPECT_TRUE(greater > smaller);
    EXPECT_TRUE(greater >= smaller);
    EXPECT_TRUE(smaller != greater);
    EXPECT_FALSE(smaller == greater);
    EXPECT_FALSE(greater < smaller);
    EXPECT_FALSE(greater <= smaller);
    EXPECT_FALSE(smaller > greater);
    EXPECT_FALSE(smaller >= greater);
}

INSTANTIATE_TEST_SUITE_P(Blobs, CBlobOrder,
                         testing::Values(OrderCase{"EmptyBeforeOneByte", {}, {0}},
                                         OrderCase{"PrefixBeforeLonger", {1}, {1, 0}},
                                         OrderCase{"FirstDifferentByteDecides", {1, 2, 9}, {1, 3}},
                                         OrderCase{"BytesAreUnsigned", {0x7F}, {0x80}}),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(CBlob, EmptyBlobsAreEqualWhateverTheirStorage) {
    const CBlob without_storage;
    const CBlob with_storage(0ul);
    EXPECT_TRUE(without_storage == with_storage);
    EXPECT_FALSE(without_storage != with_storage);
    EXPECT_TRUE(without_storage <= with_storage);
    EXPECT_TRUE(without_storage >= with_storage);
}

// Intended: the orderings take the size difference as a 32-bit number, equality does not. The storage of 4
// GiB is never touched but for its first byte.
TEST(CBlob, SizesAMultipleOfFourGibibytesApartRankEqualButDiffer) {
    CBlob small = blob_of({1});
    CBlob large;
    large.resize_to((1ul << 32) + 1);
    large.pbData()[0] = 1;
    EXPECT_FALSE(small < large);
    EXPECT_FALSE(large < small);
    EXPECT_TRUE(small <= large);
    EXPECT_FALSE(small == large);
}

TEST(CBlob, StaysAsItWasWhenMemoryRunsOut) {
    CBlob blob = blob_of({1, 2});
    const CBlob other = blob_of({3, 4, 5});
    const auto unchanged = [&] { EXPECT_EQ(bytes_of(blob), (std::vector<int>{1, 2})); };
    EXPECT_EQ(for_each_failing_new([&] { CBlob copy(blob); }, unchanged), 1u);
    EXPECT_EQ(for_each_failing_new([&] { CBlob(blob).resize_to(9); }, unchanged), 2u);
    EXPECT_EQ(for_each_failing_new([&] { blob += other; }, unchanged), 1u);
    blob.resize_to(2);
    EXPECT_EQ(for_each_failing_new([&] { blob = other; }, unchanged), 1u);
}

TEST(CBlob, RefusesASizeThatNoMemoryHolds) {
    CBlob blob = blob_of({1});
    EXPECT_THROW(blob.resize_to(std::numeric_limits<unsigned long>::max()), std::bad_alloc);
    EXPECT_EQ(bytes_of(blob), (std::vector<int>{1}));
}

TEST(CBlobList, KeepsInsertionOrder) {
    CBlobList list;
    EXPECT_TRUE(list.empty());
    list.push_back(blob_of({1}));
    list.push_back(blob_of({2}));
    EXPECT_EQ(list.size(), 2u);
    EXPECT_EQ(bytes_of(list.front()), (std::vector<int>{1}));
    EXPECT_EQ(bytes_of(list.back()), (std::vector<int>{2}));
}

TEST(CBlobList, CopiesDeeply) {
    CBlobList list;
    list.push_back(blob_of({1}));
    const CBlobList copy(list);
    list.front().pbData()[0] = 9;
    EXPECT_EQ(bytes_of(copy.front()), (std::vector<int>{1}));
}

TEST(CBlobList, SurvivesSelfAssignment) {
    CBlobList list;
    list.push_back(blob_of({1}));
    const CBlobList& same = list;
    list = same;
    EXPECT_EQ(list.size(), 1u);
}

TEST(CBlobList, FailedAssignmentLeavesTheListAsItWas) {
    CBlobList list;
    list.push_back(blob_of({1}));
    CBlobList other;
    other.push_back(blob_of({2}));
    other.push_back(blob_of({3}));
    const std::size_t failures =
        for_each_failing_new([&] { list = other; },
                             [&] {
                                 EXPECT_EQ(list.size(), 1u);
                                 EXPECT_EQ(bytes_of(list.front()), (std::vector<int>{1}));
                             });
    EXPECT_EQ(failures, 4u);
    EXPECT_EQ(list, other);
}

}  // namespace
