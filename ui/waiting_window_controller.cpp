// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/waiting_window_controller.h"

#include <chrono>
#include <cmath>

#include <QApplication>
#include <QCloseEvent>
#include <QKeyEvent>
#include <QWindow>

#include "IICommon/accessible_role.h"
#include "ui_MMWaitingWindowController.h"

namespace tristop {

namespace {

using Indicator = AMIndeterminateProgressIndicatorCell;

bool isUsableWhileWaiting(const QWidget *widget) {
    for (; widget; widget = widget->parentWidget()) {
        if (widget->property(MMWaitingWindowController::kUsableWhileWaiting).toBool())
            return true;
    }
    return false;
}

// Beginnings of input only: what was begun before (a slider being dragged) must end properly.
bool isPointerInput(QEvent::Type type) {
    switch (type) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick:
    case QEvent::Wheel:
    case QEvent::TouchBegin:
    case QEvent::TabletPress:
    case QEvent::NativeGesture:
    case QEvent::ContextMenu:
    case QEvent::DragEnter:
    case QEvent::Drop:
        return true;
    default:
        return false;
    }
}

bool isKeyInput(QEvent::Type type) {
    return type == QEvent::KeyPress || type == QEvent::ShortcutOverride;
}

} // namespace

// Wayland leaves the place of windows to the compositor.
MMWaitingWindowController::Place MMWaitingWindowController::placeOfThisDesktop() {
    const bool isWayland = QGuiApplication::platformName().startsWith(QLatin1String("wayland"));
    return isWayland ? Place::InsideParent : Place::OwnWindow;
}

MMWaitingWindowController::MMWaitingWindowController(Place place)
    : ui(std::make_unique<Ui::MMWaitingWindowController>()), place(place) {
    ui->setupUi(this);
    setAttribute(Qt::WA_ShowWithoutActivating);
    setAccessibleRole(this, QAccessible::AlertMessage);

    Indicator cell;
    cell.setSpinning(true);
    ui->waitingIndicator->setCell(cell);
    QPalette light = palette();
    light.setColor(QPalette::WindowText, QColor::fromRgbF(0.9F, 0.9F, 0.9F));
    ui->waitingLabel->setPalette(light);
    setWaitingDesc(descriptor);

    animationTimer.setInterval(static_cast<int>(std::lround(1000 * cell.animationDelay())));
    connect(&animationTimer, &QTimer::timeout, this, &MMWaitingWindowController::animate);
    showTimer.setSingleShot(true);
    showTimer.setInterval(std::chrono::milliseconds(150));
    connect(&showTimer, &QTimer::timeout, this, &MMWaitingWindowController::showPanel);
}

MMWaitingWindowController::~MMWaitingWindowController() = default;

void MMWaitingWindowController::setWaitingDesc(const QString &description) {
    descriptor = description;
    ui->waitingLabel->setText(description);
    ui->waitingLabel->setVisible(!description.isEmpty());
    setAccessibleName(description);
}

void MMWaitingWindowController::setCancelAction(std::function<void()> action, QObject *target) {
    cancelAction = std::move(action);
    cancelTarget = target;
}

// No modal event loop here: the caller goes on at once and runs of work end in the one loop of the
// application, in any order, also while it quits. A modal window would besides swallow requests to close its
// parent.
void MMWaitingWindowController::startAnimation(QWidget *parent) {
    if (running)
        return;
    running = true;
    parentWindow = parent ? parent->window() : nullptr;
    if (parentWindow) {
        if (QWidget *popup = QApplication::activePopupWidget())
            popup->close();
        focusBefore = parentWindow->focusWidget();
        const Qt::WindowFlags window = Qt::Dialog | Qt::FramelessWindowHint | Qt::WindowDoesNotAcceptFocus;
        setParent(parentWindow, place == Place::OwnWindow ? window : Qt::Widget);
        qApp->installEventFilter(this);
    }
    animationTimer.start();
    showTimer.start();
}

void MMWaitingWindowController::showPanel() {
    adjustSize();
    center(parentWindow);
    show();
    raise();
    QAccessibleEvent appeared(this, QAccessible::Alert);
    QAccessible::updateAccessibility(&appeared);
}

void MMWaitingWindowController::animate() {
    Indicator cell = ui->waitingIndicator->cell();
    cell.setDoubleValue(std::fmod(cell.doubleValue() + Indicator::kStep, 1.0));
    ui->waitingIndicator->setCell(cell);
}

void MMWaitingWindowController::endAnimation() {
    if (!running)
        return;
    running = false;
    showTimer.stop();
    animationTimer.stop();
    qApp->removeEventFilter(this);
    hide();
    setParent(nullptr, Qt::Dialog | Qt::FramelessWindowHint);
    if (parentWindow && focusBefore && focusBefore->isVisible() && parentWindow->focusWidget() != focusBefore)
        focusBefore->setFocus();
    parentWindow.clear();
}

void MMWaitingWindowController::cancel() {
    if (cancelAction && cancelTarget)
        cancelAction();
}

bool MMWaitingWindowController::eventFilter(QObject *watched, QEvent *event) {
    if (watched == parentWindow && (event->type() == QEvent::Move || event->type() == QEvent::Resize)) {
        if (isVisible())
            center(parentWindow);
        return false;
    }
    if (!refuses(watched, event))
        return false;
    if (event->type() == QEvent::KeyPress)
        keyPressEvent(static_cast<QKeyEvent *>(event));
    // An accepted override keeps the key from becoming a shortcut.
    event->setAccepted(isKeyInput(event->type()));
    return true;
}

bool MMWaitingWindowController::refuses(QObject *watched, QEvent *event) const {
    if (!parentWindow)
        return false;
    if (const auto *window = qobject_cast<QWindow *>(watched))
        return window == parentWindow->windowHandle() && isKeyInput(event->type());
    const auto *widget = qobject_cast<QWidget *>(watched);
    if (!widget || widget->window() != parentWindow)
        return false;
    return isKeyInput(event->type()) || (isPointerInput(event->type()) && !isUsableWhileWaiting(widget));
}

void MMWaitingWindowController::closeEvent(QCloseEvent *event) {
    event->setAccepted(!running);
}

} // namespace tristop
