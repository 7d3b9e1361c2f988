// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QAbstractButton>

#include "ui/glass_view.h"

namespace tristop {

/// A round button of the title bar, which shows its symbol while the pointer is over the bar.
class TitlebarButton : public QAbstractButton {
    Q_OBJECT

public:
    enum class Role { Close, Minimize, Zoom };
    static constexpr QSize kSize{20, 22};

    TitlebarButton(Role role, QWidget *parent);
    void setHighlighted(bool highlighted);
    QSize sizeHint() const override { return kSize; }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    const Role role;
    bool isHighlighted = false;
};

/**
 * The strip at the top of a window without a frame of the platform: the window's buttons, rounded upper
 * corners, and a double click that maximizes the window. Dragging is left to SLBaseWindow.
 */
class SLWindowTitlebar : public SLGlassView {
    Q_OBJECT

public:
    static constexpr int kHeight = 32;

    explicit SLWindowTitlebar(QWidget *parent = nullptr);

    bool verticalButtons() const { return isVertical; }
    /// Lays the buttons out in a column instead of a row.
    void setVerticalButtons(bool vertical);
    bool hiddenButtons() const { return isWithoutButtons; }
    /// True removes the buttons for good.
    void setHiddenButtons(bool hidden);
    bool justClose() const { return isJustClose; }
    /// True hides all buttons but the one that closes; false does not bring them back.
    void setJustClose(bool justClose);

    /// Null once the buttons are removed.
    TitlebarButton *closeButton() const { return close; }
    TitlebarButton *minimizeButton() const { return minimize; }
    TitlebarButton *maximizeButton() const { return maximize; }

    /// Right edge of the space that the buttons take; 0 without.
    int buttonsEnd() const;

protected:
    void enterEvent(QEnterEvent *event) override;
    void leaveEvent(QEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    void commonInit();
    void placeButtons();
    void setHighlighted(bool highlighted);
    void zoomWindow();

    TitlebarButton *close = nullptr;
    TitlebarButton *minimize = nullptr;
    TitlebarButton *maximize = nullptr;
    bool isVertical = false;
    bool isWithoutButtons = false;
    bool isJustClose = false;
};

} // namespace tristop
