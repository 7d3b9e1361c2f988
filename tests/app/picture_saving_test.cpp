// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/picture_saving.h"

#include <algorithm>

#include <gtest/gtest.h>

#include "app/image_source.h"
#include "tests/app/photograph_files.h"
#include "tests/app/written_files.h"

namespace tristop {
namespace {

using namespace testing;

constexpr Rgb kColor = {200, 40, 90};

/// A picture of one colour whose rows are wider than their pixels.
RgbImage picture(int32_t width, int32_t height) {
    RgbImage image{width, height, 3 * static_cast<size_t>(width) + 5, nullptr};
    image.pixels = allocPixels(image.lineBytes * static_cast<size_t>(height));
    for (int32_t y = 0; y < height; ++y)
        for (int32_t x = 0; x < width; ++x)
            std::ranges::copy(kColor, image.pixels.get() + image.lineBytes * static_cast<size_t>(y) + 3 * x);
    return image;
}

TEST(PictureSaving, flattensToFourOpaqueBytesAPixel) {
    const RgbImage image = picture(3, 2);
    const auto flattened = resultImage(&image);
    ASSERT_TRUE(flattened);
    EXPECT_EQ(flattened->lineBytes(), 12);
    for (size_t i = 0; i < 24; ++i)
        EXPECT_EQ(flattened->pixels[i], i % 4 == 3 ? 255 : kColor[i % 4]) << i;
    EXPECT_FALSE(resultImage(nullptr));
    EXPECT_FALSE(resultImage(std::make_unique<RgbImage>().get()));
}

TEST(PictureSaving, savesInTheTypeThatIsAskedForAndIgnoresTheOptions) {
    const TemporaryFolder folder;
    const RgbImage image = picture(40, 30);
    const auto saved = [&](const std::string &name, const std::string &type, const EncodingOptions &options) {
        EXPECT_TRUE(save(&image, &image, folder.path(name), type, options));
        return readFile(folder.path(name));
    };
    const EncodingOptions poor{3, TiffCompression::None, 0};
    for (const char *type : {"public.png", "public.jpeg", "public.tiff"})
        EXPECT_EQ(saved("any name", type, poor), saved("other name", type, {})) << type;
    saved("picture.png", "public.png", poor);
    EXPECT_EQ(readPng(folder.path("picture.png")).at(39, 29), kColor);
    saved("picture.jpg", "public.jpeg", poor);
    EXPECT_EQ(readJpegHeader(folder.path("picture.jpg")).sampling, 1);
    CBImageSource source;
    ASSERT_TRUE(source.initWithPhoto(folder.path("picture.jpg")));
    EXPECT_EQ(source.dpiWidth(), 72);
    EXPECT_EQ(source.dpiHeight(), 72);
    saved("picture.tif", "public.tiff", poor);
    const TestTiff tiff = readTiff(folder.path("picture.tif"));
    ASSERT_EQ(tiff.pages.size(), 1u);
    EXPECT_EQ(tiff.pages[0].at(39, 29), kColor);
    EXPECT_EQ(tiff.dotsPerInch, 72);
    EXPECT_EQ(tiff.compression, 5) << "LZW";

    const auto before = folder.names();
    EXPECT_FALSE(save(nullptr, nullptr, folder.path("none.png"), "public.png", {}));
    EXPECT_FALSE(save(&image, nullptr, folder.path("none.gif"), "public.gif", {}));
    EXPECT_FALSE(save(&image, nullptr, folder.path("nowhere/none.png"), "public.png", {}));
    EXPECT_EQ(folder.names(), before);
}

TEST(PictureSaving, savesATiffOfOneOrTwoPictures) {
    const TemporaryFolder folder;
    const std::string path = folder.path("picture.tif");
    const RgbImage image = picture(40, 30), original = picture(21, 10);
    ASSERT_TRUE(saveTIFF(&image, nullptr, path, {.tiffCompression = TiffCompression::Deflate}));
    EXPECT_EQ(readTiff(path).pages.size(), 1u);
    EXPECT_EQ(readTiff(path).compression, 8);
    ASSERT_TRUE(saveTIFF(&image, &original, path, {}));
    const TestTiff tiff = readTiff(path);
    ASSERT_EQ(tiff.pages.size(), 2u);
    EXPECT_EQ(tiff.pages[0].width, 40);
    EXPECT_EQ(tiff.pages[1].width, 21);
    EXPECT_EQ(tiff.pages[1].at(20, 9), kColor);
    EXPECT_EQ(tiff.samplesPerPixel, 3) << "no alpha";
    EXPECT_EQ(tiff.orientation, 1);
    EXPECT_EQ(tiff.dotsPerInch, 300);
    const RgbImage empty;
    EXPECT_FALSE(saveTIFF(nullptr, &original, path, {}));
    EXPECT_FALSE(saveTIFF(&empty, &original, path, {}));
    ASSERT_TRUE(saveTIFF(&image, &empty, path, {}));
    EXPECT_EQ(readTiff(path).pages.size(), 1u);
}

TEST(PictureSaving, supportsTheFilesThatPhotographsComeIn) {
    const TemporaryFolder folder;
    for (const char *name : {"a.JPG", "a.tiff", "a.CR3", "a.dng"}) {
        EXPECT_FALSE(isSupportImage(folder.path(name))) << "there is no " << name;
        writeFile(folder.path(name), {});
        EXPECT_TRUE(isSupportImage(folder.path(name))) << name;
    }
    for (const char *name : {"a.png", "a.txt", "jpg"}) {
        writeFile(folder.path(name), {});
        EXPECT_FALSE(isSupportImage(folder.path(name))) << name;
    }
    std::filesystem::create_directory(folder.path("folder.jpg"));
    EXPECT_FALSE(isSupportImage(folder.path("folder.jpg")));
}

} // namespace
} // namespace tristop
