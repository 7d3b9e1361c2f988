// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <mutex>
#include <string>

#include "cli/merge_report.h"

namespace tristop {

/// A path as it is shown: from the current folder when it lies below that.
std::string shownPath(const std::string &path);

/// "3 min 20 s"
std::string durationInWords(double seconds);

/**
 * Tells how a batch goes: a line a bracket on standard output and, where that is a terminal, how far it
 * is and how long it will take on standard error. Lines are written whole. Safe to call from several threads.
 */
class BatchProgress {
public:
    /// Of `total` brackets. Without `visible` nothing is told.
    BatchProgress(size_t total, bool visible);
    ~BatchProgress();
    BatchProgress(const BatchProgress &) = delete;
    BatchProgress &operator=(const BatchProgress &) = delete;

    enum class Ending { Done, Merged, Failed };
    /// Tells how a bracket ended.
    void ended(const std::string &output, Ending ending, const std::string &inWords);

    double seconds() const { return stopwatch.milliseconds() / 1000; }

private:
    void showTotal();
    void hideTotal() const;

    const size_t total;
    const bool visible;
    const bool showsTotal;
    const Stopwatch stopwatch;
    std::mutex mutex;
    size_t endedCount = 0;
    size_t mergedCount = 0;
    size_t failedCount = 0;
};

} // namespace tristop
