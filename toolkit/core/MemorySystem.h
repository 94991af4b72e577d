#pragma once

#include "core/TqExport.h"

#include <cstddef>

/// MemorySystem: heap statistics for diagnostics. An instance reports, when it is destroyed,
/// how far the heap in use moved during its lifetime.
class TQ_EXPORT MemorySystem {
public:
    MemorySystem();
    ~MemorySystem();
    MemorySystem(const MemorySystem&) = delete;
    MemorySystem& operator=(const MemorySystem&) = delete;

    /// Bytes of heap in use by the C allocator right now (0 where an instrumented allocator,
    /// such as a sanitizer's, keeps no such figures).
    static std::size_t bytesInUse();
    /// Writes "<label>: <bytes> bytes in use, <bytes> bytes held" through the debug print at
    /// level DBG_INFO.
    static void displayMemStats(const char* label);

private:
    std::size_t m_startBytes;
};
