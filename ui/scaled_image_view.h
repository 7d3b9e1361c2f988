// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QAbstractButton>
#include <QImage>
#include <QPixmap>

namespace tristop {

/// Shows an image as large as fits, in the middle, never enlarged.
class ScaledImageView : public QAbstractButton {
    Q_OBJECT

public:
    explicit ScaledImageView(QWidget *parent = nullptr);

    const QImage &image() const { return picture; }
    void setImage(const QImage &image);

    QSize sizeHint() const override { return {96, 72}; }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QImage picture;
    QPixmap scaled;
};

} // namespace tristop
