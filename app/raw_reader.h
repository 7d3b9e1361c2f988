// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "app/picture_decoder.h"
#include "app/pixels.h"

namespace tristop {

struct RawHeaderResult {
    bool recognised = false;            ///< whether the file is a camera RAW file
    std::optional<std::string> problem; ///< why a recognised one cannot be used
};

/// readPictureHeader for a camera RAW file of any kind that LibRaw knows.
RawHeaderResult readRawHeader(std::span<const uint8_t> file, PictureHeader &header);

/// The same for the ordinary file at `path`, of which no more is read than the header.
RawHeaderResult readRawHeader(const std::string &path, PictureHeader &header);

/**
 * decodePicture for a camera RAW file, whose header has been accepted.
 *
 * Develops the sensor's readings with the camera's white balance (daylight where the file has none) and
 * nothing that depends on the picture itself, so that the exposures of a bracket keep their ratio: white is
 * the sensor's saturation, and highlights clip there in all channels. Everything is computed in 16 bits
 * up to sRGB's tone curve.
 */
std::optional<std::string> decodeRaw(std::span<const uint8_t> file, BgrxImage &image);

} // namespace tristop
