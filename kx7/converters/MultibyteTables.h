// kx7text - how the multibyte converters fill their lookup tables, and what their kernels look up (internal).
#ifndef KX7_CONVERTERS_MULTIBYTETABLES_H
#define KX7_CONVERTERS_MULTIBYTETABLES_H

#include <cstdlib>
#include <memory>

#include "kx7/base/LookupTable.h"
#include "kx7/base/TablePages.h"
#include "kx7/converters/KX7CharSetConverterMBCS.h"
#include "kx7/converters/KX7CharSetConverterMBCSEx.h"
#include "kx7/kernels/KernelTables.h"
#include "kx7/kernels/PairUnits.h"

namespace kx7 {

struct GB18030Range;

struct FreeMemory {
    void operator()(void* memory) const { free(memory); }
};

/** A value for each 16-bit key; PairUnits::SIZE of them. */
using KeyArray = std::unique_ptr<unsigned short[], FreeMemory>;

/** Zeros; null without memory. From calloc, so that of the array only the pages that are written take memory. */
inline KeyArray makeKeyArray()
{
    return KeyArray(static_cast<unsigned short*>(calloc(PairUnits::SIZE, sizeof(unsigned short))));
}

/** Pages of a lookup table for 16-bit keys. */
constexpr size_t KEY_PAGES = 256;

/**
 * What a multibyte converter holds beside its two tables. Everything may be missing where there was no memory: then the
 * tables have pages of their own, and characters are converted one by one, to the same results.
 */
struct MultibyteTables : KernelTables {
    /** The pages of both tables, each in one array, so that entering a value is one store. */
    KeyArray toUnicodePages;
    KeyArray fromUnicodePages;

    /**
     * unitCodes[unit]: the code as it is written, one byte or (above 0xFF) two; 0 where the encoder of one character
     * has to be asked. A lookup is one load, which is what the speed of encoding hangs on.
     */
    unsigned short const* unitCodes = nullptr;

    /** The memory of `unitCodes` where codes are written otherwise than they are listed; else it is a table's. */
    KeyArray ownUnitCodes;

    /** What decoding and counting kernels look up. */
    std::unique_ptr<PairUnits const> pairs;

    /** GB 18030: as GB18030Codes::fourByte and GB18030Codes::runs. */
    KeyArray fourByteCodes;
    std::unique_ptr<GB18030Range const*[]> fourByteRuns;
};

inline MultibyteTables* multibyteTables(KernelTables* tables)
{
    return static_cast<MultibyteTables*>(tables);
}

inline unsigned short const* unitCodesOf(MultibyteTables const* tables)
{
    return tables ? tables->unitCodes : nullptr;
}

inline PairUnits const* pairsOf(MultibyteTables const* tables)
{
    return tables ? tables->pairs.get() : nullptr;
}

/** A table in which nothing is mapped. */
template <class Table>
Table const& emptyTable()
{
    static Table const empty;
    return empty;
}

/** The table, or an empty one where it could not be built. */
template <class Table>
Table const& tableOrEmpty(Table const* table)
{
    return table ? *table : emptyTable<Table>();
}

/** Enters the pairs of code and unit up to (0, 0), one way into each table. */
inline void putPairs(LookupTable<unsigned short>& toUnicode, LookupTable<unsigned short>& fromUnicode,
                     unsigned short const* pairs)
{
    for (; pairs[0] != 0 || pairs[1] != 0; pairs += 2) {
        toUnicode.put(pairs[0], pairs[1]);
        fromUnicode.put(pairs[1], pairs[0]);
    }
}

/** A table must not serve as MultibyteTables::unitCodes where it has a code for one half of a surrogate pair. */
inline bool mapsHighSurrogates(unsigned short const* codes)
{
    unsigned int mapped = 0;
    for (unsigned int unit = 0xD800; unit <= 0xDBFF; ++unit)
        mapped |= codes[unit];
    return mapped != 0;
}

/** Enters what `written` (unit, listed code) says for ASCII and for the units of a list of pairs, ended by (0, 0). */
template <class Written>
void fillUnitCodes(unsigned short* codes, unsigned short const* listed, unsigned short const* pairs, Written written)
{
    for (unsigned int unit = 0; unit < 0x80; ++unit)
        codes[unit] = static_cast<unsigned short>(written(unit, listed[unit]));
    for (; pairs[0] != 0 || pairs[1] != 0; pairs += 2)
        codes[pairs[1]] = static_cast<unsigned short>(written(pairs[1], listed[pairs[1]]));
}

/** Gives `tables` unit codes of their own for a list of pairs, by what `written` says of each; none without memory. */
template <class Written>
void makeOwnUnitCodes(MultibyteTables& tables, unsigned short const* pairs, Written written)
{
    if (tables.fromUnicodePages)
        tables.ownUnitCodes = makeKeyArray();
    if (tables.ownUnitCodes)
        fillUnitCodes(tables.ownUnitCodes.get(), tables.fromUnicodePages.get(), pairs, written);
    tables.unitCodes = tables.ownUnitCodes.get();
}

/** Gives `tables` the PairUnits that `fill` fills; none without memory. @param shared as of PairUnits */
template <class Fill>
void makePairUnits(MultibyteTables& tables, unsigned short* shared, Fill fill)
{
    std::unique_ptr<PairUnits> pairs(new (std::nothrow) PairUnits(shared));
    if (!pairs || !pairs->complete())
        return;
    fill(*pairs);
    pairs->findIdentities(tables.unitCodes);
    tables.pairs = std::move(pairs);
}

}  // namespace kx7

inline kx7::MultibyteTables const* KX7CharSetConverterMBCS::kernelTables() const
{
    return tablesBuilt() ? kx7::multibyteTables(m_pKernelTables) : nullptr;
}

inline LookupTable<unsigned short> const& KX7CharSetConverterMBCS::toUnicode() const
{
    return kx7::tableOrEmpty(m_pToUnicode.load(std::memory_order_acquire));
}

inline LookupTable<unsigned short> const& KX7CharSetConverterMBCS::fromUnicode() const
{
    return kx7::tableOrEmpty(tablesBuilt() ? m_pFromUnicode : nullptr);
}

inline kx7::MultibyteTables const* KX7CharSetConverterMBCSEx::kernelTables() const
{
    return tablesBuilt() ? kx7::multibyteTables(m_pKernelTables) : nullptr;
}

inline LookupTable<unsigned int> const& KX7CharSetConverterMBCSEx::toUnicode() const
{
    return kx7::tableOrEmpty(m_pToUnicode.load(std::memory_order_acquire));
}

inline LookupTableEx<unsigned short> const& KX7CharSetConverterMBCSEx::fromUnicode() const
{
    return kx7::tableOrEmpty(tablesBuilt() ? m_pFromUnicode : nullptr);
}

#endif
