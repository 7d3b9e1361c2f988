// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/histogram_view.h"

#include <QPainter>

#include "IICommon/accessible_role.h"
#include "ui/histogram_lines.h"
#include "ui/localized_text.h"

namespace tristop {

IIHistogramView::IIHistogramView(QWidget *parent) : QWidget(parent) {
    setAccessibleName(localizedText("IDS_HISTOGRAM"));
    setAccessibleRole(this, QAccessible::Chart);
}

void IIHistogramView::setHistogramData(const std::optional<IIHistogramData> &histogramData) {
    histogram = histogramData;
}

void IIHistogramView::paintEvent(QPaintEvent *) {
    if (!histogram)
        return;
    // Lines astride two pixels stay whole: blended ones would let the colours behind shine through the white.
    QPainter painter(this);
    for (const HistogramLine &line : histogramLines(*histogram, width(), height())) {
        if (line.height == 0)
            continue;
        const QColor color(line.red ? 255 : 0, line.green ? 255 : 0, line.blue ? 255 : 0);
        painter.setPen(QPen(color, 1, Qt::SolidLine, Qt::FlatCap));
        painter.drawLine(QLineF(line.x, height() - line.height, line.x, height()));
    }
}

} // namespace tristop
