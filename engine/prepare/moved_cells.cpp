// SPDX-License-Identifier: MIT
#include "engine/prepare/moved_cells.h"

#include "engine/core/region_search.h"
#include "engine/core/worker.h"
#include "engine/prepare/preparation.h"

#include <algorithm>
#include <array>
#include <cstdlib>

namespace hdr {

namespace {

/// Standard deviations of noise that an exposure's own level may be off, in levels.
constexpr int kNoiseLevels = 2;
/// Pixels that must be beyond all doubt for a change to count.
constexpr size_t kLeastPatch = 8;
/// Pixels around those that weaker differences reach.
constexpr int kReach = 3;
/// Pixels that make a cell a changed one.
constexpr int kLeastInCell = 2;

/// Marks a pixel that becomes set at the end of a round.
constexpr uint8_t kGrowing = 1;

/// Levels in and around a pixel.
struct Range {
    int low = 255, high = 0;
};

Range rangeAround(Plane<const uint8_t> picture, int x, int y) {
    Range range;
    for (int v = std::max(y - 1, 0); v <= std::min(y + 1, picture.height - 1); v++)
        for (int u = std::max(x - 1, 0); u <= std::min(x + 1, picture.width - 1); u++) {
            range.low = std::min<int>(range.low, picture(u, v));
            range.high = std::max<int>(range.high, picture(u, v));
        }
    return range;
}

int contrastAround(Plane<const uint8_t> picture, int x, int y) {
    const Range range = rangeAround(picture, x, y);
    return range.high - range.low;
}

/// Two exposures side by side.
class Comparison {
public:
    Comparison(Plane<const uint8_t> reference, Plane<const uint8_t> registered, Plane<const uint8_t> own,
               const uint8_t *tones, int level)
        : reference(reference), registered(registered), own(own), level(level) {
        for (int i = 0; i < 256; i++)
            noise[static_cast<size_t>(i)] =
                tones[std::min(i + kNoiseLevels, 255)] - tones[std::max(i - kNoiseLevels, 0)];
    }

    /// Whether the pixel may belong to a change.
    bool differs(int x, int y) const { return 2 * difference(x, y) > threshold(x, y); }
    /// Whether it shows a change beyond doubt: more than noise, and than an alignment that is off by part of
    /// a pixel, can make of what both exposures show around it.
    bool surelyDiffers(int x, int y) const {
        const int excess = 10 * difference(x, y) - 8 * threshold(x, y);
        return excess > 0 &&
               excess > 5 * std::min(contrastAround(reference, x, y), contrastAround(registered, x, y));
    }

private:
    int difference(int x, int y) const { return std::abs(registered(x, y) - reference(x, y)); }
    int threshold(int x, int y) const {
        return std::max(reference(x, y) / 16 + 16 - level, noise[own(x, y)]);
    }

    Plane<const uint8_t> reference, registered, own;
    int level;
    std::array<int, 256> noise; ///< by own level: what noise does to the matched one
};

/// Sets the pixels of the patches of sure changes that are large enough.
HdrStatus markSureChanges(MemContext *memory, const Comparison &comparison, const Rect &valid,
                          Plane<uint8_t> changed) {
    RegionSearch patches(memory, changed.width, changed.height);
    if (!patches)
        return HDR_ERR_NOMEM;
    // The outermost pixels of a photograph are often not what the lens saw.
    const Rect judged = {std::max(valid.x0, 1), std::max(valid.y0, 1), std::min(valid.x1, changed.width - 1),
                         std::min(valid.y1, changed.height - 1)};
    runOnFourParts(judged.y0, judged.y1, [&](const RangePart &rows) {
        for (int y = rows.first; y < rows.end; y++)
            for (int x = judged.x0; x < judged.x1; x++)
                if (comparison.surelyDiffers(x, y))
                    changed(x, y) = kMaskSet;
    });
    patches.start(changed.data);
    while (patches.next())
        if (patches.cells().size() < kLeastPatch)
            for (const int32_t pixel : patches.cells())
                changed.data[pixel] = 0;
    return HDR_OK;
}

/// The rows that changes reach when they are extended.
struct Rows {
    int first, end;
};

Rows rowsInReach(Plane<const uint8_t> changed, const Rect &valid) {
    Rows rows = {valid.y1, valid.y0};
    for (int y = valid.y0; y < valid.y1; y++)
        if (std::find(changed.row(y), changed.row(y) + changed.width, kMaskSet) !=
            changed.row(y) + changed.width) {
            rows.first = std::min(rows.first, y);
            rows.end = y + 1;
        }
    return {std::max(rows.first - kReach, valid.y0), std::min(rows.end + kReach, valid.y1)};
}

/// Extends the changes over what differs beside them.
void growChanges(const Comparison &comparison, const Rect &valid, Plane<uint8_t> changed) {
    const Rows reach = rowsInReach(changed, valid);
    for (int round = 0; round < kReach; round++) {
        for (int y = reach.first; y < reach.end; y++)
            for (int x = valid.x0; x < valid.x1; x++)
                if (!changed(x, y) && comparison.differs(x, y) && rangeAround(changed, x, y).high == kMaskSet)
                    changed(x, y) = kGrowing;
        for (int y = reach.first; y < reach.end; y++)
            std::replace(changed.row(y) + valid.x0, changed.row(y) + valid.x1, kGrowing, kMaskSet);
    }
}

} // namespace

HdrStatus findMovedCells(MemContext *memory, Plane<const uint8_t> reference, Plane<const uint8_t> registered,
                         Plane<const uint8_t> own, const uint8_t *tones, const Rect &valid, int level,
                         Plane<uint8_t> moved) {
    const size_t pixels = static_cast<size_t>(reference.width) * static_cast<size_t>(reference.height);
    auto pixelMask = Buffer<uint8_t>::zeroed(memory, pixels);
    if (!pixelMask)
        return HDR_ERR_NOMEM;
    const Plane<uint8_t> changed(pixelMask.data(), reference.width, reference.height);
    const Comparison comparison(reference, registered, own, tones, level);
    const HdrStatus status = markSureChanges(memory, comparison, valid, changed);
    if (status != HDR_OK)
        return status;
    growChanges(comparison, valid, changed);

    const auto inCell = [&](int column, int row) {
        int count = 0;
        for (int y = row * kReducedCellSize; y < std::min((row + 1) * kReducedCellSize, changed.height); y++)
            for (int x = column * kReducedCellSize;
                 x < std::min((column + 1) * kReducedCellSize, changed.width); x++)
                count += changed(x, y) != 0;
        return count;
    };
    for (int y = 0; y < moved.height; y++)
        for (int x = 0; x < moved.width; x++) {
            const bool inFrame = x == 0 || y == 0 || x == moved.width - 1 || y == moved.height - 1;
            moved(x, y) = !inFrame && inCell(x - 1, y - 1) >= kLeastInCell ? kMaskSet : uint8_t{0};
        }
    return HDR_OK;
}

} // namespace hdr
