#include "text/PatternElement.h"

#include "core/StringFunctions.h"

#include <algorithm>
#include <array>
#include <utility>
#include <vector>

namespace {

// The later of two match ends, where null (no match) loses to any position.
const char* furthest(const char* a, const char* b) {
    if (a == nullptr) {
        return b;
    }
    if (b == nullptr) {
        return a;
    }
    return a < b ? b : a;
}

// The first character of an element's argument, or the terminator when it has none.
char firstCharacter(const char* argument) {
    return argument != nullptr ? argument[0] : '\0';
}

// The step shared by the elements that consume characters up to a stop (any-characters never
// stops): at each position the rest is tried there and at every later position up to and
// including the first stop character or the end, keeping the furthest result. Filled from the
// end, so each position reuses the result of the one after it instead of walking again.
template <typename IsStop>
void matchUpToStop(std::string_view text, std::span<const char* const> rest,
                   std::span<const char*> result, IsStop isStop) {
    const std::size_t n = text.size();
    result[n] = rest[n];
    for (std::size_t q = n; q-- > 0;) {
        result[q] = isStop(text[q]) ? rest[q] : furthest(rest[q], result[q + 1]);
    }
}

// A scratch array on the stack when it is small (the usual case: short names, short
// patterns), on the heap otherwise.
template <typename T, std::size_t InlineSize>
class ScratchArray {
public:
    explicit ScratchArray(std::size_t size) : m_size(size) {
        if (size > InlineSize) {
            m_heap.resize(size);
        }
    }
    std::span<T> span() { return {m_size > InlineSize ? m_heap.data() : m_inline.data(), m_size}; }
    T& operator[](std::size_t i) { return span()[i]; }

private:
    std::size_t m_size;
    std::array<T, InlineSize> m_inline;
    std::vector<T> m_heap;
};

} // namespace

// --- PatternElement --------------------------------------------------------------------------

PatternElement::PatternElement(const char* argument) : m_string(mem_strdup(argument)) {}

PatternElement::~PatternElement() {
    // Unlinks the chain one element at a time, so that a long chain does not recurse.
    std::unique_ptr<PatternElement> element = std::move(m_next);
    while (element != nullptr)
        element = std::move(element->m_next);
}

void PatternElement::setString(const char* text) {
    m_string.reset(mem_strdup(text));
}

const char* PatternElement::match(const char* s) const {
    if (s == nullptr) {
        return nullptr;
    }
    const std::string_view text(s);
    std::size_t chainLength = 0;
    for (const PatternElement* element = this; element != nullptr;
         element = element->m_next.get()) {
        ++chainLength;
    }
    ScratchArray<const PatternElement*, 32> chain(chainLength);
    std::size_t index = 0;
    for (const PatternElement* element = this; element != nullptr;
         element = element->m_next.get()) {
        chain[index++] = element;
    }
    // Two rows, swapped after each element. Past the last element the rest is the empty
    // chain: every position is its own end.
    const std::size_t positions = text.size() + 1;
    ScratchArray<const char*, 2 * 128> rows(2 * positions);
    std::span<const char*> rest = rows.span().first(positions);
    std::span<const char*> result = rows.span().last(positions);
    for (std::size_t q = 0; q < positions; ++q) {
        rest[q] = s + q;
    }
    while (index-- > 0) {
        chain[index]->matchEverywhere(text, rest, result);
        std::swap(rest, result);
    }
    return rest[0];
}

// --- StringPatternElement --------------------------------------------------------------------

StringPatternElement::StringPatternElement(const char* literal) : PatternElement(literal) {}

PatternElement* StringPatternElement::copy() const {
    return new StringPatternElement(string());
}

void StringPatternElement::matchEverywhere(std::string_view text, std::span<const char* const> rest,
                                           std::span<const char*> result) const {
    const std::string_view literal(string() != nullptr ? string() : "");
    std::fill(result.begin(), result.end(), nullptr);
    for (std::size_t at = text.find(literal); at != std::string_view::npos;
         at = at < text.size() ? text.find(literal, at + 1) : std::string_view::npos) {
        result[at] = rest[at + literal.size()];
    }
}

// --- AnyNCharsPatternElement -----------------------------------------------------------------

AnyNCharsPatternElement::AnyNCharsPatternElement() = default;

PatternElement* AnyNCharsPatternElement::copy() const {
    return new AnyNCharsPatternElement();
}

void AnyNCharsPatternElement::matchEverywhere(std::string_view text,
                                              std::span<const char* const> rest,
                                              std::span<const char*> result) const {
    matchUpToStop(text, rest, result, [](char) { return false; });
}

// --- AnyOneCharPatternElement ----------------------------------------------------------------

AnyOneCharPatternElement::AnyOneCharPatternElement() = default;

PatternElement* AnyOneCharPatternElement::copy() const {
    return new AnyOneCharPatternElement();
}

void AnyOneCharPatternElement::matchEverywhere(std::string_view text,
                                               std::span<const char* const> rest,
                                               std::span<const char*> result) const {
    const std::size_t n = text.size();
    for (std::size_t q = 0; q < n; ++q) {
        result[q] = furthest(rest[q], rest[q + 1]);
    }
    result[n] = rest[n];
}

// --- NCharsNotInStrPatternElement ------------------------------------------------------------

NCharsNotInStrPatternElement::NCharsNotInStrPatternElement(const char* set) : PatternElement(set) {}

PatternElement* NCharsNotInStrPatternElement::copy() const {
    return new NCharsNotInStrPatternElement(string());
}

void NCharsNotInStrPatternElement::matchEverywhere(std::string_view text,
                                                   std::span<const char* const> rest,
                                                   std::span<const char*> result) const {
    std::array<bool, 256> inSet{};
    for (const char* c = string(); c != nullptr && *c != '\0'; ++c) {
        inSet[static_cast<unsigned char>(*c)] = true;
    }
    matchUpToStop(text, rest, result,
                  [&inSet](char c) { return inSet[static_cast<unsigned char>(c)]; });
}

// --- NCharsNotCharPatternElement -------------------------------------------------------------

NCharsNotCharPatternElement::NCharsNotCharPatternElement(const char* stop) : PatternElement(stop) {}

PatternElement* NCharsNotCharPatternElement::copy() const {
    return new NCharsNotCharPatternElement(string());
}

void NCharsNotCharPatternElement::matchEverywhere(std::string_view text,
                                                  std::span<const char* const> rest,
                                                  std::span<const char*> result) const {
    // A text never holds the terminator, so an empty argument never stops before the end.
    const char stop = firstCharacter(string());
    matchUpToStop(text, rest, result, [stop](char c) { return c == stop; });
}

// --- SeparatorOrEndStrPatternElement ---------------------------------------------------------

SeparatorOrEndStrPatternElement::SeparatorOrEndStrPatternElement(const char* separator)
    : PatternElement(separator) {}

PatternElement* SeparatorOrEndStrPatternElement::copy() const {
    return new SeparatorOrEndStrPatternElement(string());
}

void SeparatorOrEndStrPatternElement::matchEverywhere(std::string_view text,
                                                      std::span<const char* const> rest,
                                                      std::span<const char*> result) const {
    const char separator = firstCharacter(string());
    const std::size_t n = text.size();
    result[n] = rest[n];
    // runEnd: the first position after the run of separators that starts at q.
    std::size_t runEnd = n;
    for (std::size_t q = n; q-- > 0;) {
        if (text[q] == separator) {
            result[q] = rest[runEnd];
        } else {
            runEnd = q;
            result[q] = nullptr;
        }
    }
}
