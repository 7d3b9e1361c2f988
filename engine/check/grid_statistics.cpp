// SPDX-License-Identifier: MIT
#include "engine/check/grid_statistics.h"

#include "engine/analysis/plane_borders.h"
#include "engine/check/scene_analysis.h"
#include "engine/core/arithmetic.h"
#include "engine/core/buffer.h"
#include "engine/core/context.h"
#include "engine/core/plane.h"

#include <algorithm>
#include <array>
#include <cstdlib>

namespace hdr {

namespace {

/// Chroma code of a grey picture.
constexpr int kNeutral = 128;

/// What the banded rendering is told when there is nothing to merge.
constexpr int kSingleInputMode = 2;

/// Mean bin of a histogram, truncated; 0 when it is empty. 32-bit arithmetic.
int meanOf(const uint32_t *histogram) {
    uint32_t sum = 0;
    uint32_t count = 0;
    for (uint32_t level = 0; level < kBins; level++) {
        sum += level * histogram[level];
        count += histogram[level];
    }
    return static_cast<int>(count == 0 ? sum : sum / count);
}

/// Whether the dark exposure lies on the other side of neutral than the reference.
bool crossesNeutral(int mid, int dark) {
    return (mid > kNeutral && dark < kNeutral && mid - dark > 4) ||
           (mid < kNeutral && dark > kNeutral && dark - mid > 4);
}

/// A displacement along one axis as whole cells and a weight from 1 to 32 of the cell that they lead to; the
/// cell after that one has the rest of 32.
struct CellShift {
    int cells;
    int weight;
};

CellShift cellShift(int displacement) {
    const int cells =
        displacement < 0 ? -displacement / kCellSize : (1 - displacement - kCellSize) / kCellSize;
    return {cells, kCellSize * cells + displacement + kCellSize};
}

/// Moves a packed grid by whole cells; the cells at its edge are repeated.
void moveGridPlane(uint16_t *plane, int columns, int rows, const int32_t (&cells)[2], uint16_t *scratch) {
    if (cells[0] == 0 && cells[1] == 0)
        return;
    const Plane<uint16_t> after(plane, columns, rows);
    const Plane<const uint16_t> before(scratch, columns, rows);
    std::copy_n(plane, static_cast<size_t>(columns) * static_cast<size_t>(rows), scratch);
    for (int y = 0; y < rows; y++)
        for (int x = 0; x < columns; x++)
            after(x, y) =
                before(std::clamp(x - cells[0], 0, columns - 1), std::clamp(y - cells[1], 0, rows - 1));
}

/// Brings the grids of the dark and the bright exposure into register with the reference's and frames the
/// planes that later stages read.
HdrStatus alignGrids(MemContext *memory, HdrContext *context) {
    const Preparation &preparation = context->preparation;
    const int columns = preparation.gridColumns;
    const int rows = preparation.gridRows;
    const size_t planeSize = preparation.gridPlaneSize();
    const auto plane = [&preparation](int index) { return preparation.gridPlane(index); };
    Buffer<uint16_t> scratch(memory, planeSize);
    if (!scratch)
        return HDR_ERR_NOMEM;

    const auto [darkX, brightX, darkY, brightY] = context->check.shiftTable;
    const auto align = [&](int index, const int32_t(&cells)[2], int dx, int dy) {
        moveGridPlane(plane(index), columns, rows, cells, scratch.data());
        shiftGridPlane(plane(index), columns, rows, dx, dy, scratch.data());
    };
    const auto &gridShift = context->alignment.gridShift;
    for (int index : {preparation.darkIndex, int{kGridDarkU}, int{kGridDarkV}})
        align(index, gridShift[preparation.darkIndex], darkX, darkY);
    align(preparation.brightIndex, gridShift[preparation.brightIndex], brightX, brightY);

    pad_plane_u16(plane(preparation.darkIndex), plane(kGridDarkLevel), columns, rows);
    pad_plane_u16(plane(preparation.midIndex), plane(kGridMidLevel), columns, rows);
    std::copy_n(plane(kGridMidLevel), planeSize, plane(kGridHighlight));
    for (int index : {kGridMidU, kGridMidV, kGridDarkU, kGridDarkV}) {
        pad_plane_u16(plane(index), scratch.data(), columns, rows);
        std::copy(scratch.begin(), scratch.end(), plane(index));
    }
    if (context->renderFlag) {
        const auto subtract = [&](uint16_t *from, const uint16_t *what) {
            for (size_t i = 0; i < planeSize; i++)
                from[i] = static_cast<uint16_t>(from[i] - what[i]);
        };
        subtract(plane(kGridDarkU), plane(kGridMidU));
        subtract(plane(kGridDarkV), plane(kGridMidV));
    }
    return HDR_OK;
}

/// Replaces the cell weight maps by zeroed ones.
HdrStatus allocateCellWeights(MemContext *memory, HdrContext *context) {
    const size_t planeSize = context->preparation.gridPlaneSize();
    std::array<Buffer<uint16_t>, 3> maps;
    for (Buffer<uint16_t> &map : maps) {
        map = Buffer<uint16_t>::zeroed(memory, planeSize);
        if (!map)
            return HDR_ERR_NOMEM;
    }
    context->check.release(memory);
    for (size_t i = 0; i < maps.size(); i++)
        context->check.cellWeights[i] = maps[i].release();
    return HDR_OK;
}

} // namespace

void shiftGridPlane(uint16_t *plane, int columns, int rows, int dx, int dy, uint16_t *scratch) {
    const CellShift x = cellShift(dx);
    const CellShift y = cellShift(dy);
    const int left = std::abs(x.cells);
    const int top = std::abs(y.cells);
    if (top >= rows - 1 - top)
        return;
    const Plane<const uint16_t> before(plane, columns, rows);
    const Plane<uint16_t> after(scratch, columns, rows);
    const size_t size = static_cast<size_t>(columns) * static_cast<size_t>(rows);
    std::copy_n(plane, size, scratch);
    for (int row = top; row <= rows - 2 - top; row++) {
        for (int column = left; column <= columns - 2 - left; column++) {
            const int x0 = column + x.cells;
            const int y0 = row + y.cells;
            const int upper = before(x0 + 1, y0) * (kCellSize - x.weight) + before(x0, y0) * x.weight;
            const int lower = before(x0 + 1, y0 + 1) * (kCellSize - x.weight) + before(x0, y0 + 1) * x.weight;
            after(column, row) =
                static_cast<uint16_t>((lower * (kCellSize - y.weight) + upper * y.weight) >> 10);
        }
    }
    std::copy_n(scratch, size, plane);
}

void inputStatistics(HdrContext *context) {
    const Preparation &preparation = context->preparation;
    InputCheck &check = context->check;
    check.renderMode = context->imageCount < 2 ? kSingleInputMode : 0;
    if (context->imageCount < 2)
        return;
    const auto histogram = [&preparation](int input, int channel) {
        return preparation.histogram(input, channel);
    };
    const int dark = preparation.darkIndex;
    const int bright = preparation.brightIndex;
    const int mid = preparation.midIndex;

    check.colourCorrection = 1;
    const auto compareChannel = [&](int channel, int32_t &fromDark, int32_t &fromBright) {
        const int darkMean = meanOf(histogram(dark, channel));
        const int brightMean = meanOf(histogram(bright, channel));
        const int midMean = meanOf(histogram(mid, channel));
        fromDark = midMean - darkMean;
        fromBright = midMean - brightMean;
        if (crossesNeutral(midMean, darkMean))
            check.colourCorrection = 0;
    };
    compareChannel(1, check.colourDifferenceDarkU, check.colourDifferenceU);
    compareChannel(2, check.colourDifferenceDarkV, check.colourDifferenceV);

    const int64_t pixels = int64_t{preparation.sourceWidth} * preparation.sourceHeight;
    sceneAnalysis(context, histogram(dark, 0), histogram(bright, 0), histogram(mid, 0),
                  static_cast<int>(pixels / (kReduction * kReduction)));
}

HdrStatus prepareGridStatistics(MemContext *memory, HdrContext *context) {
    const Preparation &preparation = context->preparation;
    InputCheck &check = context->check;
    const int coarseCell = preparation.tuning[0];
    check.coarseGridWidth = ceilDivide(preparation.sourceWidth, coarseCell) + 2;
    check.coarseGridHeight = ceilDivide(preparation.sourceHeight, coarseCell) + 2;
    inputStatistics(context);
    check.gridPending = 1;
    check.toneMatchFlag = 1;
    const HdrStatus status = alignGrids(memory, context);
    check.gridPending = 0;
    if (status != HDR_OK)
        return status;
    return allocateCellWeights(memory, context);
}

} // namespace hdr
