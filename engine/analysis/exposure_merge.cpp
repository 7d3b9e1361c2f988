// SPDX-License-Identifier: MIT
#include "engine/analysis/exposure_merge.h"

#include "engine/analysis/coarse_offsets.h"
#include "engine/analysis/guided_filter.h"
#include "engine/analysis/plane_filters.h"
#include "engine/analysis/single_image_fallback.h"
#include "engine/core/arithmetic.h"
#include "engine/core/buffer.h"
#include "engine/core/context.h"

#include <algorithm>

namespace hdr {
namespace {

constexpr int kDetailRadius = 32;
constexpr int kEdgeRadius = 16;
constexpr double kEdgeRegularisation = 4.0;
constexpr int kGhostRadius = 2;

Plane<int16_t> mapPlane(const HdrContext &context, int16_t *map) {
    return {map, context.firstMerge.mapWidth, context.firstMerge.mapHeight};
}

/// Spreads the detail mask and brings it to even weights of at most 255.
HdrStatus prepareDetailWeights(MemContext *memory, HdrContext *context) {
    const Plane<int16_t> mask = mapPlane(*context, context->chromaWeights.detailMask);
    const HdrStatus status =
        box_mean_s16(memory, mask.data, mask.width, mask.height, mask.width, kDetailRadius, 1);
    if (status != HDR_OK)
        return status;
    for (int y = 0; y < mask.height; y++)
        for (int x = 0; x < mask.width; x++)
            mask(x, y) = static_cast<int16_t>(std::min(roundDown(mask(x, y), 2), 255));
    return HDR_OK;
}

/// Replaces each offset by its blend with refined(x, y), with the detail mask's weight in 1/256.
template <typename Refined>
void blendByDetail(const HdrContext &context, Plane<int16_t> offsets, Refined refined) {
    const Plane<const int16_t> detail = mapPlane(context, context.chromaWeights.detailMask);
    for (int y = 0; y < offsets.height; y++)
        for (int x = 0; x < offsets.width; x++) {
            const int weight = detail(x, y);
            const int blend = offsets(x, y) * (256 - weight) + refined(x, y) * weight;
            offsets(x, y) = static_cast<int16_t>(blend >> 8);
        }
}

/// Blends quarter-scale offsets, smoothed along the merged picture's edges, into the detailed places of the
/// reference's and the dark exposure's maps; the bright exposure's map takes none.
HdrStatus blendCoarseOffsets(MemContext *memory, HdrContext *context) {
    const FirstMerge &merge = context->firstMerge;
    ExposureMerge &stage = context->exposureMerge;
    stage.coarseWidth = coarseSize(merge.mapWidth);
    stage.coarseHeight = coarseSize(merge.mapHeight);
    const size_t samples = static_cast<size_t>(stage.coarseWidth) * static_cast<size_t>(stage.coarseHeight);
    Buffer<int16_t> guideSamples(memory, samples);
    Buffer<int16_t> offsetSamples(memory, samples);
    if (!guideSamples || !offsetSamples)
        return HDR_ERR_NOMEM;
    const Plane<int16_t> guide(guideSamples.data(), stage.coarseWidth, stage.coarseHeight);
    const Plane<int16_t> coarse(offsetSamples.data(), stage.coarseWidth, stage.coarseHeight);

    reduce_to_coarse(planeOf(*context->preparation.mergedImage), guide);
    for (int16_t *map : {merge.lumaOffsetMid(), merge.lumaOffsetDark()}) {
        const Plane<int16_t> offsets = mapPlane(*context, map);
        reduce_to_coarse(offsets, coarse);
        const HdrStatus status = coarse_guided_filter(memory, guide, coarse);
        if (status != HDR_OK)
            return status;
        blendByDetail(*context, offsets,
                      [&](int x, int y) { return coarse(x / kCoarseStep, y / kCoarseStep); });
    }
    return HDR_OK;
}

/// Blends an edge-aware smoothing of each offset map into its detailed places.
HdrStatus blendSmoothedOffsets(MemContext *memory, HdrContext *context) {
    const FirstMerge &merge = context->firstMerge;
    Buffer<int16_t> samples(memory,
                            static_cast<size_t>(merge.mapWidth) * static_cast<size_t>(merge.mapHeight));
    if (!samples)
        return HDR_ERR_NOMEM;
    const Plane<int16_t> smoothed = mapPlane(*context, samples.data());
    for (int16_t *map : {merge.lumaOffsetDark(), merge.lumaOffsetMid(), merge.lumaOffsetBright()}) {
        const HdrStatus status = guided_filter_s16(memory, context->preparation.mergedImage, map, kEdgeRadius,
                                                   nullptr, smoothed.data, 1, kEdgeRegularisation);
        if (status != HDR_OK)
            return status;
        blendByDetail(*context, mapPlane(*context, map), [&](int x, int y) { return smoothed(x, y); });
    }
    return HDR_OK;
}

/// Makes the exposures agree where something moved, so that each such place comes from one of them. Goes
/// without when there is no memory for the mask.
HdrStatus patchGhosts(MemContext *memory, const HdrContext &context) {
    const Preparation &preparation = context.preparation;
    const FirstMerge &merge = context.firstMerge;
    const ExposureWeights &weights = context.weights;
    Buffer<uint8_t> mask(memory, preparation.gridPlaneSize());
    if (!mask)
        return HDR_OK;
    const auto exposure = [&](int input, int16_t *offsets) {
        return OffsetExposure{planeOf(*preparation.workImages[input]), offsets};
    };
    const OffsetExposure dark = exposure(preparation.darkIndex, merge.lumaOffsetDark());
    const OffsetExposure mid = exposure(preparation.midIndex, merge.lumaOffsetMid());
    const OffsetExposure bright = exposure(preparation.brightIndex, merge.lumaOffsetBright());
    // The order counts: a round may read the map that an earlier one patched.
    struct Round {
        const uint8_t *mask;
        const OffsetExposure &reference, &patched;
    };
    for (const Round &round :
         {Round{weights.ghostMaskB, dark, mid}, Round{weights.ghostMaskA, mid, dark},
          Round{weights.ghostMaskC, mid, bright}, Round{weights.ghostMaskD, bright, mid}}) {
        std::copy_n(round.mask, mask.size(), mask.data());
        const HdrStatus status = box_mean_u8(memory, mask.data(), preparation.gridWidth,
                                             preparation.gridHeight, preparation.gridWidth, kGhostRadius, 2);
        if (status != HDR_OK)
            return status;
        patch_offset_map(mask.data(), preparation.gridWidth, round.reference, round.patched);
    }
    return HDR_OK;
}

/// The chroma weights of one pixel.
struct ChromaMix {
    int dark, bright, mid;

    /// Fades the dark exposure's colour out where it is itself dark and the bright one's where it is bright.
    /// The fade is full in the reference's mid-tones and vanishes toward its shadows and highlights.
    void fadeByOwnLuma(int darkLuma, int brightLuma, int midLuma) {
        if (midLuma <= 31 || midLuma >= 225)
            return;
        const int fadedDark = dark * std::clamp(darkLuma - 64, 0, 64) >> 6;
        const int fadedBright = bright * std::clamp(128 - brightLuma, 0, 64) >> 6;
        dark = crossFade(dark, fadedDark, midLuma);
        bright = crossFade(bright, fadedBright, midLuma);
    }

private:
    static int crossFade(int weight, int faded, int midLuma) {
        if (midLuma < 64)
            return (faded * (midLuma - 32) + weight * (64 - midLuma) + 16) >> 5;
        if (midLuma <= 192)
            return faded;
        return (faded * (224 - midLuma) + weight * (midLuma - 192) + 16) >> 5;
    }
};

int correctedLuma(int offset, int luma) {
    return clamp8(offset + luma - 256);
}

} // namespace

void patch_offset_map(const uint8_t *mask, int gridWidth, const OffsetExposure &reference,
                      const OffsetExposure &patched) {
    const int width = reference.luma.width;
    for (int y = 0; y < reference.luma.height; y++) {
        const uint8_t *referenceLuma = reference.luma.row(y);
        const uint8_t *patchedLuma = patched.luma.row(y);
        const int16_t *referenceOffsets = reference.offsets + static_cast<ptrdiff_t>(y) * width;
        int16_t *patchedOffsets = patched.offsets + static_cast<ptrdiff_t>(y) * width;
        const uint8_t *upper = mask + static_cast<ptrdiff_t>(y >> 2) * gridWidth;
        const uint8_t *lower = upper + gridWidth;
        // The fractions follow the cell, not the pixel inside it, so that a whole cell has one strength.
        const int fy = (y >> 2) & 3;
        for (int cell = 0; 4 * cell < width; cell++) {
            const int fx = cell & 3;
            const int strength = ((upper[cell + 1] * fx + upper[cell] * (4 - fx)) * (4 - fy) +
                                  (lower[cell + 1] * fx + lower[cell] * (4 - fx)) * fy + 8) >>
                                 4;
            if (strength == 0)
                continue;
            for (int x = 4 * cell; x < std::min(4 * cell + 4, width); x++) {
                const int target = referenceOffsets[x] + referenceLuma[x] - patchedLuma[x];
                patchedOffsets[x] =
                    static_cast<int16_t>(((256 - strength) * patchedOffsets[x] + target * strength) >> 8);
            }
        }
    }
}

void merge_exposures(MemContext *memory, HdrContext *context) {
    const Preparation &preparation = context->preparation;
    const FirstMerge &maps = context->firstMerge;
    const ExposureWeights &grid = context->weights;
    const ChromaWeights &weights = context->chromaWeights;
    const uint32_t *reciprocal = context->tables.reciprocalTable;
    const bool withoutDark = context->ghosts.chromaMode == kChromaWithoutDark;
    const bool withoutBright = context->ghosts.chromaMode == kChromaWithoutBright;
    const Offscreen &mid = *preparation.workImages[preparation.midIndex];

    for (int y = 0; y < mid.i32Height; y++) {
        const auto darkRow = rowsOfPlanes(*preparation.workImages[preparation.darkIndex], y);
        const auto midRow = rowsOfPlanes(mid, y);
        const auto brightRow = rowsOfPlanes(*preparation.workImages[preparation.brightIndex], y);
        const auto mergedRow = rowsOfPlanes(*preparation.mergedImage, y);
        const ptrdiff_t mapRow = static_cast<ptrdiff_t>(y) * mid.i32Width;
        const ptrdiff_t gridRow = static_cast<ptrdiff_t>((y + 2) >> 2) * preparation.gridWidth;
        for (int x = 0; x < mid.i32Width; x++) {
            const ptrdiff_t i = mapRow + x;
            const ptrdiff_t q = gridRow + ((x + 2) >> 2);
            const int weightSum = grid.lumaWeightDark[q] + grid.lumaWeightMid[q] + grid.lumaWeightBright[q];
            const int weighted =
                correctedLuma(maps.lumaOffsetDark()[i], darkRow[0][x]) * grid.lumaWeightDark[q] +
                correctedLuma(maps.lumaOffsetMid()[i], midRow[0][x]) * grid.lumaWeightMid[q] +
                correctedLuma(maps.lumaOffsetBright()[i], brightRow[0][x]) * grid.lumaWeightBright[q];
            mergedRow[0][x] =
                static_cast<uint8_t>(clamp8((weighted * static_cast<int>(reciprocal[weightSum])) >> 15));

            ChromaMix chroma{withoutDark ? 0 : weights.chromaWeightDark[i],
                             withoutBright ? 0 : weights.chromaWeightBright[i], weights.chromaWeightMid[i]};
            chroma.fadeByOwnLuma(darkRow[0][x], brightRow[0][x], midRow[0][x]);
            const int r = static_cast<int>(reciprocal[chroma.dark + chroma.mid + chroma.bright]);
            for (size_t plane = 1; plane < 3; plane++) {
                const int sum = darkRow[plane][x] * (chroma.dark * r) +
                                brightRow[plane][x] * (chroma.bright * r) +
                                midRow[plane][x] * (chroma.mid * r);
                mergedRow[plane][x] =
                    sum <= 0 ? uint8_t{128} : static_cast<uint8_t>(std::min(255, (sum + 16384) >> 15));
            }
        }
    }
    context->chromaWeights.releaseWeights(memory);
}

HdrStatus exposure_merge_stage(MemContext *memory, HdrContext *context) {
    if (context->earlyExitCode != HDR_OK)
        return single_image_fallback(memory, context);
    HdrStatus status = prepareDetailWeights(memory, context);
    if (status == HDR_OK)
        status = blendCoarseOffsets(memory, context);
    if (status == HDR_OK)
        status = blendSmoothedOffsets(memory, context);
    if (status == HDR_OK)
        status = patchGhosts(memory, *context);
    if (status != HDR_OK)
        return status;
    if (context->imageCount < 2) {
        context->fallback = HDR_FALLBACK_SINGLE_INPUT;
        return single_image_fallback(memory, context);
    }
    merge_exposures(memory, context);
    return HDR_OK;
}

} // namespace hdr
