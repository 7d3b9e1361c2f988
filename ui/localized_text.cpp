// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/localized_text.h"

#include <QLibraryInfo>
#include <QTranslator>

#include "ui/logging.h"

namespace tristop {

namespace {

const QString kTextFolder = QStringLiteral(":/translations");

/// Those of the program's resources are always there.
void installEnglish(QCoreApplication &application) {
    auto *english = new QTranslator(&application);
    if (english->load(QStringLiteral("tristop_en"), kTextFolder))
        QCoreApplication::installTranslator(english);
}

void installQtTexts(QCoreApplication &application, const QLocale &locale) {
    auto *translator = new QTranslator(&application);
    if (translator->load(locale, QStringLiteral("qtbase"), QStringLiteral("_"),
                         QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
        QCoreApplication::installTranslator(translator);
    else
        qCInfo(lcTristop) << "no translation of Qt's own dialogs to" << locale.name();
}

} // namespace

QString localizedText(const char *key) {
    QString text = qtTrId(key);
    // An untranslated key comes back as itself.
    return text == QLatin1String(key) ? QString() : text;
}

void loadTranslations(QCoreApplication &application, const QLocale &locale) {
    // The translator that was installed last is asked first.
    installEnglish(application);
    auto *translator = new QTranslator(&application);
    if (!translator->load(locale, QStringLiteral("tristop"), QStringLiteral("_"), kTextFolder))
        return;
    QCoreApplication::installTranslator(translator);
    const QLocale language(translator->language());
    if (language.language() != QLocale::English)
        installQtTexts(application, language);
}

} // namespace tristop
