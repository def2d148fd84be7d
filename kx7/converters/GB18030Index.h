// kx7text - GB 18030: searching its ranges by blocks, and the four-byte sequences of units laid out (internal).
#ifndef KX7_CONVERTERS_GB18030INDEX_H
#define KX7_CONVERTERS_GB18030INDEX_H

#include <cstddef>
#include <memory>
#include <new>
#include <utility>

#include "kx7/base/GB18030Codes.h"
#include "kx7/converters/MultibyteTables.h"
#include "kx7/tables/GB18030Ranges.h"

namespace kx7 {

/** The index over GB codes: one entry for each 256 codes from the first two-byte code to the end of the last range. */
constexpr unsigned int FIRST_INDEXED_CODE = 0x8100;
constexpr unsigned int LAST_INDEXED_CODE = 0x19FFF;
constexpr unsigned int GB_BLOCK_SHIFT = 8;
constexpr size_t GB_BLOCKS = ((LAST_INDEXED_CODE - FIRST_INDEXED_CODE) >> GB_BLOCK_SHIFT) + 1;
static_assert(GB_BLOCKS == 287, "blocks of GB codes");

/** The index over units: one entry for each 128. */
constexpr unsigned int UNIT_BLOCK_SHIFT = 7;
constexpr size_t UNIT_BLOCKS = 0x10000 >> UNIT_BLOCK_SHIFT;
static_assert(UNIT_BLOCKS == 512, "blocks of units");

inline bool isTerminator(GB18030Range const& range)
{
    return range.last == 0;
}

/** For each block of keys the last range that starts before it; a search forward from there misses no range. */
inline void fillIndex(GB18030Range const** index, size_t blocks, GB18030Range const* ranges, unsigned int firstKey,
                      unsigned int shift)
{
    GB18030Range const* next = ranges + 1;
    for (size_t i = 0; i < blocks; ++i) {
        unsigned int const start = firstKey + static_cast<unsigned int>(i << shift);
        while (!isTerminator(*next) && next->first < start)
            ++next;
        index[i] = next - 1;
    }
}

/** The first range from `range` on that reaches `key`, or the terminator. */
inline GB18030Range const* firstToReach(GB18030Range const* range, unsigned int key)
{
    while (!isTerminator(*range) && range->last < key)
        ++range;
    return range;
}

/** What that range maps `key` to; 0 where it lies before it. */
inline unsigned int search(GB18030Range const* range, unsigned int key)
{
    range = firstToReach(range, key);
    if (isTerminator(*range) || key < range->first)
        return 0;
    return key - range->first + range->value;
}

/** The four-byte sequences of units that `oneOrTwo` leaves: their indexes, plus 1, and the runs of them by block. */
inline void fillFourByteCodes(unsigned short* indexes, GB18030Range const** runs, unsigned short const* oneOrTwo)
{
    for (GB18030Range const* range = oUni2GBRange; !isTerminator(*range); ++range) {
        if (range->value < FIRST_FOUR_BYTE_CODE)
            continue;
        unsigned int listed = 0;
        for (unsigned int unit = range->first; unit <= range->last; ++unit) {
            listed |= oneOrTwo[unit];
            if (oneOrTwo[unit] == 0)
                indexes[unit] =
                    static_cast<unsigned short>(unit - range->first + range->value - FIRST_FOUR_BYTE_CODE + 1);
        }
        for (unsigned int i = range->first >> UNIT_BLOCK_SHIFT; listed == 0 && i <= range->last >> UNIT_BLOCK_SHIFT;
             ++i)
            runs[i] = range;
    }
}

/** Gives `tables` the four-byte sequences of all units; none without memory. */
inline void makeFourByteCodes(MultibyteTables& tables)
{
    if (!tables.unitCodes || mapsHighSurrogates(tables.unitCodes))
        return;
    KeyArray indexes = makeKeyArray();
    std::unique_ptr<GB18030Range const*[]> runs(new (std::nothrow) GB18030Range const*[UNIT_BLOCKS]());
    if (!indexes || !runs)
        return;
    fillFourByteCodes(indexes.get(), runs.get(), tables.unitCodes);
    tables.fourByteCodes = std::move(indexes);
    tables.fourByteRuns = std::move(runs);
}

}  // namespace kx7

#endif
