// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <optional>
#include <string>
#include <variant>

#include "cli/exit_status.h"
#include "cli/merge_settings.h"

namespace tristop {

/// What the command line asks for: one merge.
struct Options : MergeSettings {
    std::array<std::string, 3> photographs;
    std::string output;
    std::string reportFolder; ///< empty for no report
    bool json = false;
    bool quiet = false;
};

/// What is wrong with the files that a merge is to read and write, as far as their names tell; nothing when
/// they are well.
std::optional<std::string> fileMistake(const Options &options);

/**
 * Reads the command line. Prints help, the version or what is wrong, and then gives the status with which
 * the command is to end instead of options.
 */
std::variant<Options, ExitStatus> parseOptions(int argc, char **argv);

} // namespace tristop
