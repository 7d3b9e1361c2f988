// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>
#include <memory>

#include <QPointer>
#include <QTimer>

#include "ui/bordless_window.h"

namespace Ui {
class MMWaitingWindowController;
}

namespace tristop {

/// The progress window: a spinner and a line of text over the main window, which takes no input meanwhile.
///
/// startAnimation() returns at once, so that no event loop runs inside another. Input to the parent window is
/// refused from then on; the panel itself appears a little later, so that short work does not flash. Closing
/// the parent window and its title bar (any widget with the dynamic property `kUsableWhileWaiting`) still
/// work. The keyboard's focus never leaves the parent window.
///
/// While it runs it is a child of the parent window and dies with it: hold it with a QPointer.
class MMWaitingWindowController : public MMBordlessWindow {
    Q_OBJECT

public:
    /// Property that leaves a widget and its children usable while a progress window is over their window.
    static constexpr char kUsableWhileWaiting[] = "usableWhileWaiting";

    /// Where the panel lies: a window of its own, or a part of the parent window where the desktop does not
    /// let windows be placed.
    enum class Place { OwnWindow, InsideParent };
    static Place placeOfThisDesktop();

    explicit MMWaitingWindowController(Place place = placeOfThisDesktop());
    ~MMWaitingWindowController() override;

    const QString &waitingDescriptor() const { return descriptor; }
    void setWaitingDesc(const QString &description);
    /// What cancel() calls, while `cancelTarget` lives; both null when the work cannot be cancelled.
    void setCancelAction(std::function<void()> cancelAction, QObject *cancelTarget);

    /// Refuses input to `parent` and shows the panel over it after 150 ms.
    void startAnimation(QWidget *parent);
    /// A step of the spinner.
    void animate();
    /// Hides the panel and gives the parent window its input back.
    void endAnimation();
    bool isRunning() const { return running; }
    void cancel() override;

    bool eventFilter(QObject *watched, QEvent *event) override;

protected:
    void closeEvent(QCloseEvent *event) override;

private:
    void showPanel();
    bool refuses(QObject *watched, QEvent *event) const;

    std::unique_ptr<Ui::MMWaitingWindowController> ui;
    const Place place;
    QString descriptor;
    std::function<void()> cancelAction;
    QPointer<QObject> cancelTarget;
    bool running = false;
    QPointer<QWidget> parentWindow;
    QPointer<QWidget> focusBefore;
    QTimer animationTimer;
    QTimer showTimer;
};

} // namespace tristop
