// SPDX-License-Identifier: MIT
// The regions where the exposures disagree, and the one exposure that each of them is taken from.
#pragma once

#include "engine/core/region_search.h"

#include <cstdint>

namespace hdr {

/// What the region analysis works on: planes of the framed analysis grid, packed width x height. Not owned.
struct GhostGrid {
    int width;
    int height;
    int lastSampledColumn; ///< last column inside the frame that has statistics of its own
    const int16_t *darkLuma;
    const int16_t *midLuma;
    const int16_t *brightLuma;
    int16_t *midWeights; ///< 0..256, as the next two
    int16_t *darkWeights;
    int16_t *brightWeights;
    uint8_t *darkSide;           ///< mask: the dark exposure differs from the reference
    uint8_t *brightSide;         ///< mask: the bright exposure differs from the reference
    const uint8_t *darkMoved;    ///< mask: alignment found motion in the dark exposure; null where it found
                                 ///< out nothing
    const uint8_t *brightMoved;  ///< likewise in the bright exposure; null with the other
    uint8_t *scratch[3];         ///< room for masks
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
