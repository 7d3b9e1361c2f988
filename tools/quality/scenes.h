// SPDX-License-Identifier: GPL-3.0-or-later
// The brackets that quality is measured on. Seeds from 60000 on are kept for this: nothing is tuned on them.
#pragma once

#include "tools/quality/bracket.h"

#include <array>
#include <cstdint>
#include <span>

namespace tristop::quality {

struct Size {
    int width, height;
};

/// How the camera moved between the shots. Each kind goes up to the numbers here, in a direction and with a
/// share of 60 to 100 % of them that follow from the seed, for the dark and the bright shot each by itself.
enum class CameraMotion {
    none,
    shift,       ///< 60 pixels
    rotation,    ///< a shift of 40 pixels and 1 degree
    perspective, ///< the same, and 12 pixels at the corners by a change of perspective
};
inline constexpr std::array kCameraMotions = {CameraMotion::none, CameraMotion::shift, CameraMotion::rotation,
                                              CameraMotion::perspective};

/// A room photographed without anything that moves, `stops` apart.
scene::SceneSettings staticScene(Size size, std::uint64_t seed, CameraMotion motion, double stops = 2);

/// What moves on its own.
enum class Movement {
    lastShot,   ///< a balloon that starts to drift after the middle shot
    everyShot,  ///< two balloons at another place in every shot
    largeShare, ///< four balloons over 15 % of the picture, at another place in every shot
};
inline constexpr std::array kMovements = {Movement::lastShot, Movement::everyShot, Movement::largeShare};

scene::MovingObjects balloons(Movement movement);

/// In a few words, for a table.
const char *describe(Movement movement);

/// Where the reference sees something that moved between any of the shots. Works on a mask of a quarter of
/// the picture's width and height. The reference's camera must be the still one.
class MovedPlaces {
public:
    explicit MovedPlaces(const scene::SceneSettings &settings);
    bool at(int x, int y) const { return !mask.values.empty() && mask.at(x / kReduction, y / kReduction); }

private:
    static constexpr int kReduction = 4;
    scene::Mask mask;
};

} // namespace tristop::quality
