// SPDX-License-Identifier: GPL-3.0-or-later
#include <algorithm>
#include <array>
#include <string_view>

#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <QUrl>

#include "ui/app_delegate.h"
#include "ui/editing_view_controller.h"
#include "ui/ending_signals.h"
#include "ui/image_view.h"
#include "ui/localized_text.h"
#include "ui/logging.h"
#include "ui/main_window.h"
#include "ui/picture_rescue.h"
#include "ui/theme.h"

namespace {

using tristop::localizedText;

/// Help and version are for terminals without a display, too.
bool asksForText(int argc, char **argv) {
    constexpr std::array<std::string_view, 5> kTextOptions = {"-h", "--help", "--help-all", "-v",
                                                              "--version"};
    return std::any_of(argv + 1, argv + argc, [&](std::string_view argument) {
        return std::find(kTextOptions.begin(), kTextOptions.end(), argument) != kTextOptions.end();
    });
}

/// What the command line asks for; `process` of the parser ends the program after a text or an error.
class CommandLine {
public:
    explicit CommandLine(const QCoreApplication &application)
        : noGuide(QStringLiteral("no-guide"), localizedText("IDS_HELP_NO_GUIDE")) {
        parser.setApplicationDescription(localizedText("IDS_HELP_DESCRIPTION"));
        parser.addHelpOption();
        parser.addVersionOption();
        parser.addOption(noGuide);
        parser.addPositionalArgument(QStringLiteral("photographs"), localizedText("IDS_HELP_PHOTOGRAPHS"),
                                     QStringLiteral("[A B C]"));
        parser.process(application);
    }

    bool isGuideWanted() const { return !parser.isSet(noGuide); }
    QList<QUrl> photographs() const {
        QList<QUrl> urls;
        for (const QString &argument : parser.positionalArguments())
            urls << (argument.startsWith(QLatin1String("file://"))
                         ? QUrl(argument)
                         : QUrl::fromLocalFile(QDir::current().absoluteFilePath(argument)));
        return urls;
    }

private:
    QCommandLineParser parser;
    QCommandLineOption noGuide;
};

} // namespace

int main(int argc, char **argv) {
    QCoreApplication::setApplicationName(QStringLiteral("tristop"));
    QCoreApplication::setApplicationVersion(QStringLiteral(TRISTOP_VERSION));
    QCoreApplication::setOrganizationName(QStringLiteral("tristop"));
    if (asksForText(argc, argv)) {
        QCoreApplication application(argc, argv);
        tristop::loadTranslations(application);
        CommandLine commandLine(application);
        return 0;
    }

    QApplication application(argc, argv);
    QGuiApplication::setApplicationDisplayName(QStringLiteral("Tristop"));
    QGuiApplication::setDesktopFileName(QStringLiteral("org.tristop.Tristop"));
    QApplication::setQuitOnLastWindowClosed(false); // the delegate decides
    tristop::loadTranslations(application);
    tristop::applyTheme(application);
    const CommandLine commandLine(application);
    QObject::connect(&application, &QApplication::focusChanged, [](QWidget *, QWidget *widget) {
        if (widget)
            qCDebug(tristop::lcTristop).noquote() << "focus on" << widget->objectName();
    });

    tristop::PictureRescue rescue; // outlives what tells it of the picture
    tristop::IIMainWindow window(commandLine.isGuideWanted());
    tristop::IIAppDelegate delegate;
    delegate.setWindow(&window);
    QObject::connect(&delegate, &tristop::IIAppDelegate::terminated, &application, [&window] {
        window.hide(); // work underway may take a while to end
        QCoreApplication::exit(0);
    });
    const tristop::IIEditingViewController &editing = *window.editingViewController();
    QObject::connect(&editing, &tristop::IIEditingViewController::userInterfaceStateChanged, &application,
                     [&editing, &rescue] {
                         rescue.setUnsavedPicture(editing.needSave() ? editing.imageView()->image()
                                                                     : QImage());
                     });
    const tristop::EndingSignals endingSignals;
    QObject::connect(&endingSignals, &tristop::EndingSignals::received, &application, [&rescue](int signal) {
        rescue.rescue();
        QCoreApplication::exit(128 + signal); // as a shell reports it
    });
    delegate.applicationDidFinishLaunching();
    qCDebug(tristop::lcTristop).noquote() << "window on" << QGuiApplication::platformName();
    if (const QString rescued = rescue.takeRescued(); !rescued.isEmpty())
        window.editingViewController()->tell(tristop::localizedText("IDS_RESCUED").arg(rescued));
    if (const QList<QUrl> photographs = commandLine.photographs(); !photographs.isEmpty())
        QMetaObject::invokeMethod(
            &window, [&window, photographs] { window.editingViewController()->offerURLs(photographs); },
            Qt::QueuedConnection);
    return QApplication::exec();
}
