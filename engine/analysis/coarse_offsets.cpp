// SPDX-License-Identifier: MIT
#include "engine/analysis/coarse_offsets.h"

#include "engine/core/buffer.h"
#include "engine/core/worker.h"

#include <algorithm>
#include <array>

namespace hdr {
namespace {

constexpr int kRadius = 4;
constexpr int kRegularisation = 5;
/// Slopes and intercepts are kept in units of 1/256.
constexpr int kCoefficientShift = 8;

template <typename Sample>
void reduceToCoarse(Plane<const Sample> plane, Plane<int16_t> coarse) {
    const int lastColumn = std::max(plane.width / kCoarseStep - 1, 0);
    const int lastRow = std::max(plane.height / kCoarseStep - 1, 0);
    for (int y = 0; y < coarse.height; y++) {
        const int top = kCoarseStep * std::min(y, lastRow);
        const Sample *upper = plane.row(top);
        const Sample *lower = plane.row(std::min(top + 2, plane.height - 1));
        int16_t *row = coarse.row(y);
        for (int x = 0; x < coarse.width; x++) {
            const int left = kCoarseStep * std::min(x, lastColumn);
            const int right = std::min(left + 2, plane.width - 1);
            row[x] = static_cast<int16_t>((upper[left] + upper[right] + lower[left] + lower[right]) >> 2);
        }
    }
}

/// Sums of several quantities over a window.
template <size_t N>
using Sums = std::array<int32_t, N>;

template <size_t N>
void add(Sums<N> &sums, const Sums<N> &other) {
    for (size_t i = 0; i < N; i++)
        sums[i] += other[i];
}

template <size_t N>
void subtract(Sums<N> &sums, const Sums<N> &other) {
    for (size_t i = 0; i < N; i++)
        sums[i] -= other[i];
}

/// Calls use(x, sums, count) for each x of row y, with the sums of sample(x, y) over the samples of the
/// window that lie inside the plane, and their number. `columns` is scratch for `width` sums.
template <size_t N, typename Sample, typename Use>
void forEachWindow(int width, int height, int y, Sums<N> *columns, Sample sample, Use use) {
    const int top = std::max(y - kRadius, 0);
    const int bottom = std::min(y + kRadius, height - 1);
    for (int x = 0; x < width; x++) {
        columns[x] = sample(x, top);
        for (int row = top + 1; row <= bottom; row++)
            add(columns[x], sample(x, row));
    }
    Sums<N> sums{};
    for (int x = 0; x < std::min(kRadius, width); x++)
        add(sums, columns[x]);
    for (int x = 0; x < width; x++) {
        const int left = std::max(x - kRadius, 0);
        const int right = std::min(x + kRadius, width - 1);
        if (x + kRadius < width)
            add(sums, columns[x + kRadius]);
        if (x - kRadius > 0)
            subtract(sums, columns[x - kRadius - 1]);
        use(x, sums, (right - left + 1) * (bottom - top + 1));
    }
}

/// A quarter of the rows, and room for the column sums of one row.
struct RowRange {
    int first, end;
    Sums<4> *columns;
};

/// The coefficients of the local linear model offset = slope * guide + intercept.
using Coefficients = Sums<2>;

class CoarseGuidedFilter {
public:
    CoarseGuidedFilter(Plane<const int16_t> guide, Plane<int16_t> offsets, Plane<Coefficients> models)
        : guide(guide), offsets(offsets), models(models) {}

    /// Fits a model to the window around each sample.
    void fit(const RowRange &rows) const {
        const auto moments = [this](int x, int y) {
            const int32_t i = guide(x, y);
            const int32_t p = offsets(x, y);
            return Sums<4>{i, p, i * p, i * i};
        };
        for (int y = rows.first; y < rows.end; y++)
            forEachWindow(guide.width, guide.height, y, rows.columns, moments,
                          [&](int x, const Sums<4> &sums, int count) {
                              const int meanI = sums[0] / count;
                              const int meanP = sums[1] / count;
                              const int covariance = sums[2] / count - meanP * meanI;
                              const int variance = sums[3] / count - meanI * meanI;
                              const int slope =
                                  covariance * (1 << kCoefficientShift) / (variance + kRegularisation);
                              models(x, y) = {slope, meanP * (1 << kCoefficientShift) - slope * meanI};
                          });
    }

    /// Evaluates the mean of the models around each sample.
    void evaluate(const RowRange &rows) const {
        const auto model = [this](int x, int y) {
            const Coefficients &coefficients = models(x, y);
            return Sums<4>{coefficients[0], coefficients[1], 0, 0};
        };
        for (int y = rows.first; y < rows.end; y++)
            forEachWindow(guide.width, guide.height, y, rows.columns, model,
                          [&](int x, const Sums<4> &sums, int count) {
                              const int offset = guide(x, y) * (sums[0] / count) + sums[1] / count;
                              offsets(x, y) = static_cast<int16_t>(offset >> kCoefficientShift);
                          });
    }

private:
    Plane<const int16_t> guide;
    Plane<int16_t> offsets;
    Plane<Coefficients> models;
};

} // namespace

void reduce_to_coarse(Plane<const uint8_t> plane, Plane<int16_t> coarse) {
    reduceToCoarse(plane, coarse);
}

void reduce_to_coarse(Plane<const int16_t> plane, Plane<int16_t> coarse) {
    reduceToCoarse(plane, coarse);
}

HdrStatus coarse_guided_filter(MemContext *memory, Plane<const int16_t> guide, Plane<int16_t> offsets) {
    const size_t width = static_cast<size_t>(guide.width);
    Buffer<Coefficients> models(memory, width * static_cast<size_t>(guide.height));
    std::array<RowRange, 4> ranges;
    Buffer<Sums<4>> columns(memory, width * ranges.size());
    if (!models || !columns)
        return HDR_ERR_NOMEM;
    for (size_t i = 0; i < ranges.size(); i++) {
        const int index = static_cast<int>(i);
        ranges[i] = {index * guide.height / 4, (index + 1) * guide.height / 4, columns.data() + i * width};
    }
    const CoarseGuidedFilter filter(guide, offsets, {models.data(), guide.width, guide.height});
    runOnFourWorkers(ranges, [&](const RowRange &rows) { filter.fit(rows); });
    runOnFourWorkers(ranges, [&](const RowRange &rows) { filter.evaluate(rows); });
    return HDR_OK;
}

} // namespace hdr
