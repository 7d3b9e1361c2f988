// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <vector>

#include "tools/scene_renderer/lighting.h"
#include "tools/scene_renderer/motion.h"
#include "tools/scene_renderer/shapes.h"

namespace tristop::scene {

/// Dotted balloons with strings, floating in the room.
class Balloons {
public:
    /// `count` balloons that together cover `area` (in squared widths of the composition), moved by `offset`
    /// from their usual places, in widths.
    Balloons(int count, double area, Position offset);

    /// Finds a balloon nearer than `hit`; `material` becomes the balloon's.
    bool intersect(const Ray &ray, Vec2 place, Hit &hit, Material &material) const;

    /// Share of the sunlight, 0 to 1, that passes the balloons on its way to `position`.
    float sunlight(Vec3 position) const;

    /// Whether a balloon, its string or its shadow may be seen at `place`, see namespace perspective.
    bool mayTouch(Vec2 place) const;

private:
    struct Balloon {
        Ellipsoid body;
        Cone knot;
        Color color;
        Vec2 bodyLow, bodyHigh;     // corners of what is seen of it
        Vec2 shadowLow, shadowHigh; // corners of what its shadow may touch
    };

    std::vector<Balloon> balloons;
};

} // namespace tristop::scene
