// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/adjust_slider.h"

#include <algorithm>
#include <cmath>

#include <QAccessibleWidget>
#include <QMouseEvent>
#include <QPainter>
#include <QWheelEvent>

#include "ui/theme.h"

namespace tristop {

namespace {

constexpr int kHeight = 20;
constexpr qreal kHandleRadius = 6.5;
constexpr qreal kTrackThickness = 4;
/// Room at both ends for the handle and the ring that shows the focus.
constexpr qreal kEnd = 9;
constexpr int kWheelStepAngle = 120;

} // namespace

/// A slider for assistive technology, through which the user changes it like with the keyboard.
class AccessibleAdjustSlider : public QAccessibleWidget, public QAccessibleValueInterface {
public:
    explicit AccessibleAdjustSlider(AdjustSlider *slider) : QAccessibleWidget(slider, QAccessible::Slider) {}

    void *interface_cast(QAccessible::InterfaceType type) override {
        if (type == QAccessible::ValueInterface)
            return static_cast<QAccessibleValueInterface *>(this);
        return QAccessibleWidget::interface_cast(type);
    }
    QString text(QAccessible::Text type) const override {
        return type == QAccessible::Value ? QString::number(slider()->value())
                                          : QAccessibleWidget::text(type);
    }
    QVariant currentValue() const override { return slider()->value(); }
    void setCurrentValue(const QVariant &value) override {
        if (slider()->isEnabled())
            slider()->stepTo(value.toInt());
    }
    QVariant maximumValue() const override { return slider()->maximum(); }
    QVariant minimumValue() const override { return slider()->minimum(); }
    QVariant minimumStepSize() const override { return slider()->singleStep(); }

private:
    AdjustSlider *slider() const { return static_cast<AdjustSlider *>(object()); }
};

namespace {

QAccessibleInterface *makeAccessible(const QString & /*className*/, QObject *object) {
    auto *slider = qobject_cast<AdjustSlider *>(object);
    return slider ? new AccessibleAdjustSlider(slider) : nullptr;
}

} // namespace

AdjustSlider::AdjustSlider(QWidget *parent) : QSlider(Qt::Horizontal, parent) {
    [[maybe_unused]] static const bool isFactoryInstalled =
        (QAccessible::installFactory(makeAccessible), true);
    setFocusPolicy(Qt::StrongFocus);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    // A drag on a disabled slider must not move the window.
    setAttribute(Qt::WA_NoMousePropagation);
    pause.setSingleShot(true);
    pause.setInterval(kPauseMilliseconds);
    connect(&pause, &QTimer::timeout, this, &AdjustSlider::settle);
}

void AdjustSlider::setDefaultValue(int value) {
    resetValue = value;
    update();
}

void AdjustSlider::showValue(int value) {
    pause.stop();
    setValue(value);
    toldValue = this->value();
}

void AdjustSlider::moveTo(int value) {
    const int before = this->value();
    setSliderPosition(value);
    if (this->value() != before)
        emit userMoved();
}

void AdjustSlider::stepTo(int value) {
    moveTo(value);
    if (this->value() != toldValue)
        pause.start();
    else
        pause.stop();
}

void AdjustSlider::settle() {
    pause.stop();
    if (value() == toldValue)
        return;
    toldValue = value();
    emit userSettled();
}

QSize AdjustSlider::sizeHint() const {
    return {160, kHeight};
}

QSize AdjustSlider::minimumSizeHint() const {
    return {80, kHeight};
}

qreal AdjustSlider::placeOf(int value) const {
    const qreal share = maximum() > minimum() ? qreal(value - minimum()) / (maximum() - minimum()) : 0;
    return kEnd + share * (width() - 2 * kEnd);
}

int AdjustSlider::valueAt(qreal place) const {
    const qreal share = (place - kEnd) / std::max(1.0, width() - 2 * kEnd);
    const qreal value = minimum() + share * (maximum() - minimum());
    return static_cast<int>(std::lround(std::clamp<qreal>(value, minimum(), maximum())));
}

void AdjustSlider::mousePressEvent(QMouseEvent *event) {
    if (event->button() != Qt::LeftButton)
        return;
    pause.stop(); // steps just made are told with what comes of this
    const qreal x = event->position().x();
    grabOffset = x - placeOf(value());
    dragged = false;
    setSliderDown(true);
    if (std::abs(grabOffset) > kHandleRadius + 1) {
        grabOffset = 0;
        moveTo(valueAt(x));
    }
    update();
}

void AdjustSlider::mouseMoveEvent(QMouseEvent *event) {
    if (!isSliderDown())
        return;
    const int wanted = valueAt(event->position().x() - grabOffset);
    dragged = dragged || wanted != value();
    moveTo(wanted);
}

void AdjustSlider::mouseReleaseEvent(QMouseEvent *event) {
    if (event->button() != Qt::LeftButton)
        return;
    setSliderDown(false);
    update();
    if (dragged)
        settle();
    else
        stepTo(value()); // a click beside the handle may be the first half of a double click
    dragged = false;
}

void AdjustSlider::mouseDoubleClickEvent(QMouseEvent *event) {
    if (event->button() != Qt::LeftButton)
        return;
    pause.stop();
    moveTo(resetValue);
    dragged = true; // told as soon as the button is released
}

void AdjustSlider::keyPressEvent(QKeyEvent *event) {
    const int before = value();
    QSlider::keyPressEvent(event);
    if (value() == before)
        return;
    emit userMoved();
    stepTo(value());
}

void AdjustSlider::wheelEvent(QWheelEvent *event) {
    if (!hasFocus()) {
        event->ignore();
        return;
    }
    event->accept();
    wheelAngle += event->angleDelta().y();
    const int steps = wheelAngle / kWheelStepAngle;
    wheelAngle -= steps * kWheelStepAngle;
    if (steps != 0)
        stepTo(value() + steps * singleStep());
}

void AdjustSlider::changeEvent(QEvent *event) {
    if (event->type() == QEvent::EnabledChange && !isEnabled()) {
        setSliderDown(false);
        pause.stop();
    }
    QSlider::changeEvent(event);
}

void AdjustSlider::enterEvent(QEnterEvent * /*event*/) {
    update();
}

void AdjustSlider::leaveEvent(QEvent * /*event*/) {
    update();
}

void AdjustSlider::paintEvent(QPaintEvent * /*event*/) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    const qreal middle = height() / 2.0;
    const auto bar = [&](qreal left, qreal right, const QColor &color) {
        painter.setBrush(color);
        painter.drawRoundedRect(QRectF(left, middle - kTrackThickness / 2, right - left, kTrackThickness),
                                kTrackThickness / 2, kTrackThickness / 2);
    };
    const qreal left = kEnd - kTrackThickness / 2;
    bar(left, width() - left, isEnabled() ? theme::kTrack : theme::kControl);
    // What is set is told from zero, which may lie in the middle.
    const qreal origin = minimum() < 0 ? placeOf(std::min(0, maximum())) : left;
    const qreal handle = placeOf(value());
    if (isEnabled())
        bar(std::min(origin, handle), std::max(origin, handle), theme::kAccent);

    painter.setBrush(isEnabled() ? theme::kSecondaryText : theme::kControl);
    painter.drawRect(QRectF(placeOf(resetValue) - 0.5, middle + 5, 1, 3));

    const QPointF centre(handle, middle);
    if (hasFocus()) {
        painter.setBrush(theme::kAccent);
        painter.drawEllipse(centre, kHandleRadius + 2.5, kHandleRadius + 2.5);
        painter.setBrush(theme::kPanel);
        painter.drawEllipse(centre, kHandleRadius + 1, kHandleRadius + 1);
    }
    QColor face = theme::kHandle;
    if (!isEnabled())
        face = theme::kTrack;
    else if (isSliderDown() || underMouse())
        face = Qt::white;
    painter.setBrush(face);
    painter.drawEllipse(centre, kHandleRadius, kHandleRadius);
}

} // namespace tristop
