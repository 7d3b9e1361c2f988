// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QSlider>
#include <QTimer>

namespace tristop {

/**
 * A slider for settings that take long to apply. It tells of a change when the user lets go of the handle,
 * and a pause after the latest step by keyboard, wheel or a click beside the handle. A double click goes back
 * to the default. Without focus the wheel does nothing; changes made by the program tell nobody.
 */
class AdjustSlider : public QSlider {
    Q_OBJECT

public:
    static constexpr int kPauseMilliseconds = 400;

    explicit AdjustSlider(QWidget *parent = nullptr);

    /// Where a double click goes, marked below the track.
    int defaultValue() const { return resetValue; }
    void setDefaultValue(int value);

    /// Moves the handle for the program. A change by the user that has not been told yet is forgotten.
    void showValue(int value);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

signals:
    /// The user is moving the slider.
    void userMoved();
    /// The user has moved the slider and is done for now.
    void userSettled();

protected:
    void changeEvent(QEvent *event) override;
    void enterEvent(QEnterEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void leaveEvent(QEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;

private:
    friend class AccessibleAdjustSlider;

    /// Where the middle of the handle is for a value, and the value for a place of it.
    qreal placeOf(int value) const;
    int valueAt(qreal place) const;
    /// Moves the handle for the user.
    void moveTo(int value);
    /// The same for steps, which may be followed by more.
    void stepTo(int value);
    void settle();

    QTimer pause;
    int resetValue = 0;
    int toldValue = 0;    ///< what userSettled told last, or the program has shown
    qreal grabOffset = 0; ///< from the middle of the handle to where the mouse holds it
    bool dragged = false; ///< the mouse has moved the handle since it was pressed
    int wheelAngle = 0;   ///< turned so far towards the next step
};

} // namespace tristop
