#include "text/Token.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

namespace {

// Edits may take their text from the token's own.
TEST(Token, EditsReallocateOnlyWhenTooSmallAndThenToExactSize) {
    Token token(ST_WORD, "abcdef");
    EXPECT_EQ(token.capacity(), 7u);
    token.setValue("xy");
    EXPECT_EQ(token.capacity(), 7u);
    EXPECT_STREQ(token.text(), "xy");
    token.setValue("0123456789", 10);
    EXPECT_EQ(token.capacity(), 11u);
    token.setValue(token.text() + 4);
    EXPECT_STREQ(token.text(), "456789") << "its own text, shifted";
    token.setValue(nullptr);
    EXPECT_EQ(token.length(), 0u);
    EXPECT_STREQ(token.text(), "");

    token.prepend("-");
    token.append("12.5");
    token.append(token.text());
    token.append(token.text());
    EXPECT_STREQ(token.text(), "-12.5-12.5-12.5-12.5");
    EXPECT_EQ(token.capacity(), 21u);
    token.prepend(token.text() + 17);
    EXPECT_STREQ(token.text(), "2.5-12.5-12.5-12.5-12.5");
    EXPECT_EQ(token.length(), 23u);
    EXPECT_EQ(token.capacity(), 24u);
}

// A laid-over token has no capacity of its own, so any new text moves it to the heap.
TEST(Token, LaidOverTokenMovesToAnExactHeapCopyWhenItsTextIsSet) {
    using Edit = void (Token::*)(const char*);
    for (Edit edit : {static_cast<Edit>(&Token::setValue), &Token::prepend, &Token::append}) {
        char buffer[8] = "zzzzzzz";
        Token token(buffer, sizeof buffer);
        EXPECT_EQ(token.text(), buffer);
        EXPECT_EQ(token.capacity(), 0u);
        (token.*edit)("abc");
        EXPECT_NE(token.text(), buffer);
        EXPECT_STREQ(token.text(), "abc");
        EXPECT_EQ(token.capacity(), 4u);
        EXPECT_STREQ(buffer, "") << "the caller's buffer is only emptied";
    }
}

TEST(Token, CopiesOwnTheirTextSetLengthOnlyShortensAndDeleteContentsEmpties) {
    char buffer[16];
    Token laid(buffer, sizeof buffer);
    laid.setValue("hello");
    laid.setType(ST_WORD);
    Token copy(laid);
    laid.setValue("other");
    EXPECT_STREQ(copy.text(), "hello");
    EXPECT_EQ(copy.capacity(), 6u);
    copy.setLength(2);
    copy.setLength(10);
    EXPECT_STREQ(copy.text(), "he");
    Token assigned;
    assigned = copy;
    std::ostringstream printed;
    assigned.printOn(printed);
    EXPECT_EQ(printed.str(), "word he") << "type and text copied and assigned";
    OC_<Token> tokens;
    tokens.add(new Token(copy));
    tokens.add(new Token(assigned));
    Token::deleteContents(tokens);
    EXPECT_TRUE(tokens.isEmpty());
}

} // namespace
