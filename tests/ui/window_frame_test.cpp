// SPDX-License-Identifier: GPL-3.0-or-later
#include <QSignalSpy>
#include <QTest>
#include <QVBoxLayout>

#include <gtest/gtest.h>

#include "ui/base_window.h"
#include "ui/window_titlebar.h"

namespace tristop {
namespace {

class WindowFrameTest : public testing::Test {
protected:
    WindowFrameTest() {
        auto *views = new QVBoxLayout(&window);
        views->setContentsMargins(0, 0, 0, 0);
        views->addWidget(titlebar);
        views->addStretch();
        window.resize(400, 300);
        window.show();
    }
    SLBaseWindow window{nullptr, Qt::Dialog | Qt::WindowTitleHint};
    SLWindowTitlebar *titlebar = new SLWindowTitlebar;
};

TEST_F(WindowFrameTest, HasNoFrameOfThePlatform) {
    EXPECT_TRUE(window.windowFlags() & Qt::FramelessWindowHint);
    EXPECT_EQ(window.windowType(), Qt::Window);

    const QImage picture = window.grab().toImage();
    EXPECT_EQ(picture.pixelColor(0, 0).alpha(), 0);
    EXPECT_EQ(picture.pixelColor(399, 0).alpha(), 0);
    EXPECT_EQ(picture.pixelColor(0, 299).alpha(), 255);
    EXPECT_EQ(picture.pixelColor(399, 299).alpha(), 255);
    // The strip ends with a black line.
    EXPECT_EQ(picture.pixelColor(200, 32), QColor(Qt::black));
    EXPECT_EQ(picture.pixelColor(200, 31), titlebar->backgroundColor());
}

TEST_F(WindowFrameTest, IsResizedAtEdgesAndCorners) {
    EXPECT_EQ(window.edgesAt({200, 150}), Qt::Edges());
    EXPECT_EQ(window.edgesAt({2, 150}), Qt::LeftEdge);
    EXPECT_EQ(window.edgesAt({397, 150}), Qt::RightEdge);
    EXPECT_EQ(window.edgesAt({200, 1}), Qt::TopEdge);
    EXPECT_EQ(window.edgesAt({200, 298}), Qt::BottomEdge);
    // Corners reach along the edges.
    EXPECT_EQ(window.edgesAt({1, 10}), Qt::LeftEdge | Qt::TopEdge);
    EXPECT_EQ(window.edgesAt({390, 298}), Qt::RightEdge | Qt::BottomEdge);
    EXPECT_EQ(window.edgesAt({500, 150}), Qt::Edges());
    window.showMaximized();
    EXPECT_EQ(window.edgesAt({0, 0}), Qt::Edges());
}

TEST_F(WindowFrameTest, ZoomsWithADoubleClick) {
    const QPoint onStrip(200, 16);
    QTest::mouseClick(titlebar, Qt::LeftButton, {}, onStrip);
    EXPECT_FALSE(window.isMaximized());
    QTest::mouseDClick(titlebar, Qt::LeftButton, {}, onStrip);
    EXPECT_TRUE(window.isMaximized());
    QTest::mouseDClick(titlebar, Qt::LeftButton, {}, onStrip);
    EXPECT_FALSE(window.isMaximized());
}

TEST_F(WindowFrameTest, StaysOpenOnEscape) {
    QTest::keyClick(&window, Qt::Key_Escape);
    EXPECT_TRUE(window.isVisible());
}

TEST_F(WindowFrameTest, PlacesButtonsInARowOrAColumn) {
    const QSize size = TitlebarButton::kSize;
    EXPECT_EQ(titlebar->closeButton()->geometry(), QRect(QPoint(8, 5), size));
    EXPECT_EQ(titlebar->minimizeButton()->pos(), QPoint(size.width() + 10, 5));
    EXPECT_EQ(titlebar->maximizeButton()->pos(), QPoint(2 * size.width() + 12, 5));
    // Read from below, too, the buttons lie 5 under the upper edge.
    EXPECT_EQ(titlebar->height() - size.height() - 5, 5);

    titlebar->setVerticalButtons(true);
    EXPECT_EQ(titlebar->closeButton()->pos(), QPoint(8, 5));
    EXPECT_EQ(titlebar->minimizeButton()->pos(), QPoint(8, 5 + size.height() + 3));
    EXPECT_EQ(titlebar->maximizeButton()->pos(), QPoint(8, 5 + 2 * size.height() + 6));
    titlebar->setVerticalButtons(false);
    EXPECT_EQ(titlebar->minimizeButton()->pos(), QPoint(size.width() + 10, 5));

    titlebar->setJustClose(true);
    titlebar->setJustClose(false);
    EXPECT_TRUE(titlebar->closeButton()->isVisible());
    EXPECT_FALSE(titlebar->minimizeButton()->isVisible());
    EXPECT_FALSE(titlebar->maximizeButton()->isVisible());

    titlebar->setHiddenButtons(true);
    EXPECT_EQ(titlebar->closeButton(), nullptr);
    EXPECT_TRUE(titlebar->findChildren<TitlebarButton *>().isEmpty());
    titlebar->setVerticalButtons(true);
}

TEST_F(WindowFrameTest, ButtonsActOnTheWindow) {
    QTest::mouseClick(titlebar->maximizeButton(), Qt::LeftButton);
    EXPECT_TRUE(window.isMaximized());
    QTest::mouseClick(titlebar->minimizeButton(), Qt::LeftButton);
    EXPECT_TRUE(window.isMinimized());
    QTest::mouseClick(titlebar->closeButton(), Qt::LeftButton);
    EXPECT_FALSE(window.isVisible());
}

TEST_F(WindowFrameTest, CentresAnotherWindowOnTheMainOne) {
    QEvent activate(QEvent::WindowActivate);
    QApplication::sendEvent(&window, &activate);
    window.move(100, 60);
    QWidget other;
    other.resize(100, 80);
    SLBaseWindow::relativeCenterWindow(&other);
    EXPECT_NEAR(other.frameGeometry().center().x(), 300, 1);
    EXPECT_NEAR(other.frameGeometry().center().y(), 210, 1);
}

} // namespace
} // namespace tristop
