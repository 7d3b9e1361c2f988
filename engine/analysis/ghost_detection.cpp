// SPDX-License-Identifier: MIT
#include "engine/analysis/ghost_detection.h"

#include "engine/analysis/ghost_masks.h"
#include "engine/analysis/ghost_regions.h"
#include "engine/analysis/luma_histogram.h"
#include "engine/analysis/plane_borders.h"
#include "engine/core/buffer.h"
#include "engine/core/context.h"
#include "engine/core/plane.h"

#include <algorithm>
#include <cstdlib>

namespace hdr {
namespace {

constexpr int kWholeWeight = 256;

/// High clip point of the reference up to which it does without the dark exposure.
constexpr int kUnclippedHigh = 251;

/// In a highlight of the reference the bright exposure is expected to be clipped from this level on.
constexpr int kMidHighlight = 193;
constexpr int kBrightNearlyClipped = 241;
/// From here on it is clipped anywhere, and being brighter than the reference counts this much at most.
constexpr int kBrightClipped = 251;
constexpr int kMostClippedDifference = 16;

/// From this level of the reference on, and unless the dark exposure is dim itself, its difference counts by
/// (kDarkFadeEnd - level) / kDarkFadeRange.
constexpr int kDarkFadeStart = 161;
constexpr int kDarkFadeEnd = 352;
constexpr int kDarkFadeRange = 192;
constexpr int kDarkDimEnd = 129;
/// Below this level of the reference any dark exposure that is lighter counts as one difference.
constexpr int kMidDeepShadow = 32;
constexpr int kDeepShadowDifference = 128;

/// Difference of the bright exposure from the reference at a pixel, given both registered luminances and the
/// bright exposure's own. Where that is clipped, a registered level says little.
int brightDifference(int mid, int bright, int brightOwn) {
    int difference = std::abs(mid - bright);
    if (mid >= kMidHighlight && brightOwn >= kBrightNearlyClipped)
        difference = 0;
    if (brightOwn >= kBrightClipped)
        difference = bright <= mid ? 0 : std::min(difference, kMostClippedDifference);
    return difference;
}

/// As brightDifference for the dark exposure: highlights that it shows bright count less the nearer the
/// reference is to clipping; in deep shadow the dark exposure may not be the lighter one.
int darkDifference(int mid, int dark, int darkOwn) {
    const int difference = std::abs(mid - dark);
    if (mid >= kDarkFadeStart)
        return dark < kDarkDimEnd ? difference : (kDarkFadeEnd - mid) * difference / kDarkFadeRange;
    if (mid < kMidDeepShadow)
        return darkOwn > mid ? kDeepShadowDifference : 0;
    return difference;
}

/// Working planes of the detection; masks and means of the grid are packed, framed and zeroed.
struct WorkingPlanes {
    WorkingPlanes(MemContext *memory, size_t pixels, int width, int height)
        : darkDifferences(Buffer<uint8_t>::zeroed(memory, pixels)),
          brightDifferences(Buffer<uint8_t>::zeroed(memory, pixels)),
          darkSide(gridPlane(memory, width, height)), brightSide(gridPlane(memory, width, height)),
          brightExtent(gridPlane(memory, width, height)),
          copy(gridPlane(memory, width, height)), scratch{gridPlane(memory, width, height),
                                                          gridPlane(memory, width, height),
                                                          gridPlane(memory, width, height)},
          search(memory, width, height) {}
    explicit operator bool() const {
        return darkDifferences && brightDifferences && darkSide && brightSide && brightExtent && copy &&
               scratch[0] && scratch[1] && scratch[2] && search;
    }

    Buffer<uint8_t> darkDifferences; ///< reduced size
    Buffer<uint8_t> brightDifferences;
    Buffer<uint8_t> darkSide; ///< mean difference of each cell, then a mask
    Buffer<uint8_t> brightSide;
    Buffer<uint8_t> brightExtent; ///< mask by the threshold that the level does not move
    Buffer<uint8_t> copy;
    Buffer<uint8_t> scratch[3];
    RegionSearch search;

private:
    static Buffer<uint8_t> gridPlane(MemContext *memory, int width, int height) {
        return Buffer<uint8_t>::zeroed(memory, static_cast<size_t>(width) * static_cast<size_t>(height));
    }
};

/// The part of the reduced picture that is valid in both the dark and the bright exposure.
Rect commonValidRect(const Preparation &preparation, int width, int height) {
    const Rect &dark = preparation.validRects[preparation.darkIndex];
    const Rect &bright = preparation.validRects[preparation.brightIndex];
    return {std::max({dark.x0, bright.x0, 0}), std::max({dark.y0, bright.y0, 0}),
            std::min({dark.x1, bright.x1, width}), std::min({dark.y1, bright.y1, height})};
}

/// Fills the two planes with the differences inside the valid rectangle and extends them to the picture's
/// edges.
void compareExposures(const Preparation &preparation, Plane<uint8_t> darkDifferences,
                      Plane<uint8_t> brightDifferences) {
    const Plane<uint8_t> mid = planeOf(*preparation.registeredImages[preparation.midIndex]);
    const Plane<uint8_t> dark = planeOf(*preparation.registeredImages[preparation.darkIndex]);
    const Plane<uint8_t> bright = planeOf(*preparation.registeredImages[preparation.brightIndex]);
    const Plane<uint8_t> darkOwn = planeOf(*preparation.workImages[preparation.darkIndex]);
    const Plane<uint8_t> brightOwn = planeOf(*preparation.workImages[preparation.brightIndex]);
    const Rect valid = commonValidRect(preparation, mid.width, mid.height);
    for (int y = valid.y0; y < valid.y1; y++) {
        const uint8_t *midRow = mid.row(y);
        const uint8_t *darkRow = dark.row(y);
        const uint8_t *brightRow = bright.row(y);
        const uint8_t *darkOwnRow = darkOwn.row(y);
        const uint8_t *brightOwnRow = brightOwn.row(y);
        uint8_t *darkResult = darkDifferences.row(y);
        uint8_t *brightResult = brightDifferences.row(y);
        for (int x = valid.x0; x < valid.x1; x++) {
            brightResult[x] =
                static_cast<uint8_t>(brightDifference(midRow[x], brightRow[x], brightOwnRow[x]));
            darkResult[x] = static_cast<uint8_t>(darkDifference(midRow[x], darkRow[x], darkOwnRow[x]));
        }
    }
    for (const Plane<uint8_t> &plane : {darkDifferences, brightDifferences})
        extend_rect_u8(plane.data, plane.width, plane.height, plane.width, valid.x0, valid.x1, valid.y0,
                       valid.y1);
}

/// Turns the mean differences of the cells inside the frame into masks. Brighter cells may differ more; each
/// level of ghost suppression lowers the threshold by 1.
void applyThresholds(Plane<const int16_t> midGrid, int level, Plane<uint8_t> darkSide,
                     Plane<uint8_t> brightSide, Plane<uint8_t> brightExtent) {
    const auto maskOf = [](bool set) { return set ? kMaskSet : uint8_t{0}; };
    for (int y = 1; y < midGrid.height - 1; y++)
        for (int x = 1; x < midGrid.width - 1; x++) {
            const int luma = midGrid(x, y);
            const int threshold = luma / 16 + (16 - level);
            brightExtent(x, y) = maskOf(brightSide(x, y) > luma / 8 + 2);
            brightSide(x, y) = maskOf(brightSide(x, y) > threshold);
            darkSide(x, y) = maskOf(darkSide(x, y) > threshold);
        }
}

/// Drops single cells, then closes gaps and adds a margin around what is left.
void dropIsolatedAndClose(Plane<uint8_t> mask, Buffer<uint8_t> &copy) {
    std::copy(mask.data, mask.data + copy.size(), copy.begin());
    remove_isolated(Plane<const uint8_t>(copy.data(), mask.width, mask.height), mask);
    dilate_mask4(mask, 4);
    erode_mask4(mask, 1);
}

void cleanMasks(Plane<uint8_t> darkSide, Plane<uint8_t> brightSide, Plane<uint8_t> brightExtent,
                Buffer<uint8_t> &copy) {
    erode_mask4(darkSide, 1);
    dilate_mask4(darkSide, 3);
    erode_mask4(darkSide, 2);
    dropIsolatedAndClose(darkSide, copy);

    dilate_mask4(brightSide, 2);
    erode_mask4(brightSide, 2);
    dropIsolatedAndClose(brightSide, copy);

    erode_mask4(brightExtent, 1);
    dilate_mask4(brightExtent, 2);
}

/// Moves the weights of an excluded exposure to the reference and clears the mask of the cells taken from it.
void excludeExposure(const GhostGrid &grid, int16_t *weights, uint8_t *takenFromIt) {
    const int cells = grid.width * grid.height;
    for (int cell = 0; cell < cells; cell++) {
        grid.midWeights[cell] =
            static_cast<int16_t>(std::min(grid.midWeights[cell] + weights[cell], kWholeWeight));
        weights[cell] = 0;
        takenFromIt[cell] = 0;
    }
}

/// Decides on the ghost mode and whether an exposure is left out of the whole picture.
void decide(HdrContext *context, const GhostGrid &grid, const GhostProposal &proposal) {
    const Preparation &preparation = context->preparation;
    GhostDecision &decision = context->ghosts;
    int high = 0;
    int low = 0;
    histogram_clip_points(preparation.registeredImages[preparation.midIndex],
                          preparation.histogram(preparation.midIndex, 0), &high, &low);
    const bool dropDark =
        proposal.ghostMode == kGhostsWithoutDark || (proposal.darkSideFound && high <= kUnclippedHigh);
    decision.ghostMode = dropDark ? kGhostsWithoutDark : proposal.ghostMode;
    if (dropDark)
        decision.excludedInputs[preparation.darkIndex] = 1;

    if (decision.excludedInputs[preparation.darkIndex]) {
        excludeExposure(grid, grid.darkWeights, context->weights.ghostMaskB);
        decision.chromaMode = kChromaWithoutDark;
    } else if (decision.excludedInputs[preparation.brightIndex]) {
        excludeExposure(grid, grid.brightWeights, context->weights.ghostMaskD);
        decision.chromaMode = kChromaWithoutBright;
    }
}

} // namespace

HdrStatus detect_ghosts(MemContext *memory, HdrContext *context, const int16_t *darkGrid,
                        const int16_t *midGrid, const int16_t *brightGrid, int width, int height,
                        int16_t *darkWeights, int16_t *brightWeights, int16_t *midWeights) {
    const Preparation &preparation = context->preparation;
    const Plane<uint8_t> reference = planeOf(*preparation.registeredImages[preparation.midIndex]);
    const size_t pixels = static_cast<size_t>(reference.width) * static_cast<size_t>(reference.height);
    WorkingPlanes work(memory, pixels, width, height);
    if (!work)
        return HDR_ERR_NOMEM;
    const Plane<uint8_t> darkDifferences(work.darkDifferences.data(), reference.width, reference.height);
    const Plane<uint8_t> brightDifferences(work.brightDifferences.data(), reference.width, reference.height);
    const Plane<uint8_t> darkSide(work.darkSide.data(), width, height);
    const Plane<uint8_t> brightSide(work.brightSide.data(), width, height);
    const Plane<uint8_t> brightExtent(work.brightExtent.data(), width, height);

    compareExposures(preparation, darkDifferences, brightDifferences);
    context->warningFlag = 0;
    reduce_block_mean8(darkDifferences, darkSide);
    reduce_block_mean8(brightDifferences, brightSide);
    applyThresholds(Plane<const int16_t>(midGrid, width, height), context->ghostSuppressionLevel, darkSide,
                    brightSide, brightExtent);
    for (const Plane<uint8_t> &mask : {darkSide, brightSide, brightExtent})
        replicate_border_u8(mask.data, width, height);
    cleanMasks(darkSide, brightSide, brightExtent, work.copy);
    // The grid statistics leave the last column empty when the picture ends exactly with it.
    const int lastColumn = width - 2;
    const bool lastColumnEmpty = lastColumn > 1 && reference.width / kReducedCellSize == lastColumn;
    const GhostGrid grid = {
        .width = width,
        .height = height,
        .lastSampledColumn = lastColumnEmpty ? lastColumn - 1 : lastColumn,
        .darkLuma = darkGrid,
        .midLuma = midGrid,
        .brightLuma = brightGrid,
        .midWeights = midWeights,
        .darkWeights = darkWeights,
        .brightWeights = brightWeights,
        .darkSide = darkSide.data,
        .brightSide = brightSide.data,
        .darkMoved = context->alignment.movedCells[preparation.darkIndex],
        .brightMoved = context->alignment.movedCells[preparation.brightIndex],
        .scratch = {work.scratch[0].data(), work.scratch[1].data(), work.scratch[2].data()},
        .brightExtent = brightExtent.data};
    const GhostProposal proposal = analyse_ghost_regions(memory, context, grid, work.search);
    decide(context, grid, proposal);
    return HDR_OK;
}

} // namespace hdr
