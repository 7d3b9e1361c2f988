// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/write_options.h"

#include <algorithm>
#include <map>

#include <CLI/CLI.hpp>

#include "app/camera_exif.h"
#include "app/picture_writer.h"
#include "cli/command_line.h"

namespace tristop {
namespace {

void addTiffCompression(CLI::App &app, TiffCompression &compression) {
    const auto read = [&compression](const std::string &text) {
        const std::map<std::string, TiffCompression> compressions = {{"none", TiffCompression::None},
                                                                     {"lzw", TiffCompression::Lzw},
                                                                     {"packbits", TiffCompression::PackBits},
                                                                     {"deflate", TiffCompression::Deflate}};
        if (!compressions.contains(text))
            throw CLI::ValidationError("--tiff-compression",
                                       "must be none, lzw, packbits or deflate, not " + text);
        compression = compressions.at(text);
    };
    app.add_option_function<std::string>("--tiff-compression", read, "How a TIFF is compressed")
        ->type_name("method")
        ->option_text("none|lzw|packbits|deflate (lzw)");
}

} // namespace

void addWriteOptions(CLI::App &app, WriteOptions &options) {
    addNumber(app, "--jpeg-quality", options.encoding.jpegQuality, 0, 100,
              "Quality of a JPEG; from 90 on with full colour resolution");
    addTiffCompression(app, options.encoding.tiffCompression);
    addNumber(app, "--png-level", options.encoding.pngLevel, 0, 9,
              "Compression of a PNG: 0 none, 1 fast, 9 slowest and smallest");
    app.add_flag_callback(
        "--no-metadata", [&options] { options.metadata = false; },
        "Leave out what the middle photograph tells of camera, date and place");
    app.add_flag_callback(
        "--no-gps", [&options] { options.gps = false; }, "Leave out the place alone");
    app.add_flag("--keep-width", options.keepWidth,
                 "Do not trim the width, which merging rounds up to a multiple of four");
}

CameraExifs readCameraExifs(const std::array<std::string, 3> &photographs, const WriteOptions &options) {
    CameraExifs exifs;
    if (options.metadata)
        std::ranges::transform(photographs, exifs.begin(), [&options](const std::string &photograph) {
            return readCameraExif(photograph, options.gps);
        });
    return exifs;
}

std::optional<FileError> writeMergedPicture(const std::string &path, PictureView picture,
                                            int32_t photographWidth, const std::vector<uint8_t> &cameraExif,
                                            const WriteOptions &options) {
    PictureProperties properties;
    if (!options.keepWidth)
        picture.width = photographWidth;
    if (options.metadata)
        properties.exif = finishedExif(cameraExif, picture.width, picture.height, properties.dotsPerInch);
    return writePicture(path, picture, properties, options.encoding);
}

} // namespace tristop
