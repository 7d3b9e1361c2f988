// SPDX-License-Identifier: MIT
// Refining the luminance offsets, patching ghosts and merging the reduced exposures.
#pragma once

#include "engine/core/plane.h"

#include <cstdint>

namespace hdr {

struct ExposureMerge {
    int32_t coarseWidth; ///< size of the quarter-scale offset planes
    int32_t coarseHeight;
};

/// Refines the offset maps and merges the reduced exposures into mergedImage, or falls back to a single
/// exposure when the run's earlyExitCode asks for it. 0 or HDR_ERR_NOMEM.
HdrStatus exposure_merge_stage(MemContext *memory, HdrContext *context);

/// An exposure's reduced luminance and its offset map (packed, of the same size).
struct OffsetExposure {
    Plane<const uint8_t> luma;
    int16_t *offsets;
};

/// Pulls the offsets of `patched` toward those that give it the corrected luminance of `reference`, with the
/// weight of the grid mask `mask` (gridWidth cells a row, 255 is all but 1/256).
void patch_offset_map(const uint8_t *mask, int gridWidth, const OffsetExposure &reference,
                      const OffsetExposure &patched);

/// Merges the three working pictures into mergedImage: luminance corrected by the offset maps and weighted by
/// the grid weights, chroma by the chroma weights, which it releases.
void merge_exposures(MemContext *memory, HdrContext *context);

} // namespace hdr
