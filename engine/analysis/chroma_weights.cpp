// SPDX-License-Identifier: MIT
#include "engine/analysis/chroma_weights.h"

#include "engine/analysis/plane_filters.h"
#include "engine/core/buffer.h"
#include "engine/core/context.h"
#include "engine/core/plane.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>

namespace hdr {
namespace {

/// From this level on the middle exposure is in its highlights.
constexpr int kHighlightStart = 193;
/// A smoothed gradient above this is full detail.
constexpr int kStrongGradient = 8;

constexpr int kGradientRadius = 4;
constexpr int kEdgeRadius = 8;
constexpr int kWeightRadius = 16;
/// Samples nearer than this to the picture's edge always keep the smoothed weights.
constexpr int kBlendMargin = 4;
constexpr int kFullWeight = 256;

/// Strength of detail for a smoothed gradient.
constexpr int detailStrength(int gradient) {
    if (gradient > kStrongGradient)
        return 255;
    return gradient >= 5 ? 63 * gradient - 252 : 0;
}

/// Raises each inner sample of a row of gradients to the gradient of one exposure there.
void raiseToGradient(Plane<const uint8_t> luma, int y, int16_t *__restrict gradients) {
    const uint8_t *above = luma.row(y - 1);
    const uint8_t *row = luma.row(y);
    const uint8_t *below = luma.row(y + 1);
    for (int x = 1; x < luma.width - 1; x++) {
        const int gradient = (std::abs(above[x] - below[x]) + std::abs(row[x - 1] - row[x + 1])) >> 1;
        gradients[x] = static_cast<int16_t>(std::max<int>(gradients[x], gradient));
    }
}

/// The weight maps before they are smoothed: colour comes from the bright exposure in the middle exposure's
/// shadows, from the dark one in its highlights and from all three alike between them.
void setRawWeights(const uint8_t *midLuma, int width, int16_t *__restrict dark, int16_t *__restrict bright,
                   int16_t *__restrict mid) {
    for (int x = 1; x < width - 1; x++) {
        const int level = midLuma[x];
        dark[x] = static_cast<int16_t>(std::min(2 * level, 128));
        bright[x] = static_cast<int16_t>(std::min(2 * (256 - level), 128));
        mid[x] = static_cast<int16_t>(std::min({64 + level, 320 - level, 128}));
    }
}

/// Smooths a weight map, except near the marked edges: there colour would bleed across them.
void smoothWeights(MemContext *memory, Plane<int16_t> weights, Plane<const int16_t> edges,
                   Plane<int16_t> unsmoothed) {
    const int width = weights.width;
    const int height = weights.height;
    std::copy_n(weights.data, static_cast<size_t>(width) * static_cast<size_t>(height), unsmoothed.data);
    box_mean_s16(memory, weights.data, width, height, width, kWeightRadius, 1);
    for (int y = kBlendMargin; y < height - kBlendMargin; y++) {
        const int16_t *edgeRow = edges.row(y);
        const int16_t *unsmoothedRow = unsmoothed.row(y);
        int16_t *__restrict row = weights.row(y);
        for (int x = kBlendMargin; x < width - kBlendMargin; x++) {
            const int alpha = std::min(4 * edgeRow[x], kFullWeight);
            const int blend = unsmoothedRow[x] * alpha + row[x] * (kFullWeight - alpha);
            row[x] = static_cast<int16_t>((blend + 128) >> 8);
        }
    }
}

} // namespace

void ChromaWeights::releaseWeights(MemContext *memory) {
    releaseArray(memory, chromaWeightDark);
    releaseArray(memory, chromaWeightBright);
    releaseArray(memory, chromaWeightMid);
}

void ChromaWeights::release(MemContext *memory) {
    releaseWeights(memory);
    releaseArray(memory, detailMask);
}

HdrStatus chroma_weight_stage(MemContext *memory, HdrContext *context, Offscreen *const *workImages) {
    const Preparation &preparation = context->preparation;
    const Plane<const uint8_t> darkLuma = planeOf(*workImages[preparation.darkIndex]);
    const Plane<const uint8_t> brightLuma = planeOf(*workImages[preparation.brightIndex]);
    const Plane<const uint8_t> midLuma = planeOf(*workImages[preparation.midIndex]);
    const int width = workImages[0]->i32Width;
    const int height = workImages[0]->i32Height;
    const size_t count = static_cast<size_t>(width) * static_cast<size_t>(height);

    auto darkWeights = Buffer<int16_t>::zeroed(memory, count);
    auto brightWeights = Buffer<int16_t>::zeroed(memory, count);
    auto midWeights = Buffer<int16_t>::zeroed(memory, count);
    auto detailMask = Buffer<int16_t>::zeroed(memory, count);
    auto temporaries = Buffer<int16_t>::zeroed(memory, 3 * count);
    if (!darkWeights || !brightWeights || !midWeights || !detailMask || !temporaries)
        return HDR_ERR_NOMEM;
    const Plane<int16_t> dark(darkWeights.data(), width, height);
    const Plane<int16_t> bright(brightWeights.data(), width, height);
    const Plane<int16_t> mid(midWeights.data(), width, height);
    const Plane<int16_t> detail(detailMask.data(), width, height);
    const Plane<int16_t> gradient(temporaries.data(), width, height);
    const Plane<int16_t> edges(gradient.data + count, width, height);
    const Plane<int16_t> unsmoothed(edges.data + count, width, height);

    for (int y = 1; y < height - 1; y++) {
        for (const Plane<const uint8_t> &luma : {darkLuma, brightLuma, midLuma})
            raiseToGradient(luma, y, gradient.row(y));
        setRawWeights(midLuma.row(y), width, dark.row(y), bright.row(y), mid.row(y));
    }

    // A filter that finds no memory leaves its plane unsmoothed, which only costs quality.
    box_mean_s16(memory, gradient.data, width, height, width, kGradientRadius, 1);
    for (int y = 1; y < height - 1; y++)
        for (int x = 1; x < width - 1; x++) {
            const int strength = gradient(x, y);
            detail(x, y) = static_cast<int16_t>(detailStrength(strength));
            if (strength > kStrongGradient && midLuma(x, y) >= kHighlightStart)
                edges(x, y) = 255;
        }
    box_mean_s16(memory, edges.data, width, height, width, kEdgeRadius, 2);
    box_mean_s16(memory, edges.data, width, height, width, kEdgeRadius, 1);

    for (const Plane<int16_t> &weights : {dark, bright, mid})
        smoothWeights(memory, weights, edges, unsmoothed);

    context->chromaWeights.chromaWeightDark = darkWeights.release();
    context->chromaWeights.chromaWeightBright = brightWeights.release();
    context->chromaWeights.chromaWeightMid = midWeights.release();
    context->chromaWeights.detailMask = detailMask.release();
    return HDR_OK;
}

} // namespace hdr
