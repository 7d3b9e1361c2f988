// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/art_table.h"

namespace tristop {
namespace {

/// What one output channel makes of the corners (index: 4 red + 2 green + blue) and of the greys.
struct ChannelLook {
    std::array<uint8_t, 8> corners;
    std::array<uint8_t, kArtAxisNodes> greys;
};

constexpr std::array<ChannelLook, 3> kLook = {{
    {{0, 223, 1, 230, 21, 239, 9, 255},
     {0, 5, 11, 15, 20, 32, 51, 65, 100, 144, 181, 211, 230, 242, 249, 252, 255}},
    {{0, 37, 217, 242, 70, 129, 227, 255},
     {0, 8, 17, 26, 42, 66, 98, 127, 150, 178, 200, 221, 236, 247, 252, 255, 255}},
    {{0, 0, 69, 16, 246, 241, 255, 255},
     {0, 12, 22, 34, 40, 59, 82, 97, 126, 154, 183, 205, 217, 232, 236, 246, 255}},
}};

constexpr uint64_t kOne = 1 << 16; ///< a bent coordinate of 1

/// Trilinear mix of the corners, in units of kOne^3.
uint64_t mixCorners(const std::array<uint8_t, 8> &corners, uint64_t r, uint64_t g, uint64_t b) {
    uint64_t sum = 0;
    for (size_t i = 0; i < corners.size(); ++i) {
        const uint64_t weight =
            ((i & 4) != 0 ? r : kOne - r) * ((i & 2) != 0 ? g : kOne - g) * ((i & 1) != 0 ? b : kOne - b);
        sum += corners[i] * weight;
    }
    return sum;
}

/// The smallest coordinate whose grey comes out as at least `grey`.
uint64_t bentCoordinate(const std::array<uint8_t, 8> &corners, uint64_t grey) {
    uint64_t low = 0, high = kOne;
    while (low < high) {
        const uint64_t middle = (low + high) / 2;
        if (mixCorners(corners, middle, middle, middle) >= grey * kOne * kOne * kOne)
            high = middle;
        else
            low = middle + 1;
    }
    return low;
}

ArtTable buildArtTable() {
    ArtTable table{};
    for (size_t channel = 0; channel < kLook.size(); ++channel) {
        const ChannelLook &look = kLook[channel];
        std::array<uint64_t, kArtAxisNodes> bent;
        for (size_t k = 0; k < kArtAxisNodes; ++k)
            bent[k] = bentCoordinate(look.corners, look.greys[k]);
        size_t node = 0;
        for (const uint64_t r : bent)
            for (const uint64_t g : bent)
                for (const uint64_t b : bent) {
                    const uint64_t sum = mixCorners(look.corners, r, g, b);
                    table[channel][node++] =
                        static_cast<uint8_t>((sum + kOne * kOne * kOne / 2) / (kOne * kOne * kOne));
                }
    }
    return table;
}

} // namespace

const ArtTable &artTable() {
    static const ArtTable table = buildArtTable();
    return table;
}

} // namespace tristop
