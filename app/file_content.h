// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tristop {

/**
 * Reads the whole ordinary file at `path`, of up to two gigabytes; anything else, such as a pipe, is refused
 * without waiting for it. Returns why the file cannot be read, in words that follow its name, or nothing
 * on success; on an error `content` is unchanged.
 */
std::optional<std::string> readFileContent(const std::string &path, std::vector<uint8_t> &content);

} // namespace tristop
