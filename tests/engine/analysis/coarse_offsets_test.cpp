// SPDX-License-Identifier: MIT
#include "engine/analysis/coarse_offsets.h"

#include "tests/support/arena.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <random>
#include <tuple>
#include <vector>

namespace hdr {
namespace {

TEST(CoarseOffsets, SizesAreWholeBlocksPaddedToFour) {
    EXPECT_EQ(coarseSize(16), 4);
    EXPECT_EQ(coarseSize(17), 8);
    EXPECT_EQ(coarseSize(750), 188);
    EXPECT_EQ(coarseSize(374), 96);
}

TEST(CoarseOffsets, ReductionAveragesTheEvenSamplesAndRepeatsTheLastWholeBlock) {
    // 10 x 9: two whole blocks across and down; columns 8 and 9 and row 8 are left over.
    constexpr int kWidth = 10, kHeight = 9;
    std::vector<int16_t> plane(kWidth * kHeight, 1000);
    const auto set = [&](int x, int y, std::array<int16_t, 4> samples) {
        plane[static_cast<size_t>(y * kWidth + x)] = samples[0];
        plane[static_cast<size_t>(y * kWidth + x + 2)] = samples[1];
        plane[static_cast<size_t>((y + 2) * kWidth + x)] = samples[2];
        plane[static_cast<size_t>((y + 2) * kWidth + x + 2)] = samples[3];
    };
    set(0, 0, {1, 2, 3, 5});  // 11 >> 2 = 2
    set(4, 0, {8, 8, 8, 11}); // 35 >> 2 = 8
    set(0, 4, {256, 256, 256, 256});
    set(4, 4, {0, 0, 0, 3});
    std::vector<int16_t> coarse(16, -1);
    reduce_to_coarse(Plane<const int16_t>(plane.data(), kWidth, kHeight), {coarse.data(), 4, 4});
    EXPECT_EQ(coarse, (std::vector<int16_t>{2, 8, 8, 8, 256, 0, 0, 0, 256, 0, 0, 0, 256, 0, 0, 0}));

    const std::vector<uint8_t> tiny = {9, 9}; // narrower than a block: clamped
    reduce_to_coarse(Plane<const uint8_t>(tiny.data(), 2, 1), {coarse.data(), 4, 4});
    EXPECT_EQ(coarse, std::vector<int16_t>(16, 9));
}

/// The mean, truncated toward zero, of quantity(i) over the samples of the 9 x 9 window around (x, y) that
/// lie inside the plane.
template <typename Quantity>
int64_t clippedMean(int width, int height, int x, int y, Quantity quantity) {
    int64_t sum = 0;
    int64_t count = 0;
    for (int row = y - 4; row <= y + 4; row++)
        for (int column = x - 4; column <= x + 4; column++)
            if (row >= 0 && row < height && column >= 0 && column < width) {
                sum += quantity(static_cast<size_t>(row * width + column));
                count++;
            }
    return sum / count;
}

TEST(CoarseOffsets, FilterEqualsTheDirectFormulas) {
    std::mt19937 random(11);
    for (auto [width, height, lowest, highest] : {std::tuple{4, 4, 0, 255},
                                                  {8, 4, 100, 103},
                                                  {4, 12, 0, 255},
                                                  {20, 24, 0, 255},
                                                  {24, 16, 120, 130}}) {
        const size_t count = static_cast<size_t>(width * height);
        std::vector<int16_t> guide(count), offsets(count);
        for (int16_t &sample : guide)
            sample = static_cast<int16_t>(std::uniform_int_distribution<int>(lowest, highest)(random));
        for (int16_t &sample : offsets)
            sample = static_cast<int16_t>(std::uniform_int_distribution<int>(0, 511)(random));

        std::vector<int64_t> slope(count), intercept(count);
        std::vector<int16_t> expected(count);
        for (size_t i = 0; i < count; i++) {
            const int x = static_cast<int>(i) % width;
            const int y = static_cast<int>(i) / width;
            const auto mean = [&](auto quantity) { return clippedMean(width, height, x, y, quantity); };
            const int64_t guideMean = mean([&](size_t j) { return guide[j]; });
            const int64_t offsetMean = mean([&](size_t j) { return offsets[j]; });
            const int64_t product = mean([&](size_t j) { return guide[j] * offsets[j]; });
            const int64_t square = mean([&](size_t j) { return guide[j] * guide[j]; });
            slope[i] = (product - offsetMean * guideMean) * 256 / (square - guideMean * guideMean + 5);
            intercept[i] = offsetMean * 256 - slope[i] * guideMean;
        }
        for (size_t i = 0; i < count; i++) {
            const int x = static_cast<int>(i) % width;
            const int y = static_cast<int>(i) / width;
            const int64_t a = clippedMean(width, height, x, y, [&](size_t j) { return slope[j]; });
            const int64_t b = clippedMean(width, height, x, y, [&](size_t j) { return intercept[j]; });
            expected[i] = static_cast<int16_t>((guide[i] * a + b) >> 8);
        }
        ASSERT_EQ(coarse_guided_filter(nullptr, Plane<int16_t>(guide.data(), width, height),
                                       {offsets.data(), width, height}),
                  HDR_OK);
        EXPECT_EQ(offsets, expected) << width << " x " << height;
    }
}

TEST(CoarseOffsets, FailedAllocationLeavesTheOffsetsUntouched) {
    std::vector<int16_t> guide(64 * 64, 3), offsets(64 * 64, 300);
    for (size_t bytes : {size_t{64}, size_t{36000}}) {
        test::Arena arena(bytes);
        EXPECT_EQ(coarse_guided_filter(arena.memory(), Plane<int16_t>(guide.data(), 64, 64),
                                       {offsets.data(), 64, 64}),
                  HDR_ERR_NOMEM);
        EXPECT_TRUE(arena.isEmpty());
    }
    EXPECT_EQ(offsets, std::vector<int16_t>(64 * 64, 300));
}

} // namespace
} // namespace hdr
