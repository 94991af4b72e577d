#pragma once

#include "core/TqExport.h"
#include "graphics/export/ExportDevice.h"

#include <QImage>
#include <fstream>
#include <memory>

class SVGWriter;

/// SVGDevice: the Device that exports a drawing as an SVG 1.1 file, written from its
/// primitives without a painter. It draws the picture a painter draws (square caps, bevel
/// joins, the painter's dash patterns, polygons filled odd-even) in compact form: primitives
/// of one style in a row share one element, text is a `<text>` element in the font's family,
/// size and styles. One device unit is one pixel at the resolution given (96 per inch unless
/// said otherwise); the canvas is width x height device units with its origin at the top left.
///
/// Use: construct, draw, close() (or let the destructor close it). A file that cannot be
/// opened leaves a device that draws nothing (isOpen() false, close() false).
class TQ_EXPORT SVGDevice : public ExportDevice {
public:
    ///@{
    /// An SVG file of width x height device units, its view box the same, titled jobName
    /// (null for none).
    SVGDevice(const char* fileName, const char* jobName, int width, int height,
              int resolution = 96);
    ~SVGDevice() override;
    ///@}

    /// Whether the file could be opened for writing and is not closed yet.
    bool isOpen() const { return m_open; }
    /// Ends the document and the file; true when it was written whole. Later calls return
    /// false.
    [[nodiscard]] bool close();

    ///@{
    /// An image of the device's resolution without pixels to speak of: text is measured at
    /// that resolution, so that text laid out through this device fits what a painter of
    /// that resolution draws. Where it is the resolution that fonts are measured at without
    /// a device, measuringDevice is null, and the device shares those measures.
    QPaintDevice& paintDevice() override;
    QPaintDevice* measuringDevice() override;
    ///@}

    // --- Drawing ----------------------------------------------------------------------------
    ///@{
    /// Written as subpaths of the stroke in the current colour, width and dash.
    void drawPolylineUnTransformed(unsigned short n, DevicePoint* points) override;
    using wsiDevice::drawPolylineUnTransformed;
    void drawPolygonUnTransformed(unsigned short n, DevicePoint* points) override;
    using wsiDevice::drawPolygonUnTransformed;
    ///@}
    /// Filled in color and outlined in it with the current width and dash; colour 0 fills
    /// in the current colour.
    void filledPolygonUnTransformed(wsiColor color, unsigned short n, DevicePoint* points) override;
    using wsiDevice::filledPolygonUnTransformed;
    /// Outlined, and filled in the current colour when filled.
    void drawEllipseUnTransformed(const DeviceRectangle& r, bool filled) override;
    /// A square of the pen's width (at least one unit) around the point.
    void setPixel(long x, long y) override;

protected:
    /// The line from the current point, which stays where it was.
    void primitiveLineTo(long x, long y) override;
    /// Filled in primitiveColor(), without outline.
    void primitiveFilledRect(const DeviceRectangle& r) override;
    ///@{
    /// The text in the current colour; advance is its width as measured on measuringDevice.
    void primitiveDrawText(const char* text, const DevicePoint& at, int length, WsiFont& font,
                           long& advance) override;
    void primitiveDrawAlignedText(const char* text, const DevicePoint& at, int length,
                                  WsiFont& font, wsiAlignH h, wsiAlignV v,
                                  DeviceRectangle& bounds) override;
    ///@}
    ExportWriter& exportWriter() override;
    const ExportWriter& exportWriter() const override;

private:
    /// Declared before the writer, which refers to it.
    std::ofstream m_file;
    std::unique_ptr<SVGWriter> m_writer;
    QImage m_measuring;
    int m_resolution;
    bool m_measureOnDefault = false;
    bool m_open = false;
};
