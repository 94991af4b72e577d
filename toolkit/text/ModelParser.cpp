#include "text/ModelParser.h"

ModelParser::ModelParser(std::istream& in, void* owner, ScanType* table)
    : BasicParser(in, table), m_owner(owner) {}

ModelParser::ModelParser(const char* text, void* owner, ScanType* table)
    : BasicParser(text, table), m_owner(owner) {}
