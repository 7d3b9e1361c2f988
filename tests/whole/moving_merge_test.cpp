// SPDX-License-Identifier: GPL-3.0-or-later
// Merges of rendered scenes whose camera or objects moved: a small edition of ./dev quality.
#include "tools/quality/alignment_error.h"
#include "tools/quality/patch_agreement.h"
#include "tools/quality/scenes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <ostream>

namespace tristop::quality {
namespace {

constexpr Size kSize = {480, 320};
constexpr uint64_t kSeed = 21;

MergeRun mergeScene(const scene::SceneSettings &settings, ViewCache &views, int level = kDefaultLevel) {
    Bracket bracket(settings, views);
    return merge(bracket.pictures, level);
}

struct AlignmentCase {
    const char *name;
    CameraMotion motion;
    Size size;           ///< a change of perspective needs room: grids have a node every 256 pixels
    AlignmentError most; ///< half as much again as large pictures may show
};

void PrintTo(const AlignmentCase &one, std::ostream *out) {
    *out << one.name;
}

class AlignmentOf : public testing::TestWithParam<AlignmentCase> {};

TEST_P(AlignmentOf, FollowsTheSceneWithAndWithoutThingsThatMove) {
    const AlignmentCase &one = GetParam();
    ViewCache views;
    for (const bool isMoving : {false, true}) {
        scene::SceneSettings settings = staticScene(one.size, kSeed, one.motion);
        if (isMoving)
            settings.moving = balloons(Movement::largeShare);
        const AlignmentError error = alignmentError(mergeScene(settings, views), settings);
        EXPECT_LE(error.rms, one.most.rms) << isMoving;
        EXPECT_LE(error.percentile99, one.most.percentile99) << isMoving;
    }
}

INSTANTIATE_TEST_SUITE_P(
    Camera, AlignmentOf,
    testing::Values(AlignmentCase{"none", CameraMotion::none, kSize, {0, 0}},
                    AlignmentCase{"shift", CameraMotion::shift, kSize, {0.75, 1.5}},
                    AlignmentCase{"rotation", CameraMotion::rotation, kSize, {1.05, 2.25}},
                    AlignmentCase{"perspective", CameraMotion::perspective, {720, 480}, {1.35, 3}}),
    [](const auto &info) { return std::string(info.param.name); });

TEST(MovingMerge, TakesAMovedObjectFromOneExposure) {
    for (const Movement movement : {Movement::lastShot, Movement::everyShot}) {
        ViewCache views;
        scene::SceneSettings settings = staticScene(kSize, kSeed, CameraMotion::none);
        settings.moving = balloons(movement);
        const MergeRun run = mergeScene(settings, views);
        EXPECT_FALSE(run.fellBack());
        const auto shots = contentsOf(settings, views);
        const MovedPlaces moved(settings);
        const Agreement agreement = patchAgreement(
            run.rendered, shots, [&](int x, int y) { return moved.at(x, y); }, run.valid);
        ASSERT_GT(agreement.patches, 50);
        EXPECT_GT(agreement.share(), 0.9) << static_cast<int>(movement);
        ASSERT_GT(agreement.telling, 20);
        EXPECT_GT(agreement.opaqueShare(), 0.8) << static_cast<int>(movement);
    }
}

TEST(MovingMerge, MarksNoLessAtAHigherLevel) {
    ViewCache views;
    scene::SceneSettings settings = staticScene(kSize, kSeed, CameraMotion::none);
    settings.moving = balloons(Movement::everyShot);
    int before = 0;
    for (int level = 0; level <= 10; level++) {
        const int marked = mergeScene(settings, views, level).marked;
        EXPECT_GE(marked, before) << level;
        before = marked;
    }
    EXPECT_GT(before, 0);
}

TEST(MovingMerge, IsTheSameEveryTimeAndInEveryOrder) {
    ViewCache views;
    scene::SceneSettings settings = staticScene(kSize, kSeed, CameraMotion::rotation);
    settings.moving = balloons(Movement::everyShot);
    const Bracket bracket(settings, views);
    const auto merged = [&](const std::array<size_t, 3> &order) {
        Bracket shuffled(kSize.width, kSize.height);
        for (size_t k = 0; k < 3; k++)
            std::copy(bracket.bytes[order[k]].begin(), bracket.bytes[order[k]].end(),
                      shuffled.bytes[k].begin());
        merge(shuffled.pictures);
        return shuffled.bytes[2];
    };
    std::array<size_t, 3> order = {0, 1, 2};
    const std::vector<uint8_t> first = merged(order);
    do {
        EXPECT_TRUE(merged(order) == first) << order[0] << order[1] << order[2];
    } while (std::next_permutation(order.begin(), order.end()));
}

} // namespace
} // namespace tristop::quality
