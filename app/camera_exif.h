// SPDX-License-Identifier: GPL-3.0-or-later
// What a merged picture takes over from the camera.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace tristop {

/**
 * What the file at `path` tells of the camera, its lens and settings, the date, the author and, with
 * `withPlace`, the place, as an EXIF block; no maker note, thumbnail or anything about the stored picture.
 * At most about 32 KiB: what is longer is left out. Empty when there is nothing or it cannot be read. Safe
 * to call from several threads.
 */
std::vector<uint8_t> readCameraExif(const std::string &path, bool withPlace);

/**
 * The EXIF block of a finished picture: `cameraExif`, made by readCameraExif, with the picture's size in
 * pixels and resolution, sRGB, upright orientation and this software's name. Empty on failure.
 */
std::vector<uint8_t> finishedExif(const std::vector<uint8_t> &cameraExif, int32_t width, int32_t height,
                                  int32_t dotsPerInch);

} // namespace tristop
