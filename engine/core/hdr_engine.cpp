// SPDX-License-Identifier: MIT
#include "engine/hdr_engine.h"

#include "engine/core/context.h"
#include "engine/core/memory.h"
#include "engine/core/pipeline.h"

#include <algorithm>
#include <array>

using namespace hdr;

namespace {

constexpr int kInputs = 3;
constexpr int kSmallestSide = 100;
constexpr int kLargestSide = 65535;
constexpr int64_t kMostPixels = int64_t{1} << 29;

constexpr int kDefaultToneLength = 25;
constexpr int kLongestTone = 100;
constexpr int kStrongestBrightness = 100;
constexpr int kFullToneSaturation = 100;

/// The low 32 bits of a parameter, or `fallback` when they are not in [low, high].
int32_t within(int64_t value, int32_t low, int32_t high, int32_t fallback) {
    const int32_t narrow = static_cast<int32_t>(static_cast<uint32_t>(value));
    return narrow >= low && narrow <= high ? narrow : fallback;
}

/// Whether the pictures are what a run can merge.
HdrStatus checkPictures(const Offscreen *inputs, int32_t imageCount, const Offscreen *outputs,
                        int32_t outputIndex) {
    if (!inputs || outputs != inputs || imageCount != kInputs || outputIndex < 0 || outputIndex >= imageCount)
        return HDR_ERR_PARAM;
    for (const Offscreen *picture = inputs; picture != inputs + imageCount; picture++) {
        if (picture->u32PixelArrayFormat != HDR_FORMAT_YUY2)
            return HDR_ERR_FORMAT;
        if (!picture->ppu8Plane[0] || picture->i32Width < kSmallestSide ||
            picture->i32Height < kSmallestSide || picture->i32Width != inputs->i32Width ||
            picture->i32Height != inputs->i32Height || picture->pi32Pitch[0] < 2 * picture->i32Width)
            return HDR_ERR_PARAM;
    }
    const bool isSmallEnough = inputs->i32Width <= kLargestSide && inputs->i32Height <= kLargestSide &&
                               int64_t{inputs->i32Width} * inputs->i32Height <= kMostPixels;
    return isSmallEnough ? HDR_OK : HDR_ERR_PARAM;
}

/// Clears what the previous run found.
void beginRun(MemContext *memory, HdrContext *context) {
    hdrReleaseRunBuffers(memory, context);
    context->progress = 0;
    context->earlyExitCode = HDR_OK;
    context->fallback = HDR_FALLBACK_NONE;
    std::fill(std::begin(context->stepMicroseconds), std::end(context->stepMicroseconds), 0);
    context->alignment = {};
    context->ghosts = {};
    context->scene = {};
    context->render = {};
    context->preparation = {};
}

/// Copies the finished picture to another record of its format, whole rows with their padding.
void copyResult(Offscreen &to, const Offscreen &from) {
    const auto copyPlane = [&](int plane, int64_t bytes) {
        bytes = std::min({bytes, offscreenPlaneSize(to, plane), offscreenPlaneSize(from, plane)});
        std::copy_n(from.ppu8Plane[plane], bytes, to.ppu8Plane[plane]);
    };
    const int64_t lumaBytes = int64_t{to.i32Height} * to.pi32Pitch[0];
    switch (to.u32PixelArrayFormat) {
    case HDR_FORMAT_YUY2:
        copyPlane(0, lumaBytes);
        break;
    case HDR_FORMAT_NV12:
    case HDR_FORMAT_NV21:
        copyPlane(0, lumaBytes);
        copyPlane(1, lumaBytes / 2);
        break;
    case HDR_FORMAT_NV16:
        copyPlane(0, lumaBytes);
        copyPlane(1, lumaBytes);
        break;
    case HDR_FORMAT_I420:
        copyPlane(0, lumaBytes);
        for (int plane = 1; plane <= 2; plane++)
            copyPlane(plane, int64_t{to.i32Height / 2} * from.pi32Pitch[1]);
        break;
    default:
        break;
    }
}

} // namespace

HdrStatus hdrCreate(MemContext *memory, int64_t creationMode, HdrContext **context) {
    HdrContext *made = allocateZeroed<HdrContext>(memory, 1);
    *context = made;
    if (!made)
        return HDR_ERR_NOMEM;
    made->creationMode = static_cast<int32_t>(static_cast<uint32_t>(creationMode));
    made->alignmentMode = 3;
    made->renderFlag = 1;
    made->ghostMaskEnable = 1;
    made->toneLength = kDefaultToneLength;
    return made->tables.create(memory);
}

HdrStatus hdrSetGhostSuppressionLevel(MemContext * /*memory*/, HdrContext *context, int32_t level) {
    context->ghostSuppressionLevel = std::clamp(level, 0, 10);
    return HDR_OK;
}

HdrStatus hdrProcess(MemContext *memory, HdrContext *context, Offscreen *inputs, int32_t imageCount,
                     Offscreen *outputs, int32_t outputIndex, const HdrParams *parameters,
                     void * /*reserved*/, ProgressCallback callback, void *userData) {
    if (!context)
        return HDR_ERR_PARAM;
    HdrStatus status = checkPictures(inputs, imageCount, outputs, outputIndex);
    if (status != HDR_OK)
        return status;
    beginRun(memory, context);

    const Offscreen spare = {};
    context->preparedOnce = 1;
    status = hdrPrepareInputs(memory, context, inputs, imageCount, callback);
    if (status != HDR_OK)
        return status;
    releaseFeatureGrid(memory, context);

    const HdrParams wanted = parameters ? *parameters : HdrParams{kDefaultToneLength, 0, 0};
    const int toneLength = within(wanted.toneLength, 0, kLongestTone, kDefaultToneLength);
    const int brightness = within(wanted.brightness, -kStrongestBrightness, kStrongestBrightness, 0);
    const int toneSaturation = within(wanted.toneSaturation, 0, kFullToneSaturation, 0);
    context->toneLength = toneLength;
    context->warningFlag = 0;

    status = hdrRunPipeline(memory, context, inputs, &spare, imageCount, outputs, outputIndex, nullptr,
                            nullptr, callback, userData, toneLength, brightness, toneSaturation);
    if (status != HDR_OK) {
        hdrReleaseRunBuffers(memory, context);
        return status;
    }
    const int reference = context->preparation.midIndex;
    // The run leaves the picture in the reference's record, which for index 2 counts as the one asked for.
    if (reference != 2 && reference != outputIndex)
        copyResult(outputs[outputIndex], outputs[reference]);
    return context->warningFlag == 1 ? HDR_WARN_25 : HDR_OK;
}

HdrStatus hdrDestroy(MemContext *memory, HdrContext *context) {
    if (!context)
        return HDR_ERR_NOMEM;
    hdrReleaseRunBuffers(memory, context);
    context->tables.release(memory);
    engineFree(memory, context);
    return HDR_OK;
}

HdrStatus hdrGetRunInfo(const HdrContext *context, HdrRunInfo *info) {
    if (!context || !info)
        return HDR_ERR_PARAM;
    const Preparation &preparation = context->preparation;
    info->darkIndex = preparation.darkIndex;
    info->midIndex = preparation.midIndex;
    info->brightIndex = preparation.brightIndex;
    for (int i = 0; i < kInputs; i++) {
        info->exposureEstimate[i] = preparation.exposureEstimate[i];
        const Alignment &alignment = context->alignment;
        info->shiftX[i] = alignment.globalShift[i][0] + kCellSize * alignment.gridShift[i][0];
        info->shiftY[i] = alignment.globalShift[i][1] + kCellSize * alignment.gridShift[i][1];
        info->excluded[i] = context->ghosts.excludedInputs[i];
    }
    info->fallback = context->fallback;
    const Rect &crop = context->render.outputCrop;
    info->crop[0] = crop.x0;
    info->crop[1] = crop.y0;
    info->crop[2] = crop.x1;
    info->crop[3] = crop.y1;
    std::copy(std::begin(context->stepMicroseconds), std::end(context->stepMicroseconds),
              info->stepMicroseconds);
    return HDR_OK;
}

HdrStatus hdrSetStepObserver(HdrContext *context, HdrStepObserver observer, void *userData) {
    if (!context)
        return HDR_ERR_PARAM;
    context->stepObserver = observer;
    context->stepObserverData = userData;
    return HDR_OK;
}

const char *hdrStepName(int32_t step) {
    static constexpr std::array<const char *, HDR_STEP_COUNT> names = {
        "reduce",     "align",         "check",       "chromaWeights", "weights",
        "firstMerge", "exposureMerge", "renderSetup", "render",        "output"};
    return step >= 0 && step < HDR_STEP_COUNT ? names[static_cast<size_t>(step)] : nullptr;
}
