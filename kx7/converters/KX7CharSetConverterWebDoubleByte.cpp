// kx7text - double-byte encodings of the WHATWG Encoding Standard: EUC-JP, EUC-KR, Shift_JIS.
#include "kx7/converters/KX7CharSetConverterWebDoubleByte.h"

#include "kx7/base/LoadLock.h"
#include "kx7/converters/DoubleByte.h"
#include "kx7/converters/DoubleByteEncoder.h"
#include "kx7/converters/EngineOf.h"
#include "kx7/converters/Euc.h"
#include "kx7/converters/MultibyteTables.h"

namespace {

/** What has no character, and is `length` bytes long. */
kx7::DecodedChar withoutCharacter(unsigned char const* p, unsigned int length)
{
    return kx7::DecodedChar::illegal(length > 1 && p[length - 1] < 0x80 ? length - 1 : length, kx7::LimitCheck::CHECK);
}

}  // namespace

struct KX7CharSetConverterWebDoubleByte::Decoder : kx7::PairDecoder {
    /** @param afterShift null: no codes of three bytes */
    Decoder(unsigned char const* types, LookupTable<unsigned short> const& toUnicode,
            LookupTable<unsigned short> const* afterShift, kx7::PairUnits const* pairs)
        : PairDecoder(pairs), m_types(types), m_toUnicode(toUnicode), m_afterShift(afterShift)
    {
    }

    kx7::DecodedChar decodeOne(unsigned char const* p, unsigned char const* end) const
    {
        bool const isLead = (m_types[p[0]] & kx7::LEAD_BYTE) != 0;
        if (isLead && end - p < 2)
            return kx7::DecodedChar::truncated();
        unsigned int const code = isLead ? kx7::doubleByteCode(p) : p[0];
        unsigned int const unit = m_toUnicode.get(static_cast<unsigned short>(code));
        if (unit != 0 || code == 0)
            return kx7::DecodedChar::one(unit, isLead ? 2 : 1);
        if (m_afterShift && p[0] == kx7::SINGLE_SHIFT_3)
            return decodeThree(p, end);
        return withoutCharacter(p, isLead ? 2 : 1);
    }

private:
    kx7::DecodedChar decodeThree(unsigned char const* p, unsigned char const* end) const
    {
        if (end - p < 2)
            return kx7::DecodedChar::truncated();
        if (!kx7::isPairByte(p[1]))
            return withoutCharacter(p, 2);
        if (end - p < 3)
            return kx7::DecodedChar::truncated();
        unsigned int const unit = m_afterShift->get(static_cast<unsigned short>(kx7::doubleByteCode(p + 1)));
        return unit != 0 ? kx7::DecodedChar::one(unit, 3) : withoutCharacter(p, 3);
    }

    unsigned char const* m_types;
    LookupTable<unsigned short> const& m_toUnicode;
    LookupTable<unsigned short> const* m_afterShift;
};

struct KX7CharSetConverterWebDoubleByte::Encoder : kx7::ListedDoubleByteEncoder {
    using ListedDoubleByteEncoder::ListedDoubleByteEncoder;
};

template struct kx7::EngineOf<KX7CharSetConverterWebDoubleByte>;

KX7CharSetConverterWebDoubleByte::KX7CharSetConverterWebDoubleByte(unsigned short const* map,
                                                                   unsigned short const* decodedOnly,
                                                                   unsigned short const* encodedOnly,
                                                                   unsigned short const* threeBytes,
                                                                   unsigned char const* typeTable, KX7CharSet charSet)
    : KX7CharSetConverterMBCS(map, charSet), m_decodedOnly(decodedOnly), m_encodedOnly(encodedOnly),
      m_threeBytes(threeBytes), m_types(typeTable)
{
}

KX7CharSetConverterWebDoubleByte::~KX7CharSetConverterWebDoubleByte()
{
    delete m_afterShift;
}

void KX7CharSetConverterWebDoubleByte::load()
{
    kx7::LoadLock const lock(m_oLoadMutex);
    if (m_threeBytes && !m_afterShift) {
        m_afterShift = new (std::nothrow) LookupTable<unsigned short>;
        for (unsigned short const* pair = m_threeBytes; m_afterShift && pair[0] != 0; pair += 2)
            m_afterShift->put(pair[0], pair[1]);
    }
    if (m_threeBytes && !m_afterShift)
        return;
    LookupTable<unsigned short>* const toUnicode = buildTables();
    if (!toUnicode)
        return;
    for (unsigned short const* pair = m_decodedOnly; pair && pair[0] != 0; pair += 2)
        toUnicode->put(pair[0], pair[1]);
    for (unsigned short const* pair = m_encodedOnly; pair && pair[0] != 0; pair += 2)
        m_pFromUnicode->put(pair[1], pair[0]);
    if (kx7::MultibyteTables* const tables = kx7::multibyteTables(m_pKernelTables))
        kx7::makePairUnits(*tables, tables->toUnicodePages.get(), [&](kx7::PairUnits& pairs) {
            kx7::DoubleByteDecoder<LookupTable<unsigned short>>::fill(pairs, m_types, *toUnicode);
        });
    m_pToUnicode.store(toUnicode, std::memory_order_release);
}

KX7CharSetConverterWebDoubleByte::Decoder KX7CharSetConverterWebDoubleByte::decoder()
{
    if (!tablesBuilt())
        load();
    LookupTable<unsigned short> const* const afterShift =
        m_threeBytes ? &kx7::tableOrEmpty(tablesBuilt() ? m_afterShift : nullptr) : nullptr;
    return {m_types, toUnicode(), afterShift, kx7::pairsOf(kernelTables())};
}

KX7CharSetConverterWebDoubleByte::Encoder KX7CharSetConverterWebDoubleByte::encoder()
{
    if (!tablesBuilt())
        load();
    kx7::MultibyteTables const* const tables = kernelTables();
    return {fromUnicode(), kx7::unitCodesOf(tables), kx7::pairsOf(tables)};
}

unsigned int KX7CharSetConverterWebDoubleByte::getNumUnits(void const* source, unsigned int byteCount)
{
    if (!source)
        return 0;
    Decoder const characters = decoder();
    auto const* in = static_cast<unsigned char const*>(source);
    unsigned char const* const end = in + kx7::terminatedLength(source, byteCount);
    size_t count = 0;
    for (; in != end; ++count) {
        kx7::DecodedChar const c = characters.decodeOne(in, end);
        in = c.found == kx7::Found::TRUNCATED ? end : in + c.consumed;
    }
    return kx7::saturated(count);
}

#define KX7_CONVERTER KX7CharSetConverterWebDoubleByte
#include "kx7/converters/PublishedOperations.inc"
