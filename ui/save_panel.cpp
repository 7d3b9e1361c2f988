// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/save_panel.h"

#include <QGridLayout>
#include <QLineEdit>
#include <QMessageBox>

#include "ui/localized_text.h"
#include "ui/recent_folders.h"
#include "ui/save_view_controller.h"

namespace tristop {

SavePanel::SavePanel(QWidget *window, IISaveViewController *accessoryView,
                     std::function<bool(const QString &path)> isProtected)
    : QFileDialog(window), accessory(accessoryView), accessoryHome(accessoryView->parentWidget()),
      isProtected(std::move(isProtected)) {
    setWindowModality(Qt::WindowModal);
    setOptions(QFileDialog::DontUseNativeDialog | QFileDialog::HideNameFilterDetails);
    setAcceptMode(QFileDialog::AcceptSave);
    setFileMode(QFileDialog::AnyFile);
    setWindowTitle(localizedText("IDS_SAVE"));
    showRecentFolders(*this);
    for (const char *name : {"fileTypeLabel", "fileTypeCombo"}) // the options view has the types
        if (auto *own = findChild<QWidget *>(name))
            own->hide();
    auto *grid = qobject_cast<QGridLayout *>(layout());
    grid->addWidget(accessory, grid->rowCount(), 0, 1, -1);
    accessory->show();
    accessory->setPanel(this);
    connect(this, &QDialog::finished, this, [this](int result) {
        if (result == Accepted)
            rememberFolder(*this);
    });
}

SavePanel::~SavePanel() {
    giveAccessoryBack();
}

void SavePanel::done(int result) {
    giveAccessoryBack();
    QFileDialog::done(result);
}

void SavePanel::giveAccessoryBack() {
    if (!accessory || !accessoryHome)
        return;
    accessory->setPanel(nullptr);
    accessory->hide();
    accessory->setParent(accessoryHome);
    accessory = nullptr;
}

void SavePanel::accept() {
    auto *name = findChild<QLineEdit *>("fileNameEdit");
    const QString typed = name->text().trimmed();
    if (typed.isEmpty())
        return;
    const bool isFolder = QFileInfo(directory().absoluteFilePath(typed)).isDir();
    if (!isFolder)
        name->setText(
            QString::fromStdString(nameForType(typed.toStdString(), accessory->saveOptions().saveType())));
    if (!isFolder && !selectedFiles().isEmpty() && isProtected(selectedFiles().constFirst())) {
        auto *alert = new QMessageBox(QMessageBox::Warning, {}, localizedText("IDS_SAVE_OVER_PHOTOGRAPH"),
                                      QMessageBox::NoButton, this);
        alert->setAttribute(Qt::WA_DeleteOnClose);
        alert->setDefaultButton(alert->addButton(localizedText("IDS_OK"), QMessageBox::AcceptRole));
        alert->open();
        return;
    }
    QFileDialog::accept();
}

} // namespace tristop
