// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/histogram_lines.h"

#include <algorithm>

namespace tristop {

std::vector<HistogramLine> histogramLines(const IIHistogramData &histogram, double width, double height) {
    if (histogram.max <= 0)
        return {};
    // Sixteen times the height: the body of the histogram fills the chart, not its highest peak.
    const double scale = height / static_cast<double>(histogram.max) * 16.0;
    const double step = width * 0.00390625;
    const auto heightOf = [scale](int64_t count) {
        return static_cast<int>(std::min(static_cast<double>(count) * scale, 1e9));
    };

    std::vector<HistogramLine> lines;
    lines.reserve(3 * histogram.rData.size());
    for (size_t i = 0; i < histogram.rData.size(); ++i) {
        const int64_t r = histogram.rData[i];
        const int64_t g = histogram.gData[i];
        const int64_t b = histogram.bData[i];
        const int64_t low = std::min({r, g, b});
        const int64_t high = std::max({r, g, b});
        const int64_t middle = r + g + b - low - high;
        const double x = static_cast<double>(i) * step;
        lines.push_back({x + 0.5, heightOf(high), r >= high, g >= high, b >= high});
        lines.push_back({x, heightOf(middle), r >= middle, g >= middle, b >= middle});
        lines.push_back({x, heightOf(low), true, true, true});
    }
    return lines;
}

} // namespace tristop
