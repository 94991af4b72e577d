#pragma once

#include "core/TqExport.h"
#include "graphics/device/Device.h"

class ExportWriter;

/// ExportDevice: the part of the devices that export a drawing to a file format (EPSDevice,
/// MIFDevice) that is the same for every format: it hands the device's colour, dash pattern,
/// pen width, clip and transition curves to the format's writer. It has no painter.
class TQ_EXPORT ExportDevice : public Device {
public:
    /// Writes the width (device units) as the line width of what is drawn next.
    void setPenWidth(long width) override;
    /// The transition curve as one cubic curve (control points from curveControlPoints).
    void drawCurveUnTransformed(const DevicePoint& from, const DevicePoint& to) override;
    /// True for a grey-scale export.
    bool isMonochrome() const override;

protected:
    ExportDevice();
    ~ExportDevice() override;

    ///@{
    /// The writer of the export's format; it belongs to the derived device (its page or
    /// document) and lives as long as the device.
    virtual ExportWriter& exportWriter() = 0;
    virtual const ExportWriter& exportWriter() const = 0;
    ///@}
    /// The last colour other than wsiNoColor given to primitiveSetColor (erase gives it the
    /// background colour), black at first: the colour of a filled rectangle.
    wsiColor primitiveColor() const { return m_primitiveColor; }

    ///@{
    /// Handed to the writer; colour 0 writes nothing and keeps the current colour.
    void primitiveSetColor(wsiColor color) override;
    void primitiveSetPenStyle(wsiPenStyle style) override;
    ///@}
    /// Drawing from now on is clipped to r.
    void primitiveSetClipRect(const DeviceRectangle& r) override;

private:
    wsiColor m_primitiveColor = wsiBlack;
};
