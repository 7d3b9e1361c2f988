// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/image_view.h"

#include <chrono>
#include <cmath>

#include <QPaintEvent>
#include <QPainter>
#include <QtConcurrentRun>

#include "IICommon/accessible_role.h"
#include "ui/localized_text.h"

namespace tristop {

namespace {

bool isQuarterTurn(int degrees) {
    return degrees == 90 || degrees == 270;
}

} // namespace

IIImageView::IIImageView(QWidget *parent) : QWidget(parent) {
    setGeometry(0, 0, 0, 0);
    setAccessibleName(localizedText("IDS_PICTURE"));
    setAccessibleRole(this, QAccessible::Graphic);
    resizeTimer.setSingleShot(true);
    resizeTimer.setInterval(std::chrono::milliseconds(150));
    connect(&resizeTimer, &QTimer::timeout, this, qOverload<>(&QWidget::update));
    connect(&reduction, &QFutureWatcherBase::finished, this, &IIImageView::keepReductions);
}

void IIImageView::setImage(const QImage &image, int rotationAngle) {
    picture = image;
    rotation = rotationAngle;
    // A picture of another size cannot stand in for the new one.
    if (levels.size() != picture.size())
        levels = PictureLevels(picture);
    reduceInBackground();
    updateSize();
    update();
}

// The watcher forgets the reductions of the picture before, also those that are ready but not yet told of.
void IIImageView::reduceInBackground() {
    levelsPending = !picture.isNull();
    reduction.setFuture(levelsPending ? QtConcurrent::run(&PictureLevels::reduced, picture)
                                      : QFuture<PictureLevels>());
}

void IIImageView::keepReductions() {
    if (!levelsPending)
        return;
    levels = reduction.result();
    levelsPending = false;
    update();
}

QSizeF IIImageView::originalSize() const {
    const QSizeF size = picture.isNull() ? QSizeF(0, 0) : QSizeF(picture.size());
    return isQuarterTurn(rotation) ? size.transposed() : size;
}

void IIImageView::setZoom(double zoom) {
    if (!(zoom >= 0.01 && zoom <= 100))
        return;
    zoomFactor = zoom;
    updateSize();
    update();
}

void IIImageView::setAngle(int angle) {
    rotation = angle;
    updateSize();
    update();
}

void IIImageView::setFrameOrigin(const QPointF &origin) {
    documentFrame.moveTopLeft(origin);
    placeVisiblePart();
}

void IIImageView::updateSize() {
    if (picture.isNull())
        return;
    documentFrame.setSize(originalSize() * zoomFactor);
    placeVisiblePart();
    emit frameSizeChanged();
}

QTransform IIImageView::transformWithRotationInDegrees(int degrees) const {
    const QSizeF half = originalSize() * zoomFactor / 2;
    const QSizeF back = isQuarterTurn(degrees) ? half.transposed() : half;
    QTransform transform = QTransform::fromTranslate(half.width(), half.height());
    transform.rotate(-degrees); // y runs down here, and angles count against the clock
    transform.translate(-back.width(), -back.height());
    return transform;
}

void IIImageView::liveResize() {
    resizeTimer.start();
    update();
}

bool IIImageView::isSettled() const {
    return !resizeTimer.isActive() && !levelsPending;
}

void IIImageView::setFocusRing(bool shown) {
    focusRing = shown;
    update();
}

// On whole pixels, so that a picture at its actual size is not blurred.
QPointF IIImageView::paintedOrigin() const {
    return documentFrame.topLeft().toPoint();
}

void IIImageView::placeVisiblePart() {
    const QRect painted = QRectF(paintedOrigin(), documentFrame.size()).toAlignedRect();
    if (parentWidget())
        setGeometry(painted & parentWidget()->rect());
    update();
}

void IIImageView::paintEvent(QPaintEvent *event) {
    QPainter painter(this);
    if (!picture.isNull())
        drawPicture(painter, event->rect());
    if (focusRing) {
        painter.setPen(palette().color(QPalette::Highlight));
        painter.drawRect(rect().adjusted(0, 0, -1, -1));
    }
}

void IIImageView::drawPicture(QPainter &painter, const QRectF &exposed) const {
    const double deviceScale = zoomFactor * devicePixelRatioF();
    const size_t index = levels.levelFor(deviceScale);
    const QImage &level = levels.level(index);
    const double reduction = std::ldexp(1, static_cast<int>(index));
    // A mere draft serves while the window is being resized and while no reduced copy is near enough in size.
    const bool smooth = !resizeTimer.isActive() && deviceScale * reduction > 0.5;

    const QPointF origin = paintedOrigin() - pos();
    QTransform transform = QTransform::fromTranslate(origin.x(), origin.y());
    if (rotation != 0)
        transform = transformWithRotationInDegrees(rotation) * transform;
    transform.scale(zoomFactor * reduction, zoomFactor * reduction);
    // Two pixels more on every side, for the interpolation between them.
    const QRect needed =
        transform.inverted().mapRect(exposed).toAlignedRect().adjusted(-2, -2, 2, 2) & level.rect();

    painter.save();
    painter.setClipRect(QRectF(origin, documentFrame.size()));
    painter.setTransform(transform, true);
    painter.setRenderHint(QPainter::SmoothPixmapTransform, smooth);
    if (isQuarterTurn(rotation))
        painter.setCompositionMode(QPainter::CompositionMode_Source);
    painter.drawImage(needed.topLeft(), level, needed);
    painter.restore();
}

} // namespace tristop
