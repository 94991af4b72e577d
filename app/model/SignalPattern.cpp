#include "model/SignalPattern.h"

#include "text/PatternElement.h"

#include <string>

SignalPattern::SignalPattern(const char* text) : Pattern(text) {
    const std::string pattern = text ? text : "";
    std::string literal;
    auto flush = [&] {
        if (!literal.empty())
            addElement(new StringPatternElement(literal.c_str()));
        literal.clear();
    };
    for (std::size_t i = 0; i < pattern.size(); ++i) {
        const char c = pattern[i];
        if (c == '*' && i + 1 < pattern.size() && pattern[i + 1] == '*') {
            flush();
            addElement(new AnyNCharsPatternElement());
            ++i;
        } else if (c == '*') {
            flush();
            addElement(new NCharsNotInStrPatternElement("."));
        } else if (c == '?') {
            flush();
            addElement(new AnyOneCharPatternElement());
        } else {
            literal.push_back(c);
        }
    }
    flush();
}
