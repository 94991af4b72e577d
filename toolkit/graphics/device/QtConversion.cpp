#include "graphics/device/QtConversion.h"

#include <array>
#include <limits>

QColor QtConversion::asQColor(wsiColor color) {
    switch (color) {
    case wsiNoColor:
        return QColor();
    case wsiSystemWhite:
    case wsiWhite:
        return QColor(Qt::white);
    case wsiDarkGray:
        return QColor(Qt::darkGray);
    case wsiGray:
        return QColor(Qt::gray);
    case wsiPaleGray:
        return QColor(Qt::lightGray);
    case wsiDarkRed:
        return QColor(Qt::darkRed);
    case wsiRed:
        return QColor(Qt::red);
    case wsiPaleRed:
        return QColor(243, 84, 94);
    case wsiDarkGreen:
        return QColor(Qt::darkGreen);
    case wsiGreen:
        return QColor(Qt::green);
    case wsiPaleGreen:
        return QColor(0, 255, 128);
    case wsiDarkBlue:
        return QColor(Qt::darkBlue);
    case wsiBlue:
        return QColor(Qt::blue);
    case wsiPaleBlue:
        return QColor(0, 255, 255);
    case wsiPurple:
        return QColor(255, 0, 255);
    case wsiYellow:
        return QColor(Qt::yellow);
    default:
        return QColor(Qt::black);
    }
}

Qt::PenStyle QtConversion::asPenStyle(wsiPenStyle style) {
    static constexpr Qt::PenStyle table[] = {
        Qt::CustomDashLine, Qt::SolidLine,      Qt::DashLine, Qt::DotLine,
        Qt::DashDotLine,    Qt::DashDotDotLine, Qt::NoPen};
    const int index = static_cast<int>(style) + 1;
    if (index < 0 || index >= static_cast<int>(std::size(table)))
        return Qt::SolidLine;
    return table[index];
}

wsiPenStyle QtConversion::asWsiPenStyle(Qt::PenStyle style) {
    switch (style) {
    case Qt::CustomDashLine:
        return wsiPenCustomDash;
    case Qt::DashLine:
        return wsiPenDash;
    case Qt::DotLine:
        return wsiPenDot;
    case Qt::DashDotLine:
        return wsiPenDashDot;
    case Qt::DashDotDotLine:
        return wsiPenDashDotDot;
    case Qt::NoPen:
        return wsiPenNull;
    default:
        return wsiPenSolid;
    }
}

wsiColor QtConversion::nearestWsiColor(const QColor& color) {
    if (!color.isValid())
        return wsiNoColor;
    // Exports ask this for every colour change: the candidates are converted once.
    static const auto candidates = [] {
        std::array<QRgb, wsiWhite - wsiBlack + 1> rgb{};
        for (int value = wsiBlack; value <= wsiWhite; ++value)
            rgb[std::size_t(value - wsiBlack)] = asQColor(static_cast<wsiColor>(value)).rgb();
        return rgb;
    }();
    const QRgb rgb = color.rgb();
    wsiColor best = wsiBlack;
    long long bestDistance = std::numeric_limits<long long>::max();
    for (int value = wsiBlack; value <= wsiWhite; ++value) {
        const QRgb candidate = candidates[std::size_t(value - wsiBlack)];
        const long long dr = qRed(rgb) - qRed(candidate), dg = qGreen(rgb) - qGreen(candidate),
                        db = qBlue(rgb) - qBlue(candidate);
        const long long distance = dr * dr + dg * dg + db * db;
        if (distance < bestDistance) {
            bestDistance = distance;
            best = static_cast<wsiColor>(value);
        }
    }
    return best;
}

QPainter::CompositionMode QtConversion::asCompositionMode(wsiDrawMode mode) {
    switch (mode) {
    case wsiDrawXor:
        return QPainter::RasterOp_SourceXorDestination;
    case wsiDrawInvert:
        return QPainter::RasterOp_NotDestination;
    default:
        return QPainter::CompositionMode_SourceOver;
    }
}
