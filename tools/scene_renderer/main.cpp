// SPDX-License-Identifier: GPL-3.0-or-later
//
// tristop-scene: writes a rendered bracket of three photographs, JPEG or DNG, with EXIF exposure data.
#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <map>
#include <memory>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>
#include <exiv2/exiv2.hpp>
#include <jpeglib.h>

#include "tools/scene_renderer/dng.h"
#include "tools/scene_renderer/scene.h"

namespace {

using namespace tristop::scene;

constexpr double kSecondsAtZeroStops = 1.0 / 60;
constexpr uint16_t kIso = 200;
constexpr int kFocalLength = 29; // millimetres, for a picture 36 mm wide

std::vector<Exiv2::byte> encodeJpeg(const Picture<std::uint8_t> &picture, int quality) {
    jpeg_compress_struct encoder;
    jpeg_error_mgr errors;
    encoder.err = jpeg_std_error(&errors);
    jpeg_create_compress(&encoder);
    unsigned char *buffer = nullptr;
    unsigned long size = 0;
    jpeg_mem_dest(&encoder, &buffer, &size);
    encoder.image_width = static_cast<JDIMENSION>(picture.width);
    encoder.image_height = static_cast<JDIMENSION>(picture.height);
    encoder.input_components = 3;
    encoder.in_color_space = JCS_RGB;
    jpeg_set_defaults(&encoder); // colour at half size in both directions
    jpeg_set_quality(&encoder, quality, TRUE);
    encoder.optimize_coding = TRUE;
    jpeg_start_compress(&encoder, TRUE);
    for (int y = 0; y < picture.height; ++y) {
        JSAMPROW row = const_cast<JSAMPROW>(picture.pixel(0, y)); // the library only reads it
        jpeg_write_scanlines(&encoder, &row, 1);
    }
    jpeg_finish_compress(&encoder);
    jpeg_destroy_compress(&encoder);
    const std::unique_ptr<unsigned char, decltype(&std::free)> owner(buffer, &std::free);
    return {buffer, buffer + size};
}

/// An exposure time as cameras write it, 1/n, or in microseconds where it is none of those.
Exiv2::URational exposureTime(double stops) {
    const double seconds = std::exp2(stops) * kSecondsAtZeroStops;
    const double whole = std::round(1 / seconds);
    if (std::abs(whole * seconds - 1) < 1e-6)
        return {1, static_cast<uint32_t>(whole)};
    return {static_cast<uint32_t>(std::round(seconds * 1e6)), 1000000};
}

std::string takenAt(int shot) {
    return "2025:06:21 09:30:0" + std::to_string(shot);
}

Exiv2::ExifData exposureData(const SceneSettings &settings, int shot) {
    const double stops = settings.stops[static_cast<std::size_t>(shot)];
    const std::string time = takenAt(shot);
    Exiv2::ExifData exif;
    exif["Exif.Image.Make"] = "Tristop";
    exif["Exif.Image.Model"] = "Scene renderer";
    exif["Exif.Image.Orientation"] = uint16_t{1};
    exif["Exif.Image.DateTime"] = time;
    exif["Exif.Photo.DateTimeOriginal"] = time;
    exif["Exif.Photo.ExposureTime"] = exposureTime(stops);
    exif["Exif.Photo.FNumber"] = Exiv2::URational(8, 1);
    exif["Exif.Photo.ISOSpeedRatings"] = kIso;
    exif["Exif.Photo.ExposureBiasValue"] =
        Exiv2::Rational(static_cast<int32_t>(std::lround(stops * 100)), 100);
    exif["Exif.Photo.FocalLength"] = Exiv2::URational(kFocalLength, 1);
    exif["Exif.Photo.FocalLengthIn35mmFilm"] = uint16_t{kFocalLength};
    exif["Exif.Photo.ColorSpace"] = uint16_t{1}; // sRGB
    exif["Exif.Photo.PixelXDimension"] = static_cast<uint32_t>(settings.width);
    exif["Exif.Photo.PixelYDimension"] = static_cast<uint32_t>(settings.height);
    return exif;
}

void writeFile(const std::filesystem::path &path, std::span<const Exiv2::byte> bytes) {
    std::ofstream file(path, std::ios::binary);
    file.write(reinterpret_cast<const char *>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    file.close();
    if (!file)
        throw std::runtime_error("cannot write " + path.string());
}

void writeJpeg(const std::filesystem::path &path, std::span<const Exiv2::byte> jpeg,
               const Exiv2::ExifData &exif) {
    const auto image = Exiv2::ImageFactory::open(jpeg.data(), static_cast<long>(jpeg.size()));
    image->setExifData(exif);
    image->writeMetadata();
    Exiv2::BasicIo &bytes = image->io();
    writeFile(path, {bytes.mmap(), static_cast<std::size_t>(bytes.size())});
}

DngEntries dngEntries(const SceneSettings &settings, int shot) {
    const double stops = settings.stops[static_cast<std::size_t>(shot)];
    const auto [numerator, denominator] = exposureTime(stops);
    DngEntries entries;
    entries.dateTime = takenAt(shot);
    entries.exposureTime = {static_cast<int32_t>(numerator), static_cast<int32_t>(denominator)};
    entries.fNumber = {8, 1};
    entries.iso = kIso;
    entries.exposureBias = {static_cast<int32_t>(std::lround(stops * 100)), 100};
    entries.focalLength = {kFocalLength, 1};
    return entries;
}

} // namespace

int main(int argc, char **argv) {
    SceneSettings settings;
    std::filesystem::path folder = ".";
    int quality = 92, threads = 0;
    bool still = false, noiseless = false, raw = false;

    CLI::App app("Renders dark.jpg, middle.jpg and bright.jpg (or .dng): a sunlit view through the window of "
                 "a dim room.");
    app.add_option("folder", folder, "Folder to write to")
        ->check(CLI::ExistingDirectory)
        ->capture_default_str();
    app.add_option("--width", settings.width, "Width in pixels")
        ->check(CLI::Range(1, 65500))
        ->capture_default_str();
    app.add_option("--height", settings.height, "Height in pixels")
        ->check(CLI::Range(1, 65500))
        ->capture_default_str();
    app.add_option("--seed", settings.seed, "Changes textures, clouds, books and noise")
        ->capture_default_str();
    app.add_option("--stops", settings.stops, "Exposures in stops")->capture_default_str();
    app.add_option("--balloons", settings.moving.count, "Number of moving balloons")
        ->check(CLI::Range(0, 4))
        ->capture_default_str();
    app.add_option("--share", settings.moving.share, "Share of the picture that the balloons cover")
        ->check(CLI::Range(0.0, 0.15))
        ->capture_default_str();
    app.add_option("--scene", settings.variant, "room, grey or bricks")
        ->transform(CLI::CheckedTransformer(std::map<std::string, Variant>{
            {"room", Variant::room}, {"grey", Variant::flatGrey}, {"bricks", Variant::repeatedPattern}}));
    app.add_flag("--still", still, "Hold the camera still");
    app.add_flag("--no-noise", noiseless, "Leave out the sensor's noise");
    app.add_option("--quality", quality, "JPEG quality")->check(CLI::Range(1, 100))->capture_default_str();
    app.add_flag("--raw", raw, "Write camera RAW files, dark.dng and so on, instead of JPEG");
    app.add_option("--threads", threads, "Threads to use, 0 for all")
        ->check(CLI::NonNegativeNumber)
        ->capture_default_str();
    CLI11_PARSE(app, argc, argv);

    if (still)
        settings.camera = {};
    settings.sensorNoise = !noiseless;
    try {
        constexpr std::array<const char *, 3> kNames = {"dark", "middle", "bright"};
        for (int shot = 0; shot < 3; ++shot) {
            const std::filesystem::path path = folder / kNames[static_cast<std::size_t>(shot)];
            if (raw)
                writeFile(path.string() + ".dng",
                          encodeDng(renderMosaic(settings, shot, threads), dngEntries(settings, shot)));
            else
                writeJpeg(path.string() + ".jpg", encodeJpeg(render(settings, shot, threads), quality),
                          exposureData(settings, shot));
        }
    } catch (const std::exception &error) {
        std::cerr << "tristop-scene: " << error.what() << '\n';
        return 1;
    }
    return 0;
}
