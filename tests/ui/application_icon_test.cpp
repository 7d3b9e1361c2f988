// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/application_icon.h"

#include <QImage>

#include <gtest/gtest.h>

namespace tristop {
namespace {

TEST(ApplicationIcon, ShowsThreeFramesInEverySize) {
    const QIcon icon = applicationIcon();
    for (int size : {16, 32, 48, 128, 256}) {
        const QImage image = icon.pixmap(size).toImage();
        ASSERT_EQ(image.size(), QSize(size, size));
        // The sky of each frame: dark, middle and bright.
        const auto lightness = [&](double x) {
            return image.pixelColor(int(x * size), size * 5 / 16).lightness();
        };
        EXPECT_LT(lightness(0.1) + 30, lightness(0.65)) << size;
        EXPECT_LT(lightness(0.65) + 30, lightness(0.9)) << size;
    }
}

} // namespace
} // namespace tristop
