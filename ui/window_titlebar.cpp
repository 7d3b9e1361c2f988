// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/window_titlebar.h"

#include <QEnterEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>

#include "ui/base_window.h"
#include "ui/localized_text.h"
#include "ui/theme.h"

namespace tristop {

namespace {

constexpr int kLeft = 8;
constexpr int kTop = 5;
constexpr int kColumnGap = 3;
constexpr int kSeparatorX = 29;
constexpr qreal kCornerRadius = 5;
constexpr qreal kDiscDiameter = 14;

const char *nameKeyOf(TitlebarButton::Role role) {
    switch (role) {
    case TitlebarButton::Role::Close:
        return "IDS_WINDOW_CLOSE";
    case TitlebarButton::Role::Minimize:
        return "IDS_WINDOW_MINIMIZE";
    case TitlebarButton::Role::Zoom:
        break;
    }
    return "IDS_WINDOW_ZOOM";
}

} // namespace

TitlebarButton::TitlebarButton(Role role, QWidget *parent) : QAbstractButton(parent), role(role) {
    resize(kSize);
    setFocusPolicy(Qt::NoFocus); // as on any title bar: the window's menus and shortcuts do the same
    const QString name = localizedText(nameKeyOf(role));
    setAccessibleName(name);
    setToolTip(name);
    setAttribute(Qt::WA_Hover);
}

void TitlebarButton::setHighlighted(bool highlighted) {
    isHighlighted = highlighted;
    update();
}

void TitlebarButton::paintEvent(QPaintEvent * /*event*/) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QPointF centre = QRectF(rect()).center();

    QColor disc = isActiveWindow() || isHighlighted ? theme::kDisc : theme::kControl;
    if (underMouse())
        disc = role == Role::Close ? theme::kDiscClose : theme::kDiscHover;
    if (isDown())
        disc = disc.darker(125);
    painter.setPen(Qt::NoPen);
    painter.setBrush(disc);
    painter.drawEllipse(centre, kDiscDiameter / 2, kDiscDiameter / 2);

    if (!isHighlighted)
        return;
    painter.setPen(QPen(Qt::white, 1.4, Qt::SolidLine, Qt::RoundCap));
    painter.setBrush(Qt::NoBrush);
    constexpr qreal kReach = 2.6;
    switch (role) {
    case Role::Close:
        painter.drawLine(centre - QPointF(kReach, kReach), centre + QPointF(kReach, kReach));
        painter.drawLine(centre - QPointF(kReach, -kReach), centre + QPointF(kReach, -kReach));
        break;
    case Role::Minimize:
        painter.drawLine(centre - QPointF(3, 0), centre + QPointF(3, 0));
        break;
    case Role::Zoom:
        painter.drawRect(QRectF(centre - QPointF(kReach, kReach), centre + QPointF(kReach, kReach)));
        break;
    }
}

SLWindowTitlebar::SLWindowTitlebar(QWidget *parent) : SLGlassView(parent) {
    setBackgroundColor(theme::kTitlebar);
    setFixedHeight(kHeight);
    commonInit();
}

void SLWindowTitlebar::commonInit() {
    using Role = TitlebarButton::Role;
    close = new TitlebarButton(Role::Close, this);
    minimize = new TitlebarButton(Role::Minimize, this);
    maximize = new TitlebarButton(Role::Zoom, this);
    connect(close, &QAbstractButton::clicked, this, [this] { window()->close(); });
    connect(minimize, &QAbstractButton::clicked, this, [this] { window()->showMinimized(); });
    connect(maximize, &QAbstractButton::clicked, this, &SLWindowTitlebar::zoomWindow);
    placeButtons();
}

void SLWindowTitlebar::placeButtons() {
    if (!close)
        return;
    const int width = TitlebarButton::kSize.width();
    const int height = TitlebarButton::kSize.height();
    if (isVertical) {
        close->move(kLeft, kTop);
        minimize->move(kLeft, close->y() + height + kColumnGap);
        maximize->move(kLeft, minimize->y() + height + kColumnGap);
    } else {
        close->move(kLeft, kTop);
        minimize->move(width + 10, kTop);
        maximize->move(minimize->x() + 2 + width, kTop);
    }
    update();
}

void SLWindowTitlebar::setVerticalButtons(bool vertical) {
    isVertical = vertical;
    placeButtons();
}

void SLWindowTitlebar::setHiddenButtons(bool hidden) {
    isWithoutButtons = hidden;
    if (!hidden)
        return;
    for (TitlebarButton **button : {&close, &minimize, &maximize}) {
        delete *button;
        *button = nullptr;
    }
    update();
}

void SLWindowTitlebar::setJustClose(bool justClose) {
    isJustClose = justClose;
    if (justClose && close) {
        minimize->hide();
        maximize->hide();
    }
    update();
}

int SLWindowTitlebar::buttonsEnd() const {
    if (!close)
        return 0;
    const TitlebarButton *last = isVertical || isJustClose ? close : maximize;
    return last->geometry().right() + 1;
}

void SLWindowTitlebar::setHighlighted(bool highlighted) {
    for (TitlebarButton *button : {close, minimize, maximize})
        if (button)
            button->setHighlighted(highlighted);
}

void SLWindowTitlebar::enterEvent(QEnterEvent * /*event*/) {
    setHighlighted(true);
}

void SLWindowTitlebar::leaveEvent(QEvent * /*event*/) {
    setHighlighted(false);
}

void SLWindowTitlebar::mouseDoubleClickEvent(QMouseEvent *event) {
    if (event->button() == Qt::LeftButton)
        zoomWindow();
}

void SLWindowTitlebar::zoomWindow() {
    if (auto *base = qobject_cast<SLBaseWindow *>(window()))
        base->zoom();
}

void SLWindowTitlebar::paintEvent(QPaintEvent * /*event*/) {
    QPainter painter(this);
    const QRectF bounds = rect();
    QPainterPath shape;
    shape.setFillRule(Qt::WindingFill);
    if (window()->isMaximized() || window()->isFullScreen()) {
        shape.addRect(bounds);
    } else {
        shape.addRoundedRect(bounds, kCornerRadius, kCornerRadius);
        shape.addRect(bounds.adjusted(0, 10, 0, 0));
    }
    painter.setRenderHint(QPainter::Antialiasing);
    painter.fillPath(shape, backgroundColor());
    painter.setRenderHint(QPainter::Antialiasing, false);
    painter.fillRect(QRectF(0, bounds.height() - 1, bounds.width(), 1), Qt::black);
    if (isVertical && !isWithoutButtons && !isJustClose) {
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(QPen(Qt::black, 0.4));
        painter.drawLine(QPointF(kSeparatorX, 0), QPointF(kSeparatorX, bounds.height()));
    }
}

} // namespace tristop
