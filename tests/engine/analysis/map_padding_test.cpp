// SPDX-License-Identifier: MIT
#include "engine/analysis/map_padding.h"

#include "tests/support/reduced_run.h"
#include "tests/support/scarce_memory.h"

namespace hdr {
namespace {

TEST(BandBufferStage, FramesNineMapsAndServesFourBands) {
    test::ReducedRun run(3, 2);
    run.makeMaps();
    run.context.preparation.sourceWidth = 1000;
    auto &maps = run.context.firstMerge.correctionMaps;
    auto &lines = run.context.lineBuffers.bandLineBuffers;
    std::vector<std::vector<int16_t>> before;
    for (int16_t *map : maps) {
        run.fillRandom(map, 6, -512, 512);
        before.emplace_back(map, map + 6);
    }
    ASSERT_EQ(band_buffer_stage(nullptr, &run.context), HDR_OK);
    for (size_t i = 0; i < before.size(); i++)
        for (int y = 0; y < 4; y++)
            for (int x = 0; x < 5; x++) {
                const int inner = std::clamp(y - 1, 0, 1) * 3 + std::clamp(x - 1, 0, 2);
                EXPECT_EQ(maps[i][y * 5 + x], before[i][static_cast<size_t>(inner)])
                    << i << ": " << x << ", " << y;
            }
    for (int band = 0; band < 4; band++) {
        EXPECT_EQ(std::count(lines[0][band], lines[0][band] + 9 * 1064, 0), 9 * 1064);
        for (int line = 0; line < 9; line++)
            EXPECT_EQ(lines[line][band], lines[0][band] + line * 1064);
    }
    run.context.lineBuffers.release(nullptr);
    for (const auto &line : lines)
        EXPECT_EQ(std::count(line, line + 4, nullptr), 4);
}

TEST(BandBufferStage, FailedAllocationsLeakNothing) {
    test::ReducedRun run(3, 2);
    run.makeMaps();
    run.context.preparation.sourceWidth = 4;
    BandLineBuffers &lines = run.context.lineBuffers;
    const size_t failures = test::countFailures(8, [&](MemContext *memory) {
        const HdrStatus status = band_buffer_stage(memory, &run.context);
        EXPECT_EQ(lines.bandLineBuffers[8][3] != nullptr, status == HDR_OK);
        lines.release(memory);
        return status;
    });
    EXPECT_GE(failures, 4 * 9 * 68 * 2 / 8u); // four bands of nine lines
}

} // namespace
} // namespace hdr
