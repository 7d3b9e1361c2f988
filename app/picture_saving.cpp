// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/picture_saving.h"

#include <filesystem>
#include <limits>
#include <system_error>

#include <libyuv.h>

#include "app/file_writer.h"
#include "app/photograph_type.h"
#include "app/picture_writer.h"

namespace tristop {
namespace {

std::optional<PictureFormat> formatOfType(const std::string &type) {
    if (type == "public.png")
        return PictureFormat::Png;
    if (type == "public.jpeg")
        return PictureFormat::Jpeg;
    if (type == "public.tiff")
        return PictureFormat::Tiff;
    return std::nullopt;
}

bool isPresent(const RgbImage *picture) {
    return picture != nullptr && picture->pixels && picture->width > 0 && picture->height > 0;
}

} // namespace

std::optional<RgbaImage> resultImage(const RgbImage *picture) {
    if (!isPresent(picture) || picture->width > std::numeric_limits<int32_t>::max() / 32)
        return std::nullopt;
    RgbaImage result{picture->width, picture->height, nullptr};
    const auto lineBytes = static_cast<size_t>(result.lineBytes());
    result.pixels = allocPixels(lineBytes * static_cast<size_t>(result.height));
    if (!result.pixels)
        return std::nullopt;
    // Three bytes become four with an opaque fourth. Row by row, as the distances may pass 32 bits together.
    for (size_t y = 0; y < static_cast<size_t>(result.height); ++y)
        libyuv::RGB24ToARGB(picture->pixels.get() + y * picture->lineBytes, 0,
                            result.pixels.get() + y * lineBytes, 0, result.width, 1);
    return result;
}

std::optional<FileError> savePicture(const RgbImage *picture, const std::string &url,
                                     const std::string &type) {
    const auto format = formatOfType(type);
    if (!format)
        return cannotWrite(url, "the type " + type + " is not known");
    const auto flattened = resultImage(picture);
    if (!flattened)
        return cannotWrite(url, "there is no picture, or not enough memory");
    constexpr int32_t kDotsPerInch = 72;
    return writePicture(url, *format, flattened->view(), {kDotsPerInch, {}});
}

bool save(const RgbImage *picture, const RgbImage * /*original*/, const std::string &url,
          const std::string &type, const EncodingOptions & /*options*/) {
    return !savePicture(picture, url, type);
}

bool saveTIFF(const RgbImage *picture, const RgbImage *original, const std::string &url,
              const EncodingOptions &options) {
    constexpr int32_t kDotsPerInch = 300;
    if (!isPresent(picture))
        return false;
    std::vector<PictureView> pages;
    for (const RgbImage *page : {picture, original})
        if (isPresent(page))
            pages.push_back({page->pixels.get(), page->width, page->height,
                             static_cast<int32_t>(page->lineBytes), PixelOrder::Rgb});
    return !replaceFile(url, [&](std::FILE *file) {
        return encodeTiffPages(pages, kDotsPerInch, options.tiffCompression, file);
    });
}

bool isSupportImage(const std::string &path) {
    std::error_code error;
    const auto status = std::filesystem::status(path, error);
    return std::filesystem::exists(status) && !std::filesystem::is_directory(status) &&
           typeBySuffix(path).has_value();
}

} // namespace tristop
