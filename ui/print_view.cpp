// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/print_view.h"

#include <QFileInfo>
#include <QGuiApplication>
#include <QPainter>
#include <QPrinter>

#include "app/print_layout.h"

namespace tristop {
namespace {

constexpr double kPointsPerInch = 72;

PageRect pageRect(const QRectF &rect) {
    return {rect.x(), rect.y(), rect.width(), rect.height()};
}

PageSize paperSize(const QPrinter &printer) {
    const QSizeF paper = printer.pageLayout().fullRect(QPageLayout::Point).size();
    return {paper.width(), paper.height()};
}

PrintMargins equalMargins(const QPrinter &printer) {
    QPageLayout layout = printer.pageLayout();
    layout.setUnits(QPageLayout::Point);
    const QRectF paper = layout.fullRect();
    const QMarginsF unprintable = layout.minimumMargins();
    return printMargins(paperSize(printer), pageRect(paper.marginsRemoved(unprintable)));
}

} // namespace

QString IIPrintView::printJobTitle() {
    return QFileInfo(QCoreApplication::applicationFilePath()).fileName();
}

void IIPrintView::drawRect(QPainter &painter) const {
    if (picture.isNull())
        return;
    const PageRect target =
        pictureRect(pageRect(viewFrame), {double(picture.width()), double(picture.height())});
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawImage(QRectF(target.x, target.y, target.width, target.height), picture);
}

void setEqualMargins(QPrinter &printer) {
    const PrintMargins margins = equalMargins(printer);
    printer.setPageMargins(
        QMarginsF(margins.horizontal, margins.vertical, margins.horizontal, margins.vertical),
        QPageLayout::Point);
}

bool printPicture(QPrinter &printer, const QImage &picture) {
    setEqualMargins(printer);
    printer.setFullPage(false);
    printer.setDocName(IIPrintView::printJobTitle());
    QPainter painter;
    if (!painter.begin(&printer))
        return false;
    const PageSize paper = paperSize(printer);
    const PrintMargins margins = equalMargins(printer);
    painter.scale(printer.logicalDpiX() / kPointsPerInch, printer.logicalDpiY() / kPointsPerInch);
    IIPrintView(QRectF(0, 0, paper.width - 2 * margins.horizontal, paper.height - 2 * margins.vertical),
                picture)
        .drawRect(painter);
    return painter.end() && printer.printerState() != QPrinter::Error;
}

} // namespace tristop
