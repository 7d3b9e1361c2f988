// SPDX-License-Identifier: MIT
#include "engine/analysis/ghost_regions.h"

#include "engine/analysis/ghost_masks.h"
#include "engine/analysis/plane_filters.h"
#include "engine/core/context.h"

#include <algorithm>

namespace hdr {
namespace {

constexpr int16_t kWholeWeight = 256;

/// Reference luminance below which a difference of the dark exposure is noise.
constexpr int kDeepShadow = 64;
/// Bright luminance above which a cell of the bright exposure is clipped.
constexpr int kBrightClipped = 252;
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
            if (masks.ghostMaskD[cell])
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

RegionSearch::RegionSearch(MemContext *memory, int width, int height)
    : width(width), height(height), pending(memory, static_cast<size_t>(width) * static_cast<size_t>(height)),
      found(memory, static_cast<size_t>(width) * static_cast<size_t>(height)) {}

void RegionSearch::start(const uint8_t *mask) {
    std::transform(mask, mask + pending.size(), pending.begin(),
                   [](uint8_t value) { return static_cast<uint8_t>(value == kMaskSet); });
    scanned = 0;
    count = 0;
}

bool RegionSearch::next() {
    const int size = width * height;
    while (scanned < size && !pending.data()[scanned])
        scanned++;
    if (scanned == size)
        return false;
    count = 0;
    bounds = {width, height, 0, 0};
    take(scanned % width, scanned / width);
    for (int visited = 0; visited < count; visited++) {
        const int x = found.data()[visited] % width;
        const int y = found.data()[visited] / width;
        for (int ny = std::max(y - 1, 0); ny <= std::min(y + 1, height - 1); ny++)
            for (int nx = std::max(x - 1, 0); nx <= std::min(x + 1, width - 1); nx++)
                if (pending.data()[ny * width + nx])
                    take(nx, ny);
    }
    return true;
}

void RegionSearch::take(int x, int y) {
    const int cell = y * width + x;
    pending.data()[cell] = 0;
    found.data()[count++] = cell;
    bounds = {std::min(bounds.x0, x), std::min(bounds.y0, y), std::max(bounds.x1, x + 1),
              std::max(bounds.y1, y + 1)};
}

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
    checkBrightExtent(context, grid, search);
    const bool brightSideFound = analyseBrightSide(context, grid, search, proposal);
    analyseDarkSide(context, grid, search, proposal);
    if (brightSideFound || proposal.darkSideFound) {
        assignExposures(masks, grid);
        // Beyond an empty column the frame has nothing of its own to follow either.
        const bool lastColumnEmpty = grid.lastSampledColumn + 1 < frame;
        for (uint8_t *mask : maskPlanes)
            repeatLastSampledColumn(grid, mask, lastColumnEmpty ? grid.width : frame);
        writeReplacedWeights(masks, grid);
        smoothWeights(memory, grid);
        writeReplacedWeights(masks, grid);
    }
    for (int16_t *plane : weightPlanes)
        repeatLastSampledColumn(grid, plane, frame);
    return proposal;
}

} // namespace hdr
