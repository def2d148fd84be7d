// kx7text - sparse two-level tables from character codes to small integers.
//
// Most of a code space is empty, so a table is an array of pointers to pages of 256 values, and every slot without a
// page of its own points at one shared page of zeros: a lookup is two indexed loads without a check. 0 means that
// there is no mapping, so 0 cannot be stored as one.
#ifndef KX7_BASE_LOOKUPTABLE_H
#define KX7_BASE_LOOKUPTABLE_H

#include <cstddef>
#include <new>

#include "kx7/base/Export.h"

namespace kx7 {

struct TablePages;

/** The page store that both table templates are made of: PAGE_COUNT pages of 256 values of T. */
template <class T, size_t PAGE_COUNT>
class PagedTable {
public:
    /** @param nullPage 256 zeros that outlive the table; the table never writes to them and never frees them */
    explicit PagedTable(T const* nullPage)
    {
        for (size_t i = 0; i < PAGE_COUNT; ++i)
            m_pages[i] = const_cast<T*>(nullPage);
    }
    PagedTable(PagedTable const&) = delete;
    PagedTable& operator=(PagedTable const&) = delete;

    /** The value stored at `key`. */
    T get(unsigned int key) const { return m_pages[key >> 8][key & 0xFF]; }

    /** Stores `value`, on a page of its own; dropped when that cannot be allocated. */
    void put(unsigned int key, T value, T const* nullPage)
    {
        T*& page = m_pages[key >> 8];
        if (page == nullPage) {
            T* const fresh = new (std::nothrow) T[256]();
            if (!fresh)
                return;
            page = fresh;
        }
        page[key & 0xFF] = value;
    }

    /** Frees the pages that the table allocated. */
    void freePages(T const* nullPage)
    {
        for (size_t i = 0; i < PAGE_COUNT; ++i)
            if (m_pages[i] != nullPage)
                delete[] m_pages[i];
    }

private:
    friend struct TablePages;
    T* m_pages[PAGE_COUNT];
};

}  // namespace kx7

/**
 * Table of values of T (unsigned char, unsigned short or unsigned int) with 16-bit keys. Nothing but 256 page
 * pointers. Filled by one thread; after that any number of threads may read it.
 */
template <class T>
class LookupTable {
public:
    /** An empty table: every key reads 0, no page is allocated. */
    LookupTable() : m_pages(m_gNullTable) {}

    /** Frees the pages; the table itself belongs to whoever made it. */
    ~LookupTable() { m_pages.freePages(m_gNullTable); }

    /** Stores `value`, over an earlier one. Dropped silently when the page cannot be allocated. */
    void put(unsigned short key, T value) { m_pages.put(key, value, m_gNullTable); }

    /** The value stored at `key`, 0 when there is none. */
    T get(unsigned short key) const { return m_pages.get(key); }

    /** The page of zeros that all empty slots share; never written, never freed. */
    static T const m_gNullTable[256];

private:
    friend struct kx7::TablePages;
    kx7::PagedTable<T, 256> m_pages;
};

/** The same with code points up to U+10FFFF as keys: 17 planes of 256 pages. */
template <class T>
class LookupTableEx {
public:
    /** An empty table: every key reads 0, no page is allocated. */
    LookupTableEx() : m_pages(m_gNullTable) {}

    /** Frees the pages; the table itself belongs to whoever made it. */
    ~LookupTableEx() { m_pages.freePages(m_gNullTable); }

    /** Stores `value` at a code point up to U+10FFFF. Dropped silently when the page cannot be allocated. */
    void put(unsigned int codePoint, T value) { m_pages.put(codePoint, value, m_gNullTable); }

    /** The value stored at `codePoint`, which must not exceed U+10FFFF; 0 when there is none. */
    T get(unsigned int codePoint) const { return m_pages.get(codePoint); }

    /** The page of zeros that all empty slots share; never written, never freed. */
    static T const m_gNullTable[256];

private:
    friend struct kx7::TablePages;
    kx7::PagedTable<T, size_t{17} * 256> m_pages;
};

template <class T>
T const LookupTable<T>::m_gNullTable[256] = {};
template <class T>
T const LookupTableEx<T>::m_gNullTable[256] = {};

// One null page an instantiation, in the library: tables are recognised as empty by its address.
extern template class KX7_API LookupTable<unsigned char>;
extern template class KX7_API LookupTable<unsigned short>;
extern template class KX7_API LookupTable<unsigned int>;
extern template class KX7_API LookupTableEx<unsigned short>;

#endif
