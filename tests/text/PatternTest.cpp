#include "text/Pattern.h"
#include "WildcardPattern.h"

#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <random>
#include <string>
#include <typeinfo>

namespace {

constexpr int kNoMatch = -1;

TEST(PatternMatch, EachElementKindFollowsTheLongestMatchRules) {
    struct Case {
        const char* pattern;
        const char* subject;
        int longest;
    } cases[] = {
        // clang-format off
        {"*", "", 0}, {"*", "any text", 8}, {"ab*", "ab", 2}, {"ab*", "abcd", 4},
        {"ab*", "a", kNoMatch}, {"ab*", "xab", kNoMatch}, {"ab", "AB", kNoMatch}, {"ab", "abc", 2},
        {"a*b", "abab", 4}, {"a*b", "abbax", 3}, {"a?", "a", 1}, {"a?", "abc", 2}, {"a?b", "ab", 2},
        {"a?b", "axb", 3}, {"a?b", "axxb", kNoMatch}, {"??", "abc", 2}, {"?", "", 0},
        {"[,;]", "ab;c", 2}, {"[,;]", "abc", 3}, {"[,;]", ";", 0}, {"[,;],", "ab,c", 3},
        {"[,]b", "a,b", kNoMatch}, {"[,]*", "a,b", 3}, {"^,", "ab,c", 2}, {"^,", "abc", 3},
        {"^,,*", "ab,c", 4}, {"^,x", "abx,", 3}, {"ab|-", "ab", 2}, {"ab|-", "ab---", 5},
        {"ab|-", "ab-c", 3}, {"ab|-", "abc", kNoMatch}, {"ab|-c", "ab--c", 5},
        {"|-", "x", kNoMatch}, {"a*a*a*b", "aaaaaaaa", kNoMatch}, {"a*a*a", "aaaaaaaa", 8},
        // clang-format on
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(std::string(c.pattern) + " against \"" + c.subject + '"');
        const WildcardPattern pattern(c.pattern);
        const char* end = pattern.longestMatch(c.subject);
        EXPECT_EQ(end != nullptr ? end - c.subject : kNoMatch, c.longest);
        EXPECT_EQ(pattern.completeMatch(c.subject), end != nullptr && *end == '\0');
    }
}

// The wildcard syntax gives no empty literal and no null argument.
TEST(PatternMatch, EmptyLiteralAndNullArgumentStopOnlyAtTheEnd) {
    WildcardPattern pattern("a");
    pattern.addElement(new StringPatternElement(""));
    pattern.addElement(new NCharsNotCharPatternElement(nullptr));
    EXPECT_TRUE(pattern.completeMatch("abc"));
}

// setPattern drops the chain, so that a derived pattern can build it again from the text.
TEST(PatternMatch, WithoutElementsOrTextNothingMatches) {
    const Pattern empty;
    const Pattern textOnly("ab*");
    WildcardPattern elementsOnly("ab*");
    elementsOnly.setPattern(nullptr);
    elementsOnly.addElement(new AnyNCharsPatternElement());
    WildcardPattern reset("a*");
    reset.setPattern("b?");
    EXPECT_STREQ(reset.pattern(), "b?");
    EXPECT_STREQ(reset.asString(), "b?");
    for (const Pattern* pattern :
         std::initializer_list<const Pattern*>{&empty, &textOnly, &elementsOnly, &reset}) {
        for (const char* s : {"", "ab", "abc"}) {
            EXPECT_FALSE(pattern->completeMatch(s)) << s;
            EXPECT_EQ(pattern->longestMatch(s), s) << "returned unchanged";
        }
    }
    EXPECT_FALSE(WildcardPattern("*").completeMatch(nullptr));
    EXPECT_EQ(WildcardPattern("*").longestMatch(nullptr), nullptr);
}

TEST(PatternMatch, AgreesWithPlainBacktrackingAndWithItsCopyOnRandomPatterns) {
    std::mt19937 random(20261122);
    const std::string patternAlphabet = "ab-*?*[-]^a|-ab";
    const std::string subjectAlphabet = "aab-";
    for (int round = 0; round < 3000; ++round) {
        std::string text, subject;
        for (int i = std::uniform_int_distribution<>(1, 10)(random); i > 0; --i) {
            text += patternAlphabet[random() % patternAlphabet.size()];
        }
        for (int i = std::uniform_int_distribution<>(0, 12)(random); i > 0; --i) {
            subject += subjectAlphabet[random() % subjectAlphabet.size()];
        }
        const WildcardPattern pattern(text.c_str());
        for (const PatternElement* e = pattern.firstElement(); e != nullptr; e = e->next()) {
            ASSERT_EQ(e->match(subject.c_str()), reference::match(e, subject.c_str()))
                << "pattern " << text << " from element " << typeid(*e).name() << " against "
                << subject;
        }
        ASSERT_EQ(Pattern(pattern).longestMatch(subject.c_str()),
                  pattern.longestMatch(subject.c_str()))
            << "a copy of " << text << " against " << subject;
    }
}

TEST(PatternMatch, ManyWildcardsOnLongStringsStayExact) {
    const std::string as(3000, 'a');
    EXPECT_EQ(WildcardPattern("a*a*a*a*a*a*a*a*a*b").longestMatch(as.c_str()), nullptr);
    EXPECT_TRUE(WildcardPattern("a*a*a*a*a*a*a*a*a").completeMatch(as.c_str()));
    EXPECT_EQ(WildcardPattern("?a?a?[b]").longestMatch(as.c_str()), as.c_str() + as.size());
}

// An element added after the chain was emptied starts it again.
TEST(PatternChain, RemoveLeadingPatternsDropsElementsFromTheFront) {
    const std::pair<int, const char*> cases[] = {{-1, "abxcd"}, {0, "abxcd"}, {1, "xxcd"},
                                                 {2, "cd"},     {3, nullptr}, {9, nullptr}};
    for (const auto& [remove, rest] : cases) {
        WildcardPattern pattern("ab*cd");
        pattern.removeLeadingPatterns(remove);
        EXPECT_EQ(pattern.firstElement() != nullptr, rest != nullptr) << remove;
        EXPECT_EQ(pattern.completeMatch(rest ? rest : ""), rest != nullptr) << remove;
        pattern.addElement(new StringPatternElement("!"));
        EXPECT_TRUE(pattern.completeMatch((std::string(rest ? rest : "") + "!").c_str())) << remove;
    }
}

// Element kinds and arguments are copied faithfully (see the random patterns); here every
// form of copy keeps a chain of its own once the original is gone.
TEST(PatternChain, CopiesAssignmentsAndMovesOwnTheirElements) {
    auto original = std::make_unique<WildcardPattern>("x[,]^;|-?*");
    const Pattern copied(*original);
    Pattern assigned;
    assigned = *original;
    Pattern self(*original);
    const Pattern& alias = self;
    self = alias;
    Pattern source(*original);
    const Pattern moved(std::move(source));
    original.reset();
    for (const Pattern* copy : {&copied, &alias, &moved, static_cast<const Pattern*>(&assigned)}) {
        EXPECT_STREQ(copy->pattern(), "x[,]^;|-?*");
        EXPECT_TRUE(copy->completeMatch("xab;--c"));
        EXPECT_FALSE(copy->completeMatch("yab;--c"));
    }
}

TEST(PatternChain, VeryLongChainsMatchAndDeleteWithoutDeepRecursion) {
    WildcardPattern pattern("");
    for (int i = 0; i < 200000; ++i) {
        pattern.addElement(new AnyOneCharPatternElement());
    }
    EXPECT_TRUE(pattern.completeMatch("abc"));
    pattern.removeLeadingPatterns(100000);
    EXPECT_TRUE(pattern.completeMatch(""));
}

TEST(CharCompareTest, OrdersByCharactersWithNullFirst) {
    const char* ascending[] = {nullptr, "", "B", "a", "ab", "abc", "abd"};
    const CharCompare less;
    for (std::size_t i = 0; i < std::size(ascending); ++i) {
        for (std::size_t j = 0; j < std::size(ascending); ++j) {
            EXPECT_EQ(less(ascending[i], ascending[j]), i < j) << i << " < " << j;
        }
    }
    std::string key = "beta";
    std::map<const char*, int, CharCompare> byName{{key.c_str(), 2}};
    EXPECT_EQ(byName.count("beta"), 1u) << "found by contents, not by address";
}

} // namespace
