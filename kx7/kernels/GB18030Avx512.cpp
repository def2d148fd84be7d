// kx7text - four-byte characters of GB 18030 with AVX-512 (VBMI).
//
// Takes eight characters at a time: each is a 32-bit lane, of which two multiplications by tens make the place in the
// sequence of codes. As many as come first and lie in one run of consecutive units, or above the Basic Multilingual
// Plane, are stored, and then as many bytes of ASCII as follow them. How many there are of either is counted and not
// branched on: words end where nobody can predict.
#include "kx7/kernels/Avx512.h"

#ifdef KX7_X86_KERNELS

namespace kx7 {

namespace {

KX7_AVX512 inline __m256i lanes(unsigned int value)
{
    return _mm256_set1_epi32(static_cast<int>(value));
}

}  // namespace

KX7_AVX512 void decodeFourBytesAvx512(PairUnits const& pairs, FourByteRun const& run, unsigned char const*& inOut,
                                      unsigned char const* end, unsigned short*& outOut, unsigned short* outEnd)
{
    constexpr std::ptrdiff_t LANES = 8;
    constexpr std::ptrdiff_t SINGLES = 16;
    constexpr unsigned int SUPPLEMENTARY = 0x100000;
    unsigned char const* in = inOut;
    unsigned short* out = outOut;
    // From the first byte of a character: 0x81 to 0xFE, 0x30 to 0x39, and the same again.
    __m256i const lowest = _mm256_set1_epi32(0x30813081);
    __m256i const span = _mm256_set1_epi32(0x097D097D);
    __m512i const sameLow = _mm512_loadu_si512(pairs.isSame());
    __m512i const sameHigh = _mm512_loadu_si512(pairs.isSame() + 64);
    while (end - in >= 4 * LANES + SINGLES && outEnd - out >= 2 * LANES + SINGLES) {
        __m256i const digits = _mm256_sub_epi8(_mm256_loadu_si256(reinterpret_cast<__m256i const*>(in)), lowest);
        __m256i const inSpan = _mm256_movm_epi8(_mm256_cmple_epu8_mask(digits, span));
        unsigned int const whole = _mm256_cmpeq_epi32_mask(inSpan, _mm256_set1_epi32(-1));
        __m256i const halves = _mm256_maddubs_epi16(digits, _mm256_set1_epi16(0x010A));
        __m256i const places = _mm256_madd_epi16(halves, _mm256_set1_epi32(1 << 16 | 1260));
        __m256i const above = _mm256_sub_epi32(places, lanes(run.firstSupplementary));
        unsigned int const supplementary = whole & _mm256_cmplt_epu32_mask(above, lanes(SUPPLEMENTARY));
        int count;
        if (supplementary & 1) {
            count = __builtin_ctz(~supplementary);
            __m256i const high = _mm256_add_epi32(_mm256_srli_epi32(above, 10), lanes(0xD800));
            __m256i const low = _mm256_add_epi32(_mm256_and_si256(above, lanes(0x3FF)), lanes(0xDC00));
            _mm256_mask_storeu_epi32(out, static_cast<__mmask8>((1U << count) - 1),
                                     _mm256_or_si256(high, _mm256_slli_epi32(low, 16)));
            out += 2 * count;
        }
        else {
            __m256i const within = _mm256_sub_epi32(places, lanes(run.first));
            unsigned int const inRun = whole & _mm256_cmplt_epu32_mask(within, lanes(run.length));
            count = __builtin_ctz(~inRun);
            _mm_mask_storeu_epi16(out, static_cast<__mmask8>((1U << count) - 1),
                                  _mm256_cvtepi32_epi16(_mm256_add_epi32(within, lanes(run.unit))));
            out += count;
        }
        in += 4 * count;
        __m128i const bytes = _mm_loadu_si128(reinterpret_cast<__m128i const*>(in));
        __m512i const same = _mm512_permutex2var_epi8(sameLow, _mm512_castsi128_si512(bytes), sameHigh);
        auto const singles = static_cast<unsigned int>(_mm_movepi8_mask(_mm512_castsi512_si128(same))) &
                             ~static_cast<unsigned int>(_mm_movepi8_mask(bytes));
        int const singleCount = __builtin_ctz(~(singles & 0xFFFF));
        _mm256_mask_storeu_epi16(out, static_cast<__mmask16>((1U << singleCount) - 1), _mm256_cvtepu8_epi16(bytes));
        in += singleCount;
        out += singleCount;
        // Longer runs of ASCII are left to who is faster at them.
        if (count == 0 || singleCount == SINGLES)
            break;
    }
    inOut = in;
    outOut = out;
}

}  // namespace kx7

#endif
