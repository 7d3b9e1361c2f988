// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>

namespace tristop {

/// The translucent rounded panel behind a progress window's contents.
class MMModalWindowBackgroundView : public QWidget {
    Q_OBJECT

public:
    using QWidget::QWidget;

protected:
    void paintEvent(QPaintEvent *event) override;
};

/// A lighter veil of the same shape, for windows that float over a picture.
class MMBordlessWindowBackgroundView : public QWidget {
    Q_OBJECT

public:
    using QWidget::QWidget;

protected:
    void paintEvent(QPaintEvent *event) override;
};

} // namespace tristop
