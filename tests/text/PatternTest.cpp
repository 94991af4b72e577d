#include "text/Pattern.h"

#include <gtest/gtest.h>

#include <cstring>
#include <map>
#include <random>
#include <string>
#include <vector>

namespace {

enum Kind { Literal, AnyN, AnyOne, NotInSet, NotChar, Separator };

struct Spec {
    Kind kind;
    std::string arg;
};

PatternElement* makeElement(const Spec& spec) {
    const char* arg = spec.arg.c_str();
    switch (spec.kind) {
    case Literal:
        return new StringPatternElement(arg);
    case AnyN:
        return new AnyNCharsPatternElement();
    case AnyOne:
        return new AnyOneCharPatternElement();
    case NotInSet:
        return new NCharsNotInStrPatternElement(arg);
    case NotChar:
        return new NCharsNotCharPatternElement(arg);
    case Separator:
        return new SeparatorOrEndStrPatternElement(arg);
    }
    return nullptr;
}

class ChainPattern : public Pattern {
public:
    explicit ChainPattern(const std::vector<Spec>& specs, const char* text = "p") : Pattern(text) {
        for (const Spec& spec : specs)
            addElement(makeElement(spec));
    }
    using Pattern::cleanup;
};

// Plain backtracking over the chain, straight from the definitions of the elements: the
// oracle that the memoised matcher must agree with.
const char* reference(const std::vector<Spec>& specs, size_t i, const char* s, const char* end) {
    auto rest = [&](const char* p) {
        return i + 1 < specs.size() ? reference(specs, i + 1, p, end) : p;
    };
    auto later = [](const char* a, const char* b) { return !a ? b : !b ? a : a > b ? a : b; };
    const Spec& spec = specs[i];
    switch (spec.kind) {
    case Literal: {
        if (static_cast<size_t>(end - s) < spec.arg.size() ||
            std::memcmp(s, spec.arg.data(), spec.arg.size()) != 0)
            return nullptr;
        return rest(s + spec.arg.size());
    }
    case AnyN: {
        const char* best = nullptr;
        for (const char* p = s; p <= end; ++p) {
            best = later(best, rest(p));
            if (best == end)
                break;
        }
        return best;
    }
    case AnyOne: {
        const char* without = rest(s);
        if (s == end || without == end)
            return without;
        return later(without, rest(s + 1));
    }
    case NotInSet:
    case NotChar: {
        const char* best = nullptr;
        for (const char* p = s;; ++p) {
            best = later(best, rest(p));
            bool stops = p == end || (spec.kind == NotInSet ? spec.arg.find(*p) != std::string::npos
                                                            : *p == spec.arg[0]);
            if (stops || best == end)
                break;
        }
        return best;
    }
    case Separator: {
        const char* p = s;
        while (p < end && *p == spec.arg[0])
            ++p;
        return p == s && p != end ? nullptr : rest(p);
    }
    }
    return nullptr;
}

struct MatchCase {
    const char* name;
    std::vector<Spec> chain;
    const char* subject;
    int longest; // characters matched, -1 for no match
};

class PatternMatches : public ::testing::TestWithParam<MatchCase> {};

TEST_P(PatternMatches, LongestMatchAndCompleteMatchAgree) {
    const MatchCase& c = GetParam();
    ChainPattern pattern(c.chain);
    const char* matched = pattern.longestMatch(c.subject);
    EXPECT_EQ(matched ? static_cast<int>(matched - c.subject) : -1, c.longest);
    EXPECT_EQ(pattern.completeMatch(c.subject),
              c.longest == static_cast<int>(std::strlen(c.subject)));
}

INSTANTIATE_TEST_SUITE_P(
    Elements, PatternMatches,
    ::testing::Values(
        MatchCase{"AnyNMatchesEverything", {{AnyN, ""}}, "anything", 8},
        MatchCase{"AnyNMatchesTheEmptyString", {{AnyN, ""}}, "", 0},
        MatchCase{"LiteralThenAnyN", {{Literal, "clk"}, {AnyN, ""}}, "clk_div", 7},
        MatchCase{"LiteralMismatch", {{Literal, "clk"}, {AnyN, ""}}, "Clk", -1},
        MatchCase{"LiteralIsAPrefixMatch", {{Literal, "ab"}}, "abc", 2},
        MatchCase{
            "AnyNBacktracksToTheLastLiteral", {{AnyN, ""}, {Literal, "."}, {AnyN, ""}}, "a.b.c", 5},
        MatchCase{"AnyNKeepsTheFurthestLiteral", {{AnyN, ""}, {Literal, "x"}}, "axbxc", 4},
        MatchCase{"AnyOneConsumesOne", {{AnyOne, ""}}, "ab", 1},
        MatchCase{"AnyOneAtTheEndConsumesNone", {{Literal, "a"}, {AnyOne, ""}}, "a", 1},
        MatchCase{"AnyOneMayBeSkipped", {{AnyOne, ""}, {Literal, "b"}}, "b", 1},
        MatchCase{"NotInSetStopsBeforeTheSetCharacter", {{NotInSet, "./"}}, "top.u1", 3},
        MatchCase{"NotInSetThenLiteral", {{NotInSet, "."}, {Literal, ".u"}}, "top.u1", 5},
        MatchCase{"NotInSetCannotCrossItsSet", {{NotInSet, "."}, {Literal, "1"}}, "a.1", -1},
        MatchCase{"NotCharStopsAtItsCharacter", {{NotChar, "["}}, "bus[3]", 3},
        MatchCase{"NotCharToTheEnd", {{NotChar, "["}}, "bus", 3},
        MatchCase{"SeparatorRun", {{Literal, "a"}, {Separator, " "}}, "a   b", 4},
        MatchCase{"SeparatorAtEnd", {{Literal, "a"}, {Separator, " "}}, "a", 1},
        MatchCase{"SeparatorNeedsOne", {{Literal, "a"}, {Separator, " "}}, "ab", -1},
        MatchCase{"SeparatorThenRest", {{Literal, "a"}, {Separator, "_"}, {AnyN, ""}}, "a__x", 4}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(Pattern, WithoutElementsOrTextNothingMatches) {
    ChainPattern empty({});
    EXPECT_FALSE(empty.completeMatch(""));
    EXPECT_FALSE(empty.completeMatch("x"));
    const char* s = "abc";
    EXPECT_EQ(empty.longestMatch(s), s);
    ChainPattern noText({{AnyN, ""}}, nullptr);
    EXPECT_FALSE(noText.completeMatch("x"));
    EXPECT_EQ(noText.longestMatch(s), s);
    EXPECT_FALSE(ChainPattern({{AnyN, ""}}).completeMatch(nullptr));
}

TEST(Pattern, RemoveLeadingPatternsDropsFromTheFrontAndClearsTheLastElement) {
    ChainPattern pattern({{Literal, "a"}, {Literal, "b"}, {AnyN, ""}});
    pattern.removeLeadingPatterns(1);
    EXPECT_TRUE(pattern.completeMatch("bcd"));
    EXPECT_FALSE(pattern.completeMatch("abcd"));
    pattern.removeLeadingPatterns(5);
    EXPECT_EQ(pattern.firstElement(), nullptr);
    EXPECT_FALSE(pattern.completeMatch(""));
}

TEST(Pattern, CopiesHaveTheirOwnChainAndText) {
    auto* original = new ChainPattern({{Literal, "ab"}, {NotChar, "."}});
    Pattern copy(*original);
    Pattern assigned;
    assigned = *original;
    delete original;
    for (const Pattern* p : {&copy, &assigned}) {
        EXPECT_STREQ(p->pattern(), "p");
        EXPECT_TRUE(p->completeMatch("abxyz"));
        EXPECT_FALSE(p->completeMatch("abx.z"));
        ASSERT_NE(p->firstElement(), nullptr);
        EXPECT_STREQ(p->firstElement()->string(), "ab");
    }
}

TEST(Pattern, SetPatternDropsTheChain) {
    ChainPattern pattern({{AnyN, ""}});
    pattern.setPattern("new");
    EXPECT_STREQ(pattern.pattern(), "new");
    EXPECT_EQ(pattern.firstElement(), nullptr);
}

TEST(Pattern, LongChainIsDeletedWithoutRecursion) {
    std::vector<Spec> chain(200000, Spec{AnyOne, ""});
    ChainPattern pattern(chain);
    pattern.cleanup();
    EXPECT_EQ(pattern.firstElement(), nullptr);
}

TEST(Pattern, MemoisedMatchEqualsPlainBacktrackingOnRandomPatterns) {
    std::mt19937 random(2024);
    auto pick = [&](int n) { return static_cast<int>(random() % n); };
    const char alphabet[] = "ab._ ";
    auto text = [&](int maxLength) {
        std::string s;
        for (int i = 0, n = pick(maxLength + 1); i < n; ++i)
            s += alphabet[pick(5)];
        return s;
    };
    for (int round = 0; round < 4000; ++round) {
        std::vector<Spec> chain;
        for (int i = 0, n = 1 + pick(6); i < n; ++i) {
            auto kind = static_cast<Kind>(pick(6));
            std::string arg = kind == Literal ? text(3) : std::string(1, alphabet[pick(5)]);
            if (kind == NotInSet)
                arg += alphabet[pick(5)];
            chain.push_back({kind, arg});
        }
        std::string subject = text(14);
        ChainPattern pattern(chain);
        const char* s = subject.c_str();
        const char* expected = reference(chain, 0, s, s + subject.size());
        ASSERT_EQ(pattern.longestMatch(s), expected)
            << "round " << round << " on '" << subject << "'";
    }
}

TEST(CharCompare, OrdersByCharactersNotAddresses) {
    std::string a = "beta", b = "alpha";
    std::map<const char*, int, CharCompare> byName{{a.c_str(), 1}, {b.c_str(), 2}};
    EXPECT_STREQ(byName.begin()->first, "alpha");
    EXPECT_EQ(byName.count("beta"), 1u);
}

} // namespace
