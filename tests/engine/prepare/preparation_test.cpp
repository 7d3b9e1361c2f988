// SPDX-License-Identifier: MIT
#include "engine/prepare/preparation.h"

#include "engine/core/context.h"
#include "engine/prepare/reduction.h"
#include "tests/support/reduced_run.h"
#include "tests/support/synthetic_bracket.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>

namespace hdr {
namespace {

TEST(PrepareInputs, MeasuresOrdersAndRegistersInAnyOrder) {
    using Places = std::array<int, 3>; // of the dark, middle and bright exposure
    for (const Places &places : {Places{0, 1, 2}, Places{2, 0, 1}, Places{1, 2, 0}}) {
        test::BracketSettings settings = {.width = 326, .height = 215};
        for (size_t i = 0; i < 3; i++)
            settings.stops[static_cast<size_t>(places[i])] = 2.0 * static_cast<double>(i) - 2;
        const test::Bracket bracket(settings);
        HdrContext context{};
        context.preparedOnce = 1;
        ASSERT_EQ(context.tables.create(nullptr), HDR_OK);
        ASSERT_EQ(hdrPrepareInputs(nullptr, &context, bracket.pictures.data(), 3, nullptr), HDR_OK);
        const Preparation &preparation = context.preparation;
        EXPECT_EQ(Places({preparation.darkIndex, preparation.midIndex, preparation.brightIndex}), places);
        EXPECT_EQ(preparation.inputs, bracket.pictures.data());
        EXPECT_EQ(preparation.sourcePitch, 652);
        EXPECT_EQ(preparation.gridColumns, 11);
        EXPECT_EQ(preparation.gridRows, 7);
        EXPECT_EQ(preparation.gridPlaneSize(), 13u * 9u);
        EXPECT_TRUE(std::ranges::equal(preparation.tuning, std::array{256, 128, 127, 8, 12, 16, 8}));
        for (const Offscreen *picture : {preparation.mergedImage, preparation.toneImage}) {
            EXPECT_EQ(picture->u32PixelArrayFormat, 0x604u);
            EXPECT_EQ(picture->i32Width, 40);
            EXPECT_EQ(picture->i32Height, 26);
        }
        for (int i = 0; i < 3; i++) {
            const Rect &valid = preparation.validRects[i];
            EXPECT_TRUE(valid.x0 == 0 && valid.y0 == 0 && valid.x1 == 40 && valid.y1 == 26);
            EXPECT_NEAR(preparation.exposureGainQ10[i], preparation.exposureEstimate[i] * 1024, 0.5);
            for (int level = 0; level < 4096; level++)
                ASSERT_EQ(preparation.toneCurve[i][level], level);
            // Nothing moves, so that the working pictures are the reduced inputs.
            Offscreen reduced{};
            ASSERT_EQ(
                reduceToWorking(nullptr, &bracket.pictures[static_cast<size_t>(i)], &reduced, nullptr, 8, 1),
                HDR_OK);
            for (int channel = 0; channel < 3; channel++) {
                const auto samples = test::samplesOf(planeOf(reduced, channel));
                std::array<uint32_t, 256> counts{};
                for (uint8_t sample : samples)
                    counts[sample]++;
                EXPECT_TRUE(std::equal(counts.begin(), counts.end(), preparation.histogram(i, channel)));
                EXPECT_EQ(test::samplesOf(planeOf(*preparation.workImages[i], channel)), samples);
                if (i == preparation.midIndex) {
                    EXPECT_EQ(test::samplesOf(planeOf(*preparation.registeredImages[i], channel)), samples);
                }
            }
            engineFree(nullptr, reduced.ppu8Plane[0]);
        }
        hdrReleaseRunBuffers(nullptr, &context);
        hdrReleaseRunBuffers(nullptr, &context);
        context.tables.release(nullptr);
    }
}

} // namespace
} // namespace hdr
