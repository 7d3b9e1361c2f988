// SPDX-License-Identifier: GPL-3.0-or-later
// Pictures of the application as images of the platform, and back.
#pragma once

#include <optional>

#include <QImage>

#include "app/pixels.h"

namespace tristop {

/// The picture, whose pixels the image takes over; null without pixels.
QImage platformImage(BgrxImage picture);

/// A copy of the image without its alpha; none for a null image or when there is not enough memory.
std::optional<RgbImage> rgbImage(const QImage &image);

} // namespace tristop
