#include "graphics/richtext/TextFormatParser.h"

#include "graphics/device/Device.h"
#include "graphics/richtext/StyledText.h"
#include "text/Scanner.h"

#include <QByteArray>

#include <iterator>

#include <cstring>
#include <istream>
#include <sstream>
#include <streambuf>
#include <strings.h>

namespace {

// In tag-type order, so that the record of type n is at index n - 1.
const TextFormatTag v_tags[] = {{"b", "/b", TF_Bold},
                                {"i", "/i", TF_Italic},
                                {"u", "/u", TF_Underline},
                                {"o", "/o", TF_Overline},
                                {"sub", "/sub", TF_Subscript},
                                {"super", "/super", TF_Superscript},
                                {"black", "/black", TF_Black},
                                {"darkgray", "/darkgray", TF_DarkGray},
                                {"gray", "/gray", TF_Gray},
                                {"palegray", "/palegray", TF_PaleGray},
                                {"darkred", "/darkred", TF_DarkRed},
                                {"red", "/red", TF_Red},
                                {"palered", "/palered", TF_PaleRed},
                                {"darkgreen", "/darkgreen", TF_DarkGreen},
                                {"green", "/green", TF_Green},
                                {"palegreen", "/palegreen", TF_PaleGreen},
                                {"darkblue", "/darkblue", TF_DarkBlue},
                                {"blue", "/blue", TF_Blue},
                                {"paleblue", "/paleblue", TF_PaleBlue},
                                {"purple", "/purple", TF_Purple},
                                {"yellow", "/yellow", TF_Yellow},
                                {"white", "/white", TF_White},
                                {nullptr, nullptr, TF_NoTag}};

// The longest tag word, "/palegreen", with room to spare.
constexpr unsigned v_longestTagWord = 15;

// Joins "<", word and closing (may be empty) into one text run of parent.
void addLiteral(MetaString& parent, const char* word, unsigned length, const char* closing) {
    char buffer[1 + v_longestTagWord + 1];
    buffer[0] = '<';
    std::memcpy(buffer + 1, word, length);
    parent.addString(TextString::create(parent.target(), buffer, 1 + length, closing,
                                        static_cast<unsigned>(std::strlen(closing))));
}

// Reads the caller's text in place: scanning a label needs no copy of it.
class TextViewBuffer : public std::streambuf {
public:
    explicit TextViewBuffer(const char* text) {
        // Never written through: a put-back that would change a byte is refused by the
        // default pbackfail, and the scanner keeps such a character itself.
        char* begin = const_cast<char*>(text);
        setg(begin, begin, begin + std::strlen(text));
    }
};

int depthOf(const MetaString& node) {
    int depth = 0;
    for (const MetaString* p = &node; p->tagType() != TF_NoTag; p = p->parent())
        ++depth;
    return depth;
}

} // namespace

bool TextFormatParser::v_convertHTMLCharacters = true;

TextFormatParser::TextFormatParser(const char* text, Device& device)
    : m_text(text), m_target(device) {}

TextFormatParser::TextFormatParser(const char* text, TqPainter* painter)
    : m_text(text), m_target(painter) {}

TextFormatParser::TextFormatParser(const char* text) : m_text(text) {}

TextFormatParser::~TextFormatParser() = default;

const TextFormatTag* TextFormatParser::tagTable() {
    return v_tags;
}

ScanType* TextFormatParser::newTypeTable() {
    auto* table = new ScanType[256];
    Scanner::setTypeAll(ST_LETTER, table);
    Scanner::setType('<', ST_LESS, table);
    Scanner::setType('>', ST_GREATER, table);
    Scanner::setType('\n', ST_NEWLINE, table);
    Scanner::setType('\r', ST_CR, table);
    Scanner::setType(0, ST_END, table);
    Scanner::setType(26, ST_END, table);
    return table;
}

ScanType* TextFormatParser::typeTable() {
    // Built once and shared by every parser; it is never changed after.
    static const std::unique_ptr<ScanType[]> table(newTypeTable());
    return table.get();
}

int TextFormatParser::isTag(const char* word) {
    if (!word || std::strlen(word) > v_longestTagWord)
        return -1;
    for (int i = 0; v_tags[i].startText; ++i)
        if (strcasecmp(word, v_tags[i].startText) == 0 || strcasecmp(word, v_tags[i].endText) == 0)
            return i;
    return -1;
}

bool TextFormatParser::isStartTag(const char* word) {
    const int index = isTag(word);
    return index >= 0 && strcasecmp(word, v_tags[index].startText) == 0;
}

bool TextFormatParser::isEndTag(const char* word) {
    const int index = isTag(word);
    return index >= 0 && strcasecmp(word, v_tags[index].endText) == 0;
}

bool TextFormatParser::endTagMatchesObject(int tableIndex, MetaString& node) {
    return tableIndex >= 0 && tableIndex < static_cast<int>(std::size(v_tags)) - 1 &&
           node.tagType() == v_tags[tableIndex].type;
}

MetaString* TextFormatParser::createObjectFromTag(int tableIndex, MetaString& parent,
                                                  Device& device, textformat_tag_type type) {
    return createObjectFromTag(tableIndex, parent, TextTarget(device), type);
}

MetaString* TextFormatParser::createObjectFromTag(int tableIndex, MetaString& parent,
                                                  TqPainter* painter, textformat_tag_type type) {
    return createObjectFromTag(tableIndex, parent, TextTarget(painter), type);
}

MetaString* TextFormatParser::createObjectFromTag(int, MetaString& parent, const TextTarget& target,
                                                  textformat_tag_type type) {
    MetaString* node = nullptr;
    switch (type) {
    case TF_NoTag:
        return nullptr;
    case TF_Bold:
        node = new BoldText(target);
        break;
    case TF_Italic:
        node = new ItalicText(target);
        break;
    case TF_Underline:
        node = new UnderlineText(target);
        break;
    case TF_Overline:
        node = new OverlineText(target);
        break;
    case TF_Subscript:
        node = new SubscriptText(target);
        break;
    case TF_Superscript:
        node = new SuperscriptText(target);
        break;
    default:
        if (type < TF_Black || type > TF_White)
            return nullptr;
        node = new ColoredText(target, type);
        break;
    }
    parent.addString(node);
    return node;
}

MetaString& TextFormatParser::parse() {
    if (m_parsed)
        return *m_root;
    m_parsed = true;
    m_root = std::make_unique<MetaString>(m_target);
    auto* line = new LineString(m_target);
    m_root->addString(line);
    MetaString* current = line;
    TextViewBuffer buffer(m_text ? m_text : "");
    std::istream input(&buffer);
    Scanner scanner(input, typeTable());
    Token* token = &scanner.scanToken();
    while (token->type() != ST_END) {
        Token* next = nullptr;
        switch (token->type()) {
        case ST_LESS: {
            Token& word = scanner.scanToken();
            const int index = word.type() == ST_WORD ? isTag(word.text()) : -1;
            if (word.type() == ST_END || word.type() == ST_NEWLINE) {
                // Nothing follows on this line: the '<' is text and the line end still ends it.
                current->addString(TextString::create(m_target, "<", 1));
                next = &word;
            } else if (index < 0) {
                current->addString(
                    TextString::create(m_target, "<", 1, word.text(), word.length()));
            } else {
                char tagWord[v_longestTagWord + 1];
                const unsigned length = word.length();
                std::memcpy(tagWord, word.text(), length + 1);
                Token& closing = scanner.scanToken();
                if (closing.type() != ST_GREATER) {
                    // Not a tag after all; what follows is read as it comes.
                    addLiteral(*current, tagWord, length, "");
                    next = &closing;
                } else if (isStartTag(tagWord)) {
                    if (depthOf(*current) >= v_maxNesting)
                        addLiteral(*current, tagWord, length, ">");
                    else
                        current =
                            createObjectFromTag(index, *current, m_target, v_tags[index].type);
                } else if (endTagMatchesObject(index, *current)) {
                    current = current->parent();
                } else {
                    addLiteral(*current, tagWord, length, ">");
                }
            }
            break;
        }
        case ST_NEWLINE: {
            auto* newLine = new LineString(m_target);
            m_root->addString(newLine);
            current = &newLine->buildBranchFromLeaf(*current);
            break;
        }
        default:
            current->addString(TextString::create(m_target, token->text(), token->length()));
            break;
        }
        token = next ? next : &scanner.scanToken();
    }
    return *m_root;
}

DevicePoint TextFormatParser::pixelBox(const char* text, Device& device, WsiFont& font) {
    TextFormatParser parser(text, device);
    return parser.parse().calcTextExtent(font);
}

DevicePoint TextFormatParser::pixelBox(const char* text, TqPainter* painter, WsiFont& font) {
    TextFormatParser parser(text, painter);
    return parser.parse().calcTextExtent(font);
}

char* TextFormatParser::removeFormatting(const char* text) {
    if (!text)
        return nullptr;
    TextFormatParser parser(text);
    std::stringstream out;
    parser.parse().unformattedText(out);
    const std::string plain = out.str();
    auto* result = new char[plain.size() + 1];
    std::memcpy(result, plain.c_str(), plain.size() + 1);
    return result;
}

QString TextFormatParser::removeFormatting(const QString& text) {
    const QByteArray bytes = text.toUtf8();
    std::unique_ptr<char[]> plain(removeFormatting(bytes.constData()));
    return QString::fromUtf8(plain.get());
}

QString TextFormatParser::toHTML(const QString& text, bool asDocument) {
    const QByteArray bytes = text.toUtf8();
    TextFormatParser parser(bytes.constData());
    const QString body = parser.parse().toHTML();
    if (!asDocument)
        return body;
    return QLatin1String("<html><body>") + body + QLatin1String("</body></html>");
}
