// SPDX-License-Identifier: MIT
#include "engine/core/memory.h"

#include <cassert>
#include <cstdlib>
#include <cstring>

namespace hdr {

namespace {

constexpr int64_t kHeaderSize = sizeof(ArenaHeader);
static_assert(kHeaderSize == 16);

/// Smallest remainder of a free block that is worth a block of its own, and of a block that shrinks.
constexpr int64_t kSplitMinimum = 32;
constexpr int64_t kShrinkMinimum = 33;

ArenaHeader *firstHeader(MemContext *memory) {
    return reinterpret_cast<ArenaHeader *>(memory);
}
uint8_t *payloadOf(ArenaHeader *header) {
    return reinterpret_cast<uint8_t *>(header) + kHeaderSize;
}
ArenaHeader *nextHeader(ArenaHeader *header) {
    return reinterpret_cast<ArenaHeader *>(payloadOf(header) + header->size);
}
bool isEnd(const ArenaHeader *header) {
    return header->size == kArenaEnd;
}
bool isFree(const ArenaHeader *header) {
    return !isEnd(header) && header->inUse == 0;
}

/// The request as the arena serves it: its low 32 bits, raised to a multiple of 8 in 32-bit arithmetic.
int64_t arenaSize(uint64_t size) {
    return static_cast<uint32_t>(static_cast<uint32_t>(size) + 7u) & ~7u;
}

/// Cuts a block to `size` bytes when at least `minimum` bytes of payload remain; returns the new free block.
ArenaHeader *split(ArenaHeader *block, int64_t size, int64_t minimum) {
    const int64_t rest = block->size - size - kHeaderSize;
    if (rest < minimum)
        return nullptr;
    block->size = size;
    ArenaHeader *tail = nextHeader(block);
    tail->size = rest;
    tail->inUse = 0;
    return tail;
}

void mergeWithNext(ArenaHeader *block) {
    ArenaHeader *next = nextHeader(block);
    if (isFree(next))
        block->size += kHeaderSize + next->size;
}

/// The block that holds a payload, and the block before it (null for the first one).
struct Found {
    ArenaHeader *block;
    ArenaHeader *previous;
};

Found findBlock(MemContext *memory, void *pointer) {
    ArenaHeader *previous = nullptr;
    ArenaHeader *block = firstHeader(memory);
    while (payloadOf(block) != pointer) {
        assert(!isEnd(block) && "the pointer does not come from this arena");
        previous = block;
        block = nextHeader(block);
    }
    return {block, previous};
}

} // namespace

void *engineAlloc(MemContext *memory, uint64_t size) {
    if (!memory)
        return std::malloc(size);
    if (static_cast<uint32_t>(size) == 0)
        return nullptr;
    const int64_t request = arenaSize(size);
    for (ArenaHeader *block = firstHeader(memory); !isEnd(block); block = nextHeader(block)) {
        if (block->inUse == 0 && block->size >= request) {
            split(block, request, kSplitMinimum);
            block->inUse = 1;
            return payloadOf(block);
        }
    }
    return nullptr;
}

void *engineRealloc(MemContext *memory, void *pointer, uint64_t size) {
    if (!memory)
        return std::realloc(pointer, size);
    if (static_cast<uint32_t>(size) == 0)
        return nullptr;
    if (!pointer)
        return engineAlloc(memory, size);
    ArenaHeader *block = findBlock(memory, pointer).block;
    const int64_t request = arenaSize(size);
    if (block->size >= request) {
        if (ArenaHeader *tail = split(block, request, kShrinkMinimum))
            mergeWithNext(tail);
        return pointer;
    }
    ArenaHeader *next = nextHeader(block);
    if (isFree(next) && block->size + next->size >= request) {
        block->size += kHeaderSize + next->size;
        split(block, request, kSplitMinimum);
        return pointer;
    }
    void *moved = engineAlloc(memory, size);
    if (!moved)
        return nullptr;
    std::memcpy(moved, pointer, static_cast<size_t>(block->size));
    engineFree(memory, pointer);
    return moved;
}

void engineFree(MemContext *memory, void *pointer) {
    if (!memory) {
        std::free(pointer);
        return;
    }
    if (!pointer)
        return;
    const Found found = findBlock(memory, pointer);
    found.block->inUse = 0;
    mergeWithNext(found.block);
    if (found.previous && isFree(found.previous))
        found.previous->size += kHeaderSize + found.block->size;
}

void *engineMemset(void *pointer, int value, size_t count) {
    return std::memset(pointer, value, count);
}

void *engineMemcpy(void *destination, const void *source, size_t count) {
    return std::memcpy(destination, source, count);
}

} // namespace hdr
