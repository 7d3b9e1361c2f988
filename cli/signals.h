// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace tristop {

/**
 * Leaves no unfinished picture behind when SIGINT, SIGTERM or SIGHUP ends the program, unless they were
 * ignored at its start, and turns SIGXFSZ off, so that a limit on file sizes is an error of the write.
 */
void handleSignals();

} // namespace tristop
