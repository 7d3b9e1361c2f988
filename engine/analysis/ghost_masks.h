// SPDX-License-Identifier: MIT
// Morphology on binary masks, and the reduction of reduced pictures to the analysis grid.
#pragma once

#include "engine/core/plane.h"
#include "engine/core/region_search.h"

#include <cstdint>

namespace hdr {

/// Erosion of a mask by its four direct neighbours, in place, `iterations` times: a set pixel beside a clear
/// one is cleared. Beyond the frame there is nothing, so the frame itself does not erode.
void erode_mask4(Plane<uint8_t> mask, int iterations);

/// Dilation of a mask by its four direct neighbours, in place, `iterations` times: a clear pixel beside a set
/// one is set. Only the corners look at pixels set in the same iteration: a top corner is set by two of them,
/// a bottom corner by one. The mask is at least 3 x 3.
void dilate_mask4(Plane<uint8_t> mask, int iterations);

/// Dilation of a mask by its eight neighbours, in place: every pixel of the 3 x 3 square around a set one is
/// set.
void dilateMask8(Plane<uint8_t> mask);

/// Copies every set pixel of `source` inside the frame to `destination`, cleared when fewer than two of its
/// four direct neighbours are set; nothing else is written. Masks of one size that do not overlap.
void remove_isolated(Plane<const uint8_t> source, Plane<uint8_t> destination);

/// Gives each cell of a framed grid the mean (truncated) of rows 0 and 2 of its 4 x 4 block of the picture.
/// Cells whose block is not wholly inside the picture, and the frame, are left alone.
void reduce_block_mean8(Plane<const uint8_t> picture, Plane<uint8_t> grid);

} // namespace hdr
