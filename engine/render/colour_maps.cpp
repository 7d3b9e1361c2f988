// SPDX-License-Identifier: MIT
#include "engine/render/colour_maps.h"

#include "engine/core/arithmetic.h"
#include "engine/core/buffer.h"
#include "engine/core/context.h"
#include "engine/core/plane.h"

#include <algorithm>

namespace hdr {
namespace {

constexpr int kNeutralChroma = 128;
/// 2^2 reduced pixels make a cell of the analysis grid.
constexpr int kCellShift = 2;

struct Chroma {
    int u, v;
};

/// A reduced 4:4:4 picture.
struct Picture {
    Plane<uint8_t> y, u, v;

    explicit Picture(const Offscreen &record)
        : y(planeOf(record, 0)), u(planeOf(record, 1)), v(planeOf(record, 2)) {}
    Chroma chroma(int column, int row) const { return {u(column, row), v(column, row)}; }
};

/// One exposure's pair of chroma offset maps.
struct OffsetMaps {
    Plane<int16_t> u, v;

    void set(int column, int row, Chroma offset) const {
        u(column, row) = static_cast<int16_t>(offset.u);
        v(column, row) = static_cast<int16_t>(offset.v);
    }
};

Chroma operator-(Chroma a, Chroma b) {
    return {a.u - b.u, a.v - b.v};
}

/// a with weight / 256, b with the rest.
Chroma blend(Chroma a, Chroma b, int weight) {
    return {(a.u * weight + b.u * (256 - weight) + 128) >> 8,
            (a.v * weight + b.v * (256 - weight) + 128) >> 8};
}

/// How chroma grows when a luminance is raised: full growth counts `raised` + luma parts of 512.
struct ChromaGrowth {
    int raised, own;
};
constexpr ChromaGrowth kMergeGrowth = {224, 288};
constexpr ChromaGrowth kDarkGrowth = {256, 256};

/// The chroma of a pixel whose luminance `luma` (above 0) becomes `target`: never less than it was, and never
/// as if the luminance grew by more than the factor 4.
Chroma scaleChroma(Chroma chroma, int luma, int target, const ChromaGrowth &growth) {
    const int reached = std::max(std::min(4 * luma, target), luma);
    const int factor = (luma + growth.raised) * reached + (growth.own - luma) * luma;
    const auto scale = [=](int sample) {
        return clamp8((sample - kNeutralChroma) * factor / (512 * luma) + kNeutralChroma);
    };
    return {scale(chroma.u), scale(chroma.v)};
}

/// The mean step from the bright exposure's colour to the dark one's in highlights, where the bright one is
/// near clipping and has lost its own.
Chroma highlightTint(const Picture &dark, const Picture &mid, const Picture &bright) {
    int64_t sumU = 0;
    int64_t sumV = 0;
    int64_t count = 0;
    for (int y = 0; y < bright.y.height; y++)
        for (int x = 0; x < bright.y.width; x++) {
            if (bright.y(x, y) < 224 || dark.y(x, y) < 129 || mid.y(x, y) < 161)
                continue;
            const Chroma step = dark.chroma(x, y) - bright.chroma(x, y);
            sumU += step.u;
            sumV += step.v;
            count++;
        }
    if (count == 0)
        return {0, 0};
    return {static_cast<int>((sumU + count / 2) / count), static_cast<int>((sumV + count / 2) / count)};
}

/// Applies the local tone gain to the merged picture and lets its chroma grow with the luminance.
void toneMapMerged(const HdrContext &context, const Picture &merged) {
    const LocalToneMap &toneMap = context.localToneMap;
    const Tables &tables = context.tables;
    const Plane<const int16_t> contrast(toneMap.map, toneMap.width, toneMap.height);
    for (int y = 0; y < merged.y.height; y++) {
        const int16_t *contrastRow = contrast.row(std::min(y, contrast.height - 1));
        for (int x = 0; x < merged.y.width; x++) {
            const int16_t detail = contrastRow[std::min(x, contrast.width - 1)];
            const uint32_t gain = tables.detailGain[static_cast<uint16_t>(detail)];
            const int luma = merged.y(x, y);
            const uint32_t level = std::min((tables.gammaExpand[luma] * gain) >> 10, uint32_t{4095});
            const int target = tables.gammaCompress[level];
            merged.y(x, y) = static_cast<uint8_t>(target);
            if (luma <= 32)
                continue;
            const Chroma scaled = scaleChroma(merged.chroma(x, y), luma, target, kMergeGrowth);
            merged.u(x, y) = static_cast<uint8_t>(scaled.u);
            merged.v(x, y) = static_cast<uint8_t>(scaled.v);
        }
    }
}

/// Highlights take the common tint; below them the merged colour, and where `mask` marks a ghost the
/// exposure's own colour, faded with the luminance.
void mapBright(const Picture &bright, const Picture &merged, Plane<const uint8_t> mask, Chroma tint,
               const OffsetMaps &maps) {
    for (int y = 0; y < bright.y.height; y++)
        for (int x = 0; x < bright.y.width; x++) {
            const int luma = bright.y(x, y);
            const Chroma own = bright.chroma(x, y);
            const Chroma target = merged.chroma(x, y);
            if (luma >= 224) {
                maps.set(x, y, tint);
            } else if (luma >= 193) {
                maps.set(x, y, {((luma - 192) * tint.u) >> 5, ((luma - 192) * tint.v) >> 5});
            } else if (mask(x, y) == 0) {
                maps.set(x, y, target - own);
            } else {
                Chroma faded = own;
                if (luma > 0) {
                    const int kept = std::min(luma, int{merged.y(x, y)});
                    const auto fade = [=](int sample) {
                        return ((2 * sample - 256) * kept + luma) / (2 * luma) + kNeutralChroma;
                    };
                    faded = {fade(own.u), fade(own.v)};
                }
                maps.set(x, y, blend(faded, target, mask(x, y)) - own);
            }
        }
}

/// The merged colour, and where `mask` marks a ghost the reference's own, grown with the luminance.
void mapReference(const Picture &mid, const Picture &merged, Plane<const uint8_t> mask,
                  const OffsetMaps &maps) {
    for (int y = 0; y < mid.y.height; y++)
        for (int x = 0; x < mid.y.width; x++) {
            const int luma = mid.y(x, y);
            const Chroma own = mid.chroma(x, y);
            Chroma grown = own;
            if (mask(x, y) > 0 && luma >= 33)
                grown = scaleChroma(own, luma, merged.y(x, y), kMergeGrowth);
            maps.set(x, y, blend(grown, merged.chroma(x, y), mask(x, y)) - own);
        }
}

/// The merged colour in shadows, going over to the exposure's own, grown with the luminance, up to level 128.
void mapDark(const Picture &dark, const Picture &merged, const OffsetMaps &maps) {
    for (int y = 0; y < dark.y.height; y++)
        for (int x = 0; x < dark.y.width; x++) {
            const int luma = dark.y(x, y);
            const Chroma own = dark.chroma(x, y);
            const Chroma target = merged.chroma(x, y);
            if (luma < 65) {
                maps.set(x, y, target - own);
                continue;
            }
            const Chroma grown = scaleChroma(own, luma, merged.y(x, y), kDarkGrowth);
            const int weight = luma > 128 ? 256 : 4 * luma - 256;
            maps.set(x, y, blend(grown, target, weight) - own);
        }
}

} // namespace

void upsample_grid_u8(uint8_t *destination, int width, int height, int pitch, const uint8_t *grid,
                      int gridColumns, int gridRows, int gridPitch, const Rect *rectangle, int shift) {
    const Rect area = rectangle ? *rectangle : Rect{0, 0, width, height};
    const Plane<uint8_t> plane(destination, width, height, pitch);
    const Plane<const uint8_t> nodes(grid, gridColumns, gridRows, gridPitch);
    if (shift == 0) {
        for (int y = area.y0; y < area.y1; y++)
            for (int x = area.x0; x < area.x1; x++)
                plane(x, y) = nodes(std::min(x, gridColumns - 1), std::min(y, gridRows - 1));
        return;
    }
    const int fractionMask = (1 << shift) - 1;
    // From the last node on, the value just before it is repeated.
    const int lastColumn = std::max(((gridColumns - 1) << shift) - 1, 0);
    for (int y = area.y0; y < area.y1; y++) {
        const int r = y >> shift;
        const uint8_t *upper = nodes.row(std::clamp(r - 1, 0, gridRows - 1));
        const uint8_t *lower = nodes.row(std::clamp(r, 0, gridRows - 1));
        if (r >= gridRows - 1)
            upper = lower;
        const int fy = y & fractionMask;
        for (int x = area.x0; x < area.x1; x++) {
            const int column = std::min(x, lastColumn);
            const int left = column >> shift;
            const int right = std::min(left + 1, gridColumns - 1);
            const int fx = column & fractionMask;
            const int top = (upper[left] << shift) + (upper[right] - upper[left]) * fx;
            const int bottom = (lower[left] << shift) + (lower[right] - lower[left]) * fx;
            plane(x, y) = static_cast<uint8_t>(((top << shift) + (bottom - top) * fy) >> (2 * shift));
        }
    }
}

HdrStatus build_colour_maps(MemContext *memory, HdrContext *context) {
    const Preparation &preparation = context->preparation;
    const int width = preparation.workImages[0]->i32Width;
    const int height = preparation.workImages[0]->i32Height;
    const size_t samples = static_cast<size_t>(width) * static_cast<size_t>(height);
    int16_t *const *correctionMaps = context->firstMerge.correctionMaps;
    for (int map = kMidOffsetU; map <= kBrightOffsetV; map++)
        std::fill_n(correctionMaps[map], samples, int16_t{0});

    Buffer<uint8_t> maskSamples(memory, samples);
    if (!maskSamples || !context->tables.detailGain || !context->localToneMap.map)
        return HDR_ERR_NOMEM;

    const Picture dark(*preparation.workImages[preparation.darkIndex]);
    const Picture mid(*preparation.workImages[preparation.midIndex]);
    const Picture bright(*preparation.workImages[preparation.brightIndex]);
    const Picture merged(*preparation.mergedImage);
    const Plane<uint8_t> mask(maskSamples.data(), width, height);
    const auto upsampled = [&](const uint8_t *grid) {
        upsample_grid_u8(mask.data, width, height, width, grid, preparation.gridWidth, preparation.gridHeight,
                         preparation.gridWidth, nullptr, kCellShift);
        return mask;
    };
    const auto maps = [&](CorrectionMap u, CorrectionMap v) {
        return OffsetMaps{{correctionMaps[u], width, height}, {correctionMaps[v], width, height}};
    };

    const Chroma tint = highlightTint(dark, mid, bright);
    toneMapMerged(*context, merged);
    mapBright(bright, merged, upsampled(context->weights.ghostMaskD), tint,
              maps(kBrightOffsetU, kBrightOffsetV));
    mapReference(mid, merged, upsampled(context->weights.ghostMaskA), maps(kMidOffsetU, kMidOffsetV));
    mapDark(dark, merged, maps(kDarkOffsetU, kDarkOffsetV));
    return HDR_OK;
}

} // namespace hdr
