#pragma once

#include "core/TqExport.h"
#include "graphics/device/wsiTypes.h"

#include <QColor>
#include <QPainter>

/// QtConversion: the fixed tables that turn the device vocabulary into Qt's.
class TQ_EXPORT QtConversion {
public:
    /// 0 gives an invalid (default) QColor, meaning no colour; 1 and 18 white; 2, 3, 19 and
    /// every value above black; 3 to 18 the markup colours.
    static QColor asQColor(wsiColor color);
    /// Indexed by style + 1: -1 custom dash, 0 solid, 1 dash, 2 dot, 3 dash-dot,
    /// 4 dash-dot-dot, 5 no pen. A value outside the table gives a solid line.
    static Qt::PenStyle asPenStyle(wsiPenStyle style);
    /// The reverse of asPenStyle: the style whose Qt style is style. A Qt style outside its
    /// table gives a solid line, as a style outside the table does there.
    static wsiPenStyle asWsiPenStyle(Qt::PenStyle style);
    /// The reverse of asQColor: the colour 3 to 18 whose Qt colour is nearest to color in RGB
    /// (so exact for every colour asQColor gives, black and white coming out as 3 and 18);
    /// wsiNoColor for an invalid colour.
    static wsiColor nearestWsiColor(const QColor& color);
    /// Copy draws over, Xor combines source and destination, Invert inverts the destination.
    static QPainter::CompositionMode asCompositionMode(wsiDrawMode mode);
};
