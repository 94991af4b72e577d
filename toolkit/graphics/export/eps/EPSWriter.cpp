#include "graphics/export/eps/EPSWriter_p.h"

#include "graphics/device/QtConversion.h"
#include "graphics/geometry/FloatPoint.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>

namespace {

// The colour operands of each wsiColor in colour and in grey mode; values from
// 19 on (and below 0) are black. 0 is no colour: nothing is written.
constexpr std::array<std::string_view, 20> v_rgb{
    "",       "1 1 1", "0 0 0", "0 0 0",  ".25 .25 .25", ".5 .5 .5", ".75 .75 .75",
    ".7 0 0", "1 0 0", "1 0 0", "0 .7 0", "0 1 0",       "0 1 0",    "0 0 .7",
    "0 0 1",  "0 0 1", "1 0 1", "1 1 0",  "1 1 1",       "0 0 0"};
constexpr std::array<std::string_view, 20> v_gray{"",  "1", "0", "0", ".2", ".5", ".8",
                                                  "0", "0", "0", "0", "0",  "0",  "0",
                                                  "0", "0", "0", "0", "1",  "0"};

// The dash pattern lines of pen styles 0 to 5; other styles write nothing.
constexpr std::array<std::string_view, 6> v_dashes{
    "[] 0 setdash\n",        "[3] 0 setdash\n",           "[1 2] 0 setdash\n",
    "[3 2 1 2] 0 setdash\n", "[3 2 1 2 1 2] 0 setdash\n", "[] 0 setdash\n"};

// Pushes 1 / (the ascent share of the current font's bounding box), the factor that the
// FontBBox term of the text prologue multiplies in (see text()).
constexpr std::string_view v_widthOperand = "currentfont /FontBBox get aload pop exch pop dup 2 "
                                            "index sub exch div exch pop exch pop\n";

// A header coordinate: the device value / 5.0, truncated toward zero.
long long fifths(long long v) {
    return static_cast<long long>(static_cast<double>(v) / 5.0);
}

// target / source, or 1 when the source extent is not above zero.
double ratio(std::int32_t target, std::int32_t source) {
    return source > 0 ? static_cast<double>(target) / source : 1.0;
}

} // namespace

// --- EPSPaintDevice ---------------------------------------------------------------------------

EPSPaintDevice::~EPSPaintDevice() = default;

void EPSPaintDevice::setPage(const DevicePoint& size, double unitsPerInch) {
    m_size = size;
    const double rounded = std::isfinite(unitsPerInch) ? std::round(unitsPerInch) : 360.0;
    m_unitsPerInch = static_cast<int>(std::clamp(rounded, 1.0, 1.0e6));
}

int EPSPaintDevice::metric(PaintDeviceMetric m) const {
    // Device units are fifths of a point at a scale of one: 72 * 5 to the inch.
    constexpr double v_millimetresPerUnit = 25.4 / 360.0;
    switch (m) {
    case PdmWidth:
        return m_size.x();
    case PdmHeight:
        return m_size.y();
    case PdmWidthMM:
        return static_cast<int>(std::lround(m_size.x() * v_millimetresPerUnit));
    case PdmHeightMM:
        return static_cast<int>(std::lround(m_size.y() * v_millimetresPerUnit));
    case PdmNumColors:
        return 1 << 24;
    case PdmDepth:
        return 24;
    case PdmDpiX:
    case PdmDpiY:
    case PdmPhysicalDpiX:
    case PdmPhysicalDpiY:
        return m_unitsPerInch;
    case PdmDevicePixelRatio:
        return 1;
    case PdmDevicePixelRatioScaled:
        return static_cast<int>(devicePixelRatioFScale());
    default:
        return QPaintDevice::metric(m);
    }
}

// --- EPSWriter: output ------------------------------------------------------------------------

EPSWriter::EPSWriter(const char* jobName, std::ostream& out, const ExportParameters& parameters)
    : ExportWriter(jobName, out, parameters), m_grayScale(parameters.isGrayScale()) {}

EPSWriter::~EPSWriter() {
    commit();
}

void EPSWriter::flushBuffer() {
    std::streambuf* buffer = out().rdbuf();
    const auto size = static_cast<std::streamsize>(m_used);
    if (!buffer || buffer->sputn(m_buffer, size) != size || out().fail())
        streamFailed();
    m_used = 0;
}

void EPSWriter::streamFailed() {
    out().setstate(std::ios::badbit);
    fail("the output stream failed");
}

void EPSWriter::put(std::string_view s) {
    if (m_used + s.size() > sizeof m_buffer) {
        flushBuffer();
        if (s.size() > sizeof m_buffer) {
            std::streambuf* buffer = out().rdbuf();
            const auto size = static_cast<std::streamsize>(s.size());
            if (!buffer || buffer->sputn(s.data(), size) != size || out().fail())
                streamFailed();
            return;
        }
    }
    std::memcpy(m_buffer + m_used, s.data(), s.size());
    m_used += s.size();
}

void EPSWriter::putInt(long long v) {
    reserve(24);
    char* const begin = m_buffer + m_used;
    m_used += static_cast<std::size_t>(std::to_chars(begin, begin + 24, v).ptr - begin);
}

// As printf's "%g" (six significant digits), which is what the stream's default real format
// writes, without the locale. A number that is not finite is written as 0.
void EPSWriter::putReal(double v) {
    if (!std::isfinite(v))
        v = 0;
    if (v == 0)
        v = 0; // no "-0"
    reserve(32);
    char* const begin = m_buffer + m_used;
    m_used += static_cast<std::size_t>(
        std::to_chars(begin, begin + 32, v, std::chars_format::general, 6).ptr - begin);
}

// --- The page ---------------------------------------------------------------------------------

void EPSWriter::open(const DeviceRectangle& source, const DeviceRectangle& target,
                     const DevicePoint& deviceSize) {
    const long long height = deviceSize.y();
    put("%!PS-Adobe-3.0");
    put(" EPSF-3.0\n%%BoundingBox: ");
    putInt(fifths(target.left()));
    put(' ');
    putInt(fifths(height - target.bottom()));
    put(' ');
    putInt(fifths(target.right()));
    put(' ');
    putInt(fifths(height - target.top()));
    put(" \n");
    put("gsave\n/languagelevel where {pop languagelevel} {1} ifelse 2 lt {} {true "
        "setstrokeadjust} ifelse\n");
    if (parameters().orientation() == exportLandscape &&
        parameters().paperFeed() != paperFeedLongEdge) {
        // The width is written directly before "0 translate", without a blank: kept so,
        // since existing files have it.
        put("90 rotate\n");
        putInt(fifths(deviceSize.x()));
        put("0 translate\n-1 -1 scale\n");
    }
    put("0 ");
    putInt(fifths(height));
    put(" translate\n1 -1 scale\n");
    putPoint(fifths(target.left()), fifths(target.top()));
    put(" translate\n");
    putReal(ratio(target.width(), source.width()) / 5.0);
    put(' ');
    putReal(ratio(target.height(), source.height()) / 5.0);
    put(" scale\n");
    putPoint(-static_cast<long long>(source.left()), -static_cast<long long>(source.top()));
    put(" translate\n");
    computeFontScaleFactor(source, target);
    put("0 setlinejoin\n1 setlinecap\n");
    putReal(static_cast<double>(m_lineWidth));
    put(" setlinewidth\ngsave\n");
    m_opened = m_drawing = m_pathOpen = true;
    m_pageEnded = m_segmentsPending = m_hasClip = false;
    commit();
}

void EPSWriter::close() {
    if (!m_drawing)
        return;
    strokePending();
    put("grestore\ngrestore\n");
    m_drawing = false;
    commit();
}

void EPSWriter::endOfPage() {
    put("showpage\n");
    m_pageEnded = true;
    commit();
}

DevicePoint EPSWriter::paperSize(const ExportParameters& parameters) {
    const FloatPoint points = parameters.paperSizeInPoints();
    return DevicePoint(static_cast<std::int32_t>(std::lround(points.x() * 5)),
                       static_cast<std::int32_t>(std::lround(points.y() * 5)));
}

DevicePoint EPSWriter::deviceSize(const ExportParameters& parameters) {
    const DevicePoint paper = paperSize(parameters);
    if (parameters.orientation() == exportLandscape)
        return DevicePoint(paper.y(), paper.x());
    return paper;
}

std::string_view EPSWriter::textBytes(const char* text, int length) {
    if (!text)
        return {};
    if (length < 0)
        return std::string_view(text);
    return std::string_view(text, ::strnlen(text, static_cast<std::size_t>(length)));
}

double EPSWriter::fontScaleFactorFor(const DeviceRectangle& source, const DeviceRectangle& target) {
    const double scale =
        source.height() > 0 && target.height() > 0 ? ratio(target.height(), source.height()) : 1;
    return scale / 5.0;
}

void EPSWriter::computeFontScaleFactor(const DeviceRectangle& source,
                                       const DeviceRectangle& target) {
    m_fontScale = fontScaleFactorFor(source, target);
}

// --- Paths and lines --------------------------------------------------------------------------

void EPSWriter::endPath() {
    if (!m_drawing)
        return;
    if (m_pathOpen)
        put("stroke\n");
    m_pathOpen = m_segmentsPending = false;
    commit();
}

void EPSWriter::strokePending() {
    if (m_segmentsPending)
        endPath();
}

void EPSWriter::closePath() {
    if (!m_drawing)
        return;
    put("closepath\n");
    commit();
}

void EPSWriter::moveTo(long x, long y) {
    m_current.setXY(static_cast<std::int32_t>(x), static_cast<std::int32_t>(y));
}

void EPSWriter::lineTo(long x, long y) {
    DevicePoint from = m_current;
    DevicePoint to(static_cast<std::int32_t>(x), static_cast<std::int32_t>(y));
    m_current = to;
    if (!m_drawing)
        return;
    if (m_hasClip && !(m_clip.clipLineSegment(from, to) && m_clip.clipLineSegment(to, from)))
        return;
    reserve(2 * (2 * 12 + 8));
    putPoint(from.x(), from.y());
    put(" moveto\n");
    putPoint(to.x(), to.y());
    put(" lineto\n");
    m_pathOpen = m_segmentsPending = true;
    commit();
}

// --- Drawing state ----------------------------------------------------------------------------

void EPSWriter::writeColor(wsiColor color) {
    const auto index = static_cast<std::size_t>(color);
    const std::size_t row = index < v_rgb.size() ? index : v_rgb.size() - 1;
    put(m_grayScale ? v_gray[row] : v_rgb[row]);
    put(m_grayScale ? " setgray\n" : " setrgbcolor\n");
}

void EPSWriter::setColor(const QColor& qColor) {
    const wsiColor color = QtConversion::nearestWsiColor(qColor);
    if (!m_drawing || color == wsiNoColor)
        return;
    strokePending();
    writeColor(color);
    commit();
}

void EPSWriter::setPenStyle(wsiPenStyle style) {
    if (!m_drawing)
        return;
    endPath();
    const auto index = static_cast<std::size_t>(style);
    if (style >= 0 && index < v_dashes.size())
        put(v_dashes[index]);
    commit();
}

void EPSWriter::setLineWidth(long width) {
    m_lineWidth = width;
    if (!m_drawing)
        return;
    strokePending();
    putInt(width);
    put(" setlinewidth\n");
    commit();
}

void EPSWriter::writeClipPath(const DeviceRectangle& r) {
    put("newpath\n");
    putPoint(r.left(), r.top());
    put(" moveto\n");
    putPoint(r.right(), r.top());
    put(" lineto\n");
    putPoint(r.right(), r.bottom());
    put(" lineto\n");
    putPoint(r.left(), r.bottom());
    put(" lineto\n");
    put("closepath\nclip\nnewpath\n");
}

void EPSWriter::setClipRect(const DeviceRectangle& r) {
    m_clip = r;
    m_hasClip = true;
    if (!m_drawing)
        return;
    endPath();
    put("grestore\ngsave\n");
    writeClipPath(r);
    commit();
}

void EPSWriter::clearClipRect() {
    if (!m_hasClip)
        return;
    m_hasClip = false;
    if (!m_drawing)
        return;
    endPath();
    put("grestore\ngsave\n");
    commit();
}

// --- Shapes and text --------------------------------------------------------------------------

void EPSWriter::curve(const DevicePoint& from, const DevicePoint& first, const DevicePoint& second,
                      const DevicePoint& to) {
    m_current = to;
    if (!m_drawing)
        return;
    endPath();
    putInt(m_lineWidth);
    put(" setlinewidth\nnewpath\n");
    putPoint(from.x(), from.y());
    put(" moveto\n");
    for (const DevicePoint* p : {&first, &second, &to}) {
        putPoint(p->x(), p->y());
        put('\n');
    }
    put("curveto\nstroke\n");
    commit();
}

void EPSWriter::ellipse(const DeviceRectangle& r, bool filled, const QColor& qFill, bool outline) {
    const wsiColor fill = QtConversion::nearestWsiColor(qFill);
    if (!m_drawing || (!filled && !outline))
        return;
    strokePending();
    // The centre is a drawing coordinate, an integer like all of them; the radius keeps its
    // fraction.
    putPoint((static_cast<long long>(r.left()) + r.right()) / 2,
             (static_cast<long long>(r.top()) + r.bottom()) / 2);
    put(' ');
    putReal((static_cast<double>(r.width()) + r.height()) / 4);
    put(" 0 360 arc\n");
    if (filled) {
        put("gsave\n");
        if (fill != wsiNoColor) {
            put("  ");
            writeColor(fill);
        }
        put("  fill\ngrestore\n");
    }
    if (outline) {
        putInt(m_lineWidth);
        put(" setlinewidth\nstroke\n");
    } else {
        put("newpath\n");
    }
    m_pathOpen = m_segmentsPending = false;
    commit();
}

void EPSWriter::filledPolygon(const QColor& qColor, std::size_t n, const DevicePoint* points,
                              bool outline) {
    const wsiColor color = QtConversion::nearestWsiColor(qColor);
    if (!m_drawing || n < 2)
        return;
    strokePending();
    put("newpath\n");
    putPoint(points[0].x(), points[0].y());
    put(" moveto\n");
    for (std::size_t i = 1; i < n; ++i) {
        putPoint(points[i].x(), points[i].y());
        put(" lineto\n");
    }
    put("closepath\ngsave\n");
    if (color != wsiNoColor) {
        put("  ");
        writeColor(color);
    }
    put(outline ? "  gsave fill grestore\n  stroke\n" : "  fill\n");
    put("grestore\nnewpath\n");
    m_pathOpen = m_segmentsPending = false;
    commit();
}

// The prologue's fixed lines are kept as existing files have them. Between them: the first number
// (0) keeps the start point on the baseline; the FontBBox term multiplies the operand pushed after
// the font selection (v_widthOperand, its inverse) into the x scale, which thus comes out at 1 for
// every font; "1 -1 scale" turns the glyphs upright in the y-down drawing space.
void EPSWriter::text(std::string_view text, const DevicePoint& at, const char* fontName,
                     double size, const QColor& qColor) {
    const wsiColor color = QtConversion::nearestWsiColor(qColor);
    if (!m_drawing)
        return;
    put('/');
    put(fontName);
    put(" findfont ");
    putReal(size);
    put(" scalefont setfont\n");
    put(v_widthOperand);
    endPath();
    put("gsave\n");
    if (m_hasClip)
        writeClipPath(m_clip);
    putPoint(at.x(), at.y());
    put(" currentfont dup /FontMatrix get 0 get exch /FontType get 42 ne {1000 mul}if\n");
    putInt(0);
    put(" mul add moveto\n");
    put("currentfont /FontBBox get aload pop exch pop dup 2 index sub div exch pop exch pop "
        "mul ");
    putInt(1);
    put(" scale\n");
    put("1 ");
    putInt(-1);
    put(" scale\n");
    if (color != wsiNoColor)
        writeColor(color);
    put('(');
    for (const char c : text) {
        const auto code = static_cast<signed char>(c);
        if (code < 32) {
            // The code as a sign-extended 32-bit value in octal: byte 0xA9 is "\37777777651".
            reserve(12);
            m_buffer[m_used++] = '\\';
            const auto value = static_cast<std::uint32_t>(static_cast<std::int32_t>(code));
            char* const begin = m_buffer + m_used;
            m_used +=
                static_cast<std::size_t>(std::to_chars(begin, begin + 11, value, 8).ptr - begin);
        } else if (c == '\\' || c == '(' || c == ')') {
            put('\\');
            put(c);
        } else {
            put(c);
        }
    }
    put(") show\ngrestore\n");
    commit();
}
