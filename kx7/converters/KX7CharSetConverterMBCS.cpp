// kx7text - tables of the multibyte converters of the Basic Multilingual Plane.
#include "kx7/converters/KX7CharSetConverterMBCS.h"

#include <memory>

#include "kx7/base/LoadLock.h"
#include "kx7/converters/LookupTables.h"

KX7CharSetConverterMBCS::KX7CharSetConverterMBCS(unsigned short const* map, KX7CharSet charSet)
    : KX7CharSetConverter(charSet), m_pszName(nullptr), m_pToUnicode(nullptr), m_pFromUnicode(nullptr), m_pMap(map),
      m_pPairs(nullptr), m_pFlat(nullptr), m_pUnitCodes(nullptr), m_pMakeUnitCodes(nullptr)
{
    pthread_mutex_init(&m_oLoadMutex, nullptr);
}

KX7CharSetConverterMBCS::KX7CharSetConverterMBCS(char const* name, KX7CharSet charSet)
    : KX7CharSetConverter(charSet), m_pszName(name), m_pToUnicode(nullptr), m_pFromUnicode(nullptr), m_pMap(nullptr),
      m_pPairs(nullptr), m_pFlat(nullptr), m_pUnitCodes(nullptr), m_pMakeUnitCodes(nullptr)
{
    pthread_mutex_init(&m_oLoadMutex, nullptr);
}

KX7CharSetConverterMBCS::~KX7CharSetConverterMBCS()
{
    LookupTable<unsigned short>* const toUnicode = m_pToUnicode.load(std::memory_order_relaxed);
    if (m_pFlat) {
        if (m_pUnitCodes != m_pFlat->fromUnicode.data())
            free(m_pUnitCodes);
        m_pFlat->toUnicode.takeBackFrom(*toUnicode);
        m_pFlat->fromUnicode.takeBackFrom(*m_pFromUnicode);
    }
    delete toUnicode;
    delete m_pFromUnicode;
    delete m_pFlat;
    delete m_pPairs.load(std::memory_order_relaxed);
    pthread_mutex_destroy(&m_oLoadMutex);
}

void KX7CharSetConverterMBCS::load()
{
    using Table = LookupTable<unsigned short>;
    kx7::LoadLock const lock(m_oLoadMutex);
    if (tablesBuilt() || !m_pMap)
        return;
    // Without memory the converter stays unloaded, its codes unmapped, and the next conversion tries again.
    std::unique_ptr<Table> toUnicode(new (std::nothrow) Table);
    std::unique_ptr<Table> fromUnicode(new (std::nothrow) Table);
    if (!toUnicode || !fromUnicode)
        return;
    std::unique_ptr<kx7::FlatTables> flat(new (std::nothrow) kx7::FlatTables);
    if (flat && flat->complete()) {
        unsigned short* const units = flat->toUnicode.data();
        unsigned short* const codes = flat->fromUnicode.data();
        for (unsigned short const* pair = m_pMap; pair[0] != 0 || pair[1] != 0; pair += 2) {
            units[pair[0]] = pair[1];
            codes[pair[1]] = pair[0];
        }
        flat->toUnicode.lendTo(*toUnicode);
        flat->fromUnicode.lendTo(*fromUnicode);
        m_pUnitCodes = m_pMakeUnitCodes ? m_pMakeUnitCodes(codes, m_pMap) : codes;
        m_pFlat = flat.release();
    }
    else {
        kx7::putPairs(*toUnicode, *fromUnicode, m_pMap);
    }
    m_pFromUnicode = fromUnicode.release();
    m_pToUnicode.store(toUnicode.release(), std::memory_order_release);
}

LookupTable<unsigned short> const& KX7CharSetConverterMBCS::toUnicode() const
{
    return kx7::tableOrEmpty(m_pToUnicode.load(std::memory_order_acquire));
}

LookupTable<unsigned short> const& KX7CharSetConverterMBCS::fromUnicode() const
{
    return kx7::tableOrEmpty(tablesBuilt() ? m_pFromUnicode : nullptr);
}
