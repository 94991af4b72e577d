#include "graphics/export/mif/MIFEngine.h"

#include "graphics/export/mif/MIFPaintDevice_p.h"
#include "graphics/export/mif/MIFWriter_p.h"

#include <QTextItem>
#include <algorithm>

namespace {

constexpr std::size_t v_maxPoints = 65535;

} // namespace

MIFEngine::MIFEngine(const char* jobName, std::ostream& out, const ExportParameters& parameters,
                     const DeviceRectangle& drawing)
    : MIFDocument(jobName, out, parameters, drawing),
      m_device(std::make_unique<MIFPaintDevice>(this, drawing)) {}

MIFEngine::~MIFEngine() = default;

QPaintDevice& MIFEngine::paintDevice() {
    return *m_device;
}

bool MIFEngine::begin(QPaintDevice*) {
    return true;
}

bool MIFEngine::end() {
    return true;
}

void MIFEngine::penChanged() {
    writer().setColor(penColor());
    writer().setPenStyle(penStyle());
    writer().setPenWidth(penWidth());
}

void MIFEngine::clipChanged() {
    if (clip())
        writer().setClipRect(*clip());
    else
        writer().clearClipRect();
}

void MIFEngine::fillPolygon(const DevicePoint* points, std::size_t n) {
    writer().filledPolygon(brushColor(), static_cast<unsigned short>(std::min(n, v_maxPoints)),
                           points);
}

void MIFEngine::strokePolyline(const DevicePoint* points, std::size_t n, bool closed) {
    if (closed && !hasPen() && hasBrush())
        return;
    for (std::size_t i = 1; i < n; ++i)
        writer().line(points[i - 1], points[i]);
    if (closed && n >= 2)
        writer().line(points[n - 1], points[0]);
}

void MIFEngine::strokeCurve(const DevicePoint& from, const DevicePoint& first,
                            const DevicePoint& second, const DevicePoint& to) {
    writer().curve(from, first, second, to);
}

void MIFEngine::drawEllipse(const QRectF& r) {
    writer().ellipse(mapRect(r), hasBrush());
}

void MIFEngine::drawTextItem(const QPointF& p, const QTextItem& textItem) {
    const QByteArray text = textItem.text().toUtf8();
    writer().text(text.constData(), static_cast<int>(text.size()), map(p), wsiAlignLeft,
                  MIFFont::fromQFont(textItem.font()));
}
