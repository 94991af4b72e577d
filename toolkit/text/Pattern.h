#pragma once

#include "core/TqExport.h"
#include "core/TqObject.h"
#include "text/PatternElement.h"

#include <iosfwd>
#include <memory>

/// Pattern: a wildcard pattern, a chain of pattern elements matched against whole strings by
/// longest match. Which wildcard characters become which elements is decided by the classes
/// that derive from it and build the chain with addElement.
class TQ_EXPORT Pattern : public TqObject {
public:
    // --- Constructors ------------------------------------------------------------------------
    /// A pattern without text and without elements: it matches nothing completely.
    Pattern();
    /// A pattern holding a copy of text and, until a derived class adds some, no elements.
    explicit Pattern(const char* text);
    ///@{
    /// Copies the text and the chain, element by element through PatternElement::copy().
    Pattern(const Pattern& other);
    Pattern& operator=(const Pattern& other);
    Pattern(Pattern&& other) noexcept;
    Pattern& operator=(Pattern&& other) noexcept;
    ~Pattern() override;
    ///@}

    /// Drops the chain and keeps a heap copy of text (null leaves the pattern without text).
    void setPattern(const char* text);
    /// The pattern text, in place (owned by the pattern); null when it has none.
    const char* pattern() const { return m_text.get(); }
    /// The first element of the chain (owned by the pattern), or null.
    const PatternElement* firstElement() const { return m_first.get(); }

    /// Deletes the first n elements, or all of them when the chain is shorter; n <= 0 deletes
    /// none.
    void removeLeadingPatterns(int n);

    // --- Matching ----------------------------------------------------------------------------
    /// True only if the whole of s matches the chain; false without elements, without text,
    /// or for a null s.
    [[nodiscard]] bool completeMatch(const char* s) const;
    /// The end of the longest match of the chain at the start of s, as a pointer into s, or
    /// null when the chain does not match there (or s is null). Without elements or text the
    /// pattern matches nothing and s is returned unchanged.
    [[nodiscard]] const char* longestMatch(const char* s) const;

    /// Writes the pattern text.
    std::ostream& printOn(std::ostream& out) const override;

protected:
    /// Appends element (and any chain hanging from it) to the chain; the pattern owns it.
    void addElement(PatternElement* element);
    /// Deletes the chain and the text.
    void cleanup();

private:
    void copyChainFrom(const Pattern& other);

    std::unique_ptr<PatternElement> m_first;
    /// The last element of the chain that m_first owns.
    PatternElement* m_last = nullptr;
    std::unique_ptr<char[]> m_text;
};

/// Orders NUL-terminated strings by their characters (strcmp), for ordered containers keyed by
/// const char*; a null string sorts before every other.
struct TQ_EXPORT CharCompare {
    /// True when a sorts before b.
    bool operator()(const char* a, const char* b) const;
};
