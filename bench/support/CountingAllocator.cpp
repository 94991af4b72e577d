#include "CountingAllocator.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {
std::atomic<long> v_allocations{0};
} // namespace

long allocationCount() {
    return v_allocations.load(std::memory_order_relaxed);
}

void* operator new(std::size_t size) {
    v_allocations.fetch_add(1, std::memory_order_relaxed);
    if (void* p = std::malloc(size ? size : 1))
        return p;
    throw std::bad_alloc();
}

void operator delete(void* p) noexcept {
    std::free(p);
}

void operator delete(void* p, std::size_t) noexcept {
    std::free(p);
}
