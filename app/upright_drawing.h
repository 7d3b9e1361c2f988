// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "app/pixels.h"

namespace tristop {

/// Maps (x, y) to (a x + c y + tx, b x + d y + ty).
struct AffineTransform {
    double a = 1, b = 0, c = 0, d = 1, tx = 0, ty = 0;

    bool operator==(const AffineTransform &) const = default;
};

/**
 * Turns and mirrors a picture as an EXIF orientation asks, after stretching it by sx and sy to W x H, in
 * coordinates with the origin at the bottom left and y up. Orientations outside 1 to 8 leave it as it is.
 */
AffineTransform uprightTransform(int orientation, double sx, double sy, double W, double H);

/**
 * A stored picture drawn through a transform onto a canvas of width x height pixels, any rows at a time.
 *
 * Coordinates have their origin at the canvas's bottom left corner and y pointing up; the source fills the
 * rectangle from (0, 0) to its size. The transform turns by quarters, mirrors and stretches: either
 * b = c = 0 or a = d = 0. A stretched picture is sampled bilinearly, any other one copied pixel by pixel;
 * what leaves the canvas is cut off, and what the drawing does not reach is zero.
 */
class UprightDrawing {
public:
    /// `source` must outlive the drawing.
    UprightDrawing(const BgrxImage &source, const AffineTransform &transform, int32_t width, int32_t height);

    /**
     * Draws `count` rows, from row `first` (0 is the topmost) on, to `target`: BGRX, rows 4 x width bytes
     * apart. Rows below the canvas are zero. Safe to call from several threads.
     */
    void drawRows(int32_t first, int32_t count, uint8_t *target) const;

private:
    /// Where one column or row of the canvas takes its pixels: byte offsets into the source.
    struct Sample {
        size_t near = 0;
        size_t far = 0;
        uint32_t fraction = 0; ///< weight of `far` in 1/256
        bool covered = false;
    };
    /// One axis of the source: its length in pixels and the bytes from one pixel to the next.
    struct SourceAxis {
        int32_t length;
        size_t step;
    };

    static Sample sampleAt(double position, SourceAxis axis);
    static void drawPixel(const uint8_t *source, const Sample &column, const Sample &row, uint8_t *target);

    const uint8_t *source;
    std::vector<Sample> columns;
    std::vector<Sample> rows;
};

} // namespace tristop
