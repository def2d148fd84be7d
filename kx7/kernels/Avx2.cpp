// kx7text - the kernels with AVX2 together, and the search for a 0 unit: 16 units a block, aligned, and four such
// blocks at a time.
#include "kx7/kernels/Avx2.h"

#ifdef KX7_X86_KERNELS

#include <algorithm>
#include <cstdint>

namespace kx7 {

namespace {

constexpr size_t UNITS = 16;

KX7_AVX2 KX7_READS_BEYOND inline unsigned int zerosOf(__m256i const* block)
{
    return static_cast<unsigned int>(
        _mm256_movemask_epi8(_mm256_cmpeq_epi16(_mm256_load_si256(block), _mm256_setzero_si256())));
}

KX7_AVX2 KX7_READS_BEYOND size_t unitLength(unsigned short const* text, size_t most)
{
    size_t const untilAligned = reinterpret_cast<uintptr_t>(text) % 32;
    if (most < 2 * UNITS || untilAligned % 2 != 0)
        return BASELINE_KERNELS.unitLength(text, most);
    size_t const skipped = untilAligned / 2;
    auto const* block = reinterpret_cast<__m256i const*>(text - skipped);
    if (unsigned int const zeros = zerosOf(block) >> untilAligned)
        return static_cast<size_t>(__builtin_ctz(zeros)) / 2;
    size_t n = UNITS - skipped;
    ++block;
    while (n < most) {
        // Four blocks at once where they are as well aligned, so in one page; the one with the 0 is then looked for.
        if (reinterpret_cast<uintptr_t>(block) % (4 * sizeof *block) == 0) {
            __m256i const least =
                _mm256_min_epu16(_mm256_min_epu16(_mm256_load_si256(block), _mm256_load_si256(block + 1)),
                                 _mm256_min_epu16(_mm256_load_si256(block + 2), _mm256_load_si256(block + 3)));
            if (_mm256_movemask_epi8(_mm256_cmpeq_epi16(least, _mm256_setzero_si256())) == 0) {
                block += 4;
                n += 4 * UNITS;
                continue;
            }
        }
        if (unsigned int const zeros = zerosOf(block))
            return std::min(most, n + static_cast<size_t>(__builtin_ctz(zeros)) / 2);
        ++block;
        n += UNITS;
    }
    return most;
}

/** From here on a text is worth setting up blocks for; what they leave of it goes to the baseline as well. */
constexpr std::ptrdiff_t BYTES_WORTHWHILE = 32;
constexpr std::ptrdiff_t UNITS_WORTHWHILE = 8;

void decodeUTF8(unsigned char const*& in, unsigned char const* end, unsigned short*& out, unsigned short* outEnd)
{
    if (end - in >= BYTES_WORTHWHILE)
        decodeUTF8Avx2(in, end, out, outEnd);
    if (in != end)
        BASELINE_KERNELS.decodeUTF8(in, end, out, outEnd);
}

void encodeUTF8(unsigned short const*& in, unsigned short const* end, unsigned char*& out, unsigned char* outEnd)
{
    if (end - in >= UNITS_WORTHWHILE)
        encodeUTF8Avx2(in, end, out, outEnd);
    if (in != end)
        BASELINE_KERNELS.encodeUTF8(in, end, out, outEnd);
}

}  // namespace

constexpr Kernels AVX2_KERNELS = {unitLength,
                                  unitFindAvx2,
                                  unitMatchAvx2,
                                  decodeUTF8,
                                  encodeUTF8,
                                  wellFormedUTF8Avx2,
                                  countUTF8Avx2,
                                  countAsUTF8Avx2,
                                  decodeSingleByteAvx2,
                                  encodeSingleByteAvx2,
                                  singleByteFromUTF8Avx2,
                                  decodePairsAvx2,
                                  decodeFourBytesAvx2,
                                  countPairsAvx2,
                                  countMappedPairsAvx2,
                                  countUnitsOfGB18030Avx2,
                                  encodeDoubleByteAvx2,
                                  countDoubleByteAvx2,
                                  encodeGB18030Avx2,
                                  countGB18030Avx2,
                                  48,
                                  112};

}  // namespace kx7

#endif
