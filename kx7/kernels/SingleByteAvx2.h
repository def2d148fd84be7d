// kx7text - lookups in the tables of single-byte sets with AVX2 (internal).
//
// A table of 128 bytes is looked up for 32 bytes at once: a shuffle in each of its eight rows of 16, all by the low
// four bits, and a tree of blends that picks the row by the next three.
#ifndef KX7_KERNELS_SINGLEBYTEAVX2_H
#define KX7_KERNELS_SINGLEBYTEAVX2_H

#include "kx7/kernels/vector/Avx2.h"

#ifdef KX7_X86_KERNELS

namespace kx7 {

/** The bits of codes of seven bits that pick a row, each as the sign of its byte. */
struct RowBits {
    __m256i four;
    __m256i five;
    __m256i six;

    KX7_AVX2 explicit RowBits(__m256i codes)
        : four(_mm256_slli_epi16(codes, 3)), five(_mm256_slli_epi16(codes, 2)), six(_mm256_slli_epi16(codes, 1))
    {
    }
};

/** The entries of `table`, of 128 bytes, for codes of seven bits; FROM_64: all codes are at least 64. */
template <bool FROM_64 = false>
KX7_AVX2 inline __m256i lookUp(unsigned char const* table, __m256i codes, RowBits const& bits)
{
    auto const pair = [&](int i) KX7_AVX2 {
        unsigned char const* const rows = table + 32 * i;
        __m256i const first = _mm256_shuffle_epi8(inBothHalves(rows), codes);
        __m256i const second = _mm256_shuffle_epi8(inBothHalves(rows + 16), codes);
        return _mm256_blendv_epi8(first, second, bits.four);
    };
    __m256i const upper = _mm256_blendv_epi8(pair(2), pair(3), bits.five);
    if (FROM_64)
        return upper;
    return _mm256_blendv_epi8(_mm256_blendv_epi8(pair(0), pair(1), bits.five), upper, bits.six);
}

}  // namespace kx7

#endif

#endif
