// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/picture_writer.h"

#include <algorithm>
#include <csignal>
#include <filesystem>

#include <gtest/gtest.h>
#include <sys/resource.h>

#include "app/camera_exif.h"
#include "app/color_profile.h"
#include "app/file_writer.h"
#include "app/image_source.h"
#include "app/pixels.h"
#include "tests/app/photograph_files.h"
#include "tests/app/written_files.h"

namespace tristop {
namespace {

using namespace testing;

constexpr int kWidth = 130, kHeight = 70;

/// A BGR picture of coloured noise whose rows are wider than what is written of them.
class PictureWriterTest : public ::testing::Test {
protected:
    PictureView view() const { return {bgr.data(), kWidth, kHeight, lineBytes}; }
    Rgb pixel(int x, int y) const {
        const uint8_t *sample = &bgr[static_cast<size_t>(y * lineBytes + 3 * x)];
        return {sample[2], sample[1], sample[0]};
    }
    std::string reason(const std::string &path, const EncodingOptions &options = {}) const {
        const auto error = writePicture(path, view(), {}, options);
        EXPECT_TRUE(!error || error->path == path);
        return error ? error->reason : "";
    }
    static bool contains(const std::vector<uint8_t> &bytes, const std::string &text) {
        return std::search(bytes.begin(), bytes.end(), text.begin(), text.end()) != bytes.end();
    }

    TemporaryFolder folder;
    int32_t lineBytes = bgrLineBytes(kWidth + 2);
    std::vector<uint8_t> bgr = noise(kWidth + 2, kHeight).samples;
};

TEST_F(PictureWriterTest, writesPngWithoutLoss) {
    const std::string path = folder.path("picture.PNG");
    for (const auto &[height, level] : // rows for eight strips and fewer
         {std::pair{kHeight, 1}, {kHeight, 6}, {kHeight, 0}, {1, 1}, {9, 9}}) {
        PictureView part = view();
        part.height = height;
        ASSERT_FALSE(writePicture(path, part, {}, {.pngLevel = level}));
        const TestPicture read = readPng(path);
        ASSERT_EQ(read.width, kWidth);
        ASSERT_EQ(read.height, height);
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < kWidth; ++x)
                ASSERT_EQ(read.at(x, y), pixel(x, y));
    }
    EXPECT_TRUE(contains(readFile(path), "sRGB"));
    EXPECT_EQ(folder.names(), std::vector<std::string>{"picture.PNG"});
}

TEST_F(PictureWriterTest, writesTiffWithoutLoss) {
    const std::string path = folder.path("picture.Tiff");
    std::vector<uint8_t> exif = finishedExif({}, kWidth, kHeight, 72);
    for (const TiffCompression compression :
         {TiffCompression::None, TiffCompression::Lzw, TiffCompression::PackBits, TiffCompression::Deflate}) {
        ASSERT_FALSE(writePicture(path, view(), {72, exif}, {.tiffCompression = compression}));
        const TestTiff read = readTiff(path);
        ASSERT_EQ(read.pages.size(), 1u);
        const TestPicture &page = read.pages[0];
        ASSERT_EQ(page.width, kWidth);
        ASSERT_EQ(page.height, kHeight);
        for (int y = 0; y < kHeight; ++y)
            for (int x = 0; x < kWidth; ++x)
                ASSERT_EQ(page.at(x, y), pixel(x, y));
        constexpr std::array<int, 4> kTags = {1, 5, 32773, 8}; // in the file format
        EXPECT_EQ(read.compression, kTags[static_cast<size_t>(compression)]);
        EXPECT_EQ(read.samplesPerPixel, 3);
        EXPECT_EQ(read.orientation, 1);
        EXPECT_EQ(read.dotsPerInch, 72);
        EXPECT_EQ(read.profile, srgbProfile());
        exif.clear(); // the others are written without
    }
}

TEST_F(PictureWriterTest, writesTiffOfManyStripsInOrder) {
    TestPicture picture(700, 1000); // nine strips
    for (size_t i = 0; i < picture.samples.size(); ++i)
        picture.samples[i] = static_cast<uint8_t>(i * i >> 7);
    const std::string path = folder.path("picture.tif");
    for (const TiffCompression compression :
         {TiffCompression::None, TiffCompression::Lzw, TiffCompression::PackBits, TiffCompression::Deflate}) {
        ASSERT_FALSE(writePicture(path, {picture.samples.data(), 700, 1000, 2100, PixelOrder::Rgb}, {},
                                  {.tiffCompression = compression}));
        EXPECT_EQ(readTiff(path).pages.at(0).samples, picture.samples);
    }
}

TEST_F(PictureWriterTest, halvesTheColourResolutionOfSmallJpegs) {
    const std::string path = folder.path("picture.jpg");
    std::vector<uint8_t> previous;
    for (const auto &[quality, sampling] : {std::pair{100, 1}, {90, 1}, {89, 2}, {40, 2}, {0, 2}}) {
        ASSERT_EQ(reason(path, {.jpegQuality = quality}), "");
        EXPECT_EQ(readJpegHeader(path).sampling, sampling) << quality;
        EXPECT_EQ(readJpegHeader(path).dotsPerInch, 72);
        const auto bytes = readFile(path);
        EXPECT_TRUE(previous.empty() || bytes.size() < previous.size()) << quality;
        previous = bytes;
    }
}

TEST_F(PictureWriterTest, writesJpegWithFullColourResolutionAndProfile) {
    // Columns of red and blue by turns lose their colours when chroma is halved.
    for (int y = 0; y < kHeight; ++y)
        for (int x = 0; x < kWidth; ++x) {
            uint8_t *sample = &bgr[static_cast<size_t>(y * lineBytes + 3 * x)];
            sample[0] = x % 2 == 0 ? 180 : 60;
            sample[1] = 60;
            sample[2] = x % 2 == 0 ? 60 : 180;
        }
    for (const char *name : {"picture.jpg", "picture.JPEG"}) {
        const std::string path = folder.path(name);
        ASSERT_EQ(reason(path), "");
        CBImageSource source;
        ASSERT_TRUE(source.initWithPhoto(path) && source.open());
        const auto image = source.image(1);
        ASSERT_EQ(image->width, kWidth);
        for (int x = 20; x < 60; ++x) {
            const uint8_t *sample = image->pixels.get() + 30 * image->lineBytes + static_cast<size_t>(3 * x);
            EXPECT_LE(distance({sample[0], sample[1], sample[2]}, pixel(x, 30)), 20);
        }
        EXPECT_TRUE(contains(readFile(path), "ICC_PROFILE"));
    }
    EXPECT_EQ(readFile(folder.path("picture.jpg")), readFile(folder.path("picture.JPEG")))
        << "the same bytes";
}

TEST_F(PictureWriterTest, tellsWhyATargetCannotBeWritten) {
    EXPECT_EQ(reason(folder.path("picture.bmp")),
              "cannot be written: its name ends in none of .png, .jpg and .tif");
    std::filesystem::create_symlink("/dev/null", folder.path("null.png"));
    EXPECT_EQ(reason(folder.path("null.png")), "cannot be written: it is not an ordinary file");
    std::filesystem::create_symlink("loop.png", folder.path("loop.png"));
    EXPECT_EQ(reason(folder.path("loop.png")), "cannot be written: Too many levels of symbolic links");
    EXPECT_EQ(reason(folder.path(std::string(300, 'x') + ".png")), "cannot be written: File name too long");
    EXPECT_EQ(folder.names(), (std::vector<std::string>{"loop.png", "null.png"}));
}

TEST_F(PictureWriterTest, leavesTheTargetAloneWhenTheDiskIsFull) {
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit usual{};
    getrlimit(RLIMIT_FSIZE, &usual);
    for (const char *name : {"picture.png", "picture.jpg", "picture.tif"}) {
        const std::string path = folder.path(name);
        writeFile(path, {'o', 'l', 'd'});
        rlimit small = usual;
        small.rlim_cur = 5000;
        setrlimit(RLIMIT_FSIZE, &small);
        const std::string why = reason(path);
        setrlimit(RLIMIT_FSIZE, &usual);
        EXPECT_EQ(why, "cannot be written: the file would be larger than is allowed here");
        EXPECT_EQ(readFile(path), (std::vector<uint8_t>{'o', 'l', 'd'}));
    }
    EXPECT_EQ(folder.names(), (std::vector<std::string>{"picture.jpg", "picture.png", "picture.tif"}));
}

TEST_F(PictureWriterTest, leavesNothingBehindWhenTheFolderGoes) {
    const std::string gone = folder.path("gone"), path = gone + "/picture.png";
    std::filesystem::create_directory(gone);
    const auto error = replaceFile(path, [&](std::FILE *) -> std::optional<std::string> {
        std::filesystem::rename(gone, folder.path("elsewhere"));
        return std::nullopt;
    });
    ASSERT_TRUE(error);
    EXPECT_EQ(error->reason, "cannot be written: its folder is gone");
    EXPECT_EQ(reason(path), "cannot be written: there is no folder " + gone);
    EXPECT_EQ(folder.names(), std::vector<std::string>{"elsewhere"});
}

TEST_F(PictureWriterTest, writesTheFileBehindALinkAndKeepsItsMode) {
    using std::filesystem::perms;
    const std::string path = folder.path("real.png"), link = folder.path("link.png");
    std::filesystem::create_symlink("real.png", folder.path("between.png"));
    std::filesystem::create_symlink(folder.path("between.png"), link);
    ASSERT_EQ(reason(link), "") << "the file does not exist yet";
    EXPECT_EQ(readPng(path).width, kWidth);
    writeFile(path, {'o', 'l', 'd'});
    std::filesystem::permissions(path, perms::owner_read | perms::owner_write);
    ASSERT_EQ(reason(link), "");
    EXPECT_TRUE(std::filesystem::is_symlink(link));
    EXPECT_EQ(readPng(path).width, kWidth);
    EXPECT_EQ(std::filesystem::status(path).permissions(), perms::owner_read | perms::owner_write);
}

} // namespace
} // namespace tristop
