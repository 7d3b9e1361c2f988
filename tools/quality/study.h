// SPDX-License-Identifier: GPL-3.0-or-later
// What the parts of the quality table have in common, and the parts.
#pragma once

#include "tools/quality/merge_run.h"
#include "tools/quality/scenes.h"

#include <filesystem>
#include <string>
#include <vector>

namespace tristop::quality {

/// The limits that quality is held to, and how often it missed them.
class Bars {
public:
    /// "0.43 " for a value within its limit, "0.83!" for one above it, which counts as a miss.
    std::string atMost(double value, double limit, int decimals);
    std::string atLeast(double value, double limit, int decimals);
    int missed() const { return misses; }

private:
    std::string mark(double value, bool isMet, int decimals);

    int misses = 0;
};

/// Pictures of one size, in 3:2, and the scenes that are measured at it.
struct SizeClass {
    const char *name;
    Size size;
    std::vector<std::uint64_t> seeds;
};

/// Merges of a scene in which nothing moves.
struct StaticTally {
    std::string name;
    int runs = 0;
    int fallbacks = 0;
    double worstMarked = 0;

    void add(const MergeRun &run);
};

/// The state of one measurement of everything. The parts print their piece of the table to the standard
/// output and a line a merge to the standard error.
struct Study {
    ViewCache views;
    std::vector<SizeClass> sizes; ///< from the smallest
    Bars bars = {};
    std::vector<StaticTally> statics = {};
    std::vector<double> alignmentTimes = {}; ///< share of each merge of the largest size, in percent

    /// Renders and merges a scene, and tells what came of it.
    MergeRun run(const scene::SceneSettings &settings, int ghostLevel = kDefaultLevel);
};

/// The half distances in stops at which everything is measured.
inline constexpr std::array<double, 2> kStops = {2, 3};

/// Alignment error by motion and size. Leaves tallies of its static scenes, and times.
void measureAlignment(Study &study);
/// Whether moved objects come from one exposure.
void measureGhosts(Study &study);
/// Whether static scenes, those of measureAlignment and brick fronts, keep their exposures.
void measureStaticScenes(Study &study);
/// Whether a higher level never marks less.
void measureLevels(Study &study);
/// The share of time of alignment and ghost detection.
void measureTime(Study &study);
/// What becomes of the photographs in the folders of `folder`, each with three JPEG files.
void measurePhotographs(Study &study, const std::filesystem::path &folder);

} // namespace tristop::quality
