#include "graphics/export/mif/MIFWriter_p.h"

#include "graphics/device/WsiFont.h"
#include "graphics/export/mif/MIFFormat.h"

#include <QFont>
#include <algorithm>
#include <cmath>
#include <string_view>

namespace {

using namespace std::string_view_literals;

// The export's measuring resolution: a device unit is a tenth of a point.
constexpr double v_unitsPerPoint = 10.0;

// The text between "<DashedPattern \n" and its closing line, by pen style 0 to 4.
constexpr std::string_view v_dashedPatterns[] = {
    " <DashedStyle Solid>\n"sv,
    " <DashedStyle Dashed>\n"
    " <NumSegments 2>\n"
    " <DashSegment  8.0 pt>\n"
    " <DashSegment  6.0 pt>\n"sv,
    " <DashedStyle Dashed>\n"
    " <NumSegments 2>\n"
    " <DashSegment  2.0 pt>\n"
    " <DashSegment  4.0 pt>\n"sv,
    " <DashedStyle Dashed>\n"
    " <NumSegments 4>\n"
    " <DashSegment  12.0 pt>\n"
    " <DashSegment  6.0 pt>\n"
    " <DashSegment  2.0 pt>\n"
    " <DashSegment  6.0 pt>\n"sv,
    " <DashedStyle Dashed>\n"
    " <NumSegments 6>\n"
    " <DashSegment  12.0 pt>\n"
    " <DashSegment  6.0 pt>\n"
    " <DashSegment  2.0 pt>\n"
    " <DashSegment  6.0 pt>\n"
    " <DashSegment  2.0 pt>\n"
    " <DashSegment  6.0 pt>\n"sv,
};

constexpr std::string_view v_rulingCatalog = "<RulingCatalog\n"
                                             " <Ruling\n"
                                             "  <RulingTag `Thin'>\n"
                                             "  <RulingPenWidth  0.5 pt>\n"
                                             "  <RulingGap  0.0 pt>\n"
                                             "  <RulingSeparation 0>\n"
                                             "  <RulingColor `Black'>\n"
                                             "  <RulingPen 0>\n"
                                             "  <RulingLines 1>\n"
                                             " > # end of Ruling\n"
                                             ">\n"sv;

constexpr std::string_view v_tableTextFlow = "<TextFlow \n"
                                             " <Para \n"
                                             "  <ParaLine \n"
                                             "   <ATbl 1>\n"
                                             "  > # end of ParaLine\n"
                                             " > # end of Para\n"
                                             "> # end of TextFlow\n"sv;

constexpr std::string_view v_frameTextFlow = "<TextFlow \n"
                                             " <Para \n"
                                             "  <ParaLine \n"
                                             "   <TextRectID 1>\n"
                                             "   <AFrame 1>\n"
                                             "  >\n"
                                             " > # end of Para\n"
                                             "> # end of TextFlow\n"sv;

constexpr std::string_view v_endOfFile = "# End of MIFFile\n"sv;

// Maps the drawing's origin to (0, 0) and its size to the picture's in tenths of a point
// when the picture is scaleable; a fixed picture keeps device units as tenths of a point.
TqMatrix drawingMatrix(const ExportParameters& parameters, const DeviceRectangle& drawing) {
    double sx = 1.0, sy = 1.0;
    // In doubles: the extent of a rectangle spanning the whole device range overflows 32 bits.
    const double width = double(drawing.right()) - drawing.left();
    const double height = double(drawing.bottom()) - drawing.top();
    if (parameters.isScaleable()) {
        const FloatPoint picture = parameters.pictureSizeInPoints();
        if (width > 0)
            sx = picture.x() * v_unitsPerPoint / width;
        if (height > 0)
            sy = picture.y() * v_unitsPerPoint / height;
    }
    return TqMatrix(FloatPoint(sx, sy), FloatPoint(-sx * drawing.left(), -sy * drawing.top()));
}

} // namespace

// --- MIFFont ---------------------------------------------------------------------------------

MIFFont MIFFont::fromWsiFont(const WsiFont& font) {
    MIFFont f;
    f.family = font.family().isEmpty() ? std::string("Helvetica") : font.family().toStdString();
    f.size = font.pointSize();
    f.bold = font.isBold();
    f.italic = font.isItalic();
    f.underline = font.isUnderline();
    return f;
}

MIFFont MIFFont::fromQFont(const QFont& font) {
    MIFFont f;
    f.family = font.family().isEmpty() ? std::string("Helvetica") : font.family().toStdString();
    f.size = font.pointSizeF() > 0 ? font.pointSizeF() : font.pixelSize() / v_unitsPerPoint;
    f.bold = font.bold();
    f.italic = font.italic();
    f.underline = font.underline();
    return f;
}

std::string MIFFont::tag() const {
    std::string text = family + ' ';
    MIFFormat::appendReal(text, size);
    if (bold)
        text += " Bold";
    if (italic)
        text += " Italic";
    if (underline)
        text += " Underline";
    return text;
}

// --- MIFWriter -------------------------------------------------------------------------------

MIFWriter::MIFWriter(const char* jobName, std::ostream& out, const ExportParameters& parameters,
                     const DeviceRectangle& drawing)
    : ExportWriter(jobName, out, parameters), m_matrix(drawingMatrix(parameters, drawing)) {
    m_frameWidth = (double(m_matrix.applyXHalfTo(drawing.right(), false)) -
                    double(m_matrix.applyXHalfTo(drawing.left(), false))) /
                   v_unitsPerPoint;
    m_frameHeight = (double(m_matrix.applyYHalfTo(drawing.bottom(), false)) -
                     double(m_matrix.applyYHalfTo(drawing.top(), false))) /
                    v_unitsPerPoint;
}

void MIFWriter::setColor(const QColor& color) {
    const int separation = MIFFormat::separationOf(color, parameters().isGrayScale());
    if (separation >= 0 && separation != m_separation) {
        m_separation = separation;
        m_lineHeadChanged = true;
    }
}

void MIFWriter::setPenStyle(wsiPenStyle style) {
    m_penStyle = style;
    m_lineHeadChanged = true;
}

void MIFWriter::setPenWidth(double width) {
    m_penWidthText = MIFFormat::real(m_matrix.m11() / v_unitsPerPoint * width);
    m_lineHeadChanged = true;
}

std::string MIFWriter::lineHead() const {
    std::string head;
    appendPolyLineStart(head);
    head += " <Fill 15>\n"sv;
    emitDashedPattern(head, m_penStyle);
    appendSeparation(head);
    head += " <HeadCap Round>\n <TailCap Round>\n <NumPoints 2>\n <Point "sv;
    return head;
}

void MIFWriter::appendX(std::string& out, std::int32_t x) const {
    MIFFormat::appendReal(out, m_matrix.applyXHalfTo(x, false) / v_unitsPerPoint);
}

void MIFWriter::appendY(std::string& out, std::int32_t y) const {
    MIFFormat::appendReal(out, m_matrix.applyYHalfTo(y, false) / v_unitsPerPoint);
}

void MIFWriter::appendPoint(std::string& out, const DevicePoint& p) const {
    out += " <Point "sv;
    appendX(out, p.x());
    out += ' ';
    appendY(out, p.y());
    out += ">"sv;
}

void MIFWriter::appendPointList(std::string& out, unsigned short n,
                                const DevicePoint* points) const {
    out += " <NumPoints "sv;
    MIFFormat::appendInteger(out, n);
    out += " >\n"sv;
    for (unsigned short i = 0; i < n; ++i) {
        appendPoint(out, points[i]);
        out += '\n';
    }
}

void MIFWriter::appendPolyLineStart(std::string& out) const {
    out += "<PolyLine\n <Pen 0>\n <PenWidth "sv;
    out += m_penWidthText;
    out += ">\n"sv;
}

void MIFWriter::appendSeparation(std::string& out) const {
    out += " <Separation "sv;
    MIFFormat::appendInteger(out, m_separation);
    out += ">\n"sv;
}

void MIFWriter::line(const DevicePoint& from, const DevicePoint& to) {
    DevicePoint a = from, b = to;
    if (m_clip && (!m_clip->clipLineSegment(a, b) || !m_clip->clipLineSegment(b, a)))
        return;
    if (m_lineHeadChanged) {
        m_objects.setLineHead(lineHead());
        m_lineHeadChanged = false;
    }
    // Lines are kept compact: the head they share, then only their coordinates.
    std::string& out = objects();
    out += MIFObjectBuffer::v_line;
    appendX(out, a.x());
    out += ' ';
    appendY(out, a.y());
    out += MIFObjectBuffer::v_nextPoint;
    appendX(out, b.x());
    out += ' ';
    appendY(out, b.y());
    out += MIFObjectBuffer::v_endLine;
}

void MIFWriter::curve(const DevicePoint& from, const DevicePoint& first, const DevicePoint& second,
                      const DevicePoint& to) {
    std::string& out = objects();
    appendPolyLineStart(out);
    out += " <Smoothed Yes> <Fill 15>\n"sv;
    emitDashedPattern(out, m_penStyle);
    appendSeparation(out);
    out += " <NumPoints 4 >\n"sv;
    for (const DevicePoint* p : {&from, &first, &second, &to}) {
        appendPoint(out, *p);
        out += '\n';
    }
    out += "> # end PolyLine\n"sv;
}

void MIFWriter::cappedPolyline(wsiLineCap start, wsiLineCap end, const DevicePoint& capSize,
                               unsigned short n, const DevicePoint* points) {
    if (n < 2)
        return;
    const MIFArrowType* arrow = nullptr;
    if (start == wsiLineCapArrow || end == wsiLineCapArrow)
        arrow = &getArrowType(capSize);
    std::string& out = objects();
    appendPolyLineStart(out);
    out += " <Fill 15>\n"sv;
    emitDashedPattern(out, m_penStyle);
    appendSeparation(out);
    if (arrow) {
        // The arrow style is a macro of the arrow catalogue.
        out += " <arrow"sv;
        MIFFormat::appendInteger(out, arrow->number);
        out += ">\n"sv;
    }
    out += start == wsiLineCapArrow ? " <HeadCap ArrowHead>\n"sv : " <HeadCap Round>\n"sv;
    out += end == wsiLineCapArrow ? " <TailCap ArrowHead>\n"sv : " <TailCap Round>\n"sv;
    appendPointList(out, n, points);
    out += "> # end PolyLine\n"sv;
}

void MIFWriter::ellipse(const DeviceRectangle& r, bool filled) {
    std::string& out = objects();
    out += "<Arc\n <Pen 0>\n <PenWidth "sv;
    out += m_penWidthText;
    out += ">\n"sv;
    appendSeparation(out);
    out += filled ? " <Fill  0>\n"sv : " <Fill  7>\n"sv;
    out += " <HeadCap Square>\n <TailCap Square>\n <ArcRect "sv;
    const long left = m_matrix.applyXHalfTo(r.left(), false);
    const long top = m_matrix.applyYHalfTo(r.top(), false);
    MIFFormat::appendReal(out, left / v_unitsPerPoint);
    out += ' ';
    MIFFormat::appendReal(out, top / v_unitsPerPoint);
    out += ' ';
    MIFFormat::appendReal(out, (m_matrix.applyXHalfTo(r.right(), false) - left) / v_unitsPerPoint);
    out += ' ';
    MIFFormat::appendReal(out, (m_matrix.applyYHalfTo(r.bottom(), false) - top) / v_unitsPerPoint);
    out += ">\n <ArcTheta 0> <ArcDTheta 360>>\n"sv;
}

void MIFWriter::filledPolygon(const QColor& fill, unsigned short n, const DevicePoint* points) {
    if (n < 2)
        return;
    const int current = m_separation;
    setColor(fill);
    std::string& out = objects();
    out += "<Polygon\n <Pen 15>\n <Fill 0>\n"sv;
    appendSeparation(out);
    appendPointList(out, n, points);
    out += "> # end Polygon\n"sv;
    m_separation = current;
}

void MIFWriter::text(const char* text, int length, const DevicePoint& origin, wsiAlignH h,
                     const MIFFont& font) {
    if (!text)
        return;
    MIFFont scaled = font;
    scaled.size *= std::fabs(m_matrix.m11());
    if (std::find(m_fonts.begin(), m_fonts.end(), scaled) == m_fonts.end())
        m_fonts.push_back(scaled);
    std::string& out = objects();
    out += "<TextLine\n <TLOrigin "sv;
    appendX(out, origin.x());
    out += ' ';
    appendY(out, origin.y());
    out += ">\n <TLAlignment "sv;
    out += h == wsiAlignHCenter ? "Center"sv : h == wsiAlignRight ? "Right"sv : "Left"sv;
    out += ">\n"sv;
    writeFontEntry(out, scaled, m_separation);
    out += " <String `"sv;
    MIFFormat::appendString(out, text, length);
    out += "'>\n> # end TextLine\n"sv;
}

const MIFArrowType& MIFWriter::getArrowType(const DevicePoint& size) {
    for (const MIFArrowType& type : m_arrowTypes) {
        if (type.size == size)
            return type;
    }
    MIFArrowType& created = m_arrowTypes.emplace_back();
    created.size = size;
    created.number = static_cast<int>(m_arrowTypes.size());
    return created;
}

void MIFWriter::emitDashedPattern(std::string& out, wsiPenStyle style) {
    if (style < wsiPenSolid || style > wsiPenDashDotDot)
        return;
    out += "<DashedPattern \n"sv;
    out += v_dashedPatterns[style];
    out += "> # end of DashedPattern\n"sv;
}

void MIFWriter::emitArrowCatalog(std::string& out) const {
    for (const MIFArrowType& type : m_arrowTypes) {
        out += "define (arrow"sv;
        MIFFormat::appendInteger(out, type.number);
        out += ", ArrowStyle <TipAngle 24> <BaseAngle 90> <Length "sv;
        // The head's length along the line, in points like the pen widths.
        MIFFormat::appendGeneral(out, m_matrix.m11() / v_unitsPerPoint * type.size.x());
        out += "> <HeadType Filled> )\n"sv;
    }
}

void MIFWriter::writeFontCatalog(std::string& out) const {
    out += "<FontCatalog\n"sv;
    for (const MIFFont& font : m_fonts)
        writeFontEntry(out, font, MIFFormat::separationBlack);
    out += "\n> # end FontCatalog\n"sv;
}

void MIFWriter::writeFontEntry(std::string& out, const MIFFont& font, int separation) {
    out += "<Font\n  <FTag `"sv;
    const std::string tag = font.tag();
    MIFFormat::appendString(out, tag.c_str());
    out += "'>\n  <FFamily `"sv;
    MIFFormat::appendString(out, font.family.c_str());
    out += "'>\n  <FSize "sv;
    MIFFormat::appendReal(out, font.size);
    out += " pt>\n  <FSeparation "sv;
    MIFFormat::appendInteger(out, separation);
    out += ">\n  <FBold "sv;
    out += font.bold ? "Yes"sv : "No"sv;
    out += ">\n  <FItalic "sv;
    out += font.italic ? "Yes"sv : "No"sv;
    out += ">\n  <FUnderlining "sv;
    out += font.underline ? "FSingle"sv : "FNoUnderlining"sv;
    out += " >\n\n > # end Font\n"sv;
}

void MIFWriter::startTable(const char* title, bool titleBelow) {
    if (m_tableStarted || m_closed)
        return;
    m_tableStarted = m_tableOpen = true;
    m_table += "<Tbl\n <TblID 1>\n <TblTag `Format A'>\n"sv;
    if (!title || !*title)
        return;
    m_table += " <TblFormat \n  <TblTitlePlacement "sv;
    m_table += titleBelow ? "InFooter"sv : "InHeader"sv;
    m_table += ">\n > # end of TblFormat\n <TblTitleContent \n  <Para \n"
               "   <PgfTag `TableTitle'>\n   <ParaLine \n    <String `"sv;
    MIFFormat::appendString(m_table, title);
    m_table += "'>\n   >\n  >\n > # end of TblTitleContent\n"sv;
}

void MIFWriter::endTable() {
    if (!inTable())
        return;
    endCell();
    endRow();
    endSection(m_section);
    m_table += "> # end Tbl\n"sv;
    m_tableOpen = false;
}

void MIFWriter::startHeader() {
    startSection(Section::header);
}

void MIFWriter::endHeader() {
    endSection(Section::header);
}

void MIFWriter::startBody() {
    startSection(Section::body);
}

void MIFWriter::endBody() {
    endSection(Section::body);
}

void MIFWriter::startSection(Section section) {
    if (!inTable())
        return;
    endSection(m_section);
    m_table += section == Section::header ? " <TblH\n"sv : " <TblBody\n"sv;
    m_section = section;
}

void MIFWriter::endSection(Section section) {
    if (!inTable() || section == Section::none || m_section != section)
        return;
    endRow();
    // The body's closing line has no newline of its own, as existing files have it.
    m_table += section == Section::header ? " >\n"sv : " >"sv;
    m_section = Section::none;
}

void MIFWriter::startRow() {
    if (!inTable())
        return;
    endRow();
    m_table += "  <Row\n"sv;
    m_rowOpen = true;
}

void MIFWriter::endRow() {
    if (!inTable() || !m_rowOpen)
        return;
    endCell();
    m_table += " >"sv;
    m_rowOpen = false;
}

void MIFWriter::startCell(int columns) {
    if (!inTable())
        return;
    endCell();
    m_cellOpen = true;
    m_cellColumns = std::max(columns, 1);
    m_table += "   <Cell "sv;
    if (m_cellColumns > 1) {
        m_table += "<CellColumns "sv;
        MIFFormat::appendInteger(m_table, m_cellColumns);
        m_table += "> "sv;
    }
    m_table += "<CellContent <Para <PgfTag `Cell"sv;
    m_table += m_section == Section::header ? "Heading"sv : "Body"sv;
    m_table += "'>"sv;
}

void MIFWriter::writeCellText(const char* text) {
    if (!inTable() || !m_cellOpen || !text)
        return;
    m_table += " <ParaLine <String `"sv;
    MIFFormat::appendString(m_table, text);
    m_table += "'> > "sv;
}

void MIFWriter::endCell() {
    if (!inTable() || !m_cellOpen)
        return;
    m_table += "> > >\n"sv;
    // The covered columns get empty cells; they are heading cells even in the body, as
    // existing files have them.
    for (int i = 1; i < m_cellColumns; ++i)
        m_table += "   <Cell <CellContent <Para <PgfTag `CellHeading'> <ParaLine <String `'> > "
                   "> > >\n"sv;
    m_cellOpen = false;
    m_cellColumns = 1;
}

bool MIFWriter::close() {
    if (m_closed) {
        fail("the file was closed before");
        return false;
    }
    endTable();
    m_closed = true;
    std::string head = "<MIFFile 5.00> # Ondrivel\n<Units Upt>\n";
    emitArrowCatalog(head);
    writeFontCatalog(head);
    if (m_tableStarted) {
        head += v_rulingCatalog;
        head += "<Tbls\n"sv;
        head += m_table;
        head += "> # end Tbls\n\n"sv;
        head += v_tableTextFlow;
        head += v_endOfFile;
        out().write(head.data(), static_cast<std::streamsize>(head.size()));
        return streamTookIt();
    }
    std::string rect = "  <";
    rect += parameters().mifFrameForm() == mifFrameShapeRect ? "ShapeRect"sv : "BRect"sv;
    rect += "  0 0 "sv;
    MIFFormat::appendReal(rect, m_frameWidth);
    rect += ' ';
    MIFFormat::appendReal(rect, m_frameHeight);
    rect += ">\n"sv;
    head += "<AFrames\n <Frame\n  <ID 1>\n"sv;
    head += rect;
    head += "  <Pen 15>\n  <FrameType Below>\n"sv;
    out().write(head.data(), static_cast<std::streamsize>(head.size()));
    if (!m_objects.writeTo(out()))
        return streamTookIt();
    std::string tail = " > # end of Frame\n> # end of AFrames\n";
    if (!parameters().mifAnchoredFrameOnly()) {
        tail += "<Page \n <PageType BodyPage >\n <TextRect \n  <ID 1>\n  <BRect  0 0 "sv;
        MIFFormat::appendReal(tail, m_frameWidth);
        tail += ' ';
        MIFFormat::appendReal(tail, m_frameHeight);
        tail += ">\n > # end of TextRect\n> # end of Page\n"sv;
        tail += v_frameTextFlow;
    }
    tail += v_endOfFile;
    out().write(tail.data(), static_cast<std::streamsize>(tail.size()));
    return streamTookIt();
}

bool MIFWriter::streamTookIt() {
    if (!out().fail())
        return true;
    fail("the output stream failed");
    return false;
}
