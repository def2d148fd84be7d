// kx7text - table of a 16-bit property of every UTF-16 code unit.
#include "kx7/text/KX7UCharTable.h"

#include "kx7/base/LoadLock.h"
#include "kx7/tables/CharProperties.h"

KX7UCharTable::~KX7UCharTable()
{
    delete directory.load(std::memory_order_relaxed);
    pthread_mutex_destroy(&mutex);
}

LookupTable<unsigned short> const* KX7UCharTable::load()
{
    kx7::LoadLock const lock(mutex);
    LookupTable<unsigned short>* table = directory.load(std::memory_order_relaxed);
    if (table)
        return table;
    table = new (std::nothrow) LookupTable<unsigned short>;
    if (!table)
        return nullptr;
    for (kx7::CharRange const* range = ranges; range->first != 0; ++range) {
        unsigned short value = range->value;
        for (unsigned int unit = range->first; unit <= range->last; ++unit) {
            table->put(static_cast<unsigned short>(unit), value);
            if (increment)
                ++value;
        }
    }
    directory.store(table, std::memory_order_release);
    return table;
}
