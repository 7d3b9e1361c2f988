// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/window_background_view.h"

#include <QPainter>

#include "ui/common_define.h"

namespace tristop {

IIWindowBackgroundView::IIWindowBackgroundView(QWidget *parent) : QWidget(parent) {
    setAttribute(Qt::WA_OpaquePaintEvent);
}

void IIWindowBackgroundView::paintEvent(QPaintEvent * /*event*/) {
    QPainter(this).fillRect(rect(), CommonDefine::backgroundColor());
}

} // namespace tristop
