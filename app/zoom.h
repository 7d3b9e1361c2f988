// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <cstdint>

namespace tristop {

/// The factors that zooming in and out stops at. 1 is one pixel of the picture to one of the screen's logical
/// size.
inline constexpr std::array kZoomSteps = {0.03, 0.05, 0.07, 0.1, 0.15, 0.2,  0.3,  0.5,  0.7, 1.0,
                                          1.5,  2.0,  3.0,  5.0, 7.0,  10.0, 20.0, 30.0, 50.0};

enum class ZoomMode : int64_t { Fit = 0, Actual = 1, Free = 2 };

/// How large the document's picture is shown.
struct ZoomState {
    ZoomMode mode = ZoomMode::Fit;
    double factor = 1.0;

    /// To the next step above; stays where there is none.
    void zoomIn();
    /// To the next step below; stays where there is none.
    void zoomOut();
    /// To any factor, within the first and the last step.
    void zoomTo(double factor);
};

/// The factor at which a picture fits into a clip; at most 1, so that no picture is enlarged. All sizes are
/// positive.
double fitZoom(double imageWidth, double imageHeight, double clipWidth, double clipHeight);

} // namespace tristop
