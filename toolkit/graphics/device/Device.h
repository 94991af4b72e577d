#pragma once

#include "core/TqExport.h"
#include "graphics/device/wsiDevice.h"

#include <QColor>
#include <QPoint>

class QPaintDevice;
class TqPainter;

/// Device: the concrete device that draws through a TqPainter (on a widget, an image or an
/// export engine). Without a painter every drawing operation does nothing, safely; export
/// devices derive from it, override the primitives and get the portable composites.
class TQ_EXPORT Device : public wsiDevice {
public:
    /// A device without a painter: it measures text on the default resolution and draws
    /// nothing until setPainter.
    Device();
    ///@{
    /// Draws through painter, which must outlive the device or be replaced first.
    explicit Device(TqPainter& painter);
    ~Device() override;
    ///@}

    // --- The painter ------------------------------------------------------------------------
    /// The painter, or null.
    TqPainter* painter() const { return m_painter; }
    /// Uses painter (null for none) and applies the current drawing state to it.
    void setPainter(TqPainter* painter);
    /// The painter's paint device; a painter must be set (asserted).
    virtual QPaintDevice& paintDevice();
    ///@{
    /// Each copies the painter's pen or brush, changes its colour and sets it back.
    void setPenColor(const QColor& color);
    void setBrushColor(const QColor& color);
    const DevicePoint& currentPoint() const { return m_currentPoint; }
    ///@}

    // --- Process-wide settings --------------------------------------------------------------
    ///@{
    /// Whether drawing code renders for documents (print, export) rather than the screen.
    static bool forDocumentation() { return v_forDocumentation; }
    static void setForDocumentation(bool on) { v_forDocumentation = on; }
    ///@}
    /// Always true: kept for callers that ask before drawing.
    static bool graphicsStillSupported() { return true; }
    /// The device units a caller adds at a line's end to make it inclusive: always 1.
    static int lineEndAdjustment() { return 1; }
    ///@{
    /// Whether the user asked to stop a long drawing (requestBreakExecution since the last
    /// check); the request is consumed by the check. Drawing loops call it between items.
    static bool checkBreakExecution();
    static void requestBreakExecution() { v_breakRequested = true; }
    ///@}
    /// Room for n points in the one QPoint array shared by all devices: grown to exactly n
    /// when n exceeds its capacity (the old contents are dropped), never shrunk. Valid until
    /// the next call that grows it.
    static QPoint* getPolyPoints(long n);
    /// The capacity of that array, in points.
    static long polyPointsCapacity();

    // --- Drawing ----------------------------------------------------------------------------
    ///@{
    /// With a painter, these paint natively; without one they fall back to the portable
    /// composites of wsiDevice (so a painterless export device gets them through its
    /// primitives).
    void drawPolylineUnTransformed(unsigned short n, DevicePoint* points) override;
    using wsiDevice::drawPolylineUnTransformed;
    void drawPolygonUnTransformed(unsigned short n, DevicePoint* points) override;
    using wsiDevice::drawPolygonUnTransformed;
    void filledPolygonUnTransformed(wsiColor color, unsigned short n, DevicePoint* points) override;
    using wsiDevice::filledPolygonUnTransformed;
    void drawCurveUnTransformed(const DevicePoint& from, const DevicePoint& to) override;
    void drawEllipseUnTransformed(const DeviceRectangle& r, bool filled) override;
    ///@}
    ///@{
    /// Forwards to wsiDevice::erase (a fill in the background colour).
    void erase(const DeviceRectangle& r) override;
    void setPenWidth(long width) override;
    ///@}
    /// Draws one point in the current colour.
    void setPixel(long x, long y) override;
    /// Reads the pixel back when the painter draws on a QImage; 0 otherwise.
    wsiRGBColor getPixel(long x, long y) override;
    using wsiDevice::getPixel;
    /// Also makes font the painter's font.
    WsiFont& selectFont(WsiFont& font) override;
    /// The painter's device when there is one.
    QPaintDevice* measuringDevice() override;
    /// Device units per inch of the painter's device.
    void computeDisplayResolution() override;
    /// Copies source's pixels in from (where source draws on a QImage) to to on this device,
    /// scaled, combined by mode. Does nothing for other sources or without a painter.
    void drawBitmap(wsiDevice& source, const DeviceRectangle& from, const DeviceRectangle& to,
                    wsiDrawMode mode);

protected:
    /// Stores (x, y) as the current point; draws nothing.
    void primitiveMoveTo(long x, long y) override;
    /// Draws from the current point to (x, y) and leaves the current point where it was.
    void primitiveLineTo(long x, long y) override;
    /// Fills r (origin inclusive, corner exclusive) in the current colour.
    void primitiveFilledRect(const DeviceRectangle& r) override;
    ///@{
    /// Inverts the pixels of r.
    void primitiveInvertRect(const DeviceRectangle& r) override;
    void primitiveSetBackgroundFillMode(wsiBackgroundFillMode mode) override;
    void primitiveSetDrawMode(wsiDrawMode mode) override;
    void primitiveSetBackgroundColor(wsiColor color) override;
    ///@}
    /// Sets the colour as both the pen colour and the brush colour.
    void primitiveSetColor(wsiColor color) override;
    /// Copies the pen, sets its style through QtConversion::asPenStyle and sets it back.
    void primitiveSetPenStyle(wsiPenStyle style) override;
    ///@{
    /// Clips the painter to r (origin inclusive, corner exclusive).
    void primitiveSetClipRect(const DeviceRectangle& r) override;
    void primitiveDrawText(const char* text, const DevicePoint& at, int length, WsiFont& font,
                           long& advance) override;
    void primitiveDrawAlignedText(const char* text, const DevicePoint& at, int length,
                                  WsiFont& font, wsiAlignH h, wsiAlignV v,
                                  DeviceRectangle& bounds) override;
    ///@}

    /// Copies n device points into the shared QPoint array and returns it.
    static QPoint* asPolyPoints(unsigned short n, const DevicePoint* points);

private:
    static bool v_forDocumentation;
    static bool v_breakRequested;
    TqPainter* m_painter = nullptr;
    DevicePoint m_currentPoint;
};
