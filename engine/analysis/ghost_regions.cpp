// SPDX-License-Identifier: MIT
#include "engine/analysis/ghost_regions.h"

#include "engine/analysis/ghost_masks.h"
#include "engine/analysis/plane_filters.h"
#include "engine/core/context.h"
#include "engine/prepare/preparation.h"

#include <algorithm>

namespace hdr {
namespace {

constexpr int16_t kWholeWeight = 256;

/// Reference luminance below which a difference of the dark exposure is noise.
constexpr int kDeepShadow = 64;
/// Bright luminance above which a cell of the bright exposure is clipped.
constexpr int kBrightClipped = 252;
/// Dark luminance below which the dark exposure has no colour of its own.
constexpr int kDarkDim = 64;
/// Luminance of the reference and of the bright exposure from which the dark exposure may take a cell over.
constexpr int kHighlightMid = 192;
constexpr int kHighlightBright = 224;
/// This many cells of clipped reference inside one region make the dark exposure unusable.
constexpr int kMidClipped = 251;
constexpr int kMostClippedCells = 64;

constexpr int kSmoothingRadius = 2;

/// Gives the columns after the last one with statistics, up to `end`, the values of that one.
template <typename T>
void repeatLastSampledColumn(const GhostGrid &grid, T *plane, int end) {
    for (int y = 0; y < grid.height; y++) {
        T *row = plane + y * grid.width;
        std::fill(row + grid.lastSampledColumn + 1, row + end, row[grid.lastSampledColumn]);
    }
}

/// Whether the current region is too large to be taken from one exposure at this level.
bool isTooLarge(const GhostGrid &grid, int level, const RegionSearch &search) {
    const int area = grid.width * grid.height;
    return static_cast<int>(search.cells().size()) > area / 2 - area * level / 30;
}

void clearDeepShadowRegions(const GhostGrid &grid, RegionSearch &search) {
    search.start(grid.darkSide);
    while (search.next()) {
        const auto inDeepShadow = [&](int32_t cell) { return grid.midLuma[cell] < kDeepShadow; };
        if (std::ranges::all_of(search.cells(), inDeepShadow))
            for (const int32_t cell : search.cells())
                grid.darkSide[cell] = 0;
    }
}

/// Gives up on merging when the bright exposure differs in one region that spans much of the picture.
void checkBrightExtent(HdrContext *context, const GhostGrid &grid, RegionSearch &search) {
    const int level = context->ghostSuppressionLevel;
    const int smallest = grid.width * grid.height / 255;
    const int widest = 2 * grid.width / 3 - level * grid.width / 20;
    const int tallest = 2 * grid.height / 3 - level * grid.height / 20;
    search.start(grid.brightExtent);
    while (search.next()) {
        const Rect &box = search.box();
        if (static_cast<int>(search.cells().size()) >= smallest && box.x1 - box.x0 > widest &&
            box.y1 - box.y0 > tallest)
            context->raiseEarlyExit(HDR_ERR_SHIFT, HDR_FALLBACK_BRIGHT_MOTION);
    }
}

/// Whether the current bright-side region is shadow that only the bright exposure shows well.
bool belongsToBright(const GhostGrid &grid, const RegionSearch &search) {
    int64_t midWeight = 0;
    int64_t brightWeight = 0;
    int64_t clippedCells = 0;
    bool darkDiffers = false;
    for (const int32_t cell : search.cells()) {
        midWeight += grid.midWeights[cell];
        brightWeight += grid.brightWeights[cell];
        clippedCells += grid.brightLuma[cell] > kBrightClipped;
        darkDiffers |= grid.darkSide[cell] != 0;
    }
    return brightWeight > 2 * midWeight && !darkDiffers &&
           100 * clippedCells < static_cast<int64_t>(search.cells().size());
}

/// Takes each bright-side region from the bright exposure alone (mask D) or removes that exposure from it
/// (mask C). Whether there was one.
bool analyseBrightSide(HdrContext *context, const GhostGrid &grid, RegionSearch &search,
                       GhostProposal &proposal) {
    bool anyRegion = false;
    search.start(grid.brightSide);
    while (search.next()) {
        anyRegion = true;
        if (isTooLarge(grid, context->ghostSuppressionLevel, search))
            context->raiseEarlyExit(HDR_ERR_SHIFT, HDR_FALLBACK_BRIGHT_MOTION);
        const bool fromBright = belongsToBright(grid, search);
        uint8_t *mask = fromBright ? context->weights.ghostMaskD : context->weights.ghostMaskC;
        for (const int32_t cell : search.cells())
            mask[cell] = kMaskSet;
        if (!fromBright && proposal.ghostMode == kGhostsNone)
            proposal.ghostMode = kGhostsReplaced;
    }
    return anyRegion;
}

/// Counts dark-side regions that meet known motion of the dark exposure as part of it.
void joinKnownMotion(const GhostGrid &grid, RegionSearch &search) {
    search.start(grid.darkSide);
    while (search.next()) {
        if (std::ranges::none_of(search.cells(), [&](int32_t cell) { return grid.darkMoved[cell] != 0; }))
            continue;
        for (const int32_t cell : search.cells()) {
            grid.darkMoved[cell] = kMaskSet;
            grid.darkSide[cell] = 0;
        }
    }
}

/// Judges the dark-side regions, which all lose the dark exposure.
void analyseDarkSide(HdrContext *context, const GhostGrid &grid, RegionSearch &search,
                     GhostProposal &proposal) {
    search.start(grid.darkSide);
    while (search.next()) {
        proposal.darkSideFound = true;
        if (isTooLarge(grid, context->ghostSuppressionLevel, search))
            context->raiseEarlyExit(HDR_ERR_SHIFT, HDR_FALLBACK_DARK_MOTION);
        const auto isClipped = [&](int32_t cell) { return grid.midLuma[cell] >= kMidClipped; };
        const auto clippedCells = std::ranges::count_if(search.cells(), isClipped);
        if (clippedCells > kMostClippedCells)
            proposal.ghostMode = kGhostsWithoutDark;
        else if (proposal.ghostMode == kGhostsNone)
            proposal.ghostMode = kGhostsReplaced;
    }
}

/// The exposure that a region in which something moved needs most.
enum class Source { reference, dark, bright };

Source mostNeeded(const GhostGrid &grid, const RegionSearch &search) {
    int64_t mid = 0;
    int64_t dark = 0;
    int64_t bright = 0;
    int64_t clippedCells = 0;
    int64_t dimCells = 0;
    for (const int32_t cell : search.cells()) {
        mid += grid.midWeights[cell];
        dark += grid.darkWeights[cell];
        bright += grid.brightWeights[cell];
        clippedCells += grid.brightLuma[cell] > kBrightClipped;
        dimCells += grid.darkLuma[cell] < kDarkDim;
    }
    const int64_t size = static_cast<int64_t>(search.cells().size());
    if (dark > mid + bright && 10 * dimCells < size)
        return Source::dark;
    return bright > 2 * mid && 100 * clippedCells < size ? Source::bright : Source::reference;
}

/// Takes the colour of a cell's pixels, and what the first merge shows there, from the dark exposure.
void mergeFromDark(HdrContext *context, const GhostGrid &grid, int32_t cell) {
    const Offscreen &reduced = *context->preparation.workImages[context->preparation.midIndex];
    const ChromaWeights &weights = context->chromaWeights;
    const int left = (cell % grid.width - 1) * kReducedCellSize;
    const int top = (cell / grid.width - 1) * kReducedCellSize;
    for (int y = std::max(top, 0); y < std::min(top + kReducedCellSize, reduced.i32Height); y++)
        for (int x = std::max(left, 0); x < std::min(left + kReducedCellSize, reduced.i32Width); x++) {
            const int pixel = y * reduced.i32Width + x;
            weights.chromaWeightDark[pixel] = kWholeWeight;
            weights.chromaWeightMid[pixel] = 1; // where the dark exposure is too dim to count
            weights.chromaWeightBright[pixel] = 0;
        }
}

/// Takes each region in which alignment found motion from one exposure. Whether there was one.
bool replaceMoved(HdrContext *context, const GhostGrid &grid, RegionSearch &search, GhostProposal &proposal) {
    // Upsampled weights reach into the next cell.
    dilateMask8(Plane<uint8_t>(grid.darkMoved, grid.width, grid.height));
    dilateMask8(Plane<uint8_t>(grid.brightMoved, grid.width, grid.height));
    std::transform(grid.darkMoved, grid.darkMoved + grid.width * grid.height, grid.brightMoved, grid.moved,
                   [](uint8_t dark, uint8_t bright) { return static_cast<uint8_t>(dark | bright); });
    ExposureWeights &masks = context->weights;
    bool anyRegion = false;
    search.start(grid.moved);
    while (search.next()) {
        anyRegion = true;
        const Source source = mostNeeded(grid, search);
        for (const int32_t cell : search.cells()) {
            if (source == Source::bright) {
                masks.ghostMaskD[cell] = kMaskSet;
            } else if (source == Source::dark) {
                masks.ghostMaskB[cell] = kMaskSet;
                mergeFromDark(context, grid, cell);
            } else {
                masks.ghostMaskC[cell] |= grid.brightMoved[cell];
                grid.darkSide[cell] |= grid.darkMoved[cell];
            }
        }
    }
    if (anyRegion && proposal.ghostMode == kGhostsNone)
        proposal.ghostMode = kGhostsReplaced;
    return anyRegion;
}

/// Decides for every cell of a region which exposure it is taken from: the reference (mask A), the dark one
/// (B) or the bright one (D), never two of them.
void assignExposures(ExposureWeights &masks, const GhostGrid &grid) {
    for (int y = 0; y < grid.height; y++) {
        // Frame cells have no weights and the columns after the last sampled one no luminance of their own:
        // they go where the nearest full cell goes, or the picture's edge would mix two exposures.
        const int nearestRow = std::clamp(y, 1, grid.height - 2) * grid.width;
        for (int x = 0; x < grid.width; x++) {
            const int cell = y * grid.width + x;
            const int nearest = nearestRow + std::clamp(x, 1, grid.lastSampledColumn);
            const bool brightRemoved = masks.ghostMaskC[cell] != 0;
            if (masks.ghostMaskD[cell] || masks.ghostMaskB[cell])
                continue;
            if (grid.darkSide[cell]) {
                if (!brightRemoved && !masks.ghostMaskC[nearest] &&
                    grid.brightWeights[nearest] == kWholeWeight)
                    masks.ghostMaskD[cell] = kMaskSet;
                else
                    masks.ghostMaskA[cell] = kMaskSet;
            } else if (brightRemoved) {
                const bool highlight =
                    grid.midLuma[nearest] >= kHighlightMid && grid.brightLuma[nearest] >= kHighlightBright;
                if (highlight && grid.darkWeights[nearest] > grid.midWeights[nearest])
                    masks.ghostMaskB[cell] = kMaskSet;
                else
                    masks.ghostMaskA[cell] = kMaskSet;
            }
        }
    }
}

/// Grows the masks beyond the cells whose weights they tell: later stages average them over up to nine cells
/// before they use them.
void addMargin(const ExposureWeights &masks, const GhostGrid &grid) {
    const int cells = grid.width * grid.height;
    const Plane<uint8_t> grown(grid.darkMoved, grid.width, grid.height);
    uint8_t *taken = grid.moved;
    for (int cell = 0; cell < cells; cell++)
        taken[cell] = masks.ghostMaskA[cell] | masks.ghostMaskB[cell] | masks.ghostMaskD[cell];
    for (uint8_t *mask : {masks.ghostMaskA, masks.ghostMaskB, masks.ghostMaskD}) {
        std::copy_n(mask, cells, grown.data);
        dilateMask8(grown);
        dilate_mask4(grown, 1);
        for (int cell = 0; cell < cells; cell++)
            if (grown.data[cell] && !taken[cell])
                mask[cell] = taken[cell] = kMaskSet;
    }
}

/// Gives every replaced cell the whole weight of its exposure.
void writeReplacedWeights(const ExposureWeights &masks, const GhostGrid &grid) {
    const int cells = grid.width * grid.height;
    for (int cell = 0; cell < cells; cell++) {
        const bool mid = masks.ghostMaskA[cell] != 0;
        const bool dark = masks.ghostMaskB[cell] != 0;
        const bool bright = masks.ghostMaskD[cell] != 0;
        if (!mid && !dark && !bright)
            continue;
        grid.midWeights[cell] = mid ? kWholeWeight : int16_t{0};
        grid.darkWeights[cell] = dark ? kWholeWeight : int16_t{0};
        grid.brightWeights[cell] = bright ? kWholeWeight : int16_t{0};
    }
}

/// Fades the weights into the replaced cells. Without memory a plane keeps its hard edges, which is still a
/// valid weight map.
void smoothWeights(MemContext *memory, const GhostGrid &grid) {
    for (int16_t *plane : {grid.midWeights, grid.darkWeights, grid.brightWeights})
        box_mean_s16(memory, plane, grid.width, grid.height, grid.width, kSmoothingRadius, 1);
}

} // namespace

GhostProposal analyse_ghost_regions(MemContext *memory, HdrContext *context, const GhostGrid &grid,
                                    RegionSearch &search) {
    ExposureWeights &masks = context->weights;
    const auto weightPlanes = {grid.midWeights, grid.darkWeights, grid.brightWeights};
    const auto maskPlanes = {masks.ghostMaskA, masks.ghostMaskB, masks.ghostMaskC, masks.ghostMaskD};
    for (uint8_t *mask : maskPlanes)
        std::fill_n(mask, grid.width * grid.height, uint8_t{0});
    // An empty column looks like deep shadow; its weights must not count for a region nor be smoothed into
    // others.
    const int frame = grid.width - 1;
    for (int16_t *plane : weightPlanes)
        repeatLastSampledColumn(grid, plane, frame);

    GhostProposal proposal = {};
    clearDeepShadowRegions(grid, search);
    joinKnownMotion(grid, search);
    checkBrightExtent(context, grid, search);
    const bool brightSideFound = analyseBrightSide(context, grid, search, proposal);
    analyseDarkSide(context, grid, search, proposal);
    const bool movedFound = replaceMoved(context, grid, search, proposal);
    if (brightSideFound || proposal.darkSideFound || movedFound) {
        assignExposures(masks, grid);
        // Beyond an empty column the frame has nothing of its own to follow either.
        const bool lastColumnEmpty = grid.lastSampledColumn + 1 < frame;
        for (uint8_t *mask : maskPlanes)
            repeatLastSampledColumn(grid, mask, lastColumnEmpty ? grid.width : frame);
        writeReplacedWeights(masks, grid);
        smoothWeights(memory, grid);
        writeReplacedWeights(masks, grid);
        if (movedFound)
            addMargin(masks, grid);
    }
    for (int16_t *plane : weightPlanes)
        repeatLastSampledColumn(grid, plane, frame);
    return proposal;
}

} // namespace hdr
