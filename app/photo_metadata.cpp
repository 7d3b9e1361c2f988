// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/photo_metadata.h"

#include "app/exif_reader.h"
#include "app/jpeg_reader.h"

namespace tristop {
namespace {

float floatAt(const Exiv2::ExifData &exif, const char *tag) {
    return static_cast<float>(numberAt(exif, tag));
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
    const float unit = floatAt(exif, "Exif.Image.ResolutionUnit");
    if (unit != kNoEntry && unit != kInch && unit != kCentimetre)
        return;
    const float toInches = unit == kCentimetre ? 2.54f : 1.0f;
    setResolution(metadata, floatAt(exif, "Exif.Image.XResolution") * toInches,
                  floatAt(exif, "Exif.Image.YResolution") * toInches);
}

ExifMetadata exifMetadata(const Exiv2::ExifData &exif) {
    ExifMetadata result;
    result.exposureBiasValue = floatAt(exif, "Exif.Photo.ExposureBiasValue");
    result.focalLength = floatAt(exif, "Exif.Photo.FocalLength");
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
    if (const Exiv2::ExifData exif = readExifHeader(path).exif; !exif.empty()) {
        setExifResolution(result, exif);
        result.orientation = static_cast<int64_t>(numberAt(exif, "Exif.Image.Orientation"));
        result.exif = exifMetadata(exif);
    }
    metadata = std::move(result);
    return std::nullopt;
}

} // namespace tristop
