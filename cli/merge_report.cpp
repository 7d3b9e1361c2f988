// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/merge_report.h"

#include <nlohmann/json.hpp>

#include "cli/texts.h"

namespace tristop {
namespace {

using Json = nlohmann::ordered_json;

std::string_view roleName(const HdrRunInfo &info, int32_t input) {
    if (input == info.darkIndex)
        return "dark";
    return input == info.brightIndex ? "bright" : "middle";
}

std::string_view fallbackName(HdrFallback fallback) {
    switch (fallback) {
    case HDR_FALLBACK_SHIFT:
        return "shift";
    case HDR_FALLBACK_FEATURES:
        return "features";
    case HDR_FALLBACK_BRIGHT_MOTION:
        return "bright-motion";
    case HDR_FALLBACK_DARK_MOTION:
        return "dark-motion";
    case HDR_FALLBACK_SINGLE_INPUT:
        return "single-input";
    case HDR_FALLBACK_NONE:
        break;
    }
    return "none";
}

Json rectangleAsJson(int32_t x0, int32_t y0, int32_t x1, int32_t y1) {
    return {{"x0", x0}, {"y0", y0}, {"x1", x1}, {"y1", y1}};
}

Json alignmentAsJson(const AlignmentFindings &found) {
    const auto range = [](const std::array<int32_t, 2> &ends) -> Json {
        return {{"min", ends[0]}, {"max", ends[1]}};
    };
    const hdr::Rect &valid = found.validRect;
    return {{"shift", {{"x", found.shift[0]}, {"y", found.shift[1]}}},
            {"warpX", range(found.warpX)},
            {"warpY", range(found.warpY)},
            {"matches", found.matches},
            {"followingMatches", found.following},
            {"movedCells", found.movedCells},
            {"valid", rectangleAsJson(valid.x0, valid.y0, valid.x1, valid.y1)}};
}

Json photographsAsJson(const Options &options, const MergeReport &report) {
    const bool merged = report.engineStatus == HDR_OK;
    const HdrRunInfo &info = report.runInfo;
    Json list = Json::array();
    for (int32_t i = 0; i < 3; ++i) {
        Json photograph = {{"file", options.photographs[static_cast<size_t>(i)]}};
        if (merged) {
            photograph["role"] = roleName(info, i);
            photograph["exposureEstimate"] = info.exposureEstimate[i];
            photograph["shift"] = {{"x", info.shiftX[i]}, {"y", info.shiftY[i]}};
            photograph["excluded"] = info.excluded[i] != 0;
            if (report.findings.alignment && i != info.midIndex)
                photograph["alignment"] =
                    alignmentAsJson(report.findings.alignment->inputs[static_cast<size_t>(i)]);
        }
        list.push_back(std::move(photograph));
    }
    return list;
}

Json alignmentAsJson(const AlignmentReport &alignment) {
    return {{"reducedSize", {{"width", alignment.reducedWidth}, {"height", alignment.reducedHeight}}},
            {"warpNodes", {{"columns", alignment.warpColumns}, {"rows", alignment.warpRows}}},
            {"features", alignment.features},
            {"trustedMatches", alignment.trustedMatches}};
}

Json ghostsAsJson(const GhostReport &ghosts) {
    Json masks = Json::object();
    for (size_t i = 0; i < ghosts.maskCells.size(); ++i)
        masks[std::string(1, "ABCD"[i])] = ghosts.percent(ghosts.maskCells[i]);
    return {{"markedPercent", ghosts.percent(ghosts.markedCells)},
            {"maskPercent", std::move(masks)},
            {"mode", ghosts.mode},
            {"chromaMode", ghosts.chromaMode},
            {"grid", {{"columns", ghosts.columns}, {"rows", ghosts.rows}}}};
}

Json millisecondsAsJson(const MergeReport &report) {
    Json times = Json::object();
    const auto add = [&times](const char *name, const std::optional<double> &value) {
        if (value)
            times[name] = *value;
    };
    add("decode", report.decodeMilliseconds);
    add("merge", report.mergeMilliseconds);
    if (report.engineStatus == HDR_OK) {
        Json steps = Json::object();
        for (int32_t step = 0; step < HDR_STEP_COUNT; ++step)
            steps[hdrStepName(step)] = static_cast<double>(report.runInfo.stepMicroseconds[step]) / 1000;
        times["steps"] = std::move(steps);
    }
    add("effect", report.effectMilliseconds);
    add("write", report.writeMilliseconds);
    times["total"] = report.totalMilliseconds;
    return times;
}

} // namespace

nlohmann::ordered_json reportObject(const Options &options, const MergeReport &report) {
    Json json = {{"version", TRISTOP_VERSION}, {"exitStatus", static_cast<int>(report.exitStatus)}};
    if (report.error) {
        if (!report.error->path.empty())
            json["error"]["file"] = report.error->path;
        json["error"]["reason"] = report.error->reason;
    }
    json["output"] = options.output;
    if (report.width > 0)
        json["size"] = {{"width", report.width}, {"height", report.height}};
    json["photographs"] = photographsAsJson(options, report);
    if (report.engineStatus) {
        json["status"] = {{"code", *report.engineStatus}, {"reason", statusInWords(*report.engineStatus)}};
        if (*report.engineStatus == HDR_OK) {
            const HdrRunInfo &info = report.runInfo;
            json["fallback"] = {{"code", fallbackName(info.fallback)},
                                {"reason", fallbackInWords(info.fallback)}};
            json["crop"] = rectangleAsJson(info.crop[0], info.crop[1], info.crop[2], info.crop[3]);
        }
    }
    if (report.findings.alignment)
        json["alignment"] = alignmentAsJson(*report.findings.alignment);
    if (report.findings.ghosts)
        json["ghosts"] = ghostsAsJson(*report.findings.ghosts);
    json["milliseconds"] = millisecondsAsJson(report);
    return json;
}

std::string reportAsJson(const Options &options, const MergeReport &report) {
    return jsonText(reportObject(options, report), 2);
}

std::string jsonText(const nlohmann::ordered_json &json, int indent) {
    return json.dump(indent, ' ', false, Json::error_handler_t::replace);
}

} // namespace tristop
