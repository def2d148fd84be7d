// kx7text - searches in UTF-16 text with AVX-512.
//
// 32 units a block. Where the length is known, the last block is loaded under a mask, so that nothing after it is
// touched. A 0 unit is looked for in aligned blocks, four at a time. Where two texts that may end anywhere are
// compared, blocks stay within the pages that the texts are known to reach.
#include "kx7/kernels/Avx512.h"

#ifdef KX7_X86_KERNELS

#include <algorithm>

#include "kx7/kernels/Baseline.h"
#include "kx7/kernels/Units.h"

namespace kx7 {

namespace {

constexpr size_t BLOCK = 32;

/** The lanes of `count` units, fewer than a block. */
KX7_AVX512 inline __mmask32 lanes(size_t count)
{
    return _cvtu32_mask32((uint32_t{1} << count) - 1);
}

KX7_AVX512 inline size_t firstOf(uint32_t found)
{
    return static_cast<size_t>(__builtin_ctz(found));
}

KX7_AVX512 KX7_READS_BEYOND inline uint32_t zerosOf(unsigned short const* block)
{
    __m512i const units = _mm512_load_si512(block);
    return _mm512_testn_epi16_mask(units, units);
}

/** Goes on at `block`, `n` units behind the text's begin. */
KX7_AVX512 KX7_READS_BEYOND __attribute__((noinline)) size_t longUnitLength(unsigned short const* block, size_t n,
                                                                            size_t most)
{
    while (n < most) {
        // Four blocks at once where they are as well aligned, so in one page; the one with the 0 is then looked for.
        if (reinterpret_cast<uintptr_t>(block) % (4 * BLOCK * sizeof *block) == 0) {
            __m512i const least = _mm512_min_epu16(
                _mm512_min_epu16(_mm512_load_si512(block), _mm512_load_si512(block + BLOCK)),
                _mm512_min_epu16(_mm512_load_si512(block + 2 * BLOCK), _mm512_load_si512(block + 3 * BLOCK)));
            if (_mm512_testn_epi16_mask(least, least) == 0) {
                block += 4 * BLOCK;
                n += 4 * BLOCK;
                continue;
            }
        }
        if (uint32_t const zeros = zerosOf(block))
            return std::min(most, n + static_cast<size_t>(__builtin_ctz(zeros)));
        block += BLOCK;
        n += BLOCK;
    }
    return most;
}

}  // namespace

KX7_AVX512 KX7_READS_BEYOND size_t unitLengthAvx512(unsigned short const* text, size_t most)
{
    size_t const untilAligned = reinterpret_cast<uintptr_t>(text) % 64;
    if (untilAligned % 2 != 0)
        return unitLengthBaseline(text, most);
    if (most == 0)
        return 0;
    size_t const skipped = untilAligned / 2;
    unsigned short const* const block = text - skipped;
    uint32_t const zeros = zerosOf(block) >> skipped;
    size_t const n = BLOCK - skipped;
    if (zeros != 0)
        return std::min(most, static_cast<size_t>(__builtin_ctz(zeros)));
    if (n >= most)
        return most;
    if (uint32_t const next = zerosOf(block + BLOCK))
        return std::min(most, n + static_cast<size_t>(__builtin_ctz(next)));
    return longUnitLength(block + 2 * BLOCK, n + BLOCK, most);
}

KX7_AVX512 size_t unitFindAvx512(unsigned short const* text, size_t count, unsigned short unit)
{
    __m512i const wanted = _mm512_set1_epi16(static_cast<short>(unit));
    size_t n = 0;
    for (; count - n >= BLOCK; n += BLOCK)
        if (uint32_t const found = _mm512_cmpeq_epi16_mask(_mm512_loadu_si512(text + n), wanted))
            return n + firstOf(found);
    if (n == count)
        return count;
    __mmask32 const rest = lanes(count - n);
    uint32_t const found = _mm512_mask_cmpeq_epi16_mask(rest, _mm512_maskz_loadu_epi16(rest, text + n), wanted);
    return found != 0 ? n + firstOf(found) : count;
}

KX7_AVX512 KX7_READS_BEYOND size_t unitMatchAvx512(unsigned short const* a, unsigned short const* b, size_t most)
{
    size_t n = 0;
    while (n != most) {
        size_t const end = n + unitsInPage(a + n, b + n, most - n);
        for (; end - n >= BLOCK; n += BLOCK) {
            __m512i const x = _mm512_loadu_si512(a + n);
            // A unit of `a` where it is what stands in `b`, else 0: 0 ends the search either way.
            __m512i const alike = _mm512_maskz_mov_epi16(_mm512_cmpeq_epi16_mask(x, _mm512_loadu_si512(b + n)), x);
            if (uint32_t const found = _mm512_testn_epi16_mask(alike, alike))
                return n + firstOf(found);
        }
        if (n != end) {
            __mmask32 const rest = lanes(end - n);
            __m512i const x = _mm512_maskz_loadu_epi16(rest, a + n);
            __m512i const y = _mm512_maskz_loadu_epi16(rest, b + n);
            uint32_t const found = _mm512_mask_cmpneq_epi16_mask(rest, x, y) | _mm512_mask_testn_epi16_mask(rest, x, x);
            if (found != 0)
                return n + firstOf(found);
            n = end;
        }
    }
    return most;
}

}  // namespace kx7

#endif
