// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <algorithm>
#include <cmath>

namespace tristop::scene {

/// Three floats: a place or direction in the room (metres; x right, y up, z away from the camera) or a linear
/// colour (red, green, blue).
struct Vec3 {
    float x = 0, y = 0, z = 0;
};
using Color = Vec3;

struct Vec2 {
    float x = 0, y = 0;
};

constexpr Vec3 operator+(Vec3 a, Vec3 b) {
    return {a.x + b.x, a.y + b.y, a.z + b.z};
}
constexpr Vec3 operator-(Vec3 a, Vec3 b) {
    return {a.x - b.x, a.y - b.y, a.z - b.z};
}
constexpr Vec3 operator-(Vec3 a) {
    return {-a.x, -a.y, -a.z};
}
constexpr Vec3 operator*(Vec3 a, Vec3 b) {
    return {a.x * b.x, a.y * b.y, a.z * b.z};
}
constexpr Vec3 operator*(Vec3 a, float s) {
    return {a.x * s, a.y * s, a.z * s};
}
constexpr Vec3 operator*(float s, Vec3 a) {
    return a * s;
}
constexpr Vec3 operator/(Vec3 a, Vec3 b) {
    return {a.x / b.x, a.y / b.y, a.z / b.z};
}
constexpr Vec3 &operator+=(Vec3 &a, Vec3 b) {
    return a = a + b;
}
constexpr Vec3 &operator*=(Vec3 &a, float s) {
    return a = a * s;
}

constexpr float dot(Vec3 a, Vec3 b) {
    return a.x * b.x + a.y * b.y + a.z * b.z;
}
inline float length(Vec3 a) {
    return std::sqrt(dot(a, a));
}
inline Vec3 normalize(Vec3 a) {
    return a * (1.0f / std::sqrt(dot(a, a)));
}
constexpr Vec3 reflect(Vec3 direction, Vec3 normal) {
    return direction - normal * (2 * dot(direction, normal));
}
constexpr float luminance(Color c) {
    return 0.2126f * c.x + 0.7152f * c.y + 0.0722f * c.z;
}

constexpr float mix(float a, float b, float t) {
    return a + (b - a) * t;
}
constexpr Vec3 mix(Vec3 a, Vec3 b, float t) {
    return a + (b - a) * t;
}
constexpr float saturate(float x) {
    return x < 0 ? 0 : x > 1 ? 1 : x;
}

/// 0 below `from`, 1 above `to`, smooth between; `from` may be the larger one.
constexpr float smoothStep(float from, float to, float x) {
    const float t = saturate((x - from) / (to - from));
    return t * t * (3 - 2 * t);
}

/// 1 between `from` and `to`, 0 outside, with edges `blur` wide.
constexpr float softBox(float from, float to, float blur, float x) {
    return smoothStep(from - blur, from + blur, x) * smoothStep(to + blur, to - blur, x);
}

/// The largest whole number not above x. Much cheaper than std::floor on processors without a rounding
/// instruction.
constexpr int floorToInt(float x) {
    const int truncated = static_cast<int>(x);
    return truncated - (x < static_cast<float>(truncated) ? 1 : 0);
}

constexpr float fraction(float x) {
    return x - static_cast<float>(floorToInt(x));
}

/// A triangle wave of period 1: 0 at whole numbers, 1 half way.
inline float triangle(float x) {
    return 1 - std::abs(2 * fraction(x) - 1);
}

} // namespace tristop::scene
