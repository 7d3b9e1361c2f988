// SPDX-License-Identifier: MIT
#include "engine/render/colour_maps.h"

#include "tests/support/reduced_run.h"

#include <cmath>
#include <gtest/gtest.h>
#include <utility>

namespace hdr {
namespace {

using test::ReducedRun;
using test::samplesOf;
using Bytes = std::vector<uint8_t>;

constexpr int kDark = ReducedRun::kDark, kMid = ReducedRun::kMid, kBright = ReducedRun::kBright;

TEST(UpsampleGrid, NodesLieOneCellLowerAndTheLastColumnRepeats) {
    // 3 x 3 nodes, cells of 4: the last row's nodes take over at once from row 8 on.
    const Bytes grid = {0, 40, 80, 99, 100, 140, 180, 99, 8, 8, 8, 99};
    Bytes mask(15 * 13, 1);
    upsample_grid_u8(mask.data(), 14, 13, 15, grid.data(), 3, 3, 4, nullptr, 2);
    const auto row = [&](int y) {
        const auto begin = mask.begin() + 15 * y;
        return Bytes(begin, begin + 14);
    };
    EXPECT_EQ(row(0), (Bytes{0, 10, 20, 30, 40, 50, 60, 70, 70, 70, 70, 70, 70, 70}));
    EXPECT_EQ(row(3), row(0));
    EXPECT_EQ(row(4), row(0));                          // node row 0 lies at row 4
    EXPECT_EQ(row(5)[1], (40 * 16 + 100 * 4 * 4) / 64); // a quarter of the way to node row 1
    EXPECT_EQ(row(7)[4], 40 + 75);
    EXPECT_EQ(row(8), Bytes(14, 8));
    EXPECT_EQ(row(12), Bytes(14, 8));
    EXPECT_EQ(mask[14], 1); // beyond the width

    Bytes part(15 * 13, 1);
    const Rect rectangle = {2, 5, 4, 6};
    upsample_grid_u8(part.data(), 14, 13, 15, grid.data(), 3, 3, 4, &rectangle, 2);
    EXPECT_EQ(std::count(part.begin(), part.end(), 1), 15 * 13 - 2);
    EXPECT_EQ(part[15 * 5 + 3], mask[15 * 5 + 3]);

    Bytes copy(9);
    upsample_grid_u8(copy.data(), 3, 3, 3, grid.data(), 3, 3, 4, nullptr, 0);
    EXPECT_EQ(copy, (Bytes{0, 40, 80, 100, 140, 180, 8, 8, 8}));
}

struct Colour {
    int y, u, v;
};

/// A run of constant pictures and masks and a local tone map that selects one gain everywhere.
struct ToneRun : ReducedRun {
    ToneRun(int width, int height, int gain) : ReducedRun(width, height) {
        makeMaps();
        LocalToneMap &toneMap = context.localToneMap;
        toneMap.width = width + 1;
        toneMap.height = height + 1;
        const size_t samples = static_cast<size_t>(toneMap.width) * static_cast<size_t>(toneMap.height);
        toneMap.map = allocateArray<int16_t>(memory, samples);
        std::fill_n(toneMap.map, samples, int16_t{-2});
        context.tables.detailGain[65534] = static_cast<uint16_t>(gain);
        for (int map = kMidOffsetU; map <= kBrightOffsetV; map++)
            std::fill_n(context.firstMerge.correctionMaps[map], pixels(), int16_t{77});
    }
    void paintAll(Colour merged, Colour dark, Colour mid, Colour bright) {
        const auto with = [](Offscreen &picture, Colour c) { paint(picture, c.y, c.u, c.v); };
        with(*context.preparation.mergedImage, merged);
        with(work(kDark), dark);
        with(work(kMid), mid);
        with(work(kBright), bright);
    }
    void setMasks(int a, int d) {
        const size_t cells = context.preparation.gridPlaneSize();
        std::fill_n(context.weights.ghostMaskA, cells, static_cast<uint8_t>(a));
        std::fill_n(context.weights.ghostMaskD, cells, static_cast<uint8_t>(d));
    }
    Colour merged() {
        const auto sample = [&](int plane) {
            return int{planeOf(*context.preparation.mergedImage, plane)(1, 1)};
        };
        return {sample(0), sample(1), sample(2)};
    }
    std::pair<int, int> offset(CorrectionMap u, CorrectionMap v) {
        const size_t i = static_cast<size_t>(width) + 1;
        return {context.firstMerge.correctionMaps[u][i], context.firstMerge.correctionMaps[v][i]};
    }
    std::pair<int, int> dark() { return offset(kDarkOffsetU, kDarkOffsetV); }
    std::pair<int, int> mid() { return offset(kMidOffsetU, kMidOffsetV); }
    std::pair<int, int> bright() { return offset(kBrightOffsetU, kBrightOffsetV); }
};

using Pair = std::pair<int, int>;

TEST(ColourMaps, MergedChromaGrowsWithItsLuminance) {
    struct Case {
        Colour before;
        int gain;
        Colour after;
    };
    for (const Case &c : {
             Case{{100, 140, 90}, 1024, {100, 140, 90}}, // nothing changes
             Case{{0, 140, 90}, 60000, {0, 140, 90}},    // black keeps its chroma
             Case{{32, 140, 90}, 4096, {68, 140, 90}},   // 59 * 4 = 236; up to 32 chroma is kept
             Case{{33, 140, 90}, 4096, {70, 146, 69}},   // 62 * 4 = 248; 257 * 70 + 255 * 33 of 16896
             Case{{100, 140, 90}, 2048, {138, 142, 81}}, // 522 * 2 = 1044; 324 * 138 + 188 * 100 of 51200
             Case{{40, 140, 90}, 65535, {255, 158, 32}}, // 264 * 160 + 248 * 40 of 20480: four times
             Case{{100, 140, 90}, 512, {71, 140, 90}},   // 522 / 2 = 261; darker: no less colour
             Case{{200, 250, 4}, 1500, {237, 255, 0}},   // 3464; saturated
         }) {
        SCOPED_TRACE(testing::Message() << c.before.y << " at " << c.gain);
        ToneRun run(8, 8, c.gain);
        run.paintAll(c.before, {}, {}, {});
        ASSERT_EQ(build_colour_maps(nullptr, &run.context), HDR_OK);
        EXPECT_EQ(run.merged().y, c.after.y);
        EXPECT_EQ(run.merged().u, c.after.u);
        EXPECT_EQ(run.merged().v, c.after.v);
    }
}

TEST(ColourMaps, HighlightsTakeTheMeanTint) {
    ToneRun run(8, 8, 1024);
    run.paintAll({100, 120, 130}, {129, 110, 140}, {161, 100, 100}, {224, 120, 125});
    // One pixel does not qualify; it would change the means.
    planeOf(run.work(kDark), 0)(0, 0) = 128;
    planeOf(run.work(kDark), 1)(0, 0) = 0;
    planeOf(run.work(kBright), 0)(1, 1) = 223; // 31 / 32 of the tint, rounded down
    planeOf(run.work(kDark), 1)(1, 1) = 0;
    planeOf(run.work(kBright), 0)(4, 4) = 193; // 1 / 32 of it
    planeOf(run.work(kMid), 0)(2, 2) = 160;
    planeOf(run.work(kDark), 2)(2, 2) = 0;
    planeOf(run.work(kDark), 1)(3, 3) = 49;  // one step of -71: the sum is -10 * 59 - 71
    planeOf(run.work(kDark), 2)(3, 3) = 171; // and one of 46: 15 * 59 + 46
    ASSERT_EQ(build_colour_maps(nullptr, &run.context), HDR_OK);
    // U: (-661 + 30) / 60 = -10.5 -> -10; V: (931 + 30) / 60 = 16.02 -> 16.
    const FirstMerge &maps = run.context.firstMerge;
    EXPECT_EQ(maps.correctionMaps[kBrightOffsetU][0], -10);
    EXPECT_EQ(maps.correctionMaps[kBrightOffsetV][0], 16);
    EXPECT_EQ(run.bright(), (Pair{-10, 15}));
    EXPECT_EQ(maps.correctionMaps[kBrightOffsetU][4 * 8 + 4], -1);

    ToneRun without(8, 8, 1024);
    without.paintAll({100, 120, 130}, {128, 110, 140}, {161, 100, 100}, {224, 120, 125});
    ASSERT_EQ(build_colour_maps(nullptr, &without.context), HDR_OK);
    EXPECT_EQ(without.bright(), (Pair{0, 0}));
}

TEST(ColourMaps, OffsetsCarryToTheMergedChromaAndKeepGhostsOwnColour) {
    ToneRun run(8, 8, 1024);
    run.paintAll({100, 120, 130}, {64, 100, 150}, {100, 140, 90}, {150, 90, 160});
    ASSERT_EQ(build_colour_maps(nullptr, &run.context), HDR_OK);
    EXPECT_EQ(run.dark(), (Pair{20, -20}));
    EXPECT_EQ(run.mid(), (Pair{-20, 40}));
    EXPECT_EQ(run.bright(), (Pair{30, -30}));

    // Ghosts in the reference and the bright exposure; the dark exposure leaves the shadows.
    run.setMasks(255, 255);
    run.paintAll({100, 120, 130}, {129, 100, 150}, {33, 140, 90}, {150, 90, 160});
    ASSERT_EQ(build_colour_maps(nullptr, &run.context), HDR_OK);
    // Dark, wholly its own; its luminance does not grow, so neither does its chroma.
    EXPECT_EQ(run.dark(), (Pair{0, 0}));
    // Reference grown to 100: k = 257 * 100 + 255 * 33 = 34115 of 16896: 140 -> 152, 90 -> 52. One part in
    // 256 is the merged colour.
    EXPECT_EQ(run.mid(), (Pair{12, -38}));
    // Bright faded to 100 of 150: (-76 * 100 + 150) / 300 + 128 = 104 (-24.8 to zero), 64 -> 21 + 128 = 149.
    EXPECT_EQ(run.bright(), (Pair{14, -11}));

    // Levels without a luminance to scale by keep their colour.
    run.paintAll({100, 120, 130}, {97, 100, 150}, {32, 140, 90}, {0, 90, 160});
    ASSERT_EQ(build_colour_maps(nullptr, &run.context), HDR_OK);
    EXPECT_EQ(run.mid(), (Pair{0, 0}));
    EXPECT_EQ(run.bright(), (Pair{0, 0}));
    // Dark at 97: weight 132; k = 353 * 100 + 159 * 97 = 50723 of 49664: 100 -> 100 (-28.6 to zero), 150 ->
    // 150.
    EXPECT_EQ(run.dark(),
              (Pair{(100 * 132 + 120 * 124 + 128) / 256 - 100, (150 * 132 + 130 * 124 + 128) / 256 - 150}));
}

/// Division rounding toward zero, and an arithmetic shift to the right, in floating point.
int truncated(double numerator, double denominator) {
    return static_cast<int>(std::trunc(numerator / denominator));
}
int floored(double numerator, double denominator) {
    return static_cast<int>(std::floor(numerator / denominator));
}

TEST(ColourMaps, EqualThePixelwiseDefinition) {
    constexpr int kWidth = 90, kHeight = 71; // every level many times
    ToneRun run(kWidth, kHeight, 1024);
    HdrContext &context = run.context;
    for (Offscreen *picture :
         {&run.work(kDark), &run.work(kMid), &run.work(kBright), context.preparation.mergedImage})
        run.paintNoise(*picture);
    run.fillRandomMask(context.weights.ghostMaskA);
    run.fillRandomMask(context.weights.ghostMaskD);
    run.fillRandom(context.localToneMap.map, (kWidth + 1) * (kHeight + 1), -4, 6);
    run.fillRandom(context.tables.detailGain, kDetailGainCount, 1024, 1024);
    for (int i = 1; i <= 6; i++)
        context.tables.detailGain[i] = static_cast<uint16_t>(1024 + 700 * i);
    const std::array<Bytes, 3> before = {samplesOf(planeOf(*context.preparation.mergedImage, 0)),
                                         samplesOf(planeOf(*context.preparation.mergedImage, 1)),
                                         samplesOf(planeOf(*context.preparation.mergedImage, 2))};
    const auto mask = [&](const uint8_t *grid) {
        Bytes samples(run.pixels());
        upsample_grid_u8(samples.data(), kWidth, kHeight, kWidth, grid, context.preparation.gridWidth,
                         context.preparation.gridHeight, context.preparation.gridWidth, nullptr, 2);
        return samples;
    };
    const Bytes ghostA = mask(context.weights.ghostMaskA);
    const Bytes ghostD = mask(context.weights.ghostMaskD);
    double sums[2] = {};
    double count = 0;
    const auto at = [&](int input, int plane, int x, int y) {
        return int{planeOf(run.work(input), plane)(x, y)};
    };
    for (int y = 0; y < kHeight; y++)
        for (int x = 0; x < kWidth; x++)
            if (at(kBright, 0, x, y) >= 224 && at(kDark, 0, x, y) > 128 && at(kMid, 0, x, y) > 160) {
                for (int c : {1, 2})
                    sums[c - 1] += at(kDark, c, x, y) - at(kBright, c, x, y);
                count++;
            }
    ASSERT_GT(count, 1);
    const Tables &tables = context.tables;
    ASSERT_EQ(build_colour_maps(nullptr, &context), HDR_OK);

    for (int y = 0; y < kHeight; y++)
        for (int x = 0; x < kWidth; x++) {
            const size_t i = static_cast<size_t>(y * kWidth + x);
            const int detail = context.localToneMap.map[y * (kWidth + 1) + x];
            const int gain = tables.detailGain[detail < 0 ? detail + 65536 : detail];
            const int luma = before[0][i];
            const int expanded = tables.gammaExpand[luma] * gain;
            const int target = tables.gammaCompress[expanded < 4194304 ? expanded / 1024 : 4095];
            ASSERT_EQ(planeOf(*context.preparation.mergedImage)(x, y), target);
            for (int c : {1, 2}) {
                const auto grown = [target](int sample, int level, int up, int own) {
                    const int m = std::min(4 * level, target);
                    const double k = (level + up) * std::max(m, level) + (own - level) * level;
                    return std::clamp(truncated((sample - 128) * k, 512.0 * level) + 128, 0, 255);
                };
                const auto mixed = [](int own, int merged, int weight) {
                    return floored(own * weight + merged * (256 - weight) + 128, 256);
                };
                int merged = before[static_cast<size_t>(c)][i];
                if (luma > 32)
                    merged = grown(merged, luma, 224, 288);
                ASSERT_EQ(planeOf(*context.preparation.mergedImage, c)(x, y), merged);

                const int tint = truncated(sums[c - 1] + std::floor(count / 2), count);
                const int brightLuma = at(kBright, 0, x, y);
                const int bright = at(kBright, c, x, y);
                int offset = merged - bright;
                if (brightLuma >= 224) {
                    offset = tint;
                } else if (brightLuma >= 193) {
                    offset = floored((brightLuma - 192) * tint, 32);
                } else if (ghostD[i] > 0) {
                    int faded = bright;
                    if (brightLuma > 0)
                        faded = truncated((2 * bright - 256) * std::min(brightLuma, target) + brightLuma,
                                          2 * brightLuma) +
                                128;
                    offset = mixed(faded, merged, ghostD[i]) - bright;
                }
                const auto map = [&](int u) { return context.firstMerge.correctionMaps[u + 3 * (c - 1)][i]; };
                ASSERT_EQ(map(kBrightOffsetU), offset) << x << ", " << y;

                const int midLuma = at(kMid, 0, x, y);
                const int mid = at(kMid, c, x, y);
                const int ownMid = midLuma >= 33 ? grown(mid, midLuma, 224, 288) : mid;
                offset = ghostA[i] > 0 ? mixed(ownMid, merged, ghostA[i]) - mid : merged - mid;
                ASSERT_EQ(map(kMidOffsetU), offset) << x << ", " << y;

                const int darkLuma = at(kDark, 0, x, y);
                const int dark = at(kDark, c, x, y);
                offset = merged - dark;
                if (darkLuma >= 65)
                    offset = mixed(grown(dark, darkLuma, 256, 256), merged,
                                   darkLuma > 128 ? 256 : 4 * darkLuma - 256) -
                             dark;
                ASSERT_EQ(map(kDarkOffsetU), offset) << x << ", " << y;
            }
        }
}

TEST(ColourMaps, WithoutGainsTheMapsAreZero) {
    for (bool withTable : {false, true}) {
        ToneRun run(8, 8, 1024);
        run.paintAll({100, 120, 130}, {64, 100, 150}, {100, 140, 90}, {150, 90, 160});
        if (withTable)
            run.context.localToneMap.release(run.memory); // a picture too small for one
        else
            releaseArray(run.memory, run.context.tables.detailGain);
        EXPECT_EQ(build_colour_maps(nullptr, &run.context), HDR_ERR_NOMEM);
        EXPECT_EQ(run.mid(), (Pair{0, 0}));
        EXPECT_EQ(run.bright(), (Pair{0, 0}));
    }
}

} // namespace
} // namespace hdr
