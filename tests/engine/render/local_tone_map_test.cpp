// SPDX-License-Identifier: MIT
#include "engine/render/local_tone_map.h"

#include "engine/core/context.h"
#include "tests/support/arena.h"
#include "tests/support/reduced_run.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <gtest/gtest.h>
#include <random>
#include <vector>

namespace hdr {
namespace {

/// A plane for the slow versions: wide samples, edges replicated, no shared code with the engine.
struct Image {
    int width, height;
    std::vector<int64_t> samples;

    Image(int width, int height)
        : width(width), height(height), samples(static_cast<size_t>(width * height)) {}
    explicit Image(Plane<const int16_t> plane) : Image(plane.width, plane.height) {
        for (int y = 0; y < height; y++)
            for (int x = 0; x < width; x++)
                set(x, y, plane(x, y));
    }
    int64_t at(int x, int y) const {
        return samples[static_cast<size_t>(std::clamp(y, 0, height - 1) * width +
                                           std::clamp(x, 0, width - 1))];
    }
    void set(int x, int y, int64_t value) { samples[static_cast<size_t>(y * width + x)] = value; }
    template <typename Value>
    Image map(Value value) const {
        Image result(width, height);
        for (int y = 0; y < height; y++)
            for (int x = 0; x < width; x++)
                result.set(x, y, value(x, y));
        return result;
    }
    int64_t meanOfRowMeans() const {
        int64_t sum = 0;
        for (int y = 0; y < height; y++) {
            int64_t row = 0;
            for (int x = 0; x < width; x++)
                row += at(x, y);
            sum += row / width;
        }
        return sum / height;
    }
    double mean() const {
        double sum = 0;
        for (int64_t sample : samples)
            sum += static_cast<double>(sample);
        return sum / static_cast<double>(samples.size());
    }
};

/// Floor of a quotient.
int64_t floored(int64_t value, int64_t divisor) {
    return value >= 0 ? value / divisor : -((-value + divisor - 1) / divisor);
}

Image halved(const Image &image) {
    Image half((image.width + 1) / 2, (image.height + 1) / 2);
    return half.map([&](int x, int y) {
        const int left = std::min(2 * x, image.width - 2);
        return floored(image.at(left, 2 * y) + image.at(left + 1, 2 * y) + image.at(left, 2 * y + 1) +
                           image.at(left + 1, 2 * y + 1),
                       4);
    });
}

/// Twice the size, at (x, y).
int64_t upsampled(const Image &smooth, int x, int y) {
    const auto taps = [](int position, auto sample) {
        const int k = position / 2;
        const int side = position % 2 == 0 ? -1 : 1;
        return floored(9 * sample(k + side) + 25 * sample(k) - sample(k - side) - sample(k + 2 * side), 32);
    };
    return taps(x, [&](int column) {
        column = std::clamp(column, 0, smooth.width - 1);
        return taps(y, [&](int row) { return smooth.at(column, row); });
    });
}

Image blended(const Image &coarse, const Image &fine, double coarseWeight, double fineWeight) {
    const Image vertical = coarse.map([&](int x, int y) {
        return floored(coarse.at(x, y - 1) + 2 * coarse.at(x, y) + coarse.at(x, y + 1), 4);
    });
    const Image smooth = coarse.map([&](int x, int y) {
        return floored(vertical.at(x - 1, y) + 2 * vertical.at(x, y) + vertical.at(x + 1, y), 4);
    });
    const auto fixed = [](double weight) { return static_cast<int64_t>(weight * 256 + 0.5); };
    return fine.map([&](int x, int y) {
        return floored(upsampled(smooth, x, y) * fixed(coarseWeight) + fine.at(x, y) * fixed(fineWeight),
                       256);
    });
}

Image smoothed(const Image &image) {
    std::vector<Image> pyramid{image};
    while (pyramid.back().width >= 2 && pyramid.back().height >= 2)
        pyramid.push_back(halved(pyramid.back()));
    std::vector<double> means;
    for (const Image &level : pyramid)
        means.push_back(level.mean());
    const double target = static_cast<double>(image.meanOfRowMeans());
    Image &coarsest = pyramid.back();
    for (int64_t &sample : coarsest.samples)
        sample = static_cast<int64_t>(
            static_cast<double>(sample) * (means.back() == 0 ? 0 : target / means.back()) + 0.5);
    Image result = coarsest;
    double weight = 0.9;
    for (size_t level = pyramid.size() - 1; level-- > 0; weight *= 0.65) {
        const double scaled = level == 0 ? weight : means[level] == 0 ? 0 : weight * target / means[level];
        result = blended(result, pyramid[level], 1 - weight, scaled);
    }
    return result;
}

std::vector<int16_t> noise(int width, int height, int low, int high) {
    std::mt19937 random(static_cast<unsigned>(width * 1000 + height));
    std::uniform_int_distribution<int> value(low, high);
    std::vector<int16_t> plane(static_cast<size_t>(width * height));
    for (size_t i = 0; i < plane.size(); i++)
        plane[i] = static_cast<int16_t>(value(random) + (i % static_cast<size_t>(width) > 20 ? 200 : 0));
    return plane;
}

Image imageOf(const std::vector<int16_t> &samples, int width, int height) {
    return Image(Plane<const int16_t>(samples.data(), width, height));
}

/// Smooths a plane into another one and in place, which has to come to the same.
std::vector<int16_t> smoothedByTheEngine(std::vector<int16_t> plane, int width, int height) {
    std::vector<int16_t> other(plane.size(), 99);
    PyramidScratch scratch(nullptr, width, height);
    pyramid_smooth(scratch, {plane.data(), width, height}, {other.data(), width, height});
    pyramid_smooth(scratch, {plane.data(), width, height}, {plane.data(), width, height});
    EXPECT_EQ(plane, other);
    return other;
}

void expectSamples(const std::vector<int16_t> &samples, const Image &expected) {
    for (size_t i = 0; i < samples.size(); i++)
        ASSERT_EQ(samples[i], static_cast<int16_t>(expected.samples[i]))
            << "sample " << i << " of " << expected.width << " x " << expected.height;
}

/// The last one leaves just the 774 samples that its rows need.
constexpr int kSizes[][2]{{2, 2}, {3, 2}, {13, 12}, {16, 16}, {45, 46}, {64, 63}, {101, 67}, {250, 4}};

TEST(PyramidSmooth, EqualsItsDefinition) {
    for (auto [width, height] : kSizes)
        for (auto [low, high] : {std::array{-900, 900}, {400, 6000}, {-3000, -2500}, {0, 32000}}) {
            const std::vector<int16_t> plane = noise(width, height, low, high);
            expectSamples(smoothedByTheEngine(plane, width, height), smoothed(imageOf(plane, width, height)));
        }
    // Levels of mean zero count nothing, although their samples are not.
    std::vector<int16_t> plane = noise(32, 16, -6, 6);
    for (size_t i = 0; i < plane.size(); i++)
        plane[i] =
            static_cast<int16_t>(i % 32 < 16 ? (plane[i] % 7) * 4096 : -plane[i / 32 * 32 + 31 - i % 32]);
    expectSamples(smoothedByTheEngine(plane, 32, 16), smoothed(imageOf(plane, 32, 16)));
    // 8 x 230 >> 8 and -8 x 230 >> 8: nine tenths of each sample.
    EXPECT_EQ(smoothedByTheEngine({-8, 8, -8, 8}, 2, 2), (std::vector<int16_t>{-8, 7, -8, 7}));
}

TEST(PyramidSmooth, PlanesThatCannotBeHalvedOrAreTooThinAreCopied) {
    // 286 x 2 samples leave 881 of 1024 beside the one level, whose rows would need 6 x 143 + 24 = 882.
    for (auto [width, height] : {std::array{1, 1}, {1, 40}, {286, 2}}) {
        const std::vector<int16_t> plane = noise(width, height, -500, 500);
        EXPECT_EQ(smoothedByTheEngine(plane, width, height), plane);
    }
    // A level's room is free again once it is used up: otherwise this plane could not be finished.
    const std::vector<int16_t> plane = noise(500, 14, -500, 500);
    EXPECT_NE(smoothedByTheEngine(plane, 500, 14), plane);
}

Image normalized(const Image &logs) {
    const int64_t mean = logs.meanOfRowMeans();
    const int64_t target =
        mean + static_cast<int64_t>((std::log(0.18 * 4096) * 1024 - static_cast<double>(mean)) * 0.5 + 512);
    const Image distance = logs.map([&](int x, int y) { return logs.at(x, y) - target; });
    const Image local = smoothed(distance);
    const auto detail = [&](int x, int y) { return distance.at(x, y) - local.at(x, y); };
    const Image variance = smoothed(distance.map(
        [&](int x, int y) { return std::min<int64_t>(detail(x, y) * detail(x, y) / 1024, 32767); }));
    const Image deviation = distance.map([&](int x, int y) {
        return static_cast<int64_t>(
            std::sqrt(1024.0 * static_cast<double>(std::max<int64_t>(variance.at(x, y), 0) + 64)));
    });
    const auto contrast =
        static_cast<int64_t>(std::sqrt(static_cast<double>(deviation.meanOfRowMeans()) / 1024) * 1024);
    return distance.map([&](int x, int y) {
        const int64_t scaled = floored(detail(x, y) * contrast, 16) * (524288 / deviation.at(x, y));
        return floored(scaled, 32768) - distance.at(x, y);
    });
}

TEST(NormalizeLocalContrast, EqualsItsDefinition) {
    for (auto [width, height] : {std::array{41, 29}, {64, 16}})
        for (int high : {300, 20000}) { // the latter saturates the squared detail
            std::vector<int16_t> plane = noise(width, height, 0, high);
            const Image expected = normalized(imageOf(plane, width, height));
            ASSERT_EQ(normalize_local_contrast(nullptr, {plane.data(), width, height}), HDR_OK);
            expectSamples(plane, expected);
        }
}

/// A run whose tables map every level to itself times 4 (bright) or 64 (middle).
struct MapRun : test::ReducedRun {
    MapRun(int width, int height) : ReducedRun(width, height) {
        for (size_t level = 0; level < 256; level++) {
            bright[kBrightCurve + level] = static_cast<uint16_t>(4 * level);
            mid[kMidCurve + level] = static_cast<uint16_t>(64 * level);
        }
        context.merge.mergeTable = mid.data();
        context.merge.smoothingMergeTable = bright.data();
    }
    Plane<uint8_t> merged() const { return planeOf(*context.preparation.mergedImage); }

    std::vector<uint16_t> mid = std::vector<uint16_t>(kMergeTableSize), bright = mid;
    const LocalToneMap &map = context.localToneMap;
};

TEST(LocalToneMap, EqualsItsDefinition) {
    // The map is a column and a row larger than the picture, as at widths and heights that are 8 more than a
    // multiple of 16.
    constexpr int kWidth = 42, kHeight = 28;
    MapRun run(kWidth, kHeight);
    for (int i = 0; i < kWidth * kHeight; i++)
        run.merged()(i % kWidth, i / kWidth) =
            static_cast<uint8_t>(i % kWidth < 15 ? run.random() % 12 : 150 + run.random() % 106);
    for (int smoothing : {1, 0}) {
        run.context.smoothingFlag = smoothing;
        ASSERT_EQ(build_local_tone_map(nullptr, &run.context, 8 * (kWidth + 1) + 7, 8 * (kHeight + 1)),
                  HDR_OK);
        ASSERT_EQ(run.map.width, kWidth + 1);
        ASSERT_EQ(run.map.height, kHeight + 1);
        const Image logs = Image(kWidth + 1, kHeight + 1).map([&](int x, int y) {
            const int level = run.merged()(std::min(x, kWidth - 1), std::min(y, kHeight - 1));
            const int linear = smoothing ? level : 16 * (level < 193 ? level : 192 + (level - 192) / 2);
            return static_cast<int>(std::log(linear + 30.0) * 1024);
        });
        expectSamples({run.map.map, run.map.map + (kWidth + 1) * (kHeight + 1)}, normalized(logs));
    }
}

TEST(LocalToneMap, SmallPicturesAndFailedAllocations) {
    MapRun run(2, 2);
    ASSERT_EQ(build_local_tone_map(nullptr, &run.context, 15, 15), HDR_OK);
    EXPECT_EQ(run.map.width, 1);
    ASSERT_EQ(build_local_tone_map(nullptr, &run.context, 7, 100), HDR_OK);
    EXPECT_EQ(run.map.map, nullptr);
    EXPECT_EQ(run.map.height, 12);
    // What a failure leaves is the map of before.
    for (size_t bytes : {size_t{64}, size_t{1} << 16}) {
        test::Arena arena(bytes);
        run.context.localToneMap = {allocateZeroed<int16_t>(arena.memory(), 1), 1, 1};
        const HdrStatus status = build_local_tone_map(arena.memory(), &run.context, 100, 100);
        EXPECT_EQ(status, bytes == 64 ? HDR_ERR_NOMEM : HDR_OK);
        EXPECT_EQ(run.map.width, status == HDR_OK ? 12 : 1);
        run.context.localToneMap.release(arena.memory());
        EXPECT_TRUE(arena.isEmpty());
    }
}

} // namespace
} // namespace hdr
