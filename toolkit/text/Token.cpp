#include "text/Token.h"

#include <algorithm>
#include <cassert>
#include <climits>
#include <cstring>
#include <functional>
#include <ostream>
#include <string>

namespace {

// The longest text a token can hold: its length and terminator must fit in an unsigned.
constexpr unsigned v_maxLength = UINT_MAX - 1;

unsigned textLength(const char* text) {
    std::size_t length = std::strlen(text);
    return length > v_maxLength ? v_maxLength : static_cast<unsigned>(length);
}

} // namespace

Token::Token() {
    reserve(1, 0);
}

Token::Token(char* buffer, unsigned size) {
    layOver(buffer, size);
}

Token::Token(ScanType type, const char* text) : m_type(type) {
    setValue(text);
}

Token::Token(const Token& other) : m_type(other.m_type) {
    setValue(other.m_text, other.m_length);
}

Token& Token::operator=(const Token& other) {
    if (this != &other) {
        m_type = other.m_type;
        setValue(other.m_text, other.m_length);
    }
    return *this;
}

void Token::layOver(char* buffer, [[maybe_unused]] unsigned size) {
    assert(buffer && size > 0 && "Token: a laid-over buffer needs at least one byte");
    freeOwned();
    m_text = buffer;
    m_text[0] = '\0';
    m_length = 0;
}

void Token::reserve(unsigned size, unsigned keep) {
    if (m_capacity >= size)
        return;
    char* grown = new char[size];
    if (keep > 0)
        std::memcpy(grown, m_text, keep);
    grown[keep] = '\0';
    freeOwned();
    m_text = grown;
    m_capacity = size;
}

void Token::setValue(const char* text) {
    setValue(text, text ? textLength(text) : 0);
}

void Token::setValue(const char* text, unsigned length) {
    if (!text)
        length = 0;
    if (length > v_maxLength)
        length = v_maxLength;
    if (text == m_text) {
        setLength(length);
        return;
    }
    reserve(length + 1, 0);
    if (length > 0)
        std::memmove(m_text, text, length);
    m_text[length] = '\0';
    m_length = length;
}

void Token::setLength(unsigned length) {
    if (length < m_length) {
        m_length = length;
        m_text[length] = '\0';
    }
}

void Token::prepend(const char* text) {
    insert(0, text);
}

void Token::append(const char* text) {
    insert(m_length, text);
}

void Token::insert(unsigned at, const char* text) {
    if (!text || !*text)
        return;
    std::less_equal<const char*> notAfter;
    if (notAfter(m_text, text) && notAfter(text, m_text + m_length)) {
        // The token's own text, which growing the buffer would free under it.
        std::string copy(text);
        insert(at, copy.c_str());
        return;
    }
    unsigned added = std::min(textLength(text), v_maxLength - m_length);
    reserve(m_length + added + 1, m_length);
    std::memmove(m_text + at + added, m_text + at, m_length - at + 1);
    std::memcpy(m_text + at, text, added);
    m_length += added;
}

std::ostream& Token::printOn(std::ostream& out) const {
    return out << scanTypeText(m_type) << ' ' << (m_text ? m_text : "");
}

void Token::deleteContents(OC_<Token>& tokens) {
    tokens.deleteContents();
}
