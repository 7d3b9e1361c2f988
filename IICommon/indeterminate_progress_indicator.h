// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>

#include <QColor>
#include <QLineF>
#include <QRectF>
#include <QWidget>

class QPainter;

namespace tristop {

/// A spoke of the spinner; the first one is opaque, the others fade.
struct SpinnerSpoke {
    QLineF line;
    double alpha;
};

/// The spinner's shape in a frame (y runs down).
struct SpinnerGeometry {
    double lineWidth;
    std::array<SpinnerSpoke, 12> spokes;
};

/// `phase` from 0 to 1 turns the spinner once clockwise, in twelve steps; at 0 its first spoke points up.
SpinnerGeometry spinnerGeometry(const QRectF &frame, double phase);

/// Draws a spinner of twelve fading spokes.
class AMIndeterminateProgressIndicatorCell {
public:
    /// Seconds from step to step.
    static constexpr double kStep = 1.0 / 12;

    AMIndeterminateProgressIndicatorCell();

    double doubleValue() const { return phase; }
    /// Phase, clamped to 0 to 1.
    void setDoubleValue(double doubleValue);
    double animationDelay() const { return delay; }
    void setAnimationDelay(double animationDelay) { delay = animationDelay; }
    bool displayedWhenStopped() const { return shownWhenStopped; }
    void setDisplayedWhenStopped(bool displayedWhenStopped) { shownWhenStopped = displayedWhenStopped; }
    bool spinning() const { return isSpinning; }
    void setSpinning(bool spinning) { isSpinning = spinning; }
    const QColor &color() const { return spokeColor; }
    /// Opaque colours only.
    void setColor(const QColor &color);
    double redComponent() const { return red; }
    double greenComponent() const { return green; }
    double blueComponent() const { return blue; }

    /// Draws into `frame`; nothing while stopped unless displayedWhenStopped().
    void drawInteriorWithFrame(QPainter &painter, const QRectF &frame) const;

private:
    double phase = 0;
    double delay = kStep;
    bool shownWhenStopped = true;
    bool isSpinning = false;
    QColor spokeColor;
    double red = 1;
    double green = 1;
    double blue = 1;
};

/// The control that shows the cell.
class ProgressIndicator : public QWidget {
    Q_OBJECT

public:
    explicit ProgressIndicator(QWidget *parent = nullptr);

    const AMIndeterminateProgressIndicatorCell &cell() const { return indicatorCell; }
    /// Replaces the cell and redraws.
    void setCell(const AMIndeterminateProgressIndicatorCell &cell);

    QSize sizeHint() const override { return {32, 32}; }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    AMIndeterminateProgressIndicatorCell indicatorCell;
};

} // namespace tristop
