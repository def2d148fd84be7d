// kx7text - single-byte sets with AVX-512 (VBMI).
//
// Decoding holds the table of 256 units in eight registers, low and high bytes apart, and looks 64 bytes up at a time:
// two permutations for either half of the codes, blended by the sign of the byte.
//
// Encoding looks 64 units up at a time, a page of the reverse table after the other: the units whose high byte is that
// of the first one not looked up yet. Text of one script has two or three such pages.
#include "kx7/kernels/Avx512.h"

#ifdef KX7_X86_KERNELS

namespace kx7 {

namespace {

constexpr std::ptrdiff_t BLOCK = 64;

/** 256 bytes, looked up by 64 bytes at once. */
struct ByteTable {
    __m512i quarters[4];

    KX7_AVX512 __m512i lookUp(__m512i index, __mmask64 isUpper) const
    {
        __m512i const lower = _mm512_permutex2var_epi8(quarters[0], index, quarters[1]);
        __m512i const upper = _mm512_permutex2var_epi8(quarters[2], index, quarters[3]);
        return _mm512_mask_mov_epi8(lower, isUpper, upper);
    }
};

/** The low bytes of 64 units at `p`, shifted right by `shift` first. */
KX7_AVX512 inline __m512i narrow(unsigned short const* p, unsigned int shift)
{
    __m512i const a = _mm512_srli_epi16(_mm512_loadu_si512(p), shift);
    __m512i const b = _mm512_srli_epi16(_mm512_loadu_si512(p + 32), shift);
    return _mm512_inserti64x4(_mm512_castsi256_si512(_mm512_cvtepi16_epi8(a)), _mm512_cvtepi16_epi8(b), 1);
}

}  // namespace

KX7_AVX512 void decodeSingleByteAvx512(unsigned short const* toUnicode, unsigned char const*& inOut,
                                       unsigned char const* end, unsigned short*& outOut, unsigned short* outEnd)
{
    unsigned char const* in = inOut;
    unsigned short* out = outOut;
    if (end - in < BLOCK || outEnd - out < BLOCK)
        return;
    ByteTable low;
    ByteTable high;
    for (int i = 0; i < 4; ++i) {
        low.quarters[i] = narrow(toUnicode + BLOCK * i, 0);
        high.quarters[i] = narrow(toUnicode + BLOCK * i, 8);
    }
    // Unpacking works within 128 bits: this order of the input's quarters makes the output come out in order.
    __m512i const order = _mm512_setr_epi64(0, 4, 1, 5, 2, 6, 3, 7);
    do {
        __m512i const bytes = _mm512_permutexvar_epi64(order, _mm512_loadu_si512(in));
        __mmask64 const isUpper = _mm512_movepi8_mask(bytes);
        __m512i const lows = low.lookUp(bytes, isUpper);
        __m512i const highs = high.lookUp(bytes, isUpper);
        if (_mm512_test_epi8_mask(_mm512_or_si512(lows, highs), _mm512_set1_epi8(-1)) != ~UINT64_C(0))
            break;
        _mm512_storeu_si512(out, _mm512_unpacklo_epi8(lows, highs));
        _mm512_storeu_si512(out + BLOCK / 2, _mm512_unpackhi_epi8(lows, highs));
        in += BLOCK;
        out += BLOCK;
    } while (end - in >= BLOCK && outEnd - out >= BLOCK);
    inOut = in;
    outOut = out;
}

KX7_AVX512 void encodeSingleByteAvx512(LookupTable<unsigned char> const& fromUnicode, unsigned short const*& inOut,
                                       unsigned short const* end, unsigned char*& outOut, unsigned char* outEnd)
{
    unsigned short const* in = inOut;
    unsigned char* out = outOut;
    while (end - in >= BLOCK && outEnd - out >= BLOCK) {
        __m512i const lows = narrow(in, 0);
        __m512i const highs = narrow(in, 8);
        __mmask64 const isUpper = _mm512_movepi8_mask(lows);
        __m512i bytes = _mm512_setzero_si512();
        uint64_t left = ~UINT64_C(0);
        do {
            auto const high = static_cast<unsigned char>(in[__builtin_ctzll(left)] >> 8);
            unsigned char const* const page = fromUnicode.page(high);
            ByteTable table;
            for (int i = 0; i < 4; ++i)
                table.quarters[i] = _mm512_loadu_si512(page + BLOCK * i);
            __mmask64 const isHere = _mm512_cmpeq_epi8_mask(highs, _mm512_set1_epi8(static_cast<char>(high)));
            bytes = _mm512_mask_mov_epi8(bytes, isHere, table.lookUp(lows, isUpper));
            left &= ~isHere;
            if (_mm512_mask_test_epi8_mask(isHere, bytes, bytes) != isHere)
                goto unmapped;
        } while (left != 0);
        _mm512_storeu_si512(out, bytes);
        in += BLOCK;
        out += BLOCK;
    }
unmapped:
    inOut = in;
    outOut = out;
}

}  // namespace kx7

#endif
