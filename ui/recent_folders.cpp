// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/recent_folders.h"

#include <QFileDialog>
#include <QSettings>
#include <QStandardPaths>

namespace tristop {
namespace {

constexpr const char *kRecentFoldersKey = "RecentFolders";
constexpr qsizetype kRecentFolders = 8;

} // namespace

void showRecentFolders(QFileDialog &dialog) {
    QStringList folders = QSettings().value(kRecentFoldersKey).toStringList();
    folders.removeIf([](const QString &folder) { return !QDir(folder).exists(); });
    dialog.setHistory(folders);
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
