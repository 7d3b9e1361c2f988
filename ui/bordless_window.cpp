// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/bordless_window.h"

#include <QGuiApplication>
#include <QKeyEvent>
#include <QPainter>
#include <QScreen>

namespace tristop {

MMBordlessWindow::MMBordlessWindow(QWidget *parent) : QWidget(parent, Qt::Dialog | Qt::FramelessWindowHint) {
    setAttribute(Qt::WA_TranslucentBackground);
}

void MMBordlessWindow::center(const QWidget *parent) {
    QRectF around(QGuiApplication::primaryScreen()->geometry());
    if (!isWindow())
        around = parentWidget()->rect();
    else if (parent)
        around = parent->window()->frameGeometry();
    move((around.topLeft() + QPointF(around.width() - width(), around.height() - height()) * 0.5).toPoint());
}

void MMBordlessWindow::keyPressEvent(QKeyEvent *event) {
    if (event->key() == Qt::Key_Escape)
        cancel();
}

void MMBordlessWindow::paintEvent(QPaintEvent *) {
    if (isWindow())
        QPainter(this).fillRect(rect(), QColor::fromRgbF(0.1F, 0.1F, 0.1F, 0.5F));
}

} // namespace tristop
