// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/batch/batch_log.h"

#include <array>
#include <cerrno>
#include <ctime>

#include <fcntl.h>
#include <nlohmann/json.hpp>
#include <unistd.h>

#include "app/file_writer.h"

namespace tristop {
namespace {

/// "2024-05-31T18:30:00Z"
std::string now() {
    const std::time_t time = std::time(nullptr);
    struct tm utc {};
    ::gmtime_r(&time, &utc);
    std::array<char, 32> text{};
    std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%SZ", &utc);
    return text.data();
}

} // namespace

BatchLog::~BatchLog() {
    if (file >= 0)
        ::close(file);
}

std::optional<FileError> BatchLog::open(const std::string &name) {
    path = name;
    file = ::open(name.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0666);
    return file < 0 ? std::optional(cannotWrite(name, errnoMessage(errno))) : std::nullopt;
}

void BatchLog::add(std::string_view outcome, const Options &options, const MergeReport &report) {
    if (file < 0)
        return;
    const nlohmann::ordered_json line = {
        {"time", now()}, {"outcome", outcome}, {"merge", reportObject(options, report)}};
    const std::string text = jsonText(line) + '\n';
    const std::lock_guard lock(mutex);
    errno = ENOSPC; // what a write that is cut short means
    if (::write(file, text.data(), text.size()) != static_cast<ssize_t>(text.size()) && !problem)
        problem = cannotWrite(path, errnoMessage(errno));
}

} // namespace tristop
