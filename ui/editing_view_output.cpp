// SPDX-License-Identifier: GPL-3.0-or-later
// How the document's picture leaves the application: saving, printing, sharing, and the question before it is
// lost.
#include "ui/editing_view_controller.h"

#include <array>
#include <cmath>

#include <QApplication>
#include <QClipboard>
#include <QDateTime>
#include <QDir>
#include <QDirIterator>
#include <QFileInfo>
#include <QMenu>
#include <QPageSetupDialog>
#include <QPrintDialog>
#include <QPrinter>
#include <QStandardPaths>
#include <QTemporaryDir>

#include "IICommon/colored_button.h"
#include "app/file_writer.h"
#include "app/picture_saving.h"
#include "ui/image_view.h"
#include "ui/localized_text.h"
#include "ui/logging.h"
#include "ui/platform_images.h"
#include "ui/print_view.h"
#include "ui/save_panel.h"
#include "ui/save_view_controller.h"
#include "ui/sharing.h"
#include "ui/waiting_window_controller.h"
#include "ui/warning_message_controller.h"

namespace tristop {
namespace {

/// Why a file could not be written, for the causes that a user can do something about.
QString writingReason(const FileError &error) {
    if (!QFileInfo(QString::fromStdString(error.path)).dir().exists())
        return localizedText("IDS_FOLDER_GONE");
    constexpr std::array<std::pair<int, const char *>, 4> kCauses = {{{ENOSPC, "IDS_DISK_FULL"},
                                                                      {EDQUOT, "IDS_DISK_FULL"},
                                                                      {EROFS, "IDS_DISK_READONLY"},
                                                                      {EACCES, "IDS_NO_PERMISSION"}}};
    for (const auto &[cause, key] : kCauses)
        if (error.reason == cannotWrite(error.path, errnoMessage(cause)).reason)
            return localizedText(key);
    return localizedText("IDS_SAVE_FAILED");
}

QString forLog(const FileError &error) {
    return QString::fromStdString(error.path + ' ' + error.reason);
}

EncodingOptions encodingOptions(const SaveOptions &options) {
    EncodingOptions encoding;
    if (options.saveUTI == "public.jpeg")
        encoding.jpegQuality = static_cast<int32_t>(std::lround(options.jpegQuality * 100));
    if (options.saveUTI == "public.tiff")
        encoding.tiffCompression = options.saveCompression() == SaveOptions::kLzw ? TiffCompression::Lzw
                                   : options.saveCompression() == SaveOptions::kPackBits
                                       ? TiffCompression::PackBits
                                       : TiffCompression::None;
    return encoding;
}

/// Dialogs do not own their printer.
void keepUntilDestroyed(QObject *dialog, const std::shared_ptr<QPrinter> &printer) {
    QObject::connect(dialog, &QObject::destroyed, [printer] {});
}

/// A new folder for a file that another program is given. It outlives the application, since that program may
/// read it later; folders of the day before go. Empty when it cannot be made.
QString newSharedFolder() {
    const QDir shared(QStandardPaths::writableLocation(QStandardPaths::CacheLocation) + "/shared");
    const QDateTime yesterday = QDateTime::currentDateTime().addDays(-1);
    for (const QFileInfo &former : shared.entryInfoList(QDir::Dirs | QDir::NoDotAndDotDot))
        if (former.lastModified() < yesterday)
            QDir(former.absoluteFilePath()).removeRecursively();
    shared.mkpath(".");
    QTemporaryDir folder(shared.filePath("XXXXXX"));
    folder.setAutoRemove(false);
    return folder.path();
}

} // namespace

// Saving.

void IIEditingViewController::save(const SaveCompletion &completion) {
    if (savePanel) {
        savePanel->raise();
        return;
    }
    saveOptionsView->resetOptions();
    auto *panel = new SavePanel(window(), saveOptionsView, [this](const QString &path) {
        return document.isPhotograph(path.toStdString());
    });
    savePanel = panel;
    connect(panel, &QDialog::finished, this, [this, panel, completion](int result) {
        savePanel = nullptr;
        panel->deleteLater();
        completion(result == QDialog::Accepted ? 1 : 0, panel);
    });
    panel->open();
}

void IIEditingViewController::saveAs() {
    if (!hasImage())
        return;
    save([this](int result, QFileDialog *panel) {
        if (result != 1)
            return;
        write(panel, [this](const QString &path) {
            document.pictureSaved(path.toStdString());
            updateControls();
            if (terminationPending && warning) // asked meanwhile, and answered by this
                warning->other();
        });
    });
}

bool IIEditingViewController::write(QFileDialog *panel, std::function<void(const QString &path)> written,
                                    std::function<void()> failed) {
    const QString url = panel->selectedFiles().value(0);
    if (url.isEmpty())
        return false;
    const QString type = saveOptionsView->saveUTI();
    const EncodingOptions options = encodingOptions(saveOptionsView->saveOptions());
    const auto didEnd = [this, url, written = std::move(written),
                         failed = std::move(failed)](const Failure &failure) {
        if (!failure) {
            tell(localizedText("IDS_SAVED_AS").arg(QFileInfo(url).fileName()));
            written(url);
            return;
        }
        showFailedWarning(localizedText("IDS_SAVE_FAILED"));
        if (failed)
            failed();
    };
    whenIdle([this, url, type, options, didEnd] {
        const auto task = [url, type, options, image = picture->image()]() -> Failure {
            FileError reason;
            if (save(image, {}, url, type, options, &reason))
                return std::nullopt;
            return error(
                localizedText("IDS_FILE_REASON").arg(QFileInfo(url).fileName(), writingReason(reason)),
                forLog(reason));
        };
        startRun(localizedText("IDS_SAVING"), task, didEnd);
    });
    return true;
}

bool IIEditingViewController::save(const QImage &picture, const QImage & /*original*/, const QString &url,
                                   const QString &type, const EncodingOptions & /*options*/,
                                   FileError *reason) {
    const auto rgb = rgbImage(picture);
    const auto problem = savePicture(rgb ? &*rgb : nullptr, url.toStdString(), type.toStdString());
    if (problem && reason != nullptr)
        *reason = *problem;
    return !problem;
}

bool IIEditingViewController::saveTIFF(const QImage &picture, const QImage &original, const QString &url,
                                       const EncodingOptions &options) {
    const auto first = rgbImage(picture), second = rgbImage(original);
    return tristop::saveTIFF(first ? &*first : nullptr, second ? &*second : nullptr, url.toStdString(),
                             options);
}

QImage IIEditingViewController::resultImage(const QImage &picture) {
    return picture.convertToFormat(QImage::Format_RGBA8888_Premultiplied);
}

QImage IIEditingViewController::displayImage() const {
    return resultImage(picture->image());
}

// Warnings, and the question before a picture is lost.

IIWarningMessageController *IIEditingViewController::makeWarning() {
    if (warning) // there is one sheet at most
        warning->cancel();
    warning = new IIWarningMessageController(window());
    return warning;
}

void IIEditingViewController::beginWarning(std::function<void(int returnCode)> didEnd) {
    warning->beginSheet([this, sheet = warning.data(), didEnd = std::move(didEnd)](int returnCode) {
        sheet->deleteLater();
        warning = nullptr;
        didEnd(returnCode);
    });
}

void IIEditingViewController::showFailedWarning(const QString &text) {
    IIWarningMessageController *sheet = makeWarning();
    sheet->setWarningMessage(text);
    sheet->setOkMessage(localizedText("IDS_OK"));
    beginWarning([](int) {});
}

void IIEditingViewController::showUnsaveWarning(const std::function<void(int returnCode)> &didEnd) {
    IIWarningMessageController *sheet = makeWarning();
    sheet->setWarningMessage(localizedText("IDS_SAVE_WARNING"));
    sheet->setPromptMessage(localizedText("IDS_SAVE_PROMPT"));
    sheet->setExtendMessage(localizedText("IDS_DONT_SAVE"));
    sheet->setOkMessage(localizedText("IDS_SAVE"));
    sheet->setCancelMessage(localizedText("IDS_CANCEL"));
    beginWarning(didEnd);
}

void IIEditingViewController::unsaveWarningSheetDidEnd(int returnCode) {
    const auto urls = std::exchange(offeredURLs, std::nullopt);
    if (returnCode == IIWarningMessageController::Other) {
        if (urls)
            openURLs(*urls);
        else
            runOpenPanel();
    } else if (returnCode == IIWarningMessageController::Confirmed) {
        // The document stays dirty, and nothing is opened.
        save([this](int result, QFileDialog *panel) {
            if (result == 1)
                write(panel, [](const QString &) {});
        });
    }
}

int64_t IIEditingViewController::terminate() {
    constexpr int64_t kNow = 1, kLater = 2;
    if (!needSave())
        return kNow;
    if (!terminationPending) {
        if (savePanel)
            savePanel->reject();
        terminationPending = true;
        showUnsaveWarning([this](int returnCode) { unsaveWarningTerminateSheetDidEnd(returnCode); });
    }
    return kLater;
}

void IIEditingViewController::unsaveWarningTerminateSheetDidEnd(int returnCode) {
    if (returnCode != IIWarningMessageController::Confirmed) {
        answerTermination(returnCode == IIWarningMessageController::Other);
        return;
    }
    save([this](int result, QFileDialog *panel) {
        if (result != 1) {
            answerTermination(false);
            return;
        }
        const bool named = write(
            panel,
            [this](const QString &path) {
                document.pictureSaved(path.toStdString());
                updateControls();
                answerTermination(true);
            },
            [this] { answerTermination(false); });
        if (!named) // not answered: a later quit asks afresh
            terminationPending = false;
    });
}

void IIEditingViewController::answerTermination(bool quit) {
    terminationPending = false;
    emit terminateAnswered(quit);
}

// Printing.

/// The settings of the page set-up, or the printer's own with the page turned as the picture is.
std::shared_ptr<QPrinter> IIEditingViewController::printSettings() {
    if (printInfo)
        return printInfo;
    auto printer = std::make_shared<QPrinter>(QPrinter::HighResolution);
    const QSize size = picture->image().size();
    printer->setPageOrientation(size.width() > size.height() ? QPageLayout::Landscape
                                                             : QPageLayout::Portrait);
    return printer;
}

void IIEditingViewController::printSetup() {
    const auto printer = printSettings();
    auto *dialog = new QPageSetupDialog(printer.get(), window());
    keepUntilDestroyed(dialog, printer);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setWindowModality(Qt::WindowModal);
    connect(dialog, &QDialog::accepted, this, [this, printer] { printInfo = printer; });
    dialog->open();
}

void IIEditingViewController::print() {
    if (!hasImage())
        return;
    const auto printer = printSettings();
    setEqualMargins(*printer);
    auto *dialog = new QPrintDialog(printer.get(), window());
    keepUntilDestroyed(dialog, printer);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setWindowModality(Qt::WindowModal);
    connect(dialog, &QDialog::accepted, this, [this, printer] {
        whenIdle([this, printer] {
            startRun(localizedText("IDS_PRINTING"), [printer, image = picture->image()]() -> Failure {
                if (printPicture(*printer, image))
                    return std::nullopt;
                return error(localizedText("IDS_PRINT_FAILED"), "the printer does not take the page");
            });
        });
    });
    dialog->open();
}

// Sharing.

void IIEditingViewController::shareAction() {
    if (!hasImage())
        return;
    auto *menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    menu->addAction(localizedText("IDS_SHARE_EMAIL"), this, [this] {
        withSharedFile([this](const QString &path) { sharingServices()->sendByEmail(path); });
    });
    menu->addAction(localizedText("IDS_SHARE_OPEN_WITH"), this, [this] {
        withSharedFile([this](const QString &path) { sharingServices()->openWithProgram(path); });
    });
    menu->addSeparator();
    menu->addAction(localizedText("IDS_SHARE_COPY"), this, [this] {
        QGuiApplication::clipboard()->setImage(displayImage());
        tell(localizedText("IDS_COPIED"));
    });
    const QString saved = QString::fromStdString(document.savedPath);
    menu->addAction(localizedText("IDS_SHARE_SHOW_IN_FOLDER"), this,
                    [this, saved] { sharingServices()->showInFolder(saved); })
        ->setEnabled(!saved.isEmpty() && QFileInfo::exists(saved));
    // Above the button, which stands at the window's lower edge.
    menu->popup(shareButn()->mapToGlobal(QPoint(0, -menu->sizeHint().height())));
}

Sharing *IIEditingViewController::sharingServices() {
    if (sharing == nullptr) {
        sharing = new Sharing(this);
        connect(sharing, &Sharing::failed, this,
                [this] { tell(error(localizedText("IDS_SHARE_FAILED"), "no program takes the picture")); });
    }
    return sharing;
}

/// Calls `use` with a file that holds the shown picture: the saved one, or else a new one for the purpose.
void IIEditingViewController::withSharedFile(const std::function<void(const QString &path)> &use) {
    const QString saved = QString::fromStdString(document.savedPath);
    if (!saved.isEmpty() && QFileInfo::exists(saved)) {
        use(saved);
        return;
    }
    const QString name =
        document.photographs.empty()
            ? QGuiApplication::applicationDisplayName()
            : QFileInfo(QString::fromStdString(document.photographs.front())).completeBaseName();
    whenIdle([this, use, name] {
        const QString folder = newSharedFolder(), path = folder + '/' + name + "-hdr.jpg";
        const auto task = [folder, path, name, image = picture->image()]() -> Failure {
            FileError reason{name.toStdString(), "cannot be shared: no folder can be made in the cache"};
            if (!folder.isEmpty() && save(image, {}, path, "public.jpeg", {}, &reason))
                return std::nullopt;
            return error(localizedText("IDS_SHARE_FAILED"), forLog(reason));
        };
        startRun(localizedText("IDS_SHARING"), task, [use, path](const Failure &failure) {
            if (!failure)
                use(path);
        });
    });
}

} // namespace tristop
