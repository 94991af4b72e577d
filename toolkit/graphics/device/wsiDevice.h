#pragma once

#include "core/Model.h"
#include "core/TqExport.h"
#include "graphics/device/WsiFont.h"
#include "graphics/device/wsiTypes.h"
#include "graphics/geometry/DevicePoint.h"
#include "graphics/geometry/DeviceRectangle.h"
#include "graphics/geometry/SheetRectangle.h"
#include "graphics/geometry/TqMatrix.h"

#include <cstdarg>
#include <memory>

class QPaintDevice;

/// wsiDevice: the abstract device everything is drawn through (screen, image, printer,
/// export formats). It holds the sheet-to-device transformation, the clip rectangle and the
/// drawing state, offers drawing in sheet coordinates, and reduces every drawing to a small
/// set of primitive… operations that each concrete device implements. Composite operations
/// (polylines, curves, ellipses, arrows, aligned text) have portable defaults built on the
/// primitives, so an export device need only write its primitives; a device that can do
/// better (the painter-based Device) overrides them.
class TQ_EXPORT wsiDevice : public Dependent {
public:
    wsiDevice();
    ~wsiDevice() override;

    /// The second dispatch of change notification: dependents hear through
    /// update(wsiDevice&, Aspect). A device sends aspectTransformation when its display
    /// transformation is set and aspectVisibleArea when its clip rectangle is set.
    void sendUpdateTo(Dependent& d, Aspect a) override;

    // --- Transformation and visible area ----------------------------------------------------
    ///@{
    /// The sheet-to-device mapping; with recompute, computeDisplayTransformation runs first.
    virtual const TqMatrix& displayTransformation(bool recompute);
    void setDisplayTransformation(const TqMatrix& m);
    ///@}
    /// Recomputes the mapping from the device's own state (zoom, scroll position). The base
    /// keeps the mapping last set.
    virtual void computeDisplayTransformation();
    /// The part of the sheet that the clip rectangle shows; with recompute,
    /// computeVisibleArea runs first.
    virtual const SheetRectangle& visibleArea(bool recompute);
    /// Maps the clip rectangle back to sheet units through the display transformation.
    virtual void computeVisibleArea();
    ///@{
    /// Device units per inch in x and y, as computed by computeDisplayResolution (96 until
    /// a device knows better).
    const DevicePoint& displayResolution() const { return m_resolution; }
    virtual void computeDisplayResolution();
    ///@}

    // --- Drawing state ----------------------------------------------------------------------
    ///@{
    /// Each records the value and calls the matching primitive.
    void setColor(wsiColor color);
    virtual void setBackgroundColor(wsiColor color);
    virtual void setPenStyle(wsiPenStyle style);
    ///@}
    ///@{
    /// The base records the width; devices apply it.
    virtual void setPenWidth(long width);
    void setBackgroundFillMode(wsiBackgroundFillMode mode);
    void setDrawMode(wsiDrawMode mode);
    ///@}
    /// Sets the clip rectangle in device units and tells the primitive.
    void setClipRect(const DeviceRectangle& r);
    ///@{
    /// The same from sheet units through the display transformation.
    void setClipRect(const SheetRectangle& r);
    wsiColor color() const { return m_color; }
    wsiColor backgroundColor() const { return m_backgroundColor; }
    wsiPenStyle penStyle() const { return m_penStyle; }
    long penWidth() const { return m_penWidth; }
    wsiBackgroundFillMode backgroundFillMode() const { return m_backgroundFillMode; }
    wsiDrawMode drawMode() const { return m_drawMode; }
    const DeviceRectangle& clipRect() const { return m_clipRect; }
    virtual bool isMonochrome() const;
    ///@}

    // --- Fonts and text measures ------------------------------------------------------------
    /// Makes font the font of the text drawn next (it must outlive its selection) and
    /// returns it.
    virtual WsiFont& selectFont(WsiFont& font);
    /// Returns to the default font.
    virtual void deselectFont();
    /// Selects no font: measures and text use the default font until the next selectFont.
    virtual void selectNullFont();
    /// The selected font, or null.
    WsiFont* selectedFont() const { return m_selectedFont; }
    /// The measures of the selected font (the default font if none) on measuringDevice(),
    /// owned by the device and valid until the next call.
    virtual WsiFontMetric& newFontMetric();
    /// The paint device whose resolution text is measured on, or null for the default
    /// resolution.
    virtual QPaintDevice* measuringDevice();
    /// The width and height (ascent + descent) of the whole text in font, in a static object
    /// valid until the next call; (0, 0) for a null text.
    virtual const DevicePoint& pixelBox(const char* text, WsiFont& font);
    /// The same for the first length bytes (all when length < 0); in a static object.
    virtual DevicePoint& getTextExtent(const char* text, WsiFont& font, int length);

    // --- Drawing in sheet coordinates -------------------------------------------------------
    /// Each maps through displayTransformation(false) (truncating) and calls the operations
    /// below. Lists longer than 65,535 points are cut there.
    void moveTo(const SheetPoint& p);
    ///@{
    /// Draws from the current point to p and makes p the current point.
    void lineTo(const SheetPoint& p);
    void drawLine(const SheetPoint& from, const SheetPoint& to);
    void drawRectangle(const SheetRectangle& r);
    void fillRectangle(const SheetRectangle& r);
    void invertRectangle(const SheetRectangle& r);
    void drawPolyline(int n, const SheetPoint* points);
    void drawPolygon(int n, const SheetPoint* points);
    void fillPolygon(wsiColor color, int n, const SheetPoint* points);
    void drawEllipse(const SheetRectangle& r, bool filled);
    void drawCurve(const SheetPoint& from, const SheetPoint& to);
    ///@}
    /// Draws text with the left end of its baseline at at; returns its advance.
    long drawText(const char* text, const SheetPoint& at, WsiFont& font);
    /// Draws text aligned at at; returns the box it occupies, in a static object.
    const DeviceRectangle& drawAlignedText(const char* text, const SheetPoint& at, WsiFont& font,
                                           wsiAlignH h, wsiAlignV v);

    // --- Drawing in device coordinates ------------------------------------------------------
    /// The points are device units already mapped by the caller. In the forms taking "...",
    /// the n points follow as n arguments of type const DevicePoint* (at most 65,535 are
    /// read); their count is unsigned rather than unsigned short because the last named
    /// parameter of a variadic function must be of a type that is not promoted.

    /// Draws the first length bytes of text (all when length < 0) with the left end of its
    /// baseline at at; returns the advance the primitive reports (0 for a null text, or where
    /// nothing is drawn).
    long drawTextUnTransformed(const char* text, const DevicePoint& at, int length, WsiFont& font);
    ///@{
    /// The lines joining the points in order; the base draws them with primitiveMoveTo and
    /// primitiveLineTo.
    virtual void drawPolylineUnTransformed(unsigned short n, DevicePoint* points);
    virtual void drawPolylineUnTransformed(unsigned n, ...);
    ///@}
    ///@{
    /// The same, closed back to the first point.
    virtual void drawPolygonUnTransformed(unsigned short n, DevicePoint* points);
    virtual void drawPolygonUnTransformed(unsigned n, ...);
    ///@}
    ///@{
    /// A polyline whose ends may carry filled arrow heads (capSize: length along the line,
    /// full width across it); the line stops at each head's base.
    virtual void drawCappedPolylineUnTransformed(wsiLineCap start, wsiLineCap end,
                                                 const DevicePoint& capSize, unsigned short n,
                                                 DevicePoint* points);
    virtual void drawCappedPolylineUnTransformed(wsiLineCap start, wsiLineCap end,
                                                 const DevicePoint& capSize, unsigned n, ...);
    ///@}
    ///@{
    /// The polygon filled in color (outline included); the current colour is kept.
    virtual void filledPolygonUnTransformed(wsiColor color, unsigned short n,
                                            DevicePoint* points) = 0;
    virtual void filledPolygonUnTransformed(wsiColor color, unsigned n, ...);
    ///@}
    /// A signal transition from from to to: the cubic Bezier whose control points are
    /// curveControlPoints(from, to). The base draws it as 16 straight pieces.
    virtual void drawCurveUnTransformed(const DevicePoint& from, const DevicePoint& to);
    /// A curve from start to end bent toward control (a cubic Bezier with both control
    /// points at control), with an arrow head of bounds' extent at end when cap asks for one.
    virtual void drawCurvedArrowUnTransformed(const DevicePoint& start, const DevicePoint& control,
                                              const DevicePoint& end, const DeviceRectangle& bounds,
                                              wsiCurveCap cap);
    /// The ellipse inscribed in r, outlined or filled in the current colour. The base draws
    /// a 32-sided polygon.
    virtual void drawEllipseUnTransformed(const DeviceRectangle& r, bool filled);
    ///@{
    /// Fills r with the background colour.
    virtual void erase(const DeviceRectangle& r);
    virtual void setPixel(long x, long y) = 0;
    ///@}
    ///@{
    /// The colour of a pixel where the device can read it back; 0 (black) elsewhere.
    virtual wsiRGBColor getPixel(const DevicePoint& p);
    virtual wsiRGBColor getPixel(long x, long y);
    ///@}
    /// Clamps the points into the clip rectangle (OutputDevice) or copies them (the base) into
    /// out, which holds n points; true when there is something to draw.
    virtual bool clipPoints(unsigned short n, DevicePoint* in, DevicePoint* out);
    /// The same with the points read as n arguments of type const DevicePoint* from in.
    virtual bool clipPoints(unsigned short n, va_list in, DevicePoint* out);
    /// Releases what the device holds for drawing (pens, brushes, fonts); the base has none.
    virtual void deleteDCObjects();

    /// The two control points of the transition curve from from to to: half way across in x,
    /// at from's height and at to's height. Every device draws the same curve from them.
    static void curveControlPoints(const DevicePoint& from, const DevicePoint& to,
                                   DevicePoint& first, DevicePoint& second);

protected:
    // --- The primitives each device implements ----------------------------------------------
    /// Sets the current point; draws nothing.
    virtual void primitiveMoveTo(long x, long y) = 0;
    ///@{
    /// Draws from the current point to (x, y); whether the current point moves is the
    /// device's business (Device leaves it, callers move it).
    virtual void primitiveLineTo(long x, long y) = 0;
    virtual void primitiveFilledRect(const DeviceRectangle& r) = 0;
    virtual void primitiveInvertRect(const DeviceRectangle& r) = 0;
    virtual void primitiveSetBackgroundFillMode(wsiBackgroundFillMode mode) = 0;
    virtual void primitiveSetDrawMode(wsiDrawMode mode) = 0;
    virtual void primitiveSetBackgroundColor(wsiColor color) = 0;
    virtual void primitiveSetColor(wsiColor color) = 0;
    virtual void primitiveSetPenStyle(wsiPenStyle style) = 0;
    virtual void primitiveSetClipRect(const DeviceRectangle& r) = 0;
    ///@}
    /// Draws the first length bytes of text (all when length < 0) with the left end of the
    /// baseline at at, and sets advance to the width drawn.
    virtual void primitiveDrawText(const char* text, const DevicePoint& at, int length,
                                   WsiFont& font, long& advance) = 0;
    /// Draws text aligned at at (see alignText) and sets bounds to the box it occupies.
    virtual void primitiveDrawAlignedText(const char* text, const DevicePoint& at, int length,
                                          WsiFont& font, wsiAlignH h, wsiAlignV v,
                                          DeviceRectangle& bounds) = 0;

    // --- Helpers for devices ----------------------------------------------------------------
    /// Selects again, on leaving its scope, the font that was selected when it was made, or
    /// none when none was: a text primitive selects the caller's font, which may not outlive
    /// the call.
    class FontRestorer {
    public:
        /// Remembers the font selected on device now.
        explicit FontRestorer(wsiDevice& device)
            : m_device(device), m_previous(device.selectedFont()) {}
        ~FontRestorer() {
            if (m_previous)
                m_device.selectFont(*m_previous);
            else
                m_device.deselectFont();
        }
        FontRestorer(const FontRestorer&) = delete;
        FontRestorer& operator=(const FontRestorer&) = delete;

    private:
        wsiDevice& m_device;
        WsiFont* m_previous;
    };
    /// Where text aligned at at starts its baseline, and the box it occupies: h puts at at the
    /// box's left, middle or right; v at its top, middle, bottom or at the baseline.
    void alignText(const char* text, const DevicePoint& at, int length, WsiFont& font, wsiAlignH h,
                   wsiAlignV v, DevicePoint& baselineStart, DeviceRectangle& bounds);
    /// Draws a filled arrow head at tip pointing away from *from (nothing when from is null or
    /// equal to tip); size is (length, width). Returns the centre of the head's base, where
    /// the line leading to it should stop.
    DevicePoint privateDrawArrow(const DevicePoint* from, const DevicePoint& tip,
                                 const DevicePoint& size);
    /// A device-point array shared by all devices for converted or collected points: room for
    /// n points, grown on demand, never shrunk; valid until the next call.
    static DevicePoint* devicePointBuffer(int n);
    ///@{
    /// Collects n const DevicePoint* arguments (at most 65,535, the count set to how many) from
    /// in into devicePointBuffer.
    static DevicePoint* collectPoints(unsigned n, va_list in, unsigned short& count);
    void setDisplayResolution(const DevicePoint& dpi) { m_resolution = dpi; }
    ///@}

    /// The clip rectangle last given to setClipRect, in device units.
    DeviceRectangle m_clipRect;

private:
    TqMatrix m_displayTransformation;
    SheetRectangle m_visibleArea;
    DevicePoint m_resolution;
    DevicePoint m_sheetCurrentPoint;
    wsiColor m_color = wsiBlack;
    wsiColor m_backgroundColor = wsiWhite;
    wsiPenStyle m_penStyle = wsiPenSolid;
    long m_penWidth = 0;
    wsiBackgroundFillMode m_backgroundFillMode = wsiTransparent;
    wsiDrawMode m_drawMode = wsiDrawCopy;
    WsiFont* m_selectedFont = nullptr;
    std::unique_ptr<WsiFontMetric> m_fontMetric;
};
