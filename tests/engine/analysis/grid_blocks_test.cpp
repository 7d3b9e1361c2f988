// SPDX-License-Identifier: MIT
#include "engine/analysis/grid_blocks.h"

#include <algorithm>
#include <array>
#include <gtest/gtest.h>
#include <random>
#include <vector>

namespace hdr {
namespace {

int copied(int destination, int source, int m) {
    return m == 0 ? source : destination;
}
int blended128(int destination, int source, int m) {
    return m > 128 ? source : (source * m + destination * (128 - m)) / 128;
}
int blended255(int destination, int source, int m) {
    return m == 0 ? destination : (source * m + destination * (255 - m)) / 256;
}

TEST(GridBlocks, MixUnderTheMaskAndTheLastColumnReachesTheEdge) {
    struct Operation {
        void (*run)(Plane<uint8_t>, Plane<const uint8_t>, Plane<const uint8_t>);
        int (*expected)(int, int, int);
    };
    // A cell column too few, one to spare, a height that cuts the last row of cells or goes on beyond it.
    struct Size {
        int width, height, gridWidth, gridHeight;
    };
    std::mt19937 random(3);
    const auto fill = [&random](std::vector<uint8_t> &samples) {
        std::generate(samples.begin(), samples.end(), [&random] { return static_cast<uint8_t>(random()); });
    };
    for (const Operation &operation : {Operation{copy_blocks_where_clear, copied},
                                       {blend_blocks_128, blended128},
                                       {blend_blocks_255, blended255}})
        for (const Size &size :
             {Size{14, 10, 5, 5}, {14, 10, 6, 5}, {12, 8, 6, 4}, {3, 3, 3, 3}, {40, 41, 12, 12}}) {
            const int pitch = size.width + 3;
            std::vector<uint8_t> source(static_cast<size_t>(pitch * size.height)), destination(source.size());
            std::vector<uint8_t> mask(static_cast<size_t>(size.gridWidth * size.gridHeight));
            fill(source);
            fill(destination);
            fill(mask);
            for (uint8_t &m : mask) // many of 0, 1, 127 to 129 and 255
                m = random() % 2 ? m : std::array<uint8_t, 6>{0, 1, 127, 128, 129, 255}[random() % 6];
            std::vector<uint8_t> expected = destination;
            for (int y = 0; y < std::min(size.height, 4 * (size.gridHeight - 2)); y++)
                for (int x = 0; x < size.width; x++) {
                    const int cell = (y / 4 + 1) * size.gridWidth + std::min(x / 4 + 1, size.gridWidth - 2);
                    const auto i = static_cast<size_t>(y * pitch + x);
                    expected[i] = static_cast<uint8_t>(
                        operation.expected(destination[i], source[i], mask[static_cast<size_t>(cell)]));
                }
            operation.run({destination.data(), size.width, size.height, pitch},
                          {source.data(), size.width, size.height, pitch},
                          {mask.data(), size.gridWidth, size.gridHeight});
            ASSERT_EQ(destination, expected) << size.width << " x " << size.height;
        }
}

} // namespace
} // namespace hdr
