// SPDX-License-Identifier: MIT
#include "engine/analysis/plane_filters.h"

#include "tests/support/arena.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <random>
#include <tuple>
#include <vector>

namespace hdr {
namespace {

/// The wrapping sum of the window around (x, y), sample by sample, edges replicated.
template <typename Sample>
uint32_t windowSum(const std::vector<Sample> &plane, int width, int height, int pitch, int x, int y,
                   int radius) {
    uint32_t sum = 0;
    for (int dy = -radius; dy <= radius; dy++)
        for (int dx = -radius; dx <= radius; dx++)
            sum += static_cast<uint32_t>(plane[static_cast<size_t>(std::clamp(y + dy, 0, height - 1) * pitch +
                                                                   std::clamp(x + dx, 0, width - 1))]);
    return sum;
}

int16_t expectedSample(int16_t sample, uint32_t mean, int mode) {
    if (mode == 2)
        return static_cast<int32_t>(mean) / 65536 >= 2 ? int16_t{256} : sample;
    return mode == 0 && sample < 0 ? sample : static_cast<int16_t>(mean >> 16);
}

uint8_t expectedSample(uint8_t, uint32_t mean, int mode) {
    if (mode == 2)
        return static_cast<uint8_t>(std::min(255u, mean >> 15));
    return static_cast<uint8_t>(mean >> 16);
}

HdrStatus boxMean(std::vector<int16_t> &plane, int width, int height, int pitch, int radius, int mode) {
    return box_mean_s16(nullptr, plane.data(), width, height, pitch, radius, mode);
}
HdrStatus boxMean(std::vector<uint8_t> &plane, int width, int height, int pitch, int radius, int mode) {
    return box_mean_u8(nullptr, plane.data(), width, height, pitch, radius, mode);
}

template <typename Sample>
void compareWithDirectSums(int lowest, int highest) {
    std::mt19937 random(7);
    std::uniform_int_distribution<int> value(lowest, highest);
    for (auto [width, height, padding] :
         {std::tuple{1, 1, 0}, {2, 1, 3}, {1, 7, 0}, {9, 5, 2}, {37, 23, 1}}) {
        const int pitch = width + padding;
        for (int radius : {0, 1, 2, 4, 8, 16, 32}) {
            const auto side = static_cast<double>(2 * radius + 1);
            const auto reciprocal = static_cast<uint32_t>(65536.0 / (side * side) + 0.5);
            for (int mode : {0, 1, 2}) {
                std::vector<Sample> plane(static_cast<size_t>(pitch * height));
                for (Sample &sample : plane)
                    sample = static_cast<Sample>(value(random));
                std::vector<Sample> expected = plane;
                for (int y = 0; y < height; y++)
                    for (int x = 0; x < width; x++) {
                        const uint32_t sum = windowSum(plane, width, height, pitch, x, y, radius);
                        Sample &sample = expected[static_cast<size_t>(y * pitch + x)];
                        sample = expectedSample(sample, sum * reciprocal + 32768, mode);
                    }
                ASSERT_EQ(boxMean(plane, width, height, pitch, radius, mode), HDR_OK);
                ASSERT_EQ(plane, expected)
                    << width << " x " << height << " radius " << radius << " mode " << mode;
            }
        }
    }
}

TEST(BoxMean, EqualsDirectSums) {
    compareWithDirectSums<int16_t>(0, 256);
    compareWithDirectSums<int16_t>(-32768, 32767);
    compareWithDirectSums<uint8_t>(0, 255);
    compareWithDirectSums<uint8_t>(0, 3);
}

TEST(BoxMean, ReciprocalIsRoundedAtLargeRadii) {
    // 1089 x 60 = 65340 and 4225 x 16 = 67600, not 65536: a constant does not survive exactly.
    std::vector<int16_t> plane(40 * 40, 255);
    ASSERT_EQ(boxMean(plane, 40, 40, 40, 16, 1), HDR_OK);
    EXPECT_EQ(plane[0], (255 * 65340 + 32768) >> 16);
    plane.assign(plane.size(), 255);
    ASSERT_EQ(boxMean(plane, 40, 40, 40, 32, 1), HDR_OK);
    EXPECT_EQ(plane[0], 263);
}

TEST(BoxMean, NegativeMarksStayAndStillCount) {
    std::vector<int16_t> plane{9, 9, 9, 9, -9, 9, 9, 9, 9};
    ASSERT_EQ(boxMean(plane, 3, 3, 3, 1, 0), HDR_OK);
    // Every window holds the mark once: 8 x 9 - 9 = 63, and 63 x 7282 / 65536 is 7.0.
    EXPECT_EQ(plane, (std::vector<int16_t>{7, 7, 7, 7, -9, 7, 7, 7, 7}));
}

TEST(BoxMean, SpreadingNeedsARoundedMeanOfTwo) {
    constexpr int kSide = 64;
    std::vector<int16_t> plane(kSide * kSide, 0);
    plane[30 * kSide + 30] = 255;
    const std::vector<int16_t> single = plane;
    ASSERT_EQ(boxMean(plane, kSide, kSide, kSide, 8, 2), HDR_OK);
    EXPECT_EQ(plane, single);

    plane[30 * kSide + 40] = 255;
    ASSERT_EQ(boxMean(plane, kSide, kSide, kSide, 8, 2), HDR_OK);
    for (int y = 0; y < kSide; y++)
        for (int x = 0; x < kSide; x++) {
            const bool holdsBoth = std::abs(y - 30) <= 8 && x >= 32 && x <= 38;
            const bool marked = y == 30 && (x == 30 || x == 40);
            ASSERT_EQ(plane[static_cast<size_t>(y * kSide + x)], holdsBoth ? 256
                                                                 : marked  ? 255
                                                                           : 0)
                << x << ", " << y;
        }
}

TEST(BoxMean, FailedAllocationLeavesThePlane) {
    test::Arena arena(64);
    std::vector<int16_t> wide{1, 200, 3, 40};
    EXPECT_EQ(box_mean_s16(arena.memory(), wide.data(), 2, 2, 2, 2, 1), HDR_ERR_NOMEM);
    EXPECT_EQ(wide, (std::vector<int16_t>{1, 200, 3, 40}));
    std::vector<uint8_t> narrow{1, 200, 3, 40};
    EXPECT_EQ(box_mean_u8(arena.memory(), narrow.data(), 2, 2, 2, 2, 1), HDR_ERR_NOMEM);
    EXPECT_EQ(narrow, (std::vector<uint8_t>{1, 200, 3, 40}));
}

} // namespace
} // namespace hdr
