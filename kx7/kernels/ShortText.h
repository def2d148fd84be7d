// kx7text - ASCII and ISO 8859-1 of short texts, inline (internal): for them the call of a kernel costs as much as the
// work.
//
// Up to 80 bytes or units go in blocks of 16. What is left over goes in a block that ends at the end of the text and
// overlaps the one before, so that nothing is read or written outside; texts below 16 do the same with 8 and 4.
#ifndef KX7_KERNELS_SHORTTEXT_H
#define KX7_KERNELS_SHORTTEXT_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "kx7/kernels/Kernels.h"
#include "kx7/kernels/Page.h"

#if defined KX7_X86_KERNELS && defined __SSE2__
#define KX7_SSE2_THROUGHOUT
#include <emmintrin.h>
#endif

namespace kx7 {

/**
 * Bytes of zero-terminated text, at most `most`, which is at least SHORT_TEXT. Touches no page that the text does not
 * reach.
 */
KX7_READS_BEYOND inline size_t textLengthUpTo(unsigned char const* text, size_t most)
{
    size_t n = 0;
#ifdef KX7_SSE2_THROUGHOUT
    if (inPage(text) <= PAGE - SHORT_TEXT) {
        for (; n < SHORT_TEXT; n += 16) {
            __m128i const block = _mm_loadu_si128(reinterpret_cast<__m128i const*>(text + n));
            int const zeros = _mm_movemask_epi8(_mm_cmpeq_epi8(block, _mm_setzero_si128()));
            if (zeros != 0)
                return n + static_cast<size_t>(__builtin_ctz(static_cast<unsigned int>(zeros)));
        }
    }
#endif
    return n + strnlen(reinterpret_cast<char const*>(text) + n, most - n);
}

#ifdef KX7_SSE2_THROUGHOUT

/** `T` bytes, 4, 8 or 16, and zeros. */
template <int T>
inline __m128i loadBlock(unsigned char const* in)
{
    if constexpr (T == 16)
        return _mm_loadu_si128(reinterpret_cast<__m128i const*>(in));
    if constexpr (T == 8)
        return _mm_loadl_epi64(reinterpret_cast<__m128i const*>(in));
    int word;
    memcpy(&word, in, sizeof word);
    return _mm_cvtsi32_si128(word);
}

/** The first `T` bytes, 4, 8 or 16. */
template <int T>
inline void storeBlock(unsigned char* out, __m128i bytes)
{
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
}

/** The first `T` bytes stand for themselves. */
template <Identity IDENTITY, int T>
inline bool areIdentities(__m128i bytes)
{
    __m128i others = bytes;
    if constexpr (IDENTITY == Identity::LATIN1) {
        others = _mm_cmpeq_epi8(bytes, _mm_setzero_si128());
    }
    if constexpr (IDENTITY == Identity::PRINTABLE) {
        // Signed: those from 0x80 are below as well.
        others = _mm_or_si128(_mm_or_si128(_mm_cmplt_epi8(bytes, _mm_set1_epi8(PRINTABLE_FIRST)),
                                           _mm_cmpgt_epi8(bytes, _mm_set1_epi8(PRINTABLE_LAST))),
                              _mm_cmpeq_epi8(bytes, _mm_set1_epi8('\\')));
    }
    return (_mm_movemask_epi8(others) & ((1 << T) - 1)) == 0;
}

/** Copies `T` bytes, 4, 8 or 16. False, with nothing written: not all stand for themselves. */
template <Identity IDENTITY, int T>
inline bool copySameBlock(unsigned char const* in, unsigned char* out)
{
    __m128i const bytes = loadBlock<T>(in);
    if (!areIdentities<IDENTITY, T>(bytes))
        return false;
    storeBlock<T>(out, bytes);
    return true;
}

/** Widens `T` bytes, 4, 8 or 16. False, with nothing written: not all stand for themselves. */
template <Identity IDENTITY, int T>
inline bool copySameBlock(unsigned char const* in, unsigned short* out)
{
    __m128i const bytes = loadBlock<T>(in);
    if (!areIdentities<IDENTITY, T>(bytes))
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
template <Identity IDENTITY, int T>
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
    __m128i const above = _mm_and_si128(
        _mm_or_si128(low, high), _mm_set1_epi16(static_cast<short>(IDENTITY == Identity::LATIN1 ? 0xFF00 : 0xFF80)));
    if (_mm_movemask_epi8(_mm_cmpeq_epi16(above, _mm_setzero_si128())) != 0xFFFF)
        return false;
    __m128i const bytes = _mm_packus_epi16(low, high);
    if (IDENTITY != Identity::ASCII && !areIdentities<IDENTITY, T>(bytes))
        return false;
    storeBlock<T>(out, bytes);
    return true;
}

#endif

/**
 * Copies what stands for itself from bytes to units, units to bytes or bytes to bytes, moving `in` and `out`, if there
 * is capacity for all of a text of at most SHORT_TEXT; it may do nothing.
 */
template <Identity IDENTITY, class From, class To>
inline void copyShort(From const*& inOut, From const* end, To*& outOut, To const* outEnd)
{
#ifdef KX7_SSE2_THROUGHOUT
    From const* in = inOut;
    To* out = outOut;
    std::ptrdiff_t const length = end - in;
    if (length > SHORT_TEXT || outEnd - out < length || length < 4)
        return;
    To* const textEnd = out + length;
    if (length >= 16) {
        while (end - in >= 16 && copySameBlock<IDENTITY, 16>(in, out)) {
            in += 16;
            out += 16;
        }
        if (end - in < 16 && copySameBlock<IDENTITY, 16>(end - 16, textEnd - 16))
            in = end;
    }
    else if (length >= 8) {
        if (copySameBlock<IDENTITY, 8>(in, out) && copySameBlock<IDENTITY, 8>(end - 8, textEnd - 8))
            in = end;
    }
    else if (copySameBlock<IDENTITY, 4>(in, out) && copySameBlock<IDENTITY, 4>(end - 4, textEnd - 4)) {
        in = end;
    }
    outOut += in - inOut;
    inOut = in;
#else
    (void)inOut, (void)end, (void)outOut, (void)outEnd;
#endif
}

/** The same, where it is not known before what stands for itself. */
template <class From, class To>
__attribute__((always_inline)) inline void copyShort(Identity identity, From const*& in, From const* end, To*& out,
                                                     To const* outEnd)
{
    if (identity == Identity::ASCII)
        copyShort<Identity::ASCII>(in, end, out, outEnd);
    else if (identity == Identity::PRINTABLE)
        copyShort<Identity::PRINTABLE>(in, end, out, outEnd);
}

}  // namespace kx7

#endif
