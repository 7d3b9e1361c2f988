// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/localized_text.h"

#include <map>
#include <set>

#include <QDirIterator>
#include <QFile>
#include <QRegularExpression>
#include <QTextDocument>
#include <QTranslator>
#include <QXmlStreamReader>

#include <gtest/gtest.h>

namespace tristop {
namespace {

using Texts = std::map<QString, QString>;

const char *const kLanguages[] = {"en", "de", "fr", "es", "ja", "zh_CN"};

const QString kSources = QStringLiteral(TRISTOP_SOURCES);

QString fileText(const QString &name) {
    QFile file(name);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << name.toStdString();
    return QString::fromUtf8(file.readAll());
}

std::set<QString> allMatches(const QString &text, const QString &pattern) {
    std::set<QString> found;
    auto match = QRegularExpression(pattern).globalMatch(text);
    while (match.hasNext())
        found.insert(match.next().captured());
    return found;
}

/// The texts of a language's file by key. A key given twice is a failure.
Texts textsOf(const QString &language) {
    Texts texts;
    QXmlStreamReader xml(fileText(kSources + "/translations/tristop_" + language + ".ts"));
    QString key;
    while (!xml.atEnd()) {
        if (xml.readNext() != QXmlStreamReader::StartElement)
            continue;
        if (xml.name() == QLatin1String("message")) {
            key = xml.attributes().value("id").toString();
        } else if (xml.name() == QLatin1String("translation")) {
            EXPECT_FALSE(xml.attributes().hasAttribute("type")) << key.toStdString() << " is unfinished";
            EXPECT_FALSE(texts.contains(key)) << key.toStdString() << " is there twice";
            texts[key] = xml.readElementText();
        }
    }
    EXPECT_FALSE(xml.hasError()) << xml.errorString().toStdString();
    return texts;
}

std::set<QString> keysUsedInSources() {
    std::set<QString> keys;
    for (const char *folder : {"app", "IICommon", "ui"}) {
        QDirIterator files(kSources + '/' + folder, {"*.h", "*.cpp", "*.ui"}, QDir::Files,
                           QDirIterator::Subdirectories);
        while (files.hasNext())
            keys.merge(allMatches(fileText(files.next()), "\\bIDS_\\w+"));
    }
    return keys;
}

/// A menu title as it is read: without its mnemonic.
QString withoutMnemonic(QString title) {
    return title.remove(QRegularExpression("\\(&\\w\\)")).remove('&');
}

QList<QTranslator *> translators() {
    return QCoreApplication::instance()->findChildren<QTranslator *>(Qt::FindDirectChildrenOnly);
}

/// The texts of a locale, until the end.
class LoadedTranslations {
public:
    explicit LoadedTranslations(const char *locale) : before(translators()) {
        loadTranslations(*QCoreApplication::instance(), QLocale(locale));
    }
    ~LoadedTranslations() {
        for (QTranslator *translator : translators())
            if (!before.contains(translator))
                delete translator;
    }

private:
    QList<QTranslator *> before;
};

TEST(LocalizedText, EveryLanguageHasExactlyTheKeysOfTheSources) {
    const std::set<QString> used = keysUsedInSources();
    for (const char *language : kLanguages) {
        std::set<QString> translated;
        for (const auto &[key, text] : textsOf(language)) {
            translated.insert(key);
            EXPECT_TRUE(used.contains(key)) << language << " has the unused key " << key.toStdString();
            EXPECT_FALSE(text.trimmed().isEmpty()) << language << ' ' << key.toStdString();
        }
        for (const QString &key : used)
            EXPECT_TRUE(translated.contains(key)) << language << " lacks " << key.toStdString();
    }
}

TEST(LocalizedText, FormatsKeepTheirArguments) {
    const Texts english = textsOf("en");
    for (const char *language : kLanguages)
        for (const auto &[key, text] : textsOf(language))
            EXPECT_EQ(allMatches(text, "%[^ ]"), allMatches(english.at(key), "%[^ ]"))
                << language << ' ' << key.toStdString();
    for (const char *key : {"IDS_MENU_ABOUT", "IDS_MENU_HIDE", "IDS_MENU_QUIT"})
        EXPECT_TRUE(english.at(key).contains("%1")) << key;
}

TEST(LocalizedText, FollowsTheLocaleAndFallsBackToEnglish) {
    const std::map<const char *, const char *> cancel = {
        {"C", "Cancel"},         {"en_GB", "Cancel"},  {"it_IT", "Cancel"},
        {"de_AT", "Abbrechen"},  {"fr_CA", "Annuler"}, {"es_MX", "Cancelar"},
        {"ja_JP", "キャンセル"}, {"zh_CN", "取消"},    {"zh_TW", "Cancel"}};
    for (const auto &[locale, text] : cancel) {
        LoadedTranslations loaded(locale);
        EXPECT_EQ(localizedText("IDS_CANCEL"), text) << locale;
        EXPECT_EQ(localizedText("IDS_NO_SUCH_KEY"), QString()) << locale;
    }
}

TEST(Guide, NamesTheControlsAsTheWindowDoes) {
    for (const char *language : kLanguages) {
        LoadedTranslations loaded(language);
        QTextDocument page;
        page.setHtml(fileText(":/guide/" + localizedText("IDS_GUIDE_PAGE")));
        const QString text = page.toPlainText();
        for (const char *key :
             {"IDS_TONE_LENGTH", "IDS_TONE_SATURATION", "IDS_BRIHGTNESS", "IDS_GHOST", "IDS_SATURATION",
              "IDS_CONTRAST", "IDS_ORIGINAL", "IDS_ART", "IDS_BW", "IDS_MENU_TILES", "IDS_MENU_SAVE"}) {
            const QString name = withoutMnemonic(localizedText(key)).remove(QRegularExpression("\\s*…$"));
            EXPECT_TRUE(text.contains(name)) << language << ' ' << key;
        }
    }
}

} // namespace
} // namespace tristop
