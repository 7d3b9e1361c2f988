// SPDX-License-Identifier: GPL-3.0-or-later
#include "tools/quality/study.h"

#include <cstdio>
#include <optional>

namespace tristop::quality {

namespace {

constexpr double kMostMarked = 2;
constexpr int kHighestLevel = 10;

} // namespace

void measureStaticScenes(Study &study) {
    const SizeClass &size = study.sizes.front();
    StaticTally bricks{std::string("bricks, ") + size.name};
    const scene::SceneSettings handHeld; // within half a repeat of the pattern
    for (const bool isHandHeld : {false, true})
        for (const double stops : kStops) {
            scene::SceneSettings settings =
                staticScene(size.size, size.seeds.front(), CameraMotion::none, stops);
            settings.variant = scene::Variant::repeatedPattern;
            if (isHandHeld)
                settings.camera = handHeld.camera;
            bricks.add(study.run(settings));
        }
    study.statics.push_back(bricks);

    // The balloon's red is clipped long before its luminance is.
    StaticTally saturated{std::string("balloon, ") + size.name};
    for (const CameraMotion motion : {CameraMotion::none, CameraMotion::rotation})
        for (const std::uint64_t seed : size.seeds)
            for (const double stops : kStops) {
                scene::SceneSettings settings = staticScene(size.size, seed, motion, stops);
                settings.moving = balloons(Movement::lastShot);
                settings.moving.offset.fill({});
                saturated.add(study.run(settings));
            }
    study.statics.push_back(saturated);

    std::printf("\nStatic scenes with noise and clipping, level %d, hand-held and from a tripod\n"
                "  %-20s %6s %16s %10s\n",
                kDefaultLevel, "scene", "runs", "most marked, %", "fallbacks");
    for (const StaticTally &tally : study.statics)
        std::printf("  %-20s %6d %16s %10s\n", tally.name.c_str(), tally.runs,
                    study.bars.atMost(tally.worstMarked, kMostMarked, 2).c_str(),
                    study.bars.atMost(tally.fallbacks, 0, 0).c_str());
    std::printf("  at most %35.1f %10d\n", kMostMarked, 0);
}

void measureLevels(Study &study) {
    const SizeClass &size = study.sizes.front();
    struct Scene {
        CameraMotion motion;
        double stops;
        std::optional<Movement> movement;
    };
    const std::array scenes = {Scene{CameraMotion::none, 2, Movement::lastShot},
                               Scene{CameraMotion::none, 3, Movement::everyShot},
                               Scene{CameraMotion::rotation, 2, Movement::everyShot},
                               Scene{CameraMotion::rotation, 3, Movement::largeShare},
                               Scene{CameraMotion::none, 3, std::nullopt},
                               Scene{CameraMotion::rotation, 2, std::nullopt}};
    std::printf("\nMarked cells in %% by level, never falling (a single exposure counts as 100)\n  %-32s",
                "level");
    for (int level = 0; level <= kHighestLevel; level++)
        std::printf(" %6d", level);
    std::printf("  falls\n");
    for (const Scene &one : scenes) {
        scene::SceneSettings settings = staticScene(size.size, size.seeds.front(), one.motion, one.stops);
        if (one.movement)
            settings.moving = balloons(*one.movement);
        std::printf("  %-10s +-%.0f %-17s", one.motion == CameraMotion::none ? "tripod" : "hand-held",
                    one.stops, one.movement ? describe(*one.movement) : "static");
        int before = 0, falls = 0;
        for (int level = 0; level <= kHighestLevel; level++) {
            const MergeRun run = study.run(settings, level);
            falls += run.marked < before;
            before = run.marked;
            std::printf(" %6.2f", 100 * run.markedShare());
        }
        std::printf(" %6s\n", study.bars.atMost(falls, 0, 0).c_str());
    }
}

} // namespace tristop::quality
