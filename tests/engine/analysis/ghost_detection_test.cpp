// SPDX-License-Identifier: MIT
#include "engine/analysis/ghost_detection.h"

#include "engine/analysis/exposure_weights.h"
#include "engine/core/context.h"
#include "engine/core/plane.h"
#include "tests/support/arena.h"
#include "tests/support/mask_art.h"

#include <algorithm>
#include <array>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <tuple>
#include <vector>

namespace hdr {
namespace {

using test::artFrom;
using Mask = std::vector<uint8_t>;
using Weights = std::tuple<int, int, int>; // reference, dark, bright

constexpr int kMid = 0;
constexpr int kBright = 1;
constexpr int kDark = 2;
constexpr int kNeverMarked = 11;

/// Reduced pictures of one luminance with the grid over them. Levels, weights and clip points are the test's
/// choice.
struct GhostScene {
    int pixelWidth, pixelHeight, width, height;
    HdrContext context{};
    std::array<std::vector<uint8_t>, 3> registeredBytes, ownBytes;
    std::array<Offscreen, 3> registeredPictures, ownPictures;
    std::array<std::vector<uint32_t>, 3> histograms;
    std::vector<int16_t> midGrid, brightGrid, baseMid, baseDark, baseBright, mid, dark, bright;
    Mask maskA, maskB, maskC, maskD;

    /// The last column and row of cells are cut by the picture's edge unless the size is a multiple of 4.
    GhostScene(int pixelWidth, int pixelHeight, int luma)
        : pixelWidth(pixelWidth), pixelHeight(pixelHeight), width((pixelWidth + 3) / 4 + 2),
          height((pixelHeight + 3) / 4 + 2), midGrid(cells(), static_cast<int16_t>(luma)),
          brightGrid(cells(), static_cast<int16_t>(luma)), baseMid(cells(), 128), baseDark(cells(), 128),
          baseBright(cells(), 0), maskA(cells(), 0), maskB(maskA), maskC(maskA), maskD(maskA) {
        Preparation &preparation = context.preparation;
        preparation.midIndex = kMid;
        preparation.brightIndex = kBright;
        preparation.darkIndex = kDark;
        const int pitch = pixelWidth + 3;
        const auto attach = [&](std::vector<uint8_t> &bytes, Offscreen &picture) {
            bytes.assign(static_cast<size_t>(pitch * pixelHeight), static_cast<uint8_t>(luma));
            picture = {HDR_FORMAT_YUV444, pixelWidth, pixelHeight, {bytes.data()}, {pitch}};
            return &picture;
        };
        for (size_t i = 0; i < 3; i++) {
            preparation.registeredImages[i] = attach(registeredBytes[i], registeredPictures[i]);
            preparation.workImages[i] = attach(ownBytes[i], ownPictures[i]);
            preparation.validRects[i] = {0, 0, pixelWidth, pixelHeight};
            histograms[i].assign(3 * kBins, 0);
            histograms[i][i == kMid ? 255 : 0] = 1000; // the reference has highlights beyond its range
            preparation.statistics[i] = histograms[i].data();
        }
    }
    GhostScene(const GhostScene &) = delete;
    GhostScene &operator=(const GhostScene &) = delete;

    size_t cells() const { return static_cast<size_t>(width * height); }
    size_t at(int x, int y) const { return static_cast<size_t>(y * width + x); }
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
        std::ranges::fill(baseMid, static_cast<int16_t>(std::get<0>(weights)));
        std::ranges::fill(baseDark, static_cast<int16_t>(std::get<1>(weights)));
        std::ranges::fill(baseBright, static_cast<int16_t>(std::get<2>(weights)));
    }
    HdrStatus run(int level, MemContext *memory = nullptr) {
        mid = baseMid;
        dark = baseDark;
        bright = baseBright;
        context.ghostSuppressionLevel = level;
        context.weights.ghostMaskA = maskA.data();
        context.weights.ghostMaskB = maskB.data();
        context.weights.ghostMaskC = maskC.data();
        context.weights.ghostMaskD = maskD.data();
        const std::vector<int16_t> darkGrid(cells(), 0);
        return detect_ghosts(memory, &context, darkGrid.data(), midGrid.data(), brightGrid.data(), width,
                             height, dark.data(), bright.data(), mid.data());
    }
    Weights weights(int x, int y) const { return {mid[at(x, y)], dark[at(x, y)], bright[at(x, y)]}; }
    Mask marked() const {
        Mask all = maskA;
        for (const Mask *mask : {&maskB, &maskC, &maskD})
            std::transform(all.begin(), all.end(), mask->begin(), all.begin(),
                           [](uint8_t a, uint8_t b) { return static_cast<uint8_t>(a | b); });
        return all;
    }
    /// The mask of the cells whose city-block distance from a rectangle of cells is at most `reach`.
    std::string around(Rect area, int reach) const {
        Mask mask(cells(), 0);
        for (int y = 0; y < height; y++)
            for (int x = 0; x < width; x++)
                if (std::max({area.x0 - x, 0, x - area.x1 + 1}) +
                        std::max({area.y0 - y, 0, y - area.y1 + 1}) <=
                    reach)
                    mask[at(x, y)] = 255;
        return art(mask);
    }
    std::string art(const Mask &mask) const { return artFrom(mask, static_cast<size_t>(width)); }
    std::string nothing() const { return art(Mask(cells(), 0)); }
};

/// What is set in either of two masks.
std::string either(std::string one, const std::string &other) {
    for (size_t i = 0; i < one.size(); i++)
        one[i] = std::min(one[i], other[i]); // '#' is less than '.'
    return one;
}

TEST(DetectGhosts, EqualExposuresStayAsTheyAre) {
    GhostScene scene(158, 118, 100);
    scene.context.warningFlag = 1;
    ASSERT_EQ(scene.run(10), HDR_OK);
    EXPECT_EQ(scene.art(scene.marked()), scene.nothing());
    EXPECT_EQ(scene.mid, scene.baseMid);
    EXPECT_EQ(scene.dark, scene.baseDark);
    EXPECT_EQ(scene.bright, scene.baseBright);
    EXPECT_EQ(scene.context.ghosts.ghostMode, kGhostsNone);
    EXPECT_EQ(scene.context.ghosts.chromaMode, kChromaAll);
    EXPECT_EQ(scene.context.earlyExitCode, 0);
    EXPECT_EQ(scene.context.warningFlag, 0);
}

TEST(DetectGhosts, MovedSquareOnTheDarkSide) {
    GhostScene scene(158, 118, 100);
    scene.setBase({100, 128, 28});
    scene.paintCells(scene.registeredPictures[kDark], {10, 11, 20, 19}, 150);
    ASSERT_EQ(scene.run(0), HDR_OK);
    // Eroded by 1, grown by 1 without its corners, then closed with a margin of 3.
    EXPECT_EQ(scene.art(scene.maskA), scene.around({11, 12, 19, 18}, 4));
    EXPECT_EQ(scene.art(scene.marked()), scene.art(scene.maskA));
    EXPECT_EQ(scene.weights(15, 15), Weights(256, 0, 0));
    EXPECT_EQ(scene.weights(30, 15), Weights(100, 128, 28));
    EXPECT_EQ(scene.context.ghosts.ghostMode, kGhostsReplaced);
    EXPECT_EQ(scene.context.ghosts.excludedInputs[kDark], 0);
}

TEST(DetectGhosts, MovedSquaresOnBothSides) {
    GhostScene scene(158, 118, 100);
    scene.paintCells(scene.registeredPictures[kBright], {10, 11, 20, 19}, 150);
    scene.paintCells(scene.registeredPictures[kDark], {24, 11, 32, 19}, 150);
    ASSERT_EQ(scene.run(0), HDR_OK);
    EXPECT_EQ(scene.context.ghosts.ghostMode, kGhostsReplaced);
    EXPECT_EQ(scene.art(scene.maskC), scene.around({10, 11, 20, 19}, 3));
    EXPECT_EQ(scene.art(scene.maskA),
              either(scene.around({10, 11, 20, 19}, 3), scene.around({25, 12, 31, 18}, 4)));
}

TEST(DetectGhosts, DeepShadowGoesToTheBrightExposure) {
    GhostScene scene(158, 118, 20);
    scene.setBase({0, 0, 256});
    scene.paint(scene.ownPictures[kDark], {0, 0, 158, 118}, 10);
    scene.paintCells(scene.registeredPictures[kBright], {10, 11, 20, 19}, 60);
    scene.paintCells(scene.ownPictures[kDark], {24, 11, 34, 19}, 40); // too dark a place to be a ghost
    ASSERT_EQ(scene.run(0), HDR_OK);
    EXPECT_EQ(scene.art(scene.maskD), scene.around({10, 11, 20, 19}, 3));
    EXPECT_EQ(scene.art(scene.marked()), scene.art(scene.maskD));
    EXPECT_EQ(scene.weights(15, 15), Weights(0, 0, 256));
    EXPECT_EQ(scene.context.ghosts.ghostMode, kGhostsNone);
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
    scene.paintCells(scene.registeredPictures[kMid], area, square.mid);
    scene.paintCells(scene.registeredPictures[kDark], area, square.dark);
    scene.paintCells(scene.registeredPictures[kBright], area, square.bright);
    scene.paintCells(scene.ownPictures[kDark], area, square.darkOwn);
    scene.paintCells(scene.ownPictures[kBright], area, square.brightOwn);
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
    const auto first = [](int mid, int bright, int own) {
        return firstMarkedLevel({mid, mid, bright, mid, own}, 96);
    }; // the threshold is 22 - level
    EXPECT_EQ(first(193, 255, 240), 0);
    EXPECT_EQ(first(193, 255, 241), kNeverMarked);
    EXPECT_EQ(first(192, 255, 241), 0);
    EXPECT_EQ(first(150, 100, 250), 0);
    EXPECT_EQ(first(150, 100, 251), kNeverMarked);
    EXPECT_EQ(first(150, 200, 251), 7); // counts as 16
    EXPECT_EQ(first(150, 165, 251), 8);
}

TEST(DetectGhosts, DarkExposureInHighlightsAndShadows) {
    const auto first = [](int mid, int dark, int own, int gridLuma = 240) {
        return firstMarkedLevel({mid, dark, mid, own, 100}, gridLuma);
    };                                     // the threshold is 31 - level
    EXPECT_EQ(first(240, 192, 0), 4);      // (352 - 240) x 48 / 192 = 28
    EXPECT_EQ(first(240, 201, 0), 10);     // (352 - 240) x 39 / 192 = 22
    EXPECT_EQ(first(240, 200, 0), 9);      // 112 x 40 / 192 = 23
    EXPECT_EQ(first(161, 129, 0), 1);      // 191 x 32 / 192 = 31
    EXPECT_EQ(first(161, 128, 0), 0);      // 33 as it is
    EXPECT_EQ(first(160, 192, 0), 0);      // 32 as it is
    EXPECT_EQ(first(31, 31, 32, 64), 0);   // lighter than the reference
    EXPECT_EQ(first(31, 31, 32, 1791), 0); // counts as 128
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
            scene.paint(scene.registeredPictures[kDark], outside, 180);
        ASSERT_EQ(scene.run(10), HDR_OK);
        EXPECT_EQ(scene.art(scene.marked()), scene.nothing());
    }
    // What differs at the rectangle's edge is taken to go on beyond it.
    scene.paint(scene.registeredPictures[kDark], {40, 20, 60, 60}, 180);
    ASSERT_EQ(scene.run(0), HDR_OK);
    EXPECT_EQ(scene.maskA[scene.at(0, 10)], 255);
    EXPECT_EQ(scene.maskA[scene.at(0, 25)], 0);

    scene.context.preparation.validRects[kBright] = {0, 50, 158, 50};
    ASSERT_EQ(scene.run(10), HDR_OK);
    EXPECT_EQ(scene.art(scene.marked()), scene.nothing());
}

TEST(DetectGhosts, DarkExposureIsDroppedWhenTheReferenceHoldsItsHighlights) {
    const Rect darkSquare = {8, 8, 16, 16};
    for (int high : {251, 252}) {
        GhostScene scene(158, 118, 200);
        scene.setBase({100, 156, 0});
        std::ranges::fill(scene.histograms[kMid], 0u);
        scene.histograms[kMid][static_cast<size_t>(high)] = 1000;
        scene.paintCells(scene.registeredPictures[kDark], darkSquare, 100);
        std::ranges::fill(scene.brightGrid, int16_t{230});
        scene.paintCells(scene.registeredPictures[kBright], {24, 8, 32, 16}, 240);
        ASSERT_EQ(scene.run(0), HDR_OK);
        const GhostDecision &ghosts = scene.context.ghosts;
        const bool dropped = high == 251;
        EXPECT_EQ(ghosts.ghostMode, dropped ? kGhostsWithoutDark : kGhostsReplaced);
        EXPECT_EQ(ghosts.chromaMode, dropped ? kChromaWithoutDark : kChromaAll);
        EXPECT_EQ(ghosts.excludedInputs[kDark], dropped ? 1 : 0);
        EXPECT_EQ(ghosts.excludedInputs[kBright], 0);
        EXPECT_EQ(scene.weights(12, 12), Weights(256, 0, 0));
        EXPECT_EQ(scene.weights(38, 28), dropped ? Weights(256, 0, 0) : Weights(100, 156, 0));
        EXPECT_EQ(scene.maskC[scene.at(28, 12)], 255);
        EXPECT_EQ(scene.maskB[scene.at(28, 12)], dropped ? 0 : 255);
        EXPECT_EQ(scene.weights(28, 12), dropped ? Weights(256, 0, 0) : Weights(0, 256, 0));
    }
    // Without a difference on the dark side the dark exposure stays, whatever the highlights.
    GhostScene scene(158, 118, 100);
    std::ranges::fill(scene.histograms[kMid], 0u);
    scene.paintCells(scene.registeredPictures[kBright], darkSquare, 150);
    ASSERT_EQ(scene.run(0), HDR_OK);
    EXPECT_EQ(scene.context.ghosts.ghostMode, kGhostsReplaced);
    EXPECT_EQ(scene.context.ghosts.chromaMode, kChromaAll);
}

TEST(DetectGhosts, ClippedRegionDropsTheDarkExposure) {
    GhostScene scene(158, 118, 252);
    scene.paintCells(scene.registeredPictures[kDark], {8, 8, 16, 16}, 100);
    ASSERT_EQ(scene.run(0), HDR_OK);
    EXPECT_EQ(scene.context.ghosts.ghostMode, kGhostsWithoutDark);
    EXPECT_EQ(scene.context.ghosts.excludedInputs[kDark], 1);
}

TEST(DetectGhosts, InputsExcludedBeforehandAreLeftOut) {
    for (bool darkToo : {false, true}) {
        GhostScene scene(158, 118, 20);
        scene.setBase({100, 40, 220});
        scene.paint(scene.ownPictures[kDark], {0, 0, 158, 118}, 10);
        scene.paintCells(scene.registeredPictures[kBright], {8, 8, 16, 16}, 60);
        scene.context.ghosts.excludedInputs[kBright] = 1;
        scene.context.ghosts.excludedInputs[kDark] = darkToo;
        ASSERT_EQ(scene.run(0), HDR_OK);
        EXPECT_EQ(scene.context.ghosts.ghostMode, kGhostsNone);
        EXPECT_EQ(scene.context.ghosts.chromaMode, darkToo ? kChromaWithoutDark : kChromaWithoutBright);
        EXPECT_EQ(scene.weights(30, 25), darkToo ? Weights(140, 0, 220) : Weights(256, 40, 0));
        EXPECT_EQ(scene.weights(12, 12), darkToo ? Weights(0, 0, 256) : Weights(256, 0, 0));
        EXPECT_EQ(scene.maskD[scene.at(12, 12)], darkToo ? 255 : 0);
    }
}

TEST(DetectGhosts, WeakBrightDifferencesOverMostOfThePictureEndTheMerge) {
    // Too weak to be replaced at level 0. A ring of three cells is thinned to one and widened to five: its
    // box grows by one cell all round and must be more than 2/3 of the grid's 42 x 32 cells, 28 x 21.
    const auto exits = [](const Rect &outer, int thickness, int luma = 48) {
        GhostScene scene(158, 118, 40);
        const Offscreen &bright = scene.registeredPictures[kBright];
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
    scene.paintCells(scene.registeredPictures[kBright], {10, 11, 11, 12}, 200);
    scene.paintCells(scene.registeredPictures[kBright], {20, 11, 22, 12}, 200);
    scene.paintCells(scene.registeredPictures[kDark], {30, 11, 32, 13}, 200);
    ASSERT_EQ(scene.run(10), HDR_OK);
    EXPECT_EQ(scene.art(scene.marked()), scene.nothing());
    scene.paintCells(scene.registeredPictures[kBright], {10, 11, 12, 13}, 200);
    ASSERT_EQ(scene.run(10), HDR_OK);
    EXPECT_EQ(scene.art(scene.marked()), scene.around({10, 11, 12, 13}, 3));

    // Column 40 and row 30 are cut by the picture's edges: they and the frame continue column 39 and row 29,
    // and nothing is eroded there.
    GhostScene edge(158, 118, 100);
    edge.paintCells(edge.registeredPictures[kDark], {36, 11, 40, 19}, 200);
    edge.paintCells(edge.registeredPictures[kDark], {11, 26, 19, 30}, 200);
    ASSERT_EQ(edge.run(0), HDR_OK);
    EXPECT_EQ(edge.art(edge.maskA),
              either(edge.around({37, 12, 42, 18}, 4), edge.around({12, 27, 18, 32}, 4)));
    edge.paint(edge.registeredPictures[kDark], {0, 0, 158, 118}, 100);
    edge.paintCells(edge.registeredPictures[kBright], {36, 11, 40, 19}, 200);
    ASSERT_EQ(edge.run(0), HDR_OK);
    EXPECT_EQ(edge.art(edge.maskC), edge.around({36, 11, 42, 19}, 3));
}

TEST(DetectGhosts, ColumnWithoutStatisticsFollowsItsNeighbour) {
    for (int pixelWidth : {160, 158}) {
        GhostScene scene(pixelWidth, 118, 100);
        const int last = scene.width - 2;
        for (int y = 0; y < scene.height; y++) {
            scene.midGrid[scene.at(last, y)] = 0;
            scene.baseMid[scene.at(last, y)] = scene.baseDark[scene.at(last, y)] = 0;
            scene.baseBright[scene.at(last, y)] = 256;
        }
        ASSERT_EQ(scene.run(0), HDR_OK);
        // A column that the picture cuts has statistics: it may be shadow.
        EXPECT_EQ(scene.weights(last, 10), pixelWidth == 160 ? Weights(128, 128, 0) : Weights(0, 0, 256));
        if (pixelWidth != 160)
            continue;
        scene.paint(scene.registeredPictures[kBright], {140, 20, pixelWidth, 60}, 150);
        ASSERT_EQ(scene.run(0), HDR_OK);
        EXPECT_EQ(scene.weights(last, 10), Weights(256, 0, 0));
        for (int y = 0; y < scene.height; y++) {
            ASSERT_EQ(scene.weights(last, y), scene.weights(last - 1, y));
            ASSERT_EQ(std::get<2>(scene.weights(last - 1, y)), 0); // nothing of it is smoothed in
            for (const Mask *mask : {&scene.maskA, &scene.maskB, &scene.maskC, &scene.maskD})
                for (int x : {last, last + 1})
                    ASSERT_EQ((*mask)[scene.at(x, y)], (*mask)[scene.at(last - 1, y)]);
        }
    }
}

/// Every cell has weight, and every cell taken from one exposure has all of that exposure's.
void expectWholeWeights(const GhostScene &scene, int rows) {
    for (int y = 0; y < rows; y++)
        for (int x = 0; x < scene.width; x++) {
            const size_t cell = scene.at(x, y);
            const bool mid = scene.maskA[cell] != 0, dark = scene.maskB[cell] != 0,
                       bright = scene.maskD[cell] != 0;
            ASSERT_NE(scene.weights(x, y), Weights(0, 0, 0));
            ASSERT_LE(mid + dark + bright, 1);
            ASSERT_TRUE(mid || dark || !scene.maskC[cell]);
            if (mid || dark || bright) {
                ASSERT_EQ(scene.weights(x, y), Weights(256 * mid, 256 * dark, 256 * bright));
            }
        }
}

TEST(DetectGhosts, HigherLevelsMarkMoreAndReplacedCellsKeepTheirWeight) {
    std::mt19937 random(11);
    const auto upTo = [&random](int limit) {
        return static_cast<int>(random() % static_cast<unsigned>(limit));
    };
    std::ptrdiff_t takenFromMid = 0, takenFromDark = 0, takenFromBright = 0;
    for (int trial = 0; trial < 40; trial++) {
        GhostScene scene(130 + 2 * upTo(20), 90 + 2 * upTo(20), 100);
        const auto blob = [&](const Offscreen &picture, int amplitude) {
            const int cx = upTo(scene.pixelWidth), cy = upTo(scene.pixelHeight), radius = 6 + upTo(20);
            for (int y = 0; y < scene.pixelHeight; y++)
                for (int x = 0; x < scene.pixelWidth; x++)
                    if ((x - cx) * (x - cx) + (y - cy) * (y - cy) < radius * radius) {
                        uint8_t &luma = planeOf(picture)(x, y);
                        luma = static_cast<uint8_t>(std::clamp(luma + amplitude, 0, 255));
                    }
        };
        for (int i = 0; i < 12; i++) {
            const int amplitude = upTo(160) - 80;
            const int seed = static_cast<int>(random());
            for (const auto &pictures : {scene.registeredPictures, scene.ownPictures})
                for (const Offscreen &picture : pictures) {
                    random.seed(static_cast<unsigned>(seed));
                    blob(picture, amplitude);
                }
            blob(scene.registeredPictures[i % 2 ? kDark : kBright], upTo(70) - 35);
        }
        const Plane<uint8_t> reference = planeOf(scene.registeredPictures[kMid]);
        for (int y = 0; y < scene.height; y++)
            for (int x = 0; x < scene.width; x++) {
                const int luma = reference(std::clamp(4 * (x - 1), 0, reference.width - 1),
                                           std::clamp(4 * (y - 1), 0, reference.height - 1));
                const bool frame = x == 0 || y == 0 || x == scene.width - 1 || y == scene.height - 1;
                const size_t cell = scene.at(x, y);
                scene.midGrid[cell] = static_cast<int16_t>(luma);
                scene.brightGrid[cell] = static_cast<int16_t>(std::min(255, luma + 40));
                scene.baseDark[cell] = static_cast<int16_t>(frame ? 0 : std::clamp(8 * (luma - 160), 0, 256));
                scene.baseBright[cell] =
                    static_cast<int16_t>(frame ? 0 : std::clamp(8 * (64 - luma), 0, 256));
                scene.baseMid[cell] =
                    static_cast<int16_t>(frame ? 0 : 256 - scene.baseDark[cell] - scene.baseBright[cell]);
            }
        Mask before(scene.cells(), 0);
        for (int level = 0; level <= 10; level++) {
            ASSERT_EQ(scene.run(level), HDR_OK);
            const Mask marked = scene.marked();
            for (size_t cell = 0; cell < scene.cells(); cell++)
                ASSERT_FALSE(before[cell] && !marked[cell]) << level;
            before = marked;
            takenFromMid += std::ranges::count(scene.maskA, 255);
            takenFromDark += std::ranges::count(scene.maskB, 255);
            takenFromBright += std::ranges::count(scene.maskD, 255);
            if (std::ranges::count(marked, 255) == 0)
                continue;
            expectWholeWeights(scene, scene.height);
            // Filling holes brings nothing back; it replaces the last four rows.
            fill_weight_holes(scene.mid.data(), scene.dark.data(), scene.bright.data(), scene.width,
                              scene.height);
            expectWholeWeights(scene, scene.height - 4);
            ASSERT_FALSE(HasFatalFailure()) << trial;
        }
    }
    EXPECT_GT(takenFromMid, 1000);
    EXPECT_GT(takenFromDark, 1000);
    EXPECT_GT(takenFromBright, 1000);
}

TEST(DetectGhosts, RunsOutOfMemoryBeforeChangingAnything) {
    GhostScene scene(158, 118, 100);
    scene.paintCells(scene.registeredPictures[kBright], {10, 11, 20, 19}, 150);
    ASSERT_EQ(scene.run(0), HDR_OK);
    const std::string marked = scene.art(scene.marked());
    bool succeeded = false;
    for (size_t bytes = 64; !succeeded; bytes += 1024) {
        ASSERT_LT(bytes, size_t{1} << 18);
        test::Arena arena(bytes);
        for (Mask *mask : {&scene.maskA, &scene.maskB, &scene.maskC, &scene.maskD})
            std::ranges::fill(*mask, uint8_t{0});
        const HdrStatus status = scene.run(0, arena.memory());
        succeeded = status == HDR_OK;
        ASSERT_TRUE(arena.isEmpty());
        ASSERT_EQ(scene.art(scene.marked()), succeeded ? marked : scene.nothing());
        if (!succeeded) {
            ASSERT_EQ(status, HDR_ERR_NOMEM);
            ASSERT_EQ(scene.mid, scene.baseMid);
        }
    }
}

} // namespace
} // namespace hdr
