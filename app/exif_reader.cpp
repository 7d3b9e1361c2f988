// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/exif_reader.h"

#include <exception>
#include <filesystem>
#include <mutex>

namespace tristop {

ExifHeader readExifHeader(const std::string &path) {
    // Exiv2's XMP toolkit, which reads along, keeps global state.
    static std::mutex exiv2;
    const std::lock_guard lock(exiv2);
    Exiv2::LogMsg::setLevel(Exiv2::LogMsg::mute);
    try {
        // Exiv2 takes "-" and what looks like a URL for something else than a file's name.
        const auto file = Exiv2::ImageFactory::open(std::filesystem::absolute(path).string());
        file->readMetadata();
        return {file->exifData(), file->pixelWidth(), file->pixelHeight()};
    } catch (const std::exception &) {
        return {};
    }
}

double numberAt(const Exiv2::ExifData &exif, Exiv2::ExifData::const_iterator tag, long index) {
    if (tag == exif.end() || index >= static_cast<long>(tag->count()))
        return 0;
    const Exiv2::Rational number = tag->toRational(index);
    return number.second != 0 ? static_cast<double>(number.first) / number.second : 0.0;
}

double numberAt(const Exiv2::ExifData &exif, const char *tag, long index) {
    return numberAt(exif, exif.findKey(Exiv2::ExifKey(tag)), index);
}

} // namespace tristop
