// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/image_list.h"
#include "ui/image_view_controller.h"
#include "ui/popup_image_view.h"

#include <QAccessible>
#include <QApplication>
#include <QLabel>
#include <QPainter>
#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

#include "ui/common_define.h"

namespace tristop {

namespace {

QImage plain(int width, int height, const QColor &color) {
    QImage image(width, height, QImage::Format_RGB32);
    image.fill(color);
    return image;
}

QImage drawn(QWidget &widget) {
    return widget.grab().toImage().convertToFormat(QImage::Format_RGB32);
}

/// The pop-up on screen, or null.
IIImageViewController *enlargement() {
    QWidget *popup = QApplication::activePopupWidget();
    return popup ? popup->findChild<IIImageViewController *>() : nullptr;
}

} // namespace

TEST(Thumbnail, FitsItsImageIntoItsMiddle) {
    IIPopupImageView view;
    view.resize(100, 60);
    view.setImage(plain(400, 400, Qt::red));
    const QImage image = drawn(view);
    EXPECT_EQ(image.pixel(50, 1), qRgb(255, 0, 0));
    EXPECT_EQ(image.pixel(21, 30), qRgb(255, 0, 0));
    EXPECT_EQ(image.pixel(78, 30), qRgb(255, 0, 0));
    EXPECT_NE(image.pixel(18, 30), qRgb(255, 0, 0));
    EXPECT_NE(image.pixel(81, 30), qRgb(255, 0, 0));
}

TEST(Thumbnail, EnlargesInAPopUpThatClosesElsewhere) {
    QWidget window;
    window.resize(400, 300);
    auto *view = new IIPopupImageView(&window);
    view->setGeometry(10, 10, 80, 60);
    window.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&window));
    QTest::mouseClick(view, Qt::LeftButton);
    EXPECT_EQ(enlargement(), nullptr) << "no image";

    view->setImage(plain(1280, 320, Qt::green));
    QTest::mousePress(view, Qt::LeftButton);
    ASSERT_NE(enlargement(), nullptr);
    EXPECT_EQ(enlargement()->image().size(), QSize(1280, 320));
    EXPECT_EQ(enlargement()->findChild<QLabel *>("imageView")->size(), QSize(640, 160));
    QWidget *popup = QApplication::activePopupWidget();
    EXPECT_GE(popup->geometry().top(), view->mapToGlobal(QPoint(0, 60)).y()) << "below the thumbnail";
    EXPECT_FALSE(view->isDown());
    QTest::mouseClick(popup->windowHandle(), Qt::LeftButton, {}, QPoint(-50, -50));
    EXPECT_EQ(enlargement(), nullptr);

    for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Space}) {
        QTest::keyClick(view, key);
        ASSERT_NE(enlargement(), nullptr);
        QTest::keyClick(QApplication::activePopupWidget(), Qt::Key_Escape);
        EXPECT_EQ(enlargement(), nullptr);
    }
    EXPECT_EQ(QAccessible::queryAccessibleInterface(view)->role(), QAccessible::Button);
}

TEST(ImageList, ItemsDescribeFilesByPath) {
    IIImageItem item;
    EXPECT_FALSE(item.isSelectable());
    item.setImagePath("/photographs/day.1/IMG_0001.JPG");
    EXPECT_EQ(item.imageTitle(), "IMG_0001");
    EXPECT_EQ(item.imageUID(), item.imagePath());
    EXPECT_EQ(item.imageRepresentation(), item.imagePath());
    item.setImagePath("two.dots.jpg");
    EXPECT_EQ(item.imageTitle(), "two.dots");
}

TEST(ImageList, ShowsThumbnailsTitlesAndTheSelection) {
    QTemporaryDir folder;
    const QString path = folder.filePath("first.png");
    ASSERT_TRUE(plain(512, 256, Qt::red).save(path));
    IIImageItem item;
    item.setImagePath(path);
    item.setIsSelectable(true);
    IIImageItem missing;
    missing.setImagePath(folder.filePath("missing.png"));

    ImageListModel model;
    model.setItems({item, missing});
    EXPECT_EQ(model.index(0).data(), "first");
    EXPECT_TRUE(model.flags(model.index(0)) & Qt::ItemIsSelectable);
    EXPECT_FALSE(model.flags(model.index(1)) & Qt::ItemIsSelectable);
    ASSERT_TRUE(
        QTest::qWaitFor([&] { return !model.index(0).data(Qt::DecorationRole).value<QImage>().isNull(); }));
    EXPECT_EQ(model.index(0).data(Qt::DecorationRole).value<QImage>().size(), QSize(128, 64));

    const QRect frame = IIImageListCell::imageFrame(QRect(0, 0, 160, 170), QSize(128, 64));
    EXPECT_EQ(frame.size(), QSize(128, 64));
    EXPECT_EQ(IIImageListCell::selectionFrame(frame), frame.adjusted(-4, -4, 4, 4));

    IIImageListView view;
    view.setModel(&model);
    view.resize(400, 300);
    view.setCurrentIndex(model.index(0));
    const QImage image = drawn(view);
    const QRect shown = IIImageListCell::imageFrame(view.visualRect(model.index(0)), QSize(128, 64));
    EXPECT_EQ(image.pixel(shown.center()), qRgb(255, 0, 0));
    EXPECT_EQ(image.pixel(shown.left() - 4, shown.center().y()), qRgb(0, 148, 230))
        << "the frame's outer edge";
    EXPECT_EQ(image.pixel(shown.left() - 3, shown.center().y()), qRgb(0, 148, 230));
    EXPECT_EQ(image.pixel(shown.left() - 2, shown.center().y()), CommonDefine::backgroundColor().rgb());
    EXPECT_EQ(image.pixel(399, 299), CommonDefine::backgroundColor().rgb());
}

} // namespace tristop
