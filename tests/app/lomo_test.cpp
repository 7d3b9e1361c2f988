// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/lomo_engine.h"

#include <array>
#include <cmath>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>

#include "app/art_table.h"
#include "app/lomo_effects.h"

namespace tristop {
namespace {

using Bgr = std::array<uint8_t, 3>;

/// Applies a pixel routine to one pixel.
template <typename... Parameters>
Bgr onPixel(bool (*routine)(uint8_t *, int32_t, int32_t, int32_t, Parameters...), Bgr pixel,
            std::type_identity_t<Parameters>... arguments) {
    EXPECT_TRUE(routine(pixel.data(), 1, 1, 4, arguments...));
    return pixel;
}

Bgr grey(uint8_t value) {
    return {value, value, value};
}

TEST(LomoContrastTest, followsTheTriangleCurve) {
    const auto contrast = [](uint8_t value, int32_t c) {
        return int{onPixel(lomoContrastAndSaturation, grey(value), c, 0)[0]};
    };
    for (const uint8_t fixed : std::array<uint8_t, 4>{0, 127, 128, 255})
        for (const int32_t c : {-100, -37, 0, 50, 100})
            EXPECT_EQ(contrast(fixed, c), fixed);
    EXPECT_EQ(contrast(64, 100), 32);
    EXPECT_EQ(contrast(192, 100), 224);
    EXPECT_EQ(contrast(64, -100), 96);
    EXPECT_EQ(contrast(192, -100), 160);
    // (64 - 33) x 0.25 = 7.75, cut to 7; for a negative factor cut towards zero as well.
    EXPECT_EQ(contrast(31, 50), 24);
    EXPECT_EQ(contrast(31, -50), 38);
    // 0.3 + 1 - 1 is 0.29999995 in single precision: 60 of it makes 17, where 0.3 itself would make 18.
    EXPECT_EQ(contrast(60, 60), 43);
}

TEST(LomoSaturationTest, movesChannelsAwayFromTheLargest) {
    EXPECT_EQ(onPixel(lomoContrastAndSaturation, Bgr{100, 150, 200}, 0, 100), (Bgr{0, 100, 200}));
    EXPECT_EQ(onPixel(lomoContrastAndSaturation, Bgr{100, 150, 200}, 0, -100), (Bgr{200, 200, 200}));
    // A[200] = (50 - 1280000) / 100 = -12799, B[150] = 19200 + 9599 = 28799, B[100] = 12800 + 6399 = 19199:
    // 16000 >> 7 = 125 and 6400 >> 7 = 50.
    EXPECT_EQ(onPixel(lomoContrastAndSaturation, Bgr{100, 150, 200}, 0, 50), (Bgr{50, 125, 200}));
    EXPECT_EQ(onPixel(lomoContrastAndSaturation, grey(77), 0, 100), grey(77));
    Bgr outOfRange = {64, 192, 0};
    EXPECT_FALSE(lomoContrastAndSaturation(outOfRange.data(), 1, 1, 4, 100, 101));
    EXPECT_EQ(outOfRange, (Bgr{32, 224, 0})) << "the contrast is applied";
}

TEST(LomoBlackAndWhiteTest, givesLuminance) {
    EXPECT_EQ(onPixel(lomoBlackAndWhite, Bgr{255, 0, 0}), grey(29));
    EXPECT_EQ(onPixel(lomoBlackAndWhite, Bgr{0, 255, 0}), grey(149));
    EXPECT_EQ(onPixel(lomoBlackAndWhite, Bgr{10, 20, 30}), grey(21)); // 22370 / 1024
    EXPECT_EQ(onPixel(lomoBlackAndWhite, grey(255)), grey(255));
}

TEST(LomoLensTest, multipliesByTheLensColour) {
    // A grey lens has no chrominance: at full strength luminance 200 x 128 / 256 = 100.
    EXPECT_EQ(onPixel(lomoLens, grey(200), 128, 128, 128, 100, false), grey(100));
    // Red lens: LY = 306 x 255 >> 10 = 76, LU = -44115 >> 10 = -44, LV = 130560 >> 10 = 127. Grey 200 at 50 %
    // (a = 512.5 cut to 512): Y = 200 x 76 >> 8 = 59, Yb = (59 x 512 + 200 x 512) with 10 bits cleared =
    // 132096; V' = (99 x 512) >> 10 = 49; U' = (-35 x 512) >> 10 = -18, as -8800 >> 8 = -35.
    // red (70413 + 132096) >> 10 = 197, green (-35819 + 6336 + 132096) >> 10 = 100, blue (-32616 + 132096) >>
    // 10 = 97.
    EXPECT_EQ(onPixel(lomoLens, grey(200), 255, 0, 0, 50, false), (Bgr{97, 100, 197}));
    // Keeping brightness: p = 300 - 128 = 172; V' = 84 x 49 >> 8 = 16, U' = 84 x -18 >> 8 = -6, Yb = 204800:
    // red (22992 + 204800) >> 10 = 222, green (-11696 + 2112 + 204800) >> 10 = 190, blue (-10872 + 204800) >>
    // 10 = 189.
    EXPECT_EQ(onPixel(lomoLens, grey(200), 255, 0, 0, 50, true), (Bgr{189, 190, 222}));
    EXPECT_EQ(onPixel(lomoLens, Bgr{1, 2, 3}, 255, 0, 0, 0, false), (Bgr{1, 2, 3}));
    // White stays nearly white under a protecting lens: p = 254 leaves 2 / 256 of the lens's chrominance.
    EXPECT_EQ(onPixel(lomoLens, grey(255), 255, 0, 0, 100, true), (Bgr{253, 255, 255}));
}

TEST(LomoVignetteTest, darkensByDistanceFromTheCentre) {
    // 3 x 3 pixels: the centre is (2, 2), D = 8, no shift; factors 4^(-i / 8) x 1024 for strength 50.
    std::vector<uint8_t> picture(3 * 12, 200);
    ASSERT_TRUE(lomoVignette(picture.data(), 3, 3, 12, 50));
    const auto at = [&picture](size_t x, size_t y) { return int{picture[12 * y + 3 * x + 1]}; };
    EXPECT_EQ(at(2, 2), 200);
    EXPECT_EQ(at(1, 2), 168); // squared distance 1: factor 861
    EXPECT_EQ(at(0, 2), 100); // 4: 512
    EXPECT_EQ(at(0, 0), 50);  // 8: 256
    EXPECT_EQ(picture[9], 200) << "padding";
    // A negative strength wraps: 200 x 4096 / 1024 = 800, of which the low 8 bits are 32.
    std::vector<uint8_t> bright(3 * 12, 200);
    ASSERT_TRUE(lomoVignette(bright.data(), 3, 3, 12, -50));
    EXPECT_EQ(bright[0], 32);
    // 4000 x 3000: D = 6250000 has 23 bits, shift 11, table up to 3051.
    std::vector<uint8_t> large(size_t{12000} * 3000, 255);
    ASSERT_TRUE(lomoVignette(large.data(), 4000, 3000, 12000, 50));
    EXPECT_EQ(large[0],
              static_cast<uint8_t>(
                  255 * static_cast<int>(std::pow(4, -3051.0 * 2048 / 6250000) * 1024 + 0.5) / 1024));
}

TEST(ArtTableTest, agreesWithTheGivenColours) {
    const ArtTable &table = artTable();
    const auto output = [&table](int r, int g, int b) {
        const size_t node = artNode(r, g, b);
        return Bgr{table[0][node], table[1][node], table[2][node]};
    };
    EXPECT_EQ(output(0, 0, 0), (Bgr{0, 0, 0}));
    EXPECT_EQ(output(0, 0, 16), (Bgr{223, 37, 0}));
    EXPECT_EQ(output(0, 16, 0), (Bgr{1, 217, 69}));
    EXPECT_EQ(output(0, 16, 16), (Bgr{230, 242, 16}));
    EXPECT_EQ(output(16, 0, 0), (Bgr{21, 70, 246}));
    EXPECT_EQ(output(16, 0, 16), (Bgr{239, 129, 241}));
    EXPECT_EQ(output(16, 16, 0), (Bgr{9, 227, 255}));
    EXPECT_EQ(output(16, 16, 16), (Bgr{255, 255, 255}));
    constexpr std::array<Bgr, 17> kGreys = {{{0, 0, 0},
                                             {5, 8, 12},
                                             {11, 17, 22},
                                             {15, 26, 34},
                                             {20, 42, 40},
                                             {32, 66, 59},
                                             {51, 98, 82},
                                             {65, 127, 97},
                                             {100, 150, 126},
                                             {144, 178, 154},
                                             {181, 200, 183},
                                             {211, 221, 205},
                                             {230, 236, 217},
                                             {242, 247, 232},
                                             {249, 252, 236},
                                             {252, 255, 246},
                                             {255, 255, 255}}};
    for (int k = 0; k <= 16; ++k)
        EXPECT_EQ(output(k, k, k), kGreys[static_cast<size_t>(k)]) << k;
}

TEST(ArtTableTest, isSmoothAndKeepsTheOrderOfColours) {
    const ArtTable &table = artTable();
    // What channel p of the output makes of its own input channel: it never falls and never jumps.
    constexpr std::array<size_t, 3> kOwnStep = {artNode(0, 0, 1), artNode(0, 1, 0), artNode(1, 0, 0)};
    for (size_t p = 0; p < 3; ++p)
        for (int r = 0; r < 17; ++r)
            for (int g = 0; g < 17; ++g)
                for (int b = 0; b < 17; ++b) {
                    const size_t node = artNode(r, g, b);
                    const std::array<int, 3> position = {b, g, r};
                    for (size_t axis = 0; axis < 3; ++axis) {
                        if (position[axis] == 16)
                            continue;
                        const int step = table[p][node + kOwnStep[axis]] - table[p][node];
                        EXPECT_LE(std::abs(step), 48); // the greys themselves rise by up to 44
                        if (axis == p) {
                            EXPECT_GE(step, 0);
                        }
                    }
                }
}

TEST(LomoArtTest, mixesTheEightNodesAroundAColour) {
    const ArtTable &table = artTable();
    uint32_t state = 5;
    for (int i = 0; i < 4000; ++i) {
        state = state * 1664525 + 1013904223;
        const Bgr pixel = {static_cast<uint8_t>(state >> 8), static_cast<uint8_t>(state >> 16),
                           static_cast<uint8_t>(state >> 24)};
        Bgr expected;
        for (size_t p = 0; p < 3; ++p) {
            int sum = 0;
            for (int corner = 0; corner < 8; ++corner) {
                const int dr = corner >> 2, dg = corner >> 1 & 1, db = corner & 1;
                const auto weight = [](int upper, int value) {
                    return upper != 0 ? value & 15 : 16 - (value & 15);
                };
                sum += table[p][artNode((pixel[2] >> 4) + dr, (pixel[1] >> 4) + dg, (pixel[0] >> 4) + db)] *
                       weight(dr, pixel[2]) * weight(dg, pixel[1]) * weight(db, pixel[0]);
            }
            expected[p] = static_cast<uint8_t>(sum >> 12);
        }
        ASSERT_EQ(onPixel(lomoArt, pixel), expected);
    }
    EXPECT_EQ(onPixel(lomoArt, grey(0)), grey(0));
    EXPECT_EQ(onPixel(lomoArt, grey(255)), (Bgr{254, 255, 254})) << "node 16 is never reached whole";
    EXPECT_EQ(onPixel(lomoArt, grey(128)), (Bgr{100, 150, 126}));
}

TEST(LomoEngineTest, runsTheSettingsOnCopiesOfTheKeptPicture) {
    IILomoEngine engine;
    std::array<uint8_t, 8> picture = {64, 128, 192, 64, 128, 192, 7, 9};
    const auto untouched = picture;
    engine.lomoStyle = IILomoEngine::kStyleBlackAndWhite;
    EXPECT_TRUE(engine.runLomo(picture.data(), 2, 1, 8));
    EXPECT_EQ(picture, untouched) << "nothing is kept";

    engine.startLomo(untouched.data(), 2, 1, 8);
    ASSERT_NE(engine.engineData(), nullptr);
    EXPECT_EQ(engine.engineData()->imageLineBytes, 8);
    engine.lomoContrast = 100;
    EXPECT_TRUE(engine.runLomo(picture.data(), 2, 1, 8));
    // 32, 128, 224: (601 x 128 + 306 x 224 + 117 x 32) >> 10 = 145
    EXPECT_EQ(picture, (std::array<uint8_t, 8>{145, 145, 145, 145, 145, 145, 7, 9}));
    EXPECT_TRUE(std::equal(untouched.begin(), untouched.end(), engine.engineData()->imageData.get()));
    EXPECT_TRUE(engine.runLomo(nullptr, 2, 1, 8)) << "a copy that could not be made";

    engine.lomoVignetting = 50;
    engine.defaultSettings();
    engine.lomoLensColor = {511, 255 + 1024, -1}; // the low 8 bits of all three are 255: no lens
    picture = untouched;
    EXPECT_TRUE(engine.runLomo(picture.data(), 2, 1, 8));
    EXPECT_EQ(picture, untouched) << "the default settings change nothing";
    engine.lomoStyle = 3;
    EXPECT_TRUE(engine.runLomo(picture.data(), 2, 1, 8));
    EXPECT_EQ(picture, untouched) << "an unknown style is none";

    engine.finishLomo();
    EXPECT_EQ(engine.engineData(), nullptr);
}

} // namespace
} // namespace tristop
