// SPDX-License-Identifier: GPL-3.0-or-later
// What the commands' command lines have in common.
#pragma once

#include <cstdint>
#include <string>

#include <CLI/CLI.hpp>

namespace tristop {

/// An option that takes a whole number in decimal notation; `value` holds its default.
void addNumber(CLI::App &app, const std::string &name, int32_t &value, int32_t lowest, int32_t highest,
               const std::string &description);

} // namespace tristop
