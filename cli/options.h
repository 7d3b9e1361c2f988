// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <variant>

#include "cli/write_options.h"

namespace tristop {

/// What the command line asks for.
struct Options {
    std::array<std::string, 3> photographs;
    std::string output;
    int32_t toneLength = 45;
    int32_t brightness = 10;
    int32_t toneSaturation = 40;
    int32_t ghostLevel = 6;
    int32_t contrast = 0;
    int32_t saturation = 0;
    int32_t style = 0; ///< LomoSettings::kStyle…
    WriteOptions writing;
    std::string reportFolder; ///< empty for no report
    bool json = false;
    bool quiet = false;
};

/// Exit statuses of the command.
enum ExitStatus : int {
    kSuccess = 0,
    kBadUsage = 2,
    kBadPhotograph = 3, ///< a photograph cannot be read or used
    kMergeFailed = 4,
    kCannotWrite = 5
};

/**
 * Reads the command line. Prints help, the version or what is wrong, and then gives the status with which
 * the command is to end instead of options.
 */
std::variant<Options, ExitStatus> parseOptions(int argc, char **argv);

} // namespace tristop
