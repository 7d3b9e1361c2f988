// SPDX-License-Identifier: MIT
// Luminance offsets at a quarter of the reduced size, smoothed along the edges of the merged picture.
#pragma once

#include "engine/core/arithmetic.h"
#include "engine/core/plane.h"

#include <cstdint>

namespace hdr {

/// Reduced samples across one coarse sample.
inline constexpr int kCoarseStep = 4;

/// Coarse samples across `reduced` reduced ones: one for each block begun, padded to a multiple of 4.
constexpr int coarseSize(int reduced) {
    return pad4(ceilDivide(reduced, kCoarseStep));
}

/// Fills `coarse`, of coarseSize in both directions, with the mean of four samples of each whole block of
/// 4 x 4 (truncated); columns and rows beyond the last whole block repeat the last one.
void reduce_to_coarse(Plane<const uint8_t> plane, Plane<int16_t> coarse);
void reduce_to_coarse(Plane<const int16_t> plane, Plane<int16_t> coarse);

/// Smooths `offsets` (0..511) in place along the edges of `guide` (0..255): the guided filter of He, Sun and
/// Tang (Guided Image Filtering, ECCV 2010) in integers, with windows of 9 x 9 samples that are clipped at
/// the edges. Packed or not, both planes have one size. Runs on four threads. 0, or HDR_ERR_NOMEM with the
/// offsets untouched.
HdrStatus coarse_guided_filter(MemContext *memory, Plane<const int16_t> guide, Plane<int16_t> offsets);

} // namespace hdr
