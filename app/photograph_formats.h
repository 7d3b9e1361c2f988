// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <optional>
#include <string>

namespace tristop {

enum class PhotographFormat { Jpeg, Raw };

/// The format of a photograph by its file name's suffix, in any case; none for a name that no camera gives a
/// photograph that could be merged.
std::optional<PhotographFormat> photographFormat(const std::string &path);

} // namespace tristop
