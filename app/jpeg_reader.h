// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "app/picture_decoder.h"
#include "app/pixels.h"

namespace tristop {

/// Whether the content begins as every JPEG file does.
bool startsLikeJpeg(std::span<const uint8_t> file);

/// readPictureHeader for a JPEG file.
std::optional<std::string> readJpegHeader(std::span<const uint8_t> file, PictureHeader &header);

/// decodePicture for a JPEG file (grey, RGB or CMYK) of an acceptable size.
std::optional<std::string> decodeJpeg(std::span<const uint8_t> file, UntaggedColor untagged,
                                      BgrxImage &image);

} // namespace tristop
