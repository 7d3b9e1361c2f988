// SPDX-License-Identifier: MIT
#include "engine/analysis/ghost_regions.h"

#include "engine/analysis/ghost_masks.h"
#include "engine/analysis/plane_filters.h"
#include "engine/core/context.h"
#include "engine/prepare/preparation.h"

#include <algorithm>
#include <optional>
#include <span>

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

/// The cells in which alignment found motion, with those around them that upsampled weights reach into.
struct KnownMotion {
    Plane<uint8_t> dark;
    Plane<uint8_t> bright;
    Plane<uint8_t> either;

    explicit KnownMotion(const GhostGrid &grid)
        : dark(grid.scratch[0], grid.width, grid.height), bright(grid.scratch[1], grid.width, grid.height),
          either(grid.scratch[2], grid.width, grid.height) {
        std::copy_n(grid.darkMoved, size(), dark.data);
        std::copy_n(grid.brightMoved, size(), bright.data);
    }
    int size() const { return dark.width * dark.height; }

    /// Counts dark-side regions that meet motion of the dark exposure as part of it. The others are nothing
    /// but noise in the black, as alignment has looked at everything else.
    void join(const GhostGrid &grid, RegionSearch &search) {
        search.start(grid.darkSide);
        while (search.next()) {
            const bool meets =
                std::ranges::any_of(search.cells(), [this](int32_t cell) { return dark.data[cell] != 0; });
            for (const int32_t cell : search.cells()) {
                dark.data[cell] |= meets ? kMaskSet : uint8_t{0};
                grid.darkSide[cell] = 0;
            }
        }
    }
    void complete() {
        dilateMask8(dark);
        dilateMask8(bright);
        std::transform(dark.data, dark.data + size(), bright.data, either.data,
                       [](uint8_t a, uint8_t b) { return static_cast<uint8_t>(a | b); });
    }
};

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

/// The exposure that a region in which something moved is taken from.
enum class Source { reference, dark, bright };

/// A few cells in which one exposure alone differs may be the rim of something in the reference: they must be
/// this share (one in so many) of those in which both differ.
constexpr int64_t kLeastShareOfPlace = 4;

/// Whether an exposure shows each thing in a region exactly once, given the cells in which it alone differs
/// from the reference, the other one alone, or both. Where a thing stands in the reference, both differ;
/// where it stands in one of them, that one alone does. So the exposure differs nowhere, or the region holds
/// both places.
bool showsThingsOnce(int64_t itAlone, int64_t otherAlone, int64_t both) {
    if (itAlone + both == 0)
        return true;
    return kLeastShareOfPlace * itAlone >= both && itAlone > 0 && both + otherAlone > 0;
}

/// The reference, unless another exposure is needed more and shows each thing that moved exactly once.
Source sourceOf(const GhostGrid &grid, std::span<const int32_t> region) {
    int64_t mid = 0, dark = 0, bright = 0, clipped = 0, dim = 0, cells = 0;
    int64_t darkOnly = 0, brightOnly = 0, both = 0;
    for (const int32_t cell : region) {
        darkOnly += grid.darkMoved[cell] && !grid.brightMoved[cell];
        brightOnly += !grid.darkMoved[cell] && grid.brightMoved[cell];
        both += grid.darkMoved[cell] && grid.brightMoved[cell];
        if (grid.nearestSampled(cell) != cell)
            continue;
        cells++;
        mid += grid.midWeights[cell];
        dark += grid.darkWeights[cell];
        bright += grid.brightWeights[cell];
        clipped += grid.brightLuma[cell] > kBrightClipped;
        dim += grid.darkLuma[cell] < kDarkDim;
    }
    if (dark > mid + bright && 10 * dim < cells && showsThingsOnce(darkOnly, brightOnly, both))
        return Source::dark;
    if (bright > 2 * mid && 100 * clipped < cells && showsThingsOnce(brightOnly, darkOnly, both))
        return Source::bright;
    return Source::reference;
}

/// Lets the reduced pictures show in a cell what the dark exposure shows there, each in its own tones: the
/// first merge mixes all of them, whatever the cell's weights are.
void showDarkEverywhere(HdrContext *context, const GhostGrid &grid, int32_t cell) {
    const Preparation &preparation = context->preparation;
    const Offscreen &dark = *preparation.workImages[preparation.darkIndex];
    const Offscreen *const others[] = {preparation.registeredImages[preparation.midIndex],
                                       preparation.registeredImages[preparation.brightIndex],
                                       preparation.workImages[preparation.brightIndex]};
    const auto &midTones = context->alignment.tones[preparation.darkIndex];
    const int left = (cell % grid.width - 1) * kReducedCellSize;
    const int top = (cell / grid.width - 1) * kReducedCellSize;
    for (int y = std::max(top, 0); y < std::min(top + kReducedCellSize, dark.i32Height); y++) {
        const auto from = rowsOfPlanes(dark, y);
        for (int x = std::max(left, 0); x < std::min(left + kReducedCellSize, dark.i32Width); x++) {
            const uint8_t mid = midTones[from[0][x]];
            const uint8_t levels[] = {mid, mid, context->tables.toneMatchMidToBright[mid]};
            for (size_t i = 0; i < 3; i++) {
                const auto to = rowsOfPlanes(*others[i], y);
                to[0][x] = levels[i];
                to[1][x] = from[1][x];
                to[2][x] = from[2][x];
            }
        }
    }
}

/// Takes each region in which alignment found motion from one exposure. Whether there was one.
bool replaceMoved(HdrContext *context, const GhostGrid &grid, const KnownMotion &motion, RegionSearch &search,
                  GhostProposal &proposal) {
    ExposureWeights &masks = context->weights;
    bool anyRegion = false;
    search.start(motion.either.data);
    while (search.next()) {
        anyRegion = true;
        const Source ofRegion = sourceOf(grid, search.cells());
        for (const int32_t cell : search.cells()) {
            // Where the dark exposure agrees with the reference, it may give the highlights of the same
            // thing.
            const int32_t sampled = grid.nearestSampled(cell);
            const bool highlight = ofRegion == Source::reference && !motion.dark.data[cell] &&
                                   grid.darkWeights[sampled] > grid.midWeights[sampled];
            const Source source = highlight ? Source::dark : ofRegion;
            masks.ghostMaskB[cell] = source == Source::dark ? kMaskSet : uint8_t{0};
            masks.ghostMaskD[cell] = source == Source::bright ? kMaskSet : uint8_t{0};
            if (source == Source::bright)
                masks.ghostMaskC[cell] = 0;
            else
                masks.ghostMaskC[cell] |= motion.bright.data[cell];
            if (source == Source::dark)
                showDarkEverywhere(context, grid, cell);
            if (source == Source::reference)
                grid.darkSide[cell] |= motion.dark.data[cell];
        }
    }
    if (anyRegion && proposal.ghostMode == kGhostsNone)
        proposal.ghostMode = kGhostsReplaced;
    return anyRegion;
}

/// Decides for every cell of a region which exposure it is taken from: the reference (mask A), the dark one
/// (B) or the bright one (D), never two of them.
void assignExposures(ExposureWeights &masks, const GhostGrid &grid) {
    for (int cell = 0; cell < grid.width * grid.height; cell++) {
        const int nearest = grid.nearestSampled(cell);
        const bool brightRemoved = masks.ghostMaskC[cell] != 0;
        if (masks.ghostMaskD[cell] || masks.ghostMaskB[cell])
            continue;
        if (grid.darkSide[cell]) {
            if (!brightRemoved && !masks.ghostMaskC[nearest] && grid.brightWeights[nearest] == kWholeWeight)
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

/// Grows the masks beyond the cells whose weights they tell: later stages average them over up to nine cells
/// before they use them.
void addMargin(const ExposureWeights &masks, const GhostGrid &grid) {
    const int cells = grid.width * grid.height;
    const auto grow = [&](uint8_t *mask) {
        const Plane<uint8_t> plane(mask, grid.width, grid.height);
        dilateMask8(plane);
        dilate_mask4(plane, 1);
    };
    uint8_t *margin = grid.scratch[0], *ofDark = grid.scratch[1], *ofBright = grid.scratch[2];
    for (int cell = 0; cell < cells; cell++)
        margin[cell] = masks.ghostMaskA[cell] | masks.ghostMaskB[cell] | masks.ghostMaskD[cell];
    std::copy_n(masks.ghostMaskB, cells, ofDark);
    std::copy_n(masks.ghostMaskD, cells, ofBright);
    for (uint8_t *mask : {margin, ofDark, ofBright})
        grow(mask);
    for (int cell = 0; cell < cells; cell++) {
        if (!margin[cell] || masks.ghostMaskA[cell] || masks.ghostMaskB[cell] || masks.ghostMaskD[cell])
            continue;
        uint8_t *mask = ofDark[cell]     ? masks.ghostMaskB
                        : ofBright[cell] ? masks.ghostMaskD
                                         : masks.ghostMaskA;
        mask[cell] = kMaskSet;
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
    std::optional<KnownMotion> motion;
    if (grid.darkMoved && grid.brightMoved) {
        motion.emplace(grid);
        motion->join(grid, search); // what it takes out of the dark side is no obstacle to the bright one
        motion->complete();
    }
    checkBrightExtent(context, grid, search);
    const bool brightSideFound = analyseBrightSide(context, grid, search, proposal);
    analyseDarkSide(context, grid, search, proposal);
    const bool movedFound = motion && replaceMoved(context, grid, *motion, search, proposal);
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
