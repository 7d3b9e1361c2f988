// SPDX-License-Identifier: MIT
#include "engine/render/tone_tables.h"

#include "tests/support/arena.h"
#include "tests/support/reduced_run.h"

#include <algorithm>
#include <array>
#include <gtest/gtest.h>
#include <vector>

namespace hdr {
namespace {

/// A merged run whose tone tables are to be built, once.
struct ToneRun : test::ReducedRun {
    ToneRun() : ReducedRun(48, 32) {
        makeMaps();
        context.merge.mergeTable = mergeTable.data();
        context.merge.smoothingMergeTable = mergeTable.data();
        context.smoothingFlag = 1;
        context.firstMerge.darkFraction = 100;
        context.toneLength = 25;
    }
    HdrStatus build(MemContext *arena = nullptr) { return build_render_tables(arena, &context, &picture); }
    /// 12-bit level through the brightness curve alone, and 8-bit output level with the contrast after it.
    int brightness(int level) const { return tables.contrastCurve12[level]; }
    int output(int level) const { return tables.contrastCurve8[level]; }

    std::vector<uint16_t> mergeTable = std::vector<uint16_t>(kMergeTableSize);
    const Offscreen picture = {HDR_FORMAT_YUY2, 384, 256, {}, {}};
    const Tables &tables = context.tables;
};

TEST(ToneTables, ControlsBecomeStrengths) {
    struct Case {
        int length, saturation, smoothing, differenceU, differenceV;
        int contrast, chroma;
    };
    for (const Case &c : {Case{25, 0, 0, 0, 0, 5, 0},         // nothing asked for
                          Case{35, 40, 1, 0, 0, 25, 40},      // the longest tone without a boost
                          Case{36, 40, 1, 0, 0, 27, 42},      // boost 2
                          Case{45, 40, 1, 8, -7, 45, 60},     // boost 20
                          Case{45, 40, 1, -8, 8, 45, 40},     // colours disagree: no boost for them
                          Case{100, 20, 1, 16, 0, 155, 60},   // nor much of one
                          Case{100, 20, 1, 0, 0, 155, 100},   // boost 130, at most 100
                          Case{120, 0, 1, 0, 0, 195, 100}}) { // a lengthened single exposure
        ToneRun run;
        run.context.toneLength = c.length;
        run.context.toneSaturation = c.saturation;
        run.context.smoothingFlag = c.smoothing;
        run.context.check.colourDifferenceU = c.differenceU;
        run.context.check.colourDifferenceV = c.differenceV;
        ASSERT_EQ(run.build(), HDR_OK);
        EXPECT_EQ(run.tables.contrastKey, c.contrast) << "tone length " << c.length;
        EXPECT_EQ(run.tables.sCurveKey, c.chroma) << "tone length " << c.length;
    }
}

TEST(ToneTables, OutputLuminanceIsContrastAfterBrightness) {
    ToneRun plain;
    ASSERT_EQ(plain.build(), HDR_OK);
    // Contrast 25: a slope of 0.125 on tents of height 368 and 1679. Brightness 0 changes nothing.
    for (const auto &[level, curved] :
         {std::array{0, 0}, {368, 368 - 46}, {736, 736}, {2416, 2416 + 209}, {4095, 4095}})
        EXPECT_EQ(plain.output(level), kGammaCompress[curved]);

    // From tone length 36 on 5 is taken off the brightness: 50 maps 2048 to 2836.
    for (const auto &[length, brightness, level] : {std::array{35, 0, 2048}, {36, 5, 2048}, {37, 55, 2836}}) {
        ToneRun run;
        run.context.toneLength = length;
        run.context.brightness = brightness;
        ASSERT_EQ(run.build(), HDR_OK);
        EXPECT_EQ(run.brightness(2048), level);
        if (length == 37) { // contrast 29 raises that by (1679 - 420) x 0.145
            EXPECT_EQ(run.output(2048), kGammaCompress[2836 + 182]);
        }
    }
    ToneRun lifted;
    lifted.context.scene.shadowLiftFlag = 1;
    ASSERT_EQ(lifted.build(), HDR_OK);
    EXPECT_EQ(lifted.brightness(1024), 1197);
}

TEST(ToneTables, BrightnessCurveIsAPowerOfTheComplement) {
    ToneRun run;
    constexpr std::array kLevelsSeen = {0, 100, 1024, 2048, 4000, 4030, 4095};
    struct Case {
        int brightness;
        double gamma;
        std::array<int, 7> values;
    };
    for (const Case &c : {Case{50, 1.0, {2, 170, 1585, 2836, 4088, 4091, 4095}},
                          Case{-50, 1.0, {1, 60, 638, 1372, 3648, 3755, 4095}},
                          Case{0, 1.2, {1, 121, 1197, 2314, 4050, 4066, 4095}},
                          Case{0, 1.0, {0, 100, 1024, 2048, 4000, 4030, 4095}}}) {
        const std::vector<uint8_t> before(run.tables.contrastCurve8, run.tables.contrastCurve8 + kLevels12);
        build_brightness_curve(&run.context, c.brightness, 0, 4096, c.gamma);
        for (size_t i = 0; i < kLevelsSeen.size(); i++)
            EXPECT_EQ(run.brightness(kLevelsSeen[i]), c.values[i])
                << c.brightness << " at " << kLevelsSeen[i];
        const uint16_t *curve = run.tables.contrastCurve12;
        EXPECT_TRUE(std::is_sorted(curve, curve + kLevels12));
        for (size_t i = 0; i < kLevels12; i++)
            ASSERT_EQ(run.tables.contrastCurve8[i], before[curve[i]]);
    }
    build_brightness_curve(&run.context, 10, 1000, 3000, 1.0);
    EXPECT_EQ(run.brightness(999), 0);
    EXPECT_EQ(run.brightness(1024), 58);
    EXPECT_EQ(run.brightness(3000), 4095);
}

TEST(ToneTables, SCurves) {
    ToneRun run;
    const uint8_t *curve = run.tables.sCurve8;
    // An ordinary strength is held twice.
    std::vector<uint8_t> ordinary(4096);
    buildSCurve(ordinary.data(), 60);
    build_scurve(&run.context, 60);
    for (size_t i = 0; i < 8192; i++)
        ASSERT_EQ(curve[i], ordinary[i % 4096]);
    // Strength 150: steps of 3200 + 256 in 1/256, so that k becomes k + 13.5 k.
    build_scurve(&run.context, 150);
    for (int k = 1; k < 1024; k++) {
        const int stretched = k + (k * 3456) / 256;
        ASSERT_EQ(curve[k], 0);
        ASSERT_EQ(curve[2048 - k], std::max(2048 - stretched, 0) / 16) << k;
        ASSERT_EQ(curve[2048 + k], std::min(2048 + stretched, 4095) / 16) << k;
        ASSERT_EQ(curve[4096 - k], 255);
    }
    EXPECT_EQ(curve[0] + curve[1024], 0);
    EXPECT_EQ(curve[2048], 128);
    EXPECT_EQ(curve[3072], 255);
    // It stands for 100 until another strength is asked for.
    build_scurve(&run.context, 100);
    EXPECT_EQ(curve[1548], 0) << "an ordinary strength of 100 has 65 here";
    build_scurve(&run.context, 99);
    EXPECT_EQ(curve[1000], (1000 - 990) >> 4);
}

TEST(ToneTables, DetailGainRisesToItsLimit) {
    ToneRun run;
    HdrContext &context = run.context;
    uint16_t *gain = context.tables.detailGain;
    const auto values = [gain] {
        return std::array<int, 5>{gain[1], gain[100], gain[512], gain[2048], gain[32767]};
    };
    gain[32768] = 77;
    build_detail_gain(gain, 25, 1024);
    EXPECT_EQ(values(), (std::array<int, 5>{1025, 1098, 1422, 1957, 1991}));
    EXPECT_TRUE(std::is_sorted(gain, gain + 32768));
    EXPECT_EQ(gain[0], 1024);
    EXPECT_EQ(gain[32768], 77) << "no curve writes the lowest index";
    EXPECT_TRUE(std::all_of(gain + 32769, gain + 65536, [](int value) { return value == 1024; }));
    build_detail_gain(gain, 100, 1024);
    EXPECT_EQ(values(), (std::array<int, 5>{1026, 1253, 2745, 11675, 14639}));
    build_detail_gain(gain, 160, 1024);
    EXPECT_EQ(values(), (std::array<int, 5>{1027, 1366, 4235, 43818, 65535}));
    for (int strength : {0, -3}) {
        gain[5] = 5;
        build_detail_gain(gain, strength, 1024);
        EXPECT_TRUE(std::all_of(gain, gain + 65536, [](int value) { return value == 1024; }));
    }
}

TEST(ToneTables, DetailStrengthFollowsTheScene) {
    struct Case {
        int length, smoothing, darkFraction, lowHighlight, sceneClass;
        int largestGain; ///< 1024 e^(0.0266 strength), truncated: the gain stops rising there
    };
    for (const Case &c : {Case{25, 0, 100, 1, 0, 1991}, // the tone length itself: 25
                          Case{35, 1, 16, 1, 0, 1991},  // less 10
                          Case{35, 1, 15, 1, 0, 1887},  // few dark pixels: 15 x 25 / 16 = 23
                          Case{60, 1, 16, 0, 3, 1991},  // 25 less in scene class 3
                          Case{35, 1, 16, 0, 2, 1991},  //
                          Case{35, 1, 16, 1, 3, 1991},  // but not when the dark exposure is dark throughout
                          Case{30, 1, 16, 0, 3, 1024}}) {
        ToneRun run;
        run.context.toneLength = c.length;
        run.context.smoothingFlag = c.smoothing;
        run.context.firstMerge.darkFraction = c.darkFraction;
        run.context.scene.lowHighlightFlag = c.lowHighlight;
        run.context.scene.sceneClass = c.sceneClass;
        ASSERT_EQ(run.build(), HDR_OK);
        EXPECT_EQ(run.tables.detailGain[32767], c.largestGain) << c.length << " " << c.darkFraction;
    }
    HdrContext empty{};
    EXPECT_EQ(set_detail_strength(nullptr, &empty, 10), HDR_ERR_NOMEM);
}

TEST(ToneTables, ReducedPicturesGoWhenTheyAreUsed) {
    ToneRun run;
    Preparation &preparation = run.context.preparation;
    // A failed tone map ends the step; what is freed from here on comes from this arena.
    for (Offscreen *&picture : preparation.registeredImages)
        offscreenFree(&picture, nullptr);
    test::Arena arena(64);
    EXPECT_EQ(run.build(arena.memory()), HDR_ERR_NOMEM);
    EXPECT_NE(preparation.workImages[0], nullptr);
    EXPECT_NE(preparation.mergedImage, nullptr);
    for (Offscreen *&picture : preparation.registeredImages)
        ASSERT_EQ(offscreenAlloc(&picture, 48, 32, HDR_FORMAT_YUV444, nullptr), HDR_OK);
    ASSERT_EQ(run.build(), HDR_OK);
    EXPECT_NE(run.context.localToneMap.map, nullptr);
    for (int input = 0; input < 3; input++) {
        EXPECT_EQ(preparation.workImages[input], nullptr);
        EXPECT_EQ(preparation.registeredImages[input], nullptr);
    }
    EXPECT_EQ(preparation.mergedImage, nullptr);
    EXPECT_EQ(preparation.toneImage, nullptr);
}

} // namespace
} // namespace hdr
