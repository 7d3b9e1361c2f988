// SPDX-License-Identifier: GPL-3.0-or-later
#include "IICommon/gradient.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <optional>

#include <QLinearGradient>
#include <QPainter>
#include <QRadialGradient>
#include <QVariantMap>

namespace tristop {

namespace {

const QLatin1String kElementCountKey("CTGradientElementCount");
const QLatin1String kBlendingModeKey("CTGradientBlendingMode");
const QLatin1String kElementsKey("CTGradientElements");
constexpr char kOnlyKeyedCoders[] = "Only supports NSKeyedArchiver coders";

CTGradientElement element(const QColor &color, float position) {
    const QColor rgb = color.toRgb();
    return {rgb.redF(), rgb.greenF(), rgb.blueF(), rgb.alphaF(), position};
}

QColor colorOf(const CTGradientElement &element) {
    const auto component = [](double value) { return static_cast<float>(std::clamp(value, 0.0, 1.0)); };
    return QColor::fromRgbF(component(element.red), component(element.green), component(element.blue),
                            component(element.alpha));
}

double between(double first, double second, float part) {
    return static_cast<float>(first) + (static_cast<float>(second) - static_cast<float>(first)) * part;
}

CTGradientElement linear(const CTGradientElement &first, const CTGradientElement &second, float part) {
    return {between(first.red, second.red, part), between(first.green, second.green, part),
            between(first.blue, second.blue, part), between(first.alpha, second.alpha, part)};
}

struct HueSaturationValue {
    std::optional<double> hue; ///< degrees; greys have none
    double saturation;
    double value;
};

HueSaturationValue hueSaturationValue(const CTGradientElement &color) {
    const double value = std::max({color.red, color.green, color.blue});
    const double span = value - std::min({color.red, color.green, color.blue});
    if (span <= 0)
        return {std::nullopt, 0, value};
    double sextant;
    if (value == color.red)
        sextant = (color.green - color.blue) / span;
    else if (value == color.green)
        sextant = 2 + (color.blue - color.red) / span;
    else
        sextant = 4 + (color.red - color.green) / span;
    return {sextant < 0 ? 60 * sextant + 360 : 60 * sextant, span / value, value};
}

CTGradientElement fromHueSaturationValue(double hue, double saturation, double value) {
    const auto component = [&](double shift) {
        const double sextant = std::fmod(shift + hue / 60, 6);
        return value - value * saturation * std::clamp(std::min(sextant, 4 - sextant), 0.0, 1.0);
    };
    return {component(5), component(3), component(1)};
}

// Between two equal hues neither direction moves; otherwise hues rise to the second one, or fall to it.
CTGradientElement chromatic(const CTGradientElement &first, const CTGradientElement &second, float part,
                            bool rising) {
    const HueSaturationValue from = hueSaturationValue(first);
    const HueSaturationValue to = hueSaturationValue(second);
    const double fromHue = from.hue.value_or(to.hue.value_or(0));
    double toHue = to.hue.value_or(from.hue.value_or(0));
    if (rising && toHue < fromHue)
        toHue += 360;
    if (!rising && toHue > fromHue)
        toHue -= 360;
    const double hue = std::fmod(between(fromHue, toHue, part) + 360, 360);
    CTGradientElement color = fromHueSaturationValue(hue, between(from.saturation, to.saturation, part),
                                                     between(from.value, to.value, part));
    color.alpha = between(first.alpha, second.alpha, part);
    return color;
}

CTGradientElement risingHues(const CTGradientElement &first, const CTGradientElement &second, float part) {
    return chromatic(first, second, part, true);
}

CTGradientElement fallingHues(const CTGradientElement &first, const CTGradientElement &second, float part) {
    return chromatic(first, second, part, false);
}

CTGradient withStops(std::initializer_list<std::pair<float, QColor>> stops) {
    CTGradient gradient;
    for (const auto &[position, color] : stops)
        gradient.addElement(element(color, position));
    return gradient;
}

void warnIndexBeyondBounds(size_t index) {
    qWarning("-[CTGradient removeColorStopAtIndex:]: index (%i) beyond bounds", static_cast<int>(index));
}

std::optional<CTGradientElement> elementOf(const QVariant &numbers) {
    const QVariantList list = numbers.toList();
    const auto isFinite = [](const QVariant &number) { return std::isfinite(number.toDouble()); };
    if (list.size() != 5 || !std::all_of(list.begin(), list.end(), isFinite))
        return std::nullopt;
    return CTGradientElement{list[0].toDouble(), list[1].toDouble(), list[2].toDouble(), list[3].toDouble(),
                             list[4].toFloat()};
}

} // namespace

QLineF gradientAxis(const QRectF &rectangle, float angle) {
    if (angle == 0)
        return {rectangle.topLeft(), rectangle.topRight()};
    if (angle == 90)
        return {rectangle.bottomLeft(), rectangle.topLeft()};
    const double width = rectangle.width();
    const double height = rectangle.height();
    const double radians = static_cast<double>(angle) * std::numbers::pi / 180;
    double length;
    if (std::abs(std::tan(radians)) <= 1) {
        length = std::abs(std::sin(radians)) * (height - std::abs(std::tan(radians)) * width) +
                 width / std::abs(std::cos(radians));
    } else {
        const double turned = radians - std::numbers::pi / 2;
        length = std::abs(std::sin(turned)) * (width - std::abs(std::tan(turned)) * height) +
                 height / std::abs(std::cos(turned));
    }
    const QPointF half = QPointF(std::cos(radians), -std::sin(radians)) * (length / 2);
    return {rectangle.center() - half, rectangle.center() + half};
}

CTGradient::CTGradient() {
    setGradientBlendingMode(CTGradientBlendingMode::Linear);
}

CTGradient CTGradient::gradientWithBeginningColor(const QColor &beginningColor, const QColor &endingColor) {
    return withStops({{0.0F, beginningColor}, {1.0F, endingColor}});
}

CTGradient CTGradient::aquaSelectedGradient() {
    return withStops({{0.0F, QColor(0x93C1F6)},
                      {0.5F, QColor(0x6CA6F0)},
                      {0.5F, QColor(0x4990EA)},
                      {1.0F, QColor(0x8FD4FF)}});
}

CTGradient CTGradient::aquaNormalGradient() {
    return withStops({{0.0F, QColor(0xF7F7F7)},
                      {0.5F, QColor(0xEBEBEB)},
                      {0.5F, QColor(0xDEDEDE)},
                      {1.0F, QColor(0xFCFCFC)}});
}

CTGradient CTGradient::aquaPressedGradient() {
    return withStops({{0.0F, QColor(0xCCCCCC)},
                      {0.5F, QColor(0xB8B8B8)},
                      {0.5F, QColor(0xA6A6A6)},
                      {1.0F, QColor(0xD4D4D4)}});
}

CTGradient CTGradient::unifiedSelectedGradient() {
    return gradientWithBeginningColor(QColor(0xD9D9D9), QColor(0xF2F2F2));
}

CTGradient CTGradient::unifiedNormalGradient() {
    return gradientWithBeginningColor(QColor(0xBFBFBF), QColor(0xD9D9D9));
}

CTGradient CTGradient::unifiedPressedGradient() {
    return gradientWithBeginningColor(QColor(0x999999), QColor(0xB3B3B3));
}

CTGradient CTGradient::unifiedDarkGradient() {
    return gradientWithBeginningColor(QColor(0x969696), QColor(0xC4C4C4));
}

CTGradient CTGradient::sourceListSelectedGradient() {
    return gradientWithBeginningColor(QColor(0x0F5FD8), QColor(0x4FA5F5));
}

CTGradient CTGradient::sourceListUnselectedGradient() {
    return gradientWithBeginningColor(QColor(0x6E86A8), QColor(0xA5B7D2));
}

CTGradient CTGradient::rainbowGradient() {
    CTGradient gradient = gradientWithBeginningColor(QColor::fromRgbF(1, 0, 0), QColor::fromRgbF(0.5F, 0, 1));
    gradient.setGradientBlendingMode(CTGradientBlendingMode::Chromatic);
    return gradient;
}

CTGradient CTGradient::hydrogenSpectrumGradient() {
    CTGradient gradient;
    // The four visible Balmer lines, between 380 and 680 nanometres.
    const std::pair<float, QColor> lines[] = {{410.2F, QColor(0x7E00DB)},
                                              {434.0F, QColor(0x2A00FF)},
                                              {486.1F, QColor(0x00EFFF)},
                                              {656.3F, QColor(0xFF0000)}};
    gradient.addElement(element(Qt::black, 0));
    for (const auto &[wavelength, color] : lines) {
        const float position = (wavelength - 380) / 300;
        gradient.addElement(element(Qt::black, position - 0.01F));
        gradient.addElement(element(color, position));
        gradient.addElement(element(Qt::black, position + 0.01F));
    }
    gradient.addElement(element(Qt::black, 1));
    return gradient;
}

void CTGradient::addElement(const CTGradientElement &element) {
    const auto behind = std::upper_bound(
        elements.begin(), elements.end(), element.position,
        [](float position, const CTGradientElement &stop) { return position < stop.position; });
    elements.insert(behind, element);
}

void CTGradient::setGradientBlendingMode(CTGradientBlendingMode blendingMode) {
    mode = blendingMode;
    switch (mode) {
    case CTGradientBlendingMode::Linear:
        gradientFunction = linear;
        break;
    case CTGradientBlendingMode::Chromatic:
        gradientFunction = risingHues;
        break;
    case CTGradientBlendingMode::InverseChromatic:
        gradientFunction = fallingHues;
        break;
    }
}

QColor CTGradient::colorAtPosition(float position) const {
    if (elements.empty())
        return QColor(Qt::white);
    if (!(position > elements.front().position))
        return colorOf(elements.front());
    if (position >= elements.back().position)
        return colorOf(elements.back());
    const auto next =
        std::upper_bound(elements.begin(), elements.end(), position,
                         [](float wanted, const CTGradientElement &stop) { return wanted < stop.position; });
    const CTGradientElement &first = *std::prev(next);
    return colorOf(
        gradientFunction(first, *next, (position - first.position) / (next->position - first.position)));
}

QColor CTGradient::colorStopAtIndex(size_t index) const {
    if (index >= elements.size()) {
        warnIndexBeyondBounds(index);
        return {};
    }
    return colorOf(elements[index]);
}

CTGradient CTGradient::addColorStop(const QColor &color, float position) const {
    CTGradient copy = *this;
    copy.addElement(element(color, position));
    return copy;
}

CTGradient CTGradient::removeColorStopAtIndex(size_t index) const {
    CTGradient copy = *this;
    if (index < elements.size())
        copy.elements.erase(copy.elements.begin() + static_cast<ptrdiff_t>(index));
    else
        warnIndexBeyondBounds(index);
    return copy;
}

CTGradient CTGradient::removeColorStopAtPosition(float position) const {
    CTGradient copy = *this;
    const auto stop =
        std::find_if(copy.elements.begin(), copy.elements.end(),
                     [&](const CTGradientElement &candidate) { return candidate.position == position; });
    if (stop != copy.elements.end())
        copy.elements.erase(stop);
    else
        qWarning("-[CTGradient removeColorStopAtPosition:]: no such colorStop at position (%f)",
                 static_cast<double>(position));
    return copy;
}

CTGradient CTGradient::gradientWithAlphaComponent(double alpha) const {
    CTGradient copy = *this;
    for (CTGradientElement &stop : copy.elements)
        stop.alpha = alpha;
    return copy;
}

CTGradient CTGradient::gradientWithBlendingMode(CTGradientBlendingMode blendingMode) const {
    CTGradient copy = *this;
    copy.setGradientBlendingMode(blendingMode);
    return copy;
}

// Between its stops the painter only blends linearly in RGB; close samples serve every mode.
void CTGradient::setStopsOf(QGradient &gradient) const {
    constexpr int kSamples = 256;
    QGradientStops stops;
    for (int i = 0; i <= kSamples; ++i) {
        const float position = static_cast<float>(i) / kSamples;
        stops.append({static_cast<double>(position), colorAtPosition(position)});
    }
    gradient.setStops(stops);
}

void CTGradient::fillRect(QPainter &painter, const QRectF &rectangle, float angle) const {
    const QLineF axis = gradientAxis(rectangle, angle);
    QLinearGradient gradient(axis.p1(), axis.p2());
    setStopsOf(gradient);
    painter.fillRect(rectangle, gradient);
}

void CTGradient::radialFillRect(QPainter &painter, const QRectF &rectangle) const {
    QRadialGradient gradient(rectangle.center(), QLineF(rectangle.center(), rectangle.topLeft()).length());
    setStopsOf(gradient);
    painter.fillRect(rectangle, gradient);
}

void CTGradient::drawSwatchInRect(QPainter &painter, const QRectF &rectangle) const {
    fillRect(painter, rectangle, 0);
}

bool CTGradient::encodeWithCoder(QVariant &coder) const {
    if (coder.typeId() != QMetaType::QVariantMap) {
        qWarning("%s", kOnlyKeyedCoders);
        return false;
    }
    QVariantList stops;
    for (const CTGradientElement &stop : elements)
        stops.append(QVariant(QVariantList{stop.red, stop.green, stop.blue, stop.alpha, stop.position}));
    QVariantMap map = coder.toMap();
    map[kElementsKey] = stops;
    map[kElementCountKey] = static_cast<int>(elements.size());
    map[kBlendingModeKey] = static_cast<int>(mode);
    coder = map;
    return true;
}

bool CTGradient::initWithCoder(const QVariant &coder) {
    if (coder.typeId() != QMetaType::QVariantMap) {
        qWarning("%s", kOnlyKeyedCoders);
        return false;
    }
    const QVariantMap map = coder.toMap();
    const QVariantList stops = map.value(kElementsKey).toList();
    const int storedMode = map.value(kBlendingModeKey, -1).toInt();
    if (map.value(kElementCountKey, -1).toInt() != stops.size() || storedMode < 0 || storedMode > 2)
        return false;
    CTGradient read;
    for (const QVariant &stop : stops) {
        const std::optional<CTGradientElement> decoded = elementOf(stop);
        if (!decoded)
            return false;
        read.addElement(*decoded);
    }
    read.setGradientBlendingMode(static_cast<CTGradientBlendingMode>(storedMode));
    *this = read;
    return true;
}

} // namespace tristop
