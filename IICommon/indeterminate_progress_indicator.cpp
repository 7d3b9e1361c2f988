// SPDX-License-Identifier: GPL-3.0-or-later
#include "IICommon/indeterminate_progress_indicator.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include <QPainter>

namespace tristop {

SpinnerGeometry spinnerGeometry(const QRectF &frame, double phase) {
    const auto size = static_cast<double>(static_cast<float>(std::min(frame.width(), frame.height())));
    const double inner = size * (size < 32 ? 0.27 : 0.23);
    const double outer = size * (size < 32 ? 0.48 : 0.38);
    const double start = 30 * std::round(phase / AMIndeterminateProgressIndicatorCell::kStep) + 270;

    SpinnerGeometry spinner{0.08 * size, {}};
    for (int i = 0; i < 12; ++i) {
        const double angle = (start - 30 * i) * std::numbers::pi / 180;
        const QPointF direction(std::cos(angle), std::sin(angle));
        spinner.spokes[static_cast<size_t>(i)] = {
            {frame.center() + direction * inner, frame.center() + direction * outer},
            1 - 0.25 * std::sqrt(static_cast<double>(i))};
    }
    return spinner;
}

AMIndeterminateProgressIndicatorCell::AMIndeterminateProgressIndicatorCell() {
    setColor(Qt::white);
}

void AMIndeterminateProgressIndicatorCell::setDoubleValue(double doubleValue) {
    phase = std::clamp(doubleValue, 0.0, 1.0);
}

void AMIndeterminateProgressIndicatorCell::setColor(const QColor &color) {
    Q_ASSERT(color.alphaF() > 0.999F);
    spokeColor = color;
    const QColor rgb = color.toRgb();
    red = rgb.redF();
    green = rgb.greenF();
    blue = rgb.blueF();
}

void AMIndeterminateProgressIndicatorCell::drawInteriorWithFrame(QPainter &painter,
                                                                 const QRectF &frame) const {
    if (!isSpinning && !shownWhenStopped)
        return;
    const SpinnerGeometry spinner = spinnerGeometry(frame, isSpinning ? phase : 0);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    for (const SpinnerSpoke &spoke : spinner.spokes) {
        const QColor color = QColor::fromRgbF(static_cast<float>(red), static_cast<float>(green),
                                              static_cast<float>(blue), static_cast<float>(spoke.alpha));
        painter.setPen(QPen(color, spinner.lineWidth, Qt::SolidLine, Qt::RoundCap));
        painter.drawLine(spoke.line);
    }
    painter.restore();
}

ProgressIndicator::ProgressIndicator(QWidget *parent) : QWidget(parent) {}

void ProgressIndicator::setCell(const AMIndeterminateProgressIndicatorCell &cell) {
    indicatorCell = cell;
    update();
}

void ProgressIndicator::paintEvent(QPaintEvent *) {
    QPainter painter(this);
    indicatorCell.drawInteriorWithFrame(painter, rect());
}

} // namespace tristop
