// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/json_settings.h"

#include <nlohmann/json.hpp>

namespace tristop {

std::optional<std::string> readNumber(const nlohmann::ordered_json &json, const std::string &key,
                                      int32_t &value, int32_t lowest, int32_t highest) {
    if (!json.contains(key))
        return std::nullopt;
    const auto &number = json.at(key);
    if (!number.is_number_integer() || number < lowest || number > highest)
        return key + " must be a whole number from " + std::to_string(lowest) + " to " +
               std::to_string(highest);
    value = number.get<int32_t>();
    return std::nullopt;
}

std::optional<std::string> readFlag(const nlohmann::ordered_json &json, const std::string &key, bool &value) {
    if (!json.contains(key))
        return std::nullopt;
    if (!json.at(key).is_boolean())
        return key + " must be true or false";
    value = json.at(key).get<bool>();
    return std::nullopt;
}

} // namespace tristop
