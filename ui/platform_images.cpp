// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/platform_images.h"

#include <cstring>

namespace tristop {

QImage platformImage(const RgbImage &picture) {
    return QImage(picture.pixels.get(), picture.width, picture.height,
                  static_cast<qsizetype>(picture.lineBytes), QImage::Format_RGB888)
        .convertToFormat(QImage::Format_RGB32);
}

QImage platformImage(const BgrxImage &picture) {
    return QImage(picture.pixels.get(), picture.width, picture.height,
                  static_cast<qsizetype>(picture.lineBytes()), QImage::Format_RGB32)
        .copy();
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
