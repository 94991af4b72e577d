#include "graphics/device/TqPainter.h"

void TqPainter::setPenColor(const QColor& color) {
    QPen p = pen();
    p.setColor(color);
    setPen(p);
}

void TqPainter::setPenStyle(Qt::PenStyle style) {
    QPen p = pen();
    p.setStyle(style);
    setPen(p);
}

void TqPainter::setPenWidth(int width) {
    QPen p = pen();
    p.setWidth(width);
    setPen(p);
}

void TqPainter::setBrushColor(const QColor& color) {
    QBrush b = brush();
    b.setColor(color);
    if (b.style() == Qt::NoBrush)
        b.setStyle(Qt::SolidPattern);
    setBrush(b);
}
