// SPDX-License-Identifier: GPL-3.0-or-later
#include "tools/scene_renderer/lighting.h"

#include <cmath>
#include <numbers>
#include <utility>

#include "tools/scene_renderer/parallel.h"

namespace tristop::scene {

using namespace layout;

namespace {

constexpr float kPi = std::numbers::pi_v<float>;
constexpr Color kSunlight = {4.4f, 4.0f, 3.4f};
constexpr Color kLamplight = {0.4f, 0.245f, 0.105f};

// The probes stand in a lattice over the part of the room that the camera sees.
constexpr int kColumns = 32, kRows = 19, kLayers = 21;
constexpr Vec3 kLatticeLow = {kLeftWall + 0.01f, 0.01f, 1.0f},
               kLatticeHigh = {kRightWall - 0.01f, kCeiling - 0.01f, kBackWall - 0.01f};
constexpr Vec3 kLatticeStep = (kLatticeHigh - kLatticeLow) / Vec3{kColumns - 1, kRows - 1, kLayers - 1};

constexpr Color kFloorAlbedo = {0.3f, 0.2f, 0.12f}, kWallAlbedo = {0.34f, 0.36f, 0.32f},
                kCeilingAlbedo = {0.7f, 0.68f, 0.62f};

constexpr std::array<Vec3, 6> kAxes = {{{1, 0, 0}, {-1, 0, 0}, {0, 1, 0}, {0, -1, 0}, {0, 0, 1}, {0, 0, -1}}};

std::size_t probeIndex(int column, int row, int layer) {
    return static_cast<std::size_t>((layer * kRows + row) * kColumns + column);
}

bool meets(const Shape &shape, const Ray &ray, float limit) {
    Hit hit;
    hit.t = limit;
    return std::visit([&](const auto &s) { return s.intersect(ray, hit); }, shape);
}

} // namespace

Lighting::Lighting(std::vector<Shape> blockers) : blockers(std::move(blockers)) {
    // Instant radiosity (Keller 1997): the window, the sunny spots and the walls that they light become small
    // sources; an irradiance volume (Greger et al. 1998) holds their sum.
    std::vector<Source> sources = windowSources();
    const std::vector<Source> spots = sunnySpots();
    sources.insert(sources.end(), spots.begin(), spots.end());
    const std::vector<Source> patches = wallPatches(sources);
    sources.insert(sources.end(), patches.begin(), patches.end());

    probes.resize(probeIndex(0, 0, kLayers));
    parallelFor(kLayers, 0, [&](int layer) {
        for (int row = 0; row < kRows; ++row)
            for (int column = 0; column < kColumns; ++column) {
                const Vec3 steps = {static_cast<float>(column), static_cast<float>(row),
                                    static_cast<float>(layer)};
                probes[probeIndex(column, row, layer)] = probe(kLatticeLow + steps * kLatticeStep, sources);
            }
    });
}

Color Lighting::outside(float elevation) {
    const Color ground =
        mix(Color{0.5f, 0.62f, 0.3f}, Color{0.7f, 0.95f, 1.1f}, smoothStep(-0.12f, -0.03f, elevation));
    const Color sky = mix(Color{1.8f, 2.0f, 2.2f}, Color{1.1f, 1.4f, 1.9f}, saturate(elevation));
    return mix(ground, sky, smoothStep(-0.03f, 0.07f, elevation));
}

float Lighting::glass(float x, float y, float blur) {
    float columns = 0, rows = 0;
    for (const Vec2 &column : kPaneColumns)
        columns += softBox(column.x, column.y, blur, x);
    for (const Vec2 &row : kPaneRows)
        rows += softBox(row.x, row.y, blur, y);
    return std::min(columns, 1.0f) * std::min(rows, 1.0f);
}

std::vector<Lighting::Source> Lighting::windowSources() const {
    std::vector<Source> sources;
    constexpr int kAcross = 6, kUp = 5;
    const float width = (kWindowRight - kWindowLeft) / kAcross, height = (kWindowTop - kWindowBottom) / kUp;
    for (int j = 0; j < kUp; ++j)
        for (int i = 0; i < kAcross; ++i)
            sources.push_back({{kWindowLeft + (static_cast<float>(i) + 0.5f) * width,
                                kWindowBottom + (static_cast<float>(j) + 0.5f) * height, kBackWall + 0.08f},
                               {0, 0, -1},
                               {}, // the view differs by direction; see received()
                               width * height * 0.85f});
    return sources;
}

std::vector<Lighting::Source> Lighting::sunnySpots() const {
    std::vector<Source> spots;
    constexpr int kAcross = 8, kUp = 8;
    const float width = (kWindowRight - kWindowLeft) / kAcross, height = (kWindowTop - kWindowBottom) / kUp;
    const float area = width * height * kTowardsSun.z * 0.8f;
    for (int j = 0; j < kUp; ++j)
        for (int i = 0; i < kAcross; ++i) {
            const Ray beam = {{kWindowLeft + (static_cast<float>(i) + 0.5f) * width,
                               kWindowBottom + (static_cast<float>(j) + 0.5f) * height, kGlass},
                              -kTowardsSun};
            Hit hit;
            hit.t = -beam.origin.y / beam.direction.y;
            hit.normal = {0, 1, 0};
            for (const Shape &blocker : blockers)
                std::visit([&](const auto &s) { s.intersect(beam, hit); }, blocker);
            spots.push_back(
                {beam.at(hit.t) + hit.normal * 0.01f, hit.normal, kSunlight * kFloorAlbedo * area, area});
        }
    return spots;
}

bool Lighting::blocked(Vec3 from, Vec3 to) const {
    const Ray ray = {from, to - from};
    for (const Shape &blocker : blockers)
        if (meets(blocker, ray, 0.98f))
            return true;
    return false;
}

Color Lighting::received(Vec3 position, Vec3 normal, std::span<const Source> sources) const {
    Color sum;
    for (const Source &source : sources) {
        const Vec3 path = source.position - position;
        const float distanceSquared = dot(path, path);
        const Vec3 direction = path * (1 / std::sqrt(distanceSquared));
        const float leaving = -dot(source.normal, direction), arriving = dot(normal, direction);
        if (leaving <= 0 || arriving <= 0)
            continue;
        // A source seen from nearer than its own size is no longer a point.
        const float strength = leaving * arriving / (kPi * (distanceSquared + 0.4f * source.area));
        const bool window = source.power.y == 0;
        const Color power =
            window ? outside(direction.y / std::max(direction.z, 0.1f)) * source.area : source.power;
        sum += power * strength;
    }
    return sum;
}

std::vector<Lighting::Source> Lighting::wallPatches(std::span<const Source> sources) const {
    std::vector<Source> patches;
    const auto tile = [&](Vec3 corner, Vec3 first, Vec3 second, int firstCount, int secondCount, Vec3 normal,
                          Color albedo) {
        const Vec3 du = first * (1 / static_cast<float>(firstCount)),
                   dv = second * (1 / static_cast<float>(secondCount));
        const float area = length(du) * length(dv);
        for (int i = 0; i < firstCount; ++i)
            for (int j = 0; j < secondCount; ++j) {
                const Vec3 place =
                    corner + du * (static_cast<float>(i) + 0.5f) + dv * (static_cast<float>(j) + 0.5f);
                // The factor stands for the light's further bounces.
                patches.push_back(
                    {place, normal, received(place, normal, sources) * albedo * (1.5f * area), area});
            }
    };
    constexpr float kFront = -0.8f;
    const Vec3 across = {kRightWall - kLeftWall, 0, 0}, up = {0, kCeiling, 0},
               back = {0, 0, kBackWall - kFront};
    tile({kLeftWall, 0, kFront}, across, back, 4, 4, {0, 1, 0}, kFloorAlbedo);
    tile({kLeftWall, kCeiling, kFront}, across, back, 4, 4, {0, -1, 0}, kCeilingAlbedo);
    tile({kLeftWall, 0, kFront}, back, up, 4, 2, {1, 0, 0}, kWallAlbedo);
    tile({kRightWall, 0, kFront}, back, up, 4, 2, {-1, 0, 0}, kWallAlbedo);
    tile({kLeftWall, 0, kFront}, across, up, 4, 2, {0, 0, 1}, kWallAlbedo);
    return patches;
}

Lighting::Probe Lighting::probe(Vec3 position, std::span<const Source> sources) const {
    Probe result;
    result.fill({0.0008f, 0.0008f, 0.0008f});
    for (const Source &source : sources) {
        if (blocked(position, source.position))
            continue;
        for (std::size_t axis = 0; axis < kAxes.size(); ++axis)
            result[axis] += received(position, kAxes[axis], {&source, 1});
    }
    return result;
}

Color Lighting::ambient(Vec3 position, Vec3 normal) const {
    if (position.z >
        kBackWall + 0.01f) { // in the window's recess: half of the sky, less with the distance to the glass
        const float depth = std::max(kGlass - position.z, 0.0f);
        const float share = 0.5f * (1 - depth / std::sqrt(depth * depth + 0.4f));
        const Color sideways = outside(0.2f - 0.5f * normal.y) * share;
        return mix(sideways, normal.z > 0 ? outside(0.1f) : Color{0.05f, 0.05f, 0.045f}, std::abs(normal.z));
    }
    const Vec3 place = (position - kLatticeLow) / kLatticeStep;
    const auto cell = [](float p, int count, float &share) {
        const float clamped = std::clamp(p, 0.0f, static_cast<float>(count) - 1.001f);
        const int index = static_cast<int>(clamped);
        share = clamped - static_cast<float>(index);
        return index;
    };
    float fx, fy, fz;
    const int column = cell(place.x, kColumns, fx), row = cell(place.y, kRows, fy),
              layer = cell(place.z, kLayers, fz);
    // Ambient cube (McTaggart 2004): the three faces that the surface turns to, by the squares of its normal.
    const std::array<std::size_t, 3> faces = {normal.x > 0 ? 0u : 1u, normal.y > 0 ? 2u : 3u,
                                              normal.z > 0 ? 4u : 5u};
    const std::array<float, 3> weights = {normal.x * normal.x, normal.y * normal.y, normal.z * normal.z};
    Color sum;
    for (int corner = 0; corner < 8; ++corner) {
        const int dx = corner & 1, dy = (corner >> 1) & 1, dz = corner >> 2;
        const float share = (dx ? fx : 1 - fx) * (dy ? fy : 1 - fy) * (dz ? fz : 1 - fz);
        const Probe &p = probes[probeIndex(column + dx, row + dy, layer + dz)];
        for (std::size_t i = 0; i < 3; ++i)
            sum += p[faces[i]] * (weights[i] * share);
    }
    return sum;
}

Color Lighting::sun(Vec3 position, Vec3 normal) const {
    const float facing = dot(normal, kTowardsSun);
    if (facing <= 0)
        return {};
    const auto through = [&](float z) { return position + kTowardsSun * ((z - position.z) / kTowardsSun.z); };
    const Vec3 pane = through(kGlass), recess = through(kBackWall);
    if (position.z < kBackWall &&
        (recess.x < kWindowLeft || recess.x > kWindowRight || recess.y > kWindowTop))
        return {};
    // The sun is half a degree wide.
    const float light = glass(pane.x, pane.y, 0.003f + 0.005f * (kGlass - position.z));
    if (light <= 0)
        return {};
    const Ray ray = {position + normal * 0.002f, kTowardsSun};
    for (const Shape &blocker : blockers)
        if (meets(blocker, ray, 10))
            return {};
    return kSunlight * (facing * light);
}

Color Lighting::lamp(Vec3 position, Vec3 normal) const {
    const Vec3 path = kLampBulb - position;
    const float distanceSquared = dot(path, path) + 0.004f;
    const Vec3 direction = path * (1 / std::sqrt(distanceSquared));
    const float facing = 0.15f + 0.85f * dot(normal, direction);
    if (facing <= 0)
        return {};
    // Open above and below, dimmed by the shade to the sides; nothing gets under the table.
    const float open = mix(0.22f, 1.0f, smoothStep(0.62f, 0.85f, std::abs(direction.y)));
    const float aboveTable =
        mix(smoothStep(0.66f, 0.74f, position.y), 1.0f, smoothStep(0.9f, 1.6f, std::sqrt(distanceSquared)));
    return kLamplight * (facing * open * aboveTable / distanceSquared);
}

Color Lighting::mirrored(Vec3 position, Vec3 direction, float roughness) const {
    Color color = {0.02f, 0.02f, 0.018f};
    if (direction.z > 0.01f && position.z < kBackWall) {
        const float distance = (kGlass - position.z) / direction.z;
        const Vec3 p = position + direction * distance;
        color += outside(direction.y / direction.z) * glass(p.x, p.y, 0.004f + roughness * distance);
    } else if (direction.z < -0.01f) { // an open door far behind the camera
        const float distance = (-1.5f - position.z) / direction.z;
        const Vec3 p = position + direction * distance;
        const float blur = 0.02f + roughness * distance;
        color +=
            Color{0.85f, 0.9f, 1.0f} * (softBox(-2.0f, -1.1f, blur, p.x) * softBox(0.2f, 2.3f, blur, p.y));
    }
    const Vec3 path = kLampBulb - position;
    const float along = dot(path, direction);
    if (along > 0) {
        const Vec3 miss = path - direction * along;
        const float width = 0.09f + roughness * along;
        color += Color{1.1f, 0.68f, 0.3f} *
                 (std::exp(-dot(miss, miss) / (width * width)) * 0.01f / (width * width));
    }
    return color;
}

} // namespace tristop::scene
