// SPDX-License-Identifier: MIT
#include "engine/render/local_tone_map.h"

#include "engine/core/arithmetic.h"
#include "engine/core/context.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <numeric>

namespace hdr {
namespace {

constexpr int kBlockSize = 8;
/// 1024 ln(0.18 x 4096): the log level of middle grey.
constexpr double kMiddleGreyLog = 6761.438964354475;
constexpr int kLevelCount = 256;
/// Samples beyond either end of a coarse row that the upsampling reads.
constexpr int kSpareSamples = 2;
/// No plane can be halved more often.
constexpr size_t kMostLevels = 31;

/// 1024 ln of the merged picture's linear level, for each 8-bit level.
using LogTable = std::array<int16_t, kLevelCount>;

LogTable buildLogTable(const HdrContext &context) {
    LogTable table;
    for (int level = 0; level < kLevelCount; level++) {
        int linear;
        if (context.smoothingFlag) {
            linear = context.merge.smoothingMergeTable[kBrightCurve + level] >> 2;
        } else {
            // Highlights are compressed by half.
            const int compressed = level < 193 ? level : 192 + ((level - 192) >> 1);
            linear = context.merge.mergeTable[kMidCurve + compressed] >> 2;
        }
        table[static_cast<size_t>(level)] = static_cast<int16_t>(std::log(linear + 30) * 1024);
    }
    return table;
}

/// Log levels of a picture's luminance; where the map is larger, the picture's last column and row repeat.
void log_convert(Plane<const uint8_t> luma, Plane<int16_t> logs, const LogTable &table) {
    for (int y = 0; y < logs.height; y++) {
        const uint8_t *from = luma.row(std::min(y, luma.height - 1));
        int16_t *to = logs.row(y);
        for (int x = 0; x < logs.width; x++)
            to[x] = table[from[std::min(x, luma.width - 1)]];
    }
}

/// Local standard deviation from the local variance, with a floor that keeps it at 256 or more.
void sqrt_convert(Plane<int16_t> plane) {
    constexpr int kFloor = 64;
    for (int y = 0; y < plane.height; y++) {
        int16_t *row = plane.row(y);
        for (int x = 0; x < plane.width; x++)
            row[x] = static_cast<int16_t>(std::sqrt((std::max<int>(row[x], 0) + kFloor) * 1024.0));
    }
}

/// Mean of (a, b, c) weighted 1, 2, 1.
constexpr int smooth3(int a, int b, int c) {
    return (a + 2 * b + c) >> 2;
}

/// Four-tap upsampling: the sample beside `near`, on the side of `neighbour`.
constexpr int interpolate(int beyond, int neighbour, int near, int opposite) {
    return (9 * neighbour + 25 * near - opposite - beyond) >> 5;
}

/// Smooths a plane with [1 2 1] / 4 vertically, then horizontally, in place; edges are replicated. `above`
/// and `row` have room for a sample more than a row.
void smoothInPlace(Plane<int16_t> plane, int32_t *above, int32_t *row) {
    const int width = plane.width;
    std::copy_n(plane.row(0), width, above);
    for (int y = 0; y < plane.height; y++) {
        int16_t *samples = plane.row(y);
        const int16_t *below = plane.row(std::min(y + 1, plane.height - 1));
        for (int x = 0; x < width; x++) {
            row[x] = smooth3(above[x], samples[x], below[x]);
            above[x] = samples[x];
        }
        row[width] = row[width - 1];
        samples[0] = static_cast<int16_t>(smooth3(row[0], row[0], row[1]));
        for (int x = 1; x < width; x++)
            samples[x] = static_cast<int16_t>(smooth3(row[x - 1], row[x], row[x + 1]));
    }
}

/// A blend weight in 1/256, truncated after a half is added; saturated, as the weight of a level whose mean
/// is close to 0 has no bounds.
int32_t toFixedPoint(double weight) {
    constexpr double kLowest = std::numeric_limits<int32_t>::min();
    constexpr double kHighest = std::numeric_limits<int32_t>::max();
    return static_cast<int32_t>(std::clamp(weight * 256 + 0.5, kLowest, kHighest));
}

/// (coarse x coarseWeight + fine x fineWeight) / 256, wrapping as the 16-bit sample does that it becomes.
int16_t blend(int32_t coarse, int32_t coarseWeight, int32_t fine, int32_t fineWeight) {
    const uint32_t sum = static_cast<uint32_t>(coarse) * static_cast<uint32_t>(coarseWeight) +
                         static_cast<uint32_t>(fine) * static_cast<uint32_t>(fineWeight);
    return static_cast<int16_t>(sum >> 8);
}

/// A level of the pyramid. Its samples lie in the scratch.
struct Level {
    Plane<int16_t> samples;
    double mean;

    size_t size() const { return static_cast<size_t>(samples.width) * static_cast<size_t>(samples.height); }
};

/// Gives a level the mean of the plane.
void scaleToMean(const Level &level, double planeMean) {
    const double ratio = level.mean == 0 ? 0 : planeMean / level.mean;
    for (int y = 0; y < level.samples.height; y++)
        for (int x = 0; x < level.samples.width; x++) {
            int16_t &sample = level.samples(x, y);
            sample = static_cast<int16_t>(static_cast<int64_t>(sample * ratio + 0.5));
        }
}

} // namespace

PyramidScratch::PyramidScratch(MemContext *memory, int width, int height) {
    const size_t samples = static_cast<size_t>(width) * static_cast<size_t>(height);
    levels = Buffer<int16_t>(memory, samples >= 2050 ? samples / 2 : 1024);
    rows = Buffer<int32_t>(memory, 2 * static_cast<size_t>(ceilDivide(width, 2) + 2 * kSpareSamples));
}

int plane_mean(Plane<const int16_t> plane) {
    int sumOfMeans = 0;
    for (int y = 0; y < plane.height; y++) {
        const int16_t *row = plane.row(y);
        sumOfMeans += std::accumulate(row, row + plane.width, 0) / plane.width;
    }
    return sumOfMeans / plane.height;
}

double downsample_2x2(Plane<const int16_t> plane, Plane<int16_t> half) {
    int64_t sum = 0;
    for (int y = 0; y < half.height; y++) {
        const int16_t *top = plane.row(2 * y);
        const int16_t *bottom = plane.row(std::min(2 * y + 1, plane.height - 1));
        int16_t *row = half.row(y);
        const auto mean = [&](int x) {
            return static_cast<int16_t>((top[x] + top[x + 1] + bottom[x] + bottom[x + 1]) >> 2);
        };
        for (int x = 0; x < plane.width / 2; x++)
            row[x] = mean(2 * x);
        if (plane.width % 2)
            row[half.width - 1] = mean(plane.width - 2);
        sum += std::accumulate(row, row + half.width, 0);
    }
    return static_cast<double>(sum) / (static_cast<double>(half.width) * half.height);
}

void upsample_blend(Plane<int16_t> coarse, Plane<const int16_t> fine, Plane<int16_t> output,
                    double coarseWeight, double fineWeight, Buffer<int32_t> &rows) {
    const int columns = coarse.width;
    int32_t *between = rows.data() + kSpareSamples;
    smoothInPlace(coarse, between + columns + 2 * kSpareSamples, between);

    const int32_t weightOfCoarse = toFixedPoint(coarseWeight);
    const int32_t weightOfFine = toFixedPoint(fineWeight);
    const auto rowNear = [&](int y) { return coarse.row(std::clamp(y, 0, coarse.height - 1)); };
    for (int y = 0; y < output.height; y++) {
        const int k = y / 2;
        // An even row leans on the coarse row above it, an odd one on the row below.
        const int side = y % 2 ? 1 : -1;
        const int16_t *near = rowNear(k);
        const int16_t *neighbour = rowNear(k + side);
        const int16_t *opposite = rowNear(k - side);
        const int16_t *beyond = rowNear(k + 2 * side);
        for (int x = 0; x < columns; x++)
            between[x] = interpolate(beyond[x], neighbour[x], near[x], opposite[x]);
        std::fill_n(between - kSpareSamples, kSpareSamples, between[0]);
        std::fill_n(between + columns, kSpareSamples, between[columns - 1]);

        const int16_t *fineRow = fine.row(y);
        int16_t *outputRow = output.row(y);
        const auto blendEven = [&](int x) {
            const int32_t *q = between + x / 2;
            outputRow[x] =
                blend(interpolate(q[-2], q[-1], q[0], q[1]), weightOfCoarse, fineRow[x], weightOfFine);
        };
        const auto blendOdd = [&](int x) {
            const int32_t *q = between + x / 2;
            outputRow[x] =
                blend(interpolate(q[2], q[1], q[0], q[-1]), weightOfCoarse, fineRow[x], weightOfFine);
        };
        for (int x = 0; x + 1 < output.width; x += 2) {
            blendEven(x);
            blendOdd(x + 1);
        }
        if (output.width % 2)
            blendEven(output.width - 1);
    }
}

void pyramid_smooth(PyramidScratch &scratch, Plane<const int16_t> source, Plane<int16_t> destination) {
    if (source.data != destination.data)
        for (int y = 0; y < source.height; y++)
            std::copy_n(source.row(y), source.width, destination.row(y));

    std::array<Level, kMostLevels> levels;
    size_t count = 0;
    int16_t *unused = scratch.levels.data();
    size_t capacity = scratch.levels.size();
    for (Plane<const int16_t> finer = source; finer.width >= 2 && finer.height >= 2; count++) {
        Level &level = levels[count];
        level.samples = {unused, ceilDivide(finer.width, 2), ceilDivide(finer.height, 2)};
        if (capacity < level.size())
            return;
        level.mean = downsample_2x2(finer, level.samples);
        unused += level.size();
        capacity -= level.size();
        finer = level.samples;
    }
    if (count == 0)
        return;

    const double planeMean = plane_mean(source);
    scaleToMean(levels[count - 1], planeMean);
    for (int step = 0; count > 0; step++) {
        const Level &coarse = levels[--count];
        // The room that a level needs beside it; a plane too thin for it stays as it is.
        if (static_cast<size_t>(6 * coarse.samples.width + 24) > capacity)
            return;
        const double fineWeight = 0.9 * std::pow(0.65, step);
        if (count == 0) {
            upsample_blend(coarse.samples, source, destination, 1 - fineWeight, fineWeight, scratch.rows);
        } else {
            const Level &finer = levels[count - 1];
            const double scaled = finer.mean == 0 ? 0 : fineWeight * planeMean / finer.mean;
            upsample_blend(coarse.samples, finer.samples, finer.samples, 1 - fineWeight, scaled,
                           scratch.rows);
        }
        capacity += coarse.size();
    }
}

HdrStatus normalize_local_contrast(MemContext *memory, Plane<int16_t> logImage) {
    const int width = logImage.width;
    const int height = logImage.height;
    const size_t count = static_cast<size_t>(width) * static_cast<size_t>(height);
    Buffer<int16_t> means(memory, count);
    Buffer<int16_t> variances(memory, count);
    PyramidScratch scratch(memory, width, height);
    if (!means || !variances || !scratch)
        return HDR_ERR_NOMEM;

    // Distance of each log level from a target between the picture's own mean and middle grey.
    const int logMean = plane_mean(logImage);
    const int target = logMean + static_cast<int>((kMiddleGreyLog - logMean) * 0.5 + 512.0);
    int16_t *distances = logImage.data;
    for (size_t i = 0; i < count; i++)
        distances[i] = wrap16(distances[i] - target);

    pyramid_smooth(scratch, logImage, {means.data(), width, height});

    const Plane<int16_t> deviation(variances.data(), width, height);
    for (size_t i = 0; i < count; i++) {
        const int64_t detail = distances[i] - means[i];
        const int64_t square = detail * detail;
        variances[i] = static_cast<int16_t>(square > 33554431 ? 32767 : square >> 10);
    }
    pyramid_smooth(scratch, deviation, deviation);
    sqrt_convert(deviation);
    const int meanDeviation = plane_mean(deviation);

    const int globalContrast = static_cast<int>(std::sqrt(meanDeviation / 1024.0) * 1024);
    for (size_t i = 0; i < count; i++) {
        const int64_t scaled = ((distances[i] - means[i]) * globalContrast) >> 4;
        const int64_t detail = (scaled * (524288 / variances[i])) >> 15;
        distances[i] = wrap16(static_cast<int>(detail) - distances[i]);
    }
    return HDR_OK;
}

HdrStatus build_local_tone_map(MemContext *memory, HdrContext *context, int width, int height) {
    const int mapWidth = width / kBlockSize;
    const int mapHeight = height / kBlockSize;
    Buffer<int16_t> map;
    if (mapWidth > 0 && mapHeight > 0) {
        map = Buffer<int16_t>(memory, static_cast<size_t>(mapWidth) * static_cast<size_t>(mapHeight));
        if (!map)
            return HDR_ERR_NOMEM;
        const Plane<int16_t> plane(map.data(), mapWidth, mapHeight);
        log_convert(planeOf(*context->preparation.mergedImage), plane, buildLogTable(*context));
        const HdrStatus status = normalize_local_contrast(memory, plane);
        if (status != HDR_OK)
            return status;
    }
    LocalToneMap &result = context->localToneMap;
    result.release(memory);
    result = {map.release(), mapWidth, mapHeight};
    return HDR_OK;
}

void LocalToneMap::release(MemContext *memory) {
    releaseArray(memory, map);
    width = height = 0;
}

} // namespace hdr
