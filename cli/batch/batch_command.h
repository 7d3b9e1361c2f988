// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace tristop {

/// Runs `tristop-cli batch`; `argv` begins with the word "batch". Returns the exit status.
int runBatchCommand(int argc, char **argv);

} // namespace tristop
