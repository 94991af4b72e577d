#include "graphics/export/eps/EPSEngine.h"

#include "graphics/device/QtConversion.h"
#include "graphics/device/WsiFont.h"
#include "graphics/export/eps/EPSWriter_p.h"
#include "graphics/export/eps/PostScriptFont.h"

#include <QTextItem>
#include <cmath>

EPSEngine::EPSEngine(wsiDevice* device, const char* jobName, std::ostream& out,
                     const ExportParameters& parameters)
    : EPSPage(jobName, out, parameters), m_device(device),
      m_paintDevice(std::make_unique<EPSPaintDevice>(this)) {
    scaleChanged();
}

EPSEngine::~EPSEngine() = default;

QPaintDevice& EPSEngine::paintDevice() {
    return *m_paintDevice;
}

void EPSEngine::scaleChanged() {
    m_paintDevice->setPage(deviceSize(), 72 / fontScaleFactor());
}

void EPSEngine::pageOpened() {
    resetClip();
    forgetWrittenPen();
    m_writtenWidth = writer().lineWidth();
}

void EPSEngine::forgetWrittenPen() {
    m_writtenColor.reset();
    m_writtenStyle.reset();
    m_writtenWidth.reset();
}

// --- Fonts ----------------------------------------------------------------------------------

const char* EPSEngine::selectFont(const QFont& font) const {
    const QByteArray family = font.family().toUtf8();
    return PostScriptFont::nameFor(std::string_view(family.constData(), std::size_t(family.size())),
                                   font.bold(), font.italic());
}

const DevicePoint& EPSEngine::pixelBox(const char* text, const QFont& font) {
    static DevicePoint box;
    box.setXY(0, 0);
    if (!text)
        return box;
    // The page's resolution makes a point 1 / fontScaleFactor device units, as printed.
    WsiFont measured(PostScriptFont::measuringFamily(selectFont(font)), pointSizeOf(font));
    measured.setBold(font.bold());
    measured.setItalic(font.italic());
    const WsiFontMetric metric(measured, m_paintDevice.get());
    box.setXY(metric.advance(text, -1), metric.height());
    return box;
}

double EPSEngine::pointSizeOf(const QFont& font) const {
    return font.pointSizeF() > 0 ? font.pointSizeF()
                                 : font.pixelSize() * 72.0 / m_paintDevice->logicalDpiY();
}

// --- QPaintEngine -----------------------------------------------------------------------------

bool EPSEngine::begin(QPaintDevice*) {
    if (!writer().isDrawing()) {
        const DevicePoint size = deviceSize();
        const DeviceRectangle page(0, 0, size.x(), size.y());
        open(page, page);
    }
    return true;
}

bool EPSEngine::end() {
    writer().close();
    if (!writer().pageEnded())
        writer().endOfPage();
    return true;
}

void EPSEngine::clipChanged() {
    if (clip())
        writer().setClipRect(*clip());
    else
        writer().clearClipRect();
    // grestore brought back the graphics state of the header.
    forgetWrittenPen();
}

bool EPSEngine::applyPen() {
    if (!hasPen())
        return false;
    const wsiColor color = QtConversion::nearestWsiColor(penColor());
    if (m_writtenColor != color) {
        writer().setColor(penColor());
        m_writtenColor = color;
    }
    if (m_writtenStyle != penStyle()) {
        writer().setPenStyle(penStyle());
        m_writtenStyle = penStyle();
    }
    const long width = std::lround(penWidth());
    if (m_writtenWidth != width) {
        writer().setLineWidth(width);
        m_writtenWidth = width;
    }
    return true;
}

void EPSEngine::fillPolygon(const DevicePoint* points, std::size_t n) {
    writer().filledPolygon(brushColor(), n, points, false);
}

void EPSEngine::strokePolyline(const DevicePoint* points, std::size_t n, bool closed) {
    if (n < 2 || !applyPen())
        return;
    writer().moveTo(points[0].x(), points[0].y());
    for (std::size_t i = 1; i < n; ++i)
        writer().lineTo(points[i].x(), points[i].y());
    if (closed)
        writer().lineTo(points[0].x(), points[0].y());
}

void EPSEngine::strokeCurve(const DevicePoint& from, const DevicePoint& first,
                            const DevicePoint& second, const DevicePoint& to) {
    if (applyPen())
        writer().curve(from, first, second, to);
}

void EPSEngine::drawEllipse(const QRectF& r) {
    const bool outline = applyPen();
    writer().ellipse(mapRect(r), hasBrush(), brushColor(), outline);
}

void EPSEngine::drawTextItem(const QPointF& p, const QTextItem& textItem) {
    if (!applyPen())
        return;
    const QFont font = textItem.font();
    const QByteArray text = textItem.text().toUtf8();
    writer().text(std::string_view(text.constData(), std::size_t(text.size())), map(p),
                  selectFont(font), pointSizeOf(font) / fontScaleFactor(), penColor());
}
