// SPDX-License-Identifier: GPL-3.0-or-later
#include "tools/scene_renderer/balloons.h"

#include <cmath>
#include <numbers>

#include "tools/scene_renderer/perspective.h"

namespace tristop::scene {

namespace {

constexpr float kPi = std::numbers::pi_v<float>;
constexpr float kHeightToWidth = 1.16f;

struct Kind {
    Vec2 place;     // its usual place in the picture
    float size;     // relative to the others
    float distance; // from the eye, in metres
    Color color;
};

constexpr std::array<Kind, 4> kKinds = {{{{-0.172f, -0.034f}, 1, 3.6f, {0.62f, 0.035f, 0.03f}},
                                         {{0.1f, -0.1f}, 0.85f, 3.5f, {0.05f, 0.22f, 0.5f}},
                                         {{0.32f, 0.06f}, 0.9f, 2.2f, {0.7f, 0.42f, 0.03f}},
                                         {{-0.36f, 0.12f}, 0.8f, 2.4f, {0.1f, 0.36f, 0.12f}}}};

/// Length of the string that hangs from the knot, in metres.
constexpr float kStringLength = 0.14f;

/// The string's place at a depth below the knot, both in metres.
float stringSway(float depth) {
    return 0.012f * std::sin(depth * 9) + 0.02f * std::sin(depth * 3.1f);
}

bool inside(Vec2 low, Vec2 high, Vec2 p) {
    return p.x > low.x && p.x < high.x && p.y > low.y && p.y < high.y;
}

} // namespace

Balloons::Balloons(int count, double area, Position offset) {
    float squares = 0;
    for (int i = 0; i < count; ++i)
        squares += kKinds[static_cast<std::size_t>(i)].size * kKinds[static_cast<std::size_t>(i)].size;
    const float unit = std::sqrt(static_cast<float>(area) / (kPi * kHeightToWidth * squares));
    for (int i = 0; i < count; ++i) {
        const Kind &kind = kKinds[static_cast<std::size_t>(i)];
        const float seen = unit * kind.size; // radius in the picture
        // As far away as usual, but clear of the window.
        const float scale = perspective::kWidth * seen;
        const float distance = std::min(kind.distance, 3.85f / (1 + scale));
        const float radius = scale * distance;
        const Vec3 direction = perspective::direction(
            {kind.place.x + static_cast<float>(offset.x), kind.place.y + static_cast<float>(offset.y)});
        const Vec3 centre = perspective::kEye + direction * distance;
        const float knotHeight = 0.14f * radius;
        Balloon balloon = {.body = {centre, {radius, radius * kHeightToWidth, radius}},
                           .knot = {centre - Vec3{0, kHeightToWidth * radius + 0.6f * knotHeight, 0},
                                    0.11f * radius, 0.05f * radius, knotHeight, false},
                           .color = kind.color,
                           .bodyLow = {},
                           .bodyHigh = {},
                           .shadowLow = {},
                           .shadowHigh = {}};
        const float margin = 1.2f * seen;
        const Vec2 middle = perspective::project(centre);
        balloon.bodyLow = {middle.x - margin - 0.012f, middle.y - margin * kHeightToWidth};
        balloon.bodyHigh = {middle.x + margin + 0.012f, 0.8f}; // with the string
        // The shadow falls along the sun's rays down to the floor, over anything in between.
        const Vec3 shadow = centre - layout::kTowardsSun * ((centre.y + radius) / layout::kTowardsSun.y);
        const Vec2 end = perspective::project({shadow.x, 0, std::max(shadow.z, 1.0f)});
        const float reach = 1.5f * radius / (perspective::kWidth * std::max(shadow.z, 1.0f));
        balloon.shadowLow = {std::min(middle.x - margin, end.x - reach),
                             std::min(middle.y - margin, end.y - reach)};
        balloon.shadowHigh = {std::max(middle.x + margin, end.x + reach),
                              std::max(middle.y + margin, end.y + reach)};
        balloons.push_back(balloon);
    }
}

bool Balloons::intersect(const Ray &ray, Vec2 place, Hit &hit, Material &material) const {
    bool found = false;
    for (const Balloon &balloon : balloons) {
        if (!inside(balloon.bodyLow, balloon.bodyHigh, place))
            continue;
        if (balloon.body.intersect(ray, hit)) {
            found = true;
            // White dots in rows around the balloon, every other row half a step on.
            const float row = hit.texture.y * 4.6f + 0.5f;
            const float turn = hit.texture.x * 12 + 0.5f * std::floor(row);
            const float ring = std::sqrt(std::max(1 - hit.texture.y * hit.texture.y, 0.0f));
            const float dx = (fraction(turn) - 0.5f) * ring * 2 * kPi / 12,
                        dy = (fraction(row) - 0.5f) / 4.6f;
            const float dot = smoothStep(0.066f, 0.058f, std::sqrt(dx * dx + dy * dy));
            material = {.albedo = mix(balloon.color, Color{0.75f, 0.72f, 0.66f}, dot),
                        .gloss = 0.045f,
                        .roughness = 0.008f,
                        .translucency = 0.55f,
                        .emission = {}};
        } else if (balloon.knot.intersect(ray, hit)) {
            found = true;
            material = {.albedo = balloon.color,
                        .gloss = 0.03f,
                        .roughness = 0.1f,
                        .translucency = 0.2f,
                        .emission = {}};
        } else {
            const float t = (balloon.knot.base.z - ray.origin.z) / ray.direction.z;
            const Vec3 p = ray.at(t) - balloon.knot.base;
            if (t < hit.t && p.y < 0 && p.y > -kStringLength && std::abs(p.x - stringSway(-p.y)) < 0.0016f) {
                found = true;
                hit = {t, {0, 0, -1}, {}};
                material = {.albedo = {0.7f, 0.68f, 0.62f},
                            .gloss = 0,
                            .roughness = 0,
                            .translucency = 0.4f,
                            .emission = {}};
            }
        }
    }
    return found;
}

float Balloons::sunlight(Vec3 position) const {
    float light = 1;
    for (const Balloon &balloon : balloons) {
        const Vec3 path = balloon.body.centre - position;
        const float along = dot(path, layout::kTowardsSun);
        const float radius = balloon.body.radii.x * 1.07f;
        if (along <= 0.5f * radius)
            continue;
        const float miss = length(path - layout::kTowardsSun * along);
        const float penumbra = 0.004f + 0.005f * along;
        light *= 0.12f + 0.88f * smoothStep(radius - penumbra, radius + penumbra, miss);
    }
    return light;
}

bool Balloons::mayTouch(Vec2 place) const {
    for (const Balloon &balloon : balloons)
        if (inside(balloon.bodyLow, balloon.bodyHigh, place) ||
            inside(balloon.shadowLow, balloon.shadowHigh, place))
            return true;
    return false;
}

} // namespace tristop::scene
