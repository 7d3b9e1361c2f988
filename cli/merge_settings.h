// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include <nlohmann/json_fwd.hpp>

#include "cli/write_options.h"

namespace CLI {
class App;
}

namespace tristop {

/// How photographs are merged and results are written: the same for one bracket and for a batch of them.
struct MergeSettings {
    int32_t toneLength = 45;
    int32_t brightness = 10;
    int32_t toneSaturation = 40;
    int32_t ghostLevel = 6;
    int32_t contrast = 0;
    int32_t saturation = 0;
    int32_t style = 0; ///< LomoSettings::kStyle…
    WriteOptions writing;

    bool operator==(const MergeSettings &) const = default;
};

/// Adds an option for each setting; `settings` holds the defaults and must outlive the parsing.
void addMergeSettings(CLI::App &app, MergeSettings &settings);

/// The settings as a JSON object.
nlohmann::ordered_json settingsAsJson(const MergeSettings &settings);

/// Reads what settingsAsJson made; a setting that is missing keeps its value. Returns what is wrong, or
/// nothing on success.
std::optional<std::string> readSettings(const nlohmann::ordered_json &json, MergeSettings &settings);

} // namespace tristop
