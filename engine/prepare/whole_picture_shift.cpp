// SPDX-License-Identifier: MIT
#include "engine/prepare/whole_picture_shift.h"

#include "engine/core/worker.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace hdr {

namespace {

/// Longest displacement searched along each axis, as a share of the picture's longer side and of that axis'
/// side.
constexpr double kSearchedShare = 0.2;
constexpr double kSearchedSideShare = 0.25;
/// Longer side of the pictures in which the search begins and ends; where another candidate comes near the
/// best one, as in a pattern that repeats, it goes on to a finer one.
constexpr int kFirstSide = 128;
constexpr int kLastSide = 400;
constexpr int kAmbiguousSide = 800;
constexpr double kAmbiguity = 0.6;
/// Radius of the window that local contrast is relative to.
constexpr int kContrastRadius = 4;
/// Local contrast of one standard deviation, and the deviation (in levels) below which it fades into noise.
constexpr double kContrastUnit = 32;
constexpr double kNoiseDeviation = 2;
/// Candidates that are followed to the next finer resolution, at most, the share of the best one's score that
/// they need, and the steps in which they are looked for there.
constexpr size_t kCandidates = 8;
constexpr double kFollowedShare = 0.5;
constexpr int kRefineRadius = 2;
/// Part of the correlation that a displacement of kSearchedShare of the longer side loses when candidates are
/// compared.
constexpr double kDistancePenalty = 0.6;

/// Below every correlation.
constexpr double kNoScore = -2;

struct Candidate {
    int x = 0, y = 0; ///< displacement in pixels of the level
    double score = kNoScore;
};

/// A row-major picture of local contrast, and the sums of its squares left of and above each corner of its
/// pixels.
struct ContrastPicture {
    int width = 0, height = 0;
    Buffer<int16_t> samples;
    Buffer<int64_t> squares;

    const int16_t *row(int y) const { return samples.data() + static_cast<ptrdiff_t>(y) * width; }
    int64_t *squaresAbove(int y) { return squares.data() + static_cast<ptrdiff_t>(y) * (width + 1); }
    const int64_t *squaresAbove(int y) const {
        return squares.data() + static_cast<ptrdiff_t>(y) * (width + 1);
    }
    /// Sum of the squares in the columns left to right - 1 and the rows top to bottom - 1.
    int64_t squaresWithin(int left, int right, int top, int bottom) const {
        const int64_t *upper = squaresAbove(top), *lower = squaresAbove(bottom);
        return lower[right] - lower[left] - upper[right] + upper[left];
    }
};

/// Sums over the window around each pixel of a row, while the row moves down a picture.
class SlidingWindow {
public:
    static constexpr size_t kArrays = 5;

    /// Starts above row `firstRow`. `room` holds kArrays numbers for each column of the picture.
    SlidingWindow(Plane<const uint8_t> luma, int firstRow, int32_t *room)
        : luma(luma), first(std::max(firstRow - kContrastRadius, 0)), end(first) {
        const size_t width = static_cast<size_t>(luma.width);
        std::fill_n(room, kArrays * width, 0);
        for (int32_t **array : {&sums, &squares, &pixels, &columnSums, &columnSquares}) {
            *array = room;
            room += width;
        }
    }

    int32_t *sums, *squares, *pixels; ///< of the row's windows: luminance, its square, and how many pixels

    /// Moves down to row y.
    void moveTo(int y) {
        for (; end <= std::min(y + kContrastRadius, luma.height - 1); end++)
            addRow(end, 1);
        for (; first < y - kContrastRadius; first++)
            addRow(first, -1);
        int32_t sum = 0, square = 0, count = 0;
        for (int x = -kContrastRadius; x < luma.width; x++) {
            if (const int right = x + kContrastRadius; right < luma.width) {
                sum += columnSums[right];
                square += columnSquares[right];
                count += end - first;
            }
            if (const int left = x - kContrastRadius - 1; left >= 0) {
                sum -= columnSums[left];
                square -= columnSquares[left];
                count -= end - first;
            }
            if (x >= 0) {
                sums[x] = sum;
                squares[x] = square;
                pixels[x] = count;
            }
        }
    }

private:
    void addRow(int y, int sign) {
        const uint8_t *row = luma.row(y);
        for (int x = 0; x < luma.width; x++) {
            columnSums[x] += sign * row[x];
            columnSquares[x] += sign * row[x] * row[x];
        }
    }

    Plane<const uint8_t> luma;
    int first, end; ///< the window's rows
    int32_t *columnSums, *columnSquares;
};

HdrStatus measureContrast(MemContext *memory, Plane<const uint8_t> luma, ContrastPicture &contrast) {
    const size_t width = static_cast<size_t>(luma.width), height = static_cast<size_t>(luma.height);
    contrast.width = luma.width;
    contrast.height = luma.height;
    contrast.samples = Buffer<int16_t>(memory, width * height);
    contrast.squares = Buffer<int64_t>(memory, (width + 1) * (height + 1));
    Buffer<int32_t> room(memory, 4 * SlidingWindow::kArrays * width);
    if (!contrast.samples || !contrast.squares || !room)
        return HDR_ERR_NOMEM;
    runOnFourParts(0, luma.height, [&](const RangePart &rows) {
        SlidingWindow window(luma, rows.first,
                             room.data() + static_cast<size_t>(rows.part) * SlidingWindow::kArrays * width);
        for (int y = rows.first; y < rows.end; y++) {
            window.moveTo(y);
            const uint8_t *row = luma.row(y);
            int16_t *samples = contrast.samples.data() + static_cast<size_t>(y) * width;
            for (size_t x = 0; x < width; x++) {
                const double count = window.pixels[x];
                const double mean = window.sums[x] / count;
                const double deviation = std::sqrt(std::max(window.squares[x] / count - mean * mean, 0.0));
                const double value = kContrastUnit * (row[x] - mean) / (deviation + kNoiseDeviation);
                samples[x] = static_cast<int16_t>(std::clamp(value, -127.0, 127.0));
            }
        }
    });
    std::fill_n(contrast.squaresAbove(0), width + 1, int64_t{0});
    for (int y = 0; y < luma.height; y++) {
        const int16_t *samples = contrast.row(y);
        const int64_t *above = contrast.squaresAbove(y);
        int64_t *below = contrast.squaresAbove(y + 1);
        int64_t sum = 0;
        below[0] = 0;
        for (size_t x = 0; x < width; x++) {
            sum += samples[x] * samples[x];
            below[x + 1] = above[x + 1] + sum;
        }
    }
    return HDR_OK;
}

/// Correlation of the overlapping parts when the other picture is sampled at p - (dx, dy).
double correlate(const ContrastPicture &reference, const ContrastPicture &other, int dx, int dy) {
    const int left = std::max(dx, 0), right = std::min(reference.width, other.width + dx);
    const int top = std::max(dy, 0), bottom = std::min(reference.height, other.height + dy);
    int64_t product = 0;
    for (int y = top; y < bottom; y++) {
        const int16_t *a = reference.row(y) + left;
        const int16_t *b = other.row(y - dy) + (left - dx);
        int32_t rowProduct = 0;
        for (int x = 0; x < right - left; x++)
            rowProduct += a[x] * b[x];
        product += rowProduct;
    }
    const int64_t ownSquare = reference.squaresWithin(left, right, top, bottom);
    const int64_t otherSquare = other.squaresWithin(left - dx, right - dx, top - dy, bottom - dy);
    if (ownSquare == 0 || otherSquare == 0)
        return 0;
    return static_cast<double>(product) /
           std::sqrt(static_cast<double>(ownSquare) * static_cast<double>(otherSquare));
}

/// The best few displacements seen so far, best first.
class Shortlist {
public:
    void add(const Candidate &candidate) {
        for (const Candidate &known : candidates)
            if (known.score > kNoScore && known.x == candidate.x && known.y == candidate.y)
                return;
        if (candidate.score <= candidates.back().score)
            return;
        candidates.back() = candidate;
        for (size_t i = kCandidates - 1; i > 0 && candidates[i].score > candidates[i - 1].score; i--)
            std::swap(candidates[i], candidates[i - 1]);
    }
    const std::array<Candidate, kCandidates> &all() const { return candidates; }
    bool isAmbiguous() const { return candidates[1].score > kAmbiguity * candidates[0].score; }

private:
    std::array<Candidate, kCandidates> candidates;
};

/// Both pictures at one level of resolution.
class ShiftSearch {
public:
    HdrStatus prepare(MemContext *memory, const LumaPyramid &reference, const LumaPyramid &other, int level) {
        if (measureContrast(memory, reference.level(level), own) != HDR_OK ||
            measureContrast(memory, other.level(level), others) != HDR_OK)
            return HDR_ERR_NOMEM;
        longest = kSearchedShare * std::max(own.width, own.height);
        return HDR_OK;
    }

    double correlation(int x, int y) const { return correlate(own, others, x, y); }

    /// The peaks of the score among all displacements searched.
    HdrStatus searchAll(MemContext *memory, Shortlist &found) const {
        const int reachX = static_cast<int>(std::min(longest, kSearchedSideShare * own.width));
        const int reachY = static_cast<int>(std::min(longest, kSearchedSideShare * own.height));
        const size_t columns = static_cast<size_t>(2 * reachX + 1);
        Buffer<double> scores(memory, columns * static_cast<size_t>(2 * reachY + 1));
        if (!scores)
            return HDR_ERR_NOMEM;
        const auto at = [&](int x, int y) -> double & {
            return scores[static_cast<size_t>(y + reachY) * columns + static_cast<size_t>(x + reachX)];
        };
        runOnFourParts(-reachY, reachY + 1, [&](const RangePart &rows) {
            for (int y = rows.first; y < rows.end; y++)
                for (int x = -reachX; x <= reachX; x++)
                    at(x, y) = score(x, y);
        });
        for (int y = -reachY; y <= reachY; y++) {
            for (int x = -reachX; x <= reachX; x++) {
                bool peak = true;
                for (int ny = std::max(y - 1, -reachY); ny <= std::min(y + 1, reachY); ny++)
                    for (int nx = std::max(x - 1, -reachX); nx <= std::min(x + 1, reachX); nx++)
                        peak &= at(nx, ny) <= at(x, y);
                if (peak)
                    found.add({x, y, at(x, y)});
            }
        }
        return HDR_OK;
    }

    /// The best displacements near those found at half the resolution, and near none.
    Shortlist refineAll(const Shortlist &found) const {
        // A fine pattern that repeats can hide a small motion at the coarser resolutions.
        std::array<Candidate, kCandidates + 1> starts = {Candidate{0, 0, 0}}, refined;
        std::copy(found.all().begin(), found.all().end(), starts.begin() + 1);
        const double best = found.all().front().score;
        runOnFourParts(0, static_cast<int>(starts.size()), [&](const RangePart &part) {
            for (size_t i = static_cast<size_t>(part.first); i < static_cast<size_t>(part.end); i++)
                if (i == 0 || starts[i].score >= std::min(kFollowedShare * best, best))
                    refined[i] = refine(starts[i]);
        });
        Shortlist merged;
        for (const Candidate &candidate : refined)
            merged.add(candidate);
        return merged;
    }

private:
    /// The best displacement near one found at half the resolution.
    Candidate refine(const Candidate &coarse) const {
        Candidate best;
        for (int y = 2 * coarse.y - kRefineRadius; y <= 2 * coarse.y + kRefineRadius; y++)
            for (int x = 2 * coarse.x - kRefineRadius; x <= 2 * coarse.x + kRefineRadius; x++)
                if (const double value = score(x, y); value > best.score)
                    best = {x, y, value};
        return best;
    }

    double score(int x, int y) const {
        const double length = std::sqrt(static_cast<double>(x * x + y * y));
        return correlation(x, y) * (1 - kDistancePenalty * length / longest);
    }

    ContrastPicture own, others;
    double longest = 0;
};

} // namespace

HdrStatus findWholePictureShift(MemContext *memory, const LumaPyramid &reference, const LumaPyramid &other,
                                WholePictureShift &shift) {
    const int last = reference.levelOfSide(kLastSide);
    const int first = std::max(reference.levelOfSide(kFirstSide), last);
    const int finest = reference.levelOfSide(kAmbiguousSide);
    Shortlist found;
    for (int level = first; level >= last || (level >= finest && found.isAmbiguous()); level--) {
        ShiftSearch search;
        if (search.prepare(memory, reference, other, level) != HDR_OK)
            return HDR_ERR_NOMEM;
        if (level != first)
            found = search.refineAll(found);
        else if (search.searchAll(memory, found) != HDR_OK)
            return HDR_ERR_NOMEM;
        const Candidate &best = found.all().front();
        const double size = 1 << level;
        shift.displacement = {best.x * size, best.y * size};
        shift.correlation = search.correlation(best.x, best.y);
    }
    return HDR_OK;
}

} // namespace hdr
