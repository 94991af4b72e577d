#pragma once

#include "core/TqExport.h"

#include <QFont>
#include <QFontMetricsF>
#include <QString>

#include <cstddef>
#include <string>

class QPaintDevice;

/// WsiFont and WsiFontMetric: a font as the drawing code names it (family, size, bold,
/// italic, underline, overline) and its measures on one paint device, taken from Qt.
class TQ_EXPORT WsiFont {
public:
    /// A family of 10 points in Qt's default face; a null or empty family means that face.
    explicit WsiFont(const char* family = nullptr, double pointSize = 10.0);

    ///@{
    /// The family (empty for Qt's default face), the size in points and the styles.
    const QString& family() const { return m_family; }
    double pointSize() const { return m_pointSize; }
    bool isBold() const { return m_bold; }
    bool isItalic() const { return m_italic; }
    bool isUnderline() const { return m_underline; }
    bool isOverline() const { return m_overline; }
    ///@}
    /// A null or empty family means Qt's default face.
    void setFamily(const char* family);
    ///@{
    /// Sizes of zero or below are taken as 1 point.
    void setPointSize(double size);
    void setBold(bool on) { m_bold = on; }
    void setItalic(bool on) { m_italic = on; }
    void setUnderline(bool on) { m_underline = on; }
    void setOverline(bool on) { m_overline = on; }
    ///@}

    /// The Qt font of the same family, size and styles; by value.
    QFont toQFont() const;

    /// Reads a font description, the text form in which settings keep a font:
    /// `<family>,<points>[,<style>]...`
    /// The family is any text without a comma (blanks around it are dropped; it may not be
    /// empty); points is a real number above 0 and at most 1000; each style is one of "bold",
    /// "italic", "underline" or "overline" (any case, blanks around it ignored) and switches
    /// that style on. "Courier New,9.5,bold,italic" is a 9.5 point bold italic Courier New.
    /// False, with the font unchanged, for a null or malformed text.
    [[nodiscard]] bool readDescription(const char* text);
    /// The description that readDescription() turns back into this font, by value; "" when
    /// the family is Qt's default face, which has no description.
    std::string description() const;

private:
    QString m_family;
    double m_pointSize;
    bool m_bold = false;
    bool m_italic = false;
    bool m_underline = false;
    bool m_overline = false;
};

/// The measures of one font on one paint device: advances, height, ascent and descent in
/// the device's units.
class TQ_EXPORT WsiFontMetric {
public:
    /// The measures of font on device (whose resolution sizes the points), or on the
    /// screen's default resolution when device is null.
    WsiFontMetric(const WsiFont& font, QPaintDevice* device);

    ///@{
    /// In device units, rounded up so that a box built from them holds the glyphs.
    int ascent() const;
    int descent() const;
    int height() const { return ascent() + descent(); }
    int leading() const;
    ///@}
    /// The advance of the first length bytes of the UTF-8 text (all of it when length < 0;
    /// never past its NUL); 0 for a null text.
    /// Once a font and resolution have measured v_runsBeforeTable runs on this thread, runs
    /// of printable ASCII are summed from a table of the font's advances and pair adjustments
    /// (built then, in some milliseconds), equal to what shaping them gives; other text is
    /// shaped.
    int advance(const char* text, int length) const;
    /// advance() from the table alone: sets advance and returns true for a run the table
    /// covers (printable ASCII, no pair that the font draws as one glyph, the font in steady
    /// use); false, with advance unchanged, for text that needs shaping. Counts as a run
    /// measured. For callers that keep shaped runs of their own.
    [[nodiscard]] bool tabulatedAdvance(const char* text, int length, int& advance) const;
    /// How many runs a font measures on a thread before it gets its table: building one costs
    /// about as much as shaping some thousands of runs, so a font used for a title or passed
    /// on the way through zoom levels is shaped as before.
    static constexpr int v_runsBeforeTable = 64;

    /// Equal for two metrics of the same resolved font on devices of the same resolution, so
    /// that a caller may keep measures made through one for the other.
    std::size_t identity() const { return m_identity; }

    /// The first length bytes of text as a string (all when length < 0; never past its NUL;
    /// empty for a null text).
    static QString textOf(const char* text, int length);

private:
    WsiFontMetric(const QFont& font, QPaintDevice* device);

    QFontMetricsF m_metrics;
    std::size_t m_identity;
    // What the advance table is built from: the font and the vertical resolution that sizes
    // it (0: the default resolution).
    QFont m_font;
    int m_dpi;
};
