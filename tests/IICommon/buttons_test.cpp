// SPDX-License-Identifier: GPL-3.0-or-later
#include "IICommon/button_cell.h"
#include "IICommon/colored_button.h"

#include <QImage>

#include <gtest/gtest.h>

namespace tristop {

namespace {

QImage drawn(QWidget &widget) {
    QImage image(widget.size(), QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::black);
    widget.render(&image, QPoint(), QRegion(), QWidget::DrawChildren);
    return image;
}

/// Bounds of the pixels that `matches` picks.
template <typename Matches>
QRect boundsWhere(const QImage &image, Matches matches) {
    QRect bounds;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (matches(image.pixelColor(x, y)))
                bounds |= QRect(x, y, 1, 1);
        }
    }
    return bounds;
}

} // namespace

TEST(ColoredButton, FillsARoundedRectangle) {
    MLColoredButton button("");
    button.resize(80, 30);
    EXPECT_EQ(drawn(button).pixel(40, 15), qRgb(0, 0, 0)) << "clear at first";
    button.setBackgroundColor(Qt::red);
    QImage image = drawn(button);
    EXPECT_EQ(image.pixel(40, 1), qRgb(255, 0, 0));
    EXPECT_LT(qRed(image.pixel(1, 1)), 5) << "rounded";
    EXPECT_NEAR(qRed(image.pixel(40, 0)), 128, 1) << "inset by half a pixel";

    button.setDown(true);
    image = drawn(button);
    EXPECT_NEAR(qRed(image.pixel(40, 15)), 0.23 * 0.7 * 255, 2) << "the red is gone";
    EXPECT_NEAR(qGreen(image.pixel(40, 15)), 0.6 * 0.7 * 255, 2);
    EXPECT_NEAR(qBlue(image.pixel(40, 15)), 0.99 * 0.7 * 255, 2);
}

TEST(ColoredButton, DrawsTitleAndBorderByState) {
    MLColoredButton button("WWW");
    button.resize(120, 40);
    button.setTextColor(Qt::white);
    const QRect title = boundsWhere(drawn(button), [](const QColor &color) { return color.value() > 200; });
    ASSERT_FALSE(title.isEmpty());
    EXPECT_NEAR(title.center().x(), 60, 2);
    EXPECT_NEAR(title.center().y(), 20, 3);
    button.setAlignment(Qt::AlignLeft);
    EXPECT_LT(boundsWhere(drawn(button), [](const QColor &color) { return color.value() > 200; }).left(), 5);

    button.setEnabled(false);
    const auto brightest = [](const QImage &image) {
        int value = 0;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x)
                value = std::max(value, image.pixelColor(x, y).value());
        }
        return value;
    };
    EXPECT_EQ(brightest(drawn(button)), 85) << "dark grey";
    button.setDisableTextColor(QColor(0, 150, 0));
    EXPECT_EQ(brightest(drawn(button)), 150);

    // A line of 0.3 on the middle of the edge pixel covers 0.3 of it.
    button.setText("");
    button.setIsDrawBorder(true);
    EXPECT_NEAR(qBlue(drawn(button).pixel(60, 0)), 0.3 * 85, 3);
    button.setEnabled(true);
    EXPECT_NEAR(qBlue(drawn(button).pixel(60, 0)), 0.3 * 0.99 * 255, 3);
    EXPECT_NEAR(qRed(drawn(button).pixel(60, 0)), 0.3 * 0.23 * 255, 3);
}

TEST(ButtonCell, KeepsItsSidesFreeAndItsTitleLight) {
    APButtonCell button("WWWW");
    QPalette dark = button.palette();
    dark.setColor(QPalette::Button, QColor(40, 40, 40));
    dark.setColor(QPalette::ButtonText, Qt::red);
    button.setPalette(dark);
    button.resize(120, 30);
    const QImage image = drawn(button);
    const QRect bevel = boundsWhere(image, [](const QColor &color) { return color.value() > 0; });
    EXPECT_GE(bevel.left(), 10);
    EXPECT_LE(bevel.right(), 109);
    EXPECT_FALSE(
        boundsWhere(image, [](const QColor &color) { return color == QColor(230, 230, 230); }).isEmpty());
    button.setEnabled(false);
    const QImage disabled = drawn(button);
    EXPECT_FALSE(boundsWhere(disabled, [](const QColor &color) {
                     return std::abs(color.value() - 128) < 2;
                 }).isEmpty());
    EXPECT_TRUE(
        boundsWhere(disabled, [](const QColor &color) { return color == QColor(230, 230, 230); }).isEmpty());
}

} // namespace tristop
