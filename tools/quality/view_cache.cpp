// SPDX-License-Identifier: GPL-3.0-or-later
#include "tools/quality/view_cache.h"

#include "tools/scene_renderer/parallel.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <iostream>
#include <sstream>
#include <stdexcept>

namespace tristop::quality {

namespace {

constexpr double kStepsPerStop = 2048;
constexpr double kLowestStop = -20;

std::vector<std::uint16_t> encode(const scene::Picture<float> &radiance) {
    std::vector<std::uint16_t> codes(radiance.samples.size());
    std::transform(radiance.samples.begin(), radiance.samples.end(), codes.begin(), [](float value) {
        const double stops = std::log2(std::max(value, 1e-9f)) - kLowestStop;
        return static_cast<std::uint16_t>(std::clamp(std::round(stops * kStepsPerStop), 0.0, 65535.0));
    });
    return codes;
}

scene::Picture<float> decode(const std::vector<std::uint16_t> &codes, int width, int height) {
    static const std::vector<float> table = [] {
        std::vector<float> values(0x10000);
        for (std::size_t i = 0; i < values.size(); i++)
            values[i] = static_cast<float>(std::exp2(static_cast<double>(i) / kStepsPerStop + kLowestStop));
        return values;
    }();
    scene::Picture<float> radiance = {width, height, std::vector<float>(codes.size())};
    std::transform(codes.begin(), codes.end(), radiance.samples.begin(),
                   [](std::uint16_t code) { return table[code]; });
    return radiance;
}

/// Everything that a shot's radiance depends on.
std::string nameOf(const scene::SceneSettings &settings, int shot) {
    const auto index = static_cast<std::size_t>(shot);
    const scene::ShotMotion &camera = settings.camera[index];
    const scene::MovingObjects &moving = settings.moving;
    std::ostringstream name;
    name.precision(10);
    name << settings.width << 'x' << settings.height << "-scene" << static_cast<int>(settings.variant)
         << "-seed" << settings.seed << "-camera" << camera.shiftX << ',' << camera.shiftY << ','
         << camera.rotationDegrees << ',' << camera.perspectiveX << ',' << camera.perspectiveY;
    if (moving.count > 0 && moving.share > 0)
        name << "-balloons" << moving.count << ',' << moving.share << ',' << moving.offset[index].x << ','
             << moving.offset[index].y;
    return name.str();
}

} // namespace

ViewCache::ViewCache(const std::filesystem::path &folder) : folder(folder) {
    std::filesystem::create_directories(folder);
}

scene::Picture<float> ViewCache::radiance(const scene::SceneSettings &settings, int shot) {
    const std::string name = nameOf(settings, shot);
    const int width = settings.width, height = settings.height;
    if (folder.empty()) {
        auto place = kept.find(name);
        if (place == kept.end())
            place = kept.emplace(name, encode(scene::radiance(settings, shot))).first;
        return decode(place->second, width, height);
    }

    const std::filesystem::path path = folder / name;
    Codes codes(3 * static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
    const auto bytes = static_cast<std::streamsize>(codes.size() * sizeof(Codes::value_type));
    std::ifstream file(path, std::ios::binary);
    if (file.read(reinterpret_cast<char *>(codes.data()), bytes))
        return decode(codes, width, height);
    std::cerr << "rendering " << name << '\n';
    codes = encode(scene::radiance(settings, shot));
    const std::filesystem::path unfinished = path.string() + ".part";
    std::ofstream made(unfinished, std::ios::binary);
    made.write(reinterpret_cast<const char *>(codes.data()), bytes);
    made.close();
    if (!made)
        throw std::runtime_error("cannot write " + unfinished.string());
    std::filesystem::rename(unfinished, path);
    return decode(codes, width, height);
}

} // namespace tristop::quality
