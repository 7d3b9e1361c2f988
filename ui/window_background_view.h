// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>

namespace tristop {

/// The application's background as a view.
class IIWindowBackgroundView : public QWidget {
    Q_OBJECT

public:
    explicit IIWindowBackgroundView(QWidget *parent = nullptr);

protected:
    void paintEvent(QPaintEvent *event) override;
};

} // namespace tristop
