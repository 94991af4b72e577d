#include "text/FileParser.h"

#include "core/StringFunctions.h"
#include "core/TqObject.h"
#include "core/iTaskDescription.h"

#include <cstdint>
#include <cstring>
#include <locale>
#include <memory>
#include <ostream>
#include <sstream>
#include <string>

namespace {

const KeywordDescriptor* bracketDescriptor(ScanType open) {
    switch (open) {
    case ST_LPAREN:
        return &FileElement::parenBracketDescriptor;
    case ST_LBRACKET:
        return &FileElement::squareBracketDescriptor;
    case ST_LESS:
        return &FileElement::angleBracketDescriptor;
    default:
        return nullptr;
    }
}

ScanType closerOf(ScanType open) {
    switch (open) {
    case ST_LPAREN:
        return ST_RPAREN;
    case ST_LBRACKET:
        return ST_RBRACKET;
    case ST_LESS:
        return ST_GREATER;
    default:
        return ST_END;
    }
}

// Names are short: a plain loop beats a call of memcmp.
bool sameText(const char* a, const char* b, std::size_t length) {
    for (std::size_t i = 0; i < length; ++i)
        if (a[i] != b[i])
            return false;
    return true;
}

// Leaves the nesting level it entered when the parse of one bracket pair ends.
class NestingGuard {
public:
    explicit NestingGuard(int& nesting) : m_nesting(nesting) { ++m_nesting; }
    ~NestingGuard() { --m_nesting; }
    NestingGuard(const NestingGuard&) = delete;
    NestingGuard& operator=(const NestingGuard&) = delete;

private:
    int& m_nesting;
};

} // namespace

FileParser::FileParser(std::istream& in, void* owner, SectionDescriptor** sections,
                       KeywordDescriptor* keywords)
    : BasicParser(in, nullptr), m_owner(owner), m_sections(sections) {
    loadTables(keywords);
}

FileParser::FileParser(const char* text, void* owner, SectionDescriptor** sections,
                       KeywordDescriptor* keywords)
    : BasicParser(text, nullptr), m_owner(owner), m_sections(sections) {
    loadTables(keywords);
}

FileParser::~FileParser() {
    for (FileSection* section : m_kept)
        delete section;
}

// --- Name lookup ------------------------------------------------------------------------------

// Fibonacci hashing: the top bits of the product spread names that differ in any of the three.
template <class Descriptor>
std::size_t FileParser::NameIndex<Descriptor>::hash(const char* text, std::size_t length) {
    std::uint64_t ends = length == 0 ? 0
                                     : static_cast<unsigned char>(text[0]) * 256u +
                                           static_cast<unsigned char>(text[length - 1]);
    return static_cast<std::size_t>(
        ((std::uint64_t{length} << 16) ^ ends) * 0x9E3779B97F4A7C15ull >> 40);
}

template <class Descriptor>
bool FileParser::NameIndex<Descriptor>::place(const Slot& slot) {
    std::size_t mask = m_slots.size() - 1;
    for (std::size_t i = hash(slot.name, slot.length);; ++i) {
        Slot& at = m_slots[i & mask];
        if (!at.name) {
            at = slot;
            return true;
        }
        if (at.length == slot.length && sameText(at.name, slot.name, slot.length))
            return false;
    }
}

// The table is kept at most half full, so that a miss ends at an empty slot quickly.
template <class Descriptor>
void FileParser::NameIndex<Descriptor>::add(const char* name, Descriptor* descriptor) {
    if (2 * (m_used + 1) > m_slots.size()) {
        std::vector<Slot> old = std::move(m_slots);
        m_slots.assign(old.empty() ? 16 : 2 * old.size(), Slot{});
        for (const Slot& slot : old)
            if (slot.name)
                place(slot);
    }
    if (place(Slot{name, std::strlen(name), descriptor}))
        ++m_used;
}

template <class Descriptor>
Descriptor* FileParser::NameIndex<Descriptor>::find(const char* text, std::size_t length) const {
    if (m_slots.empty())
        return nullptr;
    std::size_t mask = m_slots.size() - 1;
    for (std::size_t i = hash(text, length);; ++i) {
        const Slot& at = m_slots[i & mask];
        if (!at.name)
            return nullptr;
        if (at.length == length && sameText(at.name, text, length))
            return at.descriptor;
    }
}

void FileParser::loadTables(KeywordDescriptor* keywords) {
    for (KeywordDescriptor* keyword = keywords; keyword && keyword->name; ++keyword)
        m_keywords.add(keyword->name, keyword);
    for (SectionDescriptor** section = m_sections; section && *section; ++section)
        if ((*section)->name)
            m_sectionNames.add((*section)->name, *section);
}

SectionDescriptor* FileParser::sectionDescriptor(const char* name) const {
    return name ? m_sectionNames.find(name, std::strlen(name)) : nullptr;
}

const KeywordDescriptor* FileParser::keywordDescriptor(const Token& token) const {
    return m_keywords.find(token.text(), token.length());
}

bool FileParser::enterNesting() {
    if (m_nesting < v_maxNesting)
        return true;
    error("Syntax error: brackets nested too deeply", PARSER_ERROR_SYNTAX);
    return false;
}

// --- Reading ----------------------------------------------------------------------------------

bool FileParser::read(short passes) {
    advance();
    while (FileSection* section = parseSection()) {
        std::unique_ptr<FileSection> owned(section);
        const SectionDescriptor& descriptor = section->sectionDescriptor();
        if (processNowTest(descriptor) && !processNow(*section))
            return false;
        if (keepTest(descriptor))
            m_kept.push_back(owned.release());
        if (iTaskDescription* progress = task()) {
            progress->setProgress(numRead());
            if (progress->isCancelled())
                return false;
        }
    }
    if (task() && task()->isCancelled())
        return false;
    return cleanUp(passes);
}

bool FileParser::cleanUp(short passes) {
    bool allAccepted = true;
    for (short pass = 0; pass < passes; ++pass)
        for (FileSection* section : m_kept)
            if (section->sectionDescriptor().pass == pass && !processKept(*section))
                allAccepted = false;
    return allAccepted;
}

FileSection* FileParser::parseSection() {
    SectionDescriptor* descriptor = nullptr;
    while (!hasError() && token().type() != ST_END) {
        descriptor = m_sectionNames.find(token().text(), token().length());
        advance();
        if (descriptor && token().type() == ST_LPAREN)
            break;
        if (!descriptor && token().type() == ST_LPAREN)
            skipBrackets(ST_LPAREN, ST_RPAREN);
        descriptor = nullptr;
    }
    if (!descriptor || hasError())
        return nullptr;
    auto section = std::make_unique<FileSection>(*descriptor);
    parseBrackets(ST_LPAREN, ST_RPAREN, section.get(), descriptor->id);
    if (hasError())
        return nullptr;
    return section.release();
}

MultipleFileElement* FileParser::parseBrackets(ScanType open, ScanType close,
                                               MultipleFileElement* list, short id) {
    std::unique_ptr<MultipleFileElement> made;
    if (!list) {
        made = std::make_unique<MultipleFileElement>(bracketDescriptor(open));
        list = made.get();
    }
    NestingGuard nesting(m_nesting);
    if (!enterNesting() || !match(open))
        return made ? made.release() : list;
    bool negative = false;
    while (!hasError() && token().type() != close && token().type() != ST_END) {
        ScanType type = token().type();
        if (type != ST_NUMBER)
            negative = false;
        if (itemFilter(*list, type, id))
            continue;
        switch (type) {
        case ST_MINUS:
        case ST_AT_MINUS:
            negative = true;
            advance();
            break;
        case ST_LPAREN:
        case ST_LBRACKET:
        case ST_LESS:
            list->addFileElement(*parseBrackets(type, closerOf(type), nullptr, -1));
            break;
        case ST_NUMBER:
            if (negative) {
                // The signed copy is built in a token of the parser's own: prepending to the
                // scanner's token would move it off the scanner's buffer, one allocation per
                // negative number, and the next scan replaces that token anyway.
                m_signedNumber.setValue("-", 1);
                m_signedNumber.append(token().text());
                m_signedNumber.setType(ST_NUMBER);
                list->addToken(m_signedNumber);
                negative = false;
            } else {
                list->addToken(token());
            }
            advance();
            break;
        case ST_WORD:
            if (const KeywordDescriptor* keyword = keywordDescriptor(token())) {
                list->addFileElement(*parseKeyword(*keyword));
            } else {
                list->addToken(token());
                advance();
            }
            break;
        case ST_STRING:
            list->addToken(token());
            advance();
            break;
        default:
            advance();
            break;
        }
    }
    if (token().type() == close)
        advance();
    return made ? made.release() : list;
}

MultipleFileElement* FileParser::parseKeyword(const KeywordDescriptor& descriptor) {
    auto element = std::make_unique<MultipleFileElement>(&descriptor);
    advance();
    if (token().type() == ST_LPAREN)
        parseBrackets(ST_LPAREN, ST_RPAREN, element.get(), -1);
    return element.release();
}

void FileParser::skipBrackets(ScanType open, ScanType close) {
    NestingGuard nesting(m_nesting);
    if (!enterNesting() || !match(open))
        return;
    while (!hasError() && token().type() != close && token().type() != ST_END) {
        ScanType type = token().type();
        if (type == ST_LPAREN || type == ST_LBRACKET || type == ST_LESS)
            skipBrackets(type, closerOf(type));
        else
            advance();
    }
    if (token().type() == close)
        advance();
}

SingleFileElement& FileParser::parseString() {
    constexpr unsigned limit = 8190;
    std::string text(token().text(), token().length() > limit ? limit : token().length());
    char c = 0;
    while (text.size() < limit && getChar(c)) {
        // A NUL is the end of input (or a NUL in the data, which ends the value as well).
        ScanType type = typeOf(c);
        if (c == '\0' || type == ST_SPACE || type == ST_NEWLINE) {
            putback(c);
            break;
        }
        text += c;
    }
    Token result(ST_STRING, nullptr);
    if (!text.empty() && text[0] == '"') {
        std::unique_ptr<char[]> unquoted(strExpandQuotedString(text.c_str()));
        result.setValue(unquoted.get());
    } else {
        result.setValue(text.c_str(), static_cast<unsigned>(text.size()));
    }
    auto* element = new SingleFileElement(result);
    advance();
    return *element;
}

// --- Hooks ------------------------------------------------------------------------------------

bool FileParser::processNowTest(const SectionDescriptor&) {
    return false;
}

bool FileParser::processNow(FileSection&) {
    return false;
}

bool FileParser::keepTest(const SectionDescriptor&) {
    return false;
}

bool FileParser::processKept(FileSection&) {
    return false;
}

bool FileParser::itemFilter(MultipleFileElement&, ScanType, short) {
    return false;
}

// --- Writers ----------------------------------------------------------------------------------

void FileParser::storeKeyword(std::ostream& out, const char* keyword, const char* a, const char* b,
                              const char* c) {
    out << (keyword ? keyword : "");
    if (a)
        out << '(' << a;
    if (b)
        out << ',' << b;
    if (c)
        out << ',' << c;
    if (a)
        out << ')';
    out << ' ';
}

void FileParser::storeKeyword(std::ostream& out, const char* keyword, const TqObject& a,
                              const TqObject& b, const TqObject& c) {
    Criteria criteria;
    out << (keyword ? keyword : "") << '(';
    a.storeOn(out, criteria) << ',';
    b.storeOn(out, criteria) << ',';
    c.storeOn(out, criteria) << ')' << ' ';
}

void FileParser::storeKeywordQuotedString(std::ostream& out, const char* keyword,
                                          const char* value) {
    out << (keyword ? keyword : "");
    if (value) {
        std::unique_ptr<char[]> quoted(strAsQuotedString(value));
        out << '(' << quoted.get() << ')';
    }
    out << ' ';
}

const char* FileParser::convertToString(double value) {
    std::ostringstream text;
    text.imbue(std::locale::classic());
    text << '"' << value << '"';
    return TqObject::copyToNextStaticBuffer(text.str());
}
