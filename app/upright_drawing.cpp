// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/upright_drawing.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace tristop {

AffineTransform uprightTransform(int orientation, double sx, double sy, double W, double H) {
    switch (orientation) {
    case 2: // mirrored left to right
        return {-sx, 0, 0, sy, W, 0};
    case 3: // turned by a half
        return {-sx, 0, 0, -sy, W, H};
    case 4: // mirrored top to bottom
        return {sx, 0, 0, -sy, 0, H};
    case 5: // mirrored along the main diagonal
        return {0, -sx, -sy, 0, H, W};
    case 6: // turned a quarter clockwise
        return {0, -sx, sy, 0, 0, W};
    case 7: // mirrored along the other diagonal
        return {0, sx, sy, 0, 0, 0};
    case 8: // turned a quarter counter-clockwise
        return {0, sx, -sy, 0, H, 0};
    default:
        return {sx, 0, 0, sy, 0, 0};
    }
}

UprightDrawing::UprightDrawing(const BgrxImage &source, const AffineTransform &transform, int32_t width,
                               int32_t height)
    : source(source.pixels.get()) {
    // Inverse of the transform, one axis at a time. Source rows are stored from the top down.
    const SourceAxis sourceColumns{source.width, 4};
    const SourceAxis sourceRows{source.height, source.lineBytes()};
    const bool turned = transform.a == 0;
    for (int32_t x = 0; x < width; ++x) {
        const double fromLeft = x + 0.5 - transform.tx;
        columns.push_back(turned ? sampleAt(source.height - fromLeft / transform.c, sourceRows)
                                 : sampleAt(fromLeft / transform.a, sourceColumns));
    }
    for (int32_t y = 0; y < height; ++y) {
        const double fromBottom = height - y - 0.5 - transform.ty;
        rows.push_back(turned ? sampleAt(fromBottom / transform.b, sourceColumns)
                              : sampleAt(source.height - fromBottom / transform.d, sourceRows));
    }
}

/// The sample at `position`, in pixels from the start of the axis; a pixel's centre lies at its index + 0.5.
UprightDrawing::Sample UprightDrawing::sampleAt(double position, SourceAxis axis) {
    if (!(position >= 0 && position < axis.length))
        return {};
    const double center = position - 0.5;
    const double floor = std::floor(center);
    const auto clamped = [axis](double index) {
        return static_cast<size_t>(std::clamp(index, 0.0, axis.length - 1.0)) * axis.step;
    };
    return {clamped(floor), clamped(floor + 1), static_cast<uint32_t>((center - floor) * 256), true};
}

void UprightDrawing::drawPixel(const uint8_t *source, const Sample &column, const Sample &row,
                               uint8_t *target) {
    const uint8_t *nearest = source + column.near + row.near;
    if ((column.fraction | row.fraction) == 0) {
        std::memcpy(target, nearest, 4);
        return;
    }
    const uint8_t *right = source + column.far + row.near;
    const uint8_t *below = source + column.near + row.far;
    const uint8_t *diagonal = source + column.far + row.far;
    for (size_t i = 0; i < 4; ++i) {
        const uint32_t upper = nearest[i] * (256 - column.fraction) + right[i] * column.fraction;
        const uint32_t lower = below[i] * (256 - column.fraction) + diagonal[i] * column.fraction;
        target[i] =
            static_cast<uint8_t>((upper * (256 - row.fraction) + lower * row.fraction + 0x8000) >> 16);
    }
}

void UprightDrawing::drawRows(int32_t first, int32_t count, uint8_t *target) const {
    // In tiles, so that a turned picture reads whole cache lines of the source.
    constexpr size_t kTile = 32;
    const size_t lineBytes = 4 * columns.size();
    const auto firstRow = static_cast<size_t>(first);
    const size_t drawn = std::min(static_cast<size_t>(count), rows.size() - std::min(firstRow, rows.size()));
    std::memset(target, 0, lineBytes * static_cast<size_t>(count));
    for (size_t top = 0; top < drawn; top += kTile)
        for (size_t left = 0; left < columns.size(); left += kTile)
            for (size_t y = top; y < std::min(top + kTile, drawn); ++y) {
                const Sample &row = rows[firstRow + y];
                uint8_t *line = target + lineBytes * y;
                for (size_t x = left; x < std::min(left + kTile, columns.size()); ++x)
                    if (row.covered && columns[x].covered)
                        drawPixel(source, columns[x], row, line + 4 * x);
            }
}

} // namespace tristop
