#include "model/RemapArray.h"

#include <sys/mman.h>
#include <unistd.h>

#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <new>

namespace {

bool paged(std::size_t bytes) {
    return bytes >= RemapStorage::v_pagedBytes;
}

std::size_t pageBytes() {
    static const auto v_page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    return v_page;
}

std::size_t wholePages(std::size_t bytes) {
    return (bytes + pageBytes() - 1) / pageBytes() * pageBytes();
}

// Where a paged block's values start in its first page. A reader appends to the ends of many
// arrays in turn; were all of them page-aligned, equally long arrays would end at the same
// place of a page, so their last cache lines would compete for one set of the caches and
// evict each other on every append. Each block starts on its own cache line of the page.
std::size_t nextColour() {
    static std::atomic<unsigned> v_blocks{0};
    constexpr std::size_t line = 64;
    return v_blocks.fetch_add(1, std::memory_order_relaxed) * line % pageBytes();
}

std::size_t colourOf(const void* block) {
    return reinterpret_cast<std::uintptr_t>(block) % pageBytes();
}

} // namespace

void* RemapStorage::resize(void* block, std::size_t oldBytes, std::size_t usedBytes,
                           std::size_t newBytes) {
    if (newBytes == 0) {
        release(block, oldBytes);
        return nullptr;
    }
    usedBytes = std::min(usedBytes, newBytes);
    if (!paged(newBytes)) {
        void* heap = nullptr;
        if (!paged(oldBytes)) {
            heap = std::realloc(block, newBytes);
        } else if ((heap = std::malloc(newBytes)) != nullptr) {
            std::memcpy(heap, block, usedBytes);
            release(block, oldBytes);
        }
        if (!heap)
            throw std::bad_alloc();
        return heap;
    }
    if (paged(oldBytes)) {
        // The kernel moves the page table entries: nothing is copied and no page is touched.
        const std::size_t colour = colourOf(block);
        void* moved = mremap(static_cast<char*>(block) - colour, wholePages(colour + oldBytes),
                             wholePages(colour + newBytes), MREMAP_MAYMOVE);
        if (moved == MAP_FAILED)
            throw std::bad_alloc();
        return static_cast<char*>(moved) + colour;
    }
    const std::size_t colour = nextColour();
    void* pages = mmap(nullptr, wholePages(colour + newBytes), PROT_READ | PROT_WRITE,
                       MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (pages == MAP_FAILED)
        throw std::bad_alloc();
    char* values = static_cast<char*>(pages) + colour;
    if (usedBytes > 0)
        std::memcpy(values, block, usedBytes);
    std::free(block);
    return values;
}

void RemapStorage::release(void* block, std::size_t bytes) {
    if (!block)
        return;
    if (paged(bytes))
        munmap(static_cast<char*>(block) - colourOf(block), wholePages(colourOf(block) + bytes));
    else
        std::free(block);
}
