#pragma once

#include "core/TqExport.h"
#include "graphics/device/WsiFont.h"
#include "graphics/export/ExportWriter_p.h"

#include <QRgb>
#include <QString>
#include <cassert>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// SVGWriter: writes an SVG 1.1 document from device primitives (device units, y down).
/// Consecutive primitives of one style share one element: strokes, fills and filled outlines
/// become the subpaths of one <path>, texts the <text> children of one <g>, so that style is
/// written once per run and not once per primitive. The text collects in a large buffer that
/// goes to the stream in whole blocks. Internal to the library (exported for the fuzz target
/// only, and not installed).
class TQ_EXPORT SVGWriter final : public ExportWriter {
public:
    ///@{
    /// Writes to out's stream buffer (out must outlive the writer). A stream that does not
    /// take the text records "the output stream failed" (error()) and is set bad.
    SVGWriter(const char* jobName, std::ostream& out, const ExportParameters& parameters);
    ~SVGWriter() override;
    ///@}

    // --- The document -----------------------------------------------------------------------
    /// Writes the prolog for a canvas of width x height device units, resolution of them to
    /// the inch (the document's size is given in CSS pixels, 96 to the inch).
    void open(int width, int height, int resolution);
    /// Ends the open element and writes the epilog; afterwards nothing more is written.
    /// True when every byte reached the stream.
    [[nodiscard]] bool close();

    // --- Drawing state ----------------------------------------------------------------------
    ///@{
    /// Recorded; written with the next element that uses it.
    void setColor(const QColor& color) override;
    void setPenStyle(wsiPenStyle style) override;
    void setLineWidth(long width) override;
    void setClipRect(const DeviceRectangle& r) override;
    ///@}

    // --- Shapes and text (current colour, width and dash unless said otherwise) -------------
    /// The line from from to to.
    void line(const DevicePoint& from, const DevicePoint& to);
    /// The lines joining the n points, back to the first when closed; nothing for n < 2.
    void polyline(const DevicePoint* points, std::size_t n, bool closed);
    void curve(const DevicePoint& from, const DevicePoint& first, const DevicePoint& second,
               const DevicePoint& to) override;
    /// The polygon filled in color and, with outline, stroked in it; nothing for n < 2.
    void filledPolygon(QRgb color, const DevicePoint* points, std::size_t n, bool outline);
    /// The area from r's origin (included) to its corner (excluded), filled in color without
    /// outline.
    void filledRect(QRgb color, const DeviceRectangle& r);
    /// The ellipse inscribed in the area of r, stroked, and when filled also filled.
    void ellipse(const DeviceRectangle& r, bool filled);
    /// text with the left end of its baseline at at, in the current colour, in font sized at
    /// unitsPerPoint device units a point. Bytes beyond v_maxText are dropped.
    void text(std::string_view text, const DevicePoint& at, const WsiFont& font,
              double unitsPerPoint);
    /// The longest text written, in bytes.
    static constexpr std::size_t v_maxText = 4096;

    /// The current colour (opaque black at first).
    QRgb color() const { return m_color; }

private:
    enum class Run { None, Stroke, Fill, FillStroke, Text };

    ///@{
    /// Makes the open element one of kind in color (and the current width and dash where it
    /// strokes), ending the open one and starting another when it differs or evenOdd asks
    /// for an element of that fill rule; false when the primitive draws nothing (a stroke
    /// without pen) or nothing is written any more.
    bool beginRun(Run kind, QRgb color, bool evenOdd = false);
    bool beginText(const WsiFont& font, double size);
    void endRun();
    void applyClip();
    ///@}
    ///@{
    /// The clip cut into the geometry, for renderers that ignore clip paths (Qt's own):
    /// lines and fills are cut to the clip rectangle here as well; curves, ellipses and
    /// text have the clip path alone.
    bool insideClip(const DevicePoint* points, std::size_t n) const;
    bool clipSegment(DevicePoint& from, DevicePoint& to) const;
    void clippedPolyline(const DevicePoint* points, std::size_t n, bool closed);
    /// The polygon cut to the clip rectangle, in a buffer of the writer; n is set to its
    /// point count.
    const DevicePoint* clippedPolygon(const DevicePoint* points, std::size_t& n);
    ///@}
    void writeStrokeAttributes(QRgb color);
    void writeOpacity(const char* attribute, QRgb color);

    ///@{
    /// Path data, relative to the pen position but for the first point of an element, with a
    /// command letter only where it differs from the previous one.
    void command(char letter);
    void number(long long v);
    void moveTo(std::int32_t x, std::int32_t y);
    void lineTo(std::int32_t x, std::int32_t y);
    void closeSubpath();
    ///@}

    ///@{
    /// The output buffer: text collects in it and goes to the stream when it fills and at
    /// the end.
    char* room(std::size_t n) {
        assert(n <= v_bufferSize && "SVGWriter: a fragment larger than the buffer");
        if (m_used + n > v_bufferSize)
            flushBuffer();
        return m_buffer.get() + m_used;
    }
    void advanceTo(char* end) { m_used = static_cast<std::size_t>(end - m_buffer.get()); }
    /// Fixed fragments, far shorter than the buffer.
    void put(std::string_view s);
    void putInteger(long long v);
    void putNumber(double v);
    void putEscaped(std::string_view s);
    void flushBuffer();
    static constexpr std::size_t v_bufferSize = 256 * 1024;
    ///@}

    std::unique_ptr<char[]> m_buffer;
    std::size_t m_used = 0;
    bool m_writing = false;

    // The drawing state.
    QRgb m_color = 0xff000000;
    long m_width = 0;
    wsiPenStyle m_style = wsiPenSolid;
    DeviceRectangle m_clip;
    bool m_clipSet = false;

    // The open element and the clip group around it.
    Run m_run = Run::None;
    QRgb m_runColor = 0;
    long m_runWidth = 0;
    wsiPenStyle m_runStyle = wsiPenSolid;
    WsiFont m_runFont;
    double m_runSize = 0;
    bool m_clipOpen = false;
    DeviceRectangle m_writtenClip;
    int m_clipCount = 0;
    // The family written for Qt's default face, found once.
    QString m_defaultFamily;

    // Buffers of polygon clipping, kept from call to call.
    std::vector<std::pair<double, double>> m_clipWork[2];
    std::vector<DevicePoint> m_clipped;

    // Path data state.
    char m_command = 0;
    bool m_separate = false;
    std::int32_t m_penX = 0, m_penY = 0, m_startX = 0, m_startY = 0;
    // False after a subpath that ends off the unit grid: the next one starts absolutely.
    bool m_penKnown = true;
};
