// kx7text - UTF-8 with AVX-512 (VBMI2).
//
// Decoding takes 64 bytes at a time. Which of them must be continuation bytes follows from the leads shifted by one,
// two and three. The last byte of each character, the byte before that and the one before that are squeezed to the
// front of three registers (vpcompressb), widened and put together, 32 units at a time. A four-byte sequence keeps two
// lanes: that of its third byte, where the other three then give the high surrogate, and that of its fourth. A
// character belongs to the block in which it ends, so that each block begins where the one before ended.
//
// Encoding takes 32 units, gives each 16 bits if none needs three bytes, else 32, builds its bytes there (for three
// bytes by vpmultishiftqb, six bits at a time), and squeezes out what is not used. Each half of a surrogate pair makes
// two bytes, the low one with two bits from the unit before.
//
// Stores are masked: nothing is written behind the text. What is left in the end, or cannot be converted, goes through
// smaller blocks loaded under a mask, which stop in front of the character at fault; short texts go there at once.
#include "kx7/kernels/Avx512.h"

#ifdef KX7_X86_KERNELS

#include <algorithm>

#include "kx7/kernels/Utf8Structure.h"

namespace kx7 {

namespace {

/** Blocks of 32 bytes, whose masks fit a register of 32 bits. */
struct Narrow {
    using Mask = uint32_t;
    using Bytes = __m256i;
    static constexpr std::ptrdiff_t BLOCK = 32;

    KX7_AVX512 static Bytes load(unsigned char const* p)
    {
        return _mm256_loadu_si256(reinterpret_cast<__m256i const*>(p));
    }
    KX7_AVX512 static Bytes load(unsigned char const* p, Mask wanted) { return _mm256_maskz_loadu_epi8(wanted, p); }
    KX7_AVX512 static Mask notASCII(Bytes bytes) { return static_cast<Mask>(_mm256_movemask_epi8(bytes)); }
    KX7_AVX512 static Mask atLeast(Bytes bytes, unsigned char least)
    {
        return _mm256_cmpge_epu8_mask(bytes, _mm256_set1_epi8(static_cast<char>(least)));
    }
    KX7_AVX512 static Mask equal(Bytes bytes, unsigned char value)
    {
        return _mm256_cmpeq_epi8_mask(bytes, _mm256_set1_epi8(static_cast<char>(value)));
    }
    KX7_AVX512 static Bytes low(Bytes bytes, unsigned char bits)
    {
        return _mm256_and_si256(bytes, _mm256_set1_epi8(static_cast<char>(bits)));
    }
    KX7_AVX512 static __m512i front(Bytes bytes) { return _mm512_cvtepu8_epi16(bytes); }
    KX7_AVX512 static __m512i back(Bytes) { return _mm512_setzero_si512(); }
    KX7_AVX512 static std::ptrdiff_t count(Mask mask) { return __builtin_popcount(mask); }
    KX7_AVX512 static std::ptrdiff_t lowest(Mask mask) { return __builtin_ctz(mask); }
    KX7_AVX512 static std::ptrdiff_t highest(Mask mask) { return 31 - __builtin_clz(mask); }
    KX7_AVX512 static Mask lowBits(std::ptrdiff_t count) { return lowLanes32(count); }
};

#ifdef __x86_64__
/** Blocks of 64 bytes. */
struct Wide {
    using Mask = uint64_t;
    using Bytes = __m512i;
    static constexpr std::ptrdiff_t BLOCK = 64;

    KX7_AVX512 static Bytes load(unsigned char const* p) { return _mm512_loadu_si512(p); }
    KX7_AVX512 static Bytes load(unsigned char const* p, Mask wanted) { return _mm512_maskz_loadu_epi8(wanted, p); }
    KX7_AVX512 static Mask notASCII(Bytes bytes) { return _mm512_movepi8_mask(bytes); }
    KX7_AVX512 static Mask atLeast(Bytes bytes, unsigned char least)
    {
        return _mm512_cmpge_epu8_mask(bytes, _mm512_set1_epi8(static_cast<char>(least)));
    }
    KX7_AVX512 static Mask equal(Bytes bytes, unsigned char value)
    {
        return _mm512_cmpeq_epi8_mask(bytes, _mm512_set1_epi8(static_cast<char>(value)));
    }
    KX7_AVX512 static Bytes low(Bytes bytes, unsigned char bits)
    {
        return _mm512_and_si512(bytes, _mm512_set1_epi8(static_cast<char>(bits)));
    }
    KX7_AVX512 static __m512i front(Bytes bytes) { return _mm512_cvtepu8_epi16(_mm512_castsi512_si256(bytes)); }
    KX7_AVX512 static __m512i back(Bytes bytes) { return _mm512_cvtepu8_epi16(_mm512_extracti64x4_epi64(bytes, 1)); }
    KX7_AVX512 static std::ptrdiff_t count(Mask mask) { return __builtin_popcountll(mask); }
    KX7_AVX512 static std::ptrdiff_t lowest(Mask mask) { return __builtin_ctzll(mask); }
    KX7_AVX512 static std::ptrdiff_t highest(Mask mask) { return 63 - __builtin_clzll(mask); }
    KX7_AVX512 static Mask lowBits(std::ptrdiff_t count) { return lowLanes64(count); }
};

using Widest = Wide;
#else
using Widest = Narrow;  // masks of 64 bits would be two registers
#endif

/** Units of one store. */
constexpr std::ptrdiff_t UNITS = 32;

/** Units of the 32 characters whose last byte, last but one and last but two are in lanes alike. */
template <int LONGEST>
KX7_AVX512 inline __m512i unitsOf(__m512i last, __m512i second, __m512i third)
{
    __m512i const units = _mm512_or_si512(last, _mm512_slli_epi16(second, 6));
    return LONGEST > 2 ? _mm512_or_si512(units, _mm512_slli_epi16(third, 12)) : units;
}

/** The same where the lanes in `highs` and behind them are those of surrogate pairs. */
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
KX7_AVX512 inline std::ptrdiff_t writeCharacters(unsigned char const* in, typename W::Bytes bytes,
                                                 typename W::Mask continuations, typename W::Mask thirds,
                                                 typename W::Mask kept, unsigned short* out)
{
    // Loads under a mask do not touch the bytes that it leaves out, so that nothing in front of the text is read.
    std::ptrdiff_t const count = W::count(kept);
    typename W::Bytes const last = W::low(squeezeBytes(kept, bytes), 0x7F);
    typename W::Bytes const second = W::low(squeezeBytes(kept, W::load(in - 1, continuations)), 0x3F);
    typename W::Bytes const third = LONGEST > 2 ? squeezeBytes(kept, W::load(in - 2, thirds)) : last;
    typename W::Mask const highs = LONGEST > 3 ? W::atLeast(third, 0xF0) : 0;
    typename W::Mask const lows = highs << 1;
    typename W::Mask const written = W::lowBits(count);
    __m512i units = unitsOf<LONGEST>(W::front(last), W::front(second), W::front(third));
    if (LONGEST > 3)
        units = withPairs(units, static_cast<uint32_t>(highs), static_cast<uint32_t>(lows));
    _mm512_mask_storeu_epi16(out, static_cast<uint32_t>(written), units);
    // Without a branch even where there are rarely so many: where there sometimes are, it would be guessed wrong.
    if (W::BLOCK > UNITS) {
        constexpr std::ptrdiff_t BEHIND = W::BLOCK - UNITS;
        units = unitsOf<LONGEST>(W::back(last), W::back(second), W::back(third));
        if (LONGEST > 3)
            units = withPairs(units, static_cast<uint32_t>(highs >> BEHIND), static_cast<uint32_t>(lows >> BEHIND));
        _mm512_mask_storeu_epi16(out + UNITS, static_cast<uint32_t>(written >> BEHIND), units);
    }
    return count;
}

/**
 * Decodes the `available` bytes at `in`, a block at most, which begin a character, up to what is cut off or malformed.
 * @return the bytes consumed
 */
template <class W>
KX7_AVX512 inline std::ptrdiff_t decodeLastBlock(unsigned char const* in, std::ptrdiff_t available,
                                                 unsigned short*& out)
{
    using Mask = typename W::Mask;
    typename W::Bytes const bytes = W::load(in, W::lowBits(available));
    Mask const notASCII = W::notASCII(bytes);
    if (notASCII == 0) {
        Mask const written = W::lowBits(available);
        _mm512_mask_storeu_epi16(out, static_cast<uint32_t>(written), W::front(bytes));
        if (W::BLOCK > UNITS)
            _mm512_mask_storeu_epi16(out + UNITS, static_cast<uint32_t>(written >> (W::BLOCK - UNITS)), W::back(bytes));
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
    // One more byte, for what the character in front of it lacks.
    Mask const wrong = (continuations ^ leads.wanted()) & W::lowBits(used + 1);
    if (wrong != 0) {
        // A continuation byte that nothing leads, or one that is missing: then the last lead in front is at fault.
        used = W::lowest(wrong);
        if (!(continuations >> used & 1))
            used = W::highest(leads.two & W::lowBits(used));
    }
    Mask const lanes = W::lowBits(used);
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
    constexpr std::ptrdiff_t BLOCK = W::BLOCK;
    unsigned char const* in = inOut;
    unsigned short* out = outOut;
    Leads<Mask> before = {0, 0, 0};  // of the block before
    while (end - in >= BLOCK && outEnd - out >= BLOCK) {
        typename W::Bytes const bytes = W::load(in);
        Mask const notASCII = W::notASCII(bytes);
        Mask const carried = before.wantedBehind();
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
                kept &= W::lowBits(used);
                leads = {leads.two << 1, leads.three << 1, leads.four << 1};
            }
            out += (leads.four | before.four) == 0 ? writeCharacters<W, 3>(in, bytes, continuations, thirds, kept, out)
                                                   : writeCharacters<W, 4>(in, bytes, continuations, thirds, kept, out);
        }
        in += used;
        before = leads;
    }
    // The character that the last block cut off is left whole.
    inOut = in - before.cutOff();
    outOut = out;
}

}  // namespace

KX7_AVX512 void decodeUTF8Avx512(unsigned char const*& inOut, unsigned char const* end, unsigned short*& outOut,
                                 unsigned short* outEnd)
{
    unsigned char const* in = inOut;
    unsigned short* out = outOut;
    decodeBlocks<Widest>(in, end, out, outEnd);
    for (;;) {
        std::ptrdiff_t const available = std::min({Widest::BLOCK, end - in, outEnd - out});
        if (available <= 0)
            break;
        std::ptrdiff_t const used = available > Narrow::BLOCK ? decodeLastBlock<Widest>(in, available, out)
                                                              : decodeLastBlock<Narrow>(in, available, out);
        if (used == 0)
            break;
        in += used;
    }
    inOut = in;
    outOut = out;
}

namespace {

/** A block for the loops that write nothing: zeros behind the end. */
template <class W>
KX7_AVX512 inline typename W::Bytes loadBlock(unsigned char const* in, std::ptrdiff_t available)
{
    return available >= W::BLOCK ? W::load(in) : W::load(in, W::lowBits(available));
}

}  // namespace

KX7_AVX512 size_t wellFormedUTF8Avx512(unsigned char const* const begin, unsigned char const* end)
{
    using W = Widest;
    unsigned char const* in = begin;
    Leads<W::Mask> before = {0, 0, 0};
    StrictBytes<W::Mask> bytesBefore = {};
    while (in < end) {
        W::Bytes const bytes = loadBlock<W>(in, end - in);
        W::Mask const notASCII = W::notASCII(bytes);
        W::Mask const carried = before.wantedBehind();
        Leads<W::Mask> leads = {0, 0, 0};
        if ((notASCII | carried) != 0) {
            leads = {W::atLeast(bytes, 0xC0), W::atLeast(bytes, 0xE0), W::atLeast(bytes, 0xF0)};
            StrictBytes<W::Mask> const strict = {
                W::atLeast(bytes, 0xC2), W::atLeast(bytes, 0xF5), W::atLeast(bytes, 0x90), W::atLeast(bytes, 0xA0),
                W::equal(bytes, 0xE0),   W::equal(bytes, 0xED),   W::equal(bytes, 0xF0),   W::equal(bytes, 0xF4)};
            // Where the end cuts a character off, zeros stand for what is missing and are wrong.
            if (((notASCII & ~leads.two) ^ (leads.wanted() | carried)) != 0 || strict.wrong(leads, bytesBefore) != 0)
                break;
            bytesBefore = strict;
        }
        before = leads;
        in += std::min(end - in, W::BLOCK);
    }
    return static_cast<size_t>(in - begin) - static_cast<size_t>(before.cutOff());
}

KX7_AVX512 size_t countUTF8Avx512(unsigned char const*& inOut, unsigned char const* end)
{
    using W = Widest;
    unsigned char const* in = inOut;
    Leads<W::Mask> before = {0, 0, 0};
    std::ptrdiff_t count = 0;
    while (in < end) {
        std::ptrdiff_t const available = std::min(end - in, W::BLOCK);
        W::Mask const lanes = W::lowBits(available);
        W::Bytes const bytes = loadBlock<W>(in, available);
        Leads<W::Mask> const leads = {W::atLeast(bytes, 0xC0), W::atLeast(bytes, 0xE0), W::atLeast(bytes, 0xF0)};
        W::Mask const continuations = W::notASCII(bytes) & ~leads.two;
        if (continuations != (leads.wanted() | before.wantedBehind()) || (W::equal(bytes, 0) & lanes) != 0)
            break;
        count += W::count(~continuations & lanes);
        in += available;
        before = leads;
    }
    int const cut = before.cutOff();
    inOut = in - cut;
    return static_cast<size_t>(count - (cut != 0 ? 1 : 0));
}

namespace {

/** Units of an encoder's block, and of the half of one whose units get 32 bits each. */
constexpr std::ptrdiff_t HALF = UNITS / 2;

/** Room that a block needs: three bytes a unit, and two for the rest of a pair that it cuts. */
constexpr std::ptrdiff_t BLOCK_ROOM = 3 * UNITS + 2;

/** Stores the first `count` bytes. */
KX7_AVX512 inline void storeBytes(unsigned char* out, __m512i bytes, unsigned int count)
{
#ifdef __x86_64__
    _mm512_mask_storeu_epi8(out, Wide::lowBits(count), bytes);
#else
    _mm256_mask_storeu_epi8(out, lowLanes32(static_cast<std::ptrdiff_t>(count)), _mm512_castsi512_si256(bytes));
    if (count > 32)
        _mm256_mask_storeu_epi8(out + 32, lowLanes32(static_cast<std::ptrdiff_t>(count) - 32),
                                _mm512_extracti64x4_epi64(bytes, 1));
#endif
}

/** Encodes the first `available` of 32 units, all below U+0800, those in `twoBytes` in two bytes. */
KX7_AVX512 inline unsigned int encodeTwoByteBlock(__m512i units, uint32_t twoBytes, std::ptrdiff_t available,
                                                  unsigned char* out)
{
    // The lead in the low byte of a lane, the continuation byte in the high one.
    __m512i const tail = _mm512_slli_epi16(_mm512_and_si512(units, _mm512_set1_epi16(0x3F)), 8);
    __m512i const pairs = _mm512_or_si512(_mm512_or_si512(_mm512_srli_epi16(units, 6), tail),
                                          _mm512_set1_epi16(static_cast<short>(0x80C0)));
    auto const count = static_cast<unsigned int>(available + __builtin_popcount(twoBytes));
    __m512i const lead = _mm512_set1_epi16(0x80);
    __m512i const one = available == UNITS ? lead : _mm512_maskz_mov_epi16(lowLanes32(available), lead);
    __m512i const kept = _mm512_mask_mov_epi16(one, twoBytes, _mm512_set1_epi16(-1));
    storeBytes(out, squeezeBytes(_mm512_movepi8_mask(kept), _mm512_mask_mov_epi16(units, twoBytes, pairs)), count);
    return count;
}

/** Units by the bytes that they need: at least two, three; and the halves of surrogate pairs, which need two each. */
struct Kinds {
    uint32_t two;
    uint32_t three;
    uint32_t highs;
    uint32_t lows;

    Kinds back() const { return {two >> HALF, three >> HALF, highs >> HALF, lows >> HALF}; }
};

/** Encodes the first `available` of 16 units; those of pairs as withPairCodes leaves them. */
template <bool HAS_PAIRS>
KX7_AVX512 inline unsigned int encodeHalf(__m256i units, Kinds const& kinds, std::ptrdiff_t available,
                                          unsigned char* out)
{
    auto const two = static_cast<__mmask16>(kinds.two);
    auto const three = static_cast<__mmask16>(kinds.three);
    // Bits 12 and up, 6 and up, 0 and up in the low three bytes of each lane.
    __m512i const shifts = _mm512_set1_epi64(0x0020262C0000060C);
    __m512i const fields = _mm512_multishift_epi64_epi8(shifts, _mm512_cvtepu16_epi32(units));
    // The characters end alike. Bytes whose high bit is set here are kept.
    __m512i marks = _mm512_mask_mov_epi32(_mm512_set1_epi32(0x800000), two, _mm512_set1_epi32(0x80C000));
    marks = _mm512_mask_mov_epi32(marks, three, _mm512_set1_epi32(0x8080E0));
    if (HAS_PAIRS) {
        marks = _mm512_mask_mov_epi32(marks, static_cast<__mmask16>(kinds.highs), _mm512_set1_epi32(0x80F000));
        marks = _mm512_mask_mov_epi32(marks, static_cast<__mmask16>(kinds.lows), _mm512_set1_epi32(0x808000));
    }
    __m512i const marked = _mm512_or_si512(_mm512_and_si512(fields, _mm512_set1_epi32(0x3F3F0F)), marks);
    __m512i const bytes = _mm512_mask_mov_epi32(fields, two, marked);
    auto const count = static_cast<unsigned int>(available + __builtin_popcount(two) + __builtin_popcount(three));
    __m512i const wanted =
        available == HALF ? marks : _mm512_maskz_mov_epi32(static_cast<__mmask16>(lowLanes32(available)), marks);
    storeBytes(out, squeezeBytes(_mm512_movepi8_mask(wanted), bytes), count);
    return count;
}

/**
 * Puts in the place of surrogates what gives their two bytes when it is taken six bits at a time: ppppp for the high
 * surrogate's first byte and the six bits behind, then the two bits that it leaves for the low one and that one's ten.
 */
KX7_AVX512 inline __m512i withPairCodes(unsigned short const* in, __m512i units, Kinds const& kinds)
{
    __m512i const high = _mm512_srli_epi16(_mm512_sub_epi16(units, _mm512_set1_epi16(static_cast<short>(0xD7C0))), 2);
    __m512i const before = _mm512_slli_epi16(_mm512_maskz_loadu_epi16(kinds.lows, in - 1), 10);
    __m512i const tenBits = _mm512_set1_epi16(0x3FF);
    __m512i const low = _mm512_or_si512(_mm512_and_si512(units, tenBits), _mm512_andnot_si512(tenBits, before));
    return _mm512_mask_mov_epi16(_mm512_mask_mov_epi16(units, kinds.highs, high), kinds.lows, low);
}

/** Lanes of a kind of surrogate, 0xD800 or 0xDC00. */
KX7_AVX512 inline uint32_t surrogates(__m512i units, unsigned short kind)
{
    return _mm512_cmpeq_epi16_mask(_mm512_and_si512(units, _mm512_set1_epi16(static_cast<short>(0xFC00))),
                                   _mm512_set1_epi16(static_cast<short>(kind)));
}

KX7_AVX512 inline uint32_t atLeast(__m512i units, unsigned short least)
{
    return _mm512_cmpge_epu16_mask(units, _mm512_set1_epi16(static_cast<short>(least)));
}

/**
 * Encodes the first `available` units, 32 at most and not cut off at the end, up to what is unpaired or does not fit.
 * @return the units consumed
 */
KX7_AVX512 inline std::ptrdiff_t encodeLastBlock(unsigned short const* in, std::ptrdiff_t available,
                                                 unsigned char*& out, std::ptrdiff_t room)
{
    __m512i units = _mm512_maskz_loadu_epi16(lowLanes32(available), in);
    uint32_t const notASCII = atLeast(units, 0x80);
    if (notASCII == 0 && available <= room) {
        _mm256_mask_storeu_epi8(out, lowLanes32(available), _mm512_cvtepi16_epi8(units));
        out += available;
        return available;
    }
    uint32_t const three = atLeast(units, 0x800);
    uint32_t highs = surrogates(units, 0xD800);
    uint32_t const partners = surrogates(units, 0xDC00) >> 1;
    if (highs == 0 && available + __builtin_popcount(notASCII) + __builtin_popcount(three) <= room) {
        Kinds const kinds = {notASCII, three, 0, 0};
        if (three == 0) {
            out += encodeTwoByteBlock(units, notASCII, available, out);
        }
        else {
            out += encodeHalf<false>(_mm512_castsi512_si256(units), kinds, std::min(available, HALF), out);
            if (available > HALF)
                out += encodeHalf<false>(_mm512_extracti64x4_epi64(units, 1), kinds.back(), available - HALF, out);
        }
        return available;
    }
    if (highs != 0 && (highs & ~partners) == 0) {
        Kinds const kinds = {notASCII, three & ~(highs | highs << 1), highs, highs << 1};
        if (available + __builtin_popcount(kinds.two) + __builtin_popcount(kinds.three) <= room) {
            __m512i const codes = withPairCodes(in, units, kinds);
            out += encodeHalf<true>(_mm512_castsi512_si256(codes), kinds, std::min(available, HALF), out);
            if (available > HALF)
                out += encodeHalf<true>(_mm512_extracti64x4_epi64(codes, 1), kinds.back(), available - HALF, out);
            return available;
        }
    }
    std::ptrdiff_t used = std::min(available, HALF);
    uint32_t const unpaired = highs & ~partners & lowLanes32(used);
    if (unpaired != 0)
        used = __builtin_ctz(unpaired);
    // A pair that the half cuts is left to the next; its low surrogate is there.
    else if (highs >> (used - 1) & 1)
        --used;
    for (int attempts = 0; attempts < 2; ++attempts) {
        uint32_t const lanes = lowLanes32(used);
        highs &= lanes;
        Kinds kinds = {notASCII & lanes, three & lanes, highs, highs << 1};
        kinds.three &= ~(kinds.highs | kinds.lows);
        if (used == 0)
            return 0;
        if (used + __builtin_popcount(kinds.two) + __builtin_popcount(kinds.three) <= room) {
            __m512i const codes = withPairCodes(in, units, kinds);
            out += encodeHalf<true>(_mm512_castsi512_si256(codes), kinds, used, out);
            return used;
        }
        // What fits for certain.
        used = std::min(used, room / 3);
        if (used > 0 && highs >> (used - 1) & 1)
            --used;
    }
    return 0;
}

}  // namespace

KX7_AVX512 void encodeUTF8Avx512(unsigned short const*& inOut, unsigned short const* end, unsigned char*& outOut,
                                 unsigned char* outEnd)
{
    unsigned short const* in = inOut;
    unsigned char* out = outOut;
    uint32_t carried = 0;  // 1: the pair that the block before cut
    // One more unit, by which it is known that a pair is cut.
    while (end - in > UNITS && outEnd - out >= UNITS) {
        __m512i const units = _mm512_loadu_si512(in);
        uint32_t const notASCII = atLeast(units, 0x80);
        if (notASCII == 0) {
            _mm256_storeu_si256(reinterpret_cast<__m256i*>(out), _mm512_cvtepi16_epi8(units));
            in += UNITS;
            out += UNITS;
            continue;
        }
        if (outEnd - out < BLOCK_ROOM)
            break;
        Kinds kinds = {notASCII, atLeast(units, 0x800), 0, 0};
        if (kinds.three == 0) {
            out += encodeTwoByteBlock(units, notASCII, UNITS, out);
            in += UNITS;
            continue;
        }
        kinds.highs = surrogates(units, 0xD800);
        kinds.lows = kinds.highs << 1 | carried;
        if ((kinds.highs | carried) == 0) {
            out += encodeHalf<false>(_mm512_castsi512_si256(units), kinds, HALF, out);
            out += encodeHalf<false>(_mm512_extracti64x4_epi64(units, 1), kinds.back(), HALF, out);
        }
        else {
            if ((kinds.lows & ~surrogates(units, 0xDC00)) != 0 ||
                (kinds.highs >> (UNITS - 1) != 0 && (in[UNITS] & 0xFC00) != 0xDC00))
                break;
            kinds.three &= ~(kinds.highs | kinds.lows);
            __m512i const codes = withPairCodes(in, units, kinds);
            out += encodeHalf<true>(_mm512_castsi512_si256(codes), kinds, HALF, out);
            out += encodeHalf<true>(_mm512_extracti64x4_epi64(codes, 1), kinds.back(), HALF, out);
            carried = kinds.highs >> (UNITS - 1);
        }
        in += UNITS;
    }
    if (carried != 0) {
        // The bytes of its low surrogate, for which the block before left room.
        unsigned int const low = (in[-1] & 3U) << 10 | (in[0] & 0x3FFU);
        out[0] = static_cast<unsigned char>(0x80 | low >> 6);
        out[1] = static_cast<unsigned char>(0x80 | (low & 0x3F));
        ++in;
        out += 2;
    }
    while (end - in > 0) {
        std::ptrdiff_t const used = encodeLastBlock(in, std::min(end - in, UNITS), out, outEnd - out);
        if (used == 0)
            break;
        in += used;
    }
    inOut = in;
    outOut = out;
}

namespace {

/** Bytes of each unit beyond the first; of half a pair as of any other unit from U+0800. */
KX7_AVX512 inline __m512i bytesBeyondFirst(__m512i units)
{
    __m512i const one = _mm512_set1_epi16(1);
    return _mm512_add_epi16(_mm512_min_epu16(_mm512_srli_epi16(units, 7), one),
                            _mm512_min_epu16(_mm512_srli_epi16(units, 11), one));
}

/** The first `available` of 64 units, zeros behind them. */
struct UnitBlock {
    static constexpr std::ptrdiff_t SIZE = 2 * UNITS;
    __m512i front;
    __m512i back;

    KX7_AVX512 UnitBlock(unsigned short const* in, std::ptrdiff_t available)
    {
        if (available == SIZE) {
            front = _mm512_loadu_si512(in);
            back = _mm512_loadu_si512(in + UNITS);
            return;
        }
        front = _mm512_maskz_loadu_epi16(lowLanes32(std::min(available, UNITS)), in);
        back = _mm512_maskz_loadu_epi16(lowLanes32(std::max(available - UNITS, std::ptrdiff_t{0})), in + UNITS);
    }

    KX7_AVX512 bool isASCII() const
    {
        __m512i const both = _mm512_or_si512(front, back);
        return _mm512_test_epi16_mask(both, _mm512_set1_epi16(static_cast<short>(0xFF80))) == 0;
    }

    KX7_AVX512 bool hasSurrogates() const
    {
        __m512i const base = _mm512_set1_epi16(static_cast<short>(0xD800));
        __m512i const nearest = _mm512_min_epu16(_mm512_sub_epi16(front, base), _mm512_sub_epi16(back, base));
        return _mm512_cmplt_epu16_mask(nearest, _mm512_set1_epi16(0x800)) != 0;
    }

    KX7_AVX512 uint64_t surrogatesOf(unsigned short kind) const
    {
        uint32_t low = surrogates(front, kind);
        uint32_t high = surrogates(back, kind);
        __asm__("" : "+r"(low), "+r"(high));  // else g++ 12 for 32 bits does not clear what is above a mask
        return low | static_cast<uint64_t>(high) << UNITS;
    }
};

}  // namespace

KX7_AVX512 size_t countAsUTF8Avx512(unsigned short const*& inOut, unsigned short const* end)
{
    constexpr std::ptrdiff_t MOST_BLOCKS = 0x1000;  // else lanes overflow
    unsigned short const* in = inOut;
    // In front only: in mixed text it would cost more than it saves.
    while (end - in >= UnitBlock::SIZE && UnitBlock(in, UnitBlock::SIZE).isASCII())
        in += UnitBlock::SIZE;
    std::ptrdiff_t count = 0;
    uint64_t carried = 0;  // 1: a high surrogate in front
    while (in < end) {
        unsigned short const* const until = in + std::min(end - in, MOST_BLOCKS * UnitBlock::SIZE);
        __m512i beyond = _mm512_setzero_si512();
        while (in < until) {
            std::ptrdiff_t const available = std::min(until - in, UnitBlock::SIZE);
            UnitBlock const block(in, available);
            if (carried != 0 || block.hasSurrogates()) {
                uint64_t const highs = block.surrogatesOf(0xD800);
                uint64_t const unpaired = (highs << 1 | carried) & ~block.surrogatesOf(0xDC00);
                if ((unpaired & ~UINT64_C(0) >> (UnitBlock::SIZE - available)) != 0) {
                    end = in + __builtin_ctzll(unpaired) - 1;
                    break;
                }
                // Three bytes for either half of a pair are two too many.
                count -= 2 * __builtin_popcountll(highs);
                carried = highs >> (available - 1) & 1;
            }
            beyond =
                _mm512_add_epi16(beyond, _mm512_add_epi16(bytesBeyondFirst(block.front), bytesBeyondFirst(block.back)));
            in += available;
        }
        count += _mm512_reduce_add_epi32(_mm512_madd_epi16(beyond, _mm512_set1_epi16(1)));
    }
    count += in - inOut;
    // A high surrogate whose partner does not follow here has been counted with one byte.
    auto const cut = static_cast<std::ptrdiff_t>(carried);
    inOut = in - cut;
    return static_cast<size_t>(count - cut);
}

}  // namespace kx7

#endif
