// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

#include <QObject>
#include <QPointer>

class QSessionManager;

namespace tristop {

class IIMainWindow;

/**
 * Starts the application's window and decides how the application ends. Closing the window, the Quit command
 * and the end of the session all ask the window first, which may put the answer off.
 */
class IIAppDelegate : public QObject {
    Q_OBJECT

public:
    enum class Termination { Cancel = 0, Now = 1, Later = 2 };

    explicit IIAppDelegate(QObject *parent = nullptr);

    /// Not owned.
    IIMainWindow *window() const { return mainWindow; }
    void setWindow(IIMainWindow *window);

    /// Brings the window to the front.
    void applicationDidFinishLaunching();
    bool applicationShouldTerminateAfterLastWindowClosed() const { return true; }
    /// Asks the application to terminate; always false: the window is never closed directly.
    bool windowShouldClose();
    Termination applicationShouldTerminate();

    /// Ends the application as soon as it may.
    void terminate();
    /// Answers a termination that was put off; without one nothing happens.
    void replyToApplicationShouldTerminate(bool terminate);
    bool isTerminationPending() const { return isPending; }

signals:
    /// The application ends now.
    void terminated();

private:
    void sessionEnds(QSessionManager &manager);

    QPointer<IIMainWindow> mainWindow;
    bool isPending = false;
};

} // namespace tristop
