// SPDX-License-Identifier: MIT
#include "engine/prepare/motion_model.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <vector>

namespace hdr {
namespace {

constexpr int kWidth = 1200, kHeight = 800;
constexpr std::array<double, 3> kCertain = {16, 0, 16};

/// Observations of a motion on a grid of 11 x 8 places.
std::vector<Observation> observe(const std::function<Vector(Vector)> &displacement) {
    std::vector<Observation> observations;
    for (int row = 0; row < 8; row++) {
        for (int column = 0; column < 11; column++) {
            const Vector p = {50.0 + 110 * column, 40.0 + 100 * row};
            observations.push_back({p, displacement(p), kCertain});
        }
    }
    return observations;
}

/// A turn by `angle` about the picture's corner and a perspective change along x.
std::function<Vector(Vector)> turned(double angle, double perspective) {
    return [=](Vector p) {
        const double w = 1 + perspective * p.x;
        const Vector q = {(std::cos(angle) * p.x - std::sin(angle) * p.y + 7) / w,
                          (std::sin(angle) * p.x + std::cos(angle) * p.y - 3) / w};
        return p - q;
    };
}

double furthest(const Motion &motion, const std::function<Vector(Vector)> &displacement) {
    double most = 0;
    for (const Vector &p : motion.landmarks())
        most = std::max(most, std::sqrt((motion.displacement(p) - displacement(p)).squaredLength()));
    return most;
}

TEST(MotionModel, EachKindIsRecovered) {
    const Motion start(kWidth, kHeight);
    const auto shift = [](Vector) { return Vector{-12.25, 30.5}; };
    const auto shifts = observe(shift);
    EXPECT_LT(
        furthest(fitMotion(MotionKind::translation, start, shifts.data(), shifts.size(), 100, 3), shift),
        1e-6);
    const auto turn = turned(0.02, 0);
    const auto turns = observe(turn);
    EXPECT_LT(furthest(fitMotion(MotionKind::similarity, start, turns.data(), turns.size(), 100, 3), turn),
              1e-6);
    const auto tilt = turned(-0.015, 2e-5);
    const auto tilts = observe(tilt);
    EXPECT_LT(furthest(fitMotion(MotionKind::homography, start, tilts.data(), tilts.size(), 100, 3), tilt),
              1e-6);
}

TEST(MotionModel, ChoosesTheSimplestKindThatExplainsTheObservations) {
    const MotionChoice start = {Motion(kWidth, kHeight), MotionKind::none};
    const auto kindOf = [&](const std::function<Vector(Vector)> &displacement) {
        auto observations = observe(displacement);
        for (size_t i = 0; i < observations.size(); i++) // a little disagreement, without a trend
            observations[i].displacement =
                observations[i].displacement +
                Vector{0.1 * static_cast<double>(i % 3) - 0.1, 0.1 * static_cast<double>(i % 2) - 0.05};
        return chooseMotion(MotionKind::homography, start, observations.data(), observations.size(), 100, 3)
            .kind;
    };
    EXPECT_EQ(kindOf([](Vector) { return Vector{}; }), MotionKind::none);
    EXPECT_EQ(kindOf([](Vector) { return Vector{40, -3}; }), MotionKind::translation);
    EXPECT_EQ(kindOf(turned(0.01, 0)), MotionKind::similarity);
    EXPECT_EQ(kindOf(turned(0.01, 3e-5)), MotionKind::homography);
    // Two observations support a shift at best, none supports anything but the start.
    const auto few = observe(turned(0.01, 3e-5));
    EXPECT_LE(chooseMotion(MotionKind::homography, start, few.data(), 4, 1000, 3).kind,
              MotionKind::translation);
    EXPECT_EQ(chooseMotion(MotionKind::homography, start, few.data(), 0, 100, 3).kind, MotionKind::none);
}

TEST(MotionModel, AThirdOfWrongObservationsDoesNoHarm) {
    const auto turn = turned(0.03, 0);
    auto observations = observe(turn);
    for (size_t i = 0; i < observations.size(); i++) {
        if (i % 3 == 0) // together
            observations[i].displacement = observations[i].displacement + Vector{60, 25};
        else if (i % 17 == 1) // each on its own
            observations[i].displacement = Vector{static_cast<double>(i), -2.0 * static_cast<double>(i)};
    }
    const Motion start(kWidth, kHeight);
    const Motion consensus = consensusSimilarity(start, observations.data(), observations.size(), 4);
    const Motion motion =
        fitMotion(MotionKind::similarity, consensus, observations.data(), observations.size(), 10, 3);
    EXPECT_LT(furthest(motion, turn), 0.1);
    EXPECT_NEAR(unexplained(motion, observations.data(), observations.size(), 3), 34, 0.1);
}

TEST(MotionModel, AnEdgeOnlyTellsWhatLiesAcrossIt) {
    // Upright edges in the upper half, level ones in the lower half; along themselves they are off by
    // anything.
    const auto shift = [](Vector) { return Vector{5, -8}; };
    auto observations = observe(shift);
    for (size_t i = 0; i < observations.size(); i++) {
        const bool upright = i < observations.size() / 2;
        const double slip = 3.0 * static_cast<double>(i % 5);
        observations[i].information =
            upright ? std::array<double, 3>{16, 0, 1e-4} : std::array<double, 3>{1e-4, 0, 16};
        observations[i].displacement =
            observations[i].displacement + (upright ? Vector{0, slip} : Vector{slip, 0});
    }
    const Motion start(kWidth, kHeight);
    EXPECT_LT(
        furthest(fitMotion(MotionKind::translation, start, observations.data(), observations.size(), 100, 3),
                 shift),
        0.05);
}

TEST(MotionModel, MotionsThatNoHandMakesAreNotPlausible) {
    const Motion start(kWidth, kHeight);
    const auto plausible = [&](const std::function<Vector(Vector)> &displacement) {
        const auto observations = observe(displacement);
        return fitMotion(MotionKind::homography, start, observations.data(), observations.size(), 1e6, 1e6)
            .plausible();
    };
    EXPECT_TRUE(plausible(turned(0.05, 2e-5)));
    EXPECT_FALSE(plausible(turned(0.5, 0)));
    EXPECT_FALSE(plausible(turned(0, 4e-4)));
    EXPECT_FALSE(plausible([](Vector p) { return Vector{2 * p.x, 0}; }));     // mirrored
    EXPECT_FALSE(plausible([](Vector p) { return Vector{0.3 * p.x, 0}; }));   // squeezed
    EXPECT_FALSE(plausible([](Vector p) { return 0.2 * Vector{p.x, p.y}; })); // shrunk
}

} // namespace
} // namespace hdr
