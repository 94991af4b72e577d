#pragma once

#include "core/TqExport.h"
#include "graphics/export/ExportDevice.h"
#include "graphics/export/mif/MIFDocument.h"

#include <memory>

class MIFPaintDevice;

/// MIFDevice: the device that exports a drawing (or a table) as a MIF file: its primitives
/// and composites become MIF graphic objects through the document's writer (MIFDocument),
/// the same text the MIF paint engine writes for the same drawing. It has no painter.
class TQ_EXPORT MIFDevice : public ExportDevice, public MIFDocument {
public:
    ///@{
    /// Writes to out (not owned) when closed; drawing is the drawing's extent in device units
    /// (see MIFDocument). Text is measured at 720 units per inch.
    MIFDevice(const char* jobName, std::ostream& out, const ExportParameters& parameters,
              const DeviceRectangle& drawing);
    ~MIFDevice() override;
    ///@}

    // --- Drawing ----------------------------------------------------------------------------
    /// An arc object of the ellipse inscribed in r, filled solid when filled.
    void drawEllipseUnTransformed(const DeviceRectangle& r, bool filled) override;
    ///@{
    /// One polyline object whose caps refer to the arrow catalogue.
    void drawCappedPolylineUnTransformed(wsiLineCap start, wsiLineCap end,
                                         const DevicePoint& capSize, unsigned short n,
                                         DevicePoint* points) override;
    using Device::drawCappedPolylineUnTransformed;
    void filledPolygonUnTransformed(wsiColor color, unsigned short n, DevicePoint* points) override;
    using Device::filledPolygonUnTransformed;
    ///@}
    /// A page without a painter at 720 units per inch, used for measuring text.
    QPaintDevice* measuringDevice() override;

protected:
    /// The line from the current point to (x, y), clipped; the current point stays.
    void primitiveLineTo(long x, long y) override;
    /// A filled polygon of the rectangle's corners in the current colour.
    void primitiveFilledRect(const DeviceRectangle& r) override;
    /// A text line whose baseline starts at at; advance is its width in device units.
    void primitiveDrawText(const char* text, const DevicePoint& at, int length, WsiFont& font,
                           long& advance) override;
    /// A text line anchored at at.x by h (so that the reader's own measure places it), on the
    /// baseline that v asks for.
    void primitiveDrawAlignedText(const char* text, const DevicePoint& at, int length,
                                  WsiFont& font, wsiAlignH h, wsiAlignV v,
                                  DeviceRectangle& bounds) override;
    ExportWriter& exportWriter() override;
    const ExportWriter& exportWriter() const override;

private:
    std::unique_ptr<MIFPaintDevice> m_measuring;
};
