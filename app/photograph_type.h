// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <optional>
#include <string>

namespace tristop {

/// The kinds of files that photographs come in.
enum class PhotographType { Jpeg, Raw, Tiff };

/// The kind that the file name's suffix tells, in upper or lower case; none for any other suffix.
std::optional<PhotographType> typeBySuffix(const std::string &path);

} // namespace tristop
