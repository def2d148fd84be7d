// kx7text - base of the table-driven multibyte converters of the Basic Multilingual Plane.
#ifndef KX7_CONVERTERS_KX7CHARSETCONVERTERMBCS_H
#define KX7_CONVERTERS_KX7CHARSETCONVERTERMBCS_H

#include <pthread.h>

#include <atomic>

#include "kx7/base/LookupTable.h"
#include "kx7/converters/KX7CharSetConverter.h"

namespace kx7 {
struct KernelTables;
struct MultibyteTables;
}  // namespace kx7

/**
 * Base of the converters whose encoding is a list of pairs of code and UTF-16 code unit. Created empty; the two tables
 * are built from the list on the first conversion, and from then on the object is read-only. All operations may be
 * called from any thread at once.
 */
class KX7_API KX7CharSetConverterMBCS : public KX7CharSetConverter {
public:
    /**
     * @param map pairs of code and UTF-16 unit, ended by (0, 0): a single byte as 0x00XX, two bytes as lead * 256 +
     *            trail (row and cell, where the class says so). Not copied: it must outlive the object.
     */
    KX7CharSetConverterMBCS(unsigned short const* map, KX7CharSet charSet);

    /** A converter without a mapping list: nothing is mapped. `name` is kept, not copied. */
    KX7CharSetConverterMBCS(char const* name, KX7CharSet charSet);

    ~KX7CharSetConverterMBCS() override;

    /** Builds the tables unless they exist. Called by every conversion; any thread may call it at any time. */
    virtual void load();

protected:
    /** The tables can be read. Acquires what load() published. */
    bool tablesBuilt() const { return m_pToUnicode.load(std::memory_order_acquire) != nullptr; }

    /** The table by code; an empty one where it is not built. Loads nothing. */
    KX7_LOCAL LookupTable<unsigned short> const& toUnicode() const;

    /** The table by character; an empty one where it is not built. Loads nothing. */
    KX7_LOCAL LookupTable<unsigned short> const& fromUnicode() const;

    /** What only kernels look up; null where there is nothing. Loads nothing. */
    KX7_LOCAL kx7::MultibyteTables const* kernelTables() const;

    /**
     * Builds everything aside, but for the table by code, which is returned: storing it in m_pToUnicode publishes all.
     * The caller holds m_oLoadMutex. Null where the tables exist, where there is no list, and without memory.
     */
    KX7_LOCAL LookupTable<unsigned short>* buildTables();

    char const* m_pszName;                                   ///< of a converter without a list; null otherwise
    std::atomic<LookupTable<unsigned short>*> m_pToUnicode;  ///< code to unit; published last
    LookupTable<unsigned short>* m_pFromUnicode;             ///< unit to code
    unsigned short const* m_pMap;                            ///< the mapping list, or null
    pthread_mutex_t m_oLoadMutex;                            ///< held while the tables are built
    kx7::KernelTables* m_pKernelTables;                      ///< what only kernels look up; null: nothing
};

#endif
