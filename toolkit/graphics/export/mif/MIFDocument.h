#pragma once

#include "core/TqExport.h"
#include "graphics/device/wsiTypes.h"
#include "graphics/export/ExportParameters.h"
#include "graphics/geometry/DevicePoint.h"
#include "graphics/geometry/DeviceRectangle.h"

#include <iosfwd>
#include <memory>
#include <string>

class MIFWriter;
class QFont;
class WsiFont;

/// One arrow-head size used in the file and the number its style is defined under, in the
/// arrow catalogue as "arrow" number.
struct TQ_EXPORT MIFArrowType {
    DevicePoint size; ///< length along the line and width across it, in device units
    int number = 0;   ///< from 1, in order of first use
};

/// A font as a MIF file names it: family, size in points and the three styles MIF keeps.
/// Overline has no MIF counterpart and is dropped.
struct TQ_EXPORT MIFFont {
    std::string family;     ///< the face's family name, UTF-8
    double size = 10.0;     ///< in points
    bool bold = false;      ///< written as FBold
    bool italic = false;    ///< written as FItalic
    bool underline = false; ///< written as FUnderlining FSingle

    /// A font without a family (the window system's default face) is written as
    /// "Helvetica", a face every MIF reader has.
    static MIFFont fromWsiFont(const WsiFont& font);
    /// A font sized in pixels only is taken at the export's 720 device units per inch.
    static MIFFont fromQFont(const QFont& font);
    ///@{
    /// The character-format tag: the family, the size and the styles, e.g.
    /// "Helvetica 10.0 Bold Italic". Distinct fonts get distinct tags.
    std::string tag() const;
    bool operator==(const MIFFont& f) const = default;
    ///@}
};

/// MIFDocument: the file of a MIF export, shared by MIFDevice and MIFEngine: the writer both
/// hand every operation to, the table calls, the catalogues and the closing of the file.
class TQ_EXPORT MIFDocument {
public:
    MIFDocument(const MIFDocument&) = delete;
    MIFDocument& operator=(const MIFDocument&) = delete;

    ///@{
    /// In place; owned by the document.
    const char* jobName() const;
    const ExportParameters& parameters() const;
    ///@}
    /// Null while the file is sound; otherwise the first failure, a static string: "the
    /// output stream failed" or "the file was closed before". Kept for the document's
    /// lifetime.
    const char* error() const;

    // --- Tables -----------------------------------------------------------------------------
    ///@{
    /// A document holds one table, and starting it makes the export a table export (graphic
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
    /// Ends the cell and adds one empty cell for each further column it covers.
    void endCell();

    // --- Catalogues -------------------------------------------------------------------------
    /// The arrow type of an arrow-head size (length along the line, width across it),
    /// numbered from 1 in order of first use. The record lives as long as the document.
    const MIFArrowType& getArrowType(const DevicePoint& size);
    /// Appends the dashed pattern of style; styles outside 0 to 4 append nothing.
    static void emitDashedPattern(std::string& out, wsiPenStyle style);
    /// Appends one "define" line per arrow type, in number order.
    void emitArrowCatalog(std::string& out) const;
    /// Appends the font catalogue: one entry per font drawn with, in order of first use.
    void writeFontCatalog(std::string& out) const;
    /// Appends one font statement for font on separation.
    static void writeFontEntry(std::string& out, const MIFFont& font, int separation);

    // --- The file ---------------------------------------------------------------------------
    /// Ends a table still open, then writes the whole file to the stream. True when the
    /// stream took it; false when it failed or when the file was already closed (nothing is
    /// written then), the reason kept as error().
    [[nodiscard]] bool close();

protected:
    ///@{
    /// Writes to out (not owned; it must outlive close()) when closed. drawing is the
    /// drawing's extent in device units: it becomes the frame, its origin the frame's origin.
    /// With a scaleable picture the drawing is stretched to the picture size of parameters;
    /// with a fixed one a device unit is a tenth of a point.
    MIFDocument(const char* jobName, std::ostream& out, const ExportParameters& parameters,
                const DeviceRectangle& drawing);
    virtual ~MIFDocument();
    ///@}

    ///@{
    /// The document's writer, owned by the document.
    MIFWriter& writer() { return *m_writer; }
    const MIFWriter& writer() const { return *m_writer; }
    ///@}

private:
    std::unique_ptr<MIFWriter> m_writer;
};
