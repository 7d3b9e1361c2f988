// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/yuv_rgb.h"

#include <algorithm>
#include <limits>
#include <mutex>

#include <libyuv.h>

#include "app/bands.h"

namespace tristop {
namespace {

int64_t pixelCount(const Offscreen &record) {
    return static_cast<int64_t>(record.i32Width) * record.i32Height;
}

/// Bytes of a record's pixels: packed 4:2:2 has two a pixel, the 4:2:0 formats one and a half.
size_t pixelBytes(const Offscreen &record) {
    const int64_t pixels = pixelCount(record);
    return static_cast<size_t>(record.u32PixelArrayFormat == HDR_FORMAT_YUY2 ? 2 * pixels : 3 * pixels / 2);
}

/// Whether every size that is worked out from width and height fits in 32 bits.
bool sizesFit(const Offscreen &record) {
    const int64_t factor = record.u32PixelArrayFormat == HDR_FORMAT_YUY2 ? 2 : 3;
    return record.i32Width >= 0 && record.i32Height >= 0 &&
           factor * pixelCount(record) <= std::numeric_limits<int32_t>::max();
}

/// Widens `rows` rows of a BGR picture to BGRX and counts their values.
void widenAndCount(const uint8_t *bgr, int64_t linebytes, uint8_t *bgrx, int width, int64_t rows,
                   IIHistogramData &counts) {
    // Neighbours often share a value: two sets of counters spare waiting for one to be written.
    std::array<std::array<std::array<uint32_t, 256>, 3>, 2> bins{};
    for (int64_t y = 0; y < rows; ++y) {
        const uint8_t *source = bgr + y * linebytes;
        libyuv::RGB24ToARGB(source, 0, bgrx + y * 4 * width, 0, width, 1);
        const uint8_t *const end = source + 3 * static_cast<ptrdiff_t>(width);
        for (size_t set = 0; source != end; source += 3, set ^= 1) {
            ++bins[set][0][source[0]];
            ++bins[set][1][source[1]];
            ++bins[set][2][source[2]];
        }
    }
    for (size_t value = 0; value < 256; ++value) {
        counts.bData[value] = int64_t{bins[0][0][value]} + bins[1][0][value];
        counts.gData[value] = int64_t{bins[0][1][value]} + bins[1][1][value];
        counts.rData[value] = int64_t{bins[0][2][value]} + bins[1][2][value];
    }
}

/// Adds the counts of a part of a picture.
void add(const IIHistogramData &part, IIHistogramData &histogram) {
    const auto addChannel = [&](const auto &counts, auto &bins) {
        for (size_t value = 0; value < bins.size(); ++value)
            histogram.max = std::max(histogram.max, bins[value] += counts[value]);
    };
    addChannel(part.bData, histogram.bData);
    addChannel(part.gData, histogram.gData);
    addChannel(part.rData, histogram.rData);
}

} // namespace

void CBYUVRGB::allocOffscreen(Offscreen *offscreen) {
    const int32_t width = offscreen->i32Width;
    const uint32_t format = offscreen->u32PixelArrayFormat;
    if (format != HDR_FORMAT_YUY2 && format != HDR_FORMAT_I420 && format != HDR_FORMAT_NV21)
        return;
    offscreen->ppu8Plane[0] = nullptr;
    if (!sizesFit(*offscreen))
        return;
    // libyuv rounds odd chroma sizes up, which takes it past the end by up to one chroma row.
    const size_t spare = static_cast<size_t>(width) + 2;
    uint8_t *block = allocUnsetPixels(pixelBytes(*offscreen) + spare).release();
    offscreen->ppu8Plane[0] = block;

    const size_t lumaBytes = static_cast<size_t>(width) * static_cast<size_t>(offscreen->i32Height);
    uint8_t *chroma = block != nullptr ? block + lumaBytes : nullptr;
    switch (format) {
    case HDR_FORMAT_YUY2:
        offscreen->pi32Pitch[0] = 2 * width;
        break;
    case HDR_FORMAT_I420:
        offscreen->pi32Pitch[0] = width;
        offscreen->pi32Pitch[1] = offscreen->pi32Pitch[2] = width >> 1;
        offscreen->ppu8Plane[1] = chroma;
        offscreen->ppu8Plane[2] = chroma != nullptr ? chroma + (lumaBytes >> 2) : nullptr;
        break;
    default: // HDR_FORMAT_NV21
        offscreen->pi32Pitch[0] = offscreen->pi32Pitch[1] = width;
        offscreen->ppu8Plane[1] = chroma;
        break;
    }
}

void CBYUVRGB::releaseOffscreen(Offscreen *offscreen) {
    if (offscreen != nullptr && offscreen->ppu8Plane[0] != nullptr)
        PixelDeleter()(offscreen->ppu8Plane[0]);
}

void CBYUVRGB::copyOffscreen(const Offscreen &source, Offscreen &dstOffscreen) {
    const uint32_t format = source.u32PixelArrayFormat;
    if (format != HDR_FORMAT_YUY2 && format != HDR_FORMAT_NV21)
        return;
    if (source.ppu8Plane[0] == nullptr || dstOffscreen.ppu8Plane[0] == nullptr)
        return;
    dstOffscreen.i32Width = source.i32Width;
    dstOffscreen.i32Height = source.i32Height;
    dstOffscreen.pi32Pitch[0] = source.pi32Pitch[0];
    copyInBands(dstOffscreen.ppu8Plane[0], source.ppu8Plane[0], pixelBytes(source));
    if (format == HDR_FORMAT_NV21) {
        dstOffscreen.pi32Pitch[1] = source.pi32Pitch[1];
        dstOffscreen.ppu8Plane[1] = dstOffscreen.ppu8Plane[0] + pixelCount(source);
    }
}

PixelBuffer CBYUVRGB::bgraData(const Offscreen *offscreen) {
    const int32_t width = offscreen->i32Width, height = offscreen->i32Height;
    const int32_t lineBytes = 4 * width;
    PixelBuffer bgrx = allocUnsetPixels(static_cast<size_t>(lineBytes) * static_cast<size_t>(height));
    if (!bgrx)
        return nullptr;
    uint8_t *const *plane = offscreen->ppu8Plane;
    const int32_t *pitch = offscreen->pi32Pitch;
    switch (offscreen->u32PixelArrayFormat) {
    case HDR_FORMAT_NV21:
        libyuv::NV21ToARGB(plane[0], pitch[0], plane[1], pitch[1], bgrx.get(), lineBytes, width, height);
        break;
    case HDR_FORMAT_I420:
        libyuv::I420ToARGB(plane[0], pitch[0], plane[1], pitch[1], plane[2], pitch[2], bgrx.get(), lineBytes,
                           width, height);
        break;
    case HDR_FORMAT_YUY2:
        forEachBand(height, [&](int64_t first, int64_t end) {
            libyuv::YUY2ToARGB(plane[0] + first * pitch[0], pitch[0], bgrx.get() + first * lineBytes,
                               lineBytes, width, static_cast<int>(end - first));
        });
        break;
    default:
        break;
    }
    return bgrx;
}

std::optional<BgrxImage> CBYUVRGB::bgr2image(const uint8_t *bgr, int64_t width, int64_t height,
                                             int64_t linebytes, IIHistogramData &histogramData) {
    BgrxImage image{static_cast<int32_t>(width), static_cast<int32_t>(height), nullptr};
    image.pixels = allocUnsetPixels(image.lineBytes() * static_cast<size_t>(height));
    if (!image.pixels)
        return std::nullopt;
    std::mutex adding;
    forEachBand(height, [&](int64_t first, int64_t end) {
        IIHistogramData counts;
        widenAndCount(bgr + first * linebytes, linebytes, image.pixels.get() + first * 4 * width, image.width,
                      end - first, counts);
        const std::scoped_lock lock(adding);
        add(counts, histogramData);
    });
    return image;
}

std::optional<BgrxImage> CBYUVRGB::image(PixelBuffer bgrx, int32_t width, int32_t height) {
    if (!bgrx)
        return std::nullopt;
    return BgrxImage{width, height, std::move(bgrx)};
}

} // namespace tristop
