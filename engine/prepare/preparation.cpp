// SPDX-License-Identifier: MIT
#include "engine/prepare/preparation.h"

#include "engine/core/arithmetic.h"
#include "engine/core/context.h"
#include "engine/core/memory.h"
#include "engine/core/run_step.h"
#include "engine/prepare/exposure.h"
#include "engine/prepare/reduction.h"

#include <algorithm>
#include <array>
#include <numeric>

namespace hdr {

namespace {

constexpr int kInputs = 3;
constexpr std::array<int32_t, 7> kTuning = {256, 128, 127, 8, 12, 16, 8};

/// Reduces every input, measures it and orders the exposures.
HdrStatus measureInputs(MemContext *memory, HdrContext *context, const Offscreen *inputs, int count) {
    Preparation &preparation = context->preparation;
    for (int i = 0; i < count; i++) {
        Offscreen *reduced = preparation.workImages[i];
        const HdrStatus status = reduceToWorking(memory, &inputs[i], reduced, nullptr, kReduction, 0);
        if (status != HDR_OK)
            return status;
        const double estimate =
            estimateExposure(context, reduced, preparation.histogram(i, 0), i, context->tables.gammaExpand);
        preparation.exposureEstimate[i] = estimate;
        preparation.exposureGainQ10[i] = static_cast<uint32_t>(estimate * 1024 + 0.5);
        countSamples(reduced, 1, preparation.histogram(i, 1));
        countSamples(reduced, 2, preparation.histogram(i, 2));
        std::iota(preparation.toneCurve[i], preparation.toneCurve[i] + kLevels12, uint16_t{0});
    }
    orderExposures(context, preparation.exposureEstimate, count);
    return HDR_OK;
}

/// Brings the exposures other than the reference into register with it.
HdrStatus registerInputs(MemContext *memory, HdrContext *context, int count, ProgressCallback callback) {
    const Preparation &preparation = context->preparation;
    const int reference = preparation.midIndex;
    offscreenCopyAll(preparation.registeredImages[reference], preparation.workImages[reference]);
    HdrStatus status = buildFeatureGrid(memory, context);
    if (status != HDR_OK || count == 1)
        return status;
    for (int index : {preparation.darkIndex, preparation.brightIndex}) {
        if (index == reference)
            continue;
        offscreenCopyAll(context->alignment.scratchImage, preparation.workImages[index]);
        status = alignInput(memory, context, index, callback);
        if (status != HDR_OK)
            return status;
    }
    settleMotion(context);
    return HDR_OK;
}

} // namespace

HdrStatus prepareAllocate(MemContext *memory, HdrContext *context, const Offscreen *first) {
    Preparation &preparation = context->preparation;
    std::copy(kTuning.begin(), kTuning.end(), preparation.tuning);
    preparation.sourceWidth = first->i32Width;
    preparation.sourceHeight = first->i32Height;
    preparation.sourcePitch = first->pi32Pitch[0];
    preparation.gridColumns = ceilDivide(first->i32Width, kCellSize);
    preparation.gridRows = ceilDivide(first->i32Height, kCellSize);
    preparation.gridWidth = preparation.gridColumns + 2;
    preparation.gridHeight = preparation.gridRows + 2;
    const int width = 2 * (first->i32Width / (2 * kReduction));
    const int height = 2 * (first->i32Height / (2 * kReduction));
    std::fill_n(preparation.validRects, kInputs, Rect{0, 0, width, height});

    bool complete = true;
    const auto makePicture = [&](Offscreen *&picture) {
        complete &= offscreenAlloc(&picture, width, height, HDR_FORMAT_YUV444, memory) == HDR_OK;
    };
    preparation.gridStats = allocateZeroed<uint16_t>(memory, kGridPlaneCount * preparation.gridPlaneSize());
    complete &= preparation.gridStats != nullptr;
    for (int i = 0; i < kInputs; i++) {
        preparation.statistics[i] = allocateArray<uint32_t>(memory, 3 * kBins);
        preparation.toneCurve[i] = allocateArray<uint16_t>(memory, kLevels12);
        complete &= preparation.statistics[i] && preparation.toneCurve[i];
        makePicture(preparation.registeredImages[i]);
        makePicture(preparation.workImages[i]);
    }
    makePicture(preparation.mergedImage);
    makePicture(preparation.toneImage);
    return complete ? HDR_OK : HDR_ERR_NOMEM;
}

HdrStatus hdrPrepareInputs(MemContext *memory, HdrContext *context, const Offscreen *inputs, int count,
                           ProgressCallback callback) {
    Preparation &preparation = context->preparation;
    preparation.midIndex = 0;
    preparation.inputs = inputs;
    HdrStatus status = prepareAllocate(memory, context, inputs);
    if (status != HDR_OK)
        return status;
    status = runStep(context, HDR_STEP_REDUCE, [&] { return measureInputs(memory, context, inputs, count); });
    if (status != HDR_OK)
        return status;
    return runStep(context, HDR_STEP_ALIGN, [&] { return registerInputs(memory, context, count, callback); });
}

void Preparation::release(MemContext *memory) {
    releaseArray(memory, gridStats);
    for (int i = 0; i < kInputs; i++) {
        releaseArray(memory, statistics[i]);
        releaseArray(memory, toneCurve[i]);
        offscreenFree(&workImages[i], memory);
        offscreenFree(&registeredImages[i], memory);
    }
    offscreenFree(&mergedImage, memory);
    offscreenFree(&toneImage, memory);
    inputs = nullptr;
}

} // namespace hdr
