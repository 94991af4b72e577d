#pragma once

#include "core/Collections.h"
#include "core/TqExport.h"
#include "text/ScanType.h"
#include "text/Token.h"

#include <cstdint>
#include <iosfwd>
#include <memory>

class iTaskDescription;

/// One keyword a scanner recognises, kept in upper case (owned copy).
class TQ_EXPORT ScannerKeyword {
public:
    /// Keeps an upper-case copy of text.
    explicit ScannerKeyword(const char* text);
    ~ScannerKeyword();
    ScannerKeyword(const ScannerKeyword&) = delete;
    ScannerKeyword& operator=(const ScannerKeyword&) = delete;

    /// The keyword in upper case, owned by the keyword.
    const char* text() const { return m_text.get(); }
    /// The key extractor of a keyword collection: the upper-case text.
    static const char* keyFromScannerKeyword(const ScannerKeyword& keyword);

private:
    std::unique_ptr<char[]> m_text;
};

/// Scanner: the toolkit's tokenizer. It classifies characters through a replaceable table of
/// ScanType classes and assembles words, keywords, numbers, strings, Verilog base prefixes and
/// single punctuation marks from a stream or a string.
class TQ_EXPORT Scanner {
public:
    /// The longest token text; longer tokens are cut here without error.
    static constexpr unsigned v_maxTokenLength = 8191;
    /// How many white-space rescans may nest inside one scanToken call; past it a run of white
    /// space is passed over in place, so that no input can exhaust the stack.
    static constexpr int v_maxRescanDepth = 256;

    // --- Construction ---------------------------------------------------------------------------
    ///@{
    /// A scanner of std::cin (no stream given), of in, or of a copy of text, with the
    /// keywords given (not owned) or none. A null table means the shared default table; a
    /// table or stream given by the caller is never owned and must outlive the scanner.
    explicit Scanner(ScanType* table = nullptr);
    Scanner(std::istream& in, ScanType* table);
    Scanner(const char* text, ScanType* table);
    Scanner(const char* text, HC_<ScannerKeyword>* keywords, ScanType* table);
    ///@}
    ///@{
    /// Copies the settings: table (a private table is copied), flags, keywords, task and
    /// input. A copied string input is a fresh string stream at the same position.
    Scanner(const Scanner& other);
    Scanner& operator=(const Scanner& other);
    virtual ~Scanner();
    ///@}

    // --- Scanning ------------------------------------------------------------------------------
    /// Reads the next token into the current token and returns it; at end of input, on a read
    /// failure and while the task is cancelled, the token is `end` with empty text. After each
    /// white-space character the scan starts again through this virtual function, nested, so
    /// that an override sees one rescan per character (up to v_maxRescanDepth). The stream is left
    /// just after the token, so a caller may go on reading it; only a character that the stream
    /// buffer would not take back stays with the scanner, which hands it out first.
    virtual Token& scanToken();
    ///@{
    /// The current token (its text lives in the scanner's buffer until the next scan).
    Token& token() { return *m_token; }
    const Token& token() const { return *m_token; }
    ///@}

    /// Reads one character; NUL at end of input. False only for a read failure other than end
    /// of file (the token then becomes `end`).
    bool getChar(char& c);
    /// The next character without consuming it (NUL at end of input); false as getChar.
    bool peekChar(char& c);
    /// Puts back the character just read (a NUL read at end of file is not pushed back into
    /// the stream) and un-counts it.
    void putback(char c);
    /// True while the stream is good or merely at end of file.
    bool testGood() const;

    ///@{
    /// Replaces the input by a fresh string stream over a copy of text (null: empty).
    void setString(const char* text);
    void setBad() { m_bad = 1; }
    bool isBad() const { return m_bad != 0; }
    ///@}
    ///@{
    /// Lets a long scan be cancelled through the task (the scanner does not own it).
    void setTask(iTaskDescription& task) { m_task = &task; }
    iTaskDescription* task() const { return m_task; }
    void setAllowSlashDotInWords(char allow) {
        m_allowSlashDotInWords = allow;
        updateWordMask();
    }
    char allowSlashDotInWords() const { return m_allowSlashDotInWords; }
    void setAllowSquareBracketsInWords(char allow) {
        m_allowSquareBracketsInWords = allow;
        updateWordMask();
    }
    char allowSquareBracketsInWords() const { return m_allowSquareBracketsInWords; }
    ///@}
    /// Characters read so far; characters put back are not counted, and the end of input
    /// counts as one character once it has been read (as the NUL that getChar returns).
    unsigned long numRead() const { return m_numRead; }

    // --- Classes -------------------------------------------------------------------------------
    /// True for letter, number and the base prefixes; with allow-slash-dot-in-words also for the
    /// point, both square brackets and the double quote; with allow-square-brackets-in-words
    /// also for the second slash class and the backslash. The flags' names do not match the
    /// classes they admit; existing tables rely on exactly this set.
    bool isAllowableInWord(ScanType type) const {
        return type >= 0 && type < 64 && ((m_wordMask >> type) & 1) != 0;
    }
    /// True if the current token's text, in upper case, is one of the keywords.
    bool checkKeyword() const;
    /// The class of c in this scanner's table; bytes of 128 and above are always letters.
    ScanType typeOf(char c) const {
        auto byte = static_cast<unsigned char>(c);
        return byte >= 128 ? ST_LETTER : m_table[byte];
    }
    /// Gives c the class t in this scanner's table, first taking a private copy if the table
    /// is still the shared default (the default is never changed through a scanner).
    void setType(int c, ScanType t);

    // --- Tables --------------------------------------------------------------------------------
    /// A new default table (256 entries) on the heap, for the caller to free with delete[].
    static ScanType* newTypeTable();
    /// The shared default table, built on first use; never change it.
    static ScanType* defaultTypeTable();
    ///@{
    /// Table builders; characters outside 0..255 are ignored.
    static void setType(int c, ScanType t, ScanType* table);
    static void setType(int from, int to, ScanType t, ScanType* table); ///< inclusive
    static void setType(const char* chars, ScanType t, ScanType* table);
    static void setTypeAll(ScanType t, ScanType* table);
    ///@}
    /// Frees the shared default table (toolkit shutdown); the next scanner builds it again.
    static void shutDown();
    /// True while the shared default table exists.
    static bool defaultTypeTableBuilt() { return p_defaultTable != nullptr; }

protected:
    /// Passes over characters of class space or newline, starting from NUL rather than from
    /// the next input character (see the .cpp).
    void skipwhite();
    /// After a '/': skips a /* */ or // comment, giving up after max characters; any other
    /// character is put back. Returns the number of characters consumed.
    long skipComment(long max);

private:
    struct StreamReader;
    struct AreaReader;
    struct TokenText;
    /// What one pass of scanWith found; GaveUp only from a reader of the stream buffer's own
    /// characters, which reached their end.
    enum class Scanned { Token, WhiteSpace, GaveUp };

    void init(ScanType* table);
    void setInput(std::istream* in);
    ///@{
    /// The next byte (0..255), or -1 at end of input or on a read failure. The read that
    /// first meets end of file counts as one character, as getChar's NUL does.
    inline int nextChar();
    int slowNextChar();
    int peekNext();
    ///@}
    ///@{
    /// Whether nextChar may read straight from the stream buffer: nothing is pushed back and
    /// the stream was good when the scanner was last entered.
    void refreshInput();
    void updateWordMask();
    ///@}
    ///@{
    /// Puts back what nextChar returned and un-counts it.
    void unread(int c);
    void copySettings(const Scanner& other);
    void freeOwned();
    void setEndToken();
    Scanned finish(const TokenText& text, ScanType type);
    ///@}
    template <class Reader>
    Scanned scanWith(Reader& in);
    template <class Reader>
    Scanned scanOne(Reader& in);
    Scanned scanThroughStream();
    /// Every case scanToken's fast path leaves: put-back, other tables, overrides, the task.
    Token& scanGeneral();
    /// The whole scan for the shared default table, straight over the get area, for a scanner
    /// no override watches; gives up (keeping only the white space it passed) wherever the
    /// general path would look past the get area.
    Scanned scanDefaultTable();
    /// Lays text over the token buffer, cut to the longest token and terminated; dropCR leaves
    /// carriage returns out. readable: how many bytes from text may be read at all.
    void storeToken(const char* text, std::size_t length, std::size_t readable, bool dropCR,
                    ScanType type);
    /// Whether scanToken is this class's own in the object's type, so that no override can
    /// tell the rescans of white space apart from a loop that passes whole runs.
    bool scanTokenIsOwn() const;
    template <class Reader>
    bool skipWhiteRun(Reader& in);
    template <bool dropCR, class Reader>
    int takeRun(Reader& in, TokenText& out, std::uint64_t mask) const;
    template <class Reader>
    Scanned scanWord(Reader& in, TokenText& out);
    template <class Reader>
    Scanned scanNumber(Reader& in, TokenText& out);
    template <class Reader>
    Scanned scanString(Reader& in, TokenText& out);
    template <class Reader, class PairType>
    Scanned scanPair(Reader& in, TokenText& out, ScanType single, PairType pairType);

    std::unique_ptr<Token> m_token;
    std::unique_ptr<char[]> m_buffer;
    ScanType* m_table = nullptr;
    std::istream* m_in = nullptr;
    std::unique_ptr<std::istream> m_ownedStream;
    char m_bad = 0;
    char m_negativeNumber = 0;
    char m_allowSlashDotInWords = 0;
    char m_allowSquareBracketsInWords = 0;
    unsigned long m_numRead = 0;
    iTaskDescription* m_task = nullptr;
    HC_<ScannerKeyword>* m_keywords = nullptr;

    std::streambuf* m_buf = nullptr;
    ///@{
    /// Characters that the stream buffer could not take back, the last put back first.
    char m_pushback[4] = {};
    int m_pushed = 0;
    bool m_endCounted = false;
    bool m_fast = false;
    ///@}
    ///@{
    /// Bit t set when isAllowableInWord(t).
    std::uint64_t m_wordMask = 0;
    bool m_privateTable = false;
    int m_rescanDepth = 0;
    ///@}
    /// scanTokenIsOwn(), found on the first scan: -1 until then.
    signed char m_ownScanToken = -1;

    static ScanType* p_defaultTable;

protected:
    /// When set, the next number token gets a leading '-' and the flag is cleared. Parsers
    /// that read a sign as its own token set it.
    void setNegativeNumber(char negative) { m_negativeNumber = negative; }
};
