// SPDX-License-Identifier: MIT
#include "engine/core/tables.h"

#include <gtest/gtest.h>

namespace hdr {
namespace {

class TablesTest : public testing::Test {
protected:
    void SetUp() override { ASSERT_EQ(tables.create(nullptr), HDR_OK); }
    void TearDown() override { tables.release(nullptr); }
    Tables tables{};
};

TEST_F(TablesTest, GammaTablesAreInverse) {
    for (int code = 0; code < 256; code++)
        EXPECT_EQ(kGammaCompress[kGammaExpand[code]], code);
    for (int level = 1; level < 4096; level++) {
        const int step = kGammaCompress[level] - kGammaCompress[level - 1];
        EXPECT_TRUE(step == 0 || step == 1) << level;
    }
    EXPECT_EQ(kGammaCompress[4095], 255);
    EXPECT_EQ(kGammaExpand[128], 884);
    EXPECT_EQ(kFalloff[128], 256);
    EXPECT_EQ(kFalloff[129], 252);
    EXPECT_EQ(kFalloff[255], 35);
    EXPECT_EQ(kBitCount[0xB6], 5);
}

TEST_F(TablesTest, ContrastCurveDipsAndRises) {
    const uint16_t *curve = tables.contrastCurve12;
    for (int fixed : {0, 736, 737, 4095})
        EXPECT_EQ(curve[fixed], fixed);
    // 368 x 0.15 = 55.2 and 1679 x 0.15 = 251.85.
    EXPECT_EQ(curve[368], 368 - 55);
    EXPECT_EQ(curve[2416], 2416 + 251);
    // 20 x 0.15 is 3, but the slope lies a hair below 0.15, so it truncates to 2.
    EXPECT_EQ(curve[20], 18);
    EXPECT_EQ(curve[737 + 20], 757 + 2);
    for (int level = 0; level < 4096; level++)
        ASSERT_EQ(tables.contrastCurve8[level], kGammaCompress[curve[level]]);
}

TEST_F(TablesTest, SCurveQuarters) {
    const uint8_t *curve = tables.sCurve8;
    EXPECT_EQ(curve[0], 0);
    EXPECT_EQ(curve[1024], 44);
    EXPECT_EQ(curve[2048], 128);
    EXPECT_EQ(curve[3072], 211);
    EXPECT_EQ(curve[1000], (1000 - 300) >> 4);
    EXPECT_EQ(curve[1500], (1500 - 164) >> 4); // 30 x 548 / 100 = 164.4
    EXPECT_EQ(curve[2560], (2560 + 153) >> 4); // 30 x 512 / 100 = 153.6
    // One below the mirror image of the lowest quarter: 3091 + 301 = 3392 = 212 x 16, one less gives 211.
    EXPECT_EQ(curve[3091], 211);
    EXPECT_EQ(curve[4095], 255);
    for (int i = 0; i < 4096; i++)
        ASSERT_EQ(curve[i], curve[4096 + i]);
}

TEST_F(TablesTest, ReciprocalsAndNeutralTables) {
    EXPECT_EQ(tables.reciprocalTable[0], 0u);
    EXPECT_EQ(tables.reciprocalTable[384], 85u);
    EXPECT_EQ(tables.reciprocalTable[24575], 1u);
    EXPECT_EQ(tables.toneMatchBrightToMid[200], 200);
    EXPECT_EQ(tables.detailGain[32768], 1024);
}

} // namespace
} // namespace hdr
