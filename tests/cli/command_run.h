// SPDX-License-Identifier: GPL-3.0-or-later
// Runs the command as a user does, on photographs that are quickly made.
#pragma once

#include <string>
#include <vector>

#include "tests/app/photograph_files.h"

namespace tristop::testing {

struct Outcome {
    int status = -1; ///< 128 and the signal when one ended it
    std::string out;
    std::string err;
};

/// Runs `program` with its output kept in files in `folder` meanwhile. `setUp` is shell code before the
/// command, such as variables or limits.
Outcome runCommand(const TemporaryFolder &folder, const std::string &program,
                   const std::vector<std::string> &arguments, const std::string &setUp = "");

/// A lit wall with some pattern and a bright corner, under an exposure of 1, 4 or 16.
TestPicture wall(int width, int height, double exposure);

} // namespace tristop::testing
