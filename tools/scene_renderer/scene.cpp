// SPDX-License-Identifier: GPL-3.0-or-later
#include "tools/scene_renderer/scene.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <memory>
#include <stdexcept>
#include <utility>

#include "tools/scene_renderer/balloons.h"
#include "tools/scene_renderer/parallel.h"
#include "tools/scene_renderer/perspective.h"
#include "tools/scene_renderer/room.h"
#include "tools/scene_renderer/sensor.h"

namespace tristop::scene {

namespace {

constexpr int kMaxBalloons = 4;
constexpr double kMaxPerspective = 0.5;
constexpr double kMaxShare = 0.15;
/// A balloon's shadow counts as seen where it takes this share of the light.
constexpr float kNoticeable = 0.01f;
/// Pixels whose first samples differ by more than this factor get more.
constexpr float kSmooth = 1.5f;

void validate(const SceneSettings &settings, int shot) {
    if (settings.width < 1 || settings.height < 1)
        throw std::invalid_argument("the picture needs at least one pixel");
    if (shot < 0 || shot > 2)
        throw std::invalid_argument("the shots are 0, 1 and 2");
    const ShotMotion &motion = settings.camera[static_cast<std::size_t>(shot)];
    const double farthest = 10.0 * std::max(settings.width, settings.height);
    if (!(std::abs(motion.shiftX) <= farthest && std::abs(motion.shiftY) <= farthest &&
          std::abs(motion.perspectiveX) <= kMaxPerspective &&
          std::abs(motion.perspectiveY) <= kMaxPerspective && std::isfinite(motion.rotationDegrees)))
        throw std::invalid_argument("the camera moved too far");
    const MovingObjects &moving = settings.moving;
    if (moving.count < 0 || moving.count > kMaxBalloons || !(moving.share >= 0 && moving.share <= kMaxShare))
        throw std::invalid_argument("there are 0 to 4 balloons, which cover a share of 0 to 0.15");
}

/// Pixels in a width of the 3:2 composition, of which the picture shows the largest middle part of its own
/// shape.
double pixelsPerWidth(const SceneSettings &settings) {
    return std::max<double>(settings.width, 1.5 * settings.height);
}

Balloons balloonsOf(const SceneSettings &settings, int shot) {
    const MovingObjects &moving = settings.moving;
    const double unit = pixelsPerWidth(settings);
    const double shown = settings.width / unit * (settings.height / unit);
    const Position offset = moving.offset[static_cast<std::size_t>(shot)];
    const double widths = settings.width / unit;
    return Balloons(moving.share > 0 ? moving.count : 0, moving.share * shown,
                    {offset.x * widths, offset.y * widths});
}

/// A brick front of two alternating courses, the same everywhere.
Color bricks(Vec2 place) {
    const float x = place.x * kPatternRepeats, y = place.y * (1.5f * kPatternRepeats);
    const bool second = fraction(y) >= 0.5f;
    const float across = triangle(x + (second ? 0.5f : 0.0f)), up = triangle(2 * y);
    const float brick = smoothStep(0.03f, 0.07f, across) * smoothStep(0.1f, 0.2f, up);
    const float worn = 0.85f + 0.15f * std::sin(12.566f * x + 3 * std::sin(12.566f * y)) + 0.12f * up;
    return mix(Color{0.5f, 0.47f, 0.42f}, Color{0.36f, 0.14f, 0.09f} * worn, brick);
}

/// The scene with its balloons as they were in one shot.
class Stage {
public:
    Stage(const SceneSettings &settings, int shot)
        : variant(settings.variant), balloons(balloonsOf(settings, shot)) {
        if (variant == Variant::room)
            room = std::make_unique<Room>(settings.seed);
    }

    Sample sample(Vec2 place, float footprint) const {
        if (room)
            return room->sample(place, footprint, balloons);
        const Ray ray = {perspective::kEye, perspective::direction(place)};
        Hit hit;
        Material material;
        if (balloons.intersect(ray, place, hit, material))
            return {material.albedo * (0.35f + 0.2f * hit.normal.y - 0.2f * hit.normal.z), 1, -1};
        return {variant == Variant::flatGrey ? Color{0.18f, 0.18f, 0.18f} : bricks(place), 0, 1};
    }

    bool mayShowBalloons(Vec2 place) const { return balloons.mayTouch(place); }

private:
    Variant variant;
    std::unique_ptr<Room> room;
    Balloons balloons;
};

constexpr std::size_t kFirstSamples = 4, kAllSamples = 16;

/// Places of the samples around a pixel's centre, distributed as a tent two pixels wide. Their offsets, in
/// thirty-seconds of the tent's area, all differ in both directions; four orbits under quarter turns, so that
/// the first four samples and all sixteen have the same centre.
const std::array<Position, kAllSamples> &samplePattern() {
    static const std::array<Position, kAllSamples> pattern = [] {
        constexpr std::array<std::array<int, 2>, 4> kOrbits = {{{5, 11}, {13, 3}, {1, 7}, {15, 9}}};
        const auto tent = [](int thirtySeconds) {
            const double offset = 1 - std::sqrt(1 - std::abs(thirtySeconds) / 16.0);
            return thirtySeconds < 0 ? -offset : offset;
        };
        std::array<Position, kAllSamples> places;
        for (std::size_t orbit = 0; orbit < kOrbits.size(); ++orbit) {
            auto [x, y] = kOrbits[orbit];
            for (std::size_t turn = 0; turn < 4; ++turn) {
                places[4 * orbit + turn] = {tent(x), tent(y)};
                x = std::exchange(y, -x);
            }
        }
        return places;
    }();
    return pattern;
}

/// A camera in the position of one shot, in front of the stage as it was in the same or another shot.
class Camera {
public:
    Camera(const SceneSettings &settings, int shot, const Stage &stage)
        : stage(stage),
          stillFromShot(Homography::stillFromShot(settings.camera[static_cast<std::size_t>(shot)],
                                                  settings.width, settings.height)),
          centre{(settings.width - 1) / 2.0, (settings.height - 1) / 2.0},
          unit(1 / pixelsPerWidth(settings)) {}

    /// What the pixel (x, y) receives.
    Color pixel(int x, int y) const {
        Color sum;
        float low = 1e30f, high = 0;
        bool edge = false;
        int surface = 0;
        for (std::size_t i = 0; i < kFirstSamples; ++i) {
            const Sample seen = sample(x, y, i);
            const float light = luminance(seen.radiance);
            low = std::min(low, light);
            high = std::max(high, light);
            edge |= i > 0 && seen.surface != surface;
            surface = seen.surface;
            sum += seen.radiance;
        }
        if (!edge && high <= kSmooth * low)
            return sum * (1.0f / kFirstSamples);
        for (std::size_t i = kFirstSamples; i < kAllSamples; ++i)
            sum += sample(x, y, i).radiance;
        return sum * (1.0f / kAllSamples);
    }

    /// Whether the pixel (x, y) sees a balloon or its noticeable shadow.
    bool seesBalloons(int x, int y) const {
        if (!stage.mayShowBalloons(place(x, y)))
            return false;
        for (std::size_t i = 0; i < kAllSamples; ++i)
            if (sample(x, y, i).influence >= kNoticeable)
                return true;
        return false;
    }

private:
    Vec2 place(double x, double y) const {
        const Position still = stillFromShot({x, y});
        return {static_cast<float>((still.x - centre.x) * unit),
                static_cast<float>((still.y - centre.y) * unit)};
    }

    Sample sample(int x, int y, std::size_t i) const {
        const Position offset = samplePattern()[i];
        return stage.sample(place(x + offset.x, y + offset.y), static_cast<float>(unit));
    }

    const Stage &stage;
    Homography stillFromShot;
    Position centre;
    double unit;
};

template <typename Value>
std::vector<Value> samplesFor(const SceneSettings &settings, std::size_t perPixel) {
    return std::vector<Value>(static_cast<std::size_t>(settings.width) *
                              static_cast<std::size_t>(settings.height) * perPixel);
}

} // namespace

Picture<std::uint8_t> render(const SceneSettings &settings, int shot, int threads) {
    validate(settings, shot);
    const Stage stage(settings, shot);
    const Camera camera(settings, shot, stage);
    const Sensor sensor(settings.seed, shot, settings.sensorNoise);
    const auto exposure = static_cast<float>(std::exp2(settings.stops[static_cast<std::size_t>(shot)]));
    Picture<std::uint8_t> picture = {settings.width, settings.height, samplesFor<std::uint8_t>(settings, 3)};
    parallelFor(settings.height, threads, [&](int y) {
        for (int x = 0; x < settings.width; ++x)
            sensor.develop(camera.pixel(x, y) * exposure, x, y, picture.pixel(x, y));
    });
    return picture;
}

Mosaic renderMosaic(const SceneSettings &settings, int shot, int threads) {
    validate(settings, shot);
    const Stage stage(settings, shot);
    const Camera camera(settings, shot, stage);
    const Sensor sensor(settings.seed, shot, settings.sensorNoise);
    const auto exposure = static_cast<float>(std::exp2(settings.stops[static_cast<std::size_t>(shot)]));
    Mosaic mosaic = {settings.width, settings.height, samplesFor<std::uint16_t>(settings, 1)};
    parallelFor(settings.height, threads, [&](int y) {
        for (int x = 0; x < settings.width; ++x) {
            const Color read = sensor.readings(camera.pixel(x, y) * exposure, x, y);
            mosaic.expose(x, y, {read.x, read.y, read.z});
        }
    });
    return mosaic;
}

Picture<float> radiance(const SceneSettings &settings, int shot, int threads) {
    validate(settings, shot);
    const Stage stage(settings, shot);
    const Camera camera(settings, shot, stage);
    Picture<float> picture = {settings.width, settings.height, samplesFor<float>(settings, 3)};
    parallelFor(settings.height, threads, [&](int y) {
        for (int x = 0; x < settings.width; ++x) {
            const Color color = camera.pixel(x, y);
            float *samples = picture.pixel(x, y);
            samples[0] = color.x;
            samples[1] = color.y;
            samples[2] = color.z;
        }
    });
    return picture;
}

Picture<std::uint8_t> develop(const Picture<float> &radiance, const SceneSettings &settings, int shot,
                              int threads) {
    validate(settings, shot);
    const Sensor sensor(settings.seed, shot, settings.sensorNoise);
    const auto exposure = static_cast<float>(std::exp2(settings.stops[static_cast<std::size_t>(shot)]));
    Picture<std::uint8_t> picture = {settings.width, settings.height, samplesFor<std::uint8_t>(settings, 3)};
    parallelFor(settings.height, threads, [&](int y) {
        for (int x = 0; x < settings.width; ++x) {
            const float *light = radiance.pixel(x, y);
            sensor.develop(Color{light[0], light[1], light[2]} * exposure, x, y, picture.pixel(x, y));
        }
    });
    return picture;
}

DisplacementField trueDisplacement(const SceneSettings &settings, int shot, int reference) {
    validate(settings, shot);
    validate(settings, reference);
    const auto stillFrom = [&](int which) {
        return Homography::stillFromShot(settings.camera[static_cast<std::size_t>(which)], settings.width,
                                         settings.height);
    };
    return DisplacementField(stillFrom(shot).inverse().after(stillFrom(reference)));
}

Mask objectMask(const SceneSettings &settings, int shot, int reference, int threads) {
    validate(settings, shot);
    validate(settings, reference);
    const Stage stage(settings, shot);
    const Camera camera(settings, reference, stage);
    const int width = settings.width, height = settings.height;
    Mask seen = {width, height, samplesFor<std::uint8_t>(settings, 1)};
    parallelFor(height, threads, [&](int y) {
        for (int x = 0; x < width; ++x)
            seen.at(x, y) = camera.seesBalloons(x, y) ? 255 : 0;
    });
    Mask grown = seen;
    parallelFor(height, threads, [&](int y) {
        for (int x = 0; x < width; ++x)
            for (int ny = std::max(y - 1, 0); ny <= std::min(y + 1, height - 1); ++ny)
                for (int nx = std::max(x - 1, 0); nx <= std::min(x + 1, width - 1); ++nx)
                    grown.at(x, y) |= seen.at(nx, ny);
    });
    return grown;
}

Mask motionMask(const SceneSettings &settings, std::span<const int> shots, int reference, int threads) {
    validate(settings, reference);
    Mask moved = {settings.width, settings.height, samplesFor<std::uint8_t>(settings, 1)};
    for (const int shot : shots) {
        const Mask one = objectMask(settings, shot, reference, threads);
        std::transform(one.values.begin(), one.values.end(), moved.values.begin(), moved.values.begin(),
                       [](std::uint8_t a, std::uint8_t b) { return static_cast<std::uint8_t>(a | b); });
    }
    return moved;
}

} // namespace tristop::scene
