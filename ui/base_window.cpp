// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/base_window.h"

#include <algorithm>

#include <QAction>
#include <QApplication>
#include <QKeyEvent>
#include <QMenu>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QPointer>
#include <QWindow>

#include "ui/common_define.h"
#include "ui/logging.h"

namespace tristop {

namespace {

/// How far into the window its edges and corners can be taken.
constexpr int kEdge = 5;
constexpr int kCorner = 14;
constexpr qreal kCornerRadius = 5;

QPointer<QMenu> windowsMenu;
QPointer<SLBaseWindow> latestMainWindow;

Qt::CursorShape cursorFor(Qt::Edges edges) {
    if (edges == (Qt::TopEdge | Qt::LeftEdge) || edges == (Qt::BottomEdge | Qt::RightEdge))
        return Qt::SizeFDiagCursor;
    if (edges == (Qt::TopEdge | Qt::RightEdge) || edges == (Qt::BottomEdge | Qt::LeftEdge))
        return Qt::SizeBDiagCursor;
    return edges & (Qt::LeftEdge | Qt::RightEdge) ? Qt::SizeHorCursor : Qt::SizeVerCursor;
}

} // namespace

SLBaseWindow::SLBaseWindow(QWidget *parent, Qt::WindowFlags flags)
    : QWidget(parent, (flags & ~Qt::WindowType_Mask & ~Qt::WindowTitleHint & ~Qt::CustomizeWindowHint) |
                          Qt::Window | Qt::FramelessWindowHint | Qt::WindowMinMaxButtonsHint |
                          Qt::WindowCloseButtonHint) {
    setAttribute(Qt::WA_TranslucentBackground); // for the corners
    createWinId();
    // Before the views of the window, so that its edges belong to it wherever views lie.
    windowHandle()->installEventFilter(this);
}

SLBaseWindow::~SLBaseWindow() {
    showResizeCursor({});
}

void SLBaseWindow::setWindowsMenu(QMenu *menu) {
    windowsMenu = menu;
}

void SLBaseWindow::relativeCenterWindow(QWidget *window) {
    if (latestMainWindow && window)
        window->move(latestMainWindow->frameGeometry().center() - window->rect().center());
}

void SLBaseWindow::zoom() {
    setWindowState(windowState() ^ Qt::WindowMaximized);
}

Qt::Edges SLBaseWindow::edgesAt(const QPoint &point) const {
    if (isMaximized() || isFullScreen() || minimumSize() == maximumSize() || !rect().contains(point))
        return {};
    const int fromRight = width() - 1 - point.x();
    const int fromBottom = height() - 1 - point.y();
    Qt::Edges edges;
    if (std::min({point.x(), point.y(), fromRight, fromBottom}) >= kEdge)
        return edges;
    // Corners reach further along the edges than the edges are wide.
    if (point.x() < kCorner)
        edges |= Qt::LeftEdge;
    if (fromRight < kCorner)
        edges |= Qt::RightEdge;
    if (point.y() < kCorner)
        edges |= Qt::TopEdge;
    if (fromBottom < kCorner)
        edges |= Qt::BottomEdge;
    return edges;
}

bool SLBaseWindow::eventFilter(QObject *watched, QEvent *event) {
    if (watched != windowHandle())
        return QWidget::eventFilter(watched, event);
    switch (event->type()) {
    case QEvent::MouseButtonPress: {
        const auto *mouse = static_cast<QMouseEvent *>(event);
        const Qt::Edges edges = edgesAt(mouse->position().toPoint());
        if (mouse->button() != Qt::LeftButton || !edges)
            return false;
        drag = Drag{mouse->globalPosition().toPoint(), edges};
        return true;
    }
    case QEvent::MouseButtonDblClick:
        // On the title strip's own edge it is meant for the strip; what it maximizes must not be resized by
        // an unsteady hand.
        drag.reset();
        return false;
    case QEvent::MouseMove: {
        const auto *mouse = static_cast<QMouseEvent *>(event);
        if (mouse->buttons() == Qt::NoButton)
            showResizeCursor(edgesAt(mouse->position().toPoint()));
        return drag && drag->edges && continueDrag(mouse->globalPosition().toPoint());
    }
    case QEvent::MouseButtonRelease: {
        const bool wasResize = drag && drag->edges;
        drag.reset();
        return wasResize;
    }
    case QEvent::Leave:
    case QEvent::Hide:
    case QEvent::WindowBlocked:
        showResizeCursor({});
        return false;
    default:
        return false;
    }
}

void SLBaseWindow::showResizeCursor(Qt::Edges edges) {
    std::optional<Qt::CursorShape> wanted;
    if (edges)
        wanted = cursorFor(edges);
    if (wanted == resizeCursor)
        return;
    if (resizeCursor)
        QApplication::restoreOverrideCursor();
    if (wanted)
        QApplication::setOverrideCursor(*wanted);
    resizeCursor = wanted;
}

bool SLBaseWindow::continueDrag(const QPoint &globalPosition) {
    if ((globalPosition - drag->start).manhattanLength() < QApplication::startDragDistance())
        return true;
    const Qt::Edges edges = drag->edges;
    drag.reset(); // the compositor takes over, the release included
    if (edges)
        windowHandle()->startSystemResize(edges);
    else
        windowHandle()->startSystemMove();
    return true;
}

void SLBaseWindow::mousePressEvent(QMouseEvent *event) {
    if (event->button() == Qt::LeftButton)
        drag = Drag{event->globalPosition().toPoint(), {}};
}

void SLBaseWindow::mouseMoveEvent(QMouseEvent *event) {
    if (drag && event->buttons() & Qt::LeftButton)
        continueDrag(event->globalPosition().toPoint());
}

void SLBaseWindow::mouseReleaseEvent(QMouseEvent * /*event*/) {
    drag.reset();
}

void SLBaseWindow::keyPressEvent(QKeyEvent *event) {
    if (event->matches(QKeySequence::Cancel))
        cancelOperation();
    else
        QWidget::keyPressEvent(event);
}

void SLBaseWindow::cancelOperation() {
    qCDebug(lcTristop) << "";
}

bool SLBaseWindow::event(QEvent *event) {
    if (event->type() == QEvent::WindowActivate)
        becomeMainWindow();
    return QWidget::event(event);
}

void SLBaseWindow::changeEvent(QEvent *event) {
    if (event->type() == QEvent::WindowStateChange) {
        const Qt::WindowStates before = static_cast<QWindowStateChangeEvent *>(event)->oldState();
        if (before & Qt::WindowMinimized && !isMinimized())
            windowDidDeminiaturize();
        updateFrame();
    }
    QWidget::changeEvent(event);
}

void SLBaseWindow::becomeMainWindow() {
    latestMainWindow = this;
    if (windowsMenuItem || !windowsMenu)
        return;
    windowsMenuItem = windowsMenu->addAction(windowTitle());
    connect(this, &QWidget::windowTitleChanged, windowsMenuItem, &QAction::setText);
    connect(windowsMenuItem, &QAction::triggered, this, [this] {
        setWindowState(windowState() & ~Qt::WindowMinimized);
        raise();
        activateWindow();
    });
    connect(this, &QObject::destroyed, windowsMenuItem, &QObject::deleteLater);
}

void SLBaseWindow::windowDidDeminiaturize() {
    updateFrame();
}

void SLBaseWindow::updateFrame() {
    const int line = isMaximized() || isFullScreen() ? 0 : 1;
    setContentsMargins(line, line, line, line);
    update();
}

void SLBaseWindow::showEvent(QShowEvent *event) {
    updateFrame();
    QWidget::showEvent(event);
}

void SLBaseWindow::paintEvent(QPaintEvent * /*event*/) {
    QPainter painter(this);
    const QRectF bounds = rect();
    if (contentsMargins().isNull()) {
        painter.fillRect(bounds, CommonDefine::backgroundColor());
        return;
    }
    QPainterPath shape;
    shape.setFillRule(Qt::WindingFill);
    shape.addRoundedRect(bounds, kCornerRadius + 1, kCornerRadius + 1);
    shape.addRect(bounds.adjusted(0, 10, 0, 0));
    painter.setRenderHint(QPainter::Antialiasing);
    painter.fillPath(shape, CommonDefine::borderColor());
    painter.fillRect(bounds.adjusted(1, 10, -1, -1), CommonDefine::backgroundColor());
}

} // namespace tristop
