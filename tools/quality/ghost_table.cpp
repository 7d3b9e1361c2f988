// SPDX-License-Identifier: GPL-3.0-or-later
#include "tools/quality/patch_agreement.h"
#include "tools/quality/study.h"

#include <algorithm>
#include <cstdio>

namespace tristop::quality {

namespace {

constexpr double kLeastAgreement = 98;

/// The worst of several measurements, in percent.
struct WorstAgreement {
    double share = 100, opaqueShare = 100;

    void add(const Agreement &agreement) {
        share = std::min(share, 100 * agreement.share());
        opaqueShare = std::min(opaqueShare, 100 * agreement.opaqueShare());
    }
};

/// What became of one kind of movement before one kind of camera.
struct GhostTally {
    WorstAgreement merged; ///< of the runs that merged: a picture of one exposure is no mix
    double mostMarked = 0;
    int runs = 0, fallbacks = 0;
};

Luminance mix(const std::array<ShotContent, 3> &shots) {
    Luminance mixed = shots[0].merged;
    for (std::size_t i = 0; i < mixed.values.size(); i++)
        mixed.values[i] =
            (shots[0].merged.values[i] + shots[1].merged.values[i] + shots[2].merged.values[i]) / 3;
    return mixed;
}

struct Camera {
    const char *name;
    CameraMotion motion;
};
constexpr std::array kGhostCameras = {Camera{"tripod", CameraMotion::none},
                                      Camera{"hand-held", CameraMotion::rotation}};

void measureMovement(Study &study, const SizeClass &size, Movement movement) {
    std::array<GhostTally, kGhostCameras.size()> tallies;
    WorstAgreement control, mixed;
    for (const std::uint64_t seed : size.seeds)
        for (const double stops : kStops) {
            scene::SceneSettings settings = staticScene(size.size, seed, CameraMotion::none, stops);
            settings.moving = balloons(movement);
            const MovedPlaces moved(settings);
            auto shots = contentsOf(settings, study.views);
            const auto measure = [&](const Luminance &picture, const hdr::Rect &area) {
                return patchAgreement(
                    picture, shots, [&](int x, int y) { return moved.at(x, y); }, area);
            };
            const hdr::Rect whole = {0, 0, size.size.width, size.size.height};
            control.add(measure(shots[kMiddle].merged, whole));
            mixed.add(measure(mix(shots), whole));
            for (std::size_t i = 0; i < tallies.size(); i++) {
                settings.camera = staticScene(size.size, seed, kGhostCameras[i].motion, stops).camera;
                const MergeRun run = study.run(settings);
                GhostTally &tally = tallies[i];
                tally.runs++;
                tally.fallbacks += run.fellBack();
                tally.mostMarked = std::max(tally.mostMarked, 100 * run.markedShare());
                if (run.fellBack())
                    continue;
                const Bracket photographs(settings, study.views);
                for (std::size_t shot = 0; shot < shots.size(); shot++)
                    shots[shot].photograph =
                        broughtIntoPlace(luminanceOf(photographs.pictures[shot]), run.displacement[shot]);
                const Agreement agreement = measure(run.rendered, run.valid);
                std::fprintf(stderr, "  moving %s, %s: %.2f %% of %d patches agree, %.2f %% of %d opaque\n",
                             describe(movement), kGhostCameras[i].name, 100 * agreement.share(),
                             agreement.patches, 100 * agreement.opaqueShare(), agreement.telling);
                tally.merged.add(agreement);
            }
        }
    for (std::size_t i = 0; i < tallies.size(); i++) {
        const GhostTally &tally = tallies[i];
        std::printf("  %-20s %-10s", describe(movement), kGhostCameras[i].name);
        if (tally.fallbacks < tally.runs)
            std::printf(" %8s %7.2f ", study.bars.atLeast(tally.merged.share, kLeastAgreement, 2).c_str(),
                        tally.merged.opaqueShare);
        else
            std::printf(" %7s  %7s ", "-", "-");
        std::printf(" %9.2f %8d of %d\n", tally.mostMarked, tally.fallbacks, tally.runs);
    }
    std::printf("  %20s %-10s %7.2f  %7.2f\n  %20s %-10s %7.2f  %7.2f\n", "", "(no motion", control.share,
                control.opaqueShare, "", " plain mix)", mixed.share, mixed.opaqueShare);
}

} // namespace

void measureGhosts(Study &study) {
    const SizeClass &size = study.sizes.front();
    std::printf(
        "\nMoved objects at %s, level %d: patches of 16 x 16 in which the merge agrees with one exposure, "
        "in %%, worst run.\nOpaque: of the patches where exposures differ, those that also have its "
        "contrast. For comparison the merge of a scene without\nmotion, and a plain mix of the three\n"
        "  %-20s %-10s %7s  %7s  %9s %8s\n",
        size.name, kDefaultLevel, "balloons move", "camera", "agree", "opaque", "marked", "fallbacks");
    for (const Movement movement : kMovements)
        measureMovement(study, size, movement);
    std::printf("  %-31s %7.2f\n", "at least", kLeastAgreement);
}

} // namespace tristop::quality
