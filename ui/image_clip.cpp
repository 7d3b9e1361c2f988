// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/image_clip.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QNativeGestureEvent>
#include <QPainter>
#include <QWheelEvent>

#include "IICommon/accessible_role.h"
#include "ui/common_define.h"
#include "ui/localized_text.h"

namespace tristop {

namespace {

constexpr int kArrowStep = 40;

} // namespace

IIImageClip::IIImageClip(QWidget *parent) : QWidget(parent) {
    setFocusPolicy(Qt::StrongFocus);
    setMouseTracking(true);
    setAccessibleName(localizedText("IDS_PICTURE"));
    setAccessibleDescription(localizedText("IDS_PICTURE_KEYS"));
    setAccessibleRole(this, QAccessible::Pane);
}

void IIImageClip::setDocument(IIImageView *document) {
    if (document == documentView)
        return;
    delete documentView;
    documentView = document;
    if (!document)
        return;
    document->setParent(this);
    connect(document, &IIImageView::frameSizeChanged, this, qOverload<>(&IIImageClip::update));
    document->show();
    update();
}

QSizeF IIImageClip::documentSize() const {
    return documentView ? documentView->frame().size() : QSizeF(0, 0);
}

bool IIImageClip::hasPicture() const {
    return documentView && !documentView->image().isNull();
}

void IIImageClip::centerImage() {
    geometryOfClip.centerImage();
    update();
}

QPointF IIImageClip::normalizedCenter() const {
    return geometryOfClip.normalizedCenter(documentSize());
}

void IIImageClip::panX(int x, int y) {
    if (!hasPicture())
        return;
    geometryOfClip.moveCenter(geometryOfClip.center(), QPointF(x, y), documentSize());
    update();
}

void IIImageClip::update() {
    if (documentView)
        documentView->setFrameOrigin(geometryOfClip.documentOrigin(documentSize(), size()));
    QWidget::update();
}

bool IIImageClip::event(QEvent *event) {
    if (event->type() == QEvent::NativeGesture) {
        const auto *gesture = static_cast<QNativeGestureEvent *>(event);
        if (gesture->gestureType() == Qt::ZoomNativeGesture) {
            if (delegate)
                delegate->imageClipMagnify(this, gesture->value());
            return true;
        }
    }
    return QWidget::event(event);
}

void IIImageClip::paintEvent(QPaintEvent *) {
    QPainter(this).fillRect(rect(), CommonDefine::backgroundColor());
}

void IIImageClip::resizeEvent(QResizeEvent *event) {
    QWidget::resizeEvent(event);
    if (documentView)
        documentView->liveResize();
    update();
    emit frameChanged();
}

void IIImageClip::moveEvent(QMoveEvent *event) {
    QWidget::moveEvent(event);
    update();
    emit frameChanged();
}

// Accepted even without a picture: the window is moved by its other parts.
void IIImageClip::mousePressEvent(QMouseEvent *event) {
    if (event->button() != Qt::LeftButton)
        return QWidget::mousePressEvent(event);
    dragging = hasPicture();
    dragStart = event->scenePosition();
    dragCenter = geometryOfClip.center();
    if (dragging)
        setCursor(Qt::ClosedHandCursor);
}

void IIImageClip::mouseMoveEvent(QMouseEvent *event) {
    // A release that went to another window ends the drag here.
    if (!dragging || !(event->buttons() & Qt::LeftButton))
        return;
    geometryOfClip.moveCenter(dragCenter, dragStart - event->scenePosition(), documentSize());
    update();
}

void IIImageClip::mouseReleaseEvent(QMouseEvent *event) {
    if (event->button() != Qt::LeftButton)
        return QWidget::mouseReleaseEvent(event);
    dragging = false;
    unsetCursor();
}

void IIImageClip::mouseDoubleClickEvent(QMouseEvent *event) {
    if (event->button() == Qt::LeftButton && delegate)
        delegate->imageClipDoubleClick(this);
}

void IIImageClip::wheelEvent(QWheelEvent *event) {
    constexpr float kUnitsOfANotch = 120;
    event->accept();
    if (!scrollPause.passes(ScrollPause::Clock::now()))
        return;
    const float delta = static_cast<float>(event->angleDelta().y()) / kUnitsOfANotch;
    if (delta != 0 && delegate)
        delegate->imageClipScrollWheel(this, static_cast<double>(delta));
}

void IIImageClip::keyPressEvent(QKeyEvent *event) {
    const bool byScreenful = event->modifiers() & Qt::ShiftModifier;
    const int across = byScreenful ? width() * 9 / 10 : kArrowStep;
    const int down = byScreenful ? height() * 9 / 10 : kArrowStep;
    switch (event->key()) {
    case Qt::Key_Left:
        return panX(-across, 0);
    case Qt::Key_Right:
        return panX(across, 0);
    case Qt::Key_Up:
        return panX(0, -down);
    case Qt::Key_Down:
        return panX(0, down);
    default:
        QWidget::keyPressEvent(event);
    }
}

// The mark shows where the keyboard is, once it was moved here by the keyboard, also after a while in another
// window.
void IIImageClip::focusInEvent(QFocusEvent *event) {
    switch (event->reason()) {
    case Qt::TabFocusReason:
    case Qt::BacktabFocusReason:
    case Qt::ShortcutFocusReason:
        if (documentView)
            documentView->setFocusRing(true);
        break;
    default:
        break;
    }
    QWidget::focusInEvent(event);
}

void IIImageClip::focusOutEvent(QFocusEvent *event) {
    const bool comesBack =
        event->reason() == Qt::ActiveWindowFocusReason || event->reason() == Qt::PopupFocusReason;
    if (documentView && !comesBack)
        documentView->setFocusRing(false);
    QWidget::focusOutEvent(event);
}

} // namespace tristop
