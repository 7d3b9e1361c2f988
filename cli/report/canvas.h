// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "app/picture_view.h"

namespace tristop {

struct Color {
    uint8_t red, green, blue;

    friend bool operator==(const Color &, const Color &) = default;
};

/// `part` of `over` (0 to 1) on `under`.
Color blend(Color under, Color over, double part);

/// A position on a canvas in pixels; pixel (0, 0) reaches from 0 to 1.
struct Point {
    double x, y;
};

/// A picture to draw on, black at first.
class Canvas {
public:
    Canvas(int width, int height);

    int width() const { return columns; }
    int height() const { return rows; }
    PictureView view() const { return {samples.data(), columns, rows, 3 * columns}; }

    Color at(int x, int y) const;
    void set(int x, int y, Color color);

    /// Smooth-edged line with round ends, a dot when it has no length. What lies outside is not drawn.
    void line(Point from, Point to, double thickness, Color color);
    /// A line with a head at `to`.
    void arrow(Point from, Point to, double thickness, Color color);

private:
    uint8_t *pixel(int x, int y) {
        return samples.data() +
               3 * (static_cast<size_t>(y) * static_cast<size_t>(columns) + static_cast<size_t>(x));
    }

    int columns, rows;
    std::vector<uint8_t> samples;
};

} // namespace tristop
