// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/platform_images.h"

#include <cstring>

namespace tristop {

QImage platformImage(BgrxImage picture) {
    if (!picture.pixels)
        return {};
    const auto lineBytes = static_cast<qsizetype>(picture.lineBytes());
    uint8_t *pixels = picture.pixels.release();
    return QImage(
        pixels, picture.width, picture.height, lineBytes, QImage::Format_RGB32,
        [](void *block) { PixelDeleter()(static_cast<uint8_t *>(block)); }, pixels);
}

std::optional<RgbImage> rgbImage(const QImage &image) {
    const QImage source = image.convertToFormat(QImage::Format_RGB888);
    if (source.isNull())
        return std::nullopt;
    RgbImage result{source.width(), source.height(), static_cast<size_t>(source.bytesPerLine()), nullptr};
    result.pixels = allocPixels(static_cast<size_t>(source.sizeInBytes()));
    if (!result.pixels)
        return std::nullopt;
    std::memcpy(result.pixels.get(), source.constBits(), static_cast<size_t>(source.sizeInBytes()));
    return result;
}

} // namespace tristop
