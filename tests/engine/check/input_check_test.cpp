// SPDX-License-Identifier: MIT
#include "engine/check/input_check.h"

#include "engine/check/chroma_grid.h"
#include "engine/check/grid_statistics.h"
#include "engine/core/context.h"
#include "engine/prepare/exposure.h"
#include "tests/support/arena.h"
#include "tests/support/picture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <functional>
#include <random>
#include <vector>

namespace hdr {
namespace {

using test::Picture;

/// Chroma sample `channel` at a pixel, where the format keeps it (the first of an interleaved pair is 0).
int chromaAt(const Offscreen &picture, int channel, int x, int y) {
    const uint32_t format = picture.u32PixelArrayFormat;
    const bool packed = format == 0x501, planar = format >> 8 == 6;
    // Half the rows; of 0x803, which has a chroma row for each of its rows, the upper half is read.
    if (!packed && format != 0x603)
        y = std::min(y / 2, format == 0x803 ? y : picture.i32Height / 2 - 1);
    const int plane = packed ? 0 : planar ? 1 + channel : 1;
    const int byte = packed ? x / 2 * 4 + 1 + 2 * channel : planar ? x / 2 : x / 2 * 2 + channel;
    return picture.ppu8Plane[plane][y * picture.pi32Pitch[plane] + byte];
}

TEST(ChromaGrid, MeansOfSixteenSamplesACell) {
    for (uint32_t format : {0x501u, 0x601u, 0x603u, 0x605u, 0x801u, 0x802u, 0x803u})
        for (const auto &[width, height] : {std::pair{64, 40}, {70, 41}, {127, 96}, {96, 33}, {64, 25}}) {
            const Picture picture(format, width, height, test::noise(format));
            const int columns = (width + 31) / 32;
            const int rows = (height + 31) / 32;
            std::array<std::vector<uint16_t>, 2> grids;
            for (auto &grid : grids)
                grid.assign(static_cast<size_t>(columns * rows), 777);
            const std::array<Offscreen, 2> inputs = {Offscreen{}, picture.record};
            chromaGrid(nullptr, inputs.data(), 1, grids[0].data(), grids[1].data());
            for (int channel : {0, 1})
                for (int row = 0; row < rows; row++)
                    for (int column = 0; column < columns; column++) {
                        const int fullRow = std::max(std::min(row, height / 32 - 1), 0);
                        const int fullColumn = std::min(column, width / 32 - 1);
                        int sum = 8;
                        for (int i = 0; i < 16; i++)
                            sum += chromaAt(picture.record, channel, 32 * fullColumn + i % 4 * 8,
                                            32 * fullRow + i / 4 * 8);
                        const bool empty = channel == 1 && column != fullColumn;
                        const auto cell = static_cast<size_t>(row * columns + column);
                        EXPECT_EQ(grids[static_cast<size_t>(channel)][cell], empty ? 0 : sum / 16)
                            << std::hex << format << std::dec << " channel " << channel << " cell " << column
                            << ", " << row << " of " << width << " x " << height;
                    }
        }
    const Picture other(0x604, 64, 64, test::noise(1));
    std::array<uint16_t, 4> first{1, 1, 1, 1}, second = first;
    chromaGrid(nullptr, &other.record, 0, first.data(), second.data());
    EXPECT_EQ(first, (std::array<uint16_t, 4>{}));
    EXPECT_EQ(second, first);
}

TEST(ShiftGridPlane, SamplesTheOldPlaneAtTheMovedPosition) {
    constexpr int kColumns = 9;
    constexpr int kRows = 8;
    std::mt19937 random(1);
    std::vector<uint16_t> before(kColumns * kRows);
    for (uint16_t &cell : before)
        cell = static_cast<uint16_t>(random() % 256);
    const std::vector<int> displacements = {0,   1,  5,  31,  32,  33,  64,  65,  96,
                                            200, -1, -5, -31, -32, -33, -64, -128};
    for (int dx : displacements)
        for (int dy : displacements) {
            std::vector<uint16_t> plane = before;
            std::vector<uint16_t> scratch(plane.size());
            shiftGridPlane(plane.data(), kColumns, kRows, dx, dy, scratch.data());
            // Cells that the border keeps: as many as the move reaches across, rounded up for a move to the
            // right or down and truncated for one to the left or up.
            const auto margin = [](int d) { return d > 0 ? (d + 31) / 32 : -d / 32; };
            const auto at = [&](int column, int row) {
                return static_cast<int>(before[static_cast<size_t>(row * kColumns + column)]);
            };
            for (int row = 0; row < kRows; row++)
                for (int column = 0; column < kColumns; column++) {
                    int expected = at(column, row);
                    if (row >= margin(dy) && row <= kRows - 2 - margin(dy) &&
                        margin(dy) < kRows - 1 - margin(dy) && column >= margin(dx) &&
                        column <= kColumns - 2 - margin(dx)) {
                        const int x = 32 * column - dx, fx = x % 32, x1 = (x + 31) / 32;
                        const int y = 32 * row - dy, fy = y % 32, y1 = (y + 31) / 32;
                        expected = ((at(x / 32, y / 32) * (32 - fx) + at(x1, y / 32) * fx) * (32 - fy) +
                                    (at(x / 32, y1) * (32 - fx) + at(x1, y1) * fx) * fy) /
                                   1024;
                    }
                    EXPECT_EQ(plane[static_cast<size_t>(row * kColumns + column)], expected)
                        << column << ", " << row << " by " << dx << ", " << dy;
                }
        }
}

/// Three prepared inputs of 0x501; the dark one is input 2, the bright one 1.
class InputCheckTest : public testing::Test {
protected:
    static constexpr int kWidth = 330, kHeight = 270;
    static constexpr int kMid = 0, kBright = 1, kDark = 2;

    InputCheckTest() {
        context.imageCount = 3;
        context.preparedOnce = 1;
        context.renderFlag = 1;
        context.tables.gammaExpand = kGammaExpand;
        context.tables.gammaCompress = kGammaCompress;
        const double estimates[] = {1.0, 0.5, 2.0};
        std::copy_n(estimates, 3, context.preparation.exposureEstimate);
        EXPECT_EQ(prepareAllocate(nullptr, &context, inputs.data()), HDR_OK);
        for (int i = 0; i < 3; i++) {
            uint32_t *histogram = context.preparation.histogram(i, 0);
            std::fill_n(histogram, 3 * kBins, 0u);
            // Black, so that the scene analysis leaves the colour differences alone.
            for (int channel = 0; channel < 3; channel++)
                context.preparation.histogram(i, channel)[channel == 0 ? 0 : 128] = 1000;
            std::generate_n(context.preparation.gridPlane(i), cells(),
                            [this] { return static_cast<uint16_t>(random() % 256); });
        }
    }
    ~InputCheckTest() override {
        context.check.release(nullptr);
        context.preparation.release(nullptr);
    }
    size_t cells() const { return 11 * 9; }
    HdrStatus check(MemContext *memory = nullptr) { return hdrCheckInputs(memory, &context, inputs.data()); }
    void setShift(int input, int x, int y) {
        context.alignment.globalShift[input][0] = x;
        context.alignment.globalShift[input][1] = y;
    }

    std::minstd_rand random{3};
    std::array<Picture, 3> pictures{Picture(0x501, kWidth, kHeight, test::noise(1)),
                                    Picture(0x501, kWidth, kHeight, test::noise(2)),
                                    Picture(0x501, kWidth, kHeight, test::noise(3))};
    std::array<Offscreen, 3> inputs{pictures[0].record, pictures[1].record, pictures[2].record};
    HdrContext context{};
};

TEST_F(InputCheckTest, RefusesAnUnpreparedWrongOrder) {
    context.preparedOnce = 0;
    EXPECT_EQ(check(), HDR_ERR_ORDER);
    context.imageCount = 2; // two have no order
    EXPECT_EQ(check(), HDR_OK);
    EXPECT_EQ(context.check.renderMode, 0);
    context.imageCount = 3;
    std::swap(context.preparation.exposureEstimate[1], context.preparation.exposureEstimate[2]);
    EXPECT_EQ(check(), HDR_OK);
    EXPECT_EQ(context.preparation.brightIndex, 2);
    context.imageCount = 1;
    context.check.colourCorrection = 7;
    EXPECT_EQ(check(), HDR_OK);
    EXPECT_EQ(context.check.renderMode, 2);
    EXPECT_EQ(context.check.colourCorrection, 7); // there is nothing to compare
}

TEST_F(InputCheckTest, ShiftsBeyondTheLimitEndTheMerge) {
    setShift(kDark, 64, 3);
    setShift(kBright, 0, -64);
    EXPECT_EQ(check(), HDR_OK);
    EXPECT_EQ(context.earlyExitCode, HDR_OK);
    EXPECT_TRUE(std::ranges::equal(context.check.shiftSummary, std::array{64, 3, 0, -64}));
    EXPECT_TRUE(std::ranges::equal(context.check.shiftTable, std::array{64, 0, 3, -64}));
    for (const auto &[input, x, y] : {std::array{1, 65, 0}, {1, 0, 65}, {2, -65, 0}, {2, 0, -65}}) {
        setShift(1, 0, 0);
        setShift(2, 0, 0);
        setShift(input, x, y);
        context.earlyExitCode = HDR_OK;
        context.fallback = HDR_FALLBACK_NONE;
        EXPECT_EQ(check(), HDR_OK);
        EXPECT_EQ(context.earlyExitCode, HDR_ERR_SHIFT) << input << ": " << x << ", " << y;
        EXPECT_EQ(context.fallback, HDR_FALLBACK_SHIFT);
    }
}

TEST_F(InputCheckTest, GridsAreMovedFramedAndCompared) {
    using Grid = std::vector<uint16_t>;
    const Preparation &preparation = context.preparation;
    const int columns = preparation.gridColumns, rows = preparation.gridRows;
    ASSERT_EQ(static_cast<size_t>(columns * rows), cells());
    const auto gridAt = [&](int plane, size_t size) {
        return Grid(preparation.gridPlane(plane), preparation.gridPlane(plane) + size);
    };
    // The cells from (x0, y0) on; those outside repeat the edge.
    const auto part = [&](const Grid &grid, int x0, int y0, int width, int height) {
        Grid cells;
        for (int y = y0; y < y0 + height; y++)
            for (int x = x0; x < x0 + width; x++)
                cells.push_back(grid[static_cast<size_t>(std::clamp(y, 0, rows - 1) * columns +
                                                         std::clamp(x, 0, columns - 1))]);
        return cells;
    };
    const auto moved = [&](const Grid &grid, int input) {
        const auto [x, y] = context.alignment.gridShift[input];
        Grid result = part(grid, -x, -y, columns, rows), scratch(result.size());
        const auto [dx, dy] = context.alignment.globalShift[input];
        shiftGridPlane(result.data(), columns, rows, dx, dy, scratch.data());
        return result;
    };
    const auto expectFramed = [&](int plane, const Grid &grid) {
        EXPECT_EQ(gridAt(plane, preparation.gridPlaneSize()), part(grid, -1, -1, columns + 2, rows + 2))
            << plane;
    };
    Grid midU(cells()), midV(cells()), darkU(cells()), darkV(cells());
    chromaGrid(&context, inputs.data(), kMid, midU.data(), midV.data());
    chromaGrid(&context, inputs.data(), kDark, darkU.data(), darkV.data());
    setShift(kDark, 40, -7);
    setShift(kBright, -33, 50);
    context.alignment.gridShift[kDark][0] = 2;
    context.alignment.gridShift[kDark][1] = -1;
    context.alignment.gridShift[kBright][1] = 1;
    const Grid darkLevel = moved(gridAt(kDark, cells()), kDark);
    const Grid brightLevel = moved(gridAt(kBright, cells()), kBright);
    const Grid midLevel = gridAt(kMid, cells());
    const auto difference = [&](const Grid &dark, const Grid &mid) {
        Grid result = moved(dark, kDark);
        std::transform(result.begin(), result.end(), mid.begin(), result.begin(), std::minus<uint16_t>());
        return result;
    };
    ASSERT_EQ(check(), HDR_OK);
    EXPECT_EQ(gridAt(kDark, cells()), darkLevel);
    EXPECT_EQ(gridAt(kBright, cells()), brightLevel);
    EXPECT_EQ(gridAt(kMid, cells()), midLevel);
    expectFramed(kGridDarkLevel, darkLevel);
    expectFramed(kGridMidLevel, midLevel);
    expectFramed(kGridHighlight, midLevel);
    expectFramed(kGridMidU, midU);
    expectFramed(kGridMidV, midV);
    expectFramed(kGridDarkU, difference(darkU, midU));
    expectFramed(kGridDarkV, difference(darkV, midV));
    for (const uint16_t *weights : context.check.cellWeights)
        EXPECT_EQ(std::count(weights, weights + preparation.gridPlaneSize(), 0), 13 * 11);
    EXPECT_EQ(context.check.coarseGridWidth, 4);
    EXPECT_EQ(context.check.coarseGridHeight, 4);
    EXPECT_EQ(context.check.gridPending, 0);
    EXPECT_EQ(context.check.toneMatchFlag, 1);

    context.renderFlag = 0;
    ASSERT_EQ(check(), HDR_OK);
    expectFramed(kGridDarkU, moved(darkU, kDark));
}

TEST_F(InputCheckTest, ColourDifferencesComeFromTheChromaHistograms) {
    const auto setMeans = [this](int channel, int dark, int bright, int mid) {
        for (const auto &[input, mean] : {std::pair{2, dark}, {1, bright}, {0, mid}}) {
            uint32_t *counts = context.preparation.histogram(input, channel);
            std::fill_n(counts, kBins, 0u);
            counts[mean - 1] = 10; // mean + 0.9, truncated
            counts[mean + 2] = 17;
            counts[mean] = 3;
        }
    };
    setMeans(1, 120, 110, 123);
    setMeans(2, 140, 126, 129);
    ASSERT_EQ(check(), HDR_OK);
    EXPECT_EQ(context.check.colourDifferenceDarkU, 3);
    EXPECT_EQ(context.check.colourDifferenceU, 13);
    EXPECT_EQ(context.check.colourDifferenceDarkV, -11);
    EXPECT_EQ(context.check.colourDifferenceV, 3);
    EXPECT_EQ(context.check.colourCorrection, 1);

    for (int channel : {1, 2})
        for (const auto &[midMean, dark, correction] : {std::array{129, 124, 0},
                                                        {129, 125, 1},
                                                        {132, 127, 0},
                                                        {133, 128, 1},
                                                        {128, 120, 1},
                                                        {127, 132, 0},
                                                        {127, 131, 1},
                                                        {124, 129, 0},
                                                        {123, 128, 1},
                                                        {128, 140, 1}}) {
            setMeans(3 - channel, 128, 128, 128);
            setMeans(channel, dark, 128, midMean);
            ASSERT_EQ(check(), HDR_OK);
            EXPECT_EQ(context.check.colourCorrection, correction)
                << channel << ": " << midMean << ", " << dark;
        }
}

TEST_F(InputCheckTest, SceneAnalysisKnowsTheExposuresAndTheirSize) {
    // 330 x 270 / 64 = 1392 samples: that many at 200 leave the dark exposure's top below 224, and at 190 the
    // reference without highlights.
    for (uint32_t within : {1391u, 1392u}) {
        for (const auto &[input, level] : {std::pair{2, 200}, {1, 250}, {0, 190}}) {
            uint32_t *counts = context.preparation.histogram(input, 0);
            std::fill_n(counts, kBins, 0u);
            counts[level] = input == 2 ? within : 1392;
            counts[250] += 1392;
        }
        context.scene = {};
        ASSERT_EQ(check(), HDR_OK);
        EXPECT_EQ(context.scene.lowHighlightFlag, within == 1392);
        EXPECT_EQ(context.scene.flatHighlightFlag, 1);
    }
}

TEST_F(InputCheckTest, FailedAllocationsKeepThePreviousCellWeights) {
    test::Arena large(1 << 20);
    ASSERT_EQ(check(large.memory()), HDR_OK);
    ASSERT_EQ(check(large.memory()), HDR_OK);
    const uint16_t *before = context.check.cellWeights[0];
    const size_t plane = context.preparation.gridPlaneSize() * sizeof(uint16_t);
    for (size_t planes = 0; planes < 3; planes++) {
        test::Arena arena((planes * (plane + 32) + 8) & ~size_t{7});
        EXPECT_EQ(check(arena.memory()), HDR_ERR_NOMEM);
        EXPECT_TRUE(arena.isEmpty());
        EXPECT_EQ(context.check.cellWeights[0], before);
        EXPECT_EQ(context.check.gridPending, 0);
    }
    context.check.release(large.memory());
    EXPECT_TRUE(large.isEmpty());
}

} // namespace
} // namespace hdr
