// SPDX-License-Identifier: MIT
#include "engine/analysis/exposure_weights.h"

#include "engine/core/plane.h"
#include "tests/support/arena.h"
#include "tests/support/reduced_run.h"

#include <algorithm>
#include <array>
#include <gtest/gtest.h>
#include <vector>

namespace hdr {
namespace {

void expectWeights(const CellWeights &weights, int mid, int dark, int bright) {
    EXPECT_EQ(weights.mid, mid);
    EXPECT_EQ(weights.dark, dark);
    EXPECT_EQ(weights.bright, bright);
}

TEST(BaseWeights, FollowTheMiddleExposure) {
    expectWeights(baseWeights(255, 64, 255), 0, 256, 0);
    expectWeights(baseWeights(193, 63, 255), 256, 0, 0);
    expectWeights(baseWeights(192, 0, 255), 0, 256, 0);
    expectWeights(baseWeights(161, 0, 255), 248, 8, 0);
    expectWeights(baseWeights(160, 0, 255), 256, 0, 0);
    expectWeights(baseWeights(64, 0, 255), 256, 0, 0);
    expectWeights(baseWeights(63, 255, 192), 248, 0, 8);
    expectWeights(baseWeights(32, 255, 192), 0, 0, 256);
    expectWeights(baseWeights(0, 255, 192), 0, 0, 256);
    expectWeights(baseWeights(63, 255, 193), 256, 0, 0);
    expectWeights(baseWeights(20, 255, 193), 256, 0, 0);
}

/// The three weights of a grid, the middle exposure alone until cells are set.
struct Grid {
    int width, height;
    std::vector<int16_t> mid, dark, bright;

    Grid(int width, int height)
        : width(width), height(height), mid(static_cast<size_t>(width * height), 256), dark(mid.size(), 0),
          bright(mid.size(), 0) {}
    void set(int x, int y, int newMid, int newDark, int newBright) {
        const size_t i = static_cast<size_t>(y * width + x);
        mid[i] = static_cast<int16_t>(newMid);
        dark[i] = static_cast<int16_t>(newDark);
        bright[i] = static_cast<int16_t>(newBright);
    }
    void expectCell(int x, int y, int expectedMid, int expectedDark, int expectedBright) const {
        SCOPED_TRACE(testing::Message() << "cell " << x << ", " << y);
        const size_t i = static_cast<size_t>(y * width + x);
        expectWeights({mid[i], dark[i], bright[i]}, expectedMid, expectedDark, expectedBright);
    }
    void fillHoles() { fill_weight_holes(mid.data(), dark.data(), bright.data(), width, height); }
};

TEST(FillWeightHoles, HolesTakeTheirNeighboursLargestWeight) {
    Grid grid(20, 20);
    // Dark 60 on the left against bright 40 + 30 above and below: the sum decides, the largest is taken.
    grid.set(2, 3, 256, 60, 0);
    grid.set(3, 2, 256, 0, 40);
    grid.set(3, 4, 256, 0, 30);
    grid.set(3, 3, 0, 0, 0);
    // A tie goes to the dark exposure; a second hole sees the first one filled.
    grid.set(9, 6, 200, 50, 0);
    grid.set(10, 5, 200, 0, 50);
    grid.set(10, 6, 0, 0, 0);
    grid.set(11, 6, 0, 0, 0);
    // Nothing around it, and the weakest of neighbours.
    grid.set(7, 9, 0, 0, 0);
    grid.set(0, 12, 0, 0, 0);
    grid.set(1, 12, 256, 0, 1);
    // Negative weights count as none, but a neighbour that comes later is still negative in the sums.
    grid.set(13, 12, -5, 0, -7);
    grid.set(14, 12, 256, -2, 0);
    grid.set(13, 13, 256, 0, -1);
    grid.fillHoles();
    grid.expectCell(3, 3, 256, 0, 40);
    grid.expectCell(10, 6, 206, 50, 0);
    grid.expectCell(11, 6, 206, 50, 0);
    grid.expectCell(7, 9, 255, 1, 0);
    grid.expectCell(0, 12, 256, 0, 1);
    grid.expectCell(13, 12, 255, 0, 1);
    grid.expectCell(14, 12, 256, 0, 0);
    grid.expectCell(13, 13, 256, 0, 0);
}

TEST(FillWeightHoles, MarginsAndBottomRows) {
    Grid grid(14, 15);
    for (int y = 0; y < grid.height; y++)
        for (int x = 0; x < grid.width; x++)
            grid.set(x, y, 7, 100 + y, x);
    grid.set(6, 6, 7, 200, 56);
    grid.fillHoles();
    for (int y = 0; y < grid.height; y++)
        for (int x = 0; x < grid.width; x++) {
            const int row = std::min(y, 10);
            const bool isToppedUp = row >= 5 && x >= 5 && x <= 9 && !(x == 6 && y == 6);
            grid.expectCell(x, y, isToppedUp ? 256 - (100 + row) - x : 7, x == 6 && y == 6 ? 200 : 100 + row,
                            x == 6 && y == 6 ? 56 : x);
        }

    Grid small(6, 4);
    small.set(2, 3, 0, 0, 0);
    small.fillHoles();
    small.expectCell(2, 3, 256, 1, 0);
    small.expectCell(2, 2, 256, 0, 0);
}

/// Three uniform exposures of 80 x 64 reduced pixels that agree, so that nothing counts as moved.
struct UniformRun : test::ReducedRun {
    explicit UniformRun(const std::array<int, 3> &levels) : ReducedRun(80, 64) {
        for (int input = 0; input < 3; input++) {
            const int level = levels[static_cast<size_t>(input)];
            paint(work(input), level, 128, 128);
            paint(registered(input), levels[kMid], 128, 128);
            context.preparation.validRects[input] = {0, 0, 80, 64};
            std::fill_n(context.preparation.gridPlane(input), 20 * 16, static_cast<uint16_t>(level));
        }
        countHistograms();
        context.weights.release(nullptr);
    }
};

TEST(ExposureWeightStage, GhostsAreJudgedByEachExposuresOwnGridAndWeights) {
    UniformRun run({200, 230, 100});
    for (int y = 20; y < 40; y++)
        std::fill_n(planeOf(run.registered(run.kBright)).row(y) + 28, 20, uint8_t{240});
    ASSERT_EQ(exposure_weight_stage(nullptr, &run.context), HDR_OK);
    // A highlight that loses the bright exposure and that the dark one had to itself.
    EXPECT_EQ(run.context.weights.ghostMaskB[8 * 22 + 10], 255);
    EXPECT_EQ(run.context.weights.lumaWeightDark[8 * 22 + 10], 256);
}

TEST(ExposureWeightStage, FramesTheGridsAndWeighsEveryCell) {
    const std::array<int, 3> levels{100, 140, 70};
    UniformRun run(levels);
    run.context.preparation.gridPlane(run.kMid)[5 * 20 + 8] = 170;
    ASSERT_EQ(exposure_weight_stage(nullptr, &run.context), HDR_OK);

    constexpr int kWidth = 22, kHeight = 18;
    for (int input = 0; input < 3; input++) {
        const Plane<uint16_t> grid(run.context.preparation.gridPlane(input), kWidth, kHeight);
        for (int y = 0; y < kHeight; y++)
            for (int x = 0; x < kWidth; x++)
                ASSERT_EQ(grid(x, y),
                          input == run.kMid && x == 9 && y == 6 ? 170 : levels[static_cast<size_t>(input)]);
    }
    const ExposureWeights &weights = run.context.weights;
    const auto at = [](int x, int y) { return y * kWidth + x; };
    for (int y = 1; y < kHeight - 1; y++)
        for (int x = 1; x < kWidth - 1; x++) {
            const int dark = x == 9 && y == 6 ? 80 : 0;
            ASSERT_EQ(weights.lumaWeightMid[at(x, y)], 256 - dark) << x << ", " << y;
            ASSERT_EQ(weights.lumaWeightDark[at(x, y)], dark) << x << ", " << y;
            ASSERT_EQ(weights.lumaWeightBright[at(x, y)], 0);
        }
    for (int y = 0; y < kHeight - 4; y++) {
        EXPECT_EQ(weights.lumaWeightMid[at(0, y)], 256);
        EXPECT_EQ(weights.lumaWeightDark[at(0, y)], 1);
        EXPECT_EQ(weights.lumaWeightDark[at(kWidth - 1, y)], 1);
    }
}

TEST(ExposureWeightStage, FailedAllocationsLeakNothing) {
    for (size_t bytes : {64u, 400u, 2000u, 3000u, 1000000u}) {
        test::Arena arena(bytes);
        test::ReducedRun run(40, 40);
        run.context.weights.release(nullptr);
        EXPECT_EQ(exposure_weight_stage(arena.memory(), &run.context), bytes < 2000 ? HDR_ERR_NOMEM : HDR_OK);
        EXPECT_EQ(run.context.weights.ghostMaskB == nullptr, bytes < 2000);
        run.context.weights.release(arena.memory());
        EXPECT_EQ(run.context.weights.ghostMaskB, nullptr);
        EXPECT_TRUE(arena.isEmpty());
    }
}

} // namespace
} // namespace hdr
