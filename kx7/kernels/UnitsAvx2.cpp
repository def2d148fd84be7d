// kx7text - searches in UTF-16 text with AVX2.
//
// 16 units a block. Where the length is known, what is left at the end is a block that overlaps the one before it, or
// the baseline's. A 0 unit is looked for in aligned blocks, four at a time. Where two texts that may end anywhere are
// compared, blocks stay within the pages that the texts are known to reach.
#include "kx7/kernels/Avx2.h"

#ifdef KX7_X86_KERNELS

#include <algorithm>
#include <cstdint>

#include "kx7/kernels/Baseline.h"
#include "kx7/kernels/Units.h"

namespace kx7 {

namespace {

constexpr size_t BLOCK = 16;

/** The first lane of a comparison that has all its bits set; `found` is its mask of bytes. */
KX7_AVX2 inline size_t firstOf(unsigned int found)
{
    return static_cast<size_t>(__builtin_ctz(found)) / 2;
}

KX7_AVX2 inline unsigned int equalTo(unsigned short const* p, __m256i wanted)
{
    return static_cast<unsigned int>(
        _mm256_movemask_epi8(_mm256_cmpeq_epi16(_mm256_loadu_si256(reinterpret_cast<__m256i const*>(p)), wanted)));
}

/** The bytes of the units that differ or are 0. */
KX7_AVX2 KX7_READS_BEYOND inline unsigned int ends(unsigned short const* a, unsigned short const* b)
{
    // Not through a function that a sanitizer looks at.
    __m256i const x = _mm256_loadu_si256(reinterpret_cast<__m256i const*>(a));
    __m256i const y = _mm256_loadu_si256(reinterpret_cast<__m256i const*>(b));
    // A unit of `a` where it is what stands in `b`, else 0: 0 ends the search either way.
    __m256i const alike = _mm256_and_si256(_mm256_cmpeq_epi16(x, y), x);
    return static_cast<unsigned int>(_mm256_movemask_epi8(_mm256_cmpeq_epi16(alike, _mm256_setzero_si256())));
}

KX7_AVX2 KX7_READS_BEYOND inline unsigned int zerosOf(__m256i const* block)
{
    return static_cast<unsigned int>(
        _mm256_movemask_epi8(_mm256_cmpeq_epi16(_mm256_load_si256(block), _mm256_setzero_si256())));
}

}  // namespace

KX7_AVX2 KX7_READS_BEYOND size_t unitLengthAvx2(unsigned short const* text, size_t most)
{
    size_t const untilAligned = reinterpret_cast<uintptr_t>(text) % 32;
    if (most < 2 * BLOCK || untilAligned % 2 != 0)
        return unitLengthBaseline(text, most);
    size_t const skipped = untilAligned / 2;
    auto const* block = reinterpret_cast<__m256i const*>(text - skipped);
    if (unsigned int const zeros = zerosOf(block) >> untilAligned)
        return static_cast<size_t>(__builtin_ctz(zeros)) / 2;
    size_t n = BLOCK - skipped;
    ++block;
    while (n < most) {
        // Four blocks at once where they are as well aligned, so in one page; the one with the 0 is then looked for.
        if (reinterpret_cast<uintptr_t>(block) % (4 * sizeof *block) == 0) {
            __m256i const least =
                _mm256_min_epu16(_mm256_min_epu16(_mm256_load_si256(block), _mm256_load_si256(block + 1)),
                                 _mm256_min_epu16(_mm256_load_si256(block + 2), _mm256_load_si256(block + 3)));
            if (_mm256_movemask_epi8(_mm256_cmpeq_epi16(least, _mm256_setzero_si256())) == 0) {
                block += 4;
                n += 4 * BLOCK;
                continue;
            }
        }
        if (unsigned int const zeros = zerosOf(block))
            return std::min(most, n + static_cast<size_t>(__builtin_ctz(zeros)) / 2);
        ++block;
        n += BLOCK;
    }
    return most;
}

KX7_AVX2 size_t unitFindAvx2(unsigned short const* text, size_t count, unsigned short unit)
{
    if (count < BLOCK)
        return unitFindBaseline(text, count, unit);
    __m256i const wanted = _mm256_set1_epi16(static_cast<short>(unit));
    size_t n = 0;
    for (; count - n >= BLOCK; n += BLOCK)
        if (unsigned int const found = equalTo(text + n, wanted))
            return n + firstOf(found);
    unsigned int const found = equalTo(text + count - BLOCK, wanted);
    return found != 0 ? count - BLOCK + firstOf(found) : count;
}

KX7_AVX2 KX7_READS_BEYOND size_t unitMatchAvx2(unsigned short const* a, unsigned short const* b, size_t most)
{
    size_t n = 0;
    while (n != most) {
        size_t const end = n + unitsInPage(a + n, b + n, most - n);
        for (; end - n >= BLOCK; n += BLOCK)
            if (unsigned int const found = ends(a + n, b + n))
                return n + firstOf(found);
        if (n != end) {
            size_t const rest = unitMatchBaseline(a + n, b + n, end - n);
            n += rest;
            if (n != end)
                return n;
        }
    }
    return most;
}

}  // namespace kx7

#endif
