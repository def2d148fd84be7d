// kx7text - the kernels with AVX-512 (internal).
#ifndef KX7_KERNELS_AVX512_H
#define KX7_KERNELS_AVX512_H

#include "kx7/kernels/Kernels.h"

#ifdef KX7_X86_KERNELS

namespace kx7 {

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
