// SPDX-License-Identifier: MIT
#include "engine/analysis/first_merge.h"

#include "engine/analysis/guided_filter.h"
#include "engine/analysis/plane_filters.h"
#include "engine/prepare/tone_match.h"
#include "tests/support/arena.h"
#include "tests/support/reduced_run.h"

#include <gtest/gtest.h>

namespace hdr {
namespace {

using test::ReducedRun;
using test::samplesOf;
using Bytes = std::vector<uint8_t>;
using Map = std::vector<int16_t>;

constexpr int kDark = ReducedRun::kDark, kMid = ReducedRun::kMid, kBright = ReducedRun::kBright;

/// A run of constant pictures, equal chroma weights and no ghosts.
struct UniformRun : ReducedRun {
    UniformRun(int darkLuma, int midLuma, int brightLuma) : ReducedRun(12, 8) {
        paint(work(kDark), darkLuma, 110, 120);
        paint(work(kMid), midLuma, 130, 140);
        paint(work(kBright), brightLuma, 90, 150);
        for (int input : {kDark, kMid, kBright})
            paint(registered(input), midLuma, 130, 140);
        countHistograms();
        setWeights(128, 128, 128);
    }
    void setWeights(int16_t dark, int16_t bright, int16_t mid) {
        std::fill_n(context.chromaWeights.chromaWeightDark, pixels(), dark);
        std::fill_n(context.chromaWeights.chromaWeightBright, pixels(), bright);
        std::fill_n(context.chromaWeights.chromaWeightMid, pixels(), mid);
    }
    /// Runs the stage and returns the one value that a plane of mergedImage holds.
    int merge(int plane = 0) {
        EXPECT_EQ(first_merge_stage(memory, &context, context.preparation.workImages), HDR_OK);
        const Bytes samples = samplesOf(planeOf(*context.preparation.mergedImage, plane));
        EXPECT_EQ(Bytes(samples.size(), samples[0]), samples);
        return samples[0];
    }
};

TEST(FirstMerge, EqualWeightsGiveSlightlyLessThanTheMean) {
    UniformRun run(40, 100, 180);
    // R(384) = 85: (128 * 85 * 320) >> 15. One bin each: the stretch finds no range and does nothing.
    EXPECT_EQ(run.merge(), 106);
    EXPECT_EQ(run.context.firstMerge.lumaOffsetDark()[5], 256 - 40 + 106);
    EXPECT_EQ(run.context.firstMerge.lumaOffsetMid()[5], 256 - 100 + 106);
    EXPECT_EQ(run.context.firstMerge.lumaOffsetBright()[5], 256 - 180 + 106);
    EXPECT_EQ(run.context.firstMerge.darkFraction, 0);
    EXPECT_EQ(run.context.smoothingFlag, 1);
    // The dark weight of chroma at level 40 is ((40 - 32) * 128) >> 5 = 32, R(288) = 113.
    EXPECT_EQ(run.merge(1), (113 * (32 * 110 + 128 * 90 + 128 * 130)) >> 15);
}

TEST(FirstMerge, StretchMovesBlackAndWhitePointToTheReferences) {
    // Merged and reference differ: the dark exposure alone is merged, without its ramp's ends.
    UniformRun run(0, 0, 0);
    run.setWeights(256, 0, 0);
    const auto luma = [&run](int input, Bytes row) {
        std::copy(row.begin(), row.end(), planeOf(run.work(input)).row(0));
        for (int y = 1; y < run.height; y++)
            std::copy(row.begin(), row.end(), planeOf(run.work(input)).row(y));
    };
    luma(kDark, {40, 50, 60, 70, 80, 90, 100, 110, 120, 130, 140, 240});
    luma(kMid, {20, 50, 60, 70, 80, 90, 100, 110, 120, 130, 140, 200});
    run.countHistograms();
    ASSERT_EQ(first_merge_stage(nullptr, &run.context, run.context.preparation.workImages), HDR_OK);
    // low = max(40, 20), high = min(240, 200): 40..200 goes to 20..200, 200..255 to itself.
    const Bytes expected = {20, 31, 42, 53, 65, 76, 87, 98, 110, 121, 132, 240};
    const Bytes merged = samplesOf(planeOf(*run.context.preparation.mergedImage));
    EXPECT_EQ(Bytes(merged.begin(), merged.begin() + 12), expected);
}

/// A merge written pixel by pixel from the definitions; only the filters and the tone match are shared.
class SlowMerge {
public:
    explicit SlowMerge(ReducedRun &run) : run(run), context(run.context) {
        const Tables &tables = context.tables;
        std::copy_n(tables.toneMatchBrightToMid, 256, brightToMid);
        std::copy_n(tables.toneMatchMidToBright, 256, midToBright);
        mix();
        replaceGhosts();
        stretch();
    }
    std::array<Bytes, 3> merged, tone;
    Map offsetMid, offsetDark, offsetBright;
    int darkFraction = 0;
    uint8_t brightToMid[256], midToBright[256];

private:
    ReducedRun &run;
    HdrContext &context;
    Bytes darkSide, brightSide;

    Bytes plane(const Offscreen &picture, int index) { return samplesOf(planeOf(picture, index)); }

    void mix() {
        const Tables &tables = context.tables;
        const ChromaWeights &weights = context.chromaWeights;
        const uint32_t *midHistogram = context.preparation.histogram(kMid, 0);
        const int n = static_cast<int>(run.pixels());
        std::array<Bytes, 3> dark, mid, bright;
        const double gain = context.preparation.exposureEstimate[kBright];
        for (int p = 0; p < 3; p++) {
            dark[p] = plane(run.work(kDark), p);
            mid[p] = plane(run.registered(kMid), p);
            bright[p] = plane(gain < 0.5 ? run.registered(kBright) : run.work(kBright), p);
        }
        build_tone_match(brightToMid, context.preparation.histogram(kBright, 0), midHistogram, n, 0, 1);
        if (gain < 0.5) {
            const int k = gain == 0.4495 ? 52 : 256; // 51.7, rounded
            const Bytes photographed = plane(run.work(kBright), 0);
            std::vector<uint32_t> counts(256);
            for (size_t i = 0; i < bright[0].size(); i++) {
                bright[0][i] =
                    static_cast<uint8_t>((bright[0][i] * k + photographed[i] * (256 - k) + 128) / 256);
                counts[bright[0][i]]++;
            }
            build_tone_match(midToBright, midHistogram, counts.data(), n, 0, 0);
            build_tone_match(brightToMid, counts.data(), midHistogram, n, 0, 1);
        }
        for (int p = 0; p < 3; p++)
            merged[p] = tone[p] = Bytes(run.pixels());
        darkSide = brightSide = Bytes(run.pixels());
        for (size_t i = 0; i < run.pixels(); i++) {
            const int yd = dark[0][i], ym = mid[0][i], yb = bright[0][i];
            int a = weights.chromaWeightDark[i], b = weights.chromaWeightBright[i];
            const int c = weights.chromaWeightMid[i];
            if (context.ghosts.chromaMode == 1)
                a = 0;
            if (context.ghosts.chromaMode == 2)
                b = 0;
            const int full = a;
            if (yd < 32)
                a = a * yd / 32;
            int r = a + b + c ? 32768 / (a + b + c) : 0;
            const auto store = [](int sum) { return static_cast<uint8_t>(std::min(sum / 32768, 255)); };
            merged[0][i] = store(c * r * ym + a * r * yd + b * r * yb);
            tone[0][i] = store(midToBright[ym] * b * r + tables.toneMatchMidToDark[ym] * a * r + c * r * ym);
            darkSide[i] = store(tables.toneMatchDarkToMid[yd] * c * r + a * r * yd);
            const int t = brightToMid[yb];
            brightSide[i] = store(c * r * t + b * r * yb + tables.toneMatchMidToDark[t] * a * r);
            a = yd < 32 ? 0 : yd <= 63 ? (yd - 32) * full / 32 : full;
            r = a + b + c ? 32768 / (a + b + c) : 0;
            for (size_t p = 1; p < 3; p++)
                merged[p][i] = tone[p][i] =
                    store(bright[p][i] * r * b + dark[p][i] * a * r + mid[p][i] * c * r);
        }
    }

    size_t cellOf(size_t pixel) const {
        const int x = static_cast<int>(pixel) % run.width;
        const int y = static_cast<int>(pixel) / run.width;
        const int gridWidth = context.preparation.gridWidth;
        return static_cast<size_t>((y / 4 + 1) * gridWidth + std::min(x / 4 + 1, gridWidth - 2));
    }
    Bytes soften(const uint8_t *mask, int radius) const {
        Bytes soft(mask, mask + context.preparation.gridPlaneSize());
        box_mean_u8(nullptr, soft.data(), context.preparation.gridWidth, context.preparation.gridHeight,
                    context.preparation.gridWidth, radius, 1);
        return soft;
    }
    void blend(const Bytes &source, const Bytes &soft, bool by128) {
        for (size_t i = 0; i < run.pixels(); i++) {
            const int m = soft[cellOf(i)];
            int value = merged[0][i];
            if (m > 0 && by128)
                value = m > 128 ? source[i] : (source[i] * m + value * (128 - m)) / 128;
            else if (m > 0)
                value = (source[i] * m + value * (255 - m)) / 256;
            merged[0][i] = static_cast<uint8_t>(value);
        }
    }
    void replaceByTone(const uint8_t *mask, int radius, bool by128) {
        for (size_t i = 0; i < run.pixels(); i++)
            if (mask[cellOf(i)] == 0)
                tone[0][i] = merged[0][i];
        Bytes output(run.pixels());
        uint8_t *planes[3] = {tone[0].data()}, *outputs[3] = {output.data()};
        const int pitches[3] = {run.width};
        Offscreen target, result;
        offscreenAttach(&target, run.width, run.height, HDR_FORMAT_GRAY, planes, pitches);
        offscreenAttach(&result, run.width, run.height, HDR_FORMAT_GRAY, outputs, pitches);
        guided_filter_u8(nullptr, &run.work(kMid), &target, 16, nullptr, &result, 4.0);
        tone[0] = output;
        blend(tone[0], soften(mask, radius), by128);
    }
    void replaceGhosts() {
        const ExposureWeights &masks = context.weights;
        const bool tuned = context.ghostTuning != 0;
        if (context.ghosts.ghostMode == 1)
            replaceByTone(masks.ghostMaskA, 4, true);
        if (context.ghosts.ghostMode == 2 && !tuned)
            replaceByTone(masks.ghostMaskC, 2, true);
        if (context.ghosts.ghostMode == 2 && tuned) {
            blend(darkSide, soften(masks.ghostMaskB, 2), false);
            replaceByTone(masks.ghostMaskA, 2, false);
        }
        blend(brightSide, soften(masks.ghostMaskD, 2), false);
    }

    /// Fewer than 4096 pixels: the clip points are the lowest and the highest level.
    void stretch() {
        const auto [lowM, highM] = std::minmax_element(merged[0].begin(), merged[0].end());
        const Bytes reference = plane(run.work(kMid), 0);
        const auto [lowR, highR] = std::minmax_element(reference.begin(), reference.end());
        const int low = std::max(*lowM, *lowR), high = std::min(*highM, *highR), blackR = *lowR,
                  whiteR = *highR;
        const Bytes dark = plane(run.work(kDark), 0), bright = plane(run.work(kBright), 0);
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

void fillRandomly(ReducedRun &run) {
    HdrContext &context = run.context;
    for (int input = 0; input < 3; input++) {
        run.paintNoise(run.work(input));
        run.paintNoise(run.registered(input));
    }
    run.countHistograms();
    ChromaWeights &weights = context.chromaWeights;
    for (int16_t *plane : {weights.chromaWeightDark, weights.chromaWeightBright, weights.chromaWeightMid}) {
        run.fillRandom(plane, run.pixels(), 0, 256);
        plane[7] = 0; // a pixel without any weight
    }
    for (uint8_t *mask : {context.weights.ghostMaskA, context.weights.ghostMaskB, context.weights.ghostMaskC,
                          context.weights.ghostMaskD})
        run.fillRandomMask(mask);
    for (uint8_t *table : {context.tables.toneMatchDarkToMid, context.tables.toneMatchMidToDark,
                           context.tables.toneMatchBrightToMid, context.tables.toneMatchMidToBright})
        run.fillRandom(table, 256, 0, 255);
}

TEST(FirstMerge, EqualsThePixelwiseDefinitionInEveryMode) {
    unsigned seed = 0;
    for (double gain : {0.2, 0.4495, 0.5})
        for (int ghostMode : {0, 1, 2})
            for (int ghostTuning : {0, 1}) {
                SCOPED_TRACE(testing::Message() << gain << ", " << ghostMode << ", " << ghostTuning);
                ReducedRun run(26, 18);
                run.random.seed(seed++);
                run.context.ghosts.chromaMode = static_cast<int>(seed % 3);
                run.context.ghosts.ghostMode = ghostMode;
                run.context.ghostTuning = ghostTuning;
                run.context.preparation.exposureEstimate[kBright] = gain;
                fillRandomly(run);
                const SlowMerge expected(run);
                std::array<Bytes, 3> registeredLuma;
                for (int input = 0; input < 3; input++)
                    registeredLuma[static_cast<size_t>(input)] = samplesOf(planeOf(run.registered(input)));

                ASSERT_EQ(first_merge_stage(nullptr, &run.context, run.context.preparation.workImages),
                          HDR_OK);

                const FirstMerge &merge = run.context.firstMerge;
                for (int p = 0; p < 3; p++) {
                    EXPECT_EQ(samplesOf(planeOf(*run.context.preparation.mergedImage, p)),
                              expected.merged[static_cast<size_t>(p)]);
                    EXPECT_EQ(samplesOf(planeOf(*run.context.preparation.toneImage, p)),
                              expected.tone[static_cast<size_t>(p)]);
                }
                const auto packed = [&](const int16_t *map) { return Map(map, map + run.pixels()); };
                EXPECT_EQ(packed(merge.lumaOffsetMid()), expected.offsetMid);
                EXPECT_EQ(packed(merge.lumaOffsetDark()), expected.offsetDark);
                EXPECT_EQ(packed(merge.lumaOffsetBright()), expected.offsetBright);
                EXPECT_EQ(merge.darkFraction, expected.darkFraction);
                EXPECT_TRUE(std::equal(expected.brightToMid, expected.brightToMid + 256,
                                       run.context.tables.toneMatchBrightToMid));
                EXPECT_TRUE(std::equal(expected.midToBright, expected.midToBright + 256,
                                       run.context.tables.toneMatchMidToBright));
                for (int input = 0; input < 3; input++)
                    EXPECT_EQ(samplesOf(planeOf(run.registered(input))),
                              registeredLuma[static_cast<size_t>(input)]);
                EXPECT_EQ(Map(26 * 18, 0), packed(merge.correctionMaps[kBrightOffsetV]));
            }
}

TEST(FirstMerge, FailedAllocationsLeakNothing) {
    int failures = 0;
    HdrStatus status = HDR_ERR_NOMEM;
    for (size_t bytes = 512; status != HDR_OK; bytes += 512) {
        test::Arena arena(bytes);
        {
            ReducedRun run(20, 14, arena.memory());
            if (!run.complete)
                continue;
            run.context.ghosts.ghostMode = 1;
            run.context.preparation.exposureEstimate[kBright] = 0.3;
            status = first_merge_stage(arena.memory(), &run.context, run.context.preparation.workImages);
            ASSERT_TRUE(status == HDR_OK || status == HDR_ERR_NOMEM);
            failures += status == HDR_ERR_NOMEM;
        }
        ASSERT_TRUE(arena.isEmpty()) << bytes;
    }
    EXPECT_GT(failures, 5);
}

} // namespace
} // namespace hdr
