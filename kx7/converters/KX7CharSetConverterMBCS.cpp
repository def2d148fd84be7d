// kx7text - tables of the multibyte converters of the Basic Multilingual Plane.
#include "kx7/converters/KX7CharSetConverterMBCS.h"

#include <memory>

#include "kx7/base/LoadLock.h"
#include "kx7/converters/MultibyteTables.h"

KX7CharSetConverterMBCS::KX7CharSetConverterMBCS(unsigned short const* map, KX7CharSet charSet)
    : KX7CharSetConverter(charSet), m_pszName(nullptr), m_pToUnicode(nullptr), m_pFromUnicode(nullptr), m_pMap(map),
      m_pKernelTables(nullptr)
{
    pthread_mutex_init(&m_oLoadMutex, nullptr);
}

KX7CharSetConverterMBCS::KX7CharSetConverterMBCS(char const* name, KX7CharSet charSet)
    : KX7CharSetConverter(charSet), m_pszName(name), m_pToUnicode(nullptr), m_pFromUnicode(nullptr), m_pMap(nullptr),
      m_pKernelTables(nullptr)
{
    pthread_mutex_init(&m_oLoadMutex, nullptr);
}

KX7CharSetConverterMBCS::~KX7CharSetConverterMBCS()
{
    LookupTable<unsigned short>* const toUnicode = m_pToUnicode.load(std::memory_order_relaxed);
    kx7::MultibyteTables* const kernelTables = kx7::multibyteTables(m_pKernelTables);
    if (kernelTables && kernelTables->fromUnicodePages) {
        kx7::TablePages::giveBack(*toUnicode, kx7::KEY_PAGES);
        kx7::TablePages::giveBack(*m_pFromUnicode, kx7::KEY_PAGES);
    }
    delete toUnicode;
    delete m_pFromUnicode;
    delete kernelTables;
    pthread_mutex_destroy(&m_oLoadMutex);
}

void KX7CharSetConverterMBCS::load()
{
    kx7::LoadLock const lock(m_oLoadMutex);
    if (LookupTable<unsigned short>* const toUnicode = buildTables())
        m_pToUnicode.store(toUnicode, std::memory_order_release);
}

LookupTable<unsigned short>* KX7CharSetConverterMBCS::buildTables()
{
    using Table = LookupTable<unsigned short>;
    if (tablesBuilt() || !m_pMap)
        return nullptr;
    // Without memory the converter stays unloaded, its codes unmapped, and the next conversion tries again.
    std::unique_ptr<Table> toUnicode(new (std::nothrow) Table);
    std::unique_ptr<Table> fromUnicode(new (std::nothrow) Table);
    if (!toUnicode || !fromUnicode)
        return nullptr;
    auto* const kernelTables = new (std::nothrow) kx7::MultibyteTables;
    kx7::KeyArray units = kernelTables ? kx7::makeKeyArray() : nullptr;
    kx7::KeyArray codes = units ? kx7::makeKeyArray() : nullptr;
    if (codes) {
        for (unsigned short const* pair = m_pMap; pair[0] != 0 || pair[1] != 0; pair += 2) {
            units[pair[0]] = pair[1];
            codes[pair[1]] = pair[0];
        }
        kx7::TablePages::borrow(*toUnicode, units.get(), kx7::KEY_PAGES);
        kx7::TablePages::borrow(*fromUnicode, codes.get(), kx7::KEY_PAGES);
        kernelTables->unitCodes = codes.get();
        kernelTables->toUnicodePages = std::move(units);
        kernelTables->fromUnicodePages = std::move(codes);
    }
    else {
        kx7::putPairs(*toUnicode, *fromUnicode, m_pMap);
    }
    m_pKernelTables = kernelTables;
    m_pFromUnicode = fromUnicode.release();
    return toUnicode.release();
}
