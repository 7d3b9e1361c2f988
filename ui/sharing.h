// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>

#include <QDBusConnection>
#include <QObject>
#include <QStringList>
#include <QVariant>

class QDBusMessage;

namespace tristop {

/**
 * Hands picture files to other programs: through the desktop's services, or through the xdg commands where a
 * service is missing, refuses or does not answer in time. Every call returns at once.
 */
class Sharing : public QObject {
    Q_OBJECT

public:
    /// Starts a command; false when it cannot be started.
    using Launcher = std::function<bool(const QString &program, const QStringList &arguments)>;

    static constexpr int kTimeoutMilliseconds = 5000;

    /// With the session's bus and real commands.
    explicit Sharing(QObject *parent = nullptr);
    Sharing(const QDBusConnection &bus, Launcher launcher, int timeoutMilliseconds,
            QObject *parent = nullptr);

    /// A new e-mail with the file attached.
    void sendByEmail(const QString &path);
    /// Lets the user choose a program and opens the file with it.
    void openWithProgram(const QString &path);
    /// Selects the file in a window of the file manager.
    void showInFolder(const QString &path);

signals:
    /// Neither way worked.
    void failed();

private:
    /// The command for when a service cannot help.
    struct Command {
        QString program;
        QStringList arguments;
    };
    /// Calls a service. When that fails, deletes `request`, which may be null, and launches the command
    /// instead.
    void call(const QDBusMessage &message, const Command &instead, QObject *request = nullptr);
    /// The same for a portal, which answers at once and tells later by a signal that it cannot help.
    void callPortal(const char *interface, const char *method, const QVariantList &arguments,
                    QVariantMap options, const Command &instead);
    void launch(const Command &command);
    void fail(const QString &reason);

    QDBusConnection bus;
    Launcher launcher;
    int timeout;
    int portalRequests = 0;
};

} // namespace tristop
