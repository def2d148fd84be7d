// kx7text - the kernels with AVX-512 together, and the search for a 0 unit: 32 units a block, aligned.
#include "kx7/kernels/Avx512.h"

#ifdef KX7_X86_KERNELS

#include <algorithm>

namespace kx7 {

namespace {

KX7_AVX512 KX7_READS_BEYOND size_t unitLength(unsigned short const* text, size_t most)
{
    constexpr size_t UNITS = 32;
    size_t const untilAligned = reinterpret_cast<uintptr_t>(text) % 64;
    if (untilAligned % 2 != 0)
        return BASELINE_KERNELS.unitLength(text, most);
    if (most == 0)
        return 0;
    size_t const skipped = untilAligned / 2;
    size_t n = 0;
    unsigned short const* block = text - skipped;
    uint32_t zeros = _mm512_testn_epi16_mask(_mm512_load_si512(block), _mm512_set1_epi16(-1));
    zeros = zeros >> skipped << skipped;
    while (zeros == 0) {
        n += UNITS;
        if (n - skipped >= most)
            return most;
        block += UNITS;
        zeros = _mm512_testn_epi16_mask(_mm512_load_si512(block), _mm512_set1_epi16(-1));
    }
    return std::min(most, n + static_cast<size_t>(__builtin_ctz(zeros)) - skipped);
}

}  // namespace

Kernels const AVX512_KERNELS = {
    unitLength,           unitFindAvx512,        unitMatchAvx512,        decodeUTF8Avx512,       encodeUTF8Avx512,
    wellFormedUTF8Avx512, countUTF8Avx512,       countAsUTF8Avx512,      decodeSingleByteAvx512, encodeSingleByteAvx512,
    decodePairsAvx512,    decodeFourBytesAvx512, encodeDoubleByteAvx512, countDoubleByteAvx512,  encodeGB18030Avx512,
    countGB18030Avx512,
};

}  // namespace kx7

#endif
