// SPDX-License-Identifier: MIT
// Cutting a row into spans by which exposures contribute, and what the merge carries from span to span.
#pragma once

#include <cstdint>

namespace hdr {

/// Alternating zero and non-zero stretches of a row: stretch i is [columns[i], columns[i + 1]), zero for even
/// i, and may be empty.
struct RunList {
    int32_t *columns;
    int count; ///< entries of `columns`, the row's end included; 2 when all of the row is zero
};

/// Which exposures contribute beside the reference, as bits.
enum SpanType : uint8_t {
    kReferenceOnly = 0,
    kWithDark = 1,
    kWithBright = 2,
    kAllExposures = kWithDark | kWithBright
};

struct Span {
    int32_t x0, x1; ///< x1 is exclusive
    SpanType type;
};

/// Merges two run lists of one row into spans without gaps, leaving out empty ones; returns their number,
/// which is below the sum of both lists' entries.
int mergeRuns(const RunList &dark, const RunList &bright, Span *spans);

/// The column at which the piece of a row that starts at column x has to end so that the warp displacement
/// is linear along it.
int nextWarpBorder(int x);

/// Weights (of 32768) that the latest group of pixels gave to the dark and the bright exposure; the rest is
/// the reference's. A merge kernel reads those of its span's exposures and leaves 0 for the others.
struct WeightState {
    int32_t dark;
    int32_t bright;
};

/// The state in front of a row's first span: its exposures and the reference alike.
WeightState firstWeights(SpanType type);

} // namespace hdr
