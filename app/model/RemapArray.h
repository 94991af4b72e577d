/// RemapArray: a growable array of plain values (times, states, value words) whose large
/// storage lives in its own pages and grows by remapping them, so growing never copies the
/// values nor touches pages that are not written.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <type_traits>
#include <utility>

/// The storage below RemapArray: blocks from the heap while small, whole private pages from
/// v_pagedBytes on.
class RemapStorage {
public:
    /// Storage of newBytes holding the first usedBytes of block (of oldBytes, from this
    /// function; null for none), which is given up; null for 0 bytes. Throws std::bad_alloc
    /// when memory is exhausted, as the standard containers do.
    static void* resize(void* block, std::size_t oldBytes, std::size_t usedBytes,
                        std::size_t newBytes);
    /// Gives up block (of bytes, from resize).
    static void release(void* block, std::size_t bytes);
    /// From this size on a block is pages of its own that grow in place or move without a copy.
    static constexpr std::size_t v_pagedBytes = 256 * 1024;
};

template <typename T>
class RemapArray {
    static_assert(std::is_trivially_copyable_v<T> && std::is_trivially_destructible_v<T>);

public:
    RemapArray() = default;
    RemapArray(const RemapArray& other) { *this = other; }
    RemapArray(RemapArray&& other) noexcept { swap(other); }
    RemapArray& operator=(const RemapArray& other) {
        if (this != &other) {
            clear();
            reserve(other.m_size);
            if (other.m_size > 0)
                std::memcpy(m_data, other.m_data, other.m_size * sizeof(T));
            m_size = other.m_size;
        }
        return *this;
    }
    RemapArray& operator=(RemapArray&& other) noexcept {
        RemapArray gone(std::move(other));
        swap(gone);
        return *this;
    }
    ~RemapArray() { RemapStorage::release(m_data, m_capacity * sizeof(T)); }
    void swap(RemapArray& other) noexcept {
        std::swap(m_data, other.m_data);
        std::swap(m_size, other.m_size);
        std::swap(m_capacity, other.m_capacity);
    }

    // --- Queries ----------------------------------------------------------------------------
    std::size_t size() const { return m_size; }
    std::size_t capacity() const { return m_capacity; }
    bool empty() const { return m_size == 0; }
    T* data() { return m_data; }
    const T* data() const { return m_data; }
    T* begin() { return m_data; }
    T* end() { return m_data + m_size; }
    const T* begin() const { return m_data; }
    const T* end() const { return m_data + m_size; }
    T& operator[](std::size_t index) { return m_data[index]; }
    const T& operator[](std::size_t index) const { return m_data[index]; }
    T& back() { return m_data[m_size - 1]; }
    const T& back() const { return m_data[m_size - 1]; }
    bool operator==(const RemapArray& other) const {
        return m_size == other.m_size && std::equal(begin(), end(), other.begin());
    }

    // --- Changes ----------------------------------------------------------------------------
    void push_back(const T& value) {
        if (m_size == m_capacity)
            grow(m_size + 1);
        m_data[m_size++] = value;
    }
    /// Sets the size: values added are zero-filled. Returns the first value added (the end
    /// when none is).
    T* resize(std::size_t size) {
        if (size > m_capacity)
            grow(size);
        if (size > m_size)
            std::memset(static_cast<void*>(m_data + m_size), 0, (size - m_size) * sizeof(T));
        T* first = m_data + std::min(m_size, size);
        m_size = size;
        return first;
    }
    /// Appends count values left unset, for the caller to set, and returns the first.
    T* extend(std::size_t count) {
        if (m_size + count > m_capacity)
            grow(m_size + count);
        m_size += count;
        return m_data + m_size - count;
    }
    /// Inserts count copies of value before position (at most size()).
    void insert(std::size_t position, std::size_t count, const T& value) {
        if (count == 0)
            return;
        if (m_size + count > m_capacity)
            grow(m_size + count);
        std::memmove(static_cast<void*>(m_data + position + count), m_data + position,
                     (m_size - position) * sizeof(T));
        std::fill(m_data + position, m_data + position + count, value);
        m_size += count;
    }
    /// Removes the values [from, to).
    void erase(std::size_t from, std::size_t to) {
        if (to == from)
            return;
        std::memmove(static_cast<void*>(m_data + from), m_data + to, (m_size - to) * sizeof(T));
        m_size -= to - from;
    }
    /// Room for count values in all.
    void reserve(std::size_t count) {
        if (count > m_capacity)
            setCapacity(count);
    }
    /// Removes every value and gives the storage up.
    void clear() {
        RemapStorage::release(m_data, m_capacity * sizeof(T));
        m_data = nullptr;
        m_size = m_capacity = 0;
    }

private:
    // Doubling: remapped pages cost nothing to move, and pages never written are never
    // resident.
    void grow(std::size_t least) {
        setCapacity(std::max<std::size_t>({least, 2 * m_capacity, 16}));
    }
    void setCapacity(std::size_t count) {
        m_data = static_cast<T*>(RemapStorage::resize(m_data, m_capacity * sizeof(T),
                                                      m_size * sizeof(T), count * sizeof(T)));
        m_capacity = count;
    }

    T* m_data = nullptr;
    std::size_t m_size = 0;
    std::size_t m_capacity = 0;
};
