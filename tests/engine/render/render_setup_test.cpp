// SPDX-License-Identifier: MIT
#include "engine/render/render_setup.h"

#include "engine/core/context.h"

#include <array>
#include <gtest/gtest.h>
#include <vector>

namespace hdr {
namespace {

using Four = std::array<int, 4>;

Four corners(const Rect &r) {
    return {r.x0, r.y0, r.x1, r.y1};
}
Four corners(const Area &a) {
    return {a.x, a.y, a.width, a.height};
}

TEST(RenderSetup, CropFollowsTheShifts) {
    const auto crop = [](std::vector<std::array<int, 2>> shifts, int width = 1003, int height = 517) {
        HdrContext context{};
        for (size_t k = 0; k < shifts.size(); k++)
            std::copy_n(shifts[k].data(), 2, context.alignment.globalShift[k]);
        compute_crop(&context, static_cast<int>(shifts.size()), width, height);
        EXPECT_EQ(corners(context.render.workingRectangle), (Four{0, 0, width / 8 * 8, height / 2 * 2}));
        return context.render;
    };
    RenderSetup setup = crop({{0, 0}, {0, 0}, {0, 0}});
    EXPECT_EQ(corners(setup.validRectangle), (Four{0, 0, 1000, 516}));
    EXPECT_EQ(corners(setup.outputCrop), (Four{0, 0, 992, 512}));

    setup = crop({{-12, 0}, {0, 0}, {5, 17}}); // right edge 991, left 5, top 17
    EXPECT_EQ(corners(setup.validRectangle), (Four{8, 20, 976, 496}));
    EXPECT_EQ(corners(setup.outputCrop), (Four{16, 32, 976, 512}));

    setup = crop({{4, 2}}); // the output begins with the next whole sixteenth
    EXPECT_EQ(corners(setup.validRectangle), (Four{4, 4, 992, 512}));
    EXPECT_EQ(corners(setup.outputCrop), (Four{16, 16, 992, 512}));

    setup = crop({}); // without inputs nothing is valid
    EXPECT_EQ(corners(setup.outputCrop), (Four{0, 0, 0, 0}));

    setup = crop({{64, 0}, {-64, 0}}, 100, 100); // nothing in common: sizes below zero stay
    EXPECT_EQ(corners(setup.validRectangle), (Four{64, 0, -32, 100}));
    EXPECT_EQ(corners(setup.outputCrop), (Four{64, 0, 32, 96}));
}

TEST(RenderSetup, CropFollowsTheOutermostWarpNodes) {
    HdrContext context{};
    context.alignment.warpWidth = 3;
    context.alignment.warpHeight = 2;
    // The inner column counts for the rows alone, and an outward move of the far edge for nothing.
    std::vector<int32_t> x = {2, 90, -3, 6, -90, 40};
    std::vector<int32_t> y = {-9, 1, 12, -20, 30, -4};
    context.alignment.warpX[1] = x.data();
    context.alignment.warpY[1] = y.data();
    context.alignment.globalShift[1][0] = 1;
    context.alignment.globalShift[1][1] = 2;
    compute_crop(&context, 3, 640, 480);
    // left max(1, 2 + 1, 6 + 1), top max(2, 12 + 2), right 640 - 3 + 1, bottom 480 - 20 + 2
    EXPECT_EQ(corners(context.render.validRectangle), (Four{8, 16, 624, 444}));
    EXPECT_EQ(corners(context.render.outputCrop), (Four{16, 16, 624, 448}));

    context.alignment.warpY[1] = nullptr; // one grid alone is not followed
    compute_crop(&context, 3, 640, 480);
    EXPECT_EQ(corners(context.render.validRectangle), (Four{4, 4, 632, 476}));
}

TEST(RenderSetup, EarlyExitKeepsTheWholePicture) {
    HdrContext context{};
    context.earlyExitCode = HDR_ERR_SHIFT;
    context.alignment.globalShift[0][0] = 90;
    compute_crop(&context, 3, 1003, 517);
    EXPECT_EQ(corners(context.render.validRectangle), (Four{0, 0, 1000, 516}));
    EXPECT_EQ(corners(context.render.outputCrop), (Four{0, 0, 1003, 517}));
}

} // namespace
} // namespace hdr
