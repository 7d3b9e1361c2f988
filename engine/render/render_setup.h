// SPDX-License-Identifier: MIT
// Everything the four render bands need, and which part of the picture is valid.
#pragma once

#include "engine/core/offscreen.h"

namespace hdr {

/// A rectangle by corner and size, in pixels.
struct Area {
    int32_t x, y, width, height;
};

struct RenderSetup {
    Area workingRectangle; ///< rendered by the bands: the whole picture, width a multiple of 8, height even
    Area validRectangle;   ///< valid in all inputs, in multiples of 4 and 8
    Rect outputCrop;       ///< valid in all inputs, aligned inward to multiples of 16
};

/// Finds the crop, builds the merge tables and the tone and colour tables. 0 or a failing step's status.
HdrStatus render_setup(MemContext *memory, HdrContext *context, const Offscreen *inputs, int count,
                       Offscreen *outputs, int outputIndex);

/// Fills RenderSetup from the inputs' shifts and warp grids.
void compute_crop(HdrContext *context, int count, int width, int height);

} // namespace hdr
