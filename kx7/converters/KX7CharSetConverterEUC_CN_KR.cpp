// kx7text - EUC-KR and EUC-CN: ASCII, and the row and cell of a 94-by-94 set with the high bits set.
#include "kx7/converters/KX7CharSetConverterEUC_CN_KR.h"

#include "kx7/base/LoadLock.h"
#include "kx7/converters/DoubleByte.h"
#include "kx7/converters/DoubleByteEncoder.h"
#include "kx7/converters/EngineOf.h"
#include "kx7/converters/Euc.h"
#include "kx7/converters/MultibyteTables.h"

namespace {

/** A byte-type table. */
struct Types {
    unsigned char of[256] = {};

    constexpr Types()
    {
        for (unsigned int byte = 0; byte < 256; ++byte)
            if (kx7::isPairByte(static_cast<unsigned char>(byte)))
                of[byte] = kx7::LEAD_BYTE | kx7::TRAIL_BYTE;
    }
};
constexpr Types TYPES;

}  // namespace

struct KX7CharSetConverterEUC_CN_KR::Decoder : kx7::PairDecoder {
    Decoder(LookupTable<unsigned short> const& toUnicode, kx7::PairUnits const* pairs)
        : PairDecoder(pairs), m_toUnicode(toUnicode)
    {
    }

    kx7::DecodedChar decodeOne(unsigned char const* p, unsigned char const* end) const
    {
        if (p[0] < 0x7F)
            return kx7::DecodedChar::one(p[0], 1);
        if (!kx7::isPairByte(p[0]))
            return kx7::DecodedChar::illegal(1, kx7::LimitCheck::CHECK);
        if (p + 1 == end)
            return kx7::DecodedChar::truncated();
        // Kept on purpose: after a lead byte without a trail byte the limit waits for the character after it.
        if (!kx7::isPairByte(p[1]))
            return kx7::DecodedChar::illegal(1, kx7::LimitCheck::SKIP);
        unsigned int const unit = m_toUnicode.get(kx7::rowAndCell(p[0], p[1]));
        if (unit == 0)
            return kx7::DecodedChar::illegal(2, kx7::LimitCheck::CHECK);
        return kx7::DecodedChar::one(unit, 2);
    }

private:
    LookupTable<unsigned short> const& m_toUnicode;
};

struct KX7CharSetConverterEUC_CN_KR::Encoder : kx7::DoubleByteEncoder {
    static constexpr unsigned int MOST_BYTES = 2;

    Encoder(LookupTable<unsigned short> const& fromUnicode, unsigned short const* codes, kx7::PairUnits const* pairs)
        : DoubleByteEncoder(codes, pairs), m_fromUnicode(fromUnicode)
    {
    }

    kx7::EncodedChar encodeOne(unsigned short const* p, unsigned short const* /*end*/) const
    {
        if (p[0] < 0x7F)
            return {p[0], 1, 1, kx7::Found::CHARACTER};
        unsigned int const code = m_fromUnicode.get(p[0]);
        if (code == 0)
            return kx7::EncodedChar::unmappable(1);
        return {kx7::eucPair(code), 2, 1, kx7::Found::CHARACTER};
    }

private:
    LookupTable<unsigned short> const& m_fromUnicode;
};

template struct kx7::EngineOf<KX7CharSetConverterEUC_CN_KR>;

KX7CharSetConverterEUC_CN_KR::KX7CharSetConverterEUC_CN_KR(unsigned short const* map, KX7CharSet charSet)
    : KX7CharSetConverterMBCS(map, charSet)
{
}

KX7CharSetConverterEUC_CN_KR::KX7CharSetConverterEUC_CN_KR(char const* name, KX7CharSet charSet)
    : KX7CharSetConverterMBCS(name, charSet)
{
}

KX7CharSetConverterEUC_CN_KR::~KX7CharSetConverterEUC_CN_KR() = default;

void KX7CharSetConverterEUC_CN_KR::load()
{
    kx7::LoadLock const lock(m_oLoadMutex);
    LookupTable<unsigned short>* const toUnicode = buildTables();
    if (!toUnicode)
        return;
    if (kx7::MultibyteTables* const tables = kx7::multibyteTables(m_pKernelTables)) {
        kx7::makeOwnUnitCodes(*tables, m_pMap, kx7::eucWritten);
        kx7::makePairUnits(*tables, nullptr, [&](kx7::PairUnits& pairs) { kx7::fillEuc(pairs, *toUnicode); });
    }
    m_pToUnicode.store(toUnicode, std::memory_order_release);
}

KX7CharSetConverterEUC_CN_KR::Decoder KX7CharSetConverterEUC_CN_KR::decoder()
{
    if (!tablesBuilt())
        load();
    return {toUnicode(), kx7::pairsOf(kernelTables())};
}

KX7CharSetConverterEUC_CN_KR::Encoder KX7CharSetConverterEUC_CN_KR::encoder()
{
    if (!tablesBuilt())
        load();
    kx7::MultibyteTables const* const tables = kernelTables();
    return {fromUnicode(), kx7::unitCodesOf(tables), kx7::pairsOf(tables)};
}

unsigned int KX7CharSetConverterEUC_CN_KR::getNumUnits(void const* source, unsigned int byteCount)
{
    if (!source)
        return 0;
    return kx7::countDoubleByteCharacters(TYPES.of, source, byteCount);
}

#define KX7_CONVERTER KX7CharSetConverterEUC_CN_KR
#include "kx7/converters/PublishedOperations.inc"
