// kx7text - UTF-8 to single-byte sets with AVX2, in one step.
//
// As with AVX-512, 32 bytes at a time: checked against what the leads of two windows want after them, looked up where
// they stand, and the last bytes of the characters moved to the front, eight at a time, by a shuffle from a table of
// 256. Where all units keep their places in the rows of the first window, the row is looked up; else the windows are.
//
// A block is written once the next one is known to be good: what its stores write after its text is then covered by
// the text of the next. The last one before something else goes through a buffer.
#include "kx7/kernels/SingleByteAvx2.h"

#ifdef KX7_X86_KERNELS

#include <algorithm>
#include <cstring>

#include "kx7/kernels/Avx2.h"
#include "kx7/kernels/SingleByteUtf8.h"

#define KX7_INLINE_AVX2 KX7_AVX2 KX7_READS_BEYOND __attribute__((always_inline)) inline

namespace kx7 {

namespace {

/** A block of which a part may lie beside the text. */
KX7_INLINE_AVX2 __m256i loadNear(void const* p)
{
    return _mm256_loadu_si256(static_cast<__m256i const*>(p));
}

/** The last bytes of a page. One by one: memcpy is asked by sanitizers of a whole program whether each is in an object.
 */
KX7_INLINE_AVX2 void copyNear(unsigned char* to, unsigned char const volatile* from, unsigned char const volatile* end)
{
    while (from < end)
        *to++ = *from++;
}

constexpr std::ptrdiff_t BLOCK = 32;
constexpr uint32_t ALL = 0xFFFFFFFF;

/** Bytes that are ASCII throughout or not. */
constexpr std::ptrdiff_t RUN = BLOCKS_AT_ONCE * BLOCK;

/** Bytes that the stores of a block may write after its text. */
constexpr std::ptrdiff_t SPILL = 8;

/** For each mask of eight bytes the shuffle that moves those in it to the front. */
struct KeepBytes {
    uint64_t shuffles[256];
    constexpr KeepBytes() : shuffles()
    {
        for (unsigned int mask = 0; mask < 256; ++mask) {
            unsigned int at = 0;
            for (unsigned int byte = 0; byte < 8; ++byte)
                if (mask >> byte & 1)
                    shuffles[mask] |= uint64_t{byte} << 8 * at++;
        }
    }
};
constexpr KeepBytes KEEP_BYTES;

KX7_INLINE_AVX2 __m256i allOf(unsigned int byte)
{
    return _mm256_set1_epi8(static_cast<char>(byte));
}

/** A block as it was found: where characters end, the bytes of the set. */
struct Found : WindowCharacters<uint32_t> {
    __m256i bytes;
};

/** What is to be written of a block. */
struct Block {
    __m256i bytes;
    uint32_t kept;
};

/** Moves the kept ones of 16 bytes to the front of each eight. */
KX7_INLINE_AVX2 __m128i movedOf(__m128i bytes, uint32_t kept)
{
    uint64_t const first = KEEP_BYTES.shuffles[kept & 0xFF];
    uint64_t const second = KEEP_BYTES.shuffles[kept >> 8 & 0xFF];
    __m128i const shuffle = _mm_or_si128(_mm_unpacklo_epi64(_mm_loadl_epi64(reinterpret_cast<__m128i const*>(&first)),
                                                            _mm_loadl_epi64(reinterpret_cast<__m128i const*>(&second))),
                                         _mm_setr_epi32(0, 0, 0x08080808, 0x08080808));
    return _mm_shuffle_epi8(bytes, shuffle);
}

/** Moves the kept bytes of each eight to the front and stores them all: up to SPILL bytes after those that count. */
KX7_INLINE_AVX2 unsigned char* writeLoosely(unsigned char* out, Block const& block)
{
    uint32_t kept = block.kept;
    for (int half = 0; half < 2; ++half, kept >>= 16) {
        __m128i const bytes =
            half == 0 ? _mm256_castsi256_si128(block.bytes) : _mm256_extracti128_si256(block.bytes, 1);
        __m128 const moved = _mm_castsi128_ps(movedOf(bytes, kept));
        // Not the stores of doubles, whose pointers have to be aligned.
        _mm_storel_pi(reinterpret_cast<__m64*>(out), moved);
        _mm_storeh_pi(reinterpret_cast<__m64*>(out + __builtin_popcount(kept & 0xFF)), moved);
        out += __builtin_popcount(kept & 0xFFFF);
    }
    return out;
}

/** For each count of bytes at the front of eight the shuffle that joins them and the eight after. */
struct JoinBytes {
    unsigned char shuffles[9][16];
    constexpr JoinBytes() : shuffles()
    {
        for (unsigned int count = 0; count < 9; ++count)
            for (unsigned int i = 0; i < 16; ++i)
                shuffles[count][i] = static_cast<unsigned char>(i < count            ? i
                                                                : i - count + 8 < 16 ? i - count + 8
                                                                                     : 0x80);
    }
};
constexpr JoinBytes JOIN_BYTES;

/** The kept ones of 16 bytes. */
KX7_INLINE_AVX2 CountedBytes joined(__m128i bytes, uint32_t kept)
{
    unsigned char const* const shuffle = JOIN_BYTES.shuffles[__builtin_popcount(kept & 0xFF)];
    return {_mm_shuffle_epi8(movedOf(bytes, kept), load128(shuffle)), __builtin_popcount(kept)};
}

/** The same without a byte after those that count. */
KX7_INLINE_AVX2 unsigned char* writeExactly(unsigned char* out, Block const& block)
{
    uint32_t kept = block.kept;
    CountedBytes const front = joined(_mm256_castsi256_si128(block.bytes), kept & 0xFFFF);
    CountedBytes const back = joined(_mm256_extracti128_si256(block.bytes, 1), kept >> 16);
    if (front.count + back.count < 16) {
        out = storeExactly(out, front);
    }
    else {
        store128(out, front.bytes);
        out += front.count;
    }
    return storeExactly(out, back);
}

/** How the bytes of 48 that are at one place of each three come together, by 16 of them. */
struct Thirds {
    unsigned char shuffles[3][3][16];  ///< by place, then by block
    constexpr Thirds() : shuffles()
    {
        for (unsigned int place = 0; place < 3; ++place)
            for (unsigned int block = 0; block < 3; ++block)
                for (unsigned int i = 0; i < 16; ++i) {
                    unsigned int const at = 3 * i + place - 16 * block;
                    shuffles[place][block][i] = static_cast<unsigned char>(at < 16 ? at : 0x80);
                }
    }
};
constexpr Thirds THIRDS;

template <Three THREE>
class Converter {
public:
    KX7_INLINE_AVX2 explicit Converter(SingleByteTables const& tables)
        : m_tables(tables), m_isASCII(tables.unitIdentity == Identity::ASCII), m_first(tables.windows[1]),
          m_second(tables.windows[2])
    {
        if (THREE == Three::FIRST && isThree(tables.windows[2]))
            m_second.pair = 0xFF;  // no byte: its characters go one by one
    }

    KX7_INLINE_AVX2 void convert(unsigned char const*& inOut, unsigned char*& outOut, unsigned char* outEnd)
    {
        m_in = inOut;
        m_out = outOut;
        m_outEnd = outEnd;
        m_end = pageEnd(m_in);
        bool goesOn = true;
        // Blocks look at the two bytes in front as well.
        while (goesOn && inPage(m_in) < 2)
            goesOn = convertOne();
        while (goesOn) {
            convertRun();
            goesOn = convertPart();
        }
        inOut = m_in;
        outOut = m_out;
    }

private:
    KX7_INLINE_AVX2 bool hasRun()
    {
        if (m_outEnd - m_out < RUN + BLOCK + SPILL)
            return false;
        std::ptrdiff_t const left = m_end - m_in;
        // After a page without a zero byte there is another.
        if (left < RUN && (left <= 0 || !memchr(m_in, 0, static_cast<size_t>(left))))
            m_end += PAGE;
        return m_end - m_in >= RUN;
    }

    KX7_INLINE_AVX2 bool isRunOfASCII() const
    {
        __m256i const least = _mm256_min_epi8(_mm256_min_epi8(loadNear(m_in), loadNear(m_in + BLOCK)),
                                              _mm256_min_epi8(loadNear(m_in + 2 * BLOCK), loadNear(m_in + 3 * BLOCK)));
        return signsOf(_mm256_cmpgt_epi8(least, _mm256_setzero_si256())) == ALL && m_before.truncated() == 0;
    }

    /** Converts blocks up to the first that holds something else, of which there may be none. */
    KX7_INLINE_AVX2 void convertRun()
    {
        Block held = {_mm256_setzero_si256(), 0};  // not written yet
        bool isGood = true;
        while (isGood && hasRun()) {
            if (m_isASCII && isRunOfASCII()) {
                m_out = writeLoosely(m_out, held);
                held.kept = 0;
                for (std::ptrdiff_t i = 0; i < RUN; i += BLOCK)
                    store256(m_out + i, loadNear(m_in + i));
                m_in += RUN;
                m_out += RUN;
                m_before = {};
                continue;
            }
            int characters = 0;
            for (int i = 0; i < 4; ++i) {
                Found const found = find(m_in);
                isGood = found.bad == 0;
                if (!isGood)
                    break;
                m_out = writeLoosely(m_out, held);
                held = {found.bytes, found.kept};
                m_before = found.leads;
                m_in += BLOCK;
                characters += __builtin_popcount(found.kept);
            }
            if (THREE == Three::FIRST && isGood && characters <= RUN / 3 + 1) {
                m_out = writeExactly(m_out, held);
                held.kept = 0;
                convertThrees();
            }
        }
        if (held.kept != 0)
            m_out = writeExactly(m_out, held);
    }

    /** Converts text of which all characters have three bytes and are in the first window, in their places. */
    KX7_INLINE_AVX2 void convertThrees()
    {
        constexpr std::ptrdiff_t HALF = 48;
        m_in -= m_before.truncated();
        m_before = {};
        UnitWindow const& window = m_tables.windows[1];
        for (; m_end - m_in >= 2 * HALF && m_outEnd - m_out >= BLOCK; m_in += 2 * HALF, m_out += BLOCK) {
            __m256i blocks[3];
            for (int i = 0; i < 3; ++i)
                blocks[i] = _mm256_set_m128i(load128(m_in + HALF + 16 * i), load128(m_in + 16 * i));
            __m256i const leads = gathered(blocks, 0);
            __m256i const pairs = gathered(blocks, 1);
            __m256i const lasts = gathered(blocks, 2);
            __m256i const isThree =
                _mm256_and_si256(_mm256_cmpeq_epi8(leads, allOf(m_first.lead)),
                                 _mm256_cmpeq_epi8(_mm256_and_si256(pairs, allOf(0xFE)), allOf(m_first.pair)));
            __m256i const places = placesOf(pairs, lasts);
            __m256i const rows = highNibbles(places);
            __m256i const inRow = _mm256_and_si256(places, allOf(0xF));
            __m256i const isRegular = hasBits(_mm256_shuffle_epi8(inBothHalves(window.regular), inRow), bitOfRow(rows));
            __m256i const isGood =
                _mm256_and_si256(_mm256_and_si256(isThree, isRegular), _mm256_cmpgt_epi8(allOf(0xC0), lasts));
            if (signsOf(isGood) != ALL)
                break;
            store256(m_out, _mm256_or_si256(_mm256_shuffle_epi8(inBothHalves(window.rows), rows), inRow));
        }
    }

    /** The bytes at one place of each three. */
    KX7_INLINE_AVX2 static __m256i gathered(__m256i const (&blocks)[3], int place)
    {
        __m256i bytes = _mm256_setzero_si256();
        for (int i = 0; i < 3; ++i)
            bytes = _mm256_or_si256(bytes, _mm256_shuffle_epi8(blocks[i], inBothHalves(THIRDS.shuffles[place][i])));
        return bytes;
    }

    /** Places in a window: the lowest bit of the byte before, six bits of the last. */
    KX7_INLINE_AVX2 static __m256i placesOf(__m256i before, __m256i last)
    {
        return _mm256_or_si256(_mm256_and_si256(_mm256_slli_epi16(before, 6), allOf(0x40)),
                               _mm256_and_si256(last, allOf(0x3F)));
    }

    /** Looks at a block. */
    KX7_INLINE_AVX2 Found find(unsigned char const* in) const
    {
        __m256i const bytes = loadNear(in);
        __m256i const before = loadNear(in - 1);
        __m256i const isContinuation = _mm256_cmpgt_epi8(allOf(0xC0), bytes);
        __m256i const pairs = _mm256_and_si256(bytes, allOf(0xFE));
        WindowBytes<uint32_t> windowBytes = {signsOf(isContinuation),
                                             signsOf(_mm256_cmpeq_epi8(pairs, allOf(m_first.pair))),
                                             signsOf(_mm256_cmpeq_epi8(pairs, allOf(m_second.pair))), 0};
        if (THREE != Three::NONE) {
            unsigned char const lead = THREE == Three::FIRST ? m_first.lead : m_second.lead;
            windowBytes.leads = signsOf(_mm256_cmpeq_epi8(bytes, allOf(lead)));
        }
        Found found;
        static_cast<WindowCharacters<uint32_t>&>(found) = WindowCharacters<uint32_t>::of<THREE>(windowBytes, m_before);

        __m256i const places = placesOf(before, bytes);
        __m256i isSecond = _mm256_cmpeq_epi8(_mm256_and_si256(before, allOf(0xFE)), allOf(m_second.pair));
        if (THREE == Three::SECOND)
            isSecond = _mm256_and_si256(isSecond, _mm256_cmpeq_epi8(loadNear(in - 2), allOf(m_second.lead)));
        uint32_t const ends = windowBytes.continuations & found.kept;
        bool const hasSecond = (signsOf(isSecond) & ends) != 0;
        UnitWindow const& first = m_tables.windows[1];
        __m256i const rows = highNibbles(places);
        __m256i const inRow = _mm256_and_si256(places, allOf(0xF));
        __m256i const isRegular = hasBits(_mm256_shuffle_epi8(inBothHalves(first.regular), inRow), bitOfRow(rows));
        __m256i codes = _mm256_or_si256(_mm256_shuffle_epi8(inBothHalves(first.rows), rows), inRow);
        if (hasSecond || (~signsOf(isRegular) & ends) != 0) {
            RowBits const bits(places);
            codes = lookUp(first.bytes, places, bits);
            if (hasSecond)
                codes = _mm256_blendv_epi8(codes, lookUp(m_tables.windows[2].bytes, places, bits), isSecond);
        }
        __m256i ascii = _mm256_max_epi8(bytes, _mm256_setzero_si256());  // zeros for leads, so that others count as bad
        if (!m_isASCII) {
            // Those that are not in their place go one by one.
            UnitWindow const& window = m_tables.windows[0];
            __m256i const asciiRows = highNibbles(ascii);
            __m256i const asciiInRow = _mm256_and_si256(ascii, allOf(0xF));
            ascii = _mm256_and_si256(
                _mm256_or_si256(_mm256_shuffle_epi8(inBothHalves(window.rows), asciiRows), asciiInRow),
                hasBits(_mm256_shuffle_epi8(inBothHalves(window.regular), asciiInRow), bitOfRow(asciiRows)));
        }
        found.bytes = _mm256_blendv_epi8(ascii, codes, isContinuation);
        found.bad |= signsOf(_mm256_cmpeq_epi8(found.bytes, _mm256_setzero_si256())) & found.kept;
        return found;
    }

    /**
     * Converts a block up to what is not in the windows, or what there is capacity for, and one character by the
     * tables. False: that is not to be had.
     */
    KX7_INLINE_AVX2 bool convertPart()
    {
        unsigned char copy[2 + BLOCK] = {};
        bool const isWhole = m_end - m_in >= BLOCK;
        if (!isWhole)
            copyNear(copy, m_in - 2, m_end);
        Found const found = find(isWhole ? m_in : copy + 2);
        WindowPart<uint32_t> const part(found, m_before, m_outEnd - m_out);
        m_out = writeExactly(m_out, {found.bytes, part.kept});
        m_in += part.used;
        bool const isAll = found.bad == 0 && part.kept == found.kept;
        m_before = isAll ? found.leads : Leads<uint32_t>{0, 0, 0};
        return isAll || convertOne();
    }

    KX7_INLINE_AVX2 bool convertOne() { return m_out != m_outEnd && encodeOneFromUTF8(m_tables, m_in, m_out); }

    SingleByteTables const& m_tables;
    bool const m_isASCII;
    WindowLead const m_first;
    WindowLead m_second;
    unsigned char const* m_in = nullptr;
    unsigned char const* m_end = nullptr;  ///< up to here can be read
    unsigned char* m_out = nullptr;
    unsigned char* m_outEnd = nullptr;
    Leads<uint32_t> m_before = {0, 0, 0};  ///< of the block before `m_in`
};

}  // namespace

KX7_AVX2 KX7_READS_BEYOND void singleByteFromUTF8Avx2(SingleByteTables const& tables, unsigned char const*& in,
                                                      unsigned char*& out, unsigned char* outEnd)
{
    if (isThree(tables.windows[1]))
        Converter<Three::FIRST>(tables).convert(in, out, outEnd);
    else if (isThree(tables.windows[2]))
        Converter<Three::SECOND>(tables).convert(in, out, outEnd);
    else
        Converter<Three::NONE>(tables).convert(in, out, outEnd);
}

}  // namespace kx7

#endif
