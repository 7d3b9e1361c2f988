// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/adjust_view_controller.h"

#include <vector>

#include <QApplication>
#include <QComboBox>
#include <QLabel>
#include <QTest>

#include <gtest/gtest.h>

#include "ui/adjust_slider.h"
#include "ui/localized_text.h"

namespace tristop {
namespace {

struct Changes : IIAdjustViewControllerDelegate {
    void engineSettingsChanged(int64_t toneLength, int64_t toneSaturation, int64_t brightenss,
                               int32_t ghost) override {
        engine.push_back({toneLength, toneSaturation, brightenss, ghost});
    }
    void effectSettingsChanged(int64_t contrast, int64_t saturation, int64_t style) override {
        effect.push_back({contrast, saturation, style});
    }
    std::vector<std::vector<int64_t>> engine, effect;
};

/// Drags a slider to a value.
void drag(AdjustSlider *slider, int value) {
    const auto place = [slider](int of) {
        const double share = double(of - slider->minimum()) / (slider->maximum() - slider->minimum());
        return QPoint(static_cast<int>(9 + share * (slider->width() - 18) + 0.5), slider->height() / 2);
    };
    QTest::mousePress(slider, Qt::LeftButton, {}, place(slider->value()));
    QTest::mouseMove(slider, place(value));
    QTest::mouseRelease(slider, Qt::LeftButton, {}, place(value));
}

class AdjustPanelTest : public testing::Test {
protected:
    static void SetUpTestSuite() { loadTranslations(*qApp, QLocale(QLocale::English)); }
    AdjustPanelTest() {
        panel.resize(500, 668); // wide, so that every value has a pixel of its own
        panel.show();
        panel.enableControl(true);
        panel.setDelegate(&changes);
    }
    std::shared_ptr<IHDREngineController> engine = std::make_shared<IHDREngineController>();
    IIAdjustViewController panel{engine};
    Changes changes;
};

TEST_F(AdjustPanelTest, ShowsTheSettingsOfTheEngine) {
    EXPECT_EQ(panel.toneLengthValueField()->text(), "45");
    EXPECT_EQ(panel.toneSaturationValueField()->text(), "40");
    EXPECT_EQ(panel.brightnessValueField()->text(), "10");
    // Slider and engine agree on the level, the number counts from none.
    EXPECT_EQ(panel.ghostSlider()->value(), 6);
    EXPECT_EQ(panel.ghostValueField()->text(), "0");

    auto other = std::make_shared<IHDREngineController>();
    other->setToneLength(300);
    other->setBrightness(-30);
    panel.updateEngine(other);
    EXPECT_EQ(panel.toneLengthSlider()->value(), 100);
    EXPECT_EQ(panel.toneLengthValueField()->text(), "100");
    EXPECT_EQ(panel.brightnessValueField()->text(), "-30");
    EXPECT_TRUE(changes.engine.empty() && changes.effect.empty());
}

TEST_F(AdjustPanelTest, SendsMergeSettings) {
    drag(panel.toneLengthSlider(), 70);
    drag(panel.toneSaturationSlider(), 20);
    drag(panel.brightnessSlider(), -50);
    drag(panel.ghostSlider(), 9);
    EXPECT_EQ(panel.toneLengthValueField()->text(), "70");
    EXPECT_EQ(panel.ghostValueField()->text(), "3");
    EXPECT_TRUE(panel.ghostSlider()->toolTip().startsWith("Value in use: 9"));
    const std::vector<std::vector<int64_t>> expected = {
        {70, 40, 10, 6}, {70, 20, 10, 6}, {70, 20, -50, 6}, {70, 20, -50, 9}};
    EXPECT_EQ(changes.engine, expected);
    EXPECT_TRUE(changes.effect.empty());
}

TEST_F(AdjustPanelTest, SendsEffectSettings) {
    drag(panel.contrastSlider(), 20);
    EXPECT_EQ(panel.contrastValueField()->text(), "14");
    drag(panel.saturationSlider(), -30);
    EXPECT_EQ(panel.saturationValueField()->text(), "-30");
    panel.effectPopButn()->setFocus();
    QTest::keyClick(panel.effectPopButn(), Qt::Key_End);
    const std::vector<std::vector<int64_t>> expected = {{20, 0, 0}, {20, -30, 0}, {20, -30, 2}};
    EXPECT_EQ(changes.effect, expected);

    panel.updateDefaultEffectsUI();
    EXPECT_EQ(panel.contrastSlider()->value(), 0);
    EXPECT_EQ(panel.contrastValueField()->text(), "0");
    EXPECT_EQ(panel.saturationValueField()->text(), "0");
    EXPECT_EQ(panel.effectPopButn()->currentIndex(), 0);
    EXPECT_EQ(changes.effect, expected);
    EXPECT_TRUE(changes.engine.empty());
}

TEST_F(AdjustPanelTest, WritesTheSizeBetweenItsWords) {
    panel.updateSize(3000, 2000);
    EXPECT_EQ(panel.sizeField()->text(), "Output size: 3000x2000 pixels");
}

TEST_F(AdjustPanelTest, StartsDisabled) {
    const IIAdjustViewController fresh;
    EXPECT_FALSE(fresh.toneLengthSlider()->isEnabled());
    EXPECT_FALSE(fresh.contrastSlider()->isEnabled());
    EXPECT_FALSE(fresh.effectPopButn()->isEnabled());
    EXPECT_EQ(fresh.effectPopButn()->count(), 3);
}

} // namespace
} // namespace tristop
