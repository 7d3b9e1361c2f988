// SPDX-License-Identifier: MIT
#include "engine/prepare/whole_picture_shift.h"

#include "tests/support/synthetic_bracket.h"

#include <gtest/gtest.h>

namespace hdr {
namespace {

/// The shift between the bracket's first picture, in its own tones, and the second one, the reference.
WholePictureShift shiftOf(const test::BracketSettings &settings) {
    const test::Bracket bracket(settings);
    LumaPyramid reference, other;
    EXPECT_EQ(reference.build(nullptr, bracket.pictures[1], comparisonTones(nullptr)), HDR_OK);
    EXPECT_EQ(other.build(nullptr, bracket.pictures[0], comparisonTones(nullptr)), HDR_OK);
    WholePictureShift shift;
    EXPECT_EQ(findWholePictureShift(nullptr, reference, other, shift), HDR_OK);
    return shift;
}

TEST(WholePictureShift, EqualPicturesCorrelateFully) {
    test::BracketSettings settings;
    settings.stops = {0, 0, 0};
    for (const auto &[width, height] : {std::array{320, 240}, {240, 330}, {1200, 104}}) {
        settings.width = width;
        settings.height = height;
        const WholePictureShift shift = shiftOf(settings);
        EXPECT_EQ(shift.displacement.squaredLength(), 0) << width << " x " << height;
        EXPECT_NEAR(shift.correlation, 1, 1e-9);
        // Displaced by whole pixels, what both show is the same but for the contrast near their borders.
        settings.displacement[0] = {24, -16};
        const WholePictureShift displaced = shiftOf(settings);
        EXPECT_NEAR(displaced.displacement.x, 24, 2);
        EXPECT_NEAR(displaced.displacement.y, -16, 2);
        EXPECT_GT(displaced.correlation, 0.9);
        EXPECT_LT(displaced.correlation, 1);
        settings.displacement[0] = {0, 0};
    }
}

TEST(WholePictureShift, SurvivesExposureAndNoise) {
    test::BracketSettings settings;
    settings.width = 900;
    settings.height = 600;
    settings.stops = {-3, 0, 3};
    settings.noise = 3;
    settings.movingSquare = 200;
    settings.displacement[0] = {-130, 75};
    const WholePictureShift shift = shiftOf(settings);
    EXPECT_NEAR(shift.displacement.x, -130, 4);
    EXPECT_NEAR(shift.displacement.y, 75, 4);
    EXPECT_GT(shift.correlation, 0.3);
}

} // namespace
} // namespace hdr
