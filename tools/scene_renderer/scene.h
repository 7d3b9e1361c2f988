// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "tools/scene_renderer/mosaic.h"
#include "tools/scene_renderer/motion.h"

/// Renders exposure brackets of a made-up scene, a sunlit view through the window of a dim room, together
/// with the truth about them: the linear radiance, where each point of the scene went, and which pixels show
/// something that moved.
///
/// The scene is a continuous function, not a picture: every pixel of every shot is looked up at its own true
/// place in the scene, so nothing is ever resampled and every size shows as much detail as it can hold. All
/// results are a function of the settings alone; the number of threads never changes a byte.
///
/// Pixel positions have their whole numbers at pixel centres, x right and y down: (0, 0) is the middle of the
/// top left pixel.
namespace tristop::scene {

/// What the camera looks at.
enum class Variant {
    /// The window of a dim room: about 12 stops from the darkest corner to the sunlit clouds.
    room,
    /// The same radiance everywhere: nothing to align on.
    flatGrey,
    /// A brick front that repeats exactly, kPatternRepeats times across the composition's width.
    repeatedPattern,
};

/// Repeats of the brick pattern in the width of a 3:2 picture, and in its height.
constexpr int kPatternRepeats = 32;

/// Balloons that drift between the shots and are drawn over the scene, with their strings and, in the room,
/// their shadows in the sunlight.
struct MovingObjects {
    /// Number of balloons, 0 to 4.
    int count = 1;
    /// The share of the picture that all balloons cover together in one shot, 0 to 0.15; 0 leaves them out.
    double share = 0.014;
    /// Where the balloons are in each shot, relative to their usual places, in picture widths (x right, y
    /// down).
    /// By default they start to drift after the middle shot.
    std::array<Position, 3> offset = {{{0, 0}, {0, 0}, {0.024, -0.008}}};
};

/// Everything that determines a bracket of three shots: dark, middle and bright in the default order.
struct SceneSettings {
    /// Size of the picture in pixels, at least 1 each. The scene is composed for 3:2; other shapes show its
    /// middle.
    int width = 1600, height = 1067;
    /// Changes the textures, clouds, books and so on, and the sensor noise.
    std::uint64_t seed = 1;
    /// Exposure of each shot in stops. At 0 the sensor saturates at a radiance of 1: the room is dim and the
    /// view outside partly burnt out.
    std::array<double, 3> stops = {-2, 0, 2};
    /// Where the camera stood in each shot.
    std::array<ShotMotion, 3> camera = {{{.shiftX = -6.3, .shiftY = 3.8, .rotationDegrees = 0.28},
                                         {},
                                         {.shiftX = 7.6, .shiftY = 5.2, .rotationDegrees = -0.21}}};
    MovingObjects moving;
    /// Photon and read noise of the sensor.
    bool sensorNoise = true;
    Variant variant = Variant::room;
};

/// Three interleaved samples (red, green, blue) a pixel, rows from the top without padding.
template <typename Value>
struct Picture {
    int width = 0, height = 0;
    std::vector<Value> samples;

    /// The three samples of pixel (x, y).
    const Value *pixel(int x, int y) const { return samples.data() + index(x, y); }
    Value *pixel(int x, int y) { return samples.data() + index(x, y); }

private:
    std::size_t index(int x, int y) const {
        return 3 *
               (static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x));
    }
};

/// One byte a pixel, 255 where true and 0 elsewhere, rows from the top without padding.
struct Mask {
    int width = 0, height = 0;
    std::vector<std::uint8_t> values;

    std::uint8_t at(int x, int y) const { return values[index(x, y)]; }
    std::uint8_t &at(int x, int y) { return values[index(x, y)]; }

private:
    std::size_t index(int x, int y) const {
        return static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x);
    }
};

// The functions that take settings throw std::invalid_argument for a shot outside 0 to 2 and for settings
// outside their ranges.

/// The developed photograph of one shot (0 to 2), 8 bits a sample, as the camera would write it.
/// `threads` is the number of threads to use here and below; 0 uses all of the machine.
Picture<std::uint8_t> render(const SceneSettings &settings, int shot, int threads = 0);

/// The linear radiance that one shot's pixels receive, before exposure, noise and clipping.
Picture<float> radiance(const SceneSettings &settings, int shot, int threads = 0);

/// The photograph that the camera makes of the radiance of one shot: of radiance(settings, shot), what
/// render(settings, shot) returns.
Picture<std::uint8_t> develop(const Picture<float> &radiance, const SceneSettings &settings, int shot,
                              int threads = 0);

/// The same photograph as the sensor reads it, before any development: a raw picture behind a Bayer filter.
Mosaic renderMosaic(const SceneSettings &settings, int shot, int threads = 0);

/// True displacement of the static scene between two shots, exact at every position, inside the picture and
/// out.
DisplacementField trueDisplacement(const SceneSettings &settings, int shot, int reference);

/// The pixels of `reference` that see a balloon, its string or its noticeable shadow (1 % of the light or
/// more) when the balloons are where they were in `shot`: the places that `shot` cannot show as the static
/// scene is. Grown by one pixel all round, so that pixels partly covered are in.
Mask objectMask(const SceneSettings &settings, int shot, int reference, int threads = 0);

/// Union of the object masks of several shots, in the pixels of `reference`: outside it all those shots show
/// the same static scene.
Mask motionMask(const SceneSettings &settings, std::span<const int> shots, int reference, int threads = 0);

/// The camera curve: the 8-bit sample, not yet rounded (0 to 255), for a sensor exposure in which 1
/// saturates. Exposures outside 0 to 1 clip. An sRGB curve with a gentle toe and shoulder.
double developedValue(double exposure);

/// The exposure, 0 to 1, that developedValue turns into `value`, 0 to 255.
double exposureOfValue(double value);

} // namespace tristop::scene
