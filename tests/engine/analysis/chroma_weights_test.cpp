// SPDX-License-Identifier: MIT
#include "engine/analysis/chroma_weights.h"

#include "engine/analysis/plane_filters.h"
#include "tests/support/reduced_run.h"
#include "tests/support/scarce_memory.h"

#include <cstdlib>

namespace hdr {
namespace {

using test::ReducedRun;
using Map = std::vector<int16_t>;

constexpr int kDark = ReducedRun::kDark, kMid = ReducedRun::kMid, kBright = ReducedRun::kBright;

HdrStatus runStage(ReducedRun &run, MemContext *memory = nullptr) {
    run.context.chromaWeights.release(memory);
    return chroma_weight_stage(memory, &run.context, run.context.preparation.workImages);
}

/// Runs the stage and compares its maps with their definitions; only the filter is shared.
void compareWithDefinition(ReducedRun &run) {
    ASSERT_EQ(runStage(run), HDR_OK);
    const int width = run.width, height = run.height;
    const auto smooth = [&](Map &map, int radius, int mode) {
        ASSERT_EQ(box_mean_s16(nullptr, map.data(), width, height, width, radius, mode), HDR_OK);
    };
    const auto forEachInner = [&](int margin, auto visit) {
        for (int y = margin; y < height - margin; y++)
            for (int x = margin; x < width - margin; x++)
                visit(x, y, static_cast<size_t>(y * width + x));
    };
    Map gradient(run.pixels(), 0), detail = gradient, edges = gradient;
    std::array<Map, 3> raw{gradient, gradient, gradient};
    forEachInner(1, [&](int x, int y, size_t i) {
        for (int input = 0; input < 3; input++) {
            const Plane<uint8_t> luma = planeOf(run.work(input));
            const int sum =
                std::abs(luma(x, y - 1) - luma(x, y + 1)) + std::abs(luma(x - 1, y) - luma(x + 1, y));
            gradient[i] = std::max(gradient[i], static_cast<int16_t>(sum / 2));
        }
        const int mid = planeOf(run.work(kMid))(x, y);
        raw[kDark][i] = static_cast<int16_t>(std::min(2 * mid, 128));
        raw[kBright][i] = static_cast<int16_t>(mid > 192 ? 512 - 2 * mid : 128);
        raw[kMid][i] = static_cast<int16_t>(mid < 64 ? 64 + mid : mid > 192 ? 320 - mid : 128);
    });
    smooth(gradient, 4, 1);
    forEachInner(1, [&](int x, int y, size_t i) {
        constexpr int16_t kSteps[]{0, 0, 0, 0, 0, 63, 126, 189, 252, 255};
        detail[i] = kSteps[std::min<int>(gradient[i], 9)];
        if (gradient[i] > 8 && planeOf(run.work(kMid))(x, y) >= 193)
            edges[i] = 255;
    });
    smooth(edges, 8, 2);
    smooth(edges, 8, 1);
    const ChromaWeights &weights = run.context.chromaWeights;
    EXPECT_EQ(run.packed(weights.detailMask), detail);
    for (const auto &[map, input] : {std::pair{weights.chromaWeightDark, kDark},
                                     {weights.chromaWeightBright, kBright},
                                     {weights.chromaWeightMid, kMid}}) {
        Map expected = raw[static_cast<size_t>(input)];
        smooth(expected, 16, 1);
        forEachInner(4, [&](int, int, size_t i) {
            const int alpha = std::min(256, 4 * edges[i]);
            expected[i] = static_cast<int16_t>(
                (raw[static_cast<size_t>(input)][i] * alpha + expected[i] * (256 - alpha) + 128) / 256);
        });
        EXPECT_EQ(run.packed(map), expected) << input;
    }
}

TEST(ChromaWeights, EqualTheirDefinition) {
    // A smooth slope with a highlight behind a sharp edge, then noise of several strengths.
    ReducedRun slope(58, 41);
    for (int input = 0; input < 3; input++)
        for (int y = 0; y < slope.height; y++)
            for (int x = 0; x < slope.width; x++) {
                const int level = x > 40 && y > 12 && y < 30 ? (y < 20 ? 193 : 192) : 3 * x;
                planeOf(slope.work(input))(x, y) = static_cast<uint8_t>(level / (input == kDark ? 2 : 1));
            }
    compareWithDefinition(slope);
    for (auto [width, height] : {std::pair{45, 52}, {33, 9}, {9, 9}, {30, 8}, {8, 30}, {3, 3}, {2, 2}})
        for (int lowest : {247, 238, 0}) {
            SCOPED_TRACE(testing::Message() << width << " x " << height << " from " << lowest);
            ReducedRun run(width, height);
            for (int input = 0; input < 3; input++)
                run.paintNoise(run.work(input), lowest);
            compareWithDefinition(run);
        }
}

TEST(ChromaWeights, FailedAllocationsRecordAndLeakNothing) {
    ReducedRun run(12, 12);
    run.context.chromaWeights.release(nullptr);
    // Seven maps of 288 bytes; the filters' tables may fail without harm.
    const size_t failures = test::countFailures(64, [&](MemContext *memory) {
        const HdrStatus status = runStage(run, memory);
        EXPECT_EQ(run.context.chromaWeights.detailMask != nullptr, status == HDR_OK);
        run.context.chromaWeights.release(memory);
        EXPECT_EQ(run.context.chromaWeights.chromaWeightDark, nullptr);
        return status;
    });
    EXPECT_GE(failures, 7 * 288 / 64u);
}

} // namespace
} // namespace hdr
