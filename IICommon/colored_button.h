// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QColor>
#include <QPushButton>

namespace tristop {

/// A flat rounded button with its own fill, text and border colours. A disabled title has `disableTextColor`,
/// or dark grey while that is invalid. The title is centred vertically.
class MLColoredButton : public QPushButton {
    Q_OBJECT
    Q_PROPERTY(QColor backgroundColor READ backgroundColor WRITE setBackgroundColor)
    Q_PROPERTY(QColor textColor READ textColor WRITE setTextColor)
    Q_PROPERTY(QColor disableTextColor READ disableTextColor WRITE setDisableTextColor)
    Q_PROPERTY(bool isDrawBorder READ isDrawBorder WRITE setIsDrawBorder)
    Q_PROPERTY(Qt::Alignment alignment READ alignment WRITE setAlignment)

public:
    explicit MLColoredButton(QWidget *parent = nullptr);
    explicit MLColoredButton(const QString &title, QWidget *parent = nullptr);

    const QColor &backgroundColor() const { return fillColor; }
    void setBackgroundColor(const QColor &backgroundColor);
    const QColor &textColor() const { return titleColor; }
    void setTextColor(const QColor &textColor);
    const QColor &disableTextColor() const { return disabledTitleColor; }
    void setDisableTextColor(const QColor &disableTextColor);
    bool isDrawBorder() const { return borderDrawn; }
    void setIsDrawBorder(bool isDrawBorder);
    /// Horizontal alignment of the title; centred at first.
    Qt::Alignment alignment() const { return titleAlignment; }
    void setAlignment(Qt::Alignment alignment);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    void commonInit();

    QColor fillColor = Qt::transparent;
    QColor titleColor = Qt::black;
    QColor disabledTitleColor;
    bool borderDrawn = false;
    Qt::Alignment titleAlignment = Qt::AlignHCenter;
};

} // namespace tristop
