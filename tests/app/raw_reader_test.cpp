// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/raw_reader.h"

#include <algorithm>

#include <gtest/gtest.h>

#include "app/image_source.h"
#include "app/photographs.h"
#include "tests/app/photograph_files.h"

namespace tristop {
namespace {

using namespace testing;

class RawReaderTest : public ::testing::Test {
protected:
    CBImageSource photograph(const TestPicture &picture, const scene::DngEntries &entries = {},
                             double exposure = 1) {
        const std::string path = folder.path("photograph.dng");
        writeDng(path, picture, entries, exposure);
        CBImageSource source;
        EXPECT_TRUE(source.initWithPhoto(path) && source.open()) << source.failure();
        return source;
    }

    std::string failure(const std::string &path) {
        CBImageSource source;
        EXPECT_FALSE(source.initWithPhoto(path) && source.open());
        EXPECT_EQ(source.image(), nullptr);
        return source.failure();
    }

    TemporaryFolder folder;
};

Rgb storedPixel(const CBImageSource &source, int x, int y) {
    const uint8_t *pixel =
        source.image()->pixels.get() + 4 * static_cast<ptrdiff_t>(y * source.image()->width + x);
    EXPECT_EQ(pixel[3], 255);
    return {pixel[2], pixel[1], pixel[0]};
}

/// A DNG file that claims another compression than it has.
std::vector<uint8_t> withCompression(std::vector<uint8_t> dng, uint8_t compression) {
    constexpr std::array<uint8_t, 9> kEntry = {0x03, 0x01, 3, 0, 1, 0, 0, 0, 1};
    const auto entry = std::ranges::search(dng, kEntry);
    EXPECT_FALSE(entry.empty());
    entry.back() = compression;
    return dng;
}

TEST_F(RawReaderTest, givesTheColoursThatTheSensorSaw) {
    constexpr std::array<Rgb, 6> kColors = {
        {{128, 128, 128}, {20, 20, 20}, {200, 60, 40}, {50, 170, 60}, {40, 60, 190}, {255, 255, 255}}};
    constexpr int kSide = 40;
    TestPicture picture(kSide * static_cast<int>(kColors.size()), kSide);
    for (int i = 0; i < static_cast<int>(kColors.size()); ++i)
        picture.fill(i * kSide, 0, (i + 1) * kSide, kSide, kColors[static_cast<size_t>(i)]);
    const CBImageSource source = photograph(picture);
    for (int i = 0; i < static_cast<int>(kColors.size()); ++i)
        EXPECT_LE(
            distance(storedPixel(source, i * kSide + kSide / 2, kSide / 2), kColors[static_cast<size_t>(i)]),
            2)
            << i;
}

TEST_F(RawReaderTest, readsReadingsHoweverTheyAreStored) {
    constexpr int kWidth = 133, kHeight = 101;
    constexpr std::array<Rgb, 4> kColors = {{{128, 128, 128}, {200, 60, 40}, {50, 170, 60}, {40, 60, 190}}};
    TestPicture picture(kWidth, kHeight);
    for (int i = 0; i < 4; ++i)
        picture.fill(i % 2 * 66, i / 2 * 50, i % 2 == 0 ? 66 : kWidth, i / 2 == 0 ? 50 : kHeight,
                     kColors[static_cast<size_t>(i)]);
    const std::string path = folder.path("photograph.dng");
    const std::vector<scene::DngStorage> storages = {
        {.bits = 14},
        {.bits = 12, .black = 256, .white = 4095},
        {.bits = 10, .black = 0, .white = 1000},
        {.black = 2000, .white = 65535},
        {.bits = 14, .losslessJpeg = true},
        {.losslessJpeg = true, .black = 0, .white = 65535},
        {.activeArea = {{2, 8, 98, 130}}},
        {.bits = 12, .losslessJpeg = true, .black = 64, .white = 3000, .activeArea = {{4, 6, 101, 133}}}};
    for (const int samples : {1, 3})
        for (size_t i = 0; i < storages.size(); ++i) {
            SCOPED_TRACE(std::to_string(samples) + " samples, storage " + std::to_string(i));
            writeDng(path, picture, {.orientation = 8}, 1, storages[i], samples);
            const auto [top, left, bottom, right] =
                storages[i].activeArea.value_or(std::array<uint16_t, 4>{0, 0, kHeight, kWidth});
            const ImageSize upright = {static_cast<double>(bottom - top), static_cast<double>(right - left)};
            CBImageSource source;
            ASSERT_TRUE(source.initWithPhoto(path)) << source.failure();
            EXPECT_EQ(source.imageSize(8), upright) << "before it is decoded";
            ASSERT_TRUE(source.open()) << source.failure();
            EXPECT_EQ(source.imageSize(8), upright);
            for (int k = 0; k < 4; ++k)
                EXPECT_LE(distance(storedPixel(source, 33 + 66 * (k % 2) - left, 25 + 50 * (k / 2) - top),
                                   kColors[static_cast<size_t>(k)]),
                          2)
                    << k;
        }
}

TEST_F(RawReaderTest, keepsTheRatioOfExposures) {
    // Light of 0.02 on the left and 0.1 on the right, in four exposures; the third one nearly saturates.
    TestPicture picture(80, 40, {38, 38, 38});
    picture.fill(40, 0, 80, 40, {89, 89, 89});
    for (const double exposure : {0.5, 2.0, 8.0, 32.0}) {
        const CBImageSource source = photograph(picture, {}, exposure);
        for (const int x : {20, 60}) {
            const double expected = std::min(1.0, lightOf(picture.at(x, 20)[0]) * exposure);
            for (const uint8_t sample : storedPixel(source, x, 20))
                EXPECT_NEAR(lightOf(sample), expected, 0.01 * expected + 0.0005) << exposure << ", " << x;
        }
    }
}

TEST_F(RawReaderTest, readsMetadataAndTurnsOnlyOnce) {
    TestPicture quarters(120, 80, {200, 30, 30});
    quarters.fill(60, 0, 120, 40, {30, 200, 30});
    scene::DngEntries entries;
    entries.exposureBias = {-4, 3};
    entries.iso = 640;
    entries.focalLength = {245, 10};
    entries.xResolution = entries.yResolution = {300, 1};
    for (uint16_t orientation = 0; orientation <= 9; ++orientation) {
        SCOPED_TRACE(orientation);
        entries.orientation = orientation;
        const CBImageSource source = photograph(quarters, entries);
        const int expected = orientation >= 1 && orientation <= 8 ? orientation : 1;
        EXPECT_EQ(source.orientation(), expected);
        EXPECT_EQ(source.image()->width, 120);
        EXPECT_EQ(source.image()->height, 80);
        EXPECT_LE(distance(storedPixel(source, 90, 20), {30, 200, 30}), 2);
        EXPECT_EQ(source.imageSize(expected), expected >= 5 ? (ImageSize{80, 120}) : (ImageSize{120, 80}));
        EXPECT_FLOAT_EQ(source.imageExposure(), -4.0f / 3);
        EXPECT_EQ(source.imageISO(), 640);
        EXPECT_EQ(source.imageFocusLength(), 24.5);
        EXPECT_EQ(source.dpiWidth(), 300);
    }
    entries.orientation = 6;
    writeDng(folder.path("turned.dng"), quarters, entries);
    CBImageSource loaded;
    EXPECT_TRUE(loaded.initWithPhoto(folder.path("turned.dng")));
    EXPECT_EQ(loaded.imageSize(6), (ImageSize{80, 120})) << "known before the picture is decoded";

    const CBImageSource bare = photograph(quarters, {.orientation = std::nullopt});
    EXPECT_EQ(bare.orientation(), 1);
    EXPECT_EQ(bare.dpiHeight(), 72);
    EXPECT_EQ(bare.imageISO(), 0);
    EXPECT_EQ(bare.imageExposure(), 0);
}

TEST_F(RawReaderTest, asksTheDecoderWhereExifLacksTheOrientation) {
    // The magic number of RW2, whose orientation Exiv2 files under the maker's own name.
    const std::string path = folder.path("panasonic.rw2");
    for (uint16_t orientation = 1; orientation <= 8; ++orientation) {
        writeDng(path, TestPicture(60, 40), {.orientation = orientation});
        std::vector<uint8_t> bytes = readFile(path);
        bytes[2] = 0x55;
        writeFile(path, bytes);
        CBImageSource source;
        ASSERT_TRUE(source.initWithPhoto(path)) << source.failure();
        EXPECT_EQ(source.orientation(), orientation);
    }
}

TEST_F(RawReaderTest, readsNamesThatFillTheirPlace) {
    // LibRaw appends words to names of this make, and a fortified one ends the program where they do not fit.
    scene::DngEntries entries;
    entries.make = "Hasselblad";
    const std::string path = folder.path("hasselblad.dng");
    for (const size_t length : {30, 40, 41, 55, 59, 60, 62, 63, 64, 300}) {
        entries.model = std::string(length, 'H');
        writeDng(path, TestPicture(60, 40), entries);
        for (const uint8_t magic : {uint8_t{0x2a}, uint8_t{0x55}}) {
            std::vector<uint8_t> bytes = readFile(path);
            bytes[2] = magic;
            writeFile(path, bytes);
            PictureHeader header;
            EXPECT_TRUE(readRawHeader(path, header).recognised) << length;
            EXPECT_TRUE(readRawHeader(bytes, header).recognised) << length;
            EXPECT_EQ(header.width, 60);
        }
    }
}

TEST_F(RawReaderTest, isChosenByContent) {
    const std::string path = folder.path("misnamed.jpg");
    writeDng(path, TestPicture(40, 40, {90, 90, 90}));
    CBImageSource source;
    EXPECT_TRUE(source.initWithPhoto(path) && source.open()) << source.failure();
    EXPECT_EQ(typeBySuffix("a/b.c/IMG_1.CR3"), PhotographType::Raw);
    EXPECT_EQ(typeBySuffix("IMG_1.JPeG"), PhotographType::Jpeg);
    EXPECT_EQ(typeBySuffix("dng"), std::nullopt);
    EXPECT_EQ(typeBySuffix("a.nef/b"), std::nullopt);
}

TEST_F(RawReaderTest, rejectsAFileThatIsCutAnywhere) {
    const std::string path = folder.path("cut.dng");
    writeDng(path, TestPicture(60, 40, {90, 90, 90}));
    const std::vector<uint8_t> whole = readFile(path);
    for (size_t twentieth = 1; twentieth < 20; ++twentieth) {
        const size_t length = whole.size() * twentieth / 20;
        writeFile(path, {whole.begin(), whole.begin() + static_cast<ptrdiff_t>(length)});
        EXPECT_NE(failure(path).find("truncated"), std::string::npos)
            << twentieth << " twentieths: " << failure(path);
    }
    writeFile(path, {whole.begin(), whole.end() - 2});
    EXPECT_EQ(failure(path), "is truncated: it ends before its picture does");
}

TEST_F(RawReaderTest, refusesSizesBeforeMemoryIsTaken) {
    const std::string path = folder.path("bomb.dng");
    writeFile(path, scene::encodeDng({60000, 60000, {}}));
    EXPECT_EQ(failure(path), "is too large: 60000 x 60000 pixels, more than 536 megapixels");
    for (const bool compressed : {false, true}) {
        writeFile(path, withCompression(scene::encodeDng({23000, 23000, {}}), compressed ? 7 : 1));
        EXPECT_EQ(failure(path), "is truncated: it ends before its picture does");
    }
}

TEST_F(RawReaderTest, rejectsReadingsThatAreNone) {
    const std::string path = folder.path("none.dng");
    writeDng(path, TestPicture(60, 40, {90, 90, 90}));
    writeFile(path, withCompression(readFile(path), 7)); // not even the first byte is that of lossless JPEG
    EXPECT_EQ(failure(path), "is damaged: parts of its picture data cannot be decoded");
}

} // namespace
} // namespace tristop
