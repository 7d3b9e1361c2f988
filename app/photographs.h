// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <optional>
#include <string>

#include "app/file_error.h"
#include "app/image_source.h"

namespace tristop {

/// The three photographs of a merge, in the order in which they were given.
using Photographs = std::array<CBImageSource, 3>;

/**
 * Loads the three files and opens them side by side. Each must be at least 100 x 100 pixels upright and
 * all three of one size, which is checked before anything is decoded. Returns the first file that cannot
 * be used, in the order given, or nothing on success.
 */
std::optional<FileError> openPhotographs(const std::array<std::string, 3> &paths, Photographs &photographs);

} // namespace tristop
