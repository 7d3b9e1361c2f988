// SPDX-License-Identifier: MIT
// Displacements of small blocks all over the picture, measured below a pixel.
#pragma once

#include "engine/prepare/luma_pyramid.h"
#include "engine/prepare/motion_model.h"
#include "engine/prepare/warp_field.h"

namespace hdr {

/// Where blocks are measured: columns x rows of them, spread evenly over the picture.
struct BlockLayout {
    int width, height; ///< of the picture
    int columns, rows;

    BlockLayout(int width, int height);
    int count() const { return columns * rows; }
};

/// Measures those of the layout's blocks first to end - 1 (numbered row by row) that are wanted, at one level
/// of resolution, each starting from where `expected` sees it: aligns it below a sample by Gauss-Newton steps
/// on the luminance difference, free of gain and offset (Lucas and Kanade 1981), over the samples that both
/// exposures show. `observations[i]` receives block i, with no information when it is not found or not
/// textured enough. Runs on four threads.
void measureBlocks(const LumaPyramid &reference, const LumaPyramid &other, const BlockLayout &layout,
                   int first, int end, int level, const WarpField &expected, const uint8_t *wanted,
                   Observation *observations);

} // namespace hdr
