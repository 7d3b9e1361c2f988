// SPDX-License-Identifier: MIT
#include "engine/check/scene_analysis.h"

#include "engine/core/context.h"
#include "engine/prepare/quantiles.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdlib>
#include <numeric>
#include <optional>

namespace hdr {

namespace {

constexpr int kTop = kQuantiles - 1;

/// Reduced pixels below, or up to, which a picture counts as small in one rule or another.
constexpr int kTinyPicture = 60000;
constexpr int kSmallPicture = 199999;
constexpr int kShadowLiftPicture = 250000;

/// One value for each sixteenth of the picture's pixels, from the darkest to the brightest.
using Levels = std::array<int, kQuantiles>;

/// How the pixels of one exposure spread over the levels.
struct Exposure {
    Levels level;  ///< 8-bit codes
    Levels linear; ///< the same on the 12-bit linear scale
    Levels target; ///< the 12-bit curve over `linear` that this exposure alone would ask for
    uint32_t gain; ///< relative exposure in 1/1024
};

/// What the steps of the analysis hand on. Starts with the histograms' quantiles and ends with the curve and
/// the two quantile indices that the rendering uses.
struct Record {
    const Tables &tables;
    int pixels;
    Exposure dark{}, bright{}, mid{};
    int midHighlight = 0;  ///< level of the reference above which at most one pixel in 1000 lies
    bool marker = false;   ///< the scene leaves out the reference's highlights or fills only deep shadows
    Levels curve{};        ///< the common target curve
    int high = 0, low = 0; ///< quantile indices of the reference: highlights, shadows

    int expand(int level) const { return tables.gammaExpand[level]; }
    int compress(int linear) const { return tables.gammaCompress[linear]; }
};

size_t indexOf(int quantile) {
    return static_cast<size_t>(std::clamp(quantile, 0, kTop));
}

/// First index below `end` that satisfies the condition, or kQuantiles.
template <typename Condition>
int firstIndex(int end, Condition condition) {
    for (int i = 0; i < end; i++)
        if (condition(static_cast<size_t>(i)))
            return i;
    return kQuantiles;
}

Levels quantilesOf(const uint32_t *histogram, int pixels) {
    Levels levels{};
    findQuantiles(histogram, static_cast<uint32_t>(pixels), kTop, levels.data());
    return levels;
}

/// Reads the quantile levels of the three exposures and where the ends of their histograms lie.
void findLevels(Record &record, const uint32_t *dark, const uint32_t *bright, const uint32_t *mid) {
    record.dark.level = quantilesOf(dark, record.pixels);
    record.bright.level = quantilesOf(bright, record.pixels);
    record.mid.level = quantilesOf(mid, record.pixels);

    const uint32_t *firstUsed = std::find_if(dark, dark + kBins, [](uint32_t count) { return count != 0; });
    if (firstUsed != dark + kBins)
        record.dark.level[0] = static_cast<int>(firstUsed - dark);

    const uint32_t few = static_cast<uint32_t>(record.pixels / 1000);
    uint32_t sum = 0;
    int shadow = 0;
    while (shadow < kBins && (sum += bright[shadow]) <= few)
        shadow++;
    if (shadow >= 5 && shadow < kBins)
        record.bright.level[0] = shadow - 4;

    sum = 0;
    record.midHighlight = kBins - 1;
    while (record.midHighlight > 0 && (sum += mid[record.midHighlight]) <= few)
        record.midHighlight--;

    for (Exposure *exposure : {&record.dark, &record.bright, &record.mid})
        std::ranges::transform(exposure->level, exposure->linear.begin(),
                               [&](int level) { return record.expand(level); });
}

int shadowSum(const Exposure &exposure) {
    return std::accumulate(exposure.level.begin(), exposure.level.begin() + 5, 0);
}

/// Sets the low-highlight flag and tells dark scenes of wide range apart.
void classify(const Record &record, SceneAnalysis &scene) {
    scene.lowHighlightFlag = record.dark.level[16] < 224;
    const int brightSum = shadowSum(record.bright);
    if (shadowSum(record.dark) > 24 || shadowSum(record.mid) > 54 || brightSum > 239)
        scene.sceneClass = 0;
    else if (brightSum <= 63)
        scene.sceneClass = 3;
    else if (record.mid.level[15] >= 251 && record.bright.level[12] >= 250 && record.bright.level[11] <= 250)
        scene.sceneClass = 2;
    else
        scene.sceneClass = 1;
}

/// Sets the flags of a reference without highlights and of a dark exposure that holds little but shadows.
void markExtremes(Record &record, SceneAnalysis &scene) {
    const Levels &dark = record.dark.level;
    const int midTop = record.mid.level[15];
    const bool flatHighlights =
        midTop <= 223 &&
        (record.midHighlight < 252 || shadowSum(record.dark) + shadowSum(record.mid) < 32 || midTop <= 191);
    if (flatHighlights)
        scene.flatHighlightFlag = 1;

    const int firstLifted = firstIndex(kQuantiles, [&](size_t i) { return dark[i] > static_cast<int>(i); });
    record.marker = flatHighlights || (dark[15] <= 31 && firstLifted > 14);

    const int firstJump =
        firstIndex(kTop, [&](size_t i) { return dark[i] >= 17 && dark[i + 1] - dark[i] >= 5; });
    scene.darkShadowFlag = firstLifted > 12 || (firstJump < kQuantiles && firstJump > 13);
}

/// The curve that stretches an exposure's levels toward full scale, by a factor that grows from 1 in the
/// shadows. It keeps levels that span the whole scale as they are.
Levels stretch(const Levels &linear) {
    constexpr int kFullScale = static_cast<int>(kLevels12) - 1;
    Levels target{};
    target[kTop] = (linear[kTop] + kFullScale) >> 1;
    const uint32_t range = static_cast<uint32_t>(linear[kTop] - linear[0]);
    const uint32_t scaledTop = static_cast<uint32_t>(target[kTop]) << 16;
    const uint32_t ratio = range == 0 ? scaledTop : scaledTop / range;
    for (uint32_t k = 1; k < kTop; k++) {
        const uint32_t factor = (k * ratio + (17 - k) * 65536) / 17;
        target[k] = static_cast<int>((static_cast<uint32_t>(linear[k] - linear[0]) * factor) >> 16);
    }
    return target;
}

void buildTargets(Record &record) {
    for (Exposure *exposure : {&record.dark, &record.bright, &record.mid})
        exposure->target = stretch(exposure->linear);
    record.curve = record.dark.target;
}

/// Marks dark scenes for the shadow lift, and restates the common curve of large ones, and of small ones that
/// stay dark to the top, in steps of 16 by its 8-bit codes, nowhere above the reference's.
void liftShadows(Record &record, SceneAnalysis &scene) {
    Levels &curve = record.curve;
    scene.shadowLiftFlag = 0;
    if (record.compress(curve[6]) > 8)
        return;
    const int nearTop = record.compress(curve[15]);
    const bool large = record.pixels > kShadowLiftPicture;
    bool requantise = false;
    if (scene.sceneClass == 3) {
        requantise = nearTop <= 223;
    } else {
        // 2 only selects other thresholds, which take it back to 0: small pictures are not lifted.
        scene.shadowLiftFlag = large ? 1 : 2;
        requantise = large || nearTop < 64;
    }
    if (!requantise)
        return;
    for (int &value : curve)
        value = record.compress(value) * 16;
    for (size_t k = 1; k < kQuantiles; k++)
        curve[k] = std::min(curve[k], record.mid.target[k]);
}

/// The reference's highest quantile that is not clipped.
int highlightIndex(const Record &record) {
    for (size_t k = kTop; k >= 1; k--)
        if (record.mid.level[k] <= 240)
            return static_cast<int>(k);
    return 8;
}

/// The reference's first quantile below `end` that is out of the shadows, or that the bright exposure has
/// already lost; none when there is no such quantile.
std::optional<int> shadowIndex(const Record &record, const SceneAnalysis &scene, int end) {
    const int lost = record.expand(record.pixels < kTinyPicture ? 160 : 192);
    const bool dark = scene.sceneClass == 3 || scene.shadowLiftFlag != 0;
    for (size_t i = 1; i < static_cast<size_t>(end); i++) {
        const int midLevel = record.mid.level[i];
        const int midTarget = record.mid.target[i];
        const int brightTarget = record.bright.target[i];
        const bool lifted =
            dark ? midLevel >= 16 && (brightTarget == 0 || midTarget * 1024 / brightTarget > 256)
                 : midLevel >= 64;
        if (lifted || brightTarget >= lost)
            return static_cast<int>(i) - (brightTarget > 4094 ? 1 : 0);
    }
    return std::nullopt;
}

/// Chooses the two quantile indices; the same findings decide whether another exposure's curve replaces the
/// common one.
void chooseQuantiles(Record &record, const SceneAnalysis &scene) {
    const Exposure &mid = record.mid;
    const Exposure &bright = record.bright;
    Levels &curve = record.curve;
    record.high = highlightIndex(record);
    const std::optional<int> low = shadowIndex(record, scene, record.high);

    if (record.marker) {
        record.high = kTop;
        if (mid.target[15] < record.expand(192) || mid.level[16] < 248 || curve[15] < record.expand(192) ||
            curve[16] < record.expand(248))
            curve = mid.target;
    }
    record.low = low ? *low : std::min(record.high - 1, 12);

    // A reference without highlights would need the topmost index here, which the marker has given it.
    if (bright.level[0] > 64 || (mid.level[1] > 32 && mid.gain < 640))
        record.low = 0;
    if (bright.target[kTop] < record.expand(240))
        curve = bright.linear;
    if (scene.sceneClass == 3)
        record.low--;
}

void setThresholds(const Record &record, SceneAnalysis &scene) {
    const auto midLevel = [&record](int quantile) { return record.mid.level[indexOf(quantile)]; };
    scene.referenceLevel = midLevel(record.high);
    scene.ghostThreshold = scene.referenceLevel - 16;
    scene.thresholdStep = 16;
    if (scene.shadowLiftFlag == 2) {
        scene.shadowHigh = midLevel(record.low);
        const int halvings = std::bit_width(static_cast<unsigned>(std::max(scene.shadowHigh - 1, 1)));
        scene.shadowLow = scene.shadowHigh - (1 << (halvings - 1));
        scene.shadowFactor = 256 >> (halvings - 1);
        scene.shadowLiftFlag = 0;
        return;
    }
    scene.shadowLow = midLevel(record.low);
    scene.shadowHigh = scene.shadowLow + (scene.sceneClass == 3 ? 64 : 32);
    scene.shadowFactor = scene.sceneClass == 3 ? 4 : 8;
    if (scene.shadowLiftFlag != 0 && scene.sceneClass != 0) {
        scene.ghostThreshold = scene.referenceLevel - 32;
        scene.thresholdStep = 8;
        scene.shadowLow = midLevel(record.low - 2);
        scene.shadowHigh = scene.shadowLow;
    }
}

/// Fills a tone curve with straight lines from level to level of `linear`, carrying each to the common curve.
void buildToneCurve(uint16_t *toneCurve, const Levels &linear, const Levels &curve, int scale) {
    std::fill_n(toneCurve, linear[0], uint16_t{0});
    for (size_t k = 0; k < kTop; k++) {
        const int run = linear[k + 1] - linear[k];
        const int rise = curve[k + 1] - curve[k];
        for (int x = linear[k]; x < linear[k + 1]; x++)
            toneCurve[x] = static_cast<uint16_t>(scale * (curve[k] + (x - linear[k]) * rise / run));
    }
    const int top = linear[kTop];
    std::fill(toneCurve + top, toneCurve + kLevels12, top > 0 ? toneCurve[top - 1] : uint16_t{0});
}

void buildToneCurves(const Record &record, const Preparation &preparation) {
    constexpr int kBrightScale = 4;
    buildToneCurve(preparation.toneCurve[preparation.darkIndex], record.dark.linear, record.curve, 1);
    buildToneCurve(preparation.toneCurve[preparation.brightIndex], record.bright.linear, record.curve,
                   kBrightScale);
    buildToneCurve(preparation.toneCurve[preparation.midIndex], record.mid.linear, record.curve, 1);
}

/// Holds the reference's tone curve constant from its last unclipped quantile up, where its highlights are
/// nearly clipped or fall short while the curve there is dark.
void flattenHighlights(const Record &record, uint16_t *midCurve) {
    const Levels &level = record.mid.level;
    size_t k = kTop;
    while (k > 1 && level[k] == kBins - 1)
        k--;
    if (level[k - 1] > 248)
        k--;
    if (level[k] <= 248 && (record.curve[k] >= record.expand(160) || record.midHighlight >= 248))
        return;
    const int from = std::max(record.mid.linear[k], 1);
    std::fill(midCurve + from, midCurve + kLevels12, midCurve[from - 1]);
}

/// Overrides thresholds where the scene or the spacing of the exposures makes them meaningless.
void adjustThresholds(const Record &record, SceneAnalysis &scene) {
    if (record.marker) {
        const int top = record.compress(record.mid.target[15]);
        scene.referenceLevel = top >= 225 ? top : 224;
        scene.ghostThreshold = scene.referenceLevel;
    }
    if (12 * record.mid.gain > 10 * record.dark.gain && record.mid.gain >= 769) {
        scene.referenceLevel = 256;
        scene.ghostThreshold = 256;
    }
    if (10 * record.mid.gain < 12 * record.bright.gain) {
        scene.shadowLow = 0;
        scene.shadowHigh = 0;
    }
}

/// Small pictures ignore colour differences that the reference is bright enough to show truly, and do without
/// class 3.
void relaxSmallPicture(const Record &record, SceneAnalysis &scene, InputCheck &check) {
    if (record.pixels > kSmallPicture)
        return;
    const int difference = std::abs(check.colourDifferenceDarkU) + std::abs(check.colourDifferenceDarkV);
    const int level = record.mid.level[1];
    if ((difference >= 16 && level > 16) || (difference >= 6 && level >= 25)) {
        check.colourDifferenceU = 0;
        check.colourDifferenceV = 0;
        scene.shadowLow = 0;
        scene.shadowHigh = 0;
    }
    if (scene.sceneClass == 3)
        scene.sceneClass = 1;
}

} // namespace

void sceneAnalysis(HdrContext *context, const uint32_t *dark, const uint32_t *bright, const uint32_t *mid,
                   int pixels) {
    const Preparation &preparation = context->preparation;
    SceneAnalysis &scene = context->scene;
    Record record{context->tables, pixels};
    record.dark.gain = preparation.exposureGainQ10[preparation.darkIndex];
    record.bright.gain = preparation.exposureGainQ10[preparation.brightIndex];
    record.mid.gain = preparation.exposureGainQ10[preparation.midIndex];
    scene.analysisLevel = 8;
    scene.curveShiftT = 2;
    scene.curveShiftU = 0;

    findLevels(record, dark, bright, mid);
    classify(record, scene);
    markExtremes(record, scene);
    buildTargets(record);
    liftShadows(record, scene);
    chooseQuantiles(record, scene);
    setThresholds(record, scene);
    buildToneCurves(record, preparation);
    flattenHighlights(record, preparation.toneCurve[preparation.midIndex]);
    adjustThresholds(record, scene);
    relaxSmallPicture(record, scene, context->check);

    std::ranges::copy(record.curve, scene.targetCurve);
    scene.highIndex = record.high;
    scene.lowIndex = record.low;
}

} // namespace hdr
