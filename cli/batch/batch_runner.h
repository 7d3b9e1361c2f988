// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "cli/batch/batch_log.h"
#include "cli/batch/batch_options.h"
#include "cli/batch/batch_plan.h"

namespace tristop {

/// How a batch ended.
struct BatchOutcome {
    size_t merged = 0;
    size_t done = 0;                 ///< before it began
    size_t cancelled = 0;            ///< or not begun
    std::vector<FileError> failures; ///< results that there are not, with the reason
};

/**
 * Merges what a plan lists, `options.jobs` brackets at once, as far as their memory fits into
 * options.memory. Goes on after a failure. When `stopRequested` becomes true no more merges are started and
 * those that run are cancelled.
 */
BatchOutcome runBatch(const BatchPlan &plan, const BatchOptions &options, BatchLog &log,
                      const std::function<bool()> &stopRequested);

} // namespace tristop
