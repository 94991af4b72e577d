/// The style runs of a label: each holds the runs between its start and end tag and applies
/// its style to them. Bold and italic change the font; under- and overlines are drawn as
/// lines of the current pen width; sub- and superscripts use a smaller font on a shifted
/// baseline; colours draw their runs in one of the sixteen markup colours.
#pragma once

#include "core/TqExport.h"
#include "graphics/richtext/MetaString.h"

/// `<b>`: the runs in a bold font.
class TQ_EXPORT BoldText : public MetaString {
public:
    /// An empty run that measures and draws through target.
    explicit BoldText(TextTarget target) : MetaString(target) {}
    textformat_tag_type tagType() const override { return TF_Bold; }
    QString toHTML() const override;
    void preApply(WsiFont& font, bool& changed, DevicePoint& position) override;
    void postApply(WsiFont& font, bool& changed, MetaString& node, const DevicePoint& position,
                   bool drawing) override;
};

/// `<i>`: the runs in an italic font.
class TQ_EXPORT ItalicText : public MetaString {
public:
    /// An empty run that measures and draws through target.
    explicit ItalicText(TextTarget target) : MetaString(target) {}
    textformat_tag_type tagType() const override { return TF_Italic; }
    QString toHTML() const override;
    void preApply(WsiFont& font, bool& changed, DevicePoint& position) override;
    void postApply(WsiFont& font, bool& changed, MetaString& node, const DevicePoint& position,
                   bool drawing) override;
};

/// `<u>`: a line under the runs, below the baseline by half the font's descent (at least one
/// unit).
class TQ_EXPORT UnderlineText : public MetaString {
public:
    /// An empty run that measures and draws through target.
    explicit UnderlineText(TextTarget target) : MetaString(target) {}
    textformat_tag_type tagType() const override { return TF_Underline; }
    QString toHTML() const override;
    void postApply(WsiFont& font, bool& changed, MetaString& node, const DevicePoint& position,
                   bool drawing) override;
};

/// `<o>`: a line over the runs at the top of the font's ascent, as for active-low signals.
class TQ_EXPORT OverlineText : public MetaString {
public:
    /// An empty run that measures and draws through target.
    explicit OverlineText(TextTarget target) : MetaString(target) {}
    textformat_tag_type tagType() const override { return TF_Overline; }
    QString toHTML() const override;
    void postApply(WsiFont& font, bool& changed, MetaString& node, const DevicePoint& position,
                   bool drawing) override;
};

/// What sub- and superscripts share: the runs in a font v_scale times the size, on a
/// baseline moved by adjustYdown.
class TQ_EXPORT ScriptText : public MetaString {
public:
    /// The size of a script's font against the surrounding one.
    static constexpr double v_scale = 0.75;

    /// An empty run that measures and draws through target.
    explicit ScriptText(TextTarget target) : MetaString(target) {}
    void preApply(WsiFont& font, bool& changed, DevicePoint& position) override;
    void postApply(WsiFont& font, bool& changed, MetaString& node, const DevicePoint& position,
                   bool drawing) override;
};

/// `<sub>`: the baseline a quarter of the surrounding font's ascent lower.
class TQ_EXPORT SubscriptText : public ScriptText {
public:
    /// An empty run that measures and draws through target.
    explicit SubscriptText(TextTarget target) : ScriptText(target) {}
    textformat_tag_type tagType() const override { return TF_Subscript; }
    QString toHTML() const override;
    long adjustYdown(WsiFont& font) override;
};

/// `<super>`: the baseline a third of the surrounding font's ascent higher.
class TQ_EXPORT SuperscriptText : public ScriptText {
public:
    /// An empty run that measures and draws through target.
    explicit SuperscriptText(TextTarget target) : ScriptText(target) {}
    textformat_tag_type tagType() const override { return TF_Superscript; }
    QString toHTML() const override;
    long adjustYdown(WsiFont& font) override;
};

/// `<black>` ... `<white>`: the runs in the colour of the tag (wsiColor = tag type - 4).
class TQ_EXPORT ColoredText : public MetaString {
public:
    /// type must be one of the colour tags (TF_Black to TF_White).
    ColoredText(TextTarget target, textformat_tag_type type);
    textformat_tag_type tagType() const override { return m_type; }
    /// The colour the runs are drawn in (3 to 18).
    wsiColor color() const { return m_color; }
    QString toHTML() const override;

protected:
    /// Sets the colour, draws the runs and sets the previous colour back.
    long drawRuns(const DevicePoint& start, WsiFont& font) override;

private:
    textformat_tag_type m_type;
    wsiColor m_color;
};
