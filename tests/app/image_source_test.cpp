// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/image_source.h"

#include <algorithm>
#include <functional>
#include <limits>
#include <utility>

#include <exiv2/exiv2.hpp>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "app/photographs.h"
#include "app/yuv_rgb.h"
#include "tests/app/photograph_files.h"

namespace tristop {
namespace {

using namespace testing;

class ImageSourceTest : public ::testing::Test {
protected:
    /// Writes a file and loads and opens it.
    CBImageSource photograph(const TestPicture &picture, const JpegOptions &options = {},
                             const std::map<std::string, std::string> &exif = {}) {
        const std::string path = folder.path("photograph.jpg");
        writeJpeg(path, picture, options);
        if (!exif.empty())
            addExif(path, exif);
        CBImageSource source;
        EXPECT_TRUE(source.initWithPhoto(path)) << source.failure();
        EXPECT_TRUE(source.open()) << source.failure();
        return source;
    }

    /// Why a file cannot be used.
    std::string failure(const std::string &path) {
        CBImageSource source;
        const bool opened = source.initWithPhoto(path) && source.open();
        EXPECT_FALSE(opened);
        EXPECT_EQ(source.image(), nullptr);
        return source.failure();
    }

    TemporaryFolder folder;
};

Rgb pixel(const RgbImage &image, int x, int y) {
    const uint8_t *sample =
        image.pixels.get() + static_cast<size_t>(y) * image.lineBytes + 3 * static_cast<size_t>(x);
    return {sample[0], sample[1], sample[2]};
}

/// Checks the upright picture and what an engine input of format `format` is filled with, pixel by pixel.
void expectUpright(const CBImageSource &source, uint32_t format,
                   const std::function<Rgb(int x, int y)> &expected) {
    const ImageSize size = source.imageSize(source.orientation());
    const auto image = source.image(source.orientation());
    ASSERT_TRUE(image);
    ASSERT_EQ(image->width, size.width);
    ASSERT_EQ(image->height, size.height);
    Offscreen input{format, roundUpTo4(image->width), image->height, {}, {}};
    CBYUVRGB::allocOffscreen(&input);
    ASSERT_TRUE(source.image(source.orientation(), &input));
    const bool packed = format == HDR_FORMAT_YUY2;
    const auto weighted = [](Rgb color, double red, double green, double blue) {
        return (red * color[0] + green * color[1] + blue * color[2]) / 256;
    };
    for (int y = 0; y < image->height; ++y)
        for (int x = 0; x < input.i32Width; ++x) {
            SCOPED_TRACE(::testing::Message() << "at " << x << ", " << y);
            // The columns that round the width up come from the next row, or are zero behind the last.
            const bool inside = x < image->width, last = y + 1 == image->height;
            const Rgb color = inside ? expected(x, y) : last ? Rgb{} : expected(x - image->width, y + 1);
            if (inside) {
                ASSERT_EQ(pixel(*image, x, y), color);
            }
            const double luma = 16 + weighted(color, 65.738, 129.057, 25.064);
            ASSERT_NEAR(input.ppu8Plane[0][y * input.pi32Pitch[0] + (packed ? 2 * x : x)], luma, 1.5);
            if (x % 2 != 0 || x + 1 >= image->width || (!packed && (y % 2 != 0 || last)))
                continue;
            double blueness = 128;
            for (const int below : {0, packed ? 0 : 1})
                for (const int right : {0, 1})
                    blueness += weighted(expected(x + right, y + below), -37.945, -74.494, 112.439) / 4;
            const uint8_t *plane = input.ppu8Plane[packed ? 0 : 1];
            const int row = packed ? y * input.pi32Pitch[0] : y / 2 * input.pi32Pitch[1];
            ASSERT_NEAR(plane[row + (packed ? 2 * x + 1 : x / 2)], blueness, 2.5);
        }
    CBYUVRGB::releaseOffscreen(&input);
}

TEST_F(ImageSourceTest, turnsEveryOrientationUpright) {
    // The stored pixel that an upright one shows, by the meaning of the EXIF orientations; W, H stored size.
    using Stored = std::pair<int, int> (*)(int x, int y, int W, int H);
    constexpr std::array<Stored, 8> kStored = {{
        [](int x, int y, int, int) { return std::pair(x, y); },
        [](int x, int y, int W, int) { return std::pair(W - 1 - x, y); },
        [](int x, int y, int W, int H) { return std::pair(W - 1 - x, H - 1 - y); },
        [](int x, int y, int, int H) { return std::pair(x, H - 1 - y); },
        [](int x, int y, int, int) { return std::pair(y, x); },
        [](int x, int y, int, int H) { return std::pair(y, H - 1 - x); },
        [](int x, int y, int W, int H) { return std::pair(W - 1 - y, H - 1 - x); },
        [](int x, int y, int W, int) { return std::pair(W - 1 - y, x); },
    }};
    constexpr int kWidth = 71, kHeight = 45;
    for (int orientation = 1; orientation <= 8; ++orientation) {
        SCOPED_TRACE(orientation);
        const CBImageSource source =
            photograph(noise(kWidth, kHeight), {}, {{"Exif.Image.Orientation", std::to_string(orientation)}});
        ASSERT_EQ(source.orientation(), orientation);
        EXPECT_EQ(source.imageSize(orientation),
                  orientation >= 5 ? (ImageSize{kHeight, kWidth}) : (ImageSize{kWidth, kHeight}));
        const auto expected = [&](int x, int y) {
            const auto [storedX, storedY] =
                kStored[static_cast<size_t>(orientation - 1)](x, y, kWidth, kHeight);
            const uint8_t *stored =
                source.image()->pixels.get() + 4 * static_cast<ptrdiff_t>(storedY * kWidth + storedX);
            return Rgb{stored[2], stored[1], stored[0]};
        };
        expectUpright(source, HDR_FORMAT_YUY2, expected);
        expectUpright(source, HDR_FORMAT_I420, expected);
    }
}

TEST(UprightDrawingTest, interpolatesAStretchedPictureAndCutsTheTopOff) {
    // Three rows of 10, 50 and 90 stretched to twice their height, of which the lower four rows stay.
    BgrxImage source{1, 3, allocPixels(12)};
    for (size_t y = 0; y < 3; ++y)
        for (size_t channel = 0; channel < 4; ++channel)
            source.pixels[4 * y + channel] = static_cast<uint8_t>(10 + 40 * y);
    std::vector<uint8_t> rows(5 * 8, 7);
    UprightDrawing(source, {1, 0, 0, 2, 0, 0}, 2, 4).drawRows(0, 5, rows.data());
    const std::array<uint8_t, 5> expected = {40, 60, 80, 90, 0}; // centres 1/4 and 3/4 between rows
    for (size_t y = 0; y < 5; ++y) {
        EXPECT_EQ(rows[8 * y], expected[y]);
        EXPECT_EQ(rows[8 * y + 4], 0) << "beyond the right edge";
    }
}

TEST_F(ImageSourceTest, stretchesTheAxisOfTheLowerResolution) {
    // 300 x 150 dots an inch: twice as high, of which the lower half fits.
    TestPicture halves(160, 128, {30, 30, 200});
    halves.fill(0, 0, 160, 64, {200, 30, 30});
    const CBImageSource source = photograph(halves, {},
                                            {{"Exif.Image.XResolution", "300/1"},
                                             {"Exif.Image.YResolution", "150/1"},
                                             {"Exif.Image.ResolutionUnit", "2"}});
    EXPECT_EQ(source.imageTransform(), (AffineTransform{1, 0, 0, 2, 0, 0}));
    EXPECT_EQ(source.imageSize(1), (ImageSize{160, 128}));
    const auto image = source.image(1);
    ASSERT_TRUE(image);
    EXPECT_LE(distance(pixel(*image, 10, 10), {30, 30, 200}), 6);

    CBImageSource turned = photograph(halves, {}, {{"Exif.Image.Orientation", "6"}});
    ImageMetadata metadata = turned.imageMetadata();
    metadata.dpiWidth = 100;
    metadata.dpiHeight = 150;
    turned.setImageMetadata(metadata);
    EXPECT_EQ(turned.imageTransform(), (AffineTransform{0, -1.5, 1, 0, 0, 240}));
}

TEST_F(ImageSourceTest, readsResolutionFromExifThenFromTheJfifHeader) {
    const TestPicture picture(16, 16);
    const std::map<std::string, std::string> inches = {{"Exif.Image.XResolution", "240/1"},
                                                       {"Exif.Image.YResolution", "120/1"},
                                                       {"Exif.Image.ResolutionUnit", "2"}};
    const auto with = [](std::map<std::string, std::string> entries, const std::string &name,
                         const std::string &value) {
        entries[name] = value;
        return entries;
    };
    auto half = inches;
    half.erase("Exif.Image.YResolution");
    const JpegOptions jfif{.densityUnit = 2, .xDensity = 100, .yDensity = 50};
    const JpegOptions aspectOnly{.densityUnit = 0, .xDensity = 2, .yDensity = 1};
    struct Case {
        const char *name;
        JpegOptions options;
        std::map<std::string, std::string> exif;
        float width, height;
    };
    const Case cases[] = {
        {"inches, whatever the JFIF header says", jfif, inches, 240, 120},
        {"centimetres", jfif, with(inches, "Exif.Image.ResolutionUnit", "3"), 240 * 2.54f, 120 * 2.54f},
        {"half a pair", jfif, half, 254, 127},
        {"zero", jfif, with(inches, "Exif.Image.YResolution", "0/1"), 254, 127},
        {"no denominator", jfif, with(inches, "Exif.Image.YResolution", "72/0"), 254, 127},
        {"no unit in EXIF", jfif, with(inches, "Exif.Image.ResolutionUnit", "1"), 254, 127},
        {"JFIF only", jfif, {}, 254, 127},
        {"JFIF aspect ratio only", aspectOnly, {}, 72, 72},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.name);
        const CBImageSource source = photograph(picture, c.options, c.exif);
        EXPECT_FLOAT_EQ(source.dpiWidth(), c.width);
        EXPECT_FLOAT_EQ(source.dpiHeight(), c.height);
    }
}

TEST_F(ImageSourceTest, readsExposureData) {
    const CBImageSource source = photograph(TestPicture(16, 24), {},
                                            {{"Exif.Photo.ExposureBiasValue", "-2/3"},
                                             {"Exif.Photo.ISOSpeedRatings", "400 800"},
                                             {"Exif.Photo.FocalLength", "245/10"}});
    EXPECT_FLOAT_EQ(source.imageExposure(), -2.0f / 3.0f);
    EXPECT_EQ(source.imageISO(), 400);
    EXPECT_EQ(source.imageFocusLength(), 24.5);
    EXPECT_EQ(source.imageSize(1), (ImageSize{16, 24}));

    const CBImageSource plain = photograph(TestPicture(16, 24));
    EXPECT_EQ(plain.EXIF(), nullptr);
    EXPECT_EQ(plain.imageExposure(), 0);
    EXPECT_EQ(plain.imageISO(), 0);
    EXPECT_EQ(plain.imageFocusLength(), 0);
    EXPECT_EQ(plain.orientation(), 1);

    ImageMetadata emptyList;
    emptyList.exif.emplace();
    CBImageSource bare;
    bare.setImageMetadata(emptyList);
    EXPECT_EQ(bare.imageISO(), 0);
    for (const int64_t outOfRange : {0, 9, -1}) {
        emptyList.orientation = outOfRange;
        bare.setImageMetadata(emptyList);
        EXPECT_EQ(bare.orientation(), 1);
    }
}

TEST_F(ImageSourceTest, takesMalformedEntriesForAbsent) {
    const std::string path = folder.path("malformed.jpg");
    writeJpeg(path, TestPicture(16, 24));
    const auto file = Exiv2::ImageFactory::open(path);
    const auto add = [&file](const char *name, Exiv2::TypeId type, const char *text) {
        const auto value = Exiv2::Value::create(type);
        value->read(text);
        file->exifData().add(Exiv2::ExifKey(name), value.get());
    };
    add("Exif.Image.Orientation", Exiv2::asciiString, "6");
    add("Exif.Image.XResolution", Exiv2::asciiString, "300");
    add("Exif.Image.YResolution", Exiv2::unsignedRational, "300/1");
    add("Exif.Photo.ISOSpeedRatings", Exiv2::asciiString, "400");
    add("Exif.Photo.ExposureBiasValue", Exiv2::signedRational, "5/0");
    add("Exif.Photo.FocalLength", Exiv2::tiffFloat, "inf");
    file->writeMetadata();
    CBImageSource source;
    ASSERT_TRUE(source.initWithPhoto(path)) << source.failure();
    ASSERT_NE(source.EXIF(), nullptr);
    EXPECT_EQ(source.orientation(), 1);
    EXPECT_EQ(source.dpiWidth(), 72);
    EXPECT_EQ(source.dpiHeight(), 72);
    EXPECT_EQ(source.imageISO(), 0);
    EXPECT_EQ(source.imageExposure(), 0);
    EXPECT_EQ(source.imageFocusLength(), 0);

    const CBImageSource absurd = photograph(TestPicture(16, 24), {},
                                            {{"Exif.Image.XResolution", "4294967295/1"},
                                             {"Exif.Image.YResolution", "1/4294967295"},
                                             {"Exif.Image.Orientation", "65535"}});
    EXPECT_EQ(absurd.dpiWidth(), 4294967295.0f);
    EXPECT_EQ(absurd.orientation(), 1);
    EXPECT_TRUE(absurd.image(1)) << "stretched out of sight";
}

TEST_F(ImageSourceTest, drawsWhatAWrongSizeLeavesOfThePicture) {
    CBImageSource source = photograph(TestPicture(20, 30, {90, 90, 90}));
    const auto imageOfSize = [&source](float width, float height) {
        ImageMetadata metadata = source.imageMetadata();
        metadata.pixelWidth = width;
        metadata.pixelHeight = height;
        source.setImageMetadata(metadata);
        return source.image(1);
    };
    // The drawing keeps its lower left corner.
    const auto larger = imageOfSize(23, 34);
    ASSERT_TRUE(larger);
    EXPECT_LE(distance(pixel(*larger, 0, 4), {90, 90, 90}), 1);
    EXPECT_EQ(pixel(*larger, 0, 3), Rgb{});
    EXPECT_EQ(pixel(*larger, 20, 33), Rgb{});
    const auto smaller = imageOfSize(7.9f, 11);
    ASSERT_TRUE(smaller);
    EXPECT_EQ(smaller->width, 7);
    EXPECT_LE(distance(pixel(*smaller, 6, 0), {90, 90, 90}), 1);
    const float infinite = std::numeric_limits<float>::infinity();
    for (const float absurd : {0.0f, -20.0f, 60000.0f, 1e30f, infinite, -infinite, infinite - infinite}) {
        EXPECT_FALSE(imageOfSize(absurd, 60000)) << absurd;
        Offscreen input{HDR_FORMAT_YUY2, 20, 30, {}, {}};
        CBYUVRGB::allocOffscreen(&input);
        EXPECT_FALSE(source.image(1, &input)) << absurd;
        CBYUVRGB::releaseOffscreen(&input);
    }
}

TEST_F(ImageSourceTest, fillsOnlyEngineInputsThatItCovers) {
    const CBImageSource source = photograph(TestPicture(101, 6));
    Offscreen input{HDR_FORMAT_YUY2, 104, 7, {}, {}};
    CBYUVRGB::allocOffscreen(&input);
    EXPECT_FALSE(source.image(1, &input)) << "more rows than the picture has";
    input.i32Height = 2;
    EXPECT_TRUE(source.image(1, &input));
    EXPECT_EQ(input.ppu8Plane[0][208], 16);
    EXPECT_EQ(input.ppu8Plane[0][416], 0) << "below the record";
    EXPECT_FALSE(CBImageSource().image(1, &input)) << "not open";
    input.u32PixelArrayFormat = HDR_FORMAT_NV21;
    input.ppu8Plane[0][0] = 7;
    EXPECT_TRUE(source.image(1, &input));
    EXPECT_EQ(input.ppu8Plane[0][0], 7) << "a format that is not converted";
    CBYUVRGB::releaseOffscreen(&input);
}

TEST_F(ImageSourceTest, takesAnyNameForAFile) {
    const auto usual = std::filesystem::current_path();
    std::filesystem::create_directory(folder.path("data:"));
    std::filesystem::current_path(folder.path(""));
    for (const char *name : {"-", "data://picture.jpg"}) {
        writeJpeg(name, TestPicture(16, 24));
        addExif(folder.path(name), {{"Exif.Image.Orientation", "6"}});
        CBImageSource source;
        EXPECT_TRUE(source.initWithPhoto(name));
        EXPECT_EQ(source.orientation(), 6) << name;
    }
    std::filesystem::current_path(usual);
}

TEST_F(ImageSourceTest, tellsWhyAFileCannotBeUsed) {
    EXPECT_EQ(failure("/dev/null"), "is not an ordinary file");
    EXPECT_EQ(failure(folder.path("")), "is a folder");
    EXPECT_EQ(failure("/dev/null/file.jpg"), "does not exist");
    EXPECT_EQ(failure("/proc/self/mem"), "cannot be read: Input/output error");
    const std::string pipe = folder.path("pipe.jpg"), loop = folder.path("loop.jpg");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_EQ(failure(pipe), "is not an ordinary file") << "without waiting for a writer";
    std::filesystem::create_symlink(loop, loop);
    EXPECT_EQ(failure(loop), "cannot be opened: Too many levels of symbolic links");
    const std::string path = folder.path("file.jpg");
    writeFile(path, {});
    EXPECT_EQ(failure(path), "is empty");
    for (const auto &[name, reason] :
         {std::pair("notes.txt", "is neither a JPEG, a camera RAW nor a TIFF file"),
          std::pair("notes.NEF", "is not a camera RAW file that can be read"),
          std::pair("notes.tif", "is not a TIFF picture")}) {
        writeFile(folder.path(name), {'n', 'o', 't', 'e', 's'});
        EXPECT_EQ(failure(folder.path(name)), reason);
    }
    writeFile(path, {0x89, 'P', 'N', 'G', '\r', '\n', 0x1a, '\n'});
    EXPECT_EQ(failure(path), "is not a JPEG picture");
    CBImageSource loaded = photograph(TestPicture(20, 30));
    EXPECT_FALSE(loaded.initWithPhoto(folder.path("missing.jpg")));
    EXPECT_EQ(loaded.imagePath(), folder.path("missing.jpg"));
    EXPECT_EQ(loaded.imageSize(1), (ImageSize{20, 30})) << "the metadata stay";
}

TEST_F(ImageSourceTest, rejectsAFileThatDoesNotDecodeWhole) {
    const std::string path = folder.path("noise.jpg");
    for (const bool progressive : {false, true}) {
        SCOPED_TRACE(progressive ? "progressive" : "baseline");
        writeJpeg(path, noise(120, 120), {.progressive = progressive});
        const std::vector<uint8_t> whole = readFile(path);
        std::vector<size_t> lengths = {3, whole.size() - 40, whole.size() - 2};
        for (size_t twentieth = 1; twentieth < 20; ++twentieth)
            lengths.push_back(whole.size() * twentieth / 20);
        for (const size_t length : lengths) {
            writeFile(path, {whole.begin(), whole.begin() + static_cast<ptrdiff_t>(length)});
            EXPECT_EQ(failure(path), "is truncated: it ends before its picture does") << length << " bytes";
        }
        std::vector<uint8_t> hole = whole; // filled with ones, which no Huffman code consists of
        for (size_t i = whole.size() / 2; i < whole.size() * 3 / 4; ++i)
            hole[i] = i % 2 == 0 ? 0xff : 0;
        writeFile(path, hole);
        EXPECT_EQ(failure(path), "is damaged: parts of its picture data cannot be decoded");
    }
}

TEST_F(ImageSourceTest, refusesSizesThatTheFileCannotHold) {
    const std::string path = folder.path("bomb.jpg");
    constexpr uint8_t kBaseline = 0xc0, kProgressive = 0xc2, kArithmetic = 0xc9;
    for (const uint8_t coding : {kBaseline, kProgressive, kArithmetic}) {
        SCOPED_TRACE(static_cast<int>(coding));
        const bool progressive = coding == kProgressive;
        writeJpeg(path, TestPicture(16, 24), {.progressive = progressive});
        std::vector<uint8_t> bytes = readFile(path);
        // The frame header: marker, length, precision, height, width.
        const std::array<uint8_t, 7> frame = {0xff, progressive ? kProgressive : kBaseline, 0, 17, 8, 0, 24};
        const auto start = std::ranges::search(bytes, frame).begin();
        ASSERT_NE(start, bytes.end());
        start[1] = coding;
        const auto claim = [&](uint16_t side) {
            for (const int offset : {5, 7}) {
                start[offset] = static_cast<uint8_t>(side >> 8);
                start[offset + 1] = static_cast<uint8_t>(side);
            }
            writeFile(path, bytes);
        };
        claim(60000);
        EXPECT_EQ(failure(path), "is too large: 60000 x 60000 pixels, more than 536 megapixels");
        claim(23000);
        EXPECT_EQ(failure(path), "is truncated: it ends before its picture does");
    }
}

TEST_F(ImageSourceTest, refusesEndlessScans) {
    const std::string path = folder.path("scans.jpg");
    writeJpeg(path, noise(16, 24), {.progressive = true});
    std::vector<uint8_t> bytes = readFile(path);
    constexpr std::array<uint8_t, 2> kScan = {0xff, 0xda};
    const std::vector<uint8_t> lastScan(std::ranges::find_end(bytes, kScan).begin(), bytes.end() - 2);
    for (int i = 0; i < 100; ++i) // over and over again, before the end marker
        bytes.insert(bytes.end() - 2, lastScan.begin(), lastScan.end());
    writeFile(path, bytes);
    EXPECT_EQ(failure(path), "is damaged: parts of its picture data cannot be decoded");
}

TEST_F(ImageSourceTest, opensThreePhotographsOfOneSizeOnly) {
    const auto problem = [this](ImageSize second, const std::string &orientation = "1") {
        const std::array<std::string, 3> paths = {folder.path("a.jpg"), folder.path("b.jpg"),
                                                  folder.path("c.jpg")};
        for (const std::string &path : paths)
            writeJpeg(path, TestPicture(120, 100));
        writeJpeg(paths[1], TestPicture(static_cast<int>(second.width), static_cast<int>(second.height)));
        addExif(paths[1], {{"Exif.Image.Orientation", orientation}});
        Photographs photographs;
        const auto error = openPhotographs(paths, photographs);
        EXPECT_TRUE(!error || error->path == paths[1]);
        EXPECT_TRUE(error || photographs[2].image() != nullptr);
        Photographs oneByOne;
        EXPECT_EQ(openPhotographs(paths, oneByOne, 1).has_value(), error.has_value());
        return error ? error->reason : "";
    };
    EXPECT_EQ(problem({120, 100}), "");
    EXPECT_EQ(problem({100, 120}, "6"), "");
    EXPECT_EQ(problem({120, 100}, "8"), "has another size than " + folder.path("a.jpg") +
                                            ": 100 x 120 pixels instead of 120 x 100 pixels");
}

} // namespace
} // namespace tristop
