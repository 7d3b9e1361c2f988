// SPDX-License-Identifier: MIT
// Input checking: exposure order, chroma grids, shifts and grid statistics.
#pragma once

#include "engine/core/offscreen.h"

#include <cstdint>

namespace hdr {

/// A shift beyond this many pixels makes the exposures unfit for merging.
inline constexpr int kLargestShift = 64;

/// What input checking leaves in the context, beside the scene analysis.
struct InputCheck {
    int32_t shiftSummary[4]; ///< dark x, dark y, bright x, bright y, in full-resolution pixels
    int32_t shiftTable[4];   ///< dark x, bright x, dark y, bright y
    int32_t coarseGridWidth; ///< ceil(width / 256) + 2
    int32_t coarseGridHeight;
    uint16_t *cellWeights[3]; ///< framed cell grids of the mid, dark and bright weights, zero until the merge
                              ///< tables are built
    int32_t gridPending;      ///< raised while the grids are being shifted
    int32_t toneMatchFlag;    ///< selects the dark exposure's shadow-offset rule of the merge tables
    int32_t renderMode;       ///< 2 when fewer than two inputs were given
    int32_t colourCorrection; ///< 0 when the dark exposure lies on the other side of neutral
    int32_t colourDifferenceU; ///< mean U of the reference minus that of the bright exposure
    int32_t colourDifferenceV;
    int32_t colourDifferenceDarkU; ///< mean U of the reference minus that of the dark exposure
    int32_t colourDifferenceDarkV;

    void release(MemContext *memory);
};

/// Confirms the exposure order, fills the chroma grids, records the shifts (earlyExitCode becomes
/// HDR_ERR_SHIFT beyond kLargestShift) and prepares the grid statistics. 0, HDR_ERR_NOMEM or HDR_ERR_ORDER.
HdrStatus hdrCheckInputs(MemContext *memory, HdrContext *context, const Offscreen *inputs);

} // namespace hdr
