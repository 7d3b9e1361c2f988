// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/png_compression.h"

#include <algorithm>
#include <future>
#include <initializer_list>
#include <utility>

#include <libyuv.h>
#include <zlib.h>

namespace tristop {
namespace {

constexpr int32_t kStrips = 8;

/// One strip's share of the stream.
struct Strip {
    ByteBlock compressed; ///< no bytes when there was not enough memory
    uLong checksum = 1;   ///< Adler-32 of the filtered bytes
    size_t filteredBytes = 0;
};

/// PNG's averaging filter: every byte minus the mean of the pixels to the left and above.
void filterRow(const std::vector<uint8_t> &row, const std::vector<uint8_t> &above, uint8_t *filtered) {
    constexpr uint8_t kAverage = 3;
    *filtered++ = kAverage;
    for (size_t i = 0; i < 3; ++i)
        filtered[i] = static_cast<uint8_t>(row[i] - above[i] / 2);
    for (size_t i = 3; i < row.size(); ++i)
        filtered[i] = static_cast<uint8_t>(row[i] - (row[i - 3] + above[i]) / 2);
}

/// Compresses rows `first` to `end` - 1 as the deflate blocks of a stream, which the last strip ends.
Strip compressStrip(const BgrView &picture, int32_t first, int32_t end) {
    const size_t rowBytes = 3 * static_cast<size_t>(picture.width);
    std::vector<uint8_t> row(rowBytes), above(rowBytes), filtered(rowBytes + 1);
    const auto read = [&picture](int32_t y, std::vector<uint8_t> &rgb) {
        const uint8_t *bgr = picture.pixels + static_cast<ptrdiff_t>(y) * picture.lineBytes;
        libyuv::RAWToRGB24(bgr, 0, rgb.data(), 0, picture.width, 1); // exchanges the outer bytes
    };
    Strip strip;
    strip.filteredBytes = filtered.size() * static_cast<size_t>(end - first);

    // On photographs, run lengths after averaging make files as small as a thorough search does, several
    // times as fast.
    z_stream stream{};
    constexpr int kWindowBitsWithoutHeader = -15, kUsualMemory = 8, kFlushBytes = 64;
    if (deflateInit2(&stream, Z_DEFAULT_COMPRESSION, Z_DEFLATED, kWindowBitsWithoutHeader, kUsualMemory,
                     Z_RLE) != Z_OK)
        return strip;
    const uLong capacity = deflateBound(&stream, static_cast<uLong>(strip.filteredBytes)) + kFlushBytes;
    PixelBuffer bytes = allocPixels(capacity);
    stream.next_out = bytes.get();
    stream.avail_out = static_cast<uInt>(capacity);
    if (bytes && first > 0)
        read(first - 1, above);
    for (int32_t y = first; bytes && y < end; ++y) {
        read(y, row);
        filterRow(row, above, filtered.data());
        std::swap(row, above);
        strip.checksum = adler32_z(strip.checksum, filtered.data(), filtered.size());
        stream.next_in = filtered.data();
        stream.avail_in = static_cast<uInt>(filtered.size());
        const bool last = y == end - 1;
        deflate(&stream, !last ? Z_NO_FLUSH : end == picture.height ? Z_FINISH : Z_SYNC_FLUSH);
    }
    strip.compressed = {std::move(bytes), capacity - stream.avail_out};
    deflateEnd(&stream);
    return strip;
}

ByteBlock block(std::initializer_list<int> values) {
    ByteBlock result{allocPixels(values.size()), values.size()};
    if (result.bytes)
        std::ranges::transform(values, result.bytes.get(), [](int v) { return static_cast<uint8_t>(v); });
    return result;
}

} // namespace

std::optional<std::vector<ByteBlock>> compressForPng(const BgrView &picture) {
    // A fixed number of strips gives the same bytes everywhere.
    std::vector<std::future<Strip>> strips;
    const int32_t stripRows = (picture.height + kStrips - 1) / kStrips;
    for (int32_t first = 0; first < picture.height; first += stripRows)
        strips.push_back(std::async([&picture, first, end = std::min(first + stripRows, picture.height)] {
            return compressStrip(picture, first, end);
        }));

    std::vector<ByteBlock> blocks;
    blocks.push_back(block({0x78, 0x01})); // zlib: a window of 32 KiB, fast
    uLong checksum = 1;
    for (std::future<Strip> &future : strips) {
        Strip strip = future.get();
        checksum = adler32_combine(checksum, strip.checksum, static_cast<z_off_t>(strip.filteredBytes));
        blocks.push_back(std::move(strip.compressed));
    }
    const auto sum = static_cast<int>(checksum);
    blocks.push_back(block({sum >> 24 & 255, sum >> 16 & 255, sum >> 8 & 255, sum & 255}));
    if (std::ranges::any_of(blocks, [](const ByteBlock &b) { return !b.bytes; }))
        return std::nullopt;
    return blocks;
}

} // namespace tristop
