#pragma once

#include "core/TqExport.h"
#include "graphics/export/ExportDevice.h"
#include "graphics/export/eps/EPSPage.h"

#include <iosfwd>
#include <memory>

class EPSPaintDevice;

/// EPSDevice: the Device that exports a drawing as Encapsulated PostScript
/// by writing text from its primitives. It has no painter; the composites it does
/// not write itself (polylines, polygons, arrows, aligned text) reach it through the
/// primitives. It writes exactly what EPSEngine writes for the same operation: both go through
/// one internal writer.
///
/// Use: construct, open(source, target), draw, endPath(), close(), endOfPage() (EPSPage). Drawing
/// coordinates are the source's device units; the header maps the source rectangle onto the
/// target rectangle of the page, whose device units are fifths of a PostScript point. Text is
/// written in one of the 35 standard PostScript fonts (PostScriptFont) and measured with the
/// system face of the same metrics, so that text laid out through this device fits what is
/// printed.
///
/// State set before open is kept but not written, except the pen width, which the header
/// writes; nothing is written after close but endOfPage.
class TQ_EXPORT EPSDevice : public ExportDevice, public EPSPage {
public:
    ///@{
    /// device: the device whose drawing is exported (the window's), or null; its display
    /// transformation is taken over so that sheet coordinates map as they do there. jobName
    /// is kept for the caller (the header has no line for it). The text goes to out,
    /// which must outlive the device; parameters give the paper, the orientation and the
    /// grey-scale option, and are copied.
    EPSDevice(wsiDevice* device, const char* jobName, std::ostream& out,
              const ExportParameters& parameters);
    ~EPSDevice() override;
    ///@}

    // --- Fonts and measures -----------------------------------------------------------------
    /// Records font as the selected one (writes nothing: the text primitives write the font
    /// they draw in). Returns font.
    WsiFont& selectFont(WsiFont& font) override;
    /// The measures of the selected font as printed: the standard PostScript font it maps to
    /// (Helvetica when unknown), at its size in drawing units. Owned by the device, valid
    /// until the next call. pixelBox, getTextExtent and aligned text measure through it.
    WsiFontMetric& newFontMetric() override;
    ///@{
    /// A page without a painter, used for measuring.
    QPaintDevice* measuringDevice() override;
    QPaintDevice& paintDevice() override;
    ///@}

    // --- Drawing ----------------------------------------------------------------------------
    /// The circle of r's centre with the mean of its half axes as radius, filled in the
    /// current colour when filled, stroked.
    void drawEllipseUnTransformed(const DeviceRectangle& r, bool filled) override;
    /// Arrow heads as filled polygons, then the lines (wsiDevice's composite).
    void drawCappedPolylineUnTransformed(wsiLineCap start, wsiLineCap end,
                                         const DevicePoint& capSize, unsigned short n,
                                         DevicePoint* points) override;
    using Device::drawCappedPolylineUnTransformed;
    /// Filled in color and stroked in it (the outline included); fewer than 2 points write
    /// nothing; colour 0 fills in the current colour.
    void filledPolygonUnTransformed(wsiColor color, unsigned short n, DevicePoint* points) override;
    using Device::filledPolygonUnTransformed;

protected:
    void primitiveMoveTo(long x, long y) override;
    /// Writes the line from the current point, clipped to the clip rectangle, and makes
    /// (x, y) the current point.
    void primitiveLineTo(long x, long y) override;
    /// A filled four-corner polygon in primitiveColor() (which erase sets to the background
    /// colour without recording it as the drawing colour).
    void primitiveFilledRect(const DeviceRectangle& r) override;
    ///@{
    /// The text in the standard PostScript font of font, at its size in drawing units, in the
    /// current colour; advance is its width as measured by newFontMetric. A clip rectangle
    /// set before is set again around the text. (A clip replaces the previous one: grestore,
    /// gsave, the rectangle's path, clip; so callers set colour, dash and width again after
    /// it.)
    void primitiveDrawText(const char* text, const DevicePoint& at, int length, WsiFont& font,
                           long& advance) override;
    void primitiveDrawAlignedText(const char* text, const DevicePoint& at, int length,
                                  WsiFont& font, wsiAlignH h, wsiAlignV v,
                                  DeviceRectangle& bounds) override;
    ///@}

    /// Sets the display resolution to the device units per inch that follow from the font
    /// scale factor.
    void scaleChanged() override;
    ExportWriter& exportWriter() override;
    const ExportWriter& exportWriter() const override;

private:
    std::unique_ptr<EPSPaintDevice> m_measuringDevice;
    std::unique_ptr<WsiFontMetric> m_fontMetric;
};
