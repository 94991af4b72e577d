#pragma once

#include "core/TqExport.h"
#include "core/TqObject.h"

#include <memory>
#include <span>
#include <string_view>

class Pattern;

/// PatternElement and its six kinds: the links of a wildcard pattern's chain. Each element
/// consumes part of a string and hands the rest to the next element of the chain.
class TQ_EXPORT PatternElement : public TqObject {
public:
    /// Deletes the rest of the chain as well (iteratively, so a long chain cannot exhaust the
    /// stack).
    ~PatternElement() override;

    PatternElement(const PatternElement&) = delete;
    PatternElement& operator=(const PatternElement&) = delete;

    /// The end of the longest match of this element followed by the rest of its chain that
    /// starts at s, as a pointer into s; null when there is none or s is null. Without a next
    /// element the element's own end is the result.
    ///
    /// The result is exactly that of backtracking over the chain, but it is computed back to
    /// front, one row of results per element over every position of s (a table over element
    /// and position), so a match takes O(elements x length) steps plus the literal
    /// comparisons, never exponential time, and recurses nowhere. Element kinds implement
    /// matchEverywhere; match calls that on every element of the chain.
    [[nodiscard]] virtual const char* match(const char* s) const;

    /// A new element of the same kind with the same argument and no next element; the caller
    /// owns it.
    [[nodiscard]] virtual PatternElement* copy() const = 0;

    /// The rest of the chain (owned by this element), or null at the end.
    const PatternElement* next() const { return m_next.get(); }
    /// The element's argument, in place (owned by the element); null when it has none.
    const char* string() const { return m_string.get(); }
    /// Replaces the argument with a heap copy of text (null clears it).
    void setString(const char* text);

protected:
    /// An element with a heap copy of argument (null: none) and no next element.
    explicit PatternElement(const char* argument = nullptr);

    /// One element's step of match(), for every start position at once. text runs from the
    /// start of the match to the terminator; rest[q] is the end of the longest match of the
    /// rest of the chain at text.data() + q (null for none), for q = 0 .. text.size(). The
    /// element writes into result[q] the end of the longest match of itself followed by the
    /// rest at text.data() + q, or null. Both spans hold text.size() + 1 entries.
    virtual void matchEverywhere(std::string_view text, std::span<const char* const> rest,
                                 std::span<const char*> result) const = 0;

private:
    friend class Pattern;
    std::unique_ptr<PatternElement> m_next;
    std::unique_ptr<char[]> m_string;
};

/// Consumes exactly its literal text (case-sensitive).
class TQ_EXPORT StringPatternElement : public PatternElement {
public:
    /// Matches exactly the characters of literal (copied).
    explicit StringPatternElement(const char* literal);
    PatternElement* copy() const override;

protected:
    void matchEverywhere(std::string_view text, std::span<const char* const> rest,
                         std::span<const char*> result) const override;
};

/// Consumes any number of characters, none included.
class TQ_EXPORT AnyNCharsPatternElement : public PatternElement {
public:
    AnyNCharsPatternElement();
    PatternElement* copy() const override;

protected:
    void matchEverywhere(std::string_view text, std::span<const char* const> rest,
                         std::span<const char*> result) const override;
};

/// Consumes one character; or none where the rest of the chain matches without it, or where
/// the string has ended (so it never steps past the terminator).
class TQ_EXPORT AnyOneCharPatternElement : public PatternElement {
public:
    AnyOneCharPatternElement();
    PatternElement* copy() const override;

protected:
    void matchEverywhere(std::string_view text, std::span<const char* const> rest,
                         std::span<const char*> result) const override;
};

/// Consumes characters up to, not including, the first one that is in its set, or up to the
/// end. The rest of the chain is tried at every position up to and including that stop (the
/// end of the string included), so the stop character itself is left for the rest.
class TQ_EXPORT NCharsNotInStrPatternElement : public PatternElement {
public:
    /// Stops before any character of set (copied).
    explicit NCharsNotInStrPatternElement(const char* set);
    PatternElement* copy() const override;

protected:
    void matchEverywhere(std::string_view text, std::span<const char* const> rest,
                         std::span<const char*> result) const override;
};

/// Consumes characters up to the first occurrence of the first character of its argument (or
/// up to the end; an empty or null argument never stops before the end).
class TQ_EXPORT NCharsNotCharPatternElement : public PatternElement {
public:
    /// Stops before the first character of stop (copied).
    explicit NCharsNotCharPatternElement(const char* stop);
    PatternElement* copy() const override;

protected:
    void matchEverywhere(std::string_view text, std::span<const char* const> rest,
                         std::span<const char*> result) const override;
};

/// Consumes a run of one or more separators (the first character of its argument), or
/// nothing at the end of the string. An empty or null argument matches only at the end.
class TQ_EXPORT SeparatorOrEndStrPatternElement : public PatternElement {
public:
    /// Matches a run of the first character of separator (copied), or the end.
    explicit SeparatorOrEndStrPatternElement(const char* separator);
    PatternElement* copy() const override;

protected:
    void matchEverywhere(std::string_view text, std::span<const char* const> rest,
                         std::span<const char*> result) const override;
};
