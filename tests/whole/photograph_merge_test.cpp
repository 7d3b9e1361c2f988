// SPDX-License-Identifier: GPL-3.0-or-later
// Whole merges of photographs: the sample bracket, and real brackets where a folder of them is at hand.
#include "app/hdr_engine_bridge.h"
#include "tests/app/photograph_files.h"
#include "tools/scene_renderer/scene.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <numeric>
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

/// Luminance of each pixel.
std::vector<double> luminanceOf(const Merge &made) {
    std::vector<double> values;
    for (size_t i = 0; i + 2 < made.bgr.size(); i += 3)
        values.push_back(0.114 * made.bgr[i] + 0.587 * made.bgr[i + 1] + 0.299 * made.bgr[i + 2]);
    return values;
}

double correlation(const std::vector<double> &a, const std::vector<double> &b) {
    const auto mean = [](const std::vector<double> &values) {
        return std::accumulate(values.begin(), values.end(), 0.0) / static_cast<double>(values.size());
    };
    const double meanA = mean(a), meanB = mean(b);
    double aa = 0, bb = 0, ab = 0;
    for (size_t i = 0; i < a.size(); ++i) {
        aa += (a[i] - meanA) * (a[i] - meanA);
        bb += (b[i] - meanB) * (b[i] - meanB);
        ab += (a[i] - meanA) * (b[i] - meanB);
    }
    return ab / std::sqrt(aa * bb);
}

TEST(RawBracket, MergesAsItsJpegTwinDoes) {
    scene::SceneSettings settings;
    settings.width = 720;
    settings.height = 480;
    const testing::TemporaryFolder folder;
    const scene::DngStorage storage = {.bits = 12, .losslessJpeg = true, .black = 256, .white = 4095};
    Paths raw, jpeg;
    for (int shot = 0; shot < 3; ++shot) {
        const size_t place = static_cast<size_t>(shot + 1) % 3; // bright, dark, middle
        const std::string name = folder.path("shot" + std::to_string(shot));
        raw[place] = name + ".dng";
        testing::writeFile(raw[place], scene::encodeDng(scene::renderMosaic(settings, shot), {}, storage));
        jpeg[place] = name + ".jpg";
        testing::TestPicture picture(settings.width, settings.height);
        picture.samples = scene::render(settings, shot).samples;
        testing::writeJpeg(jpeg[place], picture);
    }
    const Merge fromRaw = merge(raw), fromJpeg = merge(jpeg);
    for (const Merge *made : {&fromRaw, &fromJpeg}) {
        EXPECT_EQ(made->status, HDR_OK);
        EXPECT_EQ(made->info.fallback, HDR_FALLBACK_NONE);
        EXPECT_EQ(made->info.darkIndex, 1);
        EXPECT_EQ(made->info.brightIndex, 0);
    }
    ASSERT_EQ(fromRaw.bgr.size(), fromJpeg.bgr.size());
    EXPECT_GT(correlation(luminanceOf(fromRaw), luminanceOf(fromJpeg)), 0.9);
}

class RealBracket : public ::testing::TestWithParam<const char *> {
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

TEST_P(RealBracket, IsMergedOfAllThreeInEveryOrderToTheSamePicture) {
    const Merge made = mergeInEveryOrder(pathsOf(GetParam()));
    EXPECT_EQ(made.info.fallback, HDR_FALLBACK_NONE);
    for (int32_t excluded : made.info.excluded)
        EXPECT_EQ(excluded, 0);
}

INSTANTIATE_TEST_SUITE_P(All, RealBracket,
                         ::testing::Values("church", "flowers", "oldhouse", "desk", "hall", "pingpong",
                                           "window", "horse", "figurine"),
                         [](const auto &parameter) { return std::string(parameter.param); });

} // namespace
} // namespace tristop
