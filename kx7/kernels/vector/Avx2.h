// kx7text - vectors of AVX2, for shared loops and for its own kernels (internal).
#ifndef KX7_KERNELS_VECTOR_AVX2_H
#define KX7_KERNELS_VECTOR_AVX2_H

#include "kx7/kernels/vector/Target.h"

#ifdef KX7_X86_KERNELS

#include <immintrin.h>

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "kx7/kernels/Utf8Structure.h"

namespace kx7 {

KX7_AVX2 inline __m128i load128(void const* p)
{
    return _mm_loadu_si128(static_cast<__m128i const*>(p));
}

KX7_AVX2 inline void store128(void* p, __m128i value)
{
    _mm_storeu_si128(static_cast<__m128i*>(p), value);
}

KX7_AVX2 inline __m256i load256(void const* p)
{
    return _mm256_loadu_si256(static_cast<__m256i const*>(p));
}

KX7_AVX2 inline void store256(void* p, __m256i value)
{
    _mm256_storeu_si256(static_cast<__m256i*>(p), value);
}

/** 16 entries of a shuffle in both halves. */
KX7_AVX2 inline __m256i inBothHalves(void const* entries)
{
    return _mm256_broadcastsi128_si256(load128(entries));
}

KX7_AVX2 inline __m128i shuffled(__m128i value, unsigned char const (&shuffle)[16])
{
    return _mm_shuffle_epi8(value, _mm_load_si128(reinterpret_cast<__m128i const*>(shuffle)));
}

/** The highest bit of each byte. */
KX7_AVX2 inline uint32_t signsOf(__m256i bytes)
{
    return static_cast<uint32_t>(_mm256_movemask_epi8(bytes));
}

/** The highest bit of each of 64 bytes. */
KX7_AVX2 inline uint64_t signsOf(__m256i low, __m256i high)
{
    return signsOf(low) | static_cast<uint64_t>(signsOf(high)) << 32;
}

/** The highest bit of each 32-bit lane. */
KX7_AVX2 inline uint32_t signsOfLanes(__m256i lanes)
{
    return static_cast<uint32_t>(_mm256_movemask_ps(_mm256_castsi256_ps(lanes)));
}

/** The quarters of 256 bits in the order in which packing and unpacking, which work within 128, leave them in order. */
KX7_AVX2 inline __m256i inOrderOfPacks(__m256i value)
{
    return _mm256_permute4x64_epi64(value, 0xD8);
}

/** 32 units below 0x100 as bytes. */
KX7_AVX2 inline __m256i narrowed(__m256i front, __m256i back)
{
    return inOrderOfPacks(_mm256_packus_epi16(front, back));
}

/** Ones in the bytes that lie between two values, these included, all taken as unsigned. */
KX7_AVX2 inline __m256i isWithin(__m256i bytes, int first, int last)
{
    __m256i const distance = _mm256_sub_epi8(bytes, _mm256_set1_epi8(static_cast<char>(first)));
    return _mm256_cmpeq_epi8(_mm256_min_epu8(distance, _mm256_set1_epi8(static_cast<char>(last - first))), distance);
}

/** The high four bits of bytes. */
KX7_AVX2 inline __m256i highNibbles(__m256i bytes)
{
    return _mm256_and_si256(_mm256_srli_epi16(bytes, 4), _mm256_set1_epi8(0xF));
}

/** A bit for each of eight rows, by the number of the row, of which the lowest three bits count. */
KX7_AVX2 inline __m256i bitOfRow(__m256i rows)
{
    return _mm256_shuffle_epi8(_mm256_set1_epi64x(static_cast<long long>(0x8040201008040201)), rows);
}

/** All of `bits` are in `bytes`: ones, byte by byte. */
KX7_AVX2 inline __m256i hasBits(__m256i bytes, __m256i bits)
{
    return _mm256_cmpeq_epi8(_mm256_and_si256(bytes, bits), bits);
}

/** The bytes of `vector` from `from` on, zeros after them. */
KX7_AVX2 inline __m128i bytesFrom(__m128i vector, std::ptrdiff_t from)
{
    static constexpr unsigned char SLIDE[32] = {0,    1,    2,    3,    4,    5,    6,    7,    8,    9,    10,
                                                11,   12,   13,   14,   15,   0x80, 0x80, 0x80, 0x80, 0x80, 0x80,
                                                0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80};
    return _mm_shuffle_epi8(vector, load128(SLIDE + from));
}

/** The first bytes of a vector, up to 16; those after them do not count. */
struct CountedBytes {
    __m128i bytes;
    std::ptrdiff_t count;
};

/** Stores the bytes that count and no others, in two parts that may overlap. Returns where they end. */
KX7_AVX2 inline unsigned char* storeExactly(unsigned char* out, CountedBytes const& e)
{
    if (e.count >= 8) {
        _mm_storel_epi64(reinterpret_cast<__m128i*>(out), e.bytes);
        _mm_storel_epi64(reinterpret_cast<__m128i*>(out + e.count - 8), bytesFrom(e.bytes, e.count - 8));
        return out + e.count;
    }
    auto const word = static_cast<uint32_t>(_mm_cvtsi128_si32(e.bytes));
    if (e.count >= 4) {
        auto const last = static_cast<uint32_t>(_mm_cvtsi128_si32(bytesFrom(e.bytes, e.count - 4)));
        memcpy(out, &word, sizeof word);
        memcpy(out + e.count - 4, &last, sizeof last);
        return out + e.count;
    }
    if (e.count > 0) {
        out[0] = static_cast<unsigned char>(word);
        out[e.count / 2] = static_cast<unsigned char>(word >> (e.count / 2 * 8));
        out[e.count - 1] = static_cast<unsigned char>(word >> ((e.count - 1) * 8));
    }
    return out + e.count;
}

/** 32 bytes, as Utf8Loops.h takes them. */
struct BytesAvx2 {
    using Vector = __m256i;
    using Mask = uint32_t;  ///< a bit for each byte
    static constexpr std::ptrdiff_t COUNT = 32;
    static constexpr bool LOADS_PARTS = false;

    KX7_AVX2 static Vector load(unsigned char const* p) { return load256(p); }
    KX7_AVX2 static Mask notASCII(Vector bytes) { return signsOf(bytes); }
    KX7_AVX2 static Mask atLeast(Vector bytes, unsigned char least)
    {
        return signsOf(_mm256_cmpeq_epi8(_mm256_max_epu8(bytes, _mm256_set1_epi8(static_cast<char>(least))), bytes));
    }
    KX7_AVX2 static Mask equal(Vector bytes, unsigned char value)
    {
        return signsOf(_mm256_cmpeq_epi8(bytes, _mm256_set1_epi8(static_cast<char>(value))));
    }
    /** Leads by the least length that they tell. `notASCII` is the mask of these bytes. */
    KX7_AVX2 static Leads<Mask> leads(Vector bytes, Mask notASCII)
    {
        if (notASCII == 0)
            return {0, 0, 0};
        Mask const three = atLeast(bytes, 0xE0);
        return {atLeast(bytes, 0xC0), three, three != 0 ? atLeast(bytes, 0xF0) : 0};
    }
    KX7_AVX2 static std::ptrdiff_t count(Mask mask) { return __builtin_popcount(mask); }
};

/** 16 UTF-16 units, as UnitLoops.h and Utf8Loops.h take them. */
struct UnitsAvx2 {
    using Vector = __m256i;
    static constexpr size_t COUNT = 16;
    static constexpr unsigned int BITS = 2;  ///< of a mask for each unit
    static constexpr bool LOADS_PARTS = false;
    static constexpr int FIRST_BLOCKS = 2;  ///< looked at inline for a 0 unit: most texts end there

    KX7_AVX2 static Vector load(unsigned short const* p) { return load256(p); }
    /** Of which a part may lie beside the text. */
    KX7_AVX2 KX7_READS_BEYOND static Vector loadNear(unsigned short const* p)
    {
        return _mm256_loadu_si256(reinterpret_cast<__m256i const*>(p));
    }
    KX7_AVX2 static Vector all(unsigned short unit) { return _mm256_set1_epi16(static_cast<short>(unit)); }
    KX7_AVX2 static uint32_t equal(Vector a, Vector b) { return signsOf(_mm256_cmpeq_epi16(a, b)); }
    KX7_AVX2 static uint32_t zeros(Vector units) { return equal(units, _mm256_setzero_si256()); }
    KX7_AVX2 static bool haveZeros(Vector a, Vector b, Vector c, Vector d)
    {
        return zeros(_mm256_min_epu16(_mm256_min_epu16(a, b), _mm256_min_epu16(c, d))) != 0;
    }
    /** The units of `a` where `b` has the same, 0 elsewhere. */
    KX7_AVX2 static Vector whereEqual(Vector a, Vector b) { return _mm256_and_si256(_mm256_cmpeq_epi16(a, b), a); }

    /** Whether it is worth asking if units need three bytes before these are counted. */
    static constexpr bool ASKS_FOR_THIRDS = true;

    /** None of either has a bit above those of `most`. */
    KX7_AVX2 static bool areWithin(Vector a, Vector b, unsigned short most)
    {
        return _mm256_testz_si256(_mm256_or_si256(a, b), all(static_cast<unsigned short>(~most))) != 0;
    }
    KX7_AVX2 static bool haveSurrogates(Vector a, Vector b)
    {
        __m256i const nearest = _mm256_min_epu16(_mm256_sub_epi16(a, all(0xD800)), _mm256_sub_epi16(b, all(0xD800)));
        return zeros(_mm256_srli_epi16(nearest, 11)) != 0;
    }
    /** Surrogates of a kind: 0xD800 or 0xDC00. */
    KX7_AVX2 static uint32_t surrogates(Vector units, unsigned short kind)
    {
        return equal(_mm256_and_si256(units, all(0xFC00)), all(kind));
    }
    /** Lane by lane, how many of the two units have any of the bits from FIRST on. Compilers make comparisons slower.
     */
    template <int FIRST>
    KX7_AVX2 static Vector countWithBits(Vector a, Vector b)
    {
        return _mm256_add_epi16(_mm256_min_epu16(_mm256_srli_epi16(a, FIRST), all(1)),
                                _mm256_min_epu16(_mm256_srli_epi16(b, FIRST), all(1)));
    }
    KX7_AVX2 static Vector sum(Vector a, Vector b) { return _mm256_add_epi16(a, b); }
    /** The sum of all lanes, none of which exceeds 0x7FFF. */
    KX7_AVX2 static std::ptrdiff_t total(Vector lanes)
    {
        __m256i const sums = _mm256_madd_epi16(lanes, all(1));
        __m128i sum = _mm_add_epi32(_mm256_castsi256_si128(sums), _mm256_extracti128_si256(sums, 1));
        sum = _mm_hadd_epi32(sum, sum);
        sum = _mm_hadd_epi32(sum, sum);
        return _mm_cvtsi128_si32(sum);
    }
};

}  // namespace kx7

#endif

#endif
