// SPDX-License-Identifier: MIT
#include "engine/render/merge_tables.h"

#include "engine/analysis/plane_filters.h"
#include "engine/core/arithmetic.h"
#include "engine/core/buffer.h"
#include "engine/core/context.h"
#include "engine/core/memory.h"

#include <algorithm>

namespace hdr {

namespace {

/// From this exposure measure on, cell offsets are plain differences.
constexpr int kPlainOffsetMeasure = 4000;
constexpr int kBoxRadius = 1;
constexpr int kBoxMean = 1;

/// Grid planes are stored unsigned; levels and offsets are read as signed numbers.
int16_t *signedPlane(const Preparation &preparation, GridPlane plane) {
    return reinterpret_cast<int16_t *>(preparation.gridPlane(plane));
}

/// What the curves of a merge table make of 8-bit levels, as 8-bit levels again.
struct CompensatedLevels {
    const uint16_t *mergeTable;
    const uint8_t *gammaCompress;

    int operator()(MergeTablePart curve, int level) const {
        return gammaCompress[std::min<int>(mergeTable[curve + clamp8(level)], kLevels12 - 1)];
    }
};

bool inputsArePresent(const HdrContext &context) {
    const auto all = [](auto... pointers) { return (... && (pointers != nullptr)); };
    const Tables &tables = context.tables;
    const uint16_t *const *cellWeights = context.check.cellWeights;
    const ExposureWeights &weights = context.weights;
    return all(tables.reciprocalTable, tables.falloffTable, tables.gammaExpand, tables.contrastCurve8,
               context.preparation.gridStats, cellWeights[0], cellWeights[1], cellWeights[2],
               weights.lumaWeightMid, weights.lumaWeightDark, weights.lumaWeightBright);
}

/// Adds the global shift to the nodes, takes the differences along each row in whole pixels (0 for the last
/// column) and scales the nodes.
void finishWarpGrid(int32_t *grid, int32_t *differences, int columns, int rows, int shift) {
    for (int r = 0; r < rows; r++, grid += columns, differences += columns) {
        for (int c = 0; c + 1 < columns; c++)
            differences[c] = grid[c + 1] - grid[c];
        for (int c = 0; c < columns; c++)
            grid[c] = (grid[c] + shift) * (1 << kWarpShift);
    }
}

HdrStatus finishWarpGrids(MemContext *memory, HdrContext *context) {
    Alignment &alignment = context->alignment;
    MergeTables &merge = context->merge;
    const int columns = alignment.warpWidth;
    const int rows = alignment.warpHeight;
    const size_t nodes = static_cast<size_t>(columns) * static_cast<size_t>(rows);
    for (int k = 0; k < 3; k++) {
        if (!alignment.warpX[k] || !alignment.warpY[k])
            continue;
        merge.warpDifferenceX[k] = allocateZeroed<int32_t>(memory, nodes);
        merge.warpDifferenceY[k] = allocateZeroed<int32_t>(memory, nodes);
        if (!merge.warpDifferenceX[k] || !merge.warpDifferenceY[k])
            return HDR_ERR_NOMEM;
        const int32_t *shift = alignment.globalShift[k];
        finishWarpGrid(alignment.warpX[k], merge.warpDifferenceX[k], columns, rows, shift[0]);
        finishWarpGrid(alignment.warpY[k], merge.warpDifferenceY[k], columns, rows, shift[1]);
    }
    return HDR_OK;
}

void fillCurves(const HdrContext &context, uint16_t *table) {
    const Preparation &preparation = context.preparation;
    for (int i = 0; i < 256; i++) {
        const uint16_t level = context.tables.gammaExpand[i];
        table[kDarkCurve + i] = preparation.toneCurve[preparation.darkIndex][level];
        table[kBrightCurve + i] = preparation.toneCurve[preparation.brightIndex][level];
        table[kMidCurve + i] = preparation.toneCurve[preparation.midIndex][level];
    }
}

/// Turns the dark exposure's cell levels into the offsets that carry its shadows to the reference.
void shadowOffsets(int16_t *darkLevel, const int16_t *midLevel, size_t cells, bool toneMatch,
                   CompensatedLevels compensated) {
    const int atThirtyTwo = compensated(kDarkCurve, 32) - 32;
    if (toneMatch) {
        for (size_t i = 0; i < cells; i++) {
            const int level = darkLevel[i];
            const int offset = level >= 32 ? compensated(kDarkCurve, level) - level : atThirtyTwo;
            darkLevel[i] = wrap16(std::max(offset, atThirtyTwo));
        }
        return;
    }
    int least = atThirtyTwo;
    for (int j = 1; j < 32; j++)
        least = std::min(least, compensated(kDarkCurve, j) - j);
    for (size_t i = 0; i < cells; i++)
        darkLevel[i] = wrap16(std::max(compensated(kMidCurve, midLevel[i]) - darkLevel[i], least));
}

/// Turns the cell levels into luminance offsets and builds the ghost mask. The highlight offsets read the
/// dark levels before the shadow offsets replace them.
HdrStatus fillCellMaps(MemContext *memory, HdrContext *context) {
    const Preparation &preparation = context->preparation;
    const int columns = preparation.gridWidth;
    const int rows = preparation.gridHeight;
    const size_t cells = preparation.gridPlaneSize();
    int16_t *dark = signedPlane(preparation, kGridDarkLevel);
    int16_t *mid = signedPlane(preparation, kGridMidLevel);
    int16_t *highlight = signedPlane(preparation, kGridHighlight);
    int16_t *scratch = signedPlane(preparation, kGridScratch);
    const uint16_t *mergeTable = context->merge.mergeTable;
    const uint8_t *gammaCompress = context->tables.gammaCompress;
    const auto smooth = [&](int16_t *plane) {
        return box_mean_s16(memory, plane, columns, rows, columns, kBoxRadius, kBoxMean);
    };

    if (context->imageCount == 3) {
        cell_offsets(context, dark, highlight, columns, rows, mergeTable, gammaCompress);
        if (smooth(highlight) != HDR_OK)
            return HDR_ERR_NOMEM;
    } else {
        std::fill_n(mid, cells, int16_t{0});
    }
    shadowOffsets(dark, mid, cells, context->check.toneMatchFlag != 0, {mergeTable, gammaCompress});
    suppress_cell_spikes(dark, scratch, columns, rows);
    std::copy_n(scratch, cells, dark);
    if (smooth(dark) != HDR_OK)
        return HDR_ERR_NOMEM;
    if (!context->ghostMaskEnable)
        return HDR_OK;
    return build_ghost_mask(memory, context, mid, columns, rows);
}

void shiftCurves(const HdrContext &context, uint16_t *table) {
    const auto scale = [&](MergeTablePart curve, int shift) {
        for (int i = 0; i < 256; i++)
            table[curve + i] = static_cast<uint16_t>(table[curve + i] << shift);
    };
    scale(kDarkCurve, context.scene.curveShiftT);
    if (context.imageCount == 3)
        scale(kBrightCurve, context.scene.curveShiftT - context.scene.curveShiftU);
}

/// The table that the smoothing-mode kernels read: one curve, the plain expansion, for every exposure.
void fillSmoothingCurves(const Tables &tables, uint16_t *table) {
    for (int i = 0; i < 256; i++) {
        table[kDarkCurve + i] = 0;
        table[kBrightCurve + i] = static_cast<uint16_t>(4 * tables.gammaExpand[i]);
        table[kMidCurve + i] = static_cast<uint16_t>(4 * tables.gammaExpand[255]);
    }
}

void fillTail(const Tables &tables, int imageCount, uint16_t *table) {
    std::copy_n(tables.falloffTable, 256, table + kFalloffPart);
    for (int i = 0; i < 256 * imageCount; i++)
        table[kReciprocalPart + i] = static_cast<uint16_t>(tables.reciprocalTable[i]);
}

} // namespace

void cell_offsets(const HdrContext *context, const int16_t *darkLevel, int16_t *highlight, int columns,
                  int rows, const uint16_t *mergeTable, const uint8_t *gammaCompress) {
    const CompensatedLevels compensated = {mergeTable, gammaCompress};
    const size_t cells = static_cast<size_t>(columns) * static_cast<size_t>(rows);
    if (context->exposureMeasure >= kPlainOffsetMeasure) {
        for (size_t i = 0; i < cells; i++)
            highlight[i] = wrap16(compensated(kDarkCurve, darkLevel[i]) - highlight[i]);
        return;
    }
    int highest = -256;
    int lowest = 0;
    for (int level = 192; level < 224; level++) {
        const int offset = compensated(kMidCurve, level) - level;
        highest = std::max(highest, offset);
        lowest = std::min(lowest, offset);
    }
    for (size_t i = 0; i < cells; i++) {
        const int level = highlight[i];
        int offset = std::max(compensated(kDarkCurve, darkLevel[i]), compensated(kMidCurve, level)) - level;
        if (level < 192)
            offset = std::min(offset, highest);
        highlight[i] = wrap16(std::max(offset, lowest));
    }
}

void suppress_cell_spikes(const int16_t *source, int16_t *destination, int columns, int rows) {
    std::copy_n(source, static_cast<size_t>(columns) * static_cast<size_t>(rows), destination);
    for (int r = 1; r + 1 < rows; r++) {
        for (int c = 1; c + 1 < columns; c++) {
            const ptrdiff_t i = static_cast<ptrdiff_t>(r) * columns + c;
            if (source[i] < 21)
                continue;
            const auto neighbours = {source[i - 1], source[i - columns], source[i + 1], source[i + columns]};
            if (std::count_if(neighbours.begin(), neighbours.end(), [](int v) { return v < 10; }) >= 2)
                destination[i] = std::min(std::min(neighbours), int16_t{-10});
        }
    }
}

HdrStatus build_ghost_mask(MemContext *memory, HdrContext *context, const int16_t *midLevel, int columns,
                           int rows) {
    const size_t cells = static_cast<size_t>(columns) * static_cast<size_t>(rows);
    Buffer<int16_t> mask(memory, cells);
    if (!mask)
        return HDR_ERR_NOMEM;
    const uint16_t *darkWeight = context->check.cellWeights[1];
    const int16_t *highlight = signedPlane(context->preparation, kGridHighlight);
    for (size_t i = 0; i < cells; i++) {
        const bool ghost =
            midLevel[i] > context->scene.ghostThreshold && (darkWeight[i] == 0 || highlight[i] < 16);
        mask[i] = ghost ? 255 : 0;
    }
    if (box_mean_s16(memory, mask.data(), columns, rows, columns, kBoxRadius, kBoxMean) != HDR_OK)
        return HDR_ERR_NOMEM;
    for (int16_t &value : mask)
        value = value >= 1 ? 255 : 0;
    releaseArray(memory, context->merge.ghostMask);
    context->merge.ghostMask = mask.release();
    return HDR_OK;
}

HdrStatus build_merge_tables(MemContext *memory, HdrContext *context, const Offscreen *outputs) {
    MergeTables &merge = context->merge;
    const Preparation &preparation = context->preparation;
    merge.release(memory);
    if (!inputsArePresent(*context))
        return HDR_ERR_NOMEM;
    merge.mergeTable = allocateZeroed<uint16_t>(memory, kMergeTableSize);
    merge.smoothingMergeTable = allocateZeroed<uint16_t>(memory, kMergeTableSize);
    if (!merge.mergeTable || !merge.smoothingMergeTable)
        return HDR_ERR_NOMEM;
    HdrStatus status = finishWarpGrids(memory, context);
    if (status != HDR_OK)
        return status;

    fillCurves(*context, merge.mergeTable);
    status = fillCellMaps(memory, context);
    if (status != HDR_OK)
        return status;
    shiftCurves(*context, merge.mergeTable);

    const int16_t *weights[3] = {context->weights.lumaWeightMid, context->weights.lumaWeightDark,
                                 context->weights.lumaWeightBright};
    for (int k = 0; k < 3; k++)
        std::copy_n(weights[k], preparation.gridPlaneSize(), context->check.cellWeights[k]);
    if (context->smoothingFlag)
        fillSmoothingCurves(context->tables, merge.smoothingMergeTable);
    for (uint16_t *table : {merge.mergeTable, merge.smoothingMergeTable})
        fillTail(context->tables, context->imageCount, table);

    merge.rowWidth = preparation.sourceWidth;
    merge.target = outputs[preparation.midIndex];
    return HDR_OK;
}

HdrStatus prepare_merge(MemContext *memory, HdrContext *context, Offscreen *outputs, int /*outputIndex*/) {
    const HdrStatus status = build_merge_tables(memory, context, outputs);
    return status == HDR_OK ? allocateBandBuffers(memory, context) : status;
}

void MergeTables::release(MemContext *memory) {
    releaseArray(memory, mergeTable);
    releaseArray(memory, smoothingMergeTable);
    releaseArray(memory, ghostMask);
    for (int k = 0; k < 3; k++) {
        releaseArray(memory, warpDifferenceX[k]);
        releaseArray(memory, warpDifferenceY[k]);
    }
}

} // namespace hdr
