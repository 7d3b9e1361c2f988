// SPDX-License-Identifier: MIT
#include "engine/analysis/map_padding.h"

#include "engine/core/context.h"
#include "tests/support/arena.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <vector>

namespace hdr {
namespace {

TEST(BandBufferStage, FramesNineMapsAndServesFourBands) {
    constexpr int kWidth = 3, kHeight = 2;
    std::vector<std::vector<int16_t>> maps;
    HdrContext context{};
    context.preparation.sourceWidth = 1000;
    context.firstMerge.mapWidth = kWidth;
    context.firstMerge.mapHeight = kHeight;
    for (int16_t i = 0; i < kCorrectionMapCount; i++) {
        const auto first = static_cast<int16_t>(100 * i - 400);
        maps.emplace_back(static_cast<size_t>((kWidth + 2) * (kHeight + 2)), int16_t{-9999});
        for (int16_t sample = 0; sample < kWidth * kHeight; sample++)
            maps.back()[static_cast<size_t>(sample)] = static_cast<int16_t>(first + sample);
    }
    for (size_t i = 0; i < maps.size(); i++)
        context.firstMerge.correctionMaps[i] = maps[i].data();
    ASSERT_EQ(band_buffer_stage(nullptr, &context), HDR_OK);

    for (size_t i = 0; i < maps.size(); i++) {
        std::vector<int16_t> expected{0, 0, 1, 2, 2, //
                                      0, 0, 1, 2, 2, //
                                      3, 3, 4, 5, 5, //
                                      3, 3, 4, 5, 5};
        for (int16_t &sample : expected)
            sample = static_cast<int16_t>(sample + 100 * static_cast<int>(i) - 400);
        EXPECT_EQ(maps[i], expected) << i;
    }
    for (int band = 0; band < 4; band++) {
        const int16_t *storage = context.lineBuffers.bandLineBuffers[0][band];
        EXPECT_TRUE(std::all_of(storage, storage + 9 * 1064, [](int16_t sample) { return sample == 0; }));
        for (int line = 0; line < 9; line++)
            EXPECT_EQ(context.lineBuffers.bandLineBuffers[line][band], storage + line * 1064);
    }
    context.lineBuffers.release(nullptr);
    for (const auto &line : context.lineBuffers.bandLineBuffers)
        for (const int16_t *buffer : line)
            EXPECT_EQ(buffer, nullptr);
}

TEST(BandBufferStage, FailedAllocationsLeakNothing) {
    // A frame of 18 bytes, then 9 x 68 samples for each band.
    for (size_t bytes : {8u, 64u, 2000u, 4 * (1224u + 16u)}) {
        test::Arena arena(bytes);
        HdrContext context{};
        std::vector<int16_t> map(9);
        std::fill_n(context.firstMerge.correctionMaps, kCorrectionMapCount, map.data());
        context.preparation.sourceWidth = 4;
        context.firstMerge.mapWidth = context.firstMerge.mapHeight = 1;
        map[0] = 7;
        EXPECT_EQ(band_buffer_stage(arena.memory(), &context), bytes > 2000 ? HDR_OK : HDR_ERR_NOMEM);
        EXPECT_EQ(map, bytes == 8 ? (std::vector<int16_t>{7, 0, 0, 0, 0, 0, 0, 0, 0})
                                  : std::vector<int16_t>(9, 7));
        context.lineBuffers.release(arena.memory());
        EXPECT_TRUE(arena.isEmpty());
    }
}

} // namespace
} // namespace hdr
