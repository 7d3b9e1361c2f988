// SPDX-License-Identifier: MIT
#include "engine/prepare/preparation.h"

#include "engine/core/context.h"
#include "engine/core/plane.h"
#include "engine/prepare/reduction.h"
#include "tests/support/arena.h"
#include "tests/support/synthetic_bracket.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <vector>

namespace hdr {
namespace {

TEST(PrepareAllocate, SizesOfGridsAndReducedPictures) {
    HdrContext context{};
    const Offscreen first = {0x501, 4000, 3000, {}, {8000}};
    ASSERT_EQ(prepareAllocate(nullptr, &context, &first), HDR_OK);
    Preparation &preparation = context.preparation;
    EXPECT_EQ(preparation.sourcePitch, 8000);
    EXPECT_EQ(preparation.gridColumns, 125);
    EXPECT_EQ(preparation.gridRows, 94);
    EXPECT_EQ(preparation.gridPlaneSize(), 127u * 96u);
    for (const Offscreen *picture : {preparation.workImages[2], preparation.registeredImages[0],
                                     preparation.mergedImage, preparation.toneImage}) {
        EXPECT_EQ(picture->u32PixelArrayFormat, 0x604u);
        EXPECT_EQ(picture->i32Width, 500);
        EXPECT_EQ(picture->i32Height, 374);
    }
    for (const Rect &valid : preparation.validRects)
        EXPECT_TRUE(valid.x0 == 0 && valid.y0 == 0 && valid.x1 == 500 && valid.y1 == 374);
    const std::array<int, 7> tuning = {256, 128, 127, 8, 12, 16, 8};
    EXPECT_TRUE(std::ranges::equal(preparation.tuning, tuning));
    preparation.release(nullptr);
    preparation.release(nullptr);
    EXPECT_EQ(preparation.workImages[2], nullptr);
}

TEST(PrepareAllocate, EveryFailureIsReportedAndLeaksNothing) {
    const Offscreen first = {0x501, 100, 100, {}, {200}};
    size_t bytes = 8;
    for (bool complete = false; !complete; bytes += 1000) {
        HdrContext context{};
        test::Arena arena(bytes);
        const HdrStatus status = prepareAllocate(arena.memory(), &context, &first);
        const Preparation &preparation = context.preparation;
        complete = preparation.gridStats && preparation.mergedImage && preparation.toneImage;
        for (int i = 0; i < 3; i++)
            complete = complete && preparation.statistics[i] && preparation.toneCurve[i] &&
                       preparation.workImages[i] && preparation.registeredImages[i];
        EXPECT_EQ(status, complete ? HDR_OK : HDR_ERR_NOMEM) << bytes;
        context.preparation.release(arena.memory());
        EXPECT_TRUE(arena.isEmpty());
    }
    EXPECT_GT(bytes, 30000u);
}

TEST(PrepareInputs, MeasuresOrdersAndRegistersInAnyOrder) {
    using Places = std::array<size_t, 3>; // of the dark, middle and bright exposure
    for (const Places &places : {Places{0, 1, 2}, Places{2, 0, 1}, Places{1, 2, 0}}) {
        test::BracketSettings settings;
        settings.width = 326;
        settings.height = 215;
        for (size_t i = 0; i < 3; i++)
            settings.stops[places[i]] = 2.0 * static_cast<double>(i) - 2;
        const test::Bracket bracket(settings);
        HdrContext context{};
        context.preparedOnce = 1;
        ASSERT_EQ(context.tables.create(nullptr), HDR_OK);
        ASSERT_EQ(hdrPrepareInputs(nullptr, &context, bracket.pictures.data(), 3, nullptr), HDR_OK);
        Preparation &preparation = context.preparation;
        EXPECT_EQ(preparation.darkIndex, static_cast<int>(places[0]));
        EXPECT_EQ(preparation.midIndex, static_cast<int>(places[1]));
        EXPECT_EQ(preparation.brightIndex, static_cast<int>(places[2]));
        EXPECT_EQ(preparation.inputs, bracket.pictures.data());
        const int mid = preparation.midIndex;
        for (int i = 0; i < 3; i++) {
            const double estimate = preparation.exposureEstimate[i];
            EXPECT_NEAR(preparation.exposureGainQ10[i], estimate * 1024, 0.5);
            for (int level = 0; level < 4096; level++)
                ASSERT_EQ(preparation.toneCurve[i][level], level);
            // The histograms are those of the picture before alignment moved it.
            Offscreen reduced{};
            ASSERT_EQ(
                reduceToWorking(nullptr, &bracket.pictures[static_cast<size_t>(i)], &reduced, nullptr, 8, 1),
                HDR_OK);
            for (int channel = 0; channel < 3; channel++) {
                std::array<uint32_t, 256> counts{};
                for (int y = 0; y < reduced.i32Height; y++)
                    for (int x = 0; x < reduced.i32Width; x++)
                        counts[planeOf(reduced, channel)(x, y)]++;
                EXPECT_TRUE(std::equal(counts.begin(), counts.end(), preparation.histogram(i, channel)));
                for (int y = 0; i == mid && y < reduced.i32Height; y++) {
                    const uint8_t *row = planeOf(reduced, channel).row(y);
                    EXPECT_TRUE(std::equal(row, row + reduced.i32Width,
                                           planeOf(*preparation.registeredImages[mid], channel).row(y)));
                }
            }
            engineFree(nullptr, reduced.ppu8Plane[0]);
        }
        releaseFeatureGrid(nullptr, &context);
        context.alignment.release(nullptr);
        preparation.release(nullptr);
        context.tables.release(nullptr);
    }
}

} // namespace
} // namespace hdr
