// SPDX-License-Identifier: GPL-3.0-or-later
// The measures of quality, held against pictures and displacements whose quality is known.
#include "tools/quality/alignment_error.h"
#include "tools/quality/patch_agreement.h"
#include "tools/quality/scenes.h"

#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <random>

namespace tristop::quality {
namespace {

scene::SceneSettings movingScene() {
    scene::SceneSettings settings = staticScene({120, 80}, 41, CameraMotion::none);
    settings.moving = balloons(Movement::everyShot);
    return settings;
}

constexpr int kSide = 128;

/// Smooth texture of strength `contrast`, another one for every seed.
ShotContent texture(unsigned seed, float contrast) {
    std::minstd_rand random(seed);
    Luminance picture{kSide, kSide, std::vector<float>(kSide * kSide)};
    for (float &value : picture.values)
        value = 128 + contrast * (static_cast<float>(random() % 2001) / 1000 - 1);
    return {picture, picture, picture, {}};
}

Agreement agreementOf(const std::array<ShotContent, 3> &shots, const auto &pixel) {
    Luminance picture{kSide, kSide, std::vector<float>(kSide * kSide)};
    for (int y = 0; y < kSide; y++)
        for (int x = 0; x < kSide; x++)
            picture.at(x, y) = pixel(x, y);
    const Agreement agreement =
        patchAgreement(picture, shots, [](int, int) { return true; }, {0, 0, kSide, kSide});
    EXPECT_EQ(agreement.patches, 14 * 14); // centres at 9, 17, … 113; 119 is the last place that fits
    return agreement;
}

TEST(PatchAgreement, TellsAMixFromASingleExposure) {
    const std::array shots = {texture(1, 60), texture(2, 60), texture(3, 60)};
    const auto at = [&](int shot, int x, int y) {
        return shots[static_cast<size_t>(shot)].developed.at(x, y);
    };
    for (int shot = 0; shot < 3; shot++) {
        // Bent tones and a pixel's displacement are no mix.
        const Agreement one = agreementOf(
            shots, [&](int x, int y) { return 11.3f * std::sqrt(at(shot, std::min(x + 1, kSide - 1), y)); });
        EXPECT_EQ(one.agreeing, one.patches);
        EXPECT_EQ(one.telling, one.patches);
    }
    const Agreement half = agreementOf(shots, [&](int x, int y) { return (at(0, x, y) + at(2, x, y)) / 2; });
    EXPECT_LT(half.share(), 0.4); // independent structures: the expected correlation is 0.71
    const Agreement third =
        agreementOf(shots, [&](int x, int y) { return (at(0, x, y) + at(1, x, y) + at(2, x, y)) / 3; });
    EXPECT_LT(third.share(), 0.05); // 0.58
    // Cut in two: only the patches that the cut divides are a mix.
    const Agreement cut = agreementOf(shots, [&](int x, int y) { return at(x < 64 ? 0 : 2, x, y); });
    EXPECT_LT(cut.share(), 0.95);
    EXPECT_GT(cut.share(), 0.8);
}

TEST(PatchAgreement, SeesATransparentObjectInFrontOfAPlainWall) {
    const std::array shots = {texture(1, 60), texture(2, 0), texture(2, 0)};
    const auto mixed = [&](float part) {
        return agreementOf(shots, [&](int x, int y) {
            return part * shots[0].merged.at(x, y) + (1 - part) * shots[1].merged.at(x, y);
        });
    };
    for (const float whole : {0.0f, 0.8f, 1.0f})
        EXPECT_EQ(mixed(whole).opaqueShare(), 1) << whole;
    EXPECT_EQ(mixed(0.5f).share(), 1); // what correlation does not see
    EXPECT_EQ(mixed(0.5f).opaqueShare(), 0);
    EXPECT_EQ(mixed(0.5f).telling, mixed(0.5f).patches);
}

/// A run that follows the same displacement everywhere.
MergeRun runWithShifts(int x, int y) {
    MergeRun run;
    run.info.midIndex = kMiddle;
    run.valid = {0, 0, 480, 320};
    for (const size_t input : {kDark, kBright})
        run.displacement[input] = {{x, y}, 4, 4, std::vector<int32_t>(16), std::vector<int32_t>(16)};
    return run;
}

TEST(AlignmentErrors, AreTheDistancesFromTheTruth) {
    scene::SceneSettings settings = staticScene({480, 320}, 42, CameraMotion::none);
    settings.camera[kDark] = {.shiftX = 5, .shiftY = -3};
    settings.camera[kBright] = {.shiftX = 2, .shiftY = 1};
    MergeRun run = runWithShifts(5, -3);
    // The bright exposure is 3 and 4 pixels off.
    EXPECT_DOUBLE_EQ(alignmentError(run, settings).rms, 5);
    EXPECT_DOUBLE_EQ(alignmentError(run, settings).percentile99, 5);

    // Nodes that rise by 4 a column make an error of 4 (x + 128) / 256 pixels at column x.
    settings.camera[kBright] = settings.camera[kDark];
    for (size_t node = 0; node < 16; node++)
        run.displacement[kBright].x[node] = static_cast<int32_t>(4 * (node % 4));
    double squares = 0;
    for (int x = 0; x < 480; x++)
        squares += std::pow(4 * (x + 128) / 256.0, 2);
    EXPECT_NEAR(alignmentError(run, settings).rms, std::sqrt(squares / 480), 0.05);
    EXPECT_NEAR(alignmentError(run, settings).percentile99, 4 * (475 + 128) / 256.0, 0.05);
}

TEST(AlignmentErrors, AreInfiniteWhereLittleIsMeasured) {
    const scene::SceneSettings settings = staticScene({480, 320}, 42, CameraMotion::none);
    MergeRun run = runWithShifts(0, 0);
    EXPECT_EQ(alignmentError(run, settings).rms, 0);
    run.valid.x1 = 300;
    EXPECT_TRUE(std::isinf(alignmentError(run, settings).rms));
    run.valid.x1 = 480;
    run.info.midIndex = kDark;
    EXPECT_TRUE(std::isinf(alignmentError(run, settings).percentile99));
}

TEST(ViewCache, KeepsTheLightOfAShot) {
    const std::filesystem::path folder = std::filesystem::temp_directory_path() / "tristop-view-cache-test";
    std::filesystem::remove_all(folder);
    ViewCache inFiles(folder), inMemory;
    const scene::SceneSettings settings = movingScene();
    const auto truth = scene::radiance(settings, kBright);
    for (ViewCache *views : {&inMemory, &inFiles, &inFiles}) { // rendered, rendered, read
        const auto kept = views->radiance(settings, kBright);
        ASSERT_EQ(kept.samples.size(), truth.samples.size());
        for (size_t i = 0; i < truth.samples.size(); i++)
            ASSERT_NEAR(kept.samples[i], truth.samples[i], truth.samples[i] / 4000 + 1e-6);
    }
    // What moved is another view.
    EXPECT_NE(inFiles.radiance(settings, kMiddle).samples, inFiles.radiance(settings, kBright).samples);
    std::filesystem::remove_all(folder);
}

} // namespace
} // namespace tristop::quality
