// SPDX-License-Identifier: GPL-3.0-or-later
// Work on the rows of a picture, side by side.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <future>
#include <thread>
#include <vector>

namespace tristop {

/**
 * Calls work(first, end) for bands of rows `first` to `end` - 1 that make up the rows 0 to `height` - 1, one
 * band a processor and all at the same time. Every band but the last begins and ends at an even row. `work`
 * is called on several threads; what it throws is thrown on once all bands have ended.
 */
template <typename Work>
void forEachBand(int64_t height, Work work) {
    const int64_t bands = std::max(1U, std::thread::hardware_concurrency());
    const auto edge = [=](int64_t band) { return band < bands ? height * band / bands / 2 * 2 : height; };
    std::vector<std::future<void>> parts;
    for (int64_t band = 1; band < bands; ++band)
        parts.push_back(std::async([&work, first = edge(band), end = edge(band + 1)] { work(first, end); }));
    work(int64_t{0}, edge(1));
    for (std::future<void> &part : parts)
        part.get();
}

/// memcpy of a large block.
inline void copyInBands(uint8_t *to, const uint8_t *from, size_t bytes) {
    forEachBand(static_cast<int64_t>(bytes), [=](int64_t first, int64_t end) {
        std::memcpy(to + first, from + first, static_cast<size_t>(end - first));
    });
}

} // namespace tristop
