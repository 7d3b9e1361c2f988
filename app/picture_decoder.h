// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "app/photograph_type.h"
#include "app/pixels.h"

namespace tristop {

/// What a photograph file tells of its picture before it is decoded.
struct PictureHeader {
    PhotographType type = PhotographType::Jpeg;
    int32_t width = 0; ///< of the picture that the decoder gives, unturned
    int32_t height = 0;
    /// Pixel density of a JFIF header in dots an inch, 0 when the file gives none.
    float xDensity = 0;
    float yDensity = 0;
    /// What the RAW decoder knows of how the picture was taken, for containers whose EXIF data cannot be
    /// read; each 0 when unknown.
    int orientation = 0; ///< EXIF orientation
    float isoSpeed = 0;
    float focalLength = 0; ///< millimetres
    /// Fewer bytes cannot hold such a picture.
    size_t smallestFile = 0;
    /// Memory that decoding takes beside the file and the decoded picture, in bytes.
    size_t decodingBytes = 0;
};

/// The colour space of an RGB JPEG that embeds no profile.
enum class UntaggedColor { Srgb, AdobeRgb };

/// The reason for refusing a picture, or a sensor, of more than kLargestPictureBytes.
std::string tooLarge(int32_t width, int32_t height);

/**
 * Reads the header of a photograph file from its whole content. The content decides which kind of file it
 * is; `expected` is what its name promises and only words the reason when it is none of them. A
 * picture of more than kLargestPictureBytes is refused.
 *
 * Returns why the file cannot be used, in words that follow its name, or nothing on success.
 */
std::optional<std::string> readPictureHeader(std::span<const uint8_t> file,
                                             std::optional<PhotographType> expected, PictureHeader &header);

/**
 * Decodes a photograph file from its whole content to sRGB, through its embedded colour profile.
 *
 * `image` gets the stored pixels, unturned, with filler 255 and kBgrxSpareBytes zero bytes behind the last
 * row. A file whose picture data are cut short or damaged is an error. Returns why the file cannot be
 * used, or nothing on success; on an error `image` is unchanged.
 */
std::optional<std::string> decodePicture(std::span<const uint8_t> file, UntaggedColor untagged,
                                         BgrxImage &image);

} // namespace tristop
