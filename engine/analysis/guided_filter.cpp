// SPDX-License-Identifier: MIT
#include "engine/analysis/guided_filter.h"

#include "engine/core/arithmetic.h"
#include "engine/core/buffer.h"
#include "engine/core/plane.h"
#include "engine/core/worker.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <cmath>
#include <cstdint>
#include <type_traits>

namespace hdr {
namespace {

/// Saturates to -limit..limit.
constexpr double clampTo(double value, double limit) {
    const double notBelow = value < -limit ? -limit : value;
    return notBelow > limit ? limit : notBelow;
}

/// Sums over square windows of several quantities at once, along one row. The sums are integers, held in
/// double precision (exact below 2^53) because divisions follow.
template <int kQuantities>
class WindowSums {
public:
    static size_t storageSize(int width, int radius) {
        return kQuantities * static_cast<size_t>(2 * width + 2 * radius);
    }
    /// `storage` holds storageSize entries and outlives the object.
    WindowSums(double *storage, int width, int radius) : width(width), radius(radius) {
        std::fill_n(storage, storageSize(width, radius), 0.0);
        for (int q = 0; q < kQuantities; q++) {
            padded[q] = storage;
            inWindow[q] = storage + width + 2 * radius;
            storage += 2 * width + 2 * radius;
        }
    }

    /// The quantity summed over the window's rows, for each column; the caller keeps it running.
    double *columns(int quantity) { return padded[quantity] + radius; }
    /// The quantity summed over the window around each column, edge columns replicated; as of the last slide.
    const double *windows(int quantity) const { return inWindow[quantity]; }

    /// Derives windows from columns, at a cost that does not depend on the radius.
    void slide() {
        std::array<double, kQuantities> sums{};
        for (int q = 0; q < kQuantities; q++) {
            double *column = columns(q);
            std::fill_n(padded[q], radius, column[0]);
            std::fill_n(column + width, radius, column[width - 1]);
            for (int i = 0; i <= 2 * radius; i++)
                sums[q] += padded[q][i];
            inWindow[q][0] = sums[q];
        }
        for (int x = 1; x < width; x++)
            for (int q = 0; q < kQuantities; q++) {
                sums[q] += padded[q][x + 2 * radius] - padded[q][x - 1];
                inWindow[q][x] = sums[q];
            }
    }

private:
    int width;
    int radius;
    std::array<double *, kQuantities> padded;
    std::array<double *, kQuantities> inWindow;
};

/// Walks the rows of a picture of `height` rows, keeping running sums over the window's rows around each
/// (edge rows replicated): accumulate(row, +1) when a row enters, accumulate(row, -1) when it leaves, with
/// the sign as a compile-time constant; use(y) when the sums stand for row y.
template <typename Accumulate, typename Use>
void forEachWindowRow(int firstRow, int endRow, int radius, int height, Accumulate accumulate, Use use) {
    const auto clamped = [height](int y) { return std::clamp(y, 0, height - 1); };
    for (int y = firstRow - radius; y < firstRow + radius; y++)
        accumulate(clamped(y), std::integral_constant<int, 1>());
    for (int y = firstRow; y < endRow; y++) {
        accumulate(clamped(y + radius), std::integral_constant<int, 1>());
        use(y);
        accumulate(clamped(y - radius), std::integral_constant<int, -1>());
    }
}

enum FirstPassQuantity { kGuide, kTarget, kProduct, kSquare, kFirstPassQuantities };
enum SecondPassQuantity { kSlope, kOffset, kSecondPassQuantities };

/// Output rows of one worker, and the memory it works in.
struct Band {
    int firstRow;
    int endRow;
    int firstModelRow; ///< rows of the models that the output rows' windows reach
    int endModelRow;
    Buffer<double> sums;
    Buffer<int32_t> models; ///< slopes, then offsets

    bool isEmpty() const { return firstRow == endRow; }
    Plane<int32_t> slopes(int width) { return {models.data(), width, endModelRow - firstModelRow}; }
    Plane<int32_t> offsets(int width) {
        return {models.data() + models.size() / 2, width, endModelRow - firstModelRow};
    }
};

/// Divides rows y0 to y1 of a picture of `height` rows among four workers: a quarter of the rows, a third of
/// the remaining, half of the remaining, the rest. Buffers are left empty.
std::array<Band, 4> splitIntoBands(int y0, int y1, int radius, int height) {
    std::array<Band, 4> bands;
    int first = y0;
    for (int i = 0; i < 4; i++) {
        const int end = first + (y1 - first) / (4 - i);
        bands[static_cast<size_t>(i)] = {
            first, end, std::max(first - radius, 0), std::min(end + radius, height), {}, {}};
        first = end;
    }
    return bands;
}

enum class Precision { kInteger, kFloating };

/// One call of the filter, over planes of one size.
template <typename Sample, Precision kPrecision>
struct GuidedFilter {
    Plane<const uint8_t> guide;
    Plane<const Sample> target;
    Plane<Sample> output;
    int radius;
    double epsilon;

    /// Windows of this mean target and above take the mean itself, whatever the guide.
    static constexpr double kLargestMean = sizeof(Sample) == 1 ? 255 : 510;

    HdrStatus run(MemContext *memory, Rect area) const;

private:
    double windowSize() const { return (2 * radius + 1.0) * (2 * radius + 1.0); }
    void fitModels(Band &band) const;
    void applyModels(Band &band, int x0, int x1) const;
    void fitRow(const WindowSums<kFirstPassQuantities> &sums, int32_t *slopes, int32_t *offsets) const;
    void applyRow(const WindowSums<kSecondPassQuantities> &sums, int y, int x0, int x1) const;
};

/// Fits each window's linear model, target = slope x guide + offset, for the rows that the band needs.
template <typename Sample, Precision kPrecision>
void GuidedFilter<Sample, kPrecision>::fitModels(Band &band) const {
    WindowSums<kFirstPassQuantities> sums(band.sums.data(), guide.width, radius);
    const auto accumulate = [&](int y, auto sign) {
        const uint8_t *guideRow = guide.row(y);
        const Sample *targetRow = target.row(y);
        double *__restrict guideSums = sums.columns(kGuide);
        double *__restrict targetSums = sums.columns(kTarget);
        double *__restrict productSums = sums.columns(kProduct);
        double *__restrict squareSums = sums.columns(kSquare);
        for (int x = 0; x < guide.width; x++) {
            const int16_t i = guideRow[x];
            const int16_t p = targetRow[x];
            guideSums[x] += sign * i;
            targetSums[x] += sign * p;
            productSums[x] += sign * (i * p);
            squareSums[x] += sign * (i * i);
        }
    };
    const Plane<int32_t> slopes = band.slopes(guide.width);
    const Plane<int32_t> offsets = band.offsets(guide.width);
    const int first = band.firstModelRow;
    forEachWindowRow(first, band.endModelRow, radius, guide.height, accumulate, [&](int y) {
        sums.slide();
        fitRow(sums, slopes.row(y - first), offsets.row(y - first));
    });
}

template <typename Sample, Precision kPrecision>
void GuidedFilter<Sample, kPrecision>::fitRow(const WindowSums<kFirstPassQuantities> &sums,
                                              int32_t *__restrict slopes, int32_t *__restrict offsets) const {
    const double count = windowSize();
    const double *guideSums = sums.windows(kGuide);
    const double *targetSums = sums.windows(kTarget);
    const double *productSums = sums.windows(kProduct);
    const double *squareSums = sums.windows(kSquare);
    for (int x = 0; x < guide.width; x++) {
        const double meanGuide = guideSums[x] / count;
        const double meanTarget = targetSums[x] / count;
        const double meanProduct = productSums[x] / count;
        const double meanSquare = squareSums[x] / count;
        int32_t slope, offset;
        if constexpr (kPrecision == Precision::kFloating) {
            const double variance = meanSquare - meanGuide * meanGuide;
            const double a = clampTo((meanProduct - meanTarget * meanGuide) / (variance + epsilon), 32.0);
            const double b = clampTo(meanTarget - a * meanGuide, 4096.0);
            slope = static_cast<int32_t>(1024.0 * a);
            offset = static_cast<int32_t>(16.0 * b);
        } else {
            const int guideMean = static_cast<int>(meanGuide);
            const int targetMean = static_cast<int>(meanTarget);
            const int covariance = static_cast<int>(meanProduct) - targetMean * guideMean;
            const int variance = static_cast<int>(meanSquare) - guideMean * guideMean;
            slope = covariance * 256 / (variance + 5);
            offset = targetMean * 256 - guideMean * slope;
        }
        // Computed in every case, and joined by | instead of ||, so that no branch depends on the picture.
        const int32_t plainOffset = static_cast<int32_t>(targetSums[x] * 16.0 / count);
        const bool isPlain = (targetSums[x] < 1.0) | (targetSums[x] >= kLargestMean * count);
        slopes[x] = isPlain ? 0 : slope;
        offsets[x] = isPlain ? plainOffset : offset;
    }
}

/// Applies to each sample the mean of the models of all windows that hold it.
template <typename Sample, Precision kPrecision>
void GuidedFilter<Sample, kPrecision>::applyModels(Band &band, int x0, int x1) const {
    const Plane<int32_t> slopes = band.slopes(guide.width);
    const Plane<int32_t> offsets = band.offsets(guide.width);
    WindowSums<kSecondPassQuantities> sums(band.sums.data(), guide.width, radius);
    const auto accumulate = [&](int y, auto sign) {
        const int32_t *slopeRow = slopes.row(y - band.firstModelRow);
        const int32_t *offsetRow = offsets.row(y - band.firstModelRow);
        double *__restrict slopeSums = sums.columns(kSlope);
        double *__restrict offsetSums = sums.columns(kOffset);
        for (int x = 0; x < guide.width; x++) {
            slopeSums[x] += sign * slopeRow[x];
            offsetSums[x] += sign * offsetRow[x];
        }
    };
    forEachWindowRow(band.firstRow, band.endRow, radius, guide.height, accumulate, [&](int y) {
        sums.slide();
        applyRow(sums, y, x0, x1);
    });
}

template <typename Sample, Precision kPrecision>
void GuidedFilter<Sample, kPrecision>::applyRow(const WindowSums<kSecondPassQuantities> &sums, int y, int x0,
                                                int x1) const {
    const double count = windowSize();
    const double *slopeSums = sums.windows(kSlope);
    const double *offsetSums = sums.windows(kOffset);
    const uint8_t *guideRow = guide.row(y);
    Sample *__restrict outputRow = output.row(y);
    for (int x = x0; x < x1; x++) {
        const int slope = static_cast<int>(slopeSums[x] / count);
        const int offset = static_cast<int>(offsetSums[x] / count);
        const int value = kPrecision == Precision::kFloating ? (guideRow[x] * slope + 64 * offset) >> 10
                                                             : (guideRow[x] * slope + offset) >> 8;
        outputRow[x] = static_cast<Sample>(sizeof(Sample) == 1 ? clamp8(value) : wrap16(value));
    }
}

/// Writes `area` of the output. All memory is obtained before the workers start.
template <typename Sample, Precision kPrecision>
HdrStatus GuidedFilter<Sample, kPrecision>::run(MemContext *memory, Rect area) const {
    const int width = guide.width;
    std::array<Band, 4> bands = splitIntoBands(area.y0, area.y1, radius, guide.height);
    for (Band &band : bands) {
        if (band.isEmpty())
            continue;
        const int modelRows = band.endModelRow - band.firstModelRow;
        band.sums = Buffer<double>(memory, WindowSums<kFirstPassQuantities>::storageSize(width, radius));
        band.models =
            Buffer<int32_t>(memory, 2 * static_cast<size_t>(modelRows) * static_cast<size_t>(width));
        if (!band.sums || !band.models)
            return HDR_ERR_NOMEM;
    }
    runOnFourWorkers(bands, [&](Band &band) {
        if (band.isEmpty())
            return;
        fitModels(band);
        applyModels(band, area.x0, area.x1);
    });
    return HDR_OK;
}

template <Precision kPrecision, typename Sample>
HdrStatus guidedFilter(MemContext *memory, Plane<const uint8_t> guide, Plane<const Sample> target, int radius,
                       const Rect *rectangle, Plane<Sample> output, double epsilon) {
    assert(radius >= 0 && epsilon >= 1);
    Rect area{0, 0, guide.width, guide.height};
    if (rectangle)
        area = {std::max(rectangle->x0, 0), std::max(rectangle->y0, 0), std::min(rectangle->x1, guide.width),
                std::min(rectangle->y1, guide.height)};
    if (area.x0 >= area.x1 || area.y0 >= area.y1)
        return HDR_OK;

    Buffer<Sample> snapshot;
    if (target.data == output.data) {
        // Other bands still read the rows that a band has replaced.
        snapshot =
            Buffer<Sample>(memory, static_cast<size_t>(target.width) * static_cast<size_t>(target.height));
        if (!snapshot)
            return HDR_ERR_NOMEM;
        const Plane<Sample> copy(snapshot.data(), target.width, target.height);
        for (int y = 0; y < target.height; y++)
            std::copy_n(target.row(y), target.width, copy.row(y));
        target = copy;
    }
    return GuidedFilter<Sample, kPrecision>{guide, target, output, radius, epsilon}.run(memory, area);
}

} // namespace

HdrStatus guided_filter_u8(MemContext *memory, const Offscreen *guide, const Offscreen *target, int radius,
                           const Rect *rectangle, Offscreen *output, double epsilon) {
    return guidedFilter<Precision::kFloating, uint8_t>(memory, planeOf(*guide), planeOf(*target), radius,
                                                       rectangle, planeOf(*output), std::trunc(epsilon));
}

HdrStatus guided_filter_s16(MemContext *memory, const Offscreen *guide, const int16_t *target, int radius,
                            const Rect *rectangle, int16_t *output, int mode, double epsilon) {
    const Plane<const uint8_t> guidePlane = planeOf(*guide);
    const Plane<const int16_t> targetPlane(target, guidePlane.width, guidePlane.height);
    const Plane<int16_t> outputPlane(output, guidePlane.width, guidePlane.height);
    const auto filter =
        mode ? guidedFilter<Precision::kFloating, int16_t> : guidedFilter<Precision::kInteger, int16_t>;
    return filter(memory, guidePlane, targetPlane, radius, rectangle, outputPlane, epsilon);
}

} // namespace hdr
