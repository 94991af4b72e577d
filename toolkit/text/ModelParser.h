#pragma once

#include "core/TqExport.h"
#include "text/BasicParser.h"

/// ModelParser: the BasicParser that application model readers start from; it carries the
/// model being read (the owner) to the reader's parse functions.
class TQ_EXPORT ModelParser : public BasicParser {
public:
    ///@{
    /// A null table means the shared default table. Neither stream nor owner is owned.
    ModelParser(std::istream& in, void* owner, ScanType* table);
    ModelParser(const char* text, void* owner, ScanType* table);
    ///@}

    /// The owner given at construction (not owned), for the application's parse functions.
    void* owner() const { return m_owner; }

private:
    void* m_owner;
};
