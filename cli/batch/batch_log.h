// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <mutex>
#include <optional>
#include <string>
#include <string_view>

#include "app/file_error.h"
#include "cli/merge_report.h"
#include "cli/options.h"

namespace tristop {

/// Appends a line of JSON for each bracket to a file, whole lines at once. Safe to call from several threads.
class BatchLog {
public:
    BatchLog() = default;
    ~BatchLog();
    BatchLog(const BatchLog &) = delete;
    BatchLog &operator=(const BatchLog &) = delete;

    /// Opens the file; without it, nothing is logged. Returns why it cannot be written, or nothing.
    std::optional<FileError> open(const std::string &path);

    /// Logs a merge with its outcome: "merged", "done" before, "failed" or "cancelled".
    void add(std::string_view outcome, const Options &options, const MergeReport &report);

    /// Why a line could not be written, or nothing.
    const std::optional<FileError> &failure() const { return problem; }

private:
    std::string path;
    int file = -1;
    std::mutex mutex;
    std::optional<FileError> problem;
};

} // namespace tristop
