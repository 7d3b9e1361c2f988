// SPDX-License-Identifier: MIT
#include "engine/prepare/alignment.h"

#include "engine/core/context.h"
#include "engine/core/plane.h"
#include "engine/prepare/features.h"
#include "engine/prepare/motion_search.h"
#include "engine/prepare/moved_cells.h"
#include "engine/prepare/registered_pictures.h"
#include "engine/prepare/tone_correction.h"
#include "engine/prepare/tone_match.h"
#include "engine/prepare/warp_grids.h"

#include <algorithm>
#include <array>
#include <new>

namespace hdr {

namespace {

constexpr int kLongSideCells = 5, kShortSideCells = 4;
constexpr int kFeatureDistance = 5;
/// Features without which no alignment is tried.
constexpr int kFewestFeatures = 3;
constexpr int kTrustedMatches = 7;
/// Share of the cells, in percent, in which things may move, and by how much each ghost suppression level
/// lowers it.
constexpr int kMostMoved = 90, kLessMoved = 4;

/// Brings the luminance of the scratch picture to the reference's levels and makes it the input's registered
/// picture.
void registerScratch(HdrContext *context, int index, const uint8_t *tones) {
    const Offscreen &scratch = *context->alignment.scratchImage;
    const Plane<uint8_t> luma = planeOf(scratch);
    for (int y = 0; y < luma.height; y++)
        std::transform(luma.row(y), luma.row(y) + luma.width, luma.row(y),
                       [tones](uint8_t level) { return tones[level]; });
    offscreenCopyAll(context->preparation.registeredImages[index], &scratch);
}

/// Finds where the input is to be sampled and moves its working picture there. 0, HDR_ERR_ALIGN when the
/// exposures do not agree on any motion, HDR_ERR_NOMEM or HDR_CANCELLED.
HdrStatus alignWorkingPicture(MemContext *memory, HdrContext *context, int index, const uint8_t *forward,
                              ProgressCallback callback) {
    Alignment &alignment = context->alignment;
    Preparation &preparation = context->preparation;
    LumaPyramid other;
    HdrStatus status = other.build(memory, preparation.inputs[index], comparisonTones(forward));
    if (status != HDR_OK)
        return status;
    MotionSearch search(memory, *alignment.preparedState, other);
    status = search.run([context, callback] {
        context->progress++;
        return !callback || callback(context->progress, 0, nullptr) != HDR_CANCELLED;
    });
    if (status != HDR_OK)
        return status;
    if (!search.isBelievable(alignment.trustedMatches))
        return HDR_ERR_ALIGN;
    search.recordMatches(alignment.matchTables[index]);
    std::copy_n(alignment.matchTables[index], 2 * kFeatureCapacity,
                alignment.featureTables + 2 * kFeatureCapacity);
    context->alignmentMode = std::max(static_cast<int32_t>(search.kind()), 1);
    roundWarpField(search.field(), alignment, index);
    if (isUnmoved(alignment, index))
        return HDR_OK;
    return reduceAligned(memory, alignment, index, preparation.inputs[index], *preparation.workImages[index],
                         preparation.validRects[index]);
}

/// Makes the registered picture of an aligned input one that differs from the reference only where the scene
/// does.
HdrStatus finishRegistered(MemContext *memory, HdrContext *context, int index, const uint8_t *forward) {
    const Preparation &preparation = context->preparation;
    const Offscreen &reference = *preparation.registeredImages[preparation.midIndex];
    const Offscreen &working = *preparation.workImages[index];
    std::array<uint8_t, kBins> &tones = context->alignment.tones[index];
    HdrStatus status = correctTones(memory, planeOf(reference), planeOf(working),
                                    preparation.validRects[index], forward, tones);
    if (status != HDR_OK)
        return status;
    offscreenCopyAll(context->alignment.scratchImage, &working);
    registerScratch(context, index, tones.data());
    status =
        replaceUnmeasurable(memory, reference, working, tones.data(), *preparation.registeredImages[index]);
    if (status != HDR_OK)
        return status;
    return findMovedCells(
        memory, planeOf(reference), planeOf(*preparation.registeredImages[index]), planeOf(working),
        tones.data(), preparation.validRects[index], context->ghostSuppressionLevel,
        Plane<uint8_t>(context->alignment.movedCells[index], preparation.gridWidth, preparation.gridHeight));
}

/// Gives an input's registered picture the reference's luminance.
void agreeWithReference(const Preparation &preparation, int index) {
    const Plane<const uint8_t> reference = planeOf(*preparation.registeredImages[preparation.midIndex]);
    const Plane<uint8_t> registered = planeOf(*preparation.registeredImages[index]);
    for (int y = 0; y < reference.height; y++)
        std::copy_n(reference.row(y), reference.width, registered.row(y));
}

/// Goes on without an exposure that agrees with the reference on no motion; without two there is nothing to
/// merge.
void leaveOut(HdrContext *context, int index) {
    int32_t *excluded = context->ghosts.excludedInputs;
    if (std::any_of(excluded, excluded + 3, [](int32_t flag) { return flag != 0; }))
        context->raiseEarlyExit(HDR_ERR_ALIGN, HDR_FALLBACK_FEATURES);
    excluded[index] = 1;
    agreeWithReference(context->preparation, index);
}

} // namespace

HdrStatus buildFeatureGrid(MemContext *memory, HdrContext *context) {
    Alignment &alignment = context->alignment;
    const Preparation &preparation = context->preparation;
    const Offscreen &reduced = *preparation.registeredImages[preparation.midIndex];
    const Offscreen &reference = preparation.inputs[preparation.midIndex];

    alignment.featureTables = allocateZeroed<float>(memory, 4 * kFeatureCapacity);
    if (!alignment.featureTables || offscreenAlloc(&alignment.scratchImage, reduced.i32Width,
                                                   reduced.i32Height, HDR_FORMAT_YUV444, memory) != HDR_OK)
        return HDR_ERR_NOMEM;
    alignment.trustedMatches = kTrustedMatches;
    alignment.warpWidth = warpNodeCount(reference.i32Width);
    alignment.warpHeight = warpNodeCount(reference.i32Height);
    const size_t nodes = static_cast<size_t>(alignment.warpWidth) * static_cast<size_t>(alignment.warpHeight);
    for (int i = 0; i < 3; i++) {
        alignment.matchTables[i] = allocateZeroed<float>(memory, 3 * kFeatureCapacity);
        if (!alignment.matchTables[i])
            return HDR_ERR_NOMEM;
        if (i == preparation.midIndex)
            continue;
        alignment.warpX[i] = allocateZeroed<int32_t>(memory, nodes);
        alignment.warpY[i] = allocateZeroed<int32_t>(memory, nodes);
        if (!alignment.warpX[i] || !alignment.warpY[i])
            return HDR_ERR_NOMEM;
    }

    void *storage = engineAlloc(memory, sizeof(FeatureGrid));
    if (!storage)
        return HDR_ERR_NOMEM;
    FeatureGrid *grid = new (storage) FeatureGrid;
    alignment.preparedState = grid;
    const bool wide = reduced.i32Width >= reduced.i32Height;
    const HdrStatus status = findCorners(memory, planeOf(reduced), wide ? kLongSideCells : kShortSideCells,
                                         wide ? kShortSideCells : kLongSideCells, kFeatureDistance,
                                         kFeatureCapacity, grid->features.data(), grid->count);
    if (status != HDR_OK)
        return status;
    alignment.featureCount = grid->count;
    for (int i = 0; i < grid->count; i++) {
        alignment.featureTables[i] = static_cast<float>(grid->features[static_cast<size_t>(i)].x);
        alignment.featureTables[kFeatureCapacity + i] =
            static_cast<float>(grid->features[static_cast<size_t>(i)].y);
    }
    if (grid->count < kFewestFeatures)
        return HDR_OK;
    return grid->reference.build(memory, reference, comparisonTones(nullptr));
}

void releaseFeatureGrid(MemContext *memory, HdrContext *context) {
    FeatureGrid *&grid = context->alignment.preparedState;
    if (!grid)
        return;
    grid->~FeatureGrid();
    engineFree(memory, grid);
    grid = nullptr;
}

HdrStatus alignInput(MemContext *memory, HdrContext *context, int index, ProgressCallback callback) {
    const Offscreen &scratch = *context->alignment.scratchImage;
    const uint8_t *forward = nullptr;
    HdrStatus status = matchTones(memory, context, index, scratch.i32Width * scratch.i32Height, &forward);
    if (status != HDR_OK)
        return status;
    registerScratch(context, index, forward);
    uint8_t *&moved = context->alignment.movedCells[index];
    moved = allocateZeroed<uint8_t>(memory, context->preparation.gridPlaneSize());
    if (!moved)
        return HDR_ERR_NOMEM;
    if (context->alignment.featureCount < kFewestFeatures) {
        context->raiseEarlyExit(HDR_ERR_ALIGN, HDR_FALLBACK_FEATURES);
        return HDR_OK;
    }
    status = alignWorkingPicture(memory, context, index, forward, callback);
    if (status == HDR_ERR_ALIGN) {
        leaveOut(context, index);
        return HDR_OK;
    }
    return status == HDR_OK ? finishRegistered(memory, context, index, forward) : status;
}

void settleMotion(HdrContext *context) {
    const Preparation &preparation = context->preparation;
    const uint8_t *dark = context->alignment.movedCells[preparation.darkIndex];
    const uint8_t *bright = context->alignment.movedCells[preparation.brightIndex];
    if (!dark || !bright)
        return;
    int64_t darkCells = 0, brightCells = 0, cells = 0;
    for (size_t i = 0; i < preparation.gridPlaneSize(); i++) {
        darkCells += dark[i] != 0;
        brightCells += bright[i] != 0;
        cells += dark[i] || bright[i];
    }
    const int64_t allCells = int64_t{preparation.gridColumns} * preparation.gridRows;
    if (100 * cells > allCells * (kMostMoved - kLessMoved * context->ghostSuppressionLevel))
        context->raiseEarlyExit(HDR_ERR_SHIFT, darkCells > brightCells ? HDR_FALLBACK_DARK_MOTION
                                                                       : HDR_FALLBACK_BRIGHT_MOTION);
    agreeWithReference(preparation, preparation.darkIndex);
    agreeWithReference(preparation, preparation.brightIndex);
}

void Alignment::release(MemContext *memory) {
    for (int i = 0; i < 3; i++) {
        releaseArray(memory, warpX[i]);
        releaseArray(memory, warpY[i]);
        releaseArray(memory, matchTables[i]);
        releaseArray(memory, movedCells[i]);
    }
    releaseArray(memory, featureTables);
    offscreenFree(&scratchImage, memory);
}

} // namespace hdr
