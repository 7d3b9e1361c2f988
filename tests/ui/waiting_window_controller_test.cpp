// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/waiting_window_controller.h"

#include <QApplication>
#include <QLabel>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QVBoxLayout>

#include <gtest/gtest.h>

#include "IICommon/indeterminate_progress_indicator.h"
#include "ui/panel_background_views.h"

namespace tristop {

namespace {

class WaitingWindow : public testing::Test {
protected:
    WaitingWindow() {
        auto *layout = new QVBoxLayout(&window);
        for (QPushButton *button : {&first, &second, &titleBar})
            layout->addWidget(button);
        window.addAction(&action);
        action.setShortcut(Qt::CTRL | Qt::Key_O);
        window.resize(400, 300);
        window.show();
        activate();
    }

    ~WaitingWindow() override {
        for (QPushButton *button : {&first, &second, &titleBar})
            button->setParent(nullptr);
    }

    void activate() {
        window.activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&window));
    }

    bool panelAppears() {
        return QTest::qWaitFor([this] { return waiting.isVisible(); });
    }

    QWidget window;
    QPushButton first;
    QPushButton second;
    QPushButton titleBar;
    QAction action;
    MMWaitingWindowController waiting;
};

} // namespace

TEST_F(WaitingWindow, RefusesInputAtOnceAndGivesItBack) {
    QSignalSpy clicks(&first, &QPushButton::clicked);
    QSignalSpy triggers(&action, &QAction::triggered);
    first.setFocus();
    waiting.startAnimation(&first);
    EXPECT_TRUE(waiting.isRunning());
    EXPECT_FALSE(waiting.isVisible());
    for (int i = 0; i < 2; ++i) {
        QTest::mouseClick(&first, Qt::LeftButton);
        QTest::keyClick(&first, Qt::Key_Space);
        QTest::keyClick(&window, Qt::Key_O, Qt::ControlModifier);
        QTest::keyClick(window.windowHandle(), Qt::Key_Space);
        QTest::mouseClick(window.windowHandle(), Qt::LeftButton, {}, first.mapTo(&window, QPoint(5, 5)));
        EXPECT_TRUE(clicks.isEmpty());
        EXPECT_TRUE(triggers.isEmpty());
        ASSERT_TRUE(panelAppears());
    }
    second.setFocus();
    waiting.endAnimation();
    EXPECT_FALSE(waiting.isVisible());
    EXPECT_EQ(window.focusWidget(), &first);
    activate();
    QTest::mouseClick(&first, Qt::LeftButton);
    QTest::keyClick(&window, Qt::Key_O, Qt::ControlModifier);
    EXPECT_EQ(clicks.count(), 1);
    EXPECT_EQ(triggers.count(), 1);
}

TEST_F(WaitingWindow, LeavesTheTitleBarOtherWindowsAndClosingAlone) {
    titleBar.setProperty(MMWaitingWindowController::kUsableWhileWaiting, true);
    QPushButton other;
    QSignalSpy titleClicks(&titleBar, &QPushButton::clicked);
    QSignalSpy otherClicks(&other, &QPushButton::clicked);
    waiting.startAnimation(&window);
    QTest::mouseClick(&titleBar, Qt::LeftButton);
    QTest::mouseClick(&other, Qt::LeftButton);
    EXPECT_EQ(titleClicks.count(), 1);
    EXPECT_EQ(otherClicks.count(), 1);
    EXPECT_TRUE(window.close());
}

TEST_F(WaitingWindow, LetsGoOfWhatWasBegunBefore) {
    QTest::mousePress(&first, Qt::LeftButton);
    waiting.startAnimation(&window);
    QTest::mouseRelease(&first, Qt::LeftButton);
    EXPECT_FALSE(first.isDown());
}

TEST_F(WaitingWindow, StaysCentredOverItsParent) {
    waiting.setWaitingDesc("Loading");
    EXPECT_EQ(waiting.waitingDescriptor(), "Loading");
    EXPECT_EQ(waiting.findChild<QLabel *>("waitingLabel")->text(), "Loading");
    waiting.startAnimation(&window);
    ASSERT_TRUE(panelAppears());
    const auto offset = [this] { return waiting.geometry().center() - window.frameGeometry().center(); };
    EXPECT_LE(offset().manhattanLength(), 2);
    window.move(window.pos() + QPoint(50, 30));
    window.resize(500, 350);
    QCoreApplication::processEvents();
    EXPECT_LE(offset().manhattanLength(), 2);
}

TEST_F(WaitingWindow, EscapeAndClosingDoNothingWithoutACancelAction) {
    waiting.startAnimation(&window);
    ASSERT_TRUE(panelAppears());
    QTest::keyClick(&window, Qt::Key_Escape);
    QTest::keyClick(&waiting, Qt::Key_Escape);
    EXPECT_FALSE(waiting.close());
    EXPECT_TRUE(waiting.isVisible());

    int cancels = 0;
    QObject target;
    waiting.setCancelAction([&] { ++cancels; }, &target);
    QTest::keyClick(&first, Qt::Key_Escape);
    QTest::keyClick(&waiting, Qt::Key_Escape);
    QTest::keyClick(&waiting, Qt::Key_A);
    EXPECT_EQ(cancels, 2);
    waiting.setCancelAction(nullptr, nullptr);
    QTest::keyClick(&first, Qt::Key_Escape);
    EXPECT_EQ(cancels, 2);
    waiting.endAnimation();
    EXPECT_TRUE(waiting.close());
}

TEST_F(WaitingWindow, ShortWorkShowsNoPanelAndAnEndIsFinal) {
    waiting.startAnimation(&window);
    waiting.endAnimation();
    waiting.endAnimation();
    QTest::qWait(200);
    EXPECT_FALSE(waiting.isVisible());
    EXPECT_EQ(waiting.parent(), nullptr);
}

TEST_F(WaitingWindow, LiesInsideItsParentWhereWindowsCannotBePlaced) {
    MMWaitingWindowController inside(MMWaitingWindowController::Place::InsideParent);
    QPalette red;
    red.setColor(QPalette::Window, Qt::red);
    window.setPalette(red);
    inside.startAnimation(&window);
    ASSERT_TRUE(QTest::qWaitFor([&] { return inside.isVisible(); }));
    EXPECT_FALSE(inside.isWindow());
    EXPECT_LE((inside.geometry().center() - window.rect().center()).manhattanLength(), 2);
    for (QPushButton *button : {&first, &second, &titleBar})
        button->hide();
    const QImage image = window.grab().toImage();
    EXPECT_EQ(image.pixelColor(inside.pos()), QColor(Qt::red)) << "nothing but the panel covers the parent";
    const QColor panel = image.pixelColor(inside.pos() + QPoint(12, 4));
    EXPECT_NEAR(panel.red(), 0.8 * 0.1 * 255 + 0.2 * 255, 2);
    EXPECT_NEAR(panel.green(), 0.8 * 0.1 * 255, 2);
    inside.endAnimation();
    EXPECT_EQ(inside.parent(), nullptr);
}

TEST_F(WaitingWindow, DiesWithItsParent) {
    auto *parent = new QWidget;
    parent->show();
    QPointer<MMWaitingWindowController> child = new MMWaitingWindowController;
    child->startAnimation(parent);
    delete parent;
    EXPECT_TRUE(child.isNull());
}

TEST_F(WaitingWindow, SpinsInTwelveSteps) {
    auto *indicator = waiting.findChild<ProgressIndicator *>("waitingIndicator");
    EXPECT_TRUE(indicator->cell().spinning());
    EXPECT_FALSE(indicator->isEnabled());
    for (int i = 0; i < 5; ++i)
        waiting.animate();
    EXPECT_NEAR(indicator->cell().doubleValue(), 5.0 / 12, 1e-9);
    for (int i = 0; i < 7; ++i)
        waiting.animate();
    const double turned = indicator->cell().doubleValue();
    EXPECT_LT(std::min(turned, 1 - turned), 1e-9);
    waiting.startAnimation(&window);
    EXPECT_TRUE(QTest::qWaitFor([&] { return std::abs(indicator->cell().doubleValue() - turned) > 0.01; }));
}

TEST(WindowBackground, FillsATranslucentRoundedPanel) {
    MMBordlessWindow window;
    window.resize(100, 60);
    auto *panel = new MMModalWindowBackgroundView(&window);
    panel->setGeometry(0, 0, 50, 60);
    auto *veil = new MMBordlessWindowBackgroundView(&window);
    veil->setGeometry(50, 0, 25, 60);
    QImage image(window.size(), QImage::Format_ARGB32);
    image.fill(Qt::transparent);
    window.render(&image, QPoint(), QRegion(), QWidget::DrawChildren | QWidget::DrawWindowBackground);
    EXPECT_EQ(image.pixelColor(0, 0).alpha(), 0) << "cleared outside the corner";
    EXPECT_EQ(image.pixelColor(25, 30).alpha(), 204);
    EXPECT_NEAR(image.pixelColor(25, 30).red(), 26, 2);
    EXPECT_NEAR(image.pixelColor(62, 30).alpha(), 77, 1);
    EXPECT_EQ(image.pixelColor(62, 30).red(), 0);
    EXPECT_NEAR(image.pixelColor(90, 30).alpha(), 128, 1) << "the window itself";

    const QRect screen = QGuiApplication::primaryScreen()->geometry();
    window.center(nullptr);
    EXPECT_LE((window.geometry().center() - screen.center()).manhattanLength(), 2);
}

} // namespace tristop
