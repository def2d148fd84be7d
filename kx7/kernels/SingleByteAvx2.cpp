// kx7text - single-byte sets with AVX2.
//
// Decoding takes 32 bytes at a time. The upper half of the table stands in eight rows of 16 entries, low and high bytes
// apart; a row is looked up by a byte shuffle, in which a byte of another row has its sign bit set and gives zero, so
// that the rows can be added up. The lower half of the table must be ASCII itself, but for codes that are handed back.
#include "kx7/kernels/Avx2.h"

#ifdef KX7_X86_KERNELS

#include <cstdint>

namespace kx7 {

namespace {

constexpr std::ptrdiff_t BLOCK = 32;
constexpr int ROWS = 8;

KX7_AVX2 inline __m256i loadUnits(unsigned short const* p)
{
    return _mm256_loadu_si256(reinterpret_cast<__m256i const*>(p));
}

/** Bytes, low or high, of the 16 units of a row, in both halves of the register. */
KX7_AVX2 inline __m256i bytesOfRow(__m256i units)
{
    __m256i const packed = _mm256_packus_epi16(units, units);
    return _mm256_permute4x64_epi64(packed, 0x88);
}

/** The codes from 0x20 to 0x7E stand for themselves; so do the others below 0x80 where `controls` is set. */
KX7_AVX2 bool isASCII(unsigned short const* toUnicode, bool& controls)
{
    controls = toUnicode[0x7F] == 0x7F;
    for (unsigned short code = 1; code < 0x20; ++code)
        controls = controls && toUnicode[code] == code;
    __m256i expected = _mm256_setr_epi16(0x20, 0x21, 0x22, 0x23, 0x24, 0x25, 0x26, 0x27, 0x28, 0x29, 0x2A, 0x2B, 0x2C,
                                         0x2D, 0x2E, 0x2F);
    __m256i difference = _mm256_setzero_si256();
    for (int code = 0x20; code < 0x70; code += 16) {
        difference = _mm256_or_si256(difference, _mm256_xor_si256(expected, loadUnits(toUnicode + code)));
        expected = _mm256_add_epi16(expected, _mm256_set1_epi16(16));
    }
    bool same = _mm256_testz_si256(difference, difference) != 0;
    for (unsigned short code = 0x70; code < 0x7F; ++code)
        same = same && toUnicode[code] == code;
    return same;
}

}  // namespace

KX7_AVX2 void decodeSingleByteAvx2(unsigned short const* toUnicode, unsigned char const*& inOut,
                                   unsigned char const* end, unsigned short*& outOut, unsigned short* outEnd)
{
    constexpr std::ptrdiff_t WORTHWHILE = 4 * BLOCK;
    bool controls = false;
    if (end - inOut < WORTHWHILE || outEnd - outOut < WORTHWHILE || !isASCII(toUnicode, controls)) {
        BASELINE_KERNELS.decodeSingleByte(toUnicode, inOut, end, outOut, outEnd);
        return;
    }
    unsigned char const* in = inOut;
    unsigned short* out = outOut;
    __m256i low[ROWS];
    __m256i high[ROWS];
    for (int row = 0; row < ROWS; ++row) {
        __m256i const units = loadUnits(toUnicode + 0x80 + 16 * row);
        low[row] = bytesOfRow(_mm256_and_si256(units, _mm256_set1_epi16(0xFF)));
        high[row] = bytesOfRow(_mm256_srli_epi16(units, 8));
    }
    __m256i const zero = _mm256_setzero_si256();
    while (end - in >= BLOCK && outEnd - out >= BLOCK) {
        // Unpacking works within 128 bits: this order of the input's quarters makes the output come out in order.
        __m256i const bytes = _mm256_permute4x64_epi64(_mm256_loadu_si256(reinterpret_cast<__m256i const*>(in)), 0xD8);
        int const isUpper = _mm256_movemask_epi8(bytes);
        __m256i const isPrintable = _mm256_and_si256(_mm256_cmpgt_epi8(bytes, _mm256_set1_epi8(0x1F)),
                                                     _mm256_cmpgt_epi8(_mm256_set1_epi8(0x7F), bytes));
        int const isControl = ~(_mm256_movemask_epi8(isPrintable) | isUpper);
        if (isControl != 0) {
            if (!controls || _mm256_movemask_epi8(_mm256_cmpeq_epi8(bytes, zero)) != 0)
                break;
        }
        __m256i lows = bytes;
        __m256i highs = zero;
        if (isUpper != 0) {
            __m256i const upper = _mm256_cmpgt_epi8(zero, bytes);
            __m256i sumLow = zero;
            __m256i sumHigh = zero;
            for (int row = 0; row < ROWS; ++row) {
                __m256i const inRow =
                    _mm256_adds_epu8(_mm256_sub_epi8(bytes, _mm256_set1_epi8(static_cast<char>(0x80 + 16 * row))),
                                     _mm256_set1_epi8(0x70));
                sumLow = _mm256_or_si256(sumLow, _mm256_shuffle_epi8(low[row], inRow));
                sumHigh = _mm256_or_si256(sumHigh, _mm256_shuffle_epi8(high[row], inRow));
            }
            lows = _mm256_blendv_epi8(bytes, sumLow, upper);
            highs = _mm256_and_si256(sumHigh, upper);
            if (_mm256_movemask_epi8(_mm256_cmpeq_epi8(_mm256_or_si256(lows, highs), zero)) != 0)
                break;
        }
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(out), _mm256_unpacklo_epi8(lows, highs));
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(out + BLOCK / 2), _mm256_unpackhi_epi8(lows, highs));
        in += BLOCK;
        out += BLOCK;
    }
    inOut = in;
    outOut = out;
}

}  // namespace kx7

#endif
