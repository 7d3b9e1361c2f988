// SPDX-License-Identifier: GPL-3.0-or-later
// Settings in JSON objects. A setting that is missing keeps its value; each function returns what is wrong
// with one that is there, or nothing.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include <nlohmann/json_fwd.hpp>

namespace tristop {

std::optional<std::string> readNumber(const nlohmann::ordered_json &json, const std::string &key,
                                      int32_t &value, int32_t lowest, int32_t highest);

std::optional<std::string> readFlag(const nlohmann::ordered_json &json, const std::string &key, bool &value);

} // namespace tristop
