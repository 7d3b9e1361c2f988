// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <cstdint>
#include <optional>

#include "engine/core/offscreen.h"

namespace tristop {

/// Numbers of the alignment of one photograph with the reference.
struct AlignmentFindings {
    int32_t matches = 0;            ///< features of the reference that were found again
    int32_t following = 0;          ///< those among them that move as the whole photograph does
    std::array<int32_t, 2> shift{}; ///< global displacement in pixels; a fallback's HdrRunInfo has none
    /// Least and greatest displacement of a warp node against the global shift, in pixels.
    std::array<int32_t, 2> warpX{};
    std::array<int32_t, 2> warpY{};
    hdr::Rect validRect{};  ///< of the reduced picture, in its pixels
    int32_t movedCells = 0; ///< cells of the analysis grid in which the alignment saw something move
};

/// What the alignment of a merge found.
struct AlignmentReport {
    int32_t reducedWidth = 0;
    int32_t reducedHeight = 0;
    int32_t warpColumns = 0;
    int32_t warpRows = 0;
    int32_t features = 0;
    int32_t trustedMatches = 0; ///< how many agreeing matches make a motion believable
    int32_t latestMotion = 0;   ///< of the bright exposure: 1 at most a shift, 2 a similarity, 3 a homography
    std::array<AlignmentFindings, 3> inputs;
};

/// What the ghost detection of a merge decided.
struct GhostReport {
    int32_t mode = 0;       ///< hdr::GhostMode
    int32_t chromaMode = 0; ///< hdr::ChromaMode
    int32_t columns = 0;    ///< of the analysis grid
    int32_t rows = 0;
    std::array<int32_t, 4> maskCells{}; ///< cells in the masks A to D
    int32_t markedCells = 0;            ///< cells in any of them

    /// Percentage of the grid that a number of cells is.
    double percent(int32_t cells) const { return 100.0 * cells / (columns * rows); }
};

/// Numbers of a merge that HdrRunInfo does not have, gathered while it runs. A step that was not reached
/// leaves nothing.
struct MergeFindings {
    std::optional<AlignmentReport> alignment;
    std::optional<GhostReport> ghosts;

    /// Takes what is new after a step of the engine.
    void observe(const HdrContext &context, int32_t step) noexcept;
};

} // namespace tristop
