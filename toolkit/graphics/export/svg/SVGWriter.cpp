#include "graphics/export/svg/SVGWriter_p.h"

#include "graphics/export/svg/SVGFormat.h"

#include <QFontInfo>
#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>

namespace {

// The dash patterns of the pen styles, in pen widths, as the painter draws them; the custom
// dash (which has no pattern of its own here) and unknown styles draw solid.
struct Dashes {
    std::array<int, 6> lengths;
    std::size_t count;
};
const Dashes* dashesOf(wsiPenStyle style) {
    static constexpr Dashes v_dash{{4, 2}, 2}, v_dot{{1, 2}, 2}, v_dashDot{{4, 2, 1, 2}, 4},
        v_dashDotDot{{4, 2, 1, 2, 1, 2}, 6};
    switch (style) {
    case wsiPenDash:
        return &v_dash;
    case wsiPenDot:
        return &v_dot;
    case wsiPenDashDot:
        return &v_dashDot;
    case wsiPenDashDotDot:
        return &v_dashDotDot;
    default:
        return nullptr;
    }
}

// Whether the polygon is convex (or degenerate): every turn the same way and its edges
// turning round once. Convex polygons fill alike under every fill rule, so they can share
// one path of many subpaths; sign is set to the direction they turn (0 when they never do).
bool isConvex(const DevicePoint* p, std::size_t n, int& sign) {
    sign = 0;
    int xFlips = 0, lastDx = 0;
    for (std::size_t i = 0; i < n; ++i) {
        const DevicePoint& a = p[i];
        const DevicePoint& b = p[(i + 1) % n];
        const DevicePoint& c = p[(i + 2) % n];
        const long long cross =
            (static_cast<long long>(b.x()) - a.x()) * (static_cast<long long>(c.y()) - b.y()) -
            (static_cast<long long>(b.y()) - a.y()) * (static_cast<long long>(c.x()) - b.x());
        const int turn = cross > 0 ? 1 : cross < 0 ? -1 : 0;
        if (turn != 0) {
            if (sign != 0 && turn != sign)
                return false;
            sign = turn;
        }
        const int dx = b.x() > a.x() ? 1 : b.x() < a.x() ? -1 : 0;
        if (dx != 0) {
            if (lastDx != 0 && dx != lastDx)
                ++xFlips;
            lastDx = dx;
        }
    }
    // The flips counted miss the one from the last edge back to the first.
    for (std::size_t i = 0; i < n; ++i) {
        const int dx = p[(i + 1) % n].x() > p[i].x() ? 1 : p[(i + 1) % n].x() < p[i].x() ? -1 : 0;
        if (dx != 0) {
            if (lastDx != 0 && dx != lastDx)
                ++xFlips;
            break;
        }
    }
    return xFlips <= 2;
}

bool isOpaque(QRgb color) {
    return qAlpha(color) == 255;
}

} // namespace

SVGWriter::SVGWriter(const char* jobName, std::ostream& out, const ExportParameters& parameters)
    : ExportWriter(jobName, out, parameters), m_buffer(new char[v_bufferSize]) {}

SVGWriter::~SVGWriter() = default;

// --- Output -----------------------------------------------------------------------------------

void SVGWriter::flushBuffer() {
    std::streambuf* buffer = out().rdbuf();
    const auto size = static_cast<std::streamsize>(m_used);
    if (m_used && (!buffer || buffer->sputn(m_buffer.get(), size) != size || out().fail())) {
        out().setstate(std::ios::badbit);
        fail("the output stream failed");
    }
    m_used = 0;
}

void SVGWriter::put(std::string_view s) {
    char* at = room(s.size());
    std::memcpy(at, s.data(), s.size());
    m_used += s.size();
}

void SVGWriter::putInteger(long long v) {
    advanceTo(SVGFormat::appendInteger(room(SVGFormat::v_numberRoom), v));
}

void SVGWriter::putNumber(double v) {
    advanceTo(SVGFormat::appendNumber(room(SVGFormat::v_numberRoom), v));
}

void SVGWriter::putEscaped(std::string_view s) {
    advanceTo(
        SVGFormat::appendEscaped(room(s.size() * SVGFormat::v_escapedRoom), s.data(), s.size()));
}

// --- The document -----------------------------------------------------------------------------

void SVGWriter::open(int width, int height, int resolution) {
    width = std::max(width, 0);
    height = std::max(height, 0);
    const double cssPixels = 96.0 / std::max(resolution, 1);
    put("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<svg xmlns=\"http://www.w3.org/2000/svg\" "
        "version=\"1.1\" width=\"");
    putNumber(width * cssPixels);
    put("\" height=\"");
    putNumber(height * cssPixels);
    put("\" viewBox=\"0 0 ");
    putNumber(width);
    put(" ");
    putNumber(height);
    // Text keeps its blanks as the painter draws them.
    put("\" xml:space=\"preserve\">\n<title>");
    putEscaped(std::string_view(jobName()).substr(0, v_maxText));
    // The painter's pen: square caps and bevel joins.
    put("</title>\n<g fill=\"none\" stroke-linecap=\"square\" stroke-linejoin=\"bevel\">\n");
    m_writing = true;
}

bool SVGWriter::close() {
    if (m_writing) {
        endRun();
        if (m_clipOpen)
            put("</g>\n");
        put("</g>\n</svg>\n");
        m_writing = false;
    }
    flushBuffer();
    return error() == nullptr;
}

// --- Drawing state ----------------------------------------------------------------------------

void SVGWriter::setColor(const QColor& color) {
    if (color.isValid())
        m_color = color.rgba();
}

void SVGWriter::setPenStyle(wsiPenStyle style) {
    m_style = style;
}

void SVGWriter::setLineWidth(long width) {
    m_width = width;
}

void SVGWriter::setClipRect(const DeviceRectangle& r) {
    m_clip = r;
    m_clipSet = true;
}

// --- Runs -------------------------------------------------------------------------------------

// A clip is written when something is drawn under it, as a clip path and a group that holds
// every element until the clip changes.
void SVGWriter::applyClip() {
    if (!m_clipSet || (m_clipOpen && m_clip == m_writtenClip))
        return;
    endRun();
    if (m_clipOpen)
        put("</g>\n");
    ++m_clipCount;
    put("<clipPath id=\"c");
    putInteger(m_clipCount);
    put("\"><rect x=\"");
    putInteger(m_clip.left());
    put("\" y=\"");
    putInteger(m_clip.top());
    put("\" width=\"");
    putInteger(std::max<long long>(0, static_cast<long long>(m_clip.right()) - m_clip.left()));
    put("\" height=\"");
    putInteger(std::max<long long>(0, static_cast<long long>(m_clip.bottom()) - m_clip.top()));
    put("\"/></clipPath>\n<g clip-path=\"url(#c");
    putInteger(m_clipCount);
    put(")\">\n");
    m_clipOpen = true;
    m_writtenClip = m_clip;
}

void SVGWriter::writeOpacity(const char* attribute, QRgb color) {
    if (isOpaque(color))
        return;
    put(attribute);
    putNumber(qAlpha(color) / 255.0);
    put("\"");
}

void SVGWriter::writeStrokeAttributes(QRgb color) {
    put(" stroke=\"");
    advanceTo(SVGFormat::appendColor(room(SVGFormat::v_colorRoom), color));
    put("\"");
    writeOpacity(" stroke-opacity=\"", color);
    // A width of 0 is the painter's cosmetic pen of one unit, SVG's default width.
    const long long width = std::max(m_width, 1L);
    if (width != 1) {
        put(" stroke-width=\"");
        putInteger(width);
        put("\"");
    }
    if (const Dashes* dashes = dashesOf(m_style)) {
        put(" stroke-dasharray=\"");
        for (std::size_t i = 0; i < dashes->count; ++i) {
            if (i)
                put(",");
            putInteger(dashes->lengths[i] * width);
        }
        put("\"");
    }
}

bool SVGWriter::beginRun(Run kind, QRgb color, bool evenOdd) {
    if (!m_writing)
        return false;
    if (m_style == wsiPenNull) {
        // No pen: outlines vanish and filled shapes keep only their fill.
        if (kind == Run::Stroke)
            return false;
        if (kind == Run::FillStroke)
            kind = Run::Fill;
    }
    applyClip();
    const bool strokes = kind == Run::Stroke || kind == Run::FillStroke;
    // Translucent shapes are not merged: where they overlap they show darker, as painted.
    if (m_run == kind && m_runColor == color && isOpaque(color) && !evenOdd &&
        (!strokes || (m_runWidth == m_width && m_runStyle == m_style)))
        return true;
    endRun();
    put("<path");
    if (kind != Run::Stroke) {
        put(" fill=\"");
        advanceTo(SVGFormat::appendColor(room(SVGFormat::v_colorRoom), color));
        put("\"");
        writeOpacity(" fill-opacity=\"", color);
    }
    if (strokes)
        writeStrokeAttributes(color);
    put(evenOdd ? " fill-rule=\"evenodd\" d=\"" : " d=\"");
    m_run = kind;
    m_runColor = color;
    m_runWidth = m_width;
    m_runStyle = m_style;
    m_command = 0;
    m_separate = false;
    m_penX = m_penY = m_startX = m_startY = 0;
    m_penKnown = true;
    return true;
}

bool SVGWriter::beginText(const WsiFont& font, double size) {
    if (!m_writing)
        return false;
    applyClip();
    const WsiFont& f = m_runFont;
    if (m_run == Run::Text && m_runColor == m_color && m_runSize == size &&
        f.isBold() == font.isBold() && f.isItalic() == font.isItalic() &&
        f.isUnderline() == font.isUnderline() && f.isOverline() == font.isOverline() &&
        f.family() == font.family())
        return true;
    endRun();
    put("<g fill=\"");
    advanceTo(SVGFormat::appendColor(room(SVGFormat::v_colorRoom), m_color));
    put("\"");
    writeOpacity(" fill-opacity=\"", m_color);
    put(" font-family=\"");
    if (font.family().isEmpty() && m_defaultFamily.isEmpty())
        m_defaultFamily = QFontInfo(font.toQFont()).family();
    const QByteArray family = (font.family().isEmpty() ? m_defaultFamily : font.family()).toUtf8();
    putEscaped(std::string_view(family.constData(), std::size_t(family.size())).substr(0, 256));
    put("\" font-size=\"");
    putNumber(size);
    put("\"");
    if (font.isBold())
        put(" font-weight=\"bold\"");
    if (font.isItalic())
        put(" font-style=\"italic\"");
    if (font.isUnderline() || font.isOverline()) {
        put(" text-decoration=\"");
        put(font.isUnderline() && font.isOverline() ? "underline overline"
            : font.isUnderline()                    ? "underline"
                                                    : "overline");
        put("\"");
    }
    put(">\n");
    m_run = Run::Text;
    m_runColor = m_color;
    m_runFont = font;
    m_runSize = size;
    return true;
}

void SVGWriter::endRun() {
    if (m_run == Run::Text)
        put("</g>\n");
    else if (m_run != Run::None)
        put("\"/>\n");
    m_run = Run::None;
}

// --- Path data --------------------------------------------------------------------------------

void SVGWriter::command(char letter) {
    if (letter == m_command)
        return;
    char* at = room(1);
    *at = letter;
    m_used += 1;
    // After a move, further pairs of numbers are lines.
    m_command = letter == 'm' ? 'l' : letter == 'M' ? 'L' : letter;
    m_separate = false;
}

void SVGWriter::number(long long v) {
    char* at = room(SVGFormat::v_numberRoom + 1);
    // A minus sign separates numbers by itself.
    if (m_separate && v >= 0)
        *at++ = ' ';
    advanceTo(SVGFormat::appendInteger(at, v));
    m_separate = true;
}

void SVGWriter::moveTo(std::int32_t x, std::int32_t y) {
    // Always with its letter: a repeated move would read as a line.
    m_command = 0;
    command(m_penKnown ? 'm' : 'M');
    number(static_cast<long long>(x) - (m_penKnown ? m_penX : 0));
    number(static_cast<long long>(y) - (m_penKnown ? m_penY : 0));
    m_penKnown = true;
    m_penX = m_startX = x;
    m_penY = m_startY = y;
}

void SVGWriter::lineTo(std::int32_t x, std::int32_t y) {
    const long long dx = static_cast<long long>(x) - m_penX,
                    dy = static_cast<long long>(y) - m_penY;
    if (dy == 0) {
        command('h');
        number(dx);
    } else if (dx == 0) {
        command('v');
        number(dy);
    } else {
        command('l');
        number(dx);
        number(dy);
    }
    m_penX = x;
    m_penY = y;
}

void SVGWriter::closeSubpath() {
    command('z');
    m_command = 0;
    m_penX = m_startX;
    m_penY = m_startY;
}

// --- Clipped geometry -------------------------------------------------------------------------

bool SVGWriter::insideClip(const DevicePoint* points, std::size_t n) const {
    return !m_clipSet || std::all_of(points, points + n,
                                     [&](const DevicePoint& p) { return m_clip.containsPoint(p); });
}

bool SVGWriter::clipSegment(DevicePoint& from, DevicePoint& to) const {
    if (!m_clipSet)
        return true;
    const DevicePoint start = from;
    return m_clip.clipLineSegment(from, to) && m_clip.clipLineSegment(to, start);
}

void SVGWriter::clippedPolyline(const DevicePoint* points, std::size_t n, bool closed) {
    bool open = false;
    const std::size_t segments = closed ? n : n - 1;
    for (std::size_t i = 0; i < segments; ++i) {
        DevicePoint a = points[i], b = points[(i + 1) % n];
        if (!clipSegment(a, b) || !beginRun(Run::Stroke, m_color))
            continue;
        if (!open || a.x() != m_penX || a.y() != m_penY)
            moveTo(a.x(), a.y());
        lineTo(b.x(), b.y());
        open = true;
    }
    if (open && !isOpaque(m_color))
        endRun();
}

// Sutherland and Hodgman's clipping of the polygon by each edge of the rectangle in turn.
const DevicePoint* SVGWriter::clippedPolygon(const DevicePoint* points, std::size_t& n) {
    std::vector<std::pair<double, double>>* in = &m_clipWork[0];
    std::vector<std::pair<double, double>>* out = &m_clipWork[1];
    in->clear();
    for (std::size_t i = 0; i < n; ++i)
        in->emplace_back(points[i].x(), points[i].y());
    const double edges[4] = {double(m_clip.left()), double(m_clip.right()), double(m_clip.top()),
                             double(m_clip.bottom())};
    for (int edge = 0; edge < 4 && !in->empty(); ++edge) {
        // Edge 0 keeps x >= left, 1 x <= right, 2 y >= top, 3 y <= bottom.
        auto distance = [&](const std::pair<double, double>& p) {
            const double v = edge < 2 ? p.first : p.second;
            return edge % 2 == 0 ? v - edges[edge] : edges[edge] - v;
        };
        out->clear();
        for (std::size_t i = 0; i < in->size(); ++i) {
            const auto& a = (*in)[i];
            const auto& b = (*in)[(i + 1) % in->size()];
            const double da = distance(a), db = distance(b);
            if (da >= 0)
                out->push_back(a);
            if ((da >= 0) != (db >= 0)) {
                const double t = da / (da - db);
                out->emplace_back(a.first + t * (b.first - a.first),
                                  a.second + t * (b.second - a.second));
            }
        }
        std::swap(in, out);
    }
    m_clipped.clear();
    for (const auto& [x, y] : *in) {
        const DevicePoint p(static_cast<std::int32_t>(std::lround(x)),
                            static_cast<std::int32_t>(std::lround(y)));
        if (m_clipped.empty() || !(m_clipped.back() == p))
            m_clipped.push_back(p);
    }
    if (m_clipped.size() > 1 && m_clipped.front() == m_clipped.back())
        m_clipped.pop_back();
    n = m_clipped.size();
    return m_clipped.data();
}

// --- Shapes and text --------------------------------------------------------------------------

void SVGWriter::line(const DevicePoint& from, const DevicePoint& to) {
    DevicePoint a = from, b = to;
    if (!clipSegment(a, b) || !beginRun(Run::Stroke, m_color))
        return;
    moveTo(a.x(), a.y());
    lineTo(b.x(), b.y());
    if (!isOpaque(m_color))
        endRun();
}

void SVGWriter::polyline(const DevicePoint* points, std::size_t n, bool closed) {
    if (n < 2)
        return;
    if (!insideClip(points, n))
        return clippedPolyline(points, n, closed);
    if (!beginRun(Run::Stroke, m_color))
        return;
    moveTo(points[0].x(), points[0].y());
    // Points that repeat the last one are left out, and straight runs of level or upright
    // segments are written as one segment: their joins do not show.
    std::int32_t x = points[0].x(), y = points[0].y();
    bool drawn = false;
    for (std::size_t i = 1; i < n; ++i) {
        const std::int32_t nx = points[i].x(), ny = points[i].y();
        if (nx == x && ny == y)
            continue;
        const bool level = ny == y && m_penY == y, upright = nx == x && m_penX == x;
        const bool onward = (level && (nx > x) == (x > m_penX) && x != m_penX) ||
                            (upright && (ny > y) == (y > m_penY) && y != m_penY);
        if (drawn && !onward)
            lineTo(x, y);
        x = nx;
        y = ny;
        drawn = true;
    }
    // A polyline of one point is a dot, as the painter draws it.
    lineTo(x, y);
    if (closed)
        closeSubpath();
    if (!isOpaque(m_color))
        endRun();
}

void SVGWriter::curve(const DevicePoint& from, const DevicePoint& first, const DevicePoint& second,
                      const DevicePoint& to) {
    if (!beginRun(Run::Stroke, m_color))
        return;
    moveTo(from.x(), from.y());
    command('c');
    for (const DevicePoint* p : {&first, &second, &to}) {
        number(static_cast<long long>(p->x()) - from.x());
        number(static_cast<long long>(p->y()) - from.y());
    }
    m_penX = to.x();
    m_penY = to.y();
    if (!isOpaque(m_color))
        endRun();
}

void SVGWriter::filledPolygon(QRgb color, const DevicePoint* points, std::size_t n, bool outline) {
    if (n >= 2 && !insideClip(points, n))
        points = clippedPolygon(points, n);
    if (n < 2)
        return;
    int sign = 0;
    const bool convex = isConvex(points, n, sign);
    // The painter fills odd-even: any other polygon gets an element of its own, whose fill
    // rule cannot carve holes into its neighbours.
    if (!beginRun(outline ? Run::FillStroke : Run::Fill, color, !convex))
        return;
    // Convex subpaths all wound one way fill as their union under the default rule.
    if (sign < 0) {
        moveTo(points[n - 1].x(), points[n - 1].y());
        for (std::size_t i = n - 1; i-- > 0;)
            lineTo(points[i].x(), points[i].y());
    } else {
        moveTo(points[0].x(), points[0].y());
        for (std::size_t i = 1; i < n; ++i)
            lineTo(points[i].x(), points[i].y());
    }
    closeSubpath();
    if (!convex || !isOpaque(color))
        endRun();
}

void SVGWriter::filledRect(QRgb color, const DeviceRectangle& area) {
    DeviceRectangle r = area;
    if (m_clipSet)
        r.setOriginCorner(std::max(r.left(), m_clip.left()), std::max(r.top(), m_clip.top()),
                          std::min(r.right(), m_clip.right()),
                          std::min(r.bottom(), m_clip.bottom()));
    const long long width = static_cast<long long>(r.right()) - r.left(),
                    height = static_cast<long long>(r.bottom()) - r.top();
    if (width <= 0 || height <= 0 || !beginRun(Run::Fill, color))
        return;
    moveTo(r.left(), r.top());
    command('h');
    number(width);
    command('v');
    number(height);
    command('h');
    number(-width);
    closeSubpath();
    if (!isOpaque(color))
        endRun();
}

void SVGWriter::ellipse(const DeviceRectangle& r, bool filled) {
    if (!beginRun(filled ? Run::FillStroke : Run::Stroke, m_color))
        return;
    const double rx = (static_cast<double>(r.right()) - r.left()) / 2,
                 ry = (static_cast<double>(r.bottom()) - r.top()) / 2;
    // Two half arcs from the left end of the horizontal axis and back, which need not lie on
    // a whole unit: this subpath and the next one start at absolute positions.
    put("M");
    putInteger(r.left());
    put(" ");
    putNumber(r.top() + ry);
    for (const double across : {2 * rx, -2 * rx}) {
        put("a");
        putNumber(rx);
        put(" ");
        putNumber(ry);
        put(" 0 1 0 ");
        putNumber(across);
        put(" 0");
    }
    put("z");
    m_command = 0;
    m_penKnown = false;
    if (!isOpaque(m_color))
        endRun();
}

void SVGWriter::text(std::string_view text, const DevicePoint& at, const WsiFont& font,
                     double unitsPerPoint) {
    if (text.size() > v_maxText) {
        std::size_t cut = v_maxText;
        // Back to the start of a character, so the last one is not cut in two.
        while (cut > 0 && (static_cast<unsigned char>(text[cut]) & 0xC0) == 0x80)
            --cut;
        text = text.substr(0, cut);
    }
    if (text.empty() || !beginText(font, font.pointSize() * unitsPerPoint))
        return;
    put("<text x=\"");
    putInteger(at.x());
    put("\" y=\"");
    putInteger(at.y());
    put("\">");
    putEscaped(text);
    put("</text>\n");
}
