// kx7text - double-byte sets that reach beyond the Basic Multilingual Plane: Shift_JIS-2004.
#include "kx7/converters/KX7CharSetConverterDBCSEx.h"

#include <iterator>

#include "kx7/base/LoadLock.h"
#include "kx7/converters/DoubleByte.h"
#include "kx7/converters/DoubleByteEncoder.h"
#include "kx7/converters/EngineOf.h"
#include "kx7/converters/MultibyteTables.h"

struct KX7CharSetConverterDBCSEx::Decoder : kx7::DoubleByteDecoder<LookupTable<unsigned int>> {
    using DoubleByteDecoder::DoubleByteDecoder;
};

struct KX7CharSetConverterDBCSEx::Encoder : kx7::DoubleByteEncoder {
    static constexpr unsigned int MOST_BYTES = 2;

    Encoder(LookupTableEx<unsigned short> const& fromUnicode, unsigned short const* codes, kx7::PairUnits const* pairs)
        : DoubleByteEncoder(codes, pairs), m_fromUnicode(fromUnicode)
    {
    }

    kx7::EncodedChar encodeOne(unsigned short const* p, unsigned short const* end) const
    {
        if (!kx7::isHighSurrogate(p[0]))
            return kx7::EncodedChar::oneOrTwo(m_fromUnicode.get(p[0]), p[0], 1);
        if (p + 1 == end)
            return kx7::EncodedChar::truncated();
        if (!kx7::isLowSurrogate(p[1]))
            return kx7::EncodedChar::unmappable(1);
        return kx7::EncodedChar::oneOrTwo(m_fromUnicode.get(kx7::codePointOf(p[0], p[1])), p[0], 2);
    }

    static bool escape(unsigned short const*& in, unsigned short const* end, unsigned int consumed, unsigned char*& out,
                       unsigned char*& outEnd)
    {
        if (consumed == 1)
            return EncoderBase::escape(in, end, consumed, out, outEnd);
        // Kept on purpose, byte for byte: the second half is not the low surrogate but this text, zero byte included.
        static constexpr unsigned char SECOND_HALF[] = "U+04X";
        if (static_cast<size_t>(outEnd - out) < kx7::ESCAPE_LENGTH + sizeof SECOND_HALF)
            return false;
        out = kx7::writeEscape(out, in[0]);
        out = std::copy(std::begin(SECOND_HALF), std::end(SECOND_HALF), out);
        in += 2;
        return true;
    }

private:
    LookupTableEx<unsigned short> const& m_fromUnicode;
};

template struct kx7::EngineOf<KX7CharSetConverterDBCSEx>;

KX7CharSetConverterDBCSEx::KX7CharSetConverterDBCSEx(sMBCSExTable const* map, unsigned char const* typeTable,
                                                     KX7CharSet charSet)
    : KX7CharSetConverterMBCSEx(map, charSet), KX7CharSetConverterDBCSBase(typeTable)
{
}

KX7CharSetConverterDBCSEx::KX7CharSetConverterDBCSEx(char const* name, unsigned char const* typeTable,
                                                     KX7CharSet charSet)
    : KX7CharSetConverterMBCSEx(name, charSet), KX7CharSetConverterDBCSBase(typeTable)
{
}

KX7CharSetConverterDBCSEx::~KX7CharSetConverterDBCSEx() = default;

void KX7CharSetConverterDBCSEx::load()
{
    kx7::LoadLock const lock(m_oLoadMutex);
    LookupTable<unsigned int>* const toUnicode = buildTables();
    if (!toUnicode)
        return;
    kx7::MultibyteTables* const tables = kx7::multibyteTables(m_pKernelTables);
    if (tables && Decoder::canFill(m_pTypeTable))
        kx7::makePairUnits(*tables, nullptr,
                           [&](kx7::PairUnits& pairs) { Decoder::fill(pairs, m_pTypeTable, *toUnicode); });
    m_pToUnicode.store(toUnicode, std::memory_order_release);
}

KX7CharSetConverterDBCSEx::Decoder KX7CharSetConverterDBCSEx::decoder()
{
    if (!tablesBuilt())
        load();
    return {m_pTypeTable, toUnicode(), kx7::pairsOf(kernelTables())};
}

KX7CharSetConverterDBCSEx::Encoder KX7CharSetConverterDBCSEx::encoder()
{
    if (!tablesBuilt())
        load();
    kx7::MultibyteTables const* const tables = kernelTables();
    return {fromUnicode(), kx7::unitCodesOf(tables), kx7::pairsOf(tables)};
}

unsigned int KX7CharSetConverterDBCSEx::getNumUnits(void const* source, unsigned int byteCount)
{
    if (!source || byteCount == 0)
        return 0;
    if (!tablesBuilt())
        load();
    return kx7::countDoubleByteUnits(m_pTypeTable, source, byteCount, [this](unsigned int code) {
        unsigned int const codePoint = toUnicode().get(static_cast<unsigned short>(code));
        return kx7::DecodedChar::of(codePoint, 2).units;
    });
}

#define KX7_CONVERTER KX7CharSetConverterDBCSEx
#include "kx7/converters/PublishedOperations.inc"
