// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

#include <nlohmann/json_fwd.hpp>

#include "app/file_error.h"
#include "cli/options.h"
#include "cli/report/merge_findings.h"
#include "engine/hdr_engine.h"

namespace tristop {

/// Counts the time since its making.
class Stopwatch {
public:
    double milliseconds() const {
        return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
    }

private:
    std::chrono::steady_clock::time_point start = std::chrono::steady_clock::now();
};

/// What is known of a merge when the command ends. A step that was not reached is absent.
struct MergeReport {
    ExitStatus exitStatus = kSuccess;
    std::optional<FileError> error; ///< why the command failed; without a path when no file is to blame
    int32_t width = 0;              ///< of the photographs, in pixels
    int32_t height = 0;
    std::optional<HdrStatus> engineStatus;
    HdrRunInfo runInfo{};   ///< of a run that ended with HDR_OK
    MergeFindings findings; ///< when they were asked for
    std::optional<double> decodeMilliseconds;
    std::optional<double> mergeMilliseconds; ///< the engine run with its conversions
    std::optional<double> effectMilliseconds;
    std::optional<double> writeMilliseconds;
    double totalMilliseconds = 0;
};

/// The report as one JSON object.
nlohmann::ordered_json reportObject(const Options &options, const MergeReport &report);
std::string reportAsJson(const Options &options, const MergeReport &report);

/// JSON in one line, or with `indent` spaces a level. File names need not be UTF-8; what is not is replaced.
std::string jsonText(const nlohmann::ordered_json &json, int indent = -1);

} // namespace tristop
