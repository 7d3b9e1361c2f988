// SPDX-License-Identifier: MIT
#include "engine/core/memory.h"

#include <gtest/gtest.h>

#include <cstring>
#include <utility>
#include <vector>

namespace hdr {
namespace {

/// An arena in a vector, and its chain of blocks as (payload size, in use).
class Arena {
public:
    explicit Arena(size_t bytes) : words(bytes / 8) {
        header(0)->size = static_cast<int64_t>(bytes) - 32;
        header(0)->inUse = 0;
        header(bytes - 16)->size = kArenaEnd;
    }
    MemContext *context() { return reinterpret_cast<MemContext *>(words.data()); }

    using Chain = std::vector<std::pair<int64_t, uint64_t>>;
    Chain chain() {
        Chain blocks;
        for (size_t at = 0; header(at)->size != kArenaEnd; at += 16 + static_cast<size_t>(header(at)->size))
            blocks.emplace_back(header(at)->size, header(at)->inUse);
        return blocks;
    }

private:
    ArenaHeader *header(size_t offset) {
        return reinterpret_cast<ArenaHeader *>(reinterpret_cast<uint8_t *>(words.data()) + offset);
    }
    std::vector<uint64_t> words;
};

TEST(ArenaAllocation, SplitsWhenTheRestIsWorthABlock) {
    Arena arena(1024); // one free block of 992 bytes
    EXPECT_EQ(engineAlloc(arena.context(), 0), nullptr);
    EXPECT_EQ(engineAlloc(arena.context(), 1000), nullptr);
    void *first = engineAlloc(arena.context(), 13); // raised to 16
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(arena.chain(), (Arena::Chain{{16, 1}, {960, 0}}));
    // 912 of 960 leaves 48 - 16 = 32: split. 920 would leave 24: handed out whole.
    void *second = engineAlloc(arena.context(), 912);
    EXPECT_EQ(arena.chain(), (Arena::Chain{{16, 1}, {912, 1}, {32, 0}}));
    engineFree(arena.context(), second);
    EXPECT_EQ(arena.chain(), (Arena::Chain{{16, 1}, {960, 0}}));
    engineAlloc(arena.context(), 920);
    EXPECT_EQ(arena.chain(), (Arena::Chain{{16, 1}, {960, 1}}));
    engineFree(arena.context(), first);
    EXPECT_EQ(arena.chain(), (Arena::Chain{{16, 0}, {960, 1}}));
}

TEST(ArenaAllocation, ReleaseMergesWithBothNeighbours) {
    Arena arena(1024);
    void *a = engineAlloc(arena.context(), 64);
    void *b = engineAlloc(arena.context(), 64);
    void *c = engineAlloc(arena.context(), 64);
    engineAlloc(arena.context(), 64);
    engineFree(arena.context(), b);
    engineFree(arena.context(), a);
    EXPECT_EQ(arena.chain()[0], std::make_pair(int64_t{144}, uint64_t{0}));
    engineFree(arena.context(), c);
    EXPECT_EQ(arena.chain()[0], std::make_pair(int64_t{224}, uint64_t{0}));
    // First fit takes the hole.
    EXPECT_EQ(engineAlloc(arena.context(), 200), a);
}

TEST(ArenaAllocation, ReallocationShrinksGrowsAndMoves) {
    Arena arena(1024);
    uint8_t *block = static_cast<uint8_t *>(engineRealloc(arena.context(), nullptr, 96));
    void *guard = engineAlloc(arena.context(), 8);
    std::memset(block, 7, 96);
    // 96 - 48 - 16 = 32 is enough for an allocation's split but not for a shrink's.
    EXPECT_EQ(engineRealloc(arena.context(), block, 48), block);
    EXPECT_EQ(arena.chain()[0].first, 96);
    EXPECT_EQ(engineRealloc(arena.context(), block, 40), block);
    EXPECT_EQ(arena.chain()[0].first, 40);
    EXPECT_EQ(arena.chain()[1], std::make_pair(int64_t{40}, uint64_t{0}));
    // Growing in place wants the two payloads to hold the request without counting the header between them.
    EXPECT_EQ(engineRealloc(arena.context(), block, 80), block);
    EXPECT_EQ(arena.chain()[0], std::make_pair(int64_t{96}, uint64_t{1}));
    uint8_t *moved = static_cast<uint8_t *>(engineRealloc(arena.context(), block, 200));
    ASSERT_NE(moved, nullptr);
    EXPECT_NE(moved, block);
    EXPECT_EQ(moved[39], 7);
    EXPECT_EQ(arena.chain()[0].second, 0u);
    EXPECT_EQ(engineRealloc(arena.context(), moved, 0), nullptr);
    EXPECT_EQ(engineRealloc(arena.context(), moved, 5000), nullptr);
    engineFree(arena.context(), moved);
    engineFree(arena.context(), guard);
    engineFree(arena.context(), nullptr);
    EXPECT_EQ(arena.chain(), (Arena::Chain{{992, 0}}));
    // What a shrink leaves joins the free block after it.
    EXPECT_EQ(engineRealloc(arena.context(), engineAlloc(arena.context(), 96), 40), block);
    EXPECT_EQ(arena.chain(), (Arena::Chain{{40, 1}, {936, 0}}));
}

} // namespace
} // namespace hdr
