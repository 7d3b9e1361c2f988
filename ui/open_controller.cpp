// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/open_controller.h"

#include <algorithm>

#include <QMessageBox>
#include <QPushButton>

#include "app/photograph_type.h"
#include "ui/localized_text.h"
#include "ui/recent_folders.h"

namespace tristop {
namespace {

constexpr qsizetype kPhotographs = 3;

/// A file dialog that stays open while its selection is refused.
class OpenPanel : public QFileDialog {
public:
    OpenPanel(QWidget *window, std::function<bool(OpenPanel *)> validate)
        : QFileDialog(window), validate(std::move(validate)) {}

    void done(int result) override {
        if (result != Accepted || validate(this))
            QFileDialog::done(result);
    }

private:
    std::function<bool(OpenPanel *)> validate;
};

void showAlert(QWidget *panel, const QString &text) {
    auto *alert = new QMessageBox(QMessageBox::Warning, {}, text, QMessageBox::NoButton, panel);
    alert->setAttribute(Qt::WA_DeleteOnClose);
    alert->setDefaultButton(alert->addButton(localizedText("IDS_OK"), QMessageBox::AcceptRole));
    alert->open();
}

QString patterns(std::initializer_list<PhotographType> types) {
    QStringList list;
    for (const PhotographType type : types)
        for (const std::string_view suffix : suffixesOf(type))
            list.append("*." + QString::fromLatin1(suffix.data(), static_cast<qsizetype>(suffix.size())));
    return " (" + list.join(' ') + ')';
}

} // namespace

CBHDROpenController::~CBHDROpenController() {
    delete shownPanel;
}

QStringList CBHDROpenController::nameFilters() {
    return {localizedText("IDS_FILTER_PHOTOGRAPHS") + patterns({PhotographType::Jpeg, PhotographType::Raw}),
            localizedText("IDS_FILTER_JPEG") + patterns({PhotographType::Jpeg}),
            localizedText("IDS_FILTER_RAW") + patterns({PhotographType::Raw})};
}

bool CBHDROpenController::allowsFile(const QUrl &url) {
    const auto type = typeBySuffix(url.toLocalFile().toStdString());
    return type == PhotographType::Jpeg || type == PhotographType::Raw;
}

void CBHDROpenController::open(QWidget *window, const CompletionHandler &completionHandler) {
    if (shownPanel) {
        shownPanel->raise();
        shownPanel->activateWindow();
        return;
    }
    auto *opening =
        new OpenPanel(window, [this](OpenPanel *shown) { return panel(shown, shown->selectedUrls()); });
    shownPanel = opening;
    opening->setAttribute(Qt::WA_DeleteOnClose);
    opening->setWindowModality(Qt::WindowModal);
    opening->setOptions(QFileDialog::DontUseNativeDialog | QFileDialog::HideNameFilterDetails |
                        QFileDialog::ReadOnly);
    opening->setFileMode(multipleSelection ? QFileDialog::ExistingFiles : QFileDialog::ExistingFile);
    opening->setNameFilters(nameFilters());
    opening->setWindowTitle(localizedText("IDS_MANY_FILES"));
    showRecentFolders(*opening);
    QObject::connect(opening, &QDialog::finished, opening, [this, opening, completionHandler](int result) {
        if (result != QDialog::Accepted)
            return;
        rememberFolder(*opening);
        const QList<QUrl> urls = opening->selectedUrls();
        if (multipleSelection && urls.size() != kPhotographs)
            completionHandler({}, HdrError{.localizedDescription = localizedText("IDS_TOO_MANY_ERROR")});
        else
            completionHandler(urls, std::nullopt);
    });
    opening->open();
}

bool CBHDROpenController::panel(QFileDialog *panel, const QList<QUrl> &validateURL) const {
    if (validateURL.size() != kPhotographs) {
        showAlert(panel, localizedText("IDS_TOO_MANY_ERROR"));
        return false;
    }
    // The list shows photographs only; a name can still be typed.
    const auto other = std::ranges::find_if_not(validateURL, allowsFile);
    if (other != validateURL.end())
        showAlert(panel, localizedText("IDS_NOT_A_PHOTOGRAPH").arg(other->fileName()));
    return other == validateURL.end();
}

} // namespace tristop
