// SPDX-License-Identifier: MIT
#include "engine/render/merge_kernels.h"

#include "engine/core/arithmetic.h"
#include "engine/render/merge_tables.h"

#include <cassert>

namespace hdr {

namespace {

/// Sum of the three exposures' weights.
constexpr int kFullWeight = 32768;

/// One exposure's row with its corrections towards the merged picture.
template <typename Access>
struct ExposureRow {
    typename Access::Source samples;
    const int16_t *lumaOffset; ///< biased by 256
    const int16_t *offsetU;
    const int16_t *offsetV;

    int luma(int x) const { return Access::luma(samples, x); }
    int correctedLuma(int x) const { return clamp8(luma(x) + lumaOffset[x] - 256); }
    int correctedU(int x) const { return clamp8(Access::chromaU(samples, x) + offsetU[x]); }
    int correctedV(int x) const { return clamp8(Access::chromaV(samples, x) + offsetV[x]); }
};

/// The weights of an exposure at the four pixels of a group, from those of the group before to its own.
struct RampedWeights {
    int pixel[4];

    RampedWeights(int before, int own)
        : pixel{(own + 3 * before + 2) >> 2, (before + own) >> 1, (before + 3 * own + 2) >> 2, own} {}
};

template <SpanType type, typename Access>
void mergeGroups(const KernelRows<Access> &rows, const KernelTables &tables, int x0, int x1,
                 WeightState &carried) {
    constexpr bool withDark = (type & kWithDark) != 0;
    constexpr bool withBright = (type & kWithBright) != 0;
    const auto exposure = [&]<typename Row>(Row, auto samples, int map) {
        return ExposureRow<Row>{samples, rows.corrections[kLumaOffsetMid + map],
                                rows.corrections[kMidOffsetU + map], rows.corrections[kMidOffsetV + map]};
    };
    const auto reference = exposure(Access(), rows.reference, 0);
    const auto dark = exposure(PackedAccess(), rows.dark, 1);
    const auto bright = exposure(PackedAccess(), rows.bright, 2);
    const int16_t *weightMid = rows.weightMid;
    const int16_t *weightDark = rows.weightDark;
    const int16_t *weightBright = rows.weightBright;
    const uint16_t *gain = rows.gain;
    const typename Access::Target output = rows.output;
    // In smoothing mode one curve serves all exposures.
    const uint16_t *curve = tables.mergeTable + kBrightCurve;
    const uint16_t *falloff = tables.mergeTable + kFalloffPart;
    const uint16_t *reciprocal = tables.mergeTable + kReciprocalPart;
    const uint8_t *lumaTable = tables.lumaTable;
    const uint8_t *chromaTable = tables.chromaTable;
    const int levelShift = tables.curveShift + 13;
    WeightState state = carried;

    for (int x = x0; x < x1; x += 4) {
        const auto groupWeight = [&](const int16_t *cells, int luma) {
            return (cells[x / 4] * falloff[luma] + 255) >> 8;
        };
        WeightState own = {0, 0};
        if constexpr (type != kReferenceOnly) {
            const int mid = groupWeight(weightMid, reference.luma(x + 3));
            if constexpr (withDark)
                own.dark = groupWeight(weightDark, dark.luma(x + 3));
            if constexpr (withBright)
                own.bright = groupWeight(weightBright, bright.luma(x + 3));
            assert(mid + own.dark + own.bright <= 3 * 256);
            const int normalise = reciprocal[mid + own.dark + own.bright];
            own.dark *= normalise;
            own.bright *= normalise;
        }
        const RampedWeights darkWeights(state.dark, own.dark);
        const RampedWeights brightWeights(state.bright, own.bright);
        state = own;

        for (int i = 0; i < 4; i++) {
            const int darkWeight = withDark ? darkWeights.pixel[i] : 0;
            const int brightWeight = withBright ? brightWeights.pixel[i] : 0;
            const int midWeight = kFullWeight - darkWeight - brightWeight;
            int sum = curve[reference.correctedLuma(x + i)] * midWeight;
            if constexpr (withDark)
                sum += curve[dark.correctedLuma(x + i)] * darkWeight;
            if constexpr (withBright)
                sum += curve[bright.correctedLuma(x + i)] * brightWeight;
            const int level = (gain[x + (i & 1)] * (sum >> levelShift)) >> 12;
            Access::setLuma(output, x + i, lumaTable[clamp12(level)]);
        }
        for (int i = 0; i < 4; i += 2) {
            const int darkWeight = withDark ? darkWeights.pixel[i + 1] : 0;
            const int brightWeight = withBright ? brightWeights.pixel[i + 1] : 0;
            const int midWeight = kFullWeight - darkWeight - brightWeight;
            int u = reference.correctedU(x + i) * midWeight;
            int v = reference.correctedV(x + i) * midWeight;
            if constexpr (withDark) {
                u += dark.correctedU(x + i) * darkWeight;
                v += dark.correctedV(x + i) * darkWeight;
            }
            if constexpr (withBright) {
                u += bright.correctedU(x + i) * brightWeight;
                v += bright.correctedV(x + i) * brightWeight;
            }
            Access::setChroma(output, x + i, chromaTable[u >> 11], chromaTable[v >> 11]);
        }
    }
    carried = state;
}

} // namespace

template <typename Access>
void mergePiece(SpanType type, const KernelRows<Access> &rows, const KernelTables &tables, int x0, int x1,
                WeightState &state) {
    assert(x0 % 4 == 0 && x1 % 4 == 0 && tables.curveShift <= 2);
    switch (type) {
    case kReferenceOnly:
        return mergeGroups<kReferenceOnly>(rows, tables, x0, x1, state);
    case kWithDark:
        return mergeGroups<kWithDark>(rows, tables, x0, x1, state);
    case kWithBright:
        return mergeGroups<kWithBright>(rows, tables, x0, x1, state);
    case kAllExposures:
        return mergeGroups<kAllExposures>(rows, tables, x0, x1, state);
    }
}

template void mergePiece(SpanType, const KernelRows<PackedAccess> &, const KernelTables &, int, int,
                         WeightState &);

} // namespace hdr
