// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <memory>

namespace tristop {

/// Frees a block of pixels, or sets it aside where a PixelReserve lives.
struct PixelDeleter {
    void operator()(uint8_t *pixels) const;
};

/// A pixel block on the C heap, freed by its owner; null where there is none.
using PixelBuffer = std::unique_ptr<uint8_t[], PixelDeleter>;

/// A zeroed block of `bytes` bytes, or null when there is not enough memory.
PixelBuffer allocPixels(size_t bytes);

/// The same for a block that is written before it is read: it holds anything, and may come from the reserve.
PixelBuffer allocUnsetPixels(size_t bytes);

/**
 * While one lives, large blocks that their owners no longer need are set aside for those to come. To take
 * memory from the system for hundreds of megabytes of a merge costs about as much time as all that is done
 * with them between the engine and the screen. All reserves share their blocks; any thread may use them.
 */
class PixelReserve {
public:
    PixelReserve();
    ~PixelReserve();
    PixelReserve(const PixelReserve &) = delete;
    PixelReserve &operator=(const PixelReserve &) = delete;

    /// Frees what is set aside.
    static void giveBack();
    /// Bytes that are set aside.
    static size_t size();
};

/// `value` rounded up to a multiple of four.
constexpr int32_t roundUpTo4(int32_t value) {
    return ((value * 8 + 31) / 32) * 4;
}

/// Bytes from one row of a BGR picture to the next: three a pixel, rounded up to a multiple of four.
constexpr int32_t bgrLineBytes(int32_t width) {
    return ((width * 24 + 31) / 32) * 4;
}

/**
 * Bytes behind the last row of a BGRX picture. An engine input is up to three pixels wider than its
 * photograph and takes them from the start of the next row, so its last row reads these.
 */
constexpr size_t kBgrxSpareBytes = 12;

/// The most bytes that a picture of four bytes a pixel may have: sizes and offsets stay within 32 bits.
constexpr int64_t kLargestPictureBytes = std::numeric_limits<int32_t>::max();

/// Whether a picture of this size, both at least 1, has at most kLargestPictureBytes.
constexpr bool fitsPictureLimit(int64_t width, int64_t height) {
    return height <= kLargestPictureBytes / 4 / width;
}

/// A picture of four bytes a pixel (blue, green, red, filler), rows 4 * width bytes apart.
struct BgrxImage {
    int32_t width = 0;
    int32_t height = 0;
    PixelBuffer pixels; ///< 4 * width * height bytes, and kBgrxSpareBytes where the application drew it

    size_t lineBytes() const { return size_t{4} * static_cast<size_t>(width); }
    uint8_t *row(int32_t y) { return pixels.get() + lineBytes() * static_cast<size_t>(y); }
};

/// A zeroed picture with kBgrxSpareBytes behind its last row; without pixels when there is not enough memory.
inline BgrxImage allocBgrx(int32_t width, int32_t height) {
    BgrxImage image{width, height, nullptr};
    image.pixels = allocPixels(image.lineBytes() * static_cast<size_t>(height) + kBgrxSpareBytes);
    return image;
}

/// A picture of three bytes a pixel (red, green, blue), rows `lineBytes` apart.
struct RgbImage {
    int32_t width = 0;
    int32_t height = 0;
    size_t lineBytes = 0;
    PixelBuffer pixels; ///< lineBytes * height bytes
};

} // namespace tristop
