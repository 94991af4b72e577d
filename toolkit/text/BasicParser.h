#pragma once

#include "core/TqExport.h"
#include "text/Scanner.h"

/// How severe a recorded parser error is; match records syntax errors at level 2.
enum ParserErrorLevel {
    PARSER_ERROR_FATAL = 0,
    PARSER_ERROR_SEVERE = 1,
    PARSER_ERROR_SYNTAX = 2,
    PARSER_ERROR_NOTE = 3,
};

/// BasicParser: a Scanner with the current-token / match / advance / error discipline of a
/// recursive-descent parser. It keeps the first error and stops there.
class TQ_EXPORT BasicParser : public Scanner {
public:
    ///@{
    /// As the Scanner constructors; nothing is scanned yet.
    explicit BasicParser(ScanType* table = nullptr);
    BasicParser(std::istream& in, ScanType* table);
    BasicParser(const char* text, ScanType* table);
    BasicParser(const char* text, HC_<ScannerKeyword>* keywords, ScanType* table);
    ///@}
    BasicParser(const BasicParser&) = delete;
    BasicParser& operator=(const BasicParser&) = delete;
    ~BasicParser() override;

    /// Scans the next token unless an error is pending.
    void advance() {
        if (!hasError())
            scanToken();
    }
    /// True, and advances, if the current token is of type t. Otherwise records "Syntax error:
    /// expected '<display text of t>'" at level 2 and returns false; with an error pending it
    /// returns false at once without scanning.
    [[nodiscard]] bool match(ScanType t);
    /// Records message (copied; null records an empty message) and level, replacing any
    /// previous error.
    void error(const char* message, ParserErrorLevel level);

    /// True once an error is recorded; the parser then scans no further.
    bool hasError() const { return m_errorMessage != nullptr; }
    ///@{
    /// The pending error message, in place (owned by the parser), or null.
    const char* errorMessage() const { return m_errorMessage.get(); }
    ParserErrorLevel errorLevel() const { return m_errorLevel; }
    ///@}
    /// Forgets the pending error, so that parsing may go on.
    void clearError();

private:
    std::unique_ptr<char[]> m_errorMessage;
    ParserErrorLevel m_errorLevel = PARSER_ERROR_SYNTAX;
};
