// kx7text - the kernels with AVX2 together, and the search for a 0 unit: 16 units a block, aligned.
#include "kx7/kernels/Avx2.h"

#ifdef KX7_X86_KERNELS

#include <algorithm>
#include <cstdint>

namespace kx7 {

namespace {

KX7_AVX2 KX7_READS_BEYOND size_t unitLength(unsigned short const* text, size_t most)
{
    constexpr size_t UNITS = 16;
    size_t const untilAligned = reinterpret_cast<uintptr_t>(text) % 32;
    if (most < 2 * UNITS || untilAligned % 2 != 0)
        return BASELINE_KERNELS.unitLength(text, most);
    size_t const skipped = untilAligned / 2;
    size_t n = 0;
    __m256i const zero = _mm256_setzero_si256();
    auto const* block = reinterpret_cast<__m256i const*>(text - skipped);
    auto zeros = static_cast<unsigned int>(_mm256_movemask_epi8(_mm256_cmpeq_epi16(_mm256_load_si256(block), zero)));
    zeros = zeros >> untilAligned << untilAligned;
    while (zeros == 0) {
        n += UNITS;
        if (n - skipped >= most)
            return most;
        zeros = static_cast<unsigned int>(_mm256_movemask_epi8(_mm256_cmpeq_epi16(_mm256_load_si256(++block), zero)));
    }
    return std::min(most, n + static_cast<size_t>(__builtin_ctz(zeros)) / 2 - skipped);
}

}  // namespace

Kernels const AVX2_KERNELS = {
    unitLength,         unitFindAvx2,  unitMatchAvx2,        decodeUTF8Avx2,       encodeUTF8Avx2,
    wellFormedUTF8Avx2, countUTF8Avx2, countAsUTF8Avx2,      decodeSingleByteAvx2, BASELINE_KERNELS.encodeSingleByte,
    decodePairsAvx2,    noFourBytes,   encodeDoubleByteAvx2, countDoubleByteAvx2,  encodeGB18030Avx2,
    countGB18030Avx2};

}  // namespace kx7

#endif
