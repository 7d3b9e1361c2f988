// SPDX-License-Identifier: MIT
#include "engine/analysis/coarse_offsets.h"

#include "tests/support/scarce_memory.h"

#include <algorithm>
#include <random>
#include <tuple>
#include <vector>

namespace hdr {
namespace {

template <typename Sample>
std::vector<Sample> randomPlane(std::mt19937 &random, int width, int height, int lowest, int highest) {
    std::uniform_int_distribution<int> value(lowest, highest);
    std::vector<Sample> plane(static_cast<size_t>(width * height));
    std::generate(plane.begin(), plane.end(), [&] { return static_cast<Sample>(value(random)); });
    return plane;
}

/// The mean of four samples of a block, or of the last whole one; planes narrower than a block are clamped.
template <typename Sample>
void compareReduction(int width, int height) {
    std::mt19937 random(5);
    const auto plane = randomPlane<Sample>(random, width, height, 0, sizeof(Sample) == 1 ? 255 : 511);
    const int coarseWidth = coarseSize(width), coarseHeight = coarseSize(height);
    std::vector<int16_t> coarse(static_cast<size_t>(coarseWidth * coarseHeight)), expected;
    reduce_to_coarse(Plane<const Sample>(plane.data(), width, height),
                     {coarse.data(), coarseWidth, coarseHeight});
    for (int y = 0; y < coarseHeight; y++)
        for (int x = 0; x < coarseWidth; x++) {
            const int left = 4 * std::clamp(x, 0, std::max(width / 4 - 1, 0));
            const int top = 4 * std::clamp(y, 0, std::max(height / 4 - 1, 0));
            int sum = 0;
            for (int row : {top, std::min(top + 2, height - 1)})
                for (int column : {left, std::min(left + 2, width - 1)})
                    sum += plane[static_cast<size_t>(row * width + column)];
            expected.push_back(static_cast<int16_t>(sum / 4));
        }
    EXPECT_EQ(coarse, expected) << width << " x " << height;
}

TEST(CoarseOffsets, ReductionAveragesTheEvenSamplesAndRepeatsTheLastWholeBlock) {
    for (const auto &[reduced, coarse] : {std::pair{16, 4}, {17, 8}, {750, 188}, {374, 96}})
        EXPECT_EQ(coarseSize(reduced), coarse);
    for (const auto &[width, height] : {std::pair{10, 9}, {2, 1}, {16, 17}, {23, 4}}) {
        compareReduction<uint8_t>(width, height);
        compareReduction<int16_t>(width, height);
    }
}

TEST(CoarseOffsets, FilterEqualsTheDirectFormulas) {
    std::mt19937 random(11);
    for (auto [width, height, lowest, highest] : {std::tuple{4, 4, 0, 255},
                                                  {8, 4, 100, 103},
                                                  {4, 12, 0, 255},
                                                  {20, 24, 0, 255},
                                                  {24, 16, 120, 130},
                                                  {400, 40, 100, 160}}) {
        const auto guide = randomPlane<int16_t>(random, width, height, lowest, highest);
        auto offsets = randomPlane<int16_t>(random, width, height, 0, 511);
        // The mean, truncated toward zero, over the samples of the 9 x 9 window that lie inside the plane.
        const auto mean = [width = width, height = height](size_t centre, auto quantity) {
            const int x = static_cast<int>(centre) % width, y = static_cast<int>(centre) / width;
            int64_t sum = 0, count = 0;
            for (int row = std::max(y - 4, 0); row <= std::min(y + 4, height - 1); row++)
                for (int column = std::max(x - 4, 0); column <= std::min(x + 4, width - 1); column++, count++)
                    sum += quantity(static_cast<size_t>(row * width + column));
            return sum / count;
        };
        std::vector<int64_t> slope, intercept;
        for (size_t i = 0; i < guide.size(); i++) {
            const int64_t guideMean = mean(i, [&](size_t j) { return guide[j]; });
            const int64_t offsetMean = mean(i, [&](size_t j) { return offsets[j]; });
            const int64_t product = mean(i, [&](size_t j) { return guide[j] * offsets[j]; });
            const int64_t square = mean(i, [&](size_t j) { return guide[j] * guide[j]; });
            slope.push_back((product - offsetMean * guideMean) * 256 / (square - guideMean * guideMean + 5));
            intercept.push_back(offsetMean * 256 - slope[i] * guideMean);
        }
        std::vector<int16_t> expected;
        for (size_t i = 0; i < guide.size(); i++) {
            const int64_t a = mean(i, [&](size_t j) { return slope[j]; });
            const int64_t b = mean(i, [&](size_t j) { return intercept[j]; });
            expected.push_back(static_cast<int16_t>((guide[i] * a + b) >> 8));
        }
        // Without memory the offsets stay.
        const std::vector<int16_t> before = offsets;
        const Plane<const int16_t> guidePlane(guide.data(), width, height);
        EXPECT_GT(test::countFailures(
                      64,
                      [&, width = width, height = height](MemContext *memory) {
                          EXPECT_EQ(offsets, before);
                          return coarse_guided_filter(memory, guidePlane, {offsets.data(), width, height});
                      }),
                  1u);
        EXPECT_EQ(offsets, expected) << width << " x " << height;
    }
}

} // namespace
} // namespace hdr
