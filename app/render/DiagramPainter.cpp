#include "render/DiagramPainter.h"

#include "model/SignalPattern.h"
#include "render/Label.h"
#include "render/NameCache.h"

#include "graphics/device/Device.h"
#include "graphics/device/QtConversion.h"
#include "graphics/device/TqPainter.h"
#include "graphics/geometry/DevicePoint.h"
#include "graphics/geometry/DeviceRectangle.h"
#include "graphics/geometry/FloatPoint.h"
#include "graphics/geometry/SheetRectangle.h"

#include <QPaintEngine>

#include <algorithm>
#include <cmath>
#include <memory>

namespace {

// The fonts of the picture. Sizes are in points: on every device a point is 96/72 layout
// pixels, so text keeps its place against the waveforms.
WsiFont& nameFont() {
    static WsiFont font("DejaVu Sans", 9);
    return font;
}

WsiFont& smallFont() {
    static WsiFont font("DejaVu Sans", 7.5);
    return font;
}

WsiFont& groupFont() {
    static WsiFont font = [] {
        WsiFont f("DejaVu Sans", 9);
        f.setBold(true);
        return f;
    }();
    return font;
}

// An arrow's line and heads, in device units; head is a head's length and width. A curve is
// the S-curve of a signal transition, leaving and reaching its ends level, so its heads are
// short straight stubs along the time axis (along the row axis when the ends share a time).
void drawArrow(Device& device, const Arrow& arrow, const DevicePoint& from, const DevicePoint& to,
               const DevicePoint& head) {
    const bool startHead = arrow.heads == ArrowHeads::Start || arrow.heads == ArrowHeads::Both;
    const bool endHead = arrow.heads == ArrowHeads::End || arrow.heads == ArrowHeads::Both;
    if (arrow.shape == ArrowShape::Straight) {
        DevicePoint points[] = {from, to};
        device.drawCappedPolylineUnTransformed(startHead ? wsiLineCapArrow : wsiLineCapRound,
                                               endHead ? wsiLineCapArrow : wsiLineCapRound, head, 2,
                                               points);
        return;
    }
    device.drawCurveUnTransformed(from, to);
    const bool across = from.x() == to.x();
    const std::int32_t sign = (across ? to.y() >= from.y() : to.x() >= from.x()) ? 1 : -1;
    const std::int32_t dx = across ? 0 : sign * head.x(), dy = across ? sign * head.x() : 0;
    if (endHead) {
        DevicePoint stub[] = {DevicePoint(to.x() - dx, to.y() - dy), to};
        device.drawCappedPolylineUnTransformed(wsiLineCapRound, wsiLineCapArrow, head, 2, stub);
    }
    if (startHead) {
        DevicePoint stub[] = {DevicePoint(from.x() + dx, from.y() + dy), from};
        device.drawCappedPolylineUnTransformed(wsiLineCapRound, wsiLineCapArrow, head, 2, stub);
    }
}

WsiFont& titleFont() {
    static WsiFont font = [] {
        WsiFont f("DejaVu Sans", 12);
        f.setBold(true);
        return f;
    }();
    return font;
}

WsiFont& noteFont() {
    static WsiFont font = [] {
        WsiFont f("DejaVu Sans", 7.5);
        f.setItalic(true);
        return f;
    }();
    return font;
}

// Text widths in layout pixels, measured on a device without a painter at 96 per inch.
double measure(const std::string& text, WsiFont& font) {
    static Device measuring;
    return static_cast<double>(labelWidth(measuring, text, font));
}

// The largest unit in which every tick (a multiple of step) is a whole number.
std::string axisLabel(Time t, Time step, TimeUnit unit) {
    int index = static_cast<int>(unit);
    Time factor = 1;
    while (index < static_cast<int>(TimeUnit::s) && step % (factor * 1000) == 0) {
        factor *= 1000;
        ++index;
    }
    std::string label = std::to_string(t / factor);
    label.append(timeUnitName(static_cast<TimeUnit>(index)));
    return label;
}

// The hatch of unknown slots as a brush: strokes up and right every four pixels, transparent
// between them. Pixel (x, y) of the brush is on a stroke when x + y is a multiple of 4.
const QBrush& hatchBrush() {
    static const QBrush brush = [] {
        QImage tile(4, 4, QImage::Format_ARGB32_Premultiplied);
        tile.fill(Qt::transparent);
        for (int y = 0; y < 4; ++y)
            tile.setPixel((4 - y) % 4, y, QtConversion::asQColor(wsiGray).rgba());
        return QBrush(tile);
    }();
    return brush;
}

} // namespace

DiagramPainter::DiagramPainter(const Diagram& diagram, const RenderOptions& options)
    : m_diagram(diagram), m_options(options) {}

bool DiagramPainter::layout(std::string& error) {
    std::vector<SignalPattern> patterns;
    for (const std::string& text : m_options.patterns)
        patterns.emplace_back(text.c_str());
    const Time from = m_options.from.value_or(m_diagram.spanStart());
    const Time to = m_options.to.value_or(m_diagram.spanEnd());
    if (to <= from) {
        error = "the time window is empty: ";
        error.append(formatTime(from, m_diagram.timeUnit()))
            .append(" to ")
            .append(formatTime(to, m_diagram.timeUnit()));
        return false;
    }

    m_rows.clear();
    double nameWidth = 40;
    double y = v_margin;
    m_titleTop = y;
    if (!m_diagram.title().empty())
        y += v_titleHeight;
    m_markerTop = y;
    if (!m_diagram.markers().empty())
        y += v_labelRowHeight;
    m_axisTop = y;
    y += v_axisHeight;
    m_annotationTop = y;
    if (std::any_of(m_diagram.annotations().begin(), m_diagram.annotations().end(),
                    [](const Annotation& a) { return a.signal.empty(); }))
        y += v_labelRowHeight;
    m_rowsTop = y;
    std::string group;
    for (std::size_t i = 0; i < m_diagram.signalCount(); ++i) {
        const Signal& signal = m_diagram.signal(i);
        const bool selected =
            patterns.empty() || std::any_of(patterns.begin(), patterns.end(), [&](auto& p) {
                return p.matches(signal.name().c_str());
            });
        if (!selected)
            continue;
        if (signal.group() != group) {
            group = signal.group();
            // Signals outside any group that follow a group get a bare rule, so they are not
            // read as members of the group above them.
            const double height = group.empty() ? v_groupHeight / 2 : v_groupHeight;
            m_rows.push_back({Signal::npos, group, y, height});
            y += height;
            if (!group.empty())
                nameWidth = std::max(nameWidth, measure(group, groupFont()));
        }
        m_rows.push_back({i, group, y, v_rowHeight});
        y += v_rowHeight;
        if (signal.nameShown())
            nameWidth =
                std::max(nameWidth, measure(signal.name(), nameFont()) + (group.empty() ? 0 : 10));
    }
    if (m_rows.empty()) {
        error = "no signal matches the patterns given";
        return false;
    }
    m_rowsBottom = y;
    m_width = std::max(m_options.width, 200);
    m_height = static_cast<int>(std::ceil(y + v_margin));
    m_nameRight = v_margin + std::min(nameWidth + 12, m_width * 0.4);
    m_scale = TimeScale(from, to, m_nameRight + 8, m_width - v_margin - 8);
    return true;
}

double DiagramPainter::rowMiddle(const std::string& signal) const {
    const std::size_t index = m_diagram.findSignal(signal);
    for (const Row& row : m_rows) {
        if (row.signal == index && index != Signal::npos)
            return row.top + row.height / 2;
    }
    return -1;
}

// Each change of pen or colour is a state change for every device (a new QPen, a line of
// PostScript), so the painter makes one only when the value differs.
void DiagramPainter::setPen(Device& device, double pixels) {
    const long width = std::max(1L, std::lround(pixels * m_unitsPerPixel));
    if (device.penWidth() != width)
        device.setPenWidth(width);
}

void DiagramPainter::setInk(Device& device, wsiColor color) {
    if (device.color() != color)
        device.setColor(color);
}

// Qt draws lines one device pixel wide on a fast path and wider ones through its stroker, at
// several times the cost. On the screen a level line two pixels wide is drawn as one-pixel
// lines: once where it lies, and once a pixel up (a level) or to the left (an edge). That
// gives the stroker's pixels but for a corner pixel here and there, and an edge that steps a
// row earlier or later. The points are mapped once, without the repeated ones a level after a
// dense block brings, and each pass is one list of lines.
void DiagramPainter::drawLevel(Device& device, int n, const SheetPoint* points) {
    TqPainter* painter = pixelPainter(device);
    if (!painter || std::lround(1.5 * m_unitsPerPixel) != 2) {
        setPen(device, 1.5);
        if (n == 2)
            device.drawLine(points[0], points[1]);
        else
            device.drawPolyline(n, points);
        return;
    }
    setPen(device, 1);
    const TqMatrix& m = device.displayTransformation(false);
    std::vector<QLine>& lines = m_deviceLines;
    lines.clear();
    DevicePoint mapped;
    mapped.set(points[0], m);
    QPoint from(mapped.x(), mapped.y());
    for (int k = 1; k < n; ++k) {
        mapped.set(points[k], m);
        const QPoint to(mapped.x(), mapped.y());
        if (to != from)
            lines.emplace_back(from, to);
        from = to;
    }
    const int count = static_cast<int>(lines.size());
    painter->drawLines(lines.data(), count);
    for (QLine& line : lines) {
        if (std::abs(line.dx()) >= std::abs(line.dy()))
            line.translate(0, -1);
        else
            line.translate(-1, 0);
    }
    painter->drawLines(lines.data(), count);
}

// On the screen the lines go to the painter in one call.
void DiagramPainter::drawLines(Device& device, int n, const SheetPoint* ends) {
    TqPainter* painter = pixelPainter(device);
    if (!painter) {
        for (int k = 0; k < n; ++k)
            device.drawLine(ends[2 * k], ends[2 * k + 1]);
        return;
    }
    const TqMatrix& m = device.displayTransformation(false);
    std::vector<QLine>& lines = m_deviceLines;
    lines.clear();
    for (int k = 0; k < n; ++k) {
        const DevicePoint from(ends[2 * k], m), to(ends[2 * k + 1], m);
        lines.emplace_back(from.x(), from.y(), to.x(), to.y());
    }
    painter->drawLines(lines.data(), n);
}

Time DiagramPainter::tickStep() const {
    const double minimum = 80 / m_scale.pixelsPerTime();
    Time step = 1;
    while (true) {
        for (Time multiple : {1, 2, 5}) {
            if (static_cast<double>(step * multiple) >= minimum)
                return step * multiple;
        }
        if (step > (std::numeric_limits<Time>::max() / 100))
            return step;
        step *= 10;
    }
}

void DiagramPainter::paint(Device& device, double unitsPerPixel) {
    paintBand(device, unitsPerPixel, 0, m_height);
}

void DiagramPainter::paintBand(Device& device, double unitsPerPixel, double top, double bottom) {
    top = std::max(top, 0.0);
    bottom = std::min(bottom, static_cast<double>(m_height));
    if (bottom <= top)
        return;
    m_unitsPerPixel = unitsPerPixel;
    device.setPenWidth(std::max(1L, std::lround(unitsPerPixel)));
    device.setDisplayTransformation(
        TqMatrix(FloatPoint(unitsPerPixel, unitsPerPixel), FloatPoint(0, 0)));
    const SheetRectangle band(SheetPoint(0, top), SheetPoint(m_width, bottom));
    // The whole picture needs no clip (and a file would only carry it).
    if (top > 0 || bottom < m_height)
        device.setClipRect(band);
    device.setBackgroundColor(wsiWhite);
    device.setColor(wsiWhite);
    device.fillRectangle(band);
    device.setPenStyle(wsiPenSolid);
    device.setBackgroundFillMode(wsiTransparent);

    auto reaches = [&](double from, double to) { return from < bottom && to > top; };
    if (!m_diagram.title().empty() && reaches(m_titleTop, m_titleTop + v_titleHeight)) {
        setInk(device, wsiBlack);
        drawLabel(device, m_diagram.title(),
                  SheetPoint((m_scale.left() + m_scale.right()) / 2, m_titleTop + 4), titleFont(),
                  wsiAlignHCenter, wsiAlignTop);
    }
    if (reaches(m_rowsTop, m_rowsBottom))
        paintGrid(device);
    if (reaches(m_axisTop, m_axisTop + v_axisHeight))
        paintAxis(device, m_axisTop + v_axisHeight);
    // Rows stay within their own height but for a pixel of antialiasing.
    const double reach = 2;
    auto row = std::partition_point(m_rows.begin(), m_rows.end(),
                                    [&](const Row& r) { return r.top + r.height + reach <= top; });
    for (; row != m_rows.end() && row->top - reach < bottom; ++row) {
        if (Device::checkBreakExecution())
            return;
        paintRow(device, *row);
    }
    paintDecorations(device);
}

void DiagramPainter::paintAxis(Device& device, double bottom) {
    const Time step = tickStep();
    const double line = bottom - 6;
    setInk(device, wsiDarkGray);
    setPen(device, 1);
    device.drawLine(SheetPoint(m_scale.left(), line), SheetPoint(m_scale.right(), line));
    Time first = m_scale.from() / step * step;
    if (first < m_scale.from())
        first += step;
    for (Time t = first; t <= m_scale.to(); t += step) {
        const double x = m_scale.x(t);
        device.drawLine(SheetPoint(x, line - 4), SheetPoint(x, line));
        drawLabel(device, axisLabel(t, step, m_diagram.timeUnit()), SheetPoint(x, line - 6),
                  smallFont(), wsiAlignHCenter, wsiAlignBottom);
        if (t > std::numeric_limits<Time>::max() - step)
            break;
    }
}

void DiagramPainter::paintGrid(Device& device) {
    if (!m_diagram.grid().visible)
        return;
    Time step = m_diagram.grid().spacing > 0 ? m_diagram.grid().spacing : tickStep();
    if (static_cast<double>(step) * m_scale.pixelsPerTime() < 4)
        step = tickStep();
    setInk(device, wsiPaleGray);
    setPen(device, 1);
    device.setPenStyle(wsiPenDot);
    Time first = m_scale.from() / step * step;
    if (first < m_scale.from())
        first += step;
    for (Time t = first; t <= m_scale.to(); t += step) {
        const double x = m_scale.x(t);
        device.drawLine(SheetPoint(x, m_rowsTop), SheetPoint(x, m_rowsBottom));
        if (t > std::numeric_limits<Time>::max() - step)
            break;
    }
    device.setPenStyle(wsiPenSolid);
}

void DiagramPainter::paintRow(Device& device, const Row& row) {
    const double middle = row.top + row.height / 2;
    if (row.signal == Signal::npos) {
        setInk(device, wsiDarkGray);
        if (!row.group.empty())
            drawLabel(device, row.group, SheetPoint(v_margin, middle), groupFont(), wsiAlignLeft,
                      wsiAlignVCenter);
        setPen(device, 1);
        setInk(device, wsiPaleGray);
        device.drawLine(SheetPoint(v_margin, row.top + row.height - 2),
                        SheetPoint(m_scale.right(), row.top + row.height - 2));
        return;
    }
    const Signal& signal = m_diagram.signal(row.signal);
    setInk(device, wsiBlack);
    const SheetPoint nameAt(m_nameRight, middle);
    if (signal.nameShown() &&
        !(m_nameCache && m_nameCache->drawRightAligned(device, signal.name(), nameAt, nameFont())))
        drawLabel(device, signal.name(), nameAt, nameFont(), wsiAlignRight, wsiAlignVCenter);
    if (signal.kind() == SignalKind::Spacer)
        return;
    const double high = middle - v_swing / 2, low = middle + v_swing / 2;
    if (signal.kind() == SignalKind::Bus)
        paintBus(device, signal, high, low);
    else
        paintBit(device, signal, high, low);
}

void DiagramPainter::paintHatch(Device& device, double x0, double x1, double high, double low) {
    const double h = low - high;
    // On the screen the strokes are one fill of the slot's inside with a brush whose strokes
    // lie where the lines would: a slot costs one call instead of one a stroke. Its top and
    // bottom rows are the outline's.
    if (TqPainter* raster = pixelPainter(device); raster && m_unitsPerPixel == 1) {
        const TqMatrix& m = device.displayTransformation(false);
        const DevicePoint topLeft(SheetPoint(x0, high), m), bottomRight(SheetPoint(x1, low), m);
        const DevicePoint firstStroke(SheetPoint(x0 - h, low), m);
        const QPointF origin = raster->brushOrigin();
        raster->setBrushOrigin(firstStroke.x(), firstStroke.y());
        raster->fillRect(QRect(QPoint(topLeft.x(), topLeft.y() + 1),
                               QPoint(bottomRight.x(), bottomRight.y() - 1)),
                         hatchBrush());
        raster->setBrushOrigin(origin);
        return;
    }
    setInk(device, wsiGray);
    setPen(device, 1);
    // The strokes are one zigzag polyline: up one stroke, along the top edge to the next, down
    // it, along the bottom edge; the edges are drawn over by the outline. A wide unknown slot
    // so costs one call instead of one per stroke. On a painter the strokes cut by the ends of
    // a slot wider than it is high are in the zigzag too, cut by a clip to the slot (which
    // costs more than the few strokes of a narrower one); otherwise they are drawn one by one.
    std::vector<SheetPoint>& zigzag = m_points;
    zigzag.clear();
    TqPainter* clipping = x1 - x0 > h ? device.painter() : nullptr;
    if (clipping) {
        clipping->save();
        const TqMatrix& m = device.displayTransformation(false);
        const DevicePoint topLeft(SheetPoint(x0, high), m), bottomRight(SheetPoint(x1, low), m);
        clipping->setClipRect(
            QRect(QPoint(topLeft.x(), topLeft.y()), QPoint(bottomRight.x(), bottomRight.y())),
            Qt::IntersectClip);
    }
    // A hatch is a texture, not a shape: drawn without antialiasing it looks as crisp and
    // costs a fraction of the time on a painter.
    TqPainter* target = device.painter();
    const bool smooth = target && target->testRenderHint(QPainter::Antialiasing);
    if (smooth)
        target->setRenderHint(QPainter::Antialiasing, false);
    auto flush = [&] {
        if (zigzag.size() > 1)
            device.drawPolyline(static_cast<int>(zigzag.size()), zigzag.data());
        zigzag.clear();
    };
    for (double a = x0 - h; a < x1; a += 4) {
        if (clipping || (a >= x0 && a + h <= x1)) {
            const bool up = (zigzag.size() / 2) % 2 == 0;
            zigzag.emplace_back(up ? a : a + h, up ? low : high);
            zigzag.emplace_back(up ? a + h : a, up ? high : low);
            if (zigzag.size() >= 30000)
                flush();
            continue;
        }
        const double start = std::max(a, x0), end = std::min(a + h, x1);
        if (start < end)
            device.drawLine(SheetPoint(start, low - (start - a)), SheetPoint(end, low - (end - a)));
    }
    flush();
    if (smooth)
        target->setRenderHint(QPainter::Antialiasing, true);
    if (clipping)
        clipping->restore();
}

void DiagramPainter::paintBit(Device& device, const Signal& signal, double high, double low) {
    if (signal.kind() == SignalKind::Clock)
        collectClockRuns(signal, m_scale, m_runs);
    else
        collectRuns(signal, m_scale, m_runs);
    const wsiColor ink = signal.kind() == SignalKind::Clock ? wsiDarkBlue : wsiBlack;
    const double middle = (high + low) / 2;
    const double slope = m_options.slopedEdges ? 2.5 : 0;
    auto levelOf = [&](BitState s) {
        switch (s) {
        case BitState::Low:
        case BitState::WeakLow:
            return low;
        case BitState::High:
        case BitState::WeakHigh:
            return high;
        default:
            return middle;
        }
    };
    // Solid levels are gathered into one polyline; everything else breaks it.
    std::vector<SheetPoint>& line = m_line;
    line.clear();
    auto flush = [&] {
        if (line.size() > 1) {
            setInk(device, ink);
            drawLevel(device, static_cast<int>(line.size()), line.data());
        }
        line.clear();
    };
    double previous = -1;
    for (const WaveformRun& run : m_runs) {
        if (run.kind == WaveformRun::Dense) {
            // The level line runs on under the block, which paintDense draws over it, so a
            // busy row is one polyline and not one per block.
            previous = -1;
            continue;
        }
        const double y = levelOf(run.state);
        const double s = run.edge ? std::min(slope, (run.x1 - run.x0) / 2) : 0;
        const bool strong = run.state == BitState::Low || run.state == BitState::High;
        if (strong) {
            if (line.empty() && previous >= 0 && run.edge)
                line.emplace_back(run.x0, previous);
            else if (line.empty() || !run.edge)
                line.emplace_back(run.x0, y);
            line.emplace_back(run.x0 + s, y);
            line.emplace_back(run.x1, y);
            previous = y;
            // Devices take at most 65,535 points a polyline.
            if (line.size() >= 30000) {
                const SheetPoint last = line.back();
                flush();
                line.push_back(last);
            }
            continue;
        }
        flush();
        setInk(device, ink);
        if (run.edge && previous >= 0) {
            const SheetPoint edge[] = {{run.x0, previous}, {run.x0 + s, y}};
            drawLevel(device, 2, edge);
        }
        if (run.state == BitState::Unknown) {
            paintHatch(device, run.x0, run.x1, high, low);
            setInk(device, ink);
            setPen(device, 1);
            const SheetPoint outline[] = {{run.x0, high}, {run.x1, high}, {run.x0, low},
                                          {run.x1, low},  {run.x0, high}, {run.x0, low}};
            drawLines(device, run.edge ? 3 : 2, outline);
            previous = -1;
        } else if (run.state == BitState::HighZ) {
            setInk(device, wsiBlue);
            const SheetPoint level[] = {{run.x0 + s, y}, {run.x1, y}};
            drawLevel(device, 2, level);
            previous = y;
        } else {
            // Dashes scale with the pen's width, so a weak level keeps the wide pen.
            setPen(device, 1.5);
            device.setPenStyle(wsiPenDash);
            device.drawLine(SheetPoint(run.x0 + s, y), SheetPoint(run.x1, y));
            device.setPenStyle(wsiPenSolid);
            previous = y;
        }
    }
    flush();
    paintDense(device, ink, signal.kind() == SignalKind::Clock ? wsiPaleBlue : wsiPaleGray, high,
               low);
}

// Each dense block is a pale box between the levels with an ink edge along each: drawn as an
// ink box with the pale one inside it, all blocks of the row in one colour and then the other,
// so that a busy row costs two fills a block and two changes of colour.
void DiagramPainter::paintDense(Device& device, wsiColor ink, wsiColor fill, double high,
                                double low) {
    const double edge = 1;
    // On the screen the boxes go straight to the painter, without a device call and a copy of
    // the brush each.
    if (TqPainter* raster = pixelPainter(device)) {
        const TqMatrix& m = device.displayTransformation(false);
        auto fillBoxes = [&](wsiColor colour, double top, double bottom) {
            const QColor qcolour = QtConversion::asQColor(colour);
            for (const WaveformRun& run : m_runs) {
                if (run.kind == WaveformRun::Dense)
                    raster->fillRect(
                        DeviceRectangle(
                            SheetRectangle(SheetPoint(run.x0, top), SheetPoint(run.x1, bottom)), m)
                            .toQRect(),
                        qcolour);
            }
        };
        fillBoxes(ink, high, low + edge);
        fillBoxes(fill, high + edge, low);
        return;
    }
    bool any = false;
    for (const WaveformRun& run : m_runs) {
        if (run.kind != WaveformRun::Dense)
            continue;
        setInk(device, ink);
        device.fillRectangle(
            SheetRectangle(SheetPoint(run.x0, high), SheetPoint(run.x1, low + edge)));
        any = true;
    }
    if (!any)
        return;
    setInk(device, fill);
    for (const WaveformRun& run : m_runs) {
        if (run.kind == WaveformRun::Dense)
            device.fillRectangle(
                SheetRectangle(SheetPoint(run.x0, high + edge), SheetPoint(run.x1, low)));
    }
}

void DiagramPainter::paintBus(Device& device, const Signal& signal, double high, double low) {
    collectRuns(signal, m_scale, m_runs);
    const double middle = (high + low) / 2;
    const double slope = m_options.slopedEdges ? 3 : 0;
    // How far a slot's outline slopes in at its left and right ends.
    auto ends = [&](const WaveformRun& run) {
        const double s = std::min(slope, (run.x1 - run.x0) / 2);
        const bool reachesEnd = run.x1 >= m_scale.right() - 0.01;
        return std::pair(run.edge ? s : 0, reachesEnd ? 0 : s);
    };
    // The values go on in a pass of their own, after the outlines and hatches: each lies
    // within its slot, so the order does not show, and a file device writes the row's
    // outlines and its values as two runs of one style instead of alternating elements.
    std::vector<char>& hatched = m_hatched;
    hatched.assign(m_runs.size(), 0);
    for (std::size_t i = 0; i < m_runs.size(); ++i) {
        const WaveformRun& run = m_runs[i];
        if (run.kind == WaveformRun::Dense)
            continue;
        const auto [left, right] = ends(run);
        if (run.state == BitState::HighZ) {
            setInk(device, wsiBlue);
            setPen(device, 1.5);
            device.drawLine(SheetPoint(run.x0, middle), SheetPoint(run.x1, middle));
            continue;
        }
        hatched[i] = run.state == BitState::Unknown && signal.changeIsAllUnknown(run.change);
        if (hatched[i])
            paintHatch(device, run.x0 + left, run.x1 - right, high, low);
        const SheetPoint outline[] = {
            {run.x0, middle},      {run.x0 + left, high}, {run.x1 - right, high}, {run.x1, middle},
            {run.x1 - right, low}, {run.x0 + left, low},  {run.x0, middle}};
        setInk(device, wsiBlack);
        setPen(device, 1);
        device.drawPolyline(7, outline);
    }
    for (std::size_t i = 0; i < m_runs.size(); ++i) {
        const WaveformRun& run = m_runs[i];
        if (run.kind == WaveformRun::Dense || run.state == BitState::HighZ || hatched[i])
            continue;
        const auto [left, right] = ends(run);
        paintBusValue(device, signal, run.change, run.x0 + left, run.x1 - right, middle);
    }
    paintDense(device, wsiBlack, wsiPaleGray, high, low);
}

void DiagramPainter::paintBusValue(Device& device, const Signal& signal, std::size_t change,
                                   double x0, double x1, double middle) {
    const double room = (x1 - x0 - 4) * m_unitsPerPixel;
    if (room <= 0)
        return;
    std::string text = busValueText(signal, change);
    if (text.empty())
        return;
    WsiFont& font = smallFont();
    if (static_cast<double>(labelWidth(device, text, font)) > room) {
        // The longest start of the text that fits with ".." after it, by bisection, so a long
        // value costs a few measurements.
        std::size_t lo = 0, hi = text.size();
        while (lo < hi) {
            const std::size_t mid = (lo + hi + 1) / 2;
            std::string candidate = text.substr(0, mid);
            candidate.append("..");
            if (static_cast<double>(labelWidth(device, candidate, font)) <= room)
                lo = mid;
            else
                hi = mid - 1;
        }
        if (lo == 0)
            return;
        text.resize(lo);
        text.append("..");
    }
    setInk(device, wsiBlack);
    drawLabel(device, text, SheetPoint((x0 + x1) / 2, middle), font, wsiAlignHCenter,
              wsiAlignVCenter);
}

void DiagramPainter::paintGap(Device& device, double x, double top, double bottom) {
    const double lean = 3;
    const SheetPoint band[] = {
        {x - 3 + lean, top}, {x + 3 + lean, top}, {x + 3 - lean, bottom}, {x - 3 - lean, bottom}};
    device.fillPolygon(wsiWhite, 4, band);
    setInk(device, wsiBlack);
    setPen(device, 1);
    device.drawLine(band[0], band[3]);
    device.drawLine(band[1], band[2]);
}

// Clears the box of a label drawn over the waveforms (bottom-aligned at at, centred or from
// its left end), so that lines do not run through its letters.
void DiagramPainter::paintLabelBackground(Device& device, const std::string& text,
                                          const SheetPoint& at, WsiFont& font, bool centred) {
    const double width = static_cast<double>(labelWidth(device, text, font)) / m_unitsPerPixel;
    const double height = font.pointSize() * 96 / 72;
    const double left = centred ? at.x() - width / 2 : at.x();
    setInk(device, wsiWhite);
    device.fillRectangle(SheetRectangle(SheetPoint(left - 2, at.y() - height),
                                        SheetPoint(left + width + 2, at.y() + 1)));
}

void DiagramPainter::paintDecorations(Device& device) {
    auto visible = [&](Time t) { return t >= m_scale.from() && t <= m_scale.to(); };
    for (const Gap& gap : m_diagram.gaps()) {
        if (!visible(gap.time))
            continue;
        const double x = m_scale.x(gap.time);
        if (gap.signal.empty()) {
            paintGap(device, x, m_axisTop + v_axisHeight - 12, m_rowsBottom);
        } else if (const double y = rowMiddle(gap.signal); y >= 0) {
            paintGap(device, x, y - v_swing / 2 - 3, y + v_swing / 2 + 3);
        }
    }
    for (const Marker& marker : m_diagram.markers()) {
        if (!visible(marker.time))
            continue;
        const double x = m_scale.x(marker.time);
        setInk(device, wsiRed);
        setPen(device, 1);
        device.setPenStyle(wsiPenDash);
        device.drawLine(SheetPoint(x, m_axisTop + v_axisHeight - 6), SheetPoint(x, m_rowsBottom));
        device.setPenStyle(wsiPenSolid);
        drawLabel(device, marker.label, SheetPoint(x, m_markerTop + v_labelRowHeight - 3),
                  smallFont(), wsiAlignHCenter, wsiAlignBottom);
    }
    for (const Arrow& arrow : m_diagram.arrows()) {
        const double y0 = rowMiddle(arrow.from.signal), y1 = rowMiddle(arrow.to.signal);
        if (y0 < 0 || y1 < 0 || !visible(arrow.from.time) || !visible(arrow.to.time))
            continue;
        const double x0 = m_scale.x(arrow.from.time), x1 = m_scale.x(arrow.to.time);
        const bool level = arrow.from.signal == arrow.to.signal;
        const SheetPoint from(x0, level ? y0 - v_swing / 2 - 3 : y0);
        const SheetPoint to(x1, level ? y0 - v_swing / 2 - 3 : y1);
        const TqMatrix& m = device.displayTransformation(false);
        DevicePoint points[] = {DevicePoint(from, m), DevicePoint(to, m)};
        const auto head = DevicePoint(static_cast<std::int32_t>(std::lround(7 * m_unitsPerPixel)),
                                      static_cast<std::int32_t>(std::lround(5 * m_unitsPerPixel)));
        setInk(device, wsiDarkRed);
        setPen(device, 1);
        drawArrow(device, arrow, points[0], points[1], head);
        if (!arrow.label.empty()) {
            const SheetPoint at((from.x() + to.x()) / 2, (from.y() + to.y()) / 2 - 2);
            paintLabelBackground(device, arrow.label, at, smallFont(), true);
            setInk(device, wsiDarkRed);
            drawLabel(device, arrow.label, at, smallFont(), wsiAlignHCenter, wsiAlignBottom);
        }
    }
    for (const Annotation& note : m_diagram.annotations()) {
        if (!visible(note.time))
            continue;
        const double x = m_scale.x(note.time);
        setInk(device, wsiDarkGreen);
        if (note.signal.empty()) {
            drawLabel(device, note.text, SheetPoint(x, m_annotationTop + v_labelRowHeight / 2),
                      noteFont(), wsiAlignLeft, wsiAlignVCenter);
        } else if (const double y = rowMiddle(note.signal); y >= 0) {
            const SheetPoint at(x + 3, y - v_swing / 2 - 1);
            paintLabelBackground(device, note.text, at, noteFont(), false);
            setInk(device, wsiDarkGreen);
            drawLabel(device, note.text, at, noteFont(), wsiAlignLeft, wsiAlignBottom);
        }
    }
}

std::string busValueText(const Signal& signal, std::size_t change) {
    if (signal.changeHasText(change))
        return std::string(signal.changeText(change));
    const BigInt value = signal.changeValue(change);
    const BusFormat& format = signal.busFormat();
    const unsigned width = signal.width();
    std::unique_ptr<char[]> digits;
    std::string sign;
    if (format.radix == RadixPlainDecimal || format.radix == RadixDecimal) {
        if (!signal.changeIsKnown(change))
            return "X";
        const bool negative = format.radix == RadixPlainDecimal && value.bsl()[1] == '1';
        if (negative) {
            const BigInt magnitude = -value;
            digits.reset(magnitude.BSLToDecimal(width, 0, false));
            sign.push_back('-');
        } else {
            digits.reset(value.BSLToDecimal(width, 0, false));
        }
    } else {
        digits.reset(value.asNumericString(format.radix, width, 0, true));
    }
    if (!digits)
        return "?";
    if (format.notation == HDLNone || format.radix == RadixPlainDecimal)
        return sign.append(digits.get());
    // Verilog constants are written with a lower-case base letter (8'hA5), VHDL ones with an
    // upper-case one (X"A5"), as designers write them.
    const char letter = radixCharacter(format.radix, format.notation, format.notation == HDLVHDL);
    const char* text = formatHDLString(digits.get(), format.notation, letter, width);
    return sign.append(text ? text : digits.get());
}
