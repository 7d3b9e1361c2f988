// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <nlohmann/json_fwd.hpp>

#include "app/file_error.h"
#include "app/picture_encoding.h"

namespace CLI {
class App;
}

namespace tristop {

/// How merged pictures are written: the same for one bracket and for a batch of them.
struct WriteOptions {
    EncodingOptions encoding{.jpegQuality = 92};
    bool metadata = true;   ///< takes over the camera's data of the middle photograph
    bool gps = true;        ///< with the place
    bool keepWidth = false; ///< leaves the engine's width, which is rounded up to a multiple of four

    bool operator==(const WriteOptions &) const = default;
};

/// Adds an option for each; `options` holds the defaults and must outlive the parsing.
void addWriteOptions(CLI::App &app, WriteOptions &options);

/// The options as a JSON object.
nlohmann::ordered_json writeOptionsAsJson(const WriteOptions &options);

/// Reads what writeOptionsAsJson made; an option that is missing keeps its value. Returns what is wrong, or
/// nothing on success.
std::optional<std::string> readWriteOptions(const nlohmann::ordered_json &json, WriteOptions &options);

/// The camera's data of three photographs, in their order.
using CameraExifs = std::array<std::vector<uint8_t>, 3>;

/// The camera's data that the options ask for; empty where there are none. It is read before the merge, so
/// that a photograph may go meanwhile.
CameraExifs readCameraExifs(const std::array<std::string, 3> &photographs, const WriteOptions &options);

/**
 * Writes a merged picture, trimmed to the photographs' width, in the format that the name asks for.
 * `cameraExif` is that of the middle photograph.
 */
std::optional<FileError> writeMergedPicture(const std::string &path, PictureView picture,
                                            int32_t photographWidth, const std::vector<uint8_t> &cameraExif,
                                            const WriteOptions &options);

} // namespace tristop
