// kx7text - tables of the multibyte converters that reach beyond the Basic Multilingual Plane.
#include "kx7/converters/KX7CharSetConverterMBCSEx.h"

#include <memory>

#include "kx7/base/LoadLock.h"
#include "kx7/base/Utf16.h"
#include "kx7/converters/LookupTables.h"
#include "kx7/converters/UnitCodes.h"

static_assert(sizeof(sMBCSExTable) == 8, "a record is 8 bytes without padding");

KX7CharSetConverterMBCSEx::KX7CharSetConverterMBCSEx(sMBCSExTable const* map, KX7CharSet charSet)
    : KX7CharSetConverter(charSet), m_pszName(nullptr), m_pToUnicode(nullptr), m_pFromUnicode(nullptr), m_pMap(map),
      m_pPairs(nullptr), m_pFlat(nullptr), m_pUnitCodes(nullptr)
{
    pthread_mutex_init(&m_oLoadMutex, nullptr);
}

KX7CharSetConverterMBCSEx::KX7CharSetConverterMBCSEx(char const* name, KX7CharSet charSet)
    : KX7CharSetConverter(charSet), m_pszName(name), m_pToUnicode(nullptr), m_pFromUnicode(nullptr), m_pMap(nullptr),
      m_pPairs(nullptr), m_pFlat(nullptr), m_pUnitCodes(nullptr)
{
    pthread_mutex_init(&m_oLoadMutex, nullptr);
}

KX7CharSetConverterMBCSEx::~KX7CharSetConverterMBCSEx()
{
    LookupTable<unsigned int>* const toUnicode = m_pToUnicode.load(std::memory_order_relaxed);
    if (m_pFlat)
        m_pFlat->fromUnicode.takeBackFrom(*m_pFromUnicode);
    delete toUnicode;
    delete m_pFromUnicode;
    delete m_pFlat;
    delete m_pPairs.load(std::memory_order_relaxed);
    pthread_mutex_destroy(&m_oLoadMutex);
}

void KX7CharSetConverterMBCSEx::load()
{
    kx7::LoadLock const lock(m_oLoadMutex);
    if (tablesBuilt() || !m_pMap)
        return;
    // Without memory the converter stays unloaded, its codes unmapped, and the next conversion tries again.
    std::unique_ptr<LookupTable<unsigned int>> toUnicode(new (std::nothrow) LookupTable<unsigned int>);
    std::unique_ptr<LookupTableEx<unsigned short>> fromUnicode(new (std::nothrow) LookupTableEx<unsigned short>);
    if (!toUnicode || !fromUnicode)
        return;
    std::unique_ptr<kx7::FlatTablesEx> flat(new (std::nothrow) kx7::FlatTablesEx);
    if (flat && flat->complete()) {
        flat->fromUnicode.lendTo(*fromUnicode);
        m_pFlat = flat.release();
    }
    for (sMBCSExTable const* record = m_pMap; record->code != 0 || record->codePoint != 0; ++record) {
        toUnicode->put(record->code, record->codePoint);
        if (record->codePoint <= kx7::LAST_CODE_POINT)
            fromUnicode->put(record->codePoint, record->code);
    }
    if (m_pFlat && !kx7::mapsHighSurrogates(m_pFlat->fromUnicode.data()))
        m_pUnitCodes = m_pFlat->fromUnicode.data();
    m_pFromUnicode = fromUnicode.release();
    m_pToUnicode.store(toUnicode.release(), std::memory_order_release);
}

LookupTable<unsigned int> const& KX7CharSetConverterMBCSEx::toUnicode() const
{
    return kx7::tableOrEmpty(m_pToUnicode.load(std::memory_order_acquire));
}

LookupTableEx<unsigned short> const& KX7CharSetConverterMBCSEx::fromUnicode() const
{
    return kx7::tableOrEmpty(tablesBuilt() ? m_pFromUnicode : nullptr);
}
