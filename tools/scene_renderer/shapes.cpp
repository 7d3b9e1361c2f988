// SPDX-License-Identifier: GPL-3.0-or-later
#include "tools/scene_renderer/shapes.h"

#include <cmath>
#include <numbers>
#include <utility>

namespace tristop::scene {

namespace {

constexpr float kPi = std::numbers::pi_v<float>;

/// Replaces `hit` by one at t if that is in front of the origin and nearer.
bool accept(Hit &hit, float t, Vec3 normal, Vec2 texture) {
    if (!(t > 1e-4f && t < hit.t))
        return false;
    hit = {t, normal, texture};
    return true;
}

/// The stretch of t in which the ray is inside the box, and the axis (0 to 2) of the face by which it enters;
/// -1 when it misses.
int crossing(const Bounds &box, const Ray &ray, Vec2 &span) {
    const Vec3 inverse = Vec3{1, 1, 1} / ray.direction;
    const Vec3 a = (box.low - ray.origin) * inverse, b = (box.high - ray.origin) * inverse;
    const Vec3 enter = {std::min(a.x, b.x), std::min(a.y, b.y), std::min(a.z, b.z)};
    span = {std::max({enter.x, enter.y, enter.z}),
            std::min({std::max(a.x, b.x), std::max(a.y, b.y), std::max(a.z, b.z)})};
    if (!(span.x < span.y))
        return -1;
    return span.x == enter.x ? 0 : span.x == enter.y ? 1 : 2;
}

/// The roots of a x^2 + 2 b x + c, the smaller first; false when there are none.
bool solveQuadratic(float a, float b, float c, std::array<float, 2> &roots) {
    const float discriminant = b * b - a * c;
    if (discriminant < 0 || a == 0)
        return false;
    const float root = std::sqrt(discriminant);
    roots = {(-b - root) / a, (-b + root) / a};
    if (roots[0] > roots[1])
        std::swap(roots[0], roots[1]);
    return true;
}

float capsule(Vec3 p, Vec3 from, Vec3 to, float fromRadius, float toRadius) {
    const Vec3 axis = to - from;
    const float along = saturate(dot(p - from, axis) / dot(axis, axis));
    return length(p - from - axis * along) - mix(fromRadius, toRadius, along);
}

float ellipsoid(Vec3 p, Vec3 radii) {
    const Vec3 scaled = p / radii;
    const float k0 = length(scaled), k1 = length(scaled / radii);
    return k0 * (k0 - 1) / k1;
}

/// Union of two distances, rounded over about `radius` where they meet (polynomial smooth minimum).
float blend(float a, float b, float radius) {
    const float h = std::max(radius - std::abs(a - b), 0.0f) / radius;
    return std::min(a, b) - h * h * radius * 0.25f;
}

} // namespace

bool Box::intersect(const Ray &ray, Hit &hit) const {
    Vec2 span;
    const int axis = crossing({low, high}, ray, span);
    if (axis < 0)
        return false;
    const auto against = [](float direction) { return direction > 0 ? -1.0f : 1.0f; };
    const Vec3 normal = axis == 0   ? Vec3{against(ray.direction.x), 0, 0}
                        : axis == 1 ? Vec3{0, against(ray.direction.y), 0}
                                    : Vec3{0, 0, against(ray.direction.z)};
    return accept(hit, span.x, normal, {});
}

bool Ellipsoid::intersect(const Ray &ray, Hit &hit) const {
    const Vec3 o = (ray.origin - centre) / radii, d = ray.direction / radii;
    std::array<float, 2> roots;
    if (!solveQuadratic(dot(d, d), dot(o, d), dot(o, o) - 1, roots))
        return false;
    const Vec3 unit = o + d * roots[0];
    return accept(hit, roots[0], normalize(unit / radii), {std::atan2(unit.x, -unit.z) / (2 * kPi), unit.y});
}

bool Cone::intersect(const Ray &ray, Hit &hit) const {
    const Vec3 o = ray.origin - base, d = ray.direction;
    const float slope = (topRadius - bottomRadius) / height;
    const float r = bottomRadius + slope * o.y, dr = slope * d.y;
    bool found = false;
    std::array<float, 2> roots;
    if (solveQuadratic(d.x * d.x + d.z * d.z - dr * dr, o.x * d.x + o.z * d.z - r * dr,
                       o.x * o.x + o.z * o.z - r * r, roots)) {
        for (const float t : roots) {
            const Vec3 p = o + d * t;
            if (p.y < 0 || p.y > height)
                continue;
            Vec3 normal = normalize({p.x, -slope * std::sqrt(p.x * p.x + p.z * p.z), p.z});
            if (dot(normal, d) > 0)
                normal = -normal;
            found |= accept(hit, t, normal, {std::atan2(p.x, -p.z) / (2 * kPi), p.y / height});
        }
    }
    if (!openTop && d.y < 0) {
        const float t = (height - o.y) / d.y;
        const Vec3 p = o + d * t;
        if (p.x * p.x + p.z * p.z < topRadius * topRadius)
            found |= accept(hit, t, {0, 1, 0}, {std::atan2(p.x, -p.z) / (2 * kPi), 1});
    }
    return found;
}

Bounds Cone::bounds() const {
    const float r = std::max(bottomRadius, topRadius);
    return {base - Vec3{r, 0, r}, base + Vec3{r, height, r}};
}

float Turned::radius(float share) const {
    // Catmull-Rom spline.
    const float position = saturate(share) * 7;
    const int i = std::min(static_cast<int>(position), 6);
    const float f = position - static_cast<float>(i);
    const auto at = [&](int index) { return radii[static_cast<std::size_t>(std::clamp(index, 0, 7))]; };
    const float a = at(i - 1), b = at(i), c = at(i + 1), d = at(i + 2);
    return b + 0.5f * f * (c - a + f * (2 * a - 5 * b + 4 * c - d + f * (3 * (b - c) + d - a)));
}

bool Turned::intersect(const Ray &ray, Hit &hit) const {
    Vec2 span;
    if (crossing(bounds(), ray, span) < 0 || span.y <= 0 || span.x >= hit.t)
        return false;
    const auto outside = [&](float t) {
        const Vec3 p = ray.at(t) - base;
        return std::sqrt(p.x * p.x + p.z * p.z) - radius(p.y / height);
    };
    constexpr int kSteps = 32;
    float before = std::max(span.x, 0.0f);
    const float step = (span.y - before) / kSteps;
    for (int i = 0; i < kSteps; ++i) {
        const float after = before + step;
        if (outside(after) > 0) {
            before = after;
            continue;
        }
        float low = before, high = after;
        for (int j = 0; j < 10; ++j) {
            const float middle = (low + high) / 2;
            (outside(middle) > 0 ? low : high) = middle;
        }
        const Vec3 p = ray.at(high) - base;
        const float share = p.y / height;
        const float slope = (radius(share + 0.01f) - radius(share - 0.01f)) / (0.02f * height);
        const Vec3 normal = normalize({p.x, -slope * std::sqrt(p.x * p.x + p.z * p.z), p.z});
        return accept(hit, high, normal, {std::atan2(p.x, -p.z) / (2 * kPi), share});
    }
    return false;
}

Bounds Turned::bounds() const {
    const float r = 1.1f * *std::max_element(radii.begin(), radii.end());
    return {base - Vec3{r, 0, r}, base + Vec3{r, height, r}};
}

bool Leaf::intersect(const Ray &ray, Hit &hit) const {
    const float t = (base.z - ray.origin.z) / ray.direction.z;
    const Vec3 p = ray.at(t) - base, axis = tip - base;
    const float lengthSquared = axis.x * axis.x + axis.y * axis.y;
    const float along = (p.x * axis.x + p.y * axis.y) / lengthSquared;
    if (along < 0 || along > 1)
        return false;
    const float length = std::sqrt(lengthSquared);
    // The leaf bends to one side and is broadest below its middle.
    const float across = (p.y * axis.x - p.x * axis.y) / length - 0.12f * length * along * (1 - along);
    const float half = 0.5f * width * std::sin(kPi * std::pow(along, 0.75f));
    if (std::abs(across) > half)
        return false;
    const float share = across / std::max(half, 1e-5f);
    return accept(hit, t, normalize({0.7f * share, 0.5f * (1 - 2 * along), -1}), {along, share});
}

Bounds Leaf::bounds() const {
    const Vec3 margin = {width + 0.1f * length(tip - base), width + 0.1f * length(tip - base), 0.001f};
    return {Vec3{std::min(base.x, tip.x), std::min(base.y, tip.y), base.z} - margin,
            Vec3{std::max(base.x, tip.x), std::max(base.y, tip.y), base.z} + margin};
}

float Curtain::inner(float y) const {
    constexpr float kTieHeight = 0.36f; // share of the curtain's length from its bottom
    const float share = (y - bottom) / (top - bottom);
    if (share < kTieHeight)
        return mix(innerTied, innerBottom, std::sqrt(1 - share / kTieHeight));
    const float above = (share - kTieHeight) / (1 - kTieHeight);
    return mix(innerTied, innerTop, std::pow(above, 0.6f) * (1.25f - 0.25f * above));
}

bool Curtain::intersect(const Ray &ray, Hit &hit) const {
    const float t = (z - ray.origin.z) / ray.direction.z;
    const Vec3 p = ray.at(t);
    if (p.y > top || p.y < bottom + 0.006f * std::sin(p.x * 90))
        return false;
    const float share = (p.x - outer) / (inner(p.y) - outer);
    if (share < 0 || share > 1)
        return false;
    return accept(hit, t, {0, 0, -1}, {share, (p.y - bottom) / (top - bottom)});
}

Bounds Curtain::bounds() const {
    const float reach = 1.1f * std::max({std::abs(innerTop - outer), std::abs(innerTied - outer),
                                         std::abs(innerBottom - outer)});
    return {{outer - reach, bottom - 0.01f, z}, {outer + reach, top, z}};
}

float Cat::distance(Vec3 p) {
    const Vec3 mirrored = {std::abs(p.x - 0.008f), p.y, p.z};
    float d = blend(ellipsoid(p - Vec3{0, 0.105f, 0}, {0.112f, 0.118f, 0.108f}),
                    ellipsoid(p - Vec3{0.004f, 0.22f, 0.02f}, {0.07f, 0.11f, 0.066f}), 0.07f);
    d = blend(d, capsule(mirrored, {0.085f, 0.035f, 0.0f}, {0.09f, 0.03f, 0.08f}, 0.042f, 0.03f), 0.03f);
    d = blend(d, ellipsoid(p - Vec3{0.008f, 0.362f, 0.03f}, {0.078f, 0.063f, 0.066f}), 0.022f);
    d = blend(d, capsule(mirrored, {0.046f, 0.395f, 0.03f}, {0.06f, 0.455f, 0.025f}, 0.026f, 0.004f), 0.014f);
    // The tail: out to the right, over the edge of the sill and down, its end curled up.
    static constexpr std::array<Vec3, 8> kTail = {{{0.07f, 0.022f, -0.07f},
                                                   {0.13f, 0.02f, -0.1f},
                                                   {0.165f, 0.012f, -0.122f},
                                                   {0.183f, -0.03f, -0.136f},
                                                   {0.186f, -0.09f, -0.138f},
                                                   {0.18f, -0.145f, -0.138f},
                                                   {0.187f, -0.185f, -0.14f},
                                                   {0.212f, -0.2f, -0.14f}}};
    constexpr float kTailBlend = 0.03f;
    const Vec3 toTail = {std::max(0.05f - p.x, 0.0f), std::max(p.y - 0.043f, 0.0f),
                         std::max(p.z + 0.05f, 0.0f)};
    if (length(toTail) > d + kTailBlend)
        return d;
    float tail = 1;
    for (std::size_t i = 0; i + 1 < kTail.size(); ++i) {
        const float thickness = 0.021f - 0.0014f * static_cast<float>(i);
        tail = std::min(tail, capsule(p, kTail[i], kTail[i + 1], thickness, thickness - 0.0014f));
    }
    return blend(d, tail, kTailBlend);
}

bool Cat::intersect(const Ray &ray, Hit &hit) const {
    Vec2 span;
    if (crossing(bounds(), ray, span) < 0)
        return false;
    const float stepScale = 0.9f / length(ray.direction);
    float t = std::max(span.x, 0.0f);
    for (int i = 0; i < 60 && t < std::min(span.y, hit.t); ++i) {
        const Vec3 p = ray.at(t) - base;
        const float d = distance(p);
        if (d < 3e-4f && t > 1e-3f) {
            constexpr float kStep = 1e-3f;
            const Vec3 gradient = {distance(p + Vec3{kStep, 0, 0}) - distance(p - Vec3{kStep, 0, 0}),
                                   distance(p + Vec3{0, kStep, 0}) - distance(p - Vec3{0, kStep, 0}),
                                   distance(p + Vec3{0, 0, kStep}) - distance(p - Vec3{0, 0, kStep})};
            return accept(hit, t, normalize(gradient), {p.x, p.y});
        }
        t += std::max(d, 5e-4f) * stepScale; // on even from a start at the very surface
    }
    return false;
}

Bounds Cat::bounds() const {
    return {base + Vec3{-0.14f, -0.23f, -0.165f}, base + Vec3{0.24f, 0.47f, 0.14f}};
}

} // namespace tristop::scene
