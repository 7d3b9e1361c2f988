// SPDX-License-Identifier: MIT
// Bringing the dark and the bright exposure into register with the reference.
#pragma once

#include "engine/core/offscreen.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace hdr {

struct FeatureGrid;

/// Most features that the reference contributes.
inline constexpr int kFeatureCapacity = 128;

/// What alignment leaves in the context.
///
/// The displacement of an input at a full-resolution pixel p is its global shift plus the bilinear
/// interpolation of its warp grids; the input is sampled at p minus the displacement. Node (c, q) of a warp
/// grid lies at image column 256 c - 128 and row 256 q - 128; warpWidth = ((width + 127) >> 8) + 2,
/// warpHeight likewise, so that every column and row has a node on both sides. Values are whole pixels
/// relative to the global shift. The dark and the bright input always have both grids; the reference has
/// none.
struct Alignment {
    int32_t globalShift[3][2]; ///< per input: x, y in full-resolution pixels; 0 for the reference
    int32_t gridShift[3][2];   ///< per input: x, y in grid cells: what the shift of an input that was moved
                               ///< further than kLargestShift leaves to its warp grids
    int32_t warpWidth;         ///< nodes in a row of the warp grids
    int32_t warpHeight;
    int32_t *warpX[3];          ///< per input [warpHeight][warpWidth]: horizontal displacement of each node
    int32_t *warpY[3];          ///< vertical displacement
    FeatureGrid *preparedState; ///< the reference's features; null between runs
    Offscreen *scratchImage;    ///< working picture of the reduced size, 0x604
    int32_t featureCount;       ///< features found in the reference
    int32_t trustedMatches;     ///< 7: matched features that make a motion believable when they agree on it
    float *featureTables;       ///< [4][kFeatureCapacity]: x, y of the reference's features and x, y of their
                                ///< latest matches, in reduced pixels
    float *matchTables[3]; ///< per input [3][kFeatureCapacity]: matched x and y in reduced pixels (negative
                           ///< where there is no match), and 1 where the match follows the input's motion,
                           ///< else 0

    std::array<uint8_t, 256>
        tones[3];           ///< per input: luminance of its working picture in the reference's tones
    uint8_t *movedCells[3]; ///< per input, mask of the framed analysis grid: where it shows something else
                            ///< than the reference; null for the reference and when nothing was aligned

    void release(MemContext *memory);
};

/// Builds the feature grid over the reference's registered picture and the buffers that alignment works in.
/// 0 or HDR_ERR_NOMEM.
HdrStatus buildFeatureGrid(MemContext *memory, HdrContext *context);

/// Releases the feature grid (preparedState).
void releaseFeatureGrid(MemContext *memory, HdrContext *context);

/// Aligns input `index` (a copy of its working picture is in scratchImage on entry) to the reference: matches
/// tones, finds the motion, records the global shift and fills the warp grids, brings workImages[index] to
/// where the reference sees the scene, narrows validRects[index], and makes registeredImages[index]: the
/// aligned working picture in the reference's tones, which are corrected where the exposures meet at other
/// levels, and with the reference's luminance where an exposure has no information. Without motion the
/// working picture stays as it is.
///
/// alignmentMode becomes 3, 2 or 1 with the kind of motion: a homography, a similarity or at most a shift.
/// Adds 1 to the run's progress after each batch of blocks, at most 20 times, and calls the callback with
/// null user data. An exposure that agrees with the reference on no motion is left out (GhostDecision); two
/// of them, or fewer than 3 features, end in earlyExitCode HDR_ERR_ALIGN with nothing moved. 0, HDR_ERR_NOMEM
/// or HDR_CANCELLED.
HdrStatus alignInput(MemContext *memory, HdrContext *context, int index, ProgressCallback callback);

/// Concludes when both exposures are aligned: movedCells tell where things moved, and the registered pictures
/// take the reference's luminance. Motion in most of the picture ends in earlyExitCode HDR_ERR_SHIFT, the
/// sooner the higher the ghost suppression level is.
void settleMotion(HdrContext *context);

} // namespace hdr
