// SPDX-License-Identifier: MIT
// An owned temporary array that comes from the engine's allocator and frees itself.
#pragma once

#include "engine/core/memory.h"

#include <cassert>
#include <utility>

namespace hdr {

/// Move-only owner of an array of T (a plain type). Empty when its allocation failed: test it before use.
template <typename T>
class Buffer {
public:
    Buffer() = default;
    /// Allocates `count` elements with unspecified contents.
    Buffer(MemContext *memory, size_t count)
        : memory(memory), elements(allocateArray<T>(memory, count)), count(elements ? count : 0) {}
    Buffer(Buffer &&other) noexcept
        : memory(other.memory), elements(std::exchange(other.elements, nullptr)),
          count(std::exchange(other.count, 0)) {}
    Buffer &operator=(Buffer &&other) noexcept {
        std::swap(memory, other.memory);
        std::swap(elements, other.elements);
        std::swap(count, other.count);
        return *this;
    }
    Buffer(const Buffer &) = delete;
    Buffer &operator=(const Buffer &) = delete;
    ~Buffer() { engineFree(memory, elements); }

    /// Allocates `count` elements with all bytes zero.
    static Buffer zeroed(MemContext *memory, size_t count) {
        Buffer buffer(memory, count);
        if (buffer)
            engineMemset(buffer.elements, 0, count * sizeof(T));
        return buffer;
    }

    explicit operator bool() const { return elements != nullptr; }
    T *data() { return elements; }
    const T *data() const { return elements; }
    size_t size() const { return count; }
    T &operator[](size_t index) {
        assert(index < count);
        return elements[index];
    }
    const T &operator[](size_t index) const {
        assert(index < count);
        return elements[index];
    }
    T *begin() { return elements; }
    T *end() { return elements + count; }
    const T *begin() const { return elements; }
    const T *end() const { return elements + count; }

    /// Hands the array over to the caller, who frees it with engineFree.
    T *release() {
        count = 0;
        return std::exchange(elements, nullptr);
    }

private:
    MemContext *memory = nullptr;
    T *elements = nullptr;
    size_t count = 0;
};

} // namespace hdr
