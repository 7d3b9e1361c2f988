// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/panel_background_views.h"

#include <QPainter>

#include "ui/bordless_window.h"

namespace tristop {

namespace {

// Inside another window there is nothing of the own window's to clear, only the other one's contents to lose.
void drawPanel(QWidget *view, float white, float alpha) {
    constexpr double kCornerRadius = 10;
    QPainter painter(view);
    if (qobject_cast<MMBordlessWindow *>(view->window())) {
        painter.setCompositionMode(QPainter::CompositionMode_Source);
        painter.fillRect(view->rect(), Qt::transparent);
        painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
    }
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor::fromRgbF(white, white, white, alpha));
    painter.drawRoundedRect(view->rect(), kCornerRadius, kCornerRadius);
}

} // namespace

void MMModalWindowBackgroundView::paintEvent(QPaintEvent *) {
    drawPanel(this, 0.1F, 0.8F);
}

void MMBordlessWindowBackgroundView::paintEvent(QPaintEvent *) {
    drawPanel(this, 0.0F, 0.3F);
}

} // namespace tristop
