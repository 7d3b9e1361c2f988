// SPDX-License-Identifier: MIT
// The regions where the exposures disagree, and the one exposure that each of them is taken from.
#pragma once

#include "engine/core/buffer.h"
#include "engine/core/offscreen.h"

#include <cstdint>
#include <span>

namespace hdr {

/// Finds the 8-connected regions of a mask, one after the other, in the row-major order of their first cells.
class RegionSearch {
public:
    /// Allocates for packed masks of width x height cells; test the object before use.
    RegionSearch(MemContext *memory, int width, int height);
    explicit operator bool() const { return pending && found; }

    /// Begins again with the cells of `mask` that are 255. The mask is copied: it may change during the
    /// search.
    void start(const uint8_t *mask);
    /// Moves on to the next region; false when there is none left.
    bool next();

    /// The current region's cells, as indices y * width + x, in no particular order; valid until the next
    /// call.
    std::span<const int32_t> cells() const { return {found.data(), static_cast<size_t>(count)}; }
    /// The smallest rectangle that holds the current region.
    const Rect &box() const { return bounds; }

private:
    void take(int x, int y);

    int width;
    int height;
    Buffer<uint8_t> pending; ///< [height][width]: not 0 where a cell belongs to a region not yet found
    Buffer<int32_t> found;   ///< room for every cell
    int scanned = 0;         ///< cells before this one are not pending any more
    int count = 0;
    Rect bounds = {};
};

/// What the region analysis works on: planes of the framed analysis grid, packed width x height. Not owned.
struct GhostGrid {
    int width;
    int height;
    int lastSampledColumn; ///< last column inside the frame that has statistics of its own
    const int16_t *midLuma;
    const int16_t *brightLuma;
    int16_t *midWeights; ///< 0..256, as the next two
    int16_t *darkWeights;
    int16_t *brightWeights;
    uint8_t *darkSide;           ///< mask: the dark exposure differs from the reference
    uint8_t *brightSide;         ///< mask: the bright exposure differs from the reference
    const uint8_t *brightExtent; ///< mask: the same by a threshold of its own, to judge how far it reaches
};

/// What the regions ask of the whole run.
struct GhostProposal {
    int ghostMode;      ///< GhostMode; kGhostsWithoutDark when the dark exposure cannot be used
    bool darkSideFound; ///< the dark exposure differs somewhere
};

/// Takes every region of the two side masks from one exposure: corrects the three weight planes and fills the
/// context's four ghost masks. Dark-side regions in deep shadow are cleared from their mask. A region too
/// large to be replaced sets the context's earlyExitCode to HDR_ERR_SHIFT.
///
/// A bright-side region that the bright exposure dominates is taken from it. Elsewhere the exposure that
/// differs is removed; its cells go to the reference, or to the dark exposure in highlights where that one
/// agrees with the reference and outweighs it. Replaced cells keep their whole weight, the weights around
/// them are smoothed. A column without statistics repeats its left neighbour's weights and, as does the frame
/// beside it, its masks. More cells in the side masks never mean fewer replaced cells.
GhostProposal analyse_ghost_regions(MemContext *memory, HdrContext *context, const GhostGrid &grid,
                                    RegionSearch &search);

} // namespace hdr
