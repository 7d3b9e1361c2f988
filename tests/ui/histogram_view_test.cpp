// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/histogram_view.h"

#include <QImage>

#include <gtest/gtest.h>

#include "ui/histogram_lines.h"

namespace tristop {

namespace {

QImage drawn(IIHistogramView &view) {
    QImage image(view.size(), QImage::Format_RGB32);
    image.fill(Qt::black);
    view.render(&image, QPoint(), QRegion(), QWidget::RenderFlags());
    return image;
}

IIHistogramData oneValue(size_t value, int64_t r, int64_t g, int64_t b, int64_t max) {
    IIHistogramData histogram;
    histogram.rData[value] = r;
    histogram.gData[value] = g;
    histogram.bData[value] = b;
    histogram.max = max;
    return histogram;
}

} // namespace

TEST(HistogramLines, StackWhiteOnMixedOnSingleColours) {
    // A scale of 100 / 800 x 16 = 2.
    const auto lines = histogramLines(oneValue(30, 10, 5, 0, 800), 512, 100);
    ASSERT_EQ(lines.size(), 768U);
    EXPECT_EQ(lines[90], (HistogramLine{60.5, 20, true, false, false}));
    EXPECT_EQ(lines[91], (HistogramLine{60, 10, true, true, false}));
    EXPECT_EQ(lines[92], (HistogramLine{60, 0, true, true, true}));
    EXPECT_EQ(histogramLines(oneValue(30, 0, 7, 7, 800), 512, 101)[90],
              (HistogramLine{60.5, 14, false, true, true}))
        << "heights are cut to whole numbers";
    EXPECT_TRUE(histogramLines(oneValue(30, 10, 5, 0, 0), 512, 100).empty());
}

TEST(HistogramView, DrawsLinesFromTheBottomAndOnlyTheTallestIsOffset) {
    IIHistogramView view;
    view.resize(256, 64);
    EXPECT_EQ(drawn(view).pixel(100, 63), qRgb(0, 0, 0));
    // A scale of 64 / 1024 x 16 = 1: red 40 high, red and green 20, white 10.
    view.setHistogramData(oneValue(100, 40, 20, 10, 1024));
    const QImage image = drawn(view);
    EXPECT_EQ(image.pixel(100, 63 - 39), qRgb(255, 0, 0));
    EXPECT_EQ(image.pixel(100, 63 - 40), qRgb(0, 0, 0));
    EXPECT_EQ(image.pixel(99, 63 - 39), qRgb(0, 0, 0));
    EXPECT_EQ(image.pixel(101, 63 - 39), qRgb(0, 0, 0));
    // The others lie astride the pixels 99 and 100, and stay whole.
    EXPECT_EQ(image.pixel(100, 63 - 20), qRgb(255, 0, 0));
    EXPECT_EQ(image.pixel(100, 63 - 19), qRgb(255, 255, 0));
    EXPECT_EQ(image.pixel(100, 63 - 10), qRgb(255, 255, 0));
    EXPECT_EQ(image.pixel(100, 63 - 9), qRgb(255, 255, 255));
    EXPECT_EQ(image.pixel(100, 63), qRgb(255, 255, 255));
    EXPECT_EQ(image.pixel(99, 63), qRgb(0, 0, 0));

    view.setHistogramData(oneValue(100, 7, 7, 7, 1));
    EXPECT_EQ(drawn(view).pixel(100, 0), qRgb(255, 255, 255)) << "cut off at the top";
    view.setHistogramData(std::nullopt);
    EXPECT_EQ(drawn(view).pixel(100, 63), qRgb(0, 0, 0));
}

} // namespace tristop
