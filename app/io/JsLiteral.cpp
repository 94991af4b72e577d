#include "io/JsLiteral.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdlib>

// A hand-written reader rather than the toolkit's scanner: wave strings of long diagrams run
// past the scanner's longest token, and string escapes and comments follow JavaScript's rules.

const JsValue* JsValue::member(std::string_view key) const {
    for (auto it = members.rbegin(); it != members.rend(); ++it) {
        if (it->key == key)
            return &it->value;
    }
    return nullptr;
}

namespace {

bool isIdentifierStart(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' || c == '$' ||
           static_cast<unsigned char>(c) >= 0x80;
}

bool isIdentifierPart(char c) {
    return isIdentifierStart(c) || (c >= '0' && c <= '9');
}

void appendUtf8(std::string& out, unsigned long code) {
    if (code < 0x80) {
        out.push_back(static_cast<char>(code));
    } else if (code < 0x800) {
        out.push_back(static_cast<char>(0xC0 | (code >> 6)));
        out.push_back(static_cast<char>(0x80 | (code & 0x3F)));
    } else if (code < 0x10000) {
        out.push_back(static_cast<char>(0xE0 | (code >> 12)));
        out.push_back(static_cast<char>(0x80 | ((code >> 6) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | (code & 0x3F)));
    } else {
        out.push_back(static_cast<char>(0xF0 | (code >> 18)));
        out.push_back(static_cast<char>(0x80 | ((code >> 12) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | ((code >> 6) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | (code & 0x3F)));
    }
}

class JsParser {
public:
    JsParser(std::string_view text, const char* name) : m_text(text), m_name(name) {}

    bool parse(JsValue& value, std::string& error) {
        bool good = skipSpace() && parseValue(value, 0) && skipSpace();
        if (good && m_pos < m_text.size() && m_text[m_pos] == ';') {
            ++m_pos;
            good = skipSpace();
        }
        if (good && m_pos < m_text.size())
            good = fail("expected the end of the file after the value");
        if (!good)
            error = m_error;
        return good;
    }

private:
    bool fail(const std::string& message) {
        if (m_error.empty())
            m_error = std::string(m_name) + ":" + std::to_string(m_line) + ": " + message +
                      ", found " + found();
        return false;
    }

    std::string found() const {
        if (m_pos >= m_text.size())
            return "the end of the file";
        if (m_text[m_pos] == '\n' || m_text[m_pos] == '\r')
            return "the end of the line";
        std::string word(1, m_text[m_pos]);
        if (isIdentifierPart(m_text[m_pos])) {
            for (std::size_t i = m_pos + 1;
                 i < m_text.size() && isIdentifierPart(m_text[i]) && word.size() < 20; ++i)
                word.push_back(m_text[i]);
        }
        return "'" + word + "'";
    }

    bool at(char c) const { return m_pos < m_text.size() && m_text[m_pos] == c; }

    // Passes white space and comments, counting lines; false for a comment left open.
    bool skipSpace() {
        while (m_pos < m_text.size()) {
            const char c = m_text[m_pos];
            if (c == '\n') {
                ++m_line;
                ++m_pos;
            } else if (c == ' ' || c == '\t' || c == '\r' || c == '\f' || c == '\v') {
                ++m_pos;
            } else if (c == '/' && m_pos + 1 < m_text.size() && m_text[m_pos + 1] == '/') {
                while (m_pos < m_text.size() && m_text[m_pos] != '\n')
                    ++m_pos;
            } else if (c == '/' && m_pos + 1 < m_text.size() && m_text[m_pos + 1] == '*') {
                const std::size_t end = m_text.find("*/", m_pos + 2);
                if (end == std::string_view::npos) {
                    m_pos = m_text.size();
                    return fail("expected '*/' to end the comment");
                }
                for (std::size_t i = m_pos; i < end; ++i)
                    m_line += m_text[i] == '\n';
                m_pos = end + 2;
            } else if (c == '\xEF' && m_text.substr(m_pos, 3) == "\xEF\xBB\xBF") {
                m_pos += 3; // a byte order mark some editors write
            } else {
                break;
            }
        }
        return true;
    }

    bool parseValue(JsValue& value, int depth) {
        if (depth > v_maxJsDepth)
            return fail("expected lists nested at most " + std::to_string(v_maxJsDepth) + " deep");
        value.line = m_line;
        if (m_pos >= m_text.size())
            return fail("expected a value");
        const char c = m_text[m_pos];
        if (c == '{')
            return parseObject(value, depth);
        if (c == '[')
            return parseArray(value, depth);
        if (c == '"' || c == '\'' || c == '`') {
            value.type = JsValue::Type::String;
            return parseString(value.text);
        }
        if ((c >= '0' && c <= '9') || c == '-' || c == '+' || c == '.')
            return parseNumber(value);
        if (isIdentifierStart(c)) {
            const std::string word = identifier();
            if (word == "true" || word == "false") {
                value.type = JsValue::Type::Boolean;
                value.boolean = word == "true";
            } else if (word == "null" || word == "undefined") {
                value.type = JsValue::Type::Null;
            } else if (word == "Infinity" || word == "NaN") {
                value.type = JsValue::Type::Number;
                value.number = word == "NaN" ? std::nan("") : HUGE_VAL;
            } else {
                m_pos -= word.size();
                return fail("expected a value");
            }
            return true;
        }
        return fail("expected a value");
    }

    std::string identifier() {
        const std::size_t start = m_pos;
        while (m_pos < m_text.size() && isIdentifierPart(m_text[m_pos]))
            ++m_pos;
        return std::string(m_text.substr(start, m_pos - start));
    }

    bool parseObject(JsValue& value, int depth) {
        value.type = JsValue::Type::Object;
        ++m_pos;
        for (;;) {
            if (!skipSpace())
                return false;
            if (at('}')) {
                ++m_pos;
                return true;
            }
            std::string key;
            if (at('"') || at('\'') || at('`')) {
                if (!parseString(key))
                    return false;
            } else if (m_pos < m_text.size() && isIdentifierPart(m_text[m_pos])) {
                key = identifier();
            } else {
                return fail("expected a key or '}'");
            }
            if (!skipSpace())
                return false;
            if (!at(':'))
                return fail("expected ':' after the key '" + key + "'");
            ++m_pos;
            JsValue member;
            if (!skipSpace() || !parseValue(member, depth + 1) || !skipSpace())
                return false;
            value.members.push_back({std::move(key), std::move(member)});
            if (at(','))
                ++m_pos;
            else if (!at('}'))
                return fail("expected ',' or '}'");
        }
    }

    bool parseArray(JsValue& value, int depth) {
        value.type = JsValue::Type::Array;
        ++m_pos;
        for (;;) {
            if (!skipSpace())
                return false;
            if (at(']')) {
                ++m_pos;
                return true;
            }
            JsValue item;
            // A hole ([a,,b]) is an element in its own right; read as null, the nearest a
            // literal has to undefined.
            if (at(',')) {
                ++m_pos;
                value.items.push_back(std::move(item));
                continue;
            }
            if (!parseValue(item, depth + 1) || !skipSpace())
                return false;
            value.items.push_back(std::move(item));
            if (at(','))
                ++m_pos;
            else if (!at(']'))
                return fail("expected ',' or ']'");
        }
    }

    bool parseString(std::string& out) {
        const char quote = m_text[m_pos++];
        for (;;) {
            if (m_pos >= m_text.size())
                return fail(std::string("expected ") + quote + " to end the string");
            const char c = m_text[m_pos++];
            if (c == quote)
                return true;
            if (c == '\n') {
                if (quote != '`') {
                    --m_pos;
                    return fail(std::string("expected ") + quote + " to end the string");
                }
                ++m_line;
            }
            if (c != '\\') {
                out.push_back(c);
                continue;
            }
            if (m_pos >= m_text.size())
                continue;
            const char e = m_text[m_pos++];
            switch (e) {
            case 'n':
                out.push_back('\n');
                break;
            case 't':
                out.push_back('\t');
                break;
            case 'r':
                out.push_back('\r');
                break;
            case 'b':
                out.push_back('\b');
                break;
            case 'f':
                out.push_back('\f');
                break;
            case 'v':
                out.push_back('\v');
                break;
            case '0':
                out.push_back('\0');
                break;
            case '\r':
                break;
            case '\n':
                ++m_line;
                break; // a line continued inside the string
            case 'x':
            case 'u': {
                const bool braced = e == 'u' && at('{');
                if (braced)
                    ++m_pos;
                const std::size_t end = braced
                                            ? m_text.find('}', m_pos)
                                            : std::min(m_text.size(), m_pos + (e == 'x' ? 2 : 4));
                const std::string hex(
                    m_text.substr(m_pos, end == std::string_view::npos ? 0 : end - m_pos));
                bool good = !hex.empty() && hex.size() <= 6 &&
                            (braced || hex.size() == (e == 'x' ? 2u : 4u));
                for (const char h : hex)
                    good = good && std::isxdigit(static_cast<unsigned char>(h));
                const unsigned long code = good ? std::strtoul(hex.c_str(), nullptr, 16) : 0;
                if (!good || code > 0x10FFFF)
                    return fail(std::string("expected hexadecimal digits after '\\") + e + "'");
                m_pos = end + (braced ? 1 : 0);
                appendUtf8(out, code);
                break;
            }
            default:
                out.push_back(e);
                break;
            }
        }
    }

    bool parseNumber(JsValue& value) {
        value.type = JsValue::Type::Number;
        const std::size_t start = m_pos;
        bool negative = false;
        if (at('+') || at('-'))
            negative = m_text[m_pos++] == '-';
        if (m_pos + 1 < m_text.size() && m_text[m_pos] == '0' &&
            (m_text[m_pos + 1] == 'x' || m_text[m_pos + 1] == 'X')) {
            m_pos += 2;
            const std::size_t digits = m_pos;
            while (m_pos < m_text.size() &&
                   std::isxdigit(static_cast<unsigned char>(m_text[m_pos])))
                ++m_pos;
            if (m_pos == digits)
                return fail("expected hexadecimal digits after '0x'");
            value.number =
                std::strtod(std::string(m_text.substr(start, m_pos - start)).c_str(), nullptr);
            return true;
        }
        if (isIdentifierStart(m_text.size() > m_pos ? m_text[m_pos] : ' ')) {
            const std::string word = identifier();
            if (word != "Infinity" && word != "NaN") {
                m_pos = start;
                return fail("expected a number");
            }
            value.number = word == "NaN" ? std::nan("") : negative ? -HUGE_VAL : HUGE_VAL;
            return true;
        }
        while (m_pos < m_text.size() &&
               (std::isdigit(static_cast<unsigned char>(m_text[m_pos])) || m_text[m_pos] == '.' ||
                m_text[m_pos] == 'e' || m_text[m_pos] == 'E' ||
                ((m_text[m_pos] == '+' || m_text[m_pos] == '-') &&
                 (m_text[m_pos - 1] == 'e' || m_text[m_pos - 1] == 'E'))))
            ++m_pos;
        const std::string number(m_text.substr(start, m_pos - start));
        char* end = nullptr;
        value.number = std::strtod(number.c_str(), &end);
        if (end != number.c_str() + number.size() || number == "+" || number == "-") {
            m_pos = start;
            return fail("expected a number");
        }
        return true;
    }

    std::string_view m_text;
    const char* m_name;
    std::size_t m_pos = 0;
    std::size_t m_line = 1;
    std::string m_error;
};

} // namespace

bool parseJsLiteral(std::string_view text, const char* name, JsValue& value, std::string& error) {
    value = JsValue();
    return JsParser(text, name).parse(value, error);
}
