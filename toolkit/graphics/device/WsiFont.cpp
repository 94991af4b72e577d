#include "graphics/device/WsiFont.h"

#include "graphics/device/AsciiAdvanceTable_p.h"

#include <QHashFunctions>
#include <QPaintDevice>
#include <QStringList>
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

bool WsiFont::readDescription(const char* text) {
    if (!text)
        return false;
    const QStringList fields = QString::fromUtf8(text).split(QLatin1Char(','));
    if (fields.size() < 2)
        return false;
    const QString family = fields[0].trimmed();
    bool isNumber = false;
    const double size = fields[1].trimmed().toDouble(&isNumber);
    if (family.isEmpty() || !isNumber || !(size > 0.0 && size <= 1000.0))
        return false;
    WsiFont font;
    font.m_family = family;
    font.m_pointSize = size;
    for (qsizetype i = 2; i < fields.size(); ++i) {
        const QString style = fields[i].trimmed().toLower();
        if (style == QLatin1String("bold"))
            font.m_bold = true;
        else if (style == QLatin1String("italic"))
            font.m_italic = true;
        else if (style == QLatin1String("underline"))
            font.m_underline = true;
        else if (style == QLatin1String("overline"))
            font.m_overline = true;
        else
            return false;
    }
    *this = font;
    return true;
}

std::string WsiFont::description() const {
    if (m_family.isEmpty())
        return std::string();
    std::string text = m_family.toStdString();
    text.append(",").append(QString::number(m_pointSize).toStdString());
    const struct {
        bool on;
        const char* name;
    } styles[] = {{m_bold, ",bold"},
                  {m_italic, ",italic"},
                  {m_underline, ",underline"},
                  {m_overline, ",overline"}};
    for (const auto& style : styles)
        if (style.on)
            text.append(style.name);
    return text;
}

WsiFontMetric::WsiFontMetric(const WsiFont& font, QPaintDevice* device)
    : WsiFontMetric(font.toQFont(), device) {}

WsiFontMetric::WsiFontMetric(const QFont& font, QPaintDevice* device)
    : m_metrics(device ? QFontMetricsF(font, device) : QFontMetricsF(font)),
      // From the fields that size glyphs rather than QFont::key(), which builds a string.
      m_identity(qHashMulti(0, font.family(), font.pointSizeF(), font.weight(), font.italic(),
                            device ? device->logicalDpiX() : 0,
                            device ? device->logicalDpiY() : 0)),
      m_font(font), m_dpi(device ? device->logicalDpiY() : 0) {}

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
    int width = 0;
    if (tabulatedAdvance(text, length, width))
        return width;
    return static_cast<int>(std::ceil(m_metrics.horizontalAdvance(textOf(text, length))));
}

bool WsiFontMetric::tabulatedAdvance(const char* text, int length, int& advance) const {
    if (!text)
        return false;
    const std::size_t size =
        length < 0 ? std::strlen(text) : ::strnlen(text, static_cast<std::size_t>(length));
    const AsciiAdvanceTable* table = AsciiAdvanceTable::of(m_identity, m_font, m_dpi);
    return table && table->advance(text, size, advance);
}

QString WsiFontMetric::textOf(const char* text, int length) {
    if (!text)
        return QString();
    const std::size_t size =
        length < 0 ? std::strlen(text) : ::strnlen(text, static_cast<std::size_t>(length));
    return QString::fromUtf8(text, static_cast<qsizetype>(size));
}
