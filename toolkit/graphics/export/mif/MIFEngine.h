#pragma once

#include "core/TqExport.h"
#include "graphics/export/ExportEngine.h"
#include "graphics/export/mif/MIFDocument.h"

#include <memory>

class MIFPaintDevice;

/// MIFEngine: the Qt paint engine that exports what a TqPainter paints as a MIF file, through
/// the writer of its MIFDocument, as the MIF device does, so the same drawing gives the same
/// text either way. Paint on paintDevice(); close() writes the file.
class TQ_EXPORT MIFEngine : public ExportEngine, public MIFDocument {
public:
    ///@{
    /// Writes to out (not owned) when closed; drawing is the drawing's extent in device units
    /// (see MIFDocument), and the size of paintDevice().
    MIFEngine(const char* jobName, std::ostream& out, const ExportParameters& parameters,
              const DeviceRectangle& drawing);
    ~MIFEngine() override;
    ///@}

    /// The device a painter paints on to reach this engine, owned by the engine.
    QPaintDevice& paintDevice();

    // --- The paint engine -------------------------------------------------------------------
    ///@{
    /// Ending the painter does not close the file.
    bool begin(QPaintDevice* device) override;
    bool end() override;
    ///@}
    /// Filled when the painter has a brush.
    void drawEllipse(const QRectF& r) override;
    using ExportEngine::drawEllipse;
    /// A left-aligned text line at p, on the baseline.
    void drawTextItem(const QPointF& p, const QTextItem& textItem) override;

protected:
    ///@{
    /// The pen's colour, style and width go to the writer at once.
    void penChanged() override;
    void clipChanged() override;
    ///@}
    /// At most 65,535 points: a MIF polygon holds no more.
    void fillPolygon(const DevicePoint* points, std::size_t n) override;
    ///@{
    /// One line object per segment, each clipped. The outline of a filled shape is left out
    /// with Qt::NoPen; every other line is written whatever the pen, as the device writes
    /// the lines of a null pen style.
    void strokePolyline(const DevicePoint* points, std::size_t n, bool closed) override;
    void strokeCurve(const DevicePoint& from, const DevicePoint& first, const DevicePoint& second,
                     const DevicePoint& to) override;
    ///@}

private:
    std::unique_ptr<MIFPaintDevice> m_device;
};
