// kx7text - tables of the multibyte converters that reach beyond the Basic Multilingual Plane.
#include "kx7/converters/KX7CharSetConverterMBCSEx.h"

#include <memory>

#include "kx7/base/LoadLock.h"
#include "kx7/base/Utf16.h"
#include "kx7/converters/MultibyteTables.h"

static_assert(sizeof(sMBCSExTable) == 8, "a record is 8 bytes without padding");

KX7CharSetConverterMBCSEx::KX7CharSetConverterMBCSEx(sMBCSExTable const* map, KX7CharSet charSet)
    : KX7CharSetConverter(charSet), m_pszName(nullptr), m_pToUnicode(nullptr), m_pFromUnicode(nullptr), m_pMap(map),
      m_pKernelTables(nullptr)
{
    pthread_mutex_init(&m_oLoadMutex, nullptr);
}

KX7CharSetConverterMBCSEx::KX7CharSetConverterMBCSEx(char const* name, KX7CharSet charSet)
    : KX7CharSetConverter(charSet), m_pszName(name), m_pToUnicode(nullptr), m_pFromUnicode(nullptr), m_pMap(nullptr),
      m_pKernelTables(nullptr)
{
    pthread_mutex_init(&m_oLoadMutex, nullptr);
}

KX7CharSetConverterMBCSEx::~KX7CharSetConverterMBCSEx()
{
    kx7::MultibyteTables* const kernelTables = kx7::multibyteTables(m_pKernelTables);
    if (kernelTables && kernelTables->fromUnicodePages)
        kx7::TablePages::giveBack(*m_pFromUnicode, kx7::KEY_PAGES);
    delete m_pToUnicode.load(std::memory_order_relaxed);
    delete m_pFromUnicode;
    delete kernelTables;
    pthread_mutex_destroy(&m_oLoadMutex);
}

void KX7CharSetConverterMBCSEx::load()
{
    kx7::LoadLock const lock(m_oLoadMutex);
    if (LookupTable<unsigned int>* const toUnicode = buildTables())
        m_pToUnicode.store(toUnicode, std::memory_order_release);
}

LookupTable<unsigned int>* KX7CharSetConverterMBCSEx::buildTables()
{
    if (tablesBuilt() || !m_pMap)
        return nullptr;
    // Without memory the converter stays unloaded, its codes unmapped, and the next conversion tries again.
    std::unique_ptr<LookupTable<unsigned int>> toUnicode(new (std::nothrow) LookupTable<unsigned int>);
    std::unique_ptr<LookupTableEx<unsigned short>> fromUnicode(new (std::nothrow) LookupTableEx<unsigned short>);
    if (!toUnicode || !fromUnicode)
        return nullptr;
    auto* const kernelTables = new (std::nothrow) kx7::MultibyteTables;
    if (kernelTables)
        kernelTables->fromUnicodePages = kx7::makeKeyArray();
    unsigned short* const codes = kernelTables ? kernelTables->fromUnicodePages.get() : nullptr;
    if (codes)
        kx7::TablePages::borrow(*fromUnicode, codes, kx7::KEY_PAGES);
    for (sMBCSExTable const* record = m_pMap; record->code != 0 || record->codePoint != 0; ++record) {
        toUnicode->put(record->code, record->codePoint);
        if (record->codePoint <= kx7::LAST_CODE_POINT)
            fromUnicode->put(record->codePoint, record->code);
    }
    if (codes && !kx7::mapsHighSurrogates(codes))
        kernelTables->unitCodes = codes;
    m_pKernelTables = kernelTables;
    m_pFromUnicode = fromUnicode.release();
    return toUnicode.release();
}
