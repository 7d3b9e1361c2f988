// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/png_compression.h"

#include <algorithm>
#include <cstdlib>
#include <future>
#include <initializer_list>
#include <utility>

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

/// A row of red, green and blue behind one pixel of zeros, which stands to the left of the picture.
class FilterRow {
public:
    explicit FilterRow(size_t rgbBytes) : bytes(kPixel + rgbBytes) {}

    uint8_t *pixels() { return bytes.data() + kPixel; }
    const uint8_t *pixels() const { return bytes.data() + kPixel; }
    const uint8_t *left() const { return bytes.data(); } ///< of pixels()
    size_t size() const { return bytes.size() - kPixel; }

private:
    static constexpr size_t kPixel = 3;
    std::vector<uint8_t> bytes;
};

/// PNG's filter after A. W. Paeth: every byte minus the one of left, above and their corner that is nearest
/// to left + above - corner. Written without branches, for the compiler's vectors.
void filterRow(const FilterRow &row, const FilterRow &above, uint8_t *filtered) {
    constexpr uint8_t kPaeth = 4;
    *filtered++ = kPaeth;
    const uint8_t *pixels = row.pixels(), *leftOf = row.left(), *aboveOf = above.pixels(),
                  *cornerOf = above.left();
    for (size_t i = 0, size = row.size(); i < size; ++i) {
        const auto left = static_cast<int16_t>(leftOf[i]), up = static_cast<int16_t>(aboveOf[i]),
                   corner = static_cast<int16_t>(cornerOf[i]);
        const auto toLeft = static_cast<int16_t>(std::abs(up - corner)),
                   toUp = static_cast<int16_t>(std::abs(left - corner)),
                   toCorner = static_cast<int16_t>(std::abs(left + up - 2 * corner));
        const int16_t other = toUp <= toCorner ? up : corner;
        const int16_t nearest = ((toLeft <= toUp) & (toLeft <= toCorner)) ? left : other;
        filtered[i] = static_cast<uint8_t>(pixels[i] - nearest);
    }
}

/// Compresses rows `first` to `end` - 1 as the deflate blocks of a stream, which the last strip ends.
Strip compressStrip(const PictureView &picture, int32_t first, int32_t end, int level, int strategy) {
    FilterRow row(picture.rgbBytes()), above(picture.rgbBytes());
    std::vector<uint8_t> filtered(picture.rgbBytes() + 1);
    Strip strip;
    strip.filteredBytes = filtered.size() * static_cast<size_t>(end - first);

    z_stream stream{};
    constexpr int kWindowBitsWithoutHeader = -15, kUsualMemory = 8, kFlushBytes = 64;
    if (deflateInit2(&stream, level, Z_DEFLATED, kWindowBitsWithoutHeader, kUsualMemory, strategy) != Z_OK)
        return strip;
    const uLong capacity = deflateBound(&stream, static_cast<uLong>(strip.filteredBytes)) + kFlushBytes;
    PixelBuffer bytes = allocPixels(capacity);
    stream.next_out = bytes.get();
    stream.avail_out = static_cast<uInt>(capacity);
    if (bytes && first > 0)
        picture.readRgbRow(first - 1, above.pixels());
    for (int32_t y = first; bytes && y < end; ++y) {
        picture.readRgbRow(y, row.pixels());
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

/// The strip at a level of EncodingOptions::pngLevel.
Strip compressStrip(const PictureView &picture, int32_t first, int32_t end, int level) {
    if (level == Z_NO_COMPRESSION)
        return compressStrip(picture, first, end, level, Z_DEFAULT_STRATEGY);
    // On photographs, whose noise hardly repeats, run lengths make files as small as a search does, in a
    // fraction of its time. Of a search that was asked for the better result counts.
    Strip strip = compressStrip(picture, first, end, Z_DEFAULT_COMPRESSION, Z_RLE);
    if (level == Z_BEST_SPEED || !strip.compressed.bytes)
        return strip;
    Strip searched = compressStrip(picture, first, end, level, Z_DEFAULT_STRATEGY);
    const bool better = searched.compressed.size < strip.compressed.size;
    return better || !searched.compressed.bytes ? std::move(searched) : std::move(strip);
}

ByteBlock block(std::initializer_list<int> values) {
    ByteBlock result{allocPixels(values.size()), values.size()};
    if (result.bytes)
        std::ranges::transform(values, result.bytes.get(), [](int v) { return static_cast<uint8_t>(v); });
    return result;
}

} // namespace

std::optional<std::vector<ByteBlock>> compressForPng(const PictureView &picture, int32_t level) {
    // A fixed number of strips gives the same bytes everywhere.
    std::vector<std::future<Strip>> strips;
    const int32_t stripRows = (picture.height + kStrips - 1) / kStrips;
    for (int32_t first = 0; first < picture.height; first += stripRows)
        strips.push_back(
            std::async([&picture, level, first, end = std::min(first + stripRows, picture.height)] {
                return compressStrip(picture, first, end, level);
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
