// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/hdr_engine_bridge.h"

#include <atomic>
#include <limits>
#include <new>

#include <gtest/gtest.h>

#include "app/yuv_rgb.h"
#include "tests/app/fault_engine.h"
#include "tests/app/photograph_files.h"

// The program is linked with --wrap=calloc, by which the application takes all its pixels.
static std::atomic<int> picturesGranted = std::numeric_limits<int>::max();
extern "C" {
void *__real_calloc(size_t count, size_t size);
void *__wrap_calloc(size_t count, size_t size) {
    return picturesGranted-- > 0 ? __real_calloc(count, size) : nullptr;
}
}

namespace tristop {
namespace {

using namespace testing;

/// A controller that tells what its hooks were told.
class Controller : public IHDREngineController {
public:
    std::vector<int64_t> progress;
    std::vector<HdrStatus> finished, failed;

    void runProgress(int64_t percentage, bool) override { progress.push_back(percentage); }
    void runFinished(HdrStatus status) override { finished.push_back(status); }
    void runFailed(HdrStatus status) override { failed.push_back(status); }
};

class BridgeTest : public ::testing::Test {
protected:
    BridgeTest() {
        faultEngine() = {};
        TestPicture picture(101, 100);
        for (size_t i = 0; i < 3; ++i) {
            paths[i] = folder.path(std::to_string(i) + ".jpg");
            picture.fill(0, 0, 60, 60, {static_cast<uint8_t>(60 * i + 60), 90, 30});
            writeJpeg(paths[i], picture);
        }
        EXPECT_FALSE(openPhotographs(paths, photographs));
        EXPECT_TRUE(controller.convertImages(photographs));
    }
    ~BridgeTest() override { EXPECT_EQ(faultEngine().contexts, 0); }

    std::vector<std::vector<uint8_t>> inputBytes() const {
        std::vector<std::vector<uint8_t>> bytes;
        for (const Offscreen &input : controller.inputOffscreen())
            bytes.emplace_back(input.ppu8Plane[0], input.ppu8Plane[0] + input.pi32Pitch[0] * input.i32Height);
        return bytes;
    }
    int merge() {
        int calls = 0;
        controller.run(45, 10, 40, 6, [&calls](const uint8_t *, int32_t, int32_t, int64_t) { ++calls; });
        return calls;
    }

    TemporaryFolder folder;
    std::array<std::string, 3> paths;
    Photographs photographs;
    Controller controller;
};

TEST_F(BridgeTest, convertsPhotographsOfAWidthRoundedUp) {
    for (const Offscreen &input : controller.inputOffscreen()) {
        EXPECT_EQ(input.i32Width, 104);
        EXPECT_EQ(input.i32Height, 100);
        EXPECT_EQ(input.pi32Pitch[0], 208);
        EXPECT_EQ(input.u32PixelArrayFormat, uint32_t{HDR_FORMAT_YUY2});
    }
    EXPECT_NE(inputBytes()[0], inputBytes()[1]);
    EXPECT_FALSE(controller.convertImages(Photographs{})) << "readers that are not open";
}

TEST_F(BridgeTest, leavesNothingOfBlocksThatWereSetAside) {
    constexpr int kWidth = 1801, kHeight = 1301; // large enough for all blocks to be set aside
    for (const std::string &path : paths)
        writeJpeg(path, TestPicture(kWidth, kHeight, {200, 90, 30}));
    ASSERT_FALSE(openPhotographs(paths, photographs));
    struct Result {
        std::vector<std::vector<uint8_t>> inputs;
        std::vector<uint8_t> merged, shown;
    };
    size_t setAside = 0;
    const auto run = [&] {
        Result result;
        EXPECT_TRUE(controller.convertImages(photographs));
        result.inputs = inputBytes();
        controller.run(45, 10, 40, 6, [&](const uint8_t *bgr, int32_t width, int32_t height, int64_t) {
            result.merged.assign(bgr, bgr + static_cast<ptrdiff_t>(bgrLineBytes(width)) * height);
            IIHistogramData histogram;
            auto image = CBYUVRGB::bgr2image(bgr, width, height, bgrLineBytes(width), histogram);
            ASSERT_TRUE(image);
            EXPECT_TRUE(setAside == 0 || PixelReserve::size() < setAside);
            result.shown.assign(image->pixels.get(), image->row(height));
        });
        return result;
    };
    const Result expected = run();
    const PixelReserve reserve;
    constexpr size_t kPixels = size_t{kWidth + 3} * kHeight;
    std::vector<PixelBuffer> blocks;
    for (const size_t bytes : {2 * kPixels + kWidth, 3 * kPixels, 4 * kPixels})
        for (int i = 0; i < 6; ++i)
            std::fill_n(blocks.emplace_back(allocPixels(bytes + 5000)).get(), bytes + 5000, uint8_t{0xa5});
    blocks.clear();
    setAside = PixelReserve::size();
    const Result result = run();
    EXPECT_EQ(result.inputs, expected.inputs);
    EXPECT_TRUE(result.merged == expected.merged && result.shown == expected.shown);
}

TEST_F(BridgeTest, passesTheSettingsOnAndRestoresTheInputs) {
    EXPECT_EQ(controller.toneLength(), 45);
    EXPECT_EQ(controller.brightness(), 10);
    EXPECT_EQ(controller.toneSaturation(), 40);
    EXPECT_EQ(controller.ghostSuppressionLevel(), 6);
    const auto before = inputBytes();
    int calls = 0;
    controller.run(1, -2, 3, 4, [&](const uint8_t *bgr, int32_t width, int32_t height, int64_t reserved) {
        ++calls;
        EXPECT_EQ(width, 104);
        EXPECT_EQ(height, 100);
        EXPECT_EQ(reserved, 0);
        for (int i = 0; i < 3 * 104 * 100; ++i)
            ASSERT_NEAR(bgr[i], 128, 1);
    });
    EXPECT_EQ(calls, 1);
    const FaultEngine &engine = faultEngine();
    EXPECT_EQ(engine.parameters.toneLength, 1);
    EXPECT_EQ(engine.parameters.brightness, -2);
    EXPECT_EQ(engine.parameters.toneSaturation, 3);
    EXPECT_EQ(engine.ghostLevel, 4);
    EXPECT_EQ(engine.imageCount, 3);
    EXPECT_EQ(engine.outputIndex, 2);
    EXPECT_EQ(engine.callbackResult, 0);
    EXPECT_EQ(controller.brightness(), -2) << "the settings are kept";
    EXPECT_EQ(inputBytes(), before);
    EXPECT_EQ(controller.status(), HDR_OK);
    EXPECT_EQ(controller.meEngine()->runInfo().brightIndex, 2);
    EXPECT_EQ(controller.progress, std::vector<int64_t>{60})
        << "the calls of the preparation have no receiver";
    EXPECT_EQ(controller.finished, std::vector<HdrStatus>{HDR_OK});
}

TEST_F(BridgeTest, endsAFailedRunWithoutAPicture) {
    const auto before = inputBytes();
    for (const HdrStatus status : {HDR_ERR_PARAM, HDR_ERR_SHIFT, HDR_CANCELLED, HDR_ERR_ALIGN, HDR_WARN_25}) {
        faultEngine().status = status;
        EXPECT_EQ(merge(), 0);
        EXPECT_EQ(controller.status(), status);
        EXPECT_EQ(controller.failed.back(), status);
        EXPECT_EQ(inputBytes(), before);
    }
    EXPECT_TRUE(controller.finished.empty());
    faultEngine().status = HDR_OK;

    const int runs = faultEngine().runs;
    faultEngine().createStatus = HDR_ERR_NOMEM;
    EXPECT_EQ(merge(), 0);
    EXPECT_EQ(controller.status(), HDR_ERR_NOMEM);
    faultEngine().createStatus = HDR_OK;

    const auto lomo = controller.lomoEngine();
    controller.setLomoEngine(nullptr);
    EXPECT_EQ(merge(), 0);
    EXPECT_EQ(controller.status(), HDR_ERR_PARAM);
    controller.setLomoEngine(lomo);
    controller.releaseOffscreen();
    EXPECT_EQ(merge(), 0);
    EXPECT_EQ(controller.status(), HDR_ERR_PARAM);
    EXPECT_EQ(faultEngine().runs, runs);

    controller.setMeEngine(nullptr);
    const size_t failures = controller.failed.size();
    EXPECT_EQ(merge(), 0);
    EXPECT_EQ(controller.status(), HDR_ERR_PARAM);
    EXPECT_EQ(controller.failed.size(), failures + 1);
}

TEST_F(BridgeTest, failsCleanlyWhereverMemoryRunsOut) {
    const auto before = inputBytes();
    int granted = 0;
    for (;; ++granted) {
        picturesGranted = granted;
        const int calls = merge();
        picturesGranted = std::numeric_limits<int>::max();
        EXPECT_EQ(inputBytes(), before);
        if (calls > 0)
            break;
        EXPECT_EQ(controller.status(), HDR_ERR_NOMEM) << granted;
        EXPECT_EQ(controller.failed.size(), static_cast<size_t>(granted) + 1);
    }
    EXPECT_EQ(granted, 6) << "three backups, the picture, the kept one and the one with the effect";
    EXPECT_EQ(controller.status(), HDR_OK);
    picturesGranted = granted - 1;
    controller.run(45, 10, 40, 6, nullptr);
    EXPECT_EQ(controller.status(), HDR_OK) << "the effect is not rendered for nobody";

    picturesGranted = 0;
    controller.run(0, {}, 50, 0, 0, [](PixelBuffer bgr, int32_t, int32_t, int64_t) { EXPECT_FALSE(bgr); });
    EXPECT_FALSE(controller.convertImages(photographs));
    picturesGranted = std::numeric_limits<int>::max();

    EXPECT_TRUE(controller.convertImages(photographs));
    faultEngine().throws = true;
    EXPECT_THROW(merge(), std::bad_alloc);
    EXPECT_EQ(inputBytes(), before);
    EXPECT_FALSE(controller.meEngine()->progressObserver);
}

TEST_F(BridgeTest, rendersEffectsOnTheKeptPicture) {
    const auto effect = [this](int32_t style, int32_t contrast) {
        PixelBuffer picture;
        controller.run(style, {}, 50, contrast, 0,
                       [&picture](PixelBuffer bgr, int32_t width, int32_t height, int64_t) {
                           EXPECT_EQ(width, 104);
                           EXPECT_EQ(height, 100);
                           picture = std::move(bgr);
                       });
        return picture;
    };
    merge();
    const int merged = controller.lomoEngine()->engineData()->imageData[0];
    const PixelBuffer art = effect(IILomoEngine::kStyleArt, 0);
    EXPECT_NEAR(art[0], 100, 4);
    EXPECT_NEAR(art[1], 150, 4);
    EXPECT_NEAR(art[2], 126, 4);
    EXPECT_EQ(controller.lomoEngine()->engineData()->imageData[0], merged);

    // A merge is shown with the settings that stand; converting resets them and drops the picture.
    controller.run(45, 10, 40, 6,
                   [&](const uint8_t *bgr, int32_t, int32_t, int64_t) { EXPECT_EQ(bgr[1], art[1]); });
    faultEngine().status = HDR_ERR_NOMEM;
    merge();
    EXPECT_NE(controller.lomoEngine()->engineData(), nullptr) << "a failed merge leaves the last picture";
    EXPECT_TRUE(controller.convertImages(photographs));
    EXPECT_EQ(controller.lomoEngine()->lomoStyle, IILomoEngine::kStyleOriginal);
    int calls = 0;
    controller.run(0, {}, 50, 0, 0, [&calls](PixelBuffer, int32_t width, int32_t height, int64_t) {
        EXPECT_EQ(width, 0);
        EXPECT_EQ(height, 0);
        ++calls;
    });
    EXPECT_EQ(calls, 1);
}

TEST(BgraToBgrTest, dropsTheFourthByteAndLeavesPaddingAlone) {
    const std::array<uint8_t, 16> bgrx = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16};
    const PixelBuffer narrow = IHDREngineController::bgra2bgr(bgrx.data(), 1, 2, 8);
    const std::array<uint8_t, 8> expectedNarrow = {1, 2, 3, 0, 9, 10, 11, 0};
    EXPECT_TRUE(std::equal(expectedNarrow.begin(), expectedNarrow.end(), narrow.get()));
    const PixelBuffer wide = IHDREngineController::bgra2bgr(bgrx.data(), 3, 1, 12);
    const std::array<uint8_t, 12> expectedWide = {1, 2, 3, 5, 6, 7, 9, 10, 11, 0, 0, 0};
    EXPECT_TRUE(std::equal(expectedWide.begin(), expectedWide.end(), wide.get()));
}

} // namespace
} // namespace tristop
