// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <cstdint>

namespace tristop {

/// Histogram of a picture: for each channel and value the number of pixels.
struct IIHistogramData {
    std::array<int64_t, 256> rData{};
    std::array<int64_t, 256> gData{};
    std::array<int64_t, 256> bData{};
    int64_t max = 0; ///< the largest count in any of the three
};

} // namespace tristop
