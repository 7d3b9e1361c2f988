// SPDX-License-Identifier: MIT
#include "engine/prepare/block_refinement.h"

#include "engine/core/worker.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>

namespace hdr {

namespace {

/// Blocks aimed at, whatever the size of the picture, and the least distance between two of them in pixels.
constexpr double kBlocksWanted = 400;
constexpr double kLeastSpacing = 16;

/// Samples along a block's side, and how far from where it is expected it may be found.
constexpr int kBlockSide = 32;
constexpr int kBlockReach = 3;
constexpr int kSamples = kBlockSide * kBlockSide;
/// Samples that are resampled with one displacement.
constexpr int kGroup = 8;
/// Products of two luminances, in sixteenths of a level, whose sum fits 32 bits: 128 x (16 x 255)^2.
constexpr size_t kSummed = 128;
/// Room around a block for its reach, for a turned or stretched block, and for interpolation.
constexpr int kMargin = kBlockReach + 5;
constexpr int kAreaSide = kBlockSide + 2 * kMargin;
/// Resampling positions and samples count in sixteenths.
constexpr int kSteps = 16;

constexpr int kIterations = 8;
constexpr double kConverged = 0.03;
constexpr double kLongestStep = 1;
/// Part of the block that must be measured in both exposures.
constexpr double kLeastShared = 0.4;
constexpr double kLeastCorrelation = 0.5;
/// Root mean square gradient, in levels a sample, that a direction needs for a step along it.
constexpr double kWeakGradient = 0.5;
/// Neighbouring samples are not independent: this many count as one.
constexpr double kSamplesPerMeasurement = 6;
/// Standard error, in pixels, that no block is trusted to fall below: lenses and hands move the picture a
/// little otherwise than any global motion does.
constexpr double kSystematicError = 0.25;

/// -1 where a sample is measured, else 0.
template <size_t Count>
void markMeasured(const std::array<uint8_t, Count> &samples, std::array<int16_t, Count> &marks) {
    for (size_t i = 0; i < Count; i++)
        marks[i] = isMeasured(samples[i]) ? -1 : 0;
}

/// What the reference shows in a block: luminance in sixteenths of a level, its gradient, and -1 where it is
/// measured (else 0).
struct Template {
    std::array<int16_t, kSamples> luma, gradientX, gradientY, measured;

    void load(const LumaPyramid &picture, int level, int x, int y) {
        constexpr int side = kBlockSide + 2;
        std::array<uint8_t, side * side> samples;
        std::array<int16_t, side * side> known;
        picture.read(level, x - 1, y - 1, side, side, samples.data());
        markMeasured(samples, known);
        for (int row = 0; row < kBlockSide; row++) {
            const uint8_t *above = samples.data() + row * side + 1, *here = above + side,
                          *below = here + side;
            const int16_t *knownAbove = known.data() + row * side + 1, *knownHere = knownAbove + side,
                          *knownBelow = knownHere + side;
            for (int column = 0; column < kBlockSide; column++) {
                const size_t to = static_cast<size_t>(row * kBlockSide + column);
                luma[to] = static_cast<int16_t>(kSteps * here[column]);
                gradientX[to] = static_cast<int16_t>(kSteps / 2 * (here[column + 1] - here[column - 1]));
                gradientY[to] = static_cast<int16_t>(kSteps / 2 * (below[column] - above[column]));
                measured[to] = knownHere[column] & knownHere[column - 1] & knownHere[column + 1] &
                               knownAbove[column] & knownBelow[column];
            }
        }
    }
};

/// The surroundings of the place where a block is expected in the other exposure.
struct Surroundings {
    std::array<uint8_t, kAreaSide * kAreaSide> samples;
    std::array<int16_t, kAreaSide * kAreaSide>
        interpolable; ///< -1 where a sample and its three followers are measured, else 0

    void load(const LumaPyramid &picture, int level, int x, int y) {
        picture.read(level, x, y, kAreaSide, kAreaSide, samples.data());
        std::array<int16_t, kAreaSide * kAreaSide> known;
        markMeasured(samples, known);
        interpolable.fill(0);
        constexpr size_t below = kAreaSide;
        for (size_t i = 0; i + below + 1 < known.size(); i++)
            interpolable[i] = known[i] & known[i + 1] & known[i + below] & known[i + below + 1];
    }
};

/// Bilinear samples in sixteenths of a level, `fx` and `fy` sixteenths right of and below those of an area.
void interpolateGroup(const uint8_t *upper, int fx, int fy, int16_t *__restrict values) {
    const uint8_t *lower = upper + kAreaSide;
    // Everything fits 16 bits, 255 x 16 x 16, so that the compiler can work on eight samples at once, if it
    // does not unroll the loop first.
    const uint16_t upperLeft = static_cast<uint16_t>((kSteps - fx) * (kSteps - fy));
    const uint16_t upperRight = static_cast<uint16_t>(fx * (kSteps - fy));
    const uint16_t lowerLeft = static_cast<uint16_t>((kSteps - fx) * fy);
    const uint16_t lowerRight = static_cast<uint16_t>(fx * fy);
#pragma GCC unroll 1
    for (size_t i = 0; i < kGroup; i++) {
        const uint16_t sum = static_cast<uint16_t>(upper[i] * upperLeft + upper[i + 1] * upperRight +
                                                   lower[i] * lowerLeft + lower[i + 1] * lowerRight);
        values[i] = static_cast<int16_t>(sum / kSteps);
    }
}

/// The other exposure's samples under the current guess, as Template has them.
struct Resampled {
    std::array<int16_t, kSamples> luma, measured;

    /// Samples `area` at positions that start at `origin` (relative to the area) and follow the affine map
    /// (I - slope). False when that leaves the area.
    bool take(const Surroundings &area, Vector origin, const std::array<double, 4> &slope) {
        // Positions in fixed point. A group moves as its centre does; distances from the block's centre are
        // counted in halves of a sample.
        constexpr int32_t kOne = 1 << 16;
        constexpr int kPositionShift = 12; ///< to sixteenths
        const auto fixed = [](double value) { return static_cast<int32_t>(std::floor(value * kOne + 0.5)); };
        const int32_t originX = fixed(origin.x), originY = fixed(origin.y);
        const std::array<int32_t, 4> halfSlope = {fixed(slope[0] / 2), fixed(slope[1] / 2),
                                                  fixed(slope[2] / 2), fixed(slope[3] / 2)};
        for (int row = 0; row < kBlockSide; row++) {
            for (int column = 0; column < kBlockSide; column += kGroup) {
                const int right = 2 * column + kGroup - kBlockSide;
                const int down = 2 * row + 1 - kBlockSide;
                const int32_t x = originX + column * kOne - halfSlope[0] * right - halfSlope[1] * down;
                const int32_t y = originY + row * kOne - halfSlope[2] * right - halfSlope[3] * down;
                const int x16 = (x + (1 << (kPositionShift - 1))) >> kPositionShift;
                const int y16 = (y + (1 << (kPositionShift - 1))) >> kPositionShift;
                if (x16 < 0 || y16 < 0 || x16 / kSteps + kGroup + 1 > kAreaSide ||
                    y16 / kSteps + 2 > kAreaSide)
                    return false;
                const size_t to = static_cast<size_t>(row * kBlockSide + column);
                const size_t from = static_cast<size_t>(y16 / kSteps * kAreaSide + x16 / kSteps);
                interpolateGroup(area.samples.data() + from, x16 % kSteps, y16 % kSteps, luma.data() + to);
                std::copy_n(area.interpolable.data() + from, kGroup, measured.data() + to);
            }
        }
        return true;
    }
};

/// Sums over the shared samples of products of the block's luminance t, its gradient (x, y) and the other
/// exposure's luminance o, all less their means.
struct Moments {
    double count = 0;
    double tt = 0, to = 0, oo = 0, xt = 0, yt = 0, xo = 0, yo = 0, xx = 0, xy = 0, yy = 0;

    Moments(const Template &block, const Resampled &other) {
        int32_t shared = 0, sumT = 0, sumO = 0, sumX = 0, sumY = 0;
        for (size_t i = 0; i < kSamples; i++) {
            const int16_t mask = block.measured[i] & other.measured[i];
            shared -= mask;
            sumT += block.luma[i] & mask;
            sumO += other.luma[i] & mask;
            sumX += block.gradientX[i] & mask;
            sumY += block.gradientY[i] & mask;
        }
        if (shared == 0)
            return;
        const int16_t meanT = static_cast<int16_t>(sumT / shared),
                      meanO = static_cast<int16_t>(sumO / shared);
        std::array<int64_t, 10> sums{};
        for (size_t first = 0; first < kSamples; first += kSummed) {
            std::array<int16_t, kSummed> t, o, x, y;
            for (size_t i = 0; i < kSummed; i++) {
                const int16_t mask = block.measured[first + i] & other.measured[first + i];
                t[i] = static_cast<int16_t>((block.luma[first + i] - meanT) & mask);
                o[i] = static_cast<int16_t>((other.luma[first + i] - meanO) & mask);
                x[i] = static_cast<int16_t>(block.gradientX[first + i] & mask);
                y[i] = static_cast<int16_t>(block.gradientY[first + i] & mask);
            }
            const auto dot = [](const std::array<int16_t, kSummed> &a,
                                const std::array<int16_t, kSummed> &b) {
                int32_t sum = 0;
                for (size_t i = 0; i < kSummed; i++)
                    sum += a[i] * b[i];
                return sum;
            };
            sums[0] += dot(t, t);
            sums[1] += dot(t, o);
            sums[2] += dot(o, o);
            sums[3] += dot(x, t);
            sums[4] += dot(y, t);
            sums[5] += dot(x, o);
            sums[6] += dot(y, o);
            sums[7] += dot(x, x);
            sums[8] += dot(x, y);
            sums[9] += dot(y, y);
        }
        count = static_cast<double>(shared);
        // What is left of the means after rounding them.
        const double leftT = static_cast<double>(sumT - meanT * shared);
        const double leftO = static_cast<double>(sumO - meanO * shared);
        const double leftX = static_cast<double>(sumX), leftY = static_cast<double>(sumY);
        const auto centred = [&](int64_t sum, double a, double b) {
            return static_cast<double>(sum) - a * b / count;
        };
        tt = centred(sums[0], leftT, leftT);
        to = centred(sums[1], leftT, leftO);
        oo = centred(sums[2], leftO, leftO);
        xt = centred(sums[3], leftX, leftT);
        yt = centred(sums[4], leftY, leftT);
        xo = centred(sums[5], leftX, leftO);
        yo = centred(sums[6], leftY, leftO);
        xx = centred(sums[7], leftX, leftX);
        xy = centred(sums[8], leftX, leftY);
        yy = centred(sums[9], leftY, leftY);
    }
};

/// Aligns one block. Displacements in the result are in samples of the level, relative to the expected one.
struct BlockFit {
    Vector offset;
    std::array<double, 3> information;
};

std::optional<BlockFit> alignBlock(const Template &block, const Surroundings &area, Vector origin,
                                   const std::array<double, 4> &slope) {
    BlockFit fit{};
    Resampled other;
    for (int iteration = 0; iteration < kIterations; iteration++) {
        if (!other.take(area, origin - fit.offset, slope))
            return std::nullopt;
        const Moments m(block, other);
        if (m.count < kLeastShared * kSamples || m.tt < m.count || m.oo < m.count || m.to <= 0)
            return std::nullopt;
        // Regress the other exposure on the block and its gradient; the gain first.
        const double gain = m.to / m.tt;
        const double xx = m.xx - m.xt * m.xt / m.tt;
        const double xy = m.xy - m.xt * m.yt / m.tt;
        const double yy = m.yy - m.yt * m.yt / m.tt;
        const double right = (m.xo - m.xt * gain) / gain;
        const double down = (m.yo - m.yt * gain) / gain;
        const double damping = m.count * (kSteps * kWeakGradient) * (kSteps * kWeakGradient);
        const double determinant = (xx + damping) * (yy + damping) - xy * xy;
        Vector step = {((yy + damping) * right - xy * down) / determinant,
                       ((xx + damping) * down - xy * right) / determinant};
        const double length = std::sqrt(step.squaredLength());
        if (length > kLongestStep)
            step = (kLongestStep / length) * step;
        fit.offset = fit.offset + step;
        if (fit.offset.squaredLength() > kBlockReach * kBlockReach)
            return std::nullopt;
        if (length > kConverged && iteration + 1 < kIterations)
            continue;
        const double explained = m.to * m.to / (m.tt * m.oo);
        if (length > 0.3 || explained < kLeastCorrelation * kLeastCorrelation)
            return std::nullopt;
        const double noise =
            kSamplesPerMeasurement * std::max(m.oo * (1 - explained) / m.count, 1.0) / (gain * gain);
        fit.information = {xx / noise, xy / noise, yy / noise};
        return fit;
    }
    return std::nullopt;
}

/// Information per squared pixel from that per squared sample of `size` pixels, with the systematic error
/// added to the variance.
std::array<double, 3> withSystematicError(const std::array<double, 3> &information, double size) {
    const double a = information[0] / (size * size);
    const double b = information[1] / (size * size);
    const double d = information[2] / (size * size);
    // (I^-1 + s)^-1 = I (1 + s I)^-1 with I the information, s the variance of the systematic error.
    const double s = kSystematicError * kSystematicError;
    const double whole = (1 + s * a) * (1 + s * d) - s * b * s * b;
    return {(a * (1 + s * d) - s * b * b) / whole, b / whole, (d * (1 + s * a) - s * b * b) / whole};
}

Observation measureBlock(const LumaPyramid &reference, const LumaPyramid &other, const BlockLayout &layout,
                         int index, int level, const WarpField &expected) {
    const double size = 1 << level;
    const double offset = (size - 1) / 2;
    const auto firstSample = [&](int at, int count, int pixels) {
        const double centre = ((at + 0.5) * pixels / count - 0.5 - offset) / size;
        return static_cast<int>(std::floor(centre)) - kBlockSide / 2 + 1;
    };
    const int x = firstSample(index % layout.columns, layout.columns, layout.width);
    const int y = firstSample(index / layout.columns, layout.rows, layout.height);
    const double half = (kBlockSide - 1) / 2.0;
    const Vector centre = {(x + half) * size + offset, (y + half) * size + offset};
    const Vector displacement = expected.displacement(centre);
    const double reach = half * size;
    const Vector alongX = (0.5 / reach) * (expected.displacement(centre + Vector{reach, 0}) -
                                           expected.displacement(centre - Vector{reach, 0}));
    const Vector alongY = (0.5 / reach) * (expected.displacement(centre + Vector{0, reach}) -
                                           expected.displacement(centre - Vector{0, reach}));
    const Vector source = {x - displacement.x / size, y - displacement.y / size};
    const int areaX = static_cast<int>(std::floor(source.x)) - kMargin;
    const int areaY = static_cast<int>(std::floor(source.y)) - kMargin;

    Template block;
    block.load(reference, level, x, y);
    Surroundings area;
    area.load(other, level, areaX, areaY);
    const auto fit =
        alignBlock(block, area, source - Vector{static_cast<double>(areaX), static_cast<double>(areaY)},
                   {alongX.x, alongY.x, alongX.y, alongY.y});
    if (!fit)
        return {centre, displacement, {}};
    return {centre, displacement + size * fit->offset, withSystematicError(fit->information, size)};
}

} // namespace

BlockLayout::BlockLayout(int width, int height) : width(width), height(height) {
    const double spacing =
        std::max(std::sqrt(static_cast<double>(width) * height / kBlocksWanted), kLeastSpacing);
    columns = std::max(static_cast<int>(width / spacing), 1);
    rows = std::max(static_cast<int>(height / spacing), 1);
}

void measureBlocks(const LumaPyramid &reference, const LumaPyramid &other, const BlockLayout &layout,
                   int first, int end, int level, const WarpField &expected, const uint8_t *wanted,
                   Observation *observations) {
    runOnFourParts(first, end, [&](const RangePart &part) {
        for (int block = part.first; block < part.end; block++)
            if (wanted[block])
                observations[block] = measureBlock(reference, other, layout, block, level, expected);
    });
}

} // namespace hdr
