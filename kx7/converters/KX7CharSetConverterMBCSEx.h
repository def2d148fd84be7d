// kx7text - base of the table-driven multibyte converters that reach beyond the Basic Multilingual Plane.
#ifndef KX7_CONVERTERS_KX7CHARSETCONVERTERMBCSEX_H
#define KX7_CONVERTERS_KX7CHARSETCONVERTERMBCSEX_H

#include <pthread.h>

#include <atomic>

#include "kx7/base/LookupTable.h"
#include "kx7/base/MultibyteRecord.h"
#include "kx7/converters/KX7CharSetConverter.h"

namespace kx7 {
struct FlatTablesEx;
class PairUnits;
}  // namespace kx7

/**
 * Base of the converters whose encoding is a list of records of code and code point. Created empty; the two tables
 * are built from the list on the first conversion, and from then on the object is read-only. All operations may be
 * called from any thread at once.
 */
class KX7_API KX7CharSetConverterMBCSEx : public KX7CharSetConverter {
public:
    /**
     * @param map records ended by one of zeros. Not copied: it must outlive the object. A code point beyond U+10FFFF is
     *            mapped when decoding only.
     */
    KX7CharSetConverterMBCSEx(sMBCSExTable const* map, KX7CharSet charSet);

    /** A converter without a mapping list: nothing is mapped. `name` is kept, not copied. */
    KX7CharSetConverterMBCSEx(char const* name, KX7CharSet charSet);

    ~KX7CharSetConverterMBCSEx() override;

    /** Builds the tables unless they exist. Called by every conversion; any thread may call it at any time. */
    virtual void load();

protected:
    /** The tables can be read. Acquires what load() published. */
    bool tablesBuilt() const { return m_pToUnicode.load(std::memory_order_acquire) != nullptr; }

    /** The table by code; an empty one where it is not built. Loads nothing. */
    LookupTable<unsigned int> const& toUnicode() const;

    /** The table by character; an empty one where it is not built. Loads nothing. */
    LookupTableEx<unsigned short> const& fromUnicode() const;

    /** What units are written as (UnitCodes.h); null where that is not known. Loads nothing. */
    unsigned short const* unitCodes() const { return tablesBuilt() ? m_pUnitCodes : nullptr; }

    char const* m_pszName;                                 ///< of a converter without a list; null otherwise
    std::atomic<LookupTable<unsigned int>*> m_pToUnicode;  ///< code to code point; published last
    LookupTableEx<unsigned short>* m_pFromUnicode;         ///< code point to code
    sMBCSExTable const* m_pMap;                            ///< the mapping list, or null
    pthread_mutex_t m_oLoadMutex;                          ///< held while the tables are built
    std::atomic<kx7::PairUnits const*> m_pPairs;           ///< what decoding kernels look up; null: nothing
    kx7::FlatTablesEx* m_pFlat;                            ///< the memory of both tables; null: they have their own
    unsigned short const* m_pUnitCodes;                    ///< unit to what is written; may be null
};

#endif
