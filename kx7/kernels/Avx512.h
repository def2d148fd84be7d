// kx7text - the kernels with AVX-512, and how their functions are compiled (internal).
#ifndef KX7_KERNELS_AVX512_H
#define KX7_KERNELS_AVX512_H

#include "kx7/kernels/Kernels.h"

#ifdef KX7_X86_KERNELS

#if defined __GNUC__ && !defined __clang__
// The intrinsics pass a register whose contents do not matter, and the compiler takes it for a mistake.
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#pragma GCC diagnostic ignored "-Wuninitialized"
#endif

#include <immintrin.h>

#include <cstdint>

// By function and not by file: an inline function of a header must not be compiled for a machine that is not there.
#define KX7_AVX512 __attribute__((target("avx512f,avx512bw,avx512dq,avx512vl,avx512vbmi,avx512vbmi2,popcnt")))

namespace kx7 {

void decodeUTF8Avx512(unsigned char const*& in, unsigned char const* end, unsigned short*& out, unsigned short* outEnd);
void encodeUTF8Avx512(unsigned short const*& in, unsigned short const* end, unsigned char*& out, unsigned char* outEnd);
void decodeSingleByteAvx512(unsigned short const* toUnicode, unsigned char const*& in, unsigned char const* end,
                            unsigned short*& out, unsigned short* outEnd);
void encodeSingleByteAvx512(LookupTable<unsigned char> const& fromUnicode, unsigned short const*& in,
                            unsigned short const* end, unsigned char*& out, unsigned char* outEnd);

}  // namespace kx7

#endif

#endif
