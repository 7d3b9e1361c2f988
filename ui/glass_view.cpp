// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/glass_view.h"

#include <QPainter>

namespace tristop {

SLGlassView::SLGlassView(QWidget *parent) : QWidget(parent) {}

void SLGlassView::setBackgroundColor(const QColor &color) {
    fill = color;
    update();
}

void SLGlassView::paintEvent(QPaintEvent * /*event*/) {
    QPainter(this).fillRect(rect(), fill);
}

} // namespace tristop
