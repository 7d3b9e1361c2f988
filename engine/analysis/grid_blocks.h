// SPDX-License-Identifier: MIT
// Mixing two reduced planes cell by cell under a mask of the analysis grid.
#pragma once

#include "engine/core/plane.h"

#include <cstdint>

namespace hdr {

// Mask cell (gx, gy) inside the one-cell frame governs reduced rows 4 (gy - 1) to 4 (gy - 1) + 3 and the same
// columns; the cells of the last column inside the frame reach to the right edge. Frame cells govern nothing.
// Source and destination have one size.

/// Copies the source where the mask is 0.
void copy_blocks_where_clear(Plane<uint8_t> destination, Plane<const uint8_t> source,
                             Plane<const uint8_t> mask);

/// Blends the source in with a weight of m / 128; from 129 on the source replaces the destination.
void blend_blocks_128(Plane<uint8_t> destination, Plane<const uint8_t> source, Plane<const uint8_t> mask);

/// Blends the source in with a weight of m / 255, divided by 256, so that every cell with m > 0 loses a
/// little brightness.
void blend_blocks_255(Plane<uint8_t> destination, Plane<const uint8_t> source, Plane<const uint8_t> mask);

} // namespace hdr
