// SPDX-License-Identifier: GPL-3.0-or-later
#include "IICommon/rounded_box_geometry.h"

#include <algorithm>
#include <cmath>

namespace tristop {

QRectF RoundedBoxGeometry::outlineRect() const {
    const double inset = borderWidth / 2;
    return bounds.adjusted(inset, inset, -inset, -inset).toAlignedRect();
}

QPainterPath RoundedBoxGeometry::outline() const {
    const QRectF rect = outlineRect();
    const QRectF whole(
        QPointF(std::floor(rect.left() + 0.5), std::floor(rect.top() + 0.5)),
        QPointF(std::floor(rect.left() + 0.5 + rect.width()), std::floor(rect.top() + 0.5 + rect.height())));
    constexpr double kDiameter = 2 * kCornerRadius;
    const QRectF corner(0, 0, kDiameter, kDiameter);
    QPainterPath path(QPointF(whole.center().x(), whole.bottom()));
    path.arcTo(corner.translated(whole.right() - kDiameter, whole.bottom() - kDiameter), 270, 90);
    path.arcTo(corner.translated(whole.right() - kDiameter, whole.top()), 0, 90);
    path.arcTo(corner.translated(whole.topLeft()), 90, 90);
    path.arcTo(corner.translated(whole.left(), whole.bottom() - kDiameter), 180, 90);
    path.closeSubpath();
    return path;
}

QRectF RoundedBoxGeometry::titleRect(const QSizeF &title) const {
    const double width =
        std::min(title.width() + 2 * borderWidth, bounds.width() - 2 * (borderWidth + 4)) + 10;
    return {bounds.left() + borderWidth + 4, bounds.top() + 2 * borderWidth, width, title.height()};
}

QPainterPath RoundedBoxGeometry::titlePathWithinRect(const QRectF &rect, double cornerRadius,
                                                     const QRectF &titleRect) const {
    const double bottom = titleRect.bottom() + (titleRect.top() - rect.top());
    const double diameter = 2 * cornerRadius;
    const QRectF corner(0, 0, diameter, diameter);
    QPainterPath path(QPointF(rect.left(), bottom));
    if (rect.width() >= titleRect.width() + 20 && !drawsFullTitleBar && drawsTitle) {
        const double right = rect.left() + 2 * (titleRect.left() - rect.left()) + titleRect.width();
        path.arcTo(corner.translated(right - diameter, bottom - diameter), 270, 90);
        path.lineTo(right, rect.top());
    } else {
        path.lineTo(rect.right(), bottom);
        path.arcTo(corner.translated(rect.right() - diameter, rect.top()), 0, 90);
    }
    path.arcTo(corner.translated(rect.topLeft()), 90, 90);
    path.closeSubpath();
    return path;
}

} // namespace tristop
