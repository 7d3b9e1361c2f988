// SPDX-License-Identifier: MIT
#include "engine/prepare/features.h"

#include "engine/core/worker.h"
#include "engine/prepare/preparation.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <optional>

namespace hdr {

namespace {

/// Smaller eigenvalue of the mean structure tensor from which a point counts as a corner, in squared levels.
constexpr double kCornerStrength = 1;
/// Radius of the window that the structure tensor is averaged over.
constexpr int kTensorRadius = 1;

/// Cells that features can be spread over.
constexpr size_t kMostCells = 64;

/// Patches are 11 x 11 samples, kept in rows of 16 whose last 5 weigh nothing.
constexpr int kPatchRadius = 5;
constexpr int kPatchSide = 2 * kPatchRadius + 1;
constexpr int kPatchStride = 16;
constexpr int kPatchSamples = kPatchSide * kPatchSide;
constexpr int kLargestRadius = 12;
constexpr int kLargestArea = kPatchSide + 2 * kLargestRadius;
constexpr int kMostPlaces = 2 * kLargestRadius + 1;

constexpr double kLeastDeviation = 2.5;    ///< of a patch that can be recognised, in levels
constexpr double kLeastCorrelation = 0.65; ///< of a match
constexpr double kAmbiguity = 0.8;         ///< largest ratio of the best and the second best match's mismatch
constexpr int kPeakRadius = 2;             ///< candidates this near belong to the best one
constexpr double kLargestReturnError = 1.5; ///< between a feature and where its match leads back to
constexpr double kMatchDeviation = 0.3;     ///< standard error of a match, in pixels of its level

struct Corner {
    int x, y;
    float strength;
};

/// Sum of the outer products of gradients, four times their squares, and the number of pixels.
struct Tensor {
    int32_t xx = 0, xy = 0, yy = 0, pixels = 0;

    void add(const Tensor &other, int sign) {
        xx += sign * other.xx;
        xy += sign * other.xy;
        yy += sign * other.yy;
        pixels += sign * other.pixels;
    }
    /// Of the mean tensor.
    double smallerEigenvalue() const {
        if (pixels == 0)
            return 0;
        const double half = (xx - yy) / 2.0;
        const double root = std::sqrt(half * half + static_cast<double>(xy) * xy);
        return ((xx + yy) / 2.0 - root) / (4.0 * pixels);
    }
};

/// The tensor of one pixel inside the frame.
Tensor tensorAt(Plane<const uint8_t> luma, int x, int y) {
    const int gradientX = luma(x + 1, y) - luma(x - 1, y);
    const int gradientY = luma(x, y + 1) - luma(x, y - 1);
    return {gradientX * gradientX, gradientX * gradientY, gradientY * gradientY, 1};
}

/// How distinct each pixel of a picture is.
class CornerMap {
public:
    CornerMap(MemContext *memory, Plane<const uint8_t> luma)
        : luma(luma), strengths(Buffer<float>::zeroed(memory, size())) {}
    bool ok() const { return static_cast<bool>(strengths); }
    size_t size() const { return static_cast<size_t>(luma.width) * static_cast<size_t>(luma.height); }

    /// False when there is no memory.
    bool measure(MemContext *memory) {
        const size_t width = static_cast<size_t>(luma.width);
        auto columnSums = Buffer<Tensor>::zeroed(memory, 4 * width);
        if (!columnSums)
            return false;
        runOnFourParts(0, luma.height, [&](const RangePart &rows) {
            measureRows(rows.first, rows.end, columnSums.data() + static_cast<size_t>(rows.part) * width);
        });
        return true;
    }

    /// Writes the corners inside the frame, or only those that none of their neighbours exceeds, the
    /// strongest first.
    size_t collect(bool peaksOnly, Corner *corners) const {
        size_t found = 0;
        for (int y = 1; y < luma.height - 1; y++) {
            for (int x = 1; x < luma.width - 1; x++) {
                const float strength = strengths[index(x, y)];
                if (strength >= kCornerStrength && (!peaksOnly || isPeak(x, y)))
                    corners[found++] = {x, y, strength};
            }
        }
        std::sort(corners, corners + found, [](const Corner &a, const Corner &b) {
            return a.strength != b.strength ? a.strength > b.strength : a.y != b.y ? a.y < b.y : a.x < b.x;
        });
        return found;
    }

private:
    /// Sums over the window's rows slide down in `columnSums` (zero at first), sums over its columns slide
    /// right.
    void measureRows(int firstRow, int endRow, Tensor *columnSums) {
        // There is no gradient on the frame.
        const auto addRow = [&](int y, int sign) {
            if (y < 1 || y >= luma.height - 1)
                return;
            for (int x = 1; x < luma.width - 1; x++)
                columnSums[x].add(tensorAt(luma, x, y), sign);
        };
        for (int y = firstRow - kTensorRadius; y < firstRow + kTensorRadius; y++)
            addRow(y, 1);
        for (int y = firstRow; y < endRow; y++) {
            addRow(y + kTensorRadius, 1);
            if (y > firstRow)
                addRow(y - kTensorRadius - 1, -1);
            Tensor window;
            for (int x = -kTensorRadius; x < luma.width; x++) {
                if (x + kTensorRadius < luma.width)
                    window.add(columnSums[x + kTensorRadius], 1);
                if (x - kTensorRadius - 1 >= 0)
                    window.add(columnSums[x - kTensorRadius - 1], -1);
                if (x >= 0)
                    strengths[index(x, y)] = static_cast<float>(window.smallerEigenvalue());
            }
        }
    }

    size_t index(int x, int y) const {
        return static_cast<size_t>(y) * static_cast<size_t>(luma.width) + static_cast<size_t>(x);
    }
    bool isPeak(int x, int y) const {
        for (int v = y - 1; v <= y + 1; v++)
            for (int u = x - 1; u <= x + 1; u++)
                if (strengths[index(u, v)] > strengths[index(x, y)])
                    return false;
        return true;
    }

    Plane<const uint8_t> luma;
    Buffer<float> strengths;
};

/// A square of luminance, in rows that are long enough for a patch's stride at every place, and the sums that
/// a patch at each place needs.
struct SearchArea {
    int places = 0; ///< of a patch, along a side
    int stride = 0;
    std::array<int16_t, kLargestArea *(kLargestArea + kPatchStride - kPatchSide)> samples;
    std::array<int32_t, kMostPlaces * kMostPlaces> sum, squares;

    /// Loads the surroundings of a point that a patch searched up to `radius` around it can touch.
    void load(const LumaPyramid &picture, int level, int x, int y, int radius) {
        const int reach = kPatchRadius + radius;
        const int side = kPatchSide + 2 * radius;
        places = 2 * radius + 1;
        stride = side + kPatchStride - kPatchSide;
        std::array<uint8_t, kLargestArea * kLargestArea> luma;
        picture.read(level, x - reach, y - reach, side, side, luma.data());
        samples.fill(0);
        for (int row = 0; row < side; row++)
            std::copy_n(luma.data() + row * side, side, samples.data() + row * stride);
        for (int column = 0; column < places; column++) {
            std::array<int32_t, kLargestArea> rowSum, rowSquares;
            for (int row = 0; row < side; row++) {
                const int16_t *from = at(column, row);
                rowSum[static_cast<size_t>(row)] = std::accumulate(from, from + kPatchSide, 0);
                rowSquares[static_cast<size_t>(row)] = std::inner_product(from, from + kPatchSide, from, 0);
            }
            for (int row = 0; row < places; row++) {
                const size_t place = static_cast<size_t>(row * places + column);
                const int32_t *sums = rowSum.data() + row, *squareSums = rowSquares.data() + row;
                sum[place] = std::accumulate(sums, sums + kPatchSide, 0);
                squares[place] = std::accumulate(squareSums, squareSums + kPatchSide, 0);
            }
        }
    }
    const int16_t *at(int x, int y) const { return samples.data() + y * stride + x; }
};

/// A patch with its mean removed.
struct Patch {
    std::array<int16_t, kPatchSide * kPatchStride> samples{};
    int32_t sum = 0; ///< what rounding of the mean leaves
    double norm = 0; ///< root of the sum of squared differences from the exact mean

    /// False when the patch is too flat or too much of it clipped or crushed.
    bool load(const LumaPyramid &picture, int level, int x, int y) {
        std::array<uint8_t, kPatchSamples> luma;
        if (x < kPatchRadius || y < kPatchRadius || x >= picture.width(level) - kPatchRadius ||
            y >= picture.height(level) - kPatchRadius)
            return false;
        picture.read(level, x - kPatchRadius, y - kPatchRadius, kPatchSide, kPatchSide, luma.data());
        if (2 * std::count_if(luma.begin(), luma.end(), isMeasured) < kPatchSamples)
            return false;
        int32_t total = 0;
        for (uint8_t level8 : luma)
            total += level8;
        const int mean = (total + kPatchSamples / 2) / kPatchSamples;
        int32_t squares = 0;
        for (int row = 0; row < kPatchSide; row++) {
            for (int column = 0; column < kPatchSide; column++) {
                const int value = luma[static_cast<size_t>(row * kPatchSide + column)] - mean;
                samples[static_cast<size_t>(row * kPatchStride + column)] = static_cast<int16_t>(value);
                squares += value * value;
            }
        }
        sum = total - mean * kPatchSamples;
        const double variance = squares - static_cast<double>(sum) * sum / kPatchSamples;
        norm = std::sqrt(std::max(variance, 0.0));
        return variance >= kPatchSamples * kLeastDeviation * kLeastDeviation;
    }
};

/// Correlation of a patch with the part of an area whose top left sample is (x, y).
double correlate(const Patch &patch, const SearchArea &area, int x, int y) {
    int32_t product = 0;
    for (int row = 0; row < kPatchSide; row++) {
        const int16_t *own = patch.samples.data() + row * kPatchStride;
        const int16_t *other = area.at(x, y + row);
        for (int i = 0; i < kPatchStride; i++)
            product += own[i] * other[i];
    }
    const size_t place = static_cast<size_t>(y * area.places + x);
    const double mean = static_cast<double>(area.sum[place]) / kPatchSamples;
    const double variance = area.squares[place] - mean * area.sum[place];
    if (variance < kPatchSamples)
        return 0;
    return (product - mean * patch.sum) / (patch.norm * std::sqrt(variance));
}

struct Peak {
    double x, y; ///< relative to the centre of the area, refined below a pixel
    double correlation;
};

/// The vertex of the parabola through three equidistant values of which the middle one is the largest.
double vertex(double before, double at, double after) {
    const double curvature = before - 2 * at + after;
    return curvature < 0 ? std::clamp(0.5 * (before - after) / curvature, -0.5, 0.5) : 0;
}

/// The clearly best place of a patch in an area of the given search radius.
std::optional<Peak> findPeak(const Patch &patch, const SearchArea &area, int radius) {
    const int side = 2 * radius + 1;
    std::array<double, kMostPlaces * kMostPlaces> scores;
    const auto at = [&](int x, int y) -> double & { return scores[static_cast<size_t>(y * side + x)]; };
    int bestX = 0, bestY = 0;
    for (int y = 0; y < side; y++) {
        for (int x = 0; x < side; x++) {
            at(x, y) = correlate(patch, area, x, y);
            if (at(x, y) > at(bestX, bestY)) {
                bestX = x;
                bestY = y;
            }
        }
    }
    const double best = at(bestX, bestY);
    if (best < kLeastCorrelation || bestX == 0 || bestY == 0 || bestX == side - 1 || bestY == side - 1)
        return std::nullopt;
    double second = -1;
    for (int y = 0; y < side; y++)
        for (int x = 0; x < side; x++)
            if (std::abs(x - bestX) > kPeakRadius || std::abs(y - bestY) > kPeakRadius)
                second = std::max(second, at(x, y));
    if (1 - best > kAmbiguity * (1 - second))
        return std::nullopt;
    return Peak{bestX - radius + vertex(at(bestX - 1, bestY), best, at(bestX + 1, bestY)),
                bestY - radius + vertex(at(bestX, bestY - 1), best, at(bestX, bestY + 1)), best};
}

int nearest(double value) {
    return static_cast<int>(std::floor(value + 0.5));
}

/// Looks for what the reference shows at a full-resolution position.
std::optional<Observation> matchFeature(const LumaPyramid &reference, const LumaPyramid &other, Vector full,
                                        const Motion &expected, int level, int radius) {
    const double size = 1 << level;
    const double offset = (size - 1) / 2;
    const auto toLevel = [&](double at) { return (at - offset) / size; };
    const int x = nearest(toLevel(full.x)), y = nearest(toLevel(full.y));
    const Vector position = {x * size + offset, y * size + offset};
    const Vector target = position - expected.displacement(position);
    const int targetX = nearest(toLevel(target.x)), targetY = nearest(toLevel(target.y));
    Patch patch;
    SearchArea area;
    if (!patch.load(reference, level, x, y))
        return std::nullopt;
    area.load(other, level, targetX, targetY, radius);
    const auto there = findPeak(patch, area, radius);
    if (!there)
        return std::nullopt;
    const int foundX = targetX + nearest(there->x), foundY = targetY + nearest(there->y);
    if (!patch.load(other, level, foundX, foundY))
        return std::nullopt;
    area.load(reference, level, x, y, radius);
    const auto back = findPeak(patch, area, radius);
    if (!back || std::abs(back->x) > kLargestReturnError || std::abs(back->y) > kLargestReturnError)
        return std::nullopt;
    const double certainty = 1 / (kMatchDeviation * size * kMatchDeviation * size);
    const Vector displacement = {(x - targetX - there->x) * size, (y - targetY - there->y) * size};
    return Observation{position, displacement, {certainty, 0, certainty}};
}

} // namespace

HdrStatus findCorners(MemContext *memory, Plane<const uint8_t> luma, int columns, int rows, int distance,
                      int capacity, Vector *features, int &count) {
    count = 0;
    CornerMap map(memory, luma);
    Buffer<Corner> corners(memory, map.size());
    if (!map.ok() || !corners || !map.measure(memory))
        return HDR_ERR_NOMEM;

    std::array<int, kMostCells> taken{};
    assert(columns * rows <= static_cast<int>(taken.size()));
    const int share = capacity / (columns * rows);
    const auto take = [&](const Corner &corner, bool limited) {
        int &cell = taken[static_cast<size_t>(corner.y * rows / luma.height * columns +
                                              corner.x * columns / luma.width)];
        if (count == capacity || (limited && cell == share))
            return;
        const Vector place = {static_cast<double>(corner.x), static_cast<double>(corner.y)};
        for (int i = 0; i < count; i++)
            if ((features[i] - place).squaredLength() < distance * distance)
                return;
        features[count++] = place;
        cell++;
    };
    size_t found = map.collect(true, corners.data());
    for (bool limited : {true, false})
        for (size_t i = 0; i < found; i++)
            take(corners[i], limited);
    if (count < capacity) {
        found = map.collect(false, corners.data());
        for (size_t i = 0; i < found; i++)
            take(corners[i], false);
    }
    return HDR_OK;
}

int matchFeatures(const FeatureGrid &grid, const LumaPyramid &other, const Motion &expected, int level,
                  int radius, std::array<FeatureMatch, kFeatureCapacity> &matches) {
    assert(radius <= kLargestRadius);
    std::array<std::optional<Observation>, kFeatureCapacity> found;
    runOnFourParts(0, grid.count, [&](const RangePart &part) {
        for (size_t i = static_cast<size_t>(part.first); i < static_cast<size_t>(part.end); i++)
            found[i] =
                matchFeature(grid.reference, other, fullPosition(grid.features[i]), expected, level, radius);
    });
    int count = 0;
    for (int i = 0; i < grid.count; i++)
        if (const auto &observation = found[static_cast<size_t>(i)])
            matches[static_cast<size_t>(count++)] = {i, *observation};
    return count;
}

Vector fullPosition(Vector reducedPixel) {
    return {kReduction * reducedPixel.x + kReducedCentre, kReduction * reducedPixel.y + kReducedCentre};
}

} // namespace hdr
