// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string>

#include "app/file_error.h"
#include "app/image_source.h"

namespace tristop {

/// The three photographs of a merge, in the order in which they were given.
using Photographs = std::array<CBImageSource, 3>;

/// Why a photograph cannot be merged.
struct PhotographError : FileError {
    enum class Kind { Unreadable, TooSmall, OtherSize };
    Kind kind = Kind::Unreadable;
};

/// What decoding may take beside the decoded pictures: enough for three RAW files of 60 megapixels at once.
constexpr size_t kDecodingMemory = size_t{3} << 30;

/**
 * Loads the three files and opens them, side by side as far as that takes no more than `decodingMemory`
 * bytes beside the decoded pictures, one after the other beyond. Each must be at least 100 x 100 pixels
 * upright and all three of one size, which is checked before anything is decoded and once more after it.
 * Returns the first file that cannot be used, in the order given, or nothing on success.
 */
std::optional<PhotographError> openPhotographs(const std::array<std::string, 3> &paths,
                                               Photographs &photographs,
                                               size_t decodingMemory = kDecodingMemory);

} // namespace tristop
