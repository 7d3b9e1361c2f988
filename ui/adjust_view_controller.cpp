// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/adjust_view_controller.h"

#include <algorithm>

#include <QEvent>

#include "app/adjustments.h"
#include "ui/localized_text.h"
#include "ui/theme.h"
#include "ui_IIAdjustViewController.h"

namespace tristop {

namespace {

void setUp(AdjustSlider &slider, const SliderRange &range) {
    slider.setRange(range.lowest, range.highest);
    slider.setDefaultValue(range.standard);
}

void setColors(IIRoundedBox &box) {
    box.setBorderWidth(1);
    box.setBorderColor(theme::kBoxTab);
    box.setTitleColor(Qt::white);
    box.setGradientStartColor(theme::kBoxTop);
    box.setGradientEndColor(theme::kPanel);
    box.setBackgroundColor(theme::kPanel);
    box.setDrawsFullTitleBar(true);
}

/// Shows the slider's value less an offset, and the value in use on the tooltip.
void showNumber(QLabel &field, AdjustSlider &slider, int offset = 0) {
    field.setText(QString::number(slider.value() - offset));
    QStringList hints;
    if (offset != 0)
        hints << localizedText("IDS_VALUE_IN_USE").arg(slider.value());
    hints << localizedText("IDS_SLIDER_RESET").arg(slider.defaultValue());
    slider.setToolTip(hints.join(u'\n'));
    field.setToolTip(slider.toolTip());
}

} // namespace

void IIAdjustViewControllerDelegate::engineSettingsChanged(int64_t /*toneLength*/, int64_t /*toneSaturation*/,
                                                           int64_t /*brightenss*/, int32_t /*ghost*/) {}

void IIAdjustViewControllerDelegate::effectSettingsChanged(int64_t /*contrast*/, int64_t /*saturation*/,
                                                           int64_t /*style*/) {}

IIAdjustViewController::IIAdjustViewController(std::shared_ptr<IHDREngineController> engineController,
                                               QWidget *parent)
    : QWidget(parent), ui(std::make_unique<Ui::IIAdjustViewController>()),
      engine(std::move(engineController)) {
    ui->setupUi(this);
    setAccessibleName(localizedText("IDS_ADJUSTMENTS"));
    setUp(*ui->toneLengthSlider, kToneLengthRange);
    setUp(*ui->toneSaturationSlider, kToneSaturationRange);
    setUp(*ui->brightnessSlider, kBrightnessRange);
    setUp(*ui->ghostSlider, kGhostRange);
    setUp(*ui->saturationSlider, kSaturationRange);
    setUp(*ui->contrastSlider, kContrastRange);
    setColors(*ui->mergeBox);
    setColors(*ui->effectBox);
    ui->scrollArea->viewport()->setAutoFillBackground(false);
    ui->contents->setAutoFillBackground(false);
    ui->histogramWell->setBackgroundColor(theme::kField);
    ui->effectPopButn->setFocusPolicy(Qt::StrongFocus);
    ui->effectPopButn->installEventFilter(this);
    initViewController();
    connectControls();
    enableControl(false);
}

IIAdjustViewController::~IIAdjustViewController() = default;

void IIAdjustViewController::initViewController() {
    ui->mergeBox->setTitle(localizedText("IDS_GROUP_MERGE"));
    ui->effectBox->setTitle(localizedText("IDS_GROUP_EFFECT"));
    const auto name = [](QLabel *caption, QWidget *control, const char *key) {
        caption->setText(localizedText(key));
        control->setAccessibleName(caption->text());
    };
    name(ui->toneLengthField, ui->toneLengthSlider, "IDS_TONE_LENGTH");
    name(ui->toneSaturationField, ui->toneSaturationSlider, "IDS_TONE_SATURATION");
    name(ui->brightnessField, ui->brightnessSlider, "IDS_BRIHGTNESS");
    name(ui->ghostField, ui->ghostSlider, "IDS_GHOST");
    name(ui->saturationField, ui->saturationSlider, "IDS_SATURATION");
    name(ui->contrastField, ui->contrastSlider, "IDS_CONTRAST");
    name(ui->styleField, ui->effectPopButn, "IDS_STYLE");
    ui->histogramView->setAccessibleName(localizedText("IDS_HISTOGRAM"));
    int number = 0;
    for (QWidget *thumbnail : {ui->leftImageView, ui->middleImageView, ui->rightImageView})
        thumbnail->setAccessibleName(localizedText("IDS_PHOTOGRAPH").arg(++number));

    showMergeSettings();

    ui->effectPopButn->clear();
    ui->effectPopButn->addItems(
        {localizedText("IDS_ORIGINAL"), localizedText("IDS_ART"), localizedText("IDS_BW")});
    updateDefaultEffectsUI();
}

void IIAdjustViewController::showMergeSettings() {
    const auto clamped = [](const AdjustSlider *slider, int64_t value) {
        return static_cast<int>(std::clamp<int64_t>(value, slider->minimum(), slider->maximum()));
    };
    const IHDREngineController standard;
    const IHDREngineController &settings = engine ? *engine : standard;
    ui->ghostSlider->showValue(
        clamped(ui->ghostSlider, settings.ghostSuppressionLevel() - kGhostFieldOffset));
    ui->toneSaturationSlider->showValue(clamped(ui->toneSaturationSlider, settings.toneSaturation()));
    ui->toneLengthSlider->showValue(clamped(ui->toneLengthSlider, settings.toneLength()));
    ui->brightnessSlider->showValue(clamped(ui->brightnessSlider, settings.brightness()));

    showNumber(*ui->toneLengthValueField, *ui->toneLengthSlider);
    showNumber(*ui->toneSaturationValueField, *ui->toneSaturationSlider);
    showNumber(*ui->brightnessValueField, *ui->brightnessSlider);
    showNumber(*ui->ghostValueField, *ui->ghostSlider, kGhostFieldOffset);
}

void IIAdjustViewController::connectControls() {
    // The numbers follow the handle; the picture follows when it is let go.
    const auto follow = [this](AdjustSlider *slider, QLabel *field, int offset,
                               void (IIAdjustViewController::*changed)()) {
        connect(slider, &AdjustSlider::userMoved, this,
                [slider, field, offset] { showNumber(*field, *slider, offset); });
        connect(slider, &AdjustSlider::userSettled, this, changed);
    };
    using Panel = IIAdjustViewController;
    follow(ui->toneLengthSlider, ui->toneLengthValueField, 0, &Panel::toneLengthChanged);
    follow(ui->toneSaturationSlider, ui->toneSaturationValueField, 0, &Panel::toneSaturationChanged);
    follow(ui->brightnessSlider, ui->brightnessValueField, 0, &Panel::brightnessChanged);
    follow(ui->ghostSlider, ui->ghostValueField, kGhostFieldOffset, &Panel::ghostChanged);
    follow(ui->saturationSlider, ui->saturationValueField, 0, &Panel::saturationChanged);
    follow(ui->contrastSlider, ui->contrastValueField, kMovedContrastFieldOffset, &Panel::contrastChanged);
    connect(ui->effectPopButn, &QComboBox::activated, this, &Panel::styleChanged);
}

void IIAdjustViewController::updateEngine(std::shared_ptr<IHDREngineController> engineController) {
    engine = std::move(engineController);
    showMergeSettings();
}

void IIAdjustViewController::updateDefaultEffectsUI() {
    ui->contrastSlider->showValue(0);
    ui->saturationSlider->showValue(0);
    showNumber(*ui->contrastValueField, *ui->contrastSlider);
    showNumber(*ui->saturationValueField, *ui->saturationSlider);
    ui->effectPopButn->setCurrentIndex(0);
}

void IIAdjustViewController::enableControl(bool enable) {
    for (QWidget *control : std::initializer_list<QWidget *>{
             ui->toneLengthSlider, ui->toneSaturationSlider, ui->brightnessSlider, ui->ghostSlider,
             ui->saturationSlider, ui->contrastSlider, ui->effectPopButn})
        control->setEnabled(enable);
}

void IIAdjustViewController::updateSize(int64_t width, int64_t height) {
    ui->sizeField->setText(QStringLiteral("%1 %2x%3 %4")
                               .arg(localizedText("IDS_OUTPUT_SIZE"), QString::number(width),
                                    QString::number(height), localizedText("IDS_PIX")));
}

void IIAdjustViewController::updateHistogramData(const IIHistogramData &histogramData) {
    ui->histogramView->setHistogramData(histogramData);
    ui->histogramView->update();
}

void IIAdjustViewController::toneLengthChanged() {
    showNumber(*ui->toneLengthValueField, *ui->toneLengthSlider);
    updateEngineSettings();
}

void IIAdjustViewController::toneSaturationChanged() {
    showNumber(*ui->toneSaturationValueField, *ui->toneSaturationSlider);
    updateEngineSettings();
}

void IIAdjustViewController::brightnessChanged() {
    showNumber(*ui->brightnessValueField, *ui->brightnessSlider);
    updateEngineSettings();
}

void IIAdjustViewController::ghostChanged() {
    showNumber(*ui->ghostValueField, *ui->ghostSlider, kGhostFieldOffset);
    updateEngineSettings();
}

void IIAdjustViewController::saturationChanged() {
    showNumber(*ui->saturationValueField, *ui->saturationSlider);
    updateEffectSettings();
}

void IIAdjustViewController::contrastChanged() {
    showNumber(*ui->contrastValueField, *ui->contrastSlider, kMovedContrastFieldOffset);
    updateEffectSettings();
}

void IIAdjustViewController::styleChanged() {
    updateEffectSettings();
}

void IIAdjustViewController::updateEngineSettings() {
    if (changeDelegate)
        changeDelegate->engineSettingsChanged(ui->toneLengthSlider->value(),
                                              ui->toneSaturationSlider->value(),
                                              ui->brightnessSlider->value(), ui->ghostSlider->value());
}

void IIAdjustViewController::updateEffectSettings() {
    if (changeDelegate)
        changeDelegate->effectSettingsChanged(ui->contrastSlider->value(), ui->saturationSlider->value(),
                                              ui->effectPopButn->currentIndex());
}

bool IIAdjustViewController::eventFilter(QObject *watched, QEvent *event) {
    // The wheel scrolls the panel, not a list that happens to lie under it.
    if (watched == ui->effectPopButn && event->type() == QEvent::Wheel && !ui->effectPopButn->hasFocus()) {
        event->ignore();
        return true;
    }
    return QWidget::eventFilter(watched, event);
}

IIPopupImageView *IIAdjustViewController::leftImageView() const {
    return ui->leftImageView;
}

IIPopupImageView *IIAdjustViewController::middleImageView() const {
    return ui->middleImageView;
}

IIPopupImageView *IIAdjustViewController::rightImageView() const {
    return ui->rightImageView;
}

AdjustSlider *IIAdjustViewController::toneLengthSlider() const {
    return ui->toneLengthSlider;
}

AdjustSlider *IIAdjustViewController::toneSaturationSlider() const {
    return ui->toneSaturationSlider;
}

AdjustSlider *IIAdjustViewController::brightnessSlider() const {
    return ui->brightnessSlider;
}

AdjustSlider *IIAdjustViewController::ghostSlider() const {
    return ui->ghostSlider;
}

AdjustSlider *IIAdjustViewController::saturationSlider() const {
    return ui->saturationSlider;
}

AdjustSlider *IIAdjustViewController::contrastSlider() const {
    return ui->contrastSlider;
}

QComboBox *IIAdjustViewController::effectPopButn() const {
    return ui->effectPopButn;
}

QLabel *IIAdjustViewController::toneLengthValueField() const {
    return ui->toneLengthValueField;
}

QLabel *IIAdjustViewController::toneSaturationValueField() const {
    return ui->toneSaturationValueField;
}

QLabel *IIAdjustViewController::brightnessValueField() const {
    return ui->brightnessValueField;
}

QLabel *IIAdjustViewController::ghostValueField() const {
    return ui->ghostValueField;
}

QLabel *IIAdjustViewController::saturationValueField() const {
    return ui->saturationValueField;
}

QLabel *IIAdjustViewController::contrastValueField() const {
    return ui->contrastValueField;
}

QLabel *IIAdjustViewController::toneLengthField() const {
    return ui->toneLengthField;
}

QLabel *IIAdjustViewController::toneSaturationField() const {
    return ui->toneSaturationField;
}

QLabel *IIAdjustViewController::brightnessField() const {
    return ui->brightnessField;
}

QLabel *IIAdjustViewController::ghostField() const {
    return ui->ghostField;
}

QLabel *IIAdjustViewController::saturationField() const {
    return ui->saturationField;
}

QLabel *IIAdjustViewController::contrastField() const {
    return ui->contrastField;
}

QLabel *IIAdjustViewController::sizeField() const {
    return ui->sizeField;
}

IIHistogramView *IIAdjustViewController::histogramView() const {
    return ui->histogramView;
}

} // namespace tristop
