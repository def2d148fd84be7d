// kx7text - double-byte code pages: code pages 932, 936, 949 and 950, Big5, Shift_JIS.
#include "kx7/converters/KX7CharSetConverterDBCS.h"

#include "kx7/base/LoadLock.h"
#include "kx7/converters/DoubleByte.h"
#include "kx7/converters/DoubleByteEncoder.h"
#include "kx7/converters/EngineOf.h"
#include "kx7/converters/MultibyteTables.h"

struct KX7CharSetConverterDBCS::Decoder : kx7::DoubleByteDecoder<LookupTable<unsigned short>> {
    using DoubleByteDecoder::DoubleByteDecoder;
};

struct KX7CharSetConverterDBCS::Encoder : kx7::ListedDoubleByteEncoder {
    using ListedDoubleByteEncoder::ListedDoubleByteEncoder;
};

template struct kx7::EngineOf<KX7CharSetConverterDBCS>;

KX7CharSetConverterDBCS::KX7CharSetConverterDBCS(unsigned short const* map, unsigned char const* typeTable,
                                                 KX7CharSet charSet)
    : KX7CharSetConverterMBCS(map, charSet), KX7CharSetConverterDBCSBase(typeTable)
{
}

KX7CharSetConverterDBCS::KX7CharSetConverterDBCS(char const* name, unsigned char const* typeTable, KX7CharSet charSet)
    : KX7CharSetConverterMBCS(name, charSet), KX7CharSetConverterDBCSBase(typeTable)
{
}

KX7CharSetConverterDBCS::~KX7CharSetConverterDBCS() = default;

void KX7CharSetConverterDBCS::load()
{
    kx7::LoadLock const lock(m_oLoadMutex);
    LookupTable<unsigned short>* const toUnicode = buildTables();
    if (!toUnicode)
        return;
    kx7::MultibyteTables* const tables = kx7::multibyteTables(m_pKernelTables);
    if (tables && Decoder::canFill(m_pTypeTable))
        kx7::makePairUnits(*tables, tables->toUnicodePages.get(),
                           [&](kx7::PairUnits& pairs) { Decoder::fill(pairs, m_pTypeTable, *toUnicode); });
    m_pToUnicode.store(toUnicode, std::memory_order_release);
}

KX7CharSetConverterDBCS::Decoder KX7CharSetConverterDBCS::decoder()
{
    if (!tablesBuilt())
        load();
    return {m_pTypeTable, toUnicode(), kx7::pairsOf(kernelTables())};
}

KX7CharSetConverterDBCS::Encoder KX7CharSetConverterDBCS::encoder()
{
    if (!tablesBuilt())
        load();
    kx7::MultibyteTables const* const tables = kernelTables();
    return {fromUnicode(), kx7::unitCodesOf(tables), kx7::pairsOf(tables)};
}

unsigned int KX7CharSetConverterDBCS::getNumUnits(void const* source, unsigned int byteCount)
{
    if (!source)
        return 0;
    return kx7::countDoubleByteCharacters(m_pTypeTable, source, byteCount);
}

#define KX7_CONVERTER KX7CharSetConverterDBCS
#include "kx7/converters/PublishedOperations.inc"
