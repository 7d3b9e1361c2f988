// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/report/canvas.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace tristop {

Color blend(Color under, Color over, double part) {
    const auto mix = [part](uint8_t a, uint8_t b) {
        return static_cast<uint8_t>(std::lround(a + (b - a) * part));
    };
    return {mix(under.red, over.red), mix(under.green, over.green), mix(under.blue, over.blue)};
}

Canvas::Canvas(int width, int height)
    : columns(width), rows(height), samples(3 * static_cast<size_t>(width) * static_cast<size_t>(height)) {}

Color Canvas::at(int x, int y) const {
    const uint8_t *bgr = const_cast<Canvas *>(this)->pixel(x, y);
    return {bgr[2], bgr[1], bgr[0]};
}

void Canvas::set(int x, int y, Color color) {
    uint8_t *bgr = pixel(x, y);
    bgr[0] = color.blue;
    bgr[1] = color.green;
    bgr[2] = color.red;
}

void Canvas::line(Point from, Point to, double thickness, Color color) {
    const double reach = thickness / 2 + 1;
    const auto pixels = [reach](double a, double b, int size) {
        const auto inside = [size](double value) {
            return static_cast<int>(std::clamp<double>(value, 0, size));
        };
        return std::pair{inside(std::floor(std::min(a, b) - reach)),
                         inside(std::ceil(std::max(a, b) + reach))};
    };
    const auto [left, right] = pixels(from.x, to.x, columns);
    const auto [top, bottom] = pixels(from.y, to.y, rows);
    const double alongX = to.x - from.x, alongY = to.y - from.y;
    const double squaredLength = alongX * alongX + alongY * alongY;
    for (int y = top; y < bottom; ++y)
        for (int x = left; x < right; ++x) {
            const double dx = x + 0.5 - from.x, dy = y + 0.5 - from.y;
            const double along =
                squaredLength > 0 ? std::clamp((dx * alongX + dy * alongY) / squaredLength, 0.0, 1.0) : 0;
            const double distance = std::hypot(dx - along * alongX, dy - along * alongY);
            const double cover = std::clamp(thickness / 2 + 0.5 - distance, 0.0, 1.0);
            if (cover > 0)
                set(x, y, blend(at(x, y), color, cover));
        }
}

void Canvas::arrow(Point from, Point to, double thickness, Color color) {
    line(from, to, thickness, color);
    const double length = std::hypot(to.x - from.x, to.y - from.y);
    if (length < 1)
        return;
    const double head = std::min(3 * thickness + 2, length / 2) / length;
    const double backX = (from.x - to.x) * head, backY = (from.y - to.y) * head;
    line(to, {to.x + backX - backY / 2, to.y + backY + backX / 2}, thickness, color);
    line(to, {to.x + backX + backY / 2, to.y + backY - backX / 2}, thickness, color);
}

} // namespace tristop
