// SPDX-License-Identifier: MIT
#include "engine/prepare/alignment.h"

#include "engine/core/context.h"
#include "engine/prepare/warp_grids.h"
#include "tests/support/reduced_run.h"
#include "tests/support/synthetic_bracket.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <vector>

namespace hdr {
namespace {

using test::BracketSettings;

constexpr int kDark = 0, kMid = 1, kBright = 2;

/// A context that has prepared a bracket.
struct Prepared {
    explicit Prepared(const test::Bracket &bracket) {
        context.preparedOnce = 1;
        context.alignmentMode = 3;
        if ((status = context.tables.create(nullptr)) == HDR_OK)
            status = hdrPrepareInputs(nullptr, &context, bracket.pictures.data(), 3, nullptr);
    }
    ~Prepared() {
        hdrReleaseRunBuffers(nullptr, &context);
        context.tables.release(nullptr);
    }
    Prepared(const Prepared &) = delete;
    Prepared &operator=(const Prepared &) = delete;

    Plane<uint8_t> work(int input, int plane = 0) const {
        return planeOf(*context.preparation.workImages[input], plane);
    }
    std::array<int, 4> valid(int input) const {
        const Rect &rectangle = context.preparation.validRects[input];
        return {rectangle.x0, rectangle.y0, rectangle.x1, rectangle.y1};
    }
    /// Share of the cells in which the input shows something else than the reference.
    double movedShare(int input) const {
        const uint8_t *cells = context.alignment.movedCells[input];
        const size_t count = context.preparation.gridPlaneSize();
        return static_cast<double>(std::count(cells, cells + count, 255)) / static_cast<double>(count);
    }

    HdrContext context{};
    HdrStatus status;
};

/// Where the truth is: the shot's pixel q shows the scene at c + R (q - c) + shift.
Vector trueDisplacement(const BracketSettings &settings, int shot, Vector p) {
    const size_t k = static_cast<size_t>(shot);
    const Vector centre = {(settings.width - 1) / 2.0, (settings.height - 1) / 2.0};
    const double turn = settings.rotation[k] * std::numbers::pi / 180;
    const Vector r = p - Vector{settings.displacement[k][0], settings.displacement[k][1]} - centre;
    const Vector q = centre + Vector{std::cos(turn) * r.x + std::sin(turn) * r.y,
                                     -std::sin(turn) * r.x + std::cos(turn) * r.y};
    return p - q;
}

/// Distance between the displacement that the rendering follows and the true one, where the shot shows the
/// scene.
void expectErrors(const Prepared &run, const BracketSettings &settings, int shot, double rootMeanSquare,
                  double percentile99) {
    std::vector<double> errors;
    double sum = 0;
    for (int y = 0; y < settings.height; y += 7) {
        for (int x = 0; x < settings.width; x += 7) {
            const Vector p = {static_cast<double>(x), static_cast<double>(y)};
            const Vector truth = trueDisplacement(settings, shot, p);
            const Vector q = p - truth;
            if (q.x < 0 || q.y < 0 || q.x > settings.width - 1 || q.y > settings.height - 1)
                continue;
            errors.push_back((warpDisplacement(run.context.alignment, shot, p) - truth).squaredLength());
            sum += errors.back();
        }
    }
    std::sort(errors.begin(), errors.end());
    EXPECT_LT(std::sqrt(sum / static_cast<double>(errors.size())), rootMeanSquare) << shot;
    EXPECT_LT(std::sqrt(errors[errors.size() * 99 / 100]), percentile99) << shot;
}

TEST(Alignment, WithoutMotionNothingMoves) {
    for (double stops : {2.0, 3.0}) {
        const test::Bracket bracket(
            {.width = 500, .height = 347, .stops = {-stops, 0, stops}, .noise = 2, .movingSquare = 100});
        const Prepared run(bracket);
        ASSERT_EQ(run.status, HDR_OK);
        EXPECT_EQ(run.context.earlyExitCode, HDR_OK);
        for (int input : {kDark, kBright}) {
            EXPECT_TRUE(isUnmoved(run.context.alignment, input)) << stops;
            EXPECT_EQ(run.valid(input), (std::array{0, 0, 62, 42}));
        }
        EXPECT_EQ(run.context.alignment.warpX[kMid], nullptr);
    }
}

TEST(Alignment, FollowsShiftsInAnyOrderOfTheExposuresInPicturesOfAnyShape) {
    const std::array<std::array<double, 2>, 3> far = {{{37, -22.4}, {0, 0}, {-50.3, 13}}};
    const std::array<std::array<double, 2>, 3> near = {{{5, -4}, {0, 0}, {-6, 3}}};
    for (const BracketSettings &settings :
         {BracketSettings{.width = 640, .height = 450, .displacement = far, .noise = 2},
          {.width = 640, .height = 450, .stops = {3, 0, -3}, .displacement = far, .noise = 2},
          {.width = 100, .height = 100, .displacement = near},
          {.width = 100, .height = 133, .displacement = near},
          {.width = 1500, .height = 100, .displacement = near},
          {.width = 102, .height = 1200, .displacement = near}}) {
        SCOPED_TRACE(testing::Message() << settings.width << " x " << settings.height);
        const test::Bracket bracket(settings);
        const Prepared run(bracket);
        ASSERT_EQ(run.status, HDR_OK);
        EXPECT_EQ(run.context.earlyExitCode, HDR_OK);
        EXPECT_EQ(run.context.alignmentMode, 1);
        for (int shot : {kDark, kBright}) {
            for (size_t axis : {0u, 1u})
                EXPECT_EQ(run.context.alignment.globalShift[shot][axis],
                          std::lround(settings.displacement[static_cast<size_t>(shot)][axis]));
            expectErrors(run, settings, shot, 0.5, 1.0);
        }
    }
}

TEST(Alignment, FollowsATurnedCameraAndIgnoresWhatMoves) {
    const BracketSettings settings = {.width = 900,
                                      .height = 600,
                                      .displacement = {{{-14, 9}, {0, 0}, {21, 30}}},
                                      .rotation = {0.9, 0, -2.5},
                                      .noise = 1,
                                      .movingSquare = 250};
    const test::Bracket bracket(settings);
    const Prepared run(bracket);
    ASSERT_EQ(run.status, HDR_OK);
    const Alignment &alignment = run.context.alignment;
    EXPECT_GE(run.context.alignmentMode, 2);
    for (int shot : {kDark, kBright}) {
        expectErrors(run, settings, shot, 0.7, 1.5);
        // The grids do not fold: a node stays right of and below the ones before it.
        const Plane<const int32_t> x(alignment.warpX[shot], alignment.warpWidth, alignment.warpHeight);
        const Plane<const int32_t> y(alignment.warpY[shot], alignment.warpWidth, alignment.warpHeight);
        for (int row = 1; row < x.height; row++)
            for (int column = 1; column < x.width; column++) {
                EXPECT_LT(x(column, row) - x(column - 1, row), kWarpSpacing / 2);
                EXPECT_LT(y(column, row) - y(column, row - 1), kWarpSpacing / 2);
            }
    }
    // Most features found their matches, and most of these follow the motion.
    const float *table = alignment.matchTables[kDark];
    int matched = 0, following = 0;
    for (int i = 0; i < alignment.featureCount; i++) {
        matched += table[i] >= 0;
        if (table[2 * kFeatureCapacity + i] != 1)
            continue;
        following++;
        const double x = alignment.featureTables[i], y = alignment.featureTables[kFeatureCapacity + i];
        const Vector truth = trueDisplacement(settings, kDark, {8 * x + 3, 8 * y + 3});
        EXPECT_NEAR(8 * (x - table[i]), truth.x, 8);
        EXPECT_NEAR(8 * (y - table[kFeatureCapacity + i]), truth.y, 8);
    }
    EXPECT_GT(matched, alignment.featureCount / 3);
    EXPECT_GT(following, matched / 2);
}

TEST(Alignment, BringsTheWorkingPicturesAlong) {
    BracketSettings settings = {.width = 400, .height = 320};
    const test::Bracket still(settings);
    settings.displacement[kDark] = {16, -8};
    const test::Bracket moved(settings);
    const Prepared reference(still), run(moved);
    ASSERT_EQ(run.status, HDR_OK);
    // The dark exposure's blocks lie two reduced pixels to the left and one down: the first two columns and
    // the last row are outside.
    EXPECT_EQ(run.valid(kDark), (std::array{2, 0, 50, 39}));
    for (int plane = 0; plane < 3; plane++)
        for (int y = 0; y < 39; y++)
            EXPECT_TRUE(std::equal(run.work(kDark, plane).row(y) + 2, run.work(kDark, plane).row(y) + 50,
                                   reference.work(kDark, plane).row(y) + 2));
}

TEST(Alignment, FindsNothingMovedInAStillScene) {
    const test::Bracket bracket({.width = 600,
                                 .height = 400,
                                 .stops = {-3, 0, 3},
                                 .displacement = {{{11.4, 5}, {0, 0}, {-7.6, 20.3}}},
                                 .rotation = {0.5, 0, -0.4}});
    const Prepared run(bracket);
    ASSERT_EQ(run.status, HDR_OK);
    for (int input : {kDark, kBright})
        EXPECT_LT(run.movedShare(input), 0.02);
}

TEST(Alignment, WithoutFeaturesNothingMovesAndTheRunFallsBack) {
    test::Bracket bracket({});
    for (size_t k = 0; k < 3; k++)
        for (size_t i = 0; i < bracket.bytes[k].size(); i++)
            bracket.bytes[k][i] = i % 2 ? 128 : static_cast<uint8_t>(60 + 50 * k);
    const Prepared run(bracket);
    EXPECT_EQ(run.status, HDR_OK);
    EXPECT_EQ(run.context.earlyExitCode, HDR_ERR_ALIGN);
    EXPECT_EQ(run.context.fallback, HDR_FALLBACK_FEATURES);
    EXPECT_LT(run.context.alignment.featureCount, 3);
    for (int input : {kDark, kBright}) {
        EXPECT_TRUE(isUnmoved(run.context.alignment, input));
        EXPECT_EQ(run.valid(input), (std::array{0, 0, 40, 30}));
        EXPECT_EQ(run.context.ghosts.excludedInputs[input], 0);
    }
}

TEST(Alignment, ARepeatingPatternIsTakenToHaveMovedLittle) {
    const BracketSettings settings = {
        .width = 600, .height = 400, .displacement = {{{0, 0}, {0, 0}, {7, -4}}}};
    test::Bracket bracket(settings);
    // Bricks of 48 x 24 pixels, every second course moved by half of one.
    for (size_t k = 0; k < 3; k++) {
        for (int y = 0; y < settings.height; y++) {
            for (int x = 0; x < settings.width; x++) {
                const int u = x + static_cast<int>(settings.displacement[k][0]) + 480;
                const int v = y + static_cast<int>(settings.displacement[k][1]) + 480;
                const bool joint = v % 24 < 3 || (u + v / 24 % 2 * 24) % 48 < 3;
                bracket.bytes[k][static_cast<size_t>(y * 1200 + 2 * x)] =
                    static_cast<uint8_t>((joint ? 110 : 60) + 35 * static_cast<int>(k) - 15);
            }
        }
    }
    const Prepared run(bracket);
    EXPECT_EQ(run.context.earlyExitCode, HDR_OK);
    EXPECT_TRUE(isUnmoved(run.context.alignment, kDark));
    expectErrors(run, settings, kBright, 0.5, 1.0);
}

TEST(Alignment, AnExposureOfAnotherSceneIsLeftOutAndTwoEndTheMerge) {
    test::Bracket bracket({});
    for (int strange : {kBright, kDark}) {
        bracket.bytes[strange] = test::Bracket({.seed = strange == kBright ? 77u : 78u}).bytes[strange];
        const Prepared run(bracket);
        EXPECT_EQ(run.status, HDR_OK);
        EXPECT_EQ(run.context.earlyExitCode, strange == kBright ? HDR_OK : HDR_ERR_ALIGN);
        EXPECT_EQ(run.context.ghosts.excludedInputs[strange], 1);
        EXPECT_TRUE(isUnmoved(run.context.alignment, strange));
    }
}

TEST(Alignment, AnExposureThatShowsNothingStays) {
    test::Bracket bracket({});
    for (size_t i = 0; i < bracket.bytes[kBright].size(); i++)
        bracket.bytes[kBright][i] = i % 2 ? 128 : 235;
    const Prepared run(bracket);
    EXPECT_EQ(run.status, HDR_OK);
    EXPECT_EQ(run.context.earlyExitCode, HDR_OK);
    EXPECT_EQ(run.context.ghosts.excludedInputs[kBright], 0);
    EXPECT_TRUE(isUnmoved(run.context.alignment, kBright));
}

TEST(Alignment, MotionInMostOfThePictureEndsTheMerge) {
    // 100 cells: 90 of them may show motion, and four less for each level of ghost suppression.
    for (const auto &[level, dark, bright, fallback] : {std::array{0, 80, 90, int{HDR_FALLBACK_NONE}},
                                                        {0, 80, 91, HDR_FALLBACK_BRIGHT_MOTION},
                                                        {0, 91, 80, HDR_FALLBACK_DARK_MOTION},
                                                        {5, 70, 10, HDR_FALLBACK_NONE},
                                                        {5, 71, 10, HDR_FALLBACK_DARK_MOTION},
                                                        {5, 71, 71, HDR_FALLBACK_BRIGHT_MOTION}}) {
        test::ReducedRun run(40, 40);
        const auto mark = [&](int input, int cells) {
            run.context.alignment.movedCells[input] =
                allocateZeroed<uint8_t>(nullptr, run.context.preparation.gridPlaneSize());
            std::fill_n(run.context.alignment.movedCells[input], cells, uint8_t{255});
            run.paintNoise(run.registered(input));
        };
        run.context.ghostSuppressionLevel = level;
        mark(run.kDark, dark);
        mark(run.kBright, bright);
        settleMotion(&run.context);
        EXPECT_EQ(run.context.fallback, fallback) << level << ' ' << dark << ' ' << bright;
        EXPECT_EQ(run.context.earlyExitCode, fallback == HDR_FALLBACK_NONE ? HDR_OK : HDR_ERR_SHIFT);
        for (int input : {run.kDark, run.kBright})
            EXPECT_EQ(test::samplesOf(planeOf(run.registered(input))),
                      test::samplesOf(planeOf(run.registered(run.kMid))));
        run.context.alignment.release(nullptr);
    }
}

} // namespace
} // namespace hdr
