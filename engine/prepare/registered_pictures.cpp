// SPDX-License-Identifier: MIT
#include "engine/prepare/registered_pictures.h"

#include "engine/core/buffer.h"
#include "engine/core/plane.h"
#include "engine/core/worker.h"
#include "engine/prepare/features.h"
#include "engine/prepare/preparation.h"
#include "engine/prepare/reduction.h"
#include "engine/prepare/tone_correction.h"
#include "engine/prepare/warp_field.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <utility>

namespace hdr {

namespace {

/// One, in weights.
constexpr int kUnit = 256;

/// Working luminance from which on an exposure loses information to clipping; likewise downward, to crushing.
constexpr int kClippingBegins = 192;
constexpr int kCrushingBegins = 20;
/// Levels by which two exposures may contradict each other through errors of the tone correspondence, and by
/// which they surely show different things.
constexpr int kTolerated = 32, kContradicts = 64;

/// 0 up to `from`, kUnit from `to` on, linear between them.
constexpr int ramp(int value, int from, int to) {
    return std::clamp((value - from) * kUnit / (to - from), 0, kUnit);
}

/// Goes along a row of a picture and tells the brightest of the pixels that touch each one.
class BrightestNear {
public:
    BrightestNear(Plane<const uint8_t> luma, int y)
        : upper(luma.row(std::max(y - 1, 0))), middle(luma.row(y)),
          lower(luma.row(std::min(y + 1, luma.height - 1))), width(luma.width), here(inColumn(0)) {}

    uint8_t next() {
        const uint8_t before = std::exchange(previous, here);
        if (++x < width)
            here = inColumn(x);
        return std::max({before, previous, here});
    }

private:
    uint8_t inColumn(int column) const { return std::max({upper[column], middle[column], lower[column]}); }

    const uint8_t *upper, *middle, *lower;
    int width, x = 0;
    uint8_t previous = 0, here; ///< brightest of the columns x - 1 and x
};

/// A reduced pixel's colour channels on the scale of luminance, where a grey has its luminance in all of
/// them.
std::array<int, 3> channelsOf(int y, int u, int v) {
    u -= 128;
    v -= 128;
    return {y + ((351 * v + 128) >> 8), y - ((86 * u + 179 * v + 128) >> 8), y + ((444 * u + 128) >> 8)};
}

/// A reduced picture and, of each of its pixels, the brightest channel: a saturated colour clips long before
/// its luminance does.
class ColorPicture {
public:
    ColorPicture(MemContext *memory, const Offscreen &picture)
        : luma(planeOf(picture)), u(planeOf(picture, 1)), v(planeOf(picture, 2)),
          brightest(memory, static_cast<size_t>(luma.width) * static_cast<size_t>(luma.height)) {}

    explicit operator bool() const { return static_cast<bool>(brightest); }
    std::array<int, 3> channels(int x, int y) const { return channelsOf(luma(x, y), u(x, y), v(x, y)); }
    Plane<const uint8_t> brightestChannel() const { return {brightest.data(), luma.width, luma.height}; }
    void findBrightestChannel() {
        runOnFourParts(0, luma.height, [&](const RangePart &rows) {
            for (int y = rows.first; y < rows.end; y++) {
                const uint8_t *ofY = luma.row(y), *ofU = u.row(y), *ofV = v.row(y);
                uint8_t *made = brightest.data() + static_cast<ptrdiff_t>(y) * luma.width;
                for (int x = 0; x < luma.width; x++) {
                    const auto [red, green, blue] = channelsOf(ofY[x], ofU[x], ofV[x]);
                    made[x] = static_cast<uint8_t>(std::clamp(std::max({red, green, blue}), 0, 255));
                }
            }
        });
    }

    Plane<const uint8_t> luma, u, v;

private:
    Buffer<uint8_t> brightest;
};

/// How far a pixel is clipped, or may have been darkened by averaging with clipped ones that it touches.
int clipping(int brightestNear) {
    return ramp(brightestNear, kClippingBegins, kFullyClipped);
}

int crushing(int level) {
    return ramp(-level, -kCrushingBegins, -kFullyCrushed);
}

/// 0 to kUnit: how far the exposures agree in the channels that neither of them clips or crushes.
int agreementOfOthers(const std::array<int, 3> &seen, const std::array<int, 3> &own, const uint8_t *tones) {
    const auto isMeasured = [](int level) { return level > kCrushingBegins && level < kClippingBegins; };
    int furthest = 0;
    for (size_t i = 0; i < seen.size(); i++)
        if (isMeasured(seen[i]) && isMeasured(own[i]))
            furthest = std::max(furthest, std::abs(tones[own[i]] - seen[i]));
    return kUnit - ramp(furthest, kTolerated, kContradicts);
}

/// The blocks that an input shows where the reference has the reduced pixels of row y, wherever that is:
/// their displacement is interpolated in whole numbers and rounded to the nearest pixel.
void alignedBlocks(const Alignment &alignment, int input, int y, int width, BlockCorner *corners) {
    constexpr int kOne = kWarpSpacing; // in units of the weight of a node; its square in those of a cell
    constexpr int kHalf = kOne * kOne / 2, kShift = 16;
    const auto placeOf = [](int reduced) {
        return kReduction * reduced + kReducedCentre - warpNodePosition(0);
    };
    const int down = placeOf(y) % kWarpSpacing;
    const int firstNode = placeOf(y) / kWarpSpacing * alignment.warpWidth;
    const int32_t *shift = alignment.globalShift[input];
    for (int x = 0; x < width;) {
        // Within a cell the displacement runs linearly from its left side to its right side.
        const int column = placeOf(x) / kWarpSpacing;
        const auto along = [&](const int32_t *grid, int32_t global) {
            const int32_t *upper = grid + firstNode + column, *lower = upper + alignment.warpWidth;
            const auto side = [&](int k) {
                return kOne * int64_t{global} + int64_t{kOne - down} * upper[k] + int64_t{down} * lower[k];
            };
            return std::array{side(0), side(1) - side(0)};
        };
        const auto [startX, slopeX] = along(alignment.warpX[input], shift[0]);
        const auto [startY, slopeY] = along(alignment.warpY[input], shift[1]);
        for (; x < width && placeOf(x) < kWarpSpacing * (column + 1); x++) {
            const int right = placeOf(x) % kWarpSpacing;
            const auto nearest = [right](int64_t start, int64_t slope) {
                return static_cast<int32_t>((kOne * start + right * slope + kHalf) >> kShift);
            };
            corners[x] = {kReduction * x - nearest(startX, slopeX), kReduction * y - nearest(startY, slopeY)};
        }
    }
}

} // namespace

HdrStatus reduceAligned(MemContext *memory, const Alignment &alignment, int input, const Offscreen &source,
                        Offscreen &reduced, Rect &valid) {
    const int width = reduced.i32Width, height = reduced.i32Height;
    const int lastX = source.i32Width - kReduction, lastY = source.i32Height - kReduction;
    Buffer<BlockCorner> corners(memory, 4 * static_cast<size_t>(width));
    if (!corners)
        return HDR_ERR_NOMEM;
    std::array<Rect, 4> validParts;
    runOnFourParts(0, height, [&](const RangePart &rows) {
        Rect inside = {0, 0, width, height};
        BlockCorner *row = corners.data() + static_cast<ptrdiff_t>(rows.part) * width;
        for (int y = rows.first; y < rows.end; y++) {
            alignedBlocks(alignment, input, y, width, row);
            for (int x = 0; x < width; x++) {
                if (row[x].x < 0)
                    inside.x0 = std::max(inside.x0, x + 1);
                if (row[x].x > lastX)
                    inside.x1 = std::min(inside.x1, x);
                if (row[x].y < 0)
                    inside.y0 = std::max(inside.y0, y + 1);
                if (row[x].y > lastY)
                    inside.y1 = std::min(inside.y1, y);
                row[x] = {std::clamp(row[x].x, 0, lastX), std::clamp(row[x].y, 0, lastY)};
            }
            reduceBlocks(&source, &reduced, y, row);
        }
        validParts[static_cast<size_t>(rows.part)] = inside;
    });
    valid = {0, 0, width, height};
    for (const Rect &inside : validParts)
        valid = {std::max(valid.x0, inside.x0), std::max(valid.y0, inside.y0), std::min(valid.x1, inside.x1),
                 std::min(valid.y1, inside.y1)};
    valid.x1 = std::max(valid.x1, valid.x0);
    valid.y1 = std::max(valid.y1, valid.y0);
    return HDR_OK;
}

HdrStatus replaceUnmeasurable(MemContext *memory, const Offscreen &reference, const Offscreen &working,
                              const uint8_t *tones, const Offscreen &registered) {
    ColorPicture seen(memory, reference), own(memory, working);
    if (!seen || !own)
        return HDR_ERR_NOMEM;
    seen.findBrightestChannel();
    own.findBrightestChannel();
    const Plane<uint8_t> matched = planeOf(registered);
    runOnFourParts(0, matched.height, [&](const RangePart &rows) {
        for (int y = rows.first; y < rows.end; y++) {
            BrightestNear ownLuma(own.luma, y), seenLuma(seen.luma, y);
            BrightestNear ownChannel(own.brightestChannel(), y), seenChannel(seen.brightestChannel(), y);
            for (int x = 0; x < matched.width; x++) {
                int ownClipping = clipping(ownLuma.next()), seenClipping = clipping(seenLuma.next());
                const int ownColorClipping = clipping(ownChannel.next());
                const int seenColorClipping = clipping(seenChannel.next());
                const int target = seen.luma(x, y), match = matched(x, y), level = own.luma(x, y);
                const int ownCrushing = crushing(level), seenCrushing = crushing(target);
                if ((ownColorClipping | seenColorClipping | ownCrushing | seenCrushing) == 0)
                    continue;
                if (ownColorClipping > ownClipping || seenColorClipping > seenClipping) {
                    const int agreement = agreementOfOthers(seen.channels(x, y), own.channels(x, y), tones);
                    ownClipping = std::max(ownClipping, ownColorClipping * agreement / kUnit);
                    seenClipping = std::max(seenClipping, seenColorClipping * agreement / kUnit);
                }
                // A clipped pixel bounds the scene's brightness from below, a crushed one from above; what
                // the tones say of levels beyond the bound means nothing.
                const int low = tones[std::min(level, kFullyClipped)];
                const int high = tones[std::max(level, kFullyCrushed)];
                const int brighter = kUnit - ramp(low - target, kTolerated, kContradicts);
                const int darker = kUnit - ramp(target - high, kTolerated, kContradicts);
                const int weight = std::max(std::max(ownClipping, seenCrushing) * brighter,
                                            std::max(seenClipping, ownCrushing) * darker);
                matched(x, y) = static_cast<uint8_t>(match + (target - match) * weight / (kUnit * kUnit));
            }
        }
    });
    return HDR_OK;
}

} // namespace hdr
