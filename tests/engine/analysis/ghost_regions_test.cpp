// SPDX-License-Identifier: MIT
#include "engine/analysis/ghost_regions.h"

#include "engine/analysis/exposure_weights.h"
#include "tests/support/reduced_run.h"

#include <gtest/gtest.h>
#include <map>
#include <span>
#include <string>
#include <tuple>

namespace hdr {
namespace {

using test::ReducedRun;
using Mask = std::vector<uint8_t>;
using Weights = std::tuple<int, int, int>; // reference, dark, bright

/// A grid of uniform luminance that shows the reference alone, with empty masks.
struct RegionScene : ReducedRun {
    int columns, rows;
    std::vector<int16_t> darkLuma, midLuma, brightLuma;
    std::span<int16_t> midWeights, darkWeights, brightWeights;
    Mask darkSide = Mask(cells(), 0), brightSide = darkSide, brightExtent = darkSide, darkMoved = darkSide,
         brightMoved = darkSide;
    int lastSampledColumn;
    bool motionKnown = false;

    RegionScene(int columns, int rows)
        : ReducedRun(4 * (columns - 2), 4 * (rows - 2)), columns(columns), rows(rows), darkLuma(cells(), 64),
          midLuma(cells(), 100), brightLuma(cells(), 150), midWeights(context.weights.lumaWeightMid, cells()),
          darkWeights(context.weights.lumaWeightDark, cells()),
          brightWeights(context.weights.lumaWeightBright, cells()), lastSampledColumn(columns - 2) {
        std::ranges::fill(midWeights, int16_t{256});
        for (uint8_t *mask : ghostMasks()) // the analysis clears what an earlier one left
            std::fill_n(mask, cells(), uint8_t{9});
    }

    size_t at(int x, int y) const { return static_cast<size_t>(y * columns + x); }
    template <typename Samples>
    void fill(Samples &plane, Rect area, int value) const {
        for (int y = area.y0; y < area.y1; y++)
            for (int x = area.x0; x < area.x1; x++)
                plane[at(x, y)] = static_cast<typename Samples::value_type>(value);
    }
    void weigh(Rect area, Weights weights) {
        fill(midWeights, area, std::get<0>(weights));
        fill(darkWeights, area, std::get<1>(weights));
        fill(brightWeights, area, std::get<2>(weights));
    }
    GhostProposal run() {
        RegionSearch search(nullptr, columns, rows);
        std::array<Mask, 3> scratch = {Mask(cells()), Mask(cells()), Mask(cells())};
        const GhostGrid grid = {.width = columns,
                                .height = rows,
                                .lastSampledColumn = lastSampledColumn,
                                .darkLuma = darkLuma.data(),
                                .midLuma = midLuma.data(),
                                .brightLuma = brightLuma.data(),
                                .midWeights = midWeights.data(),
                                .darkWeights = darkWeights.data(),
                                .brightWeights = brightWeights.data(),
                                .darkSide = darkSide.data(),
                                .brightSide = brightSide.data(),
                                .darkMoved = motionKnown ? darkMoved.data() : nullptr,
                                .brightMoved = motionKnown ? brightMoved.data() : nullptr,
                                .scratch = {scratch[0].data(), scratch[1].data(), scratch[2].data()},
                                .brightExtent = brightExtent.data()};
        return analyse_ghost_regions(nullptr, &context, grid, search);
    }
    Weights weights(int x, int y) const {
        return {midWeights[at(x, y)], darkWeights[at(x, y)], brightWeights[at(x, y)]};
    }
    /// The letters of the masks that are set in a cell.
    std::string masks(int x, int y) const {
        std::string names;
        for (size_t i = 0; i < 4; i++)
            if (const int value = ghostMasks()[i][at(x, y)])
                names += value == 255 ? "ABCD"[i] : '?';
        return names;
    }
    /// The first mask of each cell in a row.
    std::string row(int y) const {
        std::string letters;
        for (int x = 0; x < columns; x++)
            letters += (masks(x, y) + ".")[0];
        return letters;
    }
};

TEST(GhostRegions, BrightShadowIsTakenFromBrightAlone) {
    RegionScene scene(16, 12);
    const Rect region = {4, 4, 8, 8};
    scene.fill(scene.brightSide, region, 255);
    scene.weigh(region, {85, 0, 171});
    const GhostProposal proposal = scene.run();
    EXPECT_EQ(proposal.ghostMode, kGhostsNone);
    EXPECT_EQ(scene.masks(4, 7), "D");
    // 8 of the 25 cells around belong to the region: 8 x 256 / 25 = 81.9.
    EXPECT_EQ(scene.masks(3, 6), "");
    EXPECT_EQ(scene.weights(3, 6), Weights(174, 0, 82));
    EXPECT_EQ(scene.weights(12, 6), Weights(256, 0, 0));
}

TEST(GhostRegions, BrightIsRemovedWhenItDoesNotDominate) {
    const Rect region = {4, 4, 14, 14}; // 100 cells
    const auto scene = [&](auto change) {
        RegionScene made(20, 18);
        made.fill(made.brightSide, region, 255);
        made.weigh(region, {0, 0, 256});
        change(made);
        const GhostProposal proposal = made.run();
        EXPECT_EQ(proposal.ghostMode == kGhostsReplaced, made.masks(5, 5) != "D");
        return made.masks(5, 5);
    };
    EXPECT_EQ(scene([](RegionScene &) {}), "D");
    // The bright weights must exceed twice the reference's.
    EXPECT_EQ(scene([&](RegionScene &made) { made.weigh(region, {86, 0, 172}); }), "AC");
    // One hundredth of clipped cells is too many.
    EXPECT_EQ(scene([](RegionScene &made) { made.brightLuma[made.at(9, 9)] = 252; }), "D");
    EXPECT_EQ(scene([](RegionScene &made) { made.brightLuma[made.at(9, 9)] = 253; }), "AC");
    // The dark exposure differs there as well.
    EXPECT_EQ(scene([](RegionScene &made) { made.darkSide[made.at(13, 13)] = 255; }), "AC");
    // A difference in deep shadow does not count.
    EXPECT_EQ(scene([](RegionScene &made) {
                  made.darkSide[made.at(13, 13)] = 255;
                  made.midLuma[made.at(13, 13)] = 63;
              }),
              "D");
}

TEST(GhostRegions, HighlightsWithoutBrightGoToDark) {
    RegionScene scene(24, 14);
    const Rect region = {2, 3, 20, 11};
    scene.fill(scene.brightSide, region, 255);
    scene.fill(scene.midLuma, region, 192);
    scene.fill(scene.brightLuma, region, 224);
    scene.weigh(region, {0, 256, 0});
    scene.midLuma[scene.at(5, 5)] = 191;
    scene.brightLuma[scene.at(7, 5)] = 223;
    scene.weigh({9, 5, 10, 6}, {128, 128, 0});
    scene.weigh({11, 5, 12, 6}, {127, 129, 0});
    scene.fill(scene.darkSide, {14, 5, 20, 8}, 255);
    scene.weigh({16, 6, 17, 7}, {0, 0, 256}); // a base weight in a cell that loses the bright exposure
    const GhostProposal proposal = scene.run();
    EXPECT_EQ(proposal.ghostMode, kGhostsReplaced);
    EXPECT_TRUE(proposal.darkSideFound);
    EXPECT_EQ(scene.masks(3, 4), "BC");
    EXPECT_EQ(scene.masks(11, 5), "BC");
    for (int x : {5, 7, 9, 14, 16})
        EXPECT_EQ(scene.masks(x, 5), "AC") << x;
    EXPECT_EQ(scene.masks(16, 6), "AC");
}

TEST(GhostRegions, ManyClippedCellsRuleTheDarkExposureOut) {
    for (int clipped : {64, 65}) {
        RegionScene scene(30, 20);
        scene.fill(scene.darkSide, {5, 5, 15, 15}, 255);
        scene.fill(scene.darkSide, {20, 16, 22, 18}, 255); // another one does not take that back
        for (int i = 0; i < clipped; i++)
            scene.midLuma[scene.at(5 + i % 10, 5 + i / 10)] = 251;
        EXPECT_EQ(scene.run().ghostMode, clipped == 64 ? kGhostsReplaced : kGhostsWithoutDark);
        EXPECT_EQ(scene.context.earlyExitCode, 0);
    }
}

TEST(GhostRegions, TooLargeRegionsEndTheMerge) {
    // 7 x 7 / 2 = 24, less 49 x 1 / 30 = 1 or 49 x 10 / 30 = 16: the largest that is replaced.
    for (const auto &[level, largest] : {std::pair{1, 23}, {10, 8}})
        for (int cells : {largest, largest + 1})
            for (bool bright : {false, true}) {
                RegionScene scene(7, 7);
                scene.context.ghostSuppressionLevel = level;
                std::fill_n((bright ? scene.brightSide : scene.darkSide).begin(), cells, 255);
                scene.run();
                const bool tooLarge = cells > largest;
                EXPECT_EQ(scene.context.earlyExitCode, tooLarge ? HDR_ERR_SHIFT : HDR_OK);
                EXPECT_EQ(scene.context.fallback, !tooLarge ? HDR_FALLBACK_NONE
                                                  : bright  ? HDR_FALLBACK_BRIGHT_MOTION
                                                            : HDR_FALLBACK_DARK_MOTION);
            }
}

TEST(GhostRegions, WideAndTallBrightDifferencesEndTheMerge) {
    const auto exits = [](int side, int level, int length, int width) {
        RegionScene scene(side, side);
        scene.context.ghostSuppressionLevel = level;
        for (int i = 0; i < length; i++)
            scene.brightExtent[scene.at(i % width, i)] = 255;
        scene.run();
        EXPECT_EQ(scene.row(1), std::string(static_cast<size_t>(side), '.')); // this mask replaces nothing
        return scene.context.earlyExitCode == HDR_ERR_SHIFT;
    };
    // 2 x 14 / 3 - 1 x 14 / 20 = 9 - 0 is the largest side at level 1.
    EXPECT_TRUE(exits(14, 1, 10, 14));
    EXPECT_FALSE(exits(14, 1, 9, 14));
    EXPECT_FALSE(exits(14, 1, 10, 1));
    // 2 x 14 / 3 - 10 x 14 / 20 = 9 - 7 at level 10.
    EXPECT_TRUE(exits(14, 10, 3, 14));
    EXPECT_FALSE(exits(14, 10, 2, 14));
    // Regions below 200 x 200 / 255 = 156 cells are dropped, whatever their box (33 is the largest here).
    EXPECT_FALSE(exits(200, 10, 155, 200));
    EXPECT_TRUE(exits(200, 10, 156, 200));
}

TEST(GhostRegions, FrameGoesToBrightOnlyWhereItAndItsNeighbourKeepIt) {
    RegionScene scene(12, 12);
    scene.weigh({0, 0, 12, 12}, {0, 0, 0});
    scene.weigh({1, 1, 11, 11}, {0, 0, 256});
    scene.fill(scene.brightSide, {3, 0, 7, 1}, 255);
    scene.fill(scene.brightSide, {3, 10, 7, 11}, 255);
    scene.fill(scene.darkSide, {3, 0, 7, 4}, 255);
    scene.fill(scene.darkSide, {3, 9, 7, 12}, 255);
    scene.fill(scene.darkSide, {11, 5, 12, 8}, 255);
    scene.run();
    EXPECT_EQ(scene.masks(4, 0), "AC");
    EXPECT_EQ(scene.masks(4, 1), "D");
    EXPECT_EQ(scene.masks(4, 9), "D");
    EXPECT_EQ(scene.masks(4, 10), "AC");
    EXPECT_EQ(scene.masks(4, 11), "A");
    EXPECT_EQ(scene.masks(11, 6), "D");
}

TEST(GhostRegions, EdgeCellsGoWhereTheirNeighboursInsideGo) {
    RegionScene scene(12, 12);
    scene.weigh({0, 0, 12, 12}, {0, 0, 0});
    scene.weigh({1, 1, 11, 11}, {0, 256, 0});
    scene.fill(scene.midLuma, {0, 0, 12, 12}, 210);
    scene.fill(scene.brightLuma, {0, 0, 12, 12}, 240);
    // Column 10 has no statistics: the shadow that it seems to be is none.
    scene.lastSampledColumn = 9;
    scene.fill(scene.midLuma, {10, 0, 12, 12}, 0);
    scene.weigh({10, 1, 11, 11}, {0, 0, 256});
    scene.fill(scene.brightSide, {7, 0, 12, 6}, 255);
    scene.fill(scene.darkSide, {10, 7, 12, 9}, 255); // not where there are statistics
    scene.midLuma[scene.at(11, 8)] = 64;
    scene.fill(scene.midLuma, {0, 0, 12, 1}, 0); // the frame has no luminance of its own
    scene.weigh({8, 8, 9, 9}, {256, 0, 0});
    scene.run();
    EXPECT_EQ(scene.masks(10, 7) + scene.masks(11, 7), "");
    for (const auto &[x, y] : {std::pair{8, 0}, {9, 1}, {10, 3}, {11, 0}, {11, 5}})
        EXPECT_EQ(scene.masks(x, y), "BC") << x << ' ' << y;
    for (int y = 0; y < 12; y++) {
        EXPECT_EQ(scene.weights(10, y), scene.weights(9, y)) << y;
        EXPECT_EQ(std::get<2>(scene.weights(9, y)), 0) << y; // nothing of column 10 is smoothed in
    }
}

TEST(GhostRegions, KnownMotionIsTakenFromTheReferenceAndItsMaskHasAMargin) {
    RegionScene scene(16, 14);
    scene.motionKnown = true;
    scene.weigh({0, 0, 16, 14}, {128, 128, 0});
    scene.darkMoved[scene.at(7, 6)] = 255;
    scene.brightMoved[scene.at(8, 6)] = 255;
    const GhostProposal proposal = scene.run();
    EXPECT_EQ(proposal.ghostMode, kGhostsReplaced);
    EXPECT_FALSE(proposal.darkSideFound);
    // Two cells and those around them are replaced; the mask reaches on by two, cut at the corners.
    EXPECT_EQ(scene.row(6), "....AAAAAAAA....");
    EXPECT_EQ(scene.row(3), ".....AAAAAA.....");
    EXPECT_EQ(scene.row(2), "................");
    EXPECT_EQ(scene.masks(8, 6), "AC");
    for (int x = 6; x <= 9; x++)
        EXPECT_EQ(scene.weights(x, 5), Weights(256, 0, 0));
    EXPECT_NE(scene.weights(5, 6), Weights(256, 0, 0));
}

/// A thing that moves over cells of the given weights; d, b and x say where the dark, the bright and both
/// exposures differ from the reference in the columns from 4 on. What becomes of row 6, by its masks, where
/// the first cells of the region are dim in the dark exposure and clipped in the bright one.
std::string shownBy(const std::string &moved, Weights inside, int badCells = 0) {
    constexpr int kDark = ReducedRun::kDark, kMid = ReducedRun::kMid, kBright = ReducedRun::kBright;
    RegionScene scene(16, 14);
    scene.motionKnown = true;
    scene.paint(scene.work(kDark), 90, 91, 92);
    std::fill_n(scene.context.tables.toneMatchMidToBright, 256, uint8_t{77});
    scene.context.alignment.tones[kDark].fill(150);
    scene.weigh({3, 5, 14, 8}, inside);
    scene.fill(scene.darkLuma, {4, 5, 4 + badCells, 6}, 63);
    scene.fill(scene.brightLuma, {4, 5, 4 + badCells, 6}, 253);
    for (size_t i = 0; i < moved.size(); i++) {
        const size_t cell = scene.at(4 + static_cast<int>(i), 6);
        scene.darkMoved[cell] = moved[i] == 'd' || moved[i] == 'x' ? 255 : 0;
        scene.brightMoved[cell] = moved[i] == 'b' || moved[i] == 'x' ? 255 : 0;
    }
    EXPECT_EQ(scene.run().ghostMode, kGhostsReplaced);
    // Cells of the region that the dark exposure gives show it in every picture.
    const size_t left = 3, length = moved.size() + 2;
    const std::string region = scene.row(6).substr(left, length);
    const int shown = static_cast<int>(std::min(region.find_first_not_of('B'), length));
    for (const auto &[picture, luma] : {std::pair{&scene.registered(kMid), 150},
                                        {&scene.registered(kBright), 150},
                                        {&scene.work(kBright), 77}})
        for (int y = 0; y < scene.height; y++)
            for (int x = 0; x < scene.width; x++) {
                const bool isShown = x >= 8 && x < 8 + 4 * shown && y >= 16 && y < 28;
                const auto pixel = rowsOfPlanes(*picture, y);
                EXPECT_EQ((std::array{int{pixel[0][x]}, int{pixel[1][x]}, int{pixel[2][x]}}),
                          (isShown ? std::array{luma, 91, 92} : std::array{0, 0, 0}))
                    << x << ", " << y;
            }
    const std::string row = scene.row(6);
    return row.substr(row.find_first_not_of('.'), row.find_last_not_of('.') - row.find_first_not_of('.') + 1);
}

TEST(GhostRegions, KnownMotionIsTakenFromTheExposureThatItNeedsMost) {
    // The thing stands in both places inside the region, so that either exposure shows it once. The masks
    // have a margin of two cells.
    const auto source = [](const char *moved, Weights inside, int badCells = 0) {
        const std::string row = shownBy(moved, inside, badCells);
        EXPECT_EQ(row, std::string(std::char_traits<char>::length(moved) + 6, row[0]));
        return row[0];
    };
    EXPECT_EQ(source("ddxx", {127, 129, 0}), 'B');
    EXPECT_EQ(source("ddxx", {128, 128, 0}), 'A');
    EXPECT_EQ(source("ddxx", {100, 128, 28}), 'A');
    EXPECT_EQ(source("ddddxxxx", {127, 129, 0}, 2), 'B');
    EXPECT_EQ(source("ddddxxxx", {127, 129, 0}, 3), 'A'); // too dim in 3 of 30 cells
    EXPECT_EQ(source("bbxx", {85, 0, 171}), 'D');
    EXPECT_EQ(source("bbxx", {86, 0, 170}), 'A');
    EXPECT_EQ(source("bbxx", {50, 60, 146}), 'D');
    EXPECT_EQ(source("bbxx", {85, 0, 171}, 1), 'A'); // clipped in more than one of a hundred
    // Nothing that moved is shown twice or lost.
    for (const char *onePlace : {"xxxx", "dddd", "dxxxxx"})
        EXPECT_EQ(source(onePlace, {0, 256, 0}), 'A') << onePlace;
    EXPECT_EQ(source("dxxxx", {0, 256, 0}), 'B'); // enough to be a place of its own
    EXPECT_EQ(source("bbbb", {0, 0, 256}), 'A');
    // The exposure agrees with the reference here, and in the first cells of a thing that moved in both.
    EXPECT_EQ(source("bbbb", {0, 256, 0}), 'B');
    EXPECT_EQ(source("dddd", {0, 0, 256}), 'D');
    EXPECT_EQ(shownBy("bbxx", {0, 256, 0}), "BBBBAAAAAA");
}

TEST(GhostRegions, DarkDifferencesArePartOfKnownMotionOrNoise) {
    RegionScene scene(24, 14);
    scene.motionKnown = true;
    scene.fill(scene.darkSide, {4, 4, 8, 8}, 255);
    scene.fill(scene.darkSide, {18, 4, 21, 8}, 255);
    scene.darkMoved[scene.at(7, 7)] = 255;
    EXPECT_FALSE(scene.run().darkSideFound);
    EXPECT_EQ(scene.masks(3, 3), "A");
    EXPECT_EQ(scene.masks(19, 6), "");
}

TEST(GhostRegions, MoreDifferencesReplaceMoreAndReplacedCellsKeepTheirWeight) {
    const std::map<std::string, Weights> expected = {
        {"A", {256, 0, 0}}, {"AC", {256, 0, 0}}, {"B", {0, 256, 0}}, {"BC", {0, 256, 0}}, {"D", {0, 0, 256}}};
    std::map<char, int> taken;
    for (unsigned trial = 0; trial < 60; trial++) {
        RegionScene scene(24, 20);
        scene.random.seed(trial);
        const auto upTo = [&](int limit) {
            return std::uniform_int_distribution<int>(0, limit)(scene.random);
        };
        const auto area = [&] {
            const int x = upTo(20), y = upTo(16);
            return Rect{x, y, std::min(x + 1 + upTo(9), 24), std::min(y + 1 + upTo(9), 20)};
        };
        for (int i = 0; i < 12; i++) {
            const Rect patch = area();
            const int luma = upTo(255);
            const CellWeights base = baseWeights(luma, luma, luma);
            scene.fill(scene.midLuma, patch, luma);
            scene.fill(scene.brightLuma, patch, std::min(255, luma + 40));
            scene.weigh(patch, {base.mid, base.dark, base.bright});
        }
        const std::vector<int16_t> base(scene.midWeights.data(), scene.midWeights.data() + 3 * scene.cells());
        Mask dark = scene.darkSide, bright = dark, before = dark;
        for (int step = 0; step < 6; step++) {
            SCOPED_TRACE(testing::Message() << trial << ", " << step);
            scene.fill(step % 2 ? dark : bright, area(), 255);
            scene.darkSide = dark;
            scene.brightSide = bright;
            std::ranges::copy(base, scene.midWeights.data());
            scene.run();
            // Filling holes brings nothing back; it replaces the last four rows.
            for (int rows : {scene.rows, scene.rows - 4}) {
                for (int y = 0; y < rows; y++)
                    for (int x = 0; x < scene.columns; x++) {
                        const std::string masks = scene.masks(x, y);
                        ASSERT_TRUE(masks != "" || !before[scene.at(x, y)]);
                        before[scene.at(x, y)] = masks != "";
                        if (masks == "")
                            continue;
                        ASSERT_TRUE(expected.contains(masks)) << masks;
                        ASSERT_EQ(scene.weights(x, y), expected.at(masks)) << masks;
                        taken[masks[0]]++;
                    }
                fill_weight_holes(scene.midWeights.data(), scene.darkWeights.data(),
                                  scene.brightWeights.data(), scene.columns, scene.rows);
            }
        }
    }
    for (char mask : {'A', 'B', 'D'})
        EXPECT_GT(taken[mask], 1000) << mask;
}

} // namespace
} // namespace hdr
