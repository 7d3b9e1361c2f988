// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/app/written_files.h"

#include <algorithm>
#include <cstdio>
#include <stdexcept>

#include <exiv2/exiv2.hpp>
#include <jpeglib.h>
#include <tiffio.h>

namespace tristop::testing {

TestTiff readTiff(const std::string &path) {
    TIFF *file = TIFFOpen(path.c_str(), "r");
    if (file == nullptr)
        throw std::runtime_error("cannot read " + path);
    TestTiff result;
    do {
        const auto tag = [file](uint32_t name) {
            uint16_t value = 0;
            TIFFGetField(file, name, &value);
            return value;
        };
        uint32_t width = 0, height = 0;
        TIFFGetField(file, TIFFTAG_IMAGEWIDTH, &width);
        TIFFGetField(file, TIFFTAG_IMAGELENGTH, &height);
        result.compression = tag(TIFFTAG_COMPRESSION);
        result.samplesPerPixel = tag(TIFFTAG_SAMPLESPERPIXEL);
        result.orientation = tag(TIFFTAG_ORIENTATION);
        float x = 0, y = 0;
        TIFFGetField(file, TIFFTAG_XRESOLUTION, &x);
        TIFFGetField(file, TIFFTAG_YRESOLUTION, &y);
        result.dotsPerInch = x == y && tag(TIFFTAG_RESOLUTIONUNIT) == RESUNIT_INCH ? x : 0;
        uint32_t size = 0;
        const uint8_t *profile = nullptr;
        if (TIFFGetField(file, TIFFTAG_ICCPROFILE, &size, &profile) == 1)
            result.profile.assign(profile, profile + size);
        TestPicture page(static_cast<int>(width), static_cast<int>(height));
        for (uint32_t row = 0; row < height && result.samplesPerPixel == 3; ++row)
            if (TIFFReadScanline(file, &page.samples[size_t{3} * width * row], row) != 1)
                throw std::runtime_error("cannot read " + path);
        result.pages.push_back(page);
    } while (TIFFReadDirectory(file) == 1);
    TIFFClose(file);
    return result;
}

TestJpegHeader readJpegHeader(const std::string &path) {
    jpeg_decompress_struct info{};
    jpeg_error_mgr errors{};
    info.err = jpeg_std_error(&errors); // prints and exits, which fails the test program
    jpeg_create_decompress(&info);
    std::FILE *file = std::fopen(path.c_str(), "rb");
    if (file == nullptr)
        throw std::runtime_error("cannot read " + path);
    jpeg_stdio_src(&info, file);
    jpeg_read_header(&info, TRUE);
    const jpeg_component_info &luminance = info.comp_info[0];
    TestJpegHeader header;
    header.sampling = luminance.h_samp_factor == luminance.v_samp_factor ? luminance.h_samp_factor : 0;
    header.dotsPerInch = info.density_unit == 1 && info.X_density == info.Y_density ? info.X_density : 0;
    std::fclose(file);
    jpeg_destroy_decompress(&info);
    return header;
}

std::map<std::string, std::string> readExif(const std::string &path) {
    const auto image = Exiv2::ImageFactory::open(path);
    image->readMetadata();
    std::map<std::string, std::string> entries;
    for (const Exiv2::Exifdatum &entry : image->exifData())
        entries[entry.key()] = entry.toString();
    return entries;
}

} // namespace tristop::testing
