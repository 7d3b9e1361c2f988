// SPDX-License-Identifier: MIT
#include "engine/analysis/plane_borders.h"

#include <gtest/gtest.h>
#include <vector>

namespace hdr {
namespace {

using Bytes = std::vector<uint8_t>;

TEST(PadPlane, FramesByReplication) {
    const std::vector<uint16_t> source{1, 2, 65535, 4, 5, 6};
    std::vector<uint16_t> framed(5 * 4, 0);
    ASSERT_EQ(pad_plane_u16(source.data(), framed.data(), 3, 2), HDR_OK);
    EXPECT_EQ(framed, (std::vector<uint16_t>{1, 1, 2, 65535, 65535, //
                                             1, 1, 2, 65535, 65535, //
                                             4, 4, 5, 6,     6,     //
                                             4, 4, 5, 6,     6}));

    const uint32_t single = 70000;
    std::vector<uint32_t> nine(9, 0);
    ASSERT_EQ(pad_plane_u32(&single, nine.data(), 1, 1), HDR_OK);
    EXPECT_EQ(nine, std::vector<uint32_t>(9, 70000));
}

TEST(PlaneBorder, FrameIsOneWideAtTheStartAndTwoAtTheEnd) {
    // Only columns 1 and 2 and rows 1 and 2 of 5 x 5 are inside the frame.
    Bytes plane{90, 91, 92, 93, 94, //
                80, 1,  2,  83, 84, //
                70, 3,  4,  73, 74, //
                60, 61, 62, 63, 64, //
                50, 51, 52, 53, 54};
    Bytes filled = plane;
    ASSERT_EQ(replicate_border_u8(plane.data(), 5, 5), HDR_OK);
    EXPECT_EQ(plane, (Bytes{1, 1, 2, 2, 2, //
                            1, 1, 2, 2, 2, //
                            3, 3, 4, 4, 4, //
                            3, 3, 4, 4, 4, //
                            3, 3, 4, 4, 4}));
    ASSERT_EQ(fill_border_u8(filled.data(), 5, 5), HDR_OK);
    EXPECT_EQ(filled, (Bytes{255, 255, 255, 255, 255, //
                             255, 1,   2,   255, 255, //
                             255, 3,   4,   255, 255, //
                             255, 255, 255, 255, 255, //
                             255, 255, 255, 255, 255}));
}

TEST(PlaneBorder, SmallestPlaneTakesItsMiddleSample) {
    Bytes plane{0, 1, 2, 3, 4, 5, 6, 7, 8};
    ASSERT_EQ(replicate_border_u8(plane.data(), 3, 3), HDR_OK);
    EXPECT_EQ(plane, Bytes(9, 4));
}

TEST(ExtendRect, ReplicatesOutward) {
    const Bytes original{9, 9, 9, 9, 77, //
                         9, 1, 2, 9, 77, //
                         9, 3, 4, 9, 77, //
                         9, 9, 9, 9, 77};
    Bytes plane = original;
    ASSERT_EQ(extend_rect_u8(plane.data(), 4, 4, 5, 1, 3, 1, 3), HDR_OK);
    EXPECT_EQ(plane, (Bytes{1, 1, 2, 2, 77, //
                            1, 1, 2, 2, 77, //
                            3, 3, 4, 4, 77, //
                            3, 3, 4, 4, 77}));
    plane = original;
    ASSERT_EQ(extend_rect_u8(plane.data(), 4, 4, 5, 0, 4, 0, 4), HDR_OK);
    EXPECT_EQ(plane, original);
    ASSERT_EQ(extend_rect_u8(plane.data(), 4, 4, 5, 1, 3, 2, 2), HDR_OK);
    ASSERT_EQ(extend_rect_u8(plane.data(), 4, 4, 5, 2, 2, 1, 3), HDR_OK);
    EXPECT_EQ(plane, original);
}

} // namespace
} // namespace hdr
