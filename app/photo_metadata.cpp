// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/photo_metadata.h"

#include <cmath>

#include "app/exif_reader.h"

namespace tristop {
namespace {

float floatAt(const Exiv2::ExifData &exif, const char *tag) {
    return static_cast<float>(numberAt(exif, tag));
}

/// Entry `index` of a numeric tag; 0 for a number that no tag can mean.
int64_t wholeNumberAt(const Exiv2::ExifData &exif, const char *tag, long index = 0) {
    const double number = numberAt(exif, tag, index);
    return std::abs(number) <= 0x1p32 ? static_cast<int64_t>(number) : 0;
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
            result.isoSpeedRatings.push_back(wholeNumberAt(exif, kIso, i));
    const auto index = exif.findKey(Exiv2::ExifKey("Exif.Iop.InteroperabilityIndex"));
    if (index != exif.end())
        result.interoperabilityIndex = index->toString();
    return result;
}

/// What the RAW decoder knows instead of EXIF data, if it knows anything.
std::optional<ExifMetadata> exifOfDecoder(const PictureHeader &header) {
    ExifMetadata result;
    if (header.isoSpeed > 0 && header.isoSpeed <= 0x1p32f)
        result.isoSpeedRatings.push_back(static_cast<int64_t>(header.isoSpeed));
    if (std::isfinite(header.focalLength))
        result.focalLength = header.focalLength;
    if (result.isoSpeedRatings.empty() && result.focalLength == 0)
        return std::nullopt;
    return result;
}

} // namespace

ImageMetadata imageMetadata(std::span<const uint8_t> file, const PictureHeader &header) {
    ImageMetadata result;
    result.pixelWidth = static_cast<float>(header.width);
    result.pixelHeight = static_cast<float>(header.height);
    result.orientation = header.orientation;
    setResolution(result, header.xDensity, header.yDensity);
    const Exiv2::ExifData exif = readExif(file);
    if (exif.empty()) {
        result.exif = exifOfDecoder(header);
        return result;
    }
    setExifResolution(result, exif);
    constexpr const char *kOrientation = "Exif.Image.Orientation";
    if (exif.findKey(Exiv2::ExifKey(kOrientation)) != exif.end())
        result.orientation = wholeNumberAt(exif, kOrientation);
    result.exif = exifMetadata(exif);
    return result;
}

} // namespace tristop
