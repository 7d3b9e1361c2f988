// SPDX-License-Identifier: GPL-3.0-or-later
#include "tools/scene_renderer/sensor.h"

#include <array>
#include <cmath>
#include <cstddef>
#include <numbers>
#include <vector>

#include "tools/scene_renderer/noise.h"
#include "tools/scene_renderer/scene.h"

namespace tristop::scene {

namespace {

constexpr float kFullWellElectrons = 24000;
constexpr float kReadNoiseElectrons = 5;
constexpr double kContrast = 0.35;

/// Two independent normal deviates (Box and Muller 1958).
std::array<float, 2> normalPair(std::uint64_t bits) {
    const float uniform = (static_cast<float>(bits >> 40) + 0.5f) * 0x1p-24f;
    const float angle = static_cast<float>(bits & 0xffffff) * (0x1p-23f * std::numbers::pi_v<float>);
    const float radius = std::sqrt(-2 * std::log(uniform));
    return {radius * std::cos(angle), radius * std::sin(angle)};
}

/// The camera curve at steps so fine that neighbours differ by at most 0.05 of an 8-bit level.
const std::vector<float> &developmentTable() {
    static const std::vector<float> table = [] {
        std::vector<float> values(0x10001);
        for (std::size_t i = 0; i < values.size(); ++i)
            values[i] = static_cast<float>(developedValue(static_cast<double>(i) / 0x10000));
        return values;
    }();
    return table;
}

} // namespace

double developedValue(double exposure) {
    const double linear = std::clamp(exposure, 0.0, 1.0);
    const double encoded = linear <= 0.0031308 ? 12.92 * linear : 1.055 * std::pow(linear, 1 / 2.4) - 0.055;
    return 255 * std::lerp(encoded, encoded * encoded * (3 - 2 * encoded), kContrast);
}

double exposureOfValue(double value) {
    double low = 0, high = 1;
    for (int i = 0; i < 60; ++i) {
        const double middle = (low + high) / 2;
        (developedValue(middle) < value ? low : high) = middle;
    }
    return (low + high) / 2;
}

Sensor::Sensor(std::uint64_t seed, int shot, bool noisy)
    : key(mixBits(mixBits(seed) + static_cast<std::uint64_t>(shot))), noisy(noisy) {}

Color Sensor::readings(Color exposure, int x, int y) const {
    if (!noisy)
        return exposure;
    const std::uint64_t pixel =
        (std::uint64_t{static_cast<std::uint32_t>(y)} << 32) | static_cast<std::uint32_t>(x);
    const std::uint64_t bits = mixBits(key ^ mixBits(pixel));
    const auto [first, second] = normalPair(bits);
    const auto withNoise = [](float channel, float deviate) {
        const float electrons = channel * kFullWellElectrons;
        return channel + deviate * std::sqrt(electrons + kReadNoiseElectrons * kReadNoiseElectrons) /
                             kFullWellElectrons;
    };
    return {withNoise(exposure.x, first), withNoise(exposure.y, second),
            withNoise(exposure.z, normalPair(mixBits(bits))[0])};
}

void Sensor::develop(Color exposure, int x, int y, std::uint8_t *samples) const {
    const Color read = readings(exposure, x, y);
    const std::vector<float> &table = developmentTable();
    for (const float channel : {read.x, read.y, read.z})
        *samples++ =
            static_cast<std::uint8_t>(table[static_cast<std::size_t>(saturate(channel) * 0x10000)] + 0.5f);
}

} // namespace tristop::scene
