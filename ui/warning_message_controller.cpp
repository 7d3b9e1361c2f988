// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/warning_message_controller.h"

#include <QGuiApplication>
#include <QIcon>
#include <QLabel>
#include <QPushButton>

#include "ui/application_icon.h"
#include "ui/theme.h"
#include "ui_IIWarningMessageController.h"

namespace tristop {

IIWarningMessageController::IIWarningMessageController(QWidget *parent)
    : QDialog(parent), ui(std::make_unique<Ui::IIWarningMessageController>()) {
    ui->setupUi(this);
    setWindowModality(Qt::WindowModal);
    connect(ui->okButn, &QPushButton::clicked, this, [this] { ok(); });
    connect(ui->cancelButn, &QPushButton::clicked, this, [this] { cancel(); });
    connect(ui->otherButn, &QPushButton::clicked, this, [this] { other(); });
}

IIWarningMessageController::~IIWarningMessageController() = default;

QPushButton *IIWarningMessageController::okButn() const {
    return ui->okButn;
}

QPushButton *IIWarningMessageController::cancelButn() const {
    return ui->cancelButn;
}

QPushButton *IIWarningMessageController::otherButn() const {
    return ui->otherButn;
}

QLabel *IIWarningMessageController::iconView() const {
    return ui->iconView;
}

QLabel *IIWarningMessageController::messageField() const {
    return ui->messageField;
}

QLabel *IIWarningMessageController::commentField() const {
    return ui->commentField;
}

void IIWarningMessageController::beginSheet(std::function<void(int result)> didEnd) {
    windowDidLoad();
    connect(this, &QDialog::finished, this, [didEnd = std::move(didEnd)](int result) { didEnd(result); });
    open();
}

void IIWarningMessageController::windowDidLoad() {
    setWindowTitle(QGuiApplication::applicationDisplayName());
    const auto showTitle = [](QPushButton *button, const QString &title) {
        button->setText(title);
        button->setVisible(!title.isEmpty());
    };
    showTitle(ui->okButn, okTitle);
    showTitle(ui->cancelButn, cancelTitle);
    showTitle(ui->otherButn, extendTitle);
    ui->iconView->setPixmap(applicationIcon().pixmap(ui->iconView->minimumSize(), devicePixelRatio()));
    QFont bold = ui->messageField->font();
    bold.setWeight(QFont::DemiBold);
    ui->messageField->setFont(bold);
    ui->messageField->setText(warning);
    // Beside the message in the window's text colour, the comment stands back.
    QPalette quiet = ui->commentField->palette();
    quiet.setColor(QPalette::WindowText, theme::kSecondaryText);
    ui->commentField->setPalette(quiet);
    ui->commentField->setText(prompt);
    ui->commentField->setVisible(!prompt.isEmpty());
    // Read out when the sheet appears.
    setAccessibleName(warning);
    setAccessibleDescription(prompt);
}

} // namespace tristop
