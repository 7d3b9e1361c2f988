// SPDX-License-Identifier: GPL-3.0-or-later
#include "tools/quality/merge_run.h"

#include "engine/core/context.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <stdexcept>
#include <string>

namespace tristop::quality {

namespace {

void keepAlignment(const HdrContext &context, MergeRun &run) {
    const hdr::Alignment &alignment = context.alignment;
    const auto nodes = alignment.warpWidth * alignment.warpHeight;
    for (std::size_t i = 0; i < 3; i++) {
        if (!alignment.warpX[i] || !alignment.warpY[i])
            continue;
        run.displacement[i] = {{alignment.globalShift[i][0], alignment.globalShift[i][1]},
                               alignment.warpWidth,
                               alignment.warpHeight,
                               {alignment.warpX[i], alignment.warpX[i] + nodes},
                               {alignment.warpY[i], alignment.warpY[i] + nodes}};
    }
    const hdr::Preparation &preparation = context.preparation;
    run.valid = {0, 0, preparation.sourceWidth, preparation.sourceHeight};
    for (const hdr::Rect &reduced : preparation.validRects)
        run.valid = {std::max(run.valid.x0, reduced.x0 * hdr::kReduction),
                     std::max(run.valid.y0, reduced.y0 * hdr::kReduction),
                     std::min(run.valid.x1, reduced.x1 * hdr::kReduction),
                     std::min(run.valid.y1, reduced.y1 * hdr::kReduction)};
}

void countMarked(const HdrContext &context, MergeRun &run) {
    const hdr::ExposureWeights &masks = context.weights;
    const int width = context.preparation.gridWidth, height = context.preparation.gridHeight;
    run.cells = (width - 2) * (height - 2);
    run.marked = 0;
    for (int y = 1; y < height - 1; y++)
        for (int cell = y * width + 1; cell < (y + 1) * width - 1; cell++)
            run.marked += masks.ghostMaskA[cell] || masks.ghostMaskB[cell] || masks.ghostMaskC[cell] ||
                          masks.ghostMaskD[cell];
}

void observe(const HdrContext *context, int32_t step, void *userData) {
    MergeRun &run = *static_cast<MergeRun *>(userData);
    if (step == HDR_STEP_WEIGHTS) { // later steps change the grids for their own use
        keepAlignment(*context, run);
        countMarked(*context, run);
    }
    if (step == HDR_STEP_RENDER)
        run.rendered = luminanceOf(context->preparation.inputs[context->preparation.midIndex]);
}

} // namespace

scene::Position FollowedDisplacement::at(int column, int row) const {
    if (x.empty())
        return {};
    const int c = (column + 128) >> 8, q = (row + 128) >> 8;
    const double fx = ((column + 128) & 255) / 256.0, fy = ((row + 128) & 255) / 256.0;
    const auto interpolate = [&](const std::vector<int32_t> &grid) {
        const auto node = [&](int dc, int dq) {
            return static_cast<double>(grid[static_cast<std::size_t>((q + dq) * columns + c + dc)]);
        };
        return (node(0, 0) * (1 - fx) + node(1, 0) * fx) * (1 - fy) +
               (node(0, 1) * (1 - fx) + node(1, 1) * fx) * fy;
    };
    return {shift[0] + interpolate(x), shift[1] + interpolate(y)};
}

Luminance broughtIntoPlace(const Luminance &photograph, const FollowedDisplacement &displacement) {
    Luminance placed = photograph;
    for (int y = 0; y < placed.height; y++)
        for (int x = 0; x < placed.width; x++) {
            const scene::Position by = displacement.at(x, y);
            const auto column = static_cast<int>(std::lround(x - by.x));
            const auto row = static_cast<int>(std::lround(y - by.y));
            placed.at(x, y) =
                photograph.at(std::clamp(column, 0, placed.width - 1), std::clamp(row, 0, placed.height - 1));
        }
    return placed;
}

MergeRun merge(std::array<Offscreen, 3> &pictures, int ghostLevel) {
    HdrContext *made = nullptr;
    HdrStatus status = hdrCreate(nullptr, 0, &made);
    const std::unique_ptr<HdrContext, void (*)(HdrContext *)> context(
        made, [](HdrContext *owned) { hdrDestroy(nullptr, owned); });
    MergeRun run;
    if (status == HDR_OK) {
        hdrSetGhostSuppressionLevel(nullptr, context.get(), ghostLevel);
        hdrSetStepObserver(context.get(), observe, &run);
        const HdrParams sliders = {45, 10, 40};
        status = hdrProcess(nullptr, context.get(), pictures.data(), 3, pictures.data(), 2, &sliders, nullptr,
                            nullptr, nullptr);
    }
    if (status != HDR_OK && status != HDR_WARN_25)
        throw std::runtime_error("the merge failed with status " + std::to_string(status));
    hdrGetRunInfo(context.get(), &run.info);
    if (run.fellBack())
        run.marked = run.cells;
    return run;
}

} // namespace tristop::quality
