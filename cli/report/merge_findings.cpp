// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/report/merge_findings.h"

#include <algorithm>

#include "engine/core/context.h"

namespace tristop {
namespace {

std::array<int32_t, 2> rangeOf(const int32_t *grid, int nodes) {
    if (grid == nullptr)
        return {};
    const auto [least, greatest] = std::minmax_element(grid, grid + nodes);
    return {*least, *greatest};
}

AlignmentReport alignmentReport(const HdrContext &context) {
    const hdr::Alignment &alignment = context.alignment;
    const hdr::Preparation &preparation = context.preparation;
    AlignmentReport report;
    report.reducedWidth = preparation.workImages[0]->i32Width;
    report.reducedHeight = preparation.workImages[0]->i32Height;
    report.warpColumns = alignment.warpWidth;
    report.warpRows = alignment.warpHeight;
    report.features = alignment.featureCount;
    report.trustedMatches = alignment.trustedMatches;
    report.latestMotion = context.alignmentMode;
    for (int i = 0; i < 3; ++i) {
        AlignmentFindings &findings = report.inputs[static_cast<size_t>(i)];
        const float *x = alignment.matchTables[i], *y = x + hdr::kFeatureCapacity;
        const float *follows = y + hdr::kFeatureCapacity;
        // The table of an exposure that was not aligned is all zero.
        for (int feature = 0; feature < alignment.featureCount; ++feature) {
            findings.matches += x[feature] > 0 || y[feature] > 0;
            findings.following += follows[feature] > 0;
        }
        const int nodes = alignment.warpWidth * alignment.warpHeight;
        findings.shift = {alignment.globalShift[i][0] + hdr::kCellSize * alignment.gridShift[i][0],
                          alignment.globalShift[i][1] + hdr::kCellSize * alignment.gridShift[i][1]};
        findings.warpX = rangeOf(alignment.warpX[i], nodes);
        findings.warpY = rangeOf(alignment.warpY[i], nodes);
        findings.validRect = preparation.validRects[i];
        if (const uint8_t *moved = alignment.movedCells[i])
            findings.movedCells =
                static_cast<int32_t>(preparation.gridPlaneSize()) -
                static_cast<int32_t>(std::count(moved, moved + preparation.gridPlaneSize(), uint8_t{0}));
    }
    return report;
}

GhostReport ghostReport(const HdrContext &context) {
    const hdr::Preparation &preparation = context.preparation;
    const hdr::ExposureWeights &weights = context.weights;
    GhostReport report;
    report.mode = context.ghosts.ghostMode;
    report.chromaMode = context.ghosts.chromaMode;
    report.columns = preparation.gridColumns;
    report.rows = preparation.gridRows;
    const std::array<const uint8_t *, 4> masks = {weights.ghostMaskA, weights.ghostMaskB, weights.ghostMaskC,
                                                  weights.ghostMaskD};
    for (int row = 1; row <= report.rows; ++row)
        for (int column = 1; column <= report.columns; ++column) {
            bool marked = false;
            for (size_t i = 0; i < masks.size(); ++i) {
                const bool set = masks[i][row * preparation.gridWidth + column] != 0;
                report.maskCells[i] += set;
                marked |= set;
            }
            report.markedCells += marked;
        }
    return report;
}

} // namespace

void MergeFindings::observe(const HdrContext &context, int32_t step) noexcept {
    if (step == HDR_STEP_ALIGN)
        alignment = alignmentReport(context);
    else if (step == HDR_STEP_WEIGHTS)
        ghosts = ghostReport(context);
}

} // namespace tristop
