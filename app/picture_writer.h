// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <optional>
#include <string>

#include "app/file_error.h"
#include "app/pixels.h"

namespace tristop {

enum class PictureFormat { Png, Jpeg };

/// The format that a file's name asks for (.png, .jpg or .jpeg in any case); none for any other name.
std::optional<PictureFormat> pictureFormat(const std::string &path);

/// Why no picture can be written at `path`, as far as can be told without writing; nothing when it looks
/// well.
std::optional<FileError> checkTarget(const std::string &path);

/**
 * Writes a picture as PNG (24 bit) or JPEG (quality 92, full colour resolution), as the name asks, tagged as
 * sRGB, in the manner of replaceFile. Returns why it could not be written, or nothing on success.
 */
std::optional<FileError> writePicture(const std::string &path, const BgrView &picture);

} // namespace tristop
