// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/pixels.h"

#include <algorithm>

#include <gtest/gtest.h>

namespace tristop {
namespace {

constexpr size_t kLarge = size_t{5} << 20;

TEST(PixelReserveTest, keepsLargeBlocksForOthersOfTheirSize) {
    allocUnsetPixels(kLarge).reset();
    EXPECT_EQ(PixelReserve::size(), 0U) << "there is no reserve yet";
    {
        const PixelReserve reserve;
        PixelBuffer block = allocUnsetPixels(kLarge);
        const uint8_t *const start = block.get();
        std::fill_n(block.get(), kLarge, uint8_t{7});
        block.reset();
        allocUnsetPixels(1000).reset();
        EXPECT_GE(PixelReserve::size(), kLarge);
        EXPECT_LT(PixelReserve::size(), kLarge + 100000);

        EXPECT_NE(allocUnsetPixels(kLarge / 2).get(), start) << "most of the block would lie idle";
        EXPECT_NE(allocUnsetPixels(2 * kLarge).get(), start);
        PixelReserve::giveBack();
        EXPECT_EQ(PixelReserve::size(), 0U);
    }
    {
        const PixelReserve reserve, other;
        PixelBuffer block = allocUnsetPixels(kLarge);
        const uint8_t *const start = block.get();
        std::fill_n(block.get(), kLarge, uint8_t{7});
        block.reset();
        const PixelBuffer zeroed = allocPixels(kLarge);
        EXPECT_TRUE(std::all_of(zeroed.get(), zeroed.get() + kLarge, [](uint8_t byte) { return byte == 0; }));
        block = allocUnsetPixels(kLarge - 1000);
        EXPECT_EQ(block.get(), start);
        EXPECT_EQ(PixelReserve::size(), 0U);
        block.reset();
    }
    EXPECT_EQ(PixelReserve::size(), 0U) << "the last reserve frees what is set aside";
}

} // namespace
} // namespace tristop
