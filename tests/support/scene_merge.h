// SPDX-License-Identifier: GPL-3.0-or-later
// Bringing rendered scenes to the engine and its results back, for tests of whole runs.
#pragma once

#include "engine/hdr_engine.h"
#include "tools/scene_renderer/scene.h"

#include <libyuv.h>

#include <array>
#include <cstdint>
#include <vector>

namespace tristop::test {

/// Three rendered shots as engine inputs; owns their pixels. The width must be a multiple of 4.
class SceneInputs {
public:
    explicit SceneInputs(const scene::SceneSettings &settings) {
        for (int shot = 0; shot < 3; shot++) {
            const auto picture = scene::render(settings, shot);
            const size_t k = static_cast<size_t>(shot);
            std::vector<uint8_t> bgrx(4 * static_cast<size_t>(settings.width * settings.height));
            // RGB in memory is what libyuv calls RAW, BGRX is its ARGB.
            libyuv::RAWToARGB(picture.samples.data(), 3 * settings.width, bgrx.data(), 4 * settings.width,
                              settings.width, settings.height);
            bytes[k].resize(2 * static_cast<size_t>(settings.width * settings.height));
            libyuv::ARGBToYUY2(bgrx.data(), 4 * settings.width, bytes[k].data(), 2 * settings.width,
                               settings.width, settings.height);
            pictures[k] = {
                HDR_FORMAT_YUY2, settings.width, settings.height, {bytes[k].data()}, {2 * settings.width}};
        }
    }
    SceneInputs(const SceneInputs &) = delete;
    SceneInputs &operator=(const SceneInputs &) = delete;

    std::array<std::vector<uint8_t>, 3> bytes;
    std::array<Offscreen, 3> pictures;
};

/// One 8-bit channel of a picture.
struct Luminance {
    int width = 0, height = 0;
    std::vector<double> values;
    double at(int x, int y) const {
        return values[static_cast<size_t>(y) * static_cast<size_t>(width) + static_cast<size_t>(x)];
    }
};

inline Luminance luminanceOf(const Offscreen &picture) {
    Luminance made{picture.i32Width, picture.i32Height, {}};
    for (int y = 0; y < made.height; y++)
        for (int x = 0; x < made.width; x++)
            made.values.push_back(picture.ppu8Plane[0][y * picture.pi32Pitch[0] + 2 * x]);
    return made;
}

} // namespace tristop::test
