// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace tristop {

/// Exit statuses of the commands.
enum ExitStatus : int {
    kSuccess = 0,
    kBadUsage = 2,
    kBadPhotograph = 3, ///< a photograph, or the plan of a batch, cannot be read or used
    kMergeFailed = 4,
    kCannotWrite = 5,
    kSomeFailed = 6 ///< of the brackets of a batch
};

} // namespace tristop
