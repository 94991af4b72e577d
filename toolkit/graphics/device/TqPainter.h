#pragma once

#include "core/TqExport.h"

#include <QPainter>

/// TqPainter: the Qt painter through which a Device draws, on a widget, an image or an export
/// engine's paint device, with the pen and brush edits the devices make all the time.
class TQ_EXPORT TqPainter : public QPainter {
public:
    TqPainter() = default;
    /// Begins painting on device at once (isActive() tells whether that worked).
    explicit TqPainter(QPaintDevice* device) : QPainter(device) {}

    ///@{
    /// Each copies the current pen or brush, changes one property and sets it back.
    void setPenColor(const QColor& color);
    void setPenStyle(Qt::PenStyle style);
    void setPenWidth(int width);
    void setBrushColor(const QColor& color);
    ///@}
};
