// SPDX-License-Identifier: MIT
#include "engine/check/input_check.h"

#include "engine/check/chroma_grid.h"
#include "engine/check/grid_statistics.h"
#include "engine/core/context.h"
#include "engine/core/memory.h"
#include "engine/prepare/exposure.h"

#include <algorithm>
#include <array>
#include <cstdlib>

namespace hdr {

HdrStatus hdrCheckInputs(MemContext *memory, HdrContext *context, const Offscreen *inputs) {
    const Preparation &preparation = context->preparation;
    InputCheck &check = context->check;
    orderExposures(context, preparation.exposureEstimate, context->imageCount);
    if (context->imageCount == 3 && preparation.brightIndex != 2 && context->preparedOnce == 0)
        return HDR_ERR_ORDER;

    chromaGrid(context, inputs, preparation.midIndex, preparation.gridPlane(kGridMidU),
               preparation.gridPlane(kGridMidV));
    chromaGrid(context, inputs, preparation.darkIndex, preparation.gridPlane(kGridDarkU),
               preparation.gridPlane(kGridDarkV));

    const auto [darkX, darkY] = context->alignment.globalShift[preparation.darkIndex];
    const auto [brightX, brightY] = context->alignment.globalShift[preparation.brightIndex];
    std::ranges::copy(std::array{darkX, darkY, brightX, brightY}, check.shiftSummary);
    std::ranges::copy(std::array{darkX, brightX, darkY, brightY}, check.shiftTable);
    if (std::ranges::any_of(check.shiftTable, [](int shift) { return std::abs(shift) > kLargestShift; }))
        context->raiseEarlyExit(HDR_ERR_SHIFT, HDR_FALLBACK_SHIFT);
    return prepareGridStatistics(memory, context);
}

void InputCheck::release(MemContext *memory) {
    for (uint16_t *&map : cellWeights)
        releaseArray(memory, map);
}

} // namespace hdr
