// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ui/scaled_image_view.h"

namespace tristop {

/// A thumbnail that shows its image enlarged in a pop-up when clicked (or with Space or Return). Give it an
/// image of up to IIImageViewController::kLargestSide pixels a side (times the screen's pixel ratio).
class IIPopupImageView : public ScaledImageView {
    Q_OBJECT

public:
    explicit IIPopupImageView(QWidget *parent = nullptr);

protected:
    void mousePressEvent(QMouseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    void showEnlarged();
};

} // namespace tristop
