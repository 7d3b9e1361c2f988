// SPDX-License-Identifier: GPL-3.0-or-later
// Whole merges of rendered scenes, held against what the scene really is.
#include "tools/quality/merge_run.h"
#include "tools/quality/patch_agreement.h"
#include "tools/quality/scenes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace tristop {
namespace {

using quality::Bracket;
using quality::comparePatch;
using quality::kPatch;
using quality::Luminance;
using quality::luminanceOf;
using quality::ViewCache;
using scene::SceneSettings;

// Multiples of 16, so that the picture of a camera held still is not cropped and stretched.
constexpr int kWidth = 720;
constexpr int kHeight = 480;

SceneSettings staticScene(uint64_t seed) {
    return quality::staticScene({kWidth, kHeight}, seed, quality::CameraMotion::none);
}

struct Merge {
    quality::MergeRun run;
    Luminance picture;
};

Merge merge(const SceneSettings &settings, ViewCache &views) {
    Bracket bracket(settings, views);
    quality::MergeRun run = quality::merge(bracket.pictures);
    return {std::move(run), luminanceOf(bracket.pictures[2])};
}

/// Share of the scene's textured patches whose structure the picture shows, strongly enough to be seen.
double shownStructure(const Luminance &picture, const Luminance &truth) {
    int textured = 0, shown = 0;
    for (int y = 0; y + kPatch <= truth.height; y += kPatch)
        for (int x = 0; x + kPatch <= truth.width; x += kPatch) {
            const quality::PatchComparison patch = comparePatch(truth, picture, x, y);
            if (patch.deviationA < 0.15)
                continue;
            textured++;
            shown += patch.correlation >= 0.75 && patch.deviationB >= 3;
        }
    EXPECT_GT(textured, 100);
    return static_cast<double>(shown) / textured;
}

TEST(SceneMerge, ShowsMoreOfTheSceneThanAnySingleShot) {
    ViewCache views;
    const SceneSettings settings = staticScene(11);
    const Merge merged = merge(settings, views);
    EXPECT_FALSE(merged.run.fellBack());
    for (int i = 0; i < 3; i++) {
        EXPECT_EQ(merged.run.info.shiftX[i], 0);
        EXPECT_EQ(merged.run.info.shiftY[i], 0);
    }
    const Luminance truth = quality::contentsOf(settings, views)[quality::kMiddle].light;
    const double shown = shownStructure(merged.picture, truth);
    const Bracket shots(settings, views);
    for (const Offscreen &shot : shots.pictures)
        EXPECT_GT(shown, shownStructure(luminanceOf(shot), truth));
    EXPECT_GT(shown, 0.9);
}

TEST(SceneMerge, KeepsTheOrderOfTones) {
    // Means over patches: a place that receives clearly more light must not come out darker than its
    // neighbour.
    ViewCache views;
    const SceneSettings settings = staticScene(12);
    const Merge merged = merge(settings, views);
    const Luminance truth = quality::contentsOf(settings, views)[quality::kMiddle].light;
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
    ViewCache views;
    const Merge merged = merge(settings, views);
    const Bracket shots(settings, views);
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
        ViewCache views;
        const Luminance picture = merge(settings, views).picture;
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

} // namespace
} // namespace tristop
