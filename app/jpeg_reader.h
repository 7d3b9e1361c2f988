// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "app/pixels.h"

namespace tristop {

/// What a JPEG file's header tells of its picture.
struct JpegHeader {
    int32_t width = 0;
    int32_t height = 0;
    /// Pixel density of the JFIF header in dots an inch, 0 when the file gives none.
    float xDensity = 0;
    float yDensity = 0;
};

/// The colour space of an RGB file that embeds no profile.
enum class UntaggedColor { Srgb, AdobeRgb };

/**
 * Reads the header of the JPEG file at `path`. Returns why the file cannot be used, in words that
 * follow its name, or nothing on success.
 */
std::optional<std::string> readJpegHeader(const std::string &path, JpegHeader &header);

/**
 * Decodes the JPEG file at `path` (grey, RGB or CMYK) to sRGB, through its embedded colour profile.
 *
 * `image` gets the stored pixels, unturned, with filler 255 and kBgrxSpareBytes zero bytes behind the last
 * row. A file whose picture data are cut short or damaged is an error. Returns why the file cannot be
 * used, or nothing on success; on an error `image` is unchanged.
 */
std::optional<std::string> decodeJpeg(const std::string &path, UntaggedColor untagged, BgrxImage &image);

} // namespace tristop
