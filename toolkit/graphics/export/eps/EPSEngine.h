#pragma once

#include "core/TqExport.h"
#include "graphics/export/ExportEngine.h"
#include "graphics/export/eps/EPSPage.h"

#include <iosfwd>
#include <memory>
#include <optional>

class EPSPaintDevice;
class wsiDevice;

/// EPSEngine: the Qt paint engine that exports what a TqPainter paints as Encapsulated
/// PostScript. It writes exactly what EPSDevice writes for the same operation: both go
/// through one internal writer (EPSPage).
///
/// Use: construct, optionally open(source, target) (begin opens with the page as both when
/// it was not), paint with a TqPainter on paintDevice(), end the painter (which closes the
/// page and writes "showpage\n" unless done already).
///
/// What is written from the painter's state (ExportEngine keeps it):
/// - the pen colour as the wsiColor nearest to it (exact for every colour that
///   QtConversion::asQColor gives, so a Device painting here writes the colour
///   table), its style as the wsiPenStyle of the same Qt style (a custom dash writes
///   nothing), its width rounded; a changed pen is written just before the next drawing that
///   strokes, in that order (colour, dash, width), and only what differs from what the
///   PostScript state holds. A clip change resets that state (grestore), so the pen is
///   written again after it;
/// - the brush colour, the same way, fills closed shapes when the brush is not Qt::NoBrush;
/// - the clip as the bounding rectangle of the painter's clip in device units; no clip as
///   grestore/gsave.
/// Coordinates go through the painter's transformation and are rounded to device units;
/// lines, outlines, curves and text are not drawn with Qt::NoPen.
class TQ_EXPORT EPSEngine : public ExportEngine, public EPSPage {
public:
    ///@{
    /// device: the device whose drawing is exported (the window's), or null; kept for the
    /// caller (the painter's transformation maps the drawing). jobName is kept for the caller
    /// (the header has no line for it). The text goes to out, which must outlive the
    /// engine; parameters give paper, orientation and the grey-scale option, and are copied.
    EPSEngine(wsiDevice* device, const char* jobName, std::ostream& out,
              const ExportParameters& parameters);
    ~EPSEngine() override;
    ///@}

    ///@{
    /// The page to paint on: its paintEngine() is this engine, its size deviceSize() and its
    /// resolution the device units per inch of the export. Owned by the engine.
    QPaintDevice& paintDevice();
    wsiDevice* device() const { return m_device; }
    ///@}

    // --- Fonts ------------------------------------------------------------------------------
    /// The standard PostScript font that text in font is written in: its family, weight and
    /// slant mapped by PostScriptFont::nameFor, "Helvetica" (in that weight and slant) for a
    /// family it does not know. A static string; never null.
    const char* selectFont(const QFont& font) const;
    /// The width and height (ascent + descent) in device units of text printed in font, as
    /// the font of selectFont measures at the export's resolution; (0, 0) for a null text.
    /// In a static object, valid until the next call.
    const DevicePoint& pixelBox(const char* text, const QFont& font);

    // --- QPaintEngine -----------------------------------------------------------------------
    /// Opens the page with the whole page as source and target unless open was called.
    bool begin(QPaintDevice* device) override;
    /// Strokes pending lines, closes the page and ends it, each unless done already.
    bool end() override;
    /// A circle as EPSDevice writes it, filled with the brush colour when there is a brush.
    void drawEllipse(const QRectF& r) override;
    using ExportEngine::drawEllipse;
    /// The text at its baseline start, in the standard PostScript font of the item's font.
    void drawTextItem(const QPointF& p, const QTextItem& textItem) override;

protected:
    void scaleChanged() override;
    void pageOpened() override;
    void clipChanged() override;
    void fillPolygon(const DevicePoint* points, std::size_t n) override;
    /// The lines as EPSDevice's polylines write them; nothing with Qt::NoPen.
    void strokePolyline(const DevicePoint* points, std::size_t n, bool closed) override;
    /// As EPSDevice writes a transition curve; nothing with Qt::NoPen.
    void strokeCurve(const DevicePoint& from, const DevicePoint& first, const DevicePoint& second,
                     const DevicePoint& to) override;

private:
    /// The size of font in points, a pixel size taken at the page's resolution.
    double pointSizeOf(const QFont& font) const;
    ///@{
    /// Writes what of the pen differs from the PostScript state; false with Qt::NoPen.
    bool applyPen();
    void forgetWrittenPen();
    ///@}

    wsiDevice* m_device;
    std::unique_ptr<EPSPaintDevice> m_paintDevice;
    ///@{
    /// What the PostScript graphics state holds (nothing known: written before the next use).
    std::optional<wsiColor> m_writtenColor;
    std::optional<wsiPenStyle> m_writtenStyle;
    std::optional<long> m_writtenWidth;
    ///@}
};
