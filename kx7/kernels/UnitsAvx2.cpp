// kx7text - searches in UTF-16 text with AVX2.
//
// 16 units a block; what is left at the end is a block that overlaps the one before it, or plain steps. Where two texts
// that may end anywhere are compared, blocks stay within the pages that the texts are known to reach.
#include "kx7/kernels/Avx2.h"

#ifdef KX7_X86_KERNELS

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

}  // namespace

KX7_AVX2 size_t unitFindAvx2(unsigned short const* text, size_t count, unsigned short unit)
{
    if (count < BLOCK)
        return BASELINE_KERNELS.unitFind(text, count, unit);
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
            size_t const rest = BASELINE_KERNELS.unitMatch(a + n, b + n, end - n);
            n += rest;
            if (n != end)
                return n;
        }
    }
    return most;
}

}  // namespace kx7

#endif
