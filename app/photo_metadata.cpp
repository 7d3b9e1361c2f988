// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/photo_metadata.h"

#include <exception>
#include <filesystem>
#include <mutex>

#include <exiv2/exiv2.hpp>

#include "app/jpeg_reader.h"

namespace tristop {
namespace {

/// Entry `index` of a numeric tag; 0 when the tag, the entry or the fraction's denominator is missing.
float numberAt(const Exiv2::ExifData &exif, const char *tag, long index = 0) {
    const auto entry = exif.findKey(Exiv2::ExifKey(tag));
    if (entry == exif.end() || index >= static_cast<long>(entry->count()))
        return 0;
    const Exiv2::Rational number = entry->toRational(index);
    return number.second != 0 ? static_cast<float>(static_cast<double>(number.first) / number.second) : 0.0f;
}

Exiv2::ExifData readExif(const std::string &path) {
    // Exiv2's XMP toolkit, which reads along, keeps global state.
    static std::mutex exiv2;
    const std::lock_guard lock(exiv2);
    Exiv2::LogMsg::setLevel(Exiv2::LogMsg::mute);
    try {
        // Exiv2 takes "-" and what looks like a URL for something else than a file's name.
        const auto file = Exiv2::ImageFactory::open(std::filesystem::absolute(path).string());
        file->readMetadata();
        return file->exifData();
    } catch (const std::exception &) {
        return {};
    }
}

void setResolution(ImageMetadata &metadata, float x, float y) {
    if (x > 0 && y > 0) {
        metadata.dpiWidth = x;
        metadata.dpiHeight = y;
    }
}

/// The resolution in inches or centimetres; a unit of its own, 1, says no more than a missing entry.
void setExifResolution(ImageMetadata &metadata, const Exiv2::ExifData &exif) {
    constexpr float kNoEntry = 0, kInch = 2, kCentimetre = 3;
    const float unit = numberAt(exif, "Exif.Image.ResolutionUnit");
    if (unit != kNoEntry && unit != kInch && unit != kCentimetre)
        return;
    const float toInches = unit == kCentimetre ? 2.54f : 1.0f;
    setResolution(metadata, numberAt(exif, "Exif.Image.XResolution") * toInches,
                  numberAt(exif, "Exif.Image.YResolution") * toInches);
}

ExifMetadata exifMetadata(const Exiv2::ExifData &exif) {
    ExifMetadata result;
    result.exposureBiasValue = numberAt(exif, "Exif.Photo.ExposureBiasValue");
    result.focalLength = numberAt(exif, "Exif.Photo.FocalLength");
    constexpr const char *kIso = "Exif.Photo.ISOSpeedRatings";
    if (const auto iso = exif.findKey(Exiv2::ExifKey(kIso)); iso != exif.end())
        for (long i = 0; i < static_cast<long>(iso->count()); ++i)
            result.isoSpeedRatings.push_back(static_cast<int64_t>(numberAt(exif, kIso, i)));
    const auto index = exif.findKey(Exiv2::ExifKey("Exif.Iop.InteroperabilityIndex"));
    if (index != exif.end())
        result.interoperabilityIndex = index->toString();
    return result;
}

} // namespace

std::optional<std::string> readImageMetadata(const std::string &path, ImageMetadata &metadata) {
    JpegHeader header;
    if (auto problem = readJpegHeader(path, header))
        return problem;
    ImageMetadata result;
    result.pixelWidth = static_cast<float>(header.width);
    result.pixelHeight = static_cast<float>(header.height);
    setResolution(result, header.xDensity, header.yDensity);
    if (const Exiv2::ExifData exif = readExif(path); !exif.empty()) {
        setExifResolution(result, exif);
        result.orientation = static_cast<int64_t>(numberAt(exif, "Exif.Image.Orientation"));
        result.exif = exifMetadata(exif);
    }
    metadata = std::move(result);
    return std::nullopt;
}

} // namespace tristop
