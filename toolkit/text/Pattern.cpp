#include "text/Pattern.h"

#include "core/StringFunctions.h"

#include <cassert>
#include <cstring>
#include <ostream>
#include <utility>

Pattern::Pattern() = default;

Pattern::Pattern(const char* text) : m_text(mem_strdup(text)) {}

Pattern::Pattern(const Pattern& other) : TqObject(other), m_text(mem_strdup(other.m_text.get())) {
    copyChainFrom(other);
}

Pattern& Pattern::operator=(const Pattern& other) {
    if (this != &other) {
        Pattern copy(other);
        *this = std::move(copy);
    }
    return *this;
}

Pattern::Pattern(Pattern&& other) noexcept
    : TqObject(other), m_first(std::move(other.m_first)),
      m_last(std::exchange(other.m_last, nullptr)), m_text(std::move(other.m_text)) {}

Pattern& Pattern::operator=(Pattern&& other) noexcept {
    if (this != &other) {
        m_first = std::move(other.m_first);
        m_last = std::exchange(other.m_last, nullptr);
        m_text = std::move(other.m_text);
    }
    return *this;
}

Pattern::~Pattern() = default;

void Pattern::copyChainFrom(const Pattern& other) {
    for (const PatternElement* element = other.m_first.get(); element != nullptr;
         element = element->m_next.get()) {
        addElement(element->copy());
    }
}

void Pattern::setPattern(const char* text) {
    std::unique_ptr<char[]> copy(mem_strdup(text));
    cleanup();
    m_text = std::move(copy);
}

void Pattern::addElement(PatternElement* element) {
    assert(element != nullptr && "Pattern::addElement needs an element");
    if (m_last != nullptr) {
        m_last->m_next.reset(element);
    } else {
        m_first.reset(element);
    }
    m_last = element;
    while (m_last->m_next != nullptr) {
        m_last = m_last->m_next.get();
    }
}

void Pattern::cleanup() {
    m_first.reset(); // an element deletes the rest of its chain
    m_last = nullptr;
    m_text.reset();
}

void Pattern::removeLeadingPatterns(int n) {
    for (; n > 0 && m_first != nullptr; --n) {
        m_first = std::move(m_first->m_next);
    }
    if (m_first == nullptr) {
        m_last = nullptr;
    }
}

bool Pattern::completeMatch(const char* s) const {
    if (m_first == nullptr || m_text == nullptr || s == nullptr) {
        return false;
    }
    const char* end = m_first->match(s);
    return end != nullptr && *end == '\0';
}

const char* Pattern::longestMatch(const char* s) const {
    if (m_first == nullptr || m_text == nullptr) {
        return s;
    }
    return m_first->match(s);
}

std::ostream& Pattern::printOn(std::ostream& out) const {
    return out << (m_text != nullptr ? m_text.get() : "");
}

bool CharCompare::operator()(const char* a, const char* b) const {
    if (a == nullptr || b == nullptr) {
        return a == nullptr && b != nullptr;
    }
    return std::strcmp(a, b) < 0;
}
