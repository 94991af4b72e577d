#include "core/MemorySystem.h"

#include "core/DebugPrint.h"

#include <malloc.h>

namespace {
struct HeapFigures {
    std::size_t inUse;
    std::size_t held;
};

HeapFigures heapFigures() {
    const struct mallinfo2 info = mallinfo2();
    return {info.uordblks + info.hblkhd, info.arena + info.hblkhd};
}
} // namespace

MemorySystem::MemorySystem() : m_startBytes(bytesInUse()) {}

MemorySystem::~MemorySystem() {
    const long long change =
        static_cast<long long>(bytesInUse()) - static_cast<long long>(m_startBytes);
    Printf(DBG_INFO, "MemorySystem: heap in use changed by %lld bytes\n", change);
}

std::size_t MemorySystem::bytesInUse() {
    return heapFigures().inUse;
}

void MemorySystem::displayMemStats(const char* label) {
    const HeapFigures figures = heapFigures();
    Printf(DBG_INFO, "%s: %zu bytes in use, %zu bytes held\n", label ? label : "memory",
           figures.inUse, figures.held);
}
