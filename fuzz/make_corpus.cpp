// SPDX-License-Identifier: GPL-3.0-or-later
// Writes the small photograph files that the fuzzers begin with, the same ones every time.
#include <cstdio>
#include <filesystem>
#include <string>

#include "app/color_profile.h"
#include "app/picture_writer.h"
#include "tests/app/photograph_files.h"
#include "tests/app/tiff_files.h"

namespace {

using namespace tristop;
using namespace tristop::testing;
using Entries = std::map<std::string, std::string>;

const Entries kCamera = {{"Exif.Image.Make", "Tristop Optics"},
                         {"Exif.Image.Orientation", "6"},
                         {"Exif.Image.XResolution", "300/1"},
                         {"Exif.Image.YResolution", "150/1"},
                         {"Exif.Image.ResolutionUnit", "2"},
                         {"Exif.Image.Copyright", "Ana"},
                         {"Exif.Photo.LensSpecification", "24/1 105/1 4/1 4/1"},
                         {"Exif.Photo.DateTimeOriginal", "2024:05:01 10:20:30"},
                         {"Exif.Photo.SubSecTimeOriginal", "042"},
                         {"Exif.Photo.ExposureTime", "1/125"},
                         {"Exif.Photo.ShutterSpeedValue", "7/1"},
                         {"Exif.Photo.FNumber", "4/1"},
                         {"Exif.Photo.ApertureValue", "4/1"},
                         {"Exif.Photo.ExposureBiasValue", "-2/3"},
                         {"Exif.Photo.ISOSpeedRatings", "400 800"},
                         {"Exif.Photo.FocalLength", "245/10"},
                         {"Exif.Iop.InteroperabilityIndex", "R03"},
                         {"Exif.GPSInfo.GPSLatitudeRef", "N"},
                         {"Exif.GPSInfo.GPSLatitude", "48/1 12/1 613/20"}};

/// Some of the makers' own notes, by the make that tells how they are laid out.
const std::map<std::string, Entries> kMakers = {
    {"Canon", {{"Exif.Canon.SerialNumber", "12345"}, {"Exif.CanonCs.ISOSpeed", "15"}}},
    {"NIKON CORPORATION", {{"Exif.Nikon3.SerialNumber", "12345"}, {"Exif.Nikon3.ISOSpeed", "0 400"}}},
    {"OLYMPUS IMAGING CORP.", {{"Exif.Olympus2.CameraID", "12345"}}},
    {"FUJIFILM", {{"Exif.Fujifilm.SerialNumber", "12345"}}},
    {"Panasonic", {{"Exif.Panasonic.InternalSerialNumber", "12345"}}},
    {"PENTAX", {{"Exif.Pentax.ISO", "5"}}},
    {"SONY", {{"Exif.Sony1.Quality", "2"}}}};

void writeJpegs(const std::string &folder) {
    const TestPicture picture = noise(24, 17);
    writeJpeg(folder + "baseline.jpg", picture);
    addExif(folder + "baseline.jpg", kCamera);
    writeJpeg(folder + "progressive.jpg", picture, {.progressive = true});
    writeJpeg(folder + "grey.jpg", picture,
              {.samples = JpegOptions::kGray, .densityUnit = 2, .xDensity = 100, .yDensity = 50});
    writeJpeg(folder + "cmyk.jpg", picture, {.samples = JpegOptions::kAdobeCmyk});
    writeJpeg(folder + "profile.jpg", picture, {.profile = srgbProfile()});
    for (const auto &[make, notes] : kMakers) {
        const std::string path = folder + make.substr(0, 5) + ".jpg";
        Entries entries = notes;
        entries["Exif.Image.Make"] = make;
        writeJpeg(path, TestPicture(8, 8));
        addExif(path, entries);
    }
}

void writeTiffs(const std::string &folder) {
    const std::map<std::string, TiffOptions> files = {
        {"plain", {.orientation = 4}},
        {"grey", {.samples = 1}},
        {"16-bit", {.bits = 16}},
        {"16-bit-profile", {.bits = 16, .profile = srgbProfile()}},
        {"planes", {.planes = PLANARCONFIG_SEPARATE}},
        {"tiles", {.tiled = true}},
        {"tiled-planes", {.bits = 16, .planes = PLANARCONFIG_SEPARATE, .tiled = true}},
        {"alpha", {.samples = 4}},
        {"lzw", {.compression = COMPRESSION_LZW}},
        {"deflate", {.bits = 16, .compression = COMPRESSION_ADOBE_DEFLATE}},
        {"packbits", {.compression = COMPRESSION_PACKBITS}},
        {"jpeg", {.compression = COMPRESSION_JPEG}}};
    for (const auto &[name, options] : files)
        writeTiff(folder + name + ".tif", options);
    addExif(folder + "plain.tif", kCamera);
}

void writeDngs(const std::string &folder) {
    const scene::DngEntries entries{.orientation = 6,
                                    .xResolution = scene::Fraction{300, 1},
                                    .yResolution = scene::Fraction{150, 1},
                                    .exposureTime = scene::Fraction{1, 125},
                                    .fNumber = scene::Fraction{4, 1},
                                    .iso = 640,
                                    .exposureBias = scene::Fraction{-2, 3},
                                    .focalLength = scene::Fraction{245, 10}};
    writeDng(folder + "camera.dng", noise(32, 24), entries);
    std::vector<uint8_t> bytes = readFile(folder + "camera.dng");
    bytes[2] = 0x55; // the magic number of RW2, which is laid out alike
    writeFile(folder + "camera.rw2", bytes);
}

/// What this project writes itself.
void writeResults(const std::string &folder) {
    const TestPicture picture = noise(20, 10);
    for (const char *name : {"result.png", "result.jpg", "result.tif"})
        if (const auto error = writePicture(
                folder + name, {picture.samples.data(), picture.width, picture.height, 60, PixelOrder::Rgb},
                {}, {.jpegQuality = 50}))
            throw std::runtime_error(error->path + " " + error->reason);
}

} // namespace

int main(int argc, char **argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: make_corpus FOLDER\n");
        return 2;
    }
    try {
        const std::string folder = std::string(argv[1]) + "/";
        std::filesystem::create_directories(folder);
        writeJpegs(folder);
        writeTiffs(folder);
        writeDngs(folder);
        writeResults(folder);
    } catch (const std::exception &error) {
        std::fprintf(stderr, "make_corpus: %s\n", error.what());
        return 1;
    }
    return 0;
}
