// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "app/picture_decoder.h"
#include "app/pixels.h"

namespace tristop {

/// Whether the content begins as every TIFF file does.
bool startsLikeTiff(std::span<const uint8_t> file);

/// readPictureHeader for a TIFF file: its first picture.
std::optional<std::string> readTiffHeader(std::span<const uint8_t> file, PictureHeader &header);

/**
 * decodePicture for a TIFF file of an acceptable size. Grey and RGB of 8 or 16 bits are converted with all
 * their bits; whatever else libtiff can show is taken as it shows it, in 8 bits.
 */
std::optional<std::string> decodeTiff(std::span<const uint8_t> file, BgrxImage &image);

} // namespace tristop
