/// \file
/// The items a FileParser reads from a sectioned file: single tokens, bracketed lists (with
/// the keyword they belong to) and whole sections, and the descriptor records that name the
/// keywords and sections a parser knows.
#pragma once

#include "core/TqExport.h"
#include "core/TqObject.h"
#include "text/Token.h"

#include <cstddef>
#include <memory>
#include <new>

/// A keyword or bracket a parser knows; tables of them end with a record whose name is null.
struct KeywordDescriptor {
    const char* name; ///< The keyword as written in files (a static string); null ends a table.
    short id;         ///< What FileElement::id() answers for an element made for it.
    /// Free for the application (the toolkit's own descriptors hold 0).
    long data;
};

/// A section a parser knows: its name, the id its parse is given, and the cleanUp pass in which
/// a kept section is processed.
struct SectionDescriptor {
    const char* name; ///< The section's title as written in files (a static string).
    short id;         ///< Handed to the parse of the section.
    short pass;       ///< The cleanUp pass (from 0) in which a kept section is processed.
};

class FileElement;

/// Walks the child elements of a FileElement.
class TQ_EXPORT FileElementIterator {
public:
    /// Starts before the first child of owner, which must outlive the iterator.
    explicit FileElementIterator(FileElement& owner) : m_owner(owner) {}
    /// True while owner has a child after the ones returned so far.
    bool hasNext() const;
    /// The next child; only while hasNext().
    FileElement& next();

private:
    FileElement& m_owner;
    int m_index = 0;
};

/// Any item of a file. Reading an index past the last element is not an error, since the count
/// comes from the file: type gives `end`, value null, token an empty `end` token and element an
/// empty list, so readers check numberOfElements() where the shape matters.
class TQ_EXPORT FileElement : public TqObject {
public:
    ///@{
    /// Elements come from small per-thread pools of recycled blocks: a large read builds and
    /// frees millions of them, which the general heap serves much more slowly.
    static void* operator new(std::size_t size);
    static void operator delete(void* block);
    ///@}

    static const KeywordDescriptor parenBracketDescriptor;  ///< "(", -1
    static const KeywordDescriptor angleBracketDescriptor;  ///< "<", -2
    static const KeywordDescriptor squareBracketDescriptor; ///< "[", -3

    ///@{
    /// The keyword text (static, from the descriptor) or null.
    virtual const char* key() const = 0;
    virtual short id() const = 0;
    virtual ScanType type(short index) const = 0;
    ///@}
    ///@{
    /// The text of an item, in place in the element; null past the end.
    virtual const char* value(short index) const = 0;
    virtual const Token& token(short index) const = 0;
    virtual short numberOfElements() const = 0;
    virtual FileElement& element(int index) = 0;
    FileElementIterator iterator() { return FileElementIterator(*this); }
    ///@}

protected:
    ///@{
    /// Process-wide empty values for an index out of range: a token of type ST_END with empty
    /// text, and a list without items.
    static const Token& emptyToken();
    static FileElement& emptyElement();
    ///@}
};

/// One token (a copy) as an item: it is its own only element.
class TQ_EXPORT SingleFileElement : public FileElement {
public:
    /// An element over its own heap copy of the token's text.
    explicit SingleFileElement(const Token& token) : m_token(token) {}
    /// A new element whose copy of the token's text lives in the same heap block, which halves
    /// the allocations of a large read; the caller deletes it as any other element.
    static SingleFileElement* make(const Token& token);

    using FileElement::operator new;
    using FileElement::operator delete;
    ///@{
    /// One block for the element and extra bytes after it (make keeps the text there).
    static void* operator new(std::size_t size, unsigned extra);
    static void operator delete(void* block, unsigned extra);
    ///@}

    const char* key() const override { return nullptr; }
    short id() const override { return 0; }
    ScanType type(short) const override { return m_token.type(); }
    const char* value(short) const override { return m_token.text(); }
    const Token& token(short) const override { return m_token; }
    short numberOfElements() const override { return 1; }
    FileElement& element(int) override { return *this; }
    std::ostream& printOn(std::ostream& out) const override;

private:
    struct InBlock {};
    /// Over a copy of token's text in the bytes that follow the element in its block.
    SingleFileElement(const Token& token, InBlock)
        : m_token(token, reinterpret_cast<char*>(this + 1)) {}

    Token m_token;
};

/// A bracketed list of items, owned, with the descriptor of the keyword or bracket it was made
/// for (null for none). type, value and token of index i are those of child i (its first item).
class TQ_EXPORT MultipleFileElement : public FileElement {
public:
    /// An empty list for descriptor (not owned; a static table entry, or null).
    explicit MultipleFileElement(const KeywordDescriptor* descriptor = nullptr)
        : m_descriptor(descriptor) {}
    ~MultipleFileElement() override;
    MultipleFileElement(const MultipleFileElement&) = delete;
    MultipleFileElement& operator=(const MultipleFileElement&) = delete;

    const char* key() const override { return m_descriptor ? m_descriptor->name : nullptr; }
    short id() const override { return m_descriptor ? m_descriptor->id : 0; }
    ScanType type(short index) const override;
    const char* value(short index) const override;
    const Token& token(short index) const override;
    short numberOfElements() const override;
    FileElement& element(int index) override;
    std::ostream& printOn(std::ostream& out) const override;

    /// The descriptor given at construction, or null.
    const KeywordDescriptor* descriptor() const { return m_descriptor; }
    /// Appends a SingleFileElement over a copy of token.
    void addToken(const Token& token);
    /// Appends element and takes ownership of it.
    void addFileElement(FileElement& element);

private:
    const FileElement* child(short index) const;
    void adopt(std::unique_ptr<FileElement> element);

    const KeywordDescriptor* m_descriptor;
    ///@{
    /// Most lists hold a keyword's few arguments, so the first children live in the element
    /// itself and only longer lists take an array from the heap.
    static constexpr std::size_t v_inlineChildren = 4;
    std::unique_ptr<FileElement> m_inline[v_inlineChildren];
    std::unique_ptr<std::unique_ptr<FileElement>[]> m_grown;
    std::unique_ptr<FileElement>* m_children = m_inline;
    std::size_t m_count = 0;
    std::size_t m_capacity = v_inlineChildren;
    ///@}
};

/// A whole section of a file: its items and its descriptor.
class TQ_EXPORT FileSection : public MultipleFileElement {
public:
    /// An empty section for descriptor, which must outlive it (a static table entry).
    explicit FileSection(const SectionDescriptor& descriptor) : m_section(descriptor) {}

    ///@{
    /// The descriptor's name (a static string) and the descriptor itself.
    const char* sectionTitle() const { return m_section.name; }
    const SectionDescriptor& sectionDescriptor() const { return m_section; }
    ///@}

    /// Shows message, followed by number in decimal unless it is 0, cut to 255 characters,
    /// through showUserMessage as an error; returns what showUserMessage returns.
    static bool badSectionNotifier(const char* message, short number);

private:
    const SectionDescriptor& m_section;
};
