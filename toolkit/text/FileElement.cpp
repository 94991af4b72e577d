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

std::ostream& SingleFileElement::printOn(std::ostream& out) const {
    return out << m_token.text();
}

MultipleFileElement::~MultipleFileElement() {
    m_children.deleteContents();
}

const FileElement* MultipleFileElement::child(short index) const {
    return index >= 0 && index < m_children.size() ? m_children.at(index) : nullptr;
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
    return static_cast<short>(m_children.size() > 32767 ? 32767 : m_children.size());
}

FileElement& MultipleFileElement::element(int index) {
    return index >= 0 && index < m_children.size() ? *m_children.at(index) : emptyElement();
}

std::ostream& MultipleFileElement::printOn(std::ostream& out) const {
    if (key())
        out << key();
    out << '(';
    for (int i = 0; i < m_children.size(); ++i) {
        if (i > 0)
            out << ',';
        m_children.at(i)->printOn(out);
    }
    return out << ')';
}

void MultipleFileElement::addToken(const Token& token) {
    m_children.add(new SingleFileElement(token));
}

void MultipleFileElement::addFileElement(FileElement& element) {
    m_children.add(&element);
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
