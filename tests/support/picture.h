// SPDX-License-Identifier: MIT
#pragma once

#include "engine/core/offscreen.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <random>
#include <vector>

namespace hdr::test {

/// A picture of any format that owns its planes, each ending with its last byte.
struct Picture {
    template <typename Generate>
    Picture(uint32_t format, int width, int height, Generate generate) {
        int rows[3] = {};
        offscreenInit(&record, width, height, format, rows);
        for (size_t i = 0; i < 3 && record.pi32Pitch[i] != 0; i++) {
            planes[i].resize(static_cast<size_t>(record.pi32Pitch[i] * rows[i]));
            std::generate(planes[i].begin(), planes[i].end(), generate);
            record.ppu8Plane[i] = planes[i].data();
        }
    }
    Picture(const Picture &) = delete;
    Picture &operator=(const Picture &) = delete;

    std::array<std::vector<uint8_t>, 3> planes;
    Offscreen record{};
};

/// Random bytes, the same for the same seed.
inline auto noise(unsigned seed) {
    return [random = std::minstd_rand(seed)]() mutable { return static_cast<uint8_t>(random() >> 8); };
}

} // namespace hdr::test
