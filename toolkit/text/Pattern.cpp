#include "text/Pattern.h"

#include "core/StringFunctions.h"

#include <cstring>

namespace {

// The later of two positions in the same string; null (no match) loses to any position.
const char* furthest(const char* a, const char* b) {
    if (!a)
        return b;
    if (!b)
        return a;
    return a > b ? a : b;
}

const char* endOf(const char* s) {
    return s + std::strlen(s);
}

} // namespace

// --- PatternElement ---------------------------------------------------------------------------

PatternElement::PatternElement(const char* string) : m_string(mem_strdup(string)) {}

// The chain is deleted in a loop, so that a long chain cannot exhaust the stack.
PatternElement::~PatternElement() {
    PatternElement* element = m_next;
    m_next = nullptr;
    while (element) {
        PatternElement* following = element->m_next;
        element->m_next = nullptr;
        delete element;
        element = following;
    }
    delete[] m_string;
}

void PatternElement::setString(const char* string) {
    char* copy = mem_strdup(string);
    delete[] m_string;
    m_string = copy;
}

const char* PatternElement::match(const char* s) const {
    if (!s)
        return nullptr;
    PatternMatcher matcher(*this, s);
    return matcher.rest(this, s);
}

// --- PatternMatcher ---------------------------------------------------------------------------

PatternMatcher::PatternMatcher(const PatternElement& first, const char* s)
    : m_begin(s), m_end(endOf(s)), m_width(static_cast<std::size_t>(m_end - s) + 1) {
    int count = 0;
    for (const PatternElement* element = &first; element; element = element->next())
        element->m_matchIndex = count++;
    m_memo.assign(m_width * static_cast<std::size_t>(count), v_unknown);
}

std::int32_t& PatternMatcher::slot(const PatternElement& element, const char* p) {
    return m_memo[static_cast<std::size_t>(element.m_matchIndex) * m_width +
                  static_cast<std::size_t>(p - m_begin)];
}

const char* PatternMatcher::decode(std::int32_t value) const {
    return value == v_none ? nullptr : m_begin + value;
}

std::int32_t PatternMatcher::encode(const char* p) const {
    return p ? static_cast<std::int32_t>(p - m_begin) : v_none;
}

const char* PatternMatcher::rest(const PatternElement* element, const char* p) {
    if (!element)
        return p;
    std::int32_t& known = slot(*element, p);
    if (known != v_unknown)
        return decode(known);
    const char* result = element->matchAt(p, *this);
    slot(*element, p) = encode(result);
    return result;
}

// The run's results satisfy own(p) = furthest(rest(next, p), own(p + 1)) with own(stop) =
// rest(next, stop); they are filled in backwards from the first position already known, so
// each position of the run is computed once and without recursion along the string.
const char* PatternMatcher::furthestOverRun(const PatternElement& element, const char* s,
                                            const char* stop) {
    const char* known = s;
    while (known < stop && slot(element, known) == v_unknown)
        ++known;
    const char* best = slot(element, known) != v_unknown ? decode(slot(element, known))
                                                         : rest(element.next(), known);
    slot(element, known) = encode(best);
    for (const char* p = known; p > s;) {
        --p;
        best = furthest(rest(element.next(), p), best);
        slot(element, p) = encode(best);
    }
    return best;
}

// --- Elements ---------------------------------------------------------------------------------

PatternElement* StringPatternElement::copy() const {
    return new StringPatternElement(string());
}

const char* StringPatternElement::matchAt(const char* s, PatternMatcher& matcher) const {
    const char* p = s;
    for (const char* literal = string() ? string() : ""; *literal; ++literal, ++p)
        if (p == matcher.end() || *p != *literal)
            return nullptr;
    return matcher.rest(next(), p);
}

PatternElement* AnyNCharsPatternElement::copy() const {
    return new AnyNCharsPatternElement(string());
}

const char* AnyNCharsPatternElement::matchAt(const char* s, PatternMatcher& matcher) const {
    return matcher.furthestOverRun(*this, s, matcher.end());
}

PatternElement* AnyOneCharPatternElement::copy() const {
    return new AnyOneCharPatternElement(string());
}

const char* AnyOneCharPatternElement::matchAt(const char* s, PatternMatcher& matcher) const {
    const char* without = matcher.rest(next(), s);
    if (s == matcher.end() || without == matcher.end())
        return without;
    return furthest(without, matcher.rest(next(), s + 1));
}

PatternElement* NCharsNotInStrPatternElement::copy() const {
    return new NCharsNotInStrPatternElement(string());
}

const char* NCharsNotInStrPatternElement::matchAt(const char* s, PatternMatcher& matcher) const {
    const char* set = string() ? string() : "";
    const char* stop = s;
    while (stop < matcher.end() && !std::strchr(set, *stop))
        ++stop;
    return matcher.furthestOverRun(*this, s, stop);
}

PatternElement* NCharsNotCharPatternElement::copy() const {
    return new NCharsNotCharPatternElement(string());
}

const char* NCharsNotCharPatternElement::matchAt(const char* s, PatternMatcher& matcher) const {
    char stopChar = string() ? string()[0] : '\0';
    const char* stop = s;
    while (stop < matcher.end() && *stop != stopChar)
        ++stop;
    return matcher.furthestOverRun(*this, s, stop);
}

PatternElement* SeparatorOrEndStrPatternElement::copy() const {
    return new SeparatorOrEndStrPatternElement(string());
}

const char* SeparatorOrEndStrPatternElement::matchAt(const char* s, PatternMatcher& matcher) const {
    char separator = string() ? string()[0] : '\0';
    const char* p = s;
    while (p < matcher.end() && *p == separator)
        ++p;
    if (p == s && p != matcher.end())
        return nullptr;
    return matcher.rest(next(), p);
}

// --- Pattern ----------------------------------------------------------------------------------

Pattern::Pattern() = default;

Pattern::Pattern(const char* text) : m_text(mem_strdup(text)) {}

Pattern::Pattern(const Pattern& other) : TqObject(other) {
    copyFrom(other);
}

Pattern& Pattern::operator=(const Pattern& other) {
    if (this != &other) {
        cleanup();
        delete[] m_text;
        m_text = nullptr;
        copyFrom(other);
    }
    return *this;
}

Pattern::~Pattern() {
    cleanup();
    delete[] m_text;
}

void Pattern::copyFrom(const Pattern& other) {
    m_text = mem_strdup(other.m_text);
    for (const PatternElement* element = other.m_first; element; element = element->next())
        addElement(element->copy());
}

void Pattern::setPattern(const char* text) {
    char* copy = mem_strdup(text);
    cleanup();
    delete[] m_text;
    m_text = copy;
}

void Pattern::addElement(PatternElement* element) {
    if (!element)
        return;
    if (m_last)
        m_last->m_next = element;
    else
        m_first = element;
    m_last = element;
    while (m_last->m_next)
        m_last = m_last->m_next;
}

void Pattern::cleanup() {
    delete m_first;
    m_first = nullptr;
    m_last = nullptr;
}

void Pattern::removeLeadingPatterns(int n) {
    for (; n > 0 && m_first; --n) {
        PatternElement* first = m_first;
        m_first = first->m_next;
        first->m_next = nullptr;
        delete first;
    }
    if (!m_first)
        m_last = nullptr;
}

bool Pattern::completeMatch(const char* s) const {
    if (!m_first || !m_text || !s)
        return false;
    const char* matched = m_first->match(s);
    return matched && *matched == '\0';
}

const char* Pattern::longestMatch(const char* s) const {
    if (!m_first || !m_text || !s)
        return s;
    return m_first->match(s);
}

bool CharCompare::operator()(const char* a, const char* b) const {
    return std::strcmp(a, b) < 0;
}
