// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <optional>

#include <QWidget>

#include "app/histogram_data.h"

namespace tristop {

/// The overlaid histograms of red, green and blue: white where all three reach, mixed colours where two do.
class IIHistogramView : public QWidget {
    Q_OBJECT

public:
    explicit IIHistogramView(QWidget *parent = nullptr);

    const std::optional<IIHistogramData> &histogramData() const { return histogram; }
    /// Keeps a copy. The caller asks for the redraw with update().
    void setHistogramData(const std::optional<IIHistogramData> &histogramData);

    QSize sizeHint() const override { return {256, 100}; }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    std::optional<IIHistogramData> histogram;
};

} // namespace tristop
