// SPDX-License-Identifier: GPL-3.0-or-later
#include "IICommon/button_cell.h"

#include <QStyleOptionButton>
#include <QStylePainter>

namespace tristop {

namespace {

constexpr int kSideInset = 10;
const QColor kTitleColor = QColor::fromRgbF(0.9F, 0.9F, 0.9F);
const QColor kDisabledTitleColor = QColor::fromRgbF(0.5F, 0.5F, 0.5F);

} // namespace

QSize APButtonCell::sizeHint() const {
    return QPushButton::sizeHint() + QSize(2 * kSideInset, 0);
}

void APButtonCell::paintEvent(QPaintEvent *) {
    QPainter painter(this);
    drawWithFrame(painter, rect());
}

void APButtonCell::drawWithFrame(QPainter &painter, const QRect &frame) {
    QStyleOptionButton option;
    initStyleOption(&option);
    option.rect = frame.adjusted(kSideInset, 0, -kSideInset, 0);
    style()->drawControl(QStyle::CE_PushButtonBevel, &option, &painter, this);
    QStyleOptionButton label = option;
    label.rect = style()->subElementRect(QStyle::SE_PushButtonContents, &option, this);
    drawTitle(painter, label);
    if (option.state & QStyle::State_HasFocus) {
        QStyleOptionFocusRect focus;
        focus.QStyleOption::operator=(option);
        focus.rect = style()->subElementRect(QStyle::SE_PushButtonFocusRect, &option, this);
        style()->drawPrimitive(QStyle::PE_FrameFocusRect, &focus, &painter, this);
    }
}

QRect APButtonCell::drawTitle(QPainter &painter, const QStyleOptionButton &option) {
    QStyleOptionButton titled = option;
    titled.palette.setColor(QPalette::ButtonText, isEnabled() ? kTitleColor : kDisabledTitleColor);
    style()->drawControl(QStyle::CE_PushButtonLabel, &titled, &painter, this);
    return style()->itemTextRect(titled.fontMetrics, titled.rect, Qt::AlignCenter | Qt::TextShowMnemonic,
                                 isEnabled(), titled.text);
}

} // namespace tristop
