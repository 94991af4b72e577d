#include "text/FileParser.h"
#include "text/FileReader.h"
#include "text/ModelParser.h"

#include "core/StringFunctions.h"
#include "core/iTaskDescription.h"

#include "../support/ToolkitCycle.h"

#include <gtest/gtest.h>

#include <cmath>
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
    bool processNow(FileSection& section) override {
        ++processedNow;
        return section.numberOfElements() > 0;
    }

    using FileParser::parseString;

    std::vector<std::string> seen;
    short rejectId = -100;
    short nowId = -100;
    int processedNow = 0;
};

class FileParserTest : public ToolkitCycle {
protected:
    void SetUp() override { TarqToolkit::registerSelf(); }
};

TEST_F(FileParserTest, ReadsSectionsIntoElementTrees) {
    struct Case {
        const char* input;
        std::vector<std::string> sections;
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
    };
    for (const Case& c : cases) {
        RecordingParser parser(c.input);
        EXPECT_TRUE(parser.read(2)) << c.input;
        EXPECT_EQ(parser.seen, c.sections) << c.input;
        EXPECT_FALSE(parser.hasError()) << c.input;
    }
}

TEST_F(FileParserTest, ElementsGiveTheirItemsByIndexAndSafeDefaultsPastTheEnd) {
    struct Keep : RecordingParser {
        using RecordingParser::RecordingParser;
        bool processKept(FileSection& section) override {
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
            return true;
        }
    } keep("Signal(edge(1 \"x\") 2 [<q>])");
    EXPECT_TRUE(keep.read(1));
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

// A syntax error ends the input there: the sections before it are still processed.
TEST_F(FileParserTest, SyntaxErrorDiscardsItsSectionAndEndsTheInput) {
    for (const std::string& nested :
         {"Signal(" + std::string(100000, '(') + ")", "Unknown(" + std::string(300, '[')}) {
        RecordingParser parser(("View(v) " + nested + " Signal(after)").c_str());
        EXPECT_TRUE(parser.read(2));
        EXPECT_TRUE(parser.hasError());
        EXPECT_EQ(parser.seen, std::vector<std::string>{"1:View(v)"});
    }
}

TEST_F(FileParserTest, ProcessNowRejectionStopsTheReadAndCleanUpMakesEveryCall) {
    RecordingParser rejectedNow("Signal() View(x)");
    rejectedNow.nowId = 1;
    EXPECT_FALSE(rejectedNow.read(2));
    EXPECT_EQ(rejectedNow.processedNow, 1);
    EXPECT_TRUE(rejectedNow.keptSections().empty());

    RecordingParser rejectedKept("Signal(a) Signal(b) View(c)");
    rejectedKept.rejectId = 1;
    EXPECT_FALSE(rejectedKept.read(2));
    EXPECT_EQ(rejectedKept.seen,
              (std::vector<std::string>{"0:Signal(a)", "0:Signal(b)", "1:View(c)"}));

    FileParser defaults("Signal(a) View(b)", nullptr, sections, keywords);
    EXPECT_TRUE(defaults.read(3));
    EXPECT_TRUE(defaults.keptSections().empty()) << "the toolkit's hooks keep nothing";
}

TEST_F(FileParserTest, ParseStringTakesRawTextToWhiteSpaceAndUnquotes) {
    struct Case {
        const char* input;
        const char* value;
        const char* next;
        char keepQuotes;
    } cases[] = {
        {"a/b.c:d next", "a/b.c:d", "next", 0},
        {"path/x", "path/x", "", 0},
        {"\"q\\tz\"(  next", "q\\tz(", "next", 0},
        {"\"q\\tz\"  next", "q\tz", "next", 1},
    };
    for (const Case& c : cases) {
        RecordingParser parser(c.input);
        parser.setAllowSlashDotInWords(c.keepQuotes);
        parser.advance();
        std::unique_ptr<SingleFileElement> element(&parser.parseString());
        EXPECT_EQ(element->type(0), ST_STRING);
        EXPECT_STREQ(element->value(0), c.value) << c.input;
        EXPECT_STREQ(parser.token().text(), c.next) << c.input;
    }
    const std::string longValue = "a/" + std::string(9000, 'v');
    RecordingParser parser(longValue.c_str());
    parser.advance();
    std::unique_ptr<SingleFileElement> element(&parser.parseString());
    EXPECT_EQ(element->token(0).length(), 8190u) << "cut at 8190 characters in all";
}

TEST_F(FileParserTest, ReadReportsProgressAndStopsWhenCancelled) {
    std::istringstream in("Signal(a) Signal(b) Signal(c)");
    RecordingParser parser(in);
    struct CancelAfterFirst : iTaskDescription {
        void setProgress(unsigned long done) override {
            iTaskDescription::setProgress(done);
            cancel();
        }
    } task;
    parser.setTask(task);
    EXPECT_FALSE(parser.read(1));
    EXPECT_EQ(task.progress(), 16u) << "the parser has read the next section's name";
    EXPECT_EQ(parser.keptSections().size(), 1u);
}

TEST_F(FileParserTest, StoreKeywordWritesTheStatedShapes) {
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
    std::ostringstream quoted;
    FileParser::storeKeywordQuotedString(quoted, "N", "a\"b");
    FileParser::storeKeywordQuotedString(quoted, "M", nullptr);
    EXPECT_EQ(quoted.str(), "N(\"a\\\"b\") M ");

    struct Stored : TqObject {
        explicit Stored(const char* text) : m_text(text) {}
        std::ostream& printOn(std::ostream& out) const override { return out << m_text; }
        const char* m_text;
    } x("x"), y("\"y\""), z("3");
    std::ostringstream objects;
    FileParser::storeKeyword(objects, "P", x, y, z);
    EXPECT_EQ(objects.str(), "P(x,\"y\",3) ");
}

TEST_F(FileParserTest, ConvertToStringUsesDefaultFormattingInTheRing) {
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

// Writes random keyword items with the static writers and reads them back: every argument
// comes back as the item it was written as.
TEST_F(FileParserTest, WrittenItemsReadBackUnchanged) {
    std::mt19937 random(12345);
    auto pick = [&](int n) { return static_cast<int>(random() % n); };
    const char* names[] = {"edge", "time", "flag"};
    for (int round = 0; round < 50; ++round) {
        std::ostringstream file;
        std::vector<std::vector<std::string>> expected;
        file << "Signal(";
        for (int item = 0, items = 1 + pick(8); item < items; ++item) {
            const char* name = names[pick(3)];
            std::vector<std::string> args{name};
            if (int kind = pick(3); kind == 0) {
                std::string text;
                for (int i = 0, n = pick(12); i < n; ++i)
                    text += static_cast<char>(1 + pick(255));
                FileParser::storeKeywordQuotedString(file, name, text.c_str());
                args.push_back(text);
            } else if (kind == 1) {
                double value = std::ldexp(static_cast<double>(random()) - 2e9, pick(60) - 30);
                const char* text = FileParser::convertToString(value);
                std::string unquoted = std::string(text).substr(1);
                unquoted.pop_back();
                args.push_back(unquoted);
                FileParser::storeKeyword(file, name, text);
            } else {
                std::string a = std::to_string(pick(100000) - 50000);
                std::string b = "w";
                b += std::to_string(pick(100));
                const char* c = pick(2) ? "z_9" : nullptr;
                FileParser::storeKeyword(file, name, a.c_str(), b.c_str(), c);
                args.insert(args.end(), {a, b});
                if (c)
                    args.push_back(c);
            }
            expected.push_back(args);
        }
        file << ")";
        struct Check : RecordingParser {
            using RecordingParser::RecordingParser;
            bool processKept(FileSection& section) override {
                for (short i = 0; i < section.numberOfElements(); ++i) {
                    FileElement& item = section.element(i);
                    std::vector<std::string> args{item.key() ? item.key() : "?"};
                    for (short j = 0; j < item.numberOfElements(); ++j) {
                        std::unique_ptr<char[]> text(item.type(j) == ST_STRING
                                                         ? strExpandQuotedString(item.value(j))
                                                         : mem_strdup(item.value(j)));
                        args.push_back(text.get());
                    }
                    items.push_back(args);
                }
                return true;
            }
            std::vector<std::vector<std::string>> items;
        } parser(file.str().c_str());
        ASSERT_TRUE(parser.read(1)) << file.str();
        EXPECT_EQ(parser.items, expected) << file.str();
    }
}

TEST_F(FileParserTest, BadSectionNotifierAppendsTheNumberAndCutsAt255) {
    struct Case {
        std::string message;
        short number;
        std::string shown;
    } cases[] = {
        {"Bad section ", 0, "Bad section "},
        {"Bad section ", 42, "Bad section 42"},
        {std::string(300, 'm'), 7, std::string(255, 'm')},
    };
    for (const Case& c : cases) {
        testing::internal::CaptureStderr();
        EXPECT_TRUE(FileSection::badSectionNotifier(c.message.c_str(), c.number));
        std::string err = testing::internal::GetCapturedStderr();
        EXPECT_NE(err.find(c.shown + "\n"), std::string::npos) << err;
    }
}

TEST_F(FileParserTest, ElementsOfEverySizeKeepTheirTextThroughRecycling) {
    for (int round = 0; round < 3; ++round) {
        MultipleFileElement list;
        for (unsigned length = 0; length < 600; length += 7)
            list.addToken(
                Token(ST_WORD, std::string(length, static_cast<char>('a' + round)).c_str()));
        list.addFileElement(*new MultipleFileElement(&FileElement::squareBracketDescriptor));
        for (short i = 0; i + 1 < list.numberOfElements(); ++i)
            ASSERT_EQ(std::string(list.value(i)),
                      std::string(i * 7u, static_cast<char>('a' + round)));
        EXPECT_STREQ(list.element(list.numberOfElements() - 1).key(), "[");
    }
}

TEST_F(FileParserTest, ModelParserKeepsItsOwner) {
    int model = 0;
    ModelParser parser("x", &model, nullptr);
    EXPECT_EQ(parser.owner(), &model);
    parser.advance();
    EXPECT_TRUE(parser.match(ST_WORD));
}

class SectionsFile : public FileReader {
public:
    using FileReader::FileReader;
    bool load(std::vector<std::string>& seen) {
        if (!open())
            return false;
        RecordingParser parser(*stream());
        if (task())
            parser.setTask(*task());
        bool ok = parser.read(2);
        seen = parser.seen;
        close();
        return ok;
    }
};

class SectionsWriter : public FileWritingAgent {
public:
    using FileWritingAgent::FileWritingAgent;

protected:
    void writeContents(std::ostream& out) override {
        out << "Signal(";
        FileParser::storeKeyword(out, "edge", "1", "2");
        out << ") ";
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
    EXPECT_EQ(seen, std::vector<std::string>{"0:Signal(edge(1,2))"});
    EXPECT_EQ(task.progress(), 20u);
    std::filesystem::remove(path);

    SectionsFile missing("/nonexistent/dir/file");
    EXPECT_FALSE(missing.load(seen));
    SectionsWriter unwritable("/nonexistent/dir/file");
    EXPECT_FALSE(unwritable.render());
}

} // namespace
