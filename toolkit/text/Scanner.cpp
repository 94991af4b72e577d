#include "text/Scanner.h"

#include "core/StringFunctions.h"
#include "core/TarqToolkit.h"
#include "core/iTaskDescription.h"

#include <cstring>
#include <iostream>
#include <sstream>
#include <string>

namespace {

constexpr unsigned bufferSize = Scanner::v_maxTokenLength + 1;

void upperCaseAscii(std::string& text) {
    for (char& c : text)
        if (c >= 'a' && c <= 'z')
            c = static_cast<char>(c - 'a' + 'A');
}

} // namespace

// --- ScannerKeyword ---------------------------------------------------------------------------

ScannerKeyword::ScannerKeyword(const char* text) : m_text(mem_strdup(text ? text : "")) {
    strToUpper(m_text);
}

ScannerKeyword::~ScannerKeyword() {
    delete[] m_text;
}

const char* ScannerKeyword::keyFromScannerKeyword(const ScannerKeyword& keyword) {
    return keyword.m_text;
}

// --- Tables -----------------------------------------------------------------------------------

ScanType* Scanner::p_defaultTable = nullptr;

ScanType* Scanner::newTypeTable() {
    auto* table = new ScanType[256];
    setTypeAll(ST_NONE, table);
    setType('0', '9', ST_NUMBER, table);
    setType('A', 'Z', ST_LETTER, table);
    setType('a', 'z', ST_LETTER, table);
    setType("$_", ST_LETTER, table);
    setType(" \n\t", ST_SPACE, table);
    setType('\r', ST_CR, table);
    setType(0, ST_END, table);
    setType(26, ST_END, table);
    static const struct {
        char c;
        ScanType type;
    } punctuation[] = {
        {'+', ST_PLUS},   {'-', ST_MINUS},       {'*', ST_STAR},      {'/', ST_SLASH},
        {'(', ST_LPAREN}, {')', ST_RPAREN},      {'[', ST_LBRACKET},  {']', ST_RBRACKET},
        {':', ST_COLON},  {',', ST_COMMA},       {'<', ST_LESS},      {'>', ST_GREATER},
        {'\'', ST_QUOTE}, {'"', ST_DOUBLEQUOTE}, {'@', ST_AT},        {'.', ST_POINT},
        {'#', ST_HASH},   {'\\', ST_BACKSLASH},  {';', ST_SEMICOLON}, {'^', ST_CARET},
    };
    for (const auto& entry : punctuation)
        setType(entry.c, entry.type, table);
    return table;
}

ScanType* Scanner::defaultTypeTable() {
    if (!p_defaultTable) {
        p_defaultTable = newTypeTable();
        TarqToolkit::setShutDownStep(TqShutDownStep::Scanner, &Scanner::shutDown);
    }
    return p_defaultTable;
}

void Scanner::shutDown() {
    delete[] p_defaultTable;
    p_defaultTable = nullptr;
}

void Scanner::setType(int c, ScanType t, ScanType* table) {
    if (table && c >= 0 && c < 256)
        table[c] = t;
}

void Scanner::setType(int from, int to, ScanType t, ScanType* table) {
    for (int c = from < 0 ? 0 : from; c <= to && c < 256; ++c)
        setType(c, t, table);
}

void Scanner::setType(const char* chars, ScanType t, ScanType* table) {
    for (const char* c = chars; c && *c; ++c)
        setType(static_cast<unsigned char>(*c), t, table);
}

void Scanner::setTypeAll(ScanType t, ScanType* table) {
    setType(0, 255, t, table);
}

void Scanner::setType(int c, ScanType t) {
    if (!m_privateTable && m_table == p_defaultTable) {
        m_table = newTypeTable();
        m_privateTable = true;
    }
    setType(c, t, m_table);
}

// --- Construction -----------------------------------------------------------------------------

Scanner::Scanner(ScanType* table) {
    init(table);
}

Scanner::Scanner(std::istream& in, ScanType* table) {
    init(table);
    setInput(&in);
}

Scanner::Scanner(const char* text, ScanType* table) {
    init(table);
    setString(text);
}

Scanner::Scanner(const char* text, HC_<ScannerKeyword>* keywords, ScanType* table) {
    init(table);
    setString(text);
    m_keywords = keywords;
}

Scanner::Scanner(const Scanner& other) {
    init(nullptr);
    copySettings(other);
}

Scanner& Scanner::operator=(const Scanner& other) {
    if (this != &other) {
        if (m_privateTable)
            delete[] m_table;
        m_privateTable = false;
        copySettings(other);
    }
    return *this;
}

Scanner::~Scanner() {
    freeOwned();
    if (m_privateTable)
        delete[] m_table;
    delete m_token;
    delete[] m_buffer;
}

void Scanner::init(ScanType* table) {
    m_buffer = new char[bufferSize];
    m_buffer[0] = '\0';
    m_token = new Token(m_buffer, bufferSize);
    m_token->setType(ST_NONE);
    m_table = table ? table : defaultTypeTable();
    setInput(&std::cin);
}

void Scanner::copySettings(const Scanner& other) {
    if (other.m_privateTable) {
        m_table = new ScanType[256];
        std::memcpy(m_table, other.m_table, 256 * sizeof(ScanType));
        m_privateTable = true;
    } else {
        m_table = other.m_table;
    }
    freeOwned();
    if (auto* owned = dynamic_cast<std::istringstream*>(other.m_ownedStream)) {
        auto* copy = new std::istringstream(owned->str());
        if (owned->good())
            copy->seekg(owned->tellg());
        copy->setstate(owned->rdstate());
        m_ownedStream = copy;
        setInput(copy);
    } else {
        setInput(other.m_in);
    }
    m_bad = other.m_bad;
    m_negativeNumber = other.m_negativeNumber;
    m_allowSlashDotInWords = other.m_allowSlashDotInWords;
    m_allowSquareBracketsInWords = other.m_allowSquareBracketsInWords;
    m_numRead = other.m_numRead;
    m_endCounted = other.m_endCounted;
    m_task = other.m_task;
    m_keywords = other.m_keywords;
    m_pushed = other.m_pushed;
    std::memcpy(m_pushback, other.m_pushback, sizeof m_pushback);
}

void Scanner::freeOwned() {
    delete m_ownedStream;
    m_ownedStream = nullptr;
}

void Scanner::setInput(std::istream* in) {
    m_in = in;
    m_buf = in->rdbuf();
    m_pushed = 0;
    m_endCounted = false;
}

void Scanner::setString(const char* text) {
    auto* stream = new std::istringstream(text ? text : "");
    freeOwned();
    m_ownedStream = stream;
    setInput(stream);
}

// --- Characters -------------------------------------------------------------------------------

// The stream's state is checked once per character and the bytes are taken straight from its
// buffer: going through istream::get would pay a sentry per character.
inline int Scanner::nextChar() {
    if (m_pushed > 0)
        return static_cast<unsigned char>(m_pushback[--m_pushed]);
    if (!m_in->good() || !m_buf) {
        if (m_in->eof() && !m_endCounted) {
            m_endCounted = true;
            ++m_numRead;
        }
        return -1;
    }
    int c = m_buf->sbumpc();
    ++m_numRead;
    if (c == std::char_traits<char>::eof()) {
        m_in->setstate(std::ios_base::eofbit);
        m_endCounted = true;
        return -1;
    }
    return c;
}

void Scanner::unread(int c) {
    if (c < 0) {
        if (m_endCounted) {
            m_endCounted = false;
            --m_numRead;
        }
        return;
    }
    --m_numRead;
    char ch = static_cast<char>(c);
    if (m_pushed == 0 && m_in->good() && m_buf &&
        m_buf->sputbackc(ch) != std::char_traits<char>::eof())
        return;
    if (m_pushed < static_cast<int>(sizeof m_pushback))
        m_pushback[m_pushed++] = ch;
}

bool Scanner::getChar(char& c) {
    bool wasAtEnd = m_in->eof();
    int read = nextChar();
    if (read >= 0) {
        c = static_cast<char>(read);
        return true;
    }
    c = '\0';
    bool atEnd = m_in->eof();
    if (wasAtEnd || !atEnd)
        setEndToken();
    return atEnd;
}

bool Scanner::peekChar(char& c) {
    bool wasAtEnd = m_in->eof();
    int read = nextChar();
    unread(read);
    c = read >= 0 ? static_cast<char>(read) : '\0';
    if (read < 0 && (wasAtEnd || !m_in->eof()))
        setEndToken();
    return read >= 0 || m_in->eof();
}

void Scanner::putback(char c) {
    unread(c == '\0' && m_in->eof() && m_pushed == 0 ? -1 : static_cast<unsigned char>(c));
}

bool Scanner::testGood() const {
    return m_pushed > 0 || m_in->good() || (m_in->eof() && !m_in->bad() && !m_in->fail());
}

void Scanner::setEndToken() {
    if (m_token->text() != m_buffer)
        m_token->layOver(m_buffer, bufferSize);
    m_buffer[0] = '\0';
    m_token->m_length = 0;
    m_token->m_type = ST_END;
}

// The current character starts as NUL, not as the next input character, so with the
// default table (NUL is of class `end`) nothing is consumed and scanToken passes white space
// over one character per rescan. A table that gives NUL the class `space` skips whole runs.
// Existing parsers depend on both behaviours.
void Scanner::skipwhite() {
    int c = 0;
    while ((m_pushed > 0 || m_in->good()) && (typeOf(static_cast<char>(c)) == ST_SPACE ||
                                              typeOf(static_cast<char>(c)) == ST_NEWLINE)) {
        c = nextChar();
        if (c < 0)
            return;
    }
    if (c != 0)
        unread(c);
}

long Scanner::skipComment(long max) {
    int c = nextChar();
    if (c < 0) {
        unread(c);
        return 0;
    }
    long skipped = 1;
    if (c == '*') {
        int previous = 0;
        while (skipped < max && (c = nextChar()) >= 0) {
            ++skipped;
            if (previous == '*' && c == '/')
                break;
            previous = c;
        }
    } else if (c == '/') {
        while (skipped < max && (c = nextChar()) >= 0) {
            ++skipped;
            if (c == '\n')
                break;
        }
    } else {
        unread(c);
        skipped = 0;
    }
    return skipped;
}

// --- Tokens -----------------------------------------------------------------------------------

bool Scanner::isAllowableInWord(ScanType type) const {
    switch (type) {
    case ST_LETTER:
    case ST_NUMBER:
    case ST_BASE_HEX:
    case ST_BASE_DEC:
    case ST_BASE_BIN:
    case ST_BASE_OCT:
        return true;
    case ST_POINT:
    case ST_LBRACKET:
    case ST_RBRACKET:
    case ST_DOUBLEQUOTE:
        return m_allowSlashDotInWords != 0;
    case ST_SLASH2:
    case ST_BACKSLASH:
        return m_allowSquareBracketsInWords != 0;
    default:
        return false;
    }
}

bool Scanner::checkKeyword() const {
    if (!m_keywords)
        return false;
    std::string key(m_token->text(), m_token->length());
    upperCaseAscii(key);
    return m_keywords->find(key.c_str()) != nullptr;
}

void Scanner::finish(ScanType type) {
    m_buffer[m_stored] = '\0';
    m_token->m_length = m_stored;
    m_token->m_type = type;
}

void Scanner::scanWord() {
    for (;;) {
        int c = nextChar();
        if (c < 0) {
            unread(c);
            break;
        }
        ScanType type = typeOf(static_cast<char>(c));
        if (type == ST_CR)
            continue;
        if (!isAllowableInWord(type)) {
            unread(c);
            break;
        }
        store(static_cast<char>(c));
    }
    finish(ST_WORD);
    if (checkKeyword())
        m_token->m_type = ST_KEYWORD;
}

void Scanner::scanNumber() {
    bool pointSeen = m_stored > 0 && m_buffer[m_stored - 1] == '.';
    bool exponentSeen = false;
    bool afterExponentLetter = false;
    bool isWord = false;
    for (;;) {
        int c = nextChar();
        if (c < 0) {
            unread(c);
            break;
        }
        char ch = static_cast<char>(c);
        ScanType type = typeOf(ch);
        bool letter = type == ST_LETTER || scanTypeIsBase(type);
        if (type == ST_CR)
            continue;
        if (isWord) {
            if (!isAllowableInWord(type)) {
                unread(c);
                break;
            }
            store(ch);
            continue;
        }
        if (afterExponentLetter) {
            afterExponentLetter = false;
            if (type == ST_PLUS || type == ST_MINUS || type == ST_NUMBER) {
                store(ch);
                continue;
            }
            if (letter) {
                isWord = true;
                store(ch);
                continue;
            }
        }
        if (type == ST_NUMBER) {
            store(ch);
        } else if (type == ST_POINT && !pointSeen && !exponentSeen) {
            int after = nextChar();
            unread(after);
            if (after >= 0 && typeOf(static_cast<char>(after)) == ST_POINT) {
                unread(c);
                break;
            }
            pointSeen = true;
            store(ch);
        } else if (letter && !exponentSeen && (ch == 'e' || ch == 'E')) {
            exponentSeen = true;
            afterExponentLetter = true;
            store(ch);
        } else if (letter) {
            isWord = true;
            store(ch);
        } else {
            unread(c);
            break;
        }
    }
    finish(isWord ? ST_WORD : ST_NUMBER);
}

void Scanner::scanString() {
    bool keepQuotes = isAllowableInWord(ST_DOUBLEQUOTE);
    if (keepQuotes)
        store('"');
    for (;;) {
        int c = nextChar();
        if (c < 0)
            break;
        char ch = static_cast<char>(c);
        ScanType type = typeOf(ch);
        if (type == ST_DOUBLEQUOTE) {
            if (keepQuotes)
                store(ch);
            break;
        }
        store(ch);
        if (type == ST_BACKSLASH) {
            c = nextChar();
            if (c < 0)
                break;
            store(static_cast<char>(c));
        }
    }
    finish(ST_STRING);
}

Token& Scanner::scanToken() {
    for (;;) {
        if (m_token->text() != m_buffer)
            m_token->layOver(m_buffer, bufferSize);
        m_stored = 0;
        if (m_task && m_task->isCancelled()) {
            setEndToken();
            return *m_token;
        }
        int c = nextChar();
        if (c < 0) {
            setEndToken();
            return *m_token;
        }
        char ch = static_cast<char>(c);
        ScanType type = typeOf(ch);
        bool rescan = false;
        switch (type) {
        case ST_LETTER:
            store(ch);
            scanWord();
            break;
        case ST_SPACE:
            skipwhite();
            rescan = true;
            break;
        case ST_CR:
            rescan = true;
            break;
        case ST_QUOTE: {
            store(ch);
            int base = nextChar();
            ScanType baseType = base >= 0 ? typeOf(static_cast<char>(base)) : ST_END;
            if (scanTypeIsBase(baseType)) {
                store(static_cast<char>(base));
                finish(baseType);
            } else {
                unread(base);
                finish(ST_QUOTE);
            }
            break;
        }
        case ST_DOUBLEQUOTE:
            scanString();
            break;
        case ST_AT: {
            store(ch);
            int after = nextChar();
            ScanType afterType = after >= 0 ? typeOf(static_cast<char>(after)) : ST_END;
            if (afterType == ST_MINUS || afterType == ST_SLASH) {
                store(static_cast<char>(after));
                finish(afterType == ST_MINUS ? ST_AT_MINUS : ST_AT_SLASH);
            } else {
                unread(after);
                finish(ST_AT);
            }
            break;
        }
        case ST_POINT: {
            int after = nextChar();
            if (after >= 0 && typeOf(static_cast<char>(after)) == ST_POINT) {
                store(ch);
                store(static_cast<char>(after));
                finish(ST_DOTDOT);
                break;
            }
            unread(after);
            [[fallthrough]];
        }
        case ST_NUMBER:
            if (m_negativeNumber) {
                store('-');
                m_negativeNumber = 0;
            }
            store(ch);
            scanNumber();
            break;
        case ST_BASE_HEX:
        case ST_BASE_DEC:
        case ST_BASE_BIN:
        case ST_BASE_OCT: {
            int after = nextChar();
            unread(after);
            store(ch);
            if (after >= 0 && typeOf(static_cast<char>(after)) == ST_DOUBLEQUOTE)
                finish(type);
            else
                scanWord();
            break;
        }
        default:
            store(ch);
            finish(type);
            break;
        }
        if (!rescan)
            return *m_token;
        // A rescan goes through the virtual scanToken so that a subclass sees it; within that
        // nested call further white space is passed over here, so that a long run of white
        // space cannot exhaust the stack.
        if (m_rescanDepth == 0) {
            ++m_rescanDepth;
            Token& next = scanToken();
            --m_rescanDepth;
            return next;
        }
    }
}
