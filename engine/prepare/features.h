// SPDX-License-Identifier: MIT
// Distinct points of the reference picture, and finding them again in another exposure.
#pragma once

#include "engine/prepare/alignment.h"
#include "engine/prepare/luma_pyramid.h"
#include "engine/prepare/motion_model.h"

#include <array>

namespace hdr {

/// The reference as alignment needs it: its luminance, and its features in reduced pixels.
struct FeatureGrid {
    LumaPyramid reference;
    int count = 0;
    std::array<Vector, kFeatureCapacity> features;
};

/// Finds up to `capacity` corners (Shi and Tomasi 1994) in a luminance plane, at least `distance` pixels from
/// each other, spread over `columns` x `rows` cells (at most 64): first each cell's share of the capacity,
/// then the strongest of the rest, then points beside them. `features` receives
/// them in pixels of the plane, `count` their number. Works on four threads. 0 or HDR_ERR_NOMEM.
HdrStatus findCorners(MemContext *memory, Plane<const uint8_t> luma, int columns, int rows, int distance,
                      int capacity, Vector *features, int &count);

/// A feature found again.
struct FeatureMatch {
    int feature; ///< its index
    Observation observation;
};

/// Looks for the reference's features in another exposure by the correlation of patches at one level of
/// resolution, up to `radius` of its pixels around where `expected` sees them. Only matches that are clearly
/// the best in their neighbourhood and lead back to their feature count. Works on four threads. Returns their
/// number.
int matchFeatures(const FeatureGrid &grid, const LumaPyramid &other, const Motion &expected, int level,
                  int radius, std::array<FeatureMatch, kFeatureCapacity> &matches);

/// Where the samples of a reduced pixel are centred in its block, nearly.
inline constexpr int kReducedCentre = 3;

/// The full-resolution position that a reduced pixel's samples are centred on.
Vector fullPosition(Vector reducedPixel);

} // namespace hdr
