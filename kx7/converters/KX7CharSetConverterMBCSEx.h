// kx7text - base of the table-driven multibyte converters that reach beyond the Basic Multilingual Plane.
#ifndef KX7_CONVERTERS_KX7CHARSETCONVERTERMBCSEX_H
#define KX7_CONVERTERS_KX7CHARSETCONVERTERMBCSEX_H

#include <pthread.h>

#include <atomic>

#include "kx7/base/LookupTable.h"
#include "kx7/base/MultibyteRecord.h"
#include "kx7/converters/KX7CharSetConverter.h"

namespace kx7 {
struct KernelTables;
struct MultibyteTables;
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
    KX7_LOCAL LookupTable<unsigned int> const& toUnicode() const;

    /** The table by character; an empty one where it is not built. Loads nothing. */
    KX7_LOCAL LookupTableEx<unsigned short> const& fromUnicode() const;

    /** What only kernels look up; null where there is nothing. Loads nothing. */
    KX7_LOCAL kx7::MultibyteTables const* kernelTables() const;

    /**
     * Builds everything aside, but for the table by code, which is returned: storing it in m_pToUnicode publishes all.
     * The caller holds m_oLoadMutex. Null where the tables exist, where there is no list, and without memory.
     */
    KX7_LOCAL LookupTable<unsigned int>* buildTables();

    char const* m_pszName;                                 ///< of a converter without a list; null otherwise
    std::atomic<LookupTable<unsigned int>*> m_pToUnicode;  ///< code to code point; published last
    LookupTableEx<unsigned short>* m_pFromUnicode;         ///< code point to code
    sMBCSExTable const* m_pMap;                            ///< the mapping list, or null
    pthread_mutex_t m_oLoadMutex;                          ///< held while the tables are built
    kx7::KernelTables* m_pKernelTables;                    ///< what only kernels look up; null: nothing
};

#endif
