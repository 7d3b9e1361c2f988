// SPDX-License-Identifier: MIT
#include "engine/analysis/ghost_regions.h"

#include "engine/core/context.h"

#include <algorithm>
#include <array>
#include <gtest/gtest.h>
#include <string>
#include <tuple>
#include <vector>

namespace hdr {
namespace {

using Mask = std::vector<uint8_t>;
using Weights = std::tuple<int, int, int>; // reference, dark, bright

/// A grid of uniform luminance that shows the reference alone, with empty masks.
struct RegionScene {
    int width, height;
    HdrContext context{};
    std::vector<int16_t> darkLuma, midLuma, brightLuma, midWeights, darkWeights, brightWeights;
    Mask darkSide, brightSide, brightExtent, darkMoved, brightMoved, maskA, maskB, maskC, maskD;
    int lastSampledColumn;
    bool motionKnown = false;

    RegionScene(int width, int height)
        : width(width), height(height), darkLuma(size(), 64), midLuma(size(), 100), brightLuma(size(), 150),
          midWeights(size(), 256), darkWeights(size(), 0), brightWeights(size(), 0), darkSide(size(), 0),
          brightSide(size(), 0), brightExtent(size(), 0), darkMoved(size(), 0), brightMoved(size(), 0),
          maskA(size(), 9), maskB(size(), 9), maskC(size(), 9), maskD(size(), 9),
          lastSampledColumn(width - 2) {}

    size_t size() const { return static_cast<size_t>(width * height); }
    size_t at(int x, int y) const { return static_cast<size_t>(y * width + x); }
    template <typename T>
    void fill(std::vector<T> &plane, Rect area, int value) const {
        for (int y = area.y0; y < area.y1; y++)
            for (int x = area.x0; x < area.x1; x++)
                plane[at(x, y)] = static_cast<T>(value);
    }
    void weigh(Rect area, Weights weights) {
        fill(midWeights, area, std::get<0>(weights));
        fill(darkWeights, area, std::get<1>(weights));
        fill(brightWeights, area, std::get<2>(weights));
    }
    GhostProposal run() {
        context.weights.ghostMaskA = maskA.data();
        context.weights.ghostMaskB = maskB.data();
        context.weights.ghostMaskC = maskC.data();
        context.weights.ghostMaskD = maskD.data();
        RegionSearch search(nullptr, width, height);
        std::array<Mask, 3> scratch = {Mask(size()), Mask(size()), Mask(size())};
        const GhostGrid grid = {.width = width,
                                .height = height,
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
        for (const auto &[mask, name] : {std::pair{&maskA, 'A'}, {&maskB, 'B'}, {&maskC, 'C'}, {&maskD, 'D'}})
            if ((*mask)[at(x, y)] == 255)
                names += name;
            else if ((*mask)[at(x, y)] != 0)
                names += '?';
        return names;
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
    EXPECT_EQ(scene.weights(4, 7), Weights(0, 0, 256));
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
    EXPECT_EQ(scene.weights(3, 4), Weights(0, 256, 0));
    EXPECT_EQ(scene.masks(11, 5), "BC");
    for (int x : {5, 7, 9, 14, 16}) {
        EXPECT_EQ(scene.masks(x, 5), "AC") << x;
        EXPECT_EQ(scene.weights(x, 5), Weights(256, 0, 0)) << x;
    }
    EXPECT_EQ(scene.masks(16, 6), "AC");
}

TEST(GhostRegions, DarkIsRemovedAndDeepShadowIgnored) {
    RegionScene scene(26, 14);
    scene.fill(scene.darkSide, {2, 2, 8, 8}, 255);
    scene.fill(scene.midLuma, {2, 2, 8, 8}, 63);
    scene.fill(scene.darkSide, {12, 2, 18, 8}, 255);
    scene.fill(scene.midLuma, {12, 2, 18, 8}, 63);
    scene.midLuma[scene.at(17, 7)] = 64; // one brighter cell keeps the region
    scene.weigh({12, 2, 15, 8}, {0, 0, 256});
    scene.weigh({15, 2, 18, 8}, {100, 156, 0});
    const GhostProposal proposal = scene.run();
    EXPECT_EQ(proposal.ghostMode, kGhostsReplaced);
    EXPECT_TRUE(proposal.darkSideFound);
    EXPECT_EQ(scene.masks(4, 4), "");
    EXPECT_EQ(scene.darkSide[scene.at(4, 4)], 0);
    EXPECT_EQ(scene.masks(13, 4), "D"); // shadow that the bright exposure already had to itself
    EXPECT_EQ(scene.weights(13, 4), Weights(0, 0, 256));
    EXPECT_EQ(scene.masks(16, 4), "A");
    EXPECT_EQ(scene.weights(16, 4), Weights(256, 0, 0));
    EXPECT_EQ(scene.weights(19, 4), Weights(256, 0, 0)); // nothing of the removed exposure is left around
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
        EXPECT_EQ(scene.maskC, Mask(scene.size(), 0)); // this mask replaces nothing
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
    scene.run();
    EXPECT_EQ(scene.masks(10, 7) + scene.masks(11, 7), "");
    for (const auto &[x, y] : {std::pair{8, 0}, {9, 1}, {10, 3}, {11, 0}, {11, 5}}) {
        EXPECT_EQ(scene.masks(x, y), "BC") << x << ' ' << y;
        EXPECT_EQ(scene.weights(x, y), Weights(0, 256, 0)) << x << ' ' << y;
    }
    EXPECT_EQ(scene.weights(8, 8),
              Weights(0, 256, 0)); // nothing of column 10 is smoothed into its neighbours
}

/// The first mask of each cell in a row.
std::string row(const RegionScene &scene, int y) {
    std::string letters;
    for (int x = 0; x < scene.width; x++)
        letters += (scene.masks(x, y) + ".")[0];
    return letters;
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
    EXPECT_EQ(row(scene, 6), "....AAAAAAAA....");
    EXPECT_EQ(row(scene, 3), ".....AAAAAA.....");
    EXPECT_EQ(row(scene, 2), "................");
    EXPECT_EQ(scene.masks(8, 6), "AC");
    for (int x = 6; x <= 9; x++)
        EXPECT_EQ(scene.weights(x, 5), Weights(256, 0, 0));
    EXPECT_NE(scene.weights(5, 6), Weights(256, 0, 0));
}

/// A thing that moves over cells of the given weights; d, b and x say where the dark, the bright and both
/// exposures differ from the reference in the columns from 4 on. What becomes of row 6, by its masks.
std::string shownBy(const std::string &moved, Weights inside, int dimCells = 0) {
    RegionScene scene(16, 14);
    scene.motionKnown = true;
    std::vector<uint8_t> planes(3 * 64 * 56, 90), others = planes;
    const auto picture = [](std::vector<uint8_t> &bytes) {
        return Offscreen{HDR_FORMAT_YUV444,
                         64,
                         56,
                         {bytes.data(), bytes.data() + 64 * 56, bytes.data() + 2 * 64 * 56},
                         {64, 64, 64}};
    };
    std::fill(others.begin(), others.end(), uint8_t{10});
    Offscreen dark = picture(planes), rest = picture(others);
    std::vector<uint8_t> midToBright(256, 77);
    scene.context.tables.toneMatchMidToBright = midToBright.data();
    scene.context.alignment.tones[0].fill(150);
    scene.context.preparation.midIndex = 1;
    scene.context.preparation.brightIndex = 2;
    for (int i = 0; i < 3; i++) {
        scene.context.preparation.workImages[i] = i == 0 ? &dark : &rest;
        scene.context.preparation.registeredImages[i] = i == 0 ? &dark : &rest;
    }
    scene.weigh({3, 5, 14, 8}, inside);
    scene.fill(scene.darkLuma, {4, 5, 4 + dimCells, 6}, 63);
    for (size_t i = 0; i < moved.size(); i++) {
        const size_t cell = scene.at(4 + static_cast<int>(i), 6);
        scene.darkMoved[cell] = moved[i] == 'd' || moved[i] == 'x' ? 255 : 0;
        scene.brightMoved[cell] = moved[i] == 'b' || moved[i] == 'x' ? 255 : 0;
    }
    EXPECT_EQ(scene.run().ghostMode, kGhostsReplaced);
    // Cells that the dark exposure gives show it in every picture, up to their last pixel.
    const bool fromDark = scene.masks(4, 6).front() == 'B';
    const size_t last = (4 * 6 + 3) * 64 + 4 * 3 + 3;
    EXPECT_EQ(others[last], fromDark ? 77 : 10);
    EXPECT_EQ(others[64 * 56 + last], fromDark ? 90 : 10);
    EXPECT_EQ(others[(4 * 7) * 64 + 4 * 3 + 3], 10);
    return row(scene, 6).substr(3, 6);
}

TEST(GhostRegions, KnownMotionIsTakenFromTheExposureThatItNeedsMost) {
    // The thing stands in both places inside the region, so that either exposure shows it once.
    EXPECT_EQ(shownBy("ddxx", {127, 129, 0}), "BBBBBB");
    EXPECT_EQ(shownBy("ddxx", {128, 128, 0}), "AAAAAA");
    EXPECT_EQ(shownBy("ddxx", {127, 129, 0}, 1), "BBBBBB");
    EXPECT_EQ(shownBy("ddxx", {127, 129, 0}, 2), "AAAAAA"); // too dim in 2 of 18 cells
    EXPECT_EQ(shownBy("bbxx", {85, 0, 171}), "DDDDDD");
    EXPECT_EQ(shownBy("bbxx", {86, 0, 170}), "AAAAAA");
}

TEST(GhostRegions, NothingThatMovedIsShownTwiceOrLost) {
    for (const char *onePlace : {"xxxx", "dddd", "dxxxxx"})
        EXPECT_EQ(shownBy(onePlace, {0, 256, 0}).front(), 'A') << onePlace;
    EXPECT_EQ(shownBy("bbbb", {0, 0, 256}).front(), 'A');
    // The dark exposure agrees with the reference here.
    EXPECT_EQ(shownBy("bbbb", {0, 256, 0}).front(), 'B');
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

} // namespace
} // namespace hdr
