// SPDX-License-Identifier: GPL-3.0-or-later
#include "IICommon/rounded_box.h"

#include <QAccessible>
#include <QImage>
#include <QVBoxLayout>

#include <gtest/gtest.h>

namespace tristop {

namespace {

QImage drawn(IIRoundedBox &box) {
    return box.grab().toImage().convertToFormat(QImage::Format_RGB32);
}

} // namespace

TEST(RoundedBoxGeometry, OutlineIsWholeAndTitleLiesAtItsTop) {
    const RoundedBoxGeometry box{QRectF(0, 0, 200, 100), 2};
    EXPECT_EQ(box.outlineRect(), QRectF(1, 1, 198, 98));
    EXPECT_EQ((RoundedBoxGeometry{QRectF(0, 0, 200, 100), 3}.outlineRect()), QRectF(1, 1, 198, 98));
    EXPECT_EQ(box.outline().boundingRect(), QRectF(1, 1, 198, 98));
    EXPECT_FALSE(box.outline().contains(QPointF(2, 2)));
    EXPECT_TRUE(box.outline().contains(QPointF(5, 2)));

    EXPECT_EQ(box.titleRect(QSizeF(60, 14)), QRectF(6, 4, 60 + 4 + 10, 14));
    EXPECT_EQ(box.titleRect(QSizeF(300, 14)), QRectF(6, 4, 200 - 12 + 10, 14));
}

TEST(RoundedBoxGeometry, TabEndsPastTheTitleOrSpansTheBox) {
    RoundedBoxGeometry box{QRectF(0, 0, 200, 100), 2};
    const QRectF outline = box.outlineRect();
    const QRectF title(6, 4, 74, 14);
    // Left 1, right 1 + 2 x 5 + 74; as far below the title as the title is below the top: 18 + 3.
    const QPainterPath tab = box.titlePathWithinRect(outline, 4, title);
    EXPECT_EQ(tab.boundingRect(), QRectF(QPointF(1, 1), QPointF(85, 21)));
    EXPECT_FALSE(tab.contains(QPointF(84.5, 20.5))) << "rounded";
    EXPECT_TRUE(tab.contains(QPointF(84.5, 1.5)));
    EXPECT_FALSE(tab.contains(QPointF(1.5, 1.5))) << "rounded";

    const QRectF wide(QPointF(1, 1), QPointF(199, 21));
    box.drawsFullTitleBar = true;
    const QPainterPath full = box.titlePathWithinRect(outline, 4, title);
    EXPECT_EQ(full.boundingRect(), wide);
    EXPECT_FALSE(full.contains(QPointF(198.5, 1.5))) << "rounded";
    EXPECT_TRUE(full.contains(QPointF(198.5, 20.5)));
    box.drawsFullTitleBar = false;
    box.drawsTitle = false;
    EXPECT_EQ(box.titlePathWithinRect(outline, 4, title).boundingRect(), wide);
    box.drawsTitle = true;
    EXPECT_EQ(box.titlePathWithinRect(outline, 4, QRectF(6, 4, 178, 14)).boundingRect().width(), 10 + 178);
    EXPECT_EQ(box.titlePathWithinRect(outline, 4, QRectF(6, 4, 178.5, 14)).boundingRect(), wide);
}

TEST(RoundedBox, DrawsTabBorderAndBackground) {
    IIRoundedBox box;
    box.resize(200, 100);
    box.setTitle("Title");
    box.setTitleColor(Qt::red);
    QImage image = drawn(box);
    const int tabBottom = static_cast<int>(box.titlePathRect().bottom());
    EXPECT_EQ(image.pixel(4, tabBottom - 2), qRgb(128, 128, 128)) << "the tab";
    EXPECT_EQ(image.pixel(100, 99), qRgb(128, 128, 128)) << "the border";
    EXPECT_NEAR(qRed(image.pixel(190, 3)), 235, 2) << "the gradient begins at the top";
    EXPECT_NEAR(qRed(image.pixel(100, 96)), 210, 2);

    box.setSelected(true);
    box.setDrawsGradientBackground(false);
    box.setBackgroundColor(Qt::blue);
    image = drawn(box);
    const QRgb highlight = box.palette().color(QPalette::Highlight).rgb();
    EXPECT_EQ(image.pixel(4, tabBottom - 2), highlight);
    EXPECT_EQ(image.pixel(100, 99), highlight);
    EXPECT_EQ(image.pixel(100, 50), qRgb(0, 0, 255));

    box.setBorderWidth(0);
    image = drawn(box);
    EXPECT_EQ(image.pixel(100, 99), qRgb(0, 0, 255)) << "no border";
    EXPECT_EQ(image.pixel(2, static_cast<int>(box.titlePathRect().bottom()) - 2), highlight) << "still a tab";
}

TEST(RoundedBox, KeepsItsContentsBelowTheTab) {
    IIRoundedBox box;
    box.setTitle("Merge");
    box.resize(200, 100);
    auto *inside = new QWidget;
    (new QVBoxLayout(&box))->addWidget(inside);
    box.grab();
    EXPECT_GT(inside->geometry().top(), box.titlePathRect().bottom());
    EXPECT_EQ(QAccessible::queryAccessibleInterface(&box)->role(), QAccessible::Grouping);
    EXPECT_EQ(QAccessible::queryAccessibleInterface(&box)->text(QAccessible::Name), "Merge");
}

} // namespace tristop
