#include "text/Token.h"

#include <cassert>
#include <cstring>
#include <ostream>

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

void Token::layOver(char* buffer, unsigned size) {
    assert(buffer && size > 0 && "Token: a laid-over buffer needs at least one byte");
    freeOwned();
    m_text = buffer;
    m_foreignSize = size;
    m_text[0] = '\0';
    m_length = 0;
}

void Token::reserve(unsigned size, unsigned keep) {
    unsigned available = m_capacity > 0 ? m_capacity : m_foreignSize;
    if (m_text && available >= size)
        return;
    char* grown = new char[size];
    if (keep > 0)
        std::memcpy(grown, m_text, keep);
    grown[keep] = '\0';
    freeOwned();
    m_text = grown;
    m_capacity = size;
    m_foreignSize = 0;
}

void Token::setValue(const char* text) {
    setValue(text, text ? static_cast<unsigned>(std::strlen(text)) : 0);
}

void Token::setValue(const char* text, unsigned length) {
    if (!text)
        length = 0;
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
    if (!text || !*text)
        return;
    unsigned added = static_cast<unsigned>(std::strlen(text));
    reserve(m_length + added + 1, m_length);
    std::memmove(m_text + added, m_text, m_length + 1);
    std::memcpy(m_text, text, added);
    m_length += added;
}

void Token::append(const char* text) {
    if (!text || !*text)
        return;
    unsigned added = static_cast<unsigned>(std::strlen(text));
    reserve(m_length + added + 1, m_length);
    std::memcpy(m_text + m_length, text, added + 1);
    m_length += added;
}

std::ostream& Token::printOn(std::ostream& out) const {
    return out << scanTypeText(m_type) << ' ' << (m_text ? m_text : "");
}

void Token::deleteContents(OC_<Token>& tokens) {
    tokens.deleteContents();
}
