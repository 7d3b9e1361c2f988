// SPDX-License-Identifier: MIT
#include "engine/render/row_spans.h"

#include "engine/core/arithmetic.h"
#include "engine/prepare/warp_field.h"

#include <algorithm>

namespace hdr {

int mergeRuns(const RunList &dark, const RunList &bright, Span *spans) {
    int count = 0;
    int x = dark.columns[0];
    // d and b are the stretches that hold column x.
    for (int d = 0, b = 0; d + 1 < dark.count && b + 1 < bright.count;) {
        const int end = std::min(dark.columns[d + 1], bright.columns[b + 1]);
        if (end > x)
            spans[count++] = {x, end,
                              static_cast<SpanType>((d & 1 ? kWithDark : 0) | (b & 1 ? kWithBright : 0))};
        x = end;
        d += dark.columns[d + 1] == end;
        b += bright.columns[b + 1] == end;
    }
    return count;
}

int nextWarpBorder(int x) {
    return roundDown(x + kWarpSpacing / 2, kWarpSpacing) + kWarpSpacing / 2;
}

WeightState firstWeights(SpanType type) {
    if (type == kAllExposures)
        return {10922, 10922};
    return {16383, 16383};
}

} // namespace hdr
