#include "text/Scanner.h"

#include "core/StringFunctions.h"
#include "core/TarqToolkit.h"
#include "core/iTaskDescription.h"
#include "text/BasicParser.h"
#include "text/FileParser.h"
#include "text/ModelParser.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <cstring>
#include <iostream>
#include <sstream>
#include <string>
#include <type_traits>
#include <typeinfo>

namespace {

constexpr unsigned v_bufferSize = Scanner::v_maxTokenLength + 1;

// Keywords and the words looked up against them are upper-cased the same way, by ASCII rules:
// the C library's toupper would follow the locale the application set and could change bytes
// of a keyword but not of the word.
void upperCaseAscii(char* text, std::size_t length) {
    for (char* c = text; c != text + length; ++c)
        *c = asciiUpper(*c);
}

} // namespace

// --- ScannerKeyword ---------------------------------------------------------------------------

ScannerKeyword::ScannerKeyword(const char* text) : m_text(mem_strdup(text ? text : "")) {
    upperCaseAscii(m_text.get(), std::strlen(m_text.get()));
}

ScannerKeyword::~ScannerKeyword() = default;

const char* ScannerKeyword::keyFromScannerKeyword(const ScannerKeyword& keyword) {
    return keyword.m_text.get();
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
    assert(t >= 0 && t < ST_COUNT && "Scanner::setType: not a ScanType");
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
}

void Scanner::init(ScanType* table) {
    m_buffer = std::make_unique<char[]>(v_bufferSize);
    m_token = std::make_unique<Token>(m_buffer.get(), v_bufferSize);
    m_token->setType(ST_NONE);
    m_table = table ? table : defaultTypeTable();
    updateWordMask();
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
    if (auto* owned = dynamic_cast<std::istringstream*>(other.m_ownedStream.get())) {
        auto copy = std::make_unique<std::istringstream>(owned->str());
        if (owned->good())
            copy->seekg(owned->tellg());
        copy->setstate(owned->rdstate());
        m_ownedStream = std::move(copy);
        setInput(m_ownedStream.get());
    } else {
        setInput(other.m_in);
    }
    m_bad = other.m_bad;
    m_negativeNumber = other.m_negativeNumber;
    m_allowSlashDotInWords = other.m_allowSlashDotInWords;
    m_allowSquareBracketsInWords = other.m_allowSquareBracketsInWords;
    updateWordMask();
    m_numRead = other.m_numRead;
    m_endCounted = other.m_endCounted;
    m_task = other.m_task;
    m_keywords = other.m_keywords;
    m_pushed = other.m_pushed;
    std::memcpy(m_pushback, other.m_pushback, sizeof m_pushback);
    refreshInput();
}

void Scanner::freeOwned() {
    m_ownedStream.reset();
}

void Scanner::setInput(std::istream* in) {
    m_in = in;
    m_buf = in->rdbuf();
    m_pushed = 0;
    m_endCounted = false;
    refreshInput();
}

void Scanner::setString(const char* text) {
    auto stream = std::make_unique<std::istringstream>(text ? text : "");
    freeOwned();
    m_ownedStream = std::move(stream);
    setInput(m_ownedStream.get());
}

// --- Characters -------------------------------------------------------------------------------

// The stream's state is checked once per character and the bytes are taken straight from its
// buffer: going through istream::get would pay a sentry per character.
inline int Scanner::nextChar() {
    if (m_fast) [[likely]] {
        int c = m_buf->sbumpc();
        ++m_numRead;
        if (c != std::char_traits<char>::eof()) [[likely]]
            return c;
        m_in->setstate(std::ios_base::eofbit);
        m_fast = false;
        m_endCounted = true;
        return -1;
    }
    return slowNextChar();
}

inline void Scanner::refreshInput() {
    m_fast = m_pushed == 0 && m_buf && m_in->good();
}

int Scanner::slowNextChar() {
    if (m_pushed > 0) {
        int c = static_cast<unsigned char>(m_pushback[--m_pushed]);
        ++m_numRead;
        refreshInput();
        return c;
    }
    refreshInput();
    if (m_fast)
        return nextChar();
    if (m_in->eof() && !m_endCounted) {
        m_endCounted = true;
        ++m_numRead;
    }
    return -1;
}

// The next character without consuming it, -1 at end of input.
inline int Scanner::peekNext() {
    if (m_fast) {
        int c = m_buf->sgetc();
        return c == std::char_traits<char>::eof() ? -1 : c;
    }
    int c = nextChar();
    unread(c);
    return c;
}

inline void Scanner::unread(int c) {
    if (c < 0) {
        if (m_endCounted) {
            m_endCounted = false;
            --m_numRead;
        }
        return;
    }
    --m_numRead;
    char ch = static_cast<char>(c);
    if (m_fast && m_buf->sputbackc(ch) != std::char_traits<char>::eof())
        return;
    if (m_pushed < static_cast<int>(sizeof m_pushback))
        m_pushback[m_pushed++] = ch;
    m_fast = false;
}

bool Scanner::getChar(char& c) {
    refreshInput();
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
    refreshInput();
    bool wasAtEnd = m_in->eof();
    int read = nextChar();
    unread(read);
    c = read >= 0 ? static_cast<char>(read) : '\0';
    if (read < 0 && (wasAtEnd || !m_in->eof()))
        setEndToken();
    return read >= 0 || m_in->eof();
}

void Scanner::putback(char c) {
    refreshInput();
    unread(c == '\0' && m_in->eof() && m_pushed == 0 ? -1 : static_cast<unsigned char>(c));
}

// A read through the stream that meets the end sets failbit beside eofbit, so failbit counts
// as trouble only without eofbit.
bool Scanner::testGood() const {
    return m_pushed > 0 || (m_in->eof() ? !m_in->bad() : m_in->good());
}

inline void Scanner::setEndToken() {
    if (m_token->text() != m_buffer.get())
        m_token->layOver(m_buffer.get(), v_bufferSize);
    m_buffer[0] = '\0';
    m_token->m_length = 0;
    m_token->m_type = ST_END;
}

long Scanner::skipComment(long max) {
    refreshInput();
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

namespace {

constexpr std::uint64_t classBit(ScanType type) {
    return std::uint64_t{1} << type;
}

constexpr std::uint64_t v_letterClasses = classBit(ST_LETTER) | classBit(ST_BASE_HEX) |
                                          classBit(ST_BASE_DEC) | classBit(ST_BASE_BIN) |
                                          classBit(ST_BASE_OCT);

bool isWhite(ScanType type) {
    return type == ST_SPACE || type == ST_NEWLINE;
}

// Returned by an AreaReader at the end of the get area.
constexpr int v_areaEnd = -2;

// Reaches the protected get-area members of any stream buffer: a pointer to a protected member
// may be taken through a derived class and then applied to any object of the base class.
struct GetArea : std::streambuf {
    static char* next(std::streambuf* buffer) { return (buffer->*&GetArea::gptr)(); }
    static char* end(std::streambuf* buffer) { return (buffer->*&GetArea::egptr)(); }
    static void moveTo(std::streambuf* buffer, char* at) {
        (buffer->*&GetArea::setg)((buffer->*&GetArea::eback)(), at, end(buffer));
    }
};

} // namespace

// Where a token's characters go; characters past the longest token text are dropped.
struct Scanner::TokenText {
    char* at;
    char* const limit;

    void put(char c) {
        if (at != limit)
            *at++ = c;
    }
    std::size_t room() const { return static_cast<std::size_t>(limit - at); }
};

// Reads a token straight from the characters already in the stream buffer, leaving the buffer
// alone until commit. A token that runs to the end of those characters is given up and
// scanned again through the stream buffer's calls, which refill it: that happens once per
// buffer refill, while every other token costs no call per character.
struct Scanner::AreaReader {
    explicit AreaReader(std::streambuf* buffer)
        : m_start(GetArea::next(buffer)), m_at(m_start), m_end(GetArea::end(buffer)) {}

    static constexpr bool gaveUp(int c) { return c == v_areaEnd; }
    static constexpr bool usable() { return true; }
    int next() { return m_at != m_end ? static_cast<unsigned char>(*m_at++) : v_areaEnd; }
    // The white space read so far stays read, whatever is given up after it.
    void markPassed() { m_passed = m_at; }
    // Goes back to the end of the white space passed; false when none was.
    bool backToPassed() {
        m_at = m_passed;
        return m_passed != m_start;
    }
    int peek() const { return m_at != m_end ? static_cast<unsigned char>(*m_at) : v_areaEnd; }
    // Only ever after a next() that gave a character.
    void unread(int) { --m_at; }
    // Stores characters while belongs(c) holds and returns the first one that does not,
    // consumed, or v_areaEnd.
    template <class Belongs>
    int run(TokenText& out, Belongs belongs) {
        char* at = m_at;
        char* stored = at + std::min<std::size_t>(out.room(), m_end - at);
        char* to = out.at;
        while (at != stored && belongs(static_cast<unsigned char>(*at)))
            *to++ = *at++;
        out.at = to;
        if (at == stored)
            while (at != m_end && belongs(static_cast<unsigned char>(*at)))
                ++at;
        m_at = at;
        return next();
    }
    // Moves the stream buffer past what was read and returns how many characters that was.
    unsigned long commit(std::streambuf* buffer) {
        GetArea::moveTo(buffer, m_at);
        return static_cast<unsigned long>(m_at - m_start);
    }

    char* m_start;
    char* m_at;
    char* m_end;
    char* m_passed = m_start;
};

// Reads through the stream buffer's calls and the scanner's own put-back, counting as it goes;
// -1 at end of input.
struct Scanner::StreamReader {
    Scanner& scanner;

    static constexpr bool gaveUp(int) { return false; }
    bool usable() const { return scanner.testGood(); }
    int next() { return scanner.nextChar(); }
    int peek() { return scanner.peekNext(); }
    void unread(int c) { scanner.unread(c); }
    template <class Belongs>
    int run(TokenText& out, Belongs belongs) {
        for (;;) {
            int c = next();
            if (c < 0 || !belongs(c))
                return c;
            out.put(static_cast<char>(c));
        }
    }
};

void Scanner::updateWordMask() {
    m_wordMask = classBit(ST_LETTER) | classBit(ST_NUMBER) | classBit(ST_BASE_HEX) |
                 classBit(ST_BASE_DEC) | classBit(ST_BASE_BIN) | classBit(ST_BASE_OCT);
    if (m_allowSlashDotInWords)
        m_wordMask |= classBit(ST_POINT) | classBit(ST_LBRACKET) | classBit(ST_RBRACKET) |
                      classBit(ST_DOUBLEQUOTE);
    if (m_allowSquareBracketsInWords)
        m_wordMask |= classBit(ST_SLASH2) | classBit(ST_BACKSLASH);
}

bool Scanner::checkKeyword() const {
    if (!m_keywords)
        return false;
    std::string key(m_token->text(), m_token->length());
    upperCaseAscii(key.data(), key.size());
    return m_keywords->find(key.c_str()) != nullptr;
}

inline Scanner::Scanned Scanner::finish(const TokenText& text, ScanType type) {
    *text.at = '\0';
    m_token->m_length = static_cast<unsigned>(text.at - m_buffer.get());
    m_token->m_type = type;
    return Scanned::Token;
}

// The current character starts as NUL, not as the next input character, so with the
// default table (NUL is of class `end`) nothing is consumed and scanToken passes white space
// over one character per rescan. A table that gives NUL the class `space` skips whole runs.
// Existing parsers depend on both behaviours.
void Scanner::skipwhite() {
    refreshInput();
    StreamReader in{*this};
    skipWhiteRun(in);
}

// The steps of a token below are forced inline into scanWith: only then do a reader's pointers
// and the token's end stay in registers instead of going through memory at every character.

// False when the reader gave up.
template <class Reader>
[[gnu::always_inline]] inline bool Scanner::skipWhiteRun(Reader& in) {
    int c = 0;
    while (isWhite(typeOf(static_cast<char>(c))) && in.usable()) {
        c = in.next();
        if (Reader::gaveUp(c))
            return false;
        if (c < 0)
            return true;
    }
    if (c != 0)
        in.unread(c);
    return true;
}

// Stores characters while their class is in mask and returns the first one that is not,
// consumed (negative at the end of input or of the reader). With dropCR a carriage return is
// read and dropped. The table is read through a local copy: every character stored could
// otherwise alias the scanner's members and force them to be reloaded.
template <bool dropCR, class Reader>
[[gnu::always_inline]] inline int Scanner::takeRun(Reader& in, TokenText& out,
                                                   std::uint64_t mask) const {
    const ScanType* table = m_table;
    auto belongs = [table, mask](int c) {
        ScanType type = c >= 128 ? ST_LETTER : table[c];
        return ((mask >> (type & 63)) & 1) != 0;
    };
    for (;;) {
        int c = in.run(out, belongs);
        if (!dropCR || c < 0 || typeOf(static_cast<char>(c)) != ST_CR)
            return c;
    }
}

template <class Reader>
[[gnu::always_inline]] inline Scanner::Scanned Scanner::scanWord(Reader& in, TokenText& out) {
    int c = takeRun<true>(in, out, m_wordMask);
    if (Reader::gaveUp(c))
        return Scanned::GaveUp;
    in.unread(c);
    finish(out, ST_WORD);
    if (m_keywords && checkKeyword())
        m_token->m_type = ST_KEYWORD;
    return Scanned::Token;
}

template <class Reader>
[[gnu::always_inline]] inline Scanner::Scanned Scanner::scanNumber(Reader& in, TokenText& out) {
    bool pointSeen = out.at[-1] == '.';
    bool exponentSeen = false;
    bool afterExponentLetter = false;
    bool isWord = false;
    for (;;) {
        int c = isWord                ? takeRun<true>(in, out, m_wordMask)
                : afterExponentLetter ? in.next()
                                      : takeRun<true>(in, out, classBit(ST_NUMBER));
        if (Reader::gaveUp(c))
            return Scanned::GaveUp;
        if (c < 0) {
            in.unread(c);
            break;
        }
        char ch = static_cast<char>(c);
        ScanType type = typeOf(ch);
        bool letter = (classBit(static_cast<ScanType>(type & 63)) & v_letterClasses) != 0;
        if (type == ST_CR)
            continue;
        if (isWord) {
            in.unread(c);
            break;
        }
        if (afterExponentLetter) {
            afterExponentLetter = false;
            if (type == ST_PLUS || type == ST_MINUS || type == ST_NUMBER) {
                out.put(ch);
                continue;
            }
            if (letter) {
                isWord = true;
                out.put(ch);
                continue;
            }
        }
        if (type == ST_POINT && !pointSeen && !exponentSeen) {
            int after = in.peek();
            if (Reader::gaveUp(after))
                return Scanned::GaveUp;
            if (after >= 0 && typeOf(static_cast<char>(after)) == ST_POINT) {
                in.unread(c);
                break;
            }
            pointSeen = true;
            out.put(ch);
        } else if (letter && !exponentSeen && (ch == 'e' || ch == 'E')) {
            exponentSeen = true;
            afterExponentLetter = true;
            out.put(ch);
        } else if (letter) {
            isWord = true;
            out.put(ch);
        } else {
            in.unread(c);
            break;
        }
    }
    m_negativeNumber = 0;
    return finish(out, isWord ? ST_WORD : ST_NUMBER);
}

template <class Reader>
[[gnu::always_inline]] inline Scanner::Scanned Scanner::scanString(Reader& in, TokenText& out) {
    bool keepQuotes = isAllowableInWord(ST_DOUBLEQUOTE);
    if (keepQuotes)
        out.put('"');
    constexpr std::uint64_t inside = ~(classBit(ST_DOUBLEQUOTE) | classBit(ST_BACKSLASH));
    for (;;) {
        int c = takeRun<false>(in, out, inside);
        if (Reader::gaveUp(c))
            return Scanned::GaveUp;
        if (c < 0)
            break;
        char ch = static_cast<char>(c);
        if (typeOf(ch) == ST_DOUBLEQUOTE) {
            if (keepQuotes)
                out.put(ch);
            break;
        }
        out.put(ch);
        c = in.next();
        if (Reader::gaveUp(c))
            return Scanned::GaveUp;
        if (c < 0)
            break;
        out.put(static_cast<char>(c));
    }
    return finish(out, ST_STRING);
}

// A one-character token that takes the next character too when pairType gives the pair's
// type for that character's class (ST_END: it does not pair, and is left unread).
template <class Reader, class PairType>
[[gnu::always_inline]] inline Scanner::Scanned
Scanner::scanPair(Reader& in, TokenText& out, ScanType single, PairType pairType) {
    int next = in.next();
    if (Reader::gaveUp(next))
        return Scanned::GaveUp;
    ScanType paired = next >= 0 ? pairType(typeOf(static_cast<char>(next))) : ST_END;
    if (paired != ST_END) {
        out.put(static_cast<char>(next));
        return finish(out, paired);
    }
    in.unread(next);
    return finish(out, single);
}

// One token, or the white space before one. Through an AreaReader it changes nothing but the
// token buffer when it gives up; there, for a scanner whose scanToken is its own, it passes
// every run of white space before the token, which is what the rescans would do one
// character at a time, and keeps the white space passed when the token is given up.
template <class Reader>
[[gnu::always_inline]] inline Scanner::Scanned Scanner::scanWith(Reader& in) {
    if constexpr (std::is_same_v<Reader, AreaReader>) {
        for (;;) {
            Scanned scanned = scanOne(in);
            if (scanned == Scanned::WhiteSpace && m_ownScanToken == 1) {
                in.markPassed();
                continue;
            }
            if (scanned == Scanned::GaveUp && in.backToPassed())
                return Scanned::WhiteSpace;
            return scanned;
        }
    } else {
        return scanOne(in);
    }
}

template <class Reader>
[[gnu::always_inline]] inline Scanner::Scanned Scanner::scanOne(Reader& in) {
    TokenText out{m_buffer.get(), m_buffer.get() + v_maxTokenLength};
    int c = in.next();
    if (Reader::gaveUp(c))
        return Scanned::GaveUp;
    if (c < 0) {
        setEndToken();
        return Scanned::Token;
    }
    char ch = static_cast<char>(c);
    ScanType type = typeOf(ch);
    switch (type) {
    case ST_SPACE:
        return skipWhiteRun(in) ? Scanned::WhiteSpace : Scanned::GaveUp;
    case ST_CR:
        return Scanned::WhiteSpace;
    case ST_LETTER:
        out.put(ch);
        return scanWord(in, out);
    case ST_QUOTE:
        out.put(ch);
        return scanPair(in, out, ST_QUOTE,
                        [](ScanType next) { return scanTypeIsBase(next) ? next : ST_END; });
    case ST_DOUBLEQUOTE:
        return scanString(in, out);
    case ST_AT:
        out.put(ch);
        return scanPair(in, out, ST_AT, [](ScanType next) {
            return next == ST_MINUS ? ST_AT_MINUS : next == ST_SLASH ? ST_AT_SLASH : ST_END;
        });
    case ST_POINT: {
        int after = in.next();
        if (Reader::gaveUp(after))
            return Scanned::GaveUp;
        if (after >= 0 && typeOf(static_cast<char>(after)) == ST_POINT) {
            out.put(ch);
            out.put(static_cast<char>(after));
            return finish(out, ST_DOTDOT);
        }
        in.unread(after);
        [[fallthrough]];
    }
    case ST_NUMBER:
        if (m_negativeNumber)
            out.put('-');
        out.put(ch);
        return scanNumber(in, out);
    case ST_BASE_HEX:
    case ST_BASE_DEC:
    case ST_BASE_BIN:
    case ST_BASE_OCT: {
        int after = in.peek();
        if (Reader::gaveUp(after))
            return Scanned::GaveUp;
        out.put(ch);
        if (after >= 0 && typeOf(static_cast<char>(after)) == ST_DOUBLEQUOTE)
            return finish(out, type);
        return scanWord(in, out);
    }
    default:
        out.put(ch);
        return finish(out, type);
    }
}

// Kept out of line: it runs once per buffer refill, and inlined it would crowd the registers
// of the path that runs for every other token.
[[gnu::noinline]] Scanner::Scanned Scanner::scanThroughStream() {
    StreamReader stream{*this};
    return scanWith(stream);
}

namespace {

// What the default table's scan needs to know of a byte, as bits: one load per character
// answers every question the loops below ask.
enum DefaultClass : std::uint8_t {
    v_blank = 1,  // space class and carriage return: passed over before a token
    v_cr = 2,     // read and dropped inside words and numbers
    v_digit = 4,  // '0' to '9'
    v_letter = 8, // letters, '$', '_' and every byte of 128 and above
    v_single = 16 // a one-character token whatever follows
};

// Must give the classes newTypeTable gives; the tests scan through a copy of the default
// table, which takes the general path, and require the same tokens.
constexpr std::array<std::uint8_t, 256> defaultClasses() {
    std::array<std::uint8_t, 256> classes{};
    for (int c = 0; c < 256; ++c) {
        std::uint8_t bits = v_single;
        if (c >= 128 || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '$' || c == '_')
            bits = v_letter;
        else if (c >= '0' && c <= '9')
            bits = v_digit;
        else if (c == ' ' || c == '\n' || c == '\t')
            bits = v_blank;
        else if (c == '\r')
            bits = v_blank | v_cr;
        else if (c == '.' || c == '\'' || c == '"' || c == '@')
            bits = 0;
        classes[static_cast<std::size_t>(c)] = bits;
    }
    return classes;
}

constexpr std::array<std::uint8_t, 256> v_defaultClasses = defaultClasses();
static_assert(v_blank == 1, "one blank is passed by adding its class bit");

inline std::uint8_t defaultClass(const char* at) {
    return v_defaultClasses[static_cast<unsigned char>(*at)];
}

// The word mask of a scanner whose flags are both off.
constexpr std::uint64_t v_plainWordMask = classBit(ST_LETTER) | classBit(ST_NUMBER) |
                                          classBit(ST_BASE_HEX) | classBit(ST_BASE_DEC) |
                                          classBit(ST_BASE_BIN) | classBit(ST_BASE_OCT);

// Passes characters while one of bits is set in their class; seen collects the classes passed.
inline const char* passWhile(const char* at, const char* end, std::uint8_t bits,
                             std::uint8_t& seen) {
    while (at != end) {
        std::uint8_t type = defaultClass(at);
        if (!(type & bits))
            break;
        seen |= type;
        ++at;
    }
    return at;
}

// Out of line: carriage returns inside a token are rare.
[[gnu::noinline]] std::size_t copyWithoutCR(char* out, const char* text, std::size_t length,
                                            std::size_t limit) {
    std::size_t stored = 0;
    for (const char* c = text; c != text + length && stored != limit; ++c)
        if (*c != '\r')
            out[stored++] = *c;
    return stored;
}

} // namespace

[[gnu::always_inline]] inline void Scanner::storeToken(const char* text, std::size_t length,
                                                       std::size_t readable, bool dropCR,
                                                       ScanType type) {
    char* out = m_buffer.get();
    std::size_t stored = 0;
    if (dropCR) [[unlikely]] {
        stored = copyWithoutCR(out, text, length, v_maxTokenLength);
    } else {
        stored = std::min<std::size_t>(length, v_maxTokenLength);
        // Most tokens are short: one fixed-size copy is cheaper than a call that works out
        // the size.
        constexpr std::size_t v_shortCopy = 16;
        if (stored <= v_shortCopy && readable >= v_shortCopy)
            std::memcpy(out, text, v_shortCopy);
        else
            std::memcpy(out, text, stored);
    }
    out[stored] = '\0';
    m_token->m_length = static_cast<unsigned>(stored);
    m_token->m_type = type;
}

// The default table's token rules written out for its classes, over the get area without
// a call per character: the same tokens, the same count and the same stream position as the
// general path. Wherever that path would read past the get area (a refill, or the end of
// input, which sets the stream's end-of-file state) this one gives up, so that the general
// path reads the token through the stream buffer's calls instead.
[[gnu::always_inline]] inline Scanner::Scanned Scanner::scanDefaultTable() {
    const char* const start = GetArea::next(m_buf);
    const char* const end = GetArea::end(m_buf);
    std::uint8_t seen = 0;
    // No override watches the rescans of white space here, so whole runs are passed. Mostly
    // one blank stands between tokens: the first two characters are classed side by side and
    // one blank is passed without a branch. The last character of the get area is left to the
    // general path.
    const char* at = start;
    auto giveUp = [&] {
        m_numRead += static_cast<unsigned long>(at - start);
        GetArea::moveTo(m_buf, const_cast<char*>(at));
        return Scanned::GaveUp;
    };
    if (end - at < 2)
        return giveUp();
    const std::uint8_t class0 = defaultClass(at);
    const std::uint8_t class1 = defaultClass(at + 1);
    std::uint8_t firstClass = (class0 & v_blank) ? class1 : class0;
    at += class0 & v_blank;
    if (firstClass & v_blank) [[unlikely]] {
        at = passWhile(at, end, v_blank, seen);
        if (at == end)
            return giveUp();
        firstClass = defaultClass(at);
    }
    const char* const first = at;
    const char* next = first + 1;
    const std::size_t readable = static_cast<std::size_t>(end - first);
    seen = 0;
    if (firstClass & v_single) {
        storeToken(first, 1, readable, false, m_table[static_cast<unsigned char>(*first)]);
    } else if (firstClass & v_letter) {
        next = passWhile(next, end, v_letter | v_digit | v_cr, seen);
        if (next == end)
            return giveUp();
        storeToken(first, static_cast<std::size_t>(next - first), readable, seen & v_cr, ST_WORD);
        if (m_keywords && checkKeyword())
            m_token->m_type = ST_KEYWORD;
    } else if (*first == '"') {
        // The text between the quotes, escapes kept as written.
        while (next != end && *next != '"') {
            if (*next == '\\' && ++next == end)
                break;
            ++next;
        }
        if (next == end)
            return giveUp();
        storeToken(first + 1, static_cast<std::size_t>(next - first - 1), readable - 1, false,
                   ST_STRING);
        ++next;
    } else {
        // The quote, the at sign and the point look at the character after them.
        if (next == end)
            return giveUp();
        if (*first == '\'') {
            storeToken(first, 1, readable, false, ST_QUOTE);
        } else if (*first == '@') {
            ScanType type = *next == '-' ? ST_AT_MINUS : *next == '/' ? ST_AT_SLASH : ST_AT;
            if (type != ST_AT)
                ++next;
            storeToken(first, static_cast<std::size_t>(next - first), readable, false, type);
        } else if (*first == '.' && *next == '.') {
            ++next;
            storeToken(first, 2, readable, false, ST_DOTDOT);
        } else {
            // A number, from a digit or a point: digits, one point that is not the first of
            // two, an exponent letter with an optional sign; a letter anywhere else makes it
            // a word, which runs on over letters and digits.
            bool pointSeen = *first == '.';
            bool exponentSeen = false;
            bool isWord = false;
            for (;;) {
                next = passWhile(next, end, v_digit | v_cr, seen);
                if (next == end)
                    return giveUp();
                std::uint8_t type = defaultClass(next);
                if (*next == '.') {
                    if (pointSeen || exponentSeen)
                        break;
                    if (next + 1 == end)
                        return giveUp();
                    if (next[1] == '.')
                        break;
                    pointSeen = true;
                    ++next;
                    continue;
                }
                if (!(type & v_letter))
                    break;
                ++next;
                if (!exponentSeen && (next[-1] == 'e' || next[-1] == 'E')) {
                    exponentSeen = true;
                    next = passWhile(next, end, v_cr, seen);
                    if (next == end)
                        return giveUp();
                    if (*next == '+' || *next == '-' || (defaultClass(next) & v_digit)) {
                        ++next;
                        continue;
                    }
                    if (!(defaultClass(next) & v_letter))
                        break;
                    ++next;
                }
                isWord = true;
                next = passWhile(next, end, v_letter | v_digit | v_cr, seen);
                if (next == end)
                    return giveUp();
                break;
            }
            storeToken(first, static_cast<std::size_t>(next - first), readable, seen & v_cr,
                       isWord ? ST_WORD : ST_NUMBER);
        }
    }
    m_numRead += static_cast<unsigned long>(next - start);
    GetArea::moveTo(m_buf, const_cast<char*>(next));
    return Scanned::Token;
}

// Derived classes of this library that do not override scanToken are listed by their exact
// type: a class derived from them may override it.
bool Scanner::scanTokenIsOwn() const {
    const std::type_info& type = typeid(*this);
    return type == typeid(Scanner) || type == typeid(BasicParser) || type == typeid(FileParser) ||
           type == typeid(ModelParser);
}

Token& Scanner::scanToken() {
    // The path of nearly every token, with nothing around it that the rest would need.
    if (m_ownScanToken == 1 && m_fast && !m_task && m_table == p_defaultTable &&
        m_wordMask == v_plainWordMask && !m_negativeNumber && m_token->text() == m_buffer.get() &&
        scanDefaultTable() == Scanned::Token)
        return *m_token;
    return scanGeneral();
}

// Out of line, so that scanToken saves no registers for it.
[[gnu::noinline]] Token& Scanner::scanGeneral() {
    if (m_token->text() != m_buffer.get())
        m_token->layOver(m_buffer.get(), v_bufferSize);
    if (m_ownScanToken < 0)
        m_ownScanToken = scanTokenIsOwn() ? 1 : 0;
    for (;;) {
        if (m_task && m_task->isCancelled()) {
            setEndToken();
            return *m_token;
        }
        Scanned scanned = Scanned::GaveUp;
        if (m_fast) {
            AreaReader area(m_buf);
            scanned = scanWith(area);
            if (scanned != Scanned::GaveUp)
                m_numRead += area.commit(m_buf);
        }
        if (scanned == Scanned::GaveUp)
            scanned = scanThroughStream();
        if (scanned == Scanned::Token)
            return *m_token;
        // No override can see the rescans: a loop does them.
        if (m_ownScanToken == 1)
            continue;
        // White space: each character is passed over by a rescan through the virtual
        // scanToken, so that a subclass sees one call per character as it always has. Past
        // the nesting bound the rest of a long run is passed over here instead.
        if (m_rescanDepth < v_maxRescanDepth) {
            ++m_rescanDepth;
            Token& next = scanToken();
            --m_rescanDepth;
            return next;
        }
    }
}
