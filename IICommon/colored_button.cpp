// SPDX-License-Identifier: GPL-3.0-or-later
#include "IICommon/colored_button.h"

#include <QPainter>
#include <QPainterPath>
#include <QTextOption>

namespace tristop {

namespace {

const QColor kAccent = QColor::fromRgbF(0.23F, 0.6F, 0.99F);
const QColor kDarkGray = QColor::fromRgbF(1.0F / 3, 1.0F / 3, 1.0F / 3);
constexpr double kCornerRadius = 5;
constexpr double kBorderWidth = 0.3F;

} // namespace

MLColoredButton::MLColoredButton(QWidget *parent) : QPushButton(parent) {
    commonInit();
}

MLColoredButton::MLColoredButton(const QString &title, QWidget *parent) : QPushButton(title, parent) {
    commonInit();
}

void MLColoredButton::commonInit() {
    setFlat(true);
}

void MLColoredButton::setBackgroundColor(const QColor &backgroundColor) {
    fillColor = backgroundColor;
    update();
}

void MLColoredButton::setTextColor(const QColor &textColor) {
    titleColor = textColor;
    update();
}

void MLColoredButton::setDisableTextColor(const QColor &disableTextColor) {
    disabledTitleColor = disableTextColor;
    update();
}

void MLColoredButton::setIsDrawBorder(bool isDrawBorder) {
    borderDrawn = isDrawBorder;
    update();
}

void MLColoredButton::setAlignment(Qt::Alignment alignment) {
    titleAlignment = alignment;
    update();
}

void MLColoredButton::paintEvent(QPaintEvent *) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF inset = QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5);
    QPainterPath outline;
    outline.addRoundedRect(inset, kCornerRadius, kCornerRadius);

    QColor pressed = kAccent;
    pressed.setAlphaF(0.7F);
    painter.fillPath(outline, isDown() ? pressed : fillColor);

    if (isEnabled())
        painter.setPen(titleColor);
    else
        painter.setPen(disabledTitleColor.isValid() ? disabledTitleColor : kDarkGray);
    const auto alignment = static_cast<int>((titleAlignment & Qt::AlignHorizontal_Mask) | Qt::AlignVCenter);
    painter.drawText(inset, alignment | Qt::TextWordWrap | Qt::TextShowMnemonic, text());

    if (borderDrawn)
        painter.strokePath(outline, QPen(isEnabled() ? kAccent : kDarkGray, kBorderWidth));
    if (hasFocus() && !isDown()) {
        painter.setPen(QPen(kAccent, 1));
        painter.drawRoundedRect(inset.adjusted(1.5, 1.5, -1.5, -1.5), kCornerRadius - 1.5,
                                kCornerRadius - 1.5);
    }
}

} // namespace tristop
