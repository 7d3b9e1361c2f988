// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>
#include <optional>

#include <QPointF>
#include <QSizeF>

namespace tristop {

/// Which point of a document lies in the middle of its clip, kept in thousandths of the document's size, so
/// that it stays when the document is enlarged or reduced.
class ClipGeometry {
public:
    QPointF center() const { return centerPoint; }
    /// Back to the document's middle.
    void centerImage() { centerPoint = {500, 500}; }

    /// The centre in units of the document.
    QPointF normalizedCenter(const QSizeF &document) const;
    /// Where the document's origin lies in a clip of the given size.
    QPointF documentOrigin(const QSizeF &document, const QSizeF &clip) const;

    /// The centre moves from `from` by `offset` units of the document, at most to the document's edges. A
    /// document without area stays where it is.
    void moveCenter(const QPointF &from, const QPointF &offset, const QSizeF &document);

private:
    QPointF centerPoint{500, 500};
};

/// Lets a scroll through only when more than 0.3 seconds have passed since the last one it let through.
class ScrollPause {
public:
    using Clock = std::chrono::steady_clock;

    bool passes(Clock::time_point now);

private:
    std::optional<Clock::time_point> lastScroll;
};

} // namespace tristop
