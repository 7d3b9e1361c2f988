// SPDX-License-Identifier: GPL-3.0-or-later
#include "IICommon/gradient.h"

#include <cmath>

#include <QImage>
#include <QPainter>

#include <gtest/gtest.h>

namespace tristop {

namespace {

const QColor kRed(255, 0, 0);
const QColor kBlue(0, 0, 255);

CTGradient withStopsAt(std::initializer_list<float> positions) {
    CTGradient gradient;
    double red = 0;
    for (const float position : positions)
        gradient.addElement({red += 0.125, 0, 0, 1, position});
    return gradient;
}

} // namespace

TEST(Gradient, KeepsStopsInOrderAndLaterOnesBehindEqualOnes) {
    const CTGradient gradient = withStopsAt({0.5F, 0.25F, 0.5F, 0.75F, 0.25F});
    std::vector<double> reds;
    for (const CTGradientElement &stop : gradient.elementList())
        reds.push_back(stop.red);
    EXPECT_EQ(reds, (std::vector<double>{0.25, 0.625, 0.125, 0.375, 0.5}));
}

TEST(Gradient, BlendsBetweenStopsAndHoldsTheEndColours) {
    EXPECT_EQ(CTGradient().colorAtPosition(0.3F), QColor(Qt::white));

    CTGradient gradient;
    gradient.addElement({0.2, 0.4, 0.6, 1, 0.25F});
    EXPECT_EQ(gradient.colorAtPosition(0.9F).rgba(), qRgba(51, 102, 153, 255));
    gradient.addElement({0.6, 0.4, 0.2, 0, 0.75F});
    EXPECT_EQ(gradient.colorAtPosition(0).rgba(), qRgba(51, 102, 153, 255));
    EXPECT_EQ(gradient.colorAtPosition(1).rgba(), qRgba(153, 102, 51, 0));
    EXPECT_EQ(gradient.colorAtPosition(std::nanf("")).rgba(), qRgba(51, 102, 153, 255));
    EXPECT_NEAR(gradient.colorAtPosition(0.375F).redF(), 0.3, 1e-4);
    EXPECT_NEAR(gradient.colorAtPosition(0.375F).alphaF(), 0.75, 1e-4);
}

TEST(Gradient, ChromaticModesGoRoundTheHueCircleInOppositeDirections) {
    CTGradient gradient = CTGradient::gradientWithBeginningColor(kRed, kBlue);
    gradient.setGradientBlendingMode(CTGradientBlendingMode::Chromatic);
    EXPECT_EQ(gradient.colorAtPosition(0.5F).rgb(), qRgb(0, 255, 0));
    gradient.setGradientBlendingMode(CTGradientBlendingMode::InverseChromatic);
    EXPECT_EQ(gradient.colorAtPosition(0.5F).rgb(), qRgb(255, 0, 255));

    // A grey has no hue and takes the other one's.
    const CTGradient fromGrey = CTGradient::gradientWithBeginningColor(QColor(255, 255, 255), kBlue)
                                    .gradientWithBlendingMode(CTGradientBlendingMode::Chromatic);
    const QColor halfway = fromGrey.colorAtPosition(0.5F);
    EXPECT_NEAR(halfway.redF(), 0.5, 1e-4);
    EXPECT_NEAR(halfway.greenF(), 0.5, 1e-4);
    EXPECT_NEAR(halfway.blueF(), 1, 1e-4);
    const CTGradient greys = CTGradient::gradientWithBeginningColor(Qt::black, Qt::white)
                                 .gradientWithBlendingMode(CTGradientBlendingMode::InverseChromatic);
    EXPECT_NEAR(greys.colorAtPosition(0.25F).greenF(), 0.25, 1e-4);
}

TEST(Gradient, AxisTouchesTheCornersAndTurnsAgainstTheClock) {
    const QRectF rectangle(10, 20, 200, 100);
    struct Case {
        float angle;
        QPointF from;
        QPointF to;
    };
    // At 45 degrees the axis is (200 + 100) / sqrt 2 long: 150 across and 150 up.
    for (const Case &wanted :
         {Case{0, {10, 20}, {210, 20}}, Case{90, {10, 120}, {10, 20}}, Case{270, {110, 20}, {110, 120}},
          Case{360, {10, 70}, {210, 70}}, Case{45, {35, 145}, {185, -5}}, Case{180, {210, 70}, {10, 70}}}) {
        const QLineF axis = gradientAxis(rectangle, wanted.angle);
        EXPECT_LT(QLineF(axis.p1(), wanted.from).length(), 1e-6) << wanted.angle;
        EXPECT_LT(QLineF(axis.p2(), wanted.to).length(), 1e-6) << wanted.angle;
    }
    // Perpendiculars at the ends pass through far corners at steep angles too.
    const QLineF steep = gradientAxis(rectangle, 60);
    const QPointF along(std::cos(M_PI / 3), -std::sin(M_PI / 3));
    EXPECT_NEAR(QPointF::dotProduct(rectangle.bottomLeft() - steep.p1(), along), 0, 1e-6);
    EXPECT_NEAR(QPointF::dotProduct(rectangle.topRight() - steep.p2(), along), 0, 1e-6);
}

TEST(Gradient, FillsFromTheTopAt270DegreesAndOnlyTheRectangle) {
    QImage image(40, 100, QImage::Format_RGB32);
    image.fill(Qt::green);
    QPainter painter(&image);
    const CTGradient gradient = CTGradient::gradientWithBeginningColor(Qt::black, Qt::white);
    gradient.fillRect(painter, QRectF(0, 0, 20, 100), 270);
    gradient.radialFillRect(painter, QRectF(20, 0, 20, 20));
    painter.end();
    EXPECT_NEAR(qRed(image.pixel(10, 0)), 1, 2);
    EXPECT_NEAR(qRed(image.pixel(10, 25)), 65, 2);
    EXPECT_NEAR(qRed(image.pixel(10, 99)), 254, 2);
    EXPECT_LT(qRed(image.pixel(30, 10)), 20);
    EXPECT_GT(qRed(image.pixel(20, 0)), 230);
    EXPECT_EQ(image.pixel(30, 50), qRgb(0, 255, 0));
}

TEST(Gradient, EditsCopies) {
    const CTGradient gradient = withStopsAt({0, 0.5F, 1});
    EXPECT_EQ(gradient.addColorStop(kBlue, 0.75F).colorStopAtIndex(2), kBlue);
    EXPECT_EQ(gradient.elementList().size(), 3U);
    EXPECT_EQ(gradient.removeColorStopAtIndex(1).elementList()[1].position, 1);
    EXPECT_EQ(gradient.removeColorStopAtPosition(0).elementList()[0].position, 0.5F);
    EXPECT_EQ(gradient.removeColorStopAtPosition(0.4F).elementList(), gradient.elementList());
    EXPECT_EQ(gradient.removeColorStopAtIndex(3).elementList(), gradient.elementList());
    EXPECT_FALSE(gradient.colorStopAtIndex(3).isValid());
    EXPECT_NEAR(gradient.gradientWithAlphaComponent(0.5).colorAtPosition(0.7F).alphaF(), 0.5, 1e-4);
    EXPECT_EQ(CTGradient::rainbowGradient().colorStopAtIndex(0), kRed);
    EXPECT_EQ(CTGradient::hydrogenSpectrumGradient().colorAtPosition((656.3F - 380) / 300), kRed);
}

TEST(Gradient, SurvivesArchivingAndRefusesForeignCoders) {
    const CTGradient gradient =
        withStopsAt({0, 0.5F, 1}).gradientWithBlendingMode(CTGradientBlendingMode::InverseChromatic);
    QVariant coder = QVariantMap{{"other", 7}};
    ASSERT_TRUE(gradient.encodeWithCoder(coder));
    EXPECT_EQ(coder.toMap().value("other"), 7);
    EXPECT_EQ(coder.toMap().value("CTGradientElementCount"), 3);
    EXPECT_EQ(coder.toMap().value("CTGradientBlendingMode"), 2);

    CTGradient read;
    ASSERT_TRUE(read.initWithCoder(coder));
    EXPECT_EQ(read.elementList(), gradient.elementList());
    EXPECT_EQ(read.blendingMode(), gradient.blendingMode());

    QVariant foreign(QString("text"));
    EXPECT_FALSE(gradient.encodeWithCoder(foreign));
    EXPECT_FALSE(read.initWithCoder(foreign));
    QVariantMap damaged = coder.toMap();
    damaged["CTGradientElementCount"] = 2;
    EXPECT_FALSE(read.initWithCoder(damaged));
    EXPECT_EQ(read.elementList(), gradient.elementList());
}

} // namespace tristop
