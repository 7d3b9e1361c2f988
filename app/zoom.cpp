// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/zoom.h"

#include <algorithm>

namespace tristop {

void ZoomState::zoomIn() {
    mode = ZoomMode::Free;
    const auto above = std::ranges::upper_bound(kZoomSteps, factor);
    if (above != kZoomSteps.end())
        factor = *above;
}

void ZoomState::zoomOut() {
    mode = ZoomMode::Free;
    const auto notBelow = std::ranges::lower_bound(kZoomSteps, factor);
    if (notBelow != kZoomSteps.begin())
        factor = *std::prev(notBelow);
}

void ZoomState::zoomTo(double wanted) {
    mode = ZoomMode::Free;
    factor = std::clamp(wanted, kZoomSteps.front(), kZoomSteps.back());
}

double fitZoom(double imageWidth, double imageHeight, double clipWidth, double clipHeight) {
    double fittedWidth = imageWidth;
    if (clipWidth < imageWidth || clipHeight < imageHeight) {
        const auto horizontally = static_cast<float>(clipWidth / imageWidth);
        const auto vertically = static_cast<float>(clipHeight / imageHeight);
        fittedWidth = static_cast<float>(imageWidth * std::min(horizontally, vertically));
    }
    return std::min(fittedWidth / imageWidth, 1.0);
}

} // namespace tristop
