// SPDX-License-Identifier: MIT
// The engine's allocation routines: the C heap, or a first-fit arena in memory that the caller supplies.
#pragma once

#include "engine/hdr_engine.h"

#include <cstddef>
#include <cstdint>

namespace hdr {

/// Header in front of every arena block's payload. A fresh arena of N bytes is one free block of N - 32 bytes
/// followed by a header whose size is kArenaEnd. A `MemContext *` points at the first header.
struct ArenaHeader {
    int64_t size;   ///< payload bytes, a multiple of 8, or kArenaEnd
    uint64_t inUse; ///< 1 while the block is handed out
};

inline constexpr int64_t kArenaEnd = -1;

/// Allocates `size` bytes, from the arena when there is one (then only the low 32 bits of the size count and
/// 0 gives null), else with malloc. Null when there is no room. Release with engineFree and the same context.
void *engineAlloc(MemContext *memory, uint64_t size);

/// As realloc: null when there is no room, the old block then stays valid.
void *engineRealloc(MemContext *memory, void *pointer, uint64_t size);

/// Releases a block of engineAlloc or engineRealloc of the same context; null is ignored.
void engineFree(MemContext *memory, void *pointer);

void *engineMemset(void *pointer, int value, size_t count);
void *engineMemcpy(void *destination, const void *source, size_t count);

/// Allocates `count` elements of T, not initialised; null when there is no room.
template <typename T>
T *allocateArray(MemContext *memory, size_t count) {
    return static_cast<T *>(engineAlloc(memory, count * sizeof(T)));
}

/// Allocates `count` elements of T with all bytes zero; null when there is no room.
template <typename T>
T *allocateZeroed(MemContext *memory, size_t count) {
    T *array = allocateArray<T>(memory, count);
    if (array)
        engineMemset(array, 0, count * sizeof(T));
    return array;
}

/// Releases the block that a field owns and clears the field, so that a clean-up can run twice.
template <typename T>
void releaseArray(MemContext *memory, T *&array) {
    engineFree(memory, const_cast<void *>(static_cast<const void *>(array)));
    array = nullptr;
}

} // namespace hdr
