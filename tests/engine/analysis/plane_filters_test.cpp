// SPDX-License-Identifier: MIT
#include "engine/analysis/plane_filters.h"

#include "tests/support/arena.h"
#include "tests/support/windows.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <random>
#include <tuple>
#include <vector>

namespace hdr {
namespace {

int16_t expectedSample(int16_t sample, uint32_t mean, int mode) {
    if (mode == 2)
        return static_cast<int32_t>(mean) / 65536 >= 2 ? int16_t{256} : sample;
    return mode == 0 && sample < 0 ? sample : static_cast<int16_t>(mean >> 16);
}

uint8_t expectedSample(uint8_t, uint32_t mean, int mode) {
    return static_cast<uint8_t>(mode == 2 ? std::min(255u, mean >> 15) : mean >> 16);
}

HdrStatus boxMean(MemContext *memory, std::vector<int16_t> &plane, int width, int height, int pitch,
                  int radius, int mode) {
    return box_mean_s16(memory, plane.data(), width, height, pitch, radius, mode);
}
HdrStatus boxMean(MemContext *memory, std::vector<uint8_t> &plane, int width, int height, int pitch,
                  int radius, int mode) {
    return box_mean_u8(memory, plane.data(), width, height, pitch, radius, mode);
}

/// Compares with sums modulo 2^32 and the rounded reciprocal of the window; with little memory nothing
/// changes.
template <typename Sample>
void compareWithDirectSums(int lowest, int highest) {
    std::mt19937 random(7);
    std::uniform_int_distribution<int> value(lowest, highest);
    for (auto [width, height, padding] : {std::tuple{1, 1, 0}, {2, 1, 3}, {1, 7, 0}, {9, 5, 2}, {37, 23, 1}})
        for (int radius : {0, 1, 2, 4, 8, 16, 32})
            for (int mode : {0, 1, 2}) {
                const int pitch = width + padding;
                const auto reciprocal =
                    static_cast<uint32_t>(65536.0 / ((2 * radius + 1) * (2 * radius + 1)) + 0.5);
                std::vector<Sample> plane(static_cast<size_t>(pitch * height));
                for (Sample &sample : plane)
                    sample = static_cast<Sample>(value(random));
                const auto at = [pitch](int x, int y) { return static_cast<size_t>(y * pitch + x); };
                std::vector<Sample> expected = plane;
                for (int y = 0; y < height; y++)
                    for (int x = 0; x < width; x++) {
                        const auto sum = static_cast<uint32_t>(test::windowSum(
                            width, height, x, y, radius, [&](int i, int j) { return plane[at(i, j)]; }));
                        Sample &sample = expected[at(x, y)];
                        sample = expectedSample(sample, sum * reciprocal + 32768, mode);
                    }
                const std::vector<Sample> before = plane;
                test::Arena arena(8);
                EXPECT_EQ(boxMean(arena.memory(), plane, width, height, pitch, radius, mode), HDR_ERR_NOMEM);
                ASSERT_EQ(plane, before);
                ASSERT_EQ(boxMean(nullptr, plane, width, height, pitch, radius, mode), HDR_OK);
                ASSERT_EQ(plane, expected)
                    << width << " x " << height << " radius " << radius << " mode " << mode;
            }
}

TEST(BoxMean, EqualsDirectSums) {
    compareWithDirectSums<int16_t>(0, 256);
    compareWithDirectSums<int16_t>(0, 3);
    compareWithDirectSums<int16_t>(-32768, 32767);
    compareWithDirectSums<uint8_t>(0, 255);
    compareWithDirectSums<uint8_t>(0, 3);
}

} // namespace
} // namespace hdr
