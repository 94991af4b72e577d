#pragma once

#include "core/TqExport.h"
#include "text/BasicParser.h"
#include "text/FileElement.h"

#include <cstddef>
#include <iosfwd>
#include <vector>

class TqObject;

/// FileParser: reads a sectioned data or settings file section by section into FileElement
/// trees and hands each section to hooks that an application parser overrides. Its static
/// writers write the same syntax: `Name( keyword(1,"2") word -3 [a b] <c> ) ...`
class TQ_EXPORT FileParser : public BasicParser {
public:
    /// Brackets nested deeper than this are a syntax error, so that no input can exhaust the
    /// stack.
    static constexpr int v_maxNesting = 200;

    ///@{
    /// sections: known sections, ended by a null pointer; keywords: known keywords, ended by a
    /// record with a null name. Neither is owned; both must outlive the parser. owner is kept
    /// for the hooks.
    FileParser(std::istream& in, void* owner, SectionDescriptor** sections,
               KeywordDescriptor* keywords);
    FileParser(const char* text, void* owner, SectionDescriptor** sections,
               KeywordDescriptor* keywords);
    ~FileParser() override;
    ///@}

    /// Parses the whole input, then returns cleanUp(passes). A syntax error ends the input
    /// there (the sections before it are still processed; hasError() tells). False as soon as
    /// a section that is processed at once is rejected, or when the task is cancelled.
    [[nodiscard]] bool read(short passes);
    /// Hands every kept section to processKept, pass by pass (pass 0 to passes - 1), in the
    /// order kept; false if any call returned false, but all calls are made.
    [[nodiscard]] bool cleanUp(short passes);

    /// The owner given at construction (not owned), for the application's parse functions.
    void* owner() const { return m_owner; }
    /// The sections kept for cleanUp, owned by the parser.
    const std::vector<FileSection*>& keptSections() const { return m_kept; }

    // --- Writers: the syntax this parser reads ---------------------------------------------------
    /// keyword, then "(" a if a is given, "," b if b is given, "," c if c is given, ")" if a
    /// was given, and always one blank. So b without a is written without brackets; files
    /// written that way exist and read back as they were written.
    static void storeKeyword(std::ostream& out, const char* keyword, const char* a = nullptr,
                             const char* b = nullptr, const char* c = nullptr);
    /// keyword(a,b,c) followed by a blank, each argument written by its storeOn.
    static void storeKeyword(std::ostream& out, const char* keyword, const TqObject& a,
                             const TqObject& b, const TqObject& c);
    /// keyword, then "(" value in quoted form ")" if value is given, then a blank.
    static void storeKeywordQuotedString(std::ostream& out, const char* keyword, const char* value);
    /// value in the default stream format (locale-independent) between double quotes, in the
    /// next static ring buffer.
    static const char* convertToString(double value);

protected:
    /// The descriptor of a section name, or null.
    SectionDescriptor* sectionDescriptor(const char* name) const;
    /// The descriptor of a keyword (exact case), or null.
    const KeywordDescriptor* keywordDescriptor(const Token& token) const;
    /// Skips a bracketed list from its opener, nesting over (), [] and <>.
    void skipBrackets(ScanType open, ScanType close);
    /// The current token's text and the raw characters after it up to the next white space, as
    /// one `string` item (unquoted if it begins with a double quote); the caller owns it.
    SingleFileElement& parseString();

    /// Finds and reads the next known section; null at end of input or on a syntax error. The
    /// caller owns the section.
    virtual FileSection* parseSection();
    /// Reads a list from open to close into list (a new one if null, which the caller then
    /// owns) and returns it; id is passed to the item filter.
    virtual MultipleFileElement* parseBrackets(ScanType open, ScanType close,
                                               MultipleFileElement* list, short id);
    /// Reads a keyword and its optional bracketed arguments; the caller owns the result.
    virtual MultipleFileElement* parseKeyword(const KeywordDescriptor& descriptor);

    /// The hooks; the toolkit's versions do nothing and return false.
    /// Whether a section is processed as soon as it is read.
    virtual bool processNowTest(const SectionDescriptor& descriptor);
    /// Processes a section at once; false rejects it and ends read with false.
    virtual bool processNow(FileSection& section);
    /// Whether a section is kept for cleanUp.
    virtual bool keepTest(const SectionDescriptor& descriptor);
    /// Processes a kept section during cleanUp.
    virtual bool processKept(FileSection& section);
    /// Offered every token of a list before the parser handles it; true means the hook took it
    /// (and advanced past what it used).
    virtual bool itemFilter(MultipleFileElement& list, ScanType type, short id);

private:
    /// Descriptors by name. Every word of a list is looked up, and most are not names, so this
    /// is open addressing with a hash of a name's length and end characters, not a general map.
    template <class Descriptor>
    class NameIndex {
    public:
        ///@{
        /// A name listed twice keeps its first descriptor.
        void add(const char* name, Descriptor* descriptor);
        Descriptor* find(const char* text, std::size_t length) const;
        ///@}

    private:
        struct Slot {
            const char* name = nullptr;
            std::size_t length = 0;
            Descriptor* descriptor = nullptr;
        };
        static std::size_t hash(const char* text, std::size_t length);
        /// False if the name is there already.
        bool place(const Slot& slot);

        std::vector<Slot> m_slots;
        std::size_t m_used = 0;
    };

    void loadTables(KeywordDescriptor* keywords);
    bool enterNesting();

    void* m_owner;
    SectionDescriptor** m_sections;
    NameIndex<KeywordDescriptor> m_keywords;
    NameIndex<SectionDescriptor> m_sectionNames;
    std::vector<FileSection*> m_kept;
    Token m_signedNumber;
    int m_nesting = 0;
};
