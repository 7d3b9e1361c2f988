// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "app/picture_decoder.h"

namespace tristop {

/// The EXIF part of a photograph's metadata. An entry that the file lacks is 0 or empty.
struct ExifMetadata {
    float exposureBiasValue = 0; ///< EV
    std::vector<int64_t> isoSpeedRatings;
    float focalLength = 0;             ///< millimetres
    std::string interoperabilityIndex; ///< "R03" when the camera worked in Adobe RGB
};

/// A photograph's metadata. An entry that the file lacks is 0.
struct ImageMetadata {
    float pixelWidth = 0; ///< of the stored picture, before it is turned upright
    float pixelHeight = 0;
    float dpiWidth = 0; ///< dots an inch; both resolutions are 0 unless the file gives both
    float dpiHeight = 0;
    int64_t orientation = 0;          ///< EXIF orientation: 1 to 8 where the file is sound
    std::optional<ExifMetadata> exif; ///< none when the file has no EXIF data
};

/**
 * The metadata of the photograph file with content `file`, whose header has been read. The pixel size is the
 * decoder's, so that metadata and pixels agree; the resolution is that of EXIF, or else of the JFIF header.
 * EXIF data that cannot be read count as absent, as does an entry of a wrong type; a RAW file without
 * them has what its decoder knows. Safe to call from several threads.
 */
ImageMetadata imageMetadata(std::span<const uint8_t> file, const PictureHeader &header);

} // namespace tristop
