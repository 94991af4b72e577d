#include "text/FileElement.h"

#include "core/UserMessage.h"

#include <algorithm>
#include <cstddef>
#include <new>
#include <ostream>
#include <string>

// Under AddressSanitizer every element goes to the general heap, so that a use after free
// of an element is still caught rather than hidden by a recycled block.
#if defined(__SANITIZE_ADDRESS__)
#define TQ_ELEMENT_POOL 0
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define TQ_ELEMENT_POOL 0
#endif
#endif
#ifndef TQ_ELEMENT_POOL
#define TQ_ELEMENT_POOL 1
#endif

namespace {

// Recycles element blocks by size class (16-byte steps up to 256 bytes). Each block starts
// with a header holding its class, so that the unsized delete of an element finds its way
// back; larger blocks go to the general heap. A class keeps at most v_maxKept free blocks,
// so that a finished read does not hold its peak memory for good.
class ElementPool {
public:
    ~ElementPool() {
        for (Free*& list : m_free)
            while (list) {
                Free* next = list->next;
                ::operator delete(list);
                list = next;
            }
    }

    void* allocate(std::size_t size) {
        std::size_t sizeClass = (size + v_header + v_step - 1) / v_step;
        void* block;
        if (TQ_ELEMENT_POOL && sizeClass < v_classes && m_free[sizeClass]) {
            Free* head = m_free[sizeClass];
            m_free[sizeClass] = head->next;
            --m_kept[sizeClass];
            block = head;
        } else {
            block = ::operator new(sizeClass < v_classes ? sizeClass * v_step : size + v_header);
        }
        *static_cast<std::size_t*>(block) = sizeClass;
        return static_cast<char*>(block) + v_header;
    }

    void release(void* object) {
        if (!object)
            return;
        void* block = static_cast<char*>(object) - v_header;
        std::size_t sizeClass = *static_cast<std::size_t*>(block);
        if (!TQ_ELEMENT_POOL || sizeClass >= v_classes || m_kept[sizeClass] >= v_maxKept) {
            ::operator delete(block);
            return;
        }
        auto* free = static_cast<Free*>(block);
        free->next = m_free[sizeClass];
        m_free[sizeClass] = free;
        ++m_kept[sizeClass];
    }

private:
    struct Free {
        Free* next;
    };
    static constexpr std::size_t v_header = alignof(std::max_align_t);
    static constexpr std::size_t v_step = 16;
    static constexpr std::size_t v_classes = 17;
    static constexpr std::size_t v_maxKept = 8192;

    Free* m_free[v_classes] = {};
    std::size_t m_kept[v_classes] = {};
};

// The initial-exec model reaches the pool with one thread-pointer load instead of a call per
// element. It holds because the library is linked into the application at start-up, and a
// later dlopen() would still find room in the static TLS surplus for this small object.
ElementPool& pool() {
    [[gnu::tls_model("initial-exec")]] thread_local ElementPool elements;
    return elements;
}

} // namespace

void* FileElement::operator new(std::size_t size) {
    return pool().allocate(size);
}

void FileElement::operator delete(void* block) {
    pool().release(block);
}

void* SingleFileElement::operator new(std::size_t size, unsigned extra) {
    return pool().allocate(size + extra);
}

void SingleFileElement::operator delete(void* block, unsigned) {
    pool().release(block);
}

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

SingleFileElement* SingleFileElement::make(const Token& token) {
    return new (token.length() + 1) SingleFileElement(token, InBlock{});
}

std::ostream& SingleFileElement::printOn(std::ostream& out) const {
    return out << m_token.text();
}

MultipleFileElement::~MultipleFileElement() = default;

const FileElement* MultipleFileElement::child(short index) const {
    return index >= 0 && static_cast<std::size_t>(index) < m_count ? m_children[index].get()
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
    return static_cast<short>(m_count > 32767 ? 32767 : m_count);
}

FileElement& MultipleFileElement::element(int index) {
    return index >= 0 && static_cast<std::size_t>(index) < m_count ? *m_children[index]
                                                                   : emptyElement();
}

std::ostream& MultipleFileElement::printOn(std::ostream& out) const {
    if (key())
        out << key();
    out << '(';
    for (std::size_t i = 0; i < m_count; ++i) {
        if (i > 0)
            out << ',';
        m_children[i]->printOn(out);
    }
    return out << ')';
}

void MultipleFileElement::addToken(const Token& token) {
    adopt(std::unique_ptr<FileElement>(SingleFileElement::make(token)));
}

void MultipleFileElement::addFileElement(FileElement& element) {
    adopt(std::unique_ptr<FileElement>(&element));
}

void MultipleFileElement::adopt(std::unique_ptr<FileElement> element) {
    if (m_count == m_capacity) {
        auto grown = std::make_unique<std::unique_ptr<FileElement>[]>(2 * m_capacity);
        std::move(m_children, m_children + m_count, grown.get());
        m_grown = std::move(grown);
        m_children = m_grown.get();
        m_capacity *= 2;
    }
    m_children[m_count++] = std::move(element);
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
