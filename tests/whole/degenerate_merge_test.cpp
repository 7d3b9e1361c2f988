// SPDX-License-Identifier: GPL-3.0-or-later
// Merges of brackets that offer little to work with: every one ends in a picture of one scene, not a torn
// one.
#include "tools/quality/merge_run.h"
#include "tools/quality/patch_agreement.h"
#include "tools/quality/scenes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <random>

namespace tristop::quality {
namespace {

constexpr int kWidth = 360;
constexpr int kHeight = 240;

/// The largest and smallest luminance of a picture, in levels.
float range(const Luminance &picture) {
    const auto [low, high] = std::minmax_element(picture.values.begin(), picture.values.end());
    return *high - *low;
}

/// Share of a picture's textured patches that agree with one of the shots.
double agreeingShare(const MergeRun &run, std::span<const ShotContent> shots) {
    const Agreement agreement = patchAgreement(
        run.rendered, shots, [](int, int) { return true; }, run.valid);
    EXPECT_GT(agreement.patches, 10);
    return agreement.share();
}

void fill(Bracket &bracket, size_t shot, const std::function<int()> &luminance) {
    for (size_t i = 0; i < bracket.bytes[shot].size(); i += 2)
        bracket.bytes[shot][i] = static_cast<uint8_t>(luminance());
}

TEST(DegenerateMerge, OfPicturesWithoutTextureHasNone) {
    for (const auto &levels : {std::array{16, 16, 16}, std::array{235, 235, 235}, std::array{50, 110, 190},
                               std::array{0, 255, 255}}) {
        Bracket bracket(kWidth, kHeight);
        for (size_t shot = 0; shot < 3; shot++)
            fill(bracket, shot, [&] { return levels[shot]; });
        const MergeRun run = merge(bracket.pictures);
        EXPECT_EQ(run.info.fallback, HDR_FALLBACK_FEATURES) << levels[0] << ' ' << levels[2];
        EXPECT_LE(range(luminanceOf(bracket.pictures[2])), 1) << levels[0] << ' ' << levels[2];
    }
}

TEST(DegenerateMerge, OfNoiseIsOneOfTheExposures) {
    Bracket bracket(kWidth, kHeight);
    std::minstd_rand random(5);
    std::vector<ShotContent> shots;
    for (size_t shot = 0; shot < 3; shot++) {
        fill(bracket, shot, [&] { return static_cast<int>(30 + 60 * shot + random() % 80); });
        const Luminance content = luminanceOf(bracket.pictures[shot]);
        shots.push_back({content, content, content, {}});
    }
    const MergeRun run = merge(bracket.pictures);
    EXPECT_TRUE(run.fellBack());
    EXPECT_GT(agreeingShare(run, shots), 0.98);
}

TEST(DegenerateMerge, OfEqualExposuresIsThatExposure) {
    ViewCache views;
    scene::SceneSettings settings = staticScene({kWidth, kHeight}, 31, CameraMotion::none, 0);
    settings.sensorNoise = false;
    Bracket bracket(settings, views);
    const MergeRun run = merge(bracket.pictures);
    EXPECT_FALSE(run.fellBack());
    EXPECT_EQ(run.marked, 0);
    const auto shots = contentsOf(settings, views);
    EXPECT_GT(agreeingShare(run, shots), 0.98);
}

TEST(DegenerateMerge, WithAnExposureThatShowsNothingIsTheSceneOfTheOthers) {
    for (const int lost : {kDark, kBright})
        for (const CameraMotion motion : {CameraMotion::none, CameraMotion::rotation}) {
            ViewCache views;
            scene::SceneSettings settings = staticScene({kWidth, kHeight}, 32, motion);
            settings.stops[static_cast<size_t>(lost)] = lost == kDark ? -12 : 16;
            Bracket bracket(settings, views);
            const MergeRun run = merge(bracket.pictures);
            if (run.fellBack())
                continue; // one exposure, where it stood
            const auto shots = contentsOf(settings, views);
            EXPECT_GT(agreeingShare(run, shots), 0.9) << lost << ' ' << static_cast<int>(motion);
        }
}

TEST(DegenerateMerge, OfARepeatedPatternKeepsItsStructure) {
    for (const CameraMotion motion : {CameraMotion::none, CameraMotion::shift, CameraMotion::rotation}) {
        ViewCache views;
        scene::SceneSettings settings = staticScene({kWidth, kHeight}, 33, motion);
        settings.variant = scene::Variant::repeatedPattern;
        Bracket bracket(settings, views);
        const MergeRun run = merge(bracket.pictures);
        if (run.fellBack())
            continue;
        const auto shots = contentsOf(settings, views);
        EXPECT_GT(agreeingShare(run, shots), 0.9) << static_cast<int>(motion);
    }
}

TEST(DegenerateMerge, OfEverySizeShowsTheScene) {
    // The smallest, the longest and the flattest, and some that end with a cell, a pair of reduced pixels or
    // in the middle of either.
    for (const auto &[width, height] :
         {Size{100, 100}, Size{100, 4000}, Size{4004, 100}, Size{320, 224}, Size{316, 233}, Size{272, 256}}) {
        ViewCache views;
        scene::SceneSettings settings = staticScene({width, height}, 34, CameraMotion::none);
        settings.camera[kBright] = {.shiftX = 2.6, .shiftY = 1.2, .rotationDegrees = -0.05};
        Bracket bracket(settings, views);
        const MergeRun run = merge(bracket.pictures);
        if (run.fellBack())
            continue;
        const auto shots = contentsOf(settings, views);
        EXPECT_GT(agreeingShare(run, shots), 0.9) << width << " x " << height;
    }
}

} // namespace
} // namespace tristop::quality
