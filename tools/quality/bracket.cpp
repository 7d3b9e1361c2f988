// SPDX-License-Identifier: GPL-3.0-or-later
#include "tools/quality/bracket.h"

#include <libyuv.h>

namespace tristop::quality {

Luminance luminanceOf(const Offscreen &picture) {
    Luminance made{picture.i32Width, picture.i32Height, {}};
    made.values.reserve(static_cast<std::size_t>(made.width) * static_cast<std::size_t>(made.height));
    for (int y = 0; y < made.height; y++) {
        const std::uint8_t *row =
            picture.ppu8Plane[0] + static_cast<std::ptrdiff_t>(y) * picture.pi32Pitch[0];
        for (int x = 0; x < made.width; x++)
            made.values.push_back(row[2 * x]);
    }
    return made;
}

Bracket::Bracket(int width, int height) {
    for (std::size_t k = 0; k < 3; k++) {
        bytes[k].assign(2 * static_cast<std::size_t>(width) * static_cast<std::size_t>(height), 128);
        pictures[k] = {HDR_FORMAT_YUY2, width, height, {bytes[k].data()}, {2 * width}};
    }
}

Bracket::Bracket(const scene::SceneSettings &settings, ViewCache &views)
    : Bracket(settings.width, settings.height) {
    const int width = settings.width, height = settings.height;
    std::vector<std::uint8_t> bgrx(4 * static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
    for (int shot = 0; shot < 3; shot++) {
        const auto picture = scene::develop(views.radiance(settings, shot), settings, shot);
        // RGB in memory is what libyuv calls RAW, BGRX is its ARGB.
        libyuv::RAWToARGB(picture.samples.data(), 3 * width, bgrx.data(), 4 * width, width, height);
        libyuv::ARGBToYUY2(bgrx.data(), 4 * width, bytes[static_cast<std::size_t>(shot)].data(), 2 * width,
                           width, height);
    }
}

} // namespace tristop::quality
