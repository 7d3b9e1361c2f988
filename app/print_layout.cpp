// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/print_layout.h"

#include <algorithm>
#include <cmath>

namespace tristop {
namespace {

double widerMargin(double before, double paper, double after) {
    return std::max({static_cast<float>(before), static_cast<float>(paper - after), 0.0F});
}

PageRect integral(const PageRect &rect) {
    const double left = std::floor(rect.x), top = std::floor(rect.y);
    return {left, top, std::ceil(rect.x + rect.width) - left, std::ceil(rect.y + rect.height) - top};
}

} // namespace

PrintMargins printMargins(PageSize paper, const PageRect &imageable) {
    return {widerMargin(imageable.x, paper.width, imageable.x + imageable.width),
            widerMargin(imageable.y, paper.height, imageable.y + imageable.height)};
}

PageRect pictureRect(const PageRect &frame, PageSize image) {
    const PageRect whole = integral(frame);
    const float scale = std::min(static_cast<float>(whole.width / image.width),
                                 static_cast<float>(whole.height / image.height));
    const double width = scale * image.width, height = scale * image.height;
    return {static_cast<float>((whole.width - width) * 0.5 + whole.x),
            static_cast<float>((whole.height - height) * 0.5 + whole.y), width, height};
}

} // namespace tristop
