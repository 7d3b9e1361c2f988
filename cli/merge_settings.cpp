// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/merge_settings.h"

#include <algorithm>
#include <array>
#include <string_view>

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include "app/lomo_engine.h"
#include "cli/command_line.h"
#include "cli/json_settings.h"

namespace tristop {
namespace {

struct NumberSetting {
    const char *option;
    const char *key; ///< in JSON
    int32_t MergeSettings::*value;
    int32_t lowest;
    int32_t highest;
    const char *description;
};

constexpr std::array<NumberSetting, 6> kNumbers = {{
    {"--tone-length", "toneLength", &MergeSettings::toneLength, 0, 100, "How far shadows are lifted"},
    {"--brightness", "brightness", &MergeSettings::brightness, -100, 100, "Brightness of the merged tones"},
    {"--tone-saturation", "toneSaturation", &MergeSettings::toneSaturation, 0, 100,
     "Colour of the merged tones"},
    {"--ghost", "ghost", &MergeSettings::ghostLevel, 0, 10,
     "How eagerly moving things are taken from one photograph"},
    {"--contrast", "contrast", &MergeSettings::contrast, -100, 100, "Contrast of the result"},
    {"--saturation", "saturation", &MergeSettings::saturation, -100, 100, "Colour saturation of the result"},
}};

struct Style {
    std::string_view name;
    int32_t value;
};

constexpr std::array<Style, 3> kStyles = {{{"original", LomoSettings::kStyleOriginal},
                                           {"art", LomoSettings::kStyleArt},
                                           {"bw", LomoSettings::kStyleBlackAndWhite}}};

std::optional<int32_t> styleNamed(std::string_view name) {
    const auto style = std::ranges::find(kStyles, name, &Style::name);
    return style != kStyles.end() ? std::optional(style->value) : std::nullopt;
}

} // namespace

void addMergeSettings(CLI::App &app, MergeSettings &settings) {
    for (const NumberSetting &number : kNumbers)
        addNumber(app, number.option, settings.*number.value, number.lowest, number.highest,
                  number.description);
    const auto readStyle = [&settings](const std::string &text) {
        const auto style = styleNamed(text);
        if (!style)
            throw CLI::ValidationError("--style", "must be original, art or bw, not " + text);
        settings.style = *style;
    };
    app.add_option_function<std::string>("--style", readStyle,
                                         "Colour style; art is a cross-processed look, bw black and white")
        ->type_name("style")
        ->option_text("original|art|bw (original)");
    addWriteOptions(app, settings.writing);
}

nlohmann::ordered_json settingsAsJson(const MergeSettings &settings) {
    nlohmann::ordered_json json;
    for (const NumberSetting &number : kNumbers)
        json[number.key] = settings.*number.value;
    json["style"] = std::ranges::find(kStyles, settings.style, &Style::value)->name;
    json["writing"] = writeOptionsAsJson(settings.writing);
    return json;
}

std::optional<std::string> readSettings(const nlohmann::ordered_json &json, MergeSettings &settings) {
    for (const NumberSetting &number : kNumbers)
        if (const auto mistake =
                readNumber(json, number.key, settings.*number.value, number.lowest, number.highest))
            return mistake;
    if (json.contains("style")) {
        const auto &name = json.at("style");
        const auto style = name.is_string() ? styleNamed(name.get<std::string>()) : std::nullopt;
        if (!style)
            return "style must be original, art or bw";
        settings.style = *style;
    }
    return json.contains("writing") ? readWriteOptions(json.at("writing"), settings.writing) : std::nullopt;
}

} // namespace tristop
