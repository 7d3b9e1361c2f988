// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>

#include <QDialog>
#include <QTimer>
#include <QUrl>

namespace Ui {
class GuideWindowController;
}

namespace tristop {

/// The guide shown at start, a sheet with a bundled page.
class GuideWindowController : public QDialog {
    Q_OBJECT

public:
    explicit GuideWindowController(QWidget *parent = nullptr);
    ~GuideWindowController() override;

    /// Whether the guide appears at start: the setting "NSGuide", which is created as true.
    static bool showGuide();
    static void setShowGuide(bool show);

    /// The bundled page in the language of the texts; English when there is none in that language.
    static QUrl page();

    /// The check box was clicked: its state becomes the setting.
    void showGuideAction();
    /// Ends the sheet.
    void closeAction();

private:
    void windowDidLoad();
    void webViewDidFinishLoad();
    void turnIndicator();

    std::unique_ptr<Ui::GuideWindowController> ui;
    QTimer indicatorTimer;
};

} // namespace tristop
