// SPDX-License-Identifier: GPL-3.0-or-later
// Where a picture lands on a page. All lengths are in points.
#pragma once

namespace tristop {

struct PageSize {
    double width = 0;
    double height = 0;
};

struct PageRect {
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;

    bool operator==(const PageRect &) const = default;
};

/// Margins of a page: one for left and right, one for top and bottom.
struct PrintMargins {
    double horizontal = 0;
    double vertical = 0;
};

/// Equal margins on opposite sides, as wide as the wider one that the printer needs.
PrintMargins printMargins(PageSize paper, const PageRect &imageable);

/// Where a picture of `image` pixels is drawn in a frame: as large as it fits, in the middle. The frame is
/// made integral, outward, first.
PageRect pictureRect(const PageRect &frame, PageSize image);

} // namespace tristop
