// SPDX-License-Identifier: MIT
#include "engine/analysis/single_image_fallback.h"

#include "engine/analysis/exposure_merge.h"
#include "tests/support/arena.h"
#include "tests/support/reduced_run.h"

#include <gtest/gtest.h>

namespace hdr {
namespace {

using test::ReducedRun;
using test::samplesOf;
using Weights = std::vector<int16_t>;

constexpr int kDark = ReducedRun::kDark, kMid = ReducedRun::kMid, kBright = ReducedRun::kBright;

/// A run whose inputs are constant pictures of luminance 64 (middle), 192 (bright) and 32 (dark), with
/// shifts, warps, maps and masks of some content.
struct FallbackRun : ReducedRun {
    static constexpr int kWidth = 12, kHeight = 8, kNodes = 6;
    std::array<std::vector<uint8_t>, 3> bytes;
    std::array<Offscreen, 3> inputs;
    std::array<std::array<int32_t, kNodes>, 4> warps;

    explicit FallbackRun(MemContext *memory = nullptr) : ReducedRun(kWidth, kHeight, memory) {
        makeMaps();
        const std::array<uint8_t, 3> luma = {64, 192, 32};
        for (size_t i = 0; i < 3; i++) {
            bytes[i].assign(16 * kWidth * 8 * kHeight, luma[i]);
            inputs[i] = {HDR_FORMAT_YUY2, 8 * kWidth, 8 * kHeight, {bytes[i].data()}, {16 * kWidth}};
        }
        context.preparation.inputs = inputs.data();
        context.toneLength = 100;
        context.earlyExitCode = HDR_ERR_ALIGN;
        Alignment &alignment = context.alignment;
        alignment.warpWidth = 3;
        alignment.warpHeight = 2;
        warps.fill({5, 5, 5, 5, 5, 5});
        alignment.warpX[kDark] = warps[0].data();
        alignment.warpY[kDark] = warps[1].data();
        alignment.warpX[kBright] = warps[2].data();
        alignment.warpY[kBright] = warps[3].data();
        for (auto *shifts : {&alignment.globalShift, &alignment.gridShift})
            for (auto &shift : *shifts)
                std::fill_n(shift, 2, -3);
        std::fill_n(context.check.shiftSummary, 4, 7);
        std::fill_n(context.check.shiftTable, 4, 7);
        if (!complete)
            return;
        for (int16_t *map : context.firstMerge.correctionMaps)
            std::fill_n(map, pixels(), int16_t{99});
        std::fill_n(context.weights.ghostMaskB, 4 * cells(), uint8_t{255});
        std::fill_n(context.preparation.gridStats, kGridPlaneCount * cells(), uint16_t{44});
    }
    /// Expects the whole weight in one exposure and its reduced picture.
    void expectChosen(bool isBright) {
        const ExposureWeights &weights = context.weights;
        EXPECT_EQ(Weights(weights.lumaWeightMid, weights.lumaWeightMid + cells()),
                  Weights(cells(), isBright ? 0 : 256));
        EXPECT_EQ(Weights(weights.lumaWeightBright, weights.lumaWeightBright + cells()),
                  Weights(cells(), isBright ? 256 : 0));
        EXPECT_EQ(Weights(weights.lumaWeightDark, weights.lumaWeightDark + cells()), Weights(cells(), 0));
        // A constant block loses one level when it is reduced.
        EXPECT_EQ(samplesOf(planeOf(*context.preparation.mergedImage)),
                  std::vector<uint8_t>(pixels(), isBright ? 191 : 63));
    }
};

TEST(SingleImageFallback, ChoosesTheExposureClosestToOne) {
    struct Case {
        double mid, bright, dark; ///< estimates, in the order of the inputs
        int count;
        bool brightChosen;
    };
    for (const Case &c : {
             Case{1.0, 0.3, 4.0, 3, false},    // the middle one
             Case{1.4, 0.9, 4.0, 3, true},     // the bright one
             Case{1.9, 0.1, 1.2, 3, false},    // the dark one: the middle one stands in
             Case{1.5, 0.5, 4.0, 3, false},    // ties keep the lower input
             Case{3.0, 0.5, 1.5, 3, true},     // also between the second and the third
             Case{12.0, 11.0, 20.0, 3, false}, // a tie: the first distance counts 10 at most
             Case{1.5, 0.2, 1.0, 2, false},    // an input that was not given
         }) {
        SCOPED_TRACE(testing::Message() << c.mid << ", " << c.bright << ", " << c.dark);
        FallbackRun run;
        std::ranges::copy(std::array{c.mid, c.bright, c.dark}, run.context.preparation.exposureEstimate);
        run.context.imageCount = c.count;
        if (c.count == 2)
            run.context.preparation.darkIndex = kMid;
        ASSERT_EQ(single_image_fallback(nullptr, &run.context), HDR_OK);
        run.expectChosen(c.brightChosen);
    }
}

TEST(SingleImageFallback, LeavesNothingOfTheMergeBehind) {
    FallbackRun run;
    HdrContext &context = run.context;
    ASSERT_EQ(exposure_merge_stage(nullptr, &context), HDR_OK); // the code selects the fallback
    EXPECT_EQ(context.earlyExitCode, HDR_OK);
    EXPECT_EQ(context.toneLength, 120);
    for (int i = 0; i < kCorrectionMapCount; i++) {
        EXPECT_EQ(run.packed(context.firstMerge.correctionMaps[i]),
                  Weights(run.pixels(), i <= kLumaOffsetBright ? 256 : 0));
    }
    const auto cells = static_cast<ptrdiff_t>(run.cells());
    for (const uint8_t *mask : run.ghostMasks())
        EXPECT_EQ(std::count(mask, mask + cells, 0), cells);
    EXPECT_EQ(context.preparation.gridPlane(kGridMidLevel)[cells - 1], 0);
    EXPECT_EQ(context.preparation.gridPlane(kGridHighlight)[0], 44);
    for (const auto &warp : run.warps)
        EXPECT_EQ(std::count(warp.begin(), warp.end(), 0), FallbackRun::kNodes);
    for (const auto *shifts : {&context.alignment.globalShift, &context.alignment.gridShift})
        for (const auto &shift : *shifts)
            EXPECT_EQ(std::ranges::count(shift, 0), 2);
    EXPECT_EQ(std::ranges::count(context.check.shiftSummary, 0), 4);
    EXPECT_EQ(std::ranges::count(context.check.shiftTable, 0), 4);
    // The chosen input is reduced afresh: registration may have moved its working picture.
    EXPECT_EQ(samplesOf(planeOf(run.work(kMid))), std::vector<uint8_t>(run.pixels(), 63));
}

TEST(SingleImageFallback, OneInputRendersThatInput) {
    FallbackRun run;
    run.context.imageCount = 1;
    run.context.earlyExitCode = HDR_OK;
    run.context.preparation.darkIndex = run.context.preparation.brightIndex = kMid;
    ASSERT_EQ(exposure_merge_stage(nullptr, &run.context), HDR_OK);
    EXPECT_EQ(run.context.fallback, HDR_FALLBACK_SINGLE_INPUT);
    run.expectChosen(false);
}

TEST(SingleImageFallback, WithoutMemoryNothingPointsIntoTheFreedWeights) {
    // Take the arena's free memory, so that the new grids do not fit where the old ones were.
    test::Arena arena(1 << 20);
    {
        FallbackRun run(arena.memory());
        ASSERT_TRUE(run.complete);
        std::vector<void *> hoard;
        for (size_t bytes = 1 << 20; bytes >= 8; bytes /= 2)
            while (void *block = engineAlloc(arena.memory(), bytes))
                hoard.push_back(block);
        EXPECT_EQ(single_image_fallback(arena.memory(), &run.context), HDR_OK);
        const ExposureWeights &weights = run.context.weights;
        for (const int16_t *plane : {weights.lumaWeightMid, weights.lumaWeightDark, weights.lumaWeightBright})
            EXPECT_EQ(plane, nullptr);
        for (const uint8_t *mask : run.ghostMasks())
            EXPECT_EQ(mask, nullptr);
        EXPECT_EQ(run.context.earlyExitCode, HDR_ERR_ALIGN);
        for (void *block : hoard)
            engineFree(arena.memory(), block);
    }
    EXPECT_TRUE(arena.isEmpty());
}

} // namespace
} // namespace hdr
