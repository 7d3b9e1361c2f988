// SPDX-License-Identifier: MIT
#include "engine/prepare/tone_match.h"

#include "engine/core/context.h"
#include "engine/prepare/quantiles.h"
#include "tests/support/arena.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
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

TEST(Quantiles, EachTakesABinOfItsOwn) {
    const auto levels = [](const Histogram &histogram, uint32_t count) {
        std::array<int, 5> found = {-1, -1, -1, -1, -1};
        findQuantiles(histogram.data(), count, 4, found.data());
        return found;
    };
    Histogram histogram = at({10, 20, 30, 40});
    EXPECT_EQ(levels(histogram, 2000), (std::array{-1, 10, 20, 30, 40}));
    histogram[10]--; // the quarter is now reached one bin late
    histogram[11]++;
    EXPECT_EQ(levels(histogram, 2000), (std::array{-1, 11, 20, 30, 40}));
    EXPECT_EQ(levels(at({100}), 2000), (std::array{-1, 100, 101, 102, 103}));
    EXPECT_EQ(levels(at({254}), 2000), (std::array{-1, 254, 255, 255, 255}));
    EXPECT_EQ(levels(at({10, 20}), 4000), (std::array{-1, 10, 20, 255, 255})); // half of them missing
}

TEST(ToneMatch, SegmentsBetweenDeciles) {
    Histogram flat;
    flat.fill(10);
    Table table;
    for (int flag : {0, 1}) {
        EXPECT_EQ(build_tone_match(table.data(), flat.data(), flat.data(), 2560, 0, flag), HDR_OK);
        for (size_t x = 0; x < 256; x++)
            EXPECT_EQ(table[x], x);
    }
    const Histogram source = at({20, 40, 60, 80, 100, 120, 140, 160, 180, 200});
    const Histogram target = at({10, 13, 73, 83, 93, 103, 113, 123, 133, 143});
    build_tone_match(table.data(), source.data(), target.data(), 2000, 0, 0);
    EXPECT_EQ(table[0], 0);
    EXPECT_EQ(table[19], 9); // 19 x 10 / 20
    EXPECT_EQ(table[20], 10);
    EXPECT_EQ(table[39], 12); // 19 x 3 / 20 + 10
    EXPECT_EQ(table[59], 70); // 19 x 60 / 20 + 13
    EXPECT_EQ(table[199], 142);
    EXPECT_EQ(table[200], 143);
    EXPECT_EQ(table[255], 143);
}

TEST(ToneMatch, DarkEndContinuesTheSlopeAbove) {
    Table table;
    const auto match = [&](const std::vector<int> &source, const std::vector<int> &target) {
        build_tone_match(table.data(), at(source).data(), at(target).data(), 2000, 0, 0);
    };
    // From (10, 30) down with the slope of 20 / 10 to the next decile.
    match({10, 20, 30, 40, 50, 60, 70, 80, 90, 100}, {30, 50, 60, 70, 80, 90, 100, 110, 120, 130});
    EXPECT_EQ(table[0], 10);
    EXPECT_EQ(table[9], 28);
    EXPECT_EQ(table[10], 30);
    // Steeper than the point is high: stops at 0.
    match({10, 20, 30, 40, 50, 60, 70, 80, 90, 100}, {30, 90, 100, 110, 120, 130, 140, 150, 160, 170});
    EXPECT_EQ(table[4], 0);
    EXPECT_EQ(table[6], 6);
    // Deciles below 4 give no slope: from the third, (5, 20), with the mean of the slopes 12/3 and 20/10.
    match({1, 2, 5, 15, 50, 60, 70, 80, 90, 100}, {4, 8, 20, 40, 80, 90, 100, 110, 120, 130});
    EXPECT_EQ(table[0], 5);
    EXPECT_EQ(table[4], 17);
    EXPECT_EQ(table[5], 20);
    // No segment on its right: left as it is.
    match({1, 2, 255, 255, 255, 255, 255, 255, 255, 255}, {4, 8, 20, 40, 80, 90, 100, 110, 120, 130});
    EXPECT_EQ(table[0], 0);
    EXPECT_EQ(table[1], 4);
    // Not where the target is the darker one.
    match({30, 50, 60, 70, 80, 90, 100, 110, 120, 130}, {10, 20, 30, 40, 50, 60, 70, 80, 90, 100});
    EXPECT_EQ(table[15], 5);
}

TEST(ToneMatch, BrightEndKeepsItsSlopeOrTurnsToTheIdentity) {
    Table table;
    const auto match = [&](const std::vector<int> &source, const std::vector<int> &target, int flag) {
        build_tone_match(table.data(), at(source).data(), at(target).data(), 2000, 0, flag);
    };
    const std::vector<int> source = {20, 40, 60, 80, 100, 120, 140, 230, 245, 250};
    const std::vector<int> target = {10, 30, 50, 70, 90, 110, 130, 200, 215, 250};
    match(source, target, 0);
    EXPECT_EQ(table[247], 217); // slope 15 / 15 past the ninth decile
    EXPECT_EQ(table[250], 250);
    match(source, target, 1);
    EXPECT_EQ(table[231], 203);
    EXPECT_EQ(table[247], 251); // 200 + 17 x 45 / 15
    EXPECT_EQ(table[249], 255); // 257, saturated
    EXPECT_EQ(table[250], 250);
    // Not where the target is as bright as the source there.
    std::vector<int> brighter = target;
    brighter[7] = 230;
    brighter[8] = 232;
    match(source, brighter, 1);
    EXPECT_EQ(table[244], 231);
    // Nor before the second decile, nor where the source does not reach the bright end.
    match({20, 230, 240, 255, 255, 255, 255, 255, 255, 255},
          {10, 200, 215, 220, 225, 230, 235, 240, 245, 250}, 1);
    EXPECT_EQ(table[231], 204); // 200 + 40 / 10
    match({20, 245, 255, 255, 255, 255, 255, 255, 255, 255},
          {10, 215, 220, 225, 230, 235, 240, 245, 246, 250}, 1);
    EXPECT_EQ(table[200], 174); // 10 + 180 x 205 / 225
    match({20, 40, 60, 80, 100, 120, 140, 160, 180, 239}, {10, 30, 50, 70, 90, 110, 130, 150, 160, 170}, 1);
    EXPECT_EQ(table[238], 169); // 160 + 58 x 10 / 59
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
    static Table copyOf(const uint8_t *table) {
        Table copy;
        std::copy_n(table, 256, copy.begin());
        return copy;
    }

    HdrContext context{};
    std::array<Histogram, 3> histograms;
};

TEST_F(MatchTonesTest, DarkExposureFadesFromDecilesToTheFineTable) {
    context.preparedOnce = 1;
    const uint8_t *forward = nullptr;
    ASSERT_EQ(matchTones(nullptr, &context, 2, 2000, &forward), HDR_OK);
    ASSERT_EQ(forward, context.tables.toneMatchDarkToMid);
    const Table coarse = deciles(2, 0, 0);
    Table fine;
    build_tone_match_fine(fine.data(), histograms[2].data(), histograms[0].data(), 2000);
    for (size_t x : {0u, 20u, 63u, 64u})
        EXPECT_EQ(forward[x], coarse[x]);
    for (size_t x : {192u, 230u, 255u})
        EXPECT_EQ(forward[x], fine[x]);
    EXPECT_EQ(forward[128], (coarse[128] + fine[128] + 1) / 2);
    EXPECT_EQ(forward[160], (coarse[160] + 3 * fine[160] + 2) / 4);
    EXPECT_EQ(copyOf(context.tables.toneMatchMidToDark), deciles(0, 2, 1));
    EXPECT_EQ(context.tables.toneMatchBrightToMid[100], 100); // untouched

    ASSERT_EQ(matchTones(nullptr, &context, 1, 2000, &forward), HDR_OK);
    EXPECT_EQ(forward, context.tables.toneMatchBrightToMid);
    EXPECT_EQ(copyOf(forward), deciles(1, 0, 0));
    EXPECT_EQ(copyOf(context.tables.toneMatchMidToBright), deciles(0, 1, 1));

    test::Arena arena(248);
    EXPECT_EQ(matchTones(arena.memory(), &context, 2, 2000, &forward), HDR_ERR_NOMEM);
}

TEST_F(MatchTonesTest, UnpreparedContextsGoByPosition) {
    const uint8_t *forward = nullptr;
    ASSERT_EQ(matchTones(nullptr, &context, 2, 2000, &forward), HDR_OK);
    EXPECT_EQ(forward, context.tables.toneMatchBrightToMid);
    ASSERT_EQ(matchTones(nullptr, &context, 1, 2000, &forward), HDR_OK);
    EXPECT_EQ(forward, context.tables.toneMatchDarkToMid);
}

} // namespace
} // namespace hdr
