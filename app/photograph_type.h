// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace tristop {

/// The kinds of files that photographs come in.
enum class PhotographType { Jpeg, Raw, Tiff };

/// What names of files of a kind end with: lower case, without the dot.
std::span<const std::string_view> suffixesOf(PhotographType type);

/// The kind that the file name's suffix tells, in upper or lower case; none for any other suffix.
std::optional<PhotographType> typeBySuffix(const std::string &path);

} // namespace tristop
