// SPDX-License-Identifier: MIT
#include "engine/analysis/ghost_detection.h"

#include "tests/support/mask_art.h"
#include "tests/support/reduced_run.h"
#include "tests/support/scarce_memory.h"

#include <span>
#include <string>
#include <tuple>

namespace hdr {
namespace {

using test::ReducedRun;
using Mask = std::vector<uint8_t>;
using Weights = std::tuple<int, int, int>; // reference, dark, bright

constexpr int kDark = ReducedRun::kDark, kMid = ReducedRun::kMid, kBright = ReducedRun::kBright;
constexpr int kNeverMarked = 11;

/// Reduced pictures of one luminance with the grid over them. Levels, weights and clip points are the test's
/// choice.
struct GhostScene : ReducedRun {
    int columns = context.preparation.gridWidth, rows = context.preparation.gridHeight;
    std::vector<int16_t> midGrid, brightGrid, baseMid, baseDark, baseBright;

    /// The last column and row of cells are cut by the picture's edge unless the size is a multiple of 4.
    GhostScene(int width, int height, int luma)
        : ReducedRun(width, height), midGrid(cells(), static_cast<int16_t>(luma)), brightGrid(midGrid) {
        for (int i = 0; i < 3; i++) {
            paint(work(i), luma, 128, 128);
            paint(registered(i), luma, 128, 128);
            context.preparation.validRects[i] = {0, 0, width, height};
            // The reference has highlights beyond its range.
            context.preparation.histogram(i, 0)[i == kMid ? 255 : 0] = 1000;
        }
        setBase({128, 128, 0});
    }

    size_t at(int x, int y) const { return static_cast<size_t>(y * columns + x); }
    using ReducedRun::paint;
    static void paint(const Offscreen &picture, Rect pixels, int luma) {
        for (int y = pixels.y0; y < pixels.y1; y++)
            std::fill(planeOf(picture).row(y) + pixels.x0, planeOf(picture).row(y) + pixels.x1,
                      static_cast<uint8_t>(luma));
    }
    /// Paints the block under the cells [x0, x1) x [y0, y1) of the grid.
    static void paintCells(const Offscreen &picture, Rect area, int luma) {
        paint(picture, {4 * (area.x0 - 1), 4 * (area.y0 - 1), 4 * (area.x1 - 1), 4 * (area.y1 - 1)}, luma);
    }
    void setBase(Weights weights) {
        baseMid.assign(cells(), static_cast<int16_t>(std::get<0>(weights)));
        baseDark.assign(cells(), static_cast<int16_t>(std::get<1>(weights)));
        baseBright.assign(cells(), static_cast<int16_t>(std::get<2>(weights)));
    }
    HdrStatus run(int level, MemContext *memory = nullptr) {
        ExposureWeights &weights = context.weights;
        std::ranges::copy(baseMid, weights.lumaWeightMid);
        std::ranges::copy(baseDark, weights.lumaWeightDark);
        std::ranges::copy(baseBright, weights.lumaWeightBright);
        context.ghostSuppressionLevel = level;
        const std::vector<int16_t> darkGrid(cells(), 0);
        return detect_ghosts(memory, &context, darkGrid.data(), midGrid.data(), brightGrid.data(), columns,
                             rows, weights.lumaWeightDark, weights.lumaWeightBright, weights.lumaWeightMid);
    }
    Weights weights(int x, int y) const {
        const ExposureWeights &weights = context.weights;
        return {weights.lumaWeightMid[at(x, y)], weights.lumaWeightDark[at(x, y)],
                weights.lumaWeightBright[at(x, y)]};
    }
    std::span<uint8_t> mask(char name) const {
        return {ghostMasks()[static_cast<size_t>(name - 'A')], cells()};
    }
    Mask marked() const {
        Mask all(cells(), 0);
        for (const uint8_t *mask : ghostMasks())
            for (size_t i = 0; i < all.size(); i++)
                all[i] |= mask[i];
        return all;
    }
    /// The mask of the cells whose city-block distance from a rectangle of cells is at most `reach`.
    std::string around(Rect area, int reach) const {
        Mask mask(cells(), 0);
        for (int y = 0; y < rows; y++)
            for (int x = 0; x < columns; x++)
                if (std::max({area.x0 - x, 0, x - area.x1 + 1}) +
                        std::max({area.y0 - y, 0, y - area.y1 + 1}) <=
                    reach)
                    mask[at(x, y)] = 255;
        return art(mask);
    }
    std::string art(std::span<const uint8_t> mask) const {
        return test::artFrom(Mask(mask.begin(), mask.end()), static_cast<size_t>(columns));
    }
    std::string nothing() const { return art(Mask(cells(), 0)); }
};

/// What is set in either of two masks.
std::string either(std::string one, const std::string &other) {
    for (size_t i = 0; i < one.size(); i++)
        one[i] = std::min(one[i], other[i]); // '#' is less than '.'
    return one;
}

TEST(DetectGhosts, MovedSquaresOnBothSides) {
    GhostScene scene(158, 118, 100);
    scene.setBase({100, 128, 28});
    scene.context.warningFlag = 1;
    scene.paintCells(scene.registered(kBright), {10, 11, 20, 19}, 150);
    scene.paintCells(scene.registered(kDark), {24, 11, 32, 19}, 150);
    ASSERT_EQ(scene.run(0), HDR_OK);
    // The dark side is eroded by 1, grown by 1 without its corners, then closed with a margin of 3.
    EXPECT_EQ(scene.art(scene.mask('C')), scene.around({10, 11, 20, 19}, 3));
    EXPECT_EQ(scene.art(scene.mask('A')),
              either(scene.around({10, 11, 20, 19}, 3), scene.around({25, 12, 31, 18}, 4)));
    EXPECT_EQ(scene.art(scene.marked()), scene.art(scene.mask('A')));
    for (int x : {15, 28})
        EXPECT_EQ(scene.weights(x, 15), Weights(256, 0, 0));
    EXPECT_EQ(scene.weights(38, 15), Weights(100, 128, 28));
    EXPECT_EQ(scene.context.ghosts.ghostMode, kGhostsReplaced);
    EXPECT_EQ(scene.context.ghosts.chromaMode, kChromaAll);
    EXPECT_EQ(scene.context.ghosts.excludedInputs[kDark], 0);
    EXPECT_EQ(scene.context.warningFlag, 0);
}

/// Luminances of a square: registered reference, dark and bright exposure, and the last two before
/// registration.
struct Levels {
    int mid, dark, bright, darkOwn, brightOwn;
};

/// The lowest ghost suppression level that marks a square of these luminances where the grid shows
/// `gridLuma`.
int firstMarkedLevel(const Levels &square, int gridLuma) {
    GhostScene scene(80, 78, gridLuma);
    const Rect area = {6, 6, 14, 14};
    scene.paintCells(scene.registered(kMid), area, square.mid);
    scene.paintCells(scene.registered(kDark), area, square.dark);
    scene.paintCells(scene.registered(kBright), area, square.bright);
    scene.paintCells(scene.work(kDark), area, square.darkOwn);
    scene.paintCells(scene.work(kBright), area, square.brightOwn);
    for (int level = 0; level <= 10; level++) {
        EXPECT_EQ(scene.run(level), HDR_OK);
        if (scene.marked()[scene.at(10, 10)])
            return level;
    }
    return kNeverMarked;
}

TEST(DetectGhosts, DifferenceMustExceedItsThreshold) {
    // Bright side, grid luminance 10: the threshold is 16 - level.
    EXPECT_EQ(firstMarkedLevel({10, 10, 17, 0, 20}, 10), 10);
    EXPECT_EQ(firstMarkedLevel({10, 10, 16, 0, 20}, 10), kNeverMarked);
    EXPECT_EQ(firstMarkedLevel({40, 40, 57, 0, 90}, 15), 0);
    EXPECT_EQ(firstMarkedLevel({40, 40, 57, 0, 90}, 16), 1);
    // Dark side, grid luminance 64: the threshold is 20 - level.
    EXPECT_EQ(firstMarkedLevel({64, 85, 64, 30, 90}, 64), 0);
    EXPECT_EQ(firstMarkedLevel({64, 44, 64, 30, 90}, 64), 1);
}

TEST(DetectGhosts, ClippedBrightExposureIsNoGhost) {
    // The threshold is 22 - level; a clipped exposure counts as 16 and only where it is the brighter one.
    for (const auto &[mid, bright, own, level] : {std::array{193, 255, 240, 0},
                                                  {193, 255, 241, kNeverMarked},
                                                  {192, 255, 241, 0},
                                                  {150, 100, 250, 0},
                                                  {150, 100, 251, kNeverMarked},
                                                  {150, 200, 251, 7},
                                                  {150, 165, 251, 8}})
        EXPECT_EQ(firstMarkedLevel({mid, mid, bright, mid, own}, 96), level)
            << mid << ", " << bright << ", " << own;
}

TEST(DetectGhosts, DarkExposureInHighlightsAndShadows) {
    const auto first = [](int mid, int dark, int own, int gridLuma = 240) {
        return firstMarkedLevel({mid, dark, mid, own, 100}, gridLuma);
    };                                      // the threshold is 31 - level
    EXPECT_EQ(first(240, 192, 0), 4);       // (352 - 240) x 48 / 192 = 28
    EXPECT_EQ(first(240, 201, 0), 10);      // (352 - 240) x 39 / 192 = 22
    EXPECT_EQ(first(240, 200, 0), 9);       // 112 x 40 / 192 = 23
    EXPECT_EQ(first(161, 129, 0), 1);       // 191 x 32 / 192 = 31
    EXPECT_EQ(first(161, 128, 0), 0);       // 33 as it is
    EXPECT_EQ(first(240, 128, 0, 1280), 0); // 112 as it is exceeds 96
    EXPECT_EQ(first(160, 192, 0), 0);       // 32 as it is
    EXPECT_EQ(first(31, 31, 32, 64), 0);    // lighter than the reference
    EXPECT_EQ(first(31, 31, 32, 1791), 0);  // counts as 128
    EXPECT_EQ(first(31, 31, 32, 1792), 1);
    EXPECT_EQ(first(31, 90, 31, 64), kNeverMarked);
    EXPECT_EQ(first(32, 52, 0, 64), 1);
}

TEST(DetectGhosts, OnlyTheCommonValidRectangleIsCompared) {
    GhostScene scene(158, 118, 100);
    for (const auto &[one, other] : {std::pair{kBright, kDark}, {kDark, kBright}}) {
        scene.context.preparation.validRects[one] = {40, 0, 120, 118};
        scene.context.preparation.validRects[other] = {0, 12, 158, 80};
        for (const Rect &outside :
             {Rect{0, 0, 40, 118}, {120, 0, 158, 118}, {0, 0, 158, 12}, {0, 80, 158, 118}})
            scene.paint(scene.registered(kDark), outside, 180);
        ASSERT_EQ(scene.run(10), HDR_OK);
        EXPECT_EQ(scene.art(scene.marked()), scene.nothing());
        EXPECT_EQ(scene.context.ghosts.ghostMode, kGhostsNone);
    }
    // What differs at the rectangle's edge is taken to go on beyond it.
    scene.paint(scene.registered(kDark), {40, 20, 60, 60}, 180);
    ASSERT_EQ(scene.run(0), HDR_OK);
    EXPECT_EQ(scene.mask('A')[scene.at(0, 10)], 255);
    EXPECT_EQ(scene.mask('A')[scene.at(0, 25)], 0);

    scene.context.preparation.validRects[kBright] = {0, 50, 158, 50};
    ASSERT_EQ(scene.run(10), HDR_OK);
    EXPECT_EQ(scene.art(scene.marked()), scene.nothing());
}

TEST(DetectGhosts, DarkExposureIsDroppedWhenTheReferenceHoldsItsHighlights) {
    const Rect darkSquare = {8, 8, 16, 16};
    for (int high : {251, 252}) {
        GhostScene scene(158, 118, 200);
        scene.setBase({100, 156, 0});
        std::swap(scene.context.preparation.histogram(kMid, 0)[255],
                  scene.context.preparation.histogram(kMid, 0)[high]);
        scene.paintCells(scene.registered(kDark), darkSquare, 100);
        std::ranges::fill(scene.brightGrid, int16_t{230});
        scene.paintCells(scene.registered(kBright), {24, 8, 32, 16}, 240);
        ASSERT_EQ(scene.run(0), HDR_OK);
        const GhostDecision &ghosts = scene.context.ghosts;
        const bool dropped = high == 251;
        EXPECT_EQ(ghosts.ghostMode, dropped ? kGhostsWithoutDark : kGhostsReplaced);
        EXPECT_EQ(ghosts.chromaMode, dropped ? kChromaWithoutDark : kChromaAll);
        EXPECT_EQ(ghosts.excludedInputs[kDark], dropped ? 1 : 0);
        EXPECT_EQ(ghosts.excludedInputs[kBright], 0);
        EXPECT_EQ(scene.weights(12, 12), Weights(256, 0, 0));
        EXPECT_EQ(scene.weights(38, 28), dropped ? Weights(256, 0, 0) : Weights(100, 156, 0));
        EXPECT_EQ(scene.mask('C')[scene.at(28, 12)], 255);
        EXPECT_EQ(scene.mask('B')[scene.at(28, 12)], dropped ? 0 : 255);
        EXPECT_EQ(scene.weights(28, 12), dropped ? Weights(256, 0, 0) : Weights(0, 256, 0));
    }
    // Without a difference on the dark side the dark exposure stays, whatever the highlights.
    GhostScene scene(158, 118, 100);
    scene.context.preparation.histogram(kMid, 0)[255] = 0;
    scene.paintCells(scene.registered(kBright), darkSquare, 150);
    ASSERT_EQ(scene.run(0), HDR_OK);
    EXPECT_EQ(scene.context.ghosts.ghostMode, kGhostsReplaced);
    EXPECT_EQ(scene.context.ghosts.chromaMode, kChromaAll);
}

TEST(DetectGhosts, ClippedRegionDropsTheDarkExposure) {
    GhostScene scene(158, 118, 252);
    scene.paintCells(scene.registered(kDark), {8, 8, 16, 16}, 100);
    ASSERT_EQ(scene.run(0), HDR_OK);
    EXPECT_EQ(scene.context.ghosts.ghostMode, kGhostsWithoutDark);
    EXPECT_EQ(scene.context.ghosts.excludedInputs[kDark], 1);
}

TEST(DetectGhosts, InputsExcludedBeforehandAreLeftOut) {
    for (bool darkToo : {false, true}) {
        GhostScene scene(158, 118, 20);
        scene.setBase({100, 40, 220});
        scene.paint(scene.work(kDark), {0, 0, 158, 118}, 10);
        scene.paintCells(scene.registered(kBright), {8, 8, 16, 16}, 60);
        scene.context.ghosts.excludedInputs[kBright] = 1;
        scene.context.ghosts.excludedInputs[kDark] = darkToo;
        ASSERT_EQ(scene.run(0), HDR_OK);
        EXPECT_EQ(scene.context.ghosts.ghostMode, kGhostsNone);
        EXPECT_EQ(scene.context.ghosts.chromaMode, darkToo ? kChromaWithoutDark : kChromaWithoutBright);
        EXPECT_EQ(scene.weights(30, 25), darkToo ? Weights(140, 0, 220) : Weights(256, 40, 0));
        EXPECT_EQ(scene.weights(12, 12), darkToo ? Weights(0, 0, 256) : Weights(256, 0, 0));
        EXPECT_EQ(scene.mask('D')[scene.at(12, 12)], darkToo ? 255 : 0);
    }
}

TEST(DetectGhosts, WeakBrightDifferencesOverMostOfThePictureEndTheMerge) {
    // Too weak to be replaced at level 0. A ring of three cells is thinned to one and widened to five: its
    // box grows by one cell all round and must be more than 2/3 of the grid's 42 x 32 cells, 28 x 21.
    const auto exits = [](const Rect &outer, int thickness, int luma = 48) {
        GhostScene scene(158, 118, 40);
        const Offscreen &bright = scene.registered(kBright);
        scene.paintCells(bright, outer, luma);
        scene.paintCells(
            bright, {outer.x0 + thickness, outer.y0 + thickness, outer.x1 - thickness, outer.y1 - thickness},
            40);
        EXPECT_EQ(scene.run(0), HDR_OK);
        EXPECT_EQ(scene.art(scene.marked()), scene.nothing());
        return scene.context.fallback == HDR_FALLBACK_BRIGHT_MOTION;
    };
    EXPECT_TRUE(exits({5, 5, 32, 25}, 3));
    EXPECT_FALSE(exits({5, 5, 32, 25}, 3, 47)); // 40 / 8 + 2 at most
    EXPECT_FALSE(exits({5, 5, 31, 25}, 3));
    EXPECT_FALSE(exits({5, 5, 32, 24}, 3));
    EXPECT_FALSE(exits({5, 5, 32, 25}, 2));
    // What reaches the last whole column goes on to the frame and is not thinned there.
    EXPECT_TRUE(exits({14, 5, 40, 25}, 3));
    EXPECT_FALSE(exits({15, 5, 40, 25}, 3));
}

TEST(DetectGhosts, SpecksGoAndEdgesOfThePictureCount) {
    GhostScene scene(158, 118, 100);
    scene.paintCells(scene.registered(kBright), {10, 11, 11, 12}, 200);
    scene.paintCells(scene.registered(kBright), {20, 11, 22, 12}, 200);
    scene.paintCells(scene.registered(kDark), {30, 11, 32, 13}, 200);
    ASSERT_EQ(scene.run(10), HDR_OK);
    EXPECT_EQ(scene.art(scene.marked()), scene.nothing());
    scene.paintCells(scene.registered(kBright), {10, 11, 12, 13}, 200);
    ASSERT_EQ(scene.run(10), HDR_OK);
    EXPECT_EQ(scene.art(scene.marked()), scene.around({10, 11, 12, 13}, 3));

    // Column 40 and row 30 are cut by the picture's edges: they and the frame continue column 39 and row 29,
    // and nothing is eroded there.
    GhostScene edge(158, 118, 100);
    edge.paintCells(edge.registered(kDark), {36, 11, 40, 19}, 200);
    edge.paintCells(edge.registered(kDark), {11, 26, 19, 30}, 200);
    ASSERT_EQ(edge.run(0), HDR_OK);
    EXPECT_EQ(edge.art(edge.mask('A')),
              either(edge.around({37, 12, 42, 18}, 4), edge.around({12, 27, 18, 32}, 4)));
    edge.paint(edge.registered(kDark), {0, 0, 158, 118}, 100);
    edge.paintCells(edge.registered(kBright), {36, 11, 40, 19}, 200);
    ASSERT_EQ(edge.run(0), HDR_OK);
    EXPECT_EQ(edge.art(edge.mask('C')), edge.around({36, 11, 42, 19}, 3));
}

TEST(DetectGhosts, ColumnWithoutStatisticsFollowsItsNeighbour) {
    for (int pixelWidth : {160, 158}) {
        GhostScene scene(pixelWidth, 118, 100);
        const int last = scene.columns - 2;
        for (int y = 0; y < scene.rows; y++) {
            scene.midGrid[scene.at(last, y)] = 0;
            scene.baseMid[scene.at(last, y)] = scene.baseDark[scene.at(last, y)] = 0;
            scene.baseBright[scene.at(last, y)] = 256;
        }
        ASSERT_EQ(scene.run(0), HDR_OK);
        // A column that the picture cuts has statistics: it may be shadow.
        EXPECT_EQ(scene.weights(last, 10), pixelWidth == 160 ? Weights(128, 128, 0) : Weights(0, 0, 256));
        if (pixelWidth != 160)
            continue;
        scene.paint(scene.registered(kBright), {140, 20, pixelWidth, 60}, 150);
        ASSERT_EQ(scene.run(0), HDR_OK);
        EXPECT_EQ(scene.weights(last, 10), Weights(256, 0, 0));
        for (int y = 0; y < scene.rows; y++) {
            ASSERT_EQ(scene.weights(last, y), scene.weights(last - 1, y));
            ASSERT_EQ(std::get<2>(scene.weights(last - 1, y)), 0); // nothing of it is smoothed in
            for (char mask : {'A', 'B', 'C', 'D'})
                for (int x : {last, last + 1})
                    ASSERT_EQ(scene.mask(mask)[scene.at(x, y)], scene.mask(mask)[scene.at(last - 1, y)]);
        }
    }
}

TEST(DetectGhosts, RunsOutOfMemoryBeforeChangingAnything) {
    GhostScene scene(158, 118, 100);
    scene.paintCells(scene.registered(kBright), {10, 11, 20, 19}, 150);
    const size_t failures = test::countFailures(1024, [&](MemContext *memory) {
        const HdrStatus status = scene.run(0, memory);
        const bool marked = scene.art(scene.marked()) == scene.around({10, 11, 20, 19}, 3);
        EXPECT_EQ(marked, status == HDR_OK);
        EXPECT_EQ(scene.weights(15, 15), status == HDR_OK ? Weights(256, 0, 0) : Weights(128, 128, 0));
        return status;
    });
    EXPECT_GT(failures, 9u);
}

} // namespace
} // namespace hdr
