// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/picture_levels.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "app/bands.h"
#include "ui/platform_images.h"

namespace tristop {

namespace {

// Mean of four pixels in each of their four bytes, rounded; two bytes at a time with room for their sums.
uint32_t meanOfFour(uint32_t a, uint32_t b, uint32_t c, uint32_t d) {
    constexpr uint32_t kBytes = 0x00FF00FF;
    constexpr uint32_t kHalves = 0x00020002;
    const uint32_t even = (a & kBytes) + (b & kBytes) + (c & kBytes) + (d & kBytes) + kHalves;
    const uint32_t odd =
        ((a >> 8) & kBytes) + ((b >> 8) & kBytes) + ((c >> 8) & kBytes) + ((d >> 8) & kBytes) + kHalves;
    return ((even >> 2) & kBytes) | (((odd >> 2) & kBytes) << 8);
}

// Plain values only: the compiler can do several pixels at a time.
void halveRow(const uint32_t *upper, const uint32_t *lower, uint32_t *half, int width) {
    for (int x = 0; x < width / 2; ++x)
        half[x] = meanOfFour(upper[2 * x], upper[2 * x + 1], lower[2 * x], lower[2 * x + 1]);
    if (width % 2 != 0)
        half[width / 2] = meanOfFour(upper[width - 1], upper[width - 1], lower[width - 1], lower[width - 1]);
}

QImage halved(const QImage &image) {
    BgrxImage pixels{(image.width() + 1) / 2, (image.height() + 1) / 2, nullptr};
    pixels.pixels = allocUnsetPixels(pixels.lineBytes() * static_cast<size_t>(pixels.height));
    if (!pixels.pixels)
        return {};
    const auto rowOf = [&image](int64_t y) {
        const auto row = static_cast<int>(std::min<int64_t>(y, image.height() - 1));
        return reinterpret_cast<const uint32_t *>(image.constScanLine(row));
    };
    forEachBand(pixels.height, [&](int64_t first, int64_t end) {
        for (int64_t y = first; y < end; ++y)
            halveRow(rowOf(2 * y), rowOf(2 * y + 1),
                     reinterpret_cast<uint32_t *>(pixels.row(static_cast<int32_t>(y))), image.width());
    });
    QImage half = platformImage(std::move(pixels));
    half.reinterpretAsFormat(image.format());
    return half;
}

} // namespace

PictureLevels::PictureLevels(const QImage &picture) {
    if (!picture.isNull())
        levels.push_back(picture);
}

PictureLevels PictureLevels::reduced(const QImage &picture) {
    const QImage converted = picture.convertToFormat(
        picture.hasAlphaChannel() ? QImage::Format_ARGB32_Premultiplied : QImage::Format_RGB32);
    // Without memory for a conversion the picture itself has to do.
    if (converted.isNull())
        return PictureLevels(picture);
    PictureLevels pyramid(converted);
    while (pyramid.count() < kCount) {
        QImage half = halved(pyramid.levels.back());
        // Without memory for a level the larger ones have to do.
        if (half.isNull())
            break;
        pyramid.levels.push_back(std::move(half));
    }
    return pyramid;
}

size_t PictureLevels::levelFor(double scale) const {
    size_t index = 0;
    while (index + 1 < count() && std::ldexp(scale, static_cast<int>(index) + 1) <= 1)
        ++index;
    return index;
}

} // namespace tristop
