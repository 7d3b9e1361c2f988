// SPDX-License-Identifier: MIT
#include "engine/prepare/quantiles.h"

#include "engine/prepare/preparation.h"

namespace hdr {

void findQuantiles(const uint32_t *histogram, uint32_t count, int steps, int *levels) {
    uint32_t sum = 0;
    int cursor = 0;
    for (int k = 1; k <= steps; k++) {
        const uint32_t target = static_cast<uint32_t>(k) * count / static_cast<uint32_t>(steps);
        levels[k] = kBins - 1;
        while (cursor < kBins) {
            const int bin = cursor++;
            sum += histogram[bin];
            if (sum >= target) {
                levels[k] = bin;
                break;
            }
        }
    }
}

} // namespace hdr
