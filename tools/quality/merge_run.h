// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/core/offscreen.h"
#include "tools/quality/bracket.h"

namespace tristop::quality {

/// The ghost suppression level that users start with.
inline constexpr int kDefaultLevel = 6;

/// The displacement of one exposure as the rendering follows it: a shift and a grid of nodes in whole pixels,
/// interpolated bilinearly. Without nodes (the reference) it is zero.
struct FollowedDisplacement {
    std::array<int32_t, 2> shift{};
    int columns = 0, rows = 0;
    std::vector<int32_t> x, y; ///< node (c, q) lies at (256 c - 128, 256 q - 128), relative to the shift

    scene::Position at(int column, int row) const;
};

/// A photograph with each pixel where a displacement brings it, to the nearest whole one.
Luminance broughtIntoPlace(const Luminance &photograph, const FollowedDisplacement &displacement);

/// A merge and what went on in it.
struct MergeRun {
    HdrRunInfo info{};
    std::array<FollowedDisplacement, 3> displacement; ///< by input
    hdr::Rect valid{};                                ///< pixels of the reference valid in all exposures
    int cells = 0;                                    ///< of the analysis grid
    int marked = 0;     ///< cells in any of the four ghost masks; all of them when the run falls back
    Luminance rendered; ///< the merged picture over the whole reference, before it is cropped and stretched

    bool fellBack() const { return info.fallback != HDR_FALLBACK_NONE; }
    double markedShare() const { return static_cast<double>(marked) / cells; }
};

/// Merges three pictures of format 0x501 with the sliders at their defaults; they hold no photographs
/// afterwards, the last one holds the result. Throws std::runtime_error when the merge fails.
MergeRun merge(std::array<Offscreen, 3> &pictures, int ghostLevel = kDefaultLevel);

} // namespace tristop::quality
