// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

namespace tristop {

// Reasons that several readers give, in words that follow the file's name.
constexpr const char *kOutOfMemory = "needs more memory than there is";
constexpr const char *kTruncated = "is truncated: it ends before its picture does";
constexpr const char *kDamaged = "is damaged: parts of its picture data cannot be decoded";

/// Why a file could not be read or written, in plain words.
struct FileError {
    std::string path;
    std::string reason; ///< follows the file's name: "is empty", "is not a JPEG picture"
};

} // namespace tristop
