// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QAbstractButton>
#include <QImage>
#include <QPixmap>

namespace tristop {

/// A thumbnail: its image as large as fits, in the middle. Pressing it (or Space or Return) shows the image
/// enlarged in a pop-up, which closes with a click elsewhere. Give it an image of up to
/// IIImageViewController::kLargestSide pixels a side, times the screen's pixel ratio.
class IIPopupImageView : public QAbstractButton {
    Q_OBJECT

public:
    explicit IIPopupImageView(QWidget *parent = nullptr);

    const QImage &image() const { return picture; }
    void setImage(const QImage &image);

    QSize sizeHint() const override { return {80, 60}; }

protected:
    void paintEvent(QPaintEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    void showEnlarged();

    QImage picture;
    QPixmap scaled;
};

} // namespace tristop
