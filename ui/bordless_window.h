// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>

namespace tristop {

/// A translucent window without frame. It can also live inside another window, where the desktop does not let
/// windows be placed.
class MMBordlessWindow : public QWidget {
    Q_OBJECT

public:
    explicit MMBordlessWindow(QWidget *parent = nullptr);

    /// Centres over the parent window, or on the main screen when null.
    void center(const QWidget *parent);
    /// What Escape asks for; nothing unless overridden.
    virtual void cancel() {}

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
};

} // namespace tristop
