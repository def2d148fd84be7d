// kx7text - UTF-8 with AVX-512 (VBMI2): decoding, validation and counting.
//
// Decoding takes 64 bytes at a time. Which of them must be continuation bytes follows from the leads shifted by one,
// two and three. The last byte of each character, the byte before that and the one before that are compressed to the
// front of three registers (vpcompressb), widened and put together, 32 units at a time. A four-byte sequence keeps two
// lanes: that of its third byte, where the other three then give the high surrogate, and that of its fourth. A
// character belongs to the block in which it ends, so that each block begins where the one before ended.
//
// Stores are masked: nothing is written after the text. What is left in the end, or cannot be converted, goes through
// smaller blocks loaded under a mask, which stop before the character at fault; short texts go there at once.
#include "kx7/kernels/Avx512.h"

#ifdef KX7_X86_KERNELS

#include <algorithm>

#include "kx7/kernels/Utf8Structure.h"
#include "kx7/kernels/vector/Avx512.h"

#define KX7_TARGET KX7_AVX512
#include "kx7/kernels/Utf8Loops.h"

namespace kx7 {

namespace {

/** Units of one store. */
constexpr std::ptrdiff_t UNITS = 32;

/** Units of the 32 characters whose last byte, last but one and last but two are in lanes alike. */
template <int LONGEST>
KX7_AVX512 inline __m512i unitsOf(__m512i last, __m512i second, __m512i third)
{
    __m512i const units = _mm512_or_si512(last, _mm512_slli_epi16(second, 6));
    return LONGEST > 2 ? _mm512_or_si512(units, _mm512_slli_epi16(third, 12)) : units;
}

/** The same where the lanes in `highs` and after them are those of surrogate pairs. */
KX7_AVX512 inline __m512i withPairs(__m512i units, uint32_t highs, uint32_t lows)
{
    // In the lane of the third byte of four stands the value without the last byte: four bits of the lead count, as in
    // the plain decoder.
    __m512i const low = _mm512_and_si512(units, _mm512_set1_epi16(0x3FF));
    units =
        _mm512_mask_add_epi16(units, highs, _mm512_srli_epi16(units, 4), _mm512_set1_epi16(static_cast<short>(0xD7C0)));
    return _mm512_mask_add_epi16(units, lows, low, _mm512_set1_epi16(static_cast<short>(0xDC00)));
}

/**
 * Writes the characters of up to LONGEST bytes that end in a block: one unit for each of its bytes in `kept`, the last
 * of a character or, of a pair, the last two.
 */
template <class W, int LONGEST>
KX7_AVX512 inline std::ptrdiff_t writeCharacters(unsigned char const* in, typename W::Vector bytes,
                                                 typename W::Mask continuations, typename W::Mask thirds,
                                                 typename W::Mask kept, unsigned short* out)
{
    // Loads under a mask do not touch the bytes that it leaves out, so that nothing before the text is read.
    std::ptrdiff_t const count = W::count(kept);
    typename W::Vector const last = W::low(compressBytes(kept, bytes), 0x7F);
    typename W::Vector const second = W::low(compressBytes(kept, W::load(in - 1, continuations)), 0x3F);
    typename W::Vector const third = LONGEST > 2 ? compressBytes(kept, W::load(in - 2, thirds)) : last;
    typename W::Mask const highs = LONGEST > 3 ? W::atLeast(third, 0xF0) : 0;
    typename W::Mask const lows = highs << 1;
    typename W::Mask const written = W::lowLanes(count);
    __m512i units = unitsOf<LONGEST>(W::front(last), W::front(second), W::front(third));
    if (LONGEST > 3)
        units = withPairs(units, static_cast<uint32_t>(highs), static_cast<uint32_t>(lows));
    _mm512_mask_storeu_epi16(out, static_cast<uint32_t>(written), units);
    // No branch: in texts where some blocks have more units than the first store takes, it would be mispredicted.
    if (W::COUNT > UNITS) {
        constexpr std::ptrdiff_t AFTER = W::COUNT - UNITS;
        units = unitsOf<LONGEST>(W::back(last), W::back(second), W::back(third));
        if (LONGEST > 3)
            units = withPairs(units, static_cast<uint32_t>(highs >> AFTER), static_cast<uint32_t>(lows >> AFTER));
        _mm512_mask_storeu_epi16(out + UNITS, static_cast<uint32_t>(written >> AFTER), units);
    }
    return count;
}

/**
 * Decodes the `available` bytes at `in`, a block at most, which begin a character, up to what is truncated or
 * malformed.
 * @return the bytes consumed
 */
template <class W>
KX7_AVX512 inline std::ptrdiff_t decodeLastBlock(unsigned char const* in, std::ptrdiff_t available,
                                                 unsigned short*& out)
{
    using Mask = typename W::Mask;
    typename W::Vector const bytes = W::load(in, W::lowLanes(available));
    Mask const notASCII = W::notASCII(bytes);
    if (notASCII == 0) {
        Mask const written = W::lowLanes(available);
        _mm512_mask_storeu_epi16(out, static_cast<uint32_t>(written), W::front(bytes));
        if (W::COUNT > UNITS)
            _mm512_mask_storeu_epi16(out + UNITS, static_cast<uint32_t>(written >> (W::COUNT - UNITS)), W::back(bytes));
        out += available;
        return available;
    }
    Leads<Mask> leads = {W::atLeast(bytes, 0xC0), W::atLeast(bytes, 0xE0), W::atLeast(bytes, 0xF0)};
    Mask const continuations = notASCII & ~leads.two;
    std::ptrdiff_t used = available;
    Mask const end = Mask{1} << (available - 1);
    Mask const cut = (leads.two & end) | (leads.three & (end | end >> 1)) | (leads.four & (end | end >> 1 | end >> 2));
    if (cut != 0)
        used = W::lowest(cut);
    // One more byte, for what the character before it lacks.
    Mask const wrong = (continuations ^ leads.wanted()) & W::lowLanes(used + 1);
    if (wrong != 0) {
        // A continuation byte that nothing leads, or one that is missing: then the last lead in front is at fault.
        used = W::lowest(wrong);
        if (!(continuations >> used & 1))
            used = W::highest(leads.two & W::lowLanes(used));
    }
    Mask const lanes = W::lowLanes(used);
    Mask const inside = continuations & lanes;
    Mask const thirds = leads.three << 2 & lanes;
    Mask const kept = ~(leads.two | leads.three << 1) & lanes;
    out += thirds == 0 ? writeCharacters<W, 2>(in, bytes, inside, 0, kept, out)
                       : writeCharacters<W, 4>(in, bytes, inside, thirds, kept, out);
    return used;
}

/** Decodes whole blocks while all is well; what is left begins a character. */
template <class W>
KX7_AVX512 inline void decodeBlocks(unsigned char const*& inOut, unsigned char const* end, unsigned short*& outOut,
                                    unsigned short* outEnd)
{
    using Mask = typename W::Mask;
    constexpr std::ptrdiff_t BLOCK = W::COUNT;
    unsigned char const* in = inOut;
    unsigned short* out = outOut;
    Leads<Mask> before = {0, 0, 0};  // of the block before
    while (end - in >= BLOCK && outEnd - out >= BLOCK) {
        typename W::Vector const bytes = W::load(in);
        Mask const notASCII = W::notASCII(bytes);
        Mask const carried = before.wantedAfter();
        if ((notASCII | carried) == 0) {
            _mm512_storeu_si512(out, W::front(bytes));
            if (BLOCK > UNITS)
                _mm512_storeu_si512(out + UNITS, W::back(bytes));
            in += BLOCK;
            out += BLOCK;
            continue;
        }
        Leads<Mask> leads = {W::atLeast(bytes, 0xC0), W::atLeast(bytes, 0xE0), 0};
        Mask const continuations = notASCII & ~leads.two;
        Mask const thirds = leads.three << 2 | before.three >> (BLOCK - 2);
        std::ptrdiff_t used = BLOCK;
        if ((thirds | leads.three) == 0) {
            if (continuations != (leads.wanted() | carried))
                break;
            out += writeCharacters<W, 2>(in, bytes, continuations, 0, ~leads.two, out);
        }
        else {
            leads.four = W::atLeast(bytes, 0xF0);
            if (continuations != (leads.wanted() | carried))
                break;
            Mask kept = ~(leads.two | leads.three << 1 | before.three >> (BLOCK - 1));
            if (leads.four >> (BLOCK - 3) & 1) {
                // The last byte of this pair is in the next block: leave the last but one to that as well.
                used = BLOCK - 1;
                kept &= W::lowLanes(used);
                leads = {leads.two << 1, leads.three << 1, leads.four << 1};
            }
            out += (leads.four | before.four) == 0 ? writeCharacters<W, 3>(in, bytes, continuations, thirds, kept, out)
                                                   : writeCharacters<W, 4>(in, bytes, continuations, thirds, kept, out);
        }
        in += used;
        before = leads;
    }
    // The character that the last block truncated is left whole.
    inOut = in - before.truncated();
    outOut = out;
}

}  // namespace

KX7_AVX512 void decodeUTF8Avx512(unsigned char const*& inOut, unsigned char const* end, unsigned short*& outOut,
                                 unsigned short* outEnd)
{
    unsigned char const* in = inOut;
    unsigned short* out = outOut;
    decodeBlocks<BytesAvx512>(in, end, out, outEnd);
    for (;;) {
        std::ptrdiff_t const available = std::min({BytesAvx512::COUNT, end - in, outEnd - out});
        if (available <= 0)
            break;
        std::ptrdiff_t const used = available > NarrowBytesAvx512::COUNT
                                        ? decodeLastBlock<BytesAvx512>(in, available, out)
                                        : decodeLastBlock<NarrowBytesAvx512>(in, available, out);
        if (used == 0)
            break;
        in += used;
    }
    inOut = in;
    outOut = out;
}

KX7_AVX512 size_t wellFormedUTF8Avx512(unsigned char const* in, unsigned char const* end)
{
    return wellFormedUTF8By<BytesAvx512>(in, end);
}

KX7_AVX512 size_t countUTF8Avx512(unsigned char const*& in, unsigned char const* end)
{
    return countUTF8By<BytesAvx512>(in, end);
}

KX7_AVX512 size_t countAsUTF8Avx512(unsigned short const*& in, unsigned short const* end)
{
    return countAsUTF8By<UnitsAvx512>(in, end);
}

}  // namespace kx7

#endif
