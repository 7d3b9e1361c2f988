// SPDX-License-Identifier: MIT
#include "engine/prepare/registered_pictures.h"

#include "engine/core/memory.h"
#include "engine/core/plane.h"
#include "engine/prepare/tone_correction.h"

#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <vector>

namespace hdr {
namespace {

constexpr int kWidth = 48, kHeight = 32;

/// A luminance plane as a reduced picture.
struct Luma {
    std::vector<uint8_t> samples = std::vector<uint8_t>(kWidth * kHeight);
    Offscreen record{HDR_FORMAT_YUV444, kWidth, kHeight, {samples.data()}, {kWidth}};

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
    replaceUnmeasurable(Luma(reference).record, Luma(own).record, tones.data(), registered.record);
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
    replaceUnmeasurable(Luma(105).record, Luma(234).record, tones.data(), registered.record);
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
    replaceUnmeasurable(reference.record, own.record, tones.data(), registered.record);
    EXPECT_EQ(registered.at(19, 9), 220);
    EXPECT_EQ(registered.at(20, 9), 170);
    EXPECT_EQ(registered.at(21, 9), 100);
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

} // namespace
} // namespace hdr
