#include "graphics/device/WsiFont.h"

#include <QHashFunctions>
#include <QPaintDevice>
#include <cmath>
#include <cstring>

WsiFont::WsiFont(const char* family, double pointSize) {
    setFamily(family);
    setPointSize(pointSize);
}

void WsiFont::setFamily(const char* family) {
    m_family = family ? QString::fromUtf8(family) : QString();
}

void WsiFont::setPointSize(double size) {
    m_pointSize = size > 0 ? size : 1.0;
}

QFont WsiFont::toQFont() const {
    QFont font;
    if (!m_family.isEmpty())
        font.setFamily(m_family);
    font.setPointSizeF(m_pointSize);
    font.setBold(m_bold);
    font.setItalic(m_italic);
    font.setUnderline(m_underline);
    font.setOverline(m_overline);
    return font;
}

WsiFontMetric::WsiFontMetric(const WsiFont& font, QPaintDevice* device)
    : WsiFontMetric(font.toQFont(), device) {}

WsiFontMetric::WsiFontMetric(const QFont& font, QPaintDevice* device)
    : m_metrics(device ? QFontMetricsF(font, device) : QFontMetricsF(font)),
      // From the fields that size glyphs rather than QFont::key(), which builds a string.
      m_identity(qHashMulti(0, font.family(), font.pointSizeF(), font.weight(), font.italic(),
                            device ? device->logicalDpiX() : 0,
                            device ? device->logicalDpiY() : 0)) {}

int WsiFontMetric::ascent() const {
    return static_cast<int>(std::ceil(m_metrics.ascent()));
}

int WsiFontMetric::descent() const {
    return static_cast<int>(std::ceil(m_metrics.descent()));
}

int WsiFontMetric::leading() const {
    return static_cast<int>(std::ceil(m_metrics.leading()));
}

int WsiFontMetric::advance(const char* text, int length) const {
    if (!text)
        return 0;
    return static_cast<int>(std::ceil(m_metrics.horizontalAdvance(textOf(text, length))));
}

QString WsiFontMetric::textOf(const char* text, int length) {
    if (!text)
        return QString();
    const std::size_t size =
        length < 0 ? std::strlen(text) : ::strnlen(text, static_cast<std::size_t>(length));
    return QString::fromUtf8(text, static_cast<qsizetype>(size));
}
