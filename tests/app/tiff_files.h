// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <tiffio.h>

namespace tristop::testing {

struct TiffOptions {
    uint16_t bits = 8;
    uint16_t samples = 3; ///< 1 is grey, more are RGB and whatever else
    uint16_t planes = PLANARCONFIG_CONTIG;
    uint16_t compression = COMPRESSION_NONE;
    uint16_t orientation = 1;
    bool tiled = false;
    std::vector<uint8_t> profile = {}; ///< ICC
};

/// Channel `channel` of column `x` of the picture that writeTiff writes, in 16 bits: 0 to a half of white.
uint16_t tiffSampleAt(int x, int channel);

/// Writes a picture of 20 x 10 pixels.
void writeTiff(const std::string &path, const TiffOptions &options);

} // namespace tristop::testing
