// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/batch/batch_plan.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <set>
#include <system_error>

#include <nlohmann/json.hpp>

#include "app/file_writer.h"
#include "app/picture_writer.h"

namespace tristop {
namespace {

namespace fs = std::filesystem;
using Json = nlohmann::ordered_json;

constexpr int kPlanVersion = 1;
constexpr const char *kPlanKey = "tristopPlan";

std::string dayOf(CameraTime time) {
    const std::chrono::year_month_day day(std::chrono::floor<std::chrono::days>(time));
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%04d-%02u-%02u", static_cast<int>(day.year()),
                  static_cast<unsigned>(day.month()), static_cast<unsigned>(day.day()));
    return text.data();
}

std::string padded(size_t number, size_t count) {
    const std::string digits = std::to_string(number);
    return std::string(std::to_string(count).size() - digits.size(), '0') + digits;
}

using Fields = std::map<std::string, std::string>;

/// A template with its fields filled in; none when a field is unknown.
std::optional<std::string> fill(const std::string &nameTemplate, const Fields &fields) {
    std::string name;
    for (size_t i = 0; i < nameTemplate.size(); ++i) {
        if (nameTemplate[i] != '{') {
            name += nameTemplate[i];
            continue;
        }
        const size_t end = nameTemplate.find('}', i);
        const auto field = fields.find(nameTemplate.substr(i + 1, end - i - 1));
        if (end == std::string::npos || field == fields.end())
            return std::nullopt;
        name += field->second;
        i = end;
    }
    return name;
}

/// Gives each result a name of its own. Names that differ in case alone are one to some file systems.
class NameGiver {
public:
    void reserve(const std::string &path) { taken.insert(folded(path)); }

    std::string unique(const fs::path &path) {
        fs::path name = path;
        for (int copy = 2; !taken.insert(folded(name.string())).second; ++copy)
            name = path.parent_path() /
                   (path.stem().string() + "-" + std::to_string(copy) + path.extension().string());
        return name.string();
    }

private:
    static std::string folded(std::string text) {
        std::ranges::transform(text, text.begin(), [](char c) {
            return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
        });
        return text;
    }

    std::set<std::string> taken;
};

std::string stemOf(const Photograph &photograph) {
    return fs::path(photograph.path).stem().string();
}

/// The folder that the relative paths of a plan start from.
fs::path baseOf(const std::string &plan) {
    return fs::absolute(plan).lexically_normal().parent_path();
}

std::string relativeTo(const fs::path &base, const std::string &path) {
    const fs::path relative = fs::path(path).lexically_relative(base);
    return relative.empty() || *relative.begin() == ".." ? path : relative.string();
}

std::string absoluteFrom(const fs::path &base, const Json &path) {
    return (base / path.get<std::string>()).lexically_normal().string();
}

PlannedMerge mergeFrom(const Json &json, const fs::path &base) {
    PlannedMerge merge;
    const Json &photographs = json.at("photographs");
    if (photographs.size() != merge.photographs.size())
        throw std::runtime_error("a merge takes three photographs");
    for (size_t i = 0; i < merge.photographs.size(); ++i)
        merge.photographs[i] = absoluteFrom(base, photographs.at(i));
    merge.output = absoluteFrom(base, json.at("output"));
    merge.width = json.at("width").get<int32_t>();
    merge.height = json.at("height").get<int32_t>();
    if (merge.width < 1 || merge.height < 1)
        throw std::runtime_error("a size is not positive");
    return merge;
}

} // namespace

std::optional<std::string> templateMistake(const std::string &nameTemplate) {
    const auto name =
        fill(nameTemplate, {{"first", "a"}, {"middle", "b"}, {"date", "2024-05-31"}, {"n", "1"}});
    if (!name)
        return "in braces may stand first, middle, date or n";
    if (name->find('/') != std::string::npos)
        return "a name has no / in it";
    if (!pictureFormat(*name))
        return "it must end in .png, .jpg, .jpeg, .tif or .tiff";
    return std::nullopt;
}

BatchPlan makePlan(const PhotographSearch &found, const BracketSearch &brackets,
                   const MergeSettings &settings, const std::string &resultFolder,
                   const std::string &nameTemplate) {
    BatchPlan plan{settings, {}, found.unreadable};
    const fs::path results = fs::absolute(resultFolder).lexically_normal();
    NameGiver names;
    for (const Photograph &photograph : found.photographs)
        names.reserve(photograph.path);
    for (size_t i = 0; i < brackets.brackets.size(); ++i) {
        const Bracket &bracket = brackets.brackets[i];
        const Photograph &first = found.photographs[bracket.first];
        const Photograph &middle = found.photographs[bracket.photographs[1]];
        const Fields fields = {{"first", stemOf(first)},
                               {"middle", stemOf(middle)},
                               {"date", dayOf(first.capture.time.value_or(first.modified))},
                               {"n", padded(i + 1, brackets.brackets.size())}};
        PlannedMerge merge;
        for (size_t k = 0; k < merge.photographs.size(); ++k)
            merge.photographs[k] = found.photographs[bracket.photographs[k]].path;
        merge.output = names.unique(results / first.folder / fill(nameTemplate, fields).value());
        merge.width = first.capture.width;
        merge.height = first.capture.height;
        plan.merges.push_back(std::move(merge));
    }
    for (const UnusedPhotograph &unused : brackets.unused)
        plan.unused.push_back({found.photographs[unused.photograph].path, unused.reason});
    return plan;
}

BatchPlan partOfPlan(const BatchPlan &plan, int32_t part, int32_t parts) {
    BatchPlan result{plan.settings, {}, {}};
    for (size_t i = static_cast<size_t>(part); i < plan.merges.size(); i += static_cast<size_t>(parts))
        result.merges.push_back(plan.merges[i]);
    return result;
}

std::optional<FileError> writePlan(const BatchPlan &plan, const std::string &path) {
    const fs::path base = baseOf(path);
    Json json = {{kPlanKey, kPlanVersion}, {"settings", settingsAsJson(plan.settings)}};
    json["merges"] = Json::array();
    for (const PlannedMerge &merge : plan.merges) {
        Json photographs = Json::array();
        for (const std::string &photograph : merge.photographs)
            photographs.push_back(relativeTo(base, photograph));
        json["merges"].push_back({{"photographs", std::move(photographs)},
                                  {"output", relativeTo(base, merge.output)},
                                  {"width", merge.width},
                                  {"height", merge.height}});
    }
    json["unused"] = Json::array();
    for (const FileError &unused : plan.unused)
        json["unused"].push_back({{"file", relativeTo(base, unused.path)}, {"reason", unused.reason}});
    try {
        return replaceFile(path, json.dump(1) + '\n');
    } catch (const Json::exception &) {
        return cannotWrite(path, "the name of a photograph is not UTF-8 text, which a plan is made of");
    }
}

std::optional<FileError> readPlan(const std::string &path, BatchPlan &plan) {
    std::error_code error;
    if (!fs::is_regular_file(path, error))
        return FileError{path, error ? "cannot be read: " + error.message() : "is not an ordinary file"};
    std::ifstream file(path, std::ios::binary);
    if (!file)
        return FileError{path, "cannot be read: " + errnoMessage(errno)};
    const std::string text(std::istreambuf_iterator<char>(file), {});
    try {
        const Json json = Json::parse(text);
        const int version = json.at(kPlanKey).get<int>();
        if (version != kPlanVersion)
            return FileError{path, "is a plan of version " + std::to_string(version) +
                                       "; this program reads version " + std::to_string(kPlanVersion)};
        BatchPlan result;
        if (const auto mistake = readSettings(json.at("settings"), result.settings))
            return FileError{path, "is not a sound plan: " + *mistake};
        const fs::path base = baseOf(path);
        for (const Json &merge : json.at("merges"))
            result.merges.push_back(mergeFrom(merge, base));
        for (const Json &unused : json.at("unused"))
            result.unused.push_back(
                {absoluteFrom(base, unused.at("file")), unused.at("reason").get<std::string>()});
        plan = std::move(result);
        return std::nullopt;
    } catch (const std::exception &mistake) {
        return FileError{path, std::string("is not a sound plan: ") + mistake.what()};
    }
}

bool isDone(const PlannedMerge &merge) {
    std::error_code error;
    const auto written = fs::last_write_time(merge.output, error);
    return !error && std::ranges::all_of(merge.photographs, [&](const std::string &photograph) {
        const auto taken = fs::last_write_time(photograph, error);
        return !error && taken < written;
    });
}

} // namespace tristop
