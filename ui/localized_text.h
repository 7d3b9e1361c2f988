// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QCoreApplication>
#include <QLocale>
#include <QString>

namespace tristop {

/// The text of a key such as "IDS_OK" in the user's language; empty when the key is missing.
QString localizedText(const char *key);

/// Loads the application's texts in the first language of the locale that they are translated to, English
/// otherwise, and Qt's own texts (buttons of dialogs, the file dialog) in the same language, where they are
/// installed. Call it once, before the first window. The translators belong to the application.
void loadTranslations(QCoreApplication &application, const QLocale &locale = QLocale());

} // namespace tristop
