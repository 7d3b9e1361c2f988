// SPDX-License-Identifier: MIT
#include "engine/render/colour_maps.h"

#include "tests/support/reduced_run.h"

#include <cmath>
#include <gtest/gtest.h>

namespace hdr {
namespace {

using test::samplesOf;
using Bytes = std::vector<uint8_t>;

TEST(UpsampleGrid, NodesLieOneCellLowerAndTheLastColumnRepeats) {
    // 3 x 3 nodes, cells of 4: the last row's nodes take over at once from row 8 on.
    const Bytes grid = {0, 40, 80, 99, 100, 140, 180, 99, 8, 8, 8, 99};
    Bytes mask(15 * 13, 1);
    upsample_grid_u8(mask.data(), 14, 13, 15, grid.data(), 3, 3, 4, nullptr, 2);
    const auto row = [&](int y) { return Bytes(mask.begin() + 15 * y, mask.begin() + 15 * y + 14); };
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

/// A run of noise whose luminance is often at a level where a rule begins or ends.
struct NoiseRun : test::ReducedRun {
    static constexpr int kWidth = 50, kHeight = 31;

    explicit NoiseRun(unsigned seed) : ReducedRun(kWidth, kHeight) {
        random.seed(seed);
        makeMaps();
        for (int map = kMidOffsetU; map <= kBrightOffsetV; map++)
            std::fill_n(context.firstMerge.correctionMaps[map], pixels(), int16_t{77});
        constexpr std::array edges = {0, 1, 32, 33, 64, 65, 128, 129, 160, 161, 192, 193, 223, 224, 255};
        for (Offscreen *picture :
             {&work(kDark), &work(kMid), &work(kBright), context.preparation.mergedImage}) {
            paintNoise(*picture);
            for (int i = 0; i < kWidth * kHeight; i++)
                if (random() % 2)
                    planeOf (*picture)(i % kWidth, i / kWidth) =
                        static_cast<uint8_t>(edges[random() % edges.size()]);
        }
        fillRandomMask(context.weights.ghostMaskA);
        fillRandomMask(context.weights.ghostMaskD);
        // Gains from half to 64 times, at signed indices.
        const size_t samples = (kWidth + 1) * (kHeight + 1);
        context.localToneMap = {allocateArray<int16_t>(memory, samples), kWidth + 1, kHeight + 1};
        fillRandom(context.localToneMap.map, samples, -4, 6);
        for (int i = -4; i <= 6; i++)
            context.tables.detailGain[static_cast<uint16_t>(i)] =
                static_cast<uint16_t>(i == 6 ? 65535 : 1024 + 300 * i + (i < 0 ? 688 : 0));
    }
    Bytes upsampled(const uint8_t *grid) const {
        Bytes samples(pixels());
        upsample_grid_u8(samples.data(), kWidth, kHeight, kWidth, grid, context.preparation.gridWidth,
                         context.preparation.gridHeight, context.preparation.gridWidth, nullptr, 2);
        return samples;
    }
};

/// Division rounding toward zero, and an arithmetic shift to the right, in floating point.
int truncated(double numerator, double denominator) {
    return static_cast<int>(std::trunc(numerator / denominator));
}
int floored(double numerator, double denominator) {
    return static_cast<int>(std::floor(numerator / denominator));
}

/// What a chroma sample becomes when the luminance grows from `level` to `target`.
int grown(int sample, int level, int target, int raised, int own) {
    const int reached = std::max(std::min(4 * level, target), level);
    const double factor = (level + raised) * reached + (own - level) * level;
    return std::clamp(truncated((sample - 128) * factor, 512.0 * level) + 128, 0, 255);
}
int mixed(int own, int merged, int weight) {
    return floored(own * weight + merged * (256 - weight) + 128, 256);
}

/// Compares what becomes of one chroma channel (1 or 2) of a run with the definition, pixel by pixel.
void expectChannel(const NoiseRun &run, const std::array<Bytes, 3> &before, int channel) {
    const HdrContext &context = run.context;
    const auto sample = [&](const Offscreen *picture, int plane, size_t i) {
        return int{
            planeOf(*picture, plane)(static_cast<int>(i) % run.width, static_cast<int>(i) / run.width)};
    };
    const auto at = [&](int input, int plane, size_t i) {
        return sample(context.preparation.workImages[input], plane, i);
    };
    double sum = 0, count = 0;
    for (size_t i = 0; i < run.pixels(); i++)
        if (at(run.kBright, 0, i) >= 224 && at(run.kDark, 0, i) > 128 && at(run.kMid, 0, i) > 160) {
            sum += at(run.kDark, channel, i) - at(run.kBright, channel, i);
            count++;
        }
    ASSERT_GT(count, 1);
    const int tint = truncated(sum + std::floor(count / 2), count);
    const Bytes ghostA = run.upsampled(context.weights.ghostMaskA);
    const Bytes ghostD = run.upsampled(context.weights.ghostMaskD);
    for (size_t i = 0; i < run.pixels(); i++) {
        const int target = sample(context.preparation.mergedImage, 0, i);
        int merged = before[static_cast<size_t>(channel)][i];
        if (before[0][i] > 32)
            merged = grown(merged, before[0][i], target, 224, 288);
        ASSERT_EQ(sample(context.preparation.mergedImage, channel, i), merged) << i;
        const auto map = [&](int u) { return context.firstMerge.correctionMaps[u + 3 * (channel - 1)][i]; };

        int level = at(run.kBright, 0, i), own = at(run.kBright, channel, i);
        int offset = merged - own;
        if (level >= 224) {
            offset = tint;
        } else if (level >= 193) {
            offset = floored((level - 192) * tint, 32);
        } else if (ghostD[i] > 0) {
            int faded = own;
            if (level > 0)
                faded = truncated((2 * own - 256) * std::min(level, target) + level, 2 * level) + 128;
            offset = mixed(faded, merged, ghostD[i]) - own;
        }
        ASSERT_EQ(map(kBrightOffsetU), offset) << i;

        level = at(run.kMid, 0, i), own = at(run.kMid, channel, i);
        const int ownGrown = level >= 33 ? grown(own, level, target, 224, 288) : own;
        ASSERT_EQ(map(kMidOffsetU), mixed(ownGrown, merged, ghostA[i]) - own) << i;

        level = at(run.kDark, 0, i), own = at(run.kDark, channel, i);
        offset = merged - own;
        if (level >= 65)
            offset =
                mixed(grown(own, level, target, 256, 256), merged, level > 128 ? 256 : 4 * level - 256) - own;
        ASSERT_EQ(map(kDarkOffsetU), offset) << i;
    }
}

TEST(ColourMaps, EqualThePixelwiseDefinition) {
    for (unsigned seed = 1; seed <= 8; seed++) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        NoiseRun run(seed);
        HdrContext &context = run.context;
        const auto merged = [&](int plane) {
            return samplesOf(planeOf(*context.preparation.mergedImage, plane));
        };
        const std::array<Bytes, 3> before = {merged(0), merged(1), merged(2)};
        ASSERT_EQ(build_colour_maps(nullptr, &context), HDR_OK);
        for (int i = 0; i < run.width * run.height; i++) {
            const int detail = context.localToneMap.map[i / run.width * (run.width + 1) + i % run.width];
            const int64_t expanded = int64_t{kGammaExpand[before[0][static_cast<size_t>(i)]]} *
                                     context.tables.detailGain[detail < 0 ? detail + 65536 : detail];
            ASSERT_EQ(merged(0)[static_cast<size_t>(i)],
                      kGammaCompress[std::min<int64_t>(expanded / 1024, 4095)]);
        }
        for (int channel : {1, 2})
            expectChannel(run, before, channel);
    }
}

TEST(ColourMaps, WithoutHighlightsOrGainsThereIsNoTint) {
    NoiseRun run(1);
    // The dark exposure just misses the highlights.
    run.paint(run.work(run.kDark), 128, 110, 140);
    run.paint(run.work(run.kBright), 224, 120, 125);
    ASSERT_EQ(build_colour_maps(nullptr, &run.context), HDR_OK);
    EXPECT_EQ(run.context.firstMerge.correctionMaps[kBrightOffsetU][5], 0);

    for (bool withTable : {false, true}) {
        NoiseRun without(2);
        if (withTable)
            without.context.localToneMap.release(without.memory); // a picture too small for one
        else
            releaseArray(without.memory, without.context.tables.detailGain);
        EXPECT_EQ(build_colour_maps(nullptr, &without.context), HDR_ERR_NOMEM);
        for (int map = kMidOffsetU; map <= kBrightOffsetV; map++)
            EXPECT_EQ(without.context.firstMerge.correctionMaps[map][5], 0);
    }
}

} // namespace
} // namespace hdr
