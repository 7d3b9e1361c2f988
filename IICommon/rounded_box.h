// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QColor>
#include <QWidget>

#include "IICommon/rounded_box_geometry.h"

namespace tristop {

/// A group box: rounded outline, gradient or plain background, and a coloured tab with the title along its
/// top. A layout inside keeps clear of the tab and the border.
class IIRoundedBox : public QWidget {
    Q_OBJECT
    Q_PROPERTY(QString title READ title WRITE setTitle)
    Q_PROPERTY(bool drawsTitle READ drawsTitle WRITE setDrawsTitle)
    Q_PROPERTY(float borderWidth READ borderWidth WRITE setBorderWidth)
    Q_PROPERTY(QColor borderColor READ borderColor WRITE setBorderColor)
    Q_PROPERTY(QColor titleColor READ titleColor WRITE setTitleColor)
    Q_PROPERTY(QColor gradientStartColor READ gradientStartColor WRITE setGradientStartColor)
    Q_PROPERTY(QColor gradientEndColor READ gradientEndColor WRITE setGradientEndColor)
    Q_PROPERTY(QColor backgroundColor READ backgroundColor WRITE setBackgroundColor)
    Q_PROPERTY(bool drawsFullTitleBar READ drawsFullTitleBar WRITE setDrawsFullTitleBar)
    Q_PROPERTY(bool selected READ selected WRITE setSelected)
    Q_PROPERTY(bool drawsGradientBackground READ drawsGradientBackground WRITE setDrawsGradientBackground)

public:
    explicit IIRoundedBox(QWidget *parent = nullptr);

    const QString &title() const { return titleText; }
    void setTitle(const QString &title);
    bool drawsTitle() const { return titleDrawn; }
    void setDrawsTitle(bool drawsTitle);
    float borderWidth() const { return lineWidth; }
    void setBorderWidth(float borderWidth);
    const QColor &borderColor() const { return lineColor; }
    void setBorderColor(const QColor &borderColor);
    const QColor &titleColor() const { return textColor; }
    void setTitleColor(const QColor &titleColor);
    const QColor &gradientStartColor() const { return startColor; }
    void setGradientStartColor(const QColor &gradientStartColor);
    const QColor &gradientEndColor() const { return endColor; }
    void setGradientEndColor(const QColor &gradientEndColor);
    const QColor &backgroundColor() const { return plainColor; }
    void setBackgroundColor(const QColor &backgroundColor);
    bool drawsFullTitleBar() const { return fullTitleBar; }
    void setDrawsFullTitleBar(bool drawsFullTitleBar);
    bool selected() const { return isSelected; }
    void setSelected(bool selected);
    bool drawsGradientBackground() const { return gradientBackground; }
    void setDrawsGradientBackground(bool drawsGradientBackground);

    /// Bounds of the tab as it was drawn last.
    const QRectF &titlePathRect() const { return tabRect; }
    /// Of the title: bold, of a small control's size.
    QFont titleFont() const;

protected:
    void paintEvent(QPaintEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    RoundedBoxGeometry geometryOfBox() const;
    QSizeF titleSize() const;
    void keepContentsClear();

    QString titleText;
    bool titleDrawn = true;
    float lineWidth = 2;
    QColor lineColor;
    QColor textColor;
    QColor startColor;
    QColor endColor;
    QColor plainColor;
    bool fullTitleBar = false;
    bool isSelected = false;
    bool gradientBackground = true;
    QRectF tabRect;
};

} // namespace tristop
