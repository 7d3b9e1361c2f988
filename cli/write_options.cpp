// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/write_options.h"

#include <algorithm>
#include <string_view>

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include "app/camera_exif.h"
#include "app/picture_writer.h"
#include "cli/command_line.h"
#include "cli/json_settings.h"

namespace tristop {
namespace {

constexpr int32_t kHighestJpegQuality = 100;
constexpr int32_t kHighestPngLevel = 9;

struct NamedCompression {
    std::string_view name;
    TiffCompression value;
};

constexpr std::array<NamedCompression, 4> kCompressions = {{{"none", TiffCompression::None},
                                                            {"lzw", TiffCompression::Lzw},
                                                            {"packbits", TiffCompression::PackBits},
                                                            {"deflate", TiffCompression::Deflate}}};
constexpr const char *kCompressionRule = "must be none, lzw, packbits or deflate";

std::optional<TiffCompression> compressionNamed(std::string_view name) {
    const auto compression = std::ranges::find(kCompressions, name, &NamedCompression::name);
    return compression != kCompressions.end() ? std::optional(compression->value) : std::nullopt;
}

void addTiffCompression(CLI::App &app, TiffCompression &compression) {
    const auto read = [&compression](const std::string &text) {
        const auto named = compressionNamed(text);
        if (!named)
            throw CLI::ValidationError("--tiff-compression", kCompressionRule + (", not " + text));
        compression = *named;
    };
    app.add_option_function<std::string>("--tiff-compression", read, "How a TIFF is compressed")
        ->type_name("method")
        ->option_text("none|lzw|packbits|deflate (lzw)");
}

} // namespace

void addWriteOptions(CLI::App &app, WriteOptions &options) {
    addNumber(app, "--jpeg-quality", options.encoding.jpegQuality, 0, kHighestJpegQuality,
              "Quality of a JPEG; from 90 on with full colour resolution");
    addTiffCompression(app, options.encoding.tiffCompression);
    addNumber(app, "--png-level", options.encoding.pngLevel, 0, kHighestPngLevel,
              "Compression of a PNG: 0 none, 1 fast, 9 slowest and smallest");
    app.add_flag_callback(
        "--no-metadata", [&options] { options.metadata = false; },
        "Leave out what the middle photograph tells of camera, date and place");
    app.add_flag_callback(
        "--no-gps", [&options] { options.gps = false; }, "Leave out the place alone");
    app.add_flag("--keep-width", options.keepWidth,
                 "Do not trim the width, which merging rounds up to a multiple of four");
}

nlohmann::ordered_json writeOptionsAsJson(const WriteOptions &options) {
    const EncodingOptions &encoding = options.encoding;
    return {{"jpegQuality", encoding.jpegQuality},
            {"tiffCompression",
             std::ranges::find(kCompressions, encoding.tiffCompression, &NamedCompression::value)->name},
            {"pngLevel", encoding.pngLevel},
            {"metadata", options.metadata},
            {"gps", options.gps},
            {"keepWidth", options.keepWidth}};
}

std::optional<std::string> readWriteOptions(const nlohmann::ordered_json &json, WriteOptions &options) {
    if (!json.is_object())
        return "writing must be an object";
    EncodingOptions &encoding = options.encoding;
    if (const auto mistake = readNumber(json, "jpegQuality", encoding.jpegQuality, 0, kHighestJpegQuality))
        return mistake;
    if (const auto mistake = readNumber(json, "pngLevel", encoding.pngLevel, 0, kHighestPngLevel))
        return mistake;
    if (json.contains("tiffCompression")) {
        const auto &name = json.at("tiffCompression");
        const auto compression = name.is_string() ? compressionNamed(name.get<std::string>()) : std::nullopt;
        if (!compression)
            return std::string("tiffCompression ") + kCompressionRule;
        encoding.tiffCompression = *compression;
    }
    for (const auto &[key, value] :
         {std::pair{"metadata", &options.metadata}, {"gps", &options.gps}, {"keepWidth", &options.keepWidth}})
        if (const auto mistake = readFlag(json, key, *value))
            return mistake;
    return std::nullopt;
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
