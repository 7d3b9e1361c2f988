// SPDX-License-Identifier: GPL-3.0-or-later
// What the commands' command lines have in common.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include <CLI/CLI.hpp>

#include "cli/exit_status.h"

namespace tristop {

/// Makes `app` ready for options: the last one of a kind counts, the help begins with `usage`.
void prepareCommandLine(CLI::App &app, const std::string &usage);

/// An option that takes a whole number in decimal notation; `value` holds its default.
void addNumber(CLI::App &app, const std::string &name, int32_t &value, int32_t lowest, int32_t highest,
               const std::string &description);

/**
 * Reads the command line. Prints help, the version or what is wrong, and then gives the status with which the
 * command is to end. `mistake` is asked when each option is well by itself; it says what is wrong with them
 * together, or nothing.
 */
std::optional<ExitStatus> parseCommandLine(CLI::App &app, int argc, char **argv,
                                           const std::function<std::optional<std::string>()> &mistake);

} // namespace tristop
