// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <memory>

#include <QWidget>

#include "app/hdr_engine_bridge.h"
#include "app/histogram_data.h"

class QComboBox;
class QLabel;

namespace Ui {
class IIAdjustViewController;
}

namespace tristop {

class AdjustSlider;
class IIEditingViewController;
class IIHistogramView;
class IIPopupImageView;

/// Told what the user changes in the adjustment panel. A delegate overrides what it cares for.
class IIAdjustViewControllerDelegate {
public:
    virtual ~IIAdjustViewControllerDelegate() = default;

    /// A merge slider has come to rest; the four values are the positions of all four.
    virtual void engineSettingsChanged(int64_t toneLength, int64_t toneSaturation, int64_t brightenss,
                                       int32_t ghost);
    /// A slider or the style of the colour effect has changed; style is one of LomoSettings.
    virtual void effectSettingsChanged(int64_t contrast, int64_t saturation, int64_t style);
};

/**
 * The side panel: thumbnails of the three photographs, the sliders of the merge and of the colour effect, the
 * histogram and the size of the picture. Changes made by the program never reach the delegate.
 */
class IIAdjustViewController : public QWidget {
    Q_OBJECT

public:
    /// Shows the merge settings of `engineController`, which may be null; the controls start disabled.
    explicit IIAdjustViewController(std::shared_ptr<IHDREngineController> engineController = nullptr,
                                    QWidget *parent = nullptr);
    ~IIAdjustViewController() override;

    /// Not owned; null for none.
    IIAdjustViewControllerDelegate *delegate() const { return changeDelegate; }
    void setDelegate(IIAdjustViewControllerDelegate *delegate) { changeDelegate = delegate; }
    /// The controller whose window this panel belongs to; not owned, since it owns the panel.
    IIEditingViewController *editingViewController() const { return owner; }
    void setEditingViewController(IIEditingViewController *controller) { owner = controller; }
    const std::shared_ptr<IHDREngineController> &engineController() const { return engine; }
    void setEngineController(std::shared_ptr<IHDREngineController> controller) {
        engine = std::move(controller);
    }

    /// Thumbnails of the first, second and third photograph.
    IIPopupImageView *leftImageView() const;
    IIPopupImageView *middleImageView() const;
    IIPopupImageView *rightImageView() const;

    AdjustSlider *toneLengthSlider() const;
    AdjustSlider *toneSaturationSlider() const;
    AdjustSlider *brightnessSlider() const;
    AdjustSlider *ghostSlider() const;
    AdjustSlider *saturationSlider() const;
    AdjustSlider *contrastSlider() const;
    QComboBox *effectPopButn() const;

    QLabel *toneLengthValueField() const;
    QLabel *toneSaturationValueField() const;
    QLabel *brightnessValueField() const;
    QLabel *ghostValueField() const;
    QLabel *saturationValueField() const;
    QLabel *contrastValueField() const;

    QLabel *toneLengthField() const;
    QLabel *toneSaturationField() const;
    QLabel *brightnessField() const;
    QLabel *ghostField() const;
    QLabel *saturationField() const;
    QLabel *contrastField() const;

    IIHistogramView *histogramView() const;
    QLabel *sizeField() const;

    /// Captions, the positions of the sliders, the styles and the defaults of the colour effect.
    void initViewController();
    /// Takes another engine and shows its merge settings.
    void updateEngine(std::shared_ptr<IHDREngineController> engineController);
    /// The colour effect back to no contrast, no saturation and the first style.
    void updateDefaultEffectsUI();
    /// Enables or disables the six sliders and the styles.
    void enableControl(bool enable);
    /// Shows the size of the picture in pixels.
    void updateSize(int64_t width, int64_t height);
    void updateHistogramData(const IIHistogramData &histogramData);

    /// What a control does once the user has changed it.
    void toneLengthChanged();
    void toneSaturationChanged();
    void brightnessChanged();
    void ghostChanged();
    void saturationChanged();
    void contrastChanged();
    void styleChanged();

    /// Tell the delegate.
    void updateEngineSettings();
    void updateEffectSettings();

    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void connectControls();
    void showMergeSettings();

    std::unique_ptr<Ui::IIAdjustViewController> ui;
    IIAdjustViewControllerDelegate *changeDelegate = nullptr;
    IIEditingViewController *owner = nullptr;
    std::shared_ptr<IHDREngineController> engine;
};

} // namespace tristop
