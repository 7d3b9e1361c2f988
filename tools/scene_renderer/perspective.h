// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tools/scene_renderer/vector.h"

/// The perspective in which the room is seen. A place in the picture is (u, v), in widths of the 3:2
/// composition from its centre, u right and v down. As with a shifted lens, verticals stay vertical.
namespace tristop::scene::perspective {

constexpr Vec3 kEye = {0, 1.5f, 0};
constexpr float kWidth = 1.25f; ///< width of the picture at a distance of 1

/// Direction of sight through (u, v); its z is 1.
constexpr Vec3 direction(Vec2 place) {
    return {kWidth * place.x, -kWidth * place.y - 0.17f, 1};
}

/// Where a point in front of the eye is seen: the inverse of direction().
constexpr Vec2 project(Vec3 p) {
    return {(p.x - kEye.x) / (kWidth * p.z), -((p.y - kEye.y) / p.z + 0.17f) / kWidth};
}

} // namespace tristop::scene::perspective
