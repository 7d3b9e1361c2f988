// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QImage>
#include <QRectF>
#include <QString>

class QPageLayout;
class QPainter;
class QPrinter;

namespace tristop {

/// A picture on a page, drawn in points from the page's top left margin. It is no widget, so that a page can
/// be drawn on any thread.
class IIPrintView {
public:
    IIPrintView(const QRectF &frame, const QImage &image) : viewFrame(frame), picture(image) {}

    const QRectF &frame() const { return viewFrame; }
    const QImage &image() const { return picture; }
    /// The name of the program.
    static QString printJobTitle();
    /// Draws the picture as large as it fits, in the middle of the frame; without a picture nothing.
    void drawRect(QPainter &painter) const;

private:
    QRectF viewFrame;
    QImage picture;
};

/// A page with equal margins on opposite sides, as narrow as its printer can print on both, in points.
QPageLayout withEqualMargins(QPageLayout page);

/// Gives a printer's page equal margins.
void setEqualMargins(QPrinter &printer);

/// Prints a picture on one page with the printer's settings. False when the printer does not take it.
bool printPicture(QPrinter &printer, const QImage &picture);

} // namespace tristop
