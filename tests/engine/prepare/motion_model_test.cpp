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

/// A turn by `angle` about the picture's corner and a perspective change along x, and half of it along y.
std::function<Vector(Vector)> turned(double angle, double perspective) {
    return [=](Vector p) {
        const double w = 1 + perspective * (p.x + p.y / 2);
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

const Motion kStart(kWidth, kHeight);

Motion fitted(MotionKind kind, const std::vector<Observation> &observations, double tolerance = 100,
              const Motion &start = kStart, double lastTolerance = 3) {
    return fitMotion(kind, start, observations.data(), observations.size(), tolerance, lastTolerance);
}

TEST(MotionModel, EachKindIsRecovered) {
    const std::function<Vector(Vector)> shift = [](Vector) { return Vector{-12.25, 30.5}; };
    for (const auto &[kind, motion] : {std::pair{MotionKind::translation, shift},
                                       {MotionKind::similarity, turned(0.02, 0)},
                                       {MotionKind::homography, turned(-0.015, 2e-5)}})
        EXPECT_LT(furthest(fitted(kind, observe(motion)), motion), 1e-6);
}

TEST(MotionModel, ChoosesTheSimplestKindThatExplainsTheObservations) {
    const MotionChoice start = {kStart, MotionKind::none};
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
    const Motion consensus = consensusSimilarity(kStart, observations.data(), observations.size(), 4);
    EXPECT_LT(furthest(consensus, turn), 1);
    const Motion motion = fitted(MotionKind::similarity, observations, 10, consensus);
    EXPECT_LT(furthest(motion, turn), 0.1);
    EXPECT_NEAR(unexplained(motion, observations.data(), observations.size(), 3), 34, 0.1);
}

TEST(MotionModel, AnEdgeOnlyTellsWhatLiesAcrossIt) {
    // Falling edges in the upper half, rising ones in the lower half; along themselves they are off by
    // anything.
    const auto shift = [](Vector) { return Vector{5, -8}; };
    auto observations = observe(shift);
    for (size_t i = 0; i < observations.size(); i++) {
        const double across = i < observations.size() / 2 ? 1 : -1;
        const double slip = 3.0 * static_cast<double>(i % 5);
        observations[i].information = {8 + 1e-4, 8 * across, 8 + 1e-4};
        observations[i].displacement = observations[i].displacement + Vector{slip, -across * slip};
    }
    EXPECT_LT(furthest(fitted(MotionKind::translation, observations), shift), 0.05);
}

TEST(MotionModel, MotionsThatNoHandMakesAreNotPlausible) {
    const auto plausible = [](const std::function<Vector(Vector)> &displacement) {
        return fitted(MotionKind::homography, observe(displacement), 1e6, kStart, 1e6).plausible();
    };
    EXPECT_TRUE(plausible(turned(0.05, 2e-5)));
    EXPECT_FALSE(plausible(turned(0.3, 0)));
    EXPECT_FALSE(plausible(turned(0, 1e-4)));
    EXPECT_FALSE(plausible([](Vector p) { return Vector{2 * p.x, 0}; }));     // mirrored
    EXPECT_FALSE(plausible([](Vector p) { return Vector{0.3 * p.x, 0}; }));   // squeezed
    EXPECT_FALSE(plausible([](Vector p) { return 0.2 * Vector{p.x, p.y}; })); // shrunk
}

} // namespace
} // namespace hdr
