// SPDX-License-Identifier: MIT
#include "engine/prepare/tone_match.h"

#include "engine/core/arithmetic.h"
#include "engine/core/buffer.h"
#include "engine/core/context.h"
#include "engine/prepare/quantiles.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

namespace hdr {

namespace {

constexpr int kDeciles = 10;
constexpr int kTwentieths = 20;
/// Bright levels, above this one, get a rule of their own.
constexpr int kBrightLevel = 239;
/// Source levels from here on can carry the slope of the dark end.
constexpr int kDarkLevel = 4;

/// Levels from which the fine table of the dark exposure fades in, and is used alone.
constexpr int kFadeStart = 64;
constexpr int kFadeEnd = 192;

/// Matching levels of two exposures: each tenth of the source's pixels, and of the target's.
struct LevelPairs {
    std::array<int, kDeciles + 1> source{};
    std::array<int, kDeciles + 1> target{};
};

void fillSegments(uint8_t *table, const LevelPairs &pairs) {
    const auto &[source, target] = pairs;
    for (size_t k = 0; k < kDeciles; k++)
        for (int x = source[k]; x < source[k + 1]; x++)
            table[x] = static_cast<uint8_t>(
                (x - source[k]) * (target[k + 1] - target[k]) / (source[k + 1] - source[k]) + target[k]);
    for (int x = source[kDeciles]; x < kBins; x++)
        table[x] = static_cast<uint8_t>(target[kDeciles]);
}

/// Fills the levels below (level, value) with a line of slope rise / run through that point.
void fillBelow(uint8_t *table, int level, int value, int rise, int run) {
    for (int x = 0; x < level; x++)
        table[x] = static_cast<uint8_t>(std::max(0, value - (level - x) * rise / run));
}

/// Where the target is the brighter one, the first decile would rise from 0 too steeply: its slope is taken
/// from the deciles above it.
void extendDarkEnd(uint8_t *table, const LevelPairs &pairs) {
    const auto &[source, target] = pairs;
    if (target[1] <= source[1] || source[2] <= source[1])
        return;
    if (source[2] >= kDarkLevel) {
        fillBelow(table, source[1], target[1], target[2] - target[1], source[2] - source[1]);
        return;
    }
    // Deciles rise by at least one level each, so the fifth is the last that can qualify.
    size_t j = 3;
    while (source[j] < kDarkLevel)
        j++;
    const int left = source[j] - source[j - 1];
    const int right = source[j + 1] - source[j];
    const int rise = (target[j + 1] - target[j]) * left + (target[j] - target[j - 1]) * right;
    const int run = 2 * left * right;
    if (run > 0)
        fillBelow(table, source[j], target[j], rise, run);
}

/// Continues the slope of the segment that enters the bright end, or steers that end toward the identity.
void extendBrightEnd(uint8_t *table, const LevelPairs &pairs, bool towardIdentity) {
    const auto &[source, target] = pairs;
    size_t i = kDeciles;
    while (source[i] > kBrightLevel)
        i--;
    if (i < 2 || target[i] >= source[i] || source[i] <= source[i - 1] || source[i] >= source[kDeciles])
        return;
    const int run = source[i + 1] - source[i];
    const int rise = (towardIdentity ? source[i + 1] : target[i + 1]) - target[i];
    for (int x = source[i]; x < source[kDeciles]; x++)
        table[x] = static_cast<uint8_t>(std::min(255, target[i] + (x - source[i]) * rise / run));
}

constexpr size_t kTerms = 5;
using Terms = std::array<double, kTerms>;
using Matrix = std::array<Terms, kTerms>;

/// Solves matrix x = right by Gaussian elimination with full pivoting; all zeros for a singular matrix.
Terms solve(Matrix matrix, Terms right) {
    constexpr double kSingular = 1e-14;
    std::array<size_t, kTerms> order = {0, 1, 2, 3, 4};
    for (size_t step = 0; step < kTerms; step++) {
        size_t pivotRow = step;
        size_t pivotColumn = step;
        for (size_t r = step; r < kTerms; r++) {
            for (size_t c = step; c < kTerms; c++) {
                if (std::fabs(matrix[r][c]) > std::fabs(matrix[pivotRow][pivotColumn])) {
                    pivotRow = r;
                    pivotColumn = c;
                }
            }
        }
        std::swap(matrix[step], matrix[pivotRow]);
        std::swap(right[step], right[pivotRow]);
        for (Terms &row : matrix)
            std::swap(row[step], row[pivotColumn]);
        std::swap(order[step], order[pivotColumn]);

        const double pivot = matrix[step][step];
        if (std::fabs(pivot) < kSingular)
            return {};
        for (size_t r = step + 1; r < kTerms; r++) {
            const double factor = matrix[r][step] / pivot;
            for (size_t c = step; c < kTerms; c++)
                matrix[r][c] -= factor * matrix[step][c];
            right[r] -= factor * right[step];
        }
    }
    Terms solution{};
    for (size_t step = kTerms; step-- > 0;) {
        double value = right[step];
        for (size_t c = step + 1; c < kTerms; c++)
            value -= matrix[step][c] * solution[order[c]];
        solution[order[step]] = value / matrix[step][step];
    }
    return solution;
}

/// The quartic that fits the points (x[i], y[i]) best in the sense of least squares: its normal equations.
Terms fitQuartic(const std::array<double, kTwentieths + 1> &x, const std::array<double, kTwentieths + 1> &y) {
    Matrix matrix{};
    Terms right{};
    for (size_t i = 0; i < x.size(); i++) {
        std::array<double, 2 * kTerms - 1> power;
        power[0] = 1;
        for (size_t n = 1; n < power.size(); n++)
            power[n] = power[n - 1] * x[i];
        for (size_t r = 0; r < kTerms; r++) {
            for (size_t c = 0; c < kTerms; c++)
                matrix[r][c] += power[r + c];
            right[r] += y[i] * power[r];
        }
    }
    return solve(matrix, right);
}

std::array<double, kTwentieths + 1> twentieths(const uint32_t *histogram, int count) {
    std::array<int, kTwentieths + 1> levels{};
    findQuantiles(histogram, static_cast<uint32_t>(count), kTwentieths, levels.data());
    std::array<double, kTwentieths + 1> scaled;
    for (size_t i = 0; i < scaled.size(); i++)
        scaled[i] = levels[i] / 255.0;
    return scaled;
}

} // namespace

HdrStatus build_tone_match(uint8_t *table, const uint32_t *source, const uint32_t *target, int count,
                           int /*mode*/, int flag) {
    LevelPairs pairs;
    findQuantiles(source, static_cast<uint32_t>(count), kDeciles, pairs.source.data());
    findQuantiles(target, static_cast<uint32_t>(count), kDeciles, pairs.target.data());
    fillSegments(table, pairs);
    extendDarkEnd(table, pairs);
    extendBrightEnd(table, pairs, flag != 0);
    return HDR_OK;
}

HdrStatus build_tone_match_fine(uint8_t *table, const uint32_t *source, const uint32_t *target, int count) {
    const Terms a = fitQuartic(twentieths(source, count), twentieths(target, count));
    for (int level = 0; level < kBins; level++) {
        const double x = level / 255.0;
        const double x2 = x * x;
        const double x3 = x2 * x;
        const double x4 = x3 * x;
        const double y = a[0] + a[1] * x + a[2] * x2 + a[3] * x3 + a[4] * x4;
        table[level] = static_cast<uint8_t>(std::clamp(y * 255 + 0.5, 0.0, 255.0));
    }
    return HDR_OK;
}

HdrStatus matchTones(MemContext *memory, HdrContext *context, int index, int count, const uint8_t **forward) {
    const Preparation &preparation = context->preparation;
    const Tables &tables = context->tables;
    const bool dark = index == preparation.darkIndex;
    const bool darkTables = context->preparedOnce == 1 ? dark : index == 0 || index == 1;
    uint8_t *toMid = darkTables ? tables.toneMatchDarkToMid : tables.toneMatchBrightToMid;
    uint8_t *fromMid = darkTables ? tables.toneMatchMidToDark : tables.toneMatchMidToBright;
    const uint32_t *own = preparation.histogram(index, 0);
    const uint32_t *reference = preparation.histogram(preparation.midIndex, 0);

    build_tone_match(toMid, own, reference, count, 0, 0);
    if (dark) {
        Buffer<uint8_t> fine(memory, kBins);
        if (!fine)
            return HDR_ERR_NOMEM;
        build_tone_match_fine(fine.data(), own, reference, count);
        for (int level = kFadeStart; level < kFadeEnd; level++)
            toMid[level] =
                static_cast<uint8_t>(((kFadeEnd - level) * toMid[level] +
                                      (level - kFadeStart) * fine[static_cast<size_t>(level)] + 64) >>
                                     7);
        std::copy(fine.begin() + kFadeEnd, fine.end(), toMid + kFadeEnd);
    }
    build_tone_match(fromMid, reference, own, count, 0, 1);
    *forward = toMid;
    return HDR_OK;
}

} // namespace hdr
