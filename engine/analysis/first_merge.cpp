// SPDX-License-Identifier: MIT
#include "engine/analysis/first_merge.h"

#include "engine/analysis/grid_blocks.h"
#include "engine/analysis/guided_filter.h"
#include "engine/analysis/luma_histogram.h"
#include "engine/analysis/plane_filters.h"
#include "engine/core/arithmetic.h"
#include "engine/core/buffer.h"
#include "engine/core/context.h"
#include "engine/core/plane.h"
#include "engine/prepare/tone_match.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace hdr {
namespace {

constexpr int kMapsPerAllocation = 3;
constexpr int kEdgeRadius = 16;
constexpr double kEdgeRegularisation = 4.0;
/// At full strength the bright exposure's luminance is entirely the tone-matched one.
constexpr int kFullBrightBlend = 256;
/// Colour of the dark exposure fades in over the levels from this one to its double.
constexpr int kDarkNoiseLevel = 32;

using Histogram = std::array<uint32_t, kBins>;

/// The pictures that the mix is made of, all aligned to the reference.
struct Exposures {
    Offscreen dark, mid, bright;
};

/// Weights of one pixel in units that `reciprocal` brings to a sum of (nearly) 32768.
struct MixWeights {
    int dark, bright, mid, reciprocal;

    MixWeights(int dark, int bright, int mid, const uint32_t *reciprocalTable)
        : dark(dark), bright(bright), mid(mid),
          reciprocal(static_cast<int>(reciprocalTable[dark + bright + mid])) {}

    uint8_t mix(int darkSample, int brightSample, int midSample) const {
        return static_cast<uint8_t>(clamp8((mid * reciprocal * midSample + dark * reciprocal * darkSample +
                                            bright * reciprocal * brightSample) >>
                                           15));
    }
};

HdrStatus allocateMaps(MemContext *memory, FirstMerge &merge, const Offscreen &workImage) {
    merge.release(memory);
    merge.mapWidth = workImage.i32Width;
    merge.mapHeight = workImage.i32Height;
    const size_t samples = static_cast<size_t>(merge.mapWidth + 2) * static_cast<size_t>(merge.mapHeight + 2);
    for (int first = 0; first < kCorrectionMapCount; first += kMapsPerAllocation) {
        int16_t *block = allocateZeroed<int16_t>(memory, kMapsPerAllocation * samples);
        if (!block)
            return HDR_ERR_NOMEM;
        for (int i = 0; i < kMapsPerAllocation; i++)
            merge.correctionMaps[first + i] = block + static_cast<size_t>(i) * samples;
    }
    return HDR_OK;
}

/// How much of the tone-matched bright exposure's luminance replaces the photographed one, for a bright
/// exposure of relative exposure `gain` below 0.5: the brighter the exposure, the more. 0..256.
int brightBlendWeight(double gain) {
    const double singlePrecisionGain = static_cast<float>(gain);
    return static_cast<int>(std::min((0.5 - singlePrecisionGain) * 1024 + 0.5, double{kFullBrightBlend}));
}

/// The bright exposure of a very bright shot: `luma` receives a blend of the registered and the photographed
/// luminance, the chroma is that of the registered picture. Rebuilds the tone match between the reference and
/// this blend, even when its histogram could not be counted for lack of memory.
Offscreen blendBright(MemContext *memory, HdrContext *context, const Offscreen &workImage, double gain,
                      Plane<uint8_t> luma) {
    const Preparation &preparation = context->preparation;
    const Offscreen &registered = *preparation.registeredImages[preparation.brightIndex];
    const int weight = brightBlendWeight(gain);
    for (int y = 0; y < luma.height; y++) {
        const uint8_t *matched = planeOf(registered).row(y);
        const uint8_t *photographed = planeOf(workImage).row(y);
        uint8_t *blended = luma.row(y);
        for (int x = 0; x < luma.width; x++)
            blended[x] = static_cast<uint8_t>(
                (matched[x] * weight + photographed[x] * (kFullBrightBlend - weight) + 128) >> 8);
    }
    Offscreen blend = registered;
    blend.ppu8Plane[0] = luma.data;
    blend.pi32Pitch[0] = static_cast<int32_t>(luma.pitch);

    Histogram histogram{};
    luma_histogram(memory, &blend, histogram.data());
    const uint32_t *midHistogram = preparation.histogram(preparation.midIndex, 0);
    const int count = luma.width * luma.height;
    build_tone_match(context->tables.toneMatchMidToBright, midHistogram, histogram.data(), count, 0, 0);
    build_tone_match(context->tables.toneMatchBrightToMid, histogram.data(), midHistogram, count, 0, 1);
    return blend;
}

/// Mixes the exposures by their chroma weights into mergedImage and toneImage (the reference re-toned as the
/// others see it), and into luminance planes that lack the bright (darkSide) or the reference's own picture
/// (brightSide: the bright exposure re-toned as the others see it).
void mixExposures(const HdrContext &context, const Exposures &exposures, Plane<uint8_t> darkSide,
                  Plane<uint8_t> brightSide) {
    const ChromaWeights &weights = context.chromaWeights;
    const Tables &tables = context.tables;
    const bool withoutDark = context.ghosts.chromaMode == kChromaWithoutDark;
    const bool withoutBright = context.ghosts.chromaMode == kChromaWithoutBright;
    const Offscreen &merged = *context.preparation.mergedImage;
    const Offscreen &tone = *context.preparation.toneImage;

    for (int y = 0; y < context.firstMerge.mapHeight; y++) {
        const auto dark = rowsOfPlanes(exposures.dark, y);
        const auto mid = rowsOfPlanes(exposures.mid, y);
        const auto bright = rowsOfPlanes(exposures.bright, y);
        const auto mergedRows = rowsOfPlanes(merged, y);
        const auto toneRows = rowsOfPlanes(tone, y);
        const ptrdiff_t mapRow = static_cast<ptrdiff_t>(y) * context.firstMerge.mapWidth;

        for (int x = 0; x < context.firstMerge.mapWidth; x++) {
            const int darkWeight = withoutDark ? 0 : weights.chromaWeightDark[mapRow + x];
            const int brightWeight = withoutBright ? 0 : weights.chromaWeightBright[mapRow + x];
            const int midWeight = weights.chromaWeightMid[mapRow + x];
            const int darkLuma = dark[0][x];
            const int midLuma = mid[0][x];
            const int brightLuma = bright[0][x];

            const int darkLumaWeight = darkLuma < kDarkNoiseLevel ? (darkWeight * darkLuma) >> 5 : darkWeight;
            const MixWeights luma(darkLumaWeight, brightWeight, midWeight, tables.reciprocalTable);
            const int brightAsMid = tables.toneMatchBrightToMid[brightLuma];
            mergedRows[0][x] = luma.mix(darkLuma, brightLuma, midLuma);
            toneRows[0][x] =
                luma.mix(tables.toneMatchMidToDark[midLuma], tables.toneMatchMidToBright[midLuma], midLuma);
            darkSide.row(y)[x] = luma.mix(darkLuma, 0, tables.toneMatchDarkToMid[darkLuma]);
            brightSide.row(y)[x] = luma.mix(tables.toneMatchMidToDark[brightAsMid], brightLuma, brightAsMid);

            int darkChromaWeight = darkWeight;
            if (darkLuma < kDarkNoiseLevel)
                darkChromaWeight = 0;
            else if (darkLuma < 2 * kDarkNoiseLevel)
                darkChromaWeight = ((darkLuma - kDarkNoiseLevel) * darkWeight) >> 5;
            const MixWeights chroma(darkChromaWeight, brightWeight, midWeight, tables.reciprocalTable);
            for (size_t plane = 1; plane < 3; plane++)
                mergedRows[plane][x] = toneRows[plane][x] =
                    chroma.mix(dark[plane][x], bright[plane][x], mid[plane][x]);
        }
    }
}

/// What the ghost replacements work on.
struct GhostPlanes {
    Plane<uint8_t> merged, tone, darkSide, brightSide;
    Plane<uint8_t> softMask; ///< grid-size scratch
};

using BlendBlocks = void (*)(Plane<uint8_t>, Plane<const uint8_t>, Plane<const uint8_t>);

/// Replaces what `mask` marks in the merged picture by `source`, with borders softened over `radius` cells.
HdrStatus blendSoftly(MemContext *memory, const GhostPlanes &planes, Plane<const uint8_t> source,
                      const uint8_t *mask, int radius, BlendBlocks blend) {
    const Plane<uint8_t> &soft = planes.softMask;
    std::copy_n(mask, static_cast<size_t>(soft.width) * static_cast<size_t>(soft.height), soft.data);
    const HdrStatus status = box_mean_u8(memory, soft.data, soft.width, soft.height, soft.width, radius, 1);
    if (status == HDR_OK)
        blend(planes.merged, source, soft);
    return status;
}

/// Replaces what `mask` marks in the merged picture by the re-toned reference, smoothed together with the
/// merged picture around it so that no edge shows.
HdrStatus replaceByTone(MemContext *memory, const HdrContext &context, const GhostPlanes &planes,
                        const uint8_t *mask, int radius, BlendBlocks blend) {
    const Preparation &preparation = context.preparation;
    copy_blocks_where_clear(planes.tone, planes.merged,
                            Plane<const uint8_t>(mask, planes.softMask.width, planes.softMask.height));
    const HdrStatus status =
        guided_filter_u8(memory, preparation.workImages[preparation.midIndex], preparation.toneImage,
                         kEdgeRadius, nullptr, preparation.toneImage, kEdgeRegularisation);
    return status == HDR_OK ? blendSoftly(memory, planes, planes.tone, mask, radius, blend) : status;
}

HdrStatus replaceGhosts(MemContext *memory, const HdrContext &context, const GhostPlanes &planes) {
    const ExposureWeights &weights = context.weights;
    HdrStatus status = HDR_OK;
    if (context.ghosts.ghostMode == kGhostsReplaced) {
        status = replaceByTone(memory, context, planes, weights.ghostMaskA, 4, blend_blocks_128);
    } else if (context.ghosts.ghostMode == kGhostsWithoutDark && context.ghostTuning == 0) {
        status = replaceByTone(memory, context, planes, weights.ghostMaskC, 2, blend_blocks_128);
    } else if (context.ghosts.ghostMode == kGhostsWithoutDark) {
        status = blendSoftly(memory, planes, planes.darkSide, weights.ghostMaskB, 2, blend_blocks_255);
        if (status == HDR_OK)
            status = replaceByTone(memory, context, planes, weights.ghostMaskA, 2, blend_blocks_255);
    }
    return status == HDR_OK
               ? blendSoftly(memory, planes, planes.brightSide, weights.ghostMaskD, 2, blend_blocks_255)
               : status;
}

/// The levels between which a picture's luminance lies.
struct ClipPoints {
    int high = 0, low = 0;

    ClipPoints(const Offscreen &picture, const uint32_t *histogram) {
        histogram_clip_points(&picture, histogram, &high, &low);
    }
};

/// A table that carries the merged picture's black and white points to the reference's: three linear pieces.
std::array<uint8_t, 256> toneStretch(const ClipPoints &merged, const ClipPoints &reference) {
    std::array<uint8_t, 256> table;
    const int low = std::max(merged.low, reference.low);
    const int high = std::min(merged.high, reference.high);
    for (int level = 0; level < 256; level++) {
        int target = level;
        if (high > low) {
            if (level < low)
                target = (level * reference.low) / low;
            else if (level <= high)
                target = ((level - low) * (reference.high - reference.low)) / (high - low) + reference.low;
            else
                target = ((level - high) * (255 - reference.high)) / (255 - high) + reference.high;
        }
        table[static_cast<size_t>(level)] = static_cast<uint8_t>(target);
    }
    return table;
}

/// Stretches the merged luminance, fills the three luminance offset maps and counts the result.
Histogram recordOffsets(const HdrContext &context, Offscreen *const *workImages,
                        const std::array<uint8_t, 256> &stretch) {
    const Preparation &preparation = context.preparation;
    const FirstMerge &merge = context.firstMerge;
    Histogram counts{};
    for (int y = 0; y < merge.mapHeight; y++) {
        uint8_t *merged = planeOf(*preparation.mergedImage).row(y);
        const uint8_t *dark = planeOf(*workImages[preparation.darkIndex]).row(y);
        const uint8_t *mid = planeOf(*workImages[preparation.midIndex]).row(y);
        const uint8_t *bright = planeOf(*workImages[preparation.brightIndex]).row(y);
        const ptrdiff_t mapRow = static_cast<ptrdiff_t>(y) * merge.mapWidth;
        for (int x = 0; x < merge.mapWidth; x++) {
            const int level = stretch[merged[x]];
            merged[x] = static_cast<uint8_t>(level);
            merge.lumaOffsetMid()[mapRow + x] = static_cast<int16_t>(256 - mid[x] + level);
            merge.lumaOffsetDark()[mapRow + x] = static_cast<int16_t>(256 - dark[x] + level);
            merge.lumaOffsetBright()[mapRow + x] = static_cast<int16_t>(256 - bright[x] + level);
            counts[static_cast<size_t>(level)]++;
        }
    }
    return counts;
}

/// The share of near-black samples (1 to 31) in 1/1024, with 32-bit wrap. Black ones count in the whole only.
int32_t darkShare(const Histogram &counts) {
    uint32_t dark = 0;
    uint32_t all = 0;
    for (size_t level = 0; level < counts.size(); level++) {
        all += counts[level];
        if (level >= 1 && level <= 31)
            dark += counts[level];
    }
    return all == 0 ? 0 : static_cast<int32_t>(dark << 10) / static_cast<int32_t>(all);
}

} // namespace

void FirstMerge::release(MemContext *memory) {
    for (int first = 0; first < kCorrectionMapCount; first += kMapsPerAllocation)
        engineFree(memory, correctionMaps[first]);
    std::fill_n(correctionMaps, kCorrectionMapCount, nullptr);
}

HdrStatus first_merge_stage(MemContext *memory, HdrContext *context, Offscreen *const *workImages) {
    FirstMerge &merge = context->firstMerge;
    const Preparation &preparation = context->preparation;
    HdrStatus status = allocateMaps(memory, merge, *workImages[0]);
    if (status != HDR_OK)
        return status;

    const int width = merge.mapWidth;
    const int height = merge.mapHeight;
    const uint32_t *midHistogram = preparation.histogram(preparation.midIndex, 0);
    build_tone_match(context->tables.toneMatchBrightToMid, preparation.histogram(preparation.brightIndex, 0),
                     midHistogram, width * height, 0, 1);

    const size_t samples = static_cast<size_t>(width) * static_cast<size_t>(height);
    Buffer<uint8_t> softMask(memory, preparation.gridPlaneSize());
    Buffer<uint8_t> darkSide(memory, samples);
    Buffer<uint8_t> brightSide(memory, samples);
    Buffer<uint8_t> brightLuma(memory, samples);
    if (!softMask || !darkSide || !brightSide || !brightLuma)
        return HDR_ERR_NOMEM;

    const Offscreen &reference = *preparation.registeredImages[preparation.midIndex];
    // The dark exposure enters the mix as photographed, not as tone-matched.
    Exposures exposures = {*workImages[preparation.darkIndex], reference,
                           *workImages[preparation.brightIndex]};
    const double brightGain = preparation.exposureEstimate[preparation.brightIndex];
    if (brightGain < 0.5)
        exposures.bright = blendBright(memory, context, *workImages[preparation.brightIndex], brightGain,
                                       {brightLuma.data(), width, height});

    const GhostPlanes planes = {planeOf(*preparation.mergedImage),
                                planeOf(*preparation.toneImage),
                                {darkSide.data(), width, height},
                                {brightSide.data(), width, height},
                                {softMask.data(), preparation.gridWidth, preparation.gridHeight}};
    mixExposures(*context, exposures, planes.darkSide, planes.brightSide);
    status = replaceGhosts(memory, *context, planes);
    if (status != HDR_OK)
        return status;

    // A histogram that cannot be counted stays empty, has no clip points and leaves the tones as they are.
    Histogram counts{};
    luma_histogram(memory, preparation.mergedImage, counts.data());
    const auto stretch = toneStretch({*preparation.mergedImage, counts.data()}, {reference, midHistogram});
    counts = recordOffsets(*context, workImages, stretch);
    merge.darkFraction = darkShare(counts);
    context->smoothingFlag = 1;
    return HDR_OK;
}

} // namespace hdr
