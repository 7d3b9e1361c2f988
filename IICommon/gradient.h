// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include <QColor>
#include <QLineF>
#include <QRectF>
#include <QVariant>

class QGradient;
class QPainter;

namespace tristop {

/// A colour stop: sRGB components and alpha from 0 to 1, at a position from 0 to 1.
struct CTGradientElement {
    double red = 0;
    double green = 0;
    double blue = 0;
    double alpha = 0;
    float position = 0;

    bool operator==(const CTGradientElement &) const = default;
};

/// How colours between two stops are found.
enum class CTGradientBlendingMode : int32_t {
    Linear = 0,           ///< along straight lines in RGB
    Chromatic = 1,        ///< in hue, saturation and value, hues rising
    InverseChromatic = 2, ///< the same, hues falling
};

/// The line in `rectangle` (y runs down) along which a gradient at `angle` runs. Degrees count against the
/// clock from the left-to-right direction, so that 270 runs from the top edge to the bottom edge. The lines
/// perpendicular to the axis at its ends pass through corners of the rectangle.
QLineF gradientAxis(const QRectF &rectangle, float angle);

/// An ordered list of colour stops that paints rectangles. A value: copies are independent.
class CTGradient {
public:
    CTGradient();

    /// Two stops, at 0 and at 1.
    static CTGradient gradientWithBeginningColor(const QColor &beginningColor, const QColor &endingColor);

    static CTGradient aquaSelectedGradient();
    static CTGradient aquaNormalGradient();
    static CTGradient aquaPressedGradient();
    static CTGradient unifiedSelectedGradient();
    static CTGradient unifiedNormalGradient();
    static CTGradient unifiedPressedGradient();
    static CTGradient unifiedDarkGradient();
    static CTGradient sourceListSelectedGradient();
    static CTGradient sourceListUnselectedGradient();
    static CTGradient rainbowGradient();
    static CTGradient hydrogenSpectrumGradient();

    /// The stops by ascending position.
    const std::vector<CTGradientElement> &elementList() const { return elements; }
    CTGradientBlendingMode blendingMode() const { return mode; }

    /// Inserts a stop behind all stops at its position or before it.
    void addElement(const CTGradientElement &element);
    void setGradientBlendingMode(CTGradientBlendingMode blendingMode);

    /// The colour at a position; opaque white without stops.
    QColor colorAtPosition(float position) const;
    /// The colour of the stop at `index`; an invalid colour, and a line on the log, when there is none.
    QColor colorStopAtIndex(size_t index) const;

    /// Copies with a stop more or less. What cannot be removed is told on the log, and the copy is unchanged.
    CTGradient addColorStop(const QColor &color, float position) const;
    CTGradient removeColorStopAtIndex(size_t index) const;
    CTGradient removeColorStopAtPosition(float position) const;
    /// Copies with every stop's alpha replaced, or with another blending mode.
    CTGradient gradientWithAlphaComponent(double alpha) const;
    CTGradient gradientWithBlendingMode(CTGradientBlendingMode blendingMode) const;

    /// Fills `rectangle` along gradientAxis().
    void fillRect(QPainter &painter, const QRectF &rectangle, float angle) const;
    /// Fills `rectangle` from its centre outward, the last colour in its corners.
    void radialFillRect(QPainter &painter, const QRectF &rectangle) const;
    /// Fills `rectangle` from left to right, as a sample of the gradient.
    void drawSwatchInRect(QPainter &painter, const QRectF &rectangle) const;

    /// Writes stops and mode into a coder, which must hold a QVariantMap; false, and a line on the log, if
    /// not.
    bool encodeWithCoder(QVariant &coder) const;
    /// Reads what encodeWithCoder() wrote. False leaves the gradient unchanged: no map, or not of a gradient.
    bool initWithCoder(const QVariant &coder);

private:
    /// The colour at a part (0 to 1) of the way between two stops.
    using GradientFunction = CTGradientElement (*)(const CTGradientElement &first,
                                                   const CTGradientElement &second, float part);

    void setStopsOf(QGradient &gradient) const;

    std::vector<CTGradientElement> elements;
    CTGradientBlendingMode mode;
    GradientFunction gradientFunction;
};

} // namespace tristop
