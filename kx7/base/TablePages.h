// kx7text - the pages of a lookup table, for who fills or reads one page by page (internal).
#ifndef KX7_BASE_TABLEPAGES_H
#define KX7_BASE_TABLEPAGES_H

#include <type_traits>

#include "kx7/base/LookupTable.h"

namespace kx7 {

/** What a lookup table does for the library alone; `Table` is a LookupTable or a LookupTableEx. */
struct TablePages {
    /** The 256 values of the keys that begin with `high`. */
    template <class Table>
    static auto const* page(Table const& table, unsigned int high)
    {
        return table.m_pages.m_pages[high];
    }

    /** Makes the first `count` pages of `table` from `values`, 256 for each page. The table does not own them. */
    template <class Table, class T>
    static void borrow(Table& table, T* values, size_t count)
    {
        for (size_t i = 0; i < count; ++i)
            table.m_pages.m_pages[i] = values + 256 * i;
    }

    /** Makes the first `count` pages empty again: to be called before the table is destroyed, which frees pages. */
    template <class Table>
    static void giveBack(Table& table, size_t count)
    {
        using Page = std::remove_reference_t<decltype(table.m_pages.m_pages[0])>;
        for (size_t i = 0; i < count; ++i)
            table.m_pages.m_pages[i] = const_cast<Page>(Table::m_gNullTable);
    }
};

}  // namespace kx7

#endif
