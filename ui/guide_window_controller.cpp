// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/guide_window_controller.h"

#include <cmath>

#include <QFile>
#include <QGuiApplication>
#include <QSettings>

#include "ui/localized_text.h"
#include "ui/logging.h"
#include "ui_GuideWindowController.h"

namespace tristop {

namespace {

const QString kShowGuideKey = QStringLiteral("NSGuide");
const QString kPageFolder = QStringLiteral(":/guide/");

} // namespace

GuideWindowController::GuideWindowController(QWidget *parent)
    : QDialog(parent), ui(std::make_unique<Ui::GuideWindowController>()) {
    ui->setupUi(this);
    setWindowModality(Qt::WindowModal);
    setWindowTitle(QGuiApplication::applicationDisplayName());
    connect(ui->showGuideButn, &QCheckBox::clicked, this, &GuideWindowController::showGuideAction);
    connect(ui->closeButn, &QPushButton::clicked, this, &GuideWindowController::closeAction);
    connect(ui->webView, &QTextBrowser::sourceChanged, this, &GuideWindowController::webViewDidFinishLoad);
    connect(&indicatorTimer, &QTimer::timeout, this, &GuideWindowController::turnIndicator);
    windowDidLoad();
}

GuideWindowController::~GuideWindowController() = default;

bool GuideWindowController::showGuide() {
    QSettings settings;
    if (!settings.contains(kShowGuideKey))
        settings.setValue(kShowGuideKey, true);
    return settings.value(kShowGuideKey).toBool();
}

void GuideWindowController::setShowGuide(bool show) {
    QSettings().setValue(kShowGuideKey, show);
}

QUrl GuideWindowController::page() {
    return QUrl(QStringLiteral("qrc") + kPageFolder + localizedText("IDS_GUIDE_PAGE"));
}

void GuideWindowController::windowDidLoad() {
    QPalette colors = palette();
    const QColor background = QColor::fromRgbF(0.2F, 0.2F, 0.2F);
    colors.setColor(QPalette::Window, background);
    colors.setColor(QPalette::Base, background);
    setPalette(colors);

    ui->showGuideButn->setText(localizedText("IDS_AC_DONTSHOWAGAIN"));
    colors.setColor(QPalette::WindowText, Qt::white);
    ui->showGuideButn->setPalette(colors);
    ui->showGuideButn->setChecked(false);

    AMIndeterminateProgressIndicatorCell cell;
    cell.setSpinning(true);
    ui->waitingIndicator->setCell(cell);
    indicatorTimer.start(std::chrono::milliseconds(1000 / 12));
    ui->webView->setSource(page());
    ui->closeButn->setText(localizedText("IDS_AC_Close"));
    ui->closeButn->setFocus();
}

void GuideWindowController::turnIndicator() {
    AMIndeterminateProgressIndicatorCell cell = ui->waitingIndicator->cell();
    cell.setDoubleValue(std::fmod(cell.doubleValue() + AMIndeterminateProgressIndicatorCell::kStep, 1.0));
    ui->waitingIndicator->setCell(cell);
}

void GuideWindowController::webViewDidFinishLoad() {
    if (ui->webView->document()->isEmpty()) {
        qCWarning(lcTristop) << "cannot load the guide" << page();
        return;
    }
    indicatorTimer.stop();
    ui->waitingIndicator->hide();
}

void GuideWindowController::showGuideAction() {
    // The box is named the other way round; the Help menu sets the same flag plainly.
    setShowGuide(ui->showGuideButn->isChecked());
}

void GuideWindowController::closeAction() {
    accept();
}

} // namespace tristop
