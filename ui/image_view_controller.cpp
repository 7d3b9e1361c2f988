// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/image_view_controller.h"

#include "IICommon/accessible_role.h"
#include "ui_IIImageViewController.h"

namespace tristop {

IIImageViewController::IIImageViewController(const QImage &image, QWidget *parent)
    : QWidget(parent), ui(std::make_unique<Ui::IIImageViewController>()), picture(image) {
    ui->setupUi(this);
    setAccessibleRole(this, QAccessible::Graphic);
    const double ratio = devicePixelRatioF();
    QSize shown = picture.size();
    if (shown.width() > kLargestSide || shown.height() > kLargestSide)
        shown.scale(kLargestSide, kLargestSide, Qt::KeepAspectRatio);
    QPixmap pixmap =
        QPixmap::fromImage(picture.scaled(shown * ratio, Qt::IgnoreAspectRatio, Qt::SmoothTransformation));
    pixmap.setDevicePixelRatio(ratio);
    ui->imageView->setPixmap(pixmap);
}

IIImageViewController::~IIImageViewController() = default;

} // namespace tristop
