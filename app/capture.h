// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

namespace tristop {

/// A time by the camera's own clock, whatever its time zone.
using CameraTime = std::chrono::sys_time<std::chrono::microseconds>;

/// How a photograph was taken: what tells the photographs of one bracket from others.
struct Capture {
    int32_t width = 0; ///< upright, in pixels
    int32_t height = 0;
    std::string camera; ///< make, model and serial number, as far as they are known
    std::optional<CameraTime> time;
    std::chrono::microseconds exposureTime{0}; ///< 0 when it is unknown
    /// Light that was let in and amplified, from exposure time, aperture and ISO: one more is twice as much.
    std::optional<double> exposure;
    std::optional<double> exposureBias; ///< EV
};

/**
 * Reads the headers of the JPEG or camera RAW file at `path`. Entries that are missing, zero or malformed
 * count as unknown. Merged pictures are refused. Returns why the file cannot be used, in words that follow
 * its name, or nothing on success. Safe to call from several threads.
 */
std::optional<std::string> readCapture(const std::string &path, Capture &capture);

} // namespace tristop
