#pragma once

#include "graphics/device/wsiTypes.h"
#include "graphics/export/ExportParameters.h"
#include "graphics/export/ExportWriter_p.h"
#include "graphics/geometry/DevicePoint.h"
#include "graphics/geometry/DeviceRectangle.h"

#include <QColor>
#include <QPaintDevice>
#include <cstddef>
#include <ostream>
#include <string_view>

/// The paint device of the EPS writers: a page of a given size in device units whose
/// resolution tells Qt how many device units an inch has. EPSEngine paints on one whose
/// paintEngine() is the engine; EPSDevice measures text on one without an engine.
class EPSPaintDevice final : public QPaintDevice {
public:
    explicit EPSPaintDevice(QPaintEngine* engine) : m_engine(engine) {}
    ~EPSPaintDevice() override;

    ///@{
    /// size in device units; unitsPerInch is rounded to a whole number of at least 1.
    void setPage(const DevicePoint& size, double unitsPerInch);
    QPaintEngine* paintEngine() const override { return m_engine; }
    ///@}

protected:
    int metric(PaintDeviceMetric m) const override;

private:
    QPaintEngine* m_engine;
    DevicePoint m_size{3060, 3960};
    int m_unitsPerInch = 360;
};

/// EPSWriter: the one place where the Encapsulated PostScript text of an export is written.
/// EPSDevice (device primitives) and EPSEngine (a Qt paint engine) both call it, so that the
/// same operation writes the same text whichever side it comes from. Internal to the library.
class EPSWriter final : public ExportWriter {
public:
    ///@{
    /// Writes to out's stream buffer (out must outlive the writer); the grey-scale option of
    /// parameters chooses "setgray" over "setrgbcolor". A stream that does not take the text
    /// records "the output stream failed" (error()) and is set bad.
    EPSWriter(const char* jobName, std::ostream& out, const ExportParameters& parameters);
    ~EPSWriter() override;
    ///@}

    // --- The page ---------------------------------------------------------------------------
    /// Writes the header for source mapped onto target on a page of deviceSize device units
    /// (turned by the parameters' orientation and paper feed), computes the font scale factor,
    /// forgets any clip rectangle and starts drawing: the path-open and drawing flags are set.
    void open(const DeviceRectangle& source, const DeviceRectangle& target,
              const DevicePoint& deviceSize);
    /// Strokes lines still pending, writes "grestore\ngrestore\n" and stops drawing; nothing
    /// when not drawing.
    void close();
    /// "showpage\n", always.
    void endOfPage();
    ///@{
    /// Between open and close: the drawing operations write only then.
    bool isDrawing() const { return m_drawing; }
    bool wasOpened() const { return m_opened; }
    bool pageEnded() const { return m_pageEnded; }
    ///@}

    ///@{
    /// Points on paper per device unit of the source, vertically: the target's height over
    /// the source's, over 5 (1 / 5 when either height is not above zero). Font sizes in
    /// points are divided by it to give sizes in drawing units.
    /// The paper of parameters in device units, upright, and the page as drawn (the paper
    /// turned for a landscape export).
    static DevicePoint paperSize(const ExportParameters& parameters);
    static DevicePoint deviceSize(const ExportParameters& parameters);
    ///@}
    /// The text bytes of the first length bytes of text (all of them when length < 0; never
    /// past its end).
    static std::string_view textBytes(const char* text, int length);

    static double fontScaleFactorFor(const DeviceRectangle& source, const DeviceRectangle& target);
    void computeFontScaleFactor(const DeviceRectangle& source, const DeviceRectangle& target);
    double fontScaleFactor() const { return m_fontScale; }

    // --- Paths and lines --------------------------------------------------------------------
    ///@{
    /// "stroke\n" when the path-open flag is set; clears it.
    void endPath();
    void closePath();
    void moveTo(long x, long y);
    ///@}
    ///@{
    /// The line from the current point to (x, y), clipped to the clip rectangle when there is
    /// one (nothing when it misses it); (x, y) becomes the current point.
    void lineTo(long x, long y);
    const DevicePoint& currentPoint() const { return m_current; }
    ///@}

    // --- Drawing state ----------------------------------------------------------------------
    ///@{
    /// Colours and widths apply when a path is stroked, so lines still pending are stroked
    /// first (a "stroke\n" otherwise left to the callers, written only when lines were
    /// added since the last stroke). A colour is written as the wsiColor nearest to it
    /// (QtConversion::nearestWsiColor); an invalid colour writes nothing.
    void setColor(const QColor& color) override;
    void setPenStyle(wsiPenStyle style) override;
    void setLineWidth(long width) override;
    long lineWidth() const { return m_lineWidth; }
    void setClipRect(const DeviceRectangle& r) override;
    ///@}
    ///@{
    /// Returns to no clip: "grestore\ngsave\n" alone. Nothing when there is no clip.
    void clearClipRect();
    const DeviceRectangle* clipRect() const { return m_hasClip ? &m_clip : nullptr; }
    ///@}

    // --- Shapes and text --------------------------------------------------------------------
    void curve(const DevicePoint& from, const DevicePoint& first, const DevicePoint& second,
               const DevicePoint& to) override;
    /// The circle of r's centre (its coordinates halved truncating toward zero; radius: the
    /// mean of r's half width and half height, with its fraction); when filled, filled in
    /// fill (the current colour when invalid); stroked when outline, else the path is dropped.
    void ellipse(const DeviceRectangle& r, bool filled, const QColor& fill, bool outline);
    /// The polygon filled in color (the current colour when invalid) and, when outline,
    /// stroked in that colour; nothing for fewer than 2 points.
    void filledPolygon(const QColor& color, std::size_t n, const DevicePoint* points, bool outline);
    /// text (bytes as given) with the left end of its baseline at at, in the standard font
    /// fontName of size (in drawing units), in color.
    void text(std::string_view text, const DevicePoint& at, const char* fontName, double size,
              const QColor& color);

private:
    void strokePending();
    void writeClipPath(const DeviceRectangle& r);
    void writeColor(wsiColor color);

    ///@{
    /// The output: text collects in m_buffer and goes to the stream buffer in one call at the
    /// end of each operation (commit) or when the buffer fills.
    void reserve(std::size_t n) {
        if (m_used + n > sizeof m_buffer)
            flushBuffer();
    }
    void put(std::string_view s);
    void put(char c) {
        reserve(1);
        m_buffer[m_used++] = c;
    }
    void putInt(long long v);
    void putReal(double v);
    void putPoint(long long x, long long y) {
        putInt(x);
        put(' ');
        putInt(y);
    }
    void flushBuffer();
    void streamFailed();
    void commit() {
        if (m_used)
            flushBuffer();
    }
    ///@}

    bool m_grayScale;
    bool m_opened = false;
    bool m_drawing = false;
    bool m_pageEnded = false;
    bool m_pathOpen = false;
    bool m_segmentsPending = false;
    bool m_hasClip = false;
    DeviceRectangle m_clip;
    DevicePoint m_current;
    long m_lineWidth = 0;
    double m_fontScale = 0.2;
    std::size_t m_used = 0;
    char m_buffer[8192];
};
