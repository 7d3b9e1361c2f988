// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <span>
#include <string>

#include <exiv2/exiv2.hpp>

namespace tristop {

/// What Exiv2 finds in a photograph's headers.
struct ExifHeader {
    Exiv2::ExifData exif;
    int32_t width = 0; ///< of the stored picture in pixels, as far as the headers tell
    int32_t height = 0;
};

/**
 * Reads the headers of the file at `path`, JPEG or camera RAW. Data that cannot be read count as absent.
 * Safe to call from several threads.
 */
ExifHeader readExifHeader(const std::string &path);

/// The EXIF data of a photograph file with content `file`, in the same manner.
Exiv2::ExifData readExif(std::span<const uint8_t> file);

/// Entry `index` of a numeric tag; 0 when the tag, the entry or the fraction's denominator is missing or it
/// is no finite number.
double numberAt(const Exiv2::ExifData &exif, Exiv2::ExifData::const_iterator tag, long index = 0);
double numberAt(const Exiv2::ExifData &exif, const char *tag, long index = 0);

} // namespace tristop
