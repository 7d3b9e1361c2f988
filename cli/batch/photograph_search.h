// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "app/capture.h"
#include "app/file_error.h"
#include "app/photograph_type.h"

namespace tristop {

/// A photograph that a search found.
struct Photograph {
    std::string path;   ///< absolute
    std::string folder; ///< where it lies below the folder that was searched; empty right in it
    PhotographType format = PhotographType::Jpeg;
    CameraTime modified; ///< when the file was last changed, by the local clock
    Capture capture;     ///< when it can be read
    std::string failure; ///< why it cannot be read, in words that follow its name; else empty
};

/// What a search found: photographs by folder and name (IMG_9 before IMG_10), folders that cannot be read.
struct PhotographSearch {
    std::vector<Photograph> photographs;
    std::vector<FileError> unreadable;
};

/**
 * Looks for photographs in the folders and files `inputs`, in all folders below them but `resultFolder` and
 * those with a name that begins with a dot, and reads their headers, several at a time. A file that is
 * reached twice is found once. Fails for an input that does not exist.
 */
std::optional<FileError> findPhotographs(const std::vector<std::string> &inputs,
                                         const std::string &resultFolder, PhotographSearch &found);

/// Whether name `a` comes before `b` where digits count as numbers.
bool naturallyBefore(const std::string &a, const std::string &b);

} // namespace tristop
