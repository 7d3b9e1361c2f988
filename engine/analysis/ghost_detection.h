// SPDX-License-Identifier: MIT
// Finding what moved between the exposures, and taking it from one of them.
#pragma once

#include "engine/hdr_engine.h"

namespace hdr {

/// Values of ghostMode: which cells the first merge replaces.
enum GhostMode {
    kGhostsNone = 0,
    kGhostsReplaced = 1,   ///< those of ghostMaskA
    kGhostsWithoutDark = 2 ///< those of ghostMaskC, the dark exposure being left out
};

/// Values of chromaMode: which exposures give colour.
enum ChromaMode { kChromaAll = 0, kChromaWithoutDark = 1, kChromaWithoutBright = 2 };

/// The global decisions of ghost detection. All zero at the start of a run.
struct GhostDecision {
    int32_t ghostMode;         ///< GhostMode
    int32_t chromaMode;        ///< ChromaMode
    int32_t excludedInputs[3]; ///< per input: 1 when it is left out altogether
};

/// Compares the registered dark and bright exposures with the reference inside their common valid rectangle
/// and takes what differs from one exposure: corrects the three weight planes in place, fills the context's
/// four ghost masks and GhostDecision, and leaves out the inputs that excludedInputs already names.
///
/// Cells in which alignment knows of motion (Alignment::movedCells) are taken from one exposure as well;
/// where that is the dark one, the reduced pictures are changed to show what it shows.
///
/// Luminance grids (0..255) and weights (0..256) are framed, packed width x height, at least 3 x 3. The
/// context's ghostSuppressionLevel (0..10) lowers the thresholds: a higher level marks more cells. In the
/// last column inside the frame, which has no statistics when the picture ends exactly with it, weights and
/// masks repeat their left neighbours. A region too large to be replaced sets earlyExitCode to HDR_ERR_SHIFT.
/// Returns 0, or HDR_ERR_NOMEM before anything is changed.
HdrStatus detect_ghosts(MemContext *memory, HdrContext *context, const int16_t *darkGrid,
                        const int16_t *midGrid, const int16_t *brightGrid, int width, int height,
                        int16_t *darkWeights, int16_t *brightWeights, int16_t *midWeights);

} // namespace hdr
