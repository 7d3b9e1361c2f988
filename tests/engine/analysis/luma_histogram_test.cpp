// SPDX-License-Identifier: MIT
#include "engine/analysis/luma_histogram.h"

#include "tests/support/arena.h"

#include <array>
#include <gtest/gtest.h>
#include <vector>

namespace hdr {
namespace {

using Counts = std::array<uint32_t, 256>;

TEST(LumaHistogram, CountsLuminanceBytesInsideTheWidth) {
    std::vector<uint8_t> bytes{1, 2, 1, 4, 200, 201, //
                               1, 8, 2, 4, 202, 203};
    Counts planar{}, packed{};
    planar[1] = 3;
    planar[2] = planar[4] = 2;
    planar[8] = 1;
    packed[1] = 3; // two pixels of each row
    packed[2] = 1;
    for (uint32_t format : {0x501u, 0x601u, 0x603u, 0x604u, 0x701u, 0x801u, 0x802u, 0x301u, 0x502u, 0x803u}) {
        const bool isPacked = format == 0x501,
                   hasLuma = format != 0x301 && format != 0x502 && format != 0x803;
        const Offscreen picture{format, isPacked ? 2 : 4, 2, {bytes.data()}, {6}};
        Counts counts;
        counts.fill(99);
        test::Arena arena(512);
        EXPECT_EQ(luma_histogram(arena.memory(), &picture, counts.data()), HDR_ERR_NOMEM);
        EXPECT_EQ(counts[0], 99u);
        ASSERT_EQ(luma_histogram(nullptr, &picture, counts.data()), HDR_OK);
        EXPECT_EQ(counts, isPacked ? packed : hasLuma ? planar : Counts{}) << std::hex << format;
    }
}

TEST(HistogramClipPoints, FirstBinsBeyondOneIn4096) {
    const auto expectClipPoints = [](int width, int height, const Counts &counts, int low, int high) {
        const Offscreen picture{HDR_FORMAT_GRAY, width, height, {}, {width}};
        int foundHigh = -1, foundLow = -1;
        histogram_clip_points(&picture, counts.data(), &foundHigh, &foundLow);
        EXPECT_EQ(foundLow, low);
        EXPECT_EQ(foundHigh, high);
    };
    Counts counts{};
    expectClipPoints(63, 65, counts, 0, 0);
    counts[17] = counts[230] = 1;
    counts[100] = 4093;
    expectClipPoints(63, 65, counts, 17, 230);
    counts[0] = counts[255] = 1;
    expectClipPoints(63, 65, counts, 0, 255);
    // From 2 x 4096 pixels on, a bin must be passed by more than two of them.
    counts[0] = counts[255] = 0;
    counts[18] = counts[19] = 1;
    counts[229] = 2;
    expectClipPoints(128, 64, counts, 19, 229);
    expectClipPoints(8191, 1, counts, 18, 229);
}

} // namespace
} // namespace hdr
