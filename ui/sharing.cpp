// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/sharing.h"

#include <fcntl.h>
#include <unistd.h>

#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusPendingCallWatcher>
#include <QDBusUnixFileDescriptor>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QUrl>

#include "ui/logging.h"

namespace tristop {
namespace {

constexpr const char *kPortalService = "org.freedesktop.portal.Desktop";
constexpr const char *kPortalPath = "/org/freedesktop/portal/desktop";

using FileDescriptors = QList<QDBusUnixFileDescriptor>;

/// Portals take open files, since they may not see the caller's folders.
QDBusUnixFileDescriptor openForReading(const QString &path) {
    QDBusUnixFileDescriptor descriptor;
    const int file = ::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC);
    if (file >= 0)
        descriptor.giveFileDescriptor(file);
    return descriptor;
}

QDBusMessage portalCall(const char *interface, const char *method) {
    return QDBusMessage::createMethodCall(kPortalService, kPortalPath, interface, method);
}

} // namespace

Sharing::Sharing(QObject *parent)
    : Sharing(
          QDBusConnection::sessionBus(),
          [](const QString &program, const QStringList &arguments) {
              return QProcess::startDetached(program, arguments);
          },
          kTimeoutMilliseconds, parent) {}

Sharing::Sharing(const QDBusConnection &bus, Launcher launcher, int timeoutMilliseconds, QObject *parent)
    : QObject(parent), bus(bus), launcher(std::move(launcher)), timeout(timeoutMilliseconds) {
    qDBusRegisterMetaType<FileDescriptors>();
}

void Sharing::sendByEmail(const QString &path) {
    QDBusMessage message = portalCall("org.freedesktop.portal.Email", "ComposeEmail");
    message << QString() // no parent window: portals know those of one platform only
            << QVariantMap{{"subject", QFileInfo(path).fileName()},
                           {"attachment_fds", QVariant::fromValue(FileDescriptors{openForReading(path)})}};
    call(message, "xdg-email", {"--subject", QFileInfo(path).fileName(), "--attach", path});
}

void Sharing::openWithProgram(const QString &path) {
    QDBusMessage message = portalCall("org.freedesktop.portal.OpenURI", "OpenFile");
    message << QString() << QVariant::fromValue(openForReading(path)) << QVariantMap{{"ask", true}};
    call(message, "xdg-open", {path});
}

void Sharing::showInFolder(const QString &path) {
    QDBusMessage message =
        QDBusMessage::createMethodCall("org.freedesktop.FileManager1", "/org/freedesktop/FileManager1",
                                       "org.freedesktop.FileManager1", "ShowItems");
    message << QStringList{QUrl::fromLocalFile(path).toString(QUrl::FullyEncoded)} << QString();
    call(message, "xdg-open", {QFileInfo(path).absolutePath()});
}

void Sharing::call(const QDBusMessage &message, const QString &program, const QStringList &arguments) {
    auto *answer = new QDBusPendingCallWatcher(bus.asyncCall(message, timeout), this);
    connect(answer, &QDBusPendingCallWatcher::finished, this, [this, answer, program, arguments] {
        answer->deleteLater();
        if (!answer->isError())
            return;
        qCInfo(lcTristop) << "using" << program
                          << "instead of the desktop's service:" << answer->error().message();
        if (!launcher(program, arguments)) {
            qCWarning(lcTristop) << "cannot start" << program;
            emit failed();
        }
    });
}

} // namespace tristop
