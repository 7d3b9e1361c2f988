// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <limits>
#include <variant>

#include "tools/scene_renderer/vector.h"

namespace tristop::scene {

/// The points origin + t direction, t > 0; the direction need not be of unit length.
struct Ray {
    Vec3 origin, direction;

    Vec3 at(float t) const { return origin + direction * t; }
};

/// Where a ray meets a surface. A Hit starts as far away as can be; an intersection that is nearer replaces
/// it.
struct Hit {
    float t = std::numeric_limits<float>::infinity();
    Vec3 normal;  ///< unit length, towards the side that the ray comes from
    Vec2 texture; ///< place on the surface, meaning depends on the shape
};

/// Corners of an axis-aligned box around a shape.
struct Bounds {
    Vec3 low, high;
};

struct Box {
    Vec3 low, high;

    bool intersect(const Ray &ray, Hit &hit) const;
    Bounds bounds() const { return {low, high}; }
};

struct Ellipsoid {
    Vec3 centre, radii;

    bool intersect(const Ray &ray, Hit &hit) const;
    Bounds bounds() const { return {centre - radii, centre + radii}; }
};

/// A vertical truncated cone with a flat top; `texture` is (angle / 2 pi, height share).
struct Cone {
    Vec3 base;
    float bottomRadius, topRadius, height;
    bool openTop = false;

    bool intersect(const Ray &ray, Hit &hit) const;
    Bounds bounds() const;
};

/// A vertical solid of revolution: a smooth curve through radii at equal steps of height.
struct Turned {
    Vec3 base;
    float height;
    std::array<float, 8> radii;

    bool intersect(const Ray &ray, Hit &hit) const;
    Bounds bounds() const;

private:
    float radius(float share) const;
};

/// A flat leaf facing the room, from `base` to `tip`; `texture` is (share of its length, signed share of its
/// width).
struct Leaf {
    Vec3 base, tip;
    float width;

    bool intersect(const Ray &ray, Hit &hit) const;
    Bounds bounds() const;
};

/// A gathered curtain hanging before a wall, held back at one height; `texture` is (share of its width,
/// height).
struct Curtain {
    float z, top, bottom;
    float outer;                            ///< x of the edge beside the window
    float innerTop, innerTied, innerBottom; ///< x of the other edge

    bool intersect(const Ray &ray, Hit &hit) const;
    Bounds bounds() const;

private:
    float inner(float y) const;
};

/// A cat that sits and looks away, its tail hanging down towards us; `base` is below its middle.
struct Cat {
    Vec3 base;

    bool intersect(const Ray &ray, Hit &hit) const;
    Bounds bounds() const;

private:
    static float distance(Vec3 p);
};

using Shape = std::variant<Box, Ellipsoid, Cone, Turned, Leaf, Curtain, Cat>;

} // namespace tristop::scene
