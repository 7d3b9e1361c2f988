// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/app/photograph_files.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include <exiv2/exiv2.hpp>
#include <jpeglib.h>
#include <png.h>

namespace tristop::testing {

TestPicture::TestPicture(int width, int height, Rgb color)
    : width(width), height(height), samples(3 * static_cast<size_t>(width) * static_cast<size_t>(height)) {
    fill(0, 0, width, height, color);
}

Rgb TestPicture::at(int x, int y) const {
    const uint8_t *sample = &samples[3 * static_cast<size_t>(y * width + x)];
    return {sample[0], sample[1], sample[2]};
}

void TestPicture::set(int x, int y, Rgb color) {
    std::ranges::copy(color, &samples[3 * static_cast<size_t>(y * width + x)]);
}

void TestPicture::fill(int x0, int y0, int x1, int y1, Rgb color) {
    for (int y = y0; y < y1; ++y)
        for (int x = x0; x < x1; ++x)
            set(x, y, color);
}

TestPicture noise(int width, int height) {
    TestPicture picture(width, height);
    uint32_t state = 1;
    for (uint8_t &sample : picture.samples)
        sample = static_cast<uint8_t>((state = state * 1664525 + 1013904223) >> 24);
    return picture;
}

int distance(Rgb a, Rgb b) {
    int largest = 0;
    for (size_t i = 0; i < 3; ++i)
        largest = std::max(largest, std::abs(a[i] - b[i]));
    return largest;
}

TemporaryFolder::TemporaryFolder() {
    std::string pattern = (std::filesystem::temp_directory_path() / "tristop-test-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr)
        throw std::runtime_error("no temporary folder");
    folder = pattern;
}

TemporaryFolder::~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(folder, ignored);
}

std::vector<std::string> TemporaryFolder::names() const {
    std::vector<std::string> result;
    for (const auto &entry : std::filesystem::directory_iterator(folder))
        result.push_back(entry.path().filename().string());
    std::ranges::sort(result);
    return result;
}

void writeJpeg(const std::string &path, const TestPicture &picture, const JpegOptions &options) {
    jpeg_compress_struct info{};
    jpeg_error_mgr errors{};
    info.err = jpeg_std_error(&errors); // prints and exits, which fails the test program
    jpeg_create_compress(&info);
    std::FILE *file = std::fopen(path.c_str(), "wb");
    if (file == nullptr)
        throw std::runtime_error("cannot write " + path);
    jpeg_stdio_dest(&info, file);
    info.image_width = static_cast<JDIMENSION>(picture.width);
    info.image_height = static_cast<JDIMENSION>(picture.height);
    const bool gray = options.samples == JpegOptions::kGray;
    const bool cmyk = options.samples == JpegOptions::kAdobeCmyk;
    info.input_components = gray ? 1 : cmyk ? 4 : 3;
    info.in_color_space = gray ? JCS_GRAYSCALE : cmyk ? JCS_CMYK : JCS_RGB;
    jpeg_set_defaults(&info);
    jpeg_set_quality(&info, 98, TRUE);
    info.comp_info[0].h_samp_factor = info.comp_info[0].v_samp_factor = 1;
    info.density_unit = static_cast<UINT8>(options.densityUnit);
    info.X_density = static_cast<UINT16>(options.xDensity);
    info.Y_density = static_cast<UINT16>(options.yDensity);
    if (options.progressive)
        jpeg_simple_progression(&info);
    jpeg_start_compress(&info, TRUE);
    if (!options.profile.empty())
        jpeg_write_icc_profile(&info, options.profile.data(), static_cast<unsigned>(options.profile.size()));
    std::vector<uint8_t> row(4 * static_cast<size_t>(picture.width));
    for (int y = 0; y < picture.height; ++y) {
        uint8_t *sample = row.data();
        for (int x = 0; x < picture.width; ++x) {
            const Rgb color = picture.at(x, y);
            sample = std::copy_n(color.begin(), gray ? 1 : 3, sample);
            if (cmyk)
                *sample++ = 255;
        }
        sample = row.data();
        jpeg_write_scanlines(&info, &sample, 1);
    }
    jpeg_finish_compress(&info);
    std::fclose(file);
    jpeg_destroy_compress(&info);
}

double lightOf(uint8_t sample) {
    const double encoded = sample / 255.0;
    return encoded <= 0.04045 ? encoded / 12.92 : std::pow((encoded + 0.055) / 1.055, 2.4);
}

void writeDng(const std::string &path, const TestPicture &picture, const scene::DngEntries &entries,
              double exposure, const scene::DngStorage &storage, int samples) {
    scene::Mosaic mosaic{picture.width, picture.height,
                         std::vector<uint16_t>(picture.samples.size() / 3 * static_cast<size_t>(samples)),
                         samples};
    for (int y = 0; y < picture.height; ++y)
        for (int x = 0; x < picture.width; ++x) {
            const Rgb color = picture.at(x, y);
            std::array<float, 3> light{};
            std::ranges::transform(color, light.begin(), [exposure](uint8_t sample) {
                return static_cast<float>(lightOf(sample) * exposure);
            });
            mosaic.expose(x, y, light);
        }
    writeFile(path, scene::encodeDng(mosaic, entries, storage));
}

void addExif(const std::string &path, const std::map<std::string, std::string> &entries) {
    const auto image = Exiv2::ImageFactory::open(path);
    image->readMetadata();
    for (const auto &[name, value] : entries)
        image->exifData()[name].setValue(value);
    image->writeMetadata();
}

TestPicture readPng(const std::string &path) {
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    if (png_image_begin_read_from_file(&image, path.c_str()) == 0)
        throw std::runtime_error("cannot read " + path);
    image.format = PNG_FORMAT_RGB;
    TestPicture picture(static_cast<int>(image.width), static_cast<int>(image.height));
    if (png_image_finish_read(&image, nullptr, picture.samples.data(), 0, nullptr) == 0 ||
        image.warning_or_error != 0)
        throw std::runtime_error("cannot read " + path);
    return picture;
}

std::vector<uint8_t> readFile(const std::string &path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

void writeFile(const std::string &path, const std::vector<uint8_t> &bytes) {
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char *>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

} // namespace tristop::testing
