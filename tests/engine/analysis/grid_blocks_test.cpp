// SPDX-License-Identifier: MIT
#include "engine/analysis/grid_blocks.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <random>
#include <vector>

namespace hdr {
namespace {

using Operation = void (*)(Plane<uint8_t>, Plane<const uint8_t>, Plane<const uint8_t>);

/// The result of an operation on one cell of mask value `m` and constant planes.
int onOneCell(Operation operation, int destination, int source, int m) {
    std::vector<uint8_t> to(16, static_cast<uint8_t>(destination));
    const std::vector<uint8_t> from(16, static_cast<uint8_t>(source));
    // The frame says the opposite of the cell.
    std::vector<uint8_t> mask(9, m == 0 ? 255 : 0);
    mask[4] = static_cast<uint8_t>(m);
    operation({to.data(), 4, 4}, {from.data(), 4, 4}, {mask.data(), 3, 3});
    EXPECT_EQ(std::count(to.begin(), to.end(), to[0]), 16);
    return to[0];
}

TEST(GridBlocks, MaskValues) {
    EXPECT_EQ(onOneCell(copy_blocks_where_clear, 10, 90, 0), 90);
    EXPECT_EQ(onOneCell(copy_blocks_where_clear, 10, 90, 1), 10);

    EXPECT_EQ(onOneCell(blend_blocks_128, 10, 90, 0), 10);
    EXPECT_EQ(onOneCell(blend_blocks_128, 10, 90, 1), 10); // (90 + 10 * 127) >> 7
    EXPECT_EQ(onOneCell(blend_blocks_128, 10, 90, 64), 50);
    EXPECT_EQ(onOneCell(blend_blocks_128, 10, 90, 128), 90);
    EXPECT_EQ(onOneCell(blend_blocks_128, 10, 90, 129), 90);
    EXPECT_EQ(onOneCell(blend_blocks_128, 10, 90, 255), 90);

    EXPECT_EQ(onOneCell(blend_blocks_255, 200, 200, 0), 200);
    EXPECT_EQ(onOneCell(blend_blocks_255, 200, 200, 255), 199);
    EXPECT_EQ(onOneCell(blend_blocks_255, 200, 200, 1), 199);
    EXPECT_EQ(onOneCell(blend_blocks_255, 10, 90, 128), 49); // (90 * 128 + 10 * 127) >> 8
}

TEST(GridBlocks, CellsCoverThePictureAndTheLastColumnReachesTheEdge) {
    // A cell column too few, one to spare, a height that cuts the last row of cells.
    struct Size {
        int width, height, gridWidth, gridHeight;
    };
    std::mt19937 random(3);
    for (const Size &size : {Size{14, 10, 5, 5}, {14, 10, 6, 5}, {12, 8, 6, 4}, {3, 3, 3, 3}}) {
        const size_t pitch = static_cast<size_t>(size.width) + 3;
        std::vector<uint8_t> source(pitch * static_cast<size_t>(size.height), 7);
        std::vector<uint8_t> destination(source.size(), 9);
        std::vector<uint8_t> mask(static_cast<size_t>(size.gridWidth * size.gridHeight));
        for (uint8_t &m : mask)
            m = random() % 2 ? 255 : 0;
        copy_blocks_where_clear({destination.data(), size.width, size.height, static_cast<ptrdiff_t>(pitch)},
                                {source.data(), size.width, size.height, static_cast<ptrdiff_t>(pitch)},
                                {mask.data(), size.gridWidth, size.gridHeight});
        for (size_t i = 0; i < destination.size(); i++) {
            const int x = static_cast<int>(i % pitch);
            const int y = static_cast<int>(i / pitch);
            const int cell = (y / 4 + 1) * size.gridWidth + std::min(x / 4 + 1, size.gridWidth - 2);
            const bool copied = x < size.width && mask[static_cast<size_t>(cell)] == 0;
            ASSERT_EQ(destination[i], copied ? 7 : 9) << x << ", " << y;
        }
    }
}

} // namespace
} // namespace hdr
