// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

#include "ui/base_window.h"

class QAction;
class QImage;
class QLabel;
class QMenu;
class QMenuBar;

namespace tristop {

class GuideWindowController;
class IIEditingViewController;
class SLWindowTitlebar;

/// The window of the application: title strip with the menus, and below it the view of the editing
/// controller.
class IIMainWindow : public SLBaseWindow {
    Q_OBJECT

public:
    /// With `guide` the guide follows half a second after the window is shown first, if its flag allows.
    explicit IIMainWindow(bool guide = false);
    ~IIMainWindow() override;

    IIEditingViewController *editingViewController() const { return editing; }
    /// Null before it is shown first; kept afterwards.
    GuideWindowController *guideWindowController() const { return guide; }
    QWidget *controllerView() const { return place; }
    QLabel *titleField() const { return title; }

    /// Whether the application may quit: 1 now, 2 when quitAnswered tells, 0 not.
    int64_t terminate();
    /// A flattened copy of the picture; null without one.
    QImage displayImage() const;
    void setTitle(const QString &title);

    /// The product's pages in the browser of the user.
    void menuHelp();
    void menuFAQ();
    void menuCCS();

signals:
    /// The user wants the window closed.
    void closeRequested();
    /// The user wants the application to quit.
    void quitRequested();
    /// Answer to a quit that terminate put off.
    void quitAnswered(bool quit);

protected:
    void closeEvent(QCloseEvent *event) override;
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dropEvent(QDropEvent *event) override;
    void changeEvent(QEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void showEvent(QShowEvent *event) override;

private:
    void awakeFromNib();
    void makeMenus();
    void localizeMenus();
    void updateMenus();
    /// Menus beside the buttons, and the title in the middle of the strip as long as they leave it free.
    void layOutTitlebar();
    void runGuide();
    void openPage(const char *address);
    void about();

    IIEditingViewController *editing = nullptr;
    GuideWindowController *guide = nullptr;
    SLWindowTitlebar *titlebar = nullptr;
    QMenuBar *menuBar = nullptr;
    QWidget *place = nullptr;
    QLabel *title = nullptr;
    bool isGuideDue;

    QAction *aboutMeunItem = nullptr;
    QAction *hideMeunItem = nullptr;
    QAction *quitMeunItem = nullptr;
    QAction *hideOthersMenuItem = nullptr;
    QAction *showAllMenuItem = nullptr;
    QAction *importTilesMeunItem = nullptr;
    QAction *saveMeunItem = nullptr;
    QAction *pageSetupMeunItem = nullptr;
    QAction *printMeunItem = nullptr;
    QAction *actualSizeMenuItem = nullptr;
    QAction *fitinMeunItem = nullptr;
    QAction *zoomInMeunItem = nullptr;
    QAction *zoomOutMeunItem = nullptr;
    QAction *onlineHelpMeunItem = nullptr;
    QAction *faqMeunItem = nullptr;
    QAction *ccsMeunItem = nullptr;
    QAction *showGuideMenuItem = nullptr;
    QMenu *fileMenu = nullptr;
    QMenu *viewMenu = nullptr;
    QMenu *windowMenu = nullptr;
    QMenu *helpMenu = nullptr;
};

} // namespace tristop
