// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/app/tiff_files.h"

namespace tristop::testing {
namespace {

constexpr int kWidth = 20, kHeight = 10, kTileSide = 16;

/// A row of one plane, or of all, `pixels` wide.
std::vector<uint8_t> sampleRow(const TiffOptions &options, int plane, int firstColumn, int pixels) {
    const bool separate = options.planes == PLANARCONFIG_SEPARATE;
    std::vector<uint8_t> row;
    for (int x = firstColumn; x < firstColumn + pixels; ++x)
        for (int channel = 0; channel < (separate ? 1 : options.samples); ++channel) {
            const uint16_t sample = tiffSampleAt(x, separate ? plane : channel);
            if (options.bits == 16)
                row.push_back(static_cast<uint8_t>(sample));
            row.push_back(static_cast<uint8_t>(sample >> 8));
        }
    return row;
}

void writeTiles(TIFF *tiff, const TiffOptions &options, uint16_t plane) {
    for (int left = 0; left < kWidth; left += kTileSide) {
        const std::vector<uint8_t> row = sampleRow(options, plane, left, kTileSide);
        std::vector<uint8_t> tile;
        for (int y = 0; y < kTileSide; ++y)
            tile.insert(tile.end(), row.begin(), row.end());
        TIFFWriteTile(tiff, tile.data(), static_cast<uint32_t>(left), 0, 0, plane);
    }
}

} // namespace

uint16_t tiffSampleAt(int x, int channel) {
    return static_cast<uint16_t>(0x0680 * x + 0x0040 * channel);
}

void writeTiff(const std::string &path, const TiffOptions &options) {
    TIFF *tiff = TIFFOpen(path.c_str(), "w");
    TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, kWidth);
    TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, kHeight);
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
    if (options.tiled) {
        TIFFSetField(tiff, TIFFTAG_TILEWIDTH, kTileSide);
        TIFFSetField(tiff, TIFFTAG_TILELENGTH, kTileSide);
    }
    const uint16_t planes = options.planes == PLANARCONFIG_SEPARATE ? options.samples : uint16_t{1};
    for (uint16_t plane = 0; plane < planes; ++plane) {
        if (options.tiled) {
            writeTiles(tiff, options, plane);
            continue;
        }
        const std::vector<uint8_t> row = sampleRow(options, plane, 0, kWidth);
        for (uint32_t y = 0; y < kHeight; ++y) {
            std::vector<uint8_t> written = row; // some compressions change what they are given
            TIFFWriteScanline(tiff, written.data(), y, plane);
        }
    }
    TIFFClose(tiff);
}

} // namespace tristop::testing
