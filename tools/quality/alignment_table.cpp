// SPDX-License-Identifier: GPL-3.0-or-later
#include "tools/quality/alignment_error.h"
#include "tools/quality/study.h"

#include <cstdio>

namespace tristop::quality {

namespace {

struct Limits {
    const char *name;
    AlignmentError most;
};

Limits limitsOf(CameraMotion motion) {
    switch (motion) {
    case CameraMotion::none:
        return {"none", {0, 0}};
    case CameraMotion::shift:
        return {"shift <= 60 px", {0.5, 1.0}};
    case CameraMotion::rotation:
        return {"shift <= 40 px, rotation <= 1 deg", {0.7, 1.5}};
    case CameraMotion::perspective:
        break;
    }
    return {"the same, perspective <= 12 px", {0.9, 2.0}};
}

/// With a part of the picture moving on its own, an error may grow by these factors.
constexpr AlignmentError kMostGrowth = {1.1, 1.2};

/// The worst of a motion at one size.
struct Worst {
    AlignmentError still, moving;
    AlignmentError growthOfOne = {1, 1}; ///< in any one scene, whose last pixels may be rounded either way
};

double growth(double still, double moving) {
    return moving <= still ? 1 : moving / still;
}

AlignmentError growth(const AlignmentError &still, const AlignmentError &moving) {
    return {growth(still.rms, moving.rms), growth(still.percentile99, moving.percentile99)};
}

Worst measure(Study &study, const SizeClass &size, CameraMotion motion, StaticTally &tally) {
    Worst worst;
    for (const std::uint64_t seed : size.seeds)
        for (const double stops : kStops) {
            scene::SceneSettings settings = staticScene(size.size, seed, motion, stops);
            const MergeRun stillRun = study.run(settings);
            tally.add(stillRun);
            const AlignmentError still = alignmentError(stillRun, settings);
            settings.moving = balloons(Movement::largeShare);
            const AlignmentError moving = alignmentError(study.run(settings), settings);
            std::fprintf(stderr, "  %s: %.3f %.3f still, %.3f %.3f with 15 %% moving\n",
                         limitsOf(motion).name, still.rms, still.percentile99, moving.rms,
                         moving.percentile99);
            worst.still = worst.still.worse(still);
            worst.moving = worst.moving.worse(moving);
            worst.growthOfOne = worst.growthOfOne.worse(growth(still, moving));
        }
    return worst;
}

void printRow(Study &study, const char *name, const std::vector<Worst> &worst,
              AlignmentError (*figures)(const Worst &), const AlignmentError *most) {
    std::printf("  %-34s", name);
    for (const Worst &value : worst) {
        const AlignmentError shown = figures(value);
        if (most)
            std::printf("  %7s %7s", study.bars.atMost(shown.rms, most->rms, 3).c_str(),
                        study.bars.atMost(shown.percentile99, most->percentile99, 3).c_str());
        else
            std::printf("  %6.3f  %6.3f ", shown.rms, shown.percentile99);
    }
    if (most)
        std::printf("  %4.1f %4.1f", most->rms, most->percentile99);
    std::printf("\n");
}

} // namespace

void measureAlignment(Study &study) {
    std::vector<std::vector<Worst>> rows(kCameraMotions.size());
    for (const SizeClass &size : study.sizes) {
        StaticTally tally{std::string("room, ") + size.name};
        for (std::size_t i = 0; i < rows.size(); i++)
            rows[i].push_back(measure(study, size, kCameraMotions[i], tally));
        study.statics.push_back(tally);
    }

    std::printf(
        "\nAlignment error in pixels: RMS and 99th percentile, worst of dark and bright, +-2 and +-3 stops "
        "and the seeds\n  %-34s",
        "motion between the shots");
    for (const SizeClass &size : study.sizes)
        std::printf("  %7s %7s", size.name, "");
    std::printf("  at most\n");
    for (std::size_t i = 0; i < rows.size(); i++) {
        const Limits limits = limitsOf(kCameraMotions[i]);
        printRow(
            study, limits.name, rows[i], [](const Worst &worst) { return worst.still; }, &limits.most);
        printRow(
            study, "  with 15 % moving", rows[i], [](const Worst &worst) { return worst.moving; }, nullptr);
        printRow(
            study, "  ratio of the two", rows[i],
            [](const Worst &worst) { return growth(worst.still, worst.moving); }, &kMostGrowth);
        printRow(
            study, "  worst ratio of a single scene", rows[i],
            [](const Worst &worst) { return worst.growthOfOne; }, nullptr);
    }
}

} // namespace tristop::quality
