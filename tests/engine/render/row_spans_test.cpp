// SPDX-License-Identifier: MIT
#include "engine/render/row_spans.h"
#include "engine/render/upsampling.h"

#include <gtest/gtest.h>
#include <tuple>
#include <vector>

namespace hdr {
namespace {

using Spans = std::vector<std::tuple<int, int, int>>;

TEST(RowSpans, RunListsAreMergedWithoutGapsAndEmptySpans) {
    const auto merged = [](std::vector<int32_t> dark, std::vector<int32_t> bright) {
        std::vector<Span> spans(dark.size() + bright.size());
        const int count = mergeRuns({dark.data(), static_cast<int>(dark.size())},
                                    {bright.data(), static_cast<int>(bright.size())}, spans.data());
        Spans result;
        for (int i = 0; i < count; i++)
            result.emplace_back(spans[static_cast<size_t>(i)].x0, spans[static_cast<size_t>(i)].x1,
                                spans[static_cast<size_t>(i)].type);
        return result;
    };
    EXPECT_EQ(merged({0, 96}, {0, 96}), (Spans{{0, 96, 0}}));
    EXPECT_EQ(merged({0, 0, 96}, {0, 0, 96}), (Spans{{0, 96, 3}}));
    EXPECT_EQ(merged({0, 0, 48, 96}, {0, 48, 96}), (Spans{{0, 48, 1}, {48, 96, 2}}));
    EXPECT_EQ(merged({0, 16, 48, 96}, {0, 0, 16, 80, 96}),
              (Spans{{0, 16, 2}, {16, 48, 1}, {48, 80, 0}, {80, 96, 2}}));
    EXPECT_EQ(merged({0, 16, 80, 96}, {0, 48, 96}),
              (Spans{{0, 16, 0}, {16, 48, 1}, {48, 80, 3}, {80, 96, 2}}));
}

TEST(RowSpans, WarpBordersLieHalfwayBetweenNodes) {
    EXPECT_EQ(nextWarpBorder(0), 128);
    EXPECT_EQ(nextWarpBorder(124), 128);
    EXPECT_EQ(nextWarpBorder(128), 384);
    EXPECT_EQ(nextWarpBorder(383), 384);
}

TEST(RowSpans, CellRowsRecordWhereTheyAreZero) {
    struct Upsampled {
        std::vector<int16_t> values = std::vector<int16_t>(16, -1);
        std::vector<int32_t> columns;
    };
    const auto upsampled = [](std::vector<int16_t> upper, std::vector<int16_t> lower, int fraction) {
        Upsampled result;
        std::vector<int32_t> columns(8);
        RunList runs = {columns.data(), 0};
        const MapRows rows = {upper.data(), lower.data(), 4, fraction};
        upsample_cell_row_runs(rows, 0, 64, result.values.data(), runs);
        std::vector<int16_t> sparse(16, -1);
        upsample_cell_row_sparse(rows, 0, 64, sparse.data());
        EXPECT_EQ(sparse, result.values);
        result.columns.assign(columns.data(), columns.data() + runs.count);
        return result;
    };
    // Cell centres at columns -16, 16, 48 and 80.
    Upsampled row = upsampled({0, 0, 64, 128}, {0, 0, 64, 128}, 7);
    EXPECT_EQ(row.values, (std::vector<int16_t>{0, 0, 0, 0, 0, 8, 16, 24, 32, 40, 48, 56, 64, 72, 80, 88}));
    EXPECT_EQ(row.columns, (std::vector<int32_t>{0, 16, 64}));
    // 3/4 of the upper row at first, falling to 0: (9 * 24 * (16 - x)) / 1024
    row = upsampled({9, 0, 0, 0}, {0, 0, 0, 0}, 8);
    EXPECT_EQ(row.values, (std::vector<int16_t>{3, 2, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(row.columns, (std::vector<int32_t>{0, 0, 16, 64}));
    // Weights below 1 are not zero yet.
    row = upsampled({1, 1, 1, 1}, {0, 0, 0, 0}, 8);
    EXPECT_EQ(row.values, std::vector<int16_t>(16, 0));
    EXPECT_EQ(row.columns, (std::vector<int32_t>{0, 0, 64}));
    row = upsampled({0, 0, 0, 0}, {0, 0, 0, 0}, 8);
    EXPECT_EQ(row.columns, (std::vector<int32_t>{0, 64}));
}

TEST(Upsampling, MapRowsLieAroundThePictureRowAndStayInTheFrame) {
    const std::vector<int16_t> map(3 * 5);
    const auto rows = [&](const MapRows &r) {
        return std::tuple((r.upper - map.data()) / 3, (r.lower - map.data()) / 3, r.fraction);
    };
    EXPECT_EQ(rows(cellMapRows(map.data(), 3, 5, 0)), std::tuple(0, 1, 16));
    EXPECT_EQ(rows(cellMapRows(map.data(), 3, 5, 47)), std::tuple(1, 2, 31));
    EXPECT_EQ(rows(blockMapRows(map.data(), 3, 5, 4)), std::tuple(1, 2, 0));
    EXPECT_EQ(rows(blockMapRows(map.data(), 3, 5, 29)), std::tuple(4, 4, 1));
    EXPECT_EQ(rows(blockMapRows(map.data(), 3, 5, 40)), std::tuple(4, 4, 4));
}

} // namespace
} // namespace hdr
