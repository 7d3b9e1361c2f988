// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/main_window.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QLabel>
#include <QMenu>
#include <QSettings>
#include <QSignalSpy>
#include <QTest>
#include <QTextBrowser>

#include <gtest/gtest.h>

#include "ui/app_delegate.h"
#include "ui/editing_view_controller.h"
#include "ui/guide_window_controller.h"
#include "ui/localized_text.h"

namespace tristop {
namespace {

class MainWindowTest : public testing::Test {
protected:
    static void SetUpTestSuite() { loadTranslations(*qApp, QLocale(QLocale::English)); }
    MainWindowTest() { QSettings().remove("NSGuide"); }
    static QAction *item(const IIMainWindow &window, const char *name) {
        return window.findChild<QAction *>(QLatin1String(name));
    }
    static QString titleOf(const IIMainWindow &window, const char *name) {
        return item(window, name)->text().remove('&');
    }
};

TEST_F(MainWindowTest, NamesItsMenus) {
    QGuiApplication::setApplicationDisplayName("Tristop");
    IIMainWindow window;
    EXPECT_EQ(titleOf(window, "aboutMeunItem"), "About Tristop");
    EXPECT_EQ(titleOf(window, "hideMeunItem"), "Hide Tristop");
    EXPECT_EQ(titleOf(window, "quitMeunItem"), "Quit Tristop");
    for (const char *name :
         {"hideOthersMenuItem", "showAllMenuItem", "importTilesMeunItem", "saveMeunItem", "pageSetupMeunItem",
          "printMeunItem", "actualSizeMenuItem", "fitinMeunItem", "zoomInMeunItem", "zoomOutMeunItem",
          "onlineHelpMeunItem", "faqMeunItem", "ccsMeunItem", "showGuideMenuItem"})
        EXPECT_FALSE(titleOf(window, name).isEmpty()) << name;
    EXPECT_EQ(window.windowTitle(), "Tristop");
    EXPECT_EQ(window.titleField()->text(), "Tristop");
    window.setTitle("Harbour");
    EXPECT_EQ(window.windowTitle(), "Harbour");
    EXPECT_EQ(window.titleField()->text(), "Harbour");
}

TEST_F(MainWindowTest, EnablesWhatMakesSenseWithoutAPicture) {
    IIMainWindow window;
    for (const char *name :
         {"importTilesMeunItem", "pageSetupMeunItem", "quitMeunItem", "onlineHelpMeunItem"})
        EXPECT_TRUE(item(window, name)->isEnabled()) << name;
    for (const char *name : {"saveMeunItem", "printMeunItem", "actualSizeMenuItem", "fitinMeunItem",
                             "zoomInMeunItem", "zoomOutMeunItem"})
        EXPECT_FALSE(item(window, name)->isEnabled()) << name;
    EXPECT_TRUE(window.displayImage().isNull());
}

TEST_F(MainWindowTest, ComesBackAsItWasLeft) {
    QSize size;
    {
        IIMainWindow window;
        window.show();
        window.resize(window.width(), window.height() + 40);
        size = window.size();
    }
    {
        IIMainWindow window;
        EXPECT_EQ(window.size(), size);
        window.showMaximized();
        window.hide(); // as it is while work underway ends
    }
    const IIMainWindow window;
    EXPECT_TRUE(window.isMaximized());
    EXPECT_EQ(window.normalGeometry().size(), size);
    QSettings().clear();
}

TEST_F(MainWindowTest, QuitsInsteadOfClosing) {
    IIMainWindow window;
    IIAppDelegate delegate;
    delegate.setWindow(&window);
    QSignalSpy terminated(&delegate, &IIAppDelegate::terminated);
    delegate.applicationDidFinishLaunching();
    EXPECT_FALSE(window.close());
    EXPECT_TRUE(window.isVisible());
    EXPECT_EQ(terminated.count(), 1);
    item(window, "quitMeunItem")->trigger();
    EXPECT_EQ(terminated.count(), 2);
    // An answer that nobody waits for.
    delegate.replyToApplicationShouldTerminate(true);
    EXPECT_EQ(terminated.count(), 2);
}

TEST_F(MainWindowTest, ShowsTheGuideOnlyWhenAskedForAndAllowed) {
    const auto isShownWithin = [](int milliseconds, bool wanted) {
        IIMainWindow window(wanted);
        window.show();
        return QTest::qWaitFor(
            [&] { return window.guideWindowController() && window.guideWindowController()->isVisible(); },
            milliseconds);
    };
    EXPECT_FALSE(isShownWithin(700, false));
    EXPECT_FALSE(QSettings().contains("NSGuide"));
    EXPECT_TRUE(isShownWithin(5000, true));
    EXPECT_TRUE(QSettings().value("NSGuide").toBool());
    GuideWindowController::setShowGuide(false);
    EXPECT_FALSE(isShownWithin(700, true));
}

TEST_F(MainWindowTest, ShowsTheGuideAfterAnotherSheet) {
    IIMainWindow window(true);
    window.show();
    window.editingViewController()->offerURLs({}); // refused with a sheet
    QTest::qWait(700);
    auto *refusal = qobject_cast<QDialog *>(QApplication::activeModalWidget());
    ASSERT_NE(refusal, nullptr);
    EXPECT_EQ(window.guideWindowController(), nullptr);
    refusal->reject();
    EXPECT_TRUE(QTest::qWaitFor([&] { return window.guideWindowController() != nullptr; }));
}

TEST_F(MainWindowTest, SetsTheGuideFlagInTheHelpMenu) {
    IIMainWindow window;
    QAction *show = item(window, "showGuideMenuItem");
    emit qobject_cast<QMenu *>(show->associatedObjects().constFirst())->aboutToShow();
    EXPECT_TRUE(show->isChecked());
    show->trigger();
    EXPECT_FALSE(GuideWindowController::showGuide());
}

TEST_F(MainWindowTest, StoresTheStateOfTheGuidesCheckBox) {
    GuideWindowController guide;
    guide.show();
    auto *box = guide.findChild<QCheckBox *>("showGuideButn");
    EXPECT_FALSE(box->isChecked());
    // Named the other way round: ticked, the guide is shown again.
    QTest::mouseClick(box, Qt::LeftButton, {}, {8, box->height() / 2});
    EXPECT_TRUE(GuideWindowController::showGuide());
    QTest::mouseClick(box, Qt::LeftButton, {}, {8, box->height() / 2});
    EXPECT_FALSE(GuideWindowController::showGuide());

    EXPECT_FALSE(guide.findChild<QTextBrowser *>("webView")->document()->isEmpty());
    EXPECT_FALSE(guide.findChild<QWidget *>("waitingIndicator")->isVisible());
    guide.closeAction();
    EXPECT_FALSE(guide.isVisible());
}

} // namespace
} // namespace tristop
