// Pattern: a wildcard pattern as a chain of elements (literals, any characters, any one
// character, runs up to a stop character, separators), matched for the longest match of the
// whole chain. Applications derive a Pattern that translates their wildcard syntax into the
// chain through addElement.
#pragma once

#include "core/TqExport.h"
#include "core/TqObject.h"

#include <cstdint>
#include <vector>

class PatternMatcher;

// One element of a pattern chain; it owns the rest of the chain.
class TQ_EXPORT PatternElement : public TqObject {
public:
    explicit PatternElement(const char* string = nullptr);
    ~PatternElement() override;
    PatternElement(const PatternElement&) = delete;
    PatternElement& operator=(const PatternElement&) = delete;

    // The position just after the longest match of this element followed by the rest of the
    // chain, starting at s (a pointer into s), or null when there is none.
    virtual const char* match(const char* s) const;
    // A new element of the same kind and argument, without the rest of the chain; the caller
    // owns it.
    virtual PatternElement* copy() const = 0;

    // The argument, in place (owned copy), or null.
    const char* string() const { return m_string; }
    void setString(const char* string);
    PatternElement* next() const { return m_next; }

protected:
    friend class Pattern;
    friend class PatternMatcher;

    // This element's match at s, where matcher.rest(next(), p) gives the memoised match of
    // the rest of the chain at p (p itself at the end of the chain).
    virtual const char* matchAt(const char* s, PatternMatcher& matcher) const = 0;

private:
    PatternElement* m_next = nullptr;
    char* m_string = nullptr;
    // The element's place in the chain during one match (matching is one thread at a time).
    mutable int m_matchIndex = 0;
};

// The state of one match: every (element, position) result is computed once, so a match
// takes time polynomial in the length of the string while giving exactly the result of plain
// backtracking.
class TQ_EXPORT PatternMatcher {
public:
    PatternMatcher(const PatternElement& first, const char* s);

    // The match of the chain from element at p; p itself when element is null.
    const char* rest(const PatternElement* element, const char* p);
    // The end of the string being matched.
    const char* end() const { return m_end; }
    // For an element that consumes zero or more characters of a run up to stop (inclusive):
    // the furthest match of the rest of the chain at any position from s to stop.
    const char* furthestOverRun(const PatternElement& element, const char* s, const char* stop);

private:
    static constexpr std::int32_t v_unknown = -2;
    static constexpr std::int32_t v_none = -1;

    std::int32_t& slot(const PatternElement& element, const char* p);
    const char* decode(std::int32_t value) const;
    std::int32_t encode(const char* p) const;

    const char* m_begin;
    const char* m_end;
    std::size_t m_width;
    std::vector<std::int32_t> m_memo;
};

// A literal text, compared exactly.
class TQ_EXPORT StringPatternElement : public PatternElement {
public:
    using PatternElement::PatternElement;
    PatternElement* copy() const override;

protected:
    const char* matchAt(const char* s, PatternMatcher& matcher) const override;
};

// Any number of characters, none included.
class TQ_EXPORT AnyNCharsPatternElement : public PatternElement {
public:
    using PatternElement::PatternElement;
    PatternElement* copy() const override;

protected:
    const char* matchAt(const char* s, PatternMatcher& matcher) const override;
};

// One character, or none where the rest matches without it or the string has ended.
class TQ_EXPORT AnyOneCharPatternElement : public PatternElement {
public:
    using PatternElement::PatternElement;
    PatternElement* copy() const override;

protected:
    const char* matchAt(const char* s, PatternMatcher& matcher) const override;
};

// Characters up to, not including, the first one that is in the argument's set.
class TQ_EXPORT NCharsNotInStrPatternElement : public PatternElement {
public:
    using PatternElement::PatternElement;
    PatternElement* copy() const override;

protected:
    const char* matchAt(const char* s, PatternMatcher& matcher) const override;
};

// Characters up to the first occurrence of the argument's first character.
class TQ_EXPORT NCharsNotCharPatternElement : public PatternElement {
public:
    using PatternElement::PatternElement;
    PatternElement* copy() const override;

protected:
    const char* matchAt(const char* s, PatternMatcher& matcher) const override;
};

// One or more of the separator (the argument's first character), or nothing at the end of
// the string.
class TQ_EXPORT SeparatorOrEndStrPatternElement : public PatternElement {
public:
    using PatternElement::PatternElement;
    PatternElement* copy() const override;

protected:
    const char* matchAt(const char* s, PatternMatcher& matcher) const override;
};

class TQ_EXPORT Pattern : public TqObject {
public:
    Pattern();
    // Keeps a copy of text; the chain is built by a derived class.
    explicit Pattern(const char* text);
    // Copies the text and the chain (element by element with copy()).
    Pattern(const Pattern& other);
    Pattern& operator=(const Pattern& other);
    ~Pattern() override;

    // Drops the chain and keeps a copy of text (null: none).
    void setPattern(const char* text);
    // The pattern text, in place (owned copy), or null.
    const char* pattern() const { return m_text; }
    const PatternElement* firstElement() const { return m_first; }
    // Deletes the first n elements (fewer if the chain is shorter).
    void removeLeadingPatterns(int n);

    // True only if the chain matches the whole of s; false without elements, without text or
    // for a null s.
    bool completeMatch(const char* s) const;
    // The position in s just after the longest match, or null for none; s unchanged without
    // elements or text.
    const char* longestMatch(const char* s) const;

protected:
    // Appends element to the chain and takes ownership of it.
    void addElement(PatternElement* element);
    // Deletes the chain.
    void cleanup();

private:
    void copyFrom(const Pattern& other);

    PatternElement* m_first = nullptr;
    PatternElement* m_last = nullptr;
    char* m_text = nullptr;
};

// Orders C strings by their characters (strcmp), for ordered containers keyed by char*.
struct TQ_EXPORT CharCompare {
    bool operator()(const char* a, const char* b) const;
};
