// SPDX-License-Identifier: MIT
#include "engine/render/merge_tables.h"

#include "tests/support/reduced_run.h"

#include <algorithm>
#include <array>
#include <gtest/gtest.h>
#include <utility>
#include <vector>

namespace hdr {
namespace {

constexpr int kColumns = 6;
constexpr int kRows = 5;
constexpr size_t kCells = kColumns * kRows;

/// A run in front of the merge tables: even cell levels (dark 160, reference 200), a dark curve of twice and
/// a bright one of four times the level, grids of 3 x 2 warp nodes for inputs 0 and 2.
struct Prepared : test::ReducedRun {
    std::vector<uint16_t> cellWeights = std::vector<uint16_t>(3 * kCells);
    std::vector<int32_t> warp = {1, 2, 4, 0, 0, 0, /**/ 0, 0, 0, -3, 3, 3,
                                 0, 0, 0, 0, 0, 0, /**/ 1, 1, 1, 1,  1, 1};
    std::vector<uint8_t> picture = std::vector<uint8_t>(2 * 104 * 96);
    Offscreen outputs[3] = {};

    Prepared() : ReducedRun(16, 12) {
        context.smoothingFlag = 1;
        context.ghostMaskEnable = 1;
        context.scene.curveShiftT = 2;
        context.scene.curveShiftU = 1;
        context.scene.ghostThreshold = 199;
        Preparation &preparation = context.preparation;
        preparation.sourceWidth = 104;
        preparation.midIndex = 1;
        preparation.brightIndex = 0;
        fill(kGridDarkLevel, 160);
        fill(kGridMidLevel, 200);
        fill(kGridHighlight, 200);
        int16_t *const weights[] = {context.weights.lumaWeightMid, context.weights.lumaWeightDark,
                                    context.weights.lumaWeightBright};
        for (size_t k = 0; k < 3; k++) {
            preparation.toneCurve[k] = allocateArray<uint16_t>(memory, 4096);
            for (int i = 0; i < 4096; i++)
                preparation.toneCurve[k][i] = static_cast<uint16_t>(i * std::array{4, 1, 2}[k]);
            context.check.cellWeights[k] = &cellWeights[k * kCells];
            std::fill_n(weights[k], kCells, static_cast<int16_t>(10 + k));
        }
        context.alignment.warpWidth = 3;
        context.alignment.warpHeight = 2;
        int32_t *grid = warp.data();
        for (int input : {0, 2}) {
            context.alignment.warpX[input] = std::exchange(grid, grid + 6);
            context.alignment.warpY[input] = std::exchange(grid, grid + 6);
        }
        context.alignment.globalShift[0][0] = 5;
        context.alignment.globalShift[0][1] = -7;
        outputs[1] = {HDR_FORMAT_YUY2, 104, 96, {picture.data()}, {208}};
    }
    ~Prepared() {
        context.merge.release(nullptr);
        context.bands.release(nullptr);
    }
    int16_t *plane(int index) { return reinterpret_cast<int16_t *>(context.preparation.gridPlane(index)); }
    void fill(int index, int16_t level) { std::fill_n(plane(index), kCells, level); }
};

TEST(MergeTables, AreFilledInOrder) {
    Prepared prepared;
    HdrContext &context = prepared.context;
    prepared.fill(kGridDarkLevel, 200);
    prepared.plane(kGridDarkLevel)[2 * kColumns + 2] = 160;
    ASSERT_EQ(prepare_merge(nullptr, &context, prepared.outputs, 2), HDR_OK);
    const MergeTables &merge = context.merge;

    // Offsets of the nine cells around (2, 2), and of all others.
    const auto expectOffsets = [&](int plane, int16_t around, int16_t elsewhere) {
        std::vector<int16_t> expected(kCells, elsewhere);
        for (int i = 0; i < 9; i++)
            expected[static_cast<size_t>((1 + i / 3) * kColumns + 1 + i % 3)] = around;
        EXPECT_EQ(std::vector<int16_t>(prepared.plane(plane), prepared.plane(plane) + kCells), expected);
    };
    // Level 160 is 1440 linear; its double, 2880, is code 218; 200 doubled is white. The reference's 200
    // stands as it is: 18 among 55, and a spike of 40 among ones (the least of the dark curve's offsets),
    // which becomes -10 before it is smoothed.
    expectOffsets(kGridHighlight, (8 * 55 + 18 + 4) / 9, 55);
    expectOffsets(kGridDarkLevel, (8 * 1 - 10 + 4) / 9, 1);
    EXPECT_EQ(std::vector<int16_t>(merge.ghostMask, merge.ghostMask + kCells),
              std::vector<int16_t>(kCells, 255));

    EXPECT_EQ(merge.mergeTable[kDarkCurve + 160], 4 * 2880);
    EXPECT_EQ(merge.mergeTable[kBrightCurve + 255], 2 * 16380);
    EXPECT_EQ(merge.mergeTable[kMidCurve + 160], 1440);
    EXPECT_EQ(merge.smoothingMergeTable[kDarkCurve + 160], 0);
    EXPECT_EQ(merge.smoothingMergeTable[kBrightCurve + 160], 4 * 1440);
    EXPECT_EQ(merge.smoothingMergeTable[kMidCurve], 16380);
    for (const uint16_t *table : {merge.mergeTable, merge.smoothingMergeTable}) {
        EXPECT_EQ(table[kFalloffPart + 129], 252);
        EXPECT_EQ(table[kReciprocalPart], 0);
        EXPECT_EQ(table[kReciprocalPart + 1], 32768);
        EXPECT_EQ(table[kReciprocalPart + 767], 32768 / 767);
        EXPECT_EQ(table[kReciprocalPart + 768], 0);
    }
    for (int k = 0; k < 3; k++)
        EXPECT_EQ(context.check.cellWeights[k][kCells - 1], 10 + k);

    EXPECT_EQ(prepared.warp,
              (std::vector<int32_t>{1536,  1792,  2304,  1280,  1280,  1280,  //
                                    -1792, -1792, -1792, -2560, -1024, -1024, //
                                    0,     0,     0,     0,     0,     0,     256, 256, 256, 256, 256, 256}));
    EXPECT_EQ(std::vector<int32_t>(merge.warpDifferenceX[0], merge.warpDifferenceX[0] + 6),
              (std::vector<int32_t>{1, 2, 0, 0, 0, 0}));
    EXPECT_EQ(std::vector<int32_t>(merge.warpDifferenceY[0], merge.warpDifferenceY[0] + 6),
              (std::vector<int32_t>{0, 0, 0, 6, 0, 0}));
    EXPECT_EQ(merge.warpDifferenceX[1], nullptr);
    EXPECT_EQ(merge.rowWidth, 104);
    EXPECT_EQ(merge.target.ppu8Plane[0], prepared.picture.data());
}

TEST(MergeTables, ToneMatchKeepsShadowsOfTheDarkCurve) {
    Prepared prepared;
    prepared.context.check.toneMatchFlag = 1;
    prepared.fill(kGridDarkLevel, 31);
    std::fill_n(prepared.plane(kGridDarkLevel), kColumns, int16_t{160});
    std::fill_n(prepared.plane(kGridDarkLevel) + 4 * kColumns, kColumns, int16_t{255});
    ASSERT_EQ(build_merge_tables(nullptr, &prepared.context, prepared.outputs), HDR_OK);
    const int16_t *offsets = prepared.plane(kGridDarkLevel);
    // Rows of 58 (218 - 160) above rows of 15: level 32 is 59 linear, 118 is code 47.
    EXPECT_EQ(offsets[0], (2 * 58 + 15 + 1) / 3);
    EXPECT_EQ(offsets[kColumns], (58 + 2 * 15 + 1) / 3);
    EXPECT_EQ(offsets[2 * kColumns], 15);
    EXPECT_EQ(offsets[4 * kColumns], 15); // white stays white, but no offset is below that of level 32
}

TEST(MergeTables, ShadowOffsetsStayAboveThoseOfTheDarkCurve) {
    Prepared prepared;
    prepared.context.preparation.toneCurve[2][kGammaExpand[20]] = 7; // code 6
    prepared.fill(kGridDarkLevel, 250);
    ASSERT_EQ(build_merge_tables(nullptr, &prepared.context, prepared.outputs), HDR_OK);
    EXPECT_EQ(prepared.plane(kGridDarkLevel)[0], 6 - 20); // the reference is 200 - 250 away
}

TEST(MergeTables, CellOffsetsStayWithinTheHighlightOffsets) {
    HdrContext context{};
    std::vector<uint16_t> table(kMergeTableSize);
    for (int i = 0; i < 256; i++) {
        // As 8-bit levels: dark + 10, middle - 2 from 192, - 3 from 200 and - 20 from 230 on; 5000 is beyond
        // 12 bits.
        const int lowered = i >= 230 ? 20 : i >= 200 ? 3 : i >= 192 ? 2 : 0;
        table[static_cast<size_t>(kDarkCurve + i)] = i == 255 ? 5000 : kGammaExpand[std::min(i + 10, 255)];
        table[static_cast<size_t>(kMidCurve + i)] = kGammaExpand[i - lowered];
    }
    const std::vector<int16_t> dark = {100, 250, 250, 10, 10, 255};
    const std::vector<int16_t> levels = {150, 191, 192, 210, 240, 200};
    for (const auto &[measure, expected] : {std::pair{3999, std::vector<int16_t>{-2, -2, 63, -3, -3, 55}},
                                            {4000, {-40, 64, 63, -190, -220, 55}}}) {
        context.exposureMeasure = measure;
        std::vector<int16_t> offsets = levels;
        cell_offsets(&context, dark.data(), offsets.data(), 3, 2, table.data(), kGammaCompress);
        EXPECT_EQ(offsets, expected);
    }
}

TEST(MergeTables, SpikesAreLoweredBelowTheirNeighbours) {
    const auto suppressed = [](int16_t centre, int16_t left, int16_t up, int16_t right, int16_t down) {
        const std::vector<int16_t> cells = {90, up, 90, left, centre, right, 90, down, 90};
        std::vector<int16_t> result(9, 1);
        suppress_cell_spikes(cells.data(), result.data(), 3, 3);
        EXPECT_EQ(result[0], 90); // the frame stays
        return result[4];
    };
    EXPECT_EQ(suppressed(25, 0, 0, 0, 0), -10);
    EXPECT_EQ(suppressed(25, 9, 10, 10, 10), 25);
    EXPECT_EQ(suppressed(21, 10, 9, 10, -30), -30);
    EXPECT_EQ(suppressed(20, 0, 0, 0, 0), 20);
}

TEST(MergeTables, GhostMaskIsWidenedByOneCell) {
    Prepared prepared;
    HdrContext &context = prepared.context;
    std::vector<int16_t> levels(kCells, 199);
    levels[2 * kColumns + 2] = 200;
    const auto marked = [&] {
        EXPECT_EQ(build_ghost_mask(nullptr, &context, levels.data(), kColumns, kRows), HDR_OK);
        std::vector<int> cells;
        for (size_t i = 0; i < kCells; i++)
            if (context.merge.ghostMask[i] == 255)
                cells.push_back(static_cast<int>(i));
            else
                EXPECT_EQ(context.merge.ghostMask[i], 0);
        return cells;
    };
    const std::vector<int> block = {7, 8, 9, 13, 14, 15, 19, 20, 21};
    EXPECT_EQ(marked(), block);
    std::fill_n(context.check.cellWeights[1], kCells, uint16_t{1});
    prepared.fill(kGridHighlight, 16);
    EXPECT_EQ(marked(), std::vector<int>());
    prepared.plane(kGridHighlight)[2 * kColumns + 2] = 15;
    EXPECT_EQ(marked(), block);
}

TEST(MergeTables, TakeWhatIsThere) {
    Prepared prepared;
    prepared.context.ghostMaskEnable = 0;
    EXPECT_EQ(prepare_merge(nullptr, &prepared.context, prepared.outputs, 2), HDR_OK);
    EXPECT_EQ(prepared.context.merge.ghostMask, nullptr);
    releaseArray(prepared.memory, prepared.context.weights.lumaWeightMid);
    EXPECT_EQ(prepare_merge(nullptr, &prepared.context, prepared.outputs, 2), HDR_ERR_NOMEM);
}

} // namespace
} // namespace hdr
