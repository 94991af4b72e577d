#pragma once

#include "core/TqExport.h"

#include <string>

using HINSTANCE = void*;

/// piModule: module handles. A handle names a loaded module (the program or a shared
/// library); on POSIX it is the module's load address as dladdr reports it.
class TQ_EXPORT piModule {
public:
    /// The handle of the module that contains the given code or data address, or null.
    static HINSTANCE containing(const void* address);
    /// The handle of the toolkit library itself.
    static HINSTANCE toolkit();
    /// The file of the module that contains the address, or "" when it cannot be told.
    static std::string fileContaining(const void* address);
};
