// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/adjust_slider.h"

#include <QAccessible>
#include <QSignalSpy>
#include <QTest>
#include <QWheelEvent>

#include <gtest/gtest.h>

namespace tristop {
namespace {

/// A slider from 0 to 100 whose handle can go from x = 9 to x = 209, two pixels a step.
class AdjustSliderTest : public testing::Test {
protected:
    AdjustSliderTest() {
        slider->resize(218, 20);
        slider->setRange(0, 100);
        slider->setDefaultValue(45);
        slider->showValue(45);
        window.show();
        slider->setFocus();
        QApplication::setActiveWindow(&window);
    }

    static QPoint at(int value) { return {9 + 2 * value, 10}; }
    bool turnWheel(int angle) {
        QWheelEvent event(at(45), slider->mapToGlobal(at(45)), {}, {0, angle}, Qt::NoButton, Qt::NoModifier,
                          Qt::NoScrollPhase, false);
        QApplication::sendEvent(slider, &event);
        return event.isAccepted();
    }
    bool waitUntilSettled(int times) {
        return QTest::qWaitFor([&] { return settled.count() == times; });
    }
    void waitForPause() { QTest::qWait(AdjustSlider::kPauseMilliseconds + 100); }

    QWidget window;
    AdjustSlider *slider = new AdjustSlider(&window);
    QSignalSpy moved{slider, &AdjustSlider::userMoved};
    QSignalSpy settled{slider, &AdjustSlider::userSettled};
};

TEST_F(AdjustSliderTest, TellsOfADragAtItsEndOnly) {
    QTest::mousePress(slider, Qt::LeftButton, {}, at(45));
    QTest::mouseMove(slider, at(60));
    QTest::mouseMove(slider, at(70));
    EXPECT_EQ(slider->value(), 70);
    EXPECT_EQ(moved.count(), 2);
    EXPECT_EQ(settled.count(), 0);
    QTest::mouseRelease(slider, Qt::LeftButton, {}, at(70));
    EXPECT_EQ(settled.count(), 1);

    // There and back is no change.
    QTest::mousePress(slider, Qt::LeftButton, {}, at(70));
    QTest::mouseMove(slider, at(80));
    QTest::mouseMove(slider, at(70));
    QTest::mouseRelease(slider, Qt::LeftButton, {}, at(70));
    EXPECT_EQ(settled.count(), 1);
}

TEST_F(AdjustSliderTest, TellsOfStepsOnceAfterAPause) {
    QTest::keyClick(slider, Qt::Key_Right);
    QTest::keyClick(slider, Qt::Key_Right);
    EXPECT_TRUE(turnWheel(120));
    EXPECT_EQ(slider->value(), 48);
    EXPECT_EQ(settled.count(), 0);
    EXPECT_TRUE(waitUntilSettled(1));

    QTest::mouseClick(slider, Qt::LeftButton, {}, at(80));
    EXPECT_EQ(slider->value(), 80);
    EXPECT_EQ(settled.count(), 1);
    EXPECT_TRUE(waitUntilSettled(2));

    // A touchpad's small angles add up to a step.
    for (int i = 0; i < 4; i++)
        turnWheel(-30);
    EXPECT_EQ(slider->value(), 79);
}

TEST_F(AdjustSliderTest, WaitsForTheMouseAfterAStep) {
    QTest::keyClick(slider, Qt::Key_Right);
    QTest::mousePress(slider, Qt::LeftButton, {}, at(46));
    waitForPause();
    EXPECT_EQ(settled.count(), 0);
    QTest::mouseRelease(slider, Qt::LeftButton, {}, at(46));
    EXPECT_TRUE(waitUntilSettled(1));
}

TEST_F(AdjustSliderTest, LeavesTheWheelToThePanelWithoutFocus) {
    slider->clearFocus();
    EXPECT_FALSE(turnWheel(120));
    EXPECT_EQ(slider->value(), 45);
}

TEST_F(AdjustSliderTest, GoesBackToTheDefaultWithADoubleClick) {
    slider->showValue(90);
    // The first click, beside the handle, moves it; the double click takes its place.
    QTest::mouseClick(slider, Qt::LeftButton, {}, at(10));
    QTest::mouseDClick(slider, Qt::LeftButton, {}, at(10));
    QTest::mouseRelease(slider, Qt::LeftButton, {}, at(10));
    EXPECT_EQ(slider->value(), 45);
    EXPECT_EQ(settled.count(), 1);
    waitForPause();
    EXPECT_EQ(settled.count(), 1);
}

TEST_F(AdjustSliderTest, TellsNothingOfChangesByTheProgram) {
    QTest::keyClick(slider, Qt::Key_Left);
    moved.clear();
    slider->showValue(20);
    slider->setRange(30, 60);
    waitForPause();
    EXPECT_EQ(slider->value(), 30);
    EXPECT_EQ(moved.count(), 0);
    EXPECT_EQ(settled.count(), 0);
}

TEST_F(AdjustSliderTest, ForgetsAStepWhenItIsDisabled) {
    QTest::keyClick(slider, Qt::Key_Left);
    slider->setEnabled(false);
    waitForPause();
    EXPECT_EQ(settled.count(), 0);
}

TEST_F(AdjustSliderTest, CountsAssistiveTechnologyAsTheUser) {
    QAccessibleInterface *accessible = QAccessible::queryAccessibleInterface(slider); // kept by the registry
    ASSERT_NE(accessible->valueInterface(), nullptr);
    EXPECT_EQ(accessible->role(), QAccessible::Slider);
    accessible->valueInterface()->setCurrentValue(50);
    EXPECT_EQ(accessible->text(QAccessible::Value), "50");
    EXPECT_EQ(moved.count(), 1);
    EXPECT_TRUE(waitUntilSettled(1));

    slider->setEnabled(false);
    accessible->valueInterface()->setCurrentValue(60);
    EXPECT_EQ(slider->value(), 50);
}

} // namespace
} // namespace tristop
