// SPDX-License-Identifier: GPL-3.0-or-later
#include "tools/scene_renderer/dng.h"

#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdlib>
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

/// Bits one after the other, the highest of each value first.
class BitWriter {
public:
    explicit BitWriter(Bytes &bytes) : bytes(bytes) {}

    void write(std::uint32_t value, int count) {
        for (int bit = count - 1; bit >= 0; --bit) {
            current = static_cast<std::uint8_t>(current << 1 | (value >> bit & 1));
            if (++filled == 8)
                finishByte();
        }
    }
    /// Fills up the last byte.
    void align(bool with) {
        while (filled > 0)
            write(with, 1);
    }
    /// Follows bytes of all ones by zero, as JPEG data do.
    void stuff() { stuffed = true; }

private:
    void finishByte() {
        bytes.push_back(current);
        if (stuffed && current == 0xff)
            bytes.push_back(0);
        current = 0;
        filled = 0;
    }

    Bytes &bytes;
    std::uint8_t current = 0;
    int filled = 0;
    bool stuffed = false;
};

void appendPacked(Bytes &file, const Mosaic &readings, int bits) {
    const auto rowSamples = static_cast<std::size_t>(readings.width * readings.samples);
    BitWriter writer(file);
    for (std::size_t i = 0; i < readings.levels.size(); ++i) {
        writer.write(readings.levels[i], bits);
        if ((i + 1) % rowSamples == 0)
            writer.align(false);
    }
}

/// The lossless process of ITU T.81: each sample as its difference from the one before (of the same channel)
/// with a code of five bits for the difference's number of bits.
void appendLosslessJpeg(Bytes &file, const Mosaic &readings, int bits) {
    const auto samples = static_cast<std::size_t>(readings.samples);
    const auto rowSamples = static_cast<std::size_t>(readings.width) * samples;
    const auto marker = [&file](std::uint8_t code, const Bytes &content) {
        const std::size_t length = content.size() + 2;
        file.insert(file.end(),
                    {0xff, code, static_cast<std::uint8_t>(length >> 8), static_cast<std::uint8_t>(length)});
        file.insert(file.end(), content.begin(), content.end());
    };
    const auto high = [](int value) { return static_cast<std::uint8_t>(value >> 8); };
    const auto low = [](int value) { return static_cast<std::uint8_t>(value); };
    file.insert(file.end(), {0xff, 0xd8});
    Bytes frame = {low(bits),           high(readings.height), low(readings.height), high(readings.width),
                   low(readings.width), low(readings.samples)};
    Bytes scan = {low(readings.samples)};
    for (int channel = 0; channel < readings.samples; ++channel) {
        frame.insert(frame.end(), {low(channel), 0x11, 0}); // not reduced in size
        scan.insert(scan.end(), {low(channel), 0});         // by the first code
    }
    marker(0xc3, frame);
    constexpr int kCodeBits = 5, kLengths = 17; // of differences: 0 to 16 bits
    Bytes codes(1 + 16 + kLengths);
    codes[kCodeBits] = kLengths;
    for (std::size_t i = 0; i < kLengths; ++i)
        codes[17 + i] = static_cast<std::uint8_t>(i);
    marker(0xc4, codes);
    scan.insert(scan.end(), {1, 0, 0}); // predicted from the left
    marker(0xda, scan);
    BitWriter writer(file);
    writer.stuff();
    for (std::size_t i = 0; i < readings.levels.size(); ++i) {
        const bool firstColumn = i % rowSamples < samples, firstRow = i < rowSamples;
        const int before = !firstColumn ? readings.levels[i - samples]
                           : !firstRow  ? readings.levels[i - rowSamples]
                                        : 1 << (bits - 1);
        const auto difference = static_cast<std::int16_t>(readings.levels[i] - before); // modulo 2^16
        const int length = static_cast<int>(std::bit_width(static_cast<unsigned>(std::abs(difference))));
        writer.write(static_cast<std::uint32_t>(length), kCodeBits);
        if (length < 16) // a negative one less one, in so many bits
            writer.write(static_cast<std::uint32_t>(difference < 0 ? difference - 1 : difference), length);
    }
    writer.align(true);
    file.insert(file.end(), {0xff, 0xd9});
}

/// The readings as they are stored.
Bytes storedReadings(const Mosaic &mosaic, const DngStorage &storage) {
    Mosaic readings = mosaic;
    for (std::uint16_t &level : readings.levels) {
        const double share = static_cast<double>(level - kBlackLevel) / (kWhiteLevel - kBlackLevel);
        level = static_cast<std::uint16_t>(storage.black + share * (storage.white - storage.black) + 0.5);
    }
    Bytes bytes;
    bytes.reserve(2 * readings.levels.size());
    if (storage.losslessJpeg)
        appendLosslessJpeg(bytes, readings, storage.bits);
    else if (storage.bits < 16)
        appendPacked(bytes, readings, storage.bits);
    else
        for (const std::uint16_t level : readings.levels)
            append(bytes, level, 2);
    return bytes;
}

} // namespace

std::vector<std::uint8_t> encodeDng(const Mosaic &mosaic, const DngEntries &entries,
                                    const DngStorage &storage) {
    const Directory exposure = exposureDirectory(entries);
    const Bytes pixels = storedReadings(mosaic, storage);
    const auto samples = static_cast<std::uint16_t>(mosaic.samples);
    Directory main;
    main.addLong(254, 0); // the full picture
    main.addLong(256, static_cast<std::uint32_t>(mosaic.width));
    main.addLong(257, static_cast<std::uint32_t>(mosaic.height));
    main.addShorts(258, std::vector(samples, static_cast<std::uint16_t>(storage.bits)));
    main.addShort(259, storage.losslessJpeg ? 7 : 1); // compression
    main.addShort(262, samples == 1 ? 32803 : 34892); // behind a colour filter, or linear
    main.addText(271, entries.make);
    main.addText(272, entries.model);
    main.addShort(274, entries.orientation);
    main.addShort(277, samples);
    main.addLong(278, static_cast<std::uint32_t>(mosaic.height));
    main.addLong(279, static_cast<std::uint32_t>(pixels.size()));
    main.addFraction(282, kRational, entries.xResolution);
    main.addFraction(283, kRational, entries.yResolution);
    main.addShort(296, 2); // inches
    main.addText(306, entries.dateTime);
    if (samples == 1) {
        main.addShorts(33421, std::array<std::uint16_t, 2>{2, 2}); // the filter's repeat
        const auto [top, left, bottom, right] = storage.activeArea.value_or(std::array<std::uint16_t, 4>{});
        std::array<std::uint8_t, 4> filter{}; // from the active area's corner on
        for (int i = 0; i < 4; ++i)
            filter[static_cast<std::size_t>(i)] =
                static_cast<std::uint8_t>(Mosaic::channelAt((left + i % 2) % 2, (top + i / 2) % 2));
        main.addBytes(33422, filter);
    }
    main.addBytes(50706, std::array<std::uint8_t, 4>{1, 4, 0, 0}); // DNG version
    main.addBytes(50707, std::array<std::uint8_t, 4>{1, 1, 0, 0}); // and the oldest that can read it
    main.addText(50708, entries.make + ' ' + entries.model);       // unique camera model
    main.addShorts(50714, std::vector(samples, storage.black));
    main.addShorts(50717, std::vector(samples, storage.white));
    main.addFractions(50721, kSignedRational, colorMatrix());
    std::array<Fraction, 3> neutral;
    for (std::size_t i = 0; i < neutral.size(); ++i)
        neutral[i] = inTenThousandths(kCameraNeutral[i]);
    main.addFractions(50728, kRational, neutral);
    main.addShort(50778, 21); // the matrix is for D65
    if (storage.activeArea)
        main.addShorts(50829, *storage.activeArea);
    // The places of what follows this directory; its size does not depend on them.
    constexpr std::uint32_t kHeaderSize = 8;
    main.addLong(273, 0);
    main.addLong(34665, 0);
    const std::uint32_t exposureAt = kHeaderSize + main.size();
    const std::uint32_t pixelsAt = exposureAt + exposure.size();
    main.addLong(273, pixelsAt);
    main.addLong(34665, exposureAt);

    Bytes file = {'I', 'I', 42, 0};
    file.reserve(pixelsAt + pixels.size());
    append(file, kHeaderSize, 4);
    main.write(file);
    exposure.write(file);
    file.insert(file.end(), pixels.begin(), pixels.end());
    return file;
}

} // namespace tristop::scene
