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

PageSize paperSize(const QPageLayout &page) {
    const QSizeF paper = page.fullRect(QPageLayout::Point).size();
    return {paper.width(), paper.height()};
}

PrintMargins equalMargins(QPageLayout page) {
    page.setUnits(QPageLayout::Point);
    return printMargins(paperSize(page), pageRect(page.fullRect().marginsRemoved(page.minimumMargins())));
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

QPageLayout withEqualMargins(QPageLayout page) {
    page.setUnits(QPageLayout::Point);
    const PrintMargins margins = equalMargins(page);
    // Rounding may have made them narrower than the printer needs, and a page refuses such margins.
    page.setMargins(QMarginsF(margins.horizontal, margins.vertical, margins.horizontal, margins.vertical) |
                    page.minimumMargins());
    return page;
}

void setEqualMargins(QPrinter &printer) {
    printer.setPageMargins(withEqualMargins(printer.pageLayout()).margins(), QPageLayout::Point);
}

bool printPicture(QPrinter &printer, const QImage &picture) {
    setEqualMargins(printer);
    printer.setFullPage(false);
    printer.setDocName(IIPrintView::printJobTitle());
    QPainter painter;
    if (!painter.begin(&printer))
        return false;
    const PageSize paper = paperSize(printer.pageLayout());
    const PrintMargins margins = equalMargins(printer.pageLayout());
    painter.scale(printer.logicalDpiX() / kPointsPerInch, printer.logicalDpiY() / kPointsPerInch);
    IIPrintView(QRectF(0, 0, paper.width - 2 * margins.horizontal, paper.height - 2 * margins.vertical),
                picture)
        .drawRect(painter);
    return painter.end() && printer.printerState() != QPrinter::Error;
}

} // namespace tristop
