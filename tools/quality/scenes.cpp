// SPDX-License-Identifier: GPL-3.0-or-later
#include "tools/quality/scenes.h"

#include <cmath>
#include <numbers>
#include <random>

namespace tristop::quality {

namespace {

constexpr double kLongestShift = 60, kLongestTurnedShift = 40;
constexpr double kLargestRotation = 1;
constexpr double kLargestCornerChange = 12;

scene::ShotMotion drawMotion(Size size, std::uint64_t seed, CameraMotion motion) {
    std::mt19937_64 bits(seed);
    // The distributions of the standard library differ from one to the next.
    const auto uniform = [&bits] { return static_cast<double>(bits() >> 11) * 0x1p-53; };
    const auto large = [&uniform] { return 0.6 + 0.4 * uniform(); };
    const double shiftShare = large(), shiftDirection = 2 * std::numbers::pi * uniform();
    const double rotation = large() * (uniform() < 0.5 ? -1 : 1);
    const double cornerChange = large(), slant = 2 * std::numbers::pi * uniform();

    if (motion == CameraMotion::none)
        return {};
    const double shift = shiftShare * (motion == CameraMotion::shift ? kLongestShift : kLongestTurnedShift);
    scene::ShotMotion made = {.shiftX = shift * std::cos(shiftDirection),
                              .shiftY = shift * std::sin(shiftDirection)};
    if (motion == CameraMotion::shift)
        return made;
    made.rotationDegrees = kLargestRotation * rotation;
    if (motion == CameraMotion::rotation)
        return made;
    // A corner, half a diagonal from the centre, moves by that times half the sum of both amounts.
    const double halfDiagonal = std::hypot(size.width, size.height) / 2;
    const double amounts = 2 * kLargestCornerChange * cornerChange / halfDiagonal;
    const double across = std::cos(slant), down = std::sin(slant);
    made.perspectiveX = amounts * across / (std::abs(across) + std::abs(down));
    made.perspectiveY = amounts * down / (std::abs(across) + std::abs(down));
    return made;
}

} // namespace

scene::SceneSettings staticScene(Size size, std::uint64_t seed, CameraMotion motion, double stops) {
    scene::SceneSettings settings;
    settings.width = size.width;
    settings.height = size.height;
    settings.seed = seed;
    settings.stops = {-stops, 0, stops};
    settings.camera = {drawMotion(size, 2 * seed, motion), {}, drawMotion(size, 2 * seed + 1, motion)};
    settings.moving.share = 0;
    return settings;
}

scene::MovingObjects balloons(Movement movement) {
    constexpr std::array<scene::Position, 3> kAtLast = {{{0, 0}, {0, 0}, {0.024, -0.008}}};
    constexpr std::array<scene::Position, 3> kAlways = {{{-0.03, 0.012}, {0, 0}, {0.024, -0.008}}};
    switch (movement) {
    case Movement::lastShot:
        return {.count = 1, .share = 0.02, .offset = kAtLast};
    case Movement::everyShot:
        return {.count = 2, .share = 0.04, .offset = kAlways};
    case Movement::largeShare:
        break;
    }
    return {.count = 4, .share = 0.15, .offset = kAlways};
}

const char *describe(Movement movement) {
    switch (movement) {
    case Movement::lastShot:
        return "in the last shot";
    case Movement::everyShot:
        return "in every shot";
    case Movement::largeShare:
        break;
    }
    return "in every shot, 15 %";
}

MovedPlaces::MovedPlaces(const scene::SceneSettings &settings) {
    if (settings.moving.count == 0 || settings.moving.share == 0)
        return;
    scene::SceneSettings reduced = settings;
    reduced.width = (settings.width + kReduction - 1) / kReduction;
    reduced.height = (settings.height + kReduction - 1) / kReduction;
    constexpr std::array<int, 3> kShots = {kDark, kMiddle, kBright};
    mask = scene::motionMask(reduced, kShots, kMiddle);
}

} // namespace tristop::quality
