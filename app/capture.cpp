// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/capture.h"

#include <array>
#include <cmath>
#include <cstdio>
#include <utility>

#include "app/exif_reader.h"
#include "app/photograph_type.h"
#include "app/raw_reader.h"

namespace tristop {
namespace {

std::string textAt(const Exiv2::ExifData &exif, Exiv2::ExifData::const_iterator tag) {
    if (tag == exif.end())
        return "";
    const std::string text = tag->toString();
    const size_t last = text.find_last_not_of(std::string_view(" \0", 2));
    return last == std::string::npos ? "" : text.substr(0, last + 1);
}

std::string textAt(const Exiv2::ExifData &exif, const char *tag) {
    return textAt(exif, exif.findKey(Exiv2::ExifKey(tag)));
}

/// "2024:05:31 18:30:00"
std::optional<CameraTime> parseTime(const std::string &text) {
    using namespace std::chrono;
    std::array<unsigned, 6> part{};
    if (std::sscanf(text.c_str(), "%4u:%2u:%2u %2u:%2u:%2u", &part[0], &part[1], &part[2], &part[3], &part[4],
                    &part[5]) != 6)
        return std::nullopt;
    const year_month_day date(year(static_cast<int>(part[0])), month(part[1]), day(part[2]));
    if (!date.ok() || part[0] == 0 || part[3] > 23 || part[4] > 59 || part[5] > 60)
        return std::nullopt;
    return sys_days(date) + hours(part[3]) + minutes(part[4]) + seconds(part[5]);
}

/// Decimals of a second: "5" is half a second.
std::chrono::microseconds parseSubSeconds(const std::string &text) {
    int64_t microseconds = 0, weight = 100'000;
    for (const char digit : text) {
        if (digit < '0' || digit > '9')
            break;
        microseconds += (digit - '0') * weight;
        weight /= 10;
    }
    return std::chrono::microseconds(microseconds);
}

std::string bodyNumber(const Exiv2::ExifData &exif) {
    for (const char *tag : {"Exif.Photo.BodySerialNumber", "Exif.Image.CameraSerialNumber"})
        if (const std::string number = textAt(exif, tag); !number.empty())
            return number;
    return textAt(exif, Exiv2::serialNumber(exif)); // of the makers' own notes
}

std::optional<CameraTime> captureTime(const Exiv2::ExifData &exif) {
    constexpr std::array<std::pair<const char *, const char *>, 3> kTags = {
        {{"Exif.Photo.DateTimeOriginal", "Exif.Photo.SubSecTimeOriginal"},
         {"Exif.Image.DateTimeOriginal", "Exif.Photo.SubSecTimeOriginal"},
         {"Exif.Photo.DateTimeDigitized", "Exif.Photo.SubSecTimeDigitized"}}};
    for (const auto &[timeTag, subSecondsTag] : kTags)
        if (const auto time = parseTime(textAt(exif, timeTag)))
            return *time + parseSubSeconds(textAt(exif, subSecondsTag));
    return std::nullopt;
}

/// In seconds, 0 when it is unknown. Cameras that lack the plain entry may give the APEX value.
double exposureSeconds(const Exiv2::ExifData &exif) {
    constexpr double kLongest = 24 * 60 * 60;
    double seconds = numberAt(exif, Exiv2::exposureTime(exif));
    if (const auto apex = Exiv2::shutterSpeedValue(exif); seconds == 0 && apex != exif.end())
        seconds = std::exp2(-numberAt(exif, apex));
    return seconds > 0 && seconds <= kLongest ? seconds : 0;
}

double apertureNumber(const Exiv2::ExifData &exif) {
    const double number = numberAt(exif, Exiv2::fNumber(exif));
    if (const auto apex = Exiv2::apertureValue(exif); number == 0 && apex != exif.end())
        return std::exp2(numberAt(exif, apex) / 2);
    return number;
}

void setExposure(const Exiv2::ExifData &exif, Capture &capture) {
    if (const auto bias = Exiv2::exposureBiasValue(exif); bias != exif.end())
        capture.exposureBias = numberAt(exif, bias);
    const double seconds = exposureSeconds(exif);
    if (seconds == 0)
        return;
    capture.exposureTime = std::chrono::microseconds(static_cast<int64_t>(seconds * 1e6));
    // A lens without contacts tells no aperture; it then is the same throughout a bracket.
    const double aperture = apertureNumber(exif), iso = numberAt(exif, Exiv2::isoSpeed(exif));
    const double exposure =
        std::log2(seconds) + std::log2(iso > 0 ? iso / 100 : 1) - 2 * std::log2(aperture > 0 ? aperture : 1);
    if (std::isfinite(exposure))
        capture.exposure = exposure;
}

/// Sets the size. Entries of RAW files tell that of a preview or of the whole sensor, so their decoder is
/// asked.
std::optional<std::string> setSize(const std::string &path, const ExifHeader &file, Capture &capture) {
    PictureHeader header;
    header.width = file.width;
    header.height = file.height;
    if (typeBySuffix(path) == PhotographType::Raw)
        if (auto raw = readRawHeader(path, header); raw.problem)
            return raw.problem;
    if (header.width <= 0 || header.height <= 0)
        return "is no photograph that can be read";
    const double entry = numberAt(file.exif, "Exif.Image.Orientation");
    const double orientation = entry != 0 ? entry : header.orientation;
    const bool quarterTurn = orientation >= 5 && orientation <= 8;
    capture.width = quarterTurn ? header.height : header.width;
    capture.height = quarterTurn ? header.width : header.height;
    return std::nullopt;
}

} // namespace

std::optional<std::string> readCapture(const std::string &path, Capture &capture) {
    Capture result;
    const ExifHeader file = readExifHeader(path);
    const Exiv2::ExifData &exif = file.exif;
    if (auto problem = setSize(path, file, result))
        return problem;
    if (textAt(exif, "Exif.Image.Software").starts_with("Tristop "))
        return "is a merged picture"; // with the camera's data of one of its photographs
    result.camera =
        textAt(exif, "Exif.Image.Make") + ' ' + textAt(exif, "Exif.Image.Model") + ' ' + bodyNumber(exif);
    result.time = captureTime(exif);
    setExposure(exif, result);
    capture = std::move(result);
    return std::nullopt;
}

} // namespace tristop
