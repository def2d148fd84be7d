// kx7text - what the kernels that encode sets of one and two bytes share (internal).
//
// All of them look units up in a table of 65,536 codes, and this is what takes the time. None branches on
// what it finds but to hand back: text that mixes one byte and two would be guessed wrong at every other unit.
#ifndef KX7_KERNELS_DOUBLEBYTEENCODE_H
#define KX7_KERNELS_DOUBLEBYTEENCODE_H

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "kx7/base/GB18030Codes.h"
#include "kx7/kernels/Kernels.h"
#include "kx7/tables/GB18030Ranges.h"

#include "kx7/kernels/vector/Avx2.h"

namespace kx7 {

/** Unit by unit, up to the first that the table lacks. */
inline void encodeDoubleByteOneByOne(unsigned short const* codes, unsigned short const*& in, unsigned short const* end,
                                     unsigned char*& out, unsigned char* outEnd)
{
    unsigned short const* from = in;
    unsigned char* to = out;
    while (from != end && outEnd - to >= 2) {
        unsigned int const code = codes[*from];
        if (code == 0)
            break;
        unsigned int const two = code > 0xFF;
        to[0] = static_cast<unsigned char>(code >> (8 * two));
        to[two] = static_cast<unsigned char>(code);
        to += 1 + two;
        ++from;
    }
    in = from;
    out = to;
}

/** The bytes of units up to the first that the table lacks. */
inline size_t countDoubleByteOneByOne(unsigned short const* codes, unsigned short const*& in, unsigned short const* end)
{
    unsigned short const* from = in;
    size_t bytes = 0;
    while (from != end) {
        unsigned int const code = codes[*from];
        if (code == 0)
            break;
        bytes += 1 + (code > 0xFF);
        ++from;
    }
    in = from;
    return bytes;
}

/** Unit by unit or pair by pair, up to the first that the tables lack. */
inline void encodeGB18030OneByOne(GB18030Codes const& codes, unsigned short const*& in, unsigned short const* end,
                                  unsigned char*& out, unsigned char* outEnd)
{
    unsigned short const* const oneOrTwo = codes.oneOrTwo;
    unsigned short const* const fourByte = codes.fourByte;
    unsigned short const* from = in;
    unsigned char* to = out;
    for (;;) {
        encodeDoubleByteOneByOne(oneOrTwo, from, end, to, outEnd);
        if (from == end || outEnd - to < 4)
            break;
        unsigned int code = fourByte[from[0]];
        if (code != 0) {
            code += FIRST_FOUR_BYTE_CODE - 1;
        }
        else if (isHighSurrogate(from[0]) && end - from >= 2 && isLowSurrogate(from[1])) {
            code = pairCodeOf(from[0], from[1]);
            ++from;
        }
        else {
            break;
        }
        unsigned int const bytes = fourBytesOf(code);
        to[0] = static_cast<unsigned char>(bytes >> 24);
        to[1] = static_cast<unsigned char>(bytes >> 16);
        to[2] = static_cast<unsigned char>(bytes >> 8);
        to[3] = static_cast<unsigned char>(bytes);
        to += 4;
        ++from;
    }
    in = from;
    out = to;
}

/** The bytes of units up to the first that the tables lack. */
inline size_t countGB18030OneByOne(GB18030Codes const& codes, unsigned short const*& in, unsigned short const* end)
{
    size_t bytes = 0;
    for (;;) {
        bytes += countDoubleByteOneByOne(codes.oneOrTwo, in, end);
        if (in == end)
            break;
        if (codes.fourByte[*in] != 0)
            in += 1;
        else if (isHighSurrogate(in[0]) && end - in >= 2 && isLowSurrogate(in[1]))
            in += 2;
        else
            break;
        bytes += 4;
    }
    return bytes;
}

/** Units whose four-byte sequences follow each other. Text of one script needs one such run. */
struct UnitRun {
    unsigned int first = 0x10000;
    unsigned int extent = 0;  ///< from the first to the last
    unsigned int index = 0;   ///< of the first one's sequence

    bool has(unsigned int unit) const { return unit - first <= extent; }

    /** Becomes the run of a unit that has a four-byte sequence, if that is known. */
    void moveTo(GB18030Codes const& codes, unsigned int unit)
    {
        GB18030Range const* const range = codes.runs[unit >> 7];
        if (range && unit >= range->first && unit <= range->last)
            *this = {range->first, range->last - range->first, range->value - FIRST_FOUR_BYTE_CODE};
    }
};

#ifdef KX7_X86_KERNELS

/** The codes of the 8 units at `in`. */
KX7_AVX2 inline __m128i codesOfEight(unsigned short const* codes, unsigned short const* in)
{
    __m128i found = _mm_setzero_si128();
#ifdef __x86_64__
    // Four units a load: the loads that are saved count.
    uint64_t low;
    uint64_t high;
    memcpy(&low, in, sizeof low);
    memcpy(&high, in + 4, sizeof high);
    found = _mm_insert_epi16(found, codes[low & 0xFFFF], 0);
    found = _mm_insert_epi16(found, codes[low >> 16 & 0xFFFF], 1);
    found = _mm_insert_epi16(found, codes[low >> 32 & 0xFFFF], 2);
    found = _mm_insert_epi16(found, codes[low >> 48], 3);
    found = _mm_insert_epi16(found, codes[high & 0xFFFF], 4);
    found = _mm_insert_epi16(found, codes[high >> 16 & 0xFFFF], 5);
    found = _mm_insert_epi16(found, codes[high >> 32 & 0xFFFF], 6);
    found = _mm_insert_epi16(found, codes[high >> 48], 7);
#else
    found = _mm_insert_epi16(found, codes[in[0]], 0);
    found = _mm_insert_epi16(found, codes[in[1]], 1);
    found = _mm_insert_epi16(found, codes[in[2]], 2);
    found = _mm_insert_epi16(found, codes[in[3]], 3);
    found = _mm_insert_epi16(found, codes[in[4]], 4);
    found = _mm_insert_epi16(found, codes[in[5]], 5);
    found = _mm_insert_epi16(found, codes[in[6]], 6);
    found = _mm_insert_epi16(found, codes[in[7]], 7);
#endif
    return found;
}

/** The codes of the 16 units at `in`. */
KX7_AVX2 inline __m256i codesOfSixteen(unsigned short const* codes, unsigned short const* in)
{
    return _mm256_inserti128_si256(_mm256_castsi128_si256(codesOfEight(codes, in)), codesOfEight(codes, in + 8), 1);
}

#endif

}  // namespace kx7

#endif
