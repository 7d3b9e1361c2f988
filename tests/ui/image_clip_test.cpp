// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/image_clip.h"

#include <QMouseEvent>
#include <QNativeGestureEvent>
#include <QPointingDevice>
#include <QSignalSpy>
#include <QTest>
#include <QThreadPool>
#include <QWheelEvent>

#include <gtest/gtest.h>

#include "ui/common_define.h"

namespace tristop {

namespace {

/// A picture whose pixels tell where they are: red is the column, green the row.
QImage chart(int width, int height) {
    QImage image(width, height, QImage::Format_RGB32);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x)
            image.setPixel(x, y, qRgb(x, y, 0));
    }
    return image;
}

struct Delegate : IIImageClipDelegate {
    void imageClipDoubleClick(IIImageClip *) override { ++doubleClicks; }
    void imageClipMagnify(IIImageClip *, double value) override { magnifications.push_back(value); }
    void imageClipScrollWheel(IIImageClip *, double delta) override { scrolls.push_back(delta); }

    int doubleClicks = 0;
    std::vector<double> magnifications;
    std::vector<double> scrolls;
};

class ImageClip : public testing::Test {
protected:
    ImageClip() {
        clip.resize(100, 80);
        clip.setDocument(view);
        clip.setClipDelegate(&delegate);
    }

    void show(const QImage &image) {
        view->setImage(image, 0);
        ASSERT_TRUE(settle());
    }

    bool settle() {
        return QTest::qWaitFor([this] { return view->isSettled(); });
    }

    QImage drawn() { return clip.grab().toImage().convertToFormat(QImage::Format_RGB32); }

    void drag(QPoint from, QPoint to) {
        // The document lies under the pointer and lets its clip have the events.
        QWidget *target = clip.childAt(from) ? clip.childAt(from) : &clip;
        QTest::mousePress(target, Qt::LeftButton, {}, target->mapFrom(&clip, from));
        QTest::mouseMove(target, target->mapFrom(&clip, to));
        QTest::mouseRelease(target, Qt::LeftButton, {}, target->mapFrom(&clip, to));
    }

    void turnWheel(int units) {
        QWheelEvent event(QPointF(50, 40), clip.mapToGlobal(QPointF(50, 40)), QPoint(), QPoint(0, units),
                          Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
        QCoreApplication::sendEvent(&clip, &event);
    }

    IIImageClip clip;
    IIImageView *view = new IIImageView;
    Delegate delegate;
};

} // namespace

TEST(ClipGeometry, PansInThousandthsUpToTheEdges) {
    ClipGeometry geometry;
    const QSizeF document(2000, 1000);
    EXPECT_EQ(geometry.documentOrigin(document, QSizeF(300, 301)), QPointF(-850, -349.5));
    geometry.moveCenter(geometry.center(), QPointF(100, -50), document);
    EXPECT_EQ(geometry.center(), QPointF(550, 450));
    EXPECT_EQ(geometry.normalizedCenter(document), QPointF(1100, 450));
    EXPECT_EQ(geometry.normalizedCenter(document * 2), QPointF(2200, 900)) << "the same part when enlarged";
    geometry.moveCenter(QPointF(500, 500), QPointF(-1e4, 1e4), document);
    EXPECT_EQ(geometry.center(), QPointF(0, 1000));
    EXPECT_EQ(geometry.documentOrigin(document, QSizeF(300, 301)), QPointF(150, -849.5))
        << "edge in the middle";
    geometry.moveCenter(QPointF(0, 0), QPointF(1, 1), QSizeF(0, 0));
    EXPECT_EQ(geometry.center(), QPointF(0, 1000)) << "no document";
}

TEST(ScrollPause, LetsThroughOneScrollIn300Milliseconds) {
    using std::chrono::milliseconds;
    const ScrollPause::Clock::time_point start{};
    ScrollPause pause;
    EXPECT_TRUE(pause.passes(start));
    EXPECT_FALSE(pause.passes(start + milliseconds(100)));
    EXPECT_FALSE(pause.passes(start + milliseconds(300)));
    EXPECT_TRUE(pause.passes(start + milliseconds(301))) << "counted from the last one that passed";
    EXPECT_FALSE(pause.passes(start + milliseconds(500)));
}

TEST(PictureLevels, AverageFourPixelsEach) {
    QImage image(3, 2, QImage::Format_RGB32);
    const QRgb pixels[] = {qRgb(0, 10, 255), qRgb(1, 20, 255), qRgb(7, 8, 9),
                           qRgb(0, 30, 255), qRgb(1, 40, 254), qRgb(9, 8, 7)};
    for (int i = 0; i < 6; ++i)
        image.setPixel(i % 3, i / 3, pixels[i]);
    const PictureLevels levels = PictureLevels::reduced(image);
    ASSERT_EQ(levels.level(1).size(), QSize(2, 1));
    EXPECT_EQ(levels.level(1).pixel(0, 0), qRgb(1, 25, 255)) << "halves round up";
    EXPECT_EQ(levels.level(1).pixel(1, 0), qRgb(8, 8, 8)) << "the odd column counts twice";
    EXPECT_EQ(levels.count(), PictureLevels::kCount);
    EXPECT_EQ(PictureLevels::reduced(image.convertToFormat(QImage::Format_RGB888)).level(0).format(),
              QImage::Format_RGB32);

    EXPECT_EQ(levels.levelFor(3), 0U);
    EXPECT_EQ(levels.levelFor(0.51), 0U);
    EXPECT_EQ(levels.levelFor(0.5), 1U);
    EXPECT_EQ(levels.levelFor(0.2), 2U);
    EXPECT_EQ(levels.levelFor(0.001), PictureLevels::kCount - 1);
}

TEST_F(ImageClip, DrawsThePictureInItsMiddleOnTheBackground) {
    show(chart(60, 40));
    EXPECT_EQ(view->frame(), QRectF(20, 20, 60, 40));
    const QImage image = drawn();
    const QRgb background = CommonDefine::backgroundColor().rgb();
    EXPECT_EQ(image.pixel(20, 20), qRgb(0, 0, 0));
    EXPECT_EQ(image.pixel(79, 59), qRgb(59, 39, 0));
    EXPECT_EQ(image.pixel(50, 30), qRgb(30, 10, 0));
    EXPECT_EQ(image.pixel(19, 40), background);
    EXPECT_EQ(image.pixel(80, 40), background);
    EXPECT_EQ(image.pixel(50, 60), background);
}

TEST_F(ImageClip, KeepsPixelsSharpWhenTheMiddleFallsBetweenThem) {
    clip.resize(101, 81);
    show(chart(60, 40));
    EXPECT_EQ(view->frame().topLeft(), QPointF(20.5, 20.5));
    const QImage image = drawn();
    EXPECT_EQ(image.pixel(40, 40), qRgb(40 - 21, 40 - 21, 0));
    EXPECT_EQ(image.pixel(80, 60), qRgb(59, 39, 0));
}

TEST_F(ImageClip, IsAsLargeAsTheVisiblePartHoweverLargeTheDocument) {
    show(chart(200, 100));
    view->setZoom(50);
    EXPECT_EQ(view->frame(), QRectF(50 - 5000, 40 - 2500, 10000, 5000));
    EXPECT_EQ(view->geometry(), clip.rect());
    // Pixels (99, 49) and (100, 50) meet in the middle; at their own middles colours are pure.
    const QImage image = drawn();
    EXPECT_NEAR(qRed(image.pixel(25, 15)), 99, 1);
    EXPECT_NEAR(qGreen(image.pixel(25, 15)), 49, 1);
    EXPECT_NEAR(qRed(image.pixel(75, 65)), 100, 1);
    EXPECT_NEAR(qGreen(image.pixel(75, 65)), 50, 1);

    clip.panX(-100000, -100000);
    EXPECT_EQ(view->frame().topLeft(), QPointF(50, 40));
    EXPECT_EQ(view->geometry(), QRect(50, 40, 50, 40));
    EXPECT_EQ(drawn().pixel(75, 65), qRgb(0, 0, 0));
    EXPECT_EQ(drawn().pixel(49, 60), CommonDefine::backgroundColor().rgb());

    view->setZoom(100.01);
    view->setZoom(0.0099);
    view->setZoom(std::nan(""));
    EXPECT_EQ(view->zoom(), 50);
    view->setZoom(100);
    EXPECT_EQ(view->frame().size(), QSizeF(20000, 10000));
    view->setZoom(0.01);
    EXPECT_EQ(view->frame(), QRectF(50, 40, 2, 1)) << "the corner stays in the middle";
}

TEST_F(ImageClip, ReducesByAveraging) {
    // Columns of black and white: any sampling without averaging would show one of them.
    QImage stripes(800, 640, QImage::Format_RGB32);
    for (int y = 0; y < stripes.height(); ++y) {
        for (int x = 0; x < stripes.width(); ++x)
            stripes.setPixel(x, y, x % 2 == 0 ? qRgb(0, 0, 0) : qRgb(255, 255, 255));
    }
    show(stripes);
    view->setZoom(0.125);
    ASSERT_TRUE(settle());
    EXPECT_EQ(view->frame(), QRectF(0, 0, 100, 80));
    const QImage image = drawn();
    for (int x = 0; x < 100; ++x)
        EXPECT_EQ(image.pixel(x, 40), qRgb(128, 128, 128)) << x;
}

TEST_F(ImageClip, TurnsThePictureAgainstTheClock) {
    view->setImage(chart(60, 40), 90);
    ASSERT_TRUE(settle());
    EXPECT_EQ(view->originalSize(), QSizeF(40, 60));
    EXPECT_EQ(view->frame(), QRectF(30, 10, 40, 60));
    // The picture's right edge is on top, its top edge at the left.
    EXPECT_EQ(drawn().pixel(30, 10), qRgb(59, 0, 0));
    EXPECT_EQ(drawn().pixel(69, 69), qRgb(0, 39, 0));
    view->setAngle(270);
    EXPECT_EQ(drawn().pixel(30, 10), qRgb(0, 39, 0));
    view->setAngle(180);
    EXPECT_EQ(view->originalSize(), QSizeF(60, 40));
    EXPECT_EQ(drawn().pixel(20, 20), qRgb(59, 39, 0));

    view->setZoom(2);
    EXPECT_EQ(view->transformWithRotationInDegrees(180).map(QPointF(0, 0)), QPointF(120, 80));
    view->setAngle(90);
    EXPECT_EQ(view->transformWithRotationInDegrees(90).map(QPointF(120, 80)), QPointF(80, 0));
}

TEST_F(ImageClip, KeepsTheOldPictureUntilTheNewOnesReductionsAreThere) {
    QImage first(800, 640, QImage::Format_RGB32);
    first.fill(Qt::red);
    QImage second(800, 640, QImage::Format_RGB888);
    second.fill(Qt::blue);
    show(first);
    view->setZoom(0.125);
    view->setImage(second, 0);
    EXPECT_EQ(view->image().cacheKey(), second.cacheKey());
    EXPECT_EQ(drawn().pixel(50, 40), qRgb(255, 0, 0));
    ASSERT_TRUE(settle());
    EXPECT_EQ(drawn().pixel(50, 40), qRgb(0, 0, 255));
    // The last of several pictures wins; none leaves nothing.
    view->setImage(first, 0);
    view->setImage(second, 0);
    view->setImage(QImage(), 0);
    EXPECT_TRUE(settle());
    QThreadPool::globalInstance()->waitForDone();
    QCoreApplication::processEvents();
    EXPECT_EQ(view->originalSize(), QSizeF(0, 0));
    EXPECT_EQ(drawn().pixel(50, 40), CommonDefine::backgroundColor().rgb());
}

TEST(ImageView, MayGoBeforeItsReductionsAreThere) {
    auto *view = new IIImageView;
    view->setImage(QImage(2000, 1000, QImage::Format_RGB888), 0);
    delete view;
    QThreadPool::globalInstance()->waitForDone();
    QCoreApplication::processEvents();
}

TEST_F(ImageClip, DragsThePicture) {
    drag({50, 40}, {60, 40});
    EXPECT_EQ(clip.center(), QPointF(500, 500)) << "nothing to drag";
    show(chart(200, 100));
    view->setZoom(2);
    drag({50, 40}, {30, 50});
    EXPECT_EQ(clip.center(), QPointF(500 + 20.0 / 400 * 1000, 500 - 10.0 / 200 * 1000));
    EXPECT_EQ(clip.normalizedCenter(), QPointF(220, 90));
    EXPECT_EQ(view->frame().topLeft(), QPointF(50 - 220, 40 - 90));
    drag({0, 0}, {-1000, 1000});
    EXPECT_EQ(clip.center(), QPointF(1000, 0));
    QTest::mouseMove(&clip, {5, 5});
    EXPECT_EQ(clip.center(), QPointF(1000, 0)) << "without a button";
    clip.centerImage();
    EXPECT_EQ(view->frame().topLeft(), QPointF(50 - 200, 40 - 100));
    QTest::mousePress(&clip, Qt::LeftButton, {}, {50, 40});
    QMouseEvent hover(QEvent::MouseMove, QPointF(30, 40), QPointF(30, 40), Qt::NoButton, Qt::NoButton, {});
    QCoreApplication::sendEvent(&clip, &hover);
    EXPECT_EQ(clip.center(), QPointF(500, 500)) << "the release was lost to another window";
}

TEST_F(ImageClip, PansByKeyboard) {
    show(chart(200, 100));
    view->setZoom(2);
    QTest::keyClick(&clip, Qt::Key_Right);
    QTest::keyClick(&clip, Qt::Key_Up);
    EXPECT_EQ(clip.normalizedCenter(), QPointF(240, 60));
    EXPECT_EQ(drawn().pixel(0, 0), qRgb(95, 10, 0)) << "no mark without the keyboard's focus";
    QFocusEvent focus(QEvent::FocusIn, Qt::TabFocusReason);
    QCoreApplication::sendEvent(&clip, &focus);
    EXPECT_EQ(drawn().pixel(0, 0), view->palette().color(QPalette::Highlight).rgb());
    QTest::keyClick(&clip, Qt::Key_Left, Qt::ShiftModifier);
    QTest::keyClick(&clip, Qt::Key_Down, Qt::ShiftModifier);
    EXPECT_EQ(clip.normalizedCenter(), QPointF(150, 132));
}

TEST_F(ImageClip, OffersGesturesToItsDelegate) {
    QTest::mouseDClick(&clip, Qt::LeftButton);
    EXPECT_EQ(delegate.doubleClicks, 1);

    turnWheel(-120);
    turnWheel(240);
    EXPECT_EQ(delegate.scrolls, std::vector<double>{-1}) << "the second came too soon";

    QNativeGestureEvent pinch(Qt::ZoomNativeGesture, QPointingDevice::primaryPointingDevice(), 2,
                              QPointF(5, 5), QPointF(5, 5), QPointF(5, 5), -0.5, QPointF());
    QCoreApplication::sendEvent(&clip, &pinch);
    EXPECT_EQ(delegate.magnifications, std::vector<double>{-0.5});

    clip.setClipDelegate(nullptr);
    QTest::mouseDClick(&clip, Qt::LeftButton);
    QCoreApplication::sendEvent(&clip, &pinch);
    EXPECT_EQ(delegate.doubleClicks, 1);
}

TEST_F(ImageClip, TellsOfItsFrameAndKeepsTheCentre) {
    show(chart(200, 100));
    clip.panX(50, 0);
    clip.show();
    QSignalSpy frames(&clip, &IIImageClip::frameChanged);
    clip.resize(300, 200);
    EXPECT_GE(frames.count(), 1);
    EXPECT_EQ(view->frame().topLeft(), QPointF(150 - 150, 100 - 50));
    EXPECT_FALSE(view->isSettled()) << "drawn fast for a while";
    EXPECT_TRUE(settle());
    delete view;
    clip.resize(100, 100);
    EXPECT_EQ(clip.document(), nullptr);
}

} // namespace tristop
