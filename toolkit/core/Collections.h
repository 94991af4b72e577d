/// \file
/// OC_ and HC_: the toolkit's ordered and hashed collections of object pointers, thin
/// templates over the standard containers. Neither owns its elements unless told to delete
/// them with deleteContents().
#pragma once

#include <algorithm>
#include <cassert>
#include <string>
#include <unordered_map>
#include <vector>

/// An ordered collection of T*, in insertion order unless inserted at a position.
template <class T>
class OC_ {
public:
    using iterator = typename std::vector<T*>::iterator;             ///< Over T* in order.
    using const_iterator = typename std::vector<T*>::const_iterator; ///< Over T* in order.

    /// Appends item (not owned); an item may be added more than once.
    void add(T* item) { m_items.push_back(item); }
    /// Inserts item before position index (0 to size()).
    void insertAt(int index, T* item) {
        assert(index >= 0 && index <= size() && "OC_::insertAt: index out of range");
        m_items.insert(m_items.begin() + index, item);
    }
    ///@{
    /// Removes the first occurrence; false if the item is not in the collection.
    bool remove(T* item) {
        auto found = std::find(m_items.begin(), m_items.end(), item);
        if (found == m_items.end())
            return false;
        m_items.erase(found);
        return true;
    }
    T* removeAt(int index) {
        assert(index >= 0 && index < size() && "OC_::removeAt: index out of range");
        T* item = m_items[index];
        m_items.erase(m_items.begin() + index);
        return item;
    }
    ///@}
    ///@{
    /// The position of the first occurrence, or -1.
    int indexOf(const T* item) const {
        auto found = std::find(m_items.begin(), m_items.end(), item);
        return found == m_items.end() ? -1 : static_cast<int>(found - m_items.begin());
    }
    bool contains(const T* item) const { return indexOf(item) >= 0; }
    ///@}

    ///@{
    /// The number of elements, and whether there are none.
    int size() const { return static_cast<int>(m_items.size()); }
    bool isEmpty() const { return m_items.empty(); }
    ///@}
    ///@{
    /// The element at index (0 to size() - 1).
    T* at(int index) const {
        assert(index >= 0 && index < size() && "OC_::at: index out of range");
        return m_items[index];
    }
    T* operator[](int index) const { return at(index); }
    ///@}

    /// Forgets every element without deleting it.
    void clear() { m_items.clear(); }
    /// Deletes every element, then empties the collection.
    void deleteContents() {
        for (T* item : m_items)
            delete item;
        m_items.clear();
    }

    ///@{
    /// The elements in order, for range-for; adding or removing invalidates the iterators.
    iterator begin() { return m_items.begin(); }
    iterator end() { return m_items.end(); }
    const_iterator begin() const { return m_items.begin(); }
    const_iterator end() const { return m_items.end(); }
    ///@}

private:
    std::vector<T*> m_items;
};

/// A hashed collection of T*, keyed by the text that a key extractor reads from each element.
/// Keys compare exactly (case-sensitive); callers that want case-insensitive keys store and
/// look up a normalised form.
template <class T>
class HC_ {
public:
    /// Gives an element's key (a NUL-terminated string, copied when the element is added).
    using KeyExtractor = const char* (*)(const T&);

    /// An empty collection whose keys keyOf reads.
    explicit HC_(KeyExtractor keyOf) : m_keyOf(keyOf) {}

    /// Adds the element under its key. False, and nothing changes, if the key is taken.
    bool add(T* item) { return m_items.emplace(m_keyOf(*item), item).second; }
    /// The element stored under the key, or null.
    T* find(const char* key) const {
        if (!key)
            return nullptr;
        auto found = m_items.find(key);
        return found == m_items.end() ? nullptr : found->second;
    }
    /// Removes and returns the element stored under the key, or null.
    T* remove(const char* key) {
        auto found = m_items.find(key);
        if (found == m_items.end())
            return nullptr;
        T* item = found->second;
        m_items.erase(found);
        return item;
    }
    ///@{
    /// The number of elements, and whether there are none.
    int size() const { return static_cast<int>(m_items.size()); }
    bool isEmpty() const { return m_items.empty(); }
    ///@}

    /// Calls f(T&) for every element, in no particular order.
    template <class F>
    void forEach(F f) const {
        for (const auto& [key, item] : m_items)
            f(*item);
    }
    /// Forgets every element without deleting it.
    void clear() { m_items.clear(); }
    /// Deletes every element, then empties the collection.
    void deleteContents() {
        for (auto& [key, item] : m_items)
            delete item;
        m_items.clear();
    }

private:
    KeyExtractor m_keyOf;
    std::unordered_map<std::string, T*> m_items;
};
