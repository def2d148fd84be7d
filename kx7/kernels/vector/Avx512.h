// kx7text - vectors of AVX-512 with VBMI and VBMI2, for shared loops and for its own kernels (internal).
#ifndef KX7_KERNELS_VECTOR_AVX512_H
#define KX7_KERNELS_VECTOR_AVX512_H

#include "kx7/kernels/vector/Target.h"

#ifdef KX7_X86_KERNELS

#include "kx7/kernels/Bits.h"
#include "kx7/kernels/Utf8Structure.h"

#if defined __GNUC__ && !defined __clang__
// The intrinsics pass a register whose contents do not matter, and the compiler takes it for a mistake.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#pragma GCC diagnostic ignored "-Wuninitialized"
#endif

#include <immintrin.h>

#if defined __GNUC__ && !defined __clang__
#pragma GCC diagnostic pop
#endif

#include <cstddef>
#include <cstdint>

namespace kx7 {

/**
 * A zeroed register of its own for what vpcompress writes: the instruction waits for its destination even where all of
 * it is overwritten, and a register that a loop uses again would chain one round to the next.
 */
KX7_AVX512 inline __m512i freshZero()
{
    __m512i zero = _mm512_setzero_si512();
    __asm__("" : "+v"(zero));  // else the compiler sees zeros and uses the form that is not fresh
    return zero;
}

/** Mask of the lowest min(count, 32) bits; `count` is at least 0, and at most 255. */
KX7_AVX512 inline uint32_t lowLanes32(std::ptrdiff_t count)
{
    return _bzhi_u32(~UINT32_C(0), static_cast<uint32_t>(count));
}

/** Mask of the lowest min(count, 64) bits; `count` is at least 0, and at most 255. */
KX7_AVX512 inline uint64_t lowLanes64(std::ptrdiff_t count)
{
#ifdef __x86_64__
    return _bzhi_u64(~UINT64_C(0), static_cast<uint64_t>(count));
#else
    return lowBits<uint64_t>(count);
#endif
}

/** The bytes in `kept` moved to the front, zeros after them. */
KX7_AVX512 inline __m512i compressBytes(__mmask64 kept, __m512i bytes)
{
    return _mm512_mask_compress_epi8(freshZero(), kept, bytes);
}

KX7_AVX512 inline __m256i compressBytes(__mmask32 kept, __m256i bytes)
{
    return _mm256_mask_compress_epi8(_mm512_castsi512_si256(freshZero()), kept, bytes);
}

/** 128 bytes, looked up by the low seven bits of 64 bytes at once. */
struct ByteTable {
    __m512i halves[2];

    KX7_AVX512 explicit ByteTable(unsigned char const* bytes)
        : halves{_mm512_loadu_si512(bytes), _mm512_loadu_si512(bytes + 64)}
    {
    }

    KX7_AVX512 __m512i lookUp(__m512i codes) const { return _mm512_permutex2var_epi8(halves[0], codes, halves[1]); }

    /** `codes`, with the entries in the place of those in `lanes`. */
    KX7_AVX512 __m512i lookUp(__m512i codes, __mmask64 lanes) const
    {
        return _mm512_mask2_permutex2var_epi8(halves[0], codes, lanes, halves[1]);
    }

    /** The bytes whose entries have their highest bit. */
    KX7_AVX512 uint64_t contains(__m512i codes) const { return _mm512_movepi8_mask(lookUp(codes)); }
};

/** 32 bytes, whose masks fit a register of 32 bits. */
struct NarrowBytesAvx512 {
    using Vector = __m256i;
    using Mask = uint32_t;  ///< a bit for each byte
    static constexpr std::ptrdiff_t COUNT = 32;
    static constexpr bool LOADS_PARTS = true;

    KX7_AVX512 static Vector load(unsigned char const* p)
    {
        return _mm256_loadu_si256(reinterpret_cast<__m256i const*>(p));
    }
    /** The bytes in `wanted`, zeros elsewhere; touches no other. */
    KX7_AVX512 static Vector load(unsigned char const* p, Mask wanted) { return _mm256_maskz_loadu_epi8(wanted, p); }
    KX7_AVX512 static Mask notASCII(Vector bytes) { return static_cast<Mask>(_mm256_movemask_epi8(bytes)); }
    KX7_AVX512 static Mask atLeast(Vector bytes, unsigned char least)
    {
        return _mm256_cmpge_epu8_mask(bytes, _mm256_set1_epi8(static_cast<char>(least)));
    }
    KX7_AVX512 static Mask equal(Vector bytes, unsigned char value)
    {
        return _mm256_cmpeq_epi8_mask(bytes, _mm256_set1_epi8(static_cast<char>(value)));
    }
    /** Leads by the least length that they tell. */
    KX7_AVX512 static Leads<Mask> leads(Vector bytes, Mask /*notASCII*/)
    {
        return {atLeast(bytes, 0xC0), atLeast(bytes, 0xE0), atLeast(bytes, 0xF0)};
    }
    KX7_AVX512 static Vector low(Vector bytes, unsigned char bits)
    {
        return _mm256_and_si256(bytes, _mm256_set1_epi8(static_cast<char>(bits)));
    }
    KX7_AVX512 static __m512i front(Vector bytes) { return _mm512_cvtepu8_epi16(bytes); }
    KX7_AVX512 static __m512i back(Vector) { return _mm512_setzero_si512(); }
    KX7_AVX512 static std::ptrdiff_t count(Mask mask) { return __builtin_popcount(mask); }
    KX7_AVX512 static std::ptrdiff_t lowest(Mask mask) { return __builtin_ctz(mask); }
    KX7_AVX512 static std::ptrdiff_t highest(Mask mask) { return 31 - __builtin_clz(mask); }
    KX7_AVX512 static Mask lowLanes(std::ptrdiff_t count) { return lowLanes32(count); }
};

#ifdef __x86_64__
/** 64 bytes. */
struct WideBytesAvx512 {
    using Vector = __m512i;
    using Mask = uint64_t;
    static constexpr std::ptrdiff_t COUNT = 64;
    static constexpr bool LOADS_PARTS = true;

    KX7_AVX512 static Vector load(unsigned char const* p) { return _mm512_loadu_si512(p); }
    KX7_AVX512 static Vector load(unsigned char const* p, Mask wanted) { return _mm512_maskz_loadu_epi8(wanted, p); }
    KX7_AVX512 static Mask notASCII(Vector bytes) { return _mm512_movepi8_mask(bytes); }
    KX7_AVX512 static Mask atLeast(Vector bytes, unsigned char least)
    {
        return _mm512_cmpge_epu8_mask(bytes, _mm512_set1_epi8(static_cast<char>(least)));
    }
    KX7_AVX512 static Mask equal(Vector bytes, unsigned char value)
    {
        return _mm512_cmpeq_epi8_mask(bytes, _mm512_set1_epi8(static_cast<char>(value)));
    }
    /** Leads by the least length that they tell. */
    KX7_AVX512 static Leads<Mask> leads(Vector bytes, Mask /*notASCII*/)
    {
        return {atLeast(bytes, 0xC0), atLeast(bytes, 0xE0), atLeast(bytes, 0xF0)};
    }
    KX7_AVX512 static Vector low(Vector bytes, unsigned char bits)
    {
        return _mm512_and_si512(bytes, _mm512_set1_epi8(static_cast<char>(bits)));
    }
    KX7_AVX512 static __m512i front(Vector bytes) { return _mm512_cvtepu8_epi16(_mm512_castsi512_si256(bytes)); }
    KX7_AVX512 static __m512i back(Vector bytes) { return _mm512_cvtepu8_epi16(_mm512_extracti64x4_epi64(bytes, 1)); }
    KX7_AVX512 static std::ptrdiff_t count(Mask mask) { return __builtin_popcountll(mask); }
    KX7_AVX512 static std::ptrdiff_t lowest(Mask mask) { return __builtin_ctzll(mask); }
    KX7_AVX512 static std::ptrdiff_t highest(Mask mask) { return 63 - __builtin_clzll(mask); }
    KX7_AVX512 static Mask lowLanes(std::ptrdiff_t count) { return lowLanes64(count); }
};

using BytesAvx512 = WideBytesAvx512;
#else
using BytesAvx512 = NarrowBytesAvx512;  // masks of 64 bits would be two registers
#endif

/** 32 UTF-16 units, as UnitLoops.h and Utf8Loops.h take them. */
struct UnitsAvx512 {
    using Vector = __m512i;
    static constexpr size_t COUNT = 32;
    static constexpr unsigned int BITS = 1;  ///< of a mask for each unit
    static constexpr bool LOADS_PARTS = true;
    static constexpr int FIRST_BLOCKS = 2;  ///< looked at inline for a 0 unit: most texts end there

    KX7_AVX512 static Vector load(unsigned short const* p) { return _mm512_loadu_si512(p); }
    /** The first `count` units, zeros after them; touches no other. */
    KX7_AVX512 static Vector loadPart(unsigned short const* p, size_t count)
    {
        return _mm512_maskz_loadu_epi16(lowLanes32(static_cast<std::ptrdiff_t>(count)), p);
    }
    /** Of which a part may lie beside the text. */
    KX7_AVX512 KX7_READS_BEYOND static Vector loadNear(unsigned short const* p) { return _mm512_loadu_si512(p); }
    KX7_AVX512 KX7_READS_BEYOND static Vector loadPartNear(unsigned short const* p, size_t count)
    {
        return _mm512_maskz_loadu_epi16(lowLanes32(static_cast<std::ptrdiff_t>(count)), p);
    }
    KX7_AVX512 static Vector all(unsigned short unit) { return _mm512_set1_epi16(static_cast<short>(unit)); }
    KX7_AVX512 static uint32_t equal(Vector a, Vector b) { return _mm512_cmpeq_epi16_mask(a, b); }
    KX7_AVX512 static uint32_t zeros(Vector units) { return _mm512_testn_epi16_mask(units, units); }
    KX7_AVX512 static bool haveZeros(Vector a, Vector b, Vector c, Vector d)
    {
        return zeros(_mm512_min_epu16(_mm512_min_epu16(a, b), _mm512_min_epu16(c, d))) != 0;
    }
    /** The units of `a` where `b` has the same, 0 elsewhere. */
    KX7_AVX512 static Vector whereEqual(Vector a, Vector b)
    {
        return _mm512_maskz_mov_epi16(_mm512_cmpeq_epi16_mask(a, b), a);
    }

    /** Whether it is worth asking if units need three bytes before these are counted. */
    static constexpr bool ASKS_FOR_THIRDS = false;

    /** None of either has a bit above those of `most`. */
    KX7_AVX512 static bool areWithin(Vector a, Vector b, unsigned short most)
    {
        return _mm512_test_epi16_mask(_mm512_or_si512(a, b), all(static_cast<unsigned short>(~most))) == 0;
    }
    KX7_AVX512 static bool haveSurrogates(Vector a, Vector b)
    {
        __m512i const nearest = _mm512_min_epu16(_mm512_sub_epi16(a, all(0xD800)), _mm512_sub_epi16(b, all(0xD800)));
        return _mm512_cmplt_epu16_mask(nearest, all(0x800)) != 0;
    }
    /** Surrogates of a kind: 0xD800 or 0xDC00. */
    KX7_AVX512 static uint32_t surrogates(Vector units, unsigned short kind)
    {
        return equal(_mm512_and_si512(units, all(0xFC00)), all(kind));
    }
    KX7_AVX512 static uint32_t atLeast(Vector units, unsigned short least)
    {
        return _mm512_cmpge_epu16_mask(units, all(least));
    }
    /** Lane by lane, how many of the two units have any of the bits from FIRST on. */
    template <int FIRST>
    KX7_AVX512 static Vector countWithBits(Vector a, Vector b)
    {
        return _mm512_add_epi16(_mm512_min_epu16(_mm512_srli_epi16(a, FIRST), all(1)),
                                _mm512_min_epu16(_mm512_srli_epi16(b, FIRST), all(1)));
    }
    KX7_AVX512 static Vector sum(Vector a, Vector b) { return _mm512_add_epi16(a, b); }
    /** The sum of all lanes, none of which exceeds 0x7FFF. */
    KX7_AVX512 static std::ptrdiff_t total(Vector lanes)
    {
        return _mm512_reduce_add_epi32(_mm512_madd_epi16(lanes, all(1)));
    }
};

}  // namespace kx7

#endif

#endif
