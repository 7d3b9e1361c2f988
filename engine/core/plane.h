// SPDX-License-Identifier: MIT
// A non-owning view of one plane of samples.
#pragma once

#include "engine/hdr_engine.h"

#include <array>
#include <cassert>
#include <cstddef>
#include <type_traits>

namespace hdr {

/// `height` rows of `width` samples, `pitch` samples from one row to the next. Copies are cheap; the memory
/// belongs to somebody else and must outlive the view. Bounds are asserted in debug builds.
template <typename T>
struct Plane {
    T *data = nullptr;
    int width = 0;
    int height = 0;
    ptrdiff_t pitch = 0;

    Plane() = default;
    Plane(T *data, int width, int height, ptrdiff_t pitch)
        : data(data), width(width), height(height), pitch(pitch) {}
    /// A packed plane: its pitch is its width.
    Plane(T *data, int width, int height) : Plane(data, width, height, width) {}
    /// A view of const samples from one of mutable samples.
    template <typename U>
    requires std::is_same_v<const U, T> Plane(const Plane<U> &other)
        : Plane(other.data, other.width, other.height, other.pitch) {}

    T *row(int y) const {
        assert(y >= 0 && y < height);
        return data + y * pitch;
    }
    T &operator()(int x, int y) const {
        assert(x >= 0 && x < width);
        return row(y)[x];
    }
};

/// Plane `index` of an 8-bit planar picture whose planes all have the picture's size (HDR_FORMAT_YUV444, or
/// plane 0 of the other planar formats).
inline Plane<uint8_t> planeOf(const Offscreen &picture, int index = 0) {
    return {picture.ppu8Plane[index], picture.i32Width, picture.i32Height, picture.pi32Pitch[index]};
}

/// Row y of the three planes of an 8-bit planar 4:4:4 picture.
inline std::array<uint8_t *, 3> rowsOfPlanes(const Offscreen &picture, int y) {
    return {planeOf(picture, 0).row(y), planeOf(picture, 1).row(y), planeOf(picture, 2).row(y)};
}

} // namespace hdr
