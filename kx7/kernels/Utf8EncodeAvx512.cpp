// kx7text - UTF-8 with AVX-512 (VBMI2): encoding.
//
// Takes 32 units, gives each 16 bits if none needs three bytes, else 32, builds its bytes there (for three
// bytes by vpmultishiftqb, six bits at a time), and drops what is not used. Each half of a surrogate pair
// makes two bytes, the low one with two bits from the unit before.
//
// Stores are masked: nothing is written after the text. What is left in the end, or cannot be converted, goes through
// smaller blocks loaded under a mask, which stop before the character at fault; short texts go there at once.
#include "kx7/kernels/Avx512.h"

#ifdef KX7_X86_KERNELS

#include <algorithm>

#include "kx7/kernels/vector/Avx512.h"

namespace kx7 {

namespace {

/** Units of a block, and of the half of one whose units get 32 bits each. */
constexpr std::ptrdiff_t UNITS = 32;
constexpr std::ptrdiff_t HALF = UNITS / 2;

/** Capacity that a block needs: three bytes a unit, and two for the rest of a pair that it cuts. */
constexpr std::ptrdiff_t BLOCK_CAPACITY = 3 * UNITS + 2;

/** Stores the first `count` bytes. */
KX7_AVX512 inline void storeBytes(unsigned char* out, __m512i bytes, unsigned int count)
{
#ifdef __x86_64__
    _mm512_mask_storeu_epi8(out, lowLanes64(count), bytes);
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
    storeBytes(out, compressBytes(_mm512_movepi8_mask(kept), _mm512_mask_mov_epi16(units, twoBytes, pairs)), count);
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
    storeBytes(out, compressBytes(_mm512_movepi8_mask(wanted), bytes), count);
    return count;
}

/**
 * Puts in the place of surrogates what gives their two bytes when it is taken six bits at a time: ppppp for the high
 * surrogate's first byte and the six bits after, then the two bits that it leaves for the low one and that one's ten.
 */
KX7_AVX512 inline __m512i withPairCodes(unsigned short const* in, __m512i units, Kinds const& kinds)
{
    __m512i const high = _mm512_srli_epi16(_mm512_sub_epi16(units, _mm512_set1_epi16(static_cast<short>(0xD7C0))), 2);
    __m512i const before = _mm512_slli_epi16(_mm512_maskz_loadu_epi16(kinds.lows, in - 1), 10);
    __m512i const tenBits = _mm512_set1_epi16(0x3FF);
    __m512i const low = _mm512_or_si512(_mm512_and_si512(units, tenBits), _mm512_andnot_si512(tenBits, before));
    return _mm512_mask_mov_epi16(_mm512_mask_mov_epi16(units, kinds.highs, high), kinds.lows, low);
}

/**
 * Encodes the first `available` units, 32 at most and not truncated at the end, up to what is unpaired or does not fit.
 * @return the units consumed
 */
KX7_AVX512 inline std::ptrdiff_t encodeLastBlock(unsigned short const* in, std::ptrdiff_t available,
                                                 unsigned char*& out, std::ptrdiff_t capacity)
{
    __m512i units = _mm512_maskz_loadu_epi16(lowLanes32(available), in);
    uint32_t const notASCII = UnitsAvx512::atLeast(units, 0x80);
    if (notASCII == 0 && available <= capacity) {
        _mm256_mask_storeu_epi8(out, lowLanes32(available), _mm512_cvtepi16_epi8(units));
        out += available;
        return available;
    }
    uint32_t const three = UnitsAvx512::atLeast(units, 0x800);
    uint32_t highs = UnitsAvx512::surrogates(units, 0xD800);
    uint32_t const partners = UnitsAvx512::surrogates(units, 0xDC00) >> 1;
    if (highs == 0 && available + __builtin_popcount(notASCII) + __builtin_popcount(three) <= capacity) {
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
        if (available + __builtin_popcount(kinds.two) + __builtin_popcount(kinds.three) <= capacity) {
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
        if (used + __builtin_popcount(kinds.two) + __builtin_popcount(kinds.three) <= capacity) {
            __m512i const codes = withPairCodes(in, units, kinds);
            out += encodeHalf<true>(_mm512_castsi512_si256(codes), kinds, used, out);
            return used;
        }
        // What fits for certain.
        used = std::min(used, capacity / 3);
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
        uint32_t const notASCII = UnitsAvx512::atLeast(units, 0x80);
        if (notASCII == 0) {
            _mm256_storeu_si256(reinterpret_cast<__m256i*>(out), _mm512_cvtepi16_epi8(units));
            in += UNITS;
            out += UNITS;
            continue;
        }
        if (outEnd - out < BLOCK_CAPACITY)
            break;
        Kinds kinds = {notASCII, UnitsAvx512::atLeast(units, 0x800), 0, 0};
        if (kinds.three == 0) {
            out += encodeTwoByteBlock(units, notASCII, UNITS, out);
            in += UNITS;
            continue;
        }
        kinds.highs = UnitsAvx512::surrogates(units, 0xD800);
        kinds.lows = kinds.highs << 1 | carried;
        if ((kinds.highs | carried) == 0) {
            out += encodeHalf<false>(_mm512_castsi512_si256(units), kinds, HALF, out);
            out += encodeHalf<false>(_mm512_extracti64x4_epi64(units, 1), kinds.back(), HALF, out);
        }
        else {
            if ((kinds.lows & ~UnitsAvx512::surrogates(units, 0xDC00)) != 0 ||
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
        // The bytes of its low surrogate, for which the block before left capacity.
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

}  // namespace kx7

#endif
