// SPDX-License-Identifier: MIT
#include "engine/prepare/tone_match.h"

#include "engine/core/context.h"
#include "tests/support/arena.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>
#include <vector>

namespace hdr {
namespace {

using Histogram = std::array<uint32_t, 256>;
using Table = std::array<uint8_t, 256>;

/// Equal counts at each level: its quantiles are the levels themselves. 2000 samples in all.
Histogram at(const std::vector<int> &levels) {
    Histogram histogram{};
    for (int level : levels)
        histogram[static_cast<size_t>(level)] += 2000 / static_cast<uint32_t>(levels.size());
    return histogram;
}

/// The table for exposures with the given deciles.
Table matched(const std::vector<int> &source, const std::vector<int> &target, int flag = 0) {
    Table table;
    EXPECT_EQ(build_tone_match(table.data(), at(source).data(), at(target).data(), 2000, 0, flag), HDR_OK);
    return table;
}

using Expected = std::vector<std::pair<size_t, int>>; ///< levels and their matches

void expectMatches(const Table &table, const Expected &expected) {
    for (const auto &[level, match] : expected)
        EXPECT_EQ(table[level], match) << "for level " << level;
}

TEST(ToneMatch, SegmentsBetweenDeciles) {
    Histogram flat;
    flat.fill(10);
    for (int flag : {0, 1}) {
        Table table;
        build_tone_match(table.data(), flat.data(), flat.data(), 2560, 0, flag);
        for (size_t x = 0; x < 256; x++)
            EXPECT_EQ(table[x], x);
    }
    // 19 x 10 / 20, 19 x 3 / 20 + 10, 19 x 60 / 20 + 13
    expectMatches(matched({20, 40, 60, 80, 100, 120, 140, 160, 180, 200},
                          {10, 13, 73, 83, 93, 103, 113, 123, 133, 143}),
                  {{0, 0}, {19, 9}, {20, 10}, {39, 12}, {59, 70}, {199, 142}, {200, 143}, {255, 143}});
}

TEST(ToneMatch, DarkEndContinuesTheSlopeAbove) {
    const std::vector<int> tens = {10, 20, 30, 40, 50, 60, 70, 80, 90, 100};
    // From (10, 30) down with the slope of 20 / 10 to the next decile.
    expectMatches(matched(tens, {30, 50, 60, 70, 80, 90, 100, 110, 120, 130}), {{0, 10}, {9, 28}, {10, 30}});
    // Steeper than the point is high: stops at 0.
    expectMatches(matched(tens, {30, 90, 100, 110, 120, 130, 140, 150, 160, 170}), {{4, 0}, {6, 6}});
    // Deciles below 4 give no slope: from the third, (5, 20), with the mean of the slopes 12/3 and 20/10.
    const std::vector<int> target = {4, 8, 20, 40, 80, 90, 100, 110, 120, 130};
    expectMatches(matched({1, 2, 5, 15, 50, 60, 70, 80, 90, 100}, target), {{0, 5}, {4, 17}, {5, 20}});
    // At 4 they do: (2, 4) with 4 / 2.
    expectMatches(matched({2, 4, 5, 15, 50, 60, 70, 80, 90, 100}, target), {{0, 0}, {1, 2}, {3, 6}});
    // No segment on its right: left as it is.
    expectMatches(matched({1, 2, 255, 255, 255, 255, 255, 255, 255, 255}, target), {{0, 0}, {1, 4}});
    // Only where the target is the brighter one.
    expectMatches(matched({30, 50, 60, 70, 80, 90, 100, 110, 120, 130}, tens), {{15, 5}});
    expectMatches(matched(tens, {10, 40, 60, 70, 80, 90, 100, 110, 120, 130}), {{5, 5}});
}

TEST(ToneMatch, BrightEndKeepsItsSlopeOrTurnsToTheIdentity) {
    const std::vector<int> source = {20, 40, 60, 80, 100, 120, 140, 230, 245, 250};
    std::vector<int> target = {10, 30, 50, 70, 90, 110, 130, 200, 215, 250};
    expectMatches(matched(source, target), {{247, 217}, {250, 250}}); // slope 15 / 15 past the ninth decile
    // 200 + 17 x 45 / 15, and 257, saturated
    expectMatches(matched(source, target, 1), {{231, 203}, {247, 251}, {249, 255}, {250, 250}});
    // Not where the target is as bright as the source there.
    target[7] = 230;
    target[8] = 232;
    expectMatches(matched(source, target, 1), {{244, 231}});
    // Nor before the second decile (200 + 40 / 10, 10 + 180 x 205 / 225), nor where the source does not reach
    // the bright end (160 + 58 x 10 / 59).
    expectMatches(matched({20, 230, 240, 255, 255, 255, 255, 255, 255, 255},
                          {10, 200, 215, 220, 225, 230, 235, 240, 245, 250}, 1),
                  {{231, 204}});
    expectMatches(matched({20, 245, 255, 255, 255, 255, 255, 255, 255, 255},
                          {10, 215, 220, 225, 230, 235, 240, 245, 246, 250}, 1),
                  {{200, 174}});
    expectMatches(matched({20, 40, 60, 80, 100, 120, 140, 160, 180, 239},
                          {10, 30, 50, 70, 90, 110, 130, 150, 160, 170}, 1),
                  {{238, 169}});
}

/// The table of the quartic that fits the points (0, 0) and (source[i], target[i]) best, its normal equations
/// being solved by elimination in their own order.
Table fitted(const std::vector<int> &source, const std::vector<int> &target) {
    long double rows[5][6] = {{1}}; // (0, 0) counts too
    for (size_t i = 0; i < source.size(); i++)
        for (int r = 0; r < 5; r++)
            for (int c = 0; c < 6; c++)
                rows[r][c] += std::pow(source[i] / 255.0L, r + c % 5) * (c < 5 ? 1 : target[i] / 255.0L);
    for (auto &pivot : rows) {
        const auto column = &pivot - rows;
        for (auto &row : rows)
            for (int c = 5; &row != &pivot && c >= column; c--)
                row[c] -= row[column] / pivot[column] * pivot[c];
    }
    Table table;
    for (size_t level = 0; level < 256; level++) {
        long double value = 0.5L;
        for (int n = 0; n < 5; n++)
            value += 255 * rows[n][5] / rows[n][n] * std::pow(static_cast<double>(level) / 255.0L, n);
        table[level] = static_cast<uint8_t>(std::clamp(value, 0.0L, 255.0L));
    }
    return table;
}

TEST(ToneMatch, FineTableIsTheBestQuartic) {
    std::vector<int> levels, curved, steep;
    for (int i = 1; i <= 20; i++) {
        levels.push_back(12 * i);
        curved.push_back(5 * i + i * i * i / 60);
        steep.push_back(std::min(255, 36 * i)); // leaves the range, to be clamped
    }
    Table table;
    for (const auto &[source, target] :
         {std::pair{levels, curved}, {curved, levels}, {levels, steep}, {steep, levels}, {levels, levels}}) {
        EXPECT_EQ(build_tone_match_fine(table.data(), at(source).data(), at(target).data(), 2000), HDR_OK);
        EXPECT_EQ(table, fitted(source, target));
    }
    // All of the source in one level: nothing to fit.
    build_tone_match_fine(table.data(), at({255}).data(), at(levels).data(), 2000);
    EXPECT_EQ(table, Table{});
}

class MatchTonesTest : public testing::Test {
protected:
    MatchTonesTest() {
        EXPECT_EQ(context.tables.create(nullptr), HDR_OK);
        Preparation &preparation = context.preparation;
        preparation.darkIndex = 2;
        preparation.midIndex = 0;
        preparation.brightIndex = 1;
        for (size_t i = 0; i < 3; i++) {
            std::vector<int> levels;
            for (int k = 1; k <= 20; k++)
                levels.push_back(std::array{12 * k + k * k / 40, 75 + 9 * k, 5 * k + k * k / 40}[i]);
            const Histogram histogram = at(levels);
            std::copy(histogram.begin(), histogram.end(), histograms[i].begin());
            preparation.statistics[i] = histograms[i].data();
        }
    }
    ~MatchTonesTest() override { context.tables.release(nullptr); }
    Table deciles(size_t source, size_t target, int flag) const {
        Table table;
        build_tone_match(table.data(), histograms[source].data(), histograms[target].data(), 2000, 0, flag);
        return table;
    }
    const uint8_t *match(int index) {
        const uint8_t *forward = nullptr;
        EXPECT_EQ(matchTones(nullptr, &context, index, 2000, &forward), HDR_OK);
        return forward;
    }
    static void expectTable(const uint8_t *table, const Table &expected) {
        EXPECT_TRUE(std::equal(expected.begin(), expected.end(), table));
    }

    HdrContext context{};
    std::array<Histogram, 3> histograms;
};

TEST_F(MatchTonesTest, DarkExposureFadesFromDecilesToTheFineTable) {
    context.preparedOnce = 1;
    const Tables &tables = context.tables;
    ASSERT_EQ(match(2), tables.toneMatchDarkToMid);
    Table faded = deciles(2, 0, 0), fine;
    build_tone_match_fine(fine.data(), histograms[2].data(), histograms[0].data(), 2000);
    for (size_t x = 64; x < 256; x++) // in 128 steps, rounded
        faded[x] =
            x < 192 ? static_cast<uint8_t>(((192 - x) * faded[x] + (x - 64) * fine[x] + 64) / 128) : fine[x];
    expectTable(tables.toneMatchDarkToMid, faded);
    expectTable(tables.toneMatchMidToDark, deciles(0, 2, 1));
    EXPECT_EQ(tables.toneMatchBrightToMid[100], 100); // untouched
    ASSERT_EQ(match(1), tables.toneMatchBrightToMid);
    expectTable(tables.toneMatchBrightToMid, deciles(1, 0, 0));
    expectTable(tables.toneMatchMidToBright, deciles(0, 1, 1));

    test::Arena arena(248);
    const uint8_t *forward = nullptr;
    EXPECT_EQ(matchTones(arena.memory(), &context, 2, 2000, &forward), HDR_ERR_NOMEM);
}

TEST_F(MatchTonesTest, UnpreparedContextsGoByPosition) {
    EXPECT_EQ(match(2), context.tables.toneMatchBrightToMid);
    EXPECT_EQ(match(1), context.tables.toneMatchDarkToMid);
    EXPECT_EQ(match(0), context.tables.toneMatchDarkToMid);
}

} // namespace
} // namespace hdr
