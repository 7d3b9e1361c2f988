// SPDX-License-Identifier: MIT
// How much each exposure contributes to the merged luminance, on the analysis grid.
#pragma once

#include "engine/hdr_engine.h"

namespace hdr {

/// Framed grids (gridWidth x gridHeight). One allocation, owned through lumaWeightMid.
struct ExposureWeights {
    int16_t *lumaWeightMid; ///< 0..256, 256 is all
    int16_t *lumaWeightDark;
    int16_t *lumaWeightBright;
    uint8_t *ghostMaskA; ///< 255 where the middle exposure stands alone: dark or bright was removed
    uint8_t *ghostMaskB; ///< 255 where the dark exposure stands alone: bright was removed
    uint8_t *ghostMaskC; ///< 255 where the bright exposure was removed
    uint8_t *ghostMaskD; ///< 255 where the bright exposure stands alone

    void release(MemContext *memory);
};

/// Weights of one cell, 0..256; their sum is 256.
struct CellWeights {
    int mid, dark, bright;
};

/// Weights of a cell by its luminance (0..255) in the three exposures: the middle exposure gives the
/// mid-tones, the dark one its highlights and the bright one its shadows, unless that exposure is out of
/// range itself.
CellWeights baseWeights(int midLevel, int darkLevel, int brightLevel);

/// Frames the luminance grids, sets the base weights, runs ghost detection and fills the holes it leaves.
/// 0 or HDR_ERR_NOMEM.
HdrStatus exposure_weight_stage(MemContext *memory, HdrContext *context);

/// Clears negative weights, gives every cell without weight the middle exposure and a share of what its
/// neighbours have, and sets the middle weight to what the others leave of 256, save near the edges; the last
/// four rows repeat the one above them. Packed planes of width x height.
void fill_weight_holes(int16_t *mid, int16_t *dark, int16_t *bright, int width, int height);

} // namespace hdr
