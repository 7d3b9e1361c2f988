// SPDX-License-Identifier: MIT
#include "engine/core/memory.h"

#include "tests/support/arena.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

namespace hdr {
namespace {

using Chain = test::Arena::Chain;

class ArenaAllocation : public testing::Test {
protected:
    void *allocate(uint64_t size) { return engineAlloc(arena.memory(), size); }
    uint8_t *reallocate(void *block, uint64_t size) {
        return static_cast<uint8_t *>(engineRealloc(arena.memory(), block, size));
    }
    void release(void *block) { engineFree(arena.memory(), block); }

    test::Arena arena{992};
};

TEST_F(ArenaAllocation, SplitsWhenTheRestIsWorthABlock) {
    EXPECT_EQ(allocate(0), nullptr);
    EXPECT_EQ(allocate(1000), nullptr);
    void *first = allocate(13); // raised to 16
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(arena.chain(), (Chain{{16, 1}, {960, 0}}));
    // 912 of 960 leaves 48 - 16 = 32: split. 920 would leave 24: handed out whole.
    void *second = allocate(912);
    EXPECT_EQ(arena.chain(), (Chain{{16, 1}, {912, 1}, {32, 0}}));
    release(second);
    EXPECT_EQ(arena.chain(), (Chain{{16, 1}, {960, 0}}));
    allocate(920);
    EXPECT_EQ(arena.chain(), (Chain{{16, 1}, {960, 1}}));
    release(first);
    EXPECT_EQ(arena.chain(), (Chain{{16, 0}, {960, 1}}));
}

TEST_F(ArenaAllocation, ReleaseMergesWithBothNeighbours) {
    void *a = allocate(64), *b = allocate(64), *c = allocate(64);
    allocate(64);
    release(b);
    release(a);
    EXPECT_EQ(arena.chain()[0], std::make_pair(int64_t{144}, uint64_t{0}));
    release(c);
    EXPECT_EQ(arena.chain()[0], std::make_pair(int64_t{224}, uint64_t{0}));
    // First fit takes the hole, even one that it fills.
    EXPECT_EQ(allocate(224), a);
}

TEST_F(ArenaAllocation, ReallocationShrinksGrowsAndMoves) {
    uint8_t *block = reallocate(nullptr, 96);
    void *guard = allocate(8);
    std::memset(block, 7, 96);
    // 96 - 48 - 16 = 32 is enough for an allocation's split but not for a shrink's.
    EXPECT_EQ(reallocate(block, 48), block);
    EXPECT_EQ(arena.chain()[0].first, 96);
    EXPECT_EQ(reallocate(block, 40), block);
    EXPECT_EQ(arena.chain()[0].first, 40);
    EXPECT_EQ(arena.chain()[1], std::make_pair(int64_t{40}, uint64_t{0}));
    // Growing in place wants the two payloads to hold the request without counting the header between them.
    EXPECT_EQ(reallocate(block, 80), block);
    EXPECT_EQ(arena.chain()[0], std::make_pair(int64_t{96}, uint64_t{1}));
    reallocate(block, 40);
    uint8_t *moved = reallocate(block, 88);
    ASSERT_NE(moved, nullptr);
    EXPECT_NE(moved, block);
    EXPECT_EQ(std::count(moved, moved + 40, 7), 40);
    EXPECT_EQ(arena.chain()[0].second, 0u);
    EXPECT_EQ(reallocate(moved, 0), nullptr);
    EXPECT_EQ(reallocate(moved, 5000), nullptr);
    release(moved);
    release(guard);
    release(nullptr);
    EXPECT_TRUE(arena.isEmpty());
    // What a shrink leaves joins the free block after it.
    EXPECT_EQ(reallocate(allocate(96), 40), block);
    EXPECT_EQ(arena.chain(), (Chain{{40, 1}, {936, 0}}));
}

} // namespace
} // namespace hdr
