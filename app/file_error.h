// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

namespace tristop {

/// Why a file could not be read or written, in plain words.
struct FileError {
    std::string path;
    std::string reason; ///< follows the file's name: "is empty", "is not a JPEG picture"
};

} // namespace tristop
