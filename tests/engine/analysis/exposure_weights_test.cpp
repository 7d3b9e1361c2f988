// SPDX-License-Identifier: MIT
#include "engine/analysis/exposure_weights.h"

#include "tests/support/reduced_run.h"
#include "tests/support/scarce_memory.h"

namespace hdr {
namespace {

using test::ReducedRun;

constexpr int kDark = ReducedRun::kDark, kMid = ReducedRun::kMid, kBright = ReducedRun::kBright;

TEST(BaseWeights, FollowTheMiddleExposure) {
    struct Case {
        int midLevel, darkLevel, brightLevel, mid, dark, bright;
    };
    for (const Case &c : {Case{255, 64, 255, 0, 256, 0},
                          {193, 63, 255, 256, 0, 0},
                          {192, 0, 255, 0, 256, 0},
                          {161, 0, 255, 248, 8, 0},
                          {160, 0, 255, 256, 0, 0},
                          {64, 0, 255, 256, 0, 0},
                          {63, 255, 192, 248, 0, 8},
                          {32, 255, 192, 0, 0, 256},
                          {0, 255, 192, 0, 0, 256},
                          {63, 255, 193, 256, 0, 0},
                          {20, 255, 193, 256, 0, 0}}) {
        const CellWeights weights = baseWeights(c.midLevel, c.darkLevel, c.brightLevel);
        EXPECT_EQ((std::array{weights.mid, weights.dark, weights.bright}),
                  (std::array{c.mid, c.dark, c.bright}))
            << c.midLevel << ", " << c.darkLevel << ", " << c.brightLevel;
    }
}

/// The weights of the middle, dark and bright exposure, cell after cell.
using Grids = std::array<std::vector<int16_t>, 3>;

/// Holes are filled one after the other, so that each sees those before it filled. Negative weights count as
/// none, but a neighbour that comes later is still negative in the sums.
Grids filledSlowly(Grids grids, int width, int height) {
    auto &[mid, dark, bright] = grids;
    for (int i = 0; i < width * height; i++) {
        const int x = i % width, y = i / width;
        const auto cell = static_cast<size_t>(i);
        for (auto &grid : grids)
            grid[cell] = std::max(grid[cell], int16_t{0});
        if (mid[cell] + dark[cell] + bright[cell] == 0) {
            int darkSum = 0, brightSum = 0;
            int16_t largestDark = 1, largestBright = 1;
            for (const auto &[nx, ny] : {std::pair{x - 1, y}, {x + 1, y}, {x, y - 1}, {x, y + 1}}) {
                if (nx < 0 || nx >= width || ny < 0 || ny >= height)
                    continue;
                const auto neighbour = static_cast<size_t>(ny * width + nx);
                darkSum += dark[neighbour];
                brightSum += bright[neighbour];
                largestDark = std::max(largestDark, dark[neighbour]);
                largestBright = std::max(largestBright, bright[neighbour]);
            }
            if (darkSum < brightSum)
                bright[cell] = largestBright;
            else
                dark[cell] = largestDark;
            mid[cell] = 256;
        }
        if (x >= 5 && x < width - 4 && y >= 5 && y < height - 4 && dark[cell] + bright[cell] < 256)
            mid[cell] = static_cast<int16_t>(256 - dark[cell] - bright[cell]);
    }
    for (int i = width * std::max(height - 4, 1); i < width * height && height > 4; i++)
        for (auto &grid : grids)
            grid[static_cast<size_t>(i)] = grid[static_cast<size_t>(i - width)];
    return grids;
}

TEST(FillWeightHoles, EqualsTheCellwiseDefinition) {
    std::mt19937 random(1);
    for (const auto &[width, height] : {std::pair{14, 15}, {6, 4}, {3, 3}, {9, 5}, {30, 20}})
        for (int trial = 0; trial < 20; trial++) {
            Grids grids;
            for (auto &grid : grids)
                for (int i = 0; i < width * height; i++)
                    grid.push_back(
                        std::array<int16_t, 10>{0, 0, 0, 0, -5, 1, 40, 56, 200, 256}[random() % 10]);
            const Grids expected = filledSlowly(grids, width, height);
            fill_weight_holes(grids[0].data(), grids[1].data(), grids[2].data(), width, height);
            ASSERT_EQ(grids, expected) << width << " x " << height;
        }
}

/// Three uniform exposures of 80 x 64 reduced pixels that agree, so that nothing counts as moved.
struct UniformRun : ReducedRun {
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
        std::fill_n(planeOf(run.registered(kBright)).row(y) + 28, 20, uint8_t{240});
    ASSERT_EQ(exposure_weight_stage(nullptr, &run.context), HDR_OK);
    // A highlight that loses the bright exposure and that the dark one had to itself.
    EXPECT_EQ(run.context.weights.ghostMaskB[8 * 22 + 10], 255);
    EXPECT_EQ(run.context.weights.lumaWeightDark[8 * 22 + 10], 256);
}

TEST(ExposureWeightStage, FramesEachGridOnceAndWeighsEveryCell) {
    for (int darkIndex : {kDark, kMid}) { // the reference stands in for a dark exposure that was not given
        UniformRun run({100, 200, 70});
        Preparation &preparation = run.context.preparation;
        preparation.darkIndex = darkIndex;
        preparation.gridPlane(kMid)[5 * 20 + 8] = 170;
        preparation.gridPlane(kMid)[9 * 20 + 3] = 40; // a shadow in which the bright exposure is clipped
        std::array<std::vector<uint16_t>, 3> before;
        for (int input = 0; input < 3; input++)
            before[static_cast<size_t>(input)].assign(preparation.gridPlane(input),
                                                      preparation.gridPlane(input) + 20 * 16);
        ASSERT_EQ(exposure_weight_stage(nullptr, &run.context), HDR_OK);
        const ExposureWeights &weights = run.context.weights;
        for (int y = 0; y < 18; y++)
            for (int x = 0; x < 22; x++) {
                SCOPED_TRACE(testing::Message() << x << ", " << y);
                const int cell = y * 22 + x, inner = std::clamp(y - 1, 0, 15) * 20 + std::clamp(x - 1, 0, 19);
                for (int input : {kMid, kBright, darkIndex})
                    ASSERT_EQ(preparation.gridPlane(input)[cell],
                              before[static_cast<size_t>(input)][static_cast<size_t>(inner)]);
                const bool isFrame = x == 0 || y == 0 || x == 21, isHighlight = x == 9 && y == 6;
                if (y >= 14)
                    continue; // repeated rows
                ASSERT_EQ(weights.lumaWeightMid[cell], isHighlight ? 256 - 80 : 256);
                ASSERT_EQ(weights.lumaWeightDark[cell], isHighlight ? 80 : isFrame ? 1 : 0);
                ASSERT_EQ(weights.lumaWeightBright[cell], 0);
            }
    }
}

TEST(ExposureWeightStage, FailedAllocationsLeakNothing) {
    ReducedRun run(40, 40);
    ExposureWeights &weights = run.context.weights;
    weights.release(nullptr);
    // Ghost detection may fail without harm.
    const size_t failures = test::countFailures(64, [&](MemContext *memory) {
        const HdrStatus status = exposure_weight_stage(memory, &run.context);
        EXPECT_EQ(weights.ghostMaskB != nullptr, status == HDR_OK);
        weights.release(memory);
        EXPECT_EQ(weights.ghostMaskB, nullptr);
        return status;
    });
    EXPECT_GE(failures, 5 * 12 * 12 * 2 / 64u);
}

} // namespace
} // namespace hdr
