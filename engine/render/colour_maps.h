// SPDX-License-Identifier: MIT
// Chroma offsets that carry each exposure's colour to that of the tone-mapped merge.
#pragma once

#include "engine/core/offscreen.h"

namespace hdr {

/// Applies the local tone gain to mergedImage, scaling its chroma with its luminance, and fills
/// correctionMaps 3 to 8 (packed): for each exposure the U and V offsets from its own reduced chroma to that
/// of the tone-mapped merge. 0, or HDR_ERR_NOMEM without gains (detail-gain table and local tone map) or
/// memory for the masks; the maps are then zero.
HdrStatus build_colour_maps(MemContext *memory, HdrContext *context);

/// Bilinear upsampling of an 8-bit grid by 2^shift into a plane of width x height, or into the rectangle of
/// it when there is one. Grid column j lies at column j * 2^shift, grid row r at row (r + 1) * 2^shift; the
/// edges are replicated. Shift 0 copies the grid. Pitches are in samples.
void upsample_grid_u8(uint8_t *destination, int width, int height, int pitch, const uint8_t *grid,
                      int gridColumns, int gridRows, int gridPitch, const Rect *rectangle, int shift);

} // namespace hdr
