// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/batch/batch_progress.h"

#include <cmath>
#include <cstdio>
#include <filesystem>
#include <system_error>

#include <unistd.h>

namespace tristop {

std::string shownPath(const std::string &path) {
    std::error_code error;
    const auto relative =
        std::filesystem::path(path).lexically_relative(std::filesystem::current_path(error));
    return error || relative.empty() || *relative.begin() == ".." ? path : relative.string();
}

std::string durationInWords(double seconds) {
    const long whole = std::lround(seconds);
    if (whole < 60)
        return std::to_string(whole) + " s";
    if (whole < 3600)
        return std::to_string(whole / 60) + " min " + std::to_string(whole % 60) + " s";
    return std::to_string(whole / 3600) + " h " + std::to_string(whole % 3600 / 60) + " min";
}

BatchProgress::BatchProgress(size_t total, bool visible)
    : total(total), visible(visible), showsTotal(visible && ::isatty(STDERR_FILENO) == 1) {
    showTotal();
}

BatchProgress::~BatchProgress() {
    hideTotal();
}

void BatchProgress::ended(const std::string &output, Ending ending, const std::string &inWords) {
    const std::lock_guard lock(mutex);
    ++endedCount;
    mergedCount += ending == Ending::Merged;
    failedCount += ending == Ending::Failed;
    if (!visible)
        return;
    const std::string count = std::to_string(total), number = std::to_string(endedCount);
    std::string line(1 + count.size() - number.size(), ' ');
    line[0] = '[';
    line += number + '/' + count + "] " + shownPath(output) + ": " + inWords + '\n';
    hideTotal();
    std::fwrite(line.data(), 1, line.size(), stdout);
    std::fflush(stdout);
    showTotal();
}

void BatchProgress::showTotal() {
    if (!showsTotal || endedCount == total)
        return;
    std::string line = std::to_string(endedCount) + " of " + std::to_string(total) + " brackets";
    if (failedCount > 0)
        line += ", " + std::to_string(failedCount) + " failed";
    if (const size_t worked = mergedCount + failedCount; worked > 0)
        line += ", about " +
                durationInWords(seconds() * static_cast<double>(total - endedCount) /
                                static_cast<double>(worked)) +
                " left";
    std::fputs(line.c_str(), stderr);
    std::fflush(stderr);
}

void BatchProgress::hideTotal() const {
    if (showsTotal)
        std::fputs("\r\033[K", stderr);
}

} // namespace tristop
