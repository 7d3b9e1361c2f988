// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <span>
#include <vector>

#include "tools/scene_renderer/shapes.h"

namespace tristop::scene {

/// The room's walls, its window and where the light comes from, in metres; the camera looks along z from (0,
/// y, 0).
namespace layout {

constexpr float kLeftWall = -2.1f, kRightWall = 2.45f, kCeiling = 2.7f;
constexpr float kBackWall = 4.0f, kGlass = 4.2f, kOutside = 4.32f; // z
constexpr float kWindowLeft = -1.15f, kWindowRight = 0.95f, kWindowBottom = 0.62f, kWindowTop = 2.2f;

/// The glass between the bars of the window.
constexpr std::array<Vec2, 4> kPaneColumns = {
    {{-1.09f, -0.629f}, {-0.607f, -0.145f}, {-0.055f, 0.407f}, {0.429f, 0.89f}}};
constexpr std::array<Vec2, 3> kPaneRows = {{{0.68f, 1.152f}, {1.174f, 1.646f}, {1.668f, 2.14f}}};

constexpr Vec3 kTowardsSun = {-0.173f, 0.743f, 0.646f};
constexpr Vec3 kLampBulb = {1.4f, 1.24f, 3.16f};

} // namespace layout

/// What light falls on.
struct Material {
    Color albedo;
    float gloss = 0;        ///< reflectance at normal incidence
    float roughness = 0;    ///< blur of reflections, metres for each metre of distance
    float translucency = 0; ///< share of the light from behind that shines through
    Color emission;
};

/// Light in the room, at any place and for any orientation of a surface. Values are the radiance that a white
/// surface would show.
class Lighting {
public:
    /// Computes how the light spreads; `blockers` are the things that cast shadows.
    explicit Lighting(std::vector<Shape> blockers);

    /// Light of the window and of everything that it shines on, from all directions.
    Color ambient(Vec3 position, Vec3 normal) const;

    /// Direct sunlight through the window, with the shadows of its bars and of the room's things.
    Color sun(Vec3 position, Vec3 normal) const;

    /// Light of the lamp.
    Color lamp(Vec3 position, Vec3 normal) const;

    /// What a smooth surface at `position` shows in the mirrored direction; larger roughness blurs it.
    Color mirrored(Vec3 position, Vec3 direction, float roughness) const;

    /// Share of the window's glass, 0 to 1, around a place in the plane of the window.
    static float glass(float x, float y, float blur);

    /// Radiance of the view outside, averaged around an elevation (rise over distance).
    static Color outside(float elevation);

private:
    struct Source {
        Vec3 position, normal;
        Color power;
        float area;
    };
    using Probe =
        std::array<Color, 6>; // light on surfaces facing right, left, up, down, away from and to the camera

    std::vector<Source> windowSources() const;
    std::vector<Source> sunnySpots() const;
    std::vector<Source> wallPatches(std::span<const Source> sources) const;
    bool blocked(Vec3 from, Vec3 to) const;
    Color received(Vec3 position, Vec3 normal, std::span<const Source> sources) const;
    Probe probe(Vec3 position, std::span<const Source> sources) const;

    std::vector<Shape> blockers;
    std::vector<Probe> probes;
};

} // namespace tristop::scene
