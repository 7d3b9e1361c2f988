// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/yuv_rgb.h"

#include <algorithm>
#include <vector>

#include <gtest/gtest.h>

namespace tristop {
namespace {

Offscreen record(uint32_t format, int32_t width, int32_t height) {
    Offscreen result{};
    result.u32PixelArrayFormat = format;
    result.i32Width = width;
    result.i32Height = height;
    return result;
}

TEST(OffscreenStorageTest, laysPlanesOutInOneBlock) {
    Offscreen packed = record(HDR_FORMAT_YUY2, 8, 6);
    CBYUVRGB::allocOffscreen(&packed);
    ASSERT_NE(packed.ppu8Plane[0], nullptr);
    EXPECT_EQ(packed.pi32Pitch[0], 16);
    CBYUVRGB::releaseOffscreen(&packed);

    Offscreen planar = record(HDR_FORMAT_I420, 6, 5);
    CBYUVRGB::allocOffscreen(&planar);
    EXPECT_EQ(planar.ppu8Plane[1] - planar.ppu8Plane[0], 30);
    EXPECT_EQ(planar.ppu8Plane[2] - planar.ppu8Plane[1], 7);
    EXPECT_EQ(planar.pi32Pitch[0], 6);
    EXPECT_EQ(planar.pi32Pitch[1], 3);
    EXPECT_EQ(planar.pi32Pitch[2], 3);
    CBYUVRGB::releaseOffscreen(&planar);

    Offscreen semiPlanar = record(HDR_FORMAT_NV21, 6, 4);
    CBYUVRGB::allocOffscreen(&semiPlanar);
    EXPECT_EQ(semiPlanar.ppu8Plane[1] - semiPlanar.ppu8Plane[0], 24);
    EXPECT_EQ(semiPlanar.pi32Pitch[1], 6);
    CBYUVRGB::releaseOffscreen(&semiPlanar);

    Offscreen other = record(HDR_FORMAT_YUV444, 6, 4);
    CBYUVRGB::allocOffscreen(&other);
    EXPECT_EQ(other.ppu8Plane[0], nullptr);
    EXPECT_EQ(other.pi32Pitch[0], 0);
    Offscreen tooLarge = record(HDR_FORMAT_YUY2, 40000, 40000);
    CBYUVRGB::allocOffscreen(&tooLarge);
    EXPECT_EQ(tooLarge.ppu8Plane[0], nullptr);
    CBYUVRGB::releaseOffscreen(&tooLarge);
    CBYUVRGB::releaseOffscreen(nullptr);
}

TEST(OffscreenStorageTest, copiesPackedAndSemiPlanarPicturesOnly) {
    for (const uint32_t format : {HDR_FORMAT_YUY2, HDR_FORMAT_NV21, HDR_FORMAT_I420}) {
        SCOPED_TRACE(format);
        Offscreen source = record(format, 4, 4);
        CBYUVRGB::allocOffscreen(&source);
        const size_t bytes = format == HDR_FORMAT_YUY2 ? 32 : 24;
        for (size_t i = 0; i < bytes; ++i)
            source.ppu8Plane[0][i] = static_cast<uint8_t>(i + 1);
        Offscreen target = record(format, 8, 8);
        CBYUVRGB::allocOffscreen(&target);
        const uint8_t *storage = target.ppu8Plane[0];
        CBYUVRGB::copyOffscreen(source, target);
        EXPECT_EQ(target.ppu8Plane[0], storage);
        if (format == HDR_FORMAT_I420) {
            EXPECT_EQ(target.i32Width, 8);
            EXPECT_EQ(storage[0], 0);
        } else {
            EXPECT_EQ(target.i32Width, 4);
            EXPECT_EQ(target.pi32Pitch[0], source.pi32Pitch[0]);
            EXPECT_TRUE(std::equal(storage, storage + bytes, source.ppu8Plane[0]));
            EXPECT_EQ(storage[bytes], 0);
        }
        if (format == HDR_FORMAT_NV21) {
            EXPECT_EQ(target.ppu8Plane[1], storage + 16);
        }
        CBYUVRGB::releaseOffscreen(&source);
        CBYUVRGB::releaseOffscreen(&target);
    }
}

TEST(ConversionTest, turnsEveryFormatIntoBgrx) {
    // Studio-range red: Y 82, U 90, V 240, which is (255, 0, 0) to a step or two.
    constexpr uint8_t kY = 82, kU = 90, kV = 240;
    for (const uint32_t format : {HDR_FORMAT_YUY2, HDR_FORMAT_NV21, HDR_FORMAT_I420}) {
        SCOPED_TRACE(format);
        Offscreen picture = record(format, 8, 4);
        CBYUVRGB::allocOffscreen(&picture);
        uint8_t *pixels = picture.ppu8Plane[0];
        for (size_t i = 0; i < 32; ++i)
            pixels[i] = kY;
        for (size_t i = 0; i < 16; ++i) {
            if (format == HDR_FORMAT_YUY2) {
                pixels[4 * i] = pixels[4 * i + 2] = kY;
                pixels[4 * i + 1] = kU;
                pixels[4 * i + 3] = kV;
            } else if (format == HDR_FORMAT_NV21) {
                pixels[32 + i] = i % 2 == 0 ? kV : kU;
            } else {
                pixels[32 + i] = i < 8 ? kU : kV;
            }
        }
        const PixelBuffer bgrx = CBYUVRGB::bgraData(&picture);
        ASSERT_TRUE(bgrx);
        for (const size_t pixel : {0, 13, 31}) {
            EXPECT_NEAR(bgrx[4 * pixel], 0, 3);
            EXPECT_NEAR(bgrx[4 * pixel + 1], 0, 3);
            EXPECT_NEAR(bgrx[4 * pixel + 2], 255, 3);
            EXPECT_EQ(bgrx[4 * pixel + 3], 255);
        }
        CBYUVRGB::releaseOffscreen(&picture);
    }
}

TEST(HistogramTest, countsPixelsAndWidensThem) {
    // 2 x 2 pixels of blue, green, red with two bytes of padding a row.
    const std::vector<uint8_t> bgr = {10, 20, 30, 10, 21, 31, 99, 99, 10, 20, 32, 11, 20, 33, 99, 99};
    IIHistogramData histogram;
    const auto image = CBYUVRGB::bgr2image(bgr.data(), 2, 2, 8, histogram);
    ASSERT_TRUE(image);
    const std::vector<uint8_t> bgrx = {10, 20, 30, 255, 10, 21, 31, 255, 10, 20, 32, 255, 11, 20, 33, 255};
    EXPECT_TRUE(std::equal(bgrx.begin(), bgrx.end(), image->pixels.get()));
    EXPECT_EQ(histogram.bData[10], 3);
    EXPECT_EQ(histogram.bData[11], 1);
    EXPECT_EQ(histogram.gData[20], 3);
    EXPECT_EQ(histogram.rData[30], 1);
    EXPECT_EQ(histogram.max, 3);
    EXPECT_EQ(histogram.bData[99] + histogram.gData[99] + histogram.rData[99], 0) << "padding";

    CBYUVRGB::bgr2image(bgr.data(), 2, 2, 8, histogram);
    EXPECT_EQ(histogram.bData[10], 6) << "counts add up";
    EXPECT_EQ(histogram.max, 6);

    EXPECT_FALSE(CBYUVRGB::image(nullptr, 1, 1));
}

TEST(HistogramTest, countsEveryPixelOnceAtAnySize) {
    for (const auto &[width, height] : {std::pair{1, 1}, {1, 2}, {3, 1}, {5, 7}, {17, 33}, {100, 101}}) {
        SCOPED_TRACE(testing::Message() << width << " x " << height);
        const int lineBytes = bgrLineBytes(width);
        std::vector<uint8_t> bgr(static_cast<size_t>(lineBytes) * static_cast<size_t>(height));
        for (size_t i = 0; i < bgr.size(); ++i)
            bgr[i] = static_cast<uint8_t>(i * i / 7);
        IIHistogramData expected, histogram;
        std::vector<uint8_t> bgrx;
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x) {
                const uint8_t *pixel = bgr.data() + y * lineBytes + 3 * x;
                bgrx.insert(bgrx.end(), {pixel[0], pixel[1], pixel[2], 255});
                expected.max = std::max({expected.max, ++expected.bData[pixel[0]], ++expected.gData[pixel[1]],
                                         ++expected.rData[pixel[2]]});
            }
        const auto image = CBYUVRGB::bgr2image(bgr.data(), width, height, lineBytes, histogram);
        ASSERT_TRUE(image);
        EXPECT_TRUE(std::equal(bgrx.begin(), bgrx.end(), image->pixels.get()));
        EXPECT_EQ(histogram.bData, expected.bData);
        EXPECT_EQ(histogram.gData, expected.gData);
        EXPECT_EQ(histogram.rData, expected.rData);
        EXPECT_EQ(histogram.max, expected.max);
    }
}

} // namespace
} // namespace tristop
