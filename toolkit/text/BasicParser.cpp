#include "text/BasicParser.h"

#include "core/PdToolkit.h"
#include "core/StringFunctions.h"
#include "core/ToolkitStrings.h"

#include <string>

BasicParser::BasicParser(ScanType* table) : Scanner(table) {}

BasicParser::BasicParser(std::istream& in, ScanType* table) : Scanner(in, table) {}

BasicParser::BasicParser(const char* text, ScanType* table) : Scanner(text, table) {}

BasicParser::BasicParser(const char* text, HC_<ScannerKeyword>* keywords, ScanType* table)
    : Scanner(text, keywords, table) {}

BasicParser::~BasicParser() = default;

bool BasicParser::match(ScanType t) {
    if (hasError())
        return false;
    if (token().type() != t) {
        const char* prefix = PdToolkit::loadString(IDS_SYNTAXERROR);
        std::string message = prefix ? prefix : "";
        message += scanTypeText(t);
        message += '\'';
        error(message.c_str(), PARSER_ERROR_SYNTAX);
        return false;
    }
    advance();
    return true;
}

void BasicParser::error(const char* message, ParserErrorLevel level) {
    m_errorMessage.reset(mem_strdup(message ? message : ""));
    m_errorLevel = level;
}

void BasicParser::clearError() {
    m_errorMessage.reset();
}
