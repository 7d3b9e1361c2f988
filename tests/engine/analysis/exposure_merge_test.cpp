// SPDX-License-Identifier: MIT
#include "engine/analysis/exposure_merge.h"

#include "engine/analysis/coarse_offsets.h"
#include "engine/analysis/guided_filter.h"
#include "engine/analysis/plane_filters.h"
#include "tests/support/reduced_run.h"

#include <gtest/gtest.h>

namespace hdr {
namespace {

using test::ReducedRun;
using test::samplesOf;
using Bytes = std::vector<uint8_t>;
using Map = std::vector<int16_t>;

constexpr int kDark = ReducedRun::kDark, kMid = ReducedRun::kMid, kBright = ReducedRun::kBright;

TEST(PatchOffsetMap, StrengthFollowsTheCellAndItsNeighbours) {
    // Cells of 4 x 4 pixels; the fraction of cell (cx, cy) is (cx & 3, cy & 3) quarters, not the pixel's.
    constexpr int kWidth = 18, kHeight = 9, kGridWidth = 7;
    Bytes mask(kGridWidth * 5, 0);
    mask[0] = 255;              // the whole of cell (0, 0)
    mask[2] = 162;              // half of cell (2, 0), a quarter of cell (1, 0)
    mask[2 * kGridWidth] = 128; // half of cell (0, 2), a quarter of cell (0, 1)
    const Bytes luma(kWidth * kHeight, 250), patchedLuma(kWidth * kHeight, 10);
    Map offsets(kWidth * kHeight, 290), patched(kWidth * kHeight, 200);
    patch_offset_map(mask.data(), kGridWidth, {{luma.data(), kWidth, kHeight}, offsets.data()},
                     {{patchedLuma.data(), kWidth, kHeight}, patched.data()});
    const auto at = [&](int x, int y) { return patched[static_cast<size_t>(y * kWidth + x)]; };
    // The target is 290 + 250 - 10 = 530.
    EXPECT_EQ(at(0, 0), (1 * 200 + 255 * 530) >> 8);
    EXPECT_EQ(at(3, 3), at(0, 0));
    EXPECT_EQ(at(4, 0), (215 * 200 + 41 * 530) >> 8); // (162 * 1 * 4 + 8) >> 4 = 41
    EXPECT_EQ(at(8, 1), (175 * 200 + 81 * 530) >> 8); // (162 * 2 * 4 + 8) >> 4 = 81
    EXPECT_EQ(at(12, 0), 200);                        // cell 3 sees cells 3 and 4
    EXPECT_EQ(at(0, 7), (224 * 200 + 32 * 530) >> 8); // (128 * 4 * 1 + 8) >> 4 = 32
    EXPECT_EQ(at(0, 8), (192 * 200 + 64 * 530) >> 8); // (128 * 4 * 2 + 8) >> 4 = 64
    EXPECT_EQ(at(17, 8), 200);
}

TEST(MergeExposures, ChromaFadesWithTheExposuresOwnLuminance) {
    struct Case {
        int darkLuma, midLuma, brightLuma, chromaMode;
        int dark, bright; ///< the weights that 100 and 200 become
    };
    for (const Case &c : {
             Case{63, 31, 129, 0, 100, 200},  // shadows: nothing fades
             Case{63, 32, 129, 0, 100, 200},  // (0 * 0 + w * 32 + 16) >> 5
             Case{63, 49, 129, 0, 47, 94},    // half way into the fade: (w * 15 + 16) >> 5
             Case{63, 64, 129, 0, 0, 0},      // mid-tones: full fade
             Case{96, 128, 96, 0, 50, 100},   // half luminance, half weight
             Case{127, 128, 65, 0, 98, 196},  // (63 * w) >> 6
             Case{128, 192, 64, 0, 100, 200}, // own luminance in the trusted range
             Case{63, 193, 129, 0, 3, 6},     // (0 * 31 + w * 1 + 16) >> 5
             Case{63, 194, 129, 0, 6, 13},    // (0 * 30 + w * 2 + 16) >> 5
             Case{63, 224, 129, 0, 100, 200}, // (w * 32 + 16) >> 5
             Case{63, 225, 129, 0, 100, 200}, // highlights
             Case{128, 128, 64, 1, 0, 200},   // no dark colour
             Case{128, 128, 64, 2, 100, 0},   // no bright colour
         }) {
        SCOPED_TRACE(testing::Message() << c.darkLuma << ", " << c.midLuma << ", " << c.brightLuma);
        ReducedRun run(8, 8);
        run.makeMaps();
        const ChromaWeights &weights = run.context.chromaWeights;
        std::fill_n(weights.chromaWeightDark, run.pixels(), int16_t{100});
        std::fill_n(weights.chromaWeightBright, run.pixels(), int16_t{200});
        std::fill_n(weights.chromaWeightMid, run.pixels(), int16_t{50});
        run.context.ghosts.chromaMode = c.chromaMode;
        run.paint(run.work(kDark), c.darkLuma, 255, 0);
        run.paint(run.work(kMid), c.midLuma, 0, 0);
        run.paint(run.work(kBright), c.brightLuma, 0, 255);
        merge_exposures(nullptr, &run.context);
        const int r = 32768 / (c.dark + c.bright + 50);
        const auto rounded = [](int sum) { return sum <= 0 ? 128 : std::min(255, (sum + 16384) >> 15); };
        const auto merged = rowsOfPlanes(*run.context.preparation.mergedImage, 5);
        EXPECT_EQ(merged[1][6], rounded(255 * c.dark * r));
        EXPECT_EQ(merged[2][6], rounded(255 * c.bright * r));
    }
}

TEST(MergeExposures, LuminanceTakesTheNearestCellsWeights) {
    ReducedRun run(22, 17);
    run.makeMaps();
    HdrContext &context = run.context;
    const size_t cells = context.preparation.gridPlaneSize();
    const std::array<int16_t *, 3> weights = {context.weights.lumaWeightDark, context.weights.lumaWeightMid,
                                              context.weights.lumaWeightBright};
    const std::array<int16_t *, 3> maps = {context.firstMerge.lumaOffsetDark(),
                                           context.firstMerge.lumaOffsetMid(),
                                           context.firstMerge.lumaOffsetBright()};
    const std::array<int, 3> inputs = {kDark, kMid, kBright};
    for (size_t e = 0; e < 3; e++) {
        run.paintNoise(run.work(inputs[e]));
        run.fillRandom(weights[e], cells, 0, 256);
        run.fillRandom(maps[e], run.pixels(), 1, 511);
        weights[e][9] = 0; // a cell without any weight
    }
    merge_exposures(nullptr, &context);
    for (int y = 0; y < run.height; y++)
        for (int x = 0; x < run.width; x++) {
            const int cell = (x + 2) / 4 + (y + 2) / 4 * context.preparation.gridWidth;
            int sum = 0;
            int total = 0;
            for (size_t e = 0; e < 3; e++) {
                const int offset = maps[e][y * run.width + x] - 256;
                sum += clamp8(planeOf(run.work(inputs[e]))(x, y) + offset) * weights[e][cell];
                total += weights[e][cell];
            }
            const int expected = total == 0 ? 0 : clamp8(sum * (32768 / total) / 32768);
            ASSERT_EQ(planeOf(*context.preparation.mergedImage)(x, y), expected) << x << ", " << y;
        }
    // Without any chroma weight the picture is grey. The weights are used up, the mask is not.
    EXPECT_EQ(samplesOf(planeOf(*context.preparation.mergedImage, 2)), Bytes(run.pixels(), 128));
    EXPECT_EQ(context.chromaWeights.chromaWeightMid, nullptr);
    EXPECT_NE(context.chromaWeights.detailMask, nullptr);
}

/// The offset maps of the dark, middle and bright exposure as the stage leaves them, in its order of steps.
std::array<Map, 3> refineSlowly(const ReducedRun &run) {
    const HdrContext &context = run.context;
    const Preparation &preparation = context.preparation;
    const FirstMerge &merge = context.firstMerge;
    Map dark = run.packed(merge.lumaOffsetDark()), mid = run.packed(merge.lumaOffsetMid());
    Map bright = run.packed(merge.lumaOffsetBright());
    Map detail = run.packed(context.chromaWeights.detailMask);
    box_mean_s16(nullptr, detail.data(), run.width, run.height, run.width, 32, 1);
    for (int16_t &d : detail)
        d = static_cast<int16_t>(d / 2 * 2 > 255 ? 255 : d / 2 * 2);
    const auto blend = [&](Map &map, auto refined) {
        for (size_t i = 0; i < map.size(); i++)
            map[i] = static_cast<int16_t>((map[i] * (256 - detail[i]) + refined(i) * detail[i]) >> 8);
    };

    const int width = coarseSize(run.width), height = coarseSize(run.height);
    Map guide(static_cast<size_t>(width * height)), coarse(guide.size());
    reduce_to_coarse(planeOf(*preparation.mergedImage), {guide.data(), width, height});
    for (Map *map : {&mid, &dark}) {
        reduce_to_coarse(Plane<const int16_t>(map->data(), run.width, run.height),
                         {coarse.data(), width, height});
        coarse_guided_filter(nullptr, Plane<int16_t>(guide.data(), width, height),
                             {coarse.data(), width, height});
        blend(*map, [&](size_t pixel) {
            const int x = static_cast<int>(pixel) % run.width, y = static_cast<int>(pixel) / run.width;
            return coarse[static_cast<size_t>(y / 4 * width + x / 4)];
        });
    }
    for (Map *map : {&dark, &mid, &bright}) {
        Map smoothed(map->size());
        guided_filter_s16(nullptr, preparation.mergedImage, map->data(), 16, nullptr, smoothed.data(), 1,
                          4.0);
        blend(*map, [&](size_t pixel) { return smoothed[pixel]; });
    }

    const auto patch = [&](const uint8_t *mask, int reference, Map &referenceMap, int patched,
                           Map &patchedMap) {
        Bytes widened(mask, mask + preparation.gridPlaneSize());
        box_mean_u8(nullptr, widened.data(), preparation.gridWidth, preparation.gridHeight,
                    preparation.gridWidth, 2, 2);
        patch_offset_map(widened.data(), preparation.gridWidth,
                         {planeOf(*preparation.workImages[reference]), referenceMap.data()},
                         {planeOf(*preparation.workImages[patched]), patchedMap.data()});
    };
    patch(context.weights.ghostMaskB, kDark, dark, kMid, mid);
    patch(context.weights.ghostMaskA, kMid, mid, kDark, dark);
    patch(context.weights.ghostMaskC, kMid, mid, kBright, bright);
    patch(context.weights.ghostMaskD, kBright, bright, kMid, mid);
    return {dark, mid, bright};
}

TEST(ExposureMergeStage, RefinesAndPatchesInOrderThenMerges) {
    for (int detail : {0, 181, 255}) {
        SCOPED_TRACE(detail);
        ReducedRun run(38, 27);
        run.makeMaps();
        HdrContext &context = run.context;
        const FirstMerge &merge = context.firstMerge;
        for (int input : {kDark, kMid, kBright})
            run.paintNoise(run.work(input));
        run.paintNoise(*context.preparation.mergedImage);
        for (int16_t *map : {merge.lumaOffsetMid(), merge.lumaOffsetDark(), merge.lumaOffsetBright()})
            run.fillRandom(map, run.pixels(), 1, 511);
        for (uint8_t *mask : run.ghostMasks())
            run.fillRandomMask(mask);
        // A mean of this radius exceeds its samples: from 181 it comes to an odd number, and from 255 it must
        // be limited.
        run.fillRandom(context.chromaWeights.detailMask, run.pixels(), detail == 255 ? 250 : detail, detail);
        const auto [dark, mid, bright] = refineSlowly(run);
        ASSERT_EQ(exposure_merge_stage(nullptr, &context), HDR_OK);
        EXPECT_EQ(run.packed(merge.lumaOffsetDark()), dark);
        EXPECT_EQ(run.packed(merge.lumaOffsetMid()), mid);
        EXPECT_EQ(run.packed(merge.lumaOffsetBright()), bright);
        EXPECT_EQ(context.exposureMerge.coarseWidth, 12);
        EXPECT_EQ(context.exposureMerge.coarseHeight, 8);
        EXPECT_EQ(context.chromaWeights.chromaWeightMid, nullptr); // the merge came last
        EXPECT_EQ(context.fallback, HDR_FALLBACK_NONE);
    }
}

} // namespace
} // namespace hdr
