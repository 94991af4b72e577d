#include "text/FileParser.h"
#include "text/FileReader.h"

#include "core/StringFunctions.h"
#include "core/iTaskDescription.h"

#include "../support/ToolkitCycle.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <random>
#include <sstream>
#include <string>
#include <vector>

namespace {

KeywordDescriptor keywords[] = {
    {"edge", 10, 0},
    {"time", 11, 0},
    {"flag", 12, 0},
    {nullptr, 0, 0},
};

SectionDescriptor signalSection = {"Signal", 1, 0};
SectionDescriptor viewSection = {"View", 2, 1};
SectionDescriptor* sections[] = {&signalSection, &viewSection, nullptr};

// Keeps every section and records what cleanUp hands over, as "pass:printed form".
class RecordingParser : public FileParser {
public:
    explicit RecordingParser(const char* text) : FileParser(text, this, sections, keywords) {}
    explicit RecordingParser(std::istream& in) : FileParser(in, this, sections, keywords) {}

    bool keepTest(const SectionDescriptor&) override { return true; }
    bool processKept(FileSection& section) override {
        std::ostringstream out;
        out << section.sectionDescriptor().pass << ':' << section.sectionTitle();
        section.printOn(out);
        seen.push_back(out.str());
        return section.sectionDescriptor().id != rejectId;
    }
    bool processNowTest(const SectionDescriptor& descriptor) override {
        return descriptor.id == nowId;
    }
    bool processNow(FileSection& section) override { return section.numberOfElements() > 0; }

    using FileParser::parseString;

    std::vector<std::string> seen;
    short rejectId = -100;
    short nowId = -100;
};

class FileParserTest : public ToolkitCycle {
protected:
    void SetUp() override { TarqToolkit::registerSelf(); }
};

// Every section is kept; the hooks reject those with the ids given. A syntax error ends the
// input there, and the sections before it are still processed.
TEST_F(FileParserTest, ReadsSectionsIntoElementTreesAndHandsThemToTheHooks) {
    struct Case {
        std::string input;
        std::vector<std::string> sections;
        bool read = true;
        bool error = false;
        short nowId = -100;    // processed at once, and rejected there when empty
        short rejectId = -100; // rejected when processed in its pass
    } cases[] = {
        {"", {}},
        {"Signal(a, 1 \"s t\")", {"0:Signal(a,1,s t)"}},
        {"Signal(- 5 @-6 - x 7 -)", {"0:Signal(-5,-6,x,7)"}},
        {"Signal(edge(1,2) flag time())", {"0:Signal(edge(1,2),flag(),time())"}},
        {"Signal([a <b> (c)])", {"0:Signal([(a,<(b),((c)))"}},
        {"Unknown(x (Signal(y)) [z]) Signal(ok)", {"0:Signal(ok)"}},
        {"Signal x \"Signal\"(y)", {"0:Signal(y)"}},
        {"View(v) Signal(s)", {"0:Signal(s)", "1:View(v)"}},
        {"Signal(a b", {"0:Signal(a,b)"}},
        {"Signal(: ; # a)", {"0:Signal(a)"}},
        {.input = "View(v) Signal(" + std::string(100000, '(') + ") Signal(after)",
         .sections = {"1:View(v)"},
         .error = true},
        {.input = "View(v) Unknown(" + std::string(300, '[') + " Signal(after)",
         .sections = {"1:View(v)"},
         .error = true},
        {.input = "Signal() View(x)", .sections = {}, .read = false, .nowId = 1},
        {.input = "Signal(a) Signal(b) View(c)",
         .sections = {"0:Signal(a)", "0:Signal(b)", "1:View(c)"},
         .read = false,
         .rejectId = 1},
    };
    for (const Case& c : cases) {
        RecordingParser parser(c.input.c_str());
        parser.nowId = c.nowId;
        parser.rejectId = c.rejectId;
        EXPECT_EQ(parser.read(2), c.read) << c.input;
        EXPECT_EQ(parser.seen, c.sections) << c.input;
        EXPECT_EQ(parser.keptSections().size(), c.sections.size()) << c.input;
        EXPECT_EQ(parser.hasError(), c.error) << c.input;
    }
    FileParser defaults("Signal(a) View(b)", nullptr, sections, keywords);
    EXPECT_TRUE(defaults.read(3));
    EXPECT_TRUE(defaults.keptSections().empty()) << "the toolkit's hooks keep nothing";
}

TEST_F(FileParserTest, ElementsGiveTheirItemsByIndexAndSafeDefaultsPastTheEnd) {
    RecordingParser parser("Signal(edge(1 \"x\") 2 [<q>])");
    ASSERT_TRUE(parser.read(1));
    FileSection& section = *parser.keptSections().at(0);
    FileElement& edge = section.element(0);
    EXPECT_STREQ(edge.key(), "edge");
    EXPECT_EQ(edge.id(), 10);
    EXPECT_EQ(edge.numberOfElements(), 2);
    EXPECT_EQ(edge.type(1), ST_STRING);
    EXPECT_STREQ(edge.value(0), "1");
    EXPECT_EQ(section.type(1), ST_NUMBER);
    EXPECT_EQ(section.element(2).id(), -3);
    EXPECT_EQ(section.element(2).element(0).id(), -2);
    EXPECT_EQ(section.value(5), nullptr);
    EXPECT_EQ(section.type(-1), ST_END);
    EXPECT_EQ(section.token(9).type(), ST_END);
    EXPECT_EQ(section.element(9).numberOfElements(), 0);
    FileElement& single = edge.element(1);
    EXPECT_EQ(&single.element(7), &single);
    EXPECT_STREQ(single.token(3).text(), "x");
    int count = 0;
    for (auto items = section.iterator(); items.hasNext(); items.next())
        ++count;
    EXPECT_EQ(count, 3);
}

// The filter sees every token of a list with the list's id: the section's own at the top,
// -1 inside nested lists and keyword arguments.
TEST_F(FileParserTest, ItemFilterIsOfferedEveryTokenAndKeepsWhatItTakes) {
    struct Filtering : RecordingParser {
        using RecordingParser::RecordingParser;
        bool itemFilter(MultipleFileElement& list, ScanType type, short id) override {
            offered.push_back(std::string(token().text()) + "@" + std::to_string(id));
            if (type != ST_HASH)
                return false;
            list.addToken(Token(ST_WORD, "hash"));
            advance();
            return true;
        }
        std::vector<std::string> offered;
    } parser("Signal(a # edge(# 1) [2])");
    EXPECT_TRUE(parser.read(1));
    EXPECT_EQ(parser.seen, std::vector<std::string>{"0:Signal(a,hash,edge(hash,1),[(2))"});
    EXPECT_EQ(parser.offered,
              (std::vector<std::string>{"a@1", "#@1", "edge@1", "#@-1", "1@-1", "[@1", "2@-1"}));
}

TEST_F(FileParserTest, ParseStringTakesRawTextToWhiteSpaceAndUnquotes) {
    struct Case {
        std::string input;
        std::string value;
        std::string next;
        char keepQuotes;
    } cases[] = {
        {"a/b.c:d next", "a/b.c:d", "next", 0},
        {"path/x", "path/x", "", 0},
        {"\"q\\tz\"(  next", "q\\tz(", "next", 0},
        {"\"q\\tz\"  next", "q\tz", "next", 1},
        {std::string("a/").append(9000, 'v'), std::string("a/").append(8188, 'v'),
         std::string(812, 'v'), 0},
    };
    for (const Case& c : cases) {
        RecordingParser parser(c.input.c_str());
        parser.setAllowSlashDotInWords(c.keepQuotes);
        parser.advance();
        std::unique_ptr<SingleFileElement> element(&parser.parseString());
        EXPECT_EQ(element->type(0), ST_STRING);
        EXPECT_EQ(element->value(0), c.value) << c.input;
        EXPECT_EQ(parser.token().text(), c.next) << c.input;
    }
}

// Numbers are written in the default formatting, in quotes, in the ring of static buffers.
TEST_F(FileParserTest, WritersGiveTheStatedShapes) {
    struct Case {
        const char* a;
        const char* b;
        const char* c;
        const char* written;
    } cases[] = {
        {"1", "2", nullptr, "K(1,2) "},   {nullptr, nullptr, nullptr, "K "},
        {"1", nullptr, nullptr, "K(1) "}, {"1", "2", "3", "K(1,2,3) "},
        {nullptr, "2", nullptr, "K,2 "},  {nullptr, "2", "3", "K,2,3 "},
        {"1", nullptr, "3", "K(1,3) "},
    };
    for (const Case& c : cases) {
        std::ostringstream out;
        FileParser::storeKeyword(out, "K", c.a, c.b, c.c);
        EXPECT_EQ(out.str(), c.written);
    }
    const SingleFileElement x(Token(ST_WORD, "x"));
    const SingleFileElement y(Token(ST_STRING, "\"y\""));
    const SingleFileElement z(Token(ST_NUMBER, "3"));
    std::ostringstream others;
    FileParser::storeKeywordQuotedString(others, "N", "a\"b");
    FileParser::storeKeywordQuotedString(others, "M", nullptr);
    FileParser::storeKeyword(others, "P", x, y, z);
    EXPECT_EQ(others.str(), "N(\"a\\\"b\") M P(x,\"y\",3) ");

    EXPECT_STREQ(FileParser::convertToString(1.5), "\"1.5\"");
    EXPECT_STREQ(FileParser::convertToString(-2e-9), "\"-2e-09\"");
    EXPECT_STREQ(FileParser::convertToString(1234567.0), "\"1.23457e+06\"");
    const char* first = FileParser::convertToString(7);
    for (int i = 0; i < 7; ++i)
        FileParser::convertToString(i);
    EXPECT_STREQ(first, "\"7\"");
    FileParser::convertToString(0);
    EXPECT_STREQ(first, "\"0\"") << "the ninth result reuses the first ring buffer";
}

// Writes random keyword items of arbitrary text with the quoting writer and reads them back:
// every text comes back unchanged once unquoted. Their lengths span every size class of the
// element pools, whose blocks later rounds recycle.
TEST_F(FileParserTest, WrittenItemsReadBackUnchanged) {
    std::mt19937 random(12345);
    auto pick = [&](int n) { return static_cast<int>(random() % n); };
    for (int round = 0; round < 50; ++round) {
        std::ostringstream file;
        std::vector<std::vector<std::string>> expected;
        file << "Signal(";
        for (int item = pick(40); item >= 0; --item) {
            expected.push_back({keywords[pick(3)].name, ""});
            for (int i = pick(300); i > 0; --i)
                expected.back()[1] += static_cast<char>(1 + pick(255));
            FileParser::storeKeywordQuotedString(file, expected.back()[0].c_str(),
                                                 expected.back()[1].c_str());
        }
        file << ")";
        RecordingParser parser(file.str().c_str());
        ASSERT_TRUE(parser.read(1)) << file.str();
        FileSection& section = *parser.keptSections().at(0);
        std::vector<std::vector<std::string>> items;
        for (short i = 0; i < section.numberOfElements(); ++i) {
            FileElement& item = section.element(i);
            items.push_back({item.key() ? item.key() : "?"});
            for (short j = 0; j < item.numberOfElements(); ++j) {
                std::unique_ptr<char[]> text(strExpandQuotedString(item.value(j)));
                items.back().push_back(text.get());
            }
        }
        EXPECT_EQ(items, expected) << file.str();
    }
}

// Without a window system the message goes to standard error as an untitled error.
TEST_F(FileParserTest, BadSectionNotifierAppendsTheNumberAndCutsAt255) {
    testing::internal::CaptureStderr();
    EXPECT_TRUE(FileSection::badSectionNotifier("Bad section ", 0));
    EXPECT_TRUE(FileSection::badSectionNotifier("Bad section ", 42));
    EXPECT_TRUE(FileSection::badSectionNotifier(std::string(300, 'm').c_str(), 7));
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "ERROR: Bad section \nERROR: Bad section 42\nERROR: " + std::string(255, 'm') + "\n");
}

// Reads its file's sections through the reader's own open and close.
struct SectionsFile : FileReader {
    using FileReader::FileReader;
    bool load(std::vector<std::string>& seen) {
        if (!open())
            return false;
        RecordingParser parser(*stream());
        parser.setTask(*task());
        bool ok = parser.read(2);
        seen = parser.seen;
        close();
        return ok;
    }
};

struct SectionsWriter : FileWritingAgent {
    using FileWritingAgent::FileWritingAgent;
    void writeContents(std::ostream& out) override {
        FileParser::storeKeyword(out, "Signal", "1");
        FileParser::storeKeyword(out, "Signal", "2");
    }
};

struct CancelAtProgress : iTaskDescription {
    void setProgress(unsigned long done) override {
        iTaskDescription::setProgress(done);
        cancel();
    }
};

TEST_F(FileParserTest, WritingAgentAndReaderRoundTripThroughAFile) {
    auto path = std::filesystem::temp_directory_path() / "tq_fileparser_test.txt";
    SectionsWriter writer(path.c_str());
    EXPECT_STREQ(writer.filename(), path.c_str());
    ASSERT_TRUE(writer.render());
    SectionsFile reader(path.c_str());
    iTaskDescription task;
    reader.setTask(task);
    std::vector<std::string> seen;
    EXPECT_TRUE(reader.load(seen));
    EXPECT_EQ(seen, (std::vector<std::string>{"0:Signal(1)", "0:Signal(2)"}));
    EXPECT_EQ(task.progress(), 21u) << "every character and the end";
    CancelAtProgress cancelling;
    reader.setTask(cancelling);
    EXPECT_FALSE(reader.load(seen));
    EXPECT_EQ(cancelling.progress(), 16u) << "the first section and the next one's name";
    EXPECT_FALSE(reader.load(seen)) << "cancelled before any section ends";
    std::filesystem::remove(path);

    SectionsFile missing("/nonexistent/dir/file");
    EXPECT_FALSE(missing.load(seen));
    SectionsWriter unwritable("/nonexistent/dir/file");
    EXPECT_FALSE(unwritable.render());
}

} // namespace
