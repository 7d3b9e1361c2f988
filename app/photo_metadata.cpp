// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/photo_metadata.h"

#include <cmath>
#include <exception>
#include <mutex>

#include <exiv2/exiv2.hpp>

namespace tristop {
namespace {

bool isNumeric(Exiv2::TypeId type) {
    switch (type) {
    case Exiv2::unsignedByte:
    case Exiv2::signedByte:
    case Exiv2::unsignedShort:
    case Exiv2::signedShort:
    case Exiv2::unsignedLong:
    case Exiv2::signedLong:
    case Exiv2::unsignedRational:
    case Exiv2::signedRational:
    case Exiv2::tiffFloat:
    case Exiv2::tiffDouble:
        return true;
    default:
        return false;
    }
}

/// Entry `index` of a numeric tag; 0 when the tag or the entry is missing or is no finite number.
float numberAt(const Exiv2::ExifData &exif, const char *tag, long index = 0) {
    const auto entry = exif.findKey(Exiv2::ExifKey(tag));
    if (entry == exif.end() || index >= static_cast<long>(entry->count()) || !isNumeric(entry->typeId()))
        return 0;
    // Exiv2 gives 0 for a fraction without a denominator.
    const float number = entry->toFloat(index);
    return std::isfinite(number) ? number : 0.0f;
}

/// The same for whole numbers; 0 for one that no tag can mean.
int64_t wholeNumberAt(const Exiv2::ExifData &exif, const char *tag, long index = 0) {
    const float number = numberAt(exif, tag, index);
    return std::abs(number) <= 0x1p32f ? static_cast<int64_t>(number) : 0;
}

Exiv2::ExifData readExif(std::span<const uint8_t> file) {
    // Exiv2's XMP toolkit, which reads along, keeps global state.
    static std::mutex exiv2;
    const std::lock_guard lock(exiv2);
    Exiv2::LogMsg::setLevel(Exiv2::LogMsg::mute);
    try {
        const auto image = Exiv2::ImageFactory::open(file.data(), static_cast<long>(file.size()));
        image->readMetadata();
        return image->exifData();
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
