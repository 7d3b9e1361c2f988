// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>

#include <QImage>
#include <QWidget>

namespace Ui {
class IIImageViewController;
}

namespace tristop {

/// The contents of a thumbnail's pop-up: the image, as large as the pop-up.
class IIImageViewController : public QWidget {
    Q_OBJECT

public:
    /// Longest side of the enlarged image in logical pixels.
    static constexpr int kLargestSide = 640;

    explicit IIImageViewController(const QImage &image, QWidget *parent = nullptr);
    ~IIImageViewController() override;

    const QImage &image() const { return picture; }

private:
    std::unique_ptr<Ui::IIImageViewController> ui;
    QImage picture;
};

} // namespace tristop
