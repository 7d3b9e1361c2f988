// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <cstdint>

namespace hdr::test {

/// The sum of sample(column, row) over the window of side 2 radius + 1 around (x, y) of a plane whose edges
/// are replicated.
template <typename Sample>
int64_t windowSum(int width, int height, int x, int y, int radius, Sample sample) {
    int64_t sum = 0;
    for (int row = y - radius; row <= y + radius; row++)
        for (int column = x - radius; column <= x + radius; column++)
            sum += sample(std::clamp(column, 0, width - 1), std::clamp(row, 0, height - 1));
    return sum;
}

} // namespace hdr::test
