// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <vector>

#include "app/histogram_data.h"

namespace tristop {

/// A vertical line of the histogram chart, one wide, standing on the bottom edge. Channels are on or off.
struct HistogramLine {
    double x; ///< of its middle
    int height;
    bool red;
    bool green;
    bool blue;

    bool operator==(const HistogramLine &) const = default;
};

/// The lines of a chart of the given size in the order of drawing, three a value: as high as one channel
/// reaches, as two reach and as all reach, the longest first. None without counts.
std::vector<HistogramLine> histogramLines(const IIHistogramData &histogram, double width, double height);

} // namespace tristop
