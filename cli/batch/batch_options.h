// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

#include "cli/batch/bracket_finder.h"
#include "cli/exit_status.h"
#include "cli/merge_settings.h"

namespace tristop {

/// What the command line of a batch asks for.
struct BatchOptions : MergeSettings {
    std::vector<std::string> inputs; ///< folders and photographs; none when a plan is run
    std::string resultFolder;
    std::string nameTemplate = "{middle}-hdr.jpg";
    BracketRules rules;
    std::string planToWrite; ///< empty: merge instead
    std::string planToRun;   ///< empty: plan anew
    int32_t part = 0;        ///< from 0
    int32_t parts = 1;
    int32_t jobs = 1;
    int64_t memory = 0; ///< bytes
    std::string log;    ///< empty for none
    bool dryRun = false;
    bool redo = false;
    bool quiet = false;
};

/// Reads the command line after the word "batch" in the manner of parseOptions.
std::variant<BatchOptions, ExitStatus> parseBatchOptions(int argc, char **argv);

} // namespace tristop
