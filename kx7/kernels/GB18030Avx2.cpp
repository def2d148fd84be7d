// kx7text - four-byte characters of GB 18030 with AVX2.
//
// Takes 64 bytes at a time. Where four bytes begin follows from which bytes are leads and digits, by arithmetic on bit
// sets (MultibyteStructure.h). The unit of what would begin at each place is made in vectors, four bytes or ASCII, and
// the characters are then gone through bit by bit, so that nothing is branched on where words end: nobody can predict
// that.
#include "kx7/kernels/Avx2.h"

#ifdef KX7_X86_KERNELS

#include "kx7/base/Utf16.h"
#include "kx7/kernels/MultibyteStructure.h"
#include "kx7/kernels/vector/Avx2.h"

namespace kx7 {

namespace {

constexpr std::ptrdiff_t HALF = 32;

/** Bytes that are their own units. */
KX7_AVX2 inline __m256i isSame(__m256i bytes, __m256i sets)
{
    // A shuffle by a byte from 0x80 gives 0, in which no bit is found.
    __m256i const low = _mm256_and_si256(bytes, _mm256_set1_epi8(static_cast<char>(0x8F)));
    return hasBits(_mm256_shuffle_epi8(sets, low), bitOfRow(highNibbles(bytes)));
}

/**
 * The unit for every fourth place from `in` on, up to eight: of four bytes in `run`, or of the byte where it is ASCII;
 * else 0.
 */
KX7_AVX2 inline void storeUnits(unsigned int* units, unsigned char const* in, FourByteRun const& run)
{
    __m256i const bytes = load256(in);
    // From the first byte of a character: 0x81 to 0xFE, 0x30 to 0x39, and the same again.
    __m256i const digits = _mm256_sub_epi8(bytes, _mm256_set1_epi32(0x30813081));
    __m256i const inSpan = _mm256_cmpeq_epi8(_mm256_min_epu8(digits, _mm256_set1_epi32(0x097D097D)), digits);
    __m256i const halves = _mm256_maddubs_epi16(digits, _mm256_set1_epi16(0x010A));
    __m256i const codes = _mm256_madd_epi16(halves, _mm256_set1_epi32(1 << 16 | 1260));
    __m256i const inRun = _mm256_sub_epi32(codes, _mm256_set1_epi32(static_cast<int>(run.first)));
    __m256i const fromRun =
        _mm256_andnot_si256(_mm256_srai_epi32(inRun, 31), _mm256_cmpeq_epi32(inSpan, _mm256_set1_epi32(-1)));
    __m256i const isInRun =
        _mm256_and_si256(fromRun, _mm256_cmpgt_epi32(_mm256_set1_epi32(static_cast<int>(run.length)), inRun));
    __m256i const ofFour = _mm256_add_epi32(inRun, _mm256_set1_epi32(static_cast<int>(run.unit)));
    __m256i const firsts = _mm256_slli_epi32(bytes, 24);
    __m256i const ascii = _mm256_andnot_si256(_mm256_srai_epi32(firsts, 31), _mm256_srli_epi32(firsts, 24));
    store256(units, _mm256_blendv_epi8(ascii, ofFour, isInRun));
}

}  // namespace

KX7_AVX2 void decodeFourBytesAvx2(PairUnits const& pairs, FourByteRun const& run, unsigned char const*& inOut,
                                  unsigned char const* end, unsigned short*& outOut, unsigned short* outEnd)
{
    constexpr unsigned int SUPPLEMENTARY = 0x100000;
    unsigned char const* in = inOut;
    unsigned short* out = outOut;
    __m256i const same =
        _mm256_broadcastsi128_si256(_mm_loadu_si128(reinterpret_cast<__m128i const*>(pairs.sameBits())));
    // By the place of the first byte: its remainder by four, and its quarter.
    constexpr std::ptrdiff_t QUARTER = STRUCTURE_BLOCK / 4;
    unsigned int units[STRUCTURE_BLOCK];
    bool more = true;
    while (more && end - in >= STRUCTURE_BLOCK + 3 && outEnd - out >= STRUCTURE_BLOCK) {
        __m256i const low = load256(in);
        __m256i const high = load256(in + HALF);
        GB18030Bytes const is = {signsOf(isWithin(low, 0x81, 0xFE), isWithin(high, 0x81, 0xFE)),
                                 signsOf(isWithin(low, '0', '9'), isWithin(high, '0', '9'))};
        uint64_t const ofFour = beginsOfFour(is.candidatesOfFour());
        // Longer runs of ASCII are left to who is faster at them.
        if (ofFour == 0)
            break;
        for (int i = 0; i < 4; ++i) {
            storeUnits(units + i * QUARTER, in + i, run);
            storeUnits(units + i * QUARTER + QUARTER / 2, in + HALF + i, run);
        }
        uint64_t const following = ofFour << 1 | ofFour << 2 | ofFour << 3;
        uint64_t const sure = ofFour | following | signsOf(isSame(low, same), isSame(high, same));
        uint64_t const before = (~sure & (sure + 1)) - 1;
        if (before == 0)
            break;
        std::ptrdiff_t taken = __builtin_popcountll(before);
        for (uint64_t begins = ~following & before; begins != 0; begins &= begins - 1) {
            int const at = __builtin_ctzll(begins);
            unsigned int const unit = units[(at & 3) * QUARTER + (at >> 2)];
            if (unit == 0) {
                unsigned char const* const p = in + at;
                unsigned int const code =
                    ((p[0] - 0x81U) * 10 + (p[1] - 0x30U)) * 1260 + (p[2] - 0x81U) * 10 + (p[3] - 0x30U);
                unsigned int const above = code - run.firstSupplementary;
                if (above >= SUPPLEMENTARY) {
                    taken = at;
                    more = false;
                    break;
                }
                *out++ = highSurrogateOf(above + 0x10000);
                *out++ = lowSurrogateOf(above + 0x10000);
                continue;
            }
            *out++ = static_cast<unsigned short>(unit);
        }
        in += taken;
    }
    inOut = in;
    outOut = out;
}

}  // namespace kx7

#endif
