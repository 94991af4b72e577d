#pragma once

#include "core/TqExport.h"
#include "graphics/device/Device.h"
#include "graphics/export/mif/MIFDocument.h"

#include <memory>

class MIFPaintDevice;

/// MIFDevice: the device that exports a drawing (or a table) as a MIF file: its primitives
/// and composites become MIF graphic objects through the document's writer (MIFDocument),
/// the same text the MIF paint engine writes for the same drawing. It has no painter.
class TQ_EXPORT MIFDevice : public Device, public MIFDocument {
public:
    ///@{
    /// Writes to out (not owned) when closed; drawing is the drawing's extent in device units
    /// (see MIFDocument). Text is measured at 720 units per inch.
    MIFDevice(const char* jobName, std::ostream& out, const ExportParameters& parameters,
              const DeviceRectangle& drawing);
    ~MIFDevice() override;
    ///@}

    // --- Drawing ----------------------------------------------------------------------------
    void drawCurveUnTransformed(const DevicePoint& from, const DevicePoint& to) override;
    void drawEllipseUnTransformed(const DeviceRectangle& r, bool filled) override;
    ///@{
    /// One polyline object whose caps refer to the arrow catalogue.
    void drawCappedPolylineUnTransformed(wsiLineCap start, wsiLineCap end,
                                         const DevicePoint& capSize, unsigned short n,
                                         DevicePoint* points) override;
    using Device::drawCappedPolylineUnTransformed;
    void filledPolygonUnTransformed(wsiColor color, unsigned short n, DevicePoint* points) override;
    using Device::filledPolygonUnTransformed;
    void setPenWidth(long width) override;
    ///@}
    ///@{
    /// True in a grey-scale export.
    bool isMonochrome() const override;
    QPaintDevice* measuringDevice() override;
    ///@}

protected:
    /// The line from the current point to (x, y), clipped; the current point stays.
    void primitiveLineTo(long x, long y) override;
    /// A filled polygon of the rectangle's corners in the current colour.
    void primitiveFilledRect(const DeviceRectangle& r) override;
    ///@{
    /// Colour 0 keeps the current separation.
    void primitiveSetColor(wsiColor color) override;
    void primitiveSetPenStyle(wsiPenStyle style) override;
    ///@}
    ///@{
    /// Lines drawn from now on are clipped to r.
    void primitiveSetClipRect(const DeviceRectangle& r) override;
    void primitiveDrawText(const char* text, const DevicePoint& at, int length, WsiFont& font,
                           long& advance) override;
    ///@}
    /// A text line anchored at at.x by h (so that the reader's own measure places it), on the
    /// baseline that v asks for.
    void primitiveDrawAlignedText(const char* text, const DevicePoint& at, int length,
                                  WsiFont& font, wsiAlignH h, wsiAlignV v,
                                  DeviceRectangle& bounds) override;

private:
    std::unique_ptr<MIFPaintDevice> m_measuring;
};
