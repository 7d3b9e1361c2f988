// SPDX-License-Identifier: MIT
// A small arena to run a stage in: makes allocations fail, and shows leaks.
#pragma once

#include "engine/core/memory.h"

#include <cassert>
#include <cstdint>
#include <utility>
#include <vector>

namespace hdr::test {

class Arena {
public:
    /// An empty arena whose largest block holds `bytes` (a multiple of 8).
    explicit Arena(size_t bytes) : words((bytes + 2 * sizeof(ArenaHeader)) / 8) {
        assert(bytes % 8 == 0);
        *first() = {static_cast<int64_t>(bytes), 0};
        auto *end = reinterpret_cast<ArenaHeader *>(reinterpret_cast<uint8_t *>(first() + 1) + bytes);
        *end = {kArenaEnd, 0};
        capacity = static_cast<int64_t>(bytes);
    }
    MemContext *memory() { return reinterpret_cast<MemContext *>(words.data()); }
    /// Whether everything that was allocated has been freed.
    bool isEmpty() { return first()->inUse == 0 && first()->size == capacity; }

    using Chain = std::vector<std::pair<int64_t, uint64_t>>;
    /// The blocks in order, as (payload size, in use).
    Chain chain() {
        Chain blocks;
        for (ArenaHeader *block = first(); block->size != kArenaEnd;) {
            blocks.emplace_back(block->size, block->inUse);
            block = reinterpret_cast<ArenaHeader *>(reinterpret_cast<uint8_t *>(block + 1) + block->size);
        }
        return blocks;
    }

private:
    ArenaHeader *first() { return reinterpret_cast<ArenaHeader *>(words.data()); }
    std::vector<uint64_t> words;
    int64_t capacity = 0;
};

} // namespace hdr::test
