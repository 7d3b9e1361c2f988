// SPDX-License-Identifier: MIT
#include "engine/render/bands.h"

#include "engine/core/arithmetic.h"
#include "engine/core/context.h"
#include "engine/core/memory.h"
#include "engine/render/band_rows.h"
#include "engine/render/merge_kernels.h"

#include <algorithm>
#include <cstring>
#include <iterator>

namespace hdr {

namespace {

/// Share of the run's progress that the rendering covers, and the rows between two reports.
constexpr int kProgressPoints = 75;
constexpr int kProgressRows = 32;
/// Cell maps are brought to every fourth row.
constexpr int kCellRowStep = 4;

/// The dark or the bright exposure as the row driver sees it.
struct WarpedExposure {
    SpanType bit;
    CorrectionMap lumaOffset, offsetU, offsetV;
    const Offscreen *picture;
    WarpGrid warp;
    uint8_t *row; ///< the band's resampled row
};

bool mapsArePresent(const HdrContext &context, const HdrBand &band) {
    const auto all = [](const auto &pointers) {
        return std::all_of(std::begin(pointers), std::end(pointers), [](auto *p) { return p != nullptr; });
    };
    const auto hasLine = [&](const auto &line) { return line[band.index] != nullptr; };
    const auto &lines = context.lineBuffers.bandLineBuffers;
    return context.preparation.gridStats && all(context.check.cellWeights) && context.merge.ghostMask &&
           context.merge.smoothingMergeTable && all(context.firstMerge.correctionMaps) &&
           std::all_of(std::begin(lines), std::end(lines), hasLine) && context.localToneMap.map &&
           context.localToneMap.width > 0 && context.localToneMap.height > 0 &&
           context.bands.storage[band.index];
}

/// Renders the rows of a band of packed 4:2:2 pictures in smoothing mode.
class PackedBand {
public:
    PackedBand(const HdrBand &band, const HdrContext &context, const Offscreen *inputs);
    HdrStatus render(ProgressCallback callback, void *userData);

private:
    WarpedExposure warpedExposure(const Offscreen *inputs, int index, SpanType bit, uint8_t *row) const;
    void upsampleCellMaps(int y);
    void upsampleCorrection(int map, int y, int x0, int x1);
    void renderRow(int y);
    void resample(const WarpedExposure &exposure, int y, int x0, int x1);

    const HdrBand &band;
    const HdrContext &context;
    const Area area;
    BandRows rows;
    int16_t *corrections[kCorrectionMapCount];
    WarpedExposure dark, bright;
    KernelTables tables;
};

PackedBand::PackedBand(const HdrBand &band, const HdrContext &context, const Offscreen *inputs)
    : band(band), context(context), area(context.render.workingRectangle),
      rows(BandRows::divide(context.bands.storage[band.index], context.merge.rowWidth)) {
    for (int k = 0; k < kCorrectionMapCount; k++)
        corrections[k] = context.lineBuffers.bandLineBuffers[k][band.index];
    dark = warpedExposure(inputs, context.preparation.darkIndex, kWithDark, rows.dark);
    bright = warpedExposure(inputs, context.preparation.brightIndex, kWithBright, rows.bright);
    tables = {context.merge.smoothingMergeTable, context.tables.contrastCurve8, context.tables.sCurve8,
              context.scene.curveShiftT};
}

WarpedExposure PackedBand::warpedExposure(const Offscreen *inputs, int index, SpanType bit,
                                          uint8_t *row) const {
    const Alignment &alignment = context.alignment;
    const MergeTables &merge = context.merge;
    const bool isDark = bit == kWithDark;
    return {.bit = bit,
            .lumaOffset = isDark ? kLumaOffsetDark : kLumaOffsetBright,
            .offsetU = isDark ? kDarkOffsetU : kBrightOffsetU,
            .offsetV = isDark ? kDarkOffsetV : kBrightOffsetV,
            .picture = &inputs[index],
            .warp = {alignment.warpX[index], alignment.warpY[index], merge.warpDifferenceX[index],
                     merge.warpDifferenceY[index], alignment.warpWidth},
            .row = row};
}

HdrStatus PackedBand::render(ProgressCallback callback, void *userData) {
    const int first = static_cast<int>(band.firstRow);
    const int end = static_cast<int>(band.endRow);
    const LocalToneMap &toneMap = context.localToneMap;
    for (int y = first; y < end; y++) {
        if (band.index == 0 && callback && y % kProgressRows == 0) {
            const int percent = context.progress + kProgressPoints * (y - first) / (end - first);
            if (callback(percent, 0, userData) == HDR_CANCELLED)
                return HDR_CANCELLED;
        }
        if (y % kCellRowStep == 0)
            upsampleCellMaps(y);
        upsampleCorrection(kLumaOffsetMid, y, area.x, area.x + area.width);
        const int toneRow = std::min((y + 7) / 8, toneMap.height - 1);
        build_gain_row(rows.gain, y, y == first, area.x + area.width,
                       toneMap.map + static_cast<ptrdiff_t>(toneRow) * toneMap.width,
                       context.tables.detailGain);
        renderRow(y);
    }
    return HDR_OK;
}

/// Brings to this group of four rows what all of them share: the cell weights, the spans that they make, and
/// the reference's chroma offsets.
void PackedBand::upsampleCellMaps(int y) {
    const int x1 = area.x + area.width;
    const auto cellRows = [&](const uint16_t *weights) {
        return cellMapRows(reinterpret_cast<const int16_t *>(weights), context.preparation.gridWidth,
                           context.preparation.gridHeight, y);
    };
    const auto &cellWeights = context.check.cellWeights;
    upsample_cell_row_sparse(cellRows(cellWeights[0]), area.x, x1, rows.weightMid);
    upsample_cell_row_runs(cellRows(cellWeights[1]), area.x, x1, rows.weightDark, rows.darkRuns);
    upsample_cell_row_runs(cellRows(cellWeights[2]), area.x, x1, rows.weightBright, rows.brightRuns);
    rows.spanCount = mergeRuns(rows.darkRuns, rows.brightRuns, rows.spans);
    upsampleCorrection(kMidOffsetU, y, area.x, x1);
    upsampleCorrection(kMidOffsetV, y, area.x, x1);
}

void PackedBand::upsampleCorrection(int map, int y, int x0, int x1) {
    const FirstMerge &maps = context.firstMerge;
    upsample_block_row(blockMapRows(maps.correctionMaps[map], maps.mapWidth + 2, maps.mapHeight + 2, y), x0,
                       x1, corrections[map]);
}

/// Samples an exposure for a piece of row y. One that is the reference itself is in register, so its pixels
/// are copied before the piece is rendered over them.
void PackedBand::resample(const WarpedExposure &exposure, int y, int x0, int x1) {
    const WarpLine line = warpLine(exposure.warp, x0, y);
    if (line.isWholePixels())
        resampleWholePixels(*exposure.picture, static_cast<int>(line.x >> 16), static_cast<int>(line.y >> 16),
                            rows.reference, context.bands.referenceEdges, y, x0, x1, exposure.row);
    else
        resampleBilinear(*exposure.picture, line, y, x0, x1, exposure.row);
}

void PackedBand::renderRow(int y) {
    const Offscreen &target = context.merge.target;
    uint8_t *output = target.ppu8Plane[0] + static_cast<ptrdiff_t>(y) * target.pi32Pitch[0];
    std::memcpy(rows.reference, output, 2 * static_cast<size_t>(context.merge.rowWidth));

    KernelRows<PackedAccess> kernelRows = {.reference = rows.reference,
                                           .output = output,
                                           .dark = rows.dark,
                                           .bright = rows.bright,
                                           .weightMid = rows.weightMid,
                                           .weightDark = rows.weightDark,
                                           .weightBright = rows.weightBright,
                                           .corrections = {},
                                           .gain = rows.gain.current};
    std::copy_n(corrections, kCorrectionMapCount, kernelRows.corrections);
    WeightState state = firstWeights(rows.spans[0].type);
    for (const Span *span = rows.spans; span < rows.spans + rows.spanCount; span++) {
        for (int x0 = span->x0; x0 < span->x1;) {
            const int x1 = span->type == kReferenceOnly ? span->x1 : std::min(span->x1, nextWarpBorder(x0));
            for (const WarpedExposure *exposure : {&dark, &bright}) {
                if (!(span->type & exposure->bit))
                    continue;
                resample(*exposure, y, x0, x1);
                for (int map : {exposure->lumaOffset, exposure->offsetU, exposure->offsetV})
                    upsampleCorrection(map, y, x0, x1);
            }
            mergePiece(span->type, kernelRows, tables, x0, x1, state);
            x0 = x1;
        }
    }
}

HdrStatus render_band_packed(const HdrBand &band, const HdrContext &context, const Offscreen *inputs,
                             ProgressCallback callback, void *userData) {
    if (!mapsArePresent(context, band))
        return HDR_ERR_NOMEM;
    return PackedBand(band, context, inputs).render(callback, userData);
}

} // namespace

HdrStatus allocateBandBuffers(MemContext *memory, HdrContext *context) {
    BandBuffers &buffers = context->bands;
    buffers.release(memory);
    const MergeTables &merge = context->merge;
    for (void *&block : buffers.storage) {
        block = engineAlloc(memory, BandRows::blockSize(merge.rowWidth));
        if (!block)
            return HDR_ERR_NOMEM;
    }
    // The displacement at a pixel lies between those of the nodes around it.
    const Alignment &alignment = context->alignment;
    int lowest = 0;
    int highest = 0;
    const ptrdiff_t nodes = static_cast<ptrdiff_t>(alignment.warpWidth) * alignment.warpHeight;
    for (int k = 0; k < 3; k++) {
        if (!alignment.warpX[k] || !alignment.warpY[k])
            continue;
        for (ptrdiff_t i = 0; i < nodes; i++) {
            lowest = std::min(lowest, alignment.warpY[k][i] >> kWarpShift);
            highest = std::max(highest, alignment.warpY[k][i] >> kWarpShift);
        }
    }
    return buffers.referenceEdges.keep(memory, merge.target, lowest, highest);
}

HdrStatus render_band(const HdrBand *band, HdrContext *context, const Offscreen *inputs,
                      ProgressCallback callback, void *userData) {
    if (!context->smoothingFlag)
        return HDR_ERR_PARAM;
    switch (inputs[0].u32PixelArrayFormat) {
    case HDR_FORMAT_YUY2:
        return render_band_packed(*band, *context, inputs, callback, userData);
    default:
        return HDR_ERR_FORMAT;
    }
}

HdrStatus hdrBandWorker(const HdrBandTask &task) {
    return render_band(task.band, task.context, task.inputs, task.callback, task.userData);
}

void BandBuffers::release(MemContext *memory) {
    for (void *&block : storage) {
        engineFree(memory, block);
        block = nullptr;
    }
    referenceEdges.release(memory);
}

} // namespace hdr
