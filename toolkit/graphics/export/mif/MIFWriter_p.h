#pragma once

#include "core/TqExport.h"
#include "graphics/device/wsiTypes.h"
#include "graphics/export/ExportParameters.h"
#include "graphics/export/ExportWriter_p.h"
#include "graphics/export/mif/MIFDocument.h"
#include "graphics/export/mif/MIFObjectBuffer_p.h"
#include "graphics/geometry/DevicePoint.h"
#include "graphics/geometry/DeviceRectangle.h"
#include "graphics/geometry/TqMatrix.h"

#include <QColor>
#include <deque>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

/// MIFWriter: writes a drawing or a table as a MIF 5.00 file. The MIF paint engine and the
/// MIF device both hand every operation to it, so the two write the same text. Graphic
/// objects are collected in memory while drawing, because the catalogues that precede them
/// are only known at the end; close() assembles the file on the stream. Internal to the
/// library (exported for the fuzz target only, and not installed).
class TQ_EXPORT MIFWriter final : public ExportWriter {
public:
    /// Writes to out (not owned; it must outlive the writer's close()). drawing is the
    /// drawing's extent in device units: it becomes the frame, its origin the frame's
    /// origin. With a scaleable picture the drawing is stretched to the picture size of
    /// parameters; with a fixed one a device unit is a tenth of a point.
    MIFWriter(const char* jobName, std::ostream& out, const ExportParameters& parameters,
              const DeviceRectangle& drawing);

    // --- Mapping ----------------------------------------------------------------------------
    /// Device units to tenths of a point; every coordinate written is applyXHalfTo or
    /// applyYHalfTo of it divided by 10.0, truncated like every device-space conversion
    /// (so a scaled coordinate may lose up to a tenth of a point).
    const TqMatrix& matrix() const { return m_matrix; }

    // --- Drawing state ----------------------------------------------------------------------
    ///@{
    /// The separation of the objects drawn next (MIFFormat::separationOf); an invalid colour
    /// keeps the current one. Black at first.
    void setColor(const QColor& color) override;
    int separation() const { return m_separation; }
    void setPenStyle(wsiPenStyle style) override;
    wsiPenStyle penStyle() const { return m_penStyle; }
    ///@}
    ///@{
    /// In device units; written as the matrix's x scale / 10.0 * width.
    void setPenWidth(double width);
    void setLineWidth(long width) override { setPenWidth(static_cast<double>(width)); }
    ///@}
    ///@{
    /// Lines are clipped to r (edges included) from now on.
    void setClipRect(const DeviceRectangle& r) override { m_clip = r; }
    void clearClipRect() { m_clip.reset(); }
    ///@}

    // --- Graphic objects --------------------------------------------------------------------
    /// A straight line, clipped first: nothing is written when it misses the clip rectangle.
    void line(const DevicePoint& from, const DevicePoint& to);
    /// A smoothed polyline through from, the two control points and to (not clipped).
    void curve(const DevicePoint& from, const DevicePoint& first, const DevicePoint& second,
               const DevicePoint& to) override;
    /// A polyline of n points (nothing for n < 2) whose start and end carry arrow heads of
    /// capSize where the caps ask for them. The start cap is written as MIF's head cap and
    /// the end cap as its tail cap, as existing files have it.
    void cappedPolyline(wsiLineCap start, wsiLineCap end, const DevicePoint& capSize,
                        unsigned short n, const DevicePoint* points);
    /// The ellipse inscribed in r, filled solid or (unfilled) with MIF's white fill.
    void ellipse(const DeviceRectangle& r, bool filled);
    /// A polygon of n points (nothing for n < 2) filled solid, without outline, on the
    /// separation of fill (the current one when fill is invalid).
    void filledPolygon(const QColor& fill, unsigned short n, const DevicePoint* points);
    /// A text line of the first length bytes of the UTF-8 text (all when length < 0) in font
    /// (its size scaled like the drawing), anchored at origin on its baseline: origin is the
    /// left end, the middle or the right end of the text by h. A null text writes nothing.
    void text(const char* text, int length, const DevicePoint& origin, wsiAlignH h,
              const MIFFont& font);

    // --- Catalogues -------------------------------------------------------------------------
    /// The arrow type of an arrow-head size (length along the line, width across it),
    /// numbered from 1 in order of first use. The record lives as long as the writer.
    const MIFArrowType& getArrowType(const DevicePoint& size);
    /// Appends the dashed pattern of style; styles outside 0 to 4 append nothing.
    static void emitDashedPattern(std::string& out, wsiPenStyle style);
    /// Appends one "define" line per arrow type, in number order.
    void emitArrowCatalog(std::string& out) const;
    /// Appends the font catalogue: one entry per font drawn with, in order of first use.
    void writeFontCatalog(std::string& out) const;
    /// Appends one font statement for font on separation.
    static void writeFontEntry(std::string& out, const MIFFont& font, int separation);

    // --- Tables -----------------------------------------------------------------------------
    ///@{
    /// A writer holds one table, and starting it makes the export a table export (graphic
    /// objects are then not written). The table's title, when title is neither null nor
    /// empty, goes above the table or, with titleBelow, below it. A second startTable is
    /// ignored, and so are the other table calls outside the table. Calls out of order are
    /// repaired so that the file stays well formed: starting a header, body, row or cell first
    /// ends the one open at its level, ending a part that is not open does nothing, and
    /// endTable first ends whatever is open.
    void startTable(const char* title, bool titleBelow);
    void endTable();
    void startHeader();
    void endHeader();
    void startBody();
    void endBody();
    void startRow();
    void endRow();
    ///@}
    /// A cell covering columns columns (taken as 1 when below 2); the cell's paragraph is a
    /// heading inside the header, body text elsewhere.
    void startCell(int columns = 1);
    /// The cell's text: one paragraph line of the UTF-8 text. A null text writes nothing.
    void writeCellText(const char* text);
    ///@{
    /// Ends the cell and adds one empty cell for each further column it covers.
    void endCell();
    bool tableStarted() const { return m_tableStarted; }
    ///@}

    // --- The file ---------------------------------------------------------------------------
    ///@{
    /// Ends a table still open, then writes the whole file to the stream. True when the
    /// stream took it; false when it failed or when the writer was already closed (nothing
    /// is written then), either recorded as the writer's error() unless one was.
    [[nodiscard]] bool close();
    bool isClosed() const { return m_closed; }
    ///@}

private:
    std::string& objects() { return m_objects.text(); }
    ///@{
    /// The text every line object shares up to its first point, for the current state.
    std::string lineHead() const;
    void appendX(std::string& out, std::int32_t x) const;
    void appendY(std::string& out, std::int32_t y) const;
    void appendPoint(std::string& out, const DevicePoint& p) const;
    /// " <NumPoints n >" and one point line per point, as polylines and polygons list them.
    void appendPointList(std::string& out, unsigned short n, const DevicePoint* points) const;
    void appendPolyLineStart(std::string& out) const;
    void appendSeparation(std::string& out) const;
    bool inTable() const { return m_tableOpen && !m_closed; }
    ///@}

    enum class Section { none, header, body };
    ///@{
    /// Opening a section first ends the one open; ending a section that is not the open one
    /// (or none) does nothing.
    void startSection(Section section);
    void endSection(Section section);
    ///@}

    /// The result of close, recording a failure of the stream.
    bool streamTookIt();

    TqMatrix m_matrix;
    double m_frameWidth = 0;
    double m_frameHeight = 0;

    int m_separation = 0;
    wsiPenStyle m_penStyle = wsiPenSolid;
    std::string m_penWidthText = "0.0";
    std::optional<DeviceRectangle> m_clip;

    MIFObjectBuffer m_objects;
    bool m_lineHeadChanged = true;
    std::deque<MIFArrowType> m_arrowTypes;
    std::vector<MIFFont> m_fonts;

    std::string m_table;
    bool m_tableStarted = false;
    bool m_tableOpen = false;
    Section m_section = Section::none;
    bool m_rowOpen = false;
    bool m_cellOpen = false;
    int m_cellColumns = 1;
    bool m_closed = false;
};
