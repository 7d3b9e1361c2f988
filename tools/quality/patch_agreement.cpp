// SPDX-License-Identifier: GPL-3.0-or-later
#include "tools/quality/patch_agreement.h"

#include "tools/quality/merge_run.h"

#include <algorithm>
#include <cmath>

namespace tristop::quality {

namespace {

constexpr double kLeastCorrelation = 0.75;
/// Standard deviation, in 8-bit levels, from which a patch of a developed shot counts as texture, and below
/// which a patch shows nothing but noise.
constexpr double kTexture = 4;
constexpr double kFlat = 3;
/// Light below this is darkness in every shot.
constexpr double kDarkness = 1e-4;

/// Contrasts that differ by less than this factor are alike.
constexpr double kLikeContrast = 1.6;

bool areAlike(double contrastA, double contrastB) {
    return std::max(contrastA, contrastB) <= kLikeContrast * std::max(std::min(contrastA, contrastB), kFlat);
}

/// The highest correlation of the picture's patch with the content there or one pixel beside it.
double bestCorrelation(const Luminance &picture, const Luminance &content, int x, int y) {
    double best = -1;
    for (int dy = -1; dy <= 1; dy++)
        for (int dx = -1; dx <= 1; dx++)
            best = std::max(best, comparePatch(picture, content, x, y, dx, dy).correlation);
    return best;
}

bool agrees(const Luminance &picture, const ShotContent &shot, int x, int y) {
    const PatchComparison compared = comparePatch(picture, shot.developed, x, y);
    if (compared.deviationA < kFlat && compared.deviationB < kFlat)
        return true;
    const auto correlates = [&](const Luminance &content) {
        return !content.values.empty() && bestCorrelation(picture, content, x, y) >= kLeastCorrelation;
    };
    return correlates(shot.developed) || correlates(shot.light) || correlates(shot.merged) ||
           correlates(shot.photograph);
}

bool hasContrastOf(const Luminance &picture, const ShotContent &shot, int x, int y) {
    const PatchComparison compared = comparePatch(picture, shot.merged, x, y);
    return areAlike(compared.deviationA, compared.deviationB);
}

/// Whether a mix of two shots would show.
bool differ(const ShotContent &a, const ShotContent &b, int x, int y) {
    const PatchComparison compared = comparePatch(a.merged, b.merged, x, y);
    return !areAlike(compared.deviationA, compared.deviationB) ||
           (std::max(compared.deviationA, compared.deviationB) >= kTexture &&
            compared.correlation < kLeastCorrelation);
}

/// The radiance of a shot's content, seen from the reference.
scene::SceneSettings seenFromReference(scene::SceneSettings settings, int shot) {
    settings.camera.fill(settings.camera[kMiddle]);
    settings.moving.offset.fill(settings.moving.offset[static_cast<std::size_t>(shot)]);
    return settings;
}

ShotContent contentOf(const scene::SceneSettings &settings, int shot, ViewCache &views) {
    const scene::SceneSettings still = seenFromReference(settings, shot);
    const scene::Picture<float> radiance = views.radiance(still, shot);
    const double exposure = std::exp2(settings.stops[static_cast<std::size_t>(shot)]);
    const Luminance empty{radiance.width, radiance.height, {}};
    ShotContent content{empty, empty, empty, {}};
    for (std::size_t i = 0; i < radiance.samples.size(); i += 3) {
        const auto luminance = [&](auto value) {
            const float *rgb = &radiance.samples[i];
            return static_cast<float>(0.299 * value(rgb[0]) + 0.587 * value(rgb[1]) + 0.114 * value(rgb[2]));
        };
        content.developed.values.push_back(
            luminance([&](float light) { return scene::developedValue(light * exposure); }));
        content.light.values.push_back(
            static_cast<float>(std::log2(luminance([](float light) { return light; }) + kDarkness)));
    }
    Bracket bracket(still, views);
    content.merged = merge(bracket.pictures).rendered;
    return content;
}

} // namespace

PatchComparison comparePatch(const Luminance &a, const Luminance &b, int x, int y, int dx, int dy) {
    constexpr double n = kPatch * kPatch;
    double sumA = 0, sumB = 0, sumAA = 0, sumBB = 0, sumAB = 0;
    for (int v = y; v < y + kPatch; v++)
        for (int u = x; u < x + kPatch; u++) {
            const double p = a.at(u, v);
            const double q = b.at(u + dx, v + dy);
            sumA += p;
            sumB += q;
            sumAA += p * p;
            sumBB += q * q;
            sumAB += p * q;
        }
    const double varianceA = std::max(sumAA / n - sumA * sumA / n / n, 0.0);
    const double varianceB = std::max(sumBB / n - sumB * sumB / n / n, 0.0);
    return {std::sqrt(varianceA), std::sqrt(varianceB),
            (sumAB / n - sumA * sumB / n / n) / std::sqrt(varianceA * varianceB + 1e-12)};
}

std::array<ShotContent, 3> contentsOf(const scene::SceneSettings &settings, ViewCache &views) {
    return {contentOf(settings, kDark, views), contentOf(settings, kMiddle, views),
            contentOf(settings, kBright, views)};
}

Agreement patchAgreement(const Luminance &picture, std::span<const ShotContent> shots,
                         const std::function<bool(int x, int y)> &where, const hdr::Rect &area) {
    constexpr int kMargin = kPatch / 2 + 1; // with the pixel beside it
    const int left = std::max(area.x0, 0) + kMargin, top = std::max(area.y0, 0) + kMargin;
    const int right = std::min(area.x1, picture.width) - kMargin;
    const int bottom = std::min(area.y1, picture.height) - kMargin;
    Agreement agreement;
    for (int centreY = top; centreY <= bottom; centreY += kPatch / 2)
        for (int centreX = left; centreX <= right; centreX += kPatch / 2) {
            const int x = centreX - kPatch / 2, y = centreY - kPatch / 2;
            if (!where(centreX, centreY) || std::none_of(shots.begin(), shots.end(), [&](const auto &shot) {
                    return comparePatch(picture, shot.developed, x, y).deviationB >= kTexture;
                }))
                continue;
            agreement.patches++;
            const bool isTelling = std::any_of(shots.begin() + 1, shots.end(), [&](const auto &shot) {
                return differ(shots.front(), shot, x, y) || differ(shots.back(), shot, x, y);
            });
            bool isOne = false, isOpaque = false;
            for (const ShotContent &shot : shots)
                if (agrees(picture, shot, x, y)) {
                    isOne = true;
                    isOpaque |= isTelling && hasContrastOf(picture, shot, x, y);
                }
            agreement.agreeing += isOne;
            agreement.telling += isTelling;
            agreement.opaque += isOpaque;
        }
    return agreement;
}

} // namespace tristop::quality
