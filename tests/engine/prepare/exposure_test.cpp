// SPDX-License-Identifier: MIT
#include "engine/prepare/exposure.h"

#include "engine/core/context.h"
#include "engine/core/plane.h"
#include "engine/core/tables.h"

#include <gtest/gtest.h>

#include <array>
#include <random>
#include <vector>

namespace hdr {
namespace {

/// A context with the inputs' grid planes for a source of the given size, and a reduced picture with padded
/// rows.
struct Scene {
    Scene(int sourceWidth, int sourceHeight, int width, int height)
        : bytes(static_cast<size_t>((width + 3) * height), 255), picture{0x604,
                                                                         width,
                                                                         height,
                                                                         {bytes.data()},
                                                                         {width + 3}} {
        Preparation &preparation = context.preparation;
        preparation.gridColumns = (sourceWidth + 31) / 32;
        preparation.gridRows = (sourceHeight + 31) / 32;
        preparation.gridWidth = preparation.gridColumns + 2;
        preparation.gridHeight = preparation.gridRows + 2;
        grids.assign(3 * preparation.gridPlaneSize(), 7777);
        preparation.gridStats = grids.data();
    }
    template <typename Level>
    double estimate(Level level) {
        for (int y = 0; y < picture.i32Height; y++)
            for (int x = 0; x < picture.i32Width; x++)
                planeOf(picture)(x, y) = static_cast<uint8_t>(level(x, y));
        return estimateExposure(&context, &picture, histogram.data(), 1, kGammaExpand);
    }

    HdrContext context{};
    std::vector<uint16_t> grids;
    std::vector<uint8_t> bytes;
    Offscreen picture;
    std::array<uint32_t, 256> histogram;
};

TEST(Exposure, EstimateIsTheRatioToTheMeanLinearLevel) {
    Scene scene(160, 208, 20, 25);
    // 112 pixels of 869 and 388 of 884: mean 880.64.
    EXPECT_EQ(scene.estimate([](int x, int y) { return 20 * y + x < 112 ? 127 : 128; }), 1.0);
    EXPECT_EQ(scene.histogram[127], 112u);
    EXPECT_EQ(scene.histogram[128], 388u);
    EXPECT_EQ(scene.histogram[255], 0u);
    EXPECT_EQ(scene.estimate([](int, int) { return 0; }), 32.0);
    EXPECT_EQ(scene.estimate([](int x, int y) { return x + y == 0 ? 1 : 0; }), 16.0);
    EXPECT_EQ(scene.estimate([](int, int) { return 255; }), 880.64 / 4095);
    scene.picture.u32PixelArrayFormat = 0x603;
    EXPECT_EQ(scene.estimate([](int, int) { return 255; }), 32.0);
    EXPECT_EQ(scene.histogram[255], 0u);
}

TEST(Exposure, GridCellsAreRoundedMeansOfFullBlocks) {
    std::mt19937 random(1);
    // Partial cells at both ends, half cells, none, and a source without a reduced pixel in its last cells.
    for (const auto &[width, height] :
         {std::array{72, 72}, {80, 80}, {96, 96}, {96, 72}, {40, 130}, {129, 33}}) {
        Scene scene(width, height, width / 16 * 2, height / 16 * 2);
        scene.estimate([&](int x, int y) { return 20 * (x / 4 % 3 + y / 4 % 4 * 3) + random() % 2; });
        const int columns = scene.context.preparation.gridColumns, rows = scene.context.preparation.gridRows;
        const int fullColumns = scene.picture.i32Width / 4, fullRows = scene.picture.i32Height / 4;
        const uint16_t *grid = scene.context.preparation.gridPlane(1);
        for (int r = 0; r < rows; r++)
            for (int c = 0; c < columns; c++) {
                // The last column and row repeat their neighbour when they are not full; the last column
                // stays empty when it is.
                const int left = 4 * std::min(c, columns - 2);
                const int top = 4 * (fullRows < rows ? std::min(r, rows - 2) : r);
                int sum = 0;
                for (int y = top; y < std::min(top + 4, scene.picture.i32Height); y++)
                    for (int x = left; x < left + 4; x++)
                        sum += planeOf(scene.picture)(x, y);
                const bool empty = c == columns - 1 && fullColumns == columns;
                EXPECT_EQ(grid[r * columns + c], empty ? 0 : (sum + 8) / 16) << width << ' ' << c << ' ' << r;
            }
        EXPECT_EQ(grid[columns * rows], 7777);
        EXPECT_EQ(grid[-1], 7777) << "another input's plane";
    }
}

TEST(Exposure, OrderOfInputs) {
    using Order = std::array<int, 3>;
    struct Case {
        std::array<double, 3> estimates;
        Order order; // dark, middle, bright
    };
    const Case three[] = {
        {{1, 2, 3}, {2, 1, 0}}, {{1, 3, 2}, {1, 2, 0}}, {{2, 1, 3}, {2, 0, 1}}, {{2, 3, 1}, {1, 0, 2}},
        {{3, 1, 2}, {0, 2, 1}}, {{3, 2, 1}, {0, 1, 2}}, {{1, 1, 1}, {0, 2, 1}}, {{1, 1, 2}, {2, 0, 1}},
        {{1, 2, 1}, {1, 0, 2}}, {{2, 1, 1}, {0, 2, 1}}, {{2, 2, 1}, {0, 1, 2}}, {{2, 1, 2}, {0, 2, 1}},
        {{1, 2, 2}, {1, 2, 0}},
    };
    HdrContext context{};
    const auto ordered = [&context](const double *estimates, int count) {
        EXPECT_EQ(orderExposures(&context, estimates, count), HDR_OK);
        const Preparation &preparation = context.preparation;
        return Order{preparation.darkIndex, preparation.midIndex, preparation.brightIndex};
    };
    for (const auto &[estimates, order] : three)
        EXPECT_EQ(ordered(estimates.data(), 3), order) << estimates[0] << estimates[1] << estimates[2];
    const double rising[] = {1, 1, 2}; // equal ones, then a darker and a brighter second one
    EXPECT_EQ(ordered(rising, 2), (Order{1, 0, 0}));
    EXPECT_EQ(ordered(rising + 1, 2), (Order{1, 0, 0}));
    EXPECT_EQ(ordered(std::array{2.0, 1.0}.data(), 2), (Order{0, 0, 1}));
    EXPECT_EQ(ordered(rising, 1), (Order{0, 0, 0}));
}

} // namespace
} // namespace hdr
