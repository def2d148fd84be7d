// kx7text - the kernels for any machine (internal).
#ifndef KX7_KERNELS_BASELINE_H
#define KX7_KERNELS_BASELINE_H

#include "kx7/kernels/Kernels.h"

namespace kx7 {

#ifdef KX7_X86_KERNELS
size_t unitLengthBaseline(unsigned short const* text, size_t most);
size_t unitFindBaseline(unsigned short const* text, size_t count, unsigned short unit);
size_t unitMatchBaseline(unsigned short const* a, unsigned short const* b, size_t most);
#endif
void decodeUTF8Baseline(unsigned char const*& in, unsigned char const* end, unsigned short*& out,
                        unsigned short* outEnd);
void encodeUTF8Baseline(unsigned short const*& in, unsigned short const* end, unsigned char*& out,
                        unsigned char* outEnd);
void decodeSingleByteBaseline(SingleByteTables const& tables, unsigned char const*& in, unsigned char const* end,
                              unsigned short*& out, unsigned short* outEnd);
void encodeSingleByteBaseline(SingleByteTables const& tables, unsigned short const*& in, unsigned short const* end,
                              unsigned char*& out, unsigned char* outEnd);
void decodePairsBaseline(PairUnits const& pairs, unsigned char const*& in, unsigned char const* end,
                         unsigned short*& out, unsigned short* outEnd);

/**
 * Converts the first characters one by one. False: there is no more to convert, or a decision is needed already; so
 * text with many such places is not slowed down by blocks that end early.
 */
inline bool beginsWell(PairUnits const& pairs, unsigned char const*& in, unsigned char const* end, unsigned short*& out,
                       unsigned short* outEnd)
{
    unsigned char const* const until = end - in < PAIRS_MINIMUM ? end : in + FIRST_PAIRS;
    decodePairsBaseline(pairs, in, until, out, outEnd);
    return until != end && until - in <= 1;
}

}  // namespace kx7

#endif
