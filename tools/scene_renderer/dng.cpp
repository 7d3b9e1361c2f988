// SPDX-License-Identifier: GPL-3.0-or-later
#include "tools/scene_renderer/dng.h"

#include <cmath>
#include <cstddef>
#include <map>
#include <span>
#include <utility>

namespace tristop::scene {

namespace {

using Bytes = std::vector<std::uint8_t>;

// Types of TIFF entries.
constexpr std::uint16_t kByte = 1, kText = 2, kShort = 3, kLong = 4, kRational = 5, kSignedRational = 10;

void append(Bytes &bytes, std::uint32_t value, std::size_t size) {
    for (std::size_t i = 0; i < size; ++i)
        bytes.push_back(static_cast<std::uint8_t>(value >> (8 * i)));
}

/// A TIFF directory in the making, little-endian.
class Directory {
public:
    void addBytes(std::uint16_t tag, std::span<const std::uint8_t> values) {
        entries[tag] = {kByte, static_cast<std::uint32_t>(values.size()),
                        Bytes(values.begin(), values.end())};
    }
    void addText(std::uint16_t tag, const std::string &text) {
        if (text.empty())
            return;
        Bytes bytes(text.begin(), text.end());
        bytes.push_back(0);
        entries[tag] = {kText, static_cast<std::uint32_t>(bytes.size()), std::move(bytes)};
    }
    void addShorts(std::uint16_t tag, std::span<const std::uint16_t> values) {
        Bytes bytes;
        for (const std::uint16_t value : values)
            append(bytes, value, 2);
        entries[tag] = {kShort, static_cast<std::uint32_t>(values.size()), std::move(bytes)};
    }
    void addShort(std::uint16_t tag, std::optional<std::uint16_t> value) {
        if (value)
            addShorts(tag, std::array{*value});
    }
    void addLong(std::uint16_t tag, std::uint32_t value) {
        Bytes bytes;
        append(bytes, value, 4);
        entries[tag] = {kLong, 1, std::move(bytes)};
    }
    void addFractions(std::uint16_t tag, std::uint16_t type, std::span<const Fraction> values) {
        Bytes bytes;
        for (const auto &[numerator, denominator] : values) {
            append(bytes, static_cast<std::uint32_t>(numerator), 4);
            append(bytes, static_cast<std::uint32_t>(denominator), 4);
        }
        entries[tag] = {type, static_cast<std::uint32_t>(values.size()), std::move(bytes)};
    }
    void addFraction(std::uint16_t tag, std::uint16_t type, const std::optional<Fraction> &value) {
        if (value)
            addFractions(tag, type, {&*value, 1});
    }

    /// Size in the file, an even number, with the values that do not fit into their entries.
    std::uint32_t size() const {
        std::size_t bytes = 2 + 12 * entries.size() + 4;
        for (const auto &[tag, entry] : entries)
            bytes += outside(entry);
        return static_cast<std::uint32_t>(bytes);
    }

    /// Writes the directory to the end of `file`.
    void write(Bytes &file) const {
        auto outsideAt = static_cast<std::uint32_t>(file.size() + 2 + 12 * entries.size() + 4);
        append(file, static_cast<std::uint32_t>(entries.size()), 2);
        for (const auto &[tag, entry] : entries) {
            append(file, tag, 2);
            append(file, entry.type, 2);
            append(file, entry.count, 4);
            if (outside(entry) > 0) {
                append(file, outsideAt, 4);
                outsideAt += static_cast<std::uint32_t>(outside(entry));
            } else {
                Bytes value = entry.values;
                value.resize(4);
                file.insert(file.end(), value.begin(), value.end());
            }
        }
        append(file, 0, 4); // no further directory
        for (const auto &[tag, entry] : entries)
            if (outside(entry) > 0) {
                file.insert(file.end(), entry.values.begin(), entry.values.end());
                file.resize(file.size() + entry.values.size() % 2);
            }
    }

private:
    struct Entry {
        std::uint16_t type = 0;
        std::uint32_t count = 0;
        Bytes values;
    };

    static std::size_t outside(const Entry &entry) {
        return entry.values.size() <= 4 ? 0 : entry.values.size() + entry.values.size() % 2;
    }

    std::map<std::uint16_t, Entry> entries; // in the order of their tags, as the format wants it
};

Fraction inTenThousandths(double value) {
    return {static_cast<std::int32_t>(std::lround(value * 10000)), 10000};
}

/// From XYZ to what the camera reads in daylight (D65), which is not the light of its white balance: through
/// linear sRGB (IEC 61966-2-1) and the filters.
std::array<Fraction, 9> colorMatrix() {
    constexpr std::array<std::array<double, 3>, 3> kXyzToSrgb = {
        {{3.2406, -1.5372, -0.4986}, {-0.9689, 1.8758, 0.0415}, {0.0557, -0.2040, 1.0570}}};
    constexpr std::array<double, 3> kDaylightNeutral = {0.7, 1, 0.5};
    std::array<Fraction, 9> matrix;
    for (std::size_t row = 0; row < 3; ++row)
        for (std::size_t column = 0; column < 3; ++column) {
            double value = 0;
            for (std::size_t i = 0; i < 3; ++i)
                value += kCameraFilters[row][i] * kXyzToSrgb[i][column];
            matrix[3 * row + column] = inTenThousandths(kDaylightNeutral[row] * value);
        }
    return matrix;
}

Directory exposureDirectory(const DngEntries &entries) {
    Directory directory;
    directory.addFraction(33434, kRational, entries.exposureTime);
    directory.addFraction(33437, kRational, entries.fNumber);
    directory.addShort(34855, entries.iso);
    directory.addText(36867, entries.dateTime); // when it was taken
    directory.addFraction(37380, kSignedRational, entries.exposureBias);
    directory.addFraction(37386, kRational, entries.focalLength);
    return directory;
}

} // namespace

std::vector<std::uint8_t> encodeDng(const Mosaic &mosaic, const DngEntries &entries) {
    const Directory exposure = exposureDirectory(entries);
    const auto pixelBytes = static_cast<std::uint32_t>(2 * mosaic.levels.size());
    Directory main;
    main.addLong(254, 0); // the full picture
    main.addLong(256, static_cast<std::uint32_t>(mosaic.width));
    main.addLong(257, static_cast<std::uint32_t>(mosaic.height));
    main.addShort(258, 16);    // bits a sample
    main.addShort(259, 1);     // not compressed
    main.addShort(262, 32803); // behind a colour filter
    main.addText(271, entries.make);
    main.addText(272, entries.model);
    main.addShort(274, entries.orientation);
    main.addShort(277, 1); // samples a pixel
    main.addLong(278, static_cast<std::uint32_t>(mosaic.height));
    main.addLong(279, pixelBytes);
    main.addFraction(282, kRational, entries.xResolution);
    main.addFraction(283, kRational, entries.yResolution);
    main.addShort(296, 2); // inches
    main.addText(306, entries.dateTime);
    main.addShorts(33421, std::array<std::uint16_t, 2>{2, 2});     // the filter's repeat
    main.addBytes(33422, std::array<std::uint8_t, 4>{0, 1, 1, 2}); // red, green, green, blue
    main.addBytes(50706, std::array<std::uint8_t, 4>{1, 4, 0, 0}); // DNG version
    main.addBytes(50707, std::array<std::uint8_t, 4>{1, 1, 0, 0}); // and the oldest that can read it
    main.addText(50708, entries.make + ' ' + entries.model);       // unique camera model
    main.addShort(50714, kBlackLevel);
    main.addShort(50717, kWhiteLevel);
    main.addFractions(50721, kSignedRational, colorMatrix());
    std::array<Fraction, 3> neutral;
    for (std::size_t i = 0; i < neutral.size(); ++i)
        neutral[i] = inTenThousandths(kCameraNeutral[i]);
    main.addFractions(50728, kRational, neutral);
    main.addShort(50778, 21); // the matrix is for D65
    // The places of what follows this directory; its size does not depend on them.
    constexpr std::uint32_t kHeaderSize = 8;
    main.addLong(273, 0);
    main.addLong(34665, 0);
    const std::uint32_t exposureAt = kHeaderSize + main.size();
    const std::uint32_t pixelsAt = exposureAt + exposure.size();
    main.addLong(273, pixelsAt);
    main.addLong(34665, exposureAt);

    Bytes file = {'I', 'I', 42, 0};
    file.reserve(std::size_t{pixelsAt} + pixelBytes);
    append(file, kHeaderSize, 4);
    main.write(file);
    exposure.write(file);
    for (const std::uint16_t level : mosaic.levels)
        append(file, level, 2);
    return file;
}

} // namespace tristop::scene
