// kx7text - short texts directly to and from UTF-8 (internal).
//
// Two conversions with UTF-16 between them have costs that a short text does not earn back: two searches for its end,
// two calls by converter, units that are loaded before they are stored. Here one loop reads a character and writes it.
// It takes a text as a whole or not at all: whatever needs a decision or a substitute, does not fit, or could look
// otherwise once it has been UTF-16 (surrogates that stand alone, a 0 unit), is left to the conversion in two steps.
// What has been written by then is what that writes there, too; where it would be written over the text itself, the
// text is left at once.
#ifndef KX7_CONVERTERS_DIRECTUTF8_H
#define KX7_CONVERTERS_DIRECTUTF8_H

#include "kx7/base/Utf8.h"
#include "kx7/converters/EncodeLoop.h"
#include "kx7/kernels/ShortText.h"

namespace kx7 {

/** Writes the lowest bytes of a code. */
template <int BYTES>
KX7_INLINE void putBytes(unsigned char*& out, unsigned int code)
{
    for (int i = 0; i < BYTES; ++i)
        out[i] = static_cast<unsigned char>(code >> 8 * (BYTES - 1 - i));
    out += BYTES;
}

template <int BYTES>
KX7_INLINE void copyBytes(unsigned char const*& in, unsigned char*& out)
{
    memmove(out, in, BYTES);
    in += BYTES;
    out += BYTES;
}

/** Writes a code: four bytes, two or one. */
KX7_INLINE void putCode(unsigned char*& out, unsigned int code)
{
    if (code > 0xFFFF)
        putBytes<4>(out, code);
    else if (code > 0xFF)
        putBytes<2>(out, code);
    else
        putBytes<1>(out, code);
}

/** Writes a character other than U+0000. False: it does not fit, or cannot be represented. */
template <class Encoder>
KX7_INLINE bool writeCharacter(Encoder const& encoder, unsigned int codePoint, unsigned char*& out,
                               unsigned char const* outEnd)
{
    std::ptrdiff_t const capacity = outEnd - out;
    unsigned int const code =
        codePoint <= 0xFFFF ? encoder.codeOf(static_cast<unsigned short>(codePoint)) : encoder.codeOfPair(codePoint);
    if (code != 0) {
        if (capacity < (code > 0xFFFF ? 4 : code > 0xFF ? 2 : 1))
            return false;
        putCode(out, code);
        return true;
    }
    bool const isPair = codePoint > 0xFFFF;
    unsigned short const units[2] = {isPair ? highSurrogateOf(codePoint) : static_cast<unsigned short>(codePoint),
                                     lowSurrogateOf(codePoint)};
    unsigned int const count = isPair ? 2 : 1;
    EncodedChar const c = encoder.encodeOne(units, units + count);
    if (c.found != Found::CHARACTER || c.consumed != count || capacity < static_cast<std::ptrdiff_t>(c.length))
        return false;
    encoder.write(out, c);
    return true;
}

/** The character at `unit`, of which the last unit is then the one at `unit`. */
KX7_INLINE unsigned int characterAt(unsigned short const*& unit, unsigned short const* end)
{
    if (isHighSurrogate(unit[0]) && unit + 1 != end && isLowSurrogate(unit[1])) {
        ++unit;
        return codePointOf(unit[-1], unit[0]);
    }
    return *unit;
}

/** Two and four bytes as a number, the first one highest. */
KX7_INLINE unsigned int twoBytesAt(unsigned char const* p)
{
    return static_cast<unsigned int>(p[0] << 8 | p[1]);
}
KX7_INLINE unsigned int fourBytesAt(unsigned char const* p)
{
    return twoBytesAt(p) << 16 | twoBytesAt(p + 2);
}

/**
 * Encodes characters of up to three bytes, up to the first that is not as plain. The text ends with a zero byte at
 * `end`, for which there is no code, and there is capacity for twice its bytes, so that neither is asked for again.
 * Overlong forms other than those of U+0000 are as good as any here, and so is a surrogate that the set has a code for:
 * the converters read them alike.
 * @param encoder a copy: what is written could change another in the eyes of the compiler
 */
template <class Encoder>
KX7_INLINE void encodeDirect(Encoder const encoder, unsigned char const*& inOut, unsigned char const* end,
                             unsigned char*& outOut)
{
    auto const codeOf = [&](unsigned int unit) { return encoder.codeOf(static_cast<unsigned short>(unit)); };
    bool const copiesASCII = Encoder::IS_SINGLE && encoder.identity() == Identity::ASCII;
    bool inTwos = sizeof(size_t) == 8;
    unsigned char const* in = inOut;
    unsigned char* out = outOut;
    for (;;) {
        unsigned int const lead = in[0];
        unsigned int code;
        if (lead < 0x80) {
            // Words in double-byte sets are too short for this.
            if (copiesASCII && end - in >= 8) {
                uint64_t const eight = uint64_t{fourBytesAt(in)} << 32 | fourBytesAt(in + 4);
                uint64_t const others = eight & UINT64_C(0x8080808080808080);
                if (others == 0) {
                    copyBytes<8>(in, out);
                    continue;
                }
                int const ascii = __builtin_clzll(others) / 8;
                if (ascii & 4)
                    copyBytes<4>(in, out);
                if (ascii & 2)
                    copyBytes<2>(in, out);
                if (ascii & 1)
                    copyBytes<1>(in, out);
                continue;
            }
            code = codeOf(lead);
            if (code == 0 || code > 0xFF)
                break;
            putBytes<1>(out, code);
            in += 1;
            continue;
        }
        // Where there is one of two or three bytes, there are often more: two at once.
        if (lead < 0xE0) {
            if (Encoder::IS_SINGLE && end - in >= 4) {
                unsigned int const four = fourBytesAt(in);
                unsigned int const units = (four & 0x1F001F00) >> 2 | (four & 0x003F003F);
                if ((four & 0xE0C0E0C0) == 0xC080C080) {
                    unsigned int const first = codeOf(units >> 16);
                    unsigned int const second = codeOf(units & 0xFFFF);
                    if (first != 0 && second != 0) {
                        putBytes<2>(out, first << 8 | second);
                        in += 4;
                        continue;
                    }
                }
            }
            unsigned int const two = twoBytesAt(in);
            if ((two & 0xE0C0) != 0xC080)
                break;
            code = codeOf((two & 0x1F00) >> 2 | (two & 0x3F));
            if (code == 0)
                break;
            in += 2;
        }
        else {
            if (inTwos && end - in >= 6) {
                uint64_t const six = uint64_t{fourBytesAt(in)} << 16 | twoBytesAt(in + 4);
                uint64_t const units = (six & UINT64_C(0x0F00000F0000)) >> 4 | (six & UINT64_C(0x003F00003F00)) >> 2 |
                                       (six & UINT64_C(0x00003F00003F));
                if ((six & UINT64_C(0xF0C0C0F0C0C0)) == UINT64_C(0xE08080E08080)) {
                    unsigned int const first = codeOf(static_cast<unsigned int>(units >> 24));
                    unsigned int const second = codeOf(static_cast<unsigned int>(units & 0xFFFF));
                    if (Encoder::IS_SINGLE) {
                        if (first != 0 && second != 0) {
                            putBytes<2>(out, first << 8 | second);
                            in += 6;
                            continue;
                        }
                    }
                    else if (first > 0xFF && second > 0xFF && (first | second) <= 0xFFFF) {
                        putBytes<4>(out, first << 16 | second);
                        in += 6;
                        continue;
                    }
                    inTwos = false;
                }
            }
            if (end - in < 3)
                break;
            unsigned int const four = fourBytesAt(in);
            if ((four & 0xF0C0C000) != 0xE0808000)
                break;
            code = codeOf((four & 0x0F000000) >> 12 | (four & 0x003F0000) >> 10 | (four & 0x00003F00) >> 8);
            if (code == 0)
                break;
            in += 3;
        }
        putCode(out, code);
    }
    inOut = in;
    outOut = out;
}

/** Decodes a short text into UTF-8, up to its zero byte. Returns the bytes written, or NOT_DIRECT. */
template <class Decoder>
KX7_INLINE size_t shortToUTF8(Decoder const& decoder, unsigned char const* in, unsigned char* dest, size_t capacity)
{
    size_t const length = textLengthUpTo(in, LONGEST_DIRECT + 1);
    if (length > LONGEST_DIRECT || mayOverlap(in, length, dest, std::min(capacity, 3 * length)))
        return NOT_DIRECT;
    unsigned char const* const end = in + length;
    unsigned char* out = dest;
    unsigned char* const outEnd = endOf(dest, capacity);
    copyShort(decoder.identity(), in, end, out, outEnd);
    if (end - in > ONE_BY_ONE) {
        unsigned short units[LONGEST_DIRECT];
        unsigned short* unitsEnd = units;
        decoder.convertFast(in, end, unitsEnd, units + LONGEST_DIRECT);
        unsigned short const* unit = units;
        kernels().encodeUTF8(unit, unitsEnd, out, outEnd);
        for (; unit != unitsEnd; ++unit)
            if (!writeUtf8(characterAt(unit, unitsEnd), out, outEnd))
                return NOT_DIRECT;
    }
    // Others have had the addresses of `in` and `out`, so these are kept in memory.
    unsigned char const* from = in;
    unsigned char* to = out;
    while (from != end) {
        DecodedChar c = decoder.look(from, end);
        if (c.found != Found::CHARACTER) {
            c = decoder.decodeOne(from, end);
            if (c.found != Found::CHARACTER || (c.units == 1 && c.codePoint > 0xFFFF))
                return NOT_DIRECT;
        }
        if (!writeUtf8(c.codePoint, to, outEnd))
            return NOT_DIRECT;
        from += c.consumed;
    }
    return static_cast<size_t>(to - dest);
}

/** shortFromUTF8 after what it copied: most texts are ASCII, to which this is not to add. */
template <class Encoder>
KX7_NOINLINE size_t restFromUTF8(Encoder const& encoder, unsigned char const* in, unsigned char const* end,
                                 unsigned char const* dest, unsigned char* out, unsigned char* outEnd)
{
    // A 0 unit, which an overlong form becomes, ends the text: it must not be written.
    bool const isZeroFree = encoder.codeOf(0) == 0;
    if constexpr (!Encoder::IS_SINGLE) {
        if (end - in > encoder.mostDirect() && isZeroFree) {
            unsigned short units[LONGEST_DIRECT];
            unsigned short* unitsEnd = units;
            kernels().decodeUTF8(in, end, unitsEnd, units + LONGEST_DIRECT);
            unsigned short const* unit = units;
            encoder.runKernel(unit, unitsEnd, out, outEnd);
            for (; unit != unitsEnd; ++unit)
                if (*unit == 0 || !writeCharacter(encoder, characterAt(unit, unitsEnd), out, outEnd))
                    return NOT_DIRECT;
        }
    }
    unsigned char const* from = in;
    unsigned char* to = out;
    for (;;) {
        if (isZeroFree && outEnd - to >= 2 * (end - from))
            encodeDirect(encoder, from, end, to);
        if (from == end)
            return static_cast<size_t>(to - dest);
        unsigned int const codePoint = readTerminatedUtf8(from);
        if (codePoint == 0 || !writeCharacter(encoder, codePoint, to, outEnd))
            return NOT_DIRECT;
    }
}

/** Encodes a short text of UTF-8, up to its zero byte. Returns the bytes written, or NOT_DIRECT. */
template <class Encoder>
KX7_INLINE size_t shortFromUTF8(Encoder const& encoder, unsigned char const* in, unsigned char* dest, size_t capacity)
{
    size_t const length = textLengthUpTo(in, LONGEST_DIRECT + 1);
    if (length > LONGEST_DIRECT || mayOverlap(in, length, dest, std::min(capacity, 4 * length)))
        return NOT_DIRECT;
    unsigned char const* const end = in + length;
    unsigned char* out = dest;
    unsigned char* const outEnd = endOf(dest, capacity);
    copyShort(encoder.identity(), in, end, out, outEnd);
    if constexpr (Encoder::IS_SINGLE)
        if (end - in > encoder.mostDirect())
            encoder.runFromUTF8(in, out, outEnd);
    return in == end ? static_cast<size_t>(out - dest) : restFromUTF8(encoder, in, end, dest, out, outEnd);
}

}  // namespace kx7

#endif
