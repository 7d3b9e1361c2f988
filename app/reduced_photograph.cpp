// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/reduced_photograph.h"

#include <algorithm>
#include <cmath>

#include <libyuv.h>

#include "app/upright_drawing.h"

namespace tristop {

BgrxImage reducedUpright(const CBImageSource &photograph, int32_t longestSide) {
    const BgrxImage *stored = photograph.image();
    if (stored == nullptr)
        return {};
    const double scale =
        std::min(1.0, static_cast<double>(longestSide) / std::max(stored->width, stored->height));
    const auto scaled = [scale](int32_t side) {
        return std::max(1, static_cast<int32_t>(std::lround(scale * side)));
    };
    BgrxImage reduced = allocBgrx(scaled(stored->width), scaled(stored->height));
    const bool turned = photograph.orientation() >= 5;
    BgrxImage upright =
        allocBgrx(turned ? reduced.height : reduced.width, turned ? reduced.width : reduced.height);
    if (!reduced.pixels || !upright.pixels)
        return {};
    libyuv::ARGBScale(stored->pixels.get(), 4 * stored->width, stored->width, stored->height,
                      reduced.pixels.get(), 4 * reduced.width, reduced.width, reduced.height,
                      libyuv::kFilterBox);
    UprightDrawing(reduced, uprightTransform(photograph.orientation(), 1, 1, reduced.width, reduced.height),
                   upright.width, upright.height)
        .drawRows(0, upright.height, upright.pixels.get());
    return upright;
}

} // namespace tristop
