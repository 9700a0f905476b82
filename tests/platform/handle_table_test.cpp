// The table of handles by itself: what a handle is, when its object goes, and what stale handles answer.

#include "platform/detail/handle_table.h"

#include <atomic>
#include <set>
#include <thread>
#include <vector>

#include "tests/platform/service.h"

namespace Quillmark::test {
namespace {

// Counts how many are alive.
struct Thing {
    explicit Thing(std::atomic<int>& counter) : alive(counter) { ++alive; }
    ~Thing() { --alive; }
    Thing(const Thing&) = delete;
    Thing& operator=(const Thing&) = delete;
    std::atomic<int>& alive;
};

// A table lives as long as the process, so tests make theirs without an end.
template <typename Table = HandleTable<Thing>>
Table& make_table() {
    static auto& tables = *new std::vector<Table*>;  // keeps them reachable for the leak check
    return *tables.emplace_back(new Table(5));
}

class Handles : public testing::Test {
  protected:
    std::uint64_t add() { return table_.add(std::make_shared<Thing>(alive_)); }

    std::atomic<int> alive_{0};
    HandleTable<Thing>& table_ = make_table();
};

TEST_F(Handles, CarryKindGenerationAndSlot) {
    EXPECT_EQ(add(), 0x5000'0001'0000'0000u);
    EXPECT_EQ(add(), 0x5000'0001'0000'0001u);
}

TEST_F(Handles, EndWithTheLastReference) {
    const std::uint64_t handle = add();
    EXPECT_EQ(table_.add_reference(handle), ERROR_SUCCESS);
    EXPECT_EQ(table_.release(handle), ERROR_SUCCESS);
    EXPECT_EQ(alive_, 1);
    EXPECT_EQ(table_.release(handle), ERROR_SUCCESS);
    EXPECT_EQ(alive_, 0);
    EXPECT_EQ(table_.release(handle), ERROR_INVALID_HANDLE);
    EXPECT_EQ(table_.add_reference(handle), ERROR_INVALID_HANDLE);
    EXPECT_FALSE(table_.pin(handle));
}

TEST_F(Handles, KeepTheObjectWhileACallRuns) {
    const std::uint64_t handle = add();
    {
        const auto pin = table_.pin(handle);
        ASSERT_TRUE(pin);
        EXPECT_EQ(table_.release(handle), ERROR_SUCCESS);
        EXPECT_EQ(alive_, 1);
        EXPECT_FALSE(table_.pin(handle)) << "a closed handle takes no new call";
        EXPECT_EQ(table_.release(handle), ERROR_INVALID_HANDLE);
    }
    EXPECT_EQ(alive_, 0);
}

TEST_F(Handles, UseASlotAgainWithTheNextGeneration) {
    const std::uint64_t first = add();
    table_.release(first);
    const std::uint64_t second = add();
    EXPECT_EQ(second, first + 0x1'0000'0000u);
    EXPECT_FALSE(table_.pin(first));
    EXPECT_TRUE(table_.pin(second));
}

TEST_F(Handles, UseTheSlotThatIsFreeForLongestFirst) {
    const std::uint64_t a = add();
    const std::uint64_t b = add();
    const std::uint64_t c = add();
    table_.release(b);
    table_.release(a);
    table_.release(c);
    EXPECT_EQ(add() & 0xFFFFFFFF, b & 0xFFFFFFFF);
    EXPECT_EQ(add() & 0xFFFFFFFF, a & 0xFFFFFFFF);
    EXPECT_EQ(add() & 0xFFFFFFFF, c & 0xFFFFFFFF);
}

TEST(HandleSlot, IsNotTakenAgainAfterItsLastGeneration) {
    auto& table = make_table<HandleTable<Thing, 3>>();
    std::atomic<int> alive{0};
    std::vector<std::uint64_t> used;
    for (int i = 0; i < 4; ++i) {
        used.push_back(table.add(std::make_shared<Thing>(alive)));
        EXPECT_TRUE(table.pin(used.back()));
        EXPECT_EQ(table.release(used.back()), ERROR_SUCCESS);
    }
    EXPECT_EQ(used, (std::vector<std::uint64_t>{0x5000'0001'0000'0000u, 0x5000'0002'0000'0000u,
                                                0x5000'0003'0000'0000u, 0x5000'0001'0000'0001u}));
    EXPECT_EQ(alive, 0);
    for (const std::uint64_t stale : used) {
        EXPECT_FALSE(table.pin(stale)) << std::hex << stale;
        EXPECT_EQ(table.add_reference(stale), ERROR_INVALID_HANDLE) << std::hex << stale;
        EXPECT_EQ(table.release(stale), ERROR_INVALID_HANDLE) << std::hex << stale;
    }
}

TEST_F(Handles, ThatWereNeverGivenOutAreInvalid) {
    const std::uint64_t handle = add();
    const std::vector<std::uint64_t> numbers = {0,
                                                1,
                                                handle + 1,
                                                handle + 300,
                                                handle | 0xFFFFFFFF,
                                                handle ^ (1ull << 60),
                                                handle ^ (1ull << 32),
                                                handle + (1ull << 32),
                                                ~0ull,
                                                0x5000'0000'0000'0000,
                                                0x5000'0001'FFFF'FEFF,
                                                0x5000'0001'FFFF'FF00};
    for (const std::uint64_t garbage : numbers) {
        EXPECT_FALSE(table_.pin(garbage)) << std::hex << garbage;
        EXPECT_EQ(table_.release(garbage), ERROR_INVALID_HANDLE) << std::hex << garbage;
        EXPECT_EQ(table_.add_reference(garbage), ERROR_INVALID_HANDLE) << std::hex << garbage;
    }
    EXPECT_TRUE(table_.pin(handle));
}

TEST_F(Handles, AreDistinctOverManyChunks) {
    std::set<std::uint64_t> handles;
    for (int i = 0; i < 5000; ++i) {
        handles.insert(add());
    }
    EXPECT_EQ(handles.size(), 5000u);
    for (const std::uint64_t handle : handles) {
        ASSERT_TRUE(table_.pin(handle));
    }
    for (const std::uint64_t handle : handles) {
        ASSERT_EQ(table_.release(handle), ERROR_SUCCESS);
    }
    EXPECT_EQ(alive_, 0);
}

template <typename Work>
void run_in_four_threads(Work&& work) {
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back(work);
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

TEST_F(Handles, CloseExactlyOnceWhenFourThreadsTry) {
    for (int round = 0; round < 500; ++round) {
        const std::uint64_t handle = add();
        std::atomic<int> closed{0};
        run_in_four_threads([&] {
            const auto pin = table_.pin(handle);
            if (pin) {
                EXPECT_GE(pin->alive.load(), 1);
            }
            closed += table_.release(handle) == ERROR_SUCCESS ? 1 : 0;
        });
        ASSERT_EQ(closed, 1);
        ASSERT_EQ(alive_, 0);
    }
}

TEST_F(Handles, ServeFourThreadsThatOpenUseAndClose) {
    run_in_four_threads([&] {
        for (int i = 0; i < 5000; ++i) {
            const std::uint64_t handle = add();
            EXPECT_TRUE(table_.pin(handle));
            EXPECT_EQ(table_.release(handle), ERROR_SUCCESS);
            EXPECT_FALSE(table_.pin(handle));
        }
    });
    EXPECT_EQ(alive_, 0);
}

TEST_F(Handles, TakeCallsWhileReferencesComeAndGo) {
    const std::uint64_t handle = add();
    run_in_four_threads([&] {
        for (int i = 0; i < 5000; ++i) {
            EXPECT_EQ(table_.add_reference(handle), ERROR_SUCCESS);
            EXPECT_TRUE(table_.pin(handle));
            EXPECT_EQ(table_.release(handle), ERROR_SUCCESS);
        }
    });
    EXPECT_EQ(alive_, 1);
    EXPECT_EQ(table_.release(handle), ERROR_SUCCESS);
    EXPECT_EQ(alive_, 0);
}

}  // namespace
}  // namespace Quillmark::test
