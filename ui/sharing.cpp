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
#include <QPointer>
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

/// The object by which a portal tells how a request has ended.
class PortalRequest : public QObject {
    Q_OBJECT

public:
    enum Response : uint { Done = 0, CancelledByUser = 1, Failed = 2 };

    PortalRequest(QDBusConnection bus, const QString &token, QObject *parent) : QObject(parent) {
        QString sender = bus.baseService().mid(1);
        sender.replace('.', '_');
        bus.connect({}, QString(kPortalPath) + "/request/" + sender + '/' + token,
                    "org.freedesktop.portal.Request", "Response", this,
                    SLOT(portalResponse(uint, QVariantMap)));
    }

signals:
    void failed();

private slots:
    void portalResponse(uint response, const QVariantMap &) {
        if (response == Failed)
            emit failed();
        deleteLater();
    }
};

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
    const QString name = QFileInfo(path).fileName();
    const QDBusUnixFileDescriptor file = openForReading(path);
    if (!file.isValid())
        return fail("cannot open " + path);
    callPortal("org.freedesktop.portal.Email", "ComposeEmail", {},
               {{"subject", name}, {"attachment_fds", QVariant::fromValue(FileDescriptors{file})}},
               {"xdg-email", {"--subject", name, "--attach", path}});
}

void Sharing::openWithProgram(const QString &path) {
    const QDBusUnixFileDescriptor file = openForReading(path);
    if (!file.isValid())
        return fail("cannot open " + path);
    callPortal("org.freedesktop.portal.OpenURI", "OpenFile", {QVariant::fromValue(file)}, {{"ask", true}},
               {"xdg-open", {path}});
}

void Sharing::showInFolder(const QString &path) {
    QDBusMessage message =
        QDBusMessage::createMethodCall("org.freedesktop.FileManager1", "/org/freedesktop/FileManager1",
                                       "org.freedesktop.FileManager1", "ShowItems");
    message << QStringList{QUrl::fromLocalFile(path).toString(QUrl::FullyEncoded)} << QString();
    call(message, {"xdg-open", {QFileInfo(path).absolutePath()}});
}

void Sharing::callPortal(const char *interface, const char *method, const QVariantList &arguments,
                         QVariantMap options, const Command &instead) {
    const QString token = QStringLiteral("tristop%1").arg(++portalRequests);
    auto *request = new PortalRequest(bus, token, this);
    connect(request, &PortalRequest::failed, this, [this, instead] { launch(instead); });
    options["handle_token"] = token;
    QDBusMessage message = QDBusMessage::createMethodCall(kPortalService, kPortalPath, interface, method);
    message << QString(); // no parent window: its name differs from platform to platform
    message.setArguments(message.arguments() + arguments + QVariantList{options});
    call(message, instead, request);
}

void Sharing::call(const QDBusMessage &message, const Command &instead, QObject *request) {
    auto *answer = new QDBusPendingCallWatcher(bus.asyncCall(message, timeout), this);
    connect(answer, &QDBusPendingCallWatcher::finished, this,
            [this, answer, instead, request = QPointer(request)] {
                answer->deleteLater();
                if (!answer->isError())
                    return;
                delete request;
                qCInfo(lcTristop) << "the desktop's service does not help:" << answer->error().message();
                launch(instead);
            });
}

void Sharing::launch(const Command &command) {
    if (!launcher(command.program, command.arguments))
        fail("cannot start " + command.program);
}

void Sharing::fail(const QString &reason) {
    qCWarning(lcTristop).noquote() << reason;
    emit failed();
}

} // namespace tristop

#include "sharing.moc"
