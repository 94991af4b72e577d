#include "core/StringFunctions.h"

#include "core/TqObject.h"

#include <QString>

#include <algorithm>
#include <cctype>
#include <climits>
#include <cstdio>
#include <cstring>
#include <string>

namespace {
constexpr int v_scratchSize = 256;
// The shared scratch of strReplaceStr and strExtractField. Its last byte is never written,
// so whatever a call leaves behind is always terminated within the buffer.
char scratch[v_scratchSize];

char* heapCopy(const std::string& s) {
    return mem_strndup(s.data(), s.size());
}
} // namespace

char* stripLeading(char* s, const char* set) {
    if (!s || !set)
        return nullptr;
    const char* first = s;
    while (*first && strIncludes(set, *first))
        ++first;
    std::memmove(s, first, std::strlen(first) + 1);
    return s;
}

char* stripTrailing(char* s, const char* set) {
    if (!s || !set)
        return nullptr;
    std::size_t length = std::strlen(s);
    while (length > 0 && strIncludes(set, s[length - 1]))
        --length;
    s[length] = '\0';
    return s;
}

char* stripZeroFraction(char* s) {
    if (!s)
        return nullptr;
    char* point = std::strchr(s, '.');
    if (!point)
        return s;
    char* end = s + std::strlen(s);
    while (end - 1 > point && end[-1] == '0')
        --end;
    if (end - 1 == point)
        --end;
    *end = '\0';
    return s;
}

QString* stripZeroFraction(QString* s) {
    if (!s)
        return nullptr;
    const qsizetype point = s->indexOf(QLatin1Char('.'));
    if (point < 0)
        return s;
    qsizetype end = s->size();
    while (end - 1 > point && s->at(end - 1) == QLatin1Char('0'))
        --end;
    if (end - 1 == point)
        --end;
    s->truncate(end);
    return s;
}

char* stripFraction(char* s) {
    if (!s)
        return nullptr;
    if (char* point = std::strchr(s, '.'))
        *point = '\0';
    return s;
}

bool strIncludes(const char* set, char c) {
    return set && c != '\0' && std::strchr(set, c) != nullptr;
}

char* strdupn(const char* s, short extra) {
    if (!s)
        return nullptr;
    const std::size_t length = std::strlen(s);
    char* copy = new char[length + std::max<short>(extra, 0) + 1];
    std::memcpy(copy, s, length + 1);
    return copy;
}

char* strcatdup(const char* a, const char* b) {
    if (!a || !b)
        return nullptr;
    return heapCopy(std::string(a) + b);
}

char* mem_strdup(const char* s) {
    return s ? mem_strndup(s, std::strlen(s)) : nullptr;
}

char* mem_strndup(const char* s, std::size_t length) {
    if (!s)
        return nullptr;
    char* copy = new char[length + 1];
    std::memcpy(copy, s, length);
    copy[length] = '\0';
    return copy;
}

char* strAsQuotedString(const char* s) {
    if (!s)
        return nullptr;
    std::string quoted = "\"";
    quoted.reserve(2 * std::strlen(s) + 3);
    for (; *s; ++s) {
        switch (*s) {
        case '\t':
            quoted += "\\t";
            break;
        case '\n':
            quoted += "\\n";
            break;
        case '\r':
            quoted += "\\r";
            break;
        case '"':
            quoted += "\\\"";
            break;
        case '\\':
            quoted += "\\\\";
            break;
        default:
            quoted += *s;
        }
    }
    quoted += '"';
    return heapCopy(quoted);
}

char* strExpandQuotedString(const char* s) {
    if (!s)
        return nullptr;
    if (*s == '"')
        ++s;
    std::string text;
    for (; *s && *s != '"'; ++s) {
        if (*s != '\\' || !s[1]) {
            text += *s;
            continue;
        }
        ++s;
        switch (*s) {
        case 't':
            text += '\t';
            break;
        case 'n':
            text += '\n';
            break;
        case 'r':
            text += '\r';
            break;
        default:
            text += *s;
        }
    }
    return heapCopy(text);
}

bool hasVisibleCharacters(const char* s) {
    if (!s)
        return false;
    for (; *s; ++s) {
        const auto c = static_cast<unsigned char>(*s);
        if (c >= 128 || std::isgraph(c))
            return true;
    }
    return false;
}

bool isNumericString(const char* s, bool allowFraction) {
    if (!s)
        return false;
    while (std::isspace(static_cast<unsigned char>(*s)))
        ++s;
    if (!*s)
        return false;
    if (*s == '+' || *s == '-')
        ++s;
    while (std::isdigit(static_cast<unsigned char>(*s)))
        ++s;
    if (!*s)
        return true;
    if (!allowFraction || *s != '.')
        return false;
    for (++s; *s; ++s) {
        if (!std::isdigit(static_cast<unsigned char>(*s)))
            return false;
    }
    return true;
}

char* lineNumber(int n, char* text) {
    if (!text || n < 1)
        return nullptr;
    for (int line = 1; line < n; ++line) {
        text = std::strchr(text, '\n');
        if (!text)
            return nullptr;
        ++text;
    }
    return text;
}

int numLines(const char* text) {
    if (!text)
        return 0;
    return 1 + static_cast<int>(std::count(text, text + std::strlen(text), '\n'));
}

char* strToUpper(char* s) {
    for (char* c = s; c && *c; ++c)
        *c = asciiUpper(*c);
    return s;
}

char* strToLower(char* s) {
    for (char* c = s; c && *c; ++c)
        *c = asciiLower(*c);
    return s;
}

char* strReverse(char* s) {
    if (s)
        std::reverse(s, s + std::strlen(s));
    return s;
}

char* strReplaceStr(const char* s, const char* find, const char* repl) {
    if (!s)
        return nullptr;
    if (!find)
        find = "";
    if (!repl)
        repl = "";
    constexpr int outputLimit = v_scratchSize - 1;
    constexpr int flushLimit = v_scratchSize - 2;
    int written = 0;
    const char* matched = find; // the next character of find to match
    auto put = [&written](char c, int limit) {
        if (written < limit)
            scratch[written++] = c;
    };
    for (; *s; ++s) {
        if (*matched && *s == *matched) {
            if (!*++matched) {
                for (const char* r = repl; *r; ++r)
                    put(*r, outputLimit);
                matched = find;
            }
            continue;
        }
        for (const char* p = find; p < matched; ++p)
            put(*p, flushLimit);
        matched = find;
        put(*s, outputLimit);
    }
    for (const char* p = find; p < matched; ++p)
        put(*p, outputLimit);
    scratch[written] = '\0';
    return scratch;
}

char* strExtractField(int n, const char* s, char sep) {
    if (!s)
        return nullptr;
    constexpr int copyLimit = v_scratchSize - 1;
    scratch[0] = '\0';
    int field = -1;
    int written = 0;
    for (; *s && field <= n; ++s) {
        if (*s == sep) {
            if (field == n)
                scratch[written] = '\0';
            ++field;
        } else if (field == n && written < copyLimit) {
            scratch[written++] = *s;
        }
    }
    return scratch;
}

char* incrementOfString(const char* s, int n) {
    if (!s)
        s = "";
    const int length = static_cast<int>(std::strlen(s));
    int prefix = length; // the text before the trailing digit run
    while (prefix > 0 && std::isdigit(static_cast<unsigned char>(s[prefix - 1])))
        --prefix;
    // Read as an int: a digit run beyond the int range saturates instead of wrapping, and so
    // does the sum.
    long long value = 0;
    for (int i = prefix; i < length && value <= INT_MAX; ++i)
        value = value * 10 + (s[i] - '0');
    value = std::clamp<long long>(std::min<long long>(value, INT_MAX) + n, INT_MIN, INT_MAX);

    char number[12];
    const int numberLength = std::snprintf(number, sizeof number, "%lld", value);

    // Room for the copy and one more digit ("bus9" + 1); a sum with more digits than that
    // grows the buffer further, so nothing is overrun.
    TqObject::nextStaticBuffer();
    TqObject::fitStaticBuffer(length + 2);
    char* buffer = TqObject::fitStaticBuffer(prefix + numberLength + 1);
    std::memcpy(buffer, s, static_cast<std::size_t>(prefix));
    std::memcpy(buffer + prefix, number, static_cast<std::size_t>(numberLength) + 1);
    return buffer;
}

char* asBinReversed(unsigned value, unsigned width) {
    const unsigned length = std::min(width == 0 ? 32u : width, unsigned(INT_MAX) - 1);
    TqObject::nextStaticBuffer();
    char* buffer = TqObject::fitStaticBuffer(static_cast<int>(length) + 1);
    for (unsigned i = 0; i < length; ++i) {
        buffer[i] = (value & 1u) ? '1' : '0';
        value >>= 1;
    }
    buffer[length] = '\0';
    return buffer;
}

char* asBin(unsigned value, unsigned width) {
    return strReverse(asBinReversed(value, width));
}
