// SPDX-License-Identifier: MIT
#include "engine/prepare/alignment.h"

#include "engine/core/context.h"
#include "engine/core/plane.h"
#include "engine/prepare/reduction.h"
#include "engine/prepare/warp_grids.h"
#include "tests/support/arena.h"
#include "tests/support/synthetic_bracket.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <vector>

namespace hdr {
namespace {

constexpr int kDark = 0, kMid = 1, kBright = 2;

/// A context that has prepared a bracket.
class Prepared {
public:
    explicit Prepared(const test::Bracket &bracket, ProgressCallback callback = nullptr,
                      MemContext *memory = nullptr)
        : memory(memory) {
        context.preparedOnce = 1;
        context.alignmentMode = 3;
        if ((status = context.tables.create(memory)) == HDR_OK)
            status = hdrPrepareInputs(memory, &context, bracket.pictures.data(), 3, callback);
    }
    ~Prepared() {
        releaseFeatureGrid(memory, &context);
        context.alignment.release(memory);
        context.preparation.release(memory);
        context.tables.release(memory);
    }
    Prepared(const Prepared &) = delete;
    Prepared &operator=(const Prepared &) = delete;

    Plane<const uint8_t> work(int input) const { return planeOf(*context.preparation.workImages[input]); }
    Plane<const uint8_t> registered(int input) const {
        return planeOf(*context.preparation.registeredImages[input]);
    }
    std::vector<int32_t> grids(int input) const {
        const Alignment &alignment = context.alignment;
        const int nodes = alignment.warpWidth * alignment.warpHeight;
        std::vector<int32_t> both(alignment.warpX[input], alignment.warpX[input] + nodes);
        both.insert(both.end(), alignment.warpY[input], alignment.warpY[input] + nodes);
        return both;
    }

    HdrContext context{};
    HdrStatus status;

private:
    MemContext *memory;
};

/// Where the truth is: the shot's pixel q shows the scene at c + R (q - c) + shift.
Vector trueDisplacement(const test::BracketSettings &settings, int shot, Vector p) {
    const size_t k = static_cast<size_t>(shot);
    const Vector centre = {(settings.width - 1) / 2.0, (settings.height - 1) / 2.0};
    const double turn = settings.rotation[k] * std::numbers::pi / 180;
    const Vector r = p - Vector{settings.displacement[k][0], settings.displacement[k][1]} - centre;
    const Vector q = centre + Vector{std::cos(turn) * r.x + std::sin(turn) * r.y,
                                     -std::sin(turn) * r.x + std::cos(turn) * r.y};
    return p - q;
}

struct Errors {
    double rootMeanSquare, percentile99;
};

/// Distance between the displacement that the rendering follows and the true one, where the shot shows the
/// scene.
Errors errorsOf(const Prepared &run, const test::BracketSettings &settings, int shot) {
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
    return {std::sqrt(sum / static_cast<double>(errors.size())), std::sqrt(errors[errors.size() * 99 / 100])};
}

TEST(Alignment, WithoutMotionNothingMoves) {
    for (double stops : {2.0, 3.0}) {
        test::BracketSettings settings;
        settings.width = 500;
        settings.height = 347;
        settings.stops = {-stops, 0, stops};
        settings.noise = 2;
        settings.movingSquare = 100;
        const test::Bracket bracket(settings);
        const Prepared run(bracket);
        ASSERT_EQ(run.status, HDR_OK);
        EXPECT_EQ(run.context.earlyExitCode, HDR_OK);
        for (int input : {kDark, kBright}) {
            EXPECT_TRUE(isUnmoved(run.context.alignment, input)) << stops;
            const Rect &valid = run.context.preparation.validRects[input];
            EXPECT_TRUE(valid.x0 == 0 && valid.y0 == 0 && valid.x1 == 62 && valid.y1 == 42);
            Offscreen reduced{};
            ASSERT_EQ(reduceToWorking(nullptr, &bracket.pictures[static_cast<size_t>(input)], &reduced,
                                      nullptr, 8, 1),
                      HDR_OK);
            for (int plane = 0; plane < 3; plane++)
                for (int y = 0; y < 42; y++)
                    EXPECT_TRUE(
                        std::equal(planeOf(reduced, plane).row(y), planeOf(reduced, plane).row(y) + 62,
                                   planeOf(*run.context.preparation.workImages[input], plane).row(y)));
            engineFree(nullptr, reduced.ppu8Plane[0]);
        }
        EXPECT_EQ(run.context.alignment.warpX[kMid], nullptr);
    }
}

TEST(Alignment, EqualExposuresAreRegisteredAsTheyAre) {
    test::BracketSettings settings;
    settings.stops = {0, 0, 0};
    const test::Bracket bracket(settings);
    const Prepared run(bracket);
    ASSERT_EQ(run.status, HDR_OK);
    const int mid = run.context.preparation.midIndex;
    for (int input = 0; input < 3; input++)
        for (int y = 0; y < run.registered(input).height; y++)
            EXPECT_TRUE(std::equal(run.registered(input).row(y), run.registered(input).row(y) + 40,
                                   run.registered(mid).row(y)));
}

TEST(Alignment, FollowsShiftsInAnyOrderOfTheExposures) {
    for (double stops : {2.0, -3.0}) {
        test::BracketSettings settings;
        settings.width = 640;
        settings.height = 450;
        settings.noise = 2;
        settings.stops = {-stops, 0, stops};
        settings.displacement = {{{37, -22.4}, {0, 0}, {-50.3, 13}}};
        const test::Bracket bracket(settings);
        const Prepared run(bracket);
        ASSERT_EQ(run.status, HDR_OK);
        EXPECT_EQ(run.context.alignment.globalShift[0][0], 37);
        EXPECT_EQ(run.context.alignment.globalShift[0][1], -22);
        EXPECT_EQ(run.context.alignment.globalShift[2][0], -50);
        EXPECT_EQ(run.context.alignment.globalShift[2][1], 13);
        EXPECT_EQ(run.context.alignmentMode, 1);
        for (int shot : {0, 2}) {
            const Errors errors = errorsOf(run, settings, shot);
            EXPECT_LT(errors.rootMeanSquare, 0.5) << shot;
            EXPECT_LT(errors.percentile99, 1.0) << shot;
        }
    }
}

TEST(Alignment, FollowsATurnedCameraAndIgnoresWhatMoves) {
    test::BracketSettings settings;
    settings.width = 900;
    settings.height = 600;
    settings.noise = 1;
    settings.movingSquare = 250;
    settings.displacement = {{{-14, 9}, {0, 0}, {21, 30}}};
    settings.rotation = {0.9, 0, -2.5};
    const test::Bracket bracket(settings);
    const Prepared run(bracket);
    ASSERT_EQ(run.status, HDR_OK);
    const Alignment &alignment = run.context.alignment;
    EXPECT_GE(run.context.alignmentMode, 2);
    for (int shot : {kDark, kBright}) {
        const Errors errors = errorsOf(run, settings, shot);
        EXPECT_LT(errors.rootMeanSquare, 0.7) << shot;
        EXPECT_LT(errors.percentile99, 1.5) << shot;
        // The grids do not fold: a node stays right of and below the ones before it.
        for (int row = 0; row < alignment.warpHeight; row++) {
            for (int column = 0; column < alignment.warpWidth; column++) {
                const int node = row * alignment.warpWidth + column;
                if (column > 0) {
                    EXPECT_LT(alignment.warpX[shot][node] - alignment.warpX[shot][node - 1],
                              kWarpSpacing / 2);
                }
                if (row > 0) {
                    EXPECT_LT(alignment.warpY[shot][node] - alignment.warpY[shot][node - alignment.warpWidth],
                              kWarpSpacing / 2);
                }
            }
        }
    }
    // Most features found their matches, and most of these follow the motion.
    const float *table = alignment.matchTables[kDark];
    int matched = 0, following = 0;
    for (int i = 0; i < alignment.featureCount; i++) {
        matched += table[i] >= 0;
        following += table[2 * kFeatureCapacity + i] == 1;
        if (table[2 * kFeatureCapacity + i] == 1) {
            const Vector p = {8.0 * static_cast<double>(alignment.featureTables[i]) + 3,
                              8.0 * static_cast<double>(alignment.featureTables[kFeatureCapacity + i]) + 3};
            const Vector truth = trueDisplacement(settings, kDark, p);
            EXPECT_NEAR(8 * (alignment.featureTables[i] - table[i]), truth.x, 8);
            EXPECT_NEAR(8 * (alignment.featureTables[kFeatureCapacity + i] - table[kFeatureCapacity + i]),
                        truth.y, 8);
        }
    }
    EXPECT_GT(matched, alignment.featureCount / 3);
    EXPECT_GT(following, matched / 2);
}

TEST(Alignment, BringsTheWorkingPicturesAlong) {
    test::BracketSettings settings;
    settings.width = 400;
    settings.height = 320;
    const test::Bracket still(settings);
    settings.displacement[kDark] = {16, -8};
    const test::Bracket moved(settings);
    const Prepared reference(still), run(moved);
    ASSERT_EQ(run.status, HDR_OK);
    // The dark exposure's blocks lie two reduced pixels to the left and one down: the first two columns and
    // the last row are outside.
    const Rect &valid = run.context.preparation.validRects[kDark];
    EXPECT_EQ(valid.x0, 2);
    EXPECT_EQ(valid.y0, 0);
    EXPECT_EQ(valid.x1, 50);
    EXPECT_EQ(valid.y1, 39);
    for (int plane = 0; plane < 3; plane++) {
        const Plane<uint8_t> expected = planeOf(*reference.context.preparation.workImages[kDark], plane);
        const Plane<uint8_t> aligned = planeOf(*run.context.preparation.workImages[kDark], plane);
        for (int y = valid.y0; y < valid.y1; y++)
            for (int x = valid.x0; x < valid.x1; x++)
                ASSERT_EQ(aligned(x, y), expected(x, y)) << plane << " " << x << " " << y;
    }
    // Beyond the input its border goes on.
    EXPECT_EQ(run.work(kDark)(20, 39), run.work(kDark)(20, 38));
}

TEST(Alignment, StaticExposuresDifferOnlyLittleWhenRegistered) {
    test::BracketSettings settings;
    settings.width = 600;
    settings.height = 400;
    settings.stops = {-3, 0, 3};
    settings.displacement = {{{11.4, 5}, {0, 0}, {-7.6, 20.3}}};
    settings.rotation = {0.5, 0, -0.4};
    const test::Bracket bracket(settings);
    const Prepared run(bracket);
    ASSERT_EQ(run.status, HDR_OK);
    for (int input : {kDark, kBright}) {
        const Rect &valid = run.context.preparation.validRects[input];
        int differing = 0, pixels = 0;
        for (int y = valid.y0; y < valid.y1; y++) {
            for (int x = valid.x0; x < valid.x1; x++) {
                const int level = run.registered(kMid)(x, y);
                differing += std::abs(run.registered(input)(x, y) - level) > level / 16 + 10;
                pixels++;
            }
        }
        EXPECT_LT(differing, pixels / 50) << input;
    }
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
        EXPECT_EQ(run.context.preparation.validRects[input].x1, 40);
    }
}

TEST(Alignment, ARepeatingPatternIsTakenToHaveMovedLittle) {
    test::BracketSettings settings;
    settings.width = 600;
    settings.height = 400;
    settings.displacement = {{{0, 0}, {0, 0}, {7, -4}}};
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
    EXPECT_LT(errorsOf(run, settings, kBright).rootMeanSquare, 0.5);
}

TEST(Alignment, AnExposureOfAnotherSceneIsLeftOutAndTwoEndTheMerge) {
    test::BracketSettings settings;
    test::Bracket bracket(settings);
    for (const auto &[strange, seed] : {std::pair{kBright, 77}, {kDark, 78}}) {
        settings.seed = static_cast<uint32_t>(seed);
        bracket.bytes[strange] = test::Bracket(settings).bytes[strange];
        const Prepared run(bracket);
        EXPECT_EQ(run.status, HDR_OK);
        EXPECT_EQ(run.context.earlyExitCode, strange == kBright ? HDR_OK : HDR_ERR_ALIGN);
        EXPECT_EQ(run.context.ghosts.excludedInputs[strange], 1);
        EXPECT_TRUE(isUnmoved(run.context.alignment, strange));
    }
}

TEST(Alignment, AnExposureThatShowsNothingStaysAndLooksLikeTheReference) {
    test::Bracket bracket({});
    for (size_t i = 0; i < bracket.bytes[kBright].size(); i++)
        bracket.bytes[kBright][i] = i % 2 ? 128 : 235;
    const Prepared run(bracket);
    EXPECT_EQ(run.status, HDR_OK);
    EXPECT_EQ(run.context.earlyExitCode, HDR_OK);
    EXPECT_TRUE(isUnmoved(run.context.alignment, kBright));
}

/// The progress reports of the test below.
std::vector<int64_t> reports;
int64_t lastReport;

TEST(Alignment, ReportsProgressAndStopsWhenTold) {
    test::BracketSettings settings;
    settings.width = 2000; // large enough for both passes
    settings.height = 400;
    const test::Bracket bracket(settings);
    const ProgressCallback report = [](int64_t progress, int64_t reserved, void *userData) -> int64_t {
        EXPECT_EQ(reserved, 0);
        EXPECT_EQ(userData, nullptr);
        reports.push_back(progress);
        return progress == lastReport ? HDR_CANCELLED : 0;
    };
    reports.clear();
    lastReport = -1;
    EXPECT_EQ(Prepared(bracket, report).status, HDR_OK);
    EXPECT_LE(reports.size(), 80u);
    ASSERT_GT(reports.size(), 10u);
    for (size_t i = 0; i < reports.size(); i++)
        EXPECT_EQ(reports[i], static_cast<int64_t>(i) + 1);

    for (int64_t last : {int64_t{1}, static_cast<int64_t>(reports.size())}) {
        reports.clear();
        lastReport = last;
        EXPECT_EQ(Prepared(bracket, report).status, HDR_CANCELLED);
        EXPECT_EQ(reports.size(), static_cast<size_t>(last));
    }
}

TEST(Alignment, EveryRunGivesTheSame) {
    test::BracketSettings settings;
    settings.noise = 3;
    settings.rotation = {1, 0, -1};
    settings.displacement[kBright] = {12.5, -3.5};
    const test::Bracket bracket(settings);
    const Prepared first(bracket), second(bracket);
    for (int input : {kDark, kBright}) {
        EXPECT_EQ(first.grids(input), second.grids(input));
        for (int y = 0; y < first.registered(input).height; y++)
            EXPECT_TRUE(std::equal(first.registered(input).row(y), first.registered(input).row(y) + 40,
                                   second.registered(input).row(y)));
    }
}

TEST(Alignment, PicturesOfAnyShapeComeThrough) {
    for (const auto &[width, height] : {std::array{100, 100}, {101, 133}, {1500, 100}, {103, 1200}}) {
        test::BracketSettings settings;
        settings.width = width & ~1;
        settings.height = height;
        settings.displacement = {{{5, -4}, {0, 0}, {-6, 3}}};
        const test::Bracket bracket(settings);
        const Prepared run(bracket);
        ASSERT_EQ(run.status, HDR_OK);
        EXPECT_EQ(run.context.earlyExitCode, HDR_OK);
        for (int shot : {kDark, kBright})
            EXPECT_LT(errorsOf(run, settings, shot).rootMeanSquare, 0.5) << width << " x " << height;
    }
}

TEST(Alignment, EveryFailedAllocationIsReportedAndLeaksNothing) {
    test::BracketSettings settings;
    settings.width = 112;
    settings.height = 100;
    settings.displacement[kDark] = {4, 3};
    const test::Bracket bracket(settings);
    bool complete = false;
    int failures = 0;
    for (size_t bytes = 50000; !complete; bytes += 8192, failures++) {
        test::Arena arena(bytes);
        {
            const Prepared run(bracket, nullptr, arena.memory());
            complete = run.status == HDR_OK;
            if (!complete) {
                ASSERT_EQ(run.status, HDR_ERR_NOMEM);
            }
        }
        ASSERT_TRUE(arena.isEmpty());
    }
    EXPECT_GT(failures, 5);
}

} // namespace
} // namespace hdr
