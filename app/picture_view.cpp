// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/picture_view.h"

#include <cstring>

#include <libyuv.h>

namespace tristop {

void PictureView::readRgbRow(int32_t y, uint8_t *rgb) const {
    switch (order) {
    case PixelOrder::Bgr:
        libyuv::RAWToRGB24(row(y), 0, rgb, 0, width, 1); // exchanges the outer bytes
        break;
    case PixelOrder::Rgb:
        std::memcpy(rgb, row(y), rgbBytes());
        break;
    case PixelOrder::Rgbx:
        libyuv::ARGBToRGB24(row(y), 0, rgb, 0, width, 1); // drops every fourth byte
        break;
    }
}

} // namespace tristop
