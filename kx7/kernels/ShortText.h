// kx7text - ASCII and ISO 8859-1 of short texts, inline (internal): for them the call of a kernel costs as much as the
// work.
//
// Up to 64 bytes or units go in blocks of 16. What is left over goes in a block that ends at the end of the text and
// overlaps the one before, so that nothing is read or written outside; texts below 16 do the same with 8 and 4.
#ifndef KX7_KERNELS_SHORTTEXT_H
#define KX7_KERNELS_SHORTTEXT_H

#include <cstddef>
#include <cstring>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace kx7 {

/** The longest text that is short. */
constexpr std::ptrdiff_t SHORT_TEXT = 64;

/** Which codes stand for themselves. */
enum class Same {
    ASCII,  ///< those below 0x80, 0 included
    LATIN1  ///< those below 0x100, without 0
};

#ifdef __SSE2__

/** Widens `T` bytes, 4, 8 or 16. False, with nothing written: not all stand for themselves. */
template <Same SAME, int T>
inline bool copySameBlock(unsigned char const* in, unsigned short* out)
{
    __m128i bytes;
    if constexpr (T == 16) {
        bytes = _mm_loadu_si128(reinterpret_cast<__m128i const*>(in));
    }
    else if constexpr (T == 8) {
        bytes = _mm_loadl_epi64(reinterpret_cast<__m128i const*>(in));
    }
    else {
        int word;
        memcpy(&word, in, sizeof word);
        bytes = _mm_cvtsi32_si128(word);
    }
    __m128i const others = SAME == Same::ASCII ? bytes : _mm_cmpeq_epi8(bytes, _mm_setzero_si128());
    if ((_mm_movemask_epi8(others) & ((1 << T) - 1)) != 0)
        return false;
    __m128i const low = _mm_unpacklo_epi8(bytes, _mm_setzero_si128());
    if constexpr (T == 4)
        _mm_storel_epi64(reinterpret_cast<__m128i*>(out), low);
    else
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out), low);
    if constexpr (T == 16)
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out + 8), _mm_unpackhi_epi8(bytes, _mm_setzero_si128()));
    return true;
}

/** Narrows `T` units, 4, 8 or 16. False, with nothing written: not all stand for themselves. */
template <Same SAME, int T>
inline bool copySameBlock(unsigned short const* in, unsigned char* out)
{
    __m128i low;
    __m128i high = _mm_setzero_si128();
    if constexpr (T == 4)
        low = _mm_loadl_epi64(reinterpret_cast<__m128i const*>(in));
    else
        low = _mm_loadu_si128(reinterpret_cast<__m128i const*>(in));
    if constexpr (T == 16)
        high = _mm_loadu_si128(reinterpret_cast<__m128i const*>(in + 8));
    __m128i const above = _mm_and_si128(_mm_or_si128(low, high),
                                        _mm_set1_epi16(static_cast<short>(SAME == Same::ASCII ? 0xFF80 : 0xFF00)));
    if (_mm_movemask_epi8(_mm_cmpeq_epi16(above, _mm_setzero_si128())) != 0xFFFF)
        return false;
    __m128i const bytes = _mm_packus_epi16(low, high);
    if (SAME == Same::LATIN1 && (_mm_movemask_epi8(_mm_cmpeq_epi8(bytes, _mm_setzero_si128())) & ((1 << T) - 1)) != 0)
        return false;
    if constexpr (T == 16) {
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out), bytes);
    }
    else if constexpr (T == 8) {
        _mm_storel_epi64(reinterpret_cast<__m128i*>(out), bytes);
    }
    else {
        int const word = _mm_cvtsi128_si32(bytes);
        memcpy(out, &word, sizeof word);
    }
    return true;
}

#endif

/**
 * Copies what stands for itself from bytes to units or from units to bytes, moving `in` and `out`, if there is room for
 * all of a text of at most SHORT_TEXT; it may do nothing.
 */
template <Same SAME, class From, class To>
inline void copyShort(From const*& inOut, From const* end, To*& outOut, To const* outEnd)
{
#ifdef __SSE2__
    From const* in = inOut;
    To* out = outOut;
    std::ptrdiff_t const length = end - in;
    if (length > SHORT_TEXT || outEnd - out < length || length < 4)
        return;
    To* const textEnd = out + length;
    if (length >= 16) {
        while (end - in >= 16 && copySameBlock<SAME, 16>(in, out)) {
            in += 16;
            out += 16;
        }
        if (end - in < 16 && copySameBlock<SAME, 16>(end - 16, textEnd - 16))
            in = end;
    }
    else if (length >= 8) {
        if (copySameBlock<SAME, 8>(in, out) && copySameBlock<SAME, 8>(end - 8, textEnd - 8))
            in = end;
    }
    else if (copySameBlock<SAME, 4>(in, out) && copySameBlock<SAME, 4>(end - 4, textEnd - 4)) {
        in = end;
    }
    outOut += in - inOut;
    inOut = in;
#else
    (void)inOut, (void)end, (void)outOut, (void)outEnd;
#endif
}

}  // namespace kx7

#endif
