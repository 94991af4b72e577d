/// TextFormatParser: turns a label written in the tag markup into its tree of styled runs
/// (MetaString) for one device or painter, and offers the conversions built on that: the
/// pixel box of a label, its text without markup and its HTML.
///
/// Markup: `<b>`, `<i>`, `<u>`, `<o>` (overline), `<sub>`, `<super>` and the sixteen colour names,
/// each closed by the same word after a slash; tag words match without regard to case. A line feed
/// starts a new line and carries the styles open at its end over to the next line. What is not a
/// well-formed tag stays in the text as written: an unknown word after '<', a tag word not followed
/// by '>', an end tag that does not close the innermost open style. Styles left open run to the end
/// of the text. A run of text is cut at the scanner's longest token (Scanner::v_maxTokenLength
/// bytes), far beyond any label.
///
/// The family lives in graphics/richtext, above the device layer, since every node measures
/// and draws on its device (see TextFormatTag.h); it scans with the text layer's Scanner.
///
/// A label for the application:
///   TextFormatParser parser(name, device);
///   MetaString& label = parser.parse();
///   DevicePoint box = label.getTextExtent(font);
///   label.drawText(topLeft, font, wsiRed);
#pragma once

#include "core/TqExport.h"
#include "graphics/geometry/DevicePoint.h"
#include "graphics/richtext/MetaString.h"
#include "graphics/richtext/TextFormatTag.h"
#include "text/ScanType.h"

#include <QString>

#include <memory>

class TQ_EXPORT TextFormatParser {
public:
    /// Styles nested deeper than this are kept as text, so that no label can make the
    /// recursive measuring and drawing exhaust the stack.
    static constexpr int v_maxNesting = 16;

    ///@{
    /// A parser of text (which must stay valid until parse) for device or painter.
    TextFormatParser(const char* text, Device& device);
    TextFormatParser(const char* text, TqPainter* painter);
    ///@}
    /// A parser of text for neither: the tree measures on the default screen resolution and
    /// draws nothing; enough for the text and HTML conversions.
    explicit TextFormatParser(const char* text);
    ~TextFormatParser();
    TextFormatParser(const TextFormatParser&) = delete;
    TextFormatParser& operator=(const TextFormatParser&) = delete;

    /// Builds the tree of the text (a null text is empty) and returns its root, owned by the
    /// parser. Parses once; later calls return the same tree.
    MetaString& parse();
    /// The root after parse, else null; owned by the parser.
    MetaString* str() const { return m_root.get(); }
    /// The root after parse (else null), now owned by the caller.
    std::unique_ptr<MetaString> takeStr() { return std::move(m_root); }

    // --- The tag table -----------------------------------------------------------------------
    /// The records of the tags in tag-type order, ended by a record of null texts and type
    /// TF_NoTag. Static.
    static const TextFormatTag* tagTable();
    /// The character classes of the markup: every byte a letter except '<', '>', line feed,
    /// carriage return, NUL and Ctrl-Z. A new table of 256 entries for the caller to free with
    /// delete[].
    static ScanType* newTypeTable();
    ///@{
    /// Makes the run of tag type as the last child of parent for device or painter and
    /// returns it (owned by parent); null for a type that makes no run. tableIndex is the
    /// tag's index in tagTable().
    static MetaString* createObjectFromTag(int tableIndex, MetaString& parent, Device& device,
                                           textformat_tag_type type);
    static MetaString* createObjectFromTag(int tableIndex, MetaString& parent, TqPainter* painter,
                                           textformat_tag_type type);
    static MetaString* createObjectFromTag(int tableIndex, MetaString& parent,
                                           const TextTarget& target, textformat_tag_type type);
    ///@}

    // --- Conversions -------------------------------------------------------------------------
    ///@{
    /// Parses text and returns its width and height in device units on device or painter in
    /// font; (0, 0) for a null or empty text. By value.
    static DevicePoint pixelBox(const char* text, Device& device, WsiFont& font);
    static DevicePoint pixelBox(const char* text, TqPainter* painter, WsiFont& font);
    ///@}
    ///@{
    /// The text without its markup (lines joined by line feeds, carriage returns dropped): a
    /// new array for the caller to free with delete[]; null for a null text. Never longer
    /// than text.
    static char* removeFormatting(const char* text);
    static QString removeFormatting(const QString& text);
    ///@}
    /// The HTML of a marked-up text (see MetaString::toHTML); as a whole document
    /// (`<html><body>...</body></html>`) when asDocument.
    static QString toHTML(const QString& text, bool asDocument);
    ///@{
    /// Whether the HTML conversion escapes &, <, > and the double quote in the text (on by
    /// default); off, the text is passed through as it is, so it may carry HTML of its own.
    static bool convertHTMLCharacters() { return v_convertHTMLCharacters; }
    static void setConvertHTMLCharacters(bool on) { v_convertHTMLCharacters = on; }
    ///@}

protected:
    /// The tagTable() index of a start or end word, or -1.
    static int isTag(const char* word);
    ///@{
    /// Whether word is a start word or an end word of the tag table.
    static bool isStartTag(const char* word);
    static bool isEndTag(const char* word);
    ///@}
    /// True when the end word at tableIndex closes node (node was made by its tag).
    static bool endTagMatchesObject(int tableIndex, MetaString& node);

private:
    static ScanType* typeTable();

    static bool v_convertHTMLCharacters;
    const char* m_text;
    TextTarget m_target;
    std::unique_ptr<MetaString> m_root;
    bool m_parsed = false;
};
