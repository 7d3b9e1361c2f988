// SPDX-License-Identifier: MIT
#include "engine/prepare/whole_picture_shift.h"

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
/// Candidates that are followed to the next finer resolution, and the steps in which they are looked for
/// there.
constexpr size_t kCandidates = 8;
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

/// A row-major picture of local contrast.
struct ContrastPicture {
    int width = 0, height = 0;
    Buffer<int16_t> samples;

    const int16_t *row(int y) const { return samples.data() + static_cast<ptrdiff_t>(y) * width; }
};

HdrStatus measureContrast(MemContext *memory, Plane<const uint8_t> luma, ContrastPicture &contrast) {
    const int width = luma.width, height = luma.height;
    const size_t stride = static_cast<size_t>(width) + 1;
    contrast.width = width;
    contrast.height = height;
    contrast.samples = Buffer<int16_t>(memory, static_cast<size_t>(width) * static_cast<size_t>(height));
    // Sums over the rectangle left of and above each corner, modulo 2^32: only differences of them count.
    auto sums = Buffer<uint32_t>::zeroed(memory, stride * (static_cast<size_t>(height) + 1));
    auto squares = Buffer<uint32_t>::zeroed(memory, stride * (static_cast<size_t>(height) + 1));
    if (!contrast.samples || !sums || !squares)
        return HDR_ERR_NOMEM;
    for (int y = 0; y < height; y++) {
        const uint8_t *row = luma.row(y);
        const size_t above = static_cast<size_t>(y) * stride;
        uint32_t sum = 0, square = 0;
        for (size_t x = 0; x < static_cast<size_t>(width); x++) {
            sum += row[x];
            square += static_cast<uint32_t>(row[x]) * row[x];
            sums[above + stride + x + 1] = sums[above + x + 1] + sum;
            squares[above + stride + x + 1] = squares[above + x + 1] + square;
        }
    }
    for (int y = 0; y < height; y++) {
        const int top = std::max(y - kContrastRadius, 0);
        const int bottom = std::min(y + kContrastRadius + 1, height);
        for (int x = 0; x < width; x++) {
            const int left = std::max(x - kContrastRadius, 0);
            const int right = std::min(x + kContrastRadius + 1, width);
            const auto boxSum = [&](const Buffer<uint32_t> &table) {
                const auto at = [&](int column, int line) {
                    return table[static_cast<size_t>(line) * stride + static_cast<size_t>(column)];
                };
                return static_cast<double>(at(right, bottom) - at(left, bottom) - at(right, top) +
                                           at(left, top));
            };
            const double count = (right - left) * (bottom - top);
            const double mean = boxSum(sums) / count;
            const double deviation = std::sqrt(std::max(boxSum(squares) / count - mean * mean, 0.0));
            const double value = kContrastUnit * (luma(x, y) - mean) / (deviation + kNoiseDeviation);
            contrast.samples[static_cast<size_t>(y) * static_cast<size_t>(width) + static_cast<size_t>(x)] =
                static_cast<int16_t>(std::clamp(value, -127.0, 127.0));
        }
    }
    return HDR_OK;
}

/// Correlation of the overlapping parts when the other picture is sampled at p - (dx, dy).
double correlate(const ContrastPicture &reference, const ContrastPicture &other, int dx, int dy) {
    const int left = std::max(dx, 0), right = std::min(reference.width, other.width + dx);
    const int top = std::max(dy, 0), bottom = std::min(reference.height, other.height + dy);
    int64_t product = 0, ownSquare = 0, otherSquare = 0;
    for (int y = top; y < bottom; y++) {
        const int16_t *a = reference.row(y) + left;
        const int16_t *b = other.row(y - dy) + (left - dx);
        int32_t rowProduct = 0, rowOwn = 0, rowOther = 0;
        for (int x = 0; x < right - left; x++) {
            rowProduct += a[x] * b[x];
            rowOwn += a[x] * a[x];
            rowOther += b[x] * b[x];
        }
        product += rowProduct;
        ownSquare += rowOwn;
        otherSquare += rowOther;
    }
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
        for (int y = -reachY; y <= reachY; y++)
            for (int x = -reachX; x <= reachX; x++)
                at(x, y) = score(x, y);
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

    /// The best displacement near one found at half the resolution.
    Candidate refine(const Candidate &coarse) const {
        Candidate best;
        for (int y = 2 * coarse.y - kRefineRadius; y <= 2 * coarse.y + kRefineRadius; y++)
            for (int x = 2 * coarse.x - kRefineRadius; x <= 2 * coarse.x + kRefineRadius; x++)
                if (const double value = score(x, y); value > best.score)
                    best = {x, y, value};
        return best;
    }

private:
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
        Shortlist refined;
        if (level == first) {
            if (search.searchAll(memory, refined) != HDR_OK)
                return HDR_ERR_NOMEM;
        } else {
            // A fine pattern that repeats can hide a small motion at the coarser resolutions.
            refined.add(search.refine({}));
            for (const Candidate &coarse : found.all())
                if (coarse.score > kNoScore)
                    refined.add(search.refine(coarse));
        }
        found = refined;
        const Candidate &best = found.all().front();
        const double size = 1 << level;
        shift.displacement = {best.x * size, best.y * size};
        shift.correlation = search.correlation(best.x, best.y);
    }
    return HDR_OK;
}

} // namespace hdr
