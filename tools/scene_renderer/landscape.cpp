// SPDX-License-Identifier: GPL-3.0-or-later
#include "tools/scene_renderer/landscape.h"

#include <array>
#include <cmath>

namespace tristop::scene {

namespace {

constexpr float kFarShore = -0.006f;
constexpr float kEyeAboveLawn = 1.9f; // metres
constexpr int kLeafLayers = 5;
constexpr Color kHaze = {1.05f, 1.22f, 1.45f};

/// A picket, pane or tile of a row: 1 inside, 0 in the gap of relative width `gap`.
float slats(float x, float gap) {
    return smoothStep(gap * 0.5f, gap, triangle(x));
}

} // namespace

Color Landscape::radiance(float right, float up, float footprint) const {
    const float bedTop = -0.172f + 0.02f * noise.fractal(right * 30, 3.1f, 5, footprint * 30) -
                         0.014f * noise.gradient(right * 9, 40);
    if (up < bedTop)
        return flowerBed(right, up, bedTop, footprint);

    Color color;
    if (tree(right, up, footprint, color) || house(right, up, footprint, color) || boat(right, up, color))
        return color;

    const float shore = -0.052f + 0.012f * noise.gradient(right * 6, 11) + 0.03f * right;
    if (up < shore + 0.0025f * noise.fractal(right * 300, 0.5f, 3, footprint * 300))
        return lawn(right, up, footprint);
    if (up < kFarShore)
        return lake(right, up, footprint);

    const float forestRidge = 0.012f + 0.022f * noise.gradient(right * 5 + 3, 21) - 0.06f * right +
                              0.0035f * noise.fractal(right * 160, 8.7f, 4, footprint * 160);
    if (up < forestRidge)
        return forest(right, up, forestRidge, footprint);
    const float mountainRidge = 0.056f + 0.085f * noise.fractal(right * 6 + 1.7f, 31, 7, footprint * 6);
    if (up < mountainRidge)
        return mountains(right, up, mountainRidge, footprint);
    return sky(right, up, footprint);
}

Color Landscape::sky(float right, float up, float footprint) const {
    const float height = saturate(up / 0.26f);
    const Color clear = mix(Color{1.35f, 1.62f, 1.85f}, Color{0.36f, 0.68f, 1.32f}, std::sqrt(height));
    const float density = cloudDensity(right, up, 6, footprint);
    const float cover = smoothStep(0.0f, 0.22f, density);
    if (cover == 0)
        return clear;
    // The sun stands up and to the left: what lies that way shades the cloud.
    const float shading = cloudDensity(right - 0.006f, up + 0.009f, 5, footprint);
    const float lit = saturate(0.66f + 1.2f * (density - shading) - 0.3f * saturate(density - 0.3f) +
                               0.2f * noise.fractal(right * 60, up * 60, 3, footprint * 60));
    return mix(clear, mix(Color{1.2f, 1.38f, 1.66f}, Color{5.2f, 5.0f, 4.7f}, lit * lit), cover);
}

float Landscape::cloudDensity(float right, float up, int octaves, float footprint) const {
    struct Cumulus {
        float right, base, width, height;
    };
    static constexpr std::array<Cumulus, 5> kClouds = {{{-0.12f, 0.118f, 0.1f, 0.075f},
                                                        {0.06f, 0.145f, 0.075f, 0.05f},
                                                        {0.17f, 0.098f, 0.07f, 0.05f},
                                                        {-0.26f, 0.085f, 0.07f, 0.04f},
                                                        {0.005f, 0.078f, 0.055f, 0.018f}}};
    float heap = -1;
    for (const Cumulus &cloud : kClouds) {
        const float drift = 0.02f * noise.cell(static_cast<int>(1000 * cloud.width), 5) - 0.01f;
        const float x = (right - cloud.right - drift) / cloud.width, y = (up - cloud.base) / cloud.height;
        heap = std::max(heap, 1 - x * x - (y > 0 ? y * y : 14 * y * y));
    }
    if (heap < -0.95f)
        return -1;
    const float wisps = noise.fractal(right * 16, up * 40, 5, footprint * 40);
    return 0.75f * heap + 0.85f * noise.billows(right * 24, up * 28, octaves, footprint * 28) + 0.25f * wisps;
}

Color Landscape::mountains(float right, float up, float ridge, float footprint) const {
    const float crags = noise.fractal(right * 40 + up * 25, up * 55, 6, footprint * 60);
    const float slope = noise.fractal(right * 13 - up * 9, up * 9, 5, footprint * 14);
    const float sun = smoothStep(-0.15f, 0.25f, slope + 0.5f * crags);
    Color rock = mix(Color{0.2f, 0.29f, 0.46f}, Color{0.78f, 0.74f, 0.72f}, sun);
    const float snow =
        smoothStep(0.058f, 0.068f, up + 0.03f * crags) * smoothStep(-0.002f, 0.002f, ridge - up);
    rock = mix(rock, mix(Color{0.8f, 1.0f, 1.4f}, Color{2.7f, 2.6f, 2.45f}, sun), snow);
    return mix(kHaze, rock, 0.5f + 0.45f * saturate(up / 0.07f));
}

Color Landscape::forest(float right, float up, float ridge, float footprint) const {
    const float crowns = noise.fractal(right * 170, up * 230, 4, footprint * 230);
    const float fields = noise.gradient(right * 14, up * 50 + 3);
    const float sun = smoothStep(-0.3f, 0.45f, crowns + 0.25f * noise.gradient(right * 21, up * 40));
    Color green = mix(Color{0.05f, 0.11f, 0.07f}, Color{0.34f, 0.46f, 0.15f}, sun);
    const Color meadow = mix(Color{0.55f, 0.72f, 0.22f}, Color{0.8f, 0.74f, 0.32f},
                             smoothStep(-0.2f, 0.3f, noise.gradient(right * 9, 55)));
    green = mix(green, meadow * (0.85f + 0.3f * crowns),
                smoothStep(0.22f, 0.3f, fields) * smoothStep(0.002f, 0.008f, ridge - up));
    return mix(green, kHaze, 0.16f + 0.12f * saturate(up / 0.05f));
}

Color Landscape::lake(float right, float up, float footprint) const {
    const float distance = 1 / -up; // in eye heights above the water
    const float x = right * distance, size = footprint * distance * 8;
    const float waves =
        noise.fractal(x * 6, distance * 1.3f, 4, size) + 0.6f * noise.gradient(right * 7, up * 90);
    // Near the far shore the water mirrors the dark hills, nearer to us more and more sky.
    const float mirrored = up - kFarShore + 0.004f * waves;
    Color color =
        mix(Color{0.24f, 0.42f, 0.46f}, Color{0.62f, 0.98f, 1.3f}, smoothStep(-0.008f, -0.04f, mirrored));
    color *= 1 + 0.35f * waves;
    const float path = (right + 0.165f - 0.3f * up) / (0.016f - 0.7f * (up - kFarShore));
    const float sparkle = noise.fractal(x * 14, distance * 4.5f, 2, footprint * distance * 14) + 0.3f * waves;
    const float glitter = std::exp(-path * path) * smoothStep(0.12f, 0.34f, sparkle);
    return color + Color{34, 31, 25} * glitter + Color{1.3f, 1.2f, 1} * (0.8f * std::exp(-path * path));
}

Color Landscape::lawn(float right, float up, float footprint) const {
    const float z = kEyeAboveLawn / -up, x = right * z;
    const float size = footprint * z * 2; // nearer to the length of a pixel on the ground than to its width
    const float blades = noise.fractal(right * 330, up * 140, 4, footprint * 330);
    const float tufts = noise.fractal(x * 1.1f, z * 0.8f, 4, size);
    const float mown = 0.1f * (smoothStep(0.4f, 0.6f, triangle((x + z * 0.25f) * 0.42f)) - 0.5f);
    Color color = mix(Color{0.26f, 0.42f, 0.09f}, Color{0.62f, 0.84f, 0.22f},
                      saturate(0.5f + 0.75f * blades + 0.5f * tufts + mown));
    const float path = x + 1.0f - 0.16f * (z - 8) - 0.9f * std::sin(z * 0.22f);
    const float gravel = softBox(-0.55f, 0.55f, 0.08f, path + 0.12f * blades);
    color =
        mix(color, Color{1.35f, 1.22f, 1.0f} * (0.95f + 0.5f * noise.fractal(x * 14, z * 9, 3, size * 14)),
            gravel);
    // Wild flowers: one to a cell of the ground, thick in places, each a disc that faces us.
    const float fx = x * 3.4f, fz = z * 1.1f;
    const int column = floorToInt(fx), row = floorToInt(fz);
    const float draw = noise.cell(column, row);
    const float meadow = 0.45f * smoothStep(-0.05f, 0.35f, noise.gradient(x * 0.35f, z * 0.25f));
    if (draw < meadow && gravel < 0.5f) {
        const float flowerX = (static_cast<float>(column) + 0.3f + 0.4f * fraction(draw * 57)) / 3.4f;
        const float flowerZ = (static_cast<float>(row) + 0.5f) / 1.1f;
        const float dx = right * flowerZ - flowerX, dy = up * flowerZ + kEyeAboveLawn;
        const float petal = smoothStep(0.07f, 0.045f, std::sqrt(dx * dx + dy * dy));
        const float kind = fraction(draw * 331);
        const Color bloom = kind < 0.45f   ? Color{1.5f, 0.16f, 0.1f}
                            : kind < 0.75f ? Color{1.7f, 1.65f, 1.5f}
                                           : Color{1.6f, 1.2f, 0.15f};
        color = mix(color, bloom, petal);
    }
    // Shade of trees beside the house, broken by the sun through the leaves.
    const float shade = smoothStep(
        0.1f, 0.5f, noise.fractal(x * 0.22f + 4, z * 0.3f, 5, size * 0.3f) + 0.25f * smoothStep(0, 3, x));
    return color * (1 - 0.6f * shade) * (1 + 0.25f * saturate(0.06f + up) * 10);
}

Color Landscape::flowerBed(float right, float up, float top, float footprint) const {
    const float leaves = noise.fractal(right * 70, up * 70, 5, footprint * 70);
    const float depth = saturate((top - up) / 0.05f);
    Color color = mix(Color{0.04f, 0.09f, 0.03f}, Color{0.42f, 0.62f, 0.17f},
                      saturate(0.55f + 1.3f * leaves - 0.5f * depth));
    const float gx = right * 62 + 0.8f * leaves, gy = up * 62;
    const int column = floorToInt(gx), row = floorToInt(gy);
    const float draw = noise.cell(column + 700, row);
    if (draw < 0.3f) {
        const float dx = gx - static_cast<float>(column) - 0.5f, dy = gy - static_cast<float>(row) - 0.5f;
        const float radius = std::sqrt(dx * dx + dy * dy);
        const float petals = 0.9f + 0.3f * std::sin(radius * 24);
        const Color rose = mix(Color{1.5f, 0.28f, 0.42f}, Color{1.7f, 1.15f, 1.1f}, fraction(draw * 97));
        color = mix(color, rose * petals, smoothStep(0.46f, 0.36f, radius));
    }
    return color;
}

bool Landscape::boat(float right, float up, Color &color) const {
    const float x = (right + 0.062f) / 0.028f, y = (up + 0.02f) / 0.028f;
    if (x < -1 || x > 1 || y < -0.7f || y > 2.4f)
        return false;
    if (y < 0) { // a broken reflection of the sail
        const float wobble = 0.12f * std::sin(y * 60);
        if (std::abs(x - 0.05f + wobble) > 0.3f * (1 + y * 1.3f))
            return false;
        color = {1.5f, 1.65f, 1.75f};
        return y > -0.6f;
    }
    if (y < 0.2f) {
        const float half = 0.55f + 0.9f * y;
        color = mix(Color{0.5f, 0.08f, 0.06f}, Color{1.3f, 0.3f, 0.2f}, smoothStep(0.3f, -0.4f, x));
        return x > -half && x < half + 0.15f;
    }
    const float sail = (2.3f - y) / 2;
    if (y > 0.27f && x > 0.03f && x < 0.03f + 0.62f * sail + 0.06f * std::sin(y * 2)) {
        color = mix(Color{3.6f, 3.5f, 3.3f}, Color{2.2f, 2.3f, 2.5f}, x * 1.6f);
        return true;
    }
    if (y > 0.3f && x < -0.03f && x > -0.45f * (sail - 0.08f)) {
        color = {4.2f, 4.0f, 3.7f};
        return true;
    }
    color = {0.3f, 0.2f, 0.12f};
    return std::abs(x) < 0.025f && y < 2.35f;
}

bool Landscape::house(float right, float up, float footprint, Color &color) const {
    // A long house seen from its eaves side, in metres along the front (x) and up (y).
    constexpr float kScale = 0.0115f, kWidth = 12, kEaves = 4.0f, kRidge = 7.6f;
    const float x = (right - 0.066f) / kScale, y = (up + 0.052f) / kScale;
    const float size = footprint / kScale;
    if (x < -0.6f || x > kWidth + 0.6f || y < -0.5f || y > 9.6f)
        return false;
    if (y > kEaves - 0.15f) {
        if (x > 2.2f && x < 3.3f && y > 5.8f && y < 9.1f) { // the chimney, brick by brick
            const float row = std::floor(y * 6);
            const float joint = std::min(slats(y * 6, 0.3f), slats(x * 2.2f + 0.5f * row, 0.12f));
            const Color brick =
                Color{0.72f, 0.3f, 0.2f} *
                (0.75f + 0.5f * noise.cell(static_cast<int>(x * 2.2f + 0.5f * row), static_cast<int>(row)));
            color = mix(Color{0.75f, 0.7f, 0.65f}, brick, joint) * (x < 2.6f ? 1.4f : 0.75f);
            if (y > 8.85f)
                color = {0.9f, 0.85f, 0.8f};
            return true;
        }
        const float lean = (y - kEaves + 0.15f) * 0.22f;
        if (x < -0.5f + lean || x > kWidth + 0.5f - lean || y > kRidge)
            return false;
        if (y < kEaves) {
            color = {0.95f, 0.92f, 0.85f};
            return true;
        }
        const float row = (y - kEaves) * 3.4f, offset = 0.5f * std::floor(row);
        const float tile = x * 2.6f + offset;
        const float curve = 0.7f + 0.45f * std::sin(fraction(tile) * 3.1416f);
        const float lap = 0.55f + 0.45f * smoothStep(0.0f, 0.4f, fraction(row));
        const float tone = 0.8f + 0.4f * noise.cell(floorToInt(tile), static_cast<int>(row));
        const float detail = saturate(1.4f - size * 2.6f);
        color = Color{1.35f, 0.5f, 0.27f} * mix(0.75f, curve * lap * tone, detail) *
                (1 + 0.4f * noise.fractal(x, y * 2, 4, size * 2));
        return true;
    }
    if (x < 0 || x > kWidth)
        return false;
    const float grain = noise.fractal(x * 3, y * 3, 5, size * 3);
    color = Color{1.85f, 1.66f, 1.3f} * (1 + 0.16f * grain);
    color *=
        mix(1.0f, 0.45f, smoothStep(kEaves - 0.9f, kEaves - 0.35f, y - 0.08f * grain)); // shadow of the eaves
    const float bay = fraction(x / 2.4f) * 2.4f - 1.2f;
    const bool door = x > 4.8f && x < 7.2f;
    const float sillHeight = door ? 0.0f : 1.15f;
    if (std::abs(bay) < 0.5f && y > sillHeight && y < 2.9f) {
        if (std::abs(bay) > 0.42f || y > 2.82f || y < sillHeight + 0.06f)
            color = {1.9f, 1.85f, 1.75f};
        else if (door)
            color = Color{0.16f, 0.34f, 0.42f} * (0.7f + 0.6f * slats(bay * 5, 0.3f));
        else if (std::abs(bay) < 0.03f || std::abs(y - 2.1f) < 0.04f)
            color = {1.6f, 1.55f, 1.45f};
        else
            color = mix(Color{0.1f, 0.13f, 0.17f}, Color{0.95f, 1.15f, 1.4f},
                        smoothStep(1.2f, 3.2f, y + bay + 0.4f * grain));
    } else if (!door && std::abs(bay) < 0.98f && y > 1.15f && y < 2.9f) {
        color = Color{0.2f, 0.42f, 0.3f} * (0.7f + 0.6f * slats(y * 5, 0.5f)); // shutters
    }
    const float ivy =
        noise.fractal(x * 2.2f, y * 2.2f, 5, size * 2) + 0.22f * (1.6f - std::abs(x - 11.2f)) - 0.06f * y;
    if (ivy > 0.08f)
        color = mix(Color{0.08f, 0.17f, 0.05f}, Color{0.42f, 0.62f, 0.18f},
                    smoothStep(0.05f, 0.5f, ivy + 0.5f * grain));
    const float hedge = 0.55f + 0.35f * noise.fractal(x * 2, 77, 4, size * 2);
    if (y < hedge && !door)
        color = mix(Color{0.05f, 0.12f, 0.04f}, Color{0.36f, 0.55f, 0.14f},
                    saturate(0.4f + grain + 0.5f * (y / hedge)));
    return y > -0.35f;
}

bool Landscape::tree(float right, float up, float footprint, Color &color) const {
    // An oak behind the house's right end, and a bough that hangs into the view from the upper left.
    const float x = (right - 0.222f) / 0.085f, y = (up - 0.085f) / 0.085f;
    const float bx = (right + 0.2f) / 0.13f, by = (up - 0.172f) / 0.055f;
    const float oak = 1 - (x * x + y * y * 1.1f),
                bough = 0.75f - (bx * bx * 0.8f + by * by * (0.7f + 0.5f * bx));
    const float nearest = std::max(oak, bough);
    if (nearest < -0.9f) {
        const bool trunk = std::abs(right - 0.222f) < 0.009f && up < 0.04f && up > -0.05f;
        color = {0.22f, 0.17f, 0.12f};
        return trunk;
    }
    const bool near = bough > oak;
    const float scale = near ? 62.0f : 150.0f;
    const float clumps = noise.fractal(right * scale * 0.3f, up * scale * 0.3f, 3, footprint * scale);
    const float density = 1.2f * nearest + 1.3f * clumps;
    // Layers of leaves, the front one first; light comes from the upper left.
    for (int layer = kLeafLayers - 1; layer >= 0; --layer) {
        float tone;
        if (!leaf(right * scale, up * scale,
                  density + 0.15f * static_cast<float>(kLeafLayers - layer) - 0.55f, layer, tone))
            continue;
        const float ahead =
            noise.fractal(right * scale * 0.3f - 0.25f, up * scale * 0.3f + 0.3f, 3, footprint * scale);
        const float lit = saturate(0.1f + 0.13f * static_cast<float>(layer) + 1.6f * (clumps - ahead) +
                                   0.5f * (tone - 0.5f));
        const Color shade = near ? Color{0.05f, 0.1f, 0.02f} : Color{0.06f, 0.13f, 0.06f};
        color = mix(shade, near ? Color{0.75f, 0.98f, 0.2f} : Color{0.6f, 0.78f, 0.24f}, lit);
        return true;
    }
    return false;
}

bool Landscape::leaf(float x, float y, float density, int layer, float &tone) const {
    const float turn = 0.9f * static_cast<float>(layer);
    const float gx = 1.35f * (x * std::cos(turn) - y * std::sin(turn)) + turn;
    const float gy = 1.35f * (x * std::sin(turn) + y * std::cos(turn));
    const int column = floorToInt(gx), row = floorToInt(gy);
    const float draw = noise.cell(column, row + 977 * layer);
    if (density < 0.5f * draw)
        return false;
    const float angle = 6.2832f * fraction(draw * 53);
    const float dx = gx - static_cast<float>(column) - mix(0.35f, 0.65f, fraction(draw * 29));
    const float dy = gy - static_cast<float>(row) - mix(0.35f, 0.65f, fraction(draw * 83));
    const float along = dx * std::cos(angle) + dy * std::sin(angle),
                across = dy * std::cos(angle) - dx * std::sin(angle);
    tone = fraction(draw * 211) + (across > 0 ? 0.15f : -0.15f);
    return along * along * 3.4f + across * across * 11 < 1;
}

} // namespace tristop::scene
