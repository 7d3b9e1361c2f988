// SPDX-License-Identifier: MIT
#include "engine/render/warp_resampling.h"

#include <gtest/gtest.h>
#include <vector>

namespace hdr {
namespace {

using Bytes = std::vector<uint8_t>;

/// A picture of 10 x 4: luminance 20 y + 2 x (+ base), U 100 + 10 y + pair, V 200 + 10 y + pair.
struct Picture {
    Bytes bytes = Bytes(10 * 4 * 2);
    Offscreen record = {HDR_FORMAT_YUY2, 10, 4, {bytes.data()}, {20}};

    explicit Picture(int base) {
        for (int y = 0; y < 4; y++)
            for (int x = 0; x < 10; x++) {
                uint8_t *pixel = &bytes[static_cast<size_t>(20 * y + 2 * x)];
                pixel[0] = static_cast<uint8_t>(base + 20 * y + 2 * x);
                pixel[1] = static_cast<uint8_t>((x % 2 ? 200 : 100) + 10 * y + x / 2);
            }
    }
};

TEST(WarpResampling, DisplacementIsBilinearBetweenNodes) {
    const std::vector<int32_t> x = {0, 256, 1024, 512, 512, 512};
    const std::vector<int32_t> differences = {1, 3, 0, 0, 0, 0};
    const std::vector<int32_t> zero(6);
    const WarpGrid grid = {x.data(), zero.data(), differences.data(), zero.data(), 3};
    // A quarter of the way from node 0 (column -128) to node 1, half way between the node rows.
    WarpLine line = warpLine(grid, -64, 0);
    EXPECT_EQ(line.x, 65536 * 9 / 8); // (1/4 + 2) / 2
    EXPECT_EQ(line.stepX, 128);       // one pixel over 256 columns above, none below
    EXPECT_EQ(line.y, 0);
    EXPECT_FALSE(line.isWholePixels());
    line = warpLine(grid, 128, -128);
    EXPECT_EQ(line.x, 65536);
    EXPECT_EQ(line.stepX, 3 * 256);
    EXPECT_FALSE(line.isWholePixels());
    EXPECT_TRUE((WarpLine{3 * 65536, -65536, 0, 0}).isWholePixels());
    EXPECT_FALSE((WarpLine{3 * 65536, -65535, 0, 0}).isWholePixels());
    EXPECT_FALSE((WarpLine{3 * 65536 + 1, -65536, 0, 0}).isWholePixels());
    // One grid alone is not followed.
    for (const WarpGrid &one : {WarpGrid{x.data(), nullptr, differences.data(), nullptr, 3},
                                {nullptr, x.data(), nullptr, differences.data(), 3}}) {
        line = warpLine(one, 128, 128);
        EXPECT_EQ(line.x, 0);
        EXPECT_EQ(line.y, 0);
    }
}

TEST(WarpResampling, BilinearInSixteenthsWithNearestChroma) {
    const Picture picture(0);
    Bytes row(20, 255);
    // Column 4 + 1/2, row 1 + 1/4: luminance 2 * 4.5 + 20 * 1.25 = 34; chroma of pairs 2 and 3 of row 1.
    resampleBilinear(picture.record, {-32768, -16384, 0, 0}, 1, 4, 8, row.data());
    EXPECT_EQ(Bytes(row.begin() + 8, row.begin() + 16), (Bytes{34, 112, 36, 212, 38, 113, 40, 213}));
    EXPECT_EQ(row[7], 255);
    EXPECT_EQ(row[16], 255);
    // One 65536th below a whole pixel is the sixteenth above its position.
    resampleBilinear(picture.record, {65535, 0, 0, 0}, 0, 4, 8, row.data());
    EXPECT_EQ(row[8], 6 + 2 / 16);
    // Far outside: the position is clamped, its fraction (1/2, 1/2) stays.
    resampleBilinear(picture.record, {-20 * 65536 - 32768, -20 * 65536 - 32768, 0, 0}, 0, 4, 8, row.data());
    EXPECT_EQ(row[8], 2 * 5 + 1 + 20 * 2 + 10);
    resampleBilinear(picture.record, {20 * 65536 + 32768, 20 * 65536 + 32768, 0, 0}, 0, 4, 8, row.data());
    EXPECT_EQ(row[8], 1 + 10);
}

TEST(WarpResampling, WholePixelsLiftTheReferenceOutsideTheSource) {
    const Picture source(40), reference(0);
    ReferenceEdges edges{};
    ASSERT_EQ(edges.keep(nullptr, reference.record, -2, 3), HDR_OK);
    const auto group = [&](int dx, int dy, int y, int x) {
        Bytes row(20);
        resampleWholePixels(source.record, dx, dy, &reference.bytes[static_cast<size_t>(20 * y)], edges, y, x,
                            x + 4, row.data());
        return Bytes(row.begin() + 2 * x, row.begin() + 2 * x + 8);
    };
    EXPECT_EQ(group(4, 1, 2, 4), Bytes(&source.bytes[20], &source.bytes[28]));
    // An odd shift takes the chroma of the pairs that hold columns 1 and 3.
    EXPECT_EQ(group(3, 0, 0, 4), (Bytes{42, 100, 44, 200, 46, 101, 48, 201}));
    // Left of the source: its columns 0 to 3 sum up 160 - 24 = 136 above the reference's columns 6 to 9.
    EXPECT_EQ(group(6, 0, 0, 0), (Bytes{28, 100, 30, 200, 32, 101, 34, 201}));
    // Below the source: row 3, whose reference is row 1: 4 * (40 + 40) above it.
    EXPECT_EQ(group(0, -2, 2, 4), (Bytes{128, 132, 130, 232, 132, 133, 134, 233}));
    // Above the source: row 0, whose reference is row 3: 4 * (40 - 60) below, clamped at 0.
    EXPECT_EQ(group(0, 3, 0, 4), (Bytes{0, 102, 0, 202, 0, 103, 0, 203}));
    edges.release(nullptr);
}

} // namespace
} // namespace hdr
