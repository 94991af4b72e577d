// Test support for patterns, shared by the unit tests and the fuzz target: a pattern class
// that builds its chain from a small wildcard syntax, as the application's derived patterns
// do, and a plain backtracking matcher that follows the longest-match rules step by step.
#pragma once

#include "text/Pattern.h"

#include <cstring>
#include <string>

// Wildcards: '*' any characters, '?' one character, "[set]" characters up to one in the set,
// "^c" characters up to c, "|c" separators c or the end; every other run is a literal.
class WildcardPattern : public Pattern {
public:
    explicit WildcardPattern(const char* text) : Pattern(text) {
        for (const char* c = text; *c != '\0';) {
            if (const std::size_t literal = std::strcspn(c, "*?[^|"); literal > 0) {
                addElement(new StringPatternElement(std::string(c, literal).c_str()));
                c += literal;
            } else if (*c == '[') {
                const std::size_t set = std::strcspn(c + 1, "]");
                addElement(new NCharsNotInStrPatternElement(std::string(c + 1, set).c_str()));
                c += 1 + set + (c[1 + set] == ']' ? 1 : 0);
            } else if (*c == '^' || *c == '|') {
                const char argument[2] = {c[1], '\0'};
                addElement(*c == '^' ? static_cast<PatternElement*>(
                                           new NCharsNotCharPatternElement(argument))
                                     : new SeparatorOrEndStrPatternElement(argument));
                c += c[1] != '\0' ? 2 : 1;
            } else {
                addElement(*c == '*' ? static_cast<PatternElement*>(new AnyNCharsPatternElement())
                                     : new AnyOneCharPatternElement());
                ++c;
            }
        }
    }
    using Pattern::addElement;
};

namespace reference {

inline const char* later(const char* a, const char* b) {
    return a == nullptr || (b != nullptr && b > a) ? b : a;
}

// The longest match of element and the rest of its chain at s, by plain backtracking with
// the early stops of the definition; exponential in the worst case, so only for small input.
inline const char* match(const PatternElement* element, const char* s) {
    const PatternElement* next = element->next();
    auto rest = [next](const char* p) { return next != nullptr ? match(next, p) : p; };
    const char* argument = element->string() != nullptr ? element->string() : "";
    if (dynamic_cast<const StringPatternElement*>(element) != nullptr) {
        const std::size_t length = std::strlen(argument);
        return std::strncmp(s, argument, length) == 0 ? rest(s + length) : nullptr;
    }
    if (dynamic_cast<const AnyOneCharPatternElement*>(element) != nullptr) {
        const char* best = rest(s);
        return *s == '\0' || (best != nullptr && *best == '\0') ? best : later(best, rest(s + 1));
    }
    if (dynamic_cast<const SeparatorOrEndStrPatternElement*>(element) != nullptr) {
        const char* p = s;
        while (*p != '\0' && *p == argument[0]) {
            ++p;
        }
        return p > s || *p == '\0' ? rest(p) : nullptr;
    }
    // The three "characters up to" kinds differ only in where they stop.
    auto stopsAt = [element, argument](char c) {
        if (dynamic_cast<const NCharsNotInStrPatternElement*>(element) != nullptr) {
            return std::strchr(argument, c) != nullptr;
        }
        if (dynamic_cast<const NCharsNotCharPatternElement*>(element) != nullptr) {
            return c == argument[0];
        }
        return false;
    };
    const char* best = nullptr;
    const char* p = s;
    for (;; ++p) {
        best = later(best, rest(p));
        if ((best != nullptr && *best == '\0') || *p == '\0' || stopsAt(*p)) {
            break;
        }
    }
    return best;
}

} // namespace reference
