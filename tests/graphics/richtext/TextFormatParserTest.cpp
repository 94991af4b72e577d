// The markup parser: trees in their compact text form, the tag table, the conversions to
// plain text and to HTML (read back through Qt's own rich text).
#include "graphics/richtext/TextFormatParser.h"
#include "graphics/richtext/StyledText.h"

#include <QTextBlock>
#include <QTextDocument>
#include <QTextFragment>
#include <gtest/gtest.h>

#include <memory>
#include <sstream>
#include <string>

namespace {

std::string treeOf(const char* text) {
    TextFormatParser parser(text);
    std::ostringstream out;
    parser.parse().printOn(out);
    return out.str();
}

struct TreeCase {
    const char* text;
    const char* tree;
};

// clang-format off
const TreeCase v_trees[] = {
    {"", "L()"},
    {"abc", "L('abc')"},
    {"a b\tc", "L('a b\tc')"},                              // blanks belong to the run
    {"<b>x</b>y", "L(b('x') 'y')"},
    {"<B>x</B>", "L(b('x'))"},                              // tag words ignore case
    {"<b><i>x</i></b>", "L(b(i('x')))"},
    {"<b>a<i>b</i>c</b>d", "L(b('a' i('b') 'c') 'd')"},
    {"<red>r</red><sub>7:0</sub>", "L(red('r') sub('7:0'))"},
    {"<o>RESET</o>_N", "L(o('RESET') '_N')"},
    {"<u>u</u><super>2</super><white>w</white>", "L(u('u') super('2') white('w'))"},
    {"<b>x", "L(b('x'))"},                                  // unclosed: to the end
    {"<bold>x", "L('<bold' '>' 'x')"},                      // unknown word kept
    {"< b>", "L('< b' '>')"},
    {"<>", "L('<>')"},
    {"</>", "L('</' '>')"},
    {"<<b>>", "L('<<' 'b' '>' '>')"},
    {"a</b>c", "L('a' '</b>' 'c')"},                        // closes nothing
    {"<b><i>x</b></i>", "L(b(i('x' '</b>')))"},             // closes not the innermost
    {"<sub>0</super>", "L(sub('0' '</super>'))"},
    {"<b", "L('<b')"},                                      // tag word without '>'
    {"<b<i>x", "L('<b' i('x'))"},
    {"<b\nx", "L('<b') L('x')"},
    {"<", "L('<')"},
    {"a<\nb", "L('a' '<') L('b')"},
    {"a\nb", "L('a') L('b')"},
    {"a\r\nb\r", "L('a') L('b')"},                          // carriage returns dropped
    {"\n", "L() L()"},
    {"<b>a\nb</b>c", "L(b('a')) L(b('b') 'c')"},            // bold goes on to the next line
    {"<b>x\n\ny</b>", "L(b('x')) L(b()) L(b('y'))"},
    {"<b>a<i>b\nc</i>d</b>", "L(b('a' i('b'))) L(b(i('c') 'd'))"},
    {"x\x1Ay", "L('x')"},                                   // Ctrl-Z ends the text
    {"\xC3\xA4<i>\xE2\x86\x91</i>", "L('\xC3\xA4' i('\xE2\x86\x91'))"},
};
// clang-format on

TEST(TextFormatParser, ParseBuildsTheTreeOfEachTable) {
    for (const TreeCase& c : v_trees)
        EXPECT_EQ(treeOf(c.text), c.tree) << "text: " << c.text;
}

TEST(TextFormatParser, ParseKeepsStylesBeyondTheNestingLimitAsText) {
    std::string text, tree = "L(";
    for (int i = 0; i < TextFormatParser::v_maxNesting + 2; ++i)
        text += "<i>";
    text += "x";
    for (int i = 0; i < TextFormatParser::v_maxNesting; ++i)
        tree += "i(";
    tree += "'<i>' '<i>' 'x'";
    tree += std::string(TextFormatParser::v_maxNesting + 1, ')');
    EXPECT_EQ(treeOf(text.c_str()), tree);
}

TEST(TextFormatParser, TreeLinksParentsSiblingsAndRoot) {
    TextFormatParser parser("a<b>b</b>c\nd");
    MetaString& root = parser.parse();
    EXPECT_EQ(parser.str(), &root);
    ASSERT_EQ(root.childCount(), 2);
    MetaString* line = root.firstChild();
    ASSERT_EQ(line->childCount(), 3);
    MetaString* bold = line->firstChild()->nextSibling();
    EXPECT_EQ(bold->tagType(), TF_Bold);
    EXPECT_EQ(bold->prevSibling(), line->firstChild());
    EXPECT_EQ(line->firstChild()->prevSibling(), nullptr);
    EXPECT_EQ(bold->firstChild()->topmostString(), &root);
    EXPECT_EQ(bold->parent(), line);
    EXPECT_EQ(root.parent(), nullptr);
    std::unique_ptr<MetaString> taken = parser.takeStr();
    EXPECT_EQ(taken.get(), &root);
    EXPECT_EQ(parser.str(), nullptr);
}

class OpenParser : public TextFormatParser {
public:
    using TextFormatParser::endTagMatchesObject;
    using TextFormatParser::isEndTag;
    using TextFormatParser::isStartTag;
    using TextFormatParser::isTag;
};

TEST(TextFormatParser, TagTableGivesEveryWordItsTypeAndColour) {
    const TextFormatTag* table = TextFormatParser::tagTable();
    int count = 0;
    for (; table[count].startText; ++count) {
        const TextFormatTag& tag = table[count];
        EXPECT_EQ(tag.type, count + 1);
        EXPECT_EQ(std::string("/") + tag.startText, tag.endText);
        EXPECT_EQ(OpenParser::isTag(tag.startText), count);
        EXPECT_EQ(OpenParser::isTag(tag.endText), count);
        EXPECT_TRUE(OpenParser::isStartTag(tag.startText));
        EXPECT_FALSE(OpenParser::isStartTag(tag.endText));
        EXPECT_TRUE(OpenParser::isEndTag(tag.endText));
        EXPECT_FALSE(OpenParser::isEndTag(tag.startText));
        MetaString root{TextTarget()};
        MetaString* node =
            TextFormatParser::createObjectFromTag(count, root, TextTarget(), tag.type);
        ASSERT_NE(node, nullptr) << tag.startText;
        EXPECT_EQ(node->tagType(), tag.type);
        EXPECT_TRUE(OpenParser::endTagMatchesObject(count, *node));
        EXPECT_FALSE(OpenParser::endTagMatchesObject(count, root));
        if (tag.type >= TF_Black) {
            EXPECT_EQ(static_cast<ColoredText*>(node)->color(), tag.type - 4) << tag.startText;
        }
    }
    EXPECT_EQ(count, 22);
    EXPECT_EQ(table[count].endText, nullptr);
    EXPECT_EQ(table[count].type, TF_NoTag);
    const char* const notTags[] = {"", "bold", "/", "b ", "sup", "PaleRed2", nullptr};
    for (const char* word : notTags)
        EXPECT_EQ(OpenParser::isTag(word), -1) << (word ? word : "(null)");
    EXPECT_EQ(OpenParser::isTag("PaleRed"), 12);
    EXPECT_FALSE(OpenParser::endTagMatchesObject(-1, *std::make_unique<BoldText>(TextTarget())));
}

TEST(TextFormatParser, TypeTableMakesEveryByteALetterButTheMarkup) {
    std::unique_ptr<ScanType[]> table(TextFormatParser::newTypeTable());
    for (int c = 0; c < 256; ++c) {
        ScanType expected = ST_LETTER;
        if (c == '<')
            expected = ST_LESS;
        else if (c == '>')
            expected = ST_GREATER;
        else if (c == '\n')
            expected = ST_NEWLINE;
        else if (c == '\r')
            expected = ST_CR;
        else if (c == 0 || c == 26)
            expected = ST_END;
        EXPECT_EQ(table[c], expected) << "byte " << c;
    }
}

TEST(TextFormatParser, RemoveFormattingLeavesTheTextOfTheRuns) {
    const struct {
        const char* text;
        const char* plain;
    } cases[] = {{"", ""},
                 {"plain", "plain"},
                 {"<b>D</b>ATA<sub>[7:0]</sub>", "DATA[7:0]"},
                 {"<o>RST</o>\n<red>two</red> lines", "RST\ntwo lines"},
                 {"a</b><bold>", "a</b><bold>"},
                 {"<b>x\r\n\ny", "x\n\ny"}};
    for (const auto& c : cases) {
        std::unique_ptr<char[]> plain(TextFormatParser::removeFormatting(c.text));
        EXPECT_STREQ(plain.get(), c.plain);
        EXPECT_EQ(TextFormatParser::removeFormatting(QString::fromUtf8(c.text)),
                  QString::fromUtf8(c.plain));
    }
    EXPECT_EQ(TextFormatParser::removeFormatting(static_cast<const char*>(nullptr)), nullptr);
}

// One run of the document read back from Qt's HTML: its text, bold and italic.
struct StyledRun {
    QString text;
    bool bold, italic;
    bool operator==(const StyledRun& o) const {
        return text == o.text && bold == o.bold && italic == o.italic;
    }
};

std::vector<StyledRun> runsOf(const QTextDocument& document) {
    std::vector<StyledRun> runs;
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next())
        for (auto it = block.begin(); !it.atEnd(); ++it) {
            const QTextFragment fragment = it.fragment();
            const QTextCharFormat format = fragment.charFormat();
            // Line breaks are runs of their own in Qt's document: not ours.
            const QString text = fragment.text().remove(QChar::LineSeparator);
            if (text.isEmpty())
                continue;
            // Qt may split a run where nothing changes for us (colour, size): join them.
            const StyledRun run{text, format.fontWeight() >= QFont::Bold, format.fontItalic()};
            if (!runs.empty() && runs.back().bold == run.bold && runs.back().italic == run.italic)
                runs.back().text += run.text;
            else
                runs.push_back(run);
        }
    return runs;
}

TEST(TextFormatParser, ToHtmlReadsBackAsTheSameTextAndRuns) {
    const struct {
        const char* text;
        std::vector<StyledRun> runs;
    } cases[] = {
        {"plain & <simple>", {{"plain & <simple>", false, false}}},
        {"<b>CLK</b>_EN", {{"CLK", true, false}, {"_EN", false, false}}},
        {"<i>a<b>b</b></i>c", {{"a", false, true}, {"b", true, true}, {"c", false, false}}},
        {"<o>RST</o><sub>n</sub><red>r</red>\"q\"", {{"RSTnr\"q\"", false, false}}},
        {"<b>a\nb</b>", {{"ab", true, false}}},
    };
    for (const auto& c : cases) {
        const QString html = TextFormatParser::toHTML(QString::fromUtf8(c.text), true);
        QTextDocument document;
        document.setHtml(html);
        std::unique_ptr<char[]> plain(TextFormatParser::removeFormatting(c.text));
        EXPECT_EQ(document.toPlainText().replace(QChar::LineSeparator, '\n'),
                  QString::fromUtf8(plain.get()))
            << html.toStdString();
        std::vector<StyledRun> expected = c.runs;
        EXPECT_EQ(runsOf(document), expected) << html.toStdString();
    }
    EXPECT_EQ(TextFormatParser::toHTML("<u>a</u><super>2</super>", false), "<u>a</u><sup>2</sup>");
    EXPECT_EQ(TextFormatParser::toHTML("<paleblue>x</paleblue>", false),
              "<span style=\"color: #00ffff\">x</span>");
    EXPECT_EQ(TextFormatParser::toHTML("<o>x</o>\ny", false),
              "<span style=\"text-decoration: overline\">x</span><br>y");
}

TEST(TextFormatParser, ConvertHtmlCharactersSwitchesTheEscaping) {
    ASSERT_TRUE(TextFormatParser::convertHTMLCharacters());
    EXPECT_EQ(TextFormatParser::toHTML("a & b <bold>", false), "a &amp; b &lt;bold&gt;");
    TextFormatParser::setConvertHTMLCharacters(false);
    EXPECT_EQ(TextFormatParser::toHTML("a &amp; <bold>", false), "a &amp; <bold>");
    TextFormatParser::setConvertHTMLCharacters(true);
}

} // namespace
