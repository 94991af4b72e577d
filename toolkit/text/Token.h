#pragma once

#include "core/Collections.h"
#include "core/TqExport.h"
#include "text/ScanType.h"

#include <cstring>
#include <iosfwd>

/// Token: one token of a scanner, its type and text. A token either owns a heap buffer or is
/// laid over a caller's buffer (the scanner's current token lies over the scanner's own).
class TQ_EXPORT Token {
public:
    /// An empty owning token of type `none`.
    Token();
    /// Laid over buffer (size bytes, size > 0), emptied; the token never frees it. Setting,
    /// prepending or appending text moves the token to a heap buffer of its own (capacity 0 is
    /// less than any text needs), leaving the caller's buffer as it was.
    Token(char* buffer, unsigned size);
    /// An owning token holding a copy of text (null: empty).
    Token(ScanType type, const char* text);
    ///@{
    /// Copies are always owning.
    Token(const Token& other);
    Token& operator=(const Token& other);
    virtual ~Token() { freeOwned(); }
    ///@}

    ///@{
    /// The token's type: the character class of a one-character token or the kind of a
    /// longer one.
    ScanType type() const { return m_type; }
    void setType(ScanType type) { m_type = type; }
    ///@}
    ///@{
    /// The text, in place in the token's buffer, NUL-terminated; valid until the token changes.
    const char* text() const { return m_text; }
    unsigned length() const { return m_length; }
    ///@}
    /// The size of the owned buffer, 0 for a token laid over a caller's buffer.
    unsigned capacity() const { return m_capacity; }

    ///@{
    /// Copies text (null: empty). A buffer smaller than length + 1 is replaced by one of
    /// exactly length + 1 bytes. Text longer than UINT_MAX - 1 is cut there.
    void setValue(const char* text);
    void setValue(const char* text, unsigned length);
    ///@}
    /// Cuts the text to length characters (no effect if it is shorter).
    void setLength(unsigned length);
    ///@{
    /// Add text before or after the token's own, growing the buffer as setValue does; text
    /// may be the token's own.
    void prepend(const char* text);
    void append(const char* text);
    ///@}

    /// Writes the display text of the type and the text.
    virtual std::ostream& printOn(std::ostream& out) const;

    /// Deletes every token of the collection and empties it.
    static void deleteContents(OC_<Token>& tokens);

private:
    friend class Scanner;
    friend class SingleFileElement;

    /// A copy of other laid over buffer, which holds at least other.length() + 1 bytes.
    Token(const Token& other, char* buffer)
        : m_type(other.m_type), m_text(buffer), m_length(other.m_length) {
        std::memcpy(buffer, other.m_text, other.m_length);
        buffer[other.m_length] = '\0';
    }
    ///@{
    /// Makes room for size bytes, keeping the first keep characters of the text.
    void reserve(unsigned size, unsigned keep);
    void insert(unsigned at, const char* text);
    void layOver(char* buffer, unsigned size);
    void freeOwned() {
        if (m_capacity > 0)
            delete[] m_text;
        m_text = nullptr;
        m_capacity = 0;
    }
    ///@}

    ScanType m_type = ST_NONE;
    char* m_text = nullptr;
    unsigned m_length = 0;
    unsigned m_capacity = 0;
};
