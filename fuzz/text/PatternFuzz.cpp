// Builds a pattern chain and a subject from the input and checks the memoised match against
// plain backtracking (the subject is kept short enough for the latter).
#include "text/Pattern.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

namespace {

struct Spec {
    int kind;
    std::string arg;
};

PatternElement* makeElement(const Spec& spec) {
    const char* arg = spec.arg.c_str();
    switch (spec.kind) {
    case 0:
        return new StringPatternElement(arg);
    case 1:
        return new AnyNCharsPatternElement();
    case 2:
        return new AnyOneCharPatternElement();
    case 3:
        return new NCharsNotInStrPatternElement(arg);
    case 4:
        return new NCharsNotCharPatternElement(arg);
    default:
        return new SeparatorOrEndStrPatternElement(arg);
    }
}

class FuzzPattern : public Pattern {
public:
    explicit FuzzPattern(const std::vector<Spec>& specs) : Pattern("fuzz") {
        for (const Spec& spec : specs)
            addElement(makeElement(spec));
    }
};

const char* later(const char* a, const char* b) {
    return !a ? b : !b ? a : a > b ? a : b;
}

const char* reference(const std::vector<Spec>& specs, std::size_t i, const char* s,
                      const char* end) {
    auto rest = [&](const char* p) {
        return i + 1 < specs.size() ? reference(specs, i + 1, p, end) : p;
    };
    const Spec& spec = specs[i];
    char first = spec.arg.empty() ? '\0' : spec.arg[0];
    switch (spec.kind) {
    case 0:
        if (static_cast<std::size_t>(end - s) < spec.arg.size() ||
            std::memcmp(s, spec.arg.data(), spec.arg.size()) != 0)
            return nullptr;
        return rest(s + spec.arg.size());
    case 1: {
        const char* best = nullptr;
        for (const char* p = s; p <= end && best != end; ++p)
            best = later(best, rest(p));
        return best;
    }
    case 2: {
        const char* without = rest(s);
        return s == end || without == end ? without : later(without, rest(s + 1));
    }
    case 3:
    case 4: {
        const char* best = nullptr;
        for (const char* p = s;; ++p) {
            best = later(best, rest(p));
            bool stops = p == end || (spec.kind == 3 ? std::strchr(spec.arg.c_str(), *p) != nullptr
                                                     : *p == first);
            if (stops || best == end)
                return best;
        }
    }
    default: {
        const char* p = s;
        while (p < end && *p == first)
            ++p;
        return p == s && p != end ? nullptr : rest(p);
    }
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    // Layout: element count, then per element a kind byte and an argument length byte with its
    // argument, then the subject.
    std::size_t pos = 0;
    auto next = [&]() -> int { return pos < size ? data[pos++] : -1; };
    int count = next();
    if (count < 0)
        return 0;
    std::vector<Spec> specs;
    for (int i = 0; i < count % 7; ++i) {
        int kind = next(), length = next();
        if (kind < 0 || length < 0)
            return 0;
        std::string arg;
        for (int j = 0; j < length % 4 && pos < size; ++j)
            if (char c = static_cast<char>(data[pos++]))
                arg += c;
        specs.push_back({kind % 6, arg});
    }
    std::string subject;
    while (pos < size && subject.size() < 40)
        if (char c = static_cast<char>(data[pos++]))
            subject += c;
    FuzzPattern pattern(specs);
    FuzzPattern copy = pattern;
    const char* s = subject.c_str();
    const char* matched = copy.longestMatch(s);
    if (specs.empty()) {
        if (matched != s || copy.completeMatch(s))
            __builtin_trap();
        return 0;
    }
    if (matched != reference(specs, 0, s, s + subject.size()))
        __builtin_trap();
    if (copy.completeMatch(s) != (matched == s + subject.size()))
        __builtin_trap();
    copy.removeLeadingPatterns(count % 3);
    (void)copy.longestMatch(s);
    return 0;
}
