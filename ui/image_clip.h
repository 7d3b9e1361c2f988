// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPointer>
#include <QWidget>

#include "ui/clip_geometry.h"
#include "ui/image_view.h"

namespace tristop {

class IIImageClip;

/// What the clip leaves to its controller; methods not overridden do nothing.
class IIImageClipDelegate {
public:
    virtual ~IIImageClipDelegate() = default;
    virtual void imageClipDoubleClick(IIImageClip *) {}
    /// A pinch; `value` is the part by which the picture should grow (negative: shrink).
    virtual void imageClipMagnify(IIImageClip *, double /*value*/) {}
    /// A turn of the wheel in notches, positive away from the user.
    virtual void imageClipScrollWheel(IIImageClip *, double /*delta*/) {}
};

/// Shows a part of its document and pans it by dragging or with the arrow keys (with Shift by nearly a
/// screenful).
class IIImageClip : public QWidget {
    Q_OBJECT

public:
    explicit IIImageClip(QWidget *parent = nullptr);

    IIImageView *document() const { return documentView; }
    /// Takes ownership; the document before is deleted.
    void setDocument(IIImageView *document);
    IIImageClipDelegate *clipDelegate() const { return delegate; }
    /// Not owned; may be null.
    void setClipDelegate(IIImageClipDelegate *clipDelegate) { delegate = clipDelegate; }

    /// The pan position in thousandths of the document's width and height.
    QPointF center() const { return geometryOfClip.center(); }
    /// Shows the document's middle.
    void centerImage();
    /// The pan position in units of the document.
    QPointF normalizedCenter() const;
    /// Moves the pan position by steps in units of the document, at most to its edges.
    void panX(int x, int y);

    using QWidget::update;
    /// Places the document so that its centre lies in the middle of the clip, and redraws.
    void update();

    QSize minimumSizeHint() const override { return {200, 150}; }

signals:
    /// The clip was moved or resized, and its document placed again.
    void frameChanged();

protected:
    bool event(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void moveEvent(QMoveEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;

private:
    QSizeF documentSize() const;
    bool hasPicture() const;

    QPointer<IIImageView> documentView;
    IIImageClipDelegate *delegate = nullptr;
    ClipGeometry geometryOfClip;
    bool dragging = false;
    QPointF dragStart;
    QPointF dragCenter;
    ScrollPause scrollPause;
};

} // namespace tristop
