// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/clip_geometry.h"

#include <algorithm>

namespace tristop {

namespace {

constexpr double kWhole = 1000;

} // namespace

QPointF ClipGeometry::normalizedCenter(const QSizeF &document) const {
    return {centerPoint.x() / kWhole * document.width(), centerPoint.y() / kWhole * document.height()};
}

QPointF ClipGeometry::documentOrigin(const QSizeF &document, const QSizeF &clip) const {
    const QPointF middle = normalizedCenter(document);
    return {-(middle.x() - clip.width() / 2), -(middle.y() - clip.height() / 2)};
}

void ClipGeometry::moveCenter(const QPointF &from, const QPointF &offset, const QSizeF &document) {
    if (document.isEmpty())
        return;
    const QPointF moved(from.x() + offset.x() / document.width() * kWhole,
                        from.y() + offset.y() / document.height() * kWhole);
    centerPoint = {std::clamp(moved.x(), 0.0, kWhole), std::clamp(moved.y(), 0.0, kWhole)};
}

bool ScrollPause::passes(Clock::time_point now) {
    constexpr std::chrono::milliseconds kPause(300);
    if (lastScroll && now - *lastScroll <= kPause)
        return false;
    lastScroll = now;
    return true;
}

} // namespace tristop
