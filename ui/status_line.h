// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QLabel>
#include <QTimer>

class QGraphicsOpacityEffect;
class QPropertyAnimation;

namespace tristop {

/// A quiet line of text that says what has happened, tells screen readers, and fades after a while.
class StatusLine : public QLabel {
    Q_OBJECT

public:
    static constexpr int kShownMilliseconds = 12000;
    static constexpr int kFadingMilliseconds = 1200;

    explicit StatusLine(QWidget *parent = nullptr);

    void tell(const QString &text);

private:
    QTimer shown;
    QGraphicsOpacityEffect *opacity;
    QPropertyAnimation *fading;
};

} // namespace tristop
