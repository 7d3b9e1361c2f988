// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/exif_reader.h"

#include <cmath>
#include <exception>
#include <filesystem>
#include <mutex>

namespace tristop {

namespace {

/// Opens with `open`, which gives an Exiv2 image.
template <typename Open>
ExifHeader read(Open open) {
    // Exiv2's XMP toolkit, which reads along, keeps global state.
    static std::mutex exiv2;
    const std::lock_guard lock(exiv2);
    Exiv2::LogMsg::setLevel(Exiv2::LogMsg::mute);
    try {
        const auto file = open();
        file->readMetadata();
        return {file->exifData(), file->pixelWidth(), file->pixelHeight()};
    } catch (const std::exception &) {
        return {};
    }
}

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

} // namespace

ExifHeader readExifHeader(const std::string &path) {
    // Exiv2 takes "-" and what looks like a URL for something else than a file's name.
    return read([&] { return Exiv2::ImageFactory::open(std::filesystem::absolute(path).string()); });
}

Exiv2::ExifData readExif(std::span<const uint8_t> file) {
    return read([&] { return Exiv2::ImageFactory::open(file.data(), static_cast<long>(file.size())); }).exif;
}

double numberAt(const Exiv2::ExifData &exif, Exiv2::ExifData::const_iterator tag, long index) {
    if (tag == exif.end() || index >= static_cast<long>(tag->count()) || !isNumeric(tag->typeId()))
        return 0;
    // Exiv2 gives 0 for a fraction without a denominator.
    const double number = tag->toFloat(index);
    return std::isfinite(number) ? number : 0.0;
}

double numberAt(const Exiv2::ExifData &exif, const char *tag, long index) {
    return numberAt(exif, exif.findKey(Exiv2::ExifKey(tag)), index);
}

} // namespace tristop
