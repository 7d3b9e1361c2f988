// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/popup_image_view.h"

#include <algorithm>

#include <QKeyEvent>
#include <QPainter>
#include <QScreen>
#include <QVBoxLayout>

#include "ui/image_view_controller.h"

namespace tristop {

namespace {

constexpr double kCornerRadius = 4;

/// Dark pop-up that closes with a click elsewhere.
class Popover : public QWidget {
public:
    Popover(QWidget *contents, QWidget *parent)
        : QWidget(parent, Qt::Popup | Qt::FramelessWindowHint | Qt::NoDropShadowWindowHint) {
        setAttribute(Qt::WA_DeleteOnClose);
        setAttribute(Qt::WA_TranslucentBackground);
        auto *layout = new QVBoxLayout(this);
        layout->setContentsMargins(8, 8, 8, 8);
        layout->addWidget(contents);
    }

    /// Below `anchor`, or above it where the screen ends.
    void showAt(const QRect &anchor, const QRect &available) {
        constexpr int kGap = 4;
        adjustSize();
        const int right = std::max(available.left(), available.right() + 1 - width());
        int y = anchor.bottom() + 1 + kGap;
        if (y + height() > available.bottom() + 1)
            y = std::max(available.top(), anchor.top() - kGap - height());
        move(std::clamp(anchor.center().x() - width() / 2, available.left(), right), y);
        show();
    }

protected:
    void paintEvent(QPaintEvent *) override {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(QColor(0x55, 0x55, 0x55));
        painter.setBrush(QColor(0x1a, 0x1a, 0x1a));
        painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), 2 * kCornerRadius,
                                2 * kCornerRadius);
    }

    void keyPressEvent(QKeyEvent *event) override {
        switch (event->key()) {
        case Qt::Key_Escape:
        case Qt::Key_Space:
        case Qt::Key_Return:
        case Qt::Key_Enter:
            close();
            break;
        default:
            QWidget::keyPressEvent(event);
        }
    }
};

} // namespace

IIPopupImageView::IIPopupImageView(QWidget *parent) : QAbstractButton(parent) {
    setFocusPolicy(Qt::TabFocus);
    setAttribute(Qt::WA_Hover);
    connect(this, &QAbstractButton::pressed, this, &IIPopupImageView::showEnlarged);
}

void IIPopupImageView::setImage(const QImage &image) {
    picture = image;
    scaled = QPixmap();
    setCursor(picture.isNull() ? Qt::ArrowCursor : Qt::PointingHandCursor);
    update();
}

void IIPopupImageView::showEnlarged() {
    setDown(false); // the pop-up takes the release
    if (picture.isNull())
        return;
    auto *enlarged = new IIImageViewController(picture, this);
    enlarged->setAccessibleName(accessibleName());
    auto *popover = new Popover(enlarged, this);
    popover->setPalette(palette());
    popover->showAt(QRect(mapToGlobal(QPoint(0, 0)), size()), screen()->availableGeometry());
}

void IIPopupImageView::keyPressEvent(QKeyEvent *event) {
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
        showEnlarged();
    else
        QAbstractButton::keyPressEvent(event);
}

void IIPopupImageView::paintEvent(QPaintEvent *) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF slot = QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5);
    if (picture.isNull()) {
        painter.setPen(QColor(255, 255, 255, 40));
        painter.setBrush(QColor(255, 255, 255, 10));
        painter.drawRoundedRect(slot, kCornerRadius, kCornerRadius);
    } else {
        const QSize wanted = picture.size().scaled(size() * devicePixelRatioF(), Qt::KeepAspectRatio);
        if (scaled.size() != wanted) {
            scaled =
                QPixmap::fromImage(picture.scaled(wanted, Qt::IgnoreAspectRatio, Qt::SmoothTransformation));
            scaled.setDevicePixelRatio(devicePixelRatioF());
        }
        const QSizeF shown = scaled.deviceIndependentSize();
        painter.drawPixmap(QPointF(width() - shown.width(), height() - shown.height()) / 2, scaled);
    }
    if (hasFocus() || (underMouse() && !picture.isNull())) {
        painter.setPen(QPen(palette().color(QPalette::Highlight), hasFocus() ? 2 : 1));
        painter.setBrush(Qt::NoBrush);
        const double inset = hasFocus() ? 0.5 : 0;
        painter.drawRoundedRect(slot.adjusted(inset, inset, -inset, -inset), kCornerRadius, kCornerRadius);
    }
}

} // namespace tristop
