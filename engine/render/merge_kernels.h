// SPDX-License-Identifier: MIT
// The merge of the exposures at every pixel of a piece of a row.
#pragma once

#include "engine/analysis/first_merge.h"
#include "engine/render/row_spans.h"

#include <cstdint>

namespace hdr {

/// Access to the samples of a packed 4:2:2 row, bytes Y0 U Y1 V a pair of pixels. Another layout of the
/// working pictures is another such policy; resampled rows are always packed.
struct PackedAccess {
    using Source = const uint8_t *;
    using Target = uint8_t *;

    static int luma(Source row, int x) { return row[2 * x]; }
    /// Chroma of the pair that starts at the even column x.
    static int chromaU(Source row, int x) { return row[2 * x + 1]; }
    static int chromaV(Source row, int x) { return row[2 * x + 3]; }
    static void setLuma(Target row, int x, uint8_t value) { row[2 * x] = value; }
    static void setChroma(Target row, int x, uint8_t u, uint8_t v) {
        row[2 * x + 1] = u;
        row[2 * x + 3] = v;
    }
};

/// The rows that a kernel reads and writes; each starts at column 0.
template <typename Access>
struct KernelRows {
    typename Access::Source reference; ///< as it was before rendering; not the memory of `output`
    typename Access::Target output;
    const uint8_t *dark; ///< resampled exposures, packed 4:2:2
    const uint8_t *bright;
    const int16_t *weightMid; ///< cell weights 0 to 256, one a group of four pixels
    const int16_t *weightDark;
    const int16_t *weightBright;
    const int16_t *corrections[kCorrectionMapCount]; ///< by CorrectionMap, one a column; chroma offsets
                                                     ///< count at even columns
    const uint16_t *gain;                            ///< in 1/1024, one a column
};

struct KernelTables {
    const uint16_t *mergeTable; ///< the smoothing-mode table, laid out as MergeTablePart says
    const uint8_t *lumaTable;   ///< [4096]: linear level to output luminance
    const uint8_t *chromaTable; ///< [4096]: blended chroma in 1/16 to output chroma
    int curveShift;             ///< at most 2; curve values are levels times 2^curveShift
};

/// Merges columns [x0, x1) (multiples of 4) of a row from the exposures of the span's type. Each group of
/// four pixels weighs the exposures by its cell weights and the falloff of its fourth pixel's luminance, and
/// the weights run from those of the group before, kept in `state`, to its own across the group.
template <typename Access>
void mergePiece(SpanType type, const KernelRows<Access> &rows, const KernelTables &tables, int x0, int x1,
                WeightState &state);

extern template void mergePiece(SpanType, const KernelRows<PackedAccess> &, const KernelTables &, int, int,
                                WeightState &);

} // namespace hdr
