#include "text/BasicParser.h"
#include "text/ModelParser.h"

#include "../support/ToolkitCycle.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

namespace {

class BasicParserTest : public ToolkitCycle {
protected:
    void SetUp() override { TarqToolkit::registerSelf(); }
};

TEST_F(BasicParserTest, FirstMismatchIsKeptAndStopsAllLaterMatches) {
    const std::pair<ScanType, const char*> cases[] = {
        {ST_LPAREN, "Syntax error: expected '('"},
        {ST_NUMBER, "Syntax error: expected 'number'"},
        {ST_NEWLINE, "Syntax error: expected '\n'"},
        {ST_CASE_EQUAL, "Syntax error: expected '==='"},
    };
    for (const auto& [expected, message] : cases) {
        BasicParser parser("word next", nullptr);
        parser.advance();
        EXPECT_FALSE(parser.match(expected));
        EXPECT_STREQ(parser.errorMessage(), message);
        EXPECT_EQ(parser.errorLevel(), PARSER_ERROR_SYNTAX);
        EXPECT_FALSE(parser.match(ST_WORD)) << "a pending error fails every match";
        parser.advance();
        EXPECT_STREQ(parser.token().text(), "word") << "nothing is scanned after an error";
        EXPECT_STREQ(parser.errorMessage(), message) << "the first error is kept";
    }
}

// A model parser is a basic parser that keeps its owner for the application's readers.
TEST_F(BasicParserTest, ErrorReplacesTheMessageAndClearErrorResumes) {
    int model = 0;
    ModelParser parser("a b", &model, nullptr);
    EXPECT_EQ(parser.owner(), &model);
    parser.error("first", PARSER_ERROR_FATAL);
    parser.error("second", PARSER_ERROR_NOTE);
    EXPECT_STREQ(parser.errorMessage(), "second");
    EXPECT_EQ(parser.errorLevel(), PARSER_ERROR_NOTE);
    parser.clearError();
    EXPECT_FALSE(parser.hasError());
    parser.advance();
    EXPECT_TRUE(parser.match(ST_WORD));
    EXPECT_STREQ(parser.token().text(), "b");
}

} // namespace
