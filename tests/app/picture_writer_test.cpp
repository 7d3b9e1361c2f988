// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/picture_writer.h"

#include <algorithm>
#include <csignal>
#include <filesystem>

#include <gtest/gtest.h>
#include <sys/resource.h>

#include "app/image_source.h"
#include "app/pixels.h"
#include "tests/app/photograph_files.h"

namespace tristop {
namespace {

using namespace testing;

constexpr int kWidth = 130, kHeight = 70;

/// A BGR picture of coloured noise whose rows are wider than what is written of them.
class PictureWriterTest : public ::testing::Test {
protected:
    PictureWriterTest() : bgr(static_cast<size_t>(lineBytes) * kHeight) {
        uint32_t state = 3;
        for (uint8_t &sample : bgr)
            sample = static_cast<uint8_t>((state = state * 1664525 + 1013904223) >> 24);
    }

    BgrView view() const { return {bgr.data(), kWidth, kHeight, lineBytes}; }
    Rgb pixel(int x, int y) const {
        const uint8_t *sample = &bgr[static_cast<size_t>(y * lineBytes + 3 * x)];
        return {sample[2], sample[1], sample[0]};
    }
    std::string reason(const std::string &path) const {
        const auto error = writePicture(path, view());
        EXPECT_TRUE(!error || error->path == path);
        return error ? error->reason : "";
    }
    static bool contains(const std::vector<uint8_t> &bytes, const std::string &text) {
        return std::search(bytes.begin(), bytes.end(), text.begin(), text.end()) != bytes.end();
    }

    TemporaryFolder folder;
    int32_t lineBytes = bgrLineBytes(kWidth + 2);
    std::vector<uint8_t> bgr;
};

TEST_F(PictureWriterTest, writesPngWithoutLoss) {
    const std::string path = folder.path("picture.PNG");
    for (const int height : {kHeight, 1, 9}) { // rows for eight strips and fewer
        BgrView part = view();
        part.height = height;
        ASSERT_FALSE(writePicture(path, part));
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
              "cannot be written: its name ends in neither .png nor .jpg");
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
    for (const char *name : {"picture.png", "picture.jpg"}) {
        const std::string path = folder.path(name);
        writeFile(path, {'o', 'l', 'd'});
        rlimit small = usual;
        small.rlim_cur = 5000;
        setrlimit(RLIMIT_FSIZE, &small);
        const std::string why = reason(path);
        setrlimit(RLIMIT_FSIZE, &usual);
        EXPECT_EQ(why, "cannot be written: File too large");
        EXPECT_EQ(readFile(path), (std::vector<uint8_t>{'o', 'l', 'd'}));
    }
    EXPECT_EQ(folder.names(), (std::vector<std::string>{"picture.jpg", "picture.png"}));
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
