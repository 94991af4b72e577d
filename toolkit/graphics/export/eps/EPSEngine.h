// EPSEngine: the Qt paint engine that exports what a TqPainter paints as Encapsulated
// PostScript. It writes exactly what EPSDevice writes for the same operation:
// both go through one internal writer.
//
// Use: construct, optionally open(source, target) (begin opens with the page as both when
// it was not), paint with a TqPainter on paintDevice(), end the painter (which closes the
// page and writes "showpage\n" unless done already).
//
// What is written from the painter's state, acting only on the dirty flags of updateState:
// - the pen colour as the wsiColor nearest to it (exact for every colour that
//   QtConversion::asQColor gives, so a Device painting here writes the colour
//   table), its style as the wsiPenStyle of the same Qt style (a custom dash writes
//   nothing), its width rounded; a changed pen is written just before the next drawing that
//   strokes, in that order (colour, dash, width), and only what differs from what the
//   PostScript state holds. A clip change resets that state (grestore), so the pen is
//   written again after it;
// - the brush colour, the same way, fills closed shapes when the brush is not Qt::NoBrush;
// - the clip as the bounding rectangle of the clip region or path in device units
//   (intersected with the previous one for Qt::IntersectClip); no clip as grestore/gsave.
// Coordinates go through the painter's transformation and are rounded to device units;
// lines, outlines, curves and text are not drawn with Qt::NoPen.
#pragma once

#include "core/TqExport.h"
#include "graphics/device/wsiTypes.h"
#include "graphics/export/ExportParameters.h"
#include "graphics/geometry/DeviceRectangle.h"

#include <QPaintEngine>
#include <QTransform>
#include <iosfwd>
#include <memory>
#include <optional>
#include <string>

class EPSPaintDevice;
class EPSWriter;
class wsiDevice;

class TQ_EXPORT EPSEngine : public QPaintEngine {
public:
    // device: the device whose drawing is exported (the window's), or null; kept for the
    // caller (the painter's transformation maps the drawing). jobName is kept for the caller
    // (the header has no line for it). The text goes to out, which must outlive the
    // engine; parameters give paper, orientation and the grey-scale option, and are copied.
    EPSEngine(wsiDevice* device, const char* jobName, std::ostream& out,
              const ExportParameters& parameters);
    ~EPSEngine() override;

    // The page to paint on: its paintEngine() is this engine, its size deviceSize() and its
    // resolution the device units per inch of the export. Owned by the engine.
    QPaintDevice& paintDevice();
    wsiDevice* device() const { return m_device; }
    // In place; owned by the engine.
    const char* jobName() const { return m_jobName.c_str(); }

    // --- The page (as EPSDevice) ------------------------------------------------------------
    // Writes the header; always true.
    bool open(const DeviceRectangle& source, const DeviceRectangle& target);
    void close();
    void endOfPage();
    void endPath();
    void closePath();
    void computeFontScaleFactor(const DeviceRectangle& source, const DeviceRectangle& target);
    double fontScaleFactor() const;
    DevicePoint paperSize() const;
    virtual DevicePoint deviceSize() const;

    // --- Fonts ------------------------------------------------------------------------------
    // The standard PostScript font that text in font is written in: its family, weight and
    // slant mapped by PostScriptFont::nameFor, "Helvetica" (in that weight and slant) for a
    // family it does not know. A static string; never null.
    const char* selectFont(const QFont& font) const;
    // The width and height (ascent + descent) in device units of text printed in font, as
    // the font of selectFont measures at the export's resolution; (0, 0) for a null text.
    // In a static object, valid until the next call.
    const DevicePoint& pixelBox(const char* text, const QFont& font);

    // --- QPaintEngine -----------------------------------------------------------------------
    // Opens the page with the whole page as source and target unless open was called.
    bool begin(QPaintDevice* device) override;
    // Strokes pending lines, closes the page and ends it, each unless done already.
    bool end() override;
    Type type() const override;
    void updateState(const QPaintEngineState& state) override;
    void drawLines(const QLine* lines, int lineCount) override;
    void drawLines(const QLineF* lines, int lineCount) override;
    // Fills the path's polygons with the brush, then strokes its lines and cubic curves
    // (each curve as EPSDevice writes a transition curve).
    void drawPath(const QPainterPath& path) override;
    void drawPolygon(const QPoint* points, int pointCount, PolygonDrawMode mode) override;
    void drawPolygon(const QPointF* points, int pointCount, PolygonDrawMode mode) override;
    void drawRects(const QRect* rects, int rectCount) override;
    void drawRects(const QRectF* rects, int rectCount) override;
    // A circle as EPSDevice writes it, filled with the brush colour when there is a brush.
    void drawEllipse(const QRect& r) override;
    void drawEllipse(const QRectF& r) override;
    // The text at its baseline start, in the standard PostScript font of the item's font.
    void drawTextItem(const QPointF& p, const QTextItem& textItem) override;
    // Write nothing.
    void drawImage(const QRectF& r, const QImage& image, const QRectF& sr,
                   Qt::ImageConversionFlags flags) override;
    void drawPixmap(const QRectF& r, const QPixmap& pm, const QRectF& sr) override;
    void drawTiledPixmap(const QRectF& r, const QPixmap& pixmap, const QPointF& s) override;
    void drawPoints(const QPointF* points, int pointCount) override;
    void drawPoints(const QPoint* points, int pointCount) override;

    // --- Conversions ------------------------------------------------------------------------
    // The wsiColor (1 to 18) whose QtConversion::asQColor is nearest to color in RGB; 0 for
    // an invalid colour.
    static wsiColor nearestColor(const QColor& color);
    // Solid 0, dash 1, dot 2, dash-dot 3, dash-dot-dot 4, none 5, custom dash -1.
    static wsiPenStyle penStyleOf(Qt::PenStyle style);

private:
    // The size of font in points, a pixel size taken at the page's resolution.
    double pointSizeOf(const QFont& font) const;
    DevicePoint map(const QPointF& p) const;
    DeviceRectangle mapRect(const QRectF& r) const;
    void updateClip(const QPaintEngineState& state);
    // Writes what of the pen differs from the PostScript state; false with Qt::NoPen.
    bool applyPen();
    void drawPointList(const DevicePoint* points, std::size_t n, bool closed);
    void drawShape(const DevicePoint* points, std::size_t n, bool closed);
    void updatePageMetrics();

    wsiDevice* m_device;
    std::string m_jobName;
    ExportParameters m_parameters;
    std::unique_ptr<EPSWriter> m_writer;
    std::unique_ptr<EPSPaintDevice> m_paintDevice;
    QTransform m_transform;
    wsiColor m_penColor = wsiBlack;
    wsiPenStyle m_penStyle = wsiPenSolid;
    long m_penWidth = 0;
    bool m_noPen = false;
    wsiColor m_brushColor = wsiBlack;
    bool m_brush = false;
    std::optional<DeviceRectangle> m_clip;
    // What the PostScript graphics state holds (nothing known: written before the next use).
    std::optional<wsiColor> m_writtenColor;
    std::optional<wsiPenStyle> m_writtenStyle;
    std::optional<long> m_writtenWidth;
};
