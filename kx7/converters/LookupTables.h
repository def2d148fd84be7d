// kx7text - how the table-driven converters fill their lookup tables, and read ones that are not there (internal).
#ifndef KX7_CONVERTERS_LOOKUPTABLES_H
#define KX7_CONVERTERS_LOOKUPTABLES_H

#include "kx7/converters/LookupTable.h"

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

}  // namespace kx7

#endif
