#include "text/Token.h"

#include <gtest/gtest.h>

#include <sstream>

namespace {

TEST(Token, SetValueReallocatesOnlyWhenTooSmallAndThenToExactSize) {
    Token token(ST_WORD, "abcdef");
    EXPECT_EQ(token.capacity(), 7u);
    token.setValue("xy");
    EXPECT_EQ(token.capacity(), 7u);
    EXPECT_STREQ(token.text(), "xy");
    token.setValue("0123456789", 10);
    EXPECT_EQ(token.capacity(), 11u);
    token.setValue(nullptr);
    EXPECT_EQ(token.length(), 0u);
    EXPECT_STREQ(token.text(), "");
}

TEST(Token, LaidOverTokenUsesTheBufferAndMovesToTheHeapWhenTextOutgrowsIt) {
    char buffer[8] = "zzzzzzz";
    Token token(buffer, sizeof buffer);
    EXPECT_EQ(token.capacity(), 0u);
    token.setValue("abc");
    EXPECT_EQ(token.text(), buffer);
    token.prepend("-");
    EXPECT_STREQ(buffer, "-abc");
    token.append("defghij");
    EXPECT_NE(token.text(), buffer);
    EXPECT_STREQ(token.text(), "-abcdefghij");
    EXPECT_EQ(token.capacity(), 12u);
    EXPECT_STREQ(buffer, "-abc") << "the caller's buffer is never written past or freed";
}

TEST(Token, CopiesOwnTheirTextAndSetLengthOnlyShortens) {
    char buffer[16];
    Token laid(buffer, sizeof buffer);
    laid.setValue("hello");
    laid.setType(ST_WORD);
    Token copy(laid);
    laid.setValue("other");
    EXPECT_STREQ(copy.text(), "hello");
    EXPECT_EQ(copy.type(), ST_WORD);
    EXPECT_GT(copy.capacity(), 0u);
    copy.setLength(2);
    copy.setLength(10);
    EXPECT_STREQ(copy.text(), "he");
    Token assigned;
    assigned = copy;
    EXPECT_STREQ(assigned.text(), "he");
    std::ostringstream printed;
    assigned.printOn(printed);
    EXPECT_EQ(printed.str(), "word he");
}

TEST(Token, DeleteContentsEmptiesTheCollection) {
    OC_<Token> tokens;
    tokens.add(new Token(ST_WORD, "a"));
    tokens.add(new Token(ST_NUMBER, "1"));
    Token::deleteContents(tokens);
    EXPECT_TRUE(tokens.isEmpty());
}

} // namespace
