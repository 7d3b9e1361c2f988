// SPDX-License-Identifier: MIT
#include "engine/check/scene_analysis.h"

#include "engine/core/context.h"
#include "engine/core/tables.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <initializer_list>
#include <tuple>
#include <utility>
#include <vector>

namespace hdr {
namespace {

/// Levels of the quantiles 1 to 16.
using Quantiles = std::array<int, 16>;
using Histogram = std::array<uint32_t, 256>;

Quantiles ramp(int before, int step) {
    Quantiles levels;
    for (int k = 1; k <= 16; k++)
        levels[static_cast<size_t>(k - 1)] = before + step * k;
    return levels;
}

/// A histogram of `pixels` samples with exactly these quantiles.
Histogram spread(const Quantiles &levels, int pixels) {
    Histogram histogram{};
    uint32_t before = 0;
    for (uint32_t k = 1; k <= 16; k++) {
        const uint32_t upTo = k * static_cast<uint32_t>(pixels) >> 4;
        histogram[static_cast<size_t>(levels[k - 1])] += upTo - before;
        before = upTo;
    }
    return histogram;
}

int linear(int level) {
    return kGammaExpand[level];
}

/// An ordinary scene of 320000 reduced pixels that each test changes in one respect.
class SceneAnalysisTest : public testing::Test {
protected:
    SceneAnalysisTest() {
        context.tables.gammaExpand = kGammaExpand;
        context.tables.gammaCompress = kGammaCompress;
        Preparation &preparation = context.preparation;
        preparation.darkIndex = 1;
        preparation.brightIndex = 2;
        preparation.midIndex = 0;
        for (size_t i = 0; i < 3; i++) {
            curves[i].assign(kLevels12, 0xFFFF);
            preparation.toneCurve[i] = curves[i].data();
        }
        setGains(1500, 700, 500);
    }
    void setGains(uint32_t darkGain, uint32_t midGain, uint32_t brightGain) {
        context.preparation.exposureGainQ10[1] = darkGain;
        context.preparation.exposureGainQ10[0] = midGain;
        context.preparation.exposureGainQ10[2] = brightGain;
    }
    const SceneAnalysis &analyse(const Histogram &darkCounts, const Histogram &brightCounts,
                                 const Histogram &midCounts) {
        context.scene = {};
        sceneAnalysis(&context, darkCounts.data(), brightCounts.data(), midCounts.data(), pixels);
        return context.scene;
    }
    const SceneAnalysis &analyse() {
        return analyse(spread(dark, pixels), spread(bright, pixels), spread(mid, pixels));
    }
    /// An analysis with some levels changed, which are then put back.
    SceneAnalysis with(std::initializer_list<std::pair<int *, int>> changes) {
        const std::array before = {dark, mid, bright};
        for (const auto &[level, value] : changes)
            *level = value;
        analyse();
        dark = before[0];
        mid = before[1];
        bright = before[2];
        return context.scene;
    }
    /// The quantiles of highlights and shadows; reference level, ghost threshold and step; the shadows' end,
    /// low and high, and factor.
    using Findings = std::array<int, 8>;
    Findings findings() {
        const SceneAnalysis &scene = analyse();
        return {scene.highIndex,     scene.lowIndex,  scene.referenceLevel, scene.ghostThreshold,
                scene.thresholdStep, scene.shadowLow, scene.shadowHigh,     scene.shadowFactor};
    }
    /// A dark exposure whose sixth quantile stays black on the stretched curve.
    void makeShadowsBlack() { dark = {0, 1, 2, 3, 4, 5, 20, 40, 60, 80, 100, 120, 140, 160, 180, 200}; }

    HdrContext context{};
    std::array<std::vector<uint16_t>, 3> curves;
    std::vector<uint16_t> &darkCurve = curves[1], &brightCurve = curves[2], &midCurve = curves[0];
    int pixels = 320000;
    Quantiles dark = ramp(16, 8), mid = ramp(6, 15), bright = ramp(52, 12);
};

TEST_F(SceneAnalysisTest, OrdinarySceneBuildsOneCurveOverEachExposuresLevels) {
    const SceneAnalysis &scene = analyse();
    EXPECT_EQ(scene.sceneClass, 0);
    EXPECT_EQ(scene.shadowLiftFlag, 0);
    EXPECT_EQ(scene.lowHighlightFlag, 1); // 144 < 224
    EXPECT_EQ(scene.flatHighlightFlag, 0);
    EXPECT_EQ(scene.darkShadowFlag, 0);
    EXPECT_EQ(scene.analysisLevel, 8);
    EXPECT_EQ(scene.curveShiftT, 2);
    EXPECT_EQ(scene.curveShiftU, 0);
    // The reference passes 240 after quantile 15 (231) and reaches 64 with quantile 4 (66).
    EXPECT_EQ(with({{&mid[15], 241}}).highIndex, 15);
    EXPECT_EQ(with({{&mid[15], 240}}).highIndex, 16);
    EXPECT_EQ(with({{&mid[3], 64}}).lowIndex, 4);
    EXPECT_EQ(with({{&mid[3], 63}}).lowIndex, 5);
    EXPECT_EQ(findings(), (Findings{15, 4, 231, 215, 16, 66, 98, 8}));

    // Dark levels 24 (twice) to 144 are 37 to 1142: T[16] = (1142 + 4095) / 2, ratio 2618 / 1105 = 155269 in
    // 1/65536; T[8] = (329 - 37) x (8 x 155269 + 9 x 65536) / 17.
    EXPECT_EQ(scene.targetCurve[0], 0);
    EXPECT_EQ(scene.targetCurve[1], 0);
    EXPECT_EQ(scene.targetCurve[8], 480);
    EXPECT_EQ(scene.targetCurve[16], 2618);
    // Each curve is straight from level to level, truncated before the bright one's factor of 4.
    for (const auto &[curve, levels, scale] :
         {std::tuple{&darkCurve, &dark, 1}, {&brightCurve, &bright, 4}, {&midCurve, &mid, 1}})
        for (size_t k = 1; k < 16; k++) {
            const int from = linear((*levels)[k - 1]), run = linear((*levels)[k]) - from;
            const int rise = scene.targetCurve[k + 1] - scene.targetCurve[k];
            for (int x = 0; x < run; x++)
                ASSERT_EQ((*curve)[static_cast<size_t>(from + x)],
                          scale * (scene.targetCurve[k] + x * rise / run));
        }
    EXPECT_EQ(darkCurve[36], 0);
    EXPECT_EQ(brightCurve[178], 0); // 60, four below the first level, is 179
    for (const auto &[curve, top] : {std::pair{&darkCurve, 1142}, {&brightCurve, 3705}, {&midCurve, 3774}}) {
        EXPECT_TRUE(std::is_sorted(curve->begin(), curve->end()));
        EXPECT_EQ(curve->back(), (*curve)[static_cast<size_t>(top - 1)]);
    }
}

TEST_F(SceneAnalysisTest, ClassesOfDarkScenes) {
    // The quantiles 0 to 4 add up to 24, 54 and 63, each the most that class 3 allows.
    dark = {3, 5, 6, 7, 10, 20, 30, 40, 50, 60, 70, 80, 90, 100, 110, 224};
    mid = {12, 13, 14, 15, 30, 45, 60, 75, 90, 105, 120, 150, 180, 200, 251, 252};
    bright = {12, 13, 14, 16, 60, 80, 100, 120, 140, 160, 249, 250, 252, 253, 254, 255};
    EXPECT_EQ(analyse().sceneClass, 3);
    EXPECT_EQ(context.scene.lowHighlightFlag, 0);
    EXPECT_EQ(with({{&dark[15], 223}}).lowHighlightFlag, 1);
    bright[3] = 17;
    EXPECT_EQ(analyse().sceneClass, 2);
    EXPECT_EQ(with({{&mid[14], 250}}).sceneClass, 1);
    for (const auto &[eleventh, expected] : {std::pair{248, 1}, {250, 2}, {251, 1}})
        EXPECT_EQ(with({{&bright[10], eleventh}, {&bright[11], eleventh + 1}}).sceneClass, expected);
    std::copy_n(std::array{40, 50, 55, 58}.begin(), 4, bright.begin()); // they now add up to 239
    EXPECT_EQ(analyse().sceneClass, 2);
    for (int *one : {&bright[3], &mid[3], &dark[3]})
        EXPECT_EQ(with({{one, *one + 1}}).sceneClass, 0);

    // Class 3 lasts in larger pictures only; its thresholds stand in both.
    bright = {12, 13, 14, 15, 60, 80, 100, 120, 140, 160, 180, 200, 210, 220, 230, 242};
    mid = {5, 10, 15, 20, 30, 45, 60, 75, 90, 105, 120, 150, 180, 200, 230, 246};
    makeShadowsBlack();
    for (int size : {200000, 199999}) {
        pixels = size;
        EXPECT_EQ(analyse().sceneClass, size == 200000 ? 3 : 1);
        EXPECT_EQ(context.scene.shadowLiftFlag, 0);
        // Quantile 4 is the first from 16 up, less 1.
        EXPECT_EQ(findings(), (Findings{15, 3, 230, 214, 16, 15, 79, 4}));
        EXPECT_EQ(with({{&mid[3], 16}}).lowIndex, 3);
        EXPECT_EQ(context.scene.targetCurve[6], 80); // 6 requantised: code 5 x 16
    }
    dark[15] = 255; // the common curve is that of the levels themselves
    EXPECT_EQ(with({{&dark[14], 223}}).targetCurve[6], 80);
    EXPECT_EQ(with({{&dark[14], 224}}).targetCurve[6], linear(5));
}

TEST_F(SceneAnalysisTest, ShadowLiftDependsOnSize) {
    makeShadowsBlack();
    // Up to 250000 pixels the lift is a passing marker: thresholds around quantile 1 (21), whose 20 takes
    // five halvings. The common curve is kept, since it is not dark throughout.
    pixels = 250000;
    EXPECT_EQ(analyse().shadowLiftFlag, 0);
    EXPECT_EQ(findings(), (Findings{15, 1, 231, 215, 16, 5, 21, 16}));
    EXPECT_EQ(context.scene.targetCurve[6], 6);
    EXPECT_EQ(context.scene.targetCurve[16], 3230);

    pixels = 250001;
    EXPECT_EQ(analyse().shadowLiftFlag, 1);
    EXPECT_EQ(findings(), (Findings{15, 1, 231, 215, 16, 21, 53, 8}));
    EXPECT_EQ(context.scene.targetCurve[6], 80);
    EXPECT_EQ(context.scene.targetCurve[16], 230 * 16);
    EXPECT_EQ(with({{&dark[15], 255}}).targetCurve[16], (linear(246) + 4095) / 2); // the reference's limit

    // Together with a scene class.
    mid = {5, 10, 15, 20, 30, 45, 60, 75, 90, 105, 120, 150, 180, 200, 230, 246};
    bright = {14, 15, 16, 17, 60, 80, 100, 120, 140, 160, 180, 200, 210, 220, 230, 242};
    EXPECT_EQ(analyse().sceneClass, 1);
    EXPECT_EQ(context.scene.shadowLiftFlag, 1);
    EXPECT_EQ(findings(), (Findings{15, 4, 230, 198, 8, 10, 10, 8})); // quantile 4, less 2

    // The reference's own curve is the limit of the requantised one: code 5 x 16 against 48.
    mid = {1, 2, 3, 4, 5, 28, 60, 75, 90, 105, 120, 150, 180, 200, 230, 246};
    EXPECT_EQ(analyse().targetCurve[6], 48); // 28 is 48 linear, x 1.015

    // A small picture is requantised when the curve is dark throughout. The bright exposure is lost in
    // quantile 1 already, which leaves level 0 as the shadow.
    pixels = 250000;
    dark = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 255};
    bright = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 255};
    mid = {0, 20, 21, 22, 23, 24, 25, 26, 27, 28, 29, 30, 31, 32, 224, 250};
    EXPECT_EQ(analyse().shadowLiftFlag, 0);
    EXPECT_EQ(findings(), (Findings{16, 2, 226, 226, 16, 20 - 16, 20, 16})); // the marker: 224, stretched
    EXPECT_EQ(with({{&dark[14], 63}}).targetCurve[15], 63 * 16);
    EXPECT_EQ(with({{&dark[14], 64}}).targetCurve[15], linear(64));
    pixels = 250001;
    makeShadowsBlack();
    dark[15] = 255;
    EXPECT_EQ(with({{&dark[5], 8}}).shadowLiftFlag, 1);
    EXPECT_EQ(with({{&dark[5], 9}}).shadowLiftFlag, 0);
}

TEST_F(SceneAnalysisTest, SmallestShadowLevelsOfTheLiftMarker) {
    makeShadowsBlack();
    pixels = 200000;
    setGains(1500, 639, 500);
    mid = ramp(-1, 15);
    mid[0] = 33; // a bright first quantile at little gain takes the shadow to level 0
    mid[1] = 34;
    mid[2] = 44;
    EXPECT_EQ(findings(), (Findings{16, 0, 239, 223, 16, -1, 0, 256}));
    setGains(1500, 640, 500);
    EXPECT_EQ(findings(), (Findings{16, 1, 239, 223, 16, 1, 33, 8})); // 32 takes six halvings
    mid[0] = 32;                                                      // 31 takes five
    EXPECT_EQ(findings(), (Findings{16, 1, 239, 223, 16, 16, 32, 16}));
    setGains(1500, 639, 500);
    EXPECT_EQ(analyse().lowIndex, 1);
}

TEST_F(SceneAnalysisTest, FlatHighlightsTakeTheReferencesCurve) {
    mid = ramp(10, 12); // quantile 15 at 190, top 202
    EXPECT_EQ(analyse().flatHighlightFlag, 1);
    EXPECT_EQ(context.scene.targetCurve[16], (2419 + 4095) / 2);
    EXPECT_EQ(findings(), (Findings{16, 5, 224, 224, 16, 70, 102, 8})); // its quantile 15: 2753, code 214

    // The common curve stays only where it and the reference's reach the highlights: quantile 15 at 192 or
    // more, the top at 248 or more.
    struct Case {
        int dark15, dark16, mid15, mid16, top;
    };
    for (const Case &c :
         {Case{200, 241, 223, 250, 3848}, // 3602 linear, stretched
          Case{200, 240, 223, 250, (3915 + 4095) / 2}, Case{150, 241, 223, 250, (3915 + 4095) / 2},
          Case{200, 241, 189, 250, (3915 + 4095) / 2}, Case{200, 241, 223, 247, (3809 + 4095) / 2}})
        EXPECT_EQ(
            with({{&dark[14], c.dark15}, {&dark[15], c.dark16}, {&mid[14], c.mid15}, {&mid[15], c.mid16}})
                .targetCurve[16],
            c.top)
            << c.dark15 << ' ' << c.dark16 << ' ' << c.mid15;

    // From 192 to 223 it takes a second sign: no pixels from 252 up.
    for (const auto &[fifteenth, top, flat] :
         {std::array{191, 252, 1}, {192, 252, 0}, {223, 251, 1}, {223, 252, 0}, {224, 251, 0}})
        EXPECT_EQ(with({{&mid[14], fifteenth}, {&mid[15], top}}).flatHighlightFlag, flat)
            << fifteenth << ' ' << top;

    // Or shadows that are black in both (0 + 0 + 1 + 2 + 3, and 0 + 4 + 5 + 6 + 10 or 11).
    makeShadowsBlack();
    mid = {4, 5, 6, 10, 20, 40, 60, 80, 100, 120, 140, 160, 180, 200, 223, 255};
    EXPECT_EQ(analyse().flatHighlightFlag, 1);
    EXPECT_EQ(with({{&mid[3], 11}}).flatHighlightFlag, 0);
}

TEST_F(SceneAnalysisTest, DarkExposureThatHoldsOnlyShadows) {
    // Quantiles at most their own number up to 14.
    dark = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 31, 100};
    EXPECT_EQ(analyse().darkShadowFlag, 1);
    EXPECT_EQ(context.scene.flatHighlightFlag, 0);
    EXPECT_EQ(findings(), (Findings{16, 4, 235, 235, 16, 66, 98, 8})); // 231, stretched
    EXPECT_EQ(context.scene.targetCurve[16], (3774 + 4095) / 2);

    // When no quantile is out of the shadows the shadow index follows the highlight index, here the topmost.
    mid = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 241, 242, 243, 244, 245};
    EXPECT_EQ(analyse().lowIndex, 12);
    EXPECT_EQ(context.scene.highIndex, 16);
    mid = ramp(6, 15);

    EXPECT_EQ(with({{&dark[14], 32}}).referenceLevel, 231);
    EXPECT_EQ(with({{&dark[13], 15}}).referenceLevel, 231);
    // Or no jump of 5 from 17 up before quantile 14, even where quantile 12 leaves its number.
    dark[11] = 13;
    dark[12] = 14;
    struct Case {
        int thirteenth, fourteenth, flag;
    };
    for (const Case &c :
         {Case{14, 15, 1}, Case{14, 17, 1}, Case{16, 21, 1}, Case{17, 22, 0}, Case{17, 21, 1}})
        EXPECT_EQ(with({{&dark[12], c.thirteenth}, {&dark[13], c.fourteenth}}).darkShadowFlag, c.flag)
            << c.thirteenth << ' ' << c.fourteenth;
    EXPECT_EQ(with({{&dark[11], 12}, {&dark[12], 17}, {&dark[13], 22}}).darkShadowFlag, 1);
    dark = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 13, 14, 15, 16, 17}; // no jump at all
    EXPECT_EQ(analyse().darkShadowFlag, 0);
}

TEST_F(SceneAnalysisTest, BrightExposureThatIsTooBright) {
    bright = ramp(61, 10); // first level 67 after the margin, top 221
    EXPECT_EQ(findings(), (Findings{15, 0, 231, 215, 16, 0, 32, 8}));
    EXPECT_EQ(context.scene.targetCurve[0], linear(67));
    EXPECT_EQ(context.scene.targetCurve[16], linear(221));
    bright = ramp(58, 10); // first level 64
    EXPECT_EQ(analyse().lowIndex, 4);
    EXPECT_EQ(context.scene.targetCurve[0], linear(64));

    // Up to one pixel in 1000 below does not count; where that takes it below 5 the first level is 0.
    struct Case {
        size_t level;
        uint32_t count;
        int first;
    };
    for (const Case &c : {Case{3, 320, linear(64)}, {3, 321, 0}, {4, 321, 0}, {5, 321, 1}}) {
        Histogram counts = spread(bright, pixels);
        counts[c.level] = c.count;
        analyse(spread(dark, pixels), counts, spread(mid, pixels));
        EXPECT_EQ(context.scene.targetCurve[0], c.first) << c.level << ' ' << c.count;
    }
}

TEST_F(SceneAnalysisTest, ShadowQuantile) {
    // Nothing qualifies below the reference's last unclipped quantile.
    mid = {4, 8, 12, 16, 20, 24, 28, 32, 36, 40, 44, 241, 242, 243, 244, 245};
    EXPECT_EQ(analyse().highIndex, 11);
    EXPECT_EQ(context.scene.lowIndex, 10);
    bright = ramp(40, 9);
    mid = {4, 8, 12, 16, 20, 24, 28, 32, 36, 40, 44, 48, 52, 56, 244, 245};
    EXPECT_EQ(analyse().highIndex, 14);
    EXPECT_EQ(context.scene.lowIndex, 12);
    // All clipped.
    mid = {241, 242, 243, 244, 245, 246, 247, 248, 249, 250, 251, 252, 253, 254, 255, 255};
    EXPECT_EQ(analyse().highIndex, 8);
    EXPECT_EQ(context.scene.lowIndex, 1);

    // The bright exposure is lost from its quantile 6 (2259) on; in tiny pictures from 5 (1518).
    mid = {4, 8, 12, 16, 20, 24, 28, 32, 36, 40, 44, 241, 242, 243, 244, 245};
    bright = {60, 80, 100, 130, 170, 200, 210, 220, 225, 230, 235, 238, 240, 243, 246, 250};
    pixels = 60000;
    EXPECT_EQ(analyse().lowIndex, 6);
    pixels = 59999;
    EXPECT_EQ(analyse().lowIndex, 5);
    // A quantile that is white in the bright exposure is one too far.
    bright = {1, 2, 3, 255, 255, 255, 255, 255, 255, 255, 255, 255, 255, 255, 255, 255};
    EXPECT_EQ(analyse().lowIndex, 3);

    // In a lifted scene the reference must show more than a quarter of the bright exposure's light: 72 of 288
    // does not, 87 of 346 does, and so does anything where the bright exposure is black.
    makeShadowsBlack();
    pixels = 320000;
    mid = {36, 40, 60, 75, 90, 105, 120, 135, 150, 165, 180, 195, 210, 220, 230, 255};
    bright = {75, 82, 95, 105, 115, 125, 135, 145, 155, 165, 175, 185, 195, 205, 215, 255};
    Histogram counts = spread(bright, pixels);
    counts[0] = 400;
    EXPECT_EQ(analyse(spread(dark, pixels), counts, spread(mid, pixels)).lowIndex, 2);
    bright[0] = 0;
    EXPECT_EQ(analyse().lowIndex, 1);
}

TEST_F(SceneAnalysisTest, ExposuresTooCloseOverrideThresholds) {
    struct Case {
        uint32_t dark, mid, bright;
        int reference, shadowLow, shadowHigh;
    };
    for (const Case &c : {Case{922, 769, 500, 256, 66, 98}, // 12 x 769 = 9228
                          {924, 770, 500, 231, 66, 98},
                          {900, 768, 500, 231, 66, 98},
                          {2000, 1000, 834, 231, 0, 0}, // 12 x 834 = 10008
                          {2000, 1002, 835, 231, 66, 98}}) {
        setGains(c.dark, c.mid, c.bright);
        EXPECT_EQ(findings(), (Findings{15, 4, c.reference, c.reference == 256 ? 256 : 215, 16, c.shadowLow,
                                        c.shadowHigh, 8}))
            << c.dark << ' ' << c.mid << ' ' << c.bright;
    }
    mid = ramp(10, 12); // the rule for flat highlights comes first
    setGains(922, 769, 500);
    EXPECT_EQ(analyse().referenceLevel, 256);
}

TEST_F(SceneAnalysisTest, SmallPicturesForgetColourDifferences) {
    struct Case {
        int pixels, darkU, darkV, level;
        bool forgotten;
    };
    mid[1] = 36;
    for (const Case &c : {Case{199999, 8, -8, 17, true},
                          {199999, 8, -8, 16, false},
                          {199999, -7, 8, 17, false},
                          {199999, 0, -6, 25, true},
                          {199999, 0, -6, 24, false},
                          {199999, 5, 0, 25, false},
                          {200000, 8, -8, 25, false}}) {
        pixels = c.pixels;
        mid[0] = c.level;
        context.check.colourDifferenceU = 3;
        context.check.colourDifferenceV = -4;
        context.check.colourDifferenceDarkU = c.darkU;
        context.check.colourDifferenceDarkV = c.darkV;
        const int low = c.forgotten ? 0 : 66, high = c.forgotten ? 0 : 98;
        EXPECT_EQ(findings(), (Findings{15, 4, 231, 215, 16, low, high, 8}));
        EXPECT_EQ(context.check.colourDifferenceU, c.forgotten ? 0 : 3);
        EXPECT_EQ(context.check.colourDifferenceV, c.forgotten ? 0 : -4);
        EXPECT_EQ(context.check.colourDifferenceDarkU, c.darkU);
        EXPECT_EQ(context.check.colourDifferenceDarkV, c.darkV);
    }
}

TEST_F(SceneAnalysisTest, ClippedHighlightsOfTheReferenceAreFlat) {
    const auto isFlatFrom = [this](int level) {
        return midCurve[static_cast<size_t>(linear(level) - 1)] == midCurve.back();
    };
    // From quantile 15 where that is above 248, else from quantile 16; a white one does not count.
    for (const auto &[fifteenth, top, flat] :
         {std::array{249, 253, 1}, {248, 253, 0}, {249, 255, 1}, {248, 255, 0}}) {
        with({{&mid[14], fifteenth}, {&mid[15], top}});
        EXPECT_FALSE(isFlatFrom(mid[13]));
        EXPECT_EQ(isFlatFrom(fifteenth), flat) << fifteenth << ' ' << top;
        EXPECT_TRUE(isFlatFrom(top));
    }
    // A dark common curve (the bright exposure's levels, 150 at most) is cut at quantile 15 when but a few
    // pixels of the reference lie from 248 up.
    bright = ramp(38, 7);
    mid[14] = 231;
    for (int top : {247, 248}) {
        mid[15] = top;
        Histogram counts = spread(mid, pixels);
        counts[static_cast<size_t>(top)] -= 320; // one in 1000
        counts[255] += 320;
        analyse(spread(dark, pixels), spread(bright, pixels), counts);
        EXPECT_EQ(context.scene.targetCurve[16], linear(150));
        EXPECT_EQ(isFlatFrom(231), top == 247);
    }
}

TEST_F(SceneAnalysisTest, EmptyAndOneLevelHistogramsStayInsideTheTables) {
    std::array<Histogram, 3> extremes{}; // empty, black and white
    extremes[1][0] = static_cast<uint32_t>(pixels);
    extremes[2][255] = static_cast<uint32_t>(pixels);
    for (size_t i = 0; i < 27; i++) {
        analyse(extremes[i / 9], extremes[i / 3 % 3], extremes[i % 3]);
        for (const std::vector<uint16_t> &curve : curves) {
            EXPECT_TRUE(std::is_sorted(curve.begin(), curve.end()));
            EXPECT_LE(curve.back(), 4 * 4095);
        }
    }
}

} // namespace
} // namespace hdr
