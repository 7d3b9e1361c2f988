// SPDX-License-Identifier: MIT
// Connected regions of binary masks.
#pragma once

#include "engine/core/buffer.h"
#include "engine/core/offscreen.h"

#include <cstdint>
#include <span>

namespace hdr {

/// A mask's samples are kMaskSet or 0.
inline constexpr uint8_t kMaskSet = 255;

/// Finds the 8-connected regions of a mask, one after the other, in the row-major order of their first cells.
class RegionSearch {
public:
    /// Allocates for packed masks of width x height cells; test the object before use.
    RegionSearch(MemContext *memory, int width, int height);
    explicit operator bool() const { return pending && found; }

    /// Begins again with the cells of `mask` that are 255. The mask is copied: it may change during the
    /// search.
    void start(const uint8_t *mask);
    /// Moves on to the next region; false when there is none left.
    bool next();

    /// The current region's cells, as indices y * width + x, in no particular order; valid until the next
    /// call.
    std::span<const int32_t> cells() const { return {found.data(), static_cast<size_t>(count)}; }
    /// The smallest rectangle that holds the current region.
    const Rect &box() const { return bounds; }

private:
    void take(int x, int y);

    int width;
    int height;
    Buffer<uint8_t> pending; ///< [height][width]: not 0 where a cell belongs to a region not yet found
    Buffer<int32_t> found;   ///< room for every cell
    int scanned = 0;         ///< cells before this one are not pending any more
    int count = 0;
    Rect bounds = {};
};

} // namespace hdr
