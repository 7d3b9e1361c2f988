// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/report/merge_inspection.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <new>

#include "engine/core/context.h"
#include "engine/core/plane.h"
#include "engine/prepare/features.h"
#include "engine/prepare/warp_grids.h"

namespace tristop {
namespace {

GrayPicture copyOf(hdr::Plane<const uint8_t> plane) {
    GrayPicture copy{plane.width, plane.height, {}};
    for (int y = 0; y < plane.height; ++y)
        copy.samples.insert(copy.samples.end(), plane.row(y), plane.row(y) + plane.width);
    return copy;
}

YuvPicture copyOf(const Offscreen &picture) {
    return {copyOf(hdr::planeOf(picture, 0)),
            {copyOf(hdr::planeOf(picture, 1)).samples, copyOf(hdr::planeOf(picture, 2)).samples}};
}

/// Levels of an exposure in those of the reference; null for the reference.
const uint8_t *tonesOf(const HdrContext &context, int input) {
    if (input == context.preparation.midIndex)
        return nullptr;
    return input == context.preparation.darkIndex ? context.tables.toneMatchDarkToMid
                                                  : context.tables.toneMatchBrightToMid;
}

GrayPicture toned(GrayPicture picture, const uint8_t *tones) {
    if (tones != nullptr)
        for (uint8_t &level : picture.samples)
            level = tones[level];
    return picture;
}

std::vector<InspectedMatch> matchesOf(const hdr::Alignment &alignment, int input) {
    const float *x = alignment.featureTables, *y = x + hdr::kFeatureCapacity;
    const float *matchX = alignment.matchTables[input], *matchY = matchX + hdr::kFeatureCapacity;
    const float *follows = matchY + hdr::kFeatureCapacity;
    std::vector<InspectedMatch> matches;
    for (int i = 0; i < alignment.featureCount; ++i)
        // The table of an exposure that was not aligned is all zero.
        matches.push_back({x[i], y[i], matchX[i], matchY[i], matchX[i] > 0 || matchY[i] > 0, follows[i] > 0});
    return matches;
}

/// The part of the reduced picture that is valid in all exposures; all of it when they share too little.
hdr::Rect commonValidRect(const hdr::Preparation &preparation) {
    constexpr int kLeastSide = 10;
    const Offscreen &picture = *preparation.workImages[0];
    const hdr::Rect whole = {0, 0, picture.i32Width, picture.i32Height};
    hdr::Rect common = whole;
    for (const hdr::Rect &valid : preparation.validRects)
        common = {std::max(common.x0, valid.x0), std::max(common.y0, valid.y0), std::min(common.x1, valid.x1),
                  std::min(common.y1, valid.y1)};
    const bool isLarge = common.x1 - common.x0 >= kLeastSide && common.y1 - common.y0 >= kLeastSide;
    return isLarge ? common : whole;
}

/// Places whose pieces show well at full size whether the exposures agree.
class DetailPlaces {
public:
    /// Divides a part of the reduced reference into a few areas and takes from each the piece with the most
    /// texture that is neither clipped nor crushed.
    DetailPlaces(hdr::Plane<const uint8_t> reference, const hdr::Rect &part) {
        const int width = part.x1 - part.x0, height = part.y1 - part.y0;
        const bool wide = width >= height;
        columns = wide ? kLongSide : kShortSide;
        rows = wide ? kShortSide : kLongSide;
        const int span = std::min({kLargestSpan, width / columns, height / rows});
        size = span * hdr::kReduction;
        for (int row = 0; row < rows; ++row)
            for (int column = 0; column < columns; ++column)
                corners.push_back(mostTextured(
                    reference, span,
                    {part.x0 + width * column / columns, part.y0 + height * row / rows,
                     part.x0 + width * (column + 1) / columns, part.y0 + height * (row + 1) / rows}));
    }

    /// The pieces side by side, `levelAt(x, y)` being the luminance of a pixel.
    template <typename LevelAt>
    GrayPicture sheet(LevelAt levelAt) const {
        GrayPicture made{columns * (size + kGap) - kGap, rows * (size + kGap) - kGap, {}};
        made.samples.assign(static_cast<size_t>(made.width) * static_cast<size_t>(made.height), 0);
        for (size_t piece = 0; piece < corners.size(); ++piece) {
            const int left = static_cast<int>(piece) % columns * (size + kGap);
            const int top = static_cast<int>(piece) / columns * (size + kGap);
            for (int y = 0; y < size; ++y)
                for (int x = 0; x < size; ++x)
                    made.samples[static_cast<size_t>(top + y) * static_cast<size_t>(made.width) +
                                 static_cast<size_t>(left + x)] =
                        levelAt(corners[piece].x + x, corners[piece].y + y);
        }
        return made;
    }

private:
    static constexpr int kLongSide = 4, kShortSide = 3; ///< areas
    static constexpr int kLargestSpan = 25;             ///< reduced pixels across a piece
    static constexpr int kGap = 4;
    static constexpr int kDarkest = 32, kBrightest = 210;

    struct Corner {
        int x, y;
    };

    static Corner mostTextured(hdr::Plane<const uint8_t> luma, int span, const hdr::Rect &area) {
        const auto textureAt = [&](int x, int y) {
            const int level = luma(x, y);
            if (level < kDarkest || level > kBrightest)
                return 0;
            return std::abs(luma(x + 1, y) - level) + std::abs(luma(x, y + 1) - level);
        };
        Corner best{area.x0, area.y0};
        int most = -1;
        for (int y = area.y0; y + span < area.y1; y += 2)
            for (int x = area.x0; x + span < area.x1; x += 2) {
                int texture = 0;
                for (int v = y; v < y + span; ++v)
                    for (int u = x; u < x + span; ++u)
                        texture += textureAt(u, v);
                if (texture > most) {
                    most = texture;
                    best = {x, y};
                }
            }
        return {best.x * hdr::kReduction, best.y * hdr::kReduction};
    }

    int columns, rows;
    int size; ///< of a piece, in pixels
    std::vector<Corner> corners;
};

} // namespace

void MergeInspection::observe(const HdrContext &context, int32_t step) noexcept {
    try {
        switch (step) {
        case HDR_STEP_REDUCE:
            copyOriginals(context);
            break;
        case HDR_STEP_ALIGN:
            copyAlignment(context);
            break;
        case HDR_STEP_WEIGHTS:
            copyWeights(context);
            break;
        case HDR_STEP_EXPOSURE_MERGE:
            merged = copyOf(*context.preparation.mergedImage);
            break;
        default:
            return;
        }
        seenSteps |= 1U << step;
    } catch (const std::bad_alloc &) {
        // What is missing shows in complete().
    }
}

void MergeInspection::copyOriginals(const HdrContext &context) {
    for (size_t i = 0; i < exposures.size(); ++i)
        exposures[i].original = copyOf(*context.preparation.workImages[i]);
}

void MergeInspection::copyAlignment(const HdrContext &context) {
    const hdr::Preparation &preparation = context.preparation;
    const hdr::Alignment &alignment = context.alignment;
    darkIndex = preparation.darkIndex;
    midIndex = preparation.midIndex;
    brightIndex = preparation.brightIndex;
    warpColumns = alignment.warpWidth;
    warpRows = alignment.warpHeight;
    gridWidth = preparation.gridWidth;
    const DetailPlaces places(hdr::planeOf(*preparation.workImages[midIndex]), commonValidRect(preparation));
    const size_t nodes = static_cast<size_t>(warpColumns) * static_cast<size_t>(warpRows);
    for (int i = 0; i < 3; ++i) {
        InspectedExposure &exposure = exposures[static_cast<size_t>(i)];
        const uint8_t *tones = tonesOf(context, i);
        exposure.registered = copyOf(hdr::planeOf(*preparation.registeredImages[i]));
        exposure.lumaBefore = toned(exposure.original.luma, tones);
        exposure.lumaAfter = toned(copyOf(hdr::planeOf(*preparation.workImages[i])), tones);
        exposure.validRect = preparation.validRects[i];
        exposure.shift = {alignment.globalShift[i][0] + hdr::kCellSize * alignment.gridShift[i][0],
                          alignment.globalShift[i][1] + hdr::kCellSize * alignment.gridShift[i][1]};
        const Offscreen &source = preparation.inputs[i];
        const auto levelAt = [&source](int x, int y) {
            const int row = std::clamp(y, 0, source.i32Height - 1),
                      pixel = std::clamp(x, 0, source.i32Width - 1);
            return source.ppu8Plane[0][static_cast<ptrdiff_t>(row) * source.pi32Pitch[0] + 2 * pixel];
        };
        exposure.details = toned(places.sheet(levelAt), tones);
        if (i == midIndex)
            continue;
        exposure.warpX.assign(alignment.warpX[i], alignment.warpX[i] + nodes);
        exposure.warpY.assign(alignment.warpY[i], alignment.warpY[i] + nodes);
        exposure.matches = matchesOf(alignment, i);
        if (const uint8_t *moved = alignment.movedCells[i])
            exposure.movedCells.assign(moved, moved + preparation.gridPlaneSize());
        const auto alignedLevelAt = [&](int x, int y) {
            const hdr::Vector displacement =
                hdr::warpDisplacement(alignment, i, {static_cast<double>(x), static_cast<double>(y)});
            return levelAt(x - static_cast<int>(std::lround(displacement.x)),
                           y - static_cast<int>(std::lround(displacement.y)));
        };
        exposure.alignedDetails = toned(places.sheet(alignedLevelAt), tones);
    }
}

void MergeInspection::copyWeights(const HdrContext &context) {
    const hdr::ExposureWeights &weights = context.weights;
    const size_t cells = context.preparation.gridPlaneSize();
    darkWeights.assign(weights.lumaWeightDark, weights.lumaWeightDark + cells);
    midWeights.assign(weights.lumaWeightMid, weights.lumaWeightMid + cells);
    brightWeights.assign(weights.lumaWeightBright, weights.lumaWeightBright + cells);
    ghostMasks[0].assign(weights.ghostMaskA, weights.ghostMaskA + cells);
    ghostMasks[1].assign(weights.ghostMaskB, weights.ghostMaskB + cells);
    ghostMasks[2].assign(weights.ghostMaskC, weights.ghostMaskC + cells);
    ghostMasks[3].assign(weights.ghostMaskD, weights.ghostMaskD + cells);
}

} // namespace tristop
