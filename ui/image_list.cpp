// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/image_list.h"

#include <algorithm>

#include <QFontMetrics>
#include <QImageReader>
#include <QPainter>
#include <QPainterPath>
#include <QStyleOptionSlider>
#include <QtConcurrentMap>

#include "ui/common_define.h"

namespace tristop {

namespace {

constexpr int kMargin = 8;
const QColor kSelectionColor = QColor::fromRgbF(0.0F, 0.58F, 0.9F);

QImage thumbnailOf(const QString &path) {
    QImageReader reader(path);
    reader.setAutoTransform(true);
    constexpr int kSide = IIImageListCell::kThumbnailSide;
    const QSize size = reader.size();
    if (size.width() > kSide || size.height() > kSide)
        reader.setScaledSize(size.scaled(kSide, kSide, Qt::KeepAspectRatio));
    return reader.read();
}

} // namespace

ImageListModel::ImageListModel(QObject *parent) : QAbstractListModel(parent) {
    connect(&reading, &QFutureWatcherBase::resultReadyAt, this, &ImageListModel::keepThumbnail);
}

ImageListModel::~ImageListModel() {
    reading.cancel();
}

void ImageListModel::setItems(std::vector<IIImageItem> items) {
    reading.cancel();
    beginResetModel();
    imageItems = std::move(items);
    thumbnails.assign(imageItems.size(), QImage());
    endResetModel();
    QStringList paths;
    for (const IIImageItem &item : imageItems)
        paths.append(item.imageRepresentation());
    reading.setFuture(QtConcurrent::mapped(paths, thumbnailOf));
}

void ImageListModel::keepThumbnail(int row) {
    thumbnails[static_cast<size_t>(row)] = reading.resultAt(row);
    emit dataChanged(index(row), index(row), {Qt::DecorationRole});
}

int ImageListModel::rowCount(const QModelIndex &parent) const {
    return parent.isValid() ? 0 : static_cast<int>(imageItems.size());
}

QVariant ImageListModel::data(const QModelIndex &index, int role) const {
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    const IIImageItem &item = imageItems[static_cast<size_t>(index.row())];
    switch (role) {
    case Qt::DisplayRole:
        return item.imageTitle();
    case Qt::DecorationRole:
        return thumbnails[static_cast<size_t>(index.row())];
    case Qt::ToolTipRole:
        return item.imagePath();
    default:
        return {};
    }
}

Qt::ItemFlags ImageListModel::flags(const QModelIndex &index) const {
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return Qt::NoItemFlags;
    const bool selectable = imageItems[static_cast<size_t>(index.row())].isSelectable();
    return selectable ? Qt::ItemIsEnabled | Qt::ItemIsSelectable : Qt::ItemFlags(Qt::ItemIsEnabled);
}

QRect IIImageListCell::imageFrame(const QRect &cell, const QSize &thumbnail) {
    const QRect square(cell.center().x() - kThumbnailSide / 2, cell.top() + kMargin, kThumbnailSide,
                       kThumbnailSide);
    QRect frame(QPoint(), thumbnail.boundedTo(square.size()));
    frame.moveCenter(square.center());
    return frame;
}

QRect IIImageListCell::selectionFrame(const QRect &imageFrame) {
    return imageFrame.adjusted(-4, -4, 4, 4);
}

void IIImageListCell::paint(QPainter *painter, const QStyleOptionViewItem &option,
                            const QModelIndex &index) const {
    const QImage thumbnail = index.data(Qt::DecorationRole).value<QImage>();
    const QRect frame = imageFrame(option.rect, thumbnail.isNull() ? QSize(kThumbnailSide, kThumbnailSide)
                                                                   : thumbnail.size());
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setRenderHint(QPainter::SmoothPixmapTransform);
    painter->drawImage(frame, thumbnail);

    const int textTop = option.rect.top() + kMargin + kThumbnailSide + kMargin;
    const QRect title(option.rect.left() + kMargin, textTop, option.rect.width() - 2 * kMargin,
                      option.fontMetrics.height());
    painter->setPen(option.palette.color(QPalette::Text));
    painter->drawText(title, Qt::AlignCenter,
                      option.fontMetrics.elidedText(index.data(Qt::DisplayRole).toString(), Qt::ElideMiddle,
                                                    title.width()));

    if (option.state & QStyle::State_Selected) {
        constexpr double kWidth = 2;
        constexpr double kRadius = 3;
        // The border lies inside its frame.
        const double inset = kWidth / 2;
        painter->setPen(QPen(kSelectionColor, kWidth));
        painter->setBrush(Qt::NoBrush);
        painter->drawRoundedRect(QRectF(selectionFrame(frame)).adjusted(inset, inset, -inset, -inset),
                                 kRadius - inset, kRadius - inset);
    }
    painter->restore();
}

QSize IIImageListCell::sizeHint(const QStyleOptionViewItem &option, const QModelIndex &) const {
    return {kThumbnailSide + 4 * kMargin, kThumbnailSide + 3 * kMargin + option.fontMetrics.height()};
}

void IIImageListScroller::paintEvent(QPaintEvent *) {
    QPainter painter(this);
    painter.fillRect(rect(), CommonDefine::backgroundColor());
    QStyleOptionSlider option;
    initStyleOption(&option);
    option.subControls = QStyle::SC_ScrollBarSlider;
    style()->drawComplexControl(QStyle::CC_ScrollBar, &option, &painter, this);
}

IIImageListView::IIImageListView(QWidget *parent) : QListView(parent) {
    setup();
}

void IIImageListView::setup() {
    QPalette dark = palette();
    dark.setColor(QPalette::Base, CommonDefine::backgroundColor());
    dark.setColor(QPalette::Text, QColor::fromRgbF(0.9F, 0.9F, 0.9F));
    setPalette(dark);
    setFrameShape(NoFrame);
    setViewMode(IconMode);
    setMovement(Static); // no rearranging
    setDragEnabled(false);
    setResizeMode(Adjust);
    setUniformItemSizes(true);
    setVerticalScrollMode(ScrollPerPixel);
    setItemDelegate(new IIImageListCell(this));
    setVerticalScrollBar(new IIImageListScroller(Qt::Vertical, this));
    setHorizontalScrollBar(new IIImageListScroller(Qt::Horizontal, this));
}

} // namespace tristop
