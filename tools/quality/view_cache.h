// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tools/scene_renderer/scene.h"

#include <cstdint>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

namespace tristop::quality {

/// Rendered views of scenes, each rendered once: what the pixels of a shot receive does not depend on its
/// exposure, and a still camera sees the same static scene in every shot.
///
/// Radiance is kept in 16 bits a sample, in steps of 1/2048 stop from 2^-20 to 2^12.
class ViewCache {
public:
    /// Keeps views in memory.
    ViewCache() = default;
    /// Keeps views in files of `folder`, which is made when it is not there. The files hold for one version
    /// of the renderer.
    explicit ViewCache(const std::filesystem::path &folder);

    /// scene::radiance of a shot.
    scene::Picture<float> radiance(const scene::SceneSettings &settings, int shot);

private:
    using Codes = std::vector<std::uint16_t>;

    std::filesystem::path folder;
    std::map<std::string, Codes> kept;
};

} // namespace tristop::quality
