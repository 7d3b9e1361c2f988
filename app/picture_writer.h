// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <optional>
#include <string>

#include "app/file_error.h"
#include "app/picture_encoding.h"

namespace tristop {

enum class PictureFormat { Png, Jpeg, Tiff };

/// The format that a file's name asks for (.png, .jpg, .jpeg, .tif or .tiff in any case); none for any other
/// name.
std::optional<PictureFormat> pictureFormat(const std::string &path);

/// Why no picture can be written at `path`, as far as can be told without writing; nothing when it looks
/// well.
std::optional<FileError> checkTarget(const std::string &path);

/**
 * Writes an opaque picture of 24 bits a pixel, tagged as sRGB, in the manner of replaceFile. Returns why it
 * could not be written, or nothing on success.
 */
std::optional<FileError> writePicture(const std::string &path, PictureFormat format,
                                      const PictureView &picture, const PictureProperties &properties = {},
                                      const EncodingOptions &options = {});

/// Writes a picture in the format that the file's name asks for.
std::optional<FileError> writePicture(const std::string &path, const PictureView &picture,
                                      const PictureProperties &properties = {},
                                      const EncodingOptions &options = {});

} // namespace tristop
