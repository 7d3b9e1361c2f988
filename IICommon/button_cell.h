// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPushButton>

class QPainter;
class QStyleOptionButton;

namespace tristop {

/// A plain button that keeps 10 free at its left and right, with its title in light grey for dark windows.
class APButtonCell : public QPushButton {
    Q_OBJECT

public:
    using QPushButton::QPushButton;

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    /// Draws bevel and title into `frame` less the free space.
    void drawWithFrame(QPainter &painter, const QRect &frame);
    /// Draws the title in its grey and returns where it lies.
    QRect drawTitle(QPainter &painter, const QStyleOptionButton &option);
};

} // namespace tristop
