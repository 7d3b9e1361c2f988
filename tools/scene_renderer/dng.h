// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tools/scene_renderer/mosaic.h"

namespace tristop::scene {

/// Numerator and denominator.
using Fraction = std::array<std::int32_t, 2>;

/// What the camera writes beside the readings. Empty texts and entries are left out of the file.
struct DngEntries {
    std::string make = "Tristop";
    std::string model = "Scene renderer";
    std::string dateTime = {}; ///< "2025:06:21 09:30:00"
    std::optional<std::uint16_t> orientation = 1;
    std::optional<Fraction> xResolution = {}, yResolution = {}; ///< dots an inch
    std::optional<Fraction> exposureTime = {};                  ///< seconds
    std::optional<Fraction> fNumber = {};
    std::optional<std::uint16_t> iso = {};
    std::optional<Fraction> exposureBias = {}; ///< EV
    std::optional<Fraction> focalLength = {};  ///< millimetres
};

/// How the readings are stored.
struct DngStorage {
    int bits = 16;             ///< of a sample, 16 or, packed without gaps, fewer
    bool losslessJpeg = false; ///< compressed
    std::uint16_t black = kBlackLevel, white = kWhiteLevel; ///< that the readings are stretched to
    /// The part that is no masked border: top, left, bottom, right.
    std::optional<std::array<std::uint16_t, 4>> activeArea = {};
};

/// A DNG file (Adobe Digital Negative 1.4): the mosaic behind all entries, with the colour matrix and white
/// balance that bring it to linear sRGB.
std::vector<std::uint8_t> encodeDng(const Mosaic &mosaic, const DngEntries &entries = {},
                                    const DngStorage &storage = {});

} // namespace tristop::scene
