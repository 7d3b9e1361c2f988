// SPDX-License-Identifier: MIT
#include "engine/analysis/exposure_weights.h"

#include "engine/analysis/ghost_detection.h"
#include "engine/analysis/plane_borders.h"
#include "engine/core/buffer.h"
#include "engine/core/context.h"
#include "engine/core/plane.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace hdr {
namespace {

constexpr int kFullWeight = 256;
/// The middle exposure stands alone from the end of its shadows to the end of its mid-tones. On both sides
/// the weights cross over by kWeightPerLevel, and its highlights leave all to the dark exposure.
constexpr int kShadowEnd = 64;
constexpr int kMidToneEnd = 160;
constexpr int kHighlightStart = 193;
constexpr int kWeightPerLevel = 8;
/// A dark exposure below this level cannot stand for the middle exposure's highlights.
constexpr int kDarkTrusted = 64;
/// Nor a bright exposure from this level on for its shadows.
constexpr int kBrightClipped = 193;

/// Cells at the grid's edges whose middle weight is not topped up.
constexpr int kTopLeftMargin = 5;
constexpr int kBottomRightMargin = 4;
/// Rows at the bottom that repeat the row above them.
constexpr int kRepeatedRows = 4;

/// Adds the one-cell frame to an input's packed luminance grid, in place.
void frameGrid(Preparation &preparation, int input, uint16_t *framed) {
    uint16_t *grid = preparation.gridPlane(input);
    pad_plane_u16(grid, framed, preparation.gridWidth - 2, preparation.gridHeight - 2);
    std::copy_n(framed, preparation.gridPlaneSize(), grid);
}

/// Largest value and sum of the neighbours of a cell.
struct Neighbours {
    int largest = 0;
    int sum = 0;
};

Neighbours neighboursOf(Plane<const int16_t> weights, int x, int y) {
    Neighbours result;
    const auto visit = [&](int column, int row) {
        if (column < 0 || row < 0 || column >= weights.width || row >= weights.height)
            return;
        const int weight = weights(column, row);
        result.largest = std::max(result.largest, weight);
        result.sum += weight;
    };
    visit(x - 1, y);
    visit(x, y - 1);
    visit(x + 1, y);
    visit(x, y + 1);
    return result;
}

} // namespace

void ExposureWeights::release(MemContext *memory) {
    releaseArray(memory, lumaWeightMid);
    lumaWeightDark = lumaWeightBright = nullptr;
    ghostMaskA = ghostMaskB = ghostMaskC = ghostMaskD = nullptr;
}

CellWeights baseWeights(int midLevel, int darkLevel, int brightLevel) {
    if (midLevel >= kHighlightStart)
        return darkLevel >= kDarkTrusted ? CellWeights{0, kFullWeight, 0} : CellWeights{kFullWeight, 0, 0};
    if (midLevel > kMidToneEnd) {
        const int dark = kWeightPerLevel * (midLevel - kMidToneEnd);
        return {kFullWeight - dark, dark, 0};
    }
    if (midLevel >= kShadowEnd || brightLevel >= kBrightClipped)
        return {kFullWeight, 0, 0};
    const int bright = std::min(kWeightPerLevel * (kShadowEnd - midLevel), kFullWeight);
    return {kFullWeight - bright, 0, bright};
}

HdrStatus exposure_weight_stage(MemContext *memory, HdrContext *context) {
    Preparation &preparation = context->preparation;
    const int width = preparation.gridWidth;
    const int height = preparation.gridHeight;
    const size_t cells = preparation.gridPlaneSize();
    const std::array<int, 3> inputs{preparation.darkIndex, preparation.brightIndex, preparation.midIndex};
    {
        Buffer<uint16_t> framed(memory, cells);
        if (!framed)
            return HDR_ERR_NOMEM;
        for (auto input = inputs.begin(); input != inputs.end(); ++input)
            if (std::find(inputs.begin(), input, *input) == input)
                frameGrid(preparation, *input, framed.data());
    }

    int16_t *planes = allocateZeroed<int16_t>(memory, 5 * cells);
    if (!planes)
        return HDR_ERR_NOMEM;
    ExposureWeights &weights = context->weights;
    weights.lumaWeightMid = planes;
    weights.lumaWeightDark = planes + cells;
    weights.lumaWeightBright = planes + 2 * cells;
    uint8_t *masks = reinterpret_cast<uint8_t *>(planes + 3 * cells);
    weights.ghostMaskB = masks;
    weights.ghostMaskA = masks + cells;
    weights.ghostMaskC = masks + 2 * cells;
    weights.ghostMaskD = masks + 3 * cells;

    // Levels fit in either signedness.
    const auto levels = [&](int input) {
        return Plane<const int16_t>(reinterpret_cast<const int16_t *>(preparation.gridPlane(input)), width,
                                    height);
    };
    const Plane<const int16_t> dark = levels(preparation.darkIndex);
    const Plane<const int16_t> bright = levels(preparation.brightIndex);
    const Plane<const int16_t> mid = levels(preparation.midIndex);
    for (int y = 1; y < height - 1; y++)
        for (int x = 1; x < width - 1; x++) {
            const CellWeights cell = baseWeights(mid(x, y), dark(x, y), bright(x, y));
            const size_t index = static_cast<size_t>(y) * static_cast<size_t>(width) + static_cast<size_t>(x);
            weights.lumaWeightMid[index] = static_cast<int16_t>(cell.mid);
            weights.lumaWeightDark[index] = static_cast<int16_t>(cell.dark);
            weights.lumaWeightBright[index] = static_cast<int16_t>(cell.bright);
        }

    // Without memory for it the merge goes on with the base weights.
    detect_ghosts(memory, context, dark.data, mid.data, bright.data, width, height, weights.lumaWeightDark,
                  weights.lumaWeightBright, weights.lumaWeightMid);
    fill_weight_holes(weights.lumaWeightMid, weights.lumaWeightDark, weights.lumaWeightBright, width, height);
    return HDR_OK;
}

void fill_weight_holes(int16_t *mid, int16_t *dark, int16_t *bright, int width, int height) {
    const Plane<int16_t> midWeights(mid, width, height);
    const Plane<int16_t> darkWeights(dark, width, height);
    const Plane<int16_t> brightWeights(bright, width, height);
    for (int y = 0; y < height; y++)
        for (int x = 0; x < width; x++) {
            int16_t &midWeight = midWeights(x, y);
            int16_t &darkWeight = darkWeights(x, y);
            int16_t &brightWeight = brightWeights(x, y);
            for (int16_t *weight : {&midWeight, &darkWeight, &brightWeight})
                *weight = std::max<int16_t>(*weight, 0);

            if (midWeight == 0 && darkWeight == 0 && brightWeight == 0) {
                const Neighbours aroundDark = neighboursOf(darkWeights, x, y);
                const Neighbours aroundBright = neighboursOf(brightWeights, x, y);
                if (aroundDark.sum >= aroundBright.sum)
                    darkWeight = static_cast<int16_t>(std::max(aroundDark.largest, 1));
                else
                    brightWeight = static_cast<int16_t>(std::max(aroundBright.largest, 1));
                midWeight = kFullWeight;
            }
            const bool isToppedUp = x >= kTopLeftMargin && y >= kTopLeftMargin &&
                                    x < width - kBottomRightMargin && y < height - kBottomRightMargin;
            if (isToppedUp && darkWeight + brightWeight < kFullWeight)
                midWeight = static_cast<int16_t>(kFullWeight - (darkWeight + brightWeight));
        }

    if (height <= kRepeatedRows)
        return;
    for (const Plane<int16_t> &weights : {midWeights, darkWeights, brightWeights})
        for (int y = height - kRepeatedRows; y < height; y++)
            std::copy_n(weights.row(height - kRepeatedRows - 1), width, weights.row(y));
}

} // namespace hdr
