// SPDX-License-Identifier: MIT
#include "engine/prepare/features.h"

#include "engine/prepare/luma_pyramid.h"
#include "tests/support/synthetic_bracket.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

namespace hdr {
namespace {

std::vector<Vector> cornersOf(const std::vector<uint8_t> &samples, int width, int height, int capacity) {
    std::vector<Vector> features(static_cast<size_t>(capacity));
    int count = 0;
    EXPECT_EQ(findCorners(nullptr, Plane<const uint8_t>(samples.data(), width, height), 5, 4, 5, capacity,
                          features.data(), count),
              HDR_OK);
    features.resize(static_cast<size_t>(count));
    return features;
}

TEST(Corners, LieAtTheCornersOfABoxNotOnItsEdges) {
    std::vector<uint8_t> samples(80 * 60, 40);
    for (int y = 20; y < 40; y++)
        std::fill_n(samples.begin() + y * 80 + 20, 40, uint8_t{200});
    // The window is most distinct with the corner near its own corner.
    const auto features = cornersOf(samples, 80, 60, 4);
    ASSERT_EQ(features.size(), 4u);
    for (const Vector corner : {Vector{19.5, 19.5}, {59.5, 19.5}, {19.5, 39.5}, {59.5, 39.5}})
        EXPECT_TRUE(
            std::ranges::any_of(features, [&](Vector f) { return (f - corner).squaredLength() < 26; }));
    EXPECT_TRUE(cornersOf(std::vector<uint8_t>(80 * 60, 90), 80, 60, 128).empty());
    EXPECT_TRUE(cornersOf(std::vector<uint8_t>(3 * 3, 90), 3, 3, 128).empty());
}

TEST(Corners, AreSpreadOverTheCells) {
    // Strong texture in the left quarter, weak texture elsewhere.
    std::vector<uint8_t> samples;
    for (int y = 0; y < 120; y++)
        for (int x = 0; x < 200; x++)
            samples.push_back(
                static_cast<uint8_t>(60 + (x < 50 ? 150 : 20) * test::valueNoise(x / 3.0, y / 3.0, 5)));
    const auto features = cornersOf(samples, 200, 120, 128);
    EXPECT_EQ(features.size(), 128u);
    std::array<int, 20> cells{};
    for (size_t i = 0; i < features.size(); i++) {
        cells[static_cast<size_t>(static_cast<int>(features[i].y) / 30 * 5 +
                                  static_cast<int>(features[i].x) / 40)]++;
        for (size_t k = 0; k < i; k++)
            EXPECT_GE((features[i] - features[k]).squaredLength(), 25);
    }
    for (int inCell : cells)
        EXPECT_GE(inCell, 5);
}

TEST(LumaPyramid, LevelsAreMeansInComparisonTones) {
    test::BracketSettings settings;
    settings.width = 3300; // two levels finer than the kept ones
    settings.height = 90;
    test::Bracket bracket(settings);
    const Offscreen &picture = bracket.pictures[1];
    for (int i = 0; i < settings.width * settings.height;
         i++) // crushed and clipped spots of a level 2 sample
        if (const double spot = test::valueNoise(i % settings.width / 4, i / settings.width / 4, 9);
            spot < 0.3 || spot > 0.7)
            picture.ppu8Plane[0][2 * i] = spot < 0.3 ? 0 : 255;
    std::array<uint8_t, 256> halved;
    for (size_t i = 0; i < 256; i++)
        halved[i] = static_cast<uint8_t>(i / 2);
    const ComparisonTones tones = comparisonTones(halved.data());
    EXPECT_EQ(tones[4 * 17], kCrushed);
    EXPECT_EQ(tones[4 * 230], kClipped);
    EXPECT_EQ(tones[4 * 100], 50);
    EXPECT_EQ(tones[4 * 101 + 2], 50 + 1); // half way from 50 to 51, rounded
    LumaPyramid pyramid;
    ASSERT_EQ(pyramid.build(nullptr, picture, tones), HDR_OK);
    ASSERT_EQ(pyramid.levelOfSide(LumaPyramid::kLongestKeptSide), 2);
    for (int level : {0, 1, 2}) {
        const int size = 1 << level;
        std::array<uint8_t, 12 * 7> window;
        pyramid.read(level, 21, 3, 12, 7, window.data());
        for (int i = 0; i < 12 * 7; i++) {
            int sum = 0;
            for (int y = 0; y < size; y++)
                for (int x = 0; x < size; x++)
                    sum += picture.ppu8Plane[0][((3 + i / 12) * size + y) * picture.pi32Pitch[0] +
                                                2 * ((21 + i % 12) * size + x)];
            EXPECT_EQ(window[static_cast<size_t>(i)], tones[static_cast<size_t>(4 * sum / (size * size))])
                << level;
        }
    }
    // Level 3 from level 2: the mean of four, but where three of them are crushed or clipped.
    const Plane<const uint8_t> fine = pyramid.level(2), coarse = pyramid.level(3);
    for (int i = 0; i < coarse.width * coarse.height; i++) {
        const int x = i % coarse.width, y = i / coarse.width;
        const std::array four = {fine(2 * x, 2 * y), fine(2 * x + 1, 2 * y), fine(2 * x, 2 * y + 1),
                                 fine(2 * x + 1, 2 * y + 1)};
        const int mean = std::clamp((four[0] + four[1] + four[2] + four[3] + 2) / 4, 1, 254);
        EXPECT_EQ(coarse(x, y), std::ranges::count(four, kCrushed) >= 3   ? kCrushed
                                : std::ranges::count(four, kClipped) >= 3 ? kClipped
                                                                          : mean);
    }
    // Outside the picture there is nothing.
    std::array<uint8_t, 9> corner;
    pyramid.read(2, -2, -2, 3, 3, corner.data());
    EXPECT_TRUE(std::all_of(corner.begin(), corner.end() - 1, [](uint8_t v) { return v == kCrushed; }));
    EXPECT_EQ(corner[8], fine(0, 0));
}

} // namespace
} // namespace hdr
