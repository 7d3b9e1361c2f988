// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "app/picture_view.h"
#include "app/pixels.h"

namespace tristop {

/// A run of bytes of its own.
struct ByteBlock {
    PixelBuffer bytes;
    size_t size = 0;
};

/**
 * The compressed pixel data of a 24-bit PNG file: one zlib stream in several pieces, each of which may be an
 * IDAT chunk. `level` is that of EncodingOptions::pngLevel. Strips of the picture are filtered and compressed
 * side by side; the bytes do not depend on the number of processors. None when there is not enough memory.
 */
std::optional<std::vector<ByteBlock>> compressForPng(const PictureView &picture, int32_t level);

} // namespace tristop
