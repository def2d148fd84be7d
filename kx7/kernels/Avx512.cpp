// kx7text - the kernels with AVX-512 together, and the search for a 0 unit: 32 units a block, aligned, and four such
// blocks at a time.
#include "kx7/kernels/Avx512.h"

#ifdef KX7_X86_KERNELS

#include <algorithm>

#include "kx7/kernels/Avx2.h"

namespace kx7 {

namespace {

constexpr size_t UNITS = 32;

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
        if (reinterpret_cast<uintptr_t>(block) % (4 * UNITS * sizeof *block) == 0) {
            __m512i const least = _mm512_min_epu16(
                _mm512_min_epu16(_mm512_load_si512(block), _mm512_load_si512(block + UNITS)),
                _mm512_min_epu16(_mm512_load_si512(block + 2 * UNITS), _mm512_load_si512(block + 3 * UNITS)));
            if (_mm512_testn_epi16_mask(least, least) == 0) {
                block += 4 * UNITS;
                n += 4 * UNITS;
                continue;
            }
        }
        if (uint32_t const zeros = zerosOf(block))
            return std::min(most, n + static_cast<size_t>(__builtin_ctz(zeros)));
        block += UNITS;
        n += UNITS;
    }
    return most;
}

KX7_AVX512 KX7_READS_BEYOND size_t unitLength(unsigned short const* text, size_t most)
{
    size_t const untilAligned = reinterpret_cast<uintptr_t>(text) % 64;
    if (untilAligned % 2 != 0)
        return BASELINE_KERNELS.unitLength(text, most);
    if (most == 0)
        return 0;
    size_t const skipped = untilAligned / 2;
    unsigned short const* const block = text - skipped;
    uint32_t const zeros = zerosOf(block) >> skipped;
    size_t const n = UNITS - skipped;
    if (zeros != 0)
        return std::min(most, static_cast<size_t>(__builtin_ctz(zeros)));
    if (n >= most)
        return most;
    if (uint32_t const next = zerosOf(block + UNITS))
        return std::min(most, n + static_cast<size_t>(__builtin_ctz(next)));
    return longUnitLength(block + 2 * UNITS, n + UNITS, most);
}

}  // namespace

// Bit sets come sooner out of the registers of AVX2, and counting GB 18030 waits for them.
constexpr Kernels AVX512_KERNELS = {
    unitLength,
    unitFindAvx512,
    unitMatchAvx512,
    decodeUTF8Avx512,
    encodeUTF8Avx512,
    wellFormedUTF8Avx512,
    countUTF8Avx512,
    countAsUTF8Avx512,
    decodeSingleByteAvx512,
    encodeSingleByteAvx512,
    singleByteFromUTF8Avx512,
    decodePairsAvx512,
    decodeFourBytesAvx512,
    countPairsAvx512,
    countMappedPairsAvx512,
    countUnitsOfGB18030Avx2,
    encodeDoubleByteAvx512,
    countDoubleByteAvx512,
    encodeGB18030Avx512,
    countGB18030Avx512,
    24,
    64,
};

}  // namespace kx7

#endif
