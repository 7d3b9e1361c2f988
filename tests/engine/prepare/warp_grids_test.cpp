// SPDX-License-Identifier: MIT
#include "engine/prepare/warp_grids.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <vector>

namespace hdr {
namespace {

constexpr int kWidth = 1900, kHeight = 1300;
constexpr std::array<double, 3> kCertain = {16, 0, 16};

/// Grids of one input.
struct Grids {
    std::vector<int32_t> x, y;
    Alignment alignment{};

    Grids() {
        alignment.warpWidth = warpNodeCount(kWidth);
        alignment.warpHeight = warpNodeCount(kHeight);
        x.resize(static_cast<size_t>(alignment.warpWidth * alignment.warpHeight), 99);
        y = x;
        alignment.warpX[0] = x.data();
        alignment.warpY[0] = y.data();
    }
    Grids(const Grids &) = delete;
    Grids &operator=(const Grids &) = delete;
};

void fill(WarpField &field, const std::function<Vector(double, double)> &displacement) {
    for (int row = 0; row < field.rows(); row++)
        for (int column = 0; column < field.columns(); column++)
            field.at(column, row) = displacement(warpNodePosition(column), warpNodePosition(row));
}

double rootMeanSquareError(const Alignment &alignment,
                           const std::function<Vector(double, double)> &displacement) {
    double sum = 0;
    int count = 0;
    for (int y = 0; y < kHeight; y += 13) {
        for (int x = 0; x < kWidth; x += 13, count++)
            sum += (warpDisplacement(alignment, 0, {static_cast<double>(x), static_cast<double>(y)}) -
                    displacement(x, y))
                       .squaredLength();
    }
    return std::sqrt(sum / count);
}

TEST(WarpGrids, NodesLieOnBothSidesOfEveryPixel) {
    EXPECT_EQ(warpNodePosition(0), -128);
    for (int pixels : {100, 128, 129, 255, 256, 384, 385, 6000}) {
        EXPECT_GE(warpNodePosition(warpNodeCount(pixels) - 1), pixels - 1);
        EXPECT_LT(warpNodePosition(warpNodeCount(pixels) - 2), pixels + 256);
    }
    EXPECT_EQ(warpNodeCount(256), 3);
    EXPECT_EQ(warpNodeCount(4000), 18);
}

TEST(WarpGrids, NearlyWholeShiftsStayWhole) {
    Grids grids;
    WarpField field(nullptr, kWidth, kHeight);
    fill(field, [](double, double) { return Vector{-12.5, 7.2}; });
    fill(field, [](double, double) { return Vector{-12.75, 7.2}; });
    roundWarpField(field, grids.alignment, 0);
    EXPECT_EQ(grids.alignment.globalShift[0][0], -13);
    EXPECT_EQ(grids.alignment.globalShift[0][1], 7);
    for (size_t i = 0; i < grids.x.size(); i++) {
        EXPECT_EQ(grids.x[i], 0);
        EXPECT_EQ(grids.y[i], 0);
    }
    EXPECT_FALSE(isUnmoved(grids.alignment, 0));
    fill(field, [](double, double) { return Vector{0.2, -0.2}; });
    roundWarpField(field, grids.alignment, 0);
    EXPECT_TRUE(isUnmoved(grids.alignment, 0));
}

TEST(WarpGrids, HalvesAreRoundedAwayFromZeroInTheShift) {
    Grids grids;
    WarpField field(nullptr, kWidth, kHeight);
    fill(field, [](double, double) { return Vector{-2.5, 3.5}; });
    roundWarpField(field, grids.alignment, 0);
    EXPECT_EQ(grids.alignment.globalShift[0][0], -3);
    EXPECT_EQ(grids.alignment.globalShift[0][1], 4);
}

TEST(WarpGrids, InterpolationFollowsTheFieldNearerThanRoundingDoes) {
    // Rounding alone would cost half a pixel each way, 0.71 in all.
    const std::vector<std::function<Vector(double, double)>> fields = {
        [](double, double) {
            return Vector{10.5, -3.5};
        },
        [](double, double) {
            return Vector{0.4, 0.6};
        },
        [](double x, double y) {
            return Vector{0.017 * y - 9, 4 - 0.017 * x};
        },
        [](double x, double y) {
            return Vector{1e-5 * x * x, 1e-5 * x * y};
        },
    };
    for (const auto &displacement : fields) {
        Grids grids;
        WarpField field(nullptr, kWidth, kHeight);
        fill(field, displacement);
        roundWarpField(field, grids.alignment, 0);
        EXPECT_LT(rootMeanSquareError(grids.alignment, displacement), 0.42);
    }
}

/// One observation every 50 pixels of a still picture, but for what `deviation` says.
std::vector<Observation> observe(const std::function<Vector(int, int)> &deviation) {
    std::vector<Observation> observations;
    for (int y = 25; y < kHeight; y += 50)
        for (int x = 25; x < kWidth; x += 50)
            observations.push_back(
                {{static_cast<double>(x), static_cast<double>(y)}, deviation(x, y), kCertain});
    return observations;
}

TEST(WarpField, FollowsWhatNeighboursAgreeOn) {
    // The right half of the scene is nearer and moved a pixel and a half further.
    const auto observations = observe([](int x, int) { return Vector{x > 1000 ? 1.5 : 0.0, 0}; });
    WarpField field(nullptr, kWidth, kHeight);
    ASSERT_EQ(field.follow(nullptr, Motion(kWidth, kHeight), observations.data(), observations.size(), 5),
              HDR_OK);
    EXPECT_NEAR(field.displacement({1600, 600}).x, 1.5, 0.15);
    EXPECT_NEAR(field.displacement({1600, 600}).y, 0, 0.05);
    EXPECT_NEAR(field.displacement({300, 600}).x, 0, 0.05);
}

TEST(WarpField, TakesTheGlobalMotionWhereObservationsAreWrongOrFew) {
    // A car that drove on, single mismatches, and nothing at all at the left.
    auto observations = observe([](int x, int y) {
        if (x > 800 && x < 1200 && y > 500 && y < 900)
            return Vector{25, 0};
        return (x + y) % 300 == 0 ? Vector{-3, 3} : Vector{};
    });
    std::erase_if(observations, [](const Observation &o) { return o.position.x < 400; });
    WarpField field(nullptr, kWidth, kHeight);
    ASSERT_EQ(field.follow(nullptr, Motion(kWidth, kHeight), observations.data(), observations.size(), 5),
              HDR_OK);
    for (int row = 0; row < field.rows(); row++)
        for (int column = 0; column < field.columns(); column++)
            EXPECT_LT(field.at(column, row).squaredLength(), 0.01) << column << " " << row;
}

} // namespace
} // namespace hdr
