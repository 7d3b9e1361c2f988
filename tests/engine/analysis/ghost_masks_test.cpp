// SPDX-License-Identifier: MIT
#include "engine/analysis/ghost_masks.h"

#include "tests/support/mask_art.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <random>
#include <utility>
#include <vector>

namespace hdr {
namespace {

using Mask = std::vector<uint8_t>;

/// Neighbours inside the mask that have a value: the four direct ones, or all eight.
int countNeighbours(Plane<const uint8_t> mask, int x, int y, uint8_t value, bool diagonals = false) {
    int found = 0;
    for (int row = std::max(y - 1, 0); row <= std::min(y + 1, mask.height - 1); row++)
        for (int column = std::max(x - 1, 0); column <= std::min(x + 1, mask.width - 1); column++)
            if ((row == y) != (column == x) || (diagonals && row != y))
                found += mask(column, row) == value;
    return found;
}

TEST(GhostMasks, MorphologyEqualsPixelByPixel) {
    std::mt19937 random(7);
    for (int trial = 0; trial < 400; trial++) {
        const int width = 3 + static_cast<int>(random() % 9), height = 3 + static_cast<int>(random() % 7);
        const int pitch = width + static_cast<int>(random() % 3);
        const auto density = 1 + random() % 9;
        const auto planeOn = [=](Mask &mask) { return Plane<uint8_t>(mask.data(), width, height, pitch); };
        Mask source(static_cast<size_t>(pitch * height), 77);
        const Plane<uint8_t> before = planeOn(source);
        // The mask with each pixel as a rule says, from its neighbours before.
        const auto changed = [&](auto rule) {
            Mask result = source;
            for (int y = 0; y < height; y++)
                for (int x = 0; x < width; x++)
                    planeOn(result)(x, y) = static_cast<uint8_t>(rule(x, y));
            return result;
        };
        for (int i = 0; i < width * height; i++)
            before(i % width, i / width) = random() % 10 < density ? 255 : 0;
        const auto compare = [&](const Mask &expected, auto operation) {
            Mask mask = source;
            operation(planeOn(mask));
            ASSERT_EQ(test::artFrom(mask, static_cast<size_t>(pitch)),
                      test::artFrom(expected, static_cast<size_t>(pitch)));
        };
        Mask eroded =
            changed([&](int x, int y) { return countNeighbours(before, x, y, 0) > 0 ? 0 : before(x, y); });
        Mask dilated = changed(
            [&](int x, int y) { return countNeighbours(before, x, y, 255) > 0 ? 255 : before(x, y); });
        for (int y : {0, height - 1}) // only corners look at pixels set in the same iteration
            for (int x : {0, width - 1})
                if (countNeighbours(planeOn(dilated), x, y, 255) >= (y == 0 ? 2 : 1))
                    planeOn(dilated)(x, y) = 255;
        compare(eroded, [](Plane<uint8_t> mask) { erode_mask4(mask, 1); });
        compare(dilated, [](Plane<uint8_t> mask) { dilate_mask4(mask, 1); });
        erode_mask4(planeOn(eroded), 2);
        dilate_mask4(planeOn(dilated), 2);
        compare(eroded, [](Plane<uint8_t> mask) { erode_mask4(mask, 3); });
        compare(dilated, [](Plane<uint8_t> mask) { dilate_mask4(mask, 3); });
        compare(source, [](Plane<uint8_t> mask) { erode_mask4(mask, 0); });
        compare(changed([&](int x, int y) {
                    return countNeighbours(before, x, y, 255, true) > 0 ? 255 : before(x, y);
                }),
                dilateMask8);
        compare(changed([&](int x, int y) {
                    const bool inFrame = x == 0 || y == 0 || x == width - 1 || y == height - 1;
                    return inFrame || countNeighbours(before, x, y, 255) >= 2 ? before(x, y) : 0;
                }),
                [&](Plane<uint8_t> mask) { remove_isolated(before, mask); });
    }
}

TEST(GhostMasks, BlocksReduceOnlyWhenWhole) {
    std::mt19937 random(3);
    for (const auto &[width, height] : {std::pair{10, 9}, {8, 8}, {3, 13}, {17, 4}}) {
        const int pitch = width + 1, columns = (width + 3) / 4 + 2, rows = (height + 3) / 4 + 2;
        Mask pixels(static_cast<size_t>(pitch * height)), cells(static_cast<size_t>(columns * rows), 9);
        std::generate(pixels.begin(), pixels.end(), [&] { return static_cast<uint8_t>(random()); });
        const Plane<uint8_t> picture(pixels.data(), width, height, pitch);
        reduce_block_mean8(picture, {cells.data(), columns, rows});
        for (int y = 0; y < rows; y++)
            for (int x = 0; x < columns; x++) {
                const bool isWhole = x > 0 && y > 0 && 4 * x <= width && 4 * y <= height;
                int sum = isWhole ? 0 : 8 * 9;
                for (int i = 0; isWhole && i < 8; i++) // of rows 0 and 2
                    sum += picture(4 * (x - 1) + i % 4, 4 * (y - 1) + i / 4 * 2);
                EXPECT_EQ(cells[static_cast<size_t>(y * columns + x)], sum / 8) << x << ", " << y;
            }
    }
}

} // namespace
} // namespace hdr
