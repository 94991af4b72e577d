#include "text/FileElement.h"

#include "core/UserMessage.h"

#include <ostream>
#include <string>

const KeywordDescriptor FileElement::parenBracketDescriptor = {"(", -1, 0};
const KeywordDescriptor FileElement::angleBracketDescriptor = {"<", -2, 0};
const KeywordDescriptor FileElement::squareBracketDescriptor = {"[", -3, 0};

bool FileElementIterator::hasNext() const {
    return m_index < m_owner.numberOfElements();
}

FileElement& FileElementIterator::next() {
    return m_owner.element(m_index++);
}

const Token& FileElement::emptyToken() {
    static const Token empty(ST_END, "");
    return empty;
}

FileElement& FileElement::emptyElement() {
    // Never filled: the only way to change a list is addToken/addFileElement, which readers
    // of a returned element do not call.
    static MultipleFileElement empty;
    return empty;
}

SingleFileElement::SingleFileElement(const Token& token, unsigned textSize)
    : m_token(reinterpret_cast<char*>(this + 1), textSize) {
    m_token.setValue(token.text(), token.length());
    m_token.setType(token.type());
}

SingleFileElement* SingleFileElement::make(const Token& token) {
    unsigned textSize = token.length() + 1;
    return new (textSize) SingleFileElement(token, textSize);
}

std::ostream& SingleFileElement::printOn(std::ostream& out) const {
    return out << m_token.text();
}

MultipleFileElement::~MultipleFileElement() {
    for (FileElement* child : m_children)
        delete child;
}

const FileElement* MultipleFileElement::child(short index) const {
    return index >= 0 && index < childCount() ? m_children[static_cast<std::size_t>(index)]
                                              : nullptr;
}

ScanType MultipleFileElement::type(short index) const {
    const FileElement* item = child(index);
    return item ? item->type(0) : ST_END;
}

const char* MultipleFileElement::value(short index) const {
    const FileElement* item = child(index);
    return item ? item->value(0) : nullptr;
}

const Token& MultipleFileElement::token(short index) const {
    const FileElement* item = child(index);
    return item ? item->token(0) : emptyToken();
}

short MultipleFileElement::numberOfElements() const {
    return static_cast<short>(childCount() > 32767 ? 32767 : childCount());
}

FileElement& MultipleFileElement::element(int index) {
    return index >= 0 && index < childCount() ? *m_children[static_cast<std::size_t>(index)]
                                              : emptyElement();
}

std::ostream& MultipleFileElement::printOn(std::ostream& out) const {
    if (key())
        out << key();
    out << '(';
    for (std::size_t i = 0; i < m_children.size(); ++i) {
        if (i > 0)
            out << ',';
        m_children[i]->printOn(out);
    }
    return out << ')';
}

void MultipleFileElement::addToken(const Token& token) {
    adopt(SingleFileElement::make(token));
}

void MultipleFileElement::addFileElement(FileElement& element) {
    adopt(&element);
}

// Most lists hold a few items (a keyword's arguments), so the first addition makes room for
// four at once rather than growing one by one.
void MultipleFileElement::adopt(FileElement* element) {
    if (m_children.empty())
        m_children.reserve(4);
    m_children.push_back(element);
}

bool FileSection::badSectionNotifier(const char* message, short number) {
    std::string text = message ? message : "";
    if (number != 0)
        text += std::to_string(number);
    if (text.size() > 255)
        text.resize(255);
    bool answer = false;
    return showUserMessage(text.c_str(), nullptr, true, false, false, answer);
}
