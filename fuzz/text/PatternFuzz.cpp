// Fuzzes the wildcard matcher: the first line of the input is a pattern in the tests'
// wildcard syntax, the rest the subject. Any result must lie inside the subject and agree with
// completeMatch, with a copy of the pattern, and (for small input) with plain backtracking.
#include "text/Pattern.h"
#include "text/WildcardPattern.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

void require(bool condition) {
    if (!condition) {
        std::abort();
    }
}

int chainLength(const Pattern& pattern) {
    int length = 0;
    for (const PatternElement* e = pattern.firstElement(); e != nullptr; e = e->next()) {
        ++length;
    }
    return length;
}

void checkMatch(const Pattern& pattern, const std::string& subject) {
    const char* s = subject.c_str();
    const std::size_t length = std::strlen(s);
    const char* end = pattern.longestMatch(s);
    if (pattern.firstElement() == nullptr) {
        require(end == s && !pattern.completeMatch(s));
        return;
    }
    require(end == nullptr || (end >= s && end <= s + length));
    require(pattern.completeMatch(s) == (end == s + length));
    require(Pattern(pattern).longestMatch(s) == end);
    // Plain backtracking is exponential: compare with it on small input only.
    if (length <= 12 && chainLength(pattern) <= 6) {
        for (const PatternElement* e = pattern.firstElement(); e != nullptr; e = e->next()) {
            require(e->match(s) == reference::match(e, s));
        }
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string input(reinterpret_cast<const char*>(data), size);
    const std::size_t newline = input.find('\n');
    const std::string text = input.substr(0, newline);
    const std::string subject = newline == std::string::npos ? "" : input.substr(newline + 1);
    WildcardPattern pattern(text.c_str());
    checkMatch(pattern, subject);
    pattern.removeLeadingPatterns(static_cast<int>(size % 4));
    checkMatch(pattern, subject);
    return 0;
}
