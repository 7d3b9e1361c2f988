// SPDX-License-Identifier: MIT
#include "engine/prepare/exposure.h"

#include "engine/core/context.h"
#include "engine/core/plane.h"
#include "engine/core/tables.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <vector>

namespace hdr {
namespace {

/// A context with one input's grid plane, and a reduced picture with padded rows.
class ExposureTest : public testing::Test {
protected:
    /// Sizes everything for a source picture.
    void prepare(int sourceWidth, int sourceHeight) {
        Preparation &preparation = context.preparation;
        preparation.gridColumns = (sourceWidth + 31) / 32;
        preparation.gridRows = (sourceHeight + 31) / 32;
        preparation.gridWidth = preparation.gridColumns + 2;
        preparation.gridHeight = preparation.gridRows + 2;
        grids.assign(3 * preparation.gridPlaneSize(), 7777);
        preparation.gridStats = grids.data();
        resize(2 * (sourceWidth / 16), 2 * (sourceHeight / 16));
    }
    void resize(int width, int height) {
        bytes.assign(static_cast<size_t>((width + 3) * height), 255);
        picture = {0x604,
                   width,
                   height,
                   {bytes.data(), bytes.data(), bytes.data()},
                   {width + 3, width + 3, width + 3}};
    }
    template <typename Level>
    void paint(Level level) {
        for (int y = 0; y < picture.i32Height; y++)
            for (int x = 0; x < picture.i32Width; x++)
                planeOf(picture)(x, y) = static_cast<uint8_t>(level(x, y));
    }
    double estimate() { return estimateExposure(&context, &picture, histogram.data(), 1, kGammaExpand); }
    std::vector<uint16_t> grid() const {
        const uint16_t *plane = context.preparation.gridPlane(1);
        return {plane, plane + context.preparation.gridColumns * context.preparation.gridRows};
    }

    HdrContext context{};
    std::vector<uint16_t> grids;
    std::vector<uint8_t> bytes;
    Offscreen picture{};
    std::array<uint32_t, 256> histogram;
};

TEST_F(ExposureTest, EstimateIsTheRatioToTheMeanLinearLevel) {
    prepare(160, 208);
    resize(20, 25);
    // 112 pixels of 869 and 388 of 884: mean 880.64.
    paint([](int x, int y) { return 20 * y + x < 112 ? 127 : 128; });
    EXPECT_EQ(estimate(), 1.0);
    EXPECT_EQ(histogram[127], 112u);
    EXPECT_EQ(histogram[128], 388u);
    EXPECT_EQ(histogram[255], 0u);
    paint([](int, int) { return 0; });
    EXPECT_EQ(estimate(), 32.0);
    paint([](int x, int y) { return x + y == 0 ? 1 : 0; });
    EXPECT_EQ(estimate(), 16.0);
    paint([](int, int) { return 255; });
    EXPECT_EQ(estimate(), 880.64 / 4095);
    picture.u32PixelArrayFormat = 0x603;
    EXPECT_EQ(estimate(), 32.0);
    EXPECT_EQ(histogram[255], 0u);
}

TEST_F(ExposureTest, GridCellsAreRoundedMeansOfFullBlocks) {
    const auto level = [](int x, int y) { return 40 * (y / 4) + 10 * (x / 4) + (x % 4 + y % 4 > 3 ? 1 : 0); };
    const auto cell = [](int x, int y) { return 40 * y + 10 * x; }; // six of sixteen are one more
    const auto full = [&](int x, int y) { return static_cast<uint16_t>(cell(x, y)); };
    // 72 x 72 leaves a partial cell at the right and bottom, which repeats its neighbour.
    prepare(72, 72);
    ASSERT_EQ(picture.i32Width, 8);
    paint(level);
    estimate();
    EXPECT_EQ(grid(), (std::vector<uint16_t>{full(0, 0), full(1, 0), full(1, 0), //
                                             full(0, 1), full(1, 1), full(1, 1), //
                                             full(0, 1), full(1, 1), full(1, 1)}));
    // The last column of a picture that fills its cells stays empty; the last row does not.
    prepare(96, 96);
    ASSERT_EQ(picture.i32Width, 12);
    paint(level);
    estimate();
    EXPECT_EQ(grid(), (std::vector<uint16_t>{full(0, 0), full(1, 0), 0, //
                                             full(0, 1), full(1, 1), 0, //
                                             full(0, 2), full(1, 2), 0}));
    EXPECT_EQ(grids[0], 7777); // another input's plane
    EXPECT_EQ(context.preparation.gridPlane(1)[9], 7777);
    // Half cells: 10 reduced pixels are two full cells and half of a third, 8 + 2 rows likewise.
    prepare(80, 80);
    ASSERT_EQ(picture.i32Width, 10);
    paint([](int x, int y) { return (x == 3 && y == 3) ? 8 : (x == 7 && y == 7) ? 7 : 0; });
    estimate();
    EXPECT_EQ(grid(), (std::vector<uint16_t>{1, 0, 0, 0, 0, 0, 0, 0, 0})); // 8/16 rounds up, 7/16 down
}

TEST_F(ExposureTest, OrderOfInputs) {
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
    const Preparation &preparation = context.preparation;
    for (const Case &c : three) {
        EXPECT_EQ(orderExposures(&context, c.estimates.data(), 3), HDR_OK);
        EXPECT_EQ(Order({preparation.darkIndex, preparation.midIndex, preparation.brightIndex}), c.order)
            << c.estimates[0] << c.estimates[1] << c.estimates[2];
    }
    for (const auto &[first, second, dark] : {std::tuple{2.0, 1.0, 0}, {1.0, 2.0, 1}, {1.0, 1.0, 1}}) {
        const double estimates[] = {first, second};
        orderExposures(&context, estimates, 2);
        EXPECT_EQ(preparation.darkIndex, dark);
        EXPECT_EQ(preparation.brightIndex, 1 - dark);
        EXPECT_EQ(preparation.midIndex, 0);
    }
    const double one = 1;
    orderExposures(&context, &one, 1);
    EXPECT_EQ(preparation.darkIndex + preparation.midIndex + preparation.brightIndex, 0);
}

} // namespace
} // namespace hdr
