// SPDX-License-Identifier: GPL-3.0-or-later
// Files that are always whole: written beside their target, then renamed.
#pragma once

#include <cstdio>
#include <functional>
#include <optional>
#include <string>

#include "app/file_error.h"

namespace tristop {

/// The error of a file that could not be written.
FileError cannotWrite(const std::string &path, const std::string &why);

/// What an errno value means for a file that is being written.
std::string errnoMessage(int error);

/// Why no file can be written at `path`, as far as can be told without writing; nothing when it looks well.
std::optional<FileError> checkFileTarget(const std::string &path);

/// Writes to an open file. Returns what went wrong, or nothing on success.
using FileContent = std::function<std::optional<std::string>(std::FILE *file)>;

/**
 * Writes a new file in the folder of `path`, brings it to the disk and then renames it, so that the target is
 * always whole: either the new content or what it was before. Through a symbolic link the file it points at
 * is created or replaced. Returns why it could not be written, or nothing on success.
 */
std::optional<FileError> replaceFile(const std::string &path, const FileContent &content);

/// replaceFile with a text.
std::optional<FileError> replaceFile(const std::string &path, const std::string &text);

/// Removes what replaceFile, underway in any thread, has written so far. For handlers of signals that end the
/// program.
void removeUnfinishedFiles() noexcept;

} // namespace tristop
