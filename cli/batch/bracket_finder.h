// SPDX-License-Identifier: GPL-3.0-or-later
// Which photographs of many belong together.
#pragma once

#include <array>
#include <chrono>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "cli/batch/photograph_search.h"

namespace tristop {

struct BracketRules {
    /// The longest pause between two photographs of a bracket. Without a value it is kUsualPause where
    /// capture times are known and any pause where they are not.
    std::optional<std::chrono::microseconds> pause;
    /// Photographs whose headers do not tell their time and exposure are taken three by three.
    bool threeByThree = false;
};

inline constexpr std::chrono::seconds kUsualPause(5);

/// Three photographs of one scene, by their index.
struct Bracket {
    std::array<size_t, 3> photographs; ///< dark, middle, bright; in the order taken if exposures are unknown
    size_t first = 0;                  ///< the one that was taken first

    bool operator==(const Bracket &) const = default;
};

/// A photograph that is in no bracket.
struct UnusedPhotograph {
    size_t photograph = 0;
    std::string reason; ///< in words that follow its name
};

struct BracketSearch {
    std::vector<Bracket> brackets;        ///< by their first photographs
    std::vector<UnusedPhotograph> unused; ///< in the order of the photographs
};

/**
 * Finds the brackets among `photographs`. A bracket is three photographs that one camera took one after the
 * other, of one size and format, with pauses no longer than the rules allow (the exposure itself and as long
 * again for the camera's noise reduction do not count), whose exposures, or else their biases, are half a
 * stop or more apart. Where there is a choice, because brackets follow each other without a pause and
 * photographs are missing, those are brackets whose exposures come in the order that explains most of the
 * camera's brackets, then as many as possible, then those taken in the shortest time. The photographs of one
 * camera and folder are in the order of their times, and where these are equal in the order given. RAW files
 * beside a JPEG of the same name are the same shot and not used.
 */
BracketSearch findBrackets(const std::vector<Photograph> &photographs, const BracketRules &rules);

} // namespace tristop
