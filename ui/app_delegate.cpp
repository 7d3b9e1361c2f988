// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/app_delegate.h"

#include <QGuiApplication>
#include <QSessionManager>

#include "ui/main_window.h"

namespace tristop {

IIAppDelegate::IIAppDelegate(QObject *parent) : QObject(parent) {
    // Without a queue: the session waits for the answer only while the signal is delivered.
    connect(qGuiApp, &QGuiApplication::commitDataRequest, this, &IIAppDelegate::sessionEnds,
            Qt::DirectConnection);
}

void IIAppDelegate::setWindow(IIMainWindow *window) {
    mainWindow = window;
    connect(window, &IIMainWindow::closeRequested, this, &IIAppDelegate::windowShouldClose);
    connect(window, &IIMainWindow::quitRequested, this, &IIAppDelegate::terminate);
    connect(window, &IIMainWindow::quitAnswered, this, &IIAppDelegate::replyToApplicationShouldTerminate);
}

void IIAppDelegate::applicationDidFinishLaunching() {
    mainWindow->show();
    mainWindow->raise();
    mainWindow->activateWindow();
}

bool IIAppDelegate::windowShouldClose() {
    terminate();
    return false;
}

IIAppDelegate::Termination IIAppDelegate::applicationShouldTerminate() {
    switch (mainWindow ? mainWindow->terminate() : 1) {
    case 0:
        return Termination::Cancel;
    case 2:
        return Termination::Later;
    default:
        return Termination::Now;
    }
}

void IIAppDelegate::terminate() {
    const Termination answer = applicationShouldTerminate();
    isPending = answer == Termination::Later;
    if (answer == Termination::Now)
        emit terminated();
}

void IIAppDelegate::replyToApplicationShouldTerminate(bool terminate) {
    if (!isPending)
        return;
    isPending = false;
    if (terminate)
        emit terminated();
}

void IIAppDelegate::sessionEnds(QSessionManager &manager) {
    const Termination answer = applicationShouldTerminate();
    isPending = answer == Termination::Later;
    // The sheet asks; whoever wants to end the session does so again afterwards.
    if (answer != Termination::Now && manager.allowsInteraction()) {
        manager.cancel();
        manager.release();
    }
}

} // namespace tristop
