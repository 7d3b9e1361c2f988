// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/yuv_rgb.h"

#include <algorithm>
#include <cstring>
#include <limits>

#include <libyuv.h>

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

void count(std::array<int64_t, 256> &bins, uint8_t value, int64_t &max) {
    max = std::max(max, ++bins[value]);
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
    uint8_t *block = allocPixels(pixelBytes(*offscreen) + spare).release();
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
    if (offscreen != nullptr)
        std::free(offscreen->ppu8Plane[0]);
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
    std::memcpy(dstOffscreen.ppu8Plane[0], source.ppu8Plane[0], pixelBytes(source));
    if (format == HDR_FORMAT_NV21) {
        dstOffscreen.pi32Pitch[1] = source.pi32Pitch[1];
        dstOffscreen.ppu8Plane[1] = dstOffscreen.ppu8Plane[0] + pixelCount(source);
    }
}

PixelBuffer CBYUVRGB::bgraData(const Offscreen *offscreen) {
    const int32_t width = offscreen->i32Width, height = offscreen->i32Height;
    const int32_t lineBytes = 4 * width;
    PixelBuffer bgrx = allocPixels(static_cast<size_t>(lineBytes) * static_cast<size_t>(height));
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
        libyuv::YUY2ToARGB(plane[0], pitch[0], bgrx.get(), lineBytes, width, height);
        break;
    default:
        break;
    }
    return bgrx;
}

std::optional<RgbImage> CBYUVRGB::bgr2image(const uint8_t *bgr, int64_t width, int64_t height,
                                            int64_t linebytes, IIHistogramData &histogramData) {
    RgbImage image{static_cast<int32_t>(width), static_cast<int32_t>(height), static_cast<size_t>(linebytes),
                   allocPixels(static_cast<size_t>(linebytes * height))};
    if (!image.pixels)
        return std::nullopt;
    for (int64_t y = 0; y < height; ++y) {
        const uint8_t *source = bgr + y * linebytes;
        uint8_t *target = image.pixels.get() + y * linebytes;
        for (int64_t x = 0; x < width; ++x, source += 3, target += 3) {
            target[0] = source[2];
            count(histogramData.bData, source[0], histogramData.max);
            target[1] = source[1];
            count(histogramData.gData, source[1], histogramData.max);
            target[2] = source[0];
            count(histogramData.rData, source[2], histogramData.max);
        }
    }
    return image;
}

std::optional<BgrxImage> CBYUVRGB::image(PixelBuffer bgrx, int32_t width, int32_t height) {
    if (!bgrx)
        return std::nullopt;
    return BgrxImage{width, height, std::move(bgrx)};
}

} // namespace tristop
