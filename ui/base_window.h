// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <optional>

#include <QWidget>

class QMenu;

namespace tristop {

/**
 * A top-level window that draws its own frame: a line around it and rounded upper corners. Its background and
 * whatever lies on it without taking the mouse moves it; its edges and corners resize it. Both go through the
 * compositor, so that snapping works, and start only after a drag distance, so that clicks and double clicks
 * arrive where they are made.
 */
class SLBaseWindow : public QWidget {
    Q_OBJECT

public:
    /// Ignores any frame asked for by `flags`: the platform never draws one.
    explicit SLBaseWindow(QWidget *parent = nullptr, Qt::WindowFlags flags = {});
    ~SLBaseWindow() override;

    /// Maximizes the window, or gives it back the size it had.
    void zoom();

    /// Places the centre of `window` on the centre of the application's main window, if there is one.
    static void relativeCenterWindow(QWidget *window);

    /// The menu that lists the windows; not owned, null for none.
    static void setWindowsMenu(QMenu *menu);

    /// The edges of the frame to resize at a point of the window; none inside or while it cannot be resized.
    Qt::Edges edgesAt(const QPoint &point) const;

protected:
    void changeEvent(QEvent *event) override;
    bool event(QEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void showEvent(QShowEvent *event) override;

    /// The window has become the one the user works in.
    virtual void becomeMainWindow();
    /// The window is back from being minimized.
    virtual void windowDidDeminiaturize();
    /// Escape: does not close the window.
    virtual void cancelOperation();

private:
    /// A press that becomes a move (no edges) or a resize once the mouse has gone far enough.
    struct Drag {
        QPoint start;
        Qt::Edges edges;
    };
    bool continueDrag(const QPoint &globalPosition);
    void showResizeCursor(Qt::Edges edges);
    /// The line around the window, which a maximized one does not have.
    void updateFrame();

    std::optional<Drag> drag;
    std::optional<Qt::CursorShape> resizeCursor; ///< laid over the cursors of the window's views
    QAction *windowsMenuItem = nullptr;
};

} // namespace tristop
