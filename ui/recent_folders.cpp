// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/recent_folders.h"

#include <QFileDialog>
#include <QSettings>
#include <QSplitter>
#include <QStandardPaths>
#include <QUrl>

namespace tristop {
namespace {

constexpr const char *kRecentFoldersKey = "RecentFolders";
constexpr qsizetype kRecentFolders = 8;
constexpr QSize kDialogSize(840, 560);
constexpr int kSidebarWidth = 160;

} // namespace

void showRecentFolders(QFileDialog &dialog) {
    QStringList folders = QSettings().value(kRecentFoldersKey).toStringList();
    folders.removeIf([](const QString &folder) { return !QDir(folder).exists(); });
    dialog.setHistory(folders);
    QList<QUrl> places;
    for (const auto place : {QStandardPaths::HomeLocation, QStandardPaths::PicturesLocation,
                             QStandardPaths::DesktopLocation, QStandardPaths::DownloadLocation})
        if (const QString folder = QStandardPaths::writableLocation(place);
            QDir(folder).exists() && !places.contains(QUrl::fromLocalFile(folder)))
            places.append(QUrl::fromLocalFile(folder));
    places.append(QUrl("file:")); // all of the computer
    dialog.setSidebarUrls(places);
    dialog.resize(kDialogSize);
    if (auto *parts = dialog.findChild<QSplitter *>())
        parts->setSizes({kSidebarWidth, kDialogSize.width() - kSidebarWidth});
    dialog.setDirectory(!folders.isEmpty()
                            ? folders.front()
                            : QStandardPaths::writableLocation(QStandardPaths::PicturesLocation));
}

void rememberFolder(const QFileDialog &dialog) {
    QSettings settings;
    QStringList folders = settings.value(kRecentFoldersKey).toStringList();
    const QString folder = dialog.directory().absolutePath();
    folders.removeAll(folder);
    folders.prepend(folder);
    settings.setValue(kRecentFoldersKey, folders.mid(0, kRecentFolders));
}

} // namespace tristop
