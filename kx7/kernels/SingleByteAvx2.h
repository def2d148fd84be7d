// kx7text - look-ups in the tables of single-byte sets with AVX2 (internal).
//
// A table of 128 bytes is looked up for 32 bytes at once: a shuffle in each of its eight rows of 16, all by the low
// four bits, and a tree of blends that picks the row by the next three.
#ifndef KX7_KERNELS_SINGLEBYTEAVX2_H
#define KX7_KERNELS_SINGLEBYTEAVX2_H

#include "kx7/kernels/Avx2.h"

#ifdef KX7_X86_KERNELS

#include <cstdint>

namespace kx7 {

KX7_AVX2 inline __m256i load(void const* p)
{
    return _mm256_loadu_si256(static_cast<__m256i const*>(p));
}

KX7_AVX2 inline void store(void* p, __m256i value)
{
    _mm256_storeu_si256(static_cast<__m256i*>(p), value);
}

KX7_AVX2 inline uint32_t signsOf(__m256i bytes)
{
    return static_cast<uint32_t>(_mm256_movemask_epi8(bytes));
}

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
        auto const* const rows = reinterpret_cast<__m128i const*>(table + 32 * i);
        __m256i const first = _mm256_shuffle_epi8(_mm256_broadcastsi128_si256(_mm_loadu_si128(rows)), codes);
        __m256i const second = _mm256_shuffle_epi8(_mm256_broadcastsi128_si256(_mm_loadu_si128(rows + 1)), codes);
        return _mm256_blendv_epi8(first, second, bits.four);
    };
    __m256i const upper = _mm256_blendv_epi8(pair(2), pair(3), bits.five);
    if (FROM_64)
        return upper;
    return _mm256_blendv_epi8(_mm256_blendv_epi8(pair(0), pair(1), bits.five), upper, bits.six);
}

/** A row of 16 bytes, or a table of so many, in both halves. */
KX7_AVX2 inline __m256i rowOf(unsigned char const* bytes)
{
    return _mm256_broadcastsi128_si256(_mm_loadu_si128(reinterpret_cast<__m128i const*>(bytes)));
}

/** The high four bits of bytes. */
KX7_AVX2 inline __m256i highNibbles(__m256i bytes)
{
    return _mm256_and_si256(_mm256_srli_epi16(bytes, 4), _mm256_set1_epi8(0xF));
}

/** A bit for each of eight rows, by the number of the row. */
KX7_AVX2 inline __m256i bitOfRow(__m256i rows)
{
    return _mm256_shuffle_epi8(_mm256_set1_epi64x(static_cast<long long>(0x8040201008040201)), rows);
}

/** All of `bits` are in `bytes`: ones, byte by byte. */
KX7_AVX2 inline __m256i hasBits(__m256i bytes, __m256i bits)
{
    return _mm256_cmpeq_epi8(_mm256_and_si256(bytes, bits), bits);
}

}  // namespace kx7

#endif

#endif
