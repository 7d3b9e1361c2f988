// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/picture_writer.h"

#include <algorithm>
#include <filesystem>

#include "app/file_writer.h"

namespace tristop {
namespace {

auto encoder(PictureFormat format) {
    switch (format) {
    case PictureFormat::Png:
        return encodePng;
    case PictureFormat::Jpeg:
        return encodeJpeg;
    case PictureFormat::Tiff:
        break;
    }
    return encodeTiff;
}

} // namespace

std::optional<PictureFormat> pictureFormat(const std::string &path) {
    std::string suffix = std::filesystem::path(path).extension().string();
    std::ranges::transform(suffix, suffix.begin(), [](char c) {
        return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    });
    if (suffix == ".png")
        return PictureFormat::Png;
    if (suffix == ".jpg" || suffix == ".jpeg")
        return PictureFormat::Jpeg;
    if (suffix == ".tif" || suffix == ".tiff")
        return PictureFormat::Tiff;
    return std::nullopt;
}

std::optional<FileError> checkTarget(const std::string &path) {
    if (!pictureFormat(path))
        return cannotWrite(path, "its name ends in none of .png, .jpg and .tif");
    return checkFileTarget(path);
}

std::optional<FileError> writePicture(const std::string &path, PictureFormat format,
                                      const PictureView &picture, const PictureProperties &properties,
                                      const EncodingOptions &options) {
    return replaceFile(path,
                       [&](std::FILE *file) { return encoder(format)(picture, properties, options, file); });
}

std::optional<FileError> writePicture(const std::string &path, const PictureView &picture,
                                      const PictureProperties &properties, const EncodingOptions &options) {
    if (const auto format = pictureFormat(path))
        return writePicture(path, *format, picture, properties, options);
    return checkTarget(path);
}

} // namespace tristop
