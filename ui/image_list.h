// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <vector>

#include <QAbstractListModel>
#include <QFutureWatcher>
#include <QImage>
#include <QListView>
#include <QScrollBar>
#include <QStyledItemDelegate>

#include "ui/image_item.h"

namespace tristop {

/// The items of an image list: titles and thumbnails, which are read in the background.
class ImageListModel : public QAbstractListModel {
    Q_OBJECT

public:
    explicit ImageListModel(QObject *parent = nullptr);
    ~ImageListModel() override;

    const std::vector<IIImageItem> &items() const { return imageItems; }
    void setItems(std::vector<IIImageItem> items);

    int rowCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;

private:
    void keepThumbnail(int row);

    std::vector<IIImageItem> imageItems;
    std::vector<QImage> thumbnails; ///< of the items; null until read, and where unreadable
    QFutureWatcher<QImage> reading;
};

/// Draws an item: its thumbnail in the middle, its title below, and a rounded frame around the selected one.
class IIImageListCell : public QStyledItemDelegate {
    Q_OBJECT

public:
    static constexpr int kThumbnailSide = 128;

    using QStyledItemDelegate::QStyledItemDelegate;

    /// Where a thumbnail of the given size lies in a cell.
    static QRect imageFrame(const QRect &cell, const QSize &thumbnail);
    /// The frame of a selected item: the image's, grown by 4 on every side.
    static QRect selectionFrame(const QRect &imageFrame);

    void paint(QPainter *painter, const QStyleOptionViewItem &option,
               const QModelIndex &index) const override;
    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override;
};

/// A scroll bar whose slot has the windows' background colour.
class IIImageListScroller : public QScrollBar {
    Q_OBJECT

public:
    using QScrollBar::QScrollBar;

protected:
    void paintEvent(QPaintEvent *event) override;
};

/// A grid of files for the dark window; items cannot be rearranged.
class IIImageListView : public QListView {
    Q_OBJECT

public:
    explicit IIImageListView(QWidget *parent = nullptr);

private:
    void setup();
};

} // namespace tristop
