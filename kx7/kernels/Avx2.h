// kx7text - the kernels with AVX2 (internal).
#ifndef KX7_KERNELS_AVX2_H
#define KX7_KERNELS_AVX2_H

#include "kx7/kernels/Kernels.h"

#ifdef KX7_X86_KERNELS

namespace kx7 {

size_t unitLengthAvx2(unsigned short const* text, size_t most);
size_t unitFindAvx2(unsigned short const* text, size_t count, unsigned short unit);
size_t unitMatchAvx2(unsigned short const* a, unsigned short const* b, size_t most);
void decodeUTF8Avx2(unsigned char const*& in, unsigned char const* end, unsigned short*& out, unsigned short* outEnd);
void encodeUTF8Avx2(unsigned short const*& in, unsigned short const* end, unsigned char*& out, unsigned char* outEnd);
size_t wellFormedUTF8Avx2(unsigned char const* in, unsigned char const* end);
size_t countUTF8Avx2(unsigned char const*& in, unsigned char const* end);
size_t countAsUTF8Avx2(unsigned short const*& in, unsigned short const* end);
void decodeSingleByteAvx2(SingleByteTables const& tables, unsigned char const*& in, unsigned char const* end,
                          unsigned short*& out, unsigned short* outEnd);
void encodeSingleByteAvx2(SingleByteTables const& tables, unsigned short const*& in, unsigned short const* end,
                          unsigned char*& out, unsigned char* outEnd);
void singleByteFromUTF8Avx2(SingleByteTables const& tables, unsigned char const*& in, unsigned char*& out,
                            unsigned char* outEnd);
void decodePairsAvx2(PairUnits const& pairs, unsigned char const*& in, unsigned char const* end, unsigned short*& out,
                     unsigned short* outEnd);
void decodeFourBytesAvx2(PairUnits const& pairs, FourByteRun const& run, unsigned char const*& in,
                         unsigned char const* end, unsigned short*& out, unsigned short* outEnd);
size_t countPairsAvx2(unsigned char const* types, unsigned char const*& in, unsigned char const* end);
size_t countMappedPairsAvx2(PairUnits const& pairs, unsigned char const*& in, unsigned char const* end);
size_t countUnitsOfGB18030Avx2(unsigned char const*& in, unsigned char const* end);
void encodeDoubleByteAvx2(unsigned short const* codes, unsigned short const*& in, unsigned short const* end,
                          unsigned char*& out, unsigned char* outEnd);
size_t countDoubleByteAvx2(unsigned short const* codes, unsigned short const*& in, unsigned short const* end);
void encodeGB18030Avx2(GB18030Codes const& codes, unsigned short const*& in, unsigned short const* end,
                       unsigned char*& out, unsigned char* outEnd);
size_t countGB18030Avx2(GB18030Codes const& codes, unsigned short const*& in, unsigned short const* end);

}  // namespace kx7

#endif

#endif
