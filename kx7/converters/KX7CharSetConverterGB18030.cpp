// kx7text - GB 18030: GBK in one or two bytes, the rest of the Basic Multilingual Plane and all planes above in four.
//
// Sequences are reduced to a GB code: the byte, the two bytes as a number, or 0x10000 plus the index of the four-byte
// sequence. Two-byte codes that GBK maps otherwise are laid over its forward table, so that one lookup serves;
// encoding asks the GBK table first, then the ranges.
#include "kx7/converters/KX7CharSetConverterGB18030.h"

#include <memory>

#include "kx7/base/GB18030Codes.h"
#include "kx7/base/LoadLock.h"
#include "kx7/converters/DoubleByte.h"
#include "kx7/converters/EngineOf.h"
#include "kx7/converters/GB18030Index.h"
#include "kx7/tables/GB18030Ranges.h"

namespace {

using kx7::GB18030Range;

using kx7::FIRST_FOUR_BYTE_CODE;
using kx7::FIRST_SUPPLEMENTARY_CODE;
using kx7::fourBytesOf;
using kx7::SUPPLEMENTARY_OFFSET;

constexpr bool isDigit(unsigned char byte)
{
    return byte >= 0x30 && byte <= 0x39;
}

constexpr bool isLead(unsigned char byte)
{
    return byte >= 0x81 && byte <= 0xFE;
}

constexpr bool isTrail(unsigned char byte)
{
    return byte >= 0x40 && byte <= 0xFE && byte != 0x7F;
}

constexpr unsigned int fourByteCode(unsigned char const* p)
{
    return FIRST_FOUR_BYTE_CODE + (((p[0] - 0x81U) * 10 + (p[1] - 0x30U)) * 126 + (p[2] - 0x81U)) * 10 + (p[3] - 0x30U);
}

}  // namespace

struct KX7CharSetConverterGB18030::Decoder : kx7::PairDecoder {
    Decoder(LookupTable<unsigned short> const& toUnicode, KX7CharSetConverterGB18030 const& converter,
            kx7::PairUnits const* pairs)
        : PairDecoder(pairs), m_toUnicode(toUnicode), m_converter(converter)
    {
    }

    kx7::DecodedChar decodeOne(unsigned char const* p, unsigned char const* end) const
    {
        if (!isLead(p[0])) {
            unsigned int const unit = p[0] == 0xFF ? 0 : m_toUnicode.get(p[0]);
            if (unit == 0 && p[0] != 0)
                return kx7::DecodedChar::illegal(1, kx7::LimitCheck::CHECK);
            return kx7::DecodedChar::one(unit, 1);
        }
        if (p + 1 == end)
            return kx7::DecodedChar::truncated();
        if (isTrail(p[1])) {
            unsigned int const code = kx7::doubleByteCode(p);
            unsigned int const unit = m_toUnicode.get(static_cast<unsigned short>(code));
            return found(unit != 0 ? unit : kx7::search(m_converter.getGB2UniRange(code), code), 2);
        }
        // Kept on purpose: after a sequence that is illegal or unmapped the limit waits for the character after it.
        if (!isDigit(p[1]))
            return kx7::DecodedChar::illegal(1, kx7::LimitCheck::SKIP);
        for (unsigned int i = 2; i < 4; ++i) {
            if (p + i == end)
                return kx7::DecodedChar::truncated();
            if (i == 2 ? !isLead(p[i]) : !isDigit(p[i]))
                return kx7::DecodedChar::illegal(1, kx7::LimitCheck::SKIP);
        }
        unsigned int const code = fourByteCode(p);
        if (code < FIRST_SUPPLEMENTARY_CODE)
            return found(kx7::search(m_converter.getGB2UniRange(code), code), 4);
        unsigned int const codePoint = code - SUPPLEMENTARY_OFFSET;
        return found(codePoint <= kx7::LAST_CODE_POINT ? codePoint : 0, 4);
    }

    /** What the decoder finds in one byte or two. `pairs` may share the values of `toUnicode`. */
    static void fill(kx7::PairUnits& pairs, LookupTable<unsigned short> const& toUnicode)
    {
        for (unsigned int byte = 0; byte < 256; ++byte) {
            auto const high = static_cast<unsigned char>(byte);
            if (!isLead(high)) {
                pairs.put(high, high == 0xFF ? 0 : toUnicode.get(high));
                continue;
            }
            unsigned short const* const values = kx7::TablePages::page(toUnicode, high);
            unsigned short* const units = pairs.row(high);
            for (unsigned int low = 0; low < 256; ++low) {
                unsigned short const unit = isTrail(static_cast<unsigned char>(low)) ? values[low] : 0;
                if (units[low] != unit)
                    units[low] = unit;
            }
        }
    }

    void convertFast(unsigned char const*& in, unsigned char const* end, unsigned short*& out,
                     unsigned short* outEnd) const
    {
        // Without kernels the converters stand alone.
        if (!kx7::kernels().areAny)
            return;
        do
            PairDecoder::convertFast(in, end, out, outEnd);
        while (runOfFourBytes(in, end, out, outEnd));
    }

    /** As any other malformed sequence. */
    static kx7::DecodedChar atEnd(unsigned char const* /*text*/, unsigned char const* /*end*/)
    {
        return kx7::DecodedChar::illegal(1, kx7::LimitCheck::SKIP);
    }

private:
    /** Characters of four bytes, with a few of one between them. False: the first is none. */
    bool runOfFourBytes(unsigned char const*& inOut, unsigned char const* end, unsigned short*& outOut,
                        unsigned short* outEnd) const
    {
        unsigned char const* in = inOut;
        unsigned short* out = outOut;
        GB18030Range const* range = oGB2UniRange;  // text of one script stays in one
        unsigned int singles = 0;
        while (end - in >= 4 && outEnd - out >= 2) {
            if (in[0] < 0x80) {
                unsigned short const unit = m_toUnicode.get(in[0]);
                if (unit == 0 || in == inOut || ++singles > kx7::SINGLES_AMONG_FOUR_BYTES)
                    break;
                *out++ = unit;
                ++in;
                continue;
            }
            if (!isLead(in[0]) || !isDigit(in[1]) || !isLead(in[2]) || !isDigit(in[3]))
                break;
            singles = 0;
            unsigned int const code = fourByteCode(in);
            if (code >= FIRST_SUPPLEMENTARY_CODE) {
                unsigned int const codePoint = code - SUPPLEMENTARY_OFFSET;
                if (codePoint > kx7::LAST_CODE_POINT)
                    break;
                *out++ = kx7::highSurrogateOf(codePoint);
                *out++ = kx7::lowSurrogateOf(codePoint);
            }
            else {
                if (code < range->first || code > range->last)
                    range = firstToReach(m_converter.getGB2UniRange(code), code);
                if (code < range->first || code > range->last)
                    break;
                *out++ = static_cast<unsigned short>(code - range->first + range->value);
            }
            in += 4;
            if (end - in >= kx7::FOUR_BYTES_MINIMUM && pairs())
                kx7::kernels().decodeFourBytes(*pairs(), runOf(*range), in, end, out, outEnd);
        }
        bool const any = in != inOut;
        inOut = in;
        outOut = out;
        return any;
    }

    static kx7::FourByteRun runOf(GB18030Range const& range)
    {
        unsigned int const first = FIRST_FOUR_BYTE_CODE;
        unsigned int const supplementary = FIRST_SUPPLEMENTARY_CODE - first;
        if (range.first < first)
            return {0, 0, 0, supplementary};
        return {range.first - first, range.last - range.first + 1, range.value, supplementary};
    }

    static kx7::DecodedChar found(unsigned int codePoint, unsigned int length)
    {
        if (codePoint == 0)
            return kx7::DecodedChar::illegal(length, kx7::LimitCheck::SKIP);
        return kx7::DecodedChar::of(codePoint, length);
    }

    LookupTable<unsigned short> const& m_toUnicode;
    KX7CharSetConverterGB18030 const& m_converter;
};

struct KX7CharSetConverterGB18030::Encoder : kx7::EncoderBase {
    static constexpr unsigned int MOST_BYTES = 4;

    Encoder(LookupTable<unsigned short> const& fromUnicode, KX7CharSetConverterGB18030 const& converter,
            kx7::GB18030Codes const& codes, kx7::PairUnits const* pairs)
        : m_fromUnicode(fromUnicode), m_converter(converter), m_codes(codes),
          m_identity(pairs ? pairs->unitIdentity() : kx7::Identity::NONE)
    {
    }

    void convertFast(unsigned short const*& in, unsigned short const* end, unsigned char*& out,
                     unsigned char* outEnd) const
    {
        kx7::copyShort(m_identity, in, end, out, outEnd);
        if (in != end)
            runKernel(in, end, out, outEnd);
    }

    /** The same without a 0 unit, if that has no code. */
    void runKernel(unsigned short const*& in, unsigned short const* end, unsigned char*& out,
                   unsigned char* outEnd) const
    {
        if (m_codes.oneOrTwo)
            kx7::kernels().encodeGB18030(m_codes, in, end, out, outEnd);
    }

    size_t countFast(unsigned short const*& in, unsigned short const* end) const
    {
        return m_codes.oneOrTwo ? kx7::kernels().countGB18030(m_codes, in, end) : 0;
    }

    kx7::EncodedChar encodeOne(unsigned short const* p, unsigned short const* end) const
    {
        if (kx7::isHighSurrogate(p[0])) {
            if (p + 1 == end)
                return kx7::EncodedChar::truncated();
            // Kept on purpose: a high surrogate without its partner ends the text, the flag stays clear.
            if (!kx7::isLowSurrogate(p[1]))
                return kx7::EncodedChar::end();
            return {fourBytesOf(kx7::pairCodeOf(p[0], p[1])), 4, 2, kx7::Found::CHARACTER};
        }
        unsigned int code = m_fromUnicode.get(p[0]);
        if (code == 0)
            code = kx7::search(m_converter.getUni2GBRange(p[0]), p[0]);
        if (code >= FIRST_FOUR_BYTE_CODE)
            return {fourBytesOf(code), 4, 1, kx7::Found::CHARACTER};
        return kx7::EncodedChar::oneOrTwo(code, p[0], 1);
    }

    static kx7::EncodedChar atEnd() { return kx7::EncodedChar::end(); }

    static constexpr bool IS_DIRECT = true;
    static constexpr bool IS_SINGLE = false;
    static std::ptrdiff_t mostDirect() { return kx7::DIRECT_TO_GB18030; }
    kx7::Identity identity() const { return m_identity; }
    unsigned int codeOf(unsigned short unit) const
    {
        if (!m_codes.oneOrTwo)
            return 0;
        unsigned int const code = m_codes.oneOrTwo[unit];
        if (code != 0 || m_codes.fourByte[unit] == 0)
            return code;
        return fourBytesOf(m_codes.fourByte[unit] - 1U + FIRST_FOUR_BYTE_CODE);
    }
    static unsigned int codeOfPair(unsigned int codePoint) { return fourBytesOf(codePoint + SUPPLEMENTARY_OFFSET); }

private:
    LookupTable<unsigned short> const& m_fromUnicode;
    KX7CharSetConverterGB18030 const& m_converter;
    kx7::GB18030Codes m_codes;  ///< may be null
    kx7::Identity m_identity;
};

template struct kx7::EngineOf<KX7CharSetConverterGB18030>;

KX7CharSetConverterGB18030::KX7CharSetConverterGB18030(unsigned short const* gbkMap, KX7CharSet charSet)
    : KX7CharSetConverterMBCS(gbkMap, charSet), m_pGB2UniIndex(nullptr), m_pUni2GBIndex(nullptr)
{
    pthread_mutex_init(&m_oIndexMutex, nullptr);
}

KX7CharSetConverterGB18030::KX7CharSetConverterGB18030(char const* name, KX7CharSet charSet)
    : KX7CharSetConverterMBCS(name, charSet), m_pGB2UniIndex(nullptr), m_pUni2GBIndex(nullptr)
{
    pthread_mutex_init(&m_oIndexMutex, nullptr);
}

KX7CharSetConverterGB18030::~KX7CharSetConverterGB18030()
{
    delete[] m_pGB2UniIndex;
    delete[] m_pUni2GBIndex.load(std::memory_order_relaxed);
    pthread_mutex_destroy(&m_oIndexMutex);
}

void KX7CharSetConverterGB18030::load()
{
    KX7CharSetConverterMBCS::load();
    kx7::LoadLock const lock(m_oIndexMutex);
    if (m_pUni2GBIndex.load(std::memory_order_relaxed))
        return;
    std::unique_ptr<GB18030Range const*[]> gb2Uni(new (std::nothrow) GB18030Range const*[kx7::GB_BLOCKS]);
    std::unique_ptr<GB18030Range const*[]> uni2GB(new (std::nothrow) GB18030Range const*[kx7::UNIT_BLOCKS]);
    if (!gb2Uni || !uni2GB || (m_pMap && !tablesBuilt()))
        return;
    kx7::fillIndex(gb2Uni.get(), kx7::GB_BLOCKS, oGB2UniRange, kx7::FIRST_INDEXED_CODE, kx7::GB_BLOCK_SHIFT);
    kx7::fillIndex(uni2GB.get(), kx7::UNIT_BLOCKS, oUni2GBRange, 0, kx7::UNIT_BLOCK_SHIFT);
    // No conversion reads the tables of the base before the index is published, so they may still change.
    if (LookupTable<unsigned short>* const toUnicode = m_pToUnicode.load(std::memory_order_acquire)) {
        for (GB18030Range const* range = oGB2UniRange; range->first < FIRST_FOUR_BYTE_CODE; ++range)
            for (unsigned int code = range->first; code <= range->last; ++code)
                toUnicode->put(static_cast<unsigned short>(code),
                               static_cast<unsigned short>(code - range->first + range->value));
        if (kx7::MultibyteTables* const tables = kx7::multibyteTables(m_pKernelTables)) {
            kx7::makePairUnits(*tables, tables->toUnicodePages.get(),
                               [toUnicode](kx7::PairUnits& pairs) { Decoder::fill(pairs, *toUnicode); });
            kx7::makeFourByteCodes(*tables);
        }
    }
    m_pGB2UniIndex = gb2Uni.release();
    m_pUni2GBIndex.store(uni2GB.release(), std::memory_order_release);
}

bool KX7CharSetConverterGB18030::assureLoaded()
{
    if (m_pUni2GBIndex.load(std::memory_order_acquire))
        return true;
    load();
    return m_pUni2GBIndex.load(std::memory_order_acquire) != nullptr;
}

GB18030Range const* KX7CharSetConverterGB18030::getGB2UniRange(unsigned int code) const
{
    if (code < kx7::FIRST_INDEXED_CODE || !m_pUni2GBIndex.load(std::memory_order_acquire))
        return oGB2UniRange;
    return m_pGB2UniIndex[(std::min(code, kx7::LAST_INDEXED_CODE) - kx7::FIRST_INDEXED_CODE) >> kx7::GB_BLOCK_SHIFT];
}

GB18030Range const* KX7CharSetConverterGB18030::getUni2GBRange(unsigned int unit) const
{
    GB18030Range const* const* const index = m_pUni2GBIndex.load(std::memory_order_acquire);
    return index ? index[(unit & 0xFFFF) >> kx7::UNIT_BLOCK_SHIFT] : oUni2GBRange;
}

KX7CharSetConverterGB18030::Decoder KX7CharSetConverterGB18030::decoder()
{
    if (assureLoaded())
        return {toUnicode(), *this, kx7::pairsOf(kernelTables())};
    return {kx7::emptyTable<LookupTable<unsigned short>>(), *this, nullptr};
}

KX7CharSetConverterGB18030::Encoder KX7CharSetConverterGB18030::encoder()
{
    if (!assureLoaded())
        return {kx7::emptyTable<LookupTable<unsigned short>>(), *this, {}, nullptr};
    kx7::MultibyteTables const* const tables = kernelTables();
    kx7::GB18030Codes codes = {};
    if (tables && tables->fourByteCodes)
        codes = {tables->unitCodes, tables->fourByteCodes.get(), tables->fourByteRuns.get()};
    return {fromUnicode(), *this, codes, kx7::pairsOf(tables)};
}

unsigned int KX7CharSetConverterGB18030::getNumUnits(void const* source, unsigned int byteCount)
{
    if (!source || byteCount == 0)
        return 0;
    Decoder const characters = decoder();
    auto const* in = static_cast<unsigned char const*>(source);
    unsigned char const* const end = in + kx7::terminatedLength(source, byteCount);
    size_t count = end - in >= kx7::KERNEL_MINIMUM ? kx7::kernels().countUnitsOfGB18030(in, end) : 0;
    while (in != end) {
        kx7::DecodedChar const c = characters.decodeOne(in, end);
        count += c.found == kx7::Found::CHARACTER ? c.units : 1;
        in += c.found == kx7::Found::TRUNCATED ? 1 : c.consumed;
    }
    return kx7::saturated(count);
}

#define KX7_CONVERTER KX7CharSetConverterGB18030
#include "kx7/converters/PublishedOperations.inc"
