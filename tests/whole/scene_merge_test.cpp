// SPDX-License-Identifier: GPL-3.0-or-later
// Whole merges of rendered scenes, held against what the scene really is.
#include "engine/core/context.h"
#include "tests/support/scene_merge.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>

namespace tristop {
namespace {

using scene::SceneSettings;
using test::Luminance;
using test::luminanceOf;
using test::SceneInputs;

// Multiples of 16, so that the picture of a camera held still is not cropped and stretched.
constexpr int kWidth = 720;
constexpr int kHeight = 480;

SceneSettings staticScene(uint64_t seed = 11) {
    SceneSettings settings;
    settings.width = kWidth;
    settings.height = kHeight;
    settings.seed = seed;
    settings.camera = {};
    settings.moving.share = 0;
    return settings;
}

struct Merge {
    HdrRunInfo info{};
    Luminance picture;
};

Merge merge(const SceneSettings &settings) {
    SceneInputs inputs(settings);
    HdrContext *context = nullptr;
    EXPECT_EQ(hdrCreate(nullptr, 0, &context), HDR_OK);
    hdrSetGhostSuppressionLevel(nullptr, context, 6);
    const HdrParams look = {45, 10, 40};
    EXPECT_EQ(hdrProcess(nullptr, context, inputs.pictures.data(), 3, inputs.pictures.data(), 2, &look,
                         nullptr, nullptr, nullptr),
              HDR_OK);
    Merge made;
    hdrGetRunInfo(context, &made.info);
    hdrDestroy(nullptr, context);
    made.picture = luminanceOf(inputs.pictures[2]);
    return made;
}

/// Logarithm of the reference shot's true radiance.
Luminance logRadiance(const SceneSettings &settings, int shot = 1) {
    const auto radiance = scene::radiance(settings, shot);
    Luminance made{settings.width, settings.height, {}};
    for (int y = 0; y < made.height; y++)
        for (int x = 0; x < made.width; x++) {
            const float *rgb = radiance.pixel(x, y);
            made.values.push_back(std::log2(0.299 * rgb[0] + 0.587 * rgb[1] + 0.114 * rgb[2] + 1e-4));
        }
    return made;
}

constexpr int kPatch = 16;

struct Patch {
    double deviationA, deviationB, correlation;
};

/// Standard deviations and normalised correlation of two pictures in the patch at (x, y).
Patch comparePatch(const Luminance &a, const Luminance &b, int x, int y) {
    const double n = kPatch * kPatch;
    double sa = 0, sb = 0, saa = 0, sbb = 0, sab = 0;
    for (int dy = 0; dy < kPatch; dy++)
        for (int dx = 0; dx < kPatch; dx++) {
            const double p = a.at(x + dx, y + dy);
            const double q = b.at(x + dx, y + dy);
            sa += p;
            sb += q;
            saa += p * p;
            sbb += q * q;
            sab += p * q;
        }
    const double va = std::max(saa / n - sa * sa / n / n, 0.0);
    const double vb = std::max(sbb / n - sb * sb / n / n, 0.0);
    return {std::sqrt(va), std::sqrt(vb), (sab / n - sa * sb / n / n) / std::sqrt(va * vb + 1e-12)};
}

/// Share of the scene's textured patches whose structure the picture shows, strongly enough to be seen.
double shownStructure(const Luminance &picture, const Luminance &truth) {
    int textured = 0, shown = 0;
    for (int y = 0; y + kPatch <= truth.height; y += kPatch)
        for (int x = 0; x + kPatch <= truth.width; x += kPatch) {
            const Patch patch = comparePatch(truth, picture, x, y);
            if (patch.deviationA < 0.15)
                continue;
            textured++;
            shown += patch.correlation >= 0.75 && patch.deviationB >= 3;
        }
    EXPECT_GT(textured, 100);
    return static_cast<double>(shown) / textured;
}

TEST(SceneMerge, ShowsMoreOfTheSceneThanAnySingleShot) {
    const SceneSettings settings = staticScene();
    const Merge merged = merge(settings);
    EXPECT_EQ(merged.info.fallback, HDR_FALLBACK_NONE);
    for (int i = 0; i < 3; i++) {
        EXPECT_EQ(merged.info.shiftX[i], 0);
        EXPECT_EQ(merged.info.shiftY[i], 0);
    }
    const Luminance truth = logRadiance(settings);
    const double shown = shownStructure(merged.picture, truth);
    const SceneInputs shots(settings);
    for (const Offscreen &shot : shots.pictures)
        EXPECT_GT(shown, shownStructure(luminanceOf(shot), truth));
    EXPECT_GT(shown, 0.9);
}

TEST(SceneMerge, KeepsTheOrderOfTones) {
    // Means over patches: a place that receives clearly more light must not come out darker than its
    // neighbour.
    const SceneSettings settings = staticScene(12);
    const Merge merged = merge(settings);
    const Luminance truth = logRadiance(settings);
    const auto mean = [](const Luminance &picture, int x, int y) {
        double sum = 0;
        for (int dy = 0; dy < kPatch; dy++)
            for (int dx = 0; dx < kPatch; dx++)
                sum += picture.at(x + dx, y + dy);
        return sum / (kPatch * kPatch);
    };
    int pairs = 0, reversed = 0;
    for (int y = 0; y + kPatch <= kHeight; y += kPatch)
        for (int x = 0; x + 2 * kPatch <= kWidth; x += kPatch) {
            const double light = mean(truth, x + kPatch, y) - mean(truth, x, y);
            if (std::abs(light) < 1)
                continue;
            pairs++;
            reversed += (mean(merged.picture, x + kPatch, y) - mean(merged.picture, x, y)) * light < 0;
        }
    EXPECT_GT(pairs, 50);
    EXPECT_LE(reversed, pairs / 50);
}

/// How much stronger the picture changes across lines at multiples of `period` than across all others, for
/// columns (dx = 1) or rows (dy = 1); 1 when there is no pattern.
double stepAtMultiples(const Luminance &picture, int period, int dx, int dy) {
    double on = 0, off = 0;
    long onCount = 0, offCount = 0;
    for (int y = 2; y < picture.height - 2; y++)
        for (int x = 2; x < picture.width - 2; x++) {
            // The step between two pixels beyond what their surroundings lead one to expect.
            const double step = std::abs(picture.at(x + dx, y + dy) - 3 * picture.at(x, y) +
                                         3 * picture.at(x - dx, y - dy) - picture.at(x - 2 * dx, y - 2 * dy));
            const bool atMultiple = (dx ? x : y) % period == 0;
            (atMultiple ? on : off) += step;
            (atMultiple ? onCount : offCount)++;
        }
    return (on / static_cast<double>(onCount)) / (off / static_cast<double>(offCount));
}

TEST(SceneMerge, LeavesNoBlockPatternAndNoSeam) {
    SceneSettings settings = staticScene(13);
    settings.sensorNoise = false;
    const Merge merged = merge(settings);
    const SceneInputs shots(settings);
    const Luminance middle = luminanceOf(shots.pictures[1]);
    for (int period : {4, 8, 32, 256}) {
        // The scene has edges of its own at some of these lines: the middle exposure tells which.
        EXPECT_LT(stepAtMultiples(merged.picture, period, 1, 0),
                  1.15 * std::max(1.0, stepAtMultiples(middle, period, 1, 0)))
            << period;
        EXPECT_LT(stepAtMultiples(merged.picture, period, 0, 1),
                  1.15 * std::max(1.0, stepAtMultiples(middle, period, 0, 1)))
            << period;
    }
    // Band borders lie at quarters of the height, in multiples of 8 rows.
    const auto stepAtRow = [](const Luminance &picture, int border) {
        const auto rowStep = [&](int y) {
            double sum = 0;
            for (int x = 0; x < kWidth; x++)
                sum += std::abs(picture.at(x, y) - picture.at(x, y - 1));
            return sum;
        };
        std::vector<double> around;
        for (int y = border - 12; y <= border + 12; y++)
            if (y != border)
                around.push_back(rowStep(y));
        std::nth_element(around.begin(), around.begin() + 12, around.end());
        return rowStep(border) / around[12];
    };
    for (int k = 1; k < 4; k++) {
        const int border = 8 * (k * kHeight / 32);
        EXPECT_LT(stepAtRow(merged.picture, border), 1.25 * std::max(1.0, stepAtRow(middle, border)))
            << border;
    }
}

TEST(SceneMerge, LeavesNoFrame) {
    // 704 is a multiple of 32: the last column of the grid has no statistics of its own.
    for (int width : {kWidth, 704}) {
        SceneSettings settings = staticScene(14);
        settings.width = width;
        settings.variant = scene::Variant::flatGrey;
        const Luminance picture = merge(settings).picture;
        const auto mean = [&](int x0, int x1, int y0, int y1) {
            double sum = 0;
            for (int y = y0; y < y1; y++)
                for (int x = x0; x < x1; x++)
                    sum += picture.at(x, y);
            return sum / ((x1 - x0) * (y1 - y0));
        };
        const double middle = mean(width / 4, 3 * width / 4, kHeight / 4, 3 * kHeight / 4);
        EXPECT_NEAR(mean(0, 16, 0, kHeight), middle, 2);
        EXPECT_NEAR(mean(width - 16, width, 0, kHeight), middle, 2);
        EXPECT_NEAR(mean(0, width, 0, 16), middle, 2);
        EXPECT_NEAR(mean(0, width, kHeight - 16, kHeight), middle, 2);
    }
}

TEST(SceneMerge, FollowsAHandHeldCamera) {
    SceneSettings settings = staticScene(15);
    settings.camera = {{{.shiftX = -6.3, .shiftY = 3.8, .rotationDegrees = 0.28},
                        {},
                        {.shiftX = 7.6, .shiftY = 5.2, .rotationDegrees = -0.21}}};
    SceneInputs inputs(settings);
    HdrContext *context = nullptr;
    ASSERT_EQ(hdrCreate(nullptr, 0, &context), HDR_OK);
    context->preparedOnce = 1;
    ASSERT_EQ(hdr::hdrPrepareInputs(nullptr, context, inputs.pictures.data(), 3, nullptr), HDR_OK);
    ASSERT_EQ(context->preparation.midIndex, 1);
    const hdr::Alignment &alignment = context->alignment;
    for (int shot : {0, 2}) {
        const auto truth = scene::trueDisplacement(settings, shot, 1);
        const auto interpolated = [&](const int32_t *grid, int x, int y) {
            const int c = (x + 128) >> 8, q = (y + 128) >> 8;
            const double fx = ((x + 128) & 255) / 256.0, fy = ((y + 128) & 255) / 256.0;
            const auto node = [&](int dc, int dq) {
                return static_cast<double>(grid[(q + dq) * alignment.warpWidth + c + dc]);
            };
            return (node(0, 0) * (1 - fx) + node(1, 0) * fx) * (1 - fy) +
                   (node(0, 1) * (1 - fx) + node(1, 1) * fx) * fy;
        };
        std::vector<double> errors;
        for (int y = 20; y < kHeight - 20; y += 20)
            for (int x = 20; x < kWidth - 20; x += 20) {
                const scene::Position d = truth.at(x, y);
                errors.push_back(std::hypot(
                    alignment.globalShift[shot][0] + interpolated(alignment.warpX[shot], x, y) - d.x,
                    alignment.globalShift[shot][1] + interpolated(alignment.warpY[shot], x, y) - d.y));
            }
        std::sort(errors.begin(), errors.end());
        // Nodes are whole pixels, so half a pixel each way is what rounding alone costs.
        EXPECT_LT(errors[errors.size() / 2], 0.8) << "shot " << shot;
        EXPECT_LT(errors[errors.size() * 99 / 100], 2.0) << "shot " << shot;
    }
    hdrDestroy(nullptr, context);
}

TEST(SceneMerge, ShowsAMovedObjectOnce) {
    SceneSettings settings = staticScene(16);
    settings.moving.share = 0.03;
    settings.moving.offset[0] = {-0.02, 0.01};
    const Merge merged = merge(settings);
    EXPECT_EQ(merged.info.fallback, HDR_FALLBACK_NONE);
    std::array<Luminance, 3> truths;
    for (int shot = 0; shot < 3; shot++)
        truths[static_cast<size_t>(shot)] = logRadiance(settings, shot);
    const std::array<int, 2> others = {0, 2};
    const scene::Mask moved = scene::motionMask(settings, others, 1);
    int patches = 0, single = 0;
    for (int y = 0; y + kPatch <= kHeight; y += kPatch / 2)
        for (int x = 0; x + kPatch <= kWidth; x += kPatch / 2) {
            if (!moved.at(x + kPatch / 2, y + kPatch / 2))
                continue;
            double best = -1, texture = 0;
            for (const Luminance &truth : truths) {
                const Patch patch = comparePatch(truth, merged.picture, x, y);
                best = std::max(best, patch.correlation);
                texture = std::max(texture, patch.deviationA);
            }
            if (texture < 0.15)
                continue;
            patches++;
            single += best >= 0.75;
        }
    ASSERT_GT(patches, 50);
    EXPECT_GT(static_cast<double>(single) / patches, 0.85);
}

TEST(SceneMerge, NothingToAlignOnEndsInAnUntornPicture) {
    SceneSettings settings = staticScene(17);
    settings.variant = scene::Variant::flatGrey;
    settings.sensorNoise = false;
    const Merge merged = merge(settings);
    EXPECT_EQ(merged.info.fallback, HDR_FALLBACK_FEATURES);
    const auto [low, high] = std::minmax_element(merged.picture.values.begin(), merged.picture.values.end());
    EXPECT_LE(*high - *low, 1);
}

} // namespace
} // namespace tristop
