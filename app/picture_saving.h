// SPDX-License-Identifier: GPL-3.0-or-later
// How the document's picture leaves the application as a file, and which files it may come from.
#pragma once

#include <optional>
#include <string>

#include "app/file_error.h"
#include "app/picture_encoding.h"
#include "app/pixels.h"

namespace tristop {

/// A picture of four bytes a pixel (red, green, blue, alpha; colours multiplied by alpha), rows 4 x width
/// bytes apart.
struct RgbaImage {
    int32_t width = 0;
    int32_t height = 0;
    PixelBuffer pixels;

    int32_t lineBytes() const { return ((width * 32 + 31) / 32) * 4; }
    PictureView view() const { return {pixels.get(), width, height, lineBytes(), PixelOrder::Rgbx}; }
};

/// A flattened copy of a picture; none when there is no picture, its size is not positive or there is not
/// enough memory.
std::optional<RgbaImage> resultImage(const RgbImage *picture);

/**
 * Writes a flattened picture at 72 dots an inch to the file `url`. `type` is "public.png", "public.jpeg" or
 * "public.tiff". The original and the options are not used: every file is written with the encoders' own
 * quality and compression. False when there is no picture, the type is another or the file cannot be written.
 */
bool save(const RgbImage *picture, const RgbImage *original, const std::string &url, const std::string &type,
          const EncodingOptions &options);

/// The same; tells why the file could not be written, or nothing on success.
std::optional<FileError> savePicture(const RgbImage *picture, const std::string &url,
                                     const std::string &type);

/**
 * Writes a TIFF file of one picture, or two when an original is given, at 300 dots an inch and compressed as
 * the options say. False when there is no picture or the file cannot be written.
 */
bool saveTIFF(const RgbImage *picture, const RgbImage *original, const std::string &url,
              const EncodingOptions &options);

/// Whether `path` names an existing JPEG, TIFF or camera RAW file, by its suffix.
bool isSupportImage(const std::string &path);

} // namespace tristop
