// SPDX-License-Identifier: GPL-3.0-or-later
// The list of merges that a batch is made of.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "app/file_error.h"
#include "cli/batch/bracket_finder.h"
#include "cli/batch/photograph_search.h"
#include "cli/merge_settings.h"

namespace tristop {

/// One merge of a batch; independent of all others. Paths are absolute.
struct PlannedMerge {
    std::array<std::string, 3> photographs; ///< dark, middle, bright where the exposures are known
    std::string output;
    int32_t width = 0; ///< of the photographs, in pixels
    int32_t height = 0;

    bool operator==(const PlannedMerge &) const = default;
};

struct BatchPlan {
    MergeSettings settings;
    std::vector<PlannedMerge> merges;
    std::vector<FileError> unused; ///< photographs that are in no bracket, with the reason
};

/// What is wrong with a template for the names of results; nothing when it is well.
std::optional<std::string> templateMistake(const std::string &nameTemplate);

/**
 * Plans the merge of each bracket into `resultFolder`, in the folder there that its first photograph has
 * below the searched one. In `nameTemplate` stand {first} and {middle} for the names of photographs without
 * their suffix, {date} for the day of capture (2024-05-31) and {n} for the bracket's number. Names that occur
 * twice get -2, -3 and so on.
 */
BatchPlan makePlan(const PhotographSearch &found, const BracketSearch &brackets,
                   const MergeSettings &settings, const std::string &resultFolder,
                   const std::string &nameTemplate);

/// The plan with every `parts`-th merge, from the one at `part` (from 0), and nothing said of unused
/// photographs.
BatchPlan partOfPlan(const BatchPlan &plan, int32_t part, int32_t parts);

/**
 * Writes a plan as JSON. Files below the plan's folder are named as seen from there, so that the folder can
 * be moved as a whole; others absolutely. Returns why it could not be written, or nothing on success.
 */
std::optional<FileError> writePlan(const BatchPlan &plan, const std::string &path);

/// Reads what writePlan wrote. Returns why it cannot be used, or nothing on success.
std::optional<FileError> readPlan(const std::string &path, BatchPlan &plan);

/// Whether a merge's result is there and newer than its photographs.
bool isDone(const PlannedMerge &merge);

} // namespace tristop
