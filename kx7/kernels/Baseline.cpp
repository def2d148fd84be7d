// kx7text - kernels for any machine: plain loops, with blocks of ASCII where the machine has SSE2.
//
// ASCII is found by the sign bits of 16 bytes, or by the high nine bits of 8 units, and widened or narrowed at once.
// The loops after that convert what needs no decision.
#include "kx7/kernels/Baseline.h"

#include <algorithm>
#include <cstdint>

#include "kx7/base/Utf16.h"
#include "kx7/kernels/DoubleByteEncode.h"

#ifdef KX7_X86_KERNELS
#include <emmintrin.h>
#else
#define KX7_SSE2
#endif

namespace kx7 {

KX7_SSE2 void decodeUTF8Baseline(unsigned char const*& inOut, unsigned char const* end, unsigned short*& outOut,
                                 unsigned short* outEnd)
{
    unsigned char const* in = inOut;
    unsigned short* out = outOut;
#ifdef KX7_X86_KERNELS
    while (end - in >= 16 && outEnd - out >= 16) {
        __m128i const bytes = _mm_loadu_si128(reinterpret_cast<__m128i const*>(in));
        if (_mm_movemask_epi8(bytes) != 0)
            break;
        __m128i const zero = _mm_setzero_si128();
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out), _mm_unpacklo_epi8(bytes, zero));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out + 8), _mm_unpackhi_epi8(bytes, zero));
        in += 16;
        out += 16;
    }
#endif
    while (in != end && outEnd - out >= 2) {
        unsigned int const lead = in[0];
        if (lead < 0x80) {
            *out++ = static_cast<unsigned short>(lead);
            in += 1;
            continue;
        }
        // What continuation bytes are without their mark has nothing above its six bits.
        std::ptrdiff_t const left = end - in;
        if (lead < 0xC0 || left < 2)
            break;
        unsigned int const second = in[1] ^ 0x80U;
        if (lead < 0xE0) {
            if (second >= 0x40)
                break;
            *out++ = static_cast<unsigned short>((lead & 0x1F) << 6 | second);
            in += 2;
            continue;
        }
        if (left < 3)
            break;
        unsigned int const third = in[2] ^ 0x80U;
        if (lead < 0xF0) {
            if ((second | third) >= 0x40)
                break;
            *out++ = static_cast<unsigned short>(lead << 12 | second << 6 | third);
            in += 3;
            continue;
        }
        if (left < 4)
            break;
        unsigned int const fourth = in[3] ^ 0x80U;
        if ((second | third | fourth) >= 0x40)
            break;
        // Four bits of the lead count, as in the decoder.
        unsigned int const value = (lead & 0xF) << 18 | second << 12 | third << 6 | fourth;
        out[0] = highSurrogateOf(value);
        out[1] = lowSurrogateOf(value);
        out += 2;
        in += 4;
    }
    inOut = in;
    outOut = out;
}

KX7_SSE2 void encodeUTF8Baseline(unsigned short const*& inOut, unsigned short const* end, unsigned char*& outOut,
                                 unsigned char* outEnd)
{
    unsigned short const* in = inOut;
    unsigned char* out = outOut;
#ifdef KX7_X86_KERNELS
    while (end - in >= 16 && outEnd - out >= 16) {
        __m128i const low = _mm_loadu_si128(reinterpret_cast<__m128i const*>(in));
        __m128i const high = _mm_loadu_si128(reinterpret_cast<__m128i const*>(in + 8));
        __m128i const above = _mm_and_si128(_mm_or_si128(low, high), _mm_set1_epi16(static_cast<short>(0xFF80)));
        if (_mm_movemask_epi8(_mm_cmpeq_epi16(above, _mm_setzero_si128())) != 0xFFFF)
            break;
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out), _mm_packus_epi16(low, high));
        in += 16;
        out += 16;
    }
#endif
    while (in != end && outEnd - out >= 4) {
        unsigned int const unit = *in;
        if (unit < 0x80) {
            *out++ = static_cast<unsigned char>(unit);
        }
        else if (unit < 0x800) {
            out[0] = static_cast<unsigned char>(0xC0 | unit >> 6);
            out[1] = static_cast<unsigned char>(0x80 | (unit & 0x3F));
            out += 2;
        }
        else if (isHighSurrogate(unit)) {
            if (end - in < 2 || !isLowSurrogate(in[1]))
                break;
            unsigned int const c = codePointOf(unit, *++in);
            out[0] = static_cast<unsigned char>(0xF0 | c >> 18);
            out[1] = static_cast<unsigned char>(0x80 | (c >> 12 & 0x3F));
            out[2] = static_cast<unsigned char>(0x80 | (c >> 6 & 0x3F));
            out[3] = static_cast<unsigned char>(0x80 | (c & 0x3F));
            out += 4;
        }
        else {
            out[0] = static_cast<unsigned char>(0xE0 | unit >> 12);
            out[1] = static_cast<unsigned char>(0x80 | (unit >> 6 & 0x3F));
            out[2] = static_cast<unsigned char>(0x80 | (unit & 0x3F));
            out += 3;
        }
        ++in;
    }
    inOut = in;
    outOut = out;
}

namespace {

/** Four values at a time, as long as all four have one; 0 is none. */
template <class Source, class Dest, class Look>
void inFours(Source const*& inOut, Source const* end, Dest*& outOut, Dest* outEnd, Look look)
{
    Source const* in = inOut;
    Dest* out = outOut;
    while (end - in >= 4 && outEnd - out >= 4) {
        Dest const a = look(in[0]);
        Dest const b = look(in[1]);
        Dest const c = look(in[2]);
        Dest const d = look(in[3]);
        if (a == 0 || b == 0 || c == 0 || d == 0)
            break;
        out[0] = a;
        out[1] = b;
        out[2] = c;
        out[3] = d;
        in += 4;
        out += 4;
    }
    inOut = in;
    outOut = out;
}

}  // namespace

void decodeSingleByteBaseline(SingleByteTables const& tables, unsigned char const*& in, unsigned char const* end,
                              unsigned short*& out, unsigned short* outEnd)
{
    inFours(in, end, out, outEnd, [&tables](unsigned char byte) { return tables.toUnicode[byte]; });
}

void encodeSingleByteBaseline(SingleByteTables const& tables, unsigned short const*& in, unsigned short const* end,
                              unsigned char*& out, unsigned char* outEnd)
{
    inFours(in, end, out, outEnd, [&tables](unsigned short unit) { return tables.get(unit); });
}

namespace {

/** Pairs, four at a time, up to four of which one is none or has no unit. */
void decodeFourPairs(PairUnits const& pairs, unsigned char const*& inOut, unsigned char const* end,
                     unsigned short*& outOut, unsigned short* outEnd)
{
    unsigned char const* in = inOut;
    unsigned short* out = outOut;
    auto const upperIfLead = [&](int i) { return in[i] & pairs.isLead()[in[i] & 0x7F]; };
    auto const unitAt = [&](int i) { return pairs.units()[in[i] << 8 | in[i + 1]]; };
    for (; end - in >= 8 && outEnd - out >= 4; in += 8, out += 4) {
        if ((upperIfLead(0) & upperIfLead(2) & upperIfLead(4) & upperIfLead(6) & 0x80) == 0)
            break;
        unsigned short const a = unitAt(0);
        unsigned short const b = unitAt(2);
        unsigned short const c = unitAt(4);
        unsigned short const d = unitAt(6);
        if (a == 0 || b == 0 || c == 0 || d == 0)
            break;
        out[0] = a;
        out[1] = b;
        out[2] = c;
        out[3] = d;
    }
    inOut = in;
    outOut = out;
}

}  // namespace

void decodePairsBaseline(PairUnits const& pairs, unsigned char const*& inOut, unsigned char const* end,
                         unsigned short*& outOut, unsigned short* outEnd)
{
    unsigned char const* in = inOut;
    unsigned short* out = outOut;
    unsigned short const* const units = pairs.units();
    unsigned char const* const isLead = pairs.isLead();
    bool isDense = true;  // four pairs followed each other wherever they were looked for
    while (in != end && out != outEnd) {
        unsigned int const first = in[0];
        if (first < 0x80 || !isLead[first & 0x7F]) {
            unsigned short const unit = units[first];
            // A zero byte is a character in a bounded range; text has none.
            if (unit == 0 && first != 0)
                break;
            *out++ = unit;
            ++in;
            continue;
        }
        if (isDense) {
            unsigned char const* const begin = in;
            decodeFourPairs(pairs, in, end, out, outEnd);
            isDense = in != begin;
            if (isDense)
                continue;
        }
        if (end - in < 2)
            break;
        unsigned short const unit = units[first << 8 | in[1]];
        if (unit == 0)
            break;
        *out++ = unit;
        in += 2;
    }
    inOut = in;
    outOut = out;
}

}  // namespace kx7
