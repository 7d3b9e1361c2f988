// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/tiff_reader.h"

#include <algorithm>
#include <array>
#include <stdexcept>

#include <gtest/gtest.h>

#include "app/color_profile.h"
#include "app/image_source.h"
#include "tests/app/photograph_files.h"
#include "tests/app/tiff_files.h"

namespace tristop {
namespace {

using namespace testing;

/// The directory's entry for a tag: tag, type, count and, from byte 8 on, its value.
std::vector<uint8_t>::iterator entryOf(std::vector<uint8_t> &tiff, int tag) {
    for (const uint8_t type : {TIFF_SHORT, TIFF_LONG}) {
        const std::array<uint8_t, 5> start = {static_cast<uint8_t>(tag), static_cast<uint8_t>(tag >> 8), type,
                                              0, 1};
        if (const auto entry = std::ranges::find_end(tiff, start); !entry.empty())
            return entry.begin();
    }
    throw std::logic_error("no such entry");
}

class TiffReaderTest : public ::testing::Test {
protected:
    CBImageSource photograph(const TiffOptions &options) {
        writeTiff(path, options);
        CBImageSource source;
        EXPECT_TRUE(source.initWithPhoto(path) && source.open()) << source.failure();
        return source;
    }

    /// Why a file of these bytes cannot be used.
    std::string failure(const std::vector<uint8_t> &bytes) {
        writeFile(path, bytes);
        CBImageSource source;
        EXPECT_FALSE(source.initWithPhoto(path) && source.open());
        EXPECT_EQ(source.image(), nullptr);
        return source.failure();
    }

    TemporaryFolder folder;
    std::string path = folder.path("picture.tif");
};

TEST_F(TiffReaderTest, readsGreyAndRgbOfEveryStorage) {
    for (const TiffOptions &options :
         {TiffOptions{}, TiffOptions{.compression = COMPRESSION_LZW}, TiffOptions{.samples = 1},
          TiffOptions{.planes = PLANARCONFIG_SEPARATE}, TiffOptions{.tiled = true}, TiffOptions{.bits = 16},
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
                const uint16_t sample = tiffSampleAt(x, options.samples == 1 ? 0 : channel);
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
        EXPECT_NEAR(source.image()->pixels[static_cast<size_t>(4 * x + 2)], tiffSampleAt(x, 0) / 257.0, 0.75)
            << x;
}

TEST_F(TiffReaderTest, tellsWhyAFileCannotBeUsed) {
    writeTiff(path, {});
    const std::vector<uint8_t> whole = readFile(path);
    for (size_t twentieth = 1; twentieth < 20; ++twentieth) // the directory stands at the end
        EXPECT_EQ(
            failure({whole.begin(), whole.begin() + static_cast<ptrdiff_t>(whole.size() * twentieth / 20)}),
            "is damaged or truncated: its TIFF directory cannot be read");
    std::vector<uint8_t> lost = whole;
    entryOf(lost, TIFFTAG_STRIPOFFSETS)[11] = 0x7f; // far behind the end
    EXPECT_EQ(failure(lost), "is damaged: parts of its picture data cannot be decoded");
}

TEST_F(TiffReaderTest, refusesSizesThatTheFileCannotHold) {
    for (const TiffOptions &options :
         {TiffOptions{}, TiffOptions{.compression = COMPRESSION_LZW},
          TiffOptions{.planes = PLANARCONFIG_SEPARATE, .compression = COMPRESSION_ADOBE_DEFLATE}}) {
        writeTiff(path, options);
        std::vector<uint8_t> bytes = readFile(path);
        const auto claim = [&](uint16_t side) {
            for (const int tag : {TIFFTAG_IMAGEWIDTH, TIFFTAG_IMAGELENGTH}) {
                entryOf(bytes, tag)[8] = static_cast<uint8_t>(side);
                entryOf(bytes, tag)[9] = static_cast<uint8_t>(side >> 8);
            }
            return failure(bytes);
        };
        EXPECT_EQ(claim(60000), "is too large: 60000 x 60000 pixels, more than 536 megapixels");
        EXPECT_EQ(claim(23000), "is truncated: it ends before its picture does");
    }
}

} // namespace
} // namespace tristop
