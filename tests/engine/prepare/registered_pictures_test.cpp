// SPDX-License-Identifier: MIT
#include "engine/prepare/registered_pictures.h"

#include "engine/core/memory.h"
#include "engine/core/plane.h"
#include "engine/prepare/features.h"
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

/// A luminance plane as a reduced picture, of one tint.
struct Luma {
    std::vector<uint8_t> samples = std::vector<uint8_t>(kWidth * kHeight);
    std::vector<uint8_t> u = std::vector<uint8_t>(kWidth * kHeight, uint8_t{128}), v = u;
    Offscreen record{
        HDR_FORMAT_YUV444, kWidth, kHeight, {samples.data(), u.data(), v.data()}, {kWidth, kWidth, kWidth}};

    explicit Luma(const std::function<int(int, int)> &level) {
        for (int y = 0; y < kHeight; y++)
            for (int x = 0; x < kWidth; x++)
                samples[static_cast<size_t>(y * kWidth + x)] = static_cast<uint8_t>(level(x, y));
    }
    explicit Luma(int level) : Luma([level](int, int) { return level; }) {}
    Luma(const Luma &) = delete;
    Luma &operator=(const Luma &) = delete;
    uint8_t at(int x, int y) const { return samples[static_cast<size_t>(y * kWidth + x)]; }
};

/// What becomes of plain pictures: `own` is the exposure's level, `match` that level in the reference's
/// tones.
int replaced(int reference, int own, int match) {
    Luma registered(match);
    const std::vector<uint8_t> tones(256, static_cast<uint8_t>(match));
    replaceUnmeasurable(nullptr, Luma(reference).record, Luma(own).record, tones.data(), registered.record);
    return registered.at(5, 5);
}

TEST(ReplaceUnmeasurable, AClippedExposureCannotContradictABrighterReference) {
    EXPECT_EQ(replaced(225, 234, 190), 225);
    EXPECT_EQ(replaced(210, 226, 190), 210);
    EXPECT_EQ(replaced(170, 234, 190), 170); // the tones are not that exact
    EXPECT_EQ(replaced(60, 234, 190), 190);  // something dark stands there in the reference only
    EXPECT_EQ(replaced(191, 190, 180), 180); // not clipped
    // Softly: half way up the ramp, half of the difference.
    EXPECT_EQ(replaced(200, 209, 180), 190);
    // What the tones say beyond the level of clipping means nothing.
    std::vector<uint8_t> tones(256, 100);
    std::fill(tones.begin() + 227, tones.end(), uint8_t{190});
    Luma registered(190);
    replaceUnmeasurable(nullptr, Luma(105).record, Luma(234).record, tones.data(), registered.record);
    EXPECT_EQ(registered.at(5, 5), 105);
}

TEST(ReplaceUnmeasurable, ACrushedExposureCannotContradictADarkerReference) {
    EXPECT_EQ(replaced(18, 16, 40), 18);
    EXPECT_EQ(replaced(60, 17, 40), 60);
    EXPECT_EQ(replaced(180, 16, 40), 40);
    EXPECT_EQ(replaced(60, 25, 40), 40);
}

TEST(ReplaceUnmeasurable, TheReferenceCanBeClippedToo) {
    EXPECT_EQ(replaced(234, 150, 228), 234);
    EXPECT_EQ(replaced(234, 60, 90), 90);
}

TEST(ReplaceUnmeasurable, PixelsBesideClippedOnesAreClippedInPart) {
    const auto sky = [](int x, int) { return x < 20 ? 234 : 120; };
    Luma own(sky), registered([](int x, int) { return x < 20 ? 220 : 100; });
    // The reference sees the sky reach into column 20.
    Luma reference([](int x, int) { return x < 20 ? 220 : x == 20 ? 170 : 100; });
    std::vector<uint8_t> tones(256, 100);
    std::fill(tones.begin() + 200, tones.end(), uint8_t{220});
    replaceUnmeasurable(nullptr, reference.record, own.record, tones.data(), registered.record);
    EXPECT_EQ(registered.at(19, 9), 220);
    EXPECT_EQ(registered.at(20, 9), 170);
    EXPECT_EQ(registered.at(21, 9), 100);
}

TEST(ReplaceUnmeasurable, ASaturatedColorClipsInOneChannel) {
    // The reference shows a red of 216, 66, 58 on the scale of luminance.
    std::vector<uint8_t> tones(256);
    for (size_t i = 0; i < tones.size(); i++)
        tones[i] = static_cast<uint8_t>(i * 8 / 10);
    const auto registeredAs = [&](uint8_t ownLevel, uint8_t ownV) {
        Luma reference(110), own(ownLevel), registered(tones[ownLevel]);
        std::fill(reference.u.begin(), reference.u.end(), uint8_t{98});
        std::fill(reference.v.begin(), reference.v.end(), uint8_t{205});
        std::fill(own.u.begin(), own.u.end(), uint8_t{101});
        std::fill(own.v.begin(), own.v.end(), ownV);
        EXPECT_EQ(replaceUnmeasurable(nullptr, reference.record, own.record, tones.data(), registered.record),
                  HDR_OK);
        return registered.at(5, 5);
    };
    EXPECT_EQ(registeredAs(130, 200), 110); // 229, 89, 83: red is clipped, green and blue agree
    EXPECT_GE(registeredAs(195, 152), 152); // 228, 187, 149: a pale thing that stands in front of the red
}

class ToneCorrection : public testing::Test {
protected:
    std::array<uint8_t, 256> correct(const Luma &reference, const Luma &own, const Rect &valid) {
        std::array<uint8_t, 256> tones{};
        EXPECT_EQ(correctTones(nullptr, planeOf(reference.record), planeOf(own.record), valid,
                               identity.data(), tones),
                  HDR_OK);
        return tones;
    }
    void SetUp() override {
        for (size_t i = 0; i < 256; i++)
            identity[i] = static_cast<uint8_t>(i);
    }
    std::array<uint8_t, 256> identity;
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
    for (size_t i = 0; i < 256; i++)
        identity[i] = static_cast<uint8_t>(i < 150 ? std::min<size_t>(2 * i, 234) : 234 - (i - 150));
    const auto tones = correct(reference, own, whole);
    EXPECT_EQ(tones[100], 200);
    for (size_t i = 120; i < 256; i++)
        EXPECT_GE(tones[i], 228) << i;
    EXPECT_TRUE(std::is_sorted(tones.begin(), tones.end()));
}

/// The reduced samples of the block that the input shows where the reference has reduced pixel (x, y), or
/// false when some of it lies outside: the slow way, with the displacement in floating point.
bool reducedBlock(const Alignment &alignment, const Offscreen &picture, int x, int y,
                  std::array<int, 3> &reduced) {
    const Vector centre = fullPosition({static_cast<double>(x), static_cast<double>(y)});
    const Vector displacement = warpDisplacement(alignment, 0, centre);
    const int wantedX = 8 * x - static_cast<int>(std::floor(displacement.x + 0.5));
    const int wantedY = 8 * y - static_cast<int>(std::floor(displacement.y + 0.5));
    const int left = std::clamp(wantedX, 0, picture.i32Width - 8);
    const int top = std::clamp(wantedY, 0, picture.i32Height - 8);
    for (int channel = 0; channel < 3; channel++) {
        int firstEight = 0, sample = 0;
        for (int i = 0; i < 9; i++) {
            firstEight += sample;
            const int lumaColumn = left + std::array{0, 2, 6}[static_cast<size_t>(i % 3)];
            const int pair = left / 2 + std::array{0, 1, 3}[static_cast<size_t>(i % 3)];
            const int column = channel == 0 ? 2 * lumaColumn : 4 * pair + 2 * channel - 1;
            sample = picture.ppu8Plane[0][(top + 3 * (i / 3)) * picture.pi32Pitch[0] + column];
        }
        reduced[static_cast<size_t>(channel)] = (firstEight / 8 * 8 + sample) * 116508 / 1048576;
    }
    return left == wantedX && top == wantedY;
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
        std::vector<uint8_t> samples(3 * width * height);
        Offscreen reduced = {
            HDR_FORMAT_YUV444,
            width,
            height,
            {samples.data(), samples.data() + width * height, samples.data() + 2 * width * height},
            {width, width, width}};
        Rect valid;
        ASSERT_EQ(reduceAligned(nullptr, alignment, 0, picture.record, reduced, valid), HDR_OK);
        for (int y = 0; y < height; y++) {
            for (int x = 0; x < width; x++) {
                std::array<int, 3> expected;
                const bool inside = reducedBlock(alignment, picture.record, x, y, expected);
                for (int plane = 0; plane < 3; plane++)
                    ASSERT_EQ(planeOf(reduced, plane)(x, y), expected[static_cast<size_t>(plane)])
                        << plane << " at " << x << ", " << y;
                if (!inside) {
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
