// SPDX-License-Identifier: MIT
#include "engine/core/region_search.h"

#include <algorithm>

namespace hdr {

RegionSearch::RegionSearch(MemContext *memory, int width, int height)
    : width(width), height(height), pending(memory, static_cast<size_t>(width) * static_cast<size_t>(height)),
      found(memory, static_cast<size_t>(width) * static_cast<size_t>(height)) {}

void RegionSearch::start(const uint8_t *mask) {
    std::transform(mask, mask + pending.size(), pending.begin(),
                   [](uint8_t value) { return static_cast<uint8_t>(value == kMaskSet); });
    scanned = 0;
    count = 0;
}

bool RegionSearch::next() {
    const int size = width * height;
    while (scanned < size && !pending.data()[scanned])
        scanned++;
    if (scanned == size)
        return false;
    count = 0;
    bounds = {width, height, 0, 0};
    take(scanned % width, scanned / width);
    for (int visited = 0; visited < count; visited++) {
        const int x = found.data()[visited] % width;
        const int y = found.data()[visited] / width;
        for (int ny = std::max(y - 1, 0); ny <= std::min(y + 1, height - 1); ny++)
            for (int nx = std::max(x - 1, 0); nx <= std::min(x + 1, width - 1); nx++)
                if (pending.data()[ny * width + nx])
                    take(nx, ny);
    }
    return true;
}

void RegionSearch::take(int x, int y) {
    const int cell = y * width + x;
    pending.data()[cell] = 0;
    found.data()[count++] = cell;
    bounds = {std::min(bounds.x0, x), std::min(bounds.y0, y), std::max(bounds.x1, x + 1),
              std::max(bounds.y1, y + 1)};
}

} // namespace hdr
