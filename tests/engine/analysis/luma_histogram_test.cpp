// SPDX-License-Identifier: MIT
#include "engine/analysis/luma_histogram.h"

#include "tests/support/arena.h"

#include <array>
#include <gtest/gtest.h>
#include <vector>

namespace hdr {
namespace {

Offscreen picture(uint32_t format, int width, int height, int pitch, std::vector<uint8_t> &bytes) {
    Offscreen record{};
    record.u32PixelArrayFormat = format;
    record.i32Width = width;
    record.i32Height = height;
    record.ppu8Plane[0] = bytes.data();
    record.pi32Pitch[0] = pitch;
    return record;
}

TEST(LumaHistogram, CountsLuminanceBytesInsideTheWidth) {
    std::vector<uint8_t> bytes{1, 2, 1, 4, 200, 201, //
                               1, 8, 2, 4, 202, 203};
    std::array<uint32_t, 256> counts;
    for (uint32_t format : {0x601u, 0x603u, 0x604u, 0x701u, 0x801u, 0x802u}) {
        counts.fill(99);
        const Offscreen planar = picture(format, 4, 2, 6, bytes);
        ASSERT_EQ(luma_histogram(nullptr, &planar, counts.data()), HDR_OK);
        std::array<uint32_t, 256> expected{};
        expected[1] = 3;
        expected[2] = 2;
        expected[4] = 2;
        expected[8] = 1;
        EXPECT_EQ(counts, expected) << std::hex << format;
    }
    const Offscreen packed = picture(HDR_FORMAT_YUY2, 2, 2, 6, bytes);
    ASSERT_EQ(luma_histogram(nullptr, &packed, counts.data()), HDR_OK);
    EXPECT_EQ(counts[1], 3u);
    EXPECT_EQ(counts[2], 1u);
    EXPECT_EQ(counts[4] + counts[8] + counts[200], 0u);
    for (uint32_t format : {0x301u, 0x502u, 0x803u}) {
        const Offscreen other = picture(format, 2, 2, 6, bytes);
        ASSERT_EQ(luma_histogram(nullptr, &other, counts.data()), HDR_OK);
        EXPECT_EQ(counts, (std::array<uint32_t, 256>{})) << std::hex << format;
    }

    test::Arena arena(512);
    counts.fill(99);
    EXPECT_EQ(luma_histogram(arena.memory(), &packed, counts.data()), HDR_ERR_NOMEM);
    EXPECT_EQ(counts[0], 99u);
}

TEST(HistogramClipPoints, FirstBinsBeyondOneIn4096) {
    std::vector<uint8_t> none;
    const Offscreen small = picture(HDR_FORMAT_GRAY, 63, 65, 63, none);
    std::array<uint32_t, 256> counts{};
    int high = -1, low = -1;
    histogram_clip_points(&small, counts.data(), &high, &low);
    EXPECT_EQ(high, 0);
    EXPECT_EQ(low, 0);
    counts[17] = 1;
    counts[100] = 4093;
    counts[230] = 1;
    histogram_clip_points(&small, counts.data(), &high, &low);
    EXPECT_EQ(high, 230);
    EXPECT_EQ(low, 17);

    // From 2 x 4096 pixels on, a bin must be passed by more than two of them.
    const Offscreen larger = picture(HDR_FORMAT_GRAY, 128, 64, 128, none);
    counts[18] = 1;
    counts[19] = 1;
    counts[229] = 2;
    histogram_clip_points(&larger, counts.data(), &high, &low);
    EXPECT_EQ(high, 229);
    EXPECT_EQ(low, 19);
}

} // namespace
} // namespace hdr
