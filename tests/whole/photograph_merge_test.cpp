// SPDX-License-Identifier: GPL-3.0-or-later
// Whole merges of photographs: the sample bracket, and real brackets where a folder of them is at hand.
#include "app/hdr_engine_bridge.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

namespace tristop {
namespace {

using Paths = std::array<std::string, 3>;

struct Merge {
    HdrStatus status = -1;
    HdrRunInfo info{};
    std::vector<uint8_t> bgr;
};

Merge merge(const Paths &paths) {
    Merge made;
    Photographs photographs;
    const auto error = openPhotographs(paths, photographs);
    EXPECT_FALSE(error) << error->path << ": " << error->reason;
    IHDREngineController controller;
    EXPECT_TRUE(controller.convertImages(photographs));
    controller.run(45, 10, 40, 6, [&](const uint8_t *bgr, int32_t width, int32_t height, int64_t) {
        made.bgr.assign(bgr, bgr + static_cast<size_t>(bgrLineBytes(width)) * static_cast<size_t>(height));
    });
    made.status = controller.status();
    made.info = controller.meEngine()->runInfo();
    return made;
}

/// Every order of the three files gives the same picture; returns one of the merges.
Merge mergeInEveryOrder(Paths paths) {
    const Merge first = merge(paths);
    EXPECT_EQ(first.status, HDR_OK);
    std::sort(paths.begin(), paths.end());
    do {
        EXPECT_TRUE(merge(paths).bgr == first.bgr) << paths[0] << ' ' << paths[1] << ' ' << paths[2];
    } while (std::next_permutation(paths.begin(), paths.end()));
    return first;
}

TEST(SampleBracket, MergesInEveryOrderToTheSamePicture) {
    const std::string folder = TRISTOP_SAMPLES;
    const Merge made =
        mergeInEveryOrder({folder + "/dark.jpg", folder + "/middle.jpg", folder + "/bright.jpg"});
    EXPECT_EQ(made.info.fallback, HDR_FALLBACK_NONE);
}

class RealBracket : public testing::TestWithParam<const char *> {
protected:
    static Paths pathsOf(const std::string &name) {
        const std::string folder = std::string(TRISTOP_BRACKETS) + '/' + name;
        return {folder + "/1.jpg", folder + "/2.jpg", folder + "/3.jpg"};
    }
    void SetUp() override {
        if (!std::filesystem::exists(pathsOf(GetParam())[0]))
            GTEST_SKIP() << "no real brackets in " << TRISTOP_BRACKETS;
    }
};

TEST_P(RealBracket, OfAStaticSceneIsMergedInEveryOrderToTheSamePicture) {
    const Merge made = mergeInEveryOrder(pathsOf(GetParam()));
    EXPECT_EQ(made.info.fallback, HDR_FALLBACK_NONE);
    for (int32_t excluded : made.info.excluded)
        EXPECT_EQ(excluded, 0);
}

INSTANTIATE_TEST_SUITE_P(Static, RealBracket,
                         testing::Values("church", "flowers", "oldhouse", "desk", "hall"),
                         [](const auto &parameter) { return std::string(parameter.param); });

class MovingBracket : public RealBracket {};

TEST_P(MovingBracket, IsMergedInEveryOrderToTheSamePicture) {
    mergeInEveryOrder(pathsOf(GetParam()));
}

INSTANTIATE_TEST_SUITE_P(Moving, MovingBracket, testing::Values("pingpong", "window", "horse", "figurine"),
                         [](const auto &parameter) { return std::string(parameter.param); });

} // namespace
} // namespace tristop
