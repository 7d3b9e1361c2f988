// SPDX-License-Identifier: MIT
#include "engine/render/tone_tables.h"

#include "engine/core/context.h"
#include "engine/render/colour_maps.h"
#include "engine/render/local_tone_map.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <limits>

namespace hdr {
namespace {

constexpr int kLevelEnd = 4096;
constexpr int kWhite = 4095;

/// Tone lengths from here on deepen contrast and colour and darken the picture.
constexpr int kLongTone = 36;
constexpr int kLongToneDarkening = 5;
/// Exposures whose mean colour differs by this much get less colour.
constexpr int kColourDisagreement = 16;
constexpr int kStrongestSCurve = 100;
constexpr double kShadowLiftGamma = 1.2;
constexpr int kUnitGain = 1024;

/// What the user's controls come to, given what is known about the scene.
struct ToneSettings {
    int contrast;   ///< strength of the contrast curve
    int saturation; ///< strength of the S-curve
    int brightness;
    int detail; ///< strength of local tone mapping
};

ToneSettings deriveSettings(const HdrContext &context) {
    const int length = context.toneLength;
    const bool isLong = length >= kLongTone;
    const int boost = isLong ? 2 * length - 70 : 0;
    const InputCheck &check = context.check;
    const bool coloursAgree =
        std::abs(check.colourDifferenceU) + std::abs(check.colourDifferenceV) < kColourDisagreement;
    const int baseSaturation =
        coloursAgree ? std::max(boost + context.toneOffsetA, 0) : std::max(length - 60, 0);

    ToneSettings settings;
    settings.contrast =
        context.toneOffsetB + boost + (context.toneOffsetA > 10 ? 10 : 0) + (context.smoothingFlag ? 25 : 5);
    settings.saturation = std::min(baseSaturation + context.toneSaturation, kStrongestSCurve);
    settings.brightness = isLong ? context.brightness - kLongToneDarkening : context.brightness;
    if (!context.smoothingFlag)
        settings.detail = length;
    else if (context.firstMerge.darkFraction < 16)
        settings.detail = context.firstMerge.darkFraction * 25 >> 4;
    else
        settings.detail = length - 10;
    return settings;
}

/// Rebuilds the contrast curve and the output luminance table for a strength.
void setContrast(Tables &tables, int strength) {
    if (strength == tables.contrastKey)
        return;
    buildContrastCurve(tables.contrastCurve12, strength);
    for (int level = 0; level < kLevelEnd; level++)
        tables.contrastCurve8[level] = tables.gammaCompress[tables.contrastCurve12[level]];
    tables.contrastKey = strength;
}

/// An S-curve steeper than complete: colour far from neutral saturates.
void buildSteepSCurve(uint8_t *table, int strength) {
    const int step = ((strength * 256 - 25600) >> 2) + 256;
    for (int k = 1; k < 1024; k++) {
        const int stretch = (k * step) >> 8;
        const int above = 2048 + k + stretch;
        table[k] = 0;
        table[2048 - k] = static_cast<uint8_t>(std::max(2048 - k - stretch, 0) >> 4);
        table[2048 + k] = static_cast<uint8_t>(above < kLevelEnd ? above >> 4 : 255);
        table[4096 - k] = 255;
    }
    table[0] = table[1024] = 0;
    table[2048] = 128;
    table[3072] = 255;
}

/// A power curve on the complement of the level, 1 - (1 - x)^exponent, with a linear segment at the white
/// end.
void fillBrightnessCurve(uint16_t *curve, int low, int high, double exponent) {
    constexpr double kLinearEnd = 0.018;
    std::fill(curve, curve + low, uint16_t{0});
    std::fill(curve + high, curve + kLevelEnd, uint16_t{kWhite});
    const double slope = std::pow(kLinearEnd, exponent) / kLinearEnd;
    const double unit = 1.0 / (high - low);
    for (int j = 0; j < high - low; j++) {
        const double x = j * unit;
        const double y = x <= kLinearEnd ? x * slope : std::pow(x, exponent);
        const int value = static_cast<int>(y * kWhite + 0.5);
        curve[high - 1 - j] = static_cast<uint16_t>(std::max(kWhite - value, 0));
    }
}

} // namespace

void build_scurve(HdrContext *context, int strength) {
    Tables &tables = context->tables;
    if (strength == tables.sCurveKey)
        return;
    if (strength <= kStrongestSCurve)
        buildSCurve(tables.sCurve8, strength);
    else
        buildSteepSCurve(tables.sCurve8, strength);
    std::copy_n(tables.sCurve8, kLevelEnd, tables.sCurve8 + kLevelEnd);
    tables.sCurveKey = std::min(strength, kStrongestSCurve);
}

void build_brightness_curve(HdrContext *context, int brightness, int low, int high, double gamma) {
    Tables &tables = context->tables;
    uint16_t *curve = tables.contrastCurve12;
    if (brightness == 0 && low == 0 && high == kLevelEnd && std::abs(gamma - 1) < 1e-8) {
        for (int level = 0; level < kLevelEnd; level++)
            curve[level] = static_cast<uint16_t>(level);
    } else {
        const double strength = brightness >= 0 ? 1 + 0.014 * brightness : 1 / (1 - 0.014 * brightness);
        fillBrightnessCurve(curve, low, high, strength * gamma);
    }
    uint8_t *scratch = tables.contrastCurve8 + kLumaScratchOffset;
    std::copy_n(tables.contrastCurve8, kLevelEnd, scratch);
    for (int level = 0; level < kLevelEnd; level++)
        tables.contrastCurve8[level] = scratch[curve[level]];
}

void build_detail_gain(uint16_t *table, int strength, int base) {
    constexpr int kLargestGain = std::numeric_limits<uint16_t>::max();
    const uint16_t neutral = static_cast<uint16_t>(base);
    const double amount = strength * 1.33 * 0.02;
    if (strength < 0 || amount == 0) {
        std::fill_n(table, kDetailGainCount, neutral);
        return;
    }
    const auto toGain = [](double gain) {
        return static_cast<int>(std::min(gain, static_cast<double>(kLargestGain)));
    };
    const int limit = toGain(std::exp(amount) * base);
    const double slope = 1 / (std::pow(0.0625 + amount, 0.25) * 1024);
    table[0] = neutral;
    int gain = 0;
    for (int i = 1; i < static_cast<int>(kDetailGainCount / 2); i++) {
        if (gain < limit)
            gain = toGain(std::exp(std::tanh(i * slope) * amount) * base + 0.5);
        table[i] = static_cast<uint16_t>(gain);
        table[static_cast<int>(kDetailGainCount) - i] = neutral;
    }
}

HdrStatus set_detail_strength(MemContext * /*memory*/, HdrContext *context, int strength) {
    if (!context->tables.detailGain)
        return HDR_ERR_NOMEM;
    const SceneAnalysis &scene = context->scene;
    const bool isSubdued = scene.lowHighlightFlag == 0 && scene.sceneClass == 3;
    build_detail_gain(context->tables.detailGain, isSubdued ? strength - 25 : strength, kUnitGain);
    return HDR_OK;
}

HdrStatus build_render_tables(MemContext *memory, HdrContext *context, const Offscreen *output) {
    Preparation &preparation = context->preparation;
    const ToneSettings settings = deriveSettings(*context);
    setContrast(context->tables, settings.contrast);
    build_scurve(context, settings.saturation);
    build_brightness_curve(context, settings.brightness, 0, kLevelEnd,
                           context->scene.shadowLiftFlag ? kShadowLiftGamma : 1.0);

    for (int input = 0; input < context->imageCount; input++)
        offscreenFree(&preparation.registeredImages[input], memory);
    const HdrStatus status = build_local_tone_map(memory, context, output->i32Width, output->i32Height);
    if (status != HDR_OK)
        return status;
    set_detail_strength(memory, context, settings.detail);
    // Without memory for the maps the picture keeps the merge's colours.
    build_colour_maps(memory, context);

    for (int input = 0; input < context->imageCount; input++)
        offscreenFree(&preparation.workImages[input], memory);
    offscreenFree(&preparation.mergedImage, memory);
    offscreenFree(&preparation.toneImage, memory);
    return HDR_OK;
}

} // namespace hdr
