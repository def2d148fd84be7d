// kx7text - EUC-JP: ASCII, JIS X 0208 in pairs, JIS X 0201 after single shift 2, JIS X 0212 after single shift 3.
//
// The JIS X 0201 pairs stand in row 0 of the main tables. A pair's second byte is not checked, and its first may be any
// that is neither ASCII nor a shift, so that 0x80 reaches row 0: 0x80 0xDC is U+00A5, and 0x80 0x8A is a line feed.
#include "kx7/converters/KX7CharSetConverterEUC_JP.h"

#include <memory>

#include "kx7/base/LoadLock.h"
#include "kx7/converters/DoubleByte.h"
#include "kx7/converters/DoubleByteEncoder.h"
#include "kx7/converters/EngineOf.h"
#include "kx7/converters/Euc.h"
#include "kx7/converters/MultibyteTables.h"

constexpr char KX7CharSetConverterEUC_JP::m_cSS2;
constexpr char KX7CharSetConverterEUC_JP::m_cSS3;

namespace {

using Table = LookupTable<unsigned short>;

using kx7::SINGLE_SHIFT_3;

constexpr unsigned char SINGLE_SHIFT_2 = 0x8E;

/** JIS X 0201 half-width katakana, as the byte after single shift 2 and as a code. */
constexpr bool isKatakana(unsigned int code)
{
    return code >= 0xA1 && code <= 0xDF;
}

/** What a unit that JIS X 0208 or JIS X 0201 has is written as; 0 where that is not as plain. */
constexpr unsigned int written(unsigned int unit, unsigned int code)
{
    return unit >= 0x7F && isKatakana(code) ? SINGLE_SHIFT_2 << 8 | code : kx7::eucWritten(unit, code);
}

}  // namespace

struct KX7CharSetConverterEUC_JP::Decoder : kx7::PairDecoder {
    Decoder(LookupTable<unsigned short> const& toUnicode, LookupTable<unsigned short> const& toUnicode0212,
            kx7::PairUnits const* pairs)
        : PairDecoder(pairs), m_toUnicode(toUnicode), m_toUnicode0212(toUnicode0212)
    {
    }

    kx7::DecodedChar decodeOne(unsigned char const* p, unsigned char const* end) const
    {
        if (p[0] < 0x7F)
            return kx7::DecodedChar::one(p[0], 1);
        if (p + 1 == end)
            return kx7::DecodedChar::truncated();
        unsigned int unit = 0;
        unsigned int length = 2;
        if (p[0] == SINGLE_SHIFT_3) {
            // A zero byte ends text, so nothing after it belongs to the sequence.
            if (p[1] != 0) {
                if (p + 2 == end)
                    return kx7::DecodedChar::truncated();
                if (p[2] != 0)
                    unit = m_toUnicode0212.get(kx7::rowAndCell(p[1], p[2]));
            }
            length = 3;
        }
        else if (p[0] == SINGLE_SHIFT_2) {
            if (isKatakana(p[1]))
                unit = m_toUnicode.get(p[1]);
        }
        else if (p[1] != 0) {
            unit = m_toUnicode.get(kx7::rowAndCell(p[0], p[1]));
        }
        if (unit == 0)
            return kx7::DecodedChar::illegal(1, kx7::LimitCheck::CHECK);
        return kx7::DecodedChar::one(unit, length);
    }

    /** Counts as long a run of characters as it is sure of, moving `in`; it may do nothing. */
    size_t countFast(unsigned char const*& in, unsigned char const* end) const
    {
        return pairs() ? kx7::kernels().countMappedPairs(*pairs(), in, end) : 0;
    }

private:
    LookupTable<unsigned short> const& m_toUnicode;
    LookupTable<unsigned short> const& m_toUnicode0212;
};

struct KX7CharSetConverterEUC_JP::Encoder : kx7::DoubleByteEncoder {
    static constexpr unsigned int MOST_BYTES = 3;

    Encoder(LookupTable<unsigned short> const& fromUnicode, LookupTable<unsigned short> const& fromUnicode0212,
            unsigned short const* codes, kx7::PairUnits const* pairs)
        : DoubleByteEncoder(codes, pairs), m_fromUnicode(fromUnicode), m_fromUnicode0212(fromUnicode0212)
    {
    }

    kx7::EncodedChar encodeOne(unsigned short const* p, unsigned short const* /*end*/) const
    {
        if (p[0] < 0x7F)
            return {p[0], 1, 1, kx7::Found::CHARACTER};
        unsigned int const code = m_fromUnicode.get(p[0]);
        if (isKatakana(code))
            return {SINGLE_SHIFT_2 << 8 | code, 2, 1, kx7::Found::CHARACTER};
        if (code != 0)
            return {kx7::eucPair(code), 2, 1, kx7::Found::CHARACTER};
        unsigned int const code0212 = m_fromUnicode0212.get(p[0]);
        if (code0212 != 0)
            return {SINGLE_SHIFT_3 << 16 | kx7::eucPair(code0212), 3, 1, kx7::Found::CHARACTER};
        return kx7::EncodedChar::unmappable(1);
    }

private:
    LookupTable<unsigned short> const& m_fromUnicode;
    LookupTable<unsigned short> const& m_fromUnicode0212;
};

struct KX7CharSetConverterEUC_JP::StrictDecoder : Decoder {
    explicit StrictDecoder(Decoder const& decoder) : Decoder(decoder) {}

    /** Pairs in the range of the standard, and the two that the encoder writes beside them. */
    kx7::DecodedChar decodeOne(unsigned char const* p, unsigned char const* end) const
    {
        // 0xFF leads no sequence, so it costs no lookup.
        if (p[0] == 0xFF && p + 1 != end)
            return kx7::DecodedChar::illegal(1, kx7::LimitCheck::CHECK);
        kx7::DecodedChar const c = Decoder::decodeOne(p, end);
        if (c.found != kx7::Found::CHARACTER || c.consumed == 1 || p[0] == SINGLE_SHIFT_2)
            return c;
        bool const isYenOrOverline = p[0] == 0x80 && (p[1] == 0xDC || p[1] == 0xFE);
        unsigned char const* const pair = p + c.consumed - 2;
        if (isYenOrOverline || (kx7::isPairByte(pair[0]) && kx7::isPairByte(pair[1])))
            return c;
        return kx7::DecodedChar::illegal(1, kx7::LimitCheck::CHECK);
    }
};

namespace kx7 {
template <>
auto EngineOf<KX7CharSetConverterEUC_JP>::strictDecoder(KX7CharSetConverter& converter)
{
    return KX7CharSetConverterEUC_JP::StrictDecoder(static_cast<KX7CharSetConverterEUC_JP&>(converter).decoder());
}

/** Three with a list of JIS X 0212 only. */
template <>
unsigned int EngineOf<KX7CharSetConverterEUC_JP>::maxBytesPerUnit(KX7CharSetConverter const& converter)
{
    unsigned short const* const list = static_cast<KX7CharSetConverterEUC_JP const&>(converter).m_pMap0212;
    return list && (list[0] != 0 || list[1] != 0) ? 3 : 2;
}

template struct EngineOf<KX7CharSetConverterEUC_JP>;
}  // namespace kx7

KX7CharSetConverterEUC_JP::KX7CharSetConverterEUC_JP(unsigned short const* map0208, unsigned short const* map0201,
                                                     unsigned short const* map0212, KX7CharSet charSet)
    : KX7CharSetConverterMBCS(map0208, charSet), m_pszName0201(nullptr), m_pszName0212(nullptr),
      m_pToUnicode0212(nullptr), m_pFromUnicode0212(nullptr), m_pMap0201(map0201), m_pMap0212(map0212)
{
    pthread_mutex_init(&m_oLoadMutex0212, nullptr);
}

KX7CharSetConverterEUC_JP::KX7CharSetConverterEUC_JP(char const* name0208, char const* name0201, char const* name0212,
                                                     KX7CharSet charSet)
    : KX7CharSetConverterMBCS(name0208, charSet), m_pszName0201(name0201), m_pszName0212(name0212),
      m_pToUnicode0212(nullptr), m_pFromUnicode0212(nullptr), m_pMap0201(nullptr), m_pMap0212(nullptr)
{
    pthread_mutex_init(&m_oLoadMutex0212, nullptr);
}

KX7CharSetConverterEUC_JP::~KX7CharSetConverterEUC_JP()
{
    delete m_pToUnicode0212.load(std::memory_order_relaxed);
    delete m_pFromUnicode0212;
    pthread_mutex_destroy(&m_oLoadMutex0212);
}

void KX7CharSetConverterEUC_JP::load()
{
    loadBase();
    kx7::LoadLock const lock(m_oLoadMutex0212);
    if (m_pToUnicode0212.load(std::memory_order_relaxed) || !m_pMap0212)
        return;
    // Without a list the base has no tables, which is no failure: JIS X 0212 is mapped all the same.
    bool const hasBase = tablesBuilt();
    if (!hasBase && m_pMap)
        return;
    std::unique_ptr<Table> toUnicode0212(new (std::nothrow) Table);
    std::unique_ptr<Table> fromUnicode0212(new (std::nothrow) Table);
    if (!toUnicode0212 || !fromUnicode0212)
        return;
    kx7::putPairs(*toUnicode0212, *fromUnicode0212, m_pMap0212);
    // No conversion reads the tables of the base before the JIS X 0212 table is published, so they may still change.
    Table* const toUnicode = m_pToUnicode.load(std::memory_order_relaxed);
    kx7::MultibyteTables* const tables = hasBase ? kx7::multibyteTables(m_pKernelTables) : nullptr;
    if (m_pMap0201 && hasBase) {
        kx7::putPairs(*toUnicode, *m_pFromUnicode, m_pMap0201);
        if (tables && tables->ownUnitCodes)
            kx7::fillUnitCodes(tables->ownUnitCodes.get(), tables->fromUnicodePages.get(), m_pMap0201, written);
    }
    m_pFromUnicode0212 = fromUnicode0212.release();
    if (tables)
        kx7::makePairUnits(*tables, nullptr, [toUnicode](kx7::PairUnits& pairs) {
            kx7::fillEuc(pairs, *toUnicode);
            unsigned short* const afterShift = pairs.row(SINGLE_SHIFT_2);
            for (unsigned char byte = 0xA1; isKatakana(byte); ++byte)
                afterShift[byte] = toUnicode->get(byte);
            pairs.findMappedTrails();
        });
    m_pToUnicode0212.store(toUnicode0212.release(), std::memory_order_release);
}

/** Builds the tables of the base: JIS X 0208. */
void KX7CharSetConverterEUC_JP::loadBase()
{
    kx7::LoadLock const lock(m_oLoadMutex);
    Table* const toUnicode = buildTables();
    if (!toUnicode)
        return;
    if (kx7::MultibyteTables* const tables = kx7::multibyteTables(m_pKernelTables))
        kx7::makeOwnUnitCodes(*tables, m_pMap, written);
    m_pToUnicode.store(toUnicode, std::memory_order_release);
}

/** All tables can be read. Without a JIS X 0212 list that never comes, and those of the base are all there is. */
bool KX7CharSetConverterEUC_JP::assureLoaded()
{
    if (m_pToUnicode0212.load(std::memory_order_acquire))
        return true;
    load();
    return m_pToUnicode0212.load(std::memory_order_acquire) != nullptr;
}

KX7CharSetConverterEUC_JP::Decoder KX7CharSetConverterEUC_JP::decoder()
{
    Table const& none = kx7::emptyTable<Table>();
    if (assureLoaded())
        return {toUnicode(), *m_pToUnicode0212.load(std::memory_order_acquire), kx7::pairsOf(kernelTables())};
    return {m_pMap0212 ? none : toUnicode(), none, nullptr};
}

KX7CharSetConverterEUC_JP::Encoder KX7CharSetConverterEUC_JP::encoder()
{
    Table const& none = kx7::emptyTable<Table>();
    bool const isLoaded = assureLoaded();
    kx7::MultibyteTables const* const tables = kernelTables();
    if (isLoaded)
        return {fromUnicode(), *m_pFromUnicode0212, kx7::unitCodesOf(tables), kx7::pairsOf(tables)};
    if (m_pMap0212)
        return {none, none, nullptr, nullptr};
    return {fromUnicode(), none, kx7::unitCodesOf(tables), nullptr};
}

unsigned int KX7CharSetConverterEUC_JP::getNumUnits(void const* source, unsigned int byteCount)
{
    if (!source || byteCount == 0)
        return 0;
    Decoder const characters = decoder();
    auto const* in = static_cast<unsigned char const*>(source);
    unsigned char const* const textEnd = in + kx7::terminatedLength(source, byteCount);
    size_t left = byteCount == kx7::UNTIL_TERMINATOR ? static_cast<size_t>(textEnd - in) : byteCount;
    size_t count = 0;
    while (left != 0 && *in != 0) {
        unsigned char const* const begin = in;
        count += characters.countFast(in, textEnd);
        // What else can be decoded is counted as it is decoded.
        unsigned short units[kx7::COUNTED_AT_ONCE];
        unsigned short* unitsEnd = units;
        characters.convertFast(in, textEnd, unitsEnd, units + kx7::COUNTED_AT_ONCE);
        count += static_cast<size_t>(unitsEnd - units);
        left -= static_cast<size_t>(in - begin);
        if (left == 0 || *in == 0)
            break;
        if (unitsEnd == units + kx7::COUNTED_AT_ONCE)
            continue;
        // Kept on purpose: a shift or lead byte ends the count where its sequence would not fit, mapped or not.
        size_t const needed = *in < 0x7F ? 1 : *in == SINGLE_SHIFT_3 ? 3 : 2;
        if (left < needed)
            break;
        // Kept on purpose: any katakana byte after a shift makes a pair here.
        size_t const used = *in == SINGLE_SHIFT_2 ? (isKatakana(in[1]) ? 2 : 1)
                                                  : characters.decodeOne(in, kx7::endOf(in, left)).consumed;
        ++count;
        in += used;
        left -= used;
    }
    return kx7::saturated(count);
}

#define KX7_CONVERTER KX7CharSetConverterEUC_JP
#include "kx7/converters/PublishedOperations.inc"
