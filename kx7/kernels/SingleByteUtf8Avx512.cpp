// kx7text - UTF-8 to single-byte sets with AVX-512 (VBMI2), in one step.
//
// The last byte of a character and the lowest bit of the byte before it are the low seven bits of its unit: its place
// in a window of the set. The bytes before that tell the window: the lead of two bytes, or the lead and the second of
// three. So 64 bytes are checked against what the leads of the windows want after them, looked up where they stand,
// each with the byte before it, and the last bytes of the characters compressed to the front. A character belongs to
// the block in which it ends. A zero byte is nothing that a set maps, so that it is found with the rest.
//
// Most text needs the first window beside ASCII alone: the second is looked up from where one of its characters is
// found, for a while. Text of three bytes a character throughout goes 192 bytes at a time, whose last bytes and those
// before them are gathered by permutations.
//
// A block that holds something else is converted up to that, and the character after is looked up in the tables.
#include "kx7/kernels/Avx512.h"

#ifdef KX7_X86_KERNELS

#include "kx7/kernels/vector/Avx512.h"

#include <algorithm>

#include "kx7/kernels/SingleByteUtf8.h"

#define KX7_INLINE_AVX512 KX7_AVX512 KX7_READS_BEYOND __attribute__((always_inline)) inline

namespace kx7 {

namespace {

constexpr std::ptrdiff_t BLOCK = 64;
constexpr uint64_t ALL = ~UINT64_C(0);

/** Bytes that are ASCII throughout or not, and are looked up in one window or in both. */
constexpr std::ptrdiff_t RUN = BLOCKS_AT_ONCE * BLOCK;

KX7_INLINE_AVX512 __m512i allOf(unsigned int byte)
{
    return _mm512_set1_epi8(static_cast<char>(byte));
}

/** The units of a window as UTF-8. */
struct Window {
    ByteTable bytes;
    __m512i lead;
    __m512i pair;

    KX7_INLINE_AVX512 explicit Window(UnitWindow const& window)
        : bytes(window.bytes), lead(allOf(WindowLead(window).lead)), pair(allOf(WindowLead(window).pair))
    {
    }

    /** `places`, with the entries of the window in place of those in `lanes`. */
    KX7_INLINE_AVX512 __m512i lookUp(__m512i places, __mmask64 lanes) const { return bytes.lookUp(places, lanes); }
};

/** A block as it was found: where characters end, the bytes of the set. */
struct Found : WindowCharacters<uint64_t> {
    __m512i bytes;
};

/** The last of each three bytes of 192. */
struct Thirds {
    unsigned char places[BLOCK];
    constexpr Thirds() : places()
    {
        for (unsigned int i = 0; i < BLOCK; ++i)
            places[i] = static_cast<unsigned char>(3 * i + 2);
    }
};
constexpr Thirds THIRDS;

template <Three THREE>
class Converter {
public:
    KX7_INLINE_AVX512 explicit Converter(SingleByteTables const& tables)
        : m_tables(tables), m_isASCII(tables.unitIdentity == Identity::ASCII), m_ascii(tables.windows[0]),
          m_first(tables.windows[1]), m_second(tables.windows[2])
    {
        if (THREE == Three::FIRST && isThree(tables.windows[2]))
            m_second.pair = allOf(0xFF);  // no byte: its characters go one by one
    }

    KX7_INLINE_AVX512 void convert(unsigned char const*& inOut, unsigned char*& outOut, unsigned char* outEnd)
    {
        m_in = inOut;
        m_out = outOut;
        m_outEnd = outEnd;
        m_end = pageEnd(m_in);
        int both = 0;
        bool goesOn = true;
        // Blocks look at the two bytes in front as well.
        while (goesOn && inPage(m_in) < 2)
            goesOn = convertOne();
        while (goesOn) {
            if (m_end - m_in < RUN)
                growEnd();
            if (m_end - m_in < RUN || m_outEnd - m_out < RUN) {
                goesOn = convertPart();
                both = std::max(both, 1);
                continue;
            }
            if (m_isASCII && copyASCII())
                continue;
            unsigned char* const begin = m_out;
            if (both != 0 ? convertRun<true>() : convertRun<false>()) {
                // What is truncated may be in either.
                both -= both != 0 && m_before.truncated() == 0;
                if (THREE == Three::FIRST && m_out - begin <= RUN / 3 + 1)
                    convertThrees();
                continue;
            }
            both = ROUNDS_WITH_BOTH_WINDOWS;
            goesOn = convertPart();
        }
        inOut = m_in;
        outOut = m_out;
    }

private:
    /** After a page without a zero byte there is another. */
    KX7_INLINE_AVX512 void growEnd()
    {
        std::ptrdiff_t left = m_end - m_in;
        for (unsigned char const* in = m_in; left > 0; in += BLOCK, left -= BLOCK) {
            uint64_t const lanes = lowLanes64(left);
            __m512i const bytes = _mm512_maskz_loadu_epi8(lanes, in);
            if (_mm512_mask_testn_epi8_mask(lanes, bytes, bytes) != 0)
                return;
        }
        m_end += PAGE;
    }

    /** Copies a run of ASCII. */
    KX7_INLINE_AVX512 bool copyASCII()
    {
        __m512i blocks[4];
        for (int i = 0; i < 4; ++i)
            blocks[i] = _mm512_loadu_si512(m_in + i * BLOCK);
        __m512i const least =
            _mm512_min_epi8(_mm512_min_epi8(blocks[0], blocks[1]), _mm512_min_epi8(blocks[2], blocks[3]));
        if (_mm512_cmple_epi8_mask(least, _mm512_setzero_si512()) != 0 || m_before.truncated() != 0)
            return false;
        for (int i = 0; i < 4; ++i)
            _mm512_storeu_si512(m_out + i * BLOCK, blocks[i]);
        m_in += RUN;
        m_out += RUN;
        m_before = {};
        return true;
    }

    /** Looks at a block, or the part of one that is in `lanes` with zeros after it. */
    template <bool BOTH>
    KX7_INLINE_AVX512 Found find(uint64_t lanes) const
    {
        auto const load = [&](int before) KX7_AVX512 KX7_READS_BEYOND __attribute__((always_inline))
        {
            return lanes == ALL ? _mm512_loadu_si512(m_in - before) : _mm512_maskz_loadu_epi8(lanes, m_in - before);
        };
        // Without the second window, its characters are not looked for.
        constexpr Three USED = BOTH || THREE == Three::FIRST ? THREE : Three::NONE;
        __m512i const bytes = load(0);
        __mmask64 const continuations = _mm512_cmplt_epi8_mask(bytes, allOf(0xC0));
        __m512i const evens = allOf(0xFE);
        __m512i const pairs = _mm512_and_si512(bytes, evens);
        WindowBytes<uint64_t> const windowBytes = {
            continuations, _mm512_cmpeq_epi8_mask(pairs, m_first.pair),
            BOTH ? _mm512_cmpeq_epi8_mask(pairs, m_second.pair) : 0,
            USED == Three::NONE ? 0
                                : _mm512_cmpeq_epi8_mask(bytes, USED == Three::FIRST ? m_first.lead : m_second.lead)};
        Found found;
        static_cast<WindowCharacters<uint64_t>&>(found) = WindowCharacters<uint64_t>::of<USED>(windowBytes, m_before);

        __m512i const before = load(1);
        // Zeros for leads: those that no window has are not mapped.
        __m512i places = _mm512_mask_mov_epi8(_mm512_max_epi8(bytes, _mm512_setzero_si512()), continuations,
                                              placesOf(before, bytes));
        __mmask64 inFirst = continuations;
        if (BOTH) {
            __mmask64 inSecond =
                _mm512_mask_cmpeq_epi8_mask(continuations, _mm512_and_si512(before, evens), m_second.pair);
            if (THREE == Three::SECOND)
                inSecond = _mm512_mask_cmpeq_epi8_mask(inSecond, load(2), m_second.lead);
            places = m_second.lookUp(places, inSecond);
            inFirst = _kandn_mask64(inSecond, continuations);
        }
        found.bytes = m_first.lookUp(places, inFirst);
        if (!m_isASCII)
            found.bytes = m_ascii.lookUp(found.bytes, _knot_mask64(continuations));
        found.bad |= _mm512_testn_epi8_mask(found.bytes, found.bytes) & found.kept;
        return found;
    }

    KX7_INLINE_AVX512 void write(Found const& found, uint64_t kept, int count)
    {
        _mm512_mask_storeu_epi8(m_out, lowLanes64(count), compressBytes(kept, found.bytes));
        m_out += count;
    }

    /** Converts blocks up to the first that holds something else. */
    template <bool BOTH>
    KX7_INLINE_AVX512 bool convertRun()
    {
        for (unsigned char const* const until = m_in + RUN; m_in != until; m_in += BLOCK) {
            Found const found = find<BOTH>(ALL);
            if (found.bad != 0)
                return false;
            write(found, found.kept, __builtin_popcountll(found.kept));
            m_before = found.leads;
        }
        return true;
    }

    /**
     * Converts a block up to what is not in the windows, or what there is capacity for, and one character by the
     * tables. False: that is not to be had.
     */
    KX7_INLINE_AVX512 bool convertPart()
    {
        Found const found = find<true>(m_end - m_in >= BLOCK ? ALL : lowLanes64(m_end - m_in));
        int const count = __builtin_popcountll(found.kept);
        if (found.bad == 0 && count <= m_outEnd - m_out) {
            write(found, found.kept, count);
            m_in += BLOCK;
            m_before = found.leads;
            return true;
        }
        WindowPart<uint64_t> const part(found, m_before, m_outEnd - m_out);
        write(found, part.kept, __builtin_popcountll(part.kept));
        m_in += part.used;
        m_before = {};
        return convertOne();
    }

    KX7_INLINE_AVX512 bool convertOne() { return m_out != m_outEnd && encodeOneFromUTF8(m_tables, m_in, m_out); }

    /** Converts text of which all characters have three bytes and are in the first window. */
    KX7_INLINE_AVX512 void convertThrees()
    {
        m_in -= m_before.truncated();
        m_before = {};
        // What is in the places of a block that has one, two or three bytes of a character in front.
        __mmask64 const phases[3] = {0x9249249249249249, 0x2492492492492492, 0x4924924924924924};
        __m512i expected[3];
        __m512i bits[3];
        for (int i = 0; i < 3; ++i) {
            __mmask64 const isLead = phases[2 * i % 3];
            __mmask64 const isPair = phases[(2 * i + 1) % 3];
            expected[i] =
                _mm512_mask_mov_epi8(_mm512_mask_mov_epi8(allOf(0x80), isPair, m_first.pair), isLead, m_first.lead);
            bits[i] = _mm512_mask_mov_epi8(_mm512_mask_mov_epi8(allOf(0xC0), isPair, allOf(0xFE)), isLead, allOf(0xFF));
        }
        __m512i const lastPlaces = _mm512_loadu_si512(THIRDS.places);
        __m512i const pairPlaces = _mm512_sub_epi8(lastPlaces, _mm512_set1_epi8(1));
        for (; m_end - m_in >= 3 * BLOCK && m_outEnd - m_out >= BLOCK; m_in += 3 * BLOCK, m_out += BLOCK) {
            __m512i blocks[3];
            __m512i others = _mm512_setzero_si512();
            for (int i = 0; i < 3; ++i) {
                blocks[i] = _mm512_loadu_si512(m_in + i * BLOCK);
                others = _mm512_or_si512(others, _mm512_ternarylogic_epi64(blocks[i], expected[i], bits[i], 0x28));
            }
            // Of the places from 128 on the low six bits tell where they are in the third block.
            __m512i const lasts =
                _mm512_mask_permutexvar_epi8(_mm512_permutex2var_epi8(blocks[0], lastPlaces, blocks[1]),
                                             _mm512_movepi8_mask(lastPlaces), lastPlaces, blocks[2]);
            __m512i const pairs =
                _mm512_mask_permutexvar_epi8(_mm512_permutex2var_epi8(blocks[0], pairPlaces, blocks[1]),
                                             _mm512_movepi8_mask(pairPlaces), pairPlaces, blocks[2]);
            __m512i const bytes = m_first.bytes.lookUp(placesOf(pairs, lasts));
            if ((_mm512_test_epi8_mask(others, others) | _mm512_testn_epi8_mask(bytes, bytes)) != 0)
                break;
            _mm512_storeu_si512(m_out, bytes);
        }
    }

    /** Places in a window, by the low seven bits: the bit of the byte in front, the others of the last. */
    KX7_INLINE_AVX512 static __m512i placesOf(__m512i before, __m512i last)
    {
        return _mm512_ternarylogic_epi64(_mm512_slli_epi16(before, 6), last, allOf(0x40), 0xE4);
    }

    SingleByteTables const& m_tables;
    bool const m_isASCII;
    Window const m_ascii;
    Window const m_first;
    Window m_second;
    unsigned char const* m_in = nullptr;
    unsigned char const* m_end = nullptr;  ///< up to here can be read
    unsigned char* m_out = nullptr;
    unsigned char* m_outEnd = nullptr;
    Leads<uint64_t> m_before = {0, 0, 0};  ///< of the block before `m_in`
};

}  // namespace

KX7_AVX512 KX7_READS_BEYOND void singleByteFromUTF8Avx512(SingleByteTables const& tables, unsigned char const*& in,
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
