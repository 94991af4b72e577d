// MIFEngine: the Qt paint engine that exports what a TqPainter paints as a MIF file, through
// the MIFWriter the MIF device uses, so the same drawing gives the same text either way.
// Paint on paintDevice(); close() writes the file.
#pragma once

#include "core/TqExport.h"
#include "graphics/export/mif/MIFPaintDevice.h"
#include "graphics/export/mif/MIFWriter.h"

#include <QPaintEngine>
#include <QTransform>
#include <vector>

class TQ_EXPORT MIFEngine : public QPaintEngine {
public:
    // Writes to out (not owned) when closed; drawing is the drawing's extent in device units
    // (see MIFWriter), and the size of paintDevice().
    MIFEngine(const char* jobName, std::ostream& out, const ExportParameters& parameters,
              const DeviceRectangle& drawing);

    // The device a painter paints on to reach this engine, owned by the engine.
    QPaintDevice& paintDevice() { return m_device; }
    // The writer holding the file's state, owned by the engine.
    MIFWriter& writer() { return m_writer; }

    // --- Tables (see MIFWriter) -------------------------------------------------------------
    void startTable(const char* title, bool titleBelow) { m_writer.startTable(title, titleBelow); }
    void endTable() { m_writer.endTable(); }
    void startHeader() { m_writer.startHeader(); }
    void endHeader() { m_writer.endHeader(); }
    void startBody() { m_writer.startBody(); }
    void endBody() { m_writer.endBody(); }
    void startRow() { m_writer.startRow(); }
    void endRow() { m_writer.endRow(); }
    void startCell(int columns = 1) { m_writer.startCell(columns); }
    void writeCellText(const char* text) { m_writer.writeCellText(text); }
    void endCell() { m_writer.endCell(); }

    // --- The file ---------------------------------------------------------------------------
    // The arrow type of an arrow-head size, owned by the writer.
    const MIFArrowType& getArrowType(const DevicePoint& size) {
        return m_writer.getArrowType(size);
    }
    // Assembles the file on the stream; false when the stream failed or it was closed before.
    // Ending the painter does not close the file.
    [[nodiscard]] bool close() { return m_writer.close(); }

    // --- The paint engine -------------------------------------------------------------------
    // Every feature is declared, so that the painter hands shapes over untransformed and the
    // engine maps them itself (coordinates are rounded to device units).
    bool begin(QPaintDevice* device) override;
    bool end() override;
    Type type() const override { return QPaintEngine::User; }
    // Takes the pen (colour, style, width), the brush, the transform and the clip's bounding
    // rectangle, each only when the painter marks it changed.
    void updateState(const QPaintEngineState& state) override;
    // One line object each, clipped.
    void drawLines(const QLineF* lines, int lineCount) override;
    using QPaintEngine::drawLines;
    // With a brush a filled polygon; with a pen (or without a brush) the four edges as lines.
    void drawRects(const QRectF* rects, int rectCount) override;
    using QPaintEngine::drawRects;
    // Filled when the painter has a brush.
    void drawEllipse(const QRectF& r) override;
    using QPaintEngine::drawEllipse;
    // Polylines as lines; polygons as drawRects does their outline and fill.
    void drawPolygon(const QPointF* points, int pointCount, PolygonDrawMode mode) override;
    using QPaintEngine::drawPolygon;
    // Straight elements as lines and cubic elements as curves; a path's fill is not written.
    void drawPath(const QPainterPath& path) override;
    // A left-aligned text line at p, on the baseline.
    void drawTextItem(const QPointF& p, const QTextItem& textItem) override;
    // Pixels and points have no MIF form: these write nothing.
    void drawPixmap(const QRectF& r, const QPixmap& pm, const QRectF& sr) override;
    void drawPoints(const QPointF* points, int pointCount) override;
    using QPaintEngine::drawPoints;

private:
    DevicePoint map(const QPointF& p) const;
    // Maps the points into m_points (at most 65,535 of them) and returns their count.
    unsigned short mapPoints(const QPointF* points, int pointCount);
    void drawOutline(unsigned short n, bool closed);

    MIFWriter m_writer;
    MIFPaintDevice m_device;
    QTransform m_transform;
    QColor m_brushColor;
    bool m_hasPen = true;
    bool m_hasBrush = false;
    std::vector<DevicePoint> m_points;
};
