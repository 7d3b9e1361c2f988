// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/tiff_reader.h"

#include <gtest/gtest.h>
#include <tiffio.h>

#include "app/color_profile.h"
#include "app/image_source.h"
#include "tests/app/photograph_files.h"

namespace tristop {
namespace {

using namespace testing;

struct TiffOptions {
    uint16_t bits = 8;
    uint16_t samples = 3;
    uint16_t planes = PLANARCONFIG_CONTIG;
    uint16_t compression = COMPRESSION_NONE;
    uint16_t orientation = 1;
    std::vector<uint8_t> profile = {};
};

/// A picture of 20 x 10 pixels whose samples go from 0 to a half of white: channel c of column x has the
/// value 0x0680 x + 0x0040 c in 16 bits.
uint16_t sampleAt(int x, int channel) {
    return static_cast<uint16_t>(0x0680 * x + 0x0040 * channel);
}

void writeTiff(const std::string &path, const TiffOptions &options) {
    TIFF *tiff = TIFFOpen(path.c_str(), "w");
    TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, 20);
    TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, 10);
    TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, options.bits);
    TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, options.samples);
    TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, options.planes);
    TIFFSetField(tiff, TIFFTAG_COMPRESSION, options.compression);
    TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, options.samples == 1 ? PHOTOMETRIC_MINISBLACK : PHOTOMETRIC_RGB);
    TIFFSetField(tiff, TIFFTAG_ORIENTATION, options.orientation);
    TIFFSetField(tiff, TIFFTAG_XRESOLUTION, 300.0);
    TIFFSetField(tiff, TIFFTAG_YRESOLUTION, 300.0);
    TIFFSetField(tiff, TIFFTAG_MAKE, "Tristop");
    if (!options.profile.empty())
        TIFFSetField(tiff, TIFFTAG_ICCPROFILE, static_cast<uint32_t>(options.profile.size()),
                     options.profile.data());
    const bool separate = options.planes == PLANARCONFIG_SEPARATE;
    for (uint16_t plane = 0; plane < (separate ? options.samples : 1); ++plane)
        for (uint32_t y = 0; y < 10; ++y) {
            std::vector<uint8_t> row;
            for (int x = 0; x < 20; ++x)
                for (int channel = 0; channel < (separate ? 1 : options.samples); ++channel) {
                    const uint16_t sample = sampleAt(x, separate ? plane : channel);
                    if (options.bits == 16)
                        row.push_back(static_cast<uint8_t>(sample));
                    row.push_back(static_cast<uint8_t>(sample >> 8));
                }
            TIFFWriteScanline(tiff, row.data(), y, plane);
        }
    TIFFClose(tiff);
}

class TiffReaderTest : public ::testing::Test {
protected:
    CBImageSource photograph(const TiffOptions &options) {
        writeTiff(path, options);
        CBImageSource source;
        EXPECT_TRUE(source.initWithPhoto(path) && source.open()) << source.failure();
        return source;
    }

    TemporaryFolder folder;
    std::string path = folder.path("picture.tif");
};

TEST_F(TiffReaderTest, readsGreyAndRgbOfEveryStorage) {
    for (const TiffOptions &options :
         {TiffOptions{}, TiffOptions{.compression = COMPRESSION_LZW}, TiffOptions{.samples = 1},
          TiffOptions{.planes = PLANARCONFIG_SEPARATE}, TiffOptions{.bits = 16},
          TiffOptions{.bits = 16, .samples = 1}, TiffOptions{.bits = 16, .samples = 5},
          TiffOptions{.bits = 16, .planes = PLANARCONFIG_SEPARATE}, TiffOptions{.orientation = 6},
          TiffOptions{.bits = 16, .orientation = 4}}) {
        SCOPED_TRACE(::testing::Message() << options.bits << " bits, " << options.samples << " samples");
        const CBImageSource source = photograph(options);
        EXPECT_EQ(source.orientation(), options.orientation);
        EXPECT_EQ(source.imageSize(source.orientation()),
                  options.orientation == 6 ? (ImageSize{10, 20}) : (ImageSize{20, 10}));
        EXPECT_EQ(source.dpiWidth(), 300);
        for (int x = 0; x < 20; ++x)
            for (int channel = 0; channel < 3; ++channel) {
                const uint16_t sample = sampleAt(x, options.samples == 1 ? 0 : channel);
                // Eight bits of sixteen: the nearest of 256 levels from 0 to 65535.
                const int expected = options.bits == 8 ? sample >> 8 : (sample * 255 + 32767) / 65535;
                ASSERT_EQ(source.image()->pixels[static_cast<size_t>(4 * (60 + x) + 2 - channel)], expected)
                    << x;
            }
    }
}

TEST_F(TiffReaderTest, convertsProfilesWithAllBits) {
    // sRGB itself: what a 16-bit picture gets is what its nearest 8-bit one has.
    const CBImageSource source = photograph({.bits = 16, .profile = srgbProfile()});
    for (int x = 0; x < 20; ++x)
        EXPECT_NEAR(source.image()->pixels[static_cast<size_t>(4 * x + 2)], sampleAt(x, 0) / 257.0, 0.75)
            << x;
}

TEST_F(TiffReaderTest, tellsWhyAFileCannotBeUsed) {
    const auto failure = [this](const std::vector<uint8_t> &bytes) {
        writeFile(path, bytes);
        CBImageSource source;
        EXPECT_FALSE(source.initWithPhoto(path) && source.open());
        EXPECT_EQ(source.image(), nullptr);
        return source.failure();
    };
    writeTiff(path, {});
    const std::vector<uint8_t> whole = readFile(path);
    for (size_t twentieth = 1; twentieth < 20; ++twentieth) // the directory stands at the end
        EXPECT_EQ(
            failure({whole.begin(), whole.begin() + static_cast<ptrdiff_t>(whole.size() * twentieth / 20)}),
            "is damaged or truncated: its TIFF directory cannot be read");
    std::vector<uint8_t> lost = whole;
    constexpr std::array<uint8_t, 4> kStripPlace = {0x11, 0x01, TIFF_LONG, 0};
    const auto entry = std::ranges::search(lost, kStripPlace).begin();
    ASSERT_NE(entry, lost.end());
    entry[11] = 0x7f; // far behind the end
    EXPECT_EQ(failure(lost), "is damaged: parts of its picture data cannot be decoded");
}

} // namespace
} // namespace tristop
