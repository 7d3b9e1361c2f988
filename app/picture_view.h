// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>

namespace tristop {

/// How a picture's pixels lie in memory; x is a filler.
enum class PixelOrder { Bgr, Rgb, Rgbx };

/// A borrowed picture in sRGB, rows `lineBytes` apart.
struct PictureView {
    const uint8_t *pixels = nullptr;
    int32_t width = 0;
    int32_t height = 0;
    int32_t lineBytes = 0;
    PixelOrder order = PixelOrder::Bgr;

    const uint8_t *row(int32_t y) const { return pixels + static_cast<ptrdiff_t>(y) * lineBytes; }
    /// Bytes of a row of red, green and blue.
    size_t rgbBytes() const { return 3 * static_cast<size_t>(width); }
    /// Copies row `y` as red, green and blue.
    void readRgbRow(int32_t y, uint8_t *rgb) const;
};

} // namespace tristop
