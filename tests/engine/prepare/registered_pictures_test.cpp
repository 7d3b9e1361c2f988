// SPDX-License-Identifier: MIT
#include "engine/prepare/registered_pictures.h"

#include "engine/core/plane.h"
#include "engine/prepare/features.h"
#include "engine/prepare/reduction.h"
#include "engine/prepare/tone_correction.h"
#include "engine/prepare/warp_grids.h"
#include "tests/support/picture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <random>
#include <vector>

namespace hdr {
namespace {

constexpr int kWidth = 48, kHeight = 32;

using Tones = std::array<uint8_t, 256>;

/// A reduced picture of one tint.
struct Luma : test::Picture {
    explicit Luma(const std::function<int(int, int)> &level, int u = 128, int v = 128)
        : Picture(HDR_FORMAT_YUV444, kWidth, kHeight, [] { return uint8_t{0}; }) {
        planes[1].assign(planes[1].size(), static_cast<uint8_t>(u));
        planes[2].assign(planes[2].size(), static_cast<uint8_t>(v));
        for (int y = 0; y < kHeight; y++)
            for (int x = 0; x < kWidth; x++)
                planeOf(record)(x, y) = static_cast<uint8_t>(level(x, y));
    }
    explicit Luma(int level, int u = 128, int v = 128) : Luma([level](int, int) { return level; }, u, v) {}
};

/// What the registered picture of an exposure becomes, in row 5, when its levels stand for `tones`.
std::vector<uint8_t> replaced(const Luma &reference, const Luma &own, const Tones &tones) {
    const Luma registered([&](int x, int y) { return tones[planeOf(own.record)(x, y)]; });
    EXPECT_EQ(replaceUnmeasurable(nullptr, reference.record, own.record, tones.data(), registered.record),
              HDR_OK);
    const uint8_t *row = planeOf(registered.record).row(5);
    return {row, row + kWidth};
}

Tones makeTones(const std::function<size_t(size_t)> &level) {
    Tones tones;
    for (size_t i = 0; i < tones.size(); i++)
        tones[i] = static_cast<uint8_t>(level(i));
    return tones;
}

TEST(ReplaceUnmeasurable, AnExposureCannotContradictWhatItCannotMeasure) {
    // Plain pictures: the exposure's level, and that level in the reference's tones.
    for (const auto &[reference, own, match, expected] : {
             std::array{225, 234, 190, 225}, // clipped: what is brighter is no contradiction
             {210, 226, 190, 210},
             {170, 234, 190, 170}, // the tones are not that exact
             {148, 234, 190, 162}, // 10 of 32 levels too dark: 176 / 256 of the way
             {60, 234, 190, 190},  // something dark stands there in the reference only
             {191, 190, 180, 180}, // not clipped
             {200, 209, 180, 190}, // half way up the ramp, half of the difference
             {18, 16, 40, 18},     // crushed: what is darker is no contradiction
             {60, 17, 40, 60},
             {180, 16, 40, 40},
             {60, 25, 40, 40},
             {234, 150, 228, 234}, // the reference can be clipped too
             {234, 60, 90, 90},
         }) {
        const Tones tones = makeTones([match = match](size_t) { return match; });
        EXPECT_EQ(replaced(Luma(reference), Luma(own), tones)[5], expected) << reference << ' ' << own;
    }
    // What the tones say beyond the levels of clipping and crushing means nothing.
    const Tones ends = makeTones([](size_t i) { return i > 226 ? 190 : i < 17 ? 20 : 100; });
    EXPECT_EQ(replaced(Luma(105), Luma(234), ends)[5], 105);
    EXPECT_EQ(replaced(Luma(95), Luma(10), ends)[5], 95);
}

TEST(ReplaceUnmeasurable, PixelsBesideClippedOnesAreClippedInPart) {
    // The reference sees the sky reach into column 20.
    const Luma own([](int x, int) { return x < 20 ? 234 : 120; });
    const Luma reference([](int x, int) { return x < 20 ? 220 : x == 20 ? 170 : 100; });
    const auto row = replaced(reference, own, makeTones([](size_t i) { return i < 200 ? 100 : 220; }));
    EXPECT_EQ(row[19], 220);
    EXPECT_EQ(row[20], 170);
    EXPECT_EQ(row[21], 100);
}

TEST(ReplaceUnmeasurable, ASaturatedColorClipsInOneChannel) {
    // The reference shows a red of 216, 66, 58 on the scale of luminance.
    const Luma reference(110, 98, 205);
    const Tones tones = makeTones([](size_t i) { return i * 8 / 10; });
    // 229, 89, 83: red is clipped, green and blue agree.
    EXPECT_EQ(replaced(reference, Luma(130, 101, 200), tones)[5], 110);
    // 228, 187, 149: a pale thing that stands in front of the red.
    EXPECT_GE(replaced(reference, Luma(195, 101, 152), tones)[5], 152);
    // Red of 131 + (351 x 58 + 128 >> 8) = 211 is clipped to 19 x 256 / 34 = 143 / 256, blue of
    // 67 + (444 x 80 + 128 >> 8) = 206 to 14 x 256 / 34 = 105 / 256.
    EXPECT_EQ(replaced(Luma(70), Luma(131, 128, 186), makeTones([](size_t) { return 100; }))[5],
              100 - 30 * 143 / 256);
    EXPECT_EQ(replaced(Luma(70), Luma(67, 208, 128), makeTones([](size_t) { return 100; }))[5],
              100 - 30 * 105 / 256);
}

class ToneCorrection : public testing::Test {
protected:
    Tones correct(const Luma &reference, const Luma &own, const Rect &valid) {
        Tones tones{};
        EXPECT_EQ(correctTones(nullptr, planeOf(reference.record), planeOf(own.record), valid,
                               identity.data(), tones),
                  HDR_OK);
        return tones;
    }
    Tones identity = makeTones([](size_t i) { return i; });
    const Rect whole = {0, 0, kWidth, kHeight};
};

TEST_F(ToneCorrection, MovesLevelsThatMeetOthersFarFromTheirMatch) {
    // 48 levels from 20 on, each on 32 pixels; from 44 on the reference shows them 30 levels higher.
    const auto ramp = [](int x, int) { return 20 + x; };
    const Luma own(ramp), reference([&](int x, int y) { return ramp(x, y) + (x >= 24 ? 30 : 0); });
    const auto tones = correct(reference, own, whole);
    EXPECT_EQ(tones[30], 30);
    EXPECT_EQ(tones[60], 60 + 24); // but for the few levels that are left alone
    EXPECT_EQ(tones[200], 200 + 24);
    EXPECT_EQ(tones[10], 10);
    // Outside the valid rectangle nothing is counted.
    EXPECT_EQ(correct(reference, own, {0, 0, 24, kHeight}), identity);
}

TEST_F(ToneCorrection, LeavesSmallDifferencesAndUnequalPartnersAlone) {
    const auto ramp = [](int x, int) { return 20 + 2 * x; };
    const Luma own(ramp), little([&](int x, int y) { return ramp(x, y) + 5; });
    EXPECT_EQ(correct(little, own, whole), identity);
    // A grey block, on level 200 alone, stands where the reference shows the ground, whose levels meet
    // themselves.
    const auto inBlock = [](int x, int y) { return x >= 20 && x < 28 && y >= 4 && y < 28; };
    const Luma ground([](int x, int) { return 100 + x / 2; });
    const Luma block([&](int x, int y) { return inBlock(x, y) ? 200 : 100 + x / 2; });
    EXPECT_EQ(correct(ground, block, whole), identity);
}

TEST_F(ToneCorrection, KnowsWhereTheReferenceIsClippedAndNeverFalls) {
    // Each own level on 32 pixels; the reference shows twice as much and is clipped from level 115 on. Fitted
    // tones fall where few pixels guide them.
    const Luma own([](int x, int) { return 60 + 3 * x; });
    const Luma reference([](int x, int) { return std::min(2 * (60 + 3 * x), 234); });
    identity = makeTones([](size_t i) { return i < 150 ? std::min<size_t>(2 * i, 234) : 234 - (i - 150); });
    const auto tones = correct(reference, own, whole);
    EXPECT_EQ(tones[100], 200);
    for (size_t i = 120; i < 256; i++)
        EXPECT_GE(tones[i], 228) << i;
    EXPECT_TRUE(std::is_sorted(tones.begin(), tones.end()));
}

/// Where the input shows what the reference has in reduced pixel (x, y): the slow way, with the displacement
/// in floating point.
BlockCorner displacedCorner(const Alignment &alignment, int x, int y) {
    const Vector displacement =
        warpDisplacement(alignment, 0, fullPosition({static_cast<double>(x), static_cast<double>(y)}));
    return {8 * x - static_cast<int>(std::floor(displacement.x + 0.5)),
            8 * y - static_cast<int>(std::floor(displacement.y + 0.5))};
}

TEST(ReduceAligned, FollowsTheDisplacementToTheNearestPixel) {
    const test::Picture picture(HDR_FORMAT_YUY2, 644, 533, test::noise(3));
    std::minstd_rand random(5);
    std::uniform_int_distribution<int> offset(-40, 40);
    Alignment alignment{};
    alignment.warpWidth = warpNodeCount(644);
    alignment.warpHeight = warpNodeCount(533);
    std::vector<int32_t> grids(2 * static_cast<size_t>(alignment.warpWidth * alignment.warpHeight));
    alignment.warpX[0] = grids.data();
    alignment.warpY[0] = grids.data() + grids.size() / 2;
    for (const auto &[shiftX, shiftY] : {std::array{0, 0}, {-31, 55}, {70, -64}}) {
        std::generate(grids.begin(), grids.end(), [&] { return offset(random); });
        alignment.globalShift[0][0] = shiftX;
        alignment.globalShift[0][1] = shiftY;
        const int width = 80, height = 66;
        test::Picture reduced(HDR_FORMAT_YUV444, width, height, test::noise(4));
        Rect valid;
        ASSERT_EQ(reduceAligned(nullptr, alignment, 0, picture.record, reduced.record, valid), HDR_OK);
        for (int y = 0; y < height; y++) {
            for (int x = 0; x < width; x++) {
                const BlockCorner wanted = displacedCorner(alignment, x, y);
                const BlockCorner inside = {std::clamp(wanted.x, 0, 644 - 8),
                                            std::clamp(wanted.y, 0, 533 - 8)};
                test::Picture expected(HDR_FORMAT_YUV444, 1, 1, test::noise(4));
                reduceBlocks(&picture.record, &expected.record, 0, &inside);
                for (int plane = 0; plane < 3; plane++)
                    ASSERT_EQ(planeOf(reduced.record, plane)(x, y), planeOf(expected.record, plane)(0, 0))
                        << plane << " at " << x << ", " << y;
                if (inside.x != wanted.x || inside.y != wanted.y) {
                    EXPECT_FALSE(x >= valid.x0 && x < valid.x1 && y >= valid.y0 && y < valid.y1);
                }
            }
        }
        EXPECT_GT(valid.x1 - valid.x0, width / 2);
        EXPECT_GT(valid.y1 - valid.y0, height / 2);
    }
}

} // namespace
} // namespace hdr
