// SPDX-License-Identifier: MIT
#include "engine/analysis/single_image_fallback.h"

#include "engine/core/context.h"
#include "engine/core/memory.h"
#include "engine/prepare/reduction.h"

#include <algorithm>
#include <cmath>

namespace hdr {
namespace {

constexpr int kFallbackGridPlanes = 6;
constexpr int16_t kNeutralOffset = 256;
constexpr int16_t kWholeWeight = 256;
constexpr int kLongerTone = 20;

/// Replaces the grid weights and ghost masks by zeroed ones: three weight planes, then the four masks in
/// spare planes.
HdrStatus allocateEmptyGrids(MemContext *memory, HdrContext *context) {
    ExposureWeights &weights = context->weights;
    weights.release(memory);
    const size_t cells = context->preparation.gridPlaneSize();
    int16_t *block = allocateZeroed<int16_t>(memory, kFallbackGridPlanes * cells);
    if (!block)
        return HDR_ERR_NOMEM;
    weights.lumaWeightMid = block;
    weights.lumaWeightDark = block + cells;
    weights.lumaWeightBright = block + 2 * cells;
    uint8_t *masks = reinterpret_cast<uint8_t *>(block + 3 * cells);
    weights.ghostMaskA = masks;
    weights.ghostMaskB = masks + cells;
    weights.ghostMaskC = masks + 2 * cells;
    weights.ghostMaskD = masks + 3 * cells;
    return HDR_OK;
}

/// Makes every correction map neutral and removes the reference's grid levels, so that none of them is marked
/// as a ghost.
void neutraliseMaps(HdrContext *context) {
    const FirstMerge &merge = context->firstMerge;
    const size_t samples = static_cast<size_t>(merge.mapWidth) * static_cast<size_t>(merge.mapHeight);
    for (int i = 0; i < kCorrectionMapCount; i++)
        std::fill_n(merge.correctionMaps[i], samples, i <= kLumaOffsetBright ? kNeutralOffset : int16_t{0});
    std::fill_n(context->preparation.gridPlane(kGridMidLevel), context->preparation.gridPlaneSize(),
                uint16_t{0});
}

/// Undoes the alignment: shifts and warp grids of all inputs become zero.
void clearAlignment(HdrContext *context) {
    Alignment &alignment = context->alignment;
    const size_t nodes = static_cast<size_t>(alignment.warpWidth) * static_cast<size_t>(alignment.warpHeight);
    for (size_t input = 0; input < 3; input++) {
        std::fill_n(alignment.globalShift[input], 2, 0);
        std::fill_n(alignment.gridShift[input], 2, 0);
        for (int32_t *grid : {alignment.warpX[input], alignment.warpY[input]})
            if (grid)
                std::fill_n(grid, nodes, 0);
    }
    std::fill_n(context->check.shiftSummary, 4, 0);
    std::fill_n(context->check.shiftTable, 4, 0);
}

/// The input whose relative exposure is closest to 1; the lower index on ties.
int bestExposed(const Preparation &preparation) {
    const auto distance = [&](int input) {
        return std::abs(static_cast<float>(preparation.exposureEstimate[input]) - 1.0f);
    };
    const float d0 = std::min(distance(0), 10.0f);
    const float d1 = distance(1);
    const float d2 = distance(2);
    if (std::min(d0, d1) > d2)
        return 2;
    return d0 > d1 ? 1 : 0;
}

} // namespace

HdrStatus single_image_fallback(MemContext *memory, HdrContext *context) {
    Preparation &preparation = context->preparation;
    if (allocateEmptyGrids(memory, context) != HDR_OK)
        return HDR_OK;
    neutraliseMaps(context);
    clearAlignment(context);

    int chosen = bestExposed(preparation);
    if (chosen >= context->imageCount || chosen == preparation.darkIndex)
        chosen = preparation.midIndex;
    const bool isBright = chosen == preparation.brightIndex && chosen != preparation.midIndex;
    std::fill_n(isBright ? context->weights.lumaWeightBright : context->weights.lumaWeightMid,
                preparation.gridPlaneSize(), kWholeWeight);

    Offscreen *workImage = preparation.workImages[chosen];
    reduceToWorking(memory, &preparation.inputs[chosen], workImage, nullptr, kReduction, 0);
    offscreenCopyAll(preparation.mergedImage, workImage);
    context->toneLength += kLongerTone;
    context->earlyExitCode = HDR_OK;
    return HDR_OK;
}

} // namespace hdr
