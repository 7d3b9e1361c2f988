// SPDX-License-Identifier: MIT
#include "engine/core/tables.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

namespace hdr {
namespace {

class TablesTest : public testing::Test {
protected:
    void SetUp() override { ASSERT_EQ(tables.create(nullptr), HDR_OK); }
    void TearDown() override { tables.release(nullptr); }
    Tables tables{};
};

TEST_F(TablesTest, ConstantsFollowTheirFormulas) {
    for (int code = 0; code < 256; code++) { // the sRGB curve and its inverse
        const double x = code / 255.0;
        const double linear = x <= 0.04045 ? x / 12.92 : std::pow((x + 0.055) / 1.055, 2.4);
        EXPECT_EQ(kGammaExpand[code], std::lround(4095 * linear)) << code;
        EXPECT_EQ(kGammaCompress[kGammaExpand[code]], code);
        EXPECT_EQ(kFalloff[code], code <= 128 ? 256 : std::lround(256 * std::exp((128 - code) / 64.0)));
    }
    for (int level = 0; level < 4096; level++) {
        const double x = level / 4095.0;
        const double code = x <= 0.0031308 ? 12.92 * x : 1.055 * std::pow(x, 1 / 2.4) - 0.055;
        EXPECT_EQ(kGammaCompress[level], std::lround(255 * code)) << level;
    }
    EXPECT_EQ(kBitCount[0xB6], 5);
    for (uint32_t i = 0; i < kReciprocalCount; i++)
        ASSERT_EQ(tables.reciprocalTable[i], i ? 32768 / i : 0);
    EXPECT_EQ(tables.toneMatchBrightToMid[200], 200);
    EXPECT_EQ(tables.detailGain[32768], 1024);
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
    std::vector<uint8_t> curve(4096);
    for (int strength : {0, 25, 60, 100, 30}) {
        buildSCurve(curve.data(), strength);
        for (int i = 0; i < 4096; i++) {
            // Away from the middle, most a quarter from it; the uppermost quarter mirrors the lowest one
            // level lower.
            const int fromEnd = i < 2048 ? std::min(i, 2048 - i) : std::min(i - 2048, 4096 - i);
            const int stretch = strength * fromEnd / 100;
            const int value = i < 2048 ? i - stretch : (i > 3071 ? i - 1 : i) + stretch;
            ASSERT_EQ(curve[static_cast<size_t>(i)], value / 16) << i << " at " << strength;
        }
    }
    // The strength at creation is 30, and the table holds the curve twice.
    for (size_t i = 0; i < 8192; i++)
        ASSERT_EQ(tables.sCurve8[i], curve[i % 4096]);
}

} // namespace
} // namespace hdr
