// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/camera_exif.h"

#include <array>
#include <exception>

#include "app/exif_reader.h"

namespace tristop {
namespace {

/// An EXIF block goes into one JPEG marker of less than 64 KiB.
constexpr long kMostBytes = 32 * 1024;

constexpr std::array kCameraTags = {
    "Exif.Image.Make",
    "Exif.Image.Model",
    "Exif.Image.DateTime",
    "Exif.Image.Artist",
    "Exif.Image.Copyright",
    "Exif.Image.ImageDescription",
    "Exif.Photo.LensMake",
    "Exif.Photo.LensModel",
    "Exif.Photo.LensSpecification",
    "Exif.Photo.DateTimeOriginal",
    "Exif.Photo.DateTimeDigitized",
    "Exif.Photo.OffsetTime",
    "Exif.Photo.OffsetTimeOriginal",
    "Exif.Photo.OffsetTimeDigitized",
    "Exif.Photo.SubSecTime",
    "Exif.Photo.SubSecTimeOriginal",
    "Exif.Photo.SubSecTimeDigitized",
    "Exif.Photo.ExposureTime",
    "Exif.Photo.FNumber",
    "Exif.Photo.ExposureProgram",
    "Exif.Photo.ISOSpeedRatings",
    "Exif.Photo.SensitivityType",
    "Exif.Photo.ExposureBiasValue",
    "Exif.Photo.MeteringMode",
    "Exif.Photo.Flash",
    "Exif.Photo.WhiteBalance",
    "Exif.Photo.FocalLength",
    "Exif.Photo.FocalLengthIn35mmFilm",
};

std::vector<uint8_t> encode(const Exiv2::ExifData &exif) {
    Exiv2::Blob block;
    if (!exif.empty())
        Exiv2::ExifParser::encode(block, Exiv2::littleEndian, exif);
    return block;
}

} // namespace

std::vector<uint8_t> readCameraExif(const std::string &path, bool withPlace) {
    const Exiv2::ExifData source = readExifHeader(path).exif;
    Exiv2::ExifData kept;
    long bytes = 0;
    const auto keep = [&](const Exiv2::Exifdatum &entry) {
        if (entry.count() == 0 || bytes + entry.size() > kMostBytes)
            return;
        bytes += entry.size();
        kept[entry.key()].setValue(&entry.value());
    };
    try {
        for (const char *tag : kCameraTags)
            if (const auto entry = source.findKey(Exiv2::ExifKey(tag)); entry != source.end())
                keep(*entry);
        for (const Exiv2::Exifdatum &entry : source)
            if (withPlace && entry.groupName() == "GPSInfo")
                keep(entry);
        return encode(kept);
    } catch (const std::exception &) {
        return {};
    }
}

std::vector<uint8_t> finishedExif(const std::vector<uint8_t> &cameraExif, int32_t width, int32_t height,
                                  int32_t dotsPerInch) {
    try {
        Exiv2::ExifData exif;
        if (!cameraExif.empty())
            Exiv2::ExifParser::decode(exif, cameraExif.data(), static_cast<uint32_t>(cameraExif.size()));
        const Exiv2::URational resolution(static_cast<uint32_t>(dotsPerInch), 1);
        constexpr uint16_t kInch = 2, kSrgb = 1, kUpright = 1;
        exif["Exif.Image.Orientation"] = kUpright;
        exif["Exif.Image.XResolution"] = resolution;
        exif["Exif.Image.YResolution"] = resolution;
        exif["Exif.Image.ResolutionUnit"] = kInch;
        exif["Exif.Image.Software"] = "Tristop " TRISTOP_VERSION;
        exif["Exif.Photo.ExifVersion"].setValue("48 50 51 50");     // the digits of 2.32
        exif["Exif.Photo.FlashpixVersion"].setValue("48 49 48 48"); // 1.00, which EXIF demands
        exif["Exif.Photo.ColorSpace"] = kSrgb;
        exif["Exif.Photo.PixelXDimension"] = static_cast<uint32_t>(width);
        exif["Exif.Photo.PixelYDimension"] = static_cast<uint32_t>(height);
        return encode(exif);
    } catch (const std::exception &) {
        return {};
    }
}

} // namespace tristop
