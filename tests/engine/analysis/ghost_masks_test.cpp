// SPDX-License-Identifier: MIT
#include "engine/analysis/ghost_masks.h"

#include "tests/support/mask_art.h"

#include <gtest/gtest.h>
#include <random>
#include <string_view>
#include <utility>
#include <vector>

namespace hdr {
namespace {

using test::artFrom;
using test::maskFrom;
using Mask = std::vector<uint8_t>;

enum class Operator { kErode, kDilate };

/// One iteration, pixel by pixel from an unchanged copy.
Mask naiveIteration(Operator op, const Mask &before, int width, int height) {
    const auto at = [&](const Mask &mask, int x, int y) {
        return mask[static_cast<size_t>(y * width + x)] != 0;
    };
    const auto countNeighbours = [&](const Mask &mask, int x, int y, bool value) {
        int count = 0;
        for (const auto &[dx, dy] : {std::pair{-1, 0}, {0, -1}, {1, 0}, {0, 1}})
            if (x + dx >= 0 && x + dx < width && y + dy >= 0 && y + dy < height)
                count += at(mask, x + dx, y + dy) == value;
        return count;
    };
    Mask after = before;
    for (int y = 0; y < height; y++)
        for (int x = 0; x < width; x++) {
            uint8_t &pixel = after[static_cast<size_t>(y * width + x)];
            if (op == Operator::kErode && at(before, x, y) && countNeighbours(before, x, y, false) > 0)
                pixel = 0;
            if (op == Operator::kDilate && countNeighbours(before, x, y, true) > 0)
                pixel = 255;
        }
    if (op == Operator::kDilate)
        for (int y : {0, height - 1})
            for (int x : {0, width - 1})
                if (countNeighbours(after, x, y, true) >= (y == 0 ? 2 : 1))
                    after[static_cast<size_t>(y * width + x)] = 255;
    return after;
}

TEST(GhostMasks, MorphologyEqualsPixelByPixel) {
    std::mt19937 random(7);
    for (int trial = 0; trial < 400; trial++) {
        const int width = 3 + static_cast<int>(random() % 9);
        const int height = 3 + static_cast<int>(random() % 7);
        const int pitch = width + static_cast<int>(random() % 3);
        const int iterations = static_cast<int>(random() % 4);
        const auto density = 1 + random() % 9;
        for (Operator op : {Operator::kErode, Operator::kDilate}) {
            Mask padded(static_cast<size_t>(pitch * height), 77);
            const Plane<uint8_t> plane(padded.data(), width, height, pitch);
            Mask expected;
            for (int y = 0; y < height; y++)
                for (int x = 0; x < width; x++)
                    expected.push_back(plane(x, y) = random() % 10 < density ? 255 : 0);
            for (int i = 0; i < iterations; i++)
                expected = naiveIteration(op, expected, width, height);
            op == Operator::kErode ? erode_mask4(plane, iterations) : dilate_mask4(plane, iterations);
            Mask result;
            for (int y = 0; y < height; y++) {
                result.insert(result.end(), plane.row(y), plane.row(y) + width);
                for (int x = width; x < pitch; x++)
                    ASSERT_EQ(padded[static_cast<size_t>(y * pitch + x)], 77);
            }
            ASSERT_EQ(artFrom(result, static_cast<size_t>(width)),
                      artFrom(expected, static_cast<size_t>(width)));
        }
    }
}

TEST(GhostMasks, IsolatedCellsGoButFrameCellsStay) {
    const Mask source = maskFrom({"#....#", //
                                  "..##..", //
                                  ".###..", //
                                  "......", //
                                  ".#.#..", //
                                  "#.....", //
                                  "....##"});
    Mask destination = source;
    remove_isolated({source.data(), 6, 7}, {destination.data(), 6, 7});
    EXPECT_EQ(artFrom(destination, 6), artFrom(maskFrom({"#....#", //
                                                         "..##..", //
                                                         "..##..", // its end has one neighbour only
                                                         "......", //
                                                         "......", //
                                                         "#.....", //
                                                         "....##"}),
                                               6));
}

TEST(GhostMasks, BlocksReduceOnlyWhenWhole) {
    // 10 x 9 pixels hold two whole blocks across and two down; the grid has three cells each way.
    const int pitch = 11;
    std::vector<uint8_t> pixels(static_cast<size_t>(pitch) * 9, 200);
    const Plane<uint8_t> picture(pixels.data(), 10, 9, pitch);
    const uint8_t block[4][4] = {{1, 2, 3, 4}, {255, 255, 10, 0}, {5, 6, 7, 9}, {0, 0, 90, 255}};
    for (int y = 0; y < 4; y++)
        for (int x = 0; x < 4; x++) {
            picture(x, y) = block[y][x];
            picture(x + 4, y + 4) = 255;
        }
    std::vector<uint8_t> cells(5 * 5, 9);
    reduce_block_mean8(picture, {cells.data(), 5, 5});
    EXPECT_EQ(cells, (std::vector<uint8_t>{9, 9,   9,   9, 9, //
                                           9, 4,   200, 9, 9, // (1+2+3+4 + 5+6+7+9) / 8 = 4.6
                                           9, 200, 255, 9, 9, //
                                           9, 9,   9,   9, 9, //
                                           9, 9,   9,   9, 9}));
    std::vector<uint8_t> exact(4 * 4, 9);
    reduce_block_mean8(Plane<const uint8_t>(pixels.data(), 8, 8, pitch), {exact.data(), 4, 4});
    EXPECT_EQ(exact, (std::vector<uint8_t>{9, 9, 9, 9, 9, 4, 200, 9, 9, 200, 255, 9, 9, 9, 9, 9}));
}

} // namespace
} // namespace hdr
