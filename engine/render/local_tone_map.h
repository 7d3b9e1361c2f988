// SPDX-License-Identifier: MIT
// How far each region of the picture is to be lifted.
#pragma once

#include "engine/core/buffer.h"
#include "engine/core/plane.h"
#include "engine/hdr_engine.h"

#include <cstdint>

namespace hdr {

struct LocalToneMap {
    int16_t *map;   ///< packed width x height: positive where a block is to be lifted. Owned.
    int32_t width;  ///< picture width / 8
    int32_t height; ///< picture height / 8

    void release(MemContext *memory);
};

/// Computes the map from mergedImage's luminance and the merge tables for a picture of width x height pixels.
/// 0, or HDR_ERR_NOMEM with the previous map kept.
HdrStatus build_local_tone_map(MemContext *memory, HdrContext *context, int width, int height);

/// Turns a packed plane of log luminances (1024 ln) into the map, in place: how far each sample lies below
/// the target level, plus its local detail in units of the local contrast. 0 or HDR_ERR_NOMEM.
HdrStatus normalize_local_contrast(MemContext *memory, Plane<int16_t> logImage);

/// Working memory of pyramid_smooth for planes of one size.
struct PyramidScratch {
    Buffer<int16_t> levels;
    Buffer<int32_t> rows; ///< two rows of the widest level, each with two samples to spare at either end

    PyramidScratch(MemContext *memory, int width, int height);
    explicit operator bool() const { return levels && rows; }
};

/// Multi-scale smoothing of a packed plane: halves it down to one row or column and rebuilds it from there,
/// each finer level weighing less. Destination and source have one size and may be the same plane. A plane
/// too thin for the scratch, or below 2 x 2, is copied.
void pyramid_smooth(PyramidScratch &scratch, Plane<const int16_t> source, Plane<int16_t> destination);

/// Mean of the rows' means, each an integer division.
int plane_mean(Plane<const int16_t> plane);

/// Halves a plane of at least 2 x 2 by averaging 2 x 2 samples into `half`, whose sides are rounded up: an
/// odd last column is averaged with its left neighbour, an odd last row counts twice. Returns the mean of
/// `half`.
double downsample_2x2(Plane<const int16_t> plane, Plane<int16_t> half);

/// Writes coarse x coarseWeight + fine x fineWeight to `output`, with `coarse` smoothed (in place) and then
/// upsampled by 2. `output` has fine's size and may be fine; coarse has half of it, rounded up.
void upsample_blend(Plane<int16_t> coarse, Plane<const int16_t> fine, Plane<int16_t> output,
                    double coarseWeight, double fineWeight, Buffer<int32_t> &rows);

} // namespace hdr
