// SPDX-License-Identifier: GPL-3.0-or-later
#include "tools/scene_renderer/scene.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <vector>

#include <gtest/gtest.h>

namespace tristop::scene {
namespace {

SceneSettings smallScene() {
    SceneSettings settings;
    settings.width = 240;
    settings.height = 160;
    settings.sensorNoise = false;
    return settings;
}

double luminanceAt(const Picture<float> &picture, int x, int y) {
    const float *rgb = picture.pixel(x, y);
    return 0.2126 * rgb[0] + 0.7152 * rgb[1] + 0.0722 * rgb[2];
}

double luminanceBetween(const Picture<float> &picture, double x, double y) {
    const int left = static_cast<int>(std::floor(x)), top = static_cast<int>(std::floor(y));
    const double fx = x - left, fy = y - top;
    return std::lerp(
        std::lerp(luminanceAt(picture, left, top), luminanceAt(picture, left + 1, top), fx),
        std::lerp(luminanceAt(picture, left, top + 1), luminanceAt(picture, left + 1, top + 1), fx), fy);
}

/// Median distance in stops between the reference at p and the shot at p - scale d(p), where that is inside.
double misalignment(const Picture<float> &reference, const Picture<float> &shot, const DisplacementField &d,
                    double scale) {
    std::vector<double> distances;
    for (int y = 0; y < reference.height; ++y)
        for (int x = 0; x < reference.width; ++x) {
            const Position by = d.at(x, y);
            const double sx = x - scale * by.x, sy = y - scale * by.y;
            if (sx < 0 || sy < 0 || sx >= shot.width - 1 || sy >= shot.height - 1)
                continue;
            distances.push_back(
                std::abs(std::log2(luminanceAt(reference, x, y) / luminanceBetween(shot, sx, sy))));
        }
    const auto middle = distances.begin() + static_cast<std::ptrdiff_t>(distances.size() / 2);
    std::nth_element(distances.begin(), middle, distances.end());
    return *middle;
}

std::size_t countSet(const Mask &mask) {
    return static_cast<std::size_t>(std::count(mask.values.begin(), mask.values.end(), std::uint8_t{255}));
}

TEST(SceneRenderer, SettingsAloneDecideEveryByte) {
    SceneSettings settings = smallScene();
    settings.sensorNoise = true;
    const auto picture = render(settings, 1, 1);
    EXPECT_EQ(picture.samples, render(settings, 1, 3).samples);
    EXPECT_EQ(picture.samples, develop(radiance(settings, 1), settings, 1).samples);
    EXPECT_EQ(objectMask(settings, 0, 1, 1).values, objectMask(settings, 0, 1, 3).values);
    SceneSettings other = settings;
    other.seed = 2;
    EXPECT_NE(picture.samples, render(other, 1).samples);
}

TEST(SceneRenderer, DisplacementHasTheDocumentedSigns) {
    SceneSettings settings;
    settings.width = 101;
    settings.height = 81; // the centre is at (50, 40)
    const auto displacement = [&](const ShotMotion &motion, double x, double y) {
        settings.camera = {};
        settings.camera[2] = motion;
        return trueDisplacement(settings, 2, 1).at(x, y);
    };
    const Position shifted = displacement({.shiftX = 3, .shiftY = -2}, 10, 20);
    EXPECT_NEAR(shifted.x, 3, 1e-9);
    EXPECT_NEAR(shifted.y, -2, 1e-9);
    // The camera turns clockwise: what was 10 pixels right of the centre is now 10 pixels above it.
    const Position turned = displacement({.rotationDegrees = 90}, 60, 40);
    EXPECT_NEAR(60 - turned.x, 50, 1e-9);
    EXPECT_NEAR(40 - turned.y, 30, 1e-9);
    // At 75, a quarter of 101 right of the centre, the divisor is 1 + 0.2 * 25 / 101.
    const double still = 50 + 25 / (1 + 0.2 * 25 / 101);
    const Position slanted = displacement({.perspectiveX = 0.2}, still, 40);
    EXPECT_NEAR(still - slanted.x, 75, 1e-9);
    EXPECT_NEAR(slanted.y, 0, 1e-9);
}

TEST(SceneRenderer, StaticSceneIsFoundWhereTheDisplacementSays) {
    SceneSettings settings = smallScene();
    settings.moving.share = 0;
    settings.camera = {{{.shiftX = 5.5, .shiftY = -3.25, .rotationDegrees = 1.5, .perspectiveX = 0.01},
                        {.shiftX = -2.75, .shiftY = 1.5, .rotationDegrees = -1},
                        {.shiftX = 0, .shiftY = 4, .rotationDegrees = 0.5, .perspectiveY = -0.02}}};
    const auto reference = radiance(settings, 1);
    for (const int shot : {0, 2}) {
        const auto other = radiance(settings, shot);
        const auto displacement = trueDisplacement(settings, shot, 1);
        const double aligned = misalignment(reference, other, displacement, 1);
        EXPECT_LT(aligned, 0.08) << shot;
        for (const double wrong : {-1.0, 0.0, 0.8, 1.2}) // half a pixel off is measurably worse
            EXPECT_LT(1.3 * aligned, misalignment(reference, other, displacement, wrong))
                << shot << ' ' << wrong;
    }
}

TEST(SceneRenderer, MasksHoldExactlyWhatTheBalloonsChange) {
    SceneSettings settings = smallScene();
    settings.moving = {.count = 2, .share = 0.05, .offset = {{{-0.1, 0.03}, {0, 0}, {0.08, -0.05}}}};
    SceneSettings empty = settings;
    empty.moving.share = 0;
    EXPECT_EQ(countSet(objectMask(empty, 0, 1)), 0u);
    const double pixels = 240 * 160;
    for (const int shot : {0, 2}) {
        const auto with = radiance(settings, shot), without = radiance(empty, shot);
        const Mask own = objectMask(settings, shot, shot);
        // Balloons of 5 % of the picture, and their strings, shadows and rims.
        EXPECT_GT(static_cast<double>(countSet(own)), 0.045 * pixels);
        EXPECT_LT(static_cast<double>(countSet(own)), 0.12 * pixels);
        std::size_t changedInMask = 0;
        for (int y = 0; y < 160; ++y)
            for (int x = 0; x < 240; ++x) {
                const double change = luminanceAt(with, x, y) / luminanceAt(without, x, y);
                if (own.at(x, y))
                    changedInMask += std::abs(change - 1) > 0.005;
                else
                    EXPECT_NEAR(change, 1, 0.012) << shot << ": " << x << ", " << y;
            }
        EXPECT_GT(changedInMask, countSet(own) * 3 / 4);

        // In the reference's pixels: what changed near where a pixel went must be in the mask.
        const Mask seenFromReference = objectMask(settings, shot, 1);
        const auto displacement = trueDisplacement(settings, shot, 1);
        for (int y = 0; y < 160; ++y)
            for (int x = 0; x < 240; ++x) {
                const Position d = displacement.at(x, y);
                const auto sx = static_cast<int>(std::lround(x - d.x)),
                           sy = static_cast<int>(std::lround(y - d.y));
                if (seenFromReference.at(x, y) || sx < 0 || sy < 0 || sx >= 240 || sy >= 160)
                    continue;
                const double change = luminanceAt(with, sx, sy) / luminanceAt(without, sx, sy);
                EXPECT_NEAR(change, 1, 0.05) << shot << ": " << x << ", " << y;
            }
    }
    const Mask dark = objectMask(settings, 0, 1), bright = objectMask(settings, 2, 1);
    const Mask both = motionMask(settings, std::array{0, 2}, 1);
    for (std::size_t i = 0; i < both.values.size(); ++i)
        ASSERT_EQ(both.values[i], std::max(dark.values[i], bright.values[i]));
}

TEST(SceneRenderer, ShotsDifferByTheirExposure) {
    SceneSettings settings = smallScene();
    settings.variant = Variant::flatGrey;
    settings.moving.count = 0;
    settings.stops = {-3, 0.5, 3};
    const auto dark = render(settings, 0), middle = render(settings, 1), bright = render(settings, 2);
    // One 8-bit level is 3 to 7 % of the exposure here; the grey is 0.18, and 0.18 * 8 saturates.
    EXPECT_NEAR(exposureOfValue(dark.pixel(9, 9)[1]) / (0.18 / 8), 1, 0.05);
    EXPECT_NEAR(exposureOfValue(middle.pixel(9, 9)[1]) / (0.18 * std::sqrt(2)), 1, 0.02);
    EXPECT_EQ(bright.pixel(9, 9)[1], 255);
    EXPECT_EQ(developedValue(0), 0);
    EXPECT_DOUBLE_EQ(developedValue(7), 255);
    for (const double exposure : {0.0005, 0.01, 0.3, 0.95})
        EXPECT_NEAR(exposureOfValue(developedValue(exposure)), exposure, 1e-9);
}

TEST(SceneRenderer, NoiseIsThatOfPhotonsAndReading) {
    SceneSettings settings = smallScene();
    settings.variant = Variant::flatGrey;
    settings.moving.count = 0;
    settings.sensorNoise = true;
    settings.stops = {-4, 0, 1};
    double previous = 0;
    for (const int shot : {0, 1, 2}) {
        const auto picture = render(settings, shot);
        double sum = 0, squares = 0;
        for (const std::uint8_t value : picture.samples) {
            const double exposure = exposureOfValue(value);
            sum += exposure;
            squares += exposure * exposure;
        }
        const auto count = static_cast<double>(picture.samples.size());
        const double mean = sum / count, deviation = std::sqrt(squares / count - mean * mean);
        const double expected = 0.18 * std::exp2(settings.stops[static_cast<std::size_t>(shot)]);
        EXPECT_NEAR(mean / expected, 1, 0.01) << shot;
        // A full well of 24000 electrons, 5 electrons of read noise, and the rounding to 8-bit levels.
        const double level =
            exposureOfValue(developedValue(expected) + 0.5) - exposureOfValue(developedValue(expected) - 0.5);
        const double electrons = expected * 24000;
        const double noise = std::sqrt((electrons + 25) / (24000.0 * 24000.0) + level * level / 12);
        EXPECT_NEAR(deviation / noise, 1, 0.1) << shot;
        EXPECT_GT(deviation, previous);
        previous = deviation;
    }
}

TEST(SceneRenderer, RoomHasTwelveStopsThatTheBracketCovers) {
    SceneSettings settings = smallScene();
    const auto light = radiance(settings, 1);
    std::vector<double> luminances;
    for (int y = 0; y < settings.height; ++y)
        for (int x = 0; x < settings.width; ++x)
            luminances.push_back(luminanceAt(light, x, y));
    std::sort(luminances.begin(), luminances.end());
    const auto quantile = [&](double share) {
        return luminances[static_cast<std::size_t>(share * static_cast<double>(luminances.size() - 1))];
    };
    EXPECT_GT(std::log2(quantile(0.9995) / quantile(0.0005)), 11.5);
    EXPECT_GT(luminances.front(), 0);
    const auto shareOf = [&](int shot, auto &&condition) {
        const auto picture = render(settings, shot);
        return static_cast<double>(std::count_if(picture.samples.begin(), picture.samples.end(), condition)) /
               static_cast<double>(picture.samples.size());
    };
    const auto burnt = [](std::uint8_t value) { return value == 255; };
    const auto black = [](std::uint8_t value) { return value < 16; };
    EXPECT_LT(shareOf(0, burnt), 0.01);
    EXPECT_GT(shareOf(1, burnt), 0.03);
    EXPECT_GT(shareOf(1, black), 0.1);
    EXPECT_LT(shareOf(2, black), 0.03);
}

TEST(SceneRenderer, DegenerateScenesAreFlatOrRepeat) {
    SceneSettings settings;
    settings.width = 960; // 30 pixels a repeat
    settings.height = 60;
    settings.camera = {};
    settings.moving.share = 0;
    settings.variant = Variant::repeatedPattern;
    const auto bricks = radiance(settings, 1);
    double low = 1, high = 0;
    for (int y = 0; y + 20 < 60; ++y)
        for (int x = 0; x + 30 < 960; ++x) {
            ASSERT_NEAR(luminanceAt(bricks, x, y), luminanceAt(bricks, x + 30, y), 2e-3);
            ASSERT_NEAR(luminanceAt(bricks, x, y), luminanceAt(bricks, x, y + 20), 2e-3);
            low = std::min(low, luminanceAt(bricks, x, y));
            high = std::max(high, luminanceAt(bricks, x, y));
        }
    EXPECT_GT(high, 1.5 * low);
    settings.variant = Variant::flatGrey;
    const auto grey = radiance(settings, 1);
    EXPECT_TRUE(std::all_of(grey.samples.begin(), grey.samples.end(), [](float v) { return v == 0.18f; }));
}

TEST(SceneRenderer, RefusesImpossibleSettings) {
    const SceneSettings good = smallScene();
    EXPECT_THROW(render(good, 3), std::invalid_argument);
    EXPECT_THROW(radiance(good, -1), std::invalid_argument);
    SceneSettings settings = good;
    settings.width = 0;
    EXPECT_THROW(render(settings, 0), std::invalid_argument);
    settings = good;
    settings.moving.count = 5;
    EXPECT_THROW(objectMask(settings, 0, 1), std::invalid_argument);
    settings = good;
    settings.moving.share = 0.2;
    EXPECT_THROW(render(settings, 0), std::invalid_argument);
}

} // namespace
} // namespace tristop::scene
