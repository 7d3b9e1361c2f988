// SPDX-License-Identifier: MIT
#include "engine/prepare/warp_grids.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <tuple>
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
    // Of a shift of more than 64 pixels the grids take whole cells of 32.
    for (const auto &[displacement, shift, cells] :
         {std::tuple{Vector{-12.75, 7.2}, std::array{-13, 7}, std::array{0, 0}},
          {Vector{0.2, -0.2}, {0, 0}, {0, 0}},
          {Vector{-101, 64}, {-37, 64}, {-2, 0}},
          {Vector{96, -65}, {64, -33}, {1, -1}}}) {
        fill(field, [&](double, double) { return displacement; });
        roundWarpField(field, grids.alignment, 0);
        for (size_t axis : {0u, 1u}) {
            EXPECT_EQ(grids.alignment.globalShift[0][axis], shift[axis]);
            EXPECT_EQ(grids.alignment.gridShift[0][axis], cells[axis]);
            const std::vector<int32_t> &nodes = axis ? grids.y : grids.x;
            EXPECT_EQ(std::count(nodes.begin(), nodes.end(), 32 * cells[axis]), std::ssize(nodes));
        }
        EXPECT_EQ(isUnmoved(grids.alignment, 0), shift[0] == 0);
    }
    // Halves are rounded away from zero.
    fill(field, [](double, double) { return Vector{-2.5, 3.5}; });
    roundWarpField(field, grids.alignment, 0);
    EXPECT_EQ(grids.alignment.globalShift[0][0], -3);
    EXPECT_EQ(grids.alignment.globalShift[0][1], 4);
}

TEST(WarpGrids, InterpolationFollowsTheFieldNearerThanRoundingDoes) {
    // Rounding alone would cost half a pixel each way, 0.71 in all.
    for (const auto &[shift, turn, curve] : {std::tuple{Vector{10.5, -3.5}, 0.0, 0.0},
                                             {Vector{0.4, 0.6}, 0.0, 0.0},
                                             {Vector{-9, 4}, 0.017, 0.0},
                                             {Vector{0, 0}, 0.0, 1e-5}}) {
        const auto displacement = [=](double x, double y) {
            return shift + Vector{turn * y + curve * x * x, -turn * x + curve * x * y};
        };
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

WarpField followed(const std::vector<Observation> &observations) {
    WarpField field(nullptr, kWidth, kHeight);
    EXPECT_EQ(field.follow(nullptr, Motion(kWidth, kHeight), observations.data(), observations.size(), 5),
              HDR_OK);
    return field;
}

TEST(WarpField, FollowsWhatNeighboursAgreeOn) {
    // The right half of the scene is nearer and moved a pixel and a half further.
    const auto observations = observe([](int x, int) { return Vector{x > 1000 ? 1.5 : 0.0, 0}; });
    const WarpField field = followed(observations);
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
    const WarpField field = followed(observations);
    for (int row = 0; row < field.rows(); row++)
        for (int column = 0; column < field.columns(); column++)
            EXPECT_LT(field.at(column, row).squaredLength(), 0.01) << column << " " << row;
}

} // namespace
} // namespace hdr
