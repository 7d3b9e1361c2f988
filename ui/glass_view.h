// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QColor>
#include <QWidget>

namespace tristop {

/// A view of one colour.
class SLGlassView : public QWidget {
    Q_OBJECT

public:
    explicit SLGlassView(QWidget *parent = nullptr);

    QColor backgroundColor() const { return fill; }
    void setBackgroundColor(const QColor &color);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QColor fill = Qt::black;
};

} // namespace tristop
