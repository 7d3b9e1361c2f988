// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace tristop {

/**
 * Leaves no unfinished picture behind when SIGINT, SIGTERM or SIGHUP ends the program, unless they were
 * ignored at its start, and turns SIGXFSZ off, so that a limit on file sizes is an error of the write.
 */
void handleSignals();

/// As handleSignals, but the first signal only asks the program to stop, through stopSignal.
void stopOnSignals();

/// The signal that asked the program to stop; 0 when there was none. Safe to call from any thread.
int stopSignal();

/// Ends the program by `signal`, as though nothing had handled it.
[[noreturn]] void endBySignal(int signal);

} // namespace tristop
