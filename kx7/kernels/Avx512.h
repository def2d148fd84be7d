// kx7text - the kernels with AVX-512, and how their functions are compiled (internal).
#ifndef KX7_KERNELS_AVX512_H
#define KX7_KERNELS_AVX512_H

#include "kx7/kernels/Bits.h"
#include "kx7/kernels/Kernels.h"

#ifdef KX7_X86_KERNELS

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

#include <cstdint>

// By function and not by file: an inline function of a header must not be compiled for a machine that is not there.
#define KX7_AVX512 __attribute__((target("avx512f,avx512bw,avx512dq,avx512vl,avx512vbmi,avx512vbmi2,bmi,bmi2,popcnt")))

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

/** The bytes in `kept` moved to the front, zeros behind them. */
KX7_AVX512 inline __m512i squeezeBytes(__mmask64 kept, __m512i bytes)
{
    return _mm512_mask_compress_epi8(freshZero(), kept, bytes);
}

KX7_AVX512 inline __m256i squeezeBytes(__mmask32 kept, __m256i bytes)
{
    return _mm256_mask_compress_epi8(_mm512_castsi512_si256(freshZero()), kept, bytes);
}

size_t unitLengthAvx512(unsigned short const* text, size_t most);
size_t unitFindAvx512(unsigned short const* text, size_t count, unsigned short unit);
size_t unitMatchAvx512(unsigned short const* a, unsigned short const* b, size_t most);
void decodeUTF8Avx512(unsigned char const*& in, unsigned char const* end, unsigned short*& out, unsigned short* outEnd);
void encodeUTF8Avx512(unsigned short const*& in, unsigned short const* end, unsigned char*& out, unsigned char* outEnd);
size_t wellFormedUTF8Avx512(unsigned char const* in, unsigned char const* end);
size_t countUTF8Avx512(unsigned char const*& in, unsigned char const* end);
size_t countAsUTF8Avx512(unsigned short const*& in, unsigned short const* end);
void decodeSingleByteAvx512(SingleByteTables const& tables, unsigned char const*& in, unsigned char const* end,
                            unsigned short*& out, unsigned short* outEnd);
void encodeSingleByteAvx512(SingleByteTables const& tables, unsigned short const*& in, unsigned short const* end,
                            unsigned char*& out, unsigned char* outEnd);
void singleByteFromUTF8Avx512(SingleByteTables const& tables, unsigned char const*& in, unsigned char*& out,
                              unsigned char* outEnd);
void decodePairsAvx512(PairUnits const& pairs, unsigned char const*& in, unsigned char const* end, unsigned short*& out,
                       unsigned short* outEnd);
void decodeFourBytesAvx512(PairUnits const& pairs, FourByteRun const& run, unsigned char const*& in,
                           unsigned char const* end, unsigned short*& out, unsigned short* outEnd);
size_t countPairsAvx512(unsigned char const* types, unsigned char const*& in, unsigned char const* end);
size_t countMappedPairsAvx512(PairUnits const& pairs, unsigned char const*& in, unsigned char const* end);
void encodeDoubleByteAvx512(unsigned short const* codes, unsigned short const*& in, unsigned short const* end,
                            unsigned char*& out, unsigned char* outEnd);
size_t countDoubleByteAvx512(unsigned short const* codes, unsigned short const*& in, unsigned short const* end);
void encodeGB18030Avx512(GB18030Codes const& codes, unsigned short const*& in, unsigned short const* end,
                         unsigned char*& out, unsigned char* outEnd);
size_t countGB18030Avx512(GB18030Codes const& codes, unsigned short const*& in, unsigned short const* end);

}  // namespace kx7

#endif

#endif
