// SPDX-License-Identifier: MIT
#include "engine/core/output_crop_resize.h"

#include "engine/core/arithmetic.h"
#include "engine/core/buffer.h"
#include "engine/core/worker.h"

#include <algorithm>
#include <array>

namespace hdr {

namespace {

/// Where an output column or row lies between two source columns or rows.
struct Tap {
    int32_t near;   ///< source index at or before the position
    int32_t far;    ///< the next one
    int32_t weight; ///< of the far one, 0 to 16
};

/// Maps `size` output positions onto source positions first to end - 1 of a source of `size` samples.
/// Positions are worked out in single precision, their rounding to sixteenths in double precision.
void fillTaps(Tap *taps, int size, int first, int end) {
    for (int i = 0; i < size; i++) {
        float position = static_cast<float>(first);
        if (size > 1)
            position =
                static_cast<float>(int64_t{i} * (end - first - 1)) / static_cast<float>(size - 1) + position;
        const int near = static_cast<int>(position);
        const float sixteenths = (position - static_cast<float>(near)) * 16.0f;
        taps[i].weight = static_cast<int>(static_cast<double>(sixteenths) + 0.5);
        taps[i].near = std::clamp(near, 0, size - 1);
        taps[i].far = std::min(taps[i].near + 1, size - 1);
    }
}

/// Rows [first, end) of the destination, for one worker.
struct RowBand {
    int first;
    int end;
    uint16_t *blended; ///< scratch: one source row between two, in 1/16 levels
};

struct Resizer {
    const Offscreen &source;
    Offscreen &destination;
    const Tap *columns;
    const Tap *rows;

    const uint8_t *sourceRow(int plane, int y) const {
        return source.ppu8Plane[plane] + static_cast<ptrdiff_t>(y) * source.pi32Pitch[plane];
    }
    uint8_t *destinationRow(int plane, int y) const {
        return destination.ppu8Plane[plane] + static_cast<ptrdiff_t>(y) * destination.pi32Pitch[plane];
    }

    /// One row of luminance; samples lie `Stride` bytes apart.
    template <int Stride>
    void luma(int y, uint16_t *blended) const {
        const Tap &row = rows[y];
        const uint8_t *top = sourceRow(0, row.near);
        const uint8_t *bottom = sourceRow(0, row.far);
        const int first = columns[0].near;
        const int last = columns[destination.i32Width - 1].far;
        for (int x = first; x <= last; x++) {
            const int a = top[Stride * x];
            const int b = bottom[Stride * x];
            blended[x] = static_cast<uint16_t>((a << 4) + (b - a) * row.weight);
        }
        uint8_t *out = destinationRow(0, y);
        for (int x = 0; x < destination.i32Width; x++) {
            const Tap &column = columns[x];
            const int left = blended[column.near];
            const int right = blended[column.far];
            out[Stride * x] = static_cast<uint8_t>(((left << 4) + (right - left) * column.weight) >> 8);
        }
    }

    /// Chroma of a packed row: each pair takes that of the source group that holds its first column.
    void packedChroma(int y) const {
        const uint8_t *from = sourceRow(0, rows[y].near);
        uint8_t *out = destinationRow(0, y);
        const int width = destination.i32Width;
        const int lastGroup = roundDown(width - 2, 2);
        for (int x = 0; x < width; x += 2) {
            const int group = 2 * std::min(roundDown(columns[x].near, 2), lastGroup);
            out[2 * x + 1] = from[group + 1];
            if (x + 1 < width)
                out[2 * x + 3] = from[group + 3];
        }
    }

    /// Chroma of a row of planar 4:2:0, from source chroma row `fromY`.
    void planarChroma(int y, int fromY) const {
        const int width = destination.i32Width / 2;
        for (int plane = 1; plane <= 2; plane++) {
            const uint8_t *from = sourceRow(plane, fromY);
            uint8_t *out = destinationRow(plane, y);
            for (int x = 0; x < width; x++)
                out[x] = from[std::min(columns[2 * x].near / 2, width - 1)];
        }
    }

    /// Chroma of a row of a semi-planar picture.
    void interleavedChroma(int y, int fromY) const {
        const int width = roundDown(destination.i32Width, 2);
        const uint8_t *from = sourceRow(1, fromY);
        uint8_t *out = destinationRow(1, y);
        for (int x = 0; x < width; x += 2) {
            const int pair = std::min(roundDown(columns[x].near, 2), width - 2);
            out[x] = from[pair];
            out[x + 1] = from[pair + 1];
        }
    }

    void run(const RowBand &band) const {
        const uint32_t format = destination.u32PixelArrayFormat;
        const int chromaRows = destination.i32Height / 2;
        for (int y = band.first; y < band.end; y++) {
            switch (format) {
            case HDR_FORMAT_YUY2:
                luma<2>(y, band.blended);
                packedChroma(y);
                break;
            case HDR_FORMAT_NV16:
                luma<1>(y, band.blended);
                interleavedChroma(y, rows[y].near);
                break;
            case HDR_FORMAT_I420:
            case HDR_FORMAT_NV12:
            case HDR_FORMAT_NV21:
                luma<1>(y, band.blended);
                // A pair of rows takes its chroma with the second of them.
                if (y & 1) {
                    const int fromY = std::min(rows[y].near / 2, chromaRows - 1);
                    if (format == HDR_FORMAT_I420)
                        planarChroma(y / 2, fromY);
                    else
                        interleavedChroma(y / 2, fromY);
                }
                break;
            default:
                return;
            }
        }
    }
};

bool isEmpty(const Rect &rectangle) {
    return rectangle.x1 - rectangle.x0 < 1 || rectangle.y1 - rectangle.y0 < 1;
}

/// Trims the rectangle at its right or bottom edge to the aspect ratio of width x height.
void matchAspect(Rect &rectangle, int width, int height) {
    const int cropWidth = rectangle.x1 - rectangle.x0;
    const int cropHeight = rectangle.y1 - rectangle.y0;
    if (cropWidth * height > cropHeight * width)
        rectangle.x1 = rectangle.x0 + roundDown(cropHeight * width / height, 8);
    else
        rectangle.y1 = rectangle.y0 + roundDown(cropWidth * height / width, 2);
}

} // namespace

HdrStatus outputCropResize(MemContext *memory, const Offscreen *source, Offscreen *destination,
                           Rect *rectangle) {
    const int width = destination->i32Width;
    const int height = destination->i32Height;
    const Rect whole = {0, 0, width, height};
    Rect &crop = *rectangle;
    crop = {std::max(crop.x0, 0), std::max(crop.y0, 0), std::min(crop.x1, width), std::min(crop.y1, height)};
    if (isEmpty(crop))
        crop = whole;
    if (crop.x1 - crop.x0 == width && crop.y1 - crop.y0 == height)
        return offscreenCopyAll(destination, source);
    matchAspect(crop, width, height);
    if (isEmpty(crop)) {
        crop = whole;
        return offscreenCopyAll(destination, source);
    }

    const size_t columnCount = static_cast<size_t>(width);
    Buffer<Tap> columns(memory, columnCount);
    Buffer<Tap> rows(memory, static_cast<size_t>(height));
    Buffer<uint16_t> scratch(memory, 4 * columnCount);
    if (!columns || !rows || !scratch)
        return HDR_ERR_NOMEM;
    fillTaps(columns.data(), width, crop.x0, crop.x1);
    fillTaps(rows.data(), height, crop.y0, crop.y1);

    std::array<RowBand, 4> bands;
    for (int k = 0; k < 4; k++) {
        const auto edge = [height](int index) {
            return index == 4 ? height : roundDown(index * height / 4, 4);
        };
        bands[static_cast<size_t>(k)] = {edge(k), edge(k + 1),
                                         scratch.data() + static_cast<size_t>(k) * columnCount};
    }
    const Resizer resizer{*source, *destination, columns.data(), rows.data()};
    runOnFourWorkers(bands, [&resizer](const RowBand &band) { resizer.run(band); });
    return HDR_OK;
}

} // namespace hdr
