// kx7text - table of a 16-bit property of every UTF-16 code unit.
#ifndef KX7_TEXT_KX7UCHARTABLE_H
#define KX7_TEXT_KX7UCHARTABLE_H

#include <pthread.h>

#include <atomic>

#include "kx7/base/Export.h"
#include "kx7/base/LookupTable.h"

namespace kx7 {
struct CharRange;
}

/**
 * A sparse table of 16-bit values by code unit, built from ranges on first use. Any thread may read it at any time.
 */
class KX7_API KX7UCharTable {
public:
    /**
     * @param ranges_    records in ascending order, ended by one whose first unit is 0. Not copied.
     * @param increment_ true: the value grows by one for each unit of a range; false: it is the same for all
     */
    constexpr KX7UCharTable(kx7::CharRange const* ranges_, bool increment_)
        : directory(nullptr), ranges(ranges_), increment(increment_)
    {
    }
    ~KX7UCharTable();

    KX7UCharTable(KX7UCharTable const&) = delete;
    KX7UCharTable& operator=(KX7UCharTable const&) = delete;

    /** The value of `c`; 0 where no range holds it. */
    unsigned short getValue(unsigned short c)
    {
        LookupTable<unsigned short> const* table = directory.load(std::memory_order_acquire);
        if (!table)
            table = load();
        return table ? table->get(c) : static_cast<unsigned short>(0);
    }

    /** Builds the table unless it exists, and returns it; null without memory for it. */
    LookupTable<unsigned short> const* load();

private:
    std::atomic<LookupTable<unsigned short>*> directory;
    kx7::CharRange const* ranges;
    bool increment;
    pthread_mutex_t mutex = PTHREAD_MUTEX_INITIALIZER;
};

#endif
