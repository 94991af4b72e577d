/// MetaString, LineString and TextString: the tree of styled runs that a marked-up label
/// parses into (TextFormatParser). The root holds one LineString per line, a line holds its
/// runs, a TextString one piece of plain text, and the style classes (StyledText.h) the runs
/// inside their tags. A tree measures and draws itself on the device or painter it was
/// built for, converts itself to HTML, or yields its text without the markup.
///
/// Measures and drawing are in device units. Measuring applies each style to a copy of the
/// caller's font, so the font passed in is never changed. Everything here runs on the main
/// thread, as the devices do.
#pragma once

#include "core/TqExport.h"
#include "graphics/device/wsiTypes.h"
#include "graphics/geometry/DevicePoint.h"
#include "graphics/geometry/DeviceRectangle.h"
#include "graphics/richtext/TextFormatTag.h"

#include <QRectF>
#include <QSize>
#include <QString>

#include <iosfwd>
#include <sstream>

class Device;
class TqPainter;
class WsiFont;

/// Where a tree measures and draws: a Device, a bare TqPainter, or neither (then text is
/// measured on the default screen resolution and drawing does nothing).
struct TQ_EXPORT TextTarget {
    /// Neither a device nor a painter: measures on the screen, draws nothing.
    TextTarget() = default;
    /// Measures and draws through d, which must outlive the tree.
    TextTarget(Device& d) : device(&d) {}
    /// Measures and draws through p (not owned; null: as the default target).
    TextTarget(TqPainter* p) : painter(p) {}

    Device* device = nullptr;     ///< Not owned; null when the target is a painter or none.
    TqPainter* painter = nullptr; ///< Not owned; null when the target is a device or none.
};

/// The base of every node; a MetaString without a parent is the root of a label.
class TQ_EXPORT MetaString {
public:
    /// A node without parent or children that measures and draws through target.
    explicit MetaString(TextTarget target);
    /// Deletes the children.
    virtual ~MetaString();
    MetaString(const MetaString&) = delete;
    MetaString& operator=(const MetaString&) = delete;

    // --- The tree ----------------------------------------------------------------------------
    /// Appends child (owned from now on) as the last child.
    void addString(MetaString* child);
    /// The node this one is a child of (owned by it), or null for a root.
    MetaString* parent() const { return m_parent; }
    ///@{
    /// The previous or next child of the same parent, or null.
    MetaString* prevSibling() const { return m_prev; }
    MetaString* nextSibling() const { return m_next; }
    ///@}
    ///@{
    /// The first or last child (owned by this node), or null when there is none.
    MetaString* firstChild() const { return m_first; }
    MetaString* lastChild() const { return m_last; }
    ///@}
    /// The number of direct children, counted along the sibling chain.
    int childCount() const;
    /// The root of the tree this node is in (itself when it has no parent).
    MetaString* topmostString();
    /// Where the node measures and draws, as given at construction.
    const TextTarget& target() const { return m_target; }
    ///@{
    /// The device or painter of target() (not owned), or null.
    Device* device() const { return m_target.device; }
    TqPainter* painter() const { return m_target.painter; }
    ///@}
    /// The tag that made this node; TF_NoTag for the root, lines and plain text.
    virtual textformat_tag_type tagType() const { return TF_NoTag; }
    /// Writes the tree in a compact form, one token per node: lines as L(...), plain text
    /// quoted ('text'), styles by their start word (b(...), sub(...), red(...)); the root
    /// writes its lines separated by blanks. For diagnostics and tests.
    virtual std::ostream& printOn(std::ostream& out) const;

    // --- Conversions -------------------------------------------------------------------------
    /// The node as HTML: `<b>`, `<i>`, `<u>`, `<sub>`, `<sup>`, spans for overline and colours, the
    /// root's lines joined by `<br>`; text escaped when
    /// TextFormatParser::convertHTMLCharacters() is on. A new string.
    virtual QString toHTML() const;
    /// Appends the node's text without markup to out; the root ends each line but the last
    /// with a line feed.
    virtual void unformattedText(std::stringstream& out) const;

    // --- Drawing -----------------------------------------------------------------------------
    /// Draws the node with the top left corner of its box at at, starting in font, in colour
    /// color (a wsiColor value; 0 keeps the current colour, which is restored afterwards).
    /// Returns the width drawn. Does nothing without a device or painter but measure.
    virtual long drawText(const DevicePoint& at, WsiFont& font, long color);
    /// Draws the node aligned at at: h puts at at the box's left, middle or right, v at its
    /// top, middle, bottom or at the first line's baseline. Returns the box drawn.
    virtual DeviceRectangle drawText(const DevicePoint& at, WsiFont& font, wsiAlignH h, wsiAlignV v,
                                     long color = 0);
    /// Draws the node inside rect aligned by the Qt::Alignment flags (left, horizontal
    /// centre, right; top, vertical centre, bottom) in the device's selected font, or the
    /// painter's font, or the default font. Returns the size of the text.
    virtual QSize drawText(const QRectF& rect, int flags);

    // --- Measures ----------------------------------------------------------------------------
    /// The width and height of the node in font: a node with a parent is as wide as its
    /// children together and as high as the highest of them (a sub- or superscript adds its
    /// shift); the root is as wide as its widest line and as high as its lines together.
    virtual DevicePoint calcTextExtent(WsiFont& font);
    /// calcTextExtent, kept until asked again for a different font. A reference to the
    /// node's own copy.
    const DevicePoint& getTextExtent(WsiFont& font);
    /// How high the node reaches above the baseline it is drawn on.
    virtual long calcAscent(WsiFont& font);
    /// The width of the children together in font (the node's own style not applied).
    long childrenWidth(WsiFont& font);

    // --- Styles ------------------------------------------------------------------------------
    /// What a style does before its children are measured or drawn: changes font (changed
    /// tells whether it did) and moves position, the start of the children's baseline. The
    /// base does neither.
    virtual void preApply(WsiFont& font, bool& changed, DevicePoint& position);
    /// What a style does after its children: undoes the font change that preApply made
    /// when changed, and when drawing, draws what belongs to node as a whole starting at
    /// position (the under- and overlines). The base does nothing.
    virtual void postApply(WsiFont& font, bool& changed, MetaString& node,
                           const DevicePoint& position, bool drawing);
    /// The baseline y of the node's runs when the surrounding baseline is y.
    virtual long adjustY(long y, WsiFont& font);
    /// How far the node moves its runs' baseline down (up when negative) in font: 0 except
    /// for sub- and superscripts.
    virtual long adjustYdown(WsiFont& font);

protected:
    /// Draws the node's runs with the left end of their baseline at start; returns the
    /// advance. The base applies the node's style around its children.
    virtual long drawRuns(const DevicePoint& start, WsiFont& font);

private:
    void drawLines(const DevicePoint& topLeft, WsiFont& font, long& width);

    TextTarget m_target;
    MetaString* m_parent = nullptr;
    MetaString* m_first = nullptr;
    MetaString* m_last = nullptr;
    MetaString* m_prev = nullptr;
    MetaString* m_next = nullptr;
    DevicePoint m_extent;
    QString m_extentFamily;
    double m_extentSize = -1;
    int m_extentFlags = -1;
};

/// One line of a label: its runs side by side on one baseline.
class TQ_EXPORT LineString : public MetaString {
public:
    /// An empty line that measures and draws through target.
    explicit LineString(TextTarget target) : MetaString(target) {}

    /// Rebuilds on this (new, empty) line the chain of style runs from leaf up to its own
    /// line, so that styles open at the end of one line go on at the start of the next.
    /// Returns the copy of leaf (this line when leaf is a line itself).
    MetaString& buildBranchFromLeaf(MetaString& leaf);
    std::ostream& printOn(std::ostream& out) const override;
};

/// One piece of plain text. Its bytes live in the node's own allocation, so a run costs one
/// allocation however long its text.
class TQ_EXPORT TextString : public MetaString {
public:
    /// A new node holding a copy of the first length bytes of text (a null text: none).
    static TextString* create(TextTarget target, const char* text, unsigned length) {
        return create(target, text, length, nullptr, 0);
    }
    /// A new node holding the first bytes of first followed by those of second.
    static TextString* create(TextTarget target, const char* first, unsigned firstLength,
                              const char* second, unsigned secondLength);
    /// Frees the node and its text together (they share one allocation).
    static void operator delete(void* p) { ::operator delete(p); }

    /// In place, NUL-terminated, owned by the node.
    const char* text() const { return reinterpret_cast<const char*>(this + 1); }
    /// The number of bytes of text(), the terminator not counted.
    unsigned length() const { return m_length; }

    std::ostream& printOn(std::ostream& out) const override;
    QString toHTML() const override;
    void unformattedText(std::stringstream& out) const override;
    DevicePoint calcTextExtent(WsiFont& font) override;
    long calcAscent(WsiFont& font) override;

protected:
    long drawRuns(const DevicePoint& start, WsiFont& font) override;

private:
    TextString(TextTarget target, unsigned length) : MetaString(target), m_length(length) {}

    unsigned m_length;
};
