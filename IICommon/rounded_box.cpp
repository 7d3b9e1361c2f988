// SPDX-License-Identifier: GPL-3.0-or-later
#include "IICommon/rounded_box.h"

#include <cmath>

#include <QEvent>
#include <QFontMetricsF>
#include <QPainter>

#include "IICommon/accessible_role.h"
#include "IICommon/gradient.h"

namespace tristop {

IIRoundedBox::IIRoundedBox(QWidget *parent)
    : QWidget(parent), lineColor(QColor::fromRgbF(0.5F, 0.5F, 0.5F)), textColor(Qt::white),
      startColor(QColor::fromRgbF(0.92F, 0.92F, 0.92F)), endColor(QColor::fromRgbF(0.82F, 0.82F, 0.82F)),
      plainColor(QColor::fromRgbF(0.9F, 0.9F, 0.9F)) {
    setAccessibleRole(this, QAccessible::Grouping);
    keepContentsClear();
}

void IIRoundedBox::setTitle(const QString &title) {
    titleText = title;
    setAccessibleName(title);
    update();
}

void IIRoundedBox::setDrawsTitle(bool drawsTitle) {
    titleDrawn = drawsTitle;
    update();
}

void IIRoundedBox::setBorderWidth(float borderWidth) {
    lineWidth = borderWidth;
    keepContentsClear();
    update();
}

void IIRoundedBox::setBorderColor(const QColor &borderColor) {
    lineColor = borderColor;
    update();
}

void IIRoundedBox::setTitleColor(const QColor &titleColor) {
    textColor = titleColor;
    update();
}

void IIRoundedBox::setGradientStartColor(const QColor &gradientStartColor) {
    startColor = gradientStartColor;
    update();
}

void IIRoundedBox::setGradientEndColor(const QColor &gradientEndColor) {
    endColor = gradientEndColor;
    update();
}

void IIRoundedBox::setBackgroundColor(const QColor &backgroundColor) {
    plainColor = backgroundColor;
    update();
}

void IIRoundedBox::setDrawsFullTitleBar(bool drawsFullTitleBar) {
    fullTitleBar = drawsFullTitleBar;
    update();
}

void IIRoundedBox::setSelected(bool selected) {
    isSelected = selected;
    update();
}

void IIRoundedBox::setDrawsGradientBackground(bool drawsGradientBackground) {
    gradientBackground = drawsGradientBackground;
    update();
}

QFont IIRoundedBox::titleFont() const {
    QFont bold = font();
    bold.setBold(true);
    // A small control's text is 11 where the ordinary one is 13.
    if (bold.pointSizeF() > 0)
        bold.setPointSizeF(bold.pointSizeF() * 11 / 13);
    else
        bold.setPixelSize(bold.pixelSize() * 11 / 13);
    return bold;
}

RoundedBoxGeometry IIRoundedBox::geometryOfBox() const {
    return {rect(), lineWidth, titleDrawn, fullTitleBar};
}

QSizeF IIRoundedBox::titleSize() const {
    const QFontMetricsF metrics(titleFont());
    return {std::ceil(metrics.horizontalAdvance(titleText)), std::ceil(metrics.height())};
}

void IIRoundedBox::keepContentsClear() {
    constexpr int kSpacing = 8;
    const RoundedBoxGeometry box = geometryOfBox();
    const QRectF title = box.titleRect(titleSize());
    const int border = static_cast<int>(std::ceil(lineWidth));
    const double tabHeight = title.bottom() + title.top() - box.outlineRect().top();
    setContentsMargins(border + kSpacing, static_cast<int>(std::ceil(tabHeight)) + kSpacing,
                       border + kSpacing, border + kSpacing);
}

void IIRoundedBox::paintEvent(QPaintEvent *) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const RoundedBoxGeometry box = geometryOfBox();
    const QPainterPath outline = box.outline();
    if (gradientBackground) {
        painter.save();
        painter.setClipPath(outline);
        CTGradient::gradientWithBeginningColor(startColor, endColor)
            .fillRect(painter, outline.boundingRect(), 270);
        painter.restore();
    } else {
        painter.fillPath(outline, plainColor);
    }

    const QColor tabColor = isSelected ? palette().color(QPalette::Highlight) : lineColor;
    const QRectF title = box.titleRect(titleSize());
    const QPainterPath tab =
        box.titlePathWithinRect(outline.boundingRect(), RoundedBoxGeometry::kCornerRadius, title);
    painter.fillPath(tab, tabColor);
    tabRect = tab.boundingRect();
    if (lineWidth > 0)
        painter.strokePath(outline, QPen(tabColor, lineWidth));

    if (titleDrawn) {
        painter.setFont(titleFont());
        painter.setPen(textColor);
        const QFontMetricsF metrics(painter.font());
        painter.drawText(title, Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine,
                         metrics.elidedText(titleText, Qt::ElideRight, title.width()));
    }
}

void IIRoundedBox::changeEvent(QEvent *event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange) {
        keepContentsClear();
        update();
    }
}

} // namespace tristop
