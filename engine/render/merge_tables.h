// SPDX-License-Identifier: MIT
// Merge tables, warp differences, cell offsets and the rendering's ghost mask.
#pragma once

#include "engine/core/offscreen.h"
#include "engine/render/render_setup.h"

namespace hdr {

inline constexpr int kMergeTableSize = 6016;
/// Parts of a merge table.
enum MergeTablePart {
    kDarkCurve = 0, ///< 8-bit level to compensated 12-bit level, shifted by the curve shift
    kBrightCurve = 256,
    kMidCurve = 512,
    kFalloffPart = 768,
    kReciprocalPart = 1024
};
/// Warp values are kept in 1/256 pixel once the merge tables are built.
inline constexpr int kWarpShift = 8;

struct MergeTables {
    uint16_t *mergeTable;          ///< [kMergeTableSize]
    uint16_t *smoothingMergeTable; ///< [kMergeTableSize], used while smoothingFlag is raised
    int16_t *ghostMask;            ///< framed cell grid, 0 or 255
    int32_t *warpDifferenceX[3]; ///< per input, as its warp grid: next node minus this node, in whole pixels
    int32_t *warpDifferenceY[3];
    int32_t rowWidth; ///< width of the aligned inputs
    Offscreen target; ///< the record rendered into: the reference's (planes not owned)

    void release(MemContext *memory);
};

/// Builds the merge tables, then the band buffers. The output index is not needed: the bands render over the
/// reference's record in `outputs`, whichever record the result goes to. 0 or HDR_ERR_NOMEM.
HdrStatus prepare_merge(MemContext *memory, HdrContext *context, Offscreen *outputs, int outputIndex);

/// Fills MergeTables, turns the warp grids into 1/256 pixel with the global shifts added, the cell level
/// planes kGridDarkLevel and kGridHighlight into luminance offsets, and the cell weight maps into the
/// exposure weights. 0, or HDR_ERR_NOMEM when an allocation fails or an earlier stage's result is missing.
HdrStatus build_merge_tables(MemContext *memory, HdrContext *context, const Offscreen *outputs);

/// Replaces the reference's cell levels in `highlight` by how far the merge may move them to meet the dark
/// exposure: columns x rows cells of 8-bit levels, packed. `mergeTable` is still without its curve shifts.
void cell_offsets(const HdrContext *context, const int16_t *darkLevel, int16_t *highlight, int columns,
                  int rows, const uint16_t *mergeTable, const uint8_t *gammaCompress);

/// Copies a packed plane of offsets and lowers isolated peaks: an inner cell of 21 or more with at least two
/// direct neighbours below 10 becomes the least of its neighbours and -10.
void suppress_cell_spikes(const int16_t *source, int16_t *destination, int columns, int rows);

/// Marks (255) the cells of the reference that are above the ghost threshold and that the dark exposure does
/// not or hardly changes, widened by one cell, and makes them the context's ghost mask. `midLevel` is packed.
/// 0 or HDR_ERR_NOMEM.
HdrStatus build_ghost_mask(MemContext *memory, HdrContext *context, const int16_t *midLevel, int columns,
                           int rows);

} // namespace hdr
