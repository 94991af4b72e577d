#include "graphics/device/QtConversion.h"

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
