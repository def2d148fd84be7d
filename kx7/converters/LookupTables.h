// kx7text - how the table-driven converters fill their lookup tables, and read ones that are not there (internal).
#ifndef KX7_CONVERTERS_LOOKUPTABLES_H
#define KX7_CONVERTERS_LOOKUPTABLES_H

#include <cstdlib>

#include "kx7/base/LookupTable.h"
#include "kx7/kernels/PairUnits.h"

namespace kx7 {

/** The table, or one in which nothing is mapped where it could not be built. */
template <class Table>
Table const& tableOrEmpty(Table const* table)
{
    if (table)
        return *table;
    static Table const empty;
    return empty;
}

/** Enters the pairs of code and unit up to (0, 0), one way into each table. */
template <class T>
void putPairs(LookupTable<unsigned short>& toUnicode, LookupTable<T>& fromUnicode, unsigned short const* pairs)
{
    for (; pairs[0] != 0 || pairs[1] != 0; pairs += 2) {
        toUnicode.put(pairs[0], pairs[1]);
        fromUnicode.put(pairs[1], static_cast<T>(pairs[0]));
    }
}

/**
 * An array over all 16-bit keys that lends a table its pages: entering a value is one store, without a look at the
 * page. Of the array only what is touched takes memory.
 */
template <class T>
class FlatValues {
public:
    FlatValues() : m_values(static_cast<T*>(calloc(PairUnits::SIZE, sizeof(T)))) {}
    ~FlatValues() { free(m_values); }
    FlatValues(FlatValues const&) = delete;
    FlatValues& operator=(FlatValues const&) = delete;

    /** Zeros at first; null without memory. */
    T* data() const { return m_values; }

    template <class Table>
    void lendTo(Table& table) const
    {
        table.m_pages.borrow(m_values, KEYS);
    }

    /** To be called before the table goes, which would free the pages. */
    template <class Table>
    void takeBackFrom(Table& table) const
    {
        table.m_pages.giveBack(KEYS, Table::m_gNullTable);
    }

private:
    static constexpr size_t KEYS = 0x10000;

    T* m_values;
};

/** The arrays of a converter's two tables. */
struct FlatTables {
    FlatValues<unsigned short> toUnicode;
    FlatValues<unsigned short> fromUnicode;

    bool complete() const { return toUnicode.data() && fromUnicode.data(); }
};

/** The array of the characters of the Basic Multilingual Plane, which are most. */
struct FlatTablesEx {
    FlatValues<unsigned short> fromUnicode;

    bool complete() const { return fromUnicode.data() != nullptr; }
};

}  // namespace kx7

#endif
