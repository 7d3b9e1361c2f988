// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QFutureWatcher>
#include <QImage>
#include <QTimer>
#include <QTransform>
#include <QWidget>

#include "ui/picture_levels.h"

namespace tristop {

/// Draws the document's picture, enlarged by `zoom` and turned by `angle`.
///
/// Its frame, picture size times zoom, is kept in numbers and may be far larger than any window: the widget
/// itself is only the part of the frame inside the parent, and only that part is painted. At zoom 1 a pixel
/// of the picture is one logical pixel of the screen. Large pictures get reduced copies in the background,
/// and the picture before stays on screen until they are there.
class IIImageView : public QWidget {
    Q_OBJECT

public:
    explicit IIImageView(QWidget *parent = nullptr);

    const QImage &image() const { return picture; }
    void setImage(const QImage &image, int rotationAngle);

    /// The picture's size as it appears: width and height exchanged when turned by 90 or 270 degrees.
    QSizeF originalSize() const;
    double zoom() const { return zoomFactor; }
    /// From 0.01 to 100; other values are ignored.
    void setZoom(double zoom);
    /// Degrees against the clock.
    int angle() const { return rotation; }
    void setAngle(int angle);
    /// Whether the picture is known to cover the whole view.
    bool isOpaque() const { return testAttribute(Qt::WA_OpaquePaintEvent); }
    void setOpaque(bool opaque) { setAttribute(Qt::WA_OpaquePaintEvent, opaque); }

    /// The document in the parent's coordinates, whether visible or not.
    const QRectF &frame() const { return documentFrame; }
    void setFrameOrigin(const QPointF &origin);
    /// The frame takes the picture's size times zoom. Does nothing without a picture.
    void updateSize();

    /// From the picture as it is stored (enlarged by zoom) to the frame, in coordinates of the frame.
    QTransform transformWithRotationInDegrees(int degrees) const;

    /// The window is being resized: the picture is drawn fast until nothing has changed for 150 ms.
    void liveResize();
    /// Whether the picture is drawn at full quality: not being resized, and with its reduced copies at hand.
    bool isSettled() const;

    /// A thin line around the visible part, for the keyboard's focus.
    void setFocusRing(bool shown);

signals:
    /// From updateSize(): the parent should place the frame again.
    void frameSizeChanged();

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    void reduceInBackground();
    void keepReductions();
    QPointF paintedOrigin() const;
    void placeVisiblePart();
    void drawPicture(QPainter &painter, const QRectF &exposed) const;

    QImage picture;
    PictureLevels levels;
    QFutureWatcher<PictureLevels> reduction;
    bool levelsPending = false;
    int rotation = 0;
    double zoomFactor = 1;
    QRectF documentFrame;
    QTimer resizeTimer;
    bool focusRing = false;
};

} // namespace tristop
