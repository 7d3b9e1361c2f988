// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/status_line.h"

#include <QAccessible>
#include <QGraphicsOpacityEffect>
#include <QPropertyAnimation>

namespace tristop {

StatusLine::StatusLine(QWidget *parent)
    : QLabel(parent), opacity(new QGraphicsOpacityEffect(this)),
      fading(new QPropertyAnimation(opacity, "opacity", this)) {
    setTextFormat(Qt::PlainText);
    setWordWrap(true);
    setGraphicsEffect(opacity);
    opacity->setEnabled(false);
    shown.setSingleShot(true);
    fading->setDuration(kFadingMilliseconds);
    fading->setStartValue(1.0);
    fading->setEndValue(0.0);
    connect(&shown, &QTimer::timeout, this, [this] {
        opacity->setEnabled(true);
        fading->start();
    });
    connect(fading, &QPropertyAnimation::finished, this, [this] {
        clear();
        opacity->setEnabled(false);
    });
}

void StatusLine::tell(const QString &text) {
    fading->stop();
    opacity->setEnabled(false);
    setText(text);
    setToolTip(text);
    setAccessibleName(text);
    shown.start(kShownMilliseconds);
    QAccessibleEvent renamed(this, QAccessible::NameChanged);
    QAccessible::updateAccessibility(&renamed);
    QAccessibleEvent announced(this, QAccessible::Alert);
    QAccessible::updateAccessibility(&announced);
}

} // namespace tristop
