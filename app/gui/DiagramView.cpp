#include "gui/DiagramView.h"

#include "graphics/device/Device.h"
#include "graphics/device/TqPainter.h"

#include "core/Model.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPaintEvent>
#include <QRegion>
#include <QScrollBar>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace {

// The horizontal scroll bar counts in these steps over the scrollable part of the span, since
// a deep zoom into a long dump has more pixels than an int holds.
constexpr int v_scrollSteps = 10000;

// Tells the view of every change its diagram announces.
class DiagramListener : public Dependent {
public:
    explicit DiagramListener(std::function<void(Aspect)> changed) : m_changed(std::move(changed)) {}
    void update(Model&, Aspect aspect) override { m_changed(aspect); }

private:
    std::function<void(Aspect)> m_changed;
};

Time clampedAdd(Time a, double b) {
    const double sum = static_cast<double>(a) + b;
    if (sum >= 9.0e18)
        return static_cast<Time>(9.0e18);
    if (sum <= -9.0e18)
        return static_cast<Time>(-9.0e18);
    return static_cast<Time>(std::llround(sum));
}

std::string valueAt(const Signal& signal, Time time) {
    if (signal.kind() == SignalKind::Clock)
        return std::string(1, bitStateChar(signal.clockLevel(time)));
    const std::size_t index = signal.indexAt(time);
    // Before its first change a signal is unknown, as the renderer draws it.
    if (index == Signal::npos)
        return "X";
    if (signal.kind() == SignalKind::Bus)
        return busValueText(signal, index);
    return std::string(1, bitStateChar(signal.changeState(index)));
}

} // namespace

DiagramView::DiagramView(Diagram& diagram, QWidget* parent)
    : QAbstractScrollArea(parent), m_diagram(diagram),
      m_listener(std::make_unique<DiagramListener>([this](Aspect a) { diagramChanged(a); })) {
    m_diagram.addDependent(*m_listener);
    setFocusPolicy(Qt::StrongFocus);
    viewport()->setMouseTracking(false);
    // The renderer paints every pixel of the exposed area itself.
    viewport()->setAttribute(Qt::WA_OpaquePaintEvent);
    viewport()->setAutoFillBackground(false);
    horizontalScrollBar()->setRange(0, 0);
    verticalScrollBar()->setSingleStep(static_cast<int>(DiagramPainter::v_rowHeight));
    m_from = m_diagram.spanStart();
    m_to = m_diagram.spanEnd();
    // Restarted by every frame drawn without the picture, so that zooming or scrolling in time
    // on and on draws no picture that the next step throws away.
    m_pictureTimer.setSingleShot(true);
    m_pictureTimer.setInterval(v_pictureDelayMs);
    connect(&m_pictureTimer, &QTimer::timeout, this, [this] { completePicture(); });
}

DiagramView::~DiagramView() {
    m_diagram.removeDependent(*m_listener);
}

void DiagramView::diagramChanged(Aspect aspect) {
    // A diagram replaced as a whole (a file read into it) is shown whole; an edit keeps the
    // user's window.
    if (aspect == aspectAll) {
        m_from = m_diagram.spanStart();
        m_to = m_diagram.spanEnd();
    }
    invalidate();
}

void DiagramView::invalidate() {
    m_layoutValid = false;
    viewport()->update();
    notifyStatus();
}

void DiagramView::notifyStatus() {
    if (m_statusListener)
        m_statusListener();
}

void DiagramView::setTimeWindow(Time from, Time to) {
    if (to <= from)
        to = from + 1;
    if (from == m_from && to == m_to)
        return;
    m_from = from;
    m_to = to;
    invalidate();
}

void DiagramView::zoom(double factor, std::optional<Time> around) {
    if (factor <= 0)
        return;
    const double width = static_cast<double>(m_to - m_from);
    const Time centre = around.value_or(m_from + (m_to - m_from) / 2);
    const double left = static_cast<double>(centre - m_from) / width;
    const double newWidth = std::max(1.0, width / factor);
    const Time from = clampedAdd(centre, -left * newWidth);
    setTimeWindow(from, clampedAdd(from, newWidth));
}

void DiagramView::fit() {
    setTimeWindow(m_diagram.spanStart(), m_diagram.spanEnd());
}

void DiagramView::scrollTime(double pages) {
    const double shift = static_cast<double>(m_to - m_from) * pages;
    setTimeWindow(clampedAdd(m_from, shift), clampedAdd(m_to, shift));
}

double DiagramView::pixelsPerTime() {
    return ensureLayout() ? m_painter->timeScale().pixelsPerTime() : 0;
}

void DiagramView::setCursorTime(std::optional<Time> time) {
    if (time == m_cursor)
        return;
    m_cursor = time;
    viewport()->update();
    notifyStatus();
}

std::optional<Time> DiagramView::timeAt(int x) {
    if (!ensureLayout())
        return std::nullopt;
    const TimeScale& scale = m_painter->timeScale();
    if (x < scale.left())
        return std::nullopt;
    return clampedAdd(scale.from(), (x - scale.left()) / scale.pixelsPerTime());
}

std::vector<DiagramView::CursorValue> DiagramView::cursorValues() {
    std::vector<CursorValue> values;
    if (!m_cursor || !ensureLayout())
        return values;
    for (const DiagramPainter::Row& row : m_painter->rows()) {
        // A spacer has no value to show.
        if (row.signal == Signal::npos || m_diagram.signal(row.signal).kind() == SignalKind::Spacer)
            continue;
        const Signal& signal = m_diagram.signal(row.signal);
        values.push_back({signal.name(), valueAt(signal, *m_cursor)});
    }
    return values;
}

void DiagramView::setPatterns(std::vector<std::string> patterns) {
    m_options.patterns = std::move(patterns);
    invalidate();
}

RenderOptions DiagramView::renderOptions() const {
    RenderOptions options = m_options;
    options.from = m_from;
    options.to = m_to;
    options.width = std::max(1, viewport()->width());
    return options;
}

std::string DiagramView::statusText() {
    const TimeUnit unit = m_diagram.timeUnit();
    char zoom[64];
    std::snprintf(zoom, sizeof zoom, "Zoom %.4g px/%s  ", pixelsPerTime(), timeUnitName(unit));
    std::string text = zoom;
    text.append(formatTime(m_from, unit)).append(" - ").append(formatTime(m_to, unit));
    if (m_cursor)
        text.append("  Cursor ").append(formatTime(*m_cursor, unit));
    if (!m_layoutError.empty())
        text.append("  (").append(m_layoutError).append(")");
    return text;
}

bool DiagramView::ensureLayout() {
    const int width = std::max(1, viewport()->width());
    if (m_layoutValid && m_options.width == width)
        return m_painter != nullptr;
    m_options.from = m_from;
    m_options.to = m_to;
    m_options.width = width;
    m_painter = std::make_unique<DiagramPainter>(m_diagram, m_options);
    m_painter->setNameCache(&m_names);
    m_layoutError.clear();
    if (!m_painter->layout(m_layoutError))
        m_painter.reset();
    m_layoutValid = true;
    m_layoutPainted = false;
    m_pictureValid = false;
    updateScrollBars();
    return m_painter != nullptr;
}

void DiagramView::updateScrollBars() {
    m_updatingScrollBars = true;
    QScrollBar* vertical = verticalScrollBar();
    const int height = m_painter ? m_painter->height() : 0;
    vertical->setRange(0, std::max(0, height - viewport()->height()));
    vertical->setPageStep(std::max(1, viewport()->height()));

    QScrollBar* horizontal = horizontalScrollBar();
    const Time low = std::min(m_diagram.spanStart(), m_from);
    const Time high = std::max(m_diagram.spanEnd(), m_to);
    const double free = static_cast<double>(high - low) - static_cast<double>(m_to - m_from);
    if (free <= 0) {
        horizontal->setRange(0, 0);
    } else {
        const double window = static_cast<double>(m_to - m_from);
        horizontal->setRange(0, v_scrollSteps);
        horizontal->setPageStep(
            std::clamp(static_cast<int>(v_scrollSteps * window / free), 1, v_scrollSteps));
        horizontal->setSingleStep(std::max(1, horizontal->pageStep() / 8));
        horizontal->setValue(static_cast<int>(
            std::lround(static_cast<double>(m_from - low) / free * v_scrollSteps)));
    }
    m_updatingScrollBars = false;
}

void DiagramView::scrollContentsBy(int dx, int) {
    if (m_updatingScrollBars)
        return;
    if (dx != 0) {
        const Time low = std::min(m_diagram.spanStart(), m_from);
        const Time high = std::max(m_diagram.spanEnd(), m_to);
        const Time window = m_to - m_from;
        const double free = static_cast<double>(high - low - window);
        const Time from =
            clampedAdd(low, free * horizontalScrollBar()->value() / double(v_scrollSteps));
        setTimeWindow(from, from + window);
        return;
    }
    viewport()->update();
}

void DiagramView::paintEvent(QPaintEvent* event) {
    ++m_paintCount;
    TqPainter painter(viewport());
    painter.setClipRect(event->rect());
    if (!ensureLayout()) {
        painter.fillRect(event->rect(), Qt::white);
        painter.drawText(viewport()->rect(), Qt::AlignCenter,
                         QString::fromStdString(m_layoutError));
        return;
    }
    const int top = verticalScrollBar()->value();
    const QRect exposed = event->rect();
    const int rowsTop = exposed.top() + top, rowsBottom = exposed.bottom() + 1 + top;
    // The first frame of a layout (after a zoom or a scroll in time) is drawn straight into the
    // viewport: drawing it into the picture would add a fill and a copy of the whole viewport
    // to the frame that costs most. So is a frame that finds most of its rows missing from the
    // picture, such as a scroll before the pause that fills it. Other frames draw what the
    // picture lacks and copy from it.
    const bool direct = !m_layoutPainted || pictureLacksMost(rowsTop, rowsBottom);
    m_layoutPainted = true;
    // A window larger than the diagram is white beyond it: the viewport paints opaquely, so
    // nothing else clears that part. The renderer clears what it draws.
    const QRect picture(0, -top, m_painter->width(), m_painter->height());
    for (const QRect& beyond : QRegion(exposed).subtracted(picture))
        painter.fillRect(beyond, Qt::white);
    if (!direct && ensurePicture(rowsTop, rowsBottom)) {
        // Scrolling, the cursor and uncovered parts of the window only copy the exposed part.
        const QRect shown = exposed & picture;
        painter.drawImage(shown, m_picture, shown.translated(0, top));
    } else {
        painter.translate(0, -top);
        Device device(painter);
        ++m_renderCount;
        m_painter->paintBand(device, 1, rowsTop, rowsBottom);
        if (direct)
            m_pictureTimer.start();
        painter.resetTransform();
        painter.setClipRect(exposed);
    }
    painter.translate(0, -top);
    paintCursor(painter);
}

bool DiagramView::ensurePicture(int top, int bottom) {
    if (m_painter->height() > v_maxPictureHeight)
        return false;
    if (!m_pictureValid) {
        // The picture's memory is kept from one window of time to the next: allocating and
        // clearing a screenful of rows would cost more than drawing them.
        if (m_picture.width() != m_painter->width() || m_picture.height() != m_painter->height())
            m_picture = QImage(m_painter->width(), m_painter->height(), QImage::Format_RGB32);
        m_stripDrawn.assign(static_cast<std::size_t>(m_painter->height()) / v_stripHeight + 1,
                            false);
        m_pictureValid = true;
    }
    const auto [first, last] = strips(top, bottom);
    std::optional<TqPainter> painter;
    std::optional<Device> device;
    for (std::size_t strip = first; strip <= last; ++strip) {
        if (m_stripDrawn[strip])
            continue;
        // Undrawn strips next to each other are drawn as one band.
        std::size_t end = strip;
        while (end + 1 <= last && !m_stripDrawn[end + 1])
            ++end;
        if (!painter) {
            painter.emplace(&m_picture);
            device.emplace(*painter);
        }
        m_painter->paintBand(*device, 1, static_cast<double>(strip * v_stripHeight),
                             static_cast<double>((end + 1) * v_stripHeight));
        m_stripCount += static_cast<int>(end - strip + 1);
        std::fill(m_stripDrawn.begin() + static_cast<std::ptrdiff_t>(strip),
                  m_stripDrawn.begin() + static_cast<std::ptrdiff_t>(end) + 1, true);
        strip = end;
    }
    return true;
}

std::pair<std::size_t, std::size_t> DiagramView::strips(int top, int bottom) const {
    const std::size_t first = static_cast<std::size_t>(std::max(top, 0)) / v_stripHeight;
    const std::size_t last = std::min(
        static_cast<std::size_t>(std::max(bottom - 1, 0)) / v_stripHeight, m_stripDrawn.size() - 1);
    return {first, last};
}

bool DiagramView::pictureLacksMost(int top, int bottom) const {
    if (!m_pictureValid)
        return true;
    const auto [first, last] = strips(top, bottom);
    const auto drawn =
        std::count(m_stripDrawn.begin() + static_cast<std::ptrdiff_t>(first),
                   m_stripDrawn.begin() + static_cast<std::ptrdiff_t>(last) + 1, true);
    return static_cast<std::size_t>(drawn) * 2 < last - first + 1;
}

void DiagramView::completePicture() {
    // Nothing to do after a change that the next frame lays out anew.
    if (!m_layoutValid || !m_layoutPainted || !m_painter ||
        m_options.width != std::max(1, viewport()->width()))
        return;
    const int top = verticalScrollBar()->value();
    (void)ensurePicture(top, top + viewport()->height());
}

void DiagramView::paintCursor(QPainter& painter) {
    if (!m_cursor)
        return;
    const TimeScale& scale = m_painter->timeScale();
    if (*m_cursor < scale.from() || *m_cursor > scale.to())
        return;
    const double x = std::round(scale.x(*m_cursor)) + 0.5;
    const QColor red(200, 0, 0);
    painter.setPen(QPen(red, 1));
    // The device leaves its last brush set.
    painter.setBrush(Qt::NoBrush);
    painter.drawLine(QPointF(x, 0), QPointF(x, m_painter->height()));
    // Not the device's last font, which may be a bold or italic label's.
    QFont font;
    font.setPointSizeF(8);
    painter.setFont(font);
    const QFontMetrics metrics(font);
    auto tag = [&](double middle, const std::string& text) {
        const QString label = QString::fromStdString(text);
        const QRectF box(x + 3, middle - metrics.height() / 2.0 - 1,
                         metrics.horizontalAdvance(label) + 6, metrics.height() + 2);
        painter.fillRect(box, QColor(255, 250, 205));
        painter.setPen(red);
        painter.drawRect(box);
        painter.setPen(Qt::black);
        painter.drawText(box, Qt::AlignCenter, label);
    };
    // The time sits just under the axis, above the first row.
    const double firstRow = m_painter->rows().empty() ? 0 : m_painter->rows().front().top;
    tag(firstRow - metrics.height() / 2.0 - 2, formatTime(*m_cursor, m_diagram.timeUnit()));
    for (const DiagramPainter::Row& row : m_painter->rows()) {
        if (row.signal == Signal::npos || m_diagram.signal(row.signal).kind() == SignalKind::Spacer)
            continue;
        tag(row.top + row.height / 2, valueAt(m_diagram.signal(row.signal), *m_cursor));
    }
}

void DiagramView::resizeEvent(QResizeEvent* event) {
    QAbstractScrollArea::resizeEvent(event);
    m_layoutValid = false;
    notifyStatus();
}

void DiagramView::wheelEvent(QWheelEvent* event) {
    const QPoint delta = event->angleDelta();
    const double steps = (delta.y() != 0 ? delta.y() : delta.x()) / 120.0;
    if (event->modifiers() & Qt::ControlModifier) {
        zoom(std::pow(1.25, steps), timeAt(static_cast<int>(event->position().x())));
        event->accept();
        return;
    }
    if ((event->modifiers() & Qt::ShiftModifier) || delta.y() == 0) {
        scrollTime(-steps / 8);
        event->accept();
        return;
    }
    QAbstractScrollArea::wheelEvent(event);
}

void DiagramView::keyPressEvent(QKeyEvent* event) {
    switch (event->key()) {
    case Qt::Key_F:
        fit();
        break;
    case Qt::Key_Plus:
    case Qt::Key_Equal:
        zoom(2, m_cursor);
        break;
    case Qt::Key_Minus:
        zoom(0.5, m_cursor);
        break;
    case Qt::Key_Left:
        scrollTime(-0.125);
        break;
    case Qt::Key_Right:
        scrollTime(0.125);
        break;
    case Qt::Key_Escape:
        setCursorTime(std::nullopt);
        break;
    default:
        QAbstractScrollArea::keyPressEvent(event);
        return;
    }
    event->accept();
}

void DiagramView::mousePressEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton)
        setCursorTime(timeAt(static_cast<int>(event->position().x())));
    QAbstractScrollArea::mousePressEvent(event);
}

void DiagramView::mouseMoveEvent(QMouseEvent* event) {
    if (event->buttons() & Qt::LeftButton) {
        const std::optional<Time> time = timeAt(static_cast<int>(event->position().x()));
        if (time)
            setCursorTime(time);
    }
    QAbstractScrollArea::mouseMoveEvent(event);
}
