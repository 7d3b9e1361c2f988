// SPDX-License-Identifier: MIT
#include "engine/analysis/first_merge.h"

#include "engine/analysis/grid_blocks.h"
#include "engine/analysis/guided_filter.h"
#include "engine/analysis/plane_filters.h"
#include "engine/prepare/tone_match.h"
#include "tests/support/arena.h"
#include "tests/support/reduced_run.h"

#include <gtest/gtest.h>
#include <span>

namespace hdr {
namespace {

using test::ReducedRun;
using test::samplesOf;
using Bytes = std::vector<uint8_t>;
using Map = std::vector<int16_t>;

constexpr int kDark = ReducedRun::kDark, kMid = ReducedRun::kMid, kBright = ReducedRun::kBright;

/// A merge written pixel by pixel from the definitions; the filters, the blends under a mask and the tone
/// match are shared.
class SlowMerge {
public:
    explicit SlowMerge(ReducedRun &run) : run(run), context(run.context) {
        const Tables &tables = context.tables;
        std::copy_n(tables.toneMatchMidToBright, 256, midToBright.begin());
        mix();
        replaceGhosts();
        stretch();
    }
    std::array<Bytes, 3> merged, tone;
    Map offsetMid, offsetDark, offsetBright;
    int darkFraction = 0;
    Bytes brightToMid = Bytes(256), midToBright = brightToMid;

private:
    ReducedRun &run;
    HdrContext &context;
    Bytes darkSide, brightSide;

    /// The bright exposure's luminance, with which the tone match is rebuilt.
    Bytes brightLuma(double gain) {
        Bytes luma = samplesOf(planeOf(run.work(kBright)));
        const uint32_t *midHistogram = context.preparation.histogram(kMid, 0);
        const uint32_t *brightHistogram = context.preparation.histogram(kBright, 0);
        const int n = static_cast<int>(run.pixels());
        std::vector<uint32_t> counts(brightHistogram, brightHistogram + 256);
        if (gain < 0.5) {
            const int k = gain == 0.4495 ? 52 : 256; // 51.7, rounded
            const Bytes registered = samplesOf(planeOf(run.registered(kBright)));
            counts.assign(256, 0);
            for (size_t i = 0; i < luma.size(); i++) {
                luma[i] = static_cast<uint8_t>((registered[i] * k + luma[i] * (256 - k) + 128) / 256);
                counts[luma[i]]++;
            }
            build_tone_match(midToBright.data(), midHistogram, counts.data(), n, 0, 0);
        }
        build_tone_match(brightToMid.data(), counts.data(), midHistogram, n, 0, 1);
        return luma;
    }
    void mix() {
        const Tables &tables = context.tables;
        const ChromaWeights &weights = context.chromaWeights;
        const double gain = context.preparation.exposureEstimate[kBright];
        std::array<Bytes, 3> dark, mid, bright;
        for (int p = 0; p < 3; p++) {
            dark[p] = samplesOf(planeOf(run.work(kDark), p));
            mid[p] = samplesOf(planeOf(run.registered(kMid), p));
            bright[p] = samplesOf(planeOf(gain < 0.5 ? run.registered(kBright) : run.work(kBright), p));
            merged[p] = tone[p] = Bytes(run.pixels());
        }
        bright[0] = brightLuma(gain);
        darkSide = brightSide = Bytes(run.pixels());
        for (size_t i = 0; i < run.pixels(); i++) {
            const int yd = dark[0][i], ym = mid[0][i], yb = bright[0][i], t = brightToMid[bright[0][i]];
            const int a = context.ghosts.chromaMode == 1 ? 0 : weights.chromaWeightDark[i];
            const int b = context.ghosts.chromaMode == 2 ? 0 : weights.chromaWeightBright[i];
            const int c = weights.chromaWeightMid[i];
            const auto mixed = [b, c](int darkWeight, int d, int bright, int mid) {
                const int total = darkWeight + b + c, r = total ? 32768 / total : 0;
                return static_cast<uint8_t>(
                    std::min((d * darkWeight * r + bright * b * r + mid * c * r) / 32768, 255));
            };
            const int lumaWeight = yd < 32 ? a * yd / 32 : a;
            merged[0][i] = mixed(lumaWeight, yd, yb, ym);
            tone[0][i] = mixed(lumaWeight, tables.toneMatchMidToDark[ym], midToBright[ym], ym);
            darkSide[i] = mixed(lumaWeight, yd, 0, tables.toneMatchDarkToMid[yd]);
            brightSide[i] = mixed(lumaWeight, tables.toneMatchMidToDark[t], yb, t);
            const int chromaWeight = yd < 32 ? 0 : yd <= 63 ? (yd - 32) * a / 32 : a;
            for (size_t p = 1; p < 3; p++)
                merged[p][i] = tone[p][i] = mixed(chromaWeight, dark[p][i], bright[p][i], mid[p][i]);
        }
    }

    using Blend = void (*)(Plane<uint8_t>, Plane<const uint8_t>, Plane<const uint8_t>);
    Plane<uint8_t> planeOn(Bytes &samples) { return {samples.data(), run.width, run.height}; }
    void replace(Bytes &source, const uint8_t *mask, int radius, Blend blend) {
        const Preparation &grid = context.preparation;
        Bytes soft(mask, mask + grid.gridPlaneSize());
        box_mean_u8(nullptr, soft.data(), grid.gridWidth, grid.gridHeight, grid.gridWidth, radius, 1);
        blend(planeOn(merged[0]), planeOn(source),
              Plane<const uint8_t>(soft.data(), grid.gridWidth, grid.gridHeight));
    }
    void replaceByTone(const uint8_t *mask, int radius, Blend blend) {
        copy_blocks_where_clear(
            planeOn(tone[0]), planeOn(merged[0]),
            Plane<const uint8_t>(mask, context.preparation.gridWidth, context.preparation.gridHeight));
        const Offscreen target{HDR_FORMAT_GRAY, run.width, run.height, {tone[0].data()}, {run.width}};
        Bytes output(run.pixels());
        Offscreen result{HDR_FORMAT_GRAY, run.width, run.height, {output.data()}, {run.width}};
        guided_filter_u8(nullptr, &run.work(kMid), &target, 16, nullptr, &result, 4.0);
        tone[0] = output;
        replace(tone[0], mask, radius, blend);
    }
    void replaceGhosts() {
        const ExposureWeights &masks = context.weights;
        if (context.ghosts.ghostMode == 1)
            replaceByTone(masks.ghostMaskA, 4, blend_blocks_128);
        if (context.ghosts.ghostMode == 2 && context.ghostTuning == 0)
            replaceByTone(masks.ghostMaskC, 2, blend_blocks_128);
        if (context.ghosts.ghostMode == 2 && context.ghostTuning != 0) {
            replace(darkSide, masks.ghostMaskB, 2, blend_blocks_255);
            replaceByTone(masks.ghostMaskA, 2, blend_blocks_255);
        }
        replace(brightSide, masks.ghostMaskD, 2, blend_blocks_255);
    }

    /// Fewer than 4096 pixels: the clip points are the lowest and the highest level.
    void stretch() {
        const Bytes reference = samplesOf(planeOf(run.work(kMid)));
        const Bytes dark = samplesOf(planeOf(run.work(kDark))),
                    bright = samplesOf(planeOf(run.work(kBright)));
        const auto [lowM, highM] = std::ranges::minmax(merged[0]);
        const auto [blackR, whiteR] = std::ranges::minmax(reference);
        const int low = std::max(lowM, blackR), high = std::min(highM, whiteR);
        int nearBlack = 0;
        for (size_t i = 0; i < run.pixels(); i++) {
            int level = merged[0][i];
            if (high > low)
                level = level < low     ? level * blackR / low
                        : level <= high ? (level - low) * (whiteR - blackR) / (high - low) + blackR
                                        : (level - high) * (255 - whiteR) / (255 - high) + whiteR;
            merged[0][i] = static_cast<uint8_t>(level);
            offsetMid.push_back(static_cast<int16_t>(256 - reference[i] + level));
            offsetDark.push_back(static_cast<int16_t>(256 - dark[i] + level));
            offsetBright.push_back(static_cast<int16_t>(256 - bright[i] + level));
            nearBlack += level >= 1 && level <= 31;
        }
        darkFraction = nearBlack * 1024 / static_cast<int>(run.pixels());
    }
};

void fillRandomly(ReducedRun &run, int darkestReference, int brightestReference) {
    HdrContext &context = run.context;
    for (int input = 0; input < 3; input++) {
        run.paintNoise(run.work(input));
        run.paintNoise(run.registered(input));
    }
    run.paintNoise(run.work(kMid), darkestReference, brightestReference);
    run.countHistograms();
    ChromaWeights &weights = context.chromaWeights;
    for (int16_t *plane : {weights.chromaWeightDark, weights.chromaWeightBright, weights.chromaWeightMid}) {
        run.fillRandom(plane, run.pixels(), 0, 256);
        plane[7] = 0; // a pixel without any weight
    }
    for (uint8_t *mask : run.ghostMasks())
        run.fillRandomMask(mask);
    for (uint8_t *table : {context.tables.toneMatchDarkToMid, context.tables.toneMatchMidToDark,
                           context.tables.toneMatchBrightToMid, context.tables.toneMatchMidToBright})
        run.fillRandom(table, 256, 0, 255);
}

TEST(FirstMerge, EqualsThePixelwiseDefinitionInEveryMode) {
    unsigned seed = 0;
    for (double gain : {0.2, 0.4495, 0.5})
        for (int ghostMode : {0, 1, 2})
            for (auto [ghostTuning, darkest, brightest] :
                 {std::array{0, 0, 255}, {1, 20, 200}, {0, 30, 255}, {1, 90, 90}}) {
                SCOPED_TRACE(testing::Message() << gain << ", " << ghostMode << ", " << ghostTuning);
                ReducedRun run(26, 18);
                run.random.seed(seed++);
                HdrContext &context = run.context;
                context.ghosts.chromaMode = static_cast<int>(seed % 3);
                context.ghosts.ghostMode = ghostMode;
                context.ghostTuning = ghostTuning;
                context.preparation.exposureEstimate[kBright] = gain;
                fillRandomly(run, darkest, brightest);
                const SlowMerge expected(run);
                const Bytes registered = samplesOf(planeOf(run.registered(kBright)));

                ASSERT_EQ(first_merge_stage(nullptr, &context, context.preparation.workImages), HDR_OK);

                const FirstMerge &merge = context.firstMerge;
                for (int p = 0; p < 3; p++) {
                    EXPECT_EQ(samplesOf(planeOf(*context.preparation.mergedImage, p)), expected.merged[p]);
                    EXPECT_EQ(samplesOf(planeOf(*context.preparation.toneImage, p)), expected.tone[p]);
                }
                EXPECT_EQ(run.packed(merge.lumaOffsetMid()), expected.offsetMid);
                EXPECT_EQ(run.packed(merge.lumaOffsetDark()), expected.offsetDark);
                EXPECT_EQ(run.packed(merge.lumaOffsetBright()), expected.offsetBright);
                EXPECT_EQ(run.packed(merge.correctionMaps[kBrightOffsetV]), Map(run.pixels(), 0));
                EXPECT_EQ(merge.darkFraction, expected.darkFraction);
                EXPECT_EQ(context.smoothingFlag, 1);
                EXPECT_TRUE(std::ranges::equal(expected.brightToMid,
                                               std::span(context.tables.toneMatchBrightToMid, 256)));
                EXPECT_TRUE(std::ranges::equal(expected.midToBright,
                                               std::span(context.tables.toneMatchMidToBright, 256)));
                EXPECT_EQ(samplesOf(planeOf(run.registered(kBright))), registered);
            }
}

TEST(FirstMerge, ReleasesTheMapsOfAnEarlierRun) {
    test::Arena arena(1 << 21);
    {
        ReducedRun run(20, 14, arena.memory());
        ASSERT_TRUE(run.complete);
        for (int repetition = 0; repetition < 2; repetition++)
            ASSERT_EQ(first_merge_stage(arena.memory(), &run.context, run.context.preparation.workImages),
                      HDR_OK);
    }
    EXPECT_TRUE(arena.isEmpty());
}

} // namespace
} // namespace hdr
