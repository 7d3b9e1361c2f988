// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/save_view_controller.h"

#include <cmath>

#include <QFileDialog>
#include <QLineEdit>
#include <QSignalBlocker>

#include "ui/localized_text.h"
#include "ui_IISaveViewController.h"

namespace tristop {
namespace {

constexpr int kViewHeight = 100;

} // namespace

IISaveViewController::IISaveViewController(QWidget *parent)
    : QWidget(parent), ui(std::make_unique<Ui::IISaveViewController>()) {
    ui->setupUi(this);
    ui->typeLabel->setText(localizedText("IDS_SAVE_TYPE"));
    ui->qualityLabel->setText(localizedText("IDS_SAVE_QUALITY"));
    ui->compressionLabel->setText(localizedText("IDS_SAVE_COMPRESSION"));
    ui->standardField->setText(localizedText("IDS_SAVE_STANDARD"));
    for (const SaveType &type : saveTypes())
        ui->typeButn->addItem(type.localized, QString(type.uti));
    ui->compressionButn->addItem(localizedText("IDS_SAVE_UNCOMPRESSED"),
                                 qlonglong{SaveOptions::kNoCompression});
    ui->compressionButn->addItem("LZW", qlonglong{SaveOptions::kLzw});
    ui->compressionButn->addItem("PackBits", qlonglong{SaveOptions::kPackBits});
    connect(ui->typeButn, &QComboBox::currentIndexChanged, this,
            [this] { setSaveType(ui->typeButn->currentData().toString()); });
    connect(ui->qualitySlider, &QSlider::valueChanged, this,
            [this](int percent) { setSaveQuality(static_cast<float>(percent) / 100); });
    connect(ui->compressionButn, &QComboBox::currentIndexChanged, this,
            [this] { setSaveCompression(ui->compressionButn->currentData().toLongLong()); });
    setSaveType(saveTypes().front().uti);
    setFixedHeight(kViewHeight);
}

IISaveViewController::~IISaveViewController() = default;

QStringList IISaveViewController::writableTypes() {
    QStringList types;
    for (const SaveType &type : saveTypes())
        types.append(type.uti);
    return types;
}

QString IISaveViewController::saveUTI() const {
    return QString::fromStdString(options.saveUTI);
}

void IISaveViewController::setSaveUTI(const QString &uti) {
    options.saveUTI = uti.toStdString();
    showOptions();
}

void IISaveViewController::setJpegQuality(float quality) {
    options.jpegQuality = quality;
    showOptions();
}

void IISaveViewController::setTiffCompression(int64_t compression) {
    options.tiffCompression = compression;
    showOptions();
}

void IISaveViewController::resetOptions() {
    options = {};
    setSaveType(saveUTI());
}

void IISaveViewController::setPanel(QFileDialog *panel) {
    hostPanel = panel;
    setSaveType(saveUTI());
}

void IISaveViewController::setSaveType(const QString &uti) {
    setSaveUTI(uti);
    emit saveTabChanged(saveTab());
    if (!hostPanel)
        return;
    const SaveType &type = options.saveType();
    QStringList patterns;
    for (const char *suffix : type.suffixes)
        patterns.append(QStringLiteral("*.") + suffix);
    hostPanel->setNameFilter(QString(type.localized) + " (" + patterns.join(' ') + ')');
    hostPanel->setDefaultSuffix(type.suffixes.front());
    if (auto *name = hostPanel->findChild<QLineEdit *>("fileNameEdit"))
        name->setText(QString::fromStdString(nameForType(name->text().toStdString(), type)));
}

/// Shows the options in the controls, which tell nobody.
void IISaveViewController::showOptions() {
    const QSignalBlocker types(ui->typeButn), quality(ui->qualitySlider), compression(ui->compressionButn);
    ui->typeButn->setCurrentIndex(ui->typeButn->findData(saveUTI()));
    ui->tabs->setCurrentIndex(saveTab());
    const int percent = static_cast<int>(std::lround(options.jpegQuality * 100));
    ui->qualitySlider->setValue(percent);
    ui->qualityField->setText(QString::number(percent));
    ui->compressionButn->setCurrentIndex(ui->compressionButn->findData(qlonglong{saveCompression()}));
}

} // namespace tristop
