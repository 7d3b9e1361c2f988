// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPainterPath>
#include <QRectF>
#include <QSizeF>

namespace tristop {

/// What decides the shape of a rounded box; y runs down.
struct RoundedBoxGeometry {
    static constexpr double kCornerRadius = 4;

    QRectF bounds;
    double borderWidth = 2;
    bool drawsTitle = true;
    bool drawsFullTitleBar = false;

    /// Rectangle of the outline: the bounds less half the border, grown to whole numbers.
    QRectF outlineRect() const;
    QPainterPath outline() const;
    /// Where a title of the given size lies.
    QRectF titleRect(const QSizeF &title) const;
    /// The title's tab along the top of `rect`: to a little past the title, or over the whole width when the
    /// box is less than 20 wider than the title, has a full title bar or draws no title.
    QPainterPath titlePathWithinRect(const QRectF &rect, double cornerRadius, const QRectF &titleRect) const;
};

} // namespace tristop
