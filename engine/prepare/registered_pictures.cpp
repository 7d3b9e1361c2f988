// SPDX-License-Identifier: MIT
#include "engine/prepare/registered_pictures.h"

#include "engine/core/plane.h"
#include "engine/prepare/features.h"
#include "engine/prepare/preparation.h"
#include "engine/prepare/reduction.h"
#include "engine/prepare/warp_grids.h"

#include <algorithm>
#include <cmath>

namespace hdr {

namespace {

/// One, in weights.
constexpr int kUnit = 256;

/// Working luminance from which on an exposure loses information to clipping, and at which it has none left;
/// likewise downward, to crushing. Studio-range luminance ends at 235 and 16, and a reduced pixel averages
/// nine samples, of which a few may be beyond the end.
constexpr int kClippingBegins = 208, kFullyClipped = 226;
constexpr int kCrushingBegins = 20, kFullyCrushed = 17;
/// Levels by which two exposures may contradict each other through errors of the tone correspondence, and by
/// which they surely show different things; and the same where an exposure is clipped, as the correspondence
/// cannot tell from which level of the reference on it is.
constexpr int kTolerated = 32, kContradicts = 64;
constexpr int kToleratedClipped = 64, kContradictsClipped = 112;

/// 0 up to `from`, kUnit from `to` on, linear between them.
constexpr int ramp(int value, int from, int to) {
    return std::clamp((value - from) * kUnit / (to - from), 0, kUnit);
}

/// How far a pixel is clipped, or may have been darkened by averaging with clipped ones that it touches.
int clipping(Plane<const uint8_t> luma, int x, int y) {
    int brightest = 0;
    for (int v = std::max(y - 1, 0); v <= std::min(y + 1, luma.height - 1); v++)
        for (int u = std::max(x - 1, 0); u <= std::min(x + 1, luma.width - 1); u++)
            brightest = std::max<int>(brightest, luma(u, v));
    return ramp(brightest, kClippingBegins, kFullyClipped);
}

int crushing(int level) {
    return ramp(-level, -kCrushingBegins, -kFullyCrushed);
}

/// The block that an input shows where the reference has reduced pixel (x, y), wherever that is.
BlockCorner alignedBlock(const Alignment &alignment, int input, int x, int y) {
    const Vector centre = fullPosition({static_cast<double>(x), static_cast<double>(y)});
    const Vector displacement = warpDisplacement(alignment, input, centre);
    const auto nearest = [](double value) { return static_cast<int32_t>(std::floor(value + 0.5)); };
    return {x * kReduction - nearest(displacement.x), y * kReduction - nearest(displacement.y)};
}

} // namespace

HdrStatus reduceAligned(MemContext *memory, const Alignment &alignment, int input, const Offscreen &source,
                        Offscreen &reduced, Rect &valid) {
    const int width = reduced.i32Width, height = reduced.i32Height;
    const int lastX = source.i32Width - kReduction, lastY = source.i32Height - kReduction;
    Buffer<BlockCorner> corners(memory, static_cast<size_t>(width) * static_cast<size_t>(height));
    if (!corners)
        return HDR_ERR_NOMEM;
    valid = {0, 0, width, height};
    for (int y = 0; y < height; y++) {
        for (int x = 0; x < width; x++) {
            BlockCorner &corner =
                corners[static_cast<size_t>(y) * static_cast<size_t>(width) + static_cast<size_t>(x)];
            corner = alignedBlock(alignment, input, x, y);
            if (corner.x < 0)
                valid.x0 = std::max(valid.x0, x + 1);
            if (corner.x > lastX)
                valid.x1 = std::min(valid.x1, x);
            if (corner.y < 0)
                valid.y0 = std::max(valid.y0, y + 1);
            if (corner.y > lastY)
                valid.y1 = std::min(valid.y1, y);
            corner = {std::clamp(corner.x, 0, lastX), std::clamp(corner.y, 0, lastY)};
        }
    }
    valid.x1 = std::max(valid.x1, valid.x0);
    valid.y1 = std::max(valid.y1, valid.y0);
    reduceBlocks(&source, &reduced, corners.data());
    return HDR_OK;
}

void replaceUnmeasurable(const Offscreen &reference, const Offscreen &working, const Offscreen &registered) {
    const Plane<const uint8_t> seen = planeOf(reference), own = planeOf(working);
    const Plane<uint8_t> matched = planeOf(registered);
    for (int y = 0; y < own.height; y++) {
        for (int x = 0; x < own.width; x++) {
            const int target = seen(x, y), match = matched(x, y);
            // A clipped pixel bounds the scene's brightness from below, a crushed one from above.
            const int brighter = kUnit - ramp(match - target, kTolerated, kContradicts);
            const int darker = kUnit - ramp(target - match, kTolerated, kContradicts);
            const int clippedBrighter = kUnit - ramp(match - target, kToleratedClipped, kContradictsClipped);
            const int weight = std::max({clipping(own, x, y) * clippedBrighter, clipping(seen, x, y) * darker,
                                         crushing(own(x, y)) * darker, crushing(target) * brighter});
            matched(x, y) = static_cast<uint8_t>(match + (target - match) * weight / (kUnit * kUnit));
        }
    }
}

} // namespace hdr
