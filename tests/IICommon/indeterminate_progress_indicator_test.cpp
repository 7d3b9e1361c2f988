// SPDX-License-Identifier: GPL-3.0-or-later
#include "IICommon/indeterminate_progress_indicator.h"

#include <cmath>

#include <QImage>
#include <QPainter>

#include <gtest/gtest.h>

namespace tristop {

TEST(Spinner, RadiiAndWidthFollowTheSize) {
    const SpinnerGeometry small = spinnerGeometry(QRectF(0, 0, 20, 16), 0);
    EXPECT_NEAR(small.lineWidth, 0.08 * 16, 1e-6);
    EXPECT_LT(QLineF(small.spokes[0].line.p1(), QPointF(10, 8 - 0.27 * 16)).length(), 1e-6) << "points up";
    EXPECT_LT(QLineF(small.spokes[0].line.p2(), QPointF(10, 8 - 0.48 * 16)).length(), 1e-6);
    const SpinnerGeometry large = spinnerGeometry(QRectF(0, 0, 32, 32), 0);
    EXPECT_NEAR(16 - large.spokes[0].line.y1(), 0.23 * 32, 1e-6);
    EXPECT_NEAR(16 - large.spokes[0].line.y2(), 0.38 * 32, 1e-6);
}

TEST(Spinner, TurnsClockwiseWithAFadingTail) {
    const QRectF frame(0, 0, 32, 32);
    const SpinnerGeometry rest = spinnerGeometry(frame, 0);
    const SpinnerGeometry quarter = spinnerGeometry(frame, 0.26); // rounds to three steps
    EXPECT_NEAR(quarter.spokes[0].line.x2(), 16 + 0.38 * 32, 1e-6);
    EXPECT_NEAR(quarter.spokes[0].line.y2(), 16, 1e-6);
    EXPECT_LT(QLineF(quarter.spokes[3].line.p2(), rest.spokes[0].line.p2()).length(), 1e-6);
    EXPECT_EQ(rest.spokes[0].alpha, 1);
    EXPECT_NEAR(rest.spokes[4].alpha, 0.5, 1e-9);
    EXPECT_NEAR(rest.spokes[11].alpha, 1 - 0.25 * std::sqrt(11), 1e-9);
}

TEST(Spinner, CellClampsItsValueAndDrawsByState) {
    AMIndeterminateProgressIndicatorCell cell;
    cell.setDoubleValue(1.5);
    EXPECT_EQ(cell.doubleValue(), 1);
    cell.setDoubleValue(-0.2);
    EXPECT_EQ(cell.doubleValue(), 0);
    cell.setColor(QColor(255, 0, 128));
    EXPECT_NEAR(cell.blueComponent(), 128.0 / 255, 1e-4);

    const auto drawn = [&] {
        QImage image(32, 32, QImage::Format_RGB32);
        image.fill(Qt::black);
        QPainter painter(&image);
        cell.drawInteriorWithFrame(painter, QRectF(0, 0, 32, 32));
        return image;
    };
    cell.setDoubleValue(0.5);
    EXPECT_EQ(qRed(drawn().pixel(16, 6)), 255) << "while stopped the first spoke stays on top";
    cell.setSpinning(true);
    EXPECT_EQ(qRed(drawn().pixel(16, 25)), 255) << "half a turn";
    EXPECT_LT(qRed(drawn().pixel(16, 6)), 120);
    EXPECT_EQ(drawn().pixel(16, 16), qRgb(0, 0, 0));
    cell.setSpinning(false);
    cell.setDisplayedWhenStopped(false);
    EXPECT_EQ(drawn().pixel(16, 6), qRgb(0, 0, 0));
}

} // namespace tristop
